// Tiles placed in vectors: rows are reversed by permutations, and bytes are transposed by blocks of 16
// columns. Larger pixels are transposed by the portable kernels; only pixels that are scattered need it.
#include <string.h>

#include "core/assert.h"
#include "core/kernel/blocks.h"
#include "core/kernel/lanes.h"
#include "core/kernel/neon_reverse.h"
#include "core/kernel/place_kernels.h"
#include "core/kernel/unroll.h"

HWY_BEFORE_NAMESPACE();
namespace vek::VEK_LEVEL {
namespace {

constexpr ptrdiff_t side = 16;  // bytes of a transposed block in either direction
constexpr hn::FixedTag<Vek8u, side> block128;

/// Bytes to be transposed: column x becomes the destination row at dst + x * dx, whose bytes come from
/// the rows in ascending order.
struct Transposition {
  const Vek8u* tile;
  ptrdiff_t tileStep, cols, rows;
  Vek8u* dst;
  ptrdiff_t dx;
};

/// A vector of 16 bytes from each of the rows `distance` bytes apart.
template <class D>
hn::Vec<D> loadBlocks(D d, const Vek8u* from, ptrdiff_t distance) {
  if constexpr (hn::MaxLanes(D()) == side) {
    return hn::LoadU(d, from);
  } else {
    constexpr hn::Half<D> half;
    constexpr ptrdiff_t blocks = static_cast<ptrdiff_t>(hn::MaxLanes(half)) / side;
    return hn::Combine(d, loadBlocks(half, from + blocks * distance, distance),
                       loadBlocks(half, from, distance));
  }
}

/// Transposes 16 columns of as many rows as a vector has bytes. Vector i starts as the rows i, 16 +
/// i, ..., so that its 128-bit blocks are transposed side by side. Each round interleaves the first
/// half of the vectors with the second: after one round, vector 0 holds bytes of the rows 0, 8, 0,
/// 8, ... of column 0, 1, ...; after four rounds it holds column 0 of the rows 0, 1, 2, ...
template <class D>
void transposeBlock(D d, const Vek8u* from, ptrdiff_t fromStep, Vek8u* to, ptrdiff_t toStep) {
  hn::Vec<D> rows[side], mixed[side];
  for (ptrdiff_t i = 0; i < side; ++i) {
    rows[i] = loadBlocks(d, from + i * fromStep, side * fromStep);
  }
  for (int round = 1; round < side; round *= 2) {
    for (int i = 0; i < side / 2; ++i) {
      mixed[2 * i] = hn::InterleaveLower(d, rows[i], rows[i + side / 2]);
      mixed[2 * i + 1] = hn::InterleaveUpper(d, rows[i], rows[i + side / 2]);
    }
    for (int i = 0; i < side; ++i) rows[i] = mixed[i];
  }
  for (ptrdiff_t i = 0; i < side; ++i) hn::StoreU(rows[i], d, to + i * toStep);
}

template <class D>
void transposeColumns(D d, const Vek8u* from, ptrdiff_t fromStep, ptrdiff_t cols, Vek8u* to,
                      ptrdiff_t toStep) {
  overlappingBlocks(cols, side, [&](ptrdiff_t x) {
    transposeBlock(d, from + x, fromStep, to + x * toStep, toStep);
  });
}

/// Transposes the rows from y on, as many at a time as a vector has bytes; returns the first row that is
/// left. Of these rows whole cache lines are copied into a stage first. Not inlined, so that the stage is
/// on the stack only where it is needed.
template <class D>
[[gnu::noinline]] ptrdiff_t transposeStaged(D d, const Transposition& t, ptrdiff_t y) {
  constexpr ptrdiff_t cacheLine = 64, length = static_cast<ptrdiff_t>(hn::MaxLanes(D()));
  alignas(64) Vek8u stage[length * cacheLine];
  for (; y + length <= t.rows; y += length) {
    const Vek8u* const from = t.tile + y * t.tileStep;
    overlappingBlocks(t.cols, cacheLine, [&](ptrdiff_t x) {
      for (ptrdiff_t i = 0; i < length; ++i) {
        memcpy(stage + i * cacheLine, from + i * t.tileStep + x, cacheLine);
      }
      transposeColumns(d, stage, cacheLine, cacheLine, t.dst + x * t.dx + y, t.dx);
    });
  }
  return y;
}

/// The same, then by half as many rows at a time, and so on to 16. Rows at such steps that they share the
/// sets of the cache would push each other out between their blocks: they are staged.
template <class D>
ptrdiff_t transposeRows(D d, const Transposition& t, ptrdiff_t y) {
  constexpr ptrdiff_t length = static_cast<ptrdiff_t>(hn::MaxLanes(D()));
  if constexpr (length > side) {
    if (t.tileStep % 1024 == 0 && t.cols >= 64) y = transposeStaged(d, t, y);
  }
  for (; y + length <= t.rows; y += length) {
    transposeColumns(d, t.tile + y * t.tileStep, t.tileStep, t.cols, t.dst + y, t.dx);
  }
  if constexpr (length > side) {
    return transposeRows(hn::Half<D>(), t, y);
  } else {
    return y;
  }
}

/// Each row of the destination gets a cache line at a time (two halves of one on AVX2) as long as there
/// are rows for it. This is the policy of overlapping blocks, with smaller blocks before the last one.
void transposeBytes(const Transposition& t) {
  VEK_ASSERT(t.cols >= side && t.rows >= side);
  if (transposeRows(u8, t, 0) < t.rows) transposeRows(block128, t, t.rows - side);
}

#if HWY_ARCH_ARM
inline V8u reversedBytes(V8u v) {
  const uint8x16_t halves = vrev64q_u8(v.raw);
  return V8u{vextq_u8(halves, halves, 8)};
}
#endif

/// Puts pixels of `size` bytes, as many as fit behind a vector's first `spare` bytes, in descending
/// order at its beginning. Five pixels of three bytes in 16, for example, leave one byte over: bytes 1
/// to 15, which are the pixels a b c d e, become e d c b a in bytes 0 to 14.
template <int size, class D>
struct Reversal {
  static constexpr ptrdiff_t length = static_cast<ptrdiff_t>(hn::MaxLanes(D()));
#if defined(__AVX512VBMI__)
  static constexpr bool anywhere = length == 64;  // one permutation reaches every byte
#else
  static constexpr bool anywhere = false;
#endif
  static constexpr bool possible = anywhere || length == side || side % size == 0;
  static constexpr ptrdiff_t count = length / size, spare = length % size;
  hn::Vec<D> order;

  Reversal() {
    constexpr ptrdiff_t within = anywhere ? length : side;  // blocks are reversed afterwards
    alignas(64) Vek8u at[length] = {};
    for (ptrdiff_t i = 0; i < length / within; ++i) {
      for (ptrdiff_t k = 0; k < within / size * size; ++k) {
        at[i * within + k] =
            static_cast<Vek8u>(spare + (within / size - 1 - k / size) * size + k % size);
      }
    }
    order = hn::Load(D(), at);
  }

  hn::Vec<D> of(hn::Vec<D> v) const {
#if defined(__AVX512VBMI__)
    if constexpr (anywhere) return hn::Vec<D>{_mm512_permutexvar_epi8(order.raw, v.raw)};
#endif
    return hn::ReverseBlocks(D(), hn::TableLookupBytes(v, order));
  }
};

/// dst[n - 1 - k] = src[k] for n >= vectors * count pixels that fill vectors, in blocks of `vectors`
/// vectors. The source is read upwards, as the rows are: that is how processors fetch ahead.
template <int size, int vectors, class D>
void reverseBlocks(D d, const Reversal<size, D>& reversal, const Vek8u* src, ptrdiff_t n,
                   Vek8u* dst) {
  constexpr ptrdiff_t count = Reversal<size, D>::count, block = vectors * count;
  overlappingBlocks(n, block, [&](ptrdiff_t i) {
    hn::Vec<D> pixels[vectors];
    unrolled<vectors>([&](auto k) { pixels[k] = hn::LoadU(d, src + (i + k * count) * size); });
    unrolled<vectors>([&](auto k) {
      hn::StoreU(reversal.of(pixels[k]), d, dst + (n - i - (k + 1) * count) * size);
    });
  });
}

/// dst[k] = src[n - 1 - k] from pixel i on, as far as vectors go; returns where that is. Where the
/// pixels leave bytes over, the load begins that much early, and the store's last bytes are the
/// next one's first, so that the policies, whose blocks are whole vectors, do not serve.
template <int size, class D>
ptrdiff_t reverseVectors(D d, const Vek8u* src, ptrdiff_t i, ptrdiff_t n, Vek8u* dst) {
  using R = Reversal<size, D>;
  if constexpr (R::possible && R::spare == 0) {
    const R reversal;
    if (i == 0 && n >= 4 * R::count) {
      reverseBlocks<size, 4>(d, reversal, src, n, dst);
      return n;
    }
    if (i == 0 && n >= R::count) {
      reverseBlocks<size, 1>(d, reversal, src, n, dst);
      return n;
    }
  } else if constexpr (R::possible) {
    const R reversal;
    constexpr ptrdiff_t early = (R::spare + size - 1) / size;  // pixels that are touched besides
    for (; i + R::count + early <= n; i += R::count) {
      const auto pixels = hn::LoadU(d, src + (n - i - R::count) * size - R::spare);
      hn::StoreU(reversal.of(pixels), d, dst + i * size);
    }
  }
  return i;
}

#if HWY_ARCH_ARM

/// dst[k] = src[15 - k] for 16 pixels of three bytes.
void reverseThrees(const Vek8u* src, Vek8u* dst) {
  V8u c0, c1, c2;
  hn::LoadInterleaved3(u8, src, c0, c1, c2);
  hn::StoreInterleaved3(reversedBytes(c0), reversedBytes(c1), reversedBytes(c2), u8, dst);
}

#elif !defined(__AVX512VBMI__)

/// The byte of vector `from` of a block that each byte of vector `to` comes from when the block's 16
/// pixels of three bytes are reversed; noByte for those that come from another one. Byte 16 of the
/// block, for example, is the second byte of pixel 5 and comes from pixel 10, byte 31.
constexpr Vek8u noByte = 0x80;
template <int to, int from>
constexpr auto reversedPixels = [] {
  struct {
    alignas(16) Vek8u at[16];
  } order = {};
  for (int i = 0; i < 16; ++i) {
    const int byte = 16 * to + i, source = 3 * (15 - byte / 3) + byte % 3;
    order.at[i] = source / 16 == from ? static_cast<Vek8u>(source % 16) : noByte;
  }
  return order;
}();

/// The pixels of three bytes in each of three vectors' 128-bit blocks, 16 pixels in each row of
/// blocks, reversed within the row.
template <class D>
struct Threes {
  hn::Vec<D> a, b, c;

  Threes reversed() const {
    const auto moved = [](const auto& order, auto v) {
      return hn::TableLookupBytesOr0(v, hn::LoadDup128(D(), order.at));
    };
    return {hn::Or(moved(reversedPixels<0, 1>, b), moved(reversedPixels<0, 2>, c)),
            hn::Or(hn::Or(moved(reversedPixels<1, 0>, a), moved(reversedPixels<1, 1>, b)),
                   moved(reversedPixels<1, 2>, c)),
            hn::Or(moved(reversedPixels<2, 0>, a), moved(reversedPixels<2, 1>, b))};
  }
};

/// dst[k] = src[15 - k] for 16 pixels of three bytes, in whole vectors.
void reverseThrees(const Vek8u* src, Vek8u* dst) {
  const auto load = [src](int i) { return hn::LoadU(block128, src + 16 * i); };
  const auto r = Threes<decltype(block128)>{load(0), load(1), load(2)}.reversed();
  hn::StoreU(r.a, block128, dst);
  hn::StoreU(r.b, block128, dst + 16);
  hn::StoreU(r.c, block128, dst + 32);
}

#if defined(__AVX2__)

/// The same for 32 pixels. The lower blocks take the last 16 of them.
void reverseThreesTwice(const Vek8u* src, Vek8u* dst) {
  const auto load = [src](int i) {
    return hn::Combine(u8, hn::LoadU(block128, src + 16 * i),
                       hn::LoadU(block128, src + 48 + 16 * i));
  };
  const auto r = Threes<decltype(u8)>{load(0), load(1), load(2)}.reversed();
  hn::StoreU(hn::ConcatLowerLower(u8, r.b, r.a), u8, dst);
  hn::StoreU(hn::ConcatUpperLower(u8, r.a, r.c), u8, dst + 32);
  hn::StoreU(hn::ConcatUpperUpper(u8, r.c, r.b), u8, dst + 64);
}

#endif

#endif

template <int size>
void reverseRow(const Vek8u* src, ptrdiff_t n, Vek8u* dst) {
#if HWY_ARCH_ARM
  if constexpr (size == 1) {
#if VEK_NEON_BY_NAME
    if (n >= 2 * side) return reverseBytes(src, n, dst);
#endif
    if (n >= side) {
      return overlappingBlocks(n, side, [&](ptrdiff_t i) {
        hn::StoreU(reversedBytes(hn::LoadU(u8, src + (n - side - i))), u8, dst + i);
      });
    }
  }
#endif
#if !defined(__AVX512VBMI__)
  if constexpr (size == 3) {
#if defined(__AVX2__)
    if (n >= 2 * side) {
      return overlappingBlocks(n, 2 * side, [&](ptrdiff_t i) {
        reverseThreesTwice(src + i * size, dst + (n - 2 * side - i) * size);
      });
    }
#endif
#if VEK_NEON_BY_NAME
    if (n >= side) return reversePixels(src, n, dst);
#endif
    if (n >= side) {
      return overlappingBlocks(n, side, [&](ptrdiff_t i) {
        reverseThrees(src + i * size, dst + (n - side - i) * size);
      });
    }
  }
#endif
  ptrdiff_t i = 0;
  if constexpr (vectorBytes > side) i = reverseVectors<size>(u8, src, i, n, dst);
  i = reverseVectors<size>(block128, src, i, n, dst);
  for (; i < n; ++i) memcpy(dst + i * size, src + (n - 1 - i) * size, size);
}

/// `size` bytes a pixel; `plain` is the portable kernel.
template <int size, PlaceTile PlaceKernels::*plain>
void placeTile(const Vek8u* tile, ptrdiff_t tileStep, ptrdiff_t cols, ptrdiff_t rows, Vek8u* dst,
               ptrdiff_t dx, ptrdiff_t dy) {
  VEK_ASSERT(dx == size || dx == -size || dy == size || dy == -size || rows == 1);
  if (dx == size) {
    for (ptrdiff_t y = 0; y < rows; ++y) {
      memcpy(dst + y * dy, tile + y * tileStep, static_cast<size_t>(cols * size));
    }
  } else if (dx == -size) {
    for (ptrdiff_t y = 0; y < rows; ++y) {
      reverseRow<size>(tile + y * tileStep, cols, dst + y * dy - (cols - 1) * size);
    }
  } else if (size == 1 && cols >= side && rows >= side) {
    const bool upwards = dy < 0;  // from the last row up the bytes ascend
    const ptrdiff_t last = rows - 1;
    transposeBytes({.tile = upwards ? tile + last * tileStep : tile,
                    .tileStep = upwards ? -tileStep : tileStep,
                    .cols = cols,
                    .rows = rows,
                    .dst = upwards ? dst + last * dy : dst,
                    .dx = dx});
  } else {
    (portable::placeKernels.*plain)(tile, tileStep, cols, rows, dst, dx, dy);
  }
}

}  // namespace

constexpr PlaceKernels placeKernels = {.bytes1 = placeTile<1, &PlaceKernels::bytes1>,
                                       .bytes2 = placeTile<2, &PlaceKernels::bytes2>,
                                       .bytes3 = placeTile<3, &PlaceKernels::bytes3>};

}  // namespace vek::VEK_LEVEL
HWY_AFTER_NAMESPACE();
