#include "core/kernel/place_rows.h"

#include "core/kernel/vector.h"

#if VEK_HAVE_HIGHWAY

HWY_BEFORE_NAMESPACE();
namespace vek::VEK_LEVEL {
namespace {

using Bytes = hn::FixedTag<Vek8u, 16>;
constexpr Bytes bytes;
using Block = hn::Vec<Bytes>;

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

/// Transposes `side` vectors of `side` lanes: each round interleaves the first half of the rows
/// with the second.
template <class Tag, int side>
void transpose(Tag tag, hn::Vec<Tag> (&rows)[side]) {
  hn::Vec<Tag> mixed[side];
  for (int round = 1; round < side; round *= 2) {
    for (int i = 0; i < side / 2; ++i) {
      mixed[2 * i] = hn::InterleaveLower(tag, rows[i], rows[i + side / 2]);
      mixed[2 * i + 1] = hn::InterleaveUpper(tag, rows[i], rows[i + side / 2]);
    }
    for (int i = 0; i < side; ++i) rows[i] = mixed[i];
  }
}

/// Pixels that are lanes: square blocks.
template <class Lane>
void turnBlocks(const Turn& t) {
  constexpr hn::FixedTag<Lane, 16 / sizeof(Lane)> lanes;
  constexpr int side = 16 / sizeof(Lane);
  constexpr ptrdiff_t size = sizeof(Lane);
  if (t.cols < side || t.rows < side) return turnPixels<size>(t);
  forEachOverlappingBlock(t.cols, side, [&](ptrdiff_t x) {
    forEachOverlappingBlock(t.rows, side, [&](ptrdiff_t y) {
      const Vek8u* from = t.tile + y * t.tileStep + x * size;
      Vek8u* to = t.dst + x * t.dx + y * size;
      hn::Vec<decltype(lanes)> rows[side];
      for (int i = 0; i < side; ++i) {
        rows[i] = hn::BitCast(lanes, hn::LoadU(bytes, from + i * t.tileStep));
      }
      transpose(lanes, rows);
      for (int i = 0; i < side; ++i) {
        hn::StoreU(hn::BitCast(bytes, rows[i]), bytes, to + i * t.dx);
      }
    });
  });
}

/// Three-byte pixels: 4 x 4 blocks, widened to 32-bit lanes. Loads and stores are 16 bytes where
/// the row has two more pixels. At the end of a tile row the load begins four bytes early instead;
/// at the end of a destination row 12 bytes are stored.
void turnTriples(const Turn& t) {
  constexpr ptrdiff_t side = 4, size = 3, wide = 6;
  if (t.cols < wide || t.rows < side) return turnPixels<size>(t);
  constexpr hn::Repartition<Vek32u, Bytes> lanes;
  alignas(16) static constexpr Vek8u widen[16] = {0, 1, 2, 2, 3, 4,  5,  5,
                                                  6, 7, 8, 8, 9, 10, 11, 11};
  alignas(16) static constexpr Vek8u narrow[16] = {0,  1,  2,  4,  5,  6,  8,  9,
                                                   10, 12, 13, 14, 15, 15, 15, 15};
  const Block narrowing = hn::Load(bytes, narrow);
  forEachOverlappingBlock(t.cols, side, [&](ptrdiff_t x) {
    const ptrdiff_t early = x + wide <= t.cols ? 0 : 4;
    const Block widening =
        hn::Add(hn::Load(bytes, widen), hn::Set(bytes, static_cast<Vek8u>(early)));
    forEachOverlappingBlock(t.rows, side, [&](ptrdiff_t y) {
      const Vek8u* from = t.tile + y * t.tileStep + x * size - early;
      Vek8u* to = t.dst + x * t.dx + y * size;
      hn::Vec<decltype(lanes)> rows[side];
      for (int i = 0; i < side; ++i) {
        const Block row = hn::LoadU(bytes, from + i * t.tileStep);
        rows[i] = hn::BitCast(lanes, hn::TableLookupBytes(row, widening));
      }
      transpose(lanes, rows);
      for (int i = 0; i < side; ++i) {
        const Block column = hn::TableLookupBytes(hn::BitCast(bytes, rows[i]), narrowing);
        if (y + wide <= t.rows) {
          hn::StoreU(column, bytes, to + i * t.dx);
        } else {
          alignas(16) Vek8u last[16];
          hn::Store(column, bytes, last);
          memcpy(to + i * t.dx, last, side * size);
        }
      }
    });
  });
}

/// dst[i] = src[n - 1 - i], as many pixels at a time as 16 bytes hold. Where they leave a byte over
/// the load begins one byte early, and the store's last byte is the next one's first.
template <int size>
void reverseRow(const Vek8u* src, ptrdiff_t n, Vek8u* dst) {
  constexpr ptrdiff_t count = 16 / size, spare = 16 % size;
  alignas(16) Vek8u order[16] = {};
  for (ptrdiff_t i = 0; i < count * size; ++i) {
    order[i] = static_cast<Vek8u>(spare + (count - 1 - i / size) * size + i % size);
  }
  const Block reversing = hn::Load(bytes, order);
  ptrdiff_t i = 0;
  for (; i + count + spare <= n; i += count) {
    const Block pixels = hn::LoadU(bytes, src + (n - i - count) * size - spare);
    hn::StoreU(hn::TableLookupBytes(pixels, reversing), bytes, dst + i * size);
  }
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
      turnBlocks<Vek8u>(turn);
    } else if constexpr (size == 2) {
      turnBlocks<Vek16u>(turn);
    } else {
      turnTriples(turn);
    }
  }
}

}  // namespace

constexpr PlaceRows placeRows = {placeTile<1>, placeTile<2>, placeTile<3>};

}  // namespace vek::VEK_LEVEL
HWY_AFTER_NAMESPACE();

#else

#include "core/kernel/place_body.h"

#endif
