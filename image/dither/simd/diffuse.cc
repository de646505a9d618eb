#include <string.h>

#include "core/assert.h"
#include "core/color/pixel_format.h"
#include "image/dither/dither_kernels.h"
#include "image/dither/level_lanes.h"

HWY_BEFORE_NAMESPACE();
namespace vek::VEK_LEVEL {
namespace {

// The error of a sample goes to the one that follows it, so that a row is one long chain. Rows go side
// by side instead, a band of them at a time: each 16-bit lane is a row, two columns behind the row
// above it, whose errors it then has. In step t, row r is in column t - 2 r.
//
//     step     5 6 7 8 9       Lane 0 is the band's last row, so that a vector of errors can be stored
//     row 0    5 6 7 8 9       where only its lane 0 is wanted: the other lanes fall on columns that
//     row 1    3 4 5 6 7       the last row has not reached yet.
//     row 2    1 2 3 4 5
//
// Sixteen steps at a time, the samples of a tile are transposed into steps and the results back. Rows
// whose columns are not all inside the picture are worked on in copies, and their errors masked.

constexpr int bandRows = vectorBytes / 2;
constexpr int tileSteps = 16;
constexpr int mostBehind = 2 * (bandRows - 1);  ///< columns of the last row behind the first

/// What a row's errors take beside its columns: stores begin before the first and go beyond the last.
constexpr int columnsBefore = 2 * bandRows, columnsBehind = 2 * bandRows + 3 * tileSteps;

constexpr hn::Full128<Vek8u> sixteenBytes;
using SixteenBytes = hn::Vec<decltype(sixteenBytes)>;

// ---- Transposition. A round interleaves the first half of the vectors with the second, which rotates
// the bits of an element's address, (vector, byte), to the left by one.

template <int count, int rounds>
void rotateAddresses(SixteenBytes (&v)[count]) {
  SixteenBytes mixed[count];
  for (int round = 0; round < rounds; ++round) {
    for (int i = 0; i < count / 2; ++i) {
      mixed[2 * i] = hn::InterleaveLower(sixteenBytes, v[i], v[i + count / 2]);
      mixed[2 * i + 1] = hn::InterleaveUpper(sixteenBytes, v[i], v[i + count / 2]);
    }
    for (int i = 0; i < count; ++i) v[i] = mixed[i];
  }
}

/// Lanes that are transposed at once.
constexpr int lanesAtOnce = bandRows < 16 ? bandRows : 16;

/// A byte for each row in each of sixteen steps.
struct Tile {
  alignas(64) Vek8u at[tileSteps][bandRows];

  Vek8u* part(int lane, int i) { return at[0] + (bandRows > 16 ? bandRows : 16) * i + lane; }
  /// Sixteen steps of each of the lanes from `lane` on.
  void setRows(int lane, SixteenBytes (&rows)[lanesAtOnce]) {
    rotateAddresses<lanesAtOnce, lanesAtOnce == 8 ? 3 : 4>(rows);
    for (int i = 0; i < lanesAtOnce; ++i) hn::StoreU(rows[i], sixteenBytes, part(lane, i));
  }
  void getRows(int lane, SixteenBytes (&rows)[lanesAtOnce]) {
    for (int i = 0; i < lanesAtOnce; ++i) rows[i] = hn::LoadU(sixteenBytes, part(lane, i));
    rotateAddresses<lanesAtOnce, 4>(rows);
  }
};

/// Columns of a tile that are inside the picture: from .. to - 1 of sixteen.
struct Inside {
  int from, to;

  Inside(int x, int width)
      : from(x < 0 ? -x : 0), to(width - x < tileSteps ? width - x : tileSteps) {}
  bool all() const { return from == 0 && to == tileSteps; }
  bool any() const { return from < to; }
};

// ---- Destinations. put() gets the results of sixteen columns of row r of a band, from column x on. Pixels
// of the source have `samples` samples; those that are taken begin with `first`.

template <int size>
void copyInside(const Inside& inside, const Vek8u (&from)[tileSteps * size], Vek8u* at) {
  if (!inside.any()) return;
  memcpy(at + ptrdiff_t{inside.from} * size, from + inside.from * size,
         static_cast<size_t>(inside.to - inside.from) * size);
}

struct GreyBytes {
  static constexpr int channels = 1, samples = 1, first = 0;
  static constexpr bool takesGrey = true;  ///< rather than indices

  void put(int, Vek8u* row, ptrdiff_t x, int width, const SixteenBytes (&v)[1]) {
    const Inside inside(static_cast<int>(x), width);
    if (inside.all()) return hn::StoreU(v[0], sixteenBytes, row + x);
    Vek8u copy[tileSteps];
    hn::StoreU(v[0], sixteenBytes, copy);
    copyInside<1>(inside, copy, row + x);
  }
};

template <class Format>
struct Pixels16 {
  static constexpr int channels = 3, samples = 3, first = 0;
  static constexpr bool takesGrey = false;

  void put(int, Vek8u* row, ptrdiff_t x, int width, const SixteenBytes (&v)[3]) {
    constexpr hn::CappedTag<Vek16u, tileSteps> words;
    constexpr hn::Rebind<Vek8u, decltype(words)> bytes;
    Vek8u k[3][tileSteps], copy[2 * tileSteps];
    for (int c = 0; c < 3; ++c) hn::StoreU(v[c], sixteenBytes, k[c]);
    const Inside inside(static_cast<int>(x), width);
    Vek8u* const to = inside.all() ? row + 2 * x : copy;
    for (size_t i = 0; i < tileSteps; i += hn::MaxLanes(words)) {
      const auto field = [&](int c) { return hn::PromoteTo(words, hn::LoadU(bytes, k[c] + i)); };
      const auto word = hn::Or(
          hn::Or(hn::ShiftLeft<Format::rPos>(field(0)), hn::ShiftLeft<Format::gPos>(field(1))),
          hn::ShiftLeft<Format::bPos>(field(2)));
      hn::StoreU(word, words, reinterpret_cast<Vek16u*>(to + 2 * i));
    }
    if (to == copy) copyInside<2>(inside, copy, row + 2 * x);
  }
};

/// One field of 16-bit pixels, those of the first channel before the others.
struct Field {
  static constexpr int channels = 1, samples = 3;
  static constexpr bool takesGrey = false;
  int first, shift;

  void put(int, Vek8u* row, ptrdiff_t x, int width, const SixteenBytes (&v)[1]) const {
    constexpr hn::CappedTag<Vek16u, tileSteps> words;
    constexpr hn::Rebind<Vek8u, decltype(words)> bytes;
    const Inside inside(static_cast<int>(x), width);
    if (!inside.any()) return;
    Vek8u k[tileSteps], copy[2 * tileSteps] = {};
    hn::StoreU(v[0], sixteenBytes, k);
    Vek8u* const at = row + 2 * x;
    const size_t size = 2 * static_cast<size_t>(inside.to - inside.from);
    if (first != 0) memcpy(copy + 2 * inside.from, at + 2 * inside.from, size);
    for (size_t i = 0; i < tileSteps; i += hn::MaxLanes(words)) {
      Vek16u* const word = reinterpret_cast<Vek16u*>(copy + 2 * i);
      const auto field = hn::ShiftLeftSame(hn::PromoteTo(words, hn::LoadU(bytes, k + i)), shift);
      hn::StoreU(hn::Or(hn::LoadU(words, word), field), words, word);
    }
    memcpy(at + 2 * inside.from, copy + 2 * inside.from, size);
  }
};

/// Bytes begin at multiples of eight columns, rows anywhere: sixteen columns before those of a tile are
/// kept, and whole bytes of both are stored. Indices outside the picture are 0.
template <int bits>
struct Bits {
  static constexpr int channels = 1, samples = 1, first = 0;
  static constexpr bool takesGrey = false;

  Vek8u columns[bandRows][2 * tileSteps];

  void put(int r, Vek8u* row, ptrdiff_t x, int width, const SixteenBytes (&v)[1]) {
    Vek8u* const known = columns[r];
    memcpy(known, known + tileSteps, tileSteps);
    hn::StoreU(v[0], sixteenBytes, known + tileSteps);
    const ptrdiff_t start = x & ~ptrdiff_t{7}, at = start * bits / 8;
    Vek8u packed[2 * bits];
    pack(known + tileSteps - (x - start), packed);
    pack(known + tileSteps - (x - start) + 8, packed + bits);
    const ptrdiff_t end = (ptrdiff_t{width} * bits + 7) / 8 - at;
    const ptrdiff_t from = at < 0 ? -at : 0, to = end < 2 * bits ? end : 2 * bits;
    if (from < to) memcpy(row + at + from, packed + from, static_cast<size_t>(to - from));
  }

 private:
  /// Eight indices, the first one highest. The products have no bits in common.
  static void pack(const Vek8u* indices, Vek8u* packed) {
    uint64_t all;
    memcpy(&all, indices, 8);
    if constexpr (bits == 1) {
      packed[0] = static_cast<Vek8u>(all * 0x8040201008040201u >> 56);
    } else if constexpr (bits == 2) {
      packed[0] = static_cast<Vek8u>(static_cast<Vek32u>(all) * 0x40100401u >> 24);
      packed[1] = static_cast<Vek8u>(static_cast<Vek32u>(all >> 32) * 0x40100401u >> 24);
    } else {
      all = all << 4 | all >> 8;
      for (int i = 0; i < bits; ++i) packed[i] = static_cast<Vek8u>(all >> 16 * i);
    }
  }
};

// ---- Steps.

/// v with each lane in the place before, and the first of eight lanes at `next` in the last place.
inline V16s movedDown(V16s v, const Vek16s* next) {
  constexpr hn::Full128<Vek16s> eight;
  const auto entering = hn::LoadU(eight, next);
#if defined(__AVX512BW__)
  const V16s following{_mm512_alignr_epi64(_mm512_castsi128_si512(entering.raw), v.raw, 2)};
#elif defined(__AVX2__)
  const V16s following{
      _mm256_permute2x128_si256(v.raw, _mm256_castsi128_si256(entering.raw), 0x21)};
#else
  static_assert(bandRows == 8);
  const V16s following = entering;
#endif
  return hn::CombineShiftRightBytes<2>(s16, following, v);
}

/// The errors of the last three steps; lane i has those of row bandRows - 1 - i.
struct Errors {
  V16s last = hn::Zero(s16), before = hn::Zero(s16), first = hn::Zero(s16);
};

/// What rows above a band leave to its first row: 3 e(x+1) + 5 e(x) + e(x-1) for sixteen columns.
struct FromAbove {
  alignas(64) Vek16s at[tileSteps + 8];

  void set(const Vek16s* errors) {
    constexpr hn::CappedTag<Vek16s, 8> eight;
    for (int i = 0; i < tileSteps; i += 8) {
      const auto left = hn::LoadU(eight, errors + i - 1), middle = hn::LoadU(eight, errors + i);
      const auto right = hn::LoadU(eight, errors + i + 1);
      const auto sum = hn::Add(hn::Add(left, hn::Mul(middle, hn::Set(eight, 5))),
                               hn::Mul(right, hn::Set(eight, 3)));
      hn::Store(sum, eight, at + i);
    }
    hn::Store(hn::Zero(eight), eight, at + tileSteps);
  }
};

/// One step of one channel: takes the samples of all rows in `tile`, leaves their results there.
/// `inside` masks the rows that are in the picture.
template <bool takesGrey, bool masked, class Levels>
[[gnu::always_inline]] inline void step(const Levels& levels, const Vek16s* above, V16s inside,
                                        Errors& e, Vek8u* tile, Vek16s* stored) {
  const V16s sample = hn::BitCast(s16, hn::PromoteTo(u16, hn::LoadU(halfU8, tile)));
  const V16s fromRow = hn::Sub(hn::ShiftLeft<3>(e.last), e.last);
  const V16s below = hn::Add(hn::Add(hn::Add(e.last, e.last), e.last),
                             hn::Add(hn::Add(hn::ShiftLeft<2>(e.before), e.before), e.first));
  const V16s passed = hn::Add(fromRow, movedDown(below, above));
  const V16s half = hn::Set(s16, 8);
  const V16s wanted = hn::Add(hn::ShiftLeft<4>(sample), hn::ShiftRight<4>(hn::Add(passed, half)));
  const V16s rounded = hn::ShiftRight<4>(hn::Add(wanted, half));
  const V16s clamped = hn::Min(hn::Max(rounded, hn::Zero(s16)), hn::Set(s16, 255));
  const V16u k = levels.nearest(hn::BitCast(u16, clamped));
  const V16s grey = hn::BitCast(s16, levels.grey(k));
  V16s error = hn::Sub(wanted, hn::ShiftLeft<4>(grey));
  V16s result = takesGrey ? grey : hn::BitCast(s16, k);
  if constexpr (masked) {
    error = hn::And(error, inside);
    result = hn::And(result, inside);
  }
  hn::StoreU(hn::DemoteTo(halfU8, result), halfU8, tile);
  hn::StoreU(error, s16, stored);
  e.first = e.before;
  e.before = e.last;
  e.last = error;
}

template <int channels, int samples>
struct Band {
  const Picture& picture;
  int first;  ///< of a pixel's samples
  int y, rows;
  Vek16s* errors[channels];  ///< of the row above and, behind what is read of it, the last row

  int column(int r, int t) const { return t - 2 * r; }

  void load(int t, Tile (&tiles)[channels]) const {
    for (int lane = 0; lane < bandRows; lane += lanesAtOnce) {
      SixteenBytes v[channels][lanesAtOnce];
      for (int i = 0; i < lanesAtOnce; ++i) {
        const int r = bandRows - 1 - lane - i, x = column(r, t);
        const Inside inside(x, picture.width);
        Vek8u copy[samples * tileSteps];
        const Vek8u* from = picture.src + (y + r) * picture.srcStep + ptrdiff_t{x} * samples;
        if (r >= rows || !inside.all()) {
          memset(copy, 0, sizeof copy);
          if (r < rows && inside.any()) {
            memcpy(copy + inside.from * samples, from + inside.from * samples,
                   static_cast<size_t>(inside.to - inside.from) * samples);
          }
          from = copy;
        }
        if constexpr (samples == 1) {
          v[0][i] = hn::LoadU(sixteenBytes, from);
        } else if constexpr (channels == samples) {
          hn::LoadInterleaved3(sixteenBytes, from, v[0][i], v[1][i], v[2][i]);
        } else {
          SixteenBytes all[samples];
          hn::LoadInterleaved3(sixteenBytes, from, all[0], all[1], all[2]);
          v[0][i] = all[first];
        }
      }
      for (int c = 0; c < channels; ++c) tiles[c].setRows(lane, v[c]);
    }
  }

  template <class Destination>
  void store(int t, Tile (&tiles)[channels], Destination& destination) const {
    for (int lane = 0; lane < bandRows; lane += lanesAtOnce) {
      SixteenBytes v[channels][lanesAtOnce];
      for (int c = 0; c < channels; ++c) tiles[c].getRows(lane, v[c]);
      for (int i = 0; i < lanesAtOnce; ++i) {
        const int r = bandRows - 1 - lane - i;
        if (r >= rows) continue;
        SixteenBytes row[channels];
        for (int c = 0; c < channels; ++c) row[c] = v[c][i];
        destination.put(r, picture.dst + (y + r) * picture.dstStep, column(r, t), picture.width,
                        row);
      }
    }
  }

  template <bool takesGrey, bool masked, class... Levels>
  void run(int t, Tile (&tiles)[channels], Errors (&e)[channels], const Levels&... levels) const {
    const V16s firstColumns =
        hn::Add(hn::Add(hn::Iota(s16, 0), hn::Iota(s16, 0)), filled(s16, t - mostBehind));
    const V16s width = filled(s16, picture.width), none = filled(s16, -1);
    FromAbove above[channels];
    Errors now[channels];
    for (int c = 0; c < channels; ++c) {
      above[c].set(errors[c] + t);
      now[c] = e[c];
    }
    for (int i = 0; i < tileSteps; ++i) {
      V16s inside = none;
      if constexpr (masked) {
        const V16s columns = hn::Add(firstColumns, filled(s16, i));
        inside = hn::VecFromMask(s16, hn::And(hn::Gt(columns, none), hn::Gt(width, columns)));
      }
      int c = 0;
      ((step<takesGrey, masked>(levels, above[c].at + i, inside, now[c], tiles[c].at[i],
                                errors[c] + t + i - mostBehind),
        ++c),
       ...);
    }
    for (int c = 0; c < channels; ++c) e[c] = now[c];
  }
};

/// With the levels of each channel. Not inlined, so that one array of errors is on the stack.
template <class Destination, class... Levels>
[[gnu::noinline]] void diffuse(const Picture& picture, Destination destination,
                               const Levels&... levels) {
  constexpr int channels = Destination::channels, around = columnsBefore + columnsBehind;
  VEK_ASSERT(picture.width >= 1 && picture.height >= 1);
  VEK_ASSERT(picture.width * channels <= mostErrors<channels>);
  Vek16s errors[mostErrors<channels> + channels * around];
  const int used = picture.width + around;
  memset(errors, 0, static_cast<size_t>(channels * used) * sizeof errors[0]);
  for (int y = 0; y < picture.height; y += bandRows) {
    const int rows = picture.height - y < bandRows ? picture.height - y : bandRows;
    Band<channels, Destination::samples> band = {picture, destination.first, y, rows, {}};
    for (int c = 0; c < channels; ++c) band.errors[c] = errors + c * used + columnsBefore;
    Errors e[channels];
    // Until the last row has gone eight columns beyond the picture, so that all packed bytes are full.
    for (int t = 0; t < picture.width + 8 + mostBehind; t += tileSteps) {
      Tile tiles[channels];
      band.load(t, tiles);
      if (t >= mostBehind && t + tileSteps <= picture.width) {
        band.template run<Destination::takesGrey, false>(t, tiles, e, levels...);
      } else {
        band.template run<Destination::takesGrey, true>(t, tiles, e, levels...);
      }
      band.store(t, tiles, destination);
    }
  }
}

void diffuseBytes(const Picture& picture, int levels, VekiPoint) {
  VEK_ASSERT(levels >= 2 && levels <= 256);
  if (levels <= 16) return diffuse(picture, GreyBytes(), FewLevels(levels));
  diffuse(picture, GreyBytes(), ManyLevels(levels));
}

template <int bits>
void diffuseBits(const Picture& picture, int, VekiPoint) {
  diffuse(picture, Bits<bits>(), FewLevels(1 << bits));
}

template <class Format>
void diffusePixels(const Picture& picture, int, VekiPoint) {
  const FieldLevels<Format::rBits> red;
  const FieldLevels<Format::gBits> green;
  const FieldLevels<Format::bBits> blue;
  if (picture.width <= mostWidthTogether) {
    return diffuse(picture, Pixels16<Format>(), red, green, blue);
  }
  diffuse(picture, Field{0, Format::rPos}, red);
  diffuse(picture, Field{1, Format::gPos}, green);
  diffuse(picture, Field{2, Format::bPos}, blue);
}

}  // namespace

constexpr DitherKernels diffuseKernels = {.bytes = diffuseBytes,
                                          .oneBit = diffuseBits<1>,
                                          .twoBits = diffuseBits<2>,
                                          .fourBits = diffuseBits<4>,
                                          .rgb565 = diffusePixels<Rgb565>,
                                          .rgb555 = diffusePixels<Rgb555>,
                                          .rgb444 = diffusePixels<Rgb444>};

}  // namespace vek::VEK_LEVEL
HWY_AFTER_NAMESPACE();
