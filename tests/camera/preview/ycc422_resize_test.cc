#include "vek/camera.h"

#include <gtest/gtest.h>
#include <vector>

#include "tests/camera/preview/resize_support.h"
#include "tests/support/differential.h"

namespace vek::test {
namespace {

/// The write pointers of a plane for blocks of two rows and one (chroma) or two (luma) columns: the
/// first one, the others relative to it, and how all move from block to block and from row pair to
/// row pair.
struct Walk {
  ptrdiff_t start, right, below, increment, correction;
};

Walk lumaWalk(int rotation, ptrdiff_t w, ptrdiff_t h, ptrdiff_t s) {
  const Walk walks[6] = {
      {0, 1, s, 2, 2 * s - w},           {(w - 1) * s, -s, 1, -2 * s, w * s + 2},
      {h - 1, s, -1, 2 * s, -w * s - 2}, {(h - 1) * s + w - 1, -1, -s, -2, w - 2 * s},
      {w - 1, -1, s, -2, w + 2 * s},     {(h - 1) * s, 1, -s, 2, -(w + 2 * s)}};
  return walks[rotation];
}

/// `w` and `h` are the luma's.
Walk chromaWalk(int rotation, ptrdiff_t w, ptrdiff_t h, ptrdiff_t s) {
  const Walk walks[6] = {
      {0, 0, s, 1, 2 * s - w / 2},          {(w - 1) * s, 0, -s, -2 * s, w * s + 1},
      {h / 2 - 1, 0, s, 2 * s, -w * s - 1}, {(h - 1) * s + w / 2 - 1, 0, -s, -1, w / 2 - 2 * s},
      {w / 2 - 1, 0, s, -1, w / 2 + 2 * s}, {(h - 1) * s, 0, -s, 1, -(w / 2 + 2 * s)}};
  return walks[rotation];
}

/// The three planes by the definition; all pointers and phases advance as the walk does.
void resize(const Vek8u* const src[3], const Resize& a, uint8_t* const dst[3],
            const int dstStep[3]) {
  const int64_t right = int64_t{a.srcWidth - 1} << 16, bottom = int64_t{a.srcHeight - 1} << 16;
  const Walk luma = lumaWalk(a.rotation, a.dstWidth, a.dstHeight, dstStep[0]);
  const Walk chroma[3] = {{},
                          chromaWalk(a.rotation, a.dstWidth, a.dstHeight, dstStep[1]),
                          chromaWalk(a.rotation, a.dstWidth, a.dstHeight, dstStep[2])};
  const int half = a.interpolation == 0 ? 32768 : 0;
  uint8_t* out[3] = {dst[0] + luma.start, dst[1] + chroma[1].start, dst[2] + chroma[2].start};
  int64_t p0 = half, p1 = half + a.yStep;
  for (int y = 0; y < a.dstHeight; y += 2) {
    int64_t q0 = half, q1 = half + a.xStep, chromaColumn = 32768;
    for (int x = 0; x < a.dstWidth; x += 2) {
      const auto sample = [&](int64_t p, int64_t q, bool repeatRight) {
        return static_cast<uint8_t>(a.interpolation == 0
                                        ? src[0][(p >> 16) * a.srcStep[0] + (q >> 16)]
                                        : bilinear(src[0], a.srcStep[0], p, q, repeatRight));
      };
      out[0][0] = sample(p0, q0, false);
      out[0][luma.right] = sample(p0, q1, q1 >= right);
      out[0][luma.below] = sample(p1, q0, false);
      out[0][luma.below + luma.right] = sample(p1, q1, q1 >= right);
      out[0] += luma.increment;
      for (int i : {1, 2}) {
        const auto row = [&](int64_t p) {
          return src[i] + ((p + 32768 - half) >> 16) * a.srcStep[i];
        };
        out[i][0] = row(p0)[chromaColumn >> 16];
        out[i][chroma[i].below] = row(p1)[chromaColumn >> 16];
        out[i] += chroma[i].increment;
      }
      q0 += 2 * int64_t{a.xStep}, q1 += 2 * int64_t{a.xStep}, chromaColumn += a.xStep;
    }
    out[0] += luma.correction, out[1] += chroma[1].correction, out[2] += chroma[2].correction;
    p0 += 2 * int64_t{a.yStep}, p1 += 2 * int64_t{a.yStep};
    if (a.interpolation == 1 && p1 >= bottom) p1 = bottom - 1;
  }
}

void compare(const Resize& a, const int dstStep[3], Random& random) {
  SCOPED_TRACE(testing::Message() << a << " destination steps " << dstStep[0] << ", " << dstStep[1]
                                  << ", " << dstStep[2]);
  const auto print = footprint::ycc422(a, dstStep);
  std::vector<std::unique_ptr<Buffer>> planes, expected;
  const Vek8u* src[3];
  uint8_t* dst[3];
  for (int i = 0; i < 3; ++i) {
    planes.push_back(std::make_unique<Buffer>(print.src[i], i == 0 ? 4 : 1));
    planes[i]->fill(random, allPatterns[random.in(0, 5)]);
    src[i] = planes[i]->data();
    expected.push_back(std::make_unique<Buffer>(print.dst[i]));
    dst[i] = expected[i]->data();
  }
  resize(src, a, dst, dstStep);
  std::vector<Destination> destinations;
  for (int i = 0; i < 3; ++i) {
    destinations.push_back({print.dst[i], i == 0 ? 4u : 1u, 0, expected[i]->contents()});
  }
  runAtEveryLevel(destinations, [&](auto out) {
    EXPECT_EQ(vekiYCbCr422RszRot_8u_P3R(src, a.srcStep, a.srcWidth, a.srcHeight, out.data(),
                                        dstStep, a.dstWidth, a.dstHeight, a.interpolation,
                                        a.rotation, a.xStep, a.yStep),
              0);
  });
}

TEST(Ycc422Resize, EqualsTheDefinition) {
  Random random(baseSeed());
  for (int round = 0; round < 300 && !testing::Test::HasFailure(); ++round) {
    const Resize a = randomResize(random, 2, 1, 4, 1);
    const int across = a.turned() ? a.dstHeight : a.dstWidth;
    const int dstStep[3] = {roundUp(across, 4) + 4 * random.in(0, 2), across / 2 + random.in(0, 3),
                            across / 2 + random.in(0, 3)};
    compare(a, dstStep, random);
  }
}

TEST(Ycc422Resize, SpansStripsAndTiles) {
  Random random(baseSeed() + 1);
  for (int rotation = 0; rotation < 6; ++rotation) {
    const int dstStep[3] = {1032, 515, 517};
    compare({1032, 142, {1032, 520, 528}, 1030, 141, rotation % 2, rotation, 65536, 65536}, dstStep,
            random);
  }
}

/// The steps at which the first lower row sits exactly on the last source row, and later ones
/// below.
TEST(Ycc422Resize, LowerRowsAreHeldButTheFirst) {
  Random random(baseSeed() + 2);
  for (int height : {2, 3, 4, 5, 9}) {
    for (int srcHeight : {2, 3, 8}) {
      const int dstStep[3] = {12, 6, 6};
      compare({8, srcHeight, {8, 4, 4}, 8, height, 1, 0, 65536, maxStep(srcHeight, height)},
              dstStep, random);
    }
  }
}

TEST(Ycc422Resize, RefusesBadArguments) {
  alignas(8) Vek8u memory[6][128] = {};
  struct Args {
    const Vek8u* src[3];
    int srcStep[3], srcWidth, srcHeight;
    Vek8u* dst[3];
    int dstStep[3], dstWidth, dstHeight, interpolation, rotation, xStep, yStep;
  };
  const Args good = {{memory[0], memory[1] + 1, memory[2] + 1},
                     {8, 5, 5},
                     8,
                     8,
                     {memory[3], memory[4] + 1, memory[5] + 1},
                     {8, 5, 5},
                     8,
                     8,
                     0,
                     0,
                     65536,
                     65536};
  const auto call = [](const Args& a) {
    return vekiYCbCr422RszRot_8u_P3R(a.src, a.srcStep, a.srcWidth, a.srcHeight, a.dst, a.dstStep,
                                     a.dstWidth, a.dstHeight, a.interpolation, a.rotation, a.xStep,
                                     a.yStep);
  };
  EXPECT_EQ(call(good), vekStsNoErr);
  EXPECT_EQ(vekiYCbCr422RszRot_8u_P3R(good.src, nullptr, 8, 8, good.dst, good.dstStep, 8, 8, 0, 0,
                                      65536, 65536),
            vekStsBadArgErr);
  const auto fails = [&](const char* what, auto change) {
    Args a = good;
    change(a);
    EXPECT_EQ(call(a), vekStsBadArgErr) << what;
  };
  fails("null Y", [&](Args& a) { a.src[0] = nullptr; });
  fails("null Cb destination", [&](Args& a) { a.dst[1] = nullptr; });
  fails("luma alignment", [&](Args& a) { a.src[0] += 2; });
  fails("luma destination alignment", [&](Args& a) { a.dst[0] += 2; });
  fails("odd width", [&](Args& a) { a.dstWidth = 7; });
  fails("1 to 1", [&](Args& a) { a.srcHeight = a.dstHeight = 1; });
  fails("step above its limit", [&](Args& a) { a.xStep = 65537; });
  fails("negative step", [&](Args& a) { a.yStep = -1; });
  fails("source step alignment", [&](Args& a) { a.srcStep[0] = 10; });
  fails("destination step alignment", [&](Args& a) { a.dstStep[0] = 10; });
  fails("row step 0", [&](Args& a) { a.dstStep[2] = 0; });
  fails("short chroma source", [&](Args& a) { a.srcStep[2] = 3; });
  fails("interpolation -1", [&](Args& a) { a.interpolation = -1; });
  fails("rotation 6", [&](Args& a) { a.rotation = 6; });
  fails("turned luma row", [&](Args& a) { a.dstHeight = 10, a.yStep = 1, a.rotation = 2; });
  fails("chroma row", [&](Args& a) { a.dstStep[1] = 3; });
}

}  // namespace
}  // namespace vek::test
