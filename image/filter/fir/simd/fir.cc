#include "core/assert.h"
#include "core/kernel/lanes.h"
#include "core/kernel/unroll.h"
#include "image/filter/fir/fir_body.h"
#include "image/filter/fir/fir_dots.h"
#include "image/filter/fir/fir_kernels.h"
#include "image/filter/fir/fir_taps.h"

HWY_BEFORE_NAMESPACE();
namespace vek::VEK_LEVEL {
namespace {

/// Vectors of sums that leave registers for the rest.
constexpr int mostSums = 8;

/// Loads the samples of a group of neighbours side by side. They come from vectors that begin with
/// the group's first tap or end with its last one, so that no byte is read that is not a tap's:
/// from these two alone, or where the last tap is `far`, nine bytes away from the first, from
/// others between them.
template <class Dots, bool far>
class Neighbours {
 public:
  Neighbours(ptrdiff_t reach, ptrdiff_t pixelBytes) : reach_(reach) {
    unrolled<Dots::parts>([&](auto p) {
      const ptrdiff_t start = p * (16 / Dots::parts) - begin(p);
      alignas(64) Vek8u index[vectorBytes];
      for (ptrdiff_t i = 0; i < vectorBytes; ++i) {
        const ptrdiff_t sample = i % 16 / Dots::parts, byte = i % Dots::parts;
        const ptrdiff_t at = start + sample + byte / Dots::tapBytes * pixelBytes;
        index[i] = static_cast<Vek8u>(byte % Dots::tapBytes != 0 ? 0x80 : at & 15);
      }
      indices_[p] = hn::Load(u8, index);
    });
  }

  V8u load(const Vek8u* first, int p) const {
    return hn::TableLookupBytesOr0(hn::LoadU(u8, first + begin(p)), indices_[p]);
  }

 private:
  ptrdiff_t begin(int p) const {
    constexpr ptrdiff_t reachOfFours = 9;
    if (!far) return p < Dots::parts / 2 ? 0 : reach_;
    return p * 4 < reachOfFours ? p * 4 : reachOfFours;
  }

  ptrdiff_t reach_;
  V8u indices_[Dots::parts];
};

/// The sums of `vectors` vectors of samples in each of `rows` rows.
template <class Dots, int rows, int vectors, bool far>
class Sums {
 public:
  using Sum = typename Dots::Sum;

  [[gnu::always_inline]] inline explicit Sums(const Neighbours<Dots, far>& neighbours)
      : neighbours_(neighbours) {
    unrolled<rows * vectors * Dots::parts>([&](auto i) { sums_[i] = Dots::zero(); });
  }

  [[gnu::always_inline]] inline void add(const Vek8u* src, const Across& group) {
    unrolled<vectors>([&](auto v) {
      V8u samples[Dots::parts];
      unrolled<Dots::parts>(
          [&](auto p) { samples[p] = neighbours_.load(src + group.where + v * vectorBytes, p); });
      addProducts(v, samples, group.factors);
    });
  }
  [[gnu::always_inline]] inline void add(const Vek8u* src, const Scattered<Dots>& group) {
    unrolled<vectors>([&](auto v) {
      V8u tap[Dots::taps], samples[Dots::parts];
      unrolled<Dots::taps>(
          [&](auto i) { tap[i] = hn::LoadU(u8, src + group.where[i] + v * vectorBytes); });
      Dots::interleave(tap, samples);
      addProducts(v, samples, group.factors);
    });
  }
  [[gnu::always_inline]] inline void multiplyBy256() {
    if constexpr (Dots::inParts) {
      unrolled<rows * vectors * Dots::parts>([&](auto i) { sums_[i] <<= 8; });
    }
  }
  [[gnu::always_inline]] inline V8u scaled(int row, int vector,
                                           const typename Dots::Scaler& scaler) const {
    return Dots::scaled(sums_ + (row * vectors + vector) * Dots::parts, scaler);
  }

 private:
  template <class Vector>
  [[gnu::always_inline]] inline void addProducts(Vector v, const V8u* samples,
                                                 const Vek32u* factors) {
    unrolled<rows>([&](auto r) {
      unrolled<Dots::parts>([&](auto p) {
        Dots::add(sums_[(r * vectors + v) * Dots::parts + p], samples[p], factors[r]);
      });
    });
  }

  const Neighbours<Dots, far>& neighbours_;
  Sum sums_[rows * vectors * Dots::parts];
};

/// The loops end as the policy overlappingBlocks does, with blocks that overlap their neighbours,
/// but each has its body once, in one place for all blocks: this is long, inlined code.
template <class Dots, int rows, int vectors, bool far, class Taps>
[[gnu::noinline, gnu::flatten]] void filterRows(const FirRegion& region, const Taps& taps,
                                                ptrdiff_t reach, ptrdiff_t pixelBytes,
                                                const FirScale& scale) {
  constexpr ptrdiff_t block = vectors * vectorBytes;
  VEK_ASSERT(region.n >= block && region.rows >= rows);
  const FirRegion r = region;
  const typename Taps::Walk walk(taps);
  const typename Dots::Scaler scaler(scale);
  const Neighbours<Dots, far> neighbours(reach, pixelBytes);
  for (ptrdiff_t y = 0; y < r.rows; y += rows) {
    if (y > r.rows - rows) y = r.rows - rows;  // the last ones again
    const Vek8u* src = r.src + y * r.srcStep;
    Vek8u* dst = r.dst + y * r.dstStep;
    for (ptrdiff_t x = 0; x < r.n; x += block) {
      if (x > r.n - block) x = r.n - block;
      Sums<Dots, rows, vectors, far> sums(neighbours);
      walk.addTo(sums, src + x);
      unrolled<rows>([&](auto i) {
        unrolled<vectors>([&](auto v) {
          hn::StoreU(sums.scaled(i, v, scaler), u8, dst + i * r.dstStep + x + v * vectorBytes);
        });
      });
    }
  }
}

/// Whether the taps could be listed.
template <class Dots, int rows>
bool filterListed(const FirRegion& r, const FirTaps& taps, const FirScale& scale) {
  const ListedTaps<Dots, rows> list(taps, r.srcStep);
  if (!list.isComplete()) return false;
  constexpr bool farther = Dots::taps == 4 && rows == 2;
  constexpr int vectors = rows * Dots::parts * 2 <= mostSums ? 2 : 1;
  const ptrdiff_t reach = list.reach(), pixelBytes = taps.pixelBytes;
  const auto filter =
      r.n < vectors * vectorBytes
          ? (reach > 8 ? filterRows<Dots, rows, 1, farther, ListedTaps<Dots, rows>>
                       : filterRows<Dots, rows, 1, false, ListedTaps<Dots, rows>>)
          : (reach > 8 ? filterRows<Dots, rows, vectors, farther, ListedTaps<Dots, rows>>
                       : filterRows<Dots, rows, vectors, false, ListedTaps<Dots, rows>>);
  filter(r, list, reach, pixelBytes, scale);
  return true;
}

/// Takes two rows at a time where they share taps and multiplications are few beside the rest.
template <class Dots>
bool filterListed(const FirRegion& r, const FirTaps& taps, const FirScale& scale) {
  const bool two = r.rows > 1 && taps.height > 1 && (Dots::parts > 2 || taps.width == 1);
  return (two ? filterListed<Dots, 2> : filterListed<Dots, 1>)(r, taps, scale);
}

/// Tap by tap, for what is rare: rows shorter than a vector, and sums of 64 bits.
template <class Sum>
void filterByTaps(const FirRegion& r, const FirTaps& taps, const FirScale& scale) {
  for (ptrdiff_t y = 0; y < r.rows; ++y) {
    firRow<Sum>(r.src + y * r.srcStep, r.srcStep, taps, scale, r.n, r.dst + y * r.dstStep);
  }
}

template <class Dots>
void filterRegion(const FirRegion& r, const FirTaps& taps, const FirScale& scale) {
  if (r.n < vectorBytes) return filterByTaps<Vek32s>(r, taps, scale);
  if (filterListed<Dots>(r, taps, scale)) return;
  filterRows<PairDots32, 1, 1, false>(r, WalkedTaps<PairDots32>{taps, r.srcStep}, 0, 0, scale);
}

#if defined(__AVX512VNNI__)
constexpr FirKernel filterSmall = filterRegion<FourDots16>, filterLarge = filterRegion<FourDots32>;
#else
constexpr FirKernel filterSmall = filterRegion<PairDots16>, filterLarge = filterRegion<PairDots32>;
#endif

}  // namespace

constexpr FirKernels firKernels = {
    .sums16 = filterSmall,
    .sums32 = filterLarge,
    .sums64 = filterByTaps<int64_t>,
};

}  // namespace vek::VEK_LEVEL
HWY_AFTER_NAMESPACE();
