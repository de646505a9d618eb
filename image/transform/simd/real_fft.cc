#include "core/kernel/lanes.h"
#include "image/transform/plain_doubles.h"
#include "image/transform/real_fft_body.h"
#include "image/transform/sse_doubles.h"

namespace vek::VEK_LEVEL {
namespace {

#if HWY_ARCH_X86 && !defined(__AVX2__)
using VectorOfDoubles = SseDoubles;

#elif HWY_HAVE_FLOAT64

HWY_BEFORE_NAMESPACE();
/// As many 32-bit integers, and bytes, as a vector has doubles.
constexpr hn::Rebind<Vek32s, decltype(f64)> intsOfDoubles;
constexpr hn::Rebind<Vek8u, decltype(f64)> bytesOfDoubles;
using IntsOfDoubles = hn::Vec<decltype(intsOfDoubles)>;

/// The nearest integers, halves to even, of numbers that fit 32 bits.
IntsOfDoubles nearest(V64f v) {
#if defined(__AVX512F__)
  return IntsOfDoubles{_mm512_cvtpd_epi32(v.raw)};
#elif defined(__AVX2__)
  return IntsOfDoubles{_mm256_cvtpd_epi32(v.raw)};
#else
  // 1.5 * 2^52 more than a number has no bits for a fraction, and ends in the 32 bits of the integer.
  const V64f rounded = hn::Add(v, hn::Set(f64, 6755399441055744.0));
  constexpr hn::Rebind<Vek32u, decltype(f64)> unsignedInts;
  return hn::BitCast(intsOfDoubles, hn::TruncateTo(unsignedInts, hn::BitCast(u64, rounded)));
#endif
}

struct VectorOfDoubles {
  static constexpr int count = static_cast<int>(hn::MaxLanes(f64)), vectors = count == 2 ? 2 : 1;
  /// x86 converts everything that does not fit to the lowest integer.
  static constexpr bool clampsLow = HWY_ARCH_X86 != 0;
  using Vector = V64f;

  static Vector load(const Vek64f* from) { return hn::Load(f64, from); }
  static void store(Vector v, Vek64f* to) { hn::Store(v, f64, to); }
  static Vector set(Vek64f value) { return hn::Set(f64, value); }
  static Vector add(Vector a, Vector b) { return hn::Add(a, b); }
  static Vector subtract(Vector a, Vector b) { return hn::Sub(a, b); }
  static Vector multiply(Vector a, Vector b) { return hn::Mul(a, b); }
  static Vector lower(Vector a, Vector b) { return hn::Min(a, b); }
  static Vector higher(Vector a, Vector b) { return hn::Max(a, b); }

  /// First within each 128 bits, then whole 128 bits.
  static void transpose(Vector (&rows)[count]) {
    Vector lower[count / 2], upper[count / 2];
    for (int i = 0; i < count / 2; ++i) {
      lower[i] = hn::InterleaveLower(f64, rows[2 * i], rows[2 * i + 1]);
      upper[i] = hn::InterleaveUpper(f64, rows[2 * i], rows[2 * i + 1]);
    }
    transposeParts(lower, rows);
    transposeParts(upper, rows + 1);
  }

  static Vector fromSamples(const Vek32s* from) {
    return hn::PromoteTo(f64, hn::LoadU(intsOfDoubles, from));
  }
  static Vector fromSamples(const Vek8u* from) {
    return hn::PromoteTo(f64, hn::PromoteTo(intsOfDoubles, hn::LoadU(bytesOfDoubles, from)));
  }
  static void storeSamples(Vector v, Vek32s* to) { hn::StoreU(nearest(v), intsOfDoubles, to); }
  static void storeSamples(Vector v, Vek8u* to) {
    hn::StoreU(hn::DemoteTo(bytesOfDoubles, nearest(v)), bytesOfDoubles, to);
  }
  static Complex<VectorOfDoubles> loadPairs(const Vek8u* from) {
    IntsOfDoubles re, im;
    hn::LoadInterleaved2(intsOfDoubles, reinterpret_cast<const Vek32s*>(from), re, im);
    return {hn::PromoteTo(f64, re), hn::PromoteTo(f64, im)};
  }
  static void storePairs(Vector re, Vector im, Vek8u* to) {
    hn::StoreInterleaved2(nearest(re), nearest(im), intsOfDoubles, reinterpret_cast<Vek32s*>(to));
  }

  static constexpr bool shufflesTiles = true;
  template <class Sample>
  struct Part {
    static constexpr hn::CappedTag<Sample, 16 / sizeof(Sample)> d = {};
    using Vector = hn::Vec<decltype(d)>;
    static Vector load(const Sample* from) { return hn::LoadU(d, from); }
    static void store(Vector v, Sample* to) { hn::StoreU(v, d, to); }
    static Vector interleaveLower(Vector a, Vector b) { return hn::InterleaveLower(d, a, b); }
    static Vector interleaveUpper(Vector a, Vector b) { return hn::InterleaveUpper(d, a, b); }
  };

 private:
  /// Part i of parts[j] becomes part j of out[2 i].
  static void transposeParts(const Vector (&parts)[count / 2], Vector* out) {
#if defined(__AVX512F__)
    const auto joined = [](Vector a, Vector b, auto which) {
      return Vector{_mm512_shuffle_f64x2(a.raw, b.raw, decltype(which)::value)};
    };
    constexpr std::integral_constant<int, 0x88> even;
    constexpr std::integral_constant<int, 0xDD> odd;
    const Vector even01 = joined(parts[0], parts[1], even), odd01 = joined(parts[0], parts[1], odd);
    const Vector even23 = joined(parts[2], parts[3], even), odd23 = joined(parts[2], parts[3], odd);
    out[0] = joined(even01, even23, even);
    out[2] = joined(odd01, odd23, even);
    out[4] = joined(even01, even23, odd);
    out[6] = joined(odd01, odd23, odd);
#elif defined(__AVX2__)
    out[0] = hn::ConcatLowerLower(f64, parts[1], parts[0]);
    out[2] = hn::ConcatUpperUpper(f64, parts[1], parts[0]);
#else
    out[0] = parts[0];
#endif
  }
};
HWY_AFTER_NAMESPACE();

#else
using VectorOfDoubles = PlainDoubles;
#endif

}  // namespace

constexpr RealFftKernels realFftKernels = realFftKernelsOf<VectorOfDoubles>;

}  // namespace vek::VEK_LEVEL
