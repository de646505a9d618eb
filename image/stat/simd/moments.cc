#include "core/kernel/blocks.h"
#include "core/kernel/interleave.h"
#include "core/kernel/unroll.h"
#include "image/stat/moments_kernels.h"

HWY_BEFORE_NAMESPACE();
namespace vek::VEK_LEVEL {
namespace {

// A tile is summed in strips of seven rows, a strip in blocks of 64 columns:
//
// - Down a strip, a0 += I, a1 += a0, a2 += a1, a3 += a2 for each row leave a_q = sum over the rows of
//   C(i + q - 1, q) I, where i = 7 for the first row and 1 for the last one. The largest is a3 <= 255 *
//   C(10, 4) = 53550 and fits 16 bits.
// - Across a block, dot products give the sums of a_q times polynomials of the column j = -32 .. 31.
// - Along the strip, sums of sums over the blocks do as the ones down the strip: block sums times
//   C(b + k - 1, k), where b counts the blocks from the last one back.
//
// What is left is a small number of sums a strip, which are turned into powers of x and y.

constexpr int stripRows = 7;
constexpr int blockColumns = 64;
constexpr int blocksPerTile = momentTile / blockColumns;
constexpr int vectorsPerBlock = blockColumns / vectorBytes;

/// Polynomials of degree p of the columns of a block, in the order of the vectors' even and odd bytes.
/// That of the third degree is j^3 - 768 j, which is only a quarter as large as j^3.
struct ColumnWeights {
  alignas(64) Vek16s at[4][2 * vectorsPerBlock][vectorBytes / 2];
};

constexpr int cubicPart = 768;

constexpr ColumnWeights columnWeights = [] {
  ColumnWeights weights = {};
  for (int v = 0; v < 2 * vectorsPerBlock; ++v) {
    for (int i = 0; i < vectorBytes / 2; ++i) {
      const int j = v / 2 * vectorBytes + 2 * i + v % 2 - blockColumns / 2;
      const int values[] = {1, j, j * j, j * j * j - cubicPart * j};
      for (int p = 0; p < 4; ++p) weights.at[p][v][i] = static_cast<Vek16s>(values[p]);
    }
  }
  return weights;
}();

/// The most that a 32-bit lane's sums of a0 come to with the weights of degree p, of one sign, in a
/// block: a lane takes in the same places of every vector.
constexpr Vek64s mostInLane(int p) {
  Vek64s most = 0;
  for (int lane = 0; lane < vectorBytes / 4; ++lane) {
    Vek64s positive = 0, negative = 0;
    for (const auto& weights : columnWeights.at[p]) {
      for (Vek64s w : {weights[2 * lane], weights[2 * lane + 1]})
        (w < 0 ? negative : positive) += w;
    }
    const Vek64s larger = positive > -negative ? positive : -negative;
    if (larger > most) most = larger;
  }
  return 255 * stripRows * most;
}

// Times the largest C(b + k - 1, k), summed over the blocks, k = 3 - p; other a_q go with fewer sums.
static_assert(mostInLane(0) * 3876 <= INT32_MAX && mostInLane(1) * 816 <= INT32_MAX);
static_assert(mostInLane(2) * 136 <= INT32_MAX && mostInLane(3) * 16 <= INT32_MAX);
static_assert(blocksPerTile == 16);

/// For p + q + k <= 3, the block sums with the weights of degree p, of a_q, times C(b + k - 1, k).
struct StripSums {
  V32s at[4][4][4];
};

/// Of 16-bit lanes that a3 fills, as others are signed.
inline V32s plusUnsigned(V32s sum, V16u v) {
  const V32u pairs = hn::BitCast(u32, v);
  return hn::Add(sum, hn::BitCast(s32, hn::Add(hn::ShiftRight<16>(pairs),
                                               hn::And(pairs, hn::Set(u32, 0xFFFF)))));
}

/// Adds the block's rows, `step` bytes apart; load(row) has the block's vectorsPerBlock vectors.
template <class Load>
[[gnu::always_inline]] inline void addBlock(int rows, Load load, StripSums& sums) {
  // All columns first, then the products: of either, what is needed fits the registers.
  V16u even[vectorsPerBlock][4], odd[vectorsPerBlock][4];
  unrolled<vectorsPerBlock>([&](auto v) {
    V16u(&e)[4] = even[v], (&o)[4] = odd[v];
    for (int q = 0; q < 4; ++q) e[q] = o[q] = hn::Zero(u16);
    for (int y = 0; y < rows; ++y) {
      const V8u bytes = load(y, v.value);
      e[0] = hn::Add(e[0], evenBytes(u16, bytes));
      o[0] = hn::Add(o[0], oddBytes(u16, bytes));
      for (int q = 1; q < 4; ++q) {
        e[q] = hn::Add(e[q], e[q - 1]);
        o[q] = hn::Add(o[q], o[q - 1]);
      }
    }
  });
  const auto addSum = [&](int p, int q, V32s sum) {
    for (int k = 0; k < 4 - q - p; ++k) sum = sums.at[p][q][k] = hn::Add(sums.at[p][q][k], sum);
  };
  unrolled<3>([&](auto q) {
    for (int p = 0; p < 4 - q; ++p) {
      V32s ofEven = hn::Zero(s32), ofOdd = hn::Zero(s32);
      for (int v = 0; v < vectorsPerBlock; ++v) {
        const auto* weights = columnWeights.at[p] + 2 * v;
        ofEven = plusDot(ofEven, hn::BitCast(s16, even[v][q]), hn::Load(s16, weights[0]));
        ofOdd = plusDot(ofOdd, hn::BitCast(s16, odd[v][q]), hn::Load(s16, weights[1]));
      }
      addSum(p, q, hn::Add(ofEven, ofOdd));
    }
  });
  V32s last = hn::Zero(s32);
  for (int v = 0; v < vectorsPerBlock; ++v) {
    last = plusUnsigned(plusUnsigned(last, even[v][3]), odd[v][3]);
  }
  addSum(0, 3, last);
}

/// The sum of the lanes, of more bits than one of them has.
inline Vek64s wideSum(V32s v) {
  alignas(64) Vek32s lanes[vectorBytes / 4];
  hn::Store(v, s32, lanes);
  Vek64s sum = 0;
  for (Vek32s lane : lanes) sum += lane;
  return sum;
}

/// Adds the moments of a strip of so many blocks and rows, whose first row is row y of the tile.
inline void addStrip(const StripSums& sums, int blocks, int rows, int y, MomentsOf<Vek64s>& m) {
  // Powers of x for each a_q: blocks begin at 64 (blocks - b), and j counts from their middle.
  Vek64s x[4][4] = {};
  const Vek64s origin = Vek64s{blockColumns} * blocks + blockColumns / 2;
  for (int q = 0; q < 4; ++q) {
    // Sums of j^p times powers of b.
    Vek64s j[4][4] = {};
    for (int p = 0; p < 4 - q; ++p) {
      Vek64s c[4] = {};
      for (int k = 0; k < 4 - q - p; ++k) c[k] = wideSum(sums.at[p][q][k]);
      j[p][0] = c[0];
      j[p][1] = c[1];
      j[p][2] = 2 * c[2] - c[1];
      j[p][3] = 6 * (c[3] - c[2]) + c[1];
    }
    if (q == 0) j[3][0] += cubicPart * j[1][0];
    // x = origin + (j - 64 b), the powers of the latter first.
    constexpr Vek64s w = blockColumns;
    const Vek64s d0 = j[0][0], d1 = j[1][0] - w * j[0][1];
    const Vek64s d2 = j[2][0] - 2 * w * j[1][1] + w * w * j[0][2];
    const Vek64s d3 = j[3][0] - 3 * w * j[2][1] + 3 * w * w * j[1][2] - w * w * w * j[0][3];
    x[0][q] = d0;
    x[1][q] = d1 + origin * d0;
    x[2][q] = d2 + origin * (2 * d1 + origin * d0);
    x[3][q] = d3 + origin * (3 * d2 + origin * (3 * d1 + origin * d0));
  }
  // The row is end - i; powers of i are to a_q as those of b to the sums along the strip.
  const Vek64s end = Vek64s{y} + rows;
  const auto i1 = [&](int p) { return x[p][1]; };
  const auto i2 = [&](int p) { return 2 * x[p][2] - x[p][1]; };
  const Vek64s i3 = 6 * (x[0][3] - x[0][2]) + x[0][1];
  m.m00 += x[0][0];
  m.m10 += x[1][0];
  m.m20 += x[2][0];
  m.m30 += x[3][0];
  m.m01 += end * x[0][0] - i1(0);
  m.m11 += end * x[1][0] - i1(1);
  m.m21 += end * x[2][0] - i1(2);
  m.m02 += end * (end * x[0][0] - 2 * i1(0)) + i2(0);
  m.m12 += end * (end * x[1][0] - 2 * i1(1)) + i2(1);
  m.m03 += end * (end * (end * x[0][0] - 3 * i1(0)) + 3 * i2(0)) - i3;
}

template <int channels>
void sum(const Vek8u* src, ptrdiff_t srcStep, int width, int height, MomentsOf<Vek64s>* moments) {
  VEK_ASSERT(width >= 1 && width <= momentTile && height >= 1 && height <= momentTile);
  for (int c = 0; c < channels; ++c) moments[c] = {};
  const int blocks = (width + blockColumns - 1) / blockColumns;
  for (int y = 0; y < height; y += stripRows) {
    const int rows = height - y < stripRows ? height - y : stripRows;
    const Vek8u* const strip = src + y * srcStep;
    StripSums sums[channels];
    memset(static_cast<void*>(sums), 0, sizeof sums);
    for (int b = 0; b < blocks; ++b) {
      const Vek8u* from = strip + ptrdiff_t{b} * blockColumns * channels;
      ptrdiff_t step = srcStep;
      // The last block is filled up with zeros, in copies of its rows: none of the policies for rows
      // serves seven of them.
      alignas(64) Vek8u copy[stripRows][blockColumns * channels];
      if (const int rest = width - b * blockColumns; rest < blockColumns) {
        memset(copy, 0, sizeof copy);
        for (int r = 0; r < rows; ++r) {
          memcpy(copy[r], from + r * step, static_cast<size_t>(rest) * channels);
        }
        from = copy[0], step = blockColumns * channels;
      }
      if constexpr (channels == 1) {
        const auto load = [=](int r, int v) {
          return hn::LoadU(u8, from + r * step + v * vectorBytes);
        };
        if (rows == stripRows) {
          addBlock(stripRows, load, sums[0]);
        } else {
          addBlock(rows, load, sums[0]);
        }
      } else {
        alignas(64) Vek8u planes[channels][stripRows][blockColumns];
        for (int r = 0; r < rows; ++r) {
          for (int v = 0; v < blockColumns; v += vectorBytes) {
            const Channels pixels = loadChannels(from + r * step + channels * v);
            hn::Store(pixels.c0, u8, planes[0][r] + v);
            hn::Store(pixels.c1, u8, planes[1][r] + v);
            hn::Store(pixels.c2, u8, planes[2][r] + v);
          }
        }
        for (int c = 0; c < channels; ++c) {
          const auto load = [&](int r, int v) {
            return hn::Load(u8, planes[c][r] + v * vectorBytes);
          };
          if (rows == stripRows) {
            addBlock(stripRows, load, sums[c]);
          } else {
            addBlock(rows, load, sums[c]);
          }
        }
      }
    }
    for (int c = 0; c < channels; ++c) addStrip(sums[c], blocks, rows, y, moments[c]);
  }
}

}  // namespace

constexpr MomentKernels momentKernels = {.c1 = sum<1>, .c3 = sum<3>};

}  // namespace vek::VEK_LEVEL
HWY_AFTER_NAMESPACE();
