#include "vek/isp.hpp"

#include <algorithm>
#include <atomic>
#include <cmath>
#include <cstdlib>
#include <gtest/gtest.h>
#include <new>
#include <string>
#include <thread>
#include <vector>

#include "tests/support/random.h"

namespace {
std::atomic<int> allocations = 0;
}  // namespace

// Every way to memory: those of C++, and the library's.
[[gnu::noinline]] void* operator new(std::size_t size) {
  ++allocations;
  return std::malloc(size);
}
[[gnu::noinline]] void* operator new(std::size_t size, std::align_val_t align,
                                     const std::nothrow_t&) noexcept {
  ++allocations;
  return std::aligned_alloc(static_cast<std::size_t>(align), (size + 63) / 64 * 64);
}
[[gnu::noinline]] void operator delete(void* p) noexcept {
  std::free(p);
}
[[gnu::noinline]] void operator delete(void* p, std::size_t) noexcept {
  std::free(p);
}
[[gnu::noinline]] void operator delete(void* p, std::align_val_t) noexcept {
  std::free(p);
}
void* vekiMalloc(int size) {
  ++allocations;
  return std::malloc(static_cast<std::size_t>(size));
}
void vekiFree(void* p) {
  std::free(p);
}

namespace vek::test {
namespace {

using Bytes8 = std::vector<Vek8u>;

const Matrix3 cameraMatrix = {{{{1.5, -.4, -.1}}, {{-.3, 1.6, -.3}}, {{.1, -1.1, 2.}}}};

/// A frame of 10-bit samples in 16-bit words: noise on a slope, with black and white patches.
std::vector<Vek16u> noise(Size size, uint64_t seed) {
  Random random(seed);
  std::vector<Vek16u> frame;
  for (int y = 0; y < size.height; ++y) {
    for (int x = 0; x < size.width; ++x) {
      const int patch = (x / 16 + y / 16) % 5;
      const int value = patch == 0   ? 0
                        : patch == 1 ? 1023
                                     : (x * 7 + y * 3) % 900 + random.in(0, 123);
      frame.push_back(static_cast<Vek16u>(value));
    }
  }
  return frame;
}

/// The bytes of a frame, whose words begin with their lower byte on every processor.
struct FrameBytes {
  FrameBytes(const std::vector<Vek16u>& frame, Size size_) : size{2 * size_.width, size_.height} {
    for (const Vek16u sample : frame) {
      bytes.push_back(static_cast<Vek8u>(sample));
      bytes.push_back(static_cast<Vek8u>(sample >> 8));
    }
  }
  operator View<const RawByte>() const { return {bytes.data(), size}; }

  Bytes8 bytes;
  Size size;
};

IspSettings plain(Size size) {
  IspSettings settings;
  settings.size = size;
  settings.format = Raw::plain16;
  settings.exposure.on = settings.whiteBalance = false;
  return settings;
}

// ---- The same as the calls on whole frames ----

/// What a call of the C interface on the whole frame gives, step by step, with gains of 1.
struct Whole {
  Whole(const std::vector<Vek16u>& frame, const IspSettings& settings, const Isp& isp, bool is422,
        detail::Planar planar)
      : size{isp.crop().width / settings.scale, isp.crop().height / settings.scale} {
    const Rect crop = isp.crop();
    const Size all = settings.size;
    const int step = crop.width + 64;
    std::vector<Vek16u> samples(static_cast<size_t>(step * (crop.height + 4)));
    const auto at = [&](int x, int y) -> Vek16u& {
      return samples[static_cast<size_t>((y + 2) * step + x + 32)];
    };
    // Beyond the crop there is the frame; beyond the frame it is mirrored.
    const auto inside = [](int i, int first, int count, int most) {
      const bool before = first >= 2, after = most - first - count >= 2;
      if (i < 0 && !before) return first - i;
      return first + (i >= count && !after ? 2 * count - 2 - i : i);
    };
    for (int y = -2; y < crop.height + 2; ++y) {
      for (int x = -2; x < crop.width + 2; ++x) {
        const int column = inside(x, crop.x, crop.width, all.width);
        const int row = inside(y, crop.y, crop.height, all.height);
        at(x, y) = frame[static_cast<size_t>(row * all.width + column)];
      }
    }
    const std::vector<Vek16u> source = samples;
    if (isp.matrix() != identityMatrix) {
      const std::array<Vek16s, 9> matrix = detail::bayerMatrix(isp.matrix());
      vekiColorMatrix_10Bayer_16u_C1R(source.data() + step + 30, 2 * step, &at(-2, -1), 2 * step,
                                      {crop.width + 4, crop.height + 2}, matrix.data(),
                                      vekiBayerGBRG, 1);
    }
    const ToneTable curve = toneTable(settings.curve);
    std::array<Vek8u, 1024> table;
    for (size_t i = 0; i < table.size(); ++i) {
      table[i] = static_cast<Vek8u>(std::lround(255 * curve[i]));
    }
    if (settings.scale == 1) {
      bgr = Image<Bgr24>(size);
      EXPECT_EQ(vekiDemosaic_10RGGB_16u8u_C1C3R(&at(0, 0), 2 * step, bgr.data(), bgr.stepBytes(),
                                                size, table.data(), vekiChannelsBGR, 1),
                vekStsNoErr);
    }
    const detail::TableAndMatrix values = detail::tableAndMatrix(curve, identityMatrix, planar);
    VekiRggbColorParam color = {};
    color.gammaMode = vekiGammaModeTable;
    color.gammaTable[0] = values.table.data();
    color.colorMatrix = values.matrix.data();
    VekiRggbGeometry geometry = {};
    geometry.srcStep = 2 * step;
    geometry.srcWidth = crop.width;
    geometry.srcHeight = crop.height;
    geometry.dstWidth = size.width;
    geometry.dstHeight = size.height;
    geometry.filterMode = settings.scale == 1 ? vekiFilterModeDemosaic : vekiFilterModeReduce;
    geometry.chromaFormat = is422 ? vekiChroma422 : vekiChroma420;
    geometry.srcBorderValid = 1;
    for (int i = 0; i < 3; ++i) {
      planes[i] = Image<Vek8u>(size);
      pointers[i] = planes[i].data();
      steps[i] = geometry.dstStep[i] = planes[i].stepBytes();
    }
    VekiRggbToYCbCrState* state = nullptr;
    EXPECT_EQ(vekiInitAlloc_10RGGBtoYCbCr_RotRsz_P3R(&color, &geometry, &state), vekStsNoErr);
    EXPECT_EQ(veki10RGGBtoYCbCr_RotRsz_8u_P3R(&at(0, 0), pointers, state), vekStsNoErr);
    vekiFree_10RGGBtoYCbCr_RotRsz_P3R(state);
  }

  Size size;
  Image<Bgr24> bgr;  ///< at scale 1, without YCbCr in between
  Image<Vek8u> planes[3];
  Vek8u* pointers[3];
  int steps[3];
};

/// An output somewhere in memory, for comparison byte by byte.
struct Output {
  Output(detail::Pixels pixels_, Size size_, int offset, int extra) : pixels(pixels_), size(size_) {
    static constexpr int bytes[] = {1, 1, 1, 2, 2, 2, 3, 3, 4, 4};
    const bool is422 = pixels == detail::Pixels::i422;
    for (int i = 0; i < 3; ++i) {
      // NV12 has pairs; the third plane is for the calls of the reference.
      const int width = i == 0 || pixels == detail::Pixels::nv12
                            ? size.width * bytes[static_cast<int>(pixels)]
                            : size.width / 2;
      steps[i] = (width + 7) / 8 * 8 + extra;
      memory[i].assign(
          static_cast<size_t>(steps[i] * (i == 0 || is422 ? size.height : size.height / 2) + 16),
          0xA5);
      const auto address = reinterpret_cast<uintptr_t>(memory[i].data());
      planes[i] = memory[i].data() + (8 - address % 8) % 8 + offset;
    }
  }

  detail::Pixels pixels;
  Size size;
  Bytes8 memory[3];
  Vek8u* planes[3];
  int steps[3];
};

VekStatus run(Isp& isp, const View<const RawByte>& frame, Output& o) {
  const auto packed = [&](auto pixel) {
    using Pixel = decltype(pixel);
    return isp.process(frame, detail::Access::view<View<Pixel>>(
                                  reinterpret_cast<typename View<Pixel>::Storage*>(o.planes[0]),
                                  o.size.width, o.size.height, o.steps[0]));
  };
  const auto plane = [&](int i, Size size) {
    return View<Vek8u>(o.planes[i], size, Bytes(o.steps[i]));
  };
  const Size half = {o.size.width / 2, o.size.height / 2};
  switch (o.pixels) {
    case detail::Pixels::i420:
      return isp.process(frame, Planes420<>(plane(0, o.size), plane(1, half), plane(2, half)));
    case detail::Pixels::nv12:
      return isp.process(
          frame, Nv12<>(plane(0, o.size), View<Vek8u, 2>(o.planes[1], half, Bytes(o.steps[1]))));
    case detail::Pixels::i422: {
      const Size chroma = {half.width, o.size.height};
      return isp.process(frame, Planes422<>(plane(0, o.size), plane(1, chroma), plane(2, chroma)));
    }
    case detail::Pixels::rgb565:
      return packed(Rgb565());
    case detail::Pixels::rgb555:
      return packed(Rgb555());
    case detail::Pixels::rgb444:
      return packed(Rgb444());
    case detail::Pixels::bgr24:
      return packed(Bgr24());
    case detail::Pixels::rgb24:
      return packed(Rgb24());
    case detail::Pixels::bgrx32:
      return packed(Bgrx32());
    case detail::Pixels::rgbx32:
      return packed(Rgbx32());
  }
  return vekStsBadArgErr;
}

TEST(Isp, GivesWhatTheCallsOnWholeFramesGive) {
  Random random(1);
  for (int i = 0; i < 1000; ++i) {
    IspSettings settings = plain({random.in(20, 150), random.in(20, 150)});
    const int order = random.in(0, 3);
    settings.order = static_cast<Bayer>(order);
    settings.scale = 1 << random.in(0, 2);
    settings.rotation = static_cast<Rotation>(random.in(0, 5));
    settings.range = random.chance(30) ? Range::full : Range::studio;
    settings.curve = random.chance(30) ? ToneCurve::linear : ToneCurve::srgb;
    if (random.chance(70)) settings.color.matrix = cameraMatrix;
    if (random.chance(40)) {
      const int x = random.in(0, 3) * 2 + (order & 1), y = random.in(0, 3) * 2 + (order >> 1);
      const Size most = {(settings.size.width - x) & ~1, (settings.size.height - y) & ~1};
      settings.crop = {x, y, most.width - 2 * random.in(0, 1), most.height - 2 * random.in(0, 1)};
    }
    const auto pixels = static_cast<detail::Pixels>(random.in(0, 9));
    const bool isPlanar = detail::isPlanar(pixels);
    if (random.chance(40)) {
      settings.output = {random.in(2, 200), random.in(2, 200)};
      if (isPlanar) settings.output = {settings.output.width & ~1, settings.output.height & ~1};
    }
    settings.bandRows = random.in(1, 120);
    settings.jobs = random.in(1, 3);
    const std::string what = "case " + std::to_string(i);
    if (settings.output.height != 0 && random.chance(60)) {  // by a ratio that bands are resized by
      constexpr Size ratios[] = {{2, 1}, {3, 1}, {4, 1}, {3, 2}, {5, 4}, {9, 4}};
      const Size ratio = ratios[random.in(0, 5)];
      const int x = order & 1, y = order >> 1, unit = 2 * ratio.width * settings.scale;
      settings.size.height = std::max(settings.size.height, y + unit);
      settings.crop = {x, y, (settings.size.width - x) & ~1,
                       (settings.size.height - y) / unit * unit};
      settings.output.height = settings.crop.height / settings.scale / ratio.width * ratio.height;
    }
    try {
      Isp isp(settings);
      const std::vector<Vek16u> frame = noise(settings.size, static_cast<uint64_t>(i));
      const bool isAligned = random.chance(50);
      Output made(pixels, isp.outputSize(), isAligned ? 0 : random.in(1, 7),
                  isAligned ? 0 : random.in(1, 9));
      ASSERT_EQ(run(isp, FrameBytes(frame, settings.size), made), vekStsNoErr) << what;

      const bool is422 = pixels == detail::Pixels::i422;
      const Whole whole(frame, settings, isp, is422,
                        !isPlanar                       ? detail::Planar::towardsRgb
                        : settings.range == Range::full ? detail::Planar::full
                                                        : detail::Planar::studio);
      const Size to = settings.output.width == 0 ? whole.size : settings.output;
      const bool isSame = to.width == whole.size.width && to.height == whole.size.height;
      const Steps sampling = samplingSteps(whole.size, to);
      const int interpolation = isSame ? 0 : 1, rotation = static_cast<int>(settings.rotation);
      Output expected(isPlanar ? is422 ? pixels : detail::Pixels::i420 : detail::Pixels::bgr24,
                      isp.outputSize(), 0, 0);
      if (isPlanar) {
        expected.steps[2] = expected.steps[1];
        const auto call = is422 ? vekiYCbCr422RszRot_8u_P3R : vekiYCbCr420RszRot_8u_P3R;
        ASSERT_EQ(call(whole.pointers, whole.steps, whole.size.width, whole.size.height,
                       expected.planes, expected.steps, to.width, to.height, interpolation,
                       rotation, sampling.x, sampling.y),
                  vekStsNoErr);
      } else if (pixels >= detail::Pixels::bgr24 && settings.scale == 1 && isSame &&
                 settings.rotation == Rotation::none) {
        detail::copyRows(whole.bgr.data(), whole.bgr.stepBytes(), expected.planes[0],
                         expected.steps[0], 3 * to.width, to.height);
      } else {
        const int format = pixels == detail::Pixels::rgb565   ? vekiCsc420RGB565
                           : pixels == detail::Pixels::rgb555 ? vekiCsc420RGB555
                           : pixels == detail::Pixels::rgb444 ? vekiCsc420RGB444
                                                              : vekiCsc420BGR24;
        ASSERT_EQ(vekiYCbCr420RszCscRotRGB_8u_P3C3R(
                      whole.pointers, whole.steps, whole.size.width, whole.size.height,
                      expected.planes[0], expected.steps[0], to.width, to.height, format,
                      interpolation, rotation, sampling.x, sampling.y),
                  vekStsNoErr);
      }
      // Byte b of row y of plane p, wherever the format of the output keeps it.
      const auto expectedByte = [&](int p, int x, int y) -> int {
        const auto byte = [&](int plane, int column) {
          return expected.planes[plane][y * expected.steps[plane] + column];
        };
        switch (pixels) {
          case detail::Pixels::nv12:
            return p == 0 ? byte(0, x) : byte(1 + x % 2, x / 2);
          case detail::Pixels::rgb24:
            return byte(0, x / 3 * 3 + 2 - x % 3);
          case detail::Pixels::bgrx32:
            return x % 4 == 3 ? 255 : byte(0, x / 4 * 3 + x % 4);
          case detail::Pixels::rgbx32:
            return x % 4 == 3 ? 255 : byte(0, x / 4 * 3 + 2 - x % 4);
          default:
            return byte(p, x);
        }
      };
      static constexpr int bytes[] = {1, 1, 1, 2, 2, 2, 3, 3, 4, 4};
      const int count = pixels == detail::Pixels::nv12 ? 2 : isPlanar ? 3 : 1;
      for (int p = 0; p < count; ++p) {
        const int rows = p == 0 || is422 ? made.size.height : made.size.height / 2;
        const int width = p == 0 || pixels == detail::Pixels::nv12
                              ? made.size.width * bytes[static_cast<int>(pixels)]
                              : made.size.width / 2;
        for (int y = 0; y < rows; ++y) {
          for (int x = 0; x < width; ++x) {
            const int is = made.planes[p][y * made.steps[p] + x], wanted = expectedByte(p, x, y);
            if (is == wanted) continue;  // an assertion of every byte would take most of the time
            FAIL() << what << ": pixels " << static_cast<int>(pixels) << ", rotation " << rotation
                   << ", scale " << settings.scale << ", plane " << p << " at " << x << ", " << y
                   << ": " << is << ", not " << wanted;
          }
          for (int x = width; x < made.steps[p] && y + 1 < rows; ++x) {
            ASSERT_EQ(made.planes[p][y * made.steps[p] + x], 0xA5)
                << what << ": padding of row " << y;
          }
        }
      }
    } catch (const Error& error) {  // some draws leave nothing to show
      EXPECT_NE(std::string(error.what()).find("leaves"), std::string::npos)
          << what << ": " << error.what();
    }
  }
}

// ---- Colour ----

/// A flat frame of the camera's samples of one colour, scaled by gains of 1.
std::vector<Vek16u> flat(Size size, int red, int green, int blue) {
  std::vector<Vek16u> frame;
  for (int y = 0; y < size.height; ++y) {
    for (int x = 0; x < size.width; ++x) {
      frame.push_back(static_cast<Vek16u>((x & 1) + (y & 1) == 1 ? green : (x & 1) ? blue : red));
    }
  }
  return frame;
}

TEST(Isp, GreysAreNeutralAndGoFromBlackToWhite) {
  const Size size = {32, 32};
  for (const Range range : {Range::studio, Range::full}) {
    for (const MatrixPlace place : {MatrixPlace::linear, MatrixPlace::afterCurve}) {
      for (const ToneCurve curve : {ToneCurve::srgb, ToneCurve::bt709, ToneCurve::linear}) {
        IspSettings settings = plain(size);
        settings.range = range;
        settings.curve = curve;
        settings.color = {cameraMatrix, {0, 0, 0}, place};
        Isp isp(settings);
        Image422 ycc(size);
        Image<Bgr24> bgr(size);
        const double low = range == Range::full ? 0 : 16, high = range == Range::full ? 255 : 235;
        int last = 0, lastY = 0;
        for (int s = 0; s < 1024; s += s < 64 ? 1 : 7) {
          const std::vector<Vek16u> frame = flat(size, s, s, s);
          isp.process(FrameBytes(frame, size), ycc);
          isp.process(FrameBytes(frame, size), bgr);
          const double tone = toneTable(curve)[static_cast<size_t>(s)];
          const Vek8u* const pixel = bgr.row(16) + 3 * 16;
          EXPECT_EQ(ycc.cb().row(16)[8], 128) << s;
          EXPECT_EQ(ycc.cr().row(16)[8], 128) << s;
          EXPECT_TRUE(pixel[0] == pixel[1] && pixel[1] == pixel[2]) << s;
          EXPECT_NEAR(ycc.y().row(16)[16], low + (high - low) * tone, .51) << s;
          EXPECT_NEAR(pixel[1], 255 * tone, 1.1) << s;
          if (curve == ToneCurve::linear && 255 * tone >= 8 && 255 * tone <= 250) {
            EXPECT_NEAR(pixel[1], 255 * tone, 1) << s;
          }
          EXPECT_GE(pixel[1], last) << s;
          EXPECT_GE(ycc.y().row(16)[16], lastY) << s;
          last = pixel[1];
          lastY = ycc.y().row(16)[16];
        }
      }
    }
  }
}

TEST(Isp, TakesATableAndRefusesOneThatFalls) {
  Isp isp(plain({32, 32}));
  ToneTable table = toneTable(ToneCurve::linear);
  for (float& value : table) value = value < .5F ? 0.F : 1.F;
  isp.setCurve(table);
  Image<Rgb24> out(isp.outputSize());
  isp.process(FrameBytes(flat({32, 32}, 500, 500, 500), {32, 32}), out);
  EXPECT_EQ(out.row(16)[48], 0);
  isp.process(FrameBytes(flat({32, 32}, 520, 520, 520), {32, 32}), out);
  EXPECT_GE(out.row(16)[48], 254);
  table[1000] = .2F;
  EXPECT_THROW(isp.setCurve(table), Error);
  isp.process(FrameBytes(flat({32, 32}, 520, 520, 520), {32, 32}), out);
  EXPECT_GE(out.row(16)[48], 254);
}

// ---- Input ----

TEST(Isp, BlackWhiteAndGreyOfEveryFormat) {
  const struct {
    Raw format;
    int bits;
  } formats[] = {{Raw::bytes, 8},
                 {Raw::plain16, 12},
                 {Raw::csi2_10, 10},
                 {Raw::csi2_12, 12},
                 {Raw::csi2_14, 14}};
  for (const auto& [format, bits] : formats) {
    IspSettings settings = plain({32, 32});
    settings.format = format;
    settings.bits = bits;
    // Of two greens that differ, and a sensor that saturates before its format does.
    const int black = 1 << (bits - 4), white = (1 << bits) - 1 - (1 << (bits - 3));
    settings.black = {black, black, black + 3, black};
    settings.white = white;
    settings.curve = ToneCurve::linear;
    settings.gains = {1.5, 1, .8};
    Isp isp(settings);
    Image<Rgb24> out(isp.outputSize());
    const int step = static_cast<int>(rawRowBytes(format, 32));
    for (const int level : {0, black, (black + white) / 2, white, white + 2}) {
      Bytes8 frame;
      for (int i = 0; i < 32 * step; ++i) {
        const int groupByte = i % (format == Raw::csi2_10   ? 5
                                   : format == Raw::csi2_12 ? 3
                                   : format == Raw::csi2_14 ? 7
                                                            : 2);
        int value = level;
        if (format == Raw::plain16) value = level >> (i % 2 * 8);
        if (format == Raw::csi2_10) value = groupByte < 4 ? level >> 2 : (level & 3) * 0x55;
        if (format == Raw::csi2_12) value = groupByte < 2 ? level >> 4 : (level & 15) * 0x11;
        if (format == Raw::csi2_14)
          value = groupByte < 4 ? level >> 6 : (level & 63) * 0x41041 >> (groupByte - 4) * 8;
        frame.push_back(static_cast<Vek8u>(value));
      }
      ASSERT_EQ(isp.process(View<const RawByte>(frame, {step, 32}), out), vekStsNoErr);
      const Vek8u* const pixel = out.row(16) + 48;
      const double light = std::max(0., (level - black) / static_cast<double>(white - black));
      const double gains[] = {1.5 / .8, 1 / .8, 1};
      for (int i = 0; i < 3; ++i)
        EXPECT_NEAR(pixel[i], std::min(255., 255 * light * gains[i]), 3)
            << static_cast<int>(format) << ", level " << level;
    }
  }
}

TEST(Isp, DeadSamplesLeaveNoTrace) {
  const Size size = {64, 48};
  const std::vector<Vek16u> clean = flat(size, 300, 500, 400);
  IspSettings settings = plain(size);
  settings.crop = {4, 2, 56, 44};
  settings.bandRows = 8;
  settings.color.matrix = cameraMatrix;
  settings.deadPixels = {{0, 5},   {1, 3},   {2, 4},   {2, 6},   {9, 59},
                         {10, 60}, {17, 30}, {17, 32}, {17, 34}, {47, 20}};
  std::vector<Vek16u> spoiled = clean;
  for (const VekiDeadPixel& p : settings.deadPixels)
    spoiled[static_cast<size_t>(p.row * size.width + p.column)] = 1023;
  Isp isp(settings);
  Image<Bgr24> a(isp.outputSize()), b(isp.outputSize());
  isp.process(FrameBytes(clean, size), a);
  isp.process(FrameBytes(spoiled, size), b);
  for (int y = 0; y < a.height(); ++y) {
    EXPECT_TRUE(std::equal(a.row(y), a.row(y) + 3 * a.width(), b.row(y))) << "row " << y;
  }
}

// ---- Control ----

TEST(Isp, ExposureSettlesAtOnceAndDoesNotSwing) {
  IspSettings settings = plain({64, 64});
  settings.exposure.on = true;
  settings.exposure.least = {10, 1};
  settings.exposure.most = {1000, 8};
  Isp isp(settings);
  Image420 out(isp.outputSize());
  Exposure waiting = isp.results().exposure;
  // The sensor shows what was set with a delay of 0 or of 1 frame.
  for (const bool isDelayed : {false, true}) {
    for (const double light : {.5, .002, 3., .05}) {  // green at time 1, gain 1
      int settled = 0;
      for (int i = 0; i < 12; ++i) {
        const Exposure taken = isDelayed ? waiting : isp.results().exposure;
        waiting = isp.results().exposure;
        const int green = static_cast<int>(std::min(1023., light * taken.time * taken.gain));
        isp.setExposure(taken);
        isp.process(FrameBytes(flat({64, 64}, green, green, green), {64, 64}), out);
        EXPECT_EQ(isp.results().brightness, green);
        if (!isp.results().exposureHeld && !isp.results().exposureAtLimit) settled = i + 1;
      }
      EXPECT_LE(settled, isDelayed ? 8 : 4) << light;
      const bool isDark = light * 8000 < recommended::exposureTarget;
      EXPECT_EQ(isp.results().exposureAtLimit, isDark) << light;
      EXPECT_NE(isp.results().exposureHeld, isDark) << light;
    }
  }
}

TEST(Isp, WhiteBalanceMakesTheFrameGrey) {
  IspSettings settings = plain({64, 64});
  settings.whiteBalance = true;
  Isp isp(settings);
  Image<Rgb24> out(isp.outputSize());
  const auto show = [&](int red, int green, int blue) {
    for (int i = 0; i < 6; ++i)
      isp.process(FrameBytes(flat({64, 64}, red, green, blue), {64, 64}), out);
  };
  show(150, 300, 200);
  EXPECT_NEAR(isp.gains().red, 2, .02);
  EXPECT_NEAR(isp.gains().blue, 1.5, .015);
  EXPECT_TRUE(isp.results().balanceHeld);
  const Vek8u* const pixel = out.row(32) + 96;
  EXPECT_LE(std::max({pixel[0], pixel[1], pixel[2]}) - std::min({pixel[0], pixel[1], pixel[2]}), 2);
  show(10, 600, 300);
  EXPECT_TRUE(isp.results().balanceAtLimit);
  show(500, 0, 300);
  EXPECT_FALSE(isp.results().balanceHasData);
  isp.setWhiteBalance(false);
  isp.setGains({1, 1, 1});
  show(150, 300, 200);
  EXPECT_EQ(isp.gains().red, 1);
}

// ---- The object ----

TEST(Isp, TakesNoMemoryAndGivesTheSameInAnyOrderOfJobs) {
  const Size size = {96, 80};
  const FrameBytes frame(noise(size, 5), size);
  IspSettings settings = plain(size);
  settings.color.matrix = cameraMatrix;
  settings.bandRows = 8;
  settings.exposure.on = settings.whiteBalance = true;
  Isp one(settings);
  settings.jobs = 4;
  Isp four(settings);
  Image<Bgrx32> a(one.outputSize()), b(four.outputSize());
  const auto threads = [](int n, const auto& job) {
#if defined(__EMSCRIPTEN__)  // has none
    for (int i = n; i-- > 0;) job(i);
#else
    std::vector<std::thread> all;
    for (int i = n; i-- > 0;) all.emplace_back([&job, i] { job(i); });
    for (std::thread& thread : all) thread.join();
#endif
  };
  for (int i = 0; i < 4; ++i) {  // the gains change, and the matrix with them
    const int before = allocations;
    one.process(frame, a);
    EXPECT_EQ(allocations, before);
    four.process(frame, b, threads);
    for (int y = 0; y < size.height; ++y) {
      ASSERT_TRUE(std::equal(a.row(y), a.row(y) + 4 * size.width, b.row(y))) << "row " << y;
    }
    EXPECT_EQ(one.gains().red, four.gains().red);
  }
}

TEST(Isp, SaysWhichArgumentIsWrongAndWhy) {
  const auto refuses = [](const char* argument, const char* reason, auto change) {
    IspSettings settings = plain({64, 48});
    change(settings);
    try {
      Isp isp(settings);
      FAIL() << argument << ": accepted";
    } catch (const Error& error) {
      EXPECT_STREQ(error.argument(), argument) << error.what();
      EXPECT_NE(std::string(error.what()).find(reason), std::string::npos) << error.what();
    }
  };
  refuses("size", "0 x 48", [](auto& s) { s.size.width = 0; });
  refuses("size", "red", [](auto& s) { s.size = {2, 48}, s.order = Bayer::bggr; });
  refuses("bits", "17", [](auto& s) { s.bits = 17; });
  refuses("bits", "12", [](auto& s) { s.format = Raw::csi2_10, s.bits = 12; });
  refuses("crop", "red", [](auto& s) { s.crop = {1, 0, 32, 32}; });
  refuses("crop", "odd", [](auto& s) { s.crop = {0, 0, 33, 32}; });
  refuses("crop", "inside", [](auto& s) { s.crop = {40, 0, 32, 32}; });
  refuses("crop", "14 x 32", [](auto& s) { s.crop = {0, 0, 14, 32}; });
  refuses("scale", "3", [](auto& s) { s.scale = 3; });
  refuses("output", "1 x 9", [](auto& s) { s.output = {1, 9}; });
  refuses("black", "1023", [](auto& s) { s.black = 1023; });
  refuses("black", "0..536", [](auto& s) { s.black = {0, 0, 537, 0}, s.white = 600; });
  refuses("white", "1024", [](auto& s) { s.white = 1024; });
  refuses("gains", "9", [](auto& s) { s.gains.blue = 9; });
  refuses("digitalGain", "0.5", [](auto& s) { s.digitalGain = .5; });
  refuses("deadPixels", "row 48", [](auto& s) { s.deadPixels = {{48, 0}}; });
  refuses("matrix", "sums", [](auto& s) { s.color.matrix[1] = {0, 0, 0}; });
  refuses("exposure", "range", [](auto& s) { s.exposure.least.time = 2000; });
  refuses("jobs", "0", [](auto& s) { s.jobs = 0; });

  Isp isp(plain({64, 48}));
  const FrameBytes frame(flat({64, 48}, 900, 900, 900), {64, 48});
  const View<const RawByte> good = frame;
  Image<Rgb24> out({64, 48}), small({64, 46});
  std::memset(out.data(), 7, 3 * 64);
  const auto fails = [&](const char* argument, const char* reason, const View<const RawByte>& in,
                         Image<Rgb24>& to) {
    Failure failure;
    EXPECT_LT(isp.process(in, to, failure), 0) << argument;
    EXPECT_STREQ(failure.argument, argument);
    EXPECT_NE(std::string(failure.message).find(reason), std::string::npos) << failure.message;
    EXPECT_THROW(isp.process(in, to), Error);
  };
  fails("frame", "126", {good.data(), {126, 48}}, out);
  fails("frame", "47 rows", {good.data(), {128, 47}}, out);
  fails("frame", "empty", {}, out);
  fails("out", "64 x 46", good, small);
  EXPECT_TRUE(std::all_of(out.data(), out.data() + 3 * 64, [](Vek8u b) { return b == 7; }));
}

}  // namespace
}  // namespace vek::test
