#include "core/kernel/blocks.h"
#include "core/kernel/place_kernels.h"

HWY_BEFORE_NAMESPACE();
namespace vek::VEK_LEVEL {
namespace {

using Bytes = hn::FixedTag<Vek8u, 16>;
constexpr Bytes bytes;
using Wide = hn::ScalableTag<Vek8u>;
constexpr Wide wide;
constexpr ptrdiff_t side = 16;  // bytes of a transposed block in either direction

/// A tile without the orientation of its rows: column x becomes the destination row at dst + x *
/// dx, its pixels in ascending order.
struct Turn {
  const Vek8u* tile;
  ptrdiff_t tileStep, cols, rows;
  Vek8u* dst;
  ptrdiff_t dx;
};

template <int pixelBytes>
void copyPixel(Vek8u* __restrict dst, const Vek8u* __restrict src) {
  for (int i = 0; i < pixelBytes; ++i) dst[i] = src[i];
}

template <int pixelBytes>
void turnPixels(const Turn& t) {
  for (ptrdiff_t x = 0; x < t.cols; ++x) {
    const Vek8u* from = t.tile + x * pixelBytes;
    Vek8u* to = t.dst + x * t.dx;
    for (ptrdiff_t y = 0; y < t.rows; ++y) {
      copyPixel<pixelBytes>(to + y * pixelBytes, from + y * t.tileStep);
    }
  }
}

/// Bytes from each of the rows `distance` bytes apart, one 128-bit block for each.
template <class Tag>
hn::Vec<Tag> loadBlocks(Tag tag, const Vek8u* from, ptrdiff_t distance) {
  if constexpr (hn::MaxLanes(Tag()) == side) {
    return hn::LoadU(tag, from);
  } else {
    constexpr hn::Half<Tag> half;
    constexpr ptrdiff_t blocks = static_cast<ptrdiff_t>(hn::MaxLanes(half)) / side;
    return hn::Combine(tag, loadBlocks(half, from + blocks * distance, distance),
                       loadBlocks(half, from, distance));
  }
}

/// Transposes 16 columns of as many rows as a vector has bytes. Vector i starts as the rows i, 16 +
/// i, ..., so that its 128-bit blocks are transposed side by side, each round interleaving the
/// first half of the vectors with the second, and end up in the order of the rows.
template <class Tag>
void turnBlock(Tag tag, const Vek8u* from, ptrdiff_t fromStep, Vek8u* to, ptrdiff_t toStep) {
  hn::Vec<Tag> rows[side], mixed[side];
  for (ptrdiff_t i = 0; i < side; ++i) {
    rows[i] = loadBlocks(tag, from + i * fromStep, side * fromStep);
  }
  for (int round = 1; round < side; round *= 2) {
    for (int i = 0; i < side / 2; ++i) {
      mixed[2 * i] = hn::InterleaveLower(tag, rows[i], rows[i + side / 2]);
      mixed[2 * i + 1] = hn::InterleaveUpper(tag, rows[i], rows[i + side / 2]);
    }
    for (int i = 0; i < side; ++i) rows[i] = mixed[i];
  }
  for (ptrdiff_t i = 0; i < side; ++i) hn::StoreU(rows[i], tag, to + i * toStep);
}

template <class Tag>
void turnColumns(Tag tag, const Vek8u* from, ptrdiff_t fromStep, ptrdiff_t cols, Vek8u* to,
                 ptrdiff_t toStep) {
  overlappingBlocks(cols, side, [&](ptrdiff_t x) {
    turnBlock(tag, from + x, fromStep, to + x * toStep, toStep);
  });
}

/// Rows y and on, as many at a time as a vector has bytes; returns the first that is left. Rows at
/// such steps that they share the sets of the cache would push each other out between their blocks:
/// of these, whole lines are copied into a stage first.
template <class Tag>
ptrdiff_t turnRows(Tag tag, const Turn& t, ptrdiff_t y) {
  constexpr ptrdiff_t line = 64, length = static_cast<ptrdiff_t>(hn::MaxLanes(Tag()));
  const bool staged = t.tileStep % 1024 == 0 && t.cols >= line && length > side;
  alignas(64) Vek8u stage[length * line];
  for (; y + length <= t.rows; y += length) {
    const Vek8u* const from = t.tile + y * t.tileStep;
    if (!staged) {
      turnColumns(tag, from, t.tileStep, t.cols, t.dst + y, t.dx);
      continue;
    }
    overlappingBlocks(t.cols, line, [&](ptrdiff_t x) {
      for (ptrdiff_t i = 0; i < length; ++i) {
        memcpy(stage + i * line, from + i * t.tileStep + x, line);
      }
      turnColumns(tag, stage, line, line, t.dst + x * t.dx + y, t.dx);
    });
  }
  if constexpr (length > side) {
    return turnRows(hn::Half<Tag>(), t, y);
  } else {
    return y;
  }
}

/// Where the rows go on for it, each row of the destination gets a cache line at a time (two halves
/// of one on AVX2).
void turnBytes(const Turn& t) {
  if (t.cols < side || t.rows < side) return turnPixels<1>(t);
  if (turnRows(wide, t, 0) < t.rows) turnRows(bytes, t, t.rows - side);
}

/// Puts pixels of `size` bytes, as many as fit behind a vector's first `spare` bytes, in descending
/// order at its beginning.
template <int size, class Tag>
struct Reversal {
  static constexpr ptrdiff_t length = static_cast<ptrdiff_t>(hn::MaxLanes(Tag()));
#if defined(__AVX512VBMI__)
  static constexpr bool anywhere = length == 64;  // one permutation reaches every byte
#else
  static constexpr bool anywhere = false;
#endif
  static constexpr bool possible = anywhere || length == 16 || 16 % size == 0;
  static constexpr ptrdiff_t count = length / size, spare = length % size;
  hn::Vec<Tag> order;

  Reversal() {
    constexpr ptrdiff_t within = anywhere ? length : 16;  // blocks are reversed afterwards
    alignas(64) Vek8u at[length] = {};
    for (ptrdiff_t i = 0; i < length / within; ++i) {
      for (ptrdiff_t k = 0; k < within / size * size; ++k) {
        at[i * within + k] =
            static_cast<Vek8u>(spare + (within / size - 1 - k / size) * size + k % size);
      }
    }
    order = hn::Load(Tag(), at);
  }

  hn::Vec<Tag> of(hn::Vec<Tag> v) const {
#if defined(__AVX512VBMI__)
    if constexpr (anywhere) return hn::Vec<Tag>{_mm512_permutexvar_epi8(order.raw, v.raw)};
#endif
    return hn::ReverseBlocks(Tag(), hn::TableLookupBytes(v, order));
  }
};

/// dst[k] = src[n - 1 - k] from pixel i on, as far as vectors go; returns where that is. Where the
/// pixels leave bytes over, the load begins that much early, and the store's last bytes are the
/// next one's first.
template <int size, class Tag>
ptrdiff_t reverseVectors(Tag, const Vek8u* src, ptrdiff_t i, ptrdiff_t n, Vek8u* dst) {
  using R = Reversal<size, Tag>;
  if constexpr (R::possible) {
    const R reversal;
    constexpr ptrdiff_t early = (R::spare + size - 1) / size;  // pixels that are touched besides
    for (; i + R::count + early <= n; i += R::count) {
      const auto pixels = hn::LoadU(Tag(), src + (n - i - R::count) * size - R::spare);
      hn::StoreU(reversal.of(pixels), Tag(), dst + i * size);
    }
  }
  return i;
}

template <int size>
void reverseRow(const Vek8u* src, ptrdiff_t n, Vek8u* dst) {
  ptrdiff_t i = 0;
  if constexpr (hn::MaxLanes(Wide()) > side) i = reverseVectors<size>(wide, src, i, n, dst);
  i = reverseVectors<size>(bytes, src, i, n, dst);
  for (; i < n; ++i) copyPixel<size>(dst + i * size, src + (n - 1 - i) * size);
}

template <int size>
void placeTile(const Vek8u* tile, ptrdiff_t tileStep, ptrdiff_t cols, ptrdiff_t rows, Vek8u* dst,
               ptrdiff_t dx, ptrdiff_t dy) {
  if (dx == size) {
    for (ptrdiff_t y = 0; y < rows; ++y) {
      memcpy(dst + y * dy, tile + y * tileStep, static_cast<size_t>(cols * size));
    }
  } else if (dx == -size) {
    for (ptrdiff_t y = 0; y < rows; ++y) {
      reverseRow<size>(tile + y * tileStep, cols, dst + y * dy - (cols - 1) * size);
    }
  } else {
    const bool upwards = dy < 0;  // from the last row up the pixels ascend
    const ptrdiff_t last = rows - 1;
    const Turn turn = {upwards ? tile + last * tileStep : tile,
                       upwards ? -tileStep : tileStep,
                       cols,
                       rows,
                       upwards ? dst + last * dy : dst,
                       dx};
    if constexpr (size == 1) {
      turnBytes(turn);
    } else {
      turnPixels<size>(turn);
    }
  }
}

}  // namespace

constexpr PlaceKernels placeKernels = {placeTile<1>, placeTile<2>, placeTile<3>};

}  // namespace vek::VEK_LEVEL
HWY_AFTER_NAMESPACE();
