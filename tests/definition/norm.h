// What the norms write.
#pragma once

#include "vek/vek.h"

#include <algorithm>
#include <bit>
#include <cstdlib>

#include "tests/campaign/case.h"

namespace vek::test::definition {

#ifdef __SIZEOF_INT128__
__extension__ typedef unsigned __int128 Wide;
#else
using Wide = uint64_t;  // too narrow: 32-bit processors do without this definition
#endif

inline constexpr Vek32s top = 0x7fffffff;
enum class Kind { inf, l1, l2 };

struct Result {
  VekStatus status;
  Vek32s value;
};

/// sqrt(d / r) * 2^-s to the nearest, by its meaning: the number of odd 2k - 1 up to twice the
/// root.
inline Result root(uint64_t d, uint64_t r, int s) {
  if (d == 0) return {0, 0};
  const int width = 2 + std::bit_width(d) - 2 * std::clamp(s, -100, 100);
  if (width > 127) return {3, top};
  const int shift = 2 - 2 * std::clamp(s, -100, 60);
  const Wide square = (shift >= 0 ? Wide{d} << shift : Wide{d} >> -shift) / r;
  uint64_t low = 0, high = uint64_t{1} << 32;
  while (high - low > 1) {
    const uint64_t k = (low + high) / 2;
    (Wide{2 * k - 1} * (2 * k - 1) <= square ? low : high) = k;
  }
  return low > uint64_t{top} ? Result{3, top} : Result{0, static_cast<Vek32s>(low)};
}

inline Result scaled(Kind kind, uint64_t total, int s) {
  if (kind == Kind::l2) return root(total, 1, s);
  const uint64_t v = total & 0xFFFFFFFF;
  if (s >= 0) return {0, static_cast<Vek32s>(v >> std::min(s % 256, 31))};
  const int64_t amount = -int64_t{s} % 256;
  return {0, static_cast<Vek32s>(static_cast<Vek32u>(amount < 32 ? v << amount : 0))};
}

inline Result quotient(Kind kind, uint64_t d, uint64_t r, int s) {
  if (kind == Kind::l1) d &= 0xFFFFFFFF, r &= 0xFFFFFFFF;
  if (r == 0) return {6, top};
  if (d == 0) return {0, 0};
  if (kind == Kind::l2) return root(d, r, s);
  if (kind == Kind::inf && s >= 0) {
    return {0, static_cast<Vek32s>((d * 256 / r + 128) >> std::min(s + 8LL, 63LL))};
  }
  const int bits = std::bit_width(d);
  const int64_t shift = 1 - int64_t{s};
  if (kind == Kind::inf) {
    if (shift > 100) return {0, top};
    return {0, static_cast<Vek32s>(std::min<Wide>((((Wide{d} << shift) / r) + 1) / 2, Wide{top}))};
  }
  uint64_t t;
  if (bits - int64_t{s} < 63) {
    t = shift >= 0 ? d << shift : d >> std::min<int64_t>(-shift, 63);
  } else {
    t = d << (63 - bits);
    r >>= std::min<int64_t>(bits - int64_t{s} - 62, 63);
  }
  if (r == 0) return {0, top};
  return {0, static_cast<Vek32s>(static_cast<Vek32u>((t / r + 1) / 2))};
}

/// A norm of an image, of the difference of two, or that in relation to the norm of the second.
struct Norm {
  Kind kind;
  enum Of { image, difference, relative } of;
  int channels;

  struct Image {
    const Vek8u* data;
    ptrdiff_t step;
  };

  uint64_t total(Image a, Image b, VekiSize roi, int channel) const {
    uint64_t result = 0;
    for (int y = 0; y < roi.height; ++y) {
      for (int x = channel; x < roi.width * channels; x += channels) {
        const int other = b.data == nullptr ? 0 : b.data[y * b.step + x];
        const auto v = static_cast<uint64_t>(std::abs(a.data[y * a.step + x] - other));
        result = kind == Kind::inf ? std::max(result, v) : result + (kind == Kind::l1 ? v : v * v);
      }
    }
    return result;
  }

  VekStatus define(const Value* v) const {
    const auto imageAt = [&](int i) { return Image{as<const Vek8u*>(v[i]), as<int>(v[i + 1])}; };
    const Image a = imageAt(0), none = {}, b = of != image ? imageAt(2) : none;
    v += of != image ? 4 : 2;
    const auto roi = as<VekiSize>(v[0]);
    const int s = as<int>(v[2]);
    VekStatus worst = 0;
    for (int c = 0; c < channels; ++c) {
      const uint64_t d = total(a, b, roi, c);
      const Result result =
          of == relative ? quotient(kind, d, total(b, none, roi, c), s) : scaled(kind, d, s);
      as<Vek32s*>(v[1])[c] = result.value;
      worst = std::max(worst, result.status);
    }
    return worst;
  }
};

}  // namespace vek::test::definition
