#include "core/kernel/lanes.h"
#include "core/kernel/unroll.h"
#include "image/filter/median/median_color_body.h"
#include "image/filter/median/median_color_kernels.h"

HWY_BEFORE_NAMESPACE();
namespace vek::VEK_LEVEL {
namespace {

#if defined(__AVX512VBMI__)
/// The pixel of each byte of three vectors.
struct Thirds {
  alignas(64) Vek8u of[3][64] = {};

  constexpr Thirds() {
    for (int i = 0; i < 192; ++i) of[i / 64][i % 64] = static_cast<Vek8u>(i / 3);
  }
};
constexpr Thirds thirds;
#endif

struct VectorSteps : PlainSteps {
  static constexpr int size = vectorBytes / 2;

  template <int side>
  static void split(const Vek8u* src, ptrdiff_t columns, PixelRow<side>& pixels) {
    if (columns < stripColumns<side>) return PlainSteps::split(src, columns, pixels);
    for (int x = 0; x < stripColumns<side>; x += vectorBytes) {
      V8u c[3];
      hn::LoadInterleaved3(u8, src + 3 * x, c[0], c[1], c[2]);
      for (int i = 0; i < 3; ++i) {
        Vek16s* to = pixels.channel[i].at(0) + x;
        hn::StoreU(hn::PromoteTo(s16, hn::LowerHalf(halfU8, c[i])), s16, to);
        hn::StoreU(hn::PromoteTo(s16, hn::UpperHalf(halfU8, c[i])), s16, to + size);
      }
    }
  }

  template <int side, int first>
  static void measure(const PixelRow<side>& from, const PixelRow<side>& to,
                      Columns<side>* distances) {
    for (int x = 0; x < stripColumns<side>; x += size) {
      const auto pixels = [&](int c, int dx) { return load(to.channel[c].at(dx) + x); };
      const V16s red = load(from.channel[0].at(0) + x), green = load(from.channel[1].at(0) + x),
                 blue = load(from.channel[2].at(0) + x);
      unrolled<side - first>([&](auto i) {
        constexpr int dx = first + i;
        const V16s sum = hn::Add(
            hn::Add(hn::Abs(hn::Sub(red, pixels(0, dx))), hn::Abs(hn::Sub(green, pixels(1, dx)))),
            hn::Abs(hn::Sub(blue, pixels(2, dx))));
        hn::Store(sum, s16, distances[i].at(0) + x);
      });
    }
  }

  /// From window to window one column joins and one leaves.
  template <int side, int j>
  static void score(const WindowRows<side>& rows, Columns<side>* scores) {
    for (int x = 0; x < stripColumns<side>; x += size) {
      V16s toColumn[2 * side - 1];
      unrolled<2 * side - 1>([&](auto d) {
        constexpr int dx = d - (side - 1);
        V16s sum = hn::Zero(s16);
        unrolled<side>([&](auto k) {
          if constexpr (j != k || dx != 0) {
            sum = hn::Add(sum, load(distancesTo<side, j, k, dx>(rows) + x));
          }
        });
        toColumn[d] = sum;
      });
      V16s total = hn::Zero(s16);
      unrolled<side>([&](auto k) { total = hn::Add(total, toColumn[k + side - 1]); });
      hn::StoreU(total, s16, scores[0].at(0) + x);
      unrolled<side - 1>([&](auto i) {
        total = hn::Sub(hn::Add(total, toColumn[side - 2 - i]), toColumn[2 * side - 2 - i]);
        hn::StoreU(total, s16, scores[i + 1].at(0) + x);
      });
    }
  }

  template <int side>
  static void choose(const Columns<side>* scores, int j, Vek16s* leastScores, Vek16s* numbers) {
    for (int x = 0; x < stripColumns<side>; x += size) {
      V16s least = load(leastScores + x), best = load(numbers + x);
      unrolled<side>([&](auto i) {
        const V16s score = load(scores[i].at(i) + x);
        const auto better = hn::Lt(score, least);
        least = hn::Min(score, least);
        best = hn::IfThenElse(better, hn::Set(s16, static_cast<Vek16s>(j * side + i)), best);
      });
      hn::StoreU(least, s16, leastScores + x);
      hn::StoreU(best, s16, numbers + x);
    }
  }

#if defined(__AVX512VBMI__)
  /// Vector after vector of the destination, the bytes of each winner straight from the source.
  template <int side>
  static void copy(const Winners& winners, ptrdiff_t columns, Vek8u* dst) {
    for (ptrdiff_t x = 0; x < columns; x += 64) {
      const auto narrow = [&](ptrdiff_t at) {
        return _mm512_cvtepi16_epi8(_mm512_loadu_si512(winners.best + at));
      };
      const __m512i best = _mm512_inserti64x4(_mm512_castsi256_si512(narrow(x)), narrow(x + 32), 1);
      for (ptrdiff_t from = 3 * x; from < 3 * columns && from < 3 * x + 192; from += 64) {
        const ptrdiff_t rest = 3 * columns - from;
        const __mmask64 inRow = rest < 64 ? (uint64_t{1} << rest) - 1 : ~uint64_t{0};
        const __m512i third = _mm512_load_si512(thirds.of[from / 64 % 3]);
        const __m512i numbers = _mm512_permutexvar_epi8(third, best);
        __m512i pixels = _mm512_setzero_si512();
        unrolled<side * side>([&](auto k) {
          const __mmask64 here =
              _mm512_mask_cmpeq_epi8_mask(inRow, numbers, _mm512_set1_epi8(static_cast<char>(k)));
          pixels = _mm512_mask_loadu_epi8(
              pixels, here, winners.src + from + k / side * winners.srcStep + k % side * 3);
        });
        _mm512_mask_storeu_epi8(dst + from, inRow, pixels);
      }
    }
  }
#endif

  static V16s load(const Vek16s* p) {
    return hn::LoadU(s16, p);
  }
};

}  // namespace

constexpr ColorMedianKernels colorMedianKernels = {
    .square3 = colorMedian<3, VectorSteps>,
    .square5 = colorMedian<5, VectorSteps>,
};

}  // namespace vek::VEK_LEVEL
HWY_AFTER_NAMESPACE();
