// Every C++ function does what the C function behind it does, and refuses what would reach beyond its
// images.
#include "vek/vek.hpp"

#include <gtest/gtest.h>
#include <string>
#include <vector>

#include "tests/cpp/noise.h"

namespace vek::test {
namespace {

constexpr Size size = {37, 22};

/// A set of overloads as an argument.
#define OVERLOADS(f) [](auto&&... x) -> decltype(f(x...)) { return f(x...); }

/// An argument of a C++ function as the C function takes it.
template <class T>
auto plain(const T& value) {
  if constexpr (std::is_enum_v<T>) {
    return static_cast<int>(value);
  } else {
    return detail::passed(value);
  }
}

/// Both calls, each with a destination of its own, return and write the same.
template <class Dst, class Cpp, class C>
std::string same(Size dstSize, Cpp cpp, C c) {
  auto actual = random<Dst>(dstSize, 9), expected = random<Dst>(dstSize, 9);
  const std::string before = bytes(actual.view());
  EXPECT_EQ(cpp(actual.view()), c(expected.view()));
  EXPECT_EQ(bytes(actual.view()), bytes(expected.view()));
  EXPECT_NE(bytes(actual.view()), before);
  return bytes(expected.view());
}

/// Two images to one.
template <int n, class Cpp, class F, class... Rest>
void binary(Cpp cpp, F f, bool swapped, Rest... rest) {
  using I = Image<Vek8u, n>;
  const I a = random<I>(size, 1), b = random<I>(size, 2);
  const std::string expected = same<I>(
      size, [&](auto dst) { return cpp(a, b, dst, rest...); },
      [&](auto dst) {
        const I& first = swapped ? b : a;
        const I& second = swapped ? a : b;
        return f(first.data(), first.stepBytes(), second.data(), second.stepBytes(), dst.data(),
                 dst.stepBytes(), size, rest...);
      });
  EXPECT_EQ(bytes(cpp(a, b, rest...).view()), expected);
}

/// An image and a value to an image.
template <int n, class Cpp, class F, class Value, class... Rest>
void withValue(Cpp cpp, F f, Value value, Rest... rest) {
  using I = Image<Vek8u, n>;
  const I src = random<I>();
  const std::string expected = same<I>(
      size, [&](auto dst) { return cpp(src, value, dst, rest...); },
      [&](auto dst) {
        return f(src.data(), src.stepBytes(), plain(value), dst.data(), dst.stepBytes(), size,
                 rest...);
      });
  EXPECT_EQ(bytes(cpp(src, value, rest...).view()), expected);
}

/// One image to one, of pixels of another kind perhaps.
template <class Src, class Dst, class Cpp, class F, class... Rest>
void unary(Cpp cpp, F f, Rest... rest) {
  const Src src = random<Src>();
  const std::string expected = same<Dst>(
      size, [&](auto dst) { return cpp(src, dst, rest...); },
      [&](auto dst) {
        return f(src.data(), src.stepBytes(), dst.data(), dst.stepBytes(), size, plain(rest)...);
      });
  if constexpr (std::is_invocable_v<Cpp, const Src&, Rest...>) {
    EXPECT_EQ(bytes(cpp(src, rest...).view()), expected);
  }
}
template <int n>
using I = Image<Vek8u, n>;
template <class Pixel>
using P = Image<Pixel>;

// Arguments that are exchanged, channels that differ and destinations that are const do not compile.
template <class F, class... Arguments>
constexpr bool takes(F, const Arguments&...) {
  return std::is_invocable_v<F, const Arguments&...>;
}
using Gray = View<Vek8u>;
using Bytes3 = View<Vek8u, 3>;
static_assert(takes(OVERLOADS(add), Bytes3(), Bytes3(), Bytes3()));
static_assert(!takes(OVERLOADS(add), Bytes3(), Gray(), Bytes3()));
static_assert(!takes(OVERLOADS(add), Bytes3(), Bytes3(), Gray()));
static_assert(!takes(OVERLOADS(add), Gray(), Gray(), View<const Vek8u>()));
static_assert(!takes(OVERLOADS(add), View<Vek8u, 4>(), View<Vek8u, 4>(), View<Vek8u, 4>()));
static_assert(!std::is_invocable_v<decltype(OVERLOADS(copy)), Gray, const Image<Vek8u>&>);
static_assert(takes(OVERLOADS(rgbToHsv), View<Rgb24>(), View<Hsv24>()));
static_assert(!takes(OVERLOADS(rgbToHsv), View<Bgr24>(), View<Hsv24>()));
static_assert(!takes(OVERLOADS(rgbToHsv), Bytes3(), View<Hsv24>()));
static_assert(!takes(OVERLOADS(rgbToHsv), View<Rgb24>(), View<Hls24>()));
static_assert(!takes(OVERLOADS(yCbCrToRgb), View<Uyvy>(), View<Rgb565>()));
static_assert(!takes(OVERLOADS(yCbCrToRgb), Planes422<>(), View<Rgb565>()));
static_assert(takes(OVERLOADS(resize), Planes420<>(), View<Rgb565>(), Rotation(), Interpolation(),
                    Steps()));
static_assert(!takes(OVERLOADS(resize), Planes420<>(), View<Rgb565>(), Interpolation(), Rotation(),
                     Steps()));
static_assert(!takes(OVERLOADS(resize), Planes420<>(), View<Bgr565>(), Rotation(), Interpolation(),
                     Steps()));
static_assert(!takes(OVERLOADS(resize), Planes420<>(), View<Rgb565>(), 1, 1, Steps()));
static_assert(!takes(OVERLOADS(dither), View<Bgr24>(), View<Rgb565>(), Dither()));
static_assert(!takes(OVERLOADS(mirror), Gray(), Gray(), Rotation()));

using Three = std::array<Vek8u, 3>;

TEST(Wrappers, ArithmeticAndLogic) {
  const Three value = {3, 90, 200};
  binary<1>(OVERLOADS(add), vekiAdd_8u_C1RSfs, false, 1);
  binary<3>(OVERLOADS(add), vekiAdd_8u_C3RSfs, false, 1);
  binary<1>(OVERLOADS(sub), vekiSub_8u_C1RSfs, true, -1);
  binary<3>(OVERLOADS(sub), vekiSub_8u_C3RSfs, true, -1);
  binary<1>(OVERLOADS(mul), vekiMul_8u_C1RSfs, false, 8);
  binary<3>(OVERLOADS(mul), vekiMul_8u_C3RSfs, false, 8);
  binary<1>(OVERLOADS(mulScale), vekiMulScale_8u_C1R, false);
  binary<3>(OVERLOADS(mulScale), vekiMulScale_8u_C3R, false);
  binary<1>(OVERLOADS(bitAnd), vekiAnd_8u_C1R, false);
  binary<3>(OVERLOADS(bitAnd), vekiAnd_8u_C3R, false);
  binary<1>(OVERLOADS(bitOr), vekiOr_8u_C1R, false);
  binary<3>(OVERLOADS(bitOr), vekiOr_8u_C3R, false);
  binary<1>(OVERLOADS(bitXor), vekiXor_8u_C1R, false);
  binary<3>(OVERLOADS(bitXor), vekiXor_8u_C3R, false);

  withValue<1>(OVERLOADS(add), vekiAddC_8u_C1RSfs, Vek8u{7}, 1);
  withValue<3>(OVERLOADS(add), vekiAddC_8u_C3RSfs, value, 1);
  withValue<1>(OVERLOADS(sub), vekiSubC_8u_C1RSfs, Vek8u{7}, 1);
  withValue<3>(OVERLOADS(sub), vekiSubC_8u_C3RSfs, value, 1);
  withValue<1>(OVERLOADS(mul), vekiMulC_8u_C1RSfs, Vek8u{7}, 3);
  withValue<3>(OVERLOADS(mul), vekiMulC_8u_C3RSfs, value, 3);
  withValue<1>(OVERLOADS(mulScale), vekiMulCScale_8u_C1R, Vek8u{7});
  withValue<3>(OVERLOADS(mulScale), vekiMulCScale_8u_C3R, value);
  withValue<1>(OVERLOADS(bitAnd), vekiAndC_8u_C1R, Vek8u{7});
  withValue<3>(OVERLOADS(bitAnd), vekiAndC_8u_C3R, value);
  withValue<1>(OVERLOADS(bitOr), vekiOrC_8u_C1R, Vek8u{7});
  withValue<3>(OVERLOADS(bitOr), vekiOrC_8u_C3R, value);
  withValue<1>(OVERLOADS(bitXor), vekiXorC_8u_C1R, Vek8u{7});
  withValue<3>(OVERLOADS(bitXor), vekiXorC_8u_C3R, value);
  withValue<1>(OVERLOADS(shiftRight), vekiRShiftC_8u_C1R, 3U);
  withValue<3>(OVERLOADS(shiftRight), vekiRShiftC_8u_C3R, std::array<Vek32u, 3>{1, 0, 9});
  withValue<1>(OVERLOADS(shiftLeft), vekiLShiftC_8u_C1R, 3U);
  withValue<3>(OVERLOADS(shiftLeft), vekiLShiftC_8u_C3R, std::array<Vek32u, 3>{1, 0, 9});

  unary<I<1>, I<1>>(OVERLOADS(sqr), vekiSqr_8u_C1RSfs, 8);
  unary<I<3>, I<3>>(OVERLOADS(sqr), vekiSqr_8u_C3RSfs, 8);
  unary<I<1>, I<1>>(OVERLOADS(bitNot), vekiNot_8u_C1R);
  unary<I<3>, I<3>>(OVERLOADS(bitNot), vekiNot_8u_C3R);
  unary<I<1>, I<1>>(OVERLOADS(copy), vekiCopy_8u_C1R);
  unary<I<3>, I<3>>(OVERLOADS(copy), vekiCopy_8u_C3R);
  const Vek8u v = 99, w = 160, x = 5, y = 222;
  const Three low = {40, 90, 10}, high = {50, 91, 250}, one = {1, 2, 3}, two = {7, 8, 9};
  unary<I<1>, I<1>>(OVERLOADS(clampAbove), vekiThreshold_GT_8u_C1R, v);
  unary<I<3>, I<3>>(OVERLOADS(clampAbove), vekiThreshold_GT_8u_C3R, low);
  unary<I<1>, I<1>>(OVERLOADS(clampBelow), vekiThreshold_LT_8u_C1R, v);
  unary<I<3>, I<3>>(OVERLOADS(clampBelow), vekiThreshold_LT_8u_C3R, low);
  unary<I<1>, I<1>>(OVERLOADS(replaceAbove), vekiThreshold_GTVal_8u_C1R, v, x);
  unary<I<3>, I<3>>(OVERLOADS(replaceAbove), vekiThreshold_GTVal_8u_C3R, low, one);
  unary<I<1>, I<1>>(OVERLOADS(replaceBelow), vekiThreshold_LTVal_8u_C1R, v, x);
  unary<I<3>, I<3>>(OVERLOADS(replaceBelow), vekiThreshold_LTVal_8u_C3R, low, one);
  unary<I<1>, I<1>>(OVERLOADS(replaceOutside), vekiThreshold_LTValGTVal_8u_C1R, v, x, w, y);
  unary<I<3>, I<3>>(OVERLOADS(replaceOutside), vekiThreshold_LTValGTVal_8u_C3R, low, one, high,
                    two);
  same<I<1>>(
      size, [&](auto dst) { return set(dst, 7); },
      [&](auto dst) { return vekiSet_8u_C1R(7, dst.data(), dst.stepBytes(), size); });
  same<I<3>>(
      size,
      [&](auto dst) {
        return set(dst, {3, 90, 200});
      },
      [&](auto dst) { return vekiSet_8u_C3R(value.data(), dst.data(), dst.stepBytes(), size); });
}

/// Planes to an image or the other way round, with steps for each plane or one for all.
template <class Src, class Dst, class Cpp, class F>
void planes(Cpp cpp, F f) {
  const Src src = random<Src>();
  same<Dst>(
      size, [&](auto dst) { return cpp(src, dst); },
      [&](auto dst) {
        if constexpr (std::is_base_of_v<Planes<const Vek8u, Chroma::c444>, Src>) {
          const Listed from(src.view());
          return f(from.data, from.steps[0], dst.data(), dst.stepBytes(), size);
        } else if constexpr (std::is_same_v<Dst, Image444>) {
          const Listed to(dst);
          return f(src.data(), src.stepBytes(), to.data, to.steps[0], size);
        } else if constexpr (std::is_same_v<Dst, Image420> || std::is_same_v<Dst, Image422>) {
          const Listed to(dst);
          return f(src.data(), src.stepBytes(), to.data, to.steps, size);
        } else {
          const Listed from(src.view());
          return f(from.data, from.steps, dst.data(), dst.stepBytes(), size);
        }
      });
}

TEST(Wrappers, Color) {
#define SIXTEEN(check, src, cpp, to, suffix)                                \
  check<src, P<Rgb565>>(OVERLOADS(cpp), veki##to##ToRGB565_8u16u_##suffix); \
  check<src, P<Rgb555>>(OVERLOADS(cpp), veki##to##ToRGB555_8u16u_##suffix); \
  check<src, P<Rgb444>>(OVERLOADS(cpp), veki##to##ToRGB444_8u16u_##suffix); \
  check<src, P<Bgr565>>(OVERLOADS(cpp), veki##to##ToBGR565_8u16u_##suffix); \
  check<src, P<Bgr555>>(OVERLOADS(cpp), veki##to##ToBGR555_8u16u_##suffix); \
  check<src, P<Bgr444>>(OVERLOADS(cpp), veki##to##ToBGR444_8u16u_##suffix)
  SIXTEEN(planes, Image420, yCbCrToRgb, YCbCr420, P3C3R);
  SIXTEEN(planes, Image420, yuvToRgb, YUV420, P3C3R);
  SIXTEEN(planes, Image444, yCbCrToRgb, YCbCr, P3C3R);
  SIXTEEN(unary, P<Yuy2>, yCbCrToRgb, YCbCr422, C2C3R);
  SIXTEEN(unary, P<YCbCr24>, yCbCrToRgb, YCbCr, C3R);
#undef SIXTEEN
  unary<P<YCbCr24>, P<Rgb24>>(OVERLOADS(yCbCrToRgb), vekiYCbCrToRGB_8u_C3R);
  unary<P<Yuy2>, P<Rgb24>>(OVERLOADS(yCbCrToRgb), vekiYCbCr422ToRGB_8u_C2C3R);
  unary<P<Rgb24>, P<YCbCr24>>(OVERLOADS(rgbToYCbCr), vekiRGBToYCbCr_8u_C3R);
  unary<P<Rgb24>, P<Yuy2>>(OVERLOADS(rgbToYCbCr), vekiRGBToYCbCr422_8u_C3C2R);
  unary<P<Yuv24>, P<Rgb24>>(OVERLOADS(yuvToRgb), vekiYUVToRGB_8u_C3R);
  unary<P<Yuy2>, P<Rgb24>>(OVERLOADS(yuvToRgb), vekiYUV422ToRGB_8u_C2C3R);
  unary<P<Rgb24>, P<Yuv24>>(OVERLOADS(rgbToYuv), vekiRGBToYUV_8u_C3R);
  unary<P<Rgb24>, P<Yuy2>>(OVERLOADS(rgbToYuv), vekiRGBToYUV422_8u_C3C2R);
  planes<Image420, P<Rgb24>>(OVERLOADS(yuvToRgb), vekiYUV420ToRGB_8u_P3C3R);
  planes<Image422, P<Rgb24>>(OVERLOADS(yuvToRgb), vekiYUV422ToRGB_8u_P3C3R);
  planes<Image444, P<Rgb24>>(OVERLOADS(yuvToRgb), vekiYUVToRGB_8u_P3C3R);
  planes<P<Rgb24>, Image420>(OVERLOADS(rgbToYuv), vekiRGBToYUV420_8u_C3P3R);
  planes<P<Rgb24>, Image422>(OVERLOADS(rgbToYuv), vekiRGBToYUV422_8u_C3P3R);
  planes<P<Rgb24>, Image444>(OVERLOADS(rgbToYuv), vekiRGBToYUV_8u_C3P3R);
  unary<P<Rgb24>, P<Xyz24>>(OVERLOADS(rgbToXyz), vekiRGBToXYZ_8u_C3R);
  unary<P<Xyz24>, P<Rgb24>>(OVERLOADS(xyzToRgb), vekiXYZToRGB_8u_C3R);
  unary<P<Rgb24>, P<Ycc24>>(OVERLOADS(rgbToYcc), vekiRGBToYCC_8u_C3R);
  unary<P<Ycc24>, P<Rgb24>>(OVERLOADS(yccToRgb), vekiYCCToRGB_8u_C3R);
  unary<P<Rgb24>, P<Luv24>>(OVERLOADS(rgbToLuv), vekiRGBToLUV_8u_C3R);
  unary<P<Luv24>, P<Rgb24>>(OVERLOADS(luvToRgb), vekiLUVToRGB_8u_C3R);
  unary<P<Rgb24>, P<Hls24>>(OVERLOADS(rgbToHls), vekiRGBToHLS_8u_C3R);
  unary<P<Hls24>, P<Rgb24>>(OVERLOADS(hlsToRgb), vekiHLSToRGB_8u_C3R);
  unary<P<Rgb24>, P<Hsv24>>(OVERLOADS(rgbToHsv), vekiRGBToHSV_8u_C3R);
  unary<P<Hsv24>, P<Rgb24>>(OVERLOADS(hsvToRgb), vekiHSVToRGB_8u_C3R);
  unary<P<Rgb24>, I<1>>(OVERLOADS(rgbToGray), vekiRGBToGray_8u_C3C1R);
  unary<I<3>, I<1>>(OVERLOADS(colorToGray), vekiColorToGrayQ14_8u_C3C1R,
                    std::array<Vek32s, 3>{5000, 9000, 2384});
  const Twist twist = {{16384, 100, 0, 5}, {0, 9000, 7000, 0}, {-500, 0, 16384, 99999}};
  const I<3> src = random<I<3>>();
  same<I<3>>(
      size, [&](auto dst) { return colorTwist(src, dst, twist); },
      [&](auto dst) {
        return vekiColorTwistQ14_8u_C3R(src.data(), src.stepBytes(), dst.data(), dst.stepBytes(),
                                        size, twist);
      });
  unary<I<3>, I<3>>(OVERLOADS(permuteChannels), vekiPermuteChannels_8u_C3R,
                    std::array<int, 3>{2, 1, 0});
  unary<I<4>, I<4>>(OVERLOADS(permuteChannels), vekiPermuteChannels_8u_C4R,
                    std::array<int, 4>{3, 2, 1, 0});
  unary<I<4>, I<3>>(OVERLOADS(permuteChannels), vekiPermuteChannels_8u_C4C3R,
                    std::array<int, 3>{3, 2, 1});
  unary<I<3>, I<4>>(OVERLOADS(permuteChannels), vekiPermuteChannels_8u_C3C4R,
                    std::array<int, 4>{2, 1, 0, 3}, Vek8u{254});

  // Results that are returned, of a type that is named.
  const P<Rgb24> rgb = random<P<Rgb24>>();
  EXPECT_EQ(bytes(yuvToRgb<Rgb24>(rgbToYuv<Image444>(rgb)).view()),
            bytes(yuvToRgb<Rgb24>(rgbToYuv<P<Yuv24>>(rgb)).view()));
  EXPECT_EQ(bytes(yCbCrToRgb<Rgb565>(rgbToYCbCr<Yuy2>(rgb)).view()).size(), 37U * 22 * 2);

  // Without padding.
  std::vector<Vek8u> dense(37 * 22 * 3), y(37 * 22 * 3);
  const View<Rgb24> pixels(dense, size);
  copy(rgb, pixels);
  const Planes420<> dense420(y.data(), y.size(), size);
  EXPECT_EQ(rgbToYuvUnpadded(pixels, dense420), 0);
  EXPECT_EQ(bytes(dense420), bytes(rgbToYuv<Image420>(rgb).view()));
  EXPECT_EQ(yuvToRgbUnpadded(dense420, pixels), 0);
  EXPECT_EQ(bytes(pixels), bytes(yuvToRgb<Rgb24>(dense420).view()));
  copy(rgb, pixels);
  const Planes422<> dense422(y.data(), y.size(), size);
  EXPECT_EQ(rgbToYuvUnpadded(pixels, dense422), 0);
  EXPECT_EQ(bytes(dense422), bytes(rgbToYuv<Image422>(rgb).view()));
  EXPECT_EQ(yuvToRgbUnpadded(dense422, pixels), 0);
  EXPECT_EQ(rgbToYuvUnpadded(rgb, dense422, std::nothrow), vekStsStepErr);

  // NV12 and back: bytes are only moved.
  const Image420 planar = random<Image420>();
  const ImageNv12 semi = toNv12(planar);
  EXPECT_EQ(semi.pairs().row(10)[2 * 18 + 1], planar.cr().row(10)[18]);
  EXPECT_EQ(bytes(toPlanes(semi).view()), bytes(planar.view()));
}

/// A filter whose neighbourhood of `mask` pixels has `before` in front of the destination's pixel.
template <int n, class Cpp, class F, class... Rest>
void filterIs(Cpp cpp, F f, Size mask, Point before) {
  const I<n> src = random<I<n>>();
  const Size left = {size.width - mask.width + 1, size.height - mask.height + 1};
  const std::string expected = same<I<n>>(
      left, [&](auto dst) { return cpp(src, dst); },
      [&](auto dst) {
        return f(src.row(before.y) + n * before.x, src.stepBytes(), dst.data(), dst.stepBytes(),
                 left);
      });
  EXPECT_EQ(bytes(cpp(src).view()), expected);
}

TEST(Wrappers, Filters) {
  const auto both = [](auto cpp, auto f1, auto f3, Size mask, Point before) {
    filterIs<1>(cpp, f1, mask, before);
    filterIs<3>(cpp, f3, mask, before);
  };
  const Size mask = {5, 3};
  const Point anchor = {4, 0}, middle = {2, 1};
  const auto c = [](auto f, auto... rest) {
    return [=](auto... images) { return f(images..., rest...); };
  };
  both([&](auto&... x) { return filterBox(x..., mask, anchor); },
       c(vekiFilterBox_8u_C1R, mask, anchor), c(vekiFilterBox_8u_C3R, mask, anchor), mask, anchor);
  both([&](auto&... x) { return filterMedian(x..., mask); },
       c(vekiFilterMedian_8u_C1R, mask, middle), c(vekiFilterMedian_8u_C3R, mask, middle), mask,
       middle);
  const Vek32s kernel[3][5] = {{1, 2, 3, 4, 5}, {0, -9, 8, 0, 1}, {9, 9, 1, 0, 7}};
  both([&](auto&... x) { return filter(x..., kernel, 41, anchor); },
       c(vekiFilter_8u_C1R, kernel[0], mask, anchor, 41),
       c(vekiFilter_8u_C3R, kernel[0], mask, anchor, 41), mask, {0, 2});
  const Vek32s taps[4] = {1, -2, 3, 9};
  both([&](auto&... x) { return filterRow(x..., taps, 11, 3); },
       c(vekiFilterRow_8u_C1R, taps, 4, 3, 11), c(vekiFilterRow_8u_C3R, taps, 4, 3, 11), {4, 1},
       {0, 0});
  both([&](auto&... x) { return filterColumn(x..., taps, 11); },
       c(vekiFilterColumn_8u_C1R, taps, 4, 2, 11), c(vekiFilterColumn_8u_C3R, taps, 4, 2, 11),
       {1, 4}, {0, 1});
  both(OVERLOADS(erode), vekiErode3x3_8u_C1R, vekiErode3x3_8u_C3R, {3, 3}, {1, 1});
  both(OVERLOADS(dilate), vekiDilate3x3_8u_C1R, vekiDilate3x3_8u_C3R, {3, 3}, {1, 1});
  filterIs<3>([&](auto&... x) { return filterMedianColor(x..., MedianMask::square5); },
              c(vekiFilterMedianColor_8u_C3R, 55), {5, 5}, {2, 2});
  unary<I<1>, I<1>>(OVERLOADS(mirror), vekiMirror_8u_C1R, MirrorAxis::vertical);
  unary<I<3>, I<3>>(OVERLOADS(mirror), vekiMirror_8u_C3R, MirrorAxis::both);
  unary<I<3>, I<3>>(OVERLOADS(gammaForward), vekiGammaFwd_8u_C3R);
  unary<I<3>, I<3>>(OVERLOADS(gammaInverse), vekiGammaInv_8u_C3R);

  const I<1> one = random<I<1>>();
  const I<3> three = random<I<3>>();
  const Size padded = {42, 30};
  const std::string padded1 = same<I<1>>(
      padded,
      [&](auto dst) {
        return pad(one, dst, {4, 5}, PadBorder::constant, 7);
      },
      [&](auto dst) {
        return vekiPad_8u_C1R(one.data(), one.stepBytes(), size, dst.data(), dst.stepBytes(),
                              padded, 4, 5, 0, 7);
      });
  EXPECT_EQ(bytes(pad(one, {4, 5, 1, 3}, PadBorder::constant, 7).view()), padded1);
  const Vek8u none[3] = {};
  same<I<3>>(
      padded,
      [&](auto dst) {
        return pad(three, dst, {4, 5}, PadBorder::mirror);
      },
      [&](auto dst) {
        return vekiPad_8u_C3R(three.data(), three.stepBytes(), size, dst.data(), dst.stepBytes(),
                              padded, 4, 5, 2, none);
      });
}

TEST(Wrappers, Warps) {
  const AffineMap affine = {.9, .3, 4, -.2, 1.1, 3};
  const PerspectiveMap perspective = {.9, .3, 4, -.2, 1.1, 3, .001, .002, 1};
  const I<1> one = random<I<1>>();
  const I<3> three = random<I<3>>();
  const Three value = {1, 2, 3};
  const auto check = [&](auto map, auto f1, auto f3) {
    const Size to = {30, 24};
    const std::string expected = same<I<1>>(
        to,
        [&](auto dst) {
          return warp(one, dst, map, WarpDirection::inverse, Interpolation::linear,
                      WarpBorder::constant, 7, {-2, 3});
        },
        [&](auto dst) {
          return f1(one.data(), one.stepBytes(), size, dst.data(), dst.stepBytes(), {-2, 3, 30, 24},
                    map.data(), 1, 1, 0, 7);
        });
    EXPECT_EQ(bytes(warp(one, to, map, WarpDirection::inverse, Interpolation::linear,
                         WarpBorder::constant, 7, {-2, 3})
                        .view()),
              expected);
    EXPECT_EQ(
        warp(three, to, map, WarpDirection::inverse, Interpolation::linear, WarpBorder::transparent)
            .width(),
        30);
    same<I<3>>(
        to,
        [&](auto dst) {
          return warp(three, dst, map, WarpDirection::forward, Interpolation::cubic,
                      WarpBorder::transparent);
        },
        [&](auto dst) {
          return f3(three.data(), three.stepBytes(), size, dst.data(), dst.stepBytes(),
                    {0, 0, 30, 24}, map.data(), 0, 2, 2, value.data());
        });
  };
  check(affine, vekiAffineWarp_8u_C1R, vekiAffineWarp_8u_C3R);
  check(perspective, vekiPerspectiveWarp_8u_C1R, vekiPerspectiveWarp_8u_C3R);
  EXPECT_EQ(warp(one, I<1>(size).view(), AffineMap{1, 1, 0, 1, 1, 0}, WarpDirection::forward,
                 Interpolation::nearest, WarpBorder::replicate, {}, {}, std::nothrow),
            vekStsCoeffRangeErr);
}

TEST(Wrappers, Transforms) {
  const Size at = {32, 16};
  const I<1> src = random<I<1>>(at);
  RealFft made(at);
  RealFft fft = std::move(made);
  std::vector<Vek8u> work(static_cast<size_t>(fft.workBytes())),
      memory(1 + static_cast<size_t>(RealFft::bytesFor(at)));
  const RealFft shared(at, Work{memory.data() + 1, memory.size() - 1});
  VekiRealFFTSpec* spec = nullptr;
  ASSERT_EQ(vekiInitAlloc_RealFFT_32s(5, 4, &spec), 0);
  P<Complex32s> spectrum(fft.spectrumSize());
  ASSERT_EQ(vekiRealFFTFwd_8u32s_C1RSfs(src.data(), src.stepBytes(), spectrum.data(),
                                        spectrum.stepBytes(), 1, spec, work.data()),
            0);
  EXPECT_EQ(bytes(fft.forward(src, 1).view()), bytes(spectrum.view()));
  P<Vek32s> expected(at), wide(at);
  ASSERT_EQ(vekiRealFFTInv_32s_C1RSfs(spectrum.data(), spectrum.stepBytes(), expected.data(),
                                      expected.stepBytes(), 8, spec, work.data()),
            0);
  EXPECT_EQ(shared.inverse(spectrum, wide, 8, {work.data(), work.size()}), 0);
  EXPECT_EQ(bytes(wide.view()), bytes(expected.view()));
  EXPECT_EQ(vekiFree_RealFFT_32s(spec), 0);
  // Bytes come back, by way of 32-bit samples as well.
  EXPECT_EQ(fft.forward(src, spectrum), 0);
  const I<1> back = fft.inverse<Vek8u>(spectrum, 9);
  EXPECT_EQ(bytes(back.view()), bytes(src.view()));
  EXPECT_EQ(fft.inverse(spectrum, wide, 9), 0);
  EXPECT_EQ(bytes(fft.forward(wide).view()), bytes(spectrum.view()));

  EXPECT_TRUE(RealFft({32, 15}, std::nothrow).empty());
  EXPECT_TRUE(RealFft(at, Work{memory.data(), 9}, std::nothrow).empty());
  EXPECT_EQ(shared.forward(src, spectrum, 0, {work.data(), 9}, std::nothrow), vekStsSizeErr);
  EXPECT_EQ(fft.forward(src, P<Complex32s>(at).view(), 0, std::nothrow), vekStsSizeErr);

  Image<Vek16s> samples({32, 16});
  fill(samples.view(), 3);
  Image<Vek16s> coefficients({32, 16});
  ASSERT_EQ(vekiBlockDCTFwd_16s_C1R(samples.data(), samples.stepBytes(), coefficients.data(),
                                    coefficients.stepBytes(), at),
            0);
  EXPECT_EQ(bytes(dctForward(samples).view()), bytes(coefficients.view()));
  Image<Vek16s> restored({32, 16});
  ASSERT_EQ(vekiBlockDCTInv_16s_C1R(coefficients.data(), coefficients.stepBytes(), restored.data(),
                                    restored.stepBytes(), at),
            0);
  EXPECT_EQ(bytes(dctInverse(coefficients).view()), bytes(restored.view()));
  Block block = {}, transformed = {};
  for (size_t i = 0; i < 64; ++i) block[i] = samples.row(static_cast<int>(i / 8))[i % 8];
  dctForward(block, transformed);
  EXPECT_EQ(transformed[9], coefficients.row(1)[1]);
  dctInverse(transformed, block);
  EXPECT_EQ(block[9], restored.row(1)[1]);
}

TEST(Wrappers, Moments) {
  const I<3> src = random<I<3>>();
  VekiMomentState* state = nullptr;
  ASSERT_EQ(vekiInitAlloc_Moments_8u(&state), 0);
  ASSERT_EQ(vekiMoments_8u_C3R(src.data(), src.stepBytes(), size, state), 0);
  MomentList spatial, central, normalized;
  HuMoments hu;
  EXPECT_EQ(vekiSpatialMoments_64f(state, 2, {7, -5}, spatial.data()), 0);
  EXPECT_EQ(vekiCentralMoments_64f(state, 2, central.data()), 0);
  EXPECT_EQ(vekiNormalizedMoments_64f(state, 2, normalized.data()), 0);
  EXPECT_EQ(vekiHuMoments_64f(state, 2, hu.data()), 0);
  vekiFree_Moments_8u(state);
  Moments made(src);
  const Moments moments = std::move(made);
  EXPECT_EQ(moments.spatial(2, {7, -5}), spatial);
  EXPECT_EQ(moments.central(2), central);
  EXPECT_EQ(moments.normalized(2), normalized);
  EXPECT_EQ(moments.hu(2), hu);

  I<1> black(size);
  set(black, 0);
  std::vector<Vek8u> memory(static_cast<size_t>(Moments::bytes()));
  Moments there(Work{memory.data(), memory.size()});
  EXPECT_EQ(there.central(0, &central, std::nothrow), vekStsBadArgErr);
  there.measure(black);
  EXPECT_EQ(there.hu(0, &hu), vekStsDivByZero);
  EXPECT_EQ(there.hu(0).status, vekStsDivByZero);
  EXPECT_EQ(there.hu(1, &hu, std::nothrow), vekStsBadArgErr);
}

TEST(Wrappers, DitheringAndNorms) {
  const Point origin = {3, 5};
  unary<I<1>, I<1>>(OVERLOADS(dither), vekiDither_8u_C1R, 5, Dither::diffusion, origin);
  const auto packed = [](int bits) {
    return [=](auto src, int srcStep, auto dst, int dstStep, Size of, int method, Point at) {
      return vekiDitherPacked_8u_C1R(src, srcStep, dst, dstStep, of, bits, method, at);
    };
  };
  unary<I<1>, P<Packed<1>>>(OVERLOADS(dither), packed(1), Dither::ordered, origin);
  unary<I<1>, P<Packed<2>>>(OVERLOADS(dither), packed(2), Dither::ordered, origin);
  unary<I<1>, P<Packed<4>>>(OVERLOADS(dither), packed(4), Dither::diffusion, origin);
  unary<P<Rgb24>, P<Rgb565>>(OVERLOADS(dither), vekiDitherRGB565_8u16u_C3R, Dither::ordered,
                             origin);
  unary<P<Rgb24>, P<Rgb555>>(OVERLOADS(dither), vekiDitherRGB555_8u16u_C3R, Dither::ordered,
                             origin);
  unary<P<Bgr24>, P<Bgr444>>(OVERLOADS(dither), vekiDitherRGB444_8u16u_C3R, Dither::ordered,
                             origin);
  EXPECT_EQ(dither<Packed<1>>(random<I<1>>(), Dither::ordered).rowBytes(), 5);

  const auto a1 = random<I<1>>(size, 1), b1 = random<I<1>>(size, 2);
  const auto a3 = random<I<3>>(size, 1), b3 = random<I<3>>(size, 2);
  const auto one = [&](auto cpp, auto f1, auto f3) {
    Vek32s n1 = 0, n3[3] = {};
    EXPECT_EQ(f1(a1.data(), a1.stepBytes(), size, &n1, -1), 0);
    EXPECT_EQ(f3(a3.data(), a3.stepBytes(), size, n3, -1), 0);
    EXPECT_EQ(cpp(a1, -1), n1);
    EXPECT_EQ(cpp(a3, -1), (std::array<Vek32s, 3>{n3[0], n3[1], n3[2]}));
  };
  const auto two = [&](auto cpp, auto f1, auto f3) {
    Vek32s n1 = 0, n3[3] = {};
    EXPECT_EQ(f1(a1.data(), a1.stepBytes(), b1.data(), b1.stepBytes(), size, &n1, -9), 0);
    EXPECT_EQ(f3(a3.data(), a3.stepBytes(), b3.data(), b3.stepBytes(), size, n3, -9), 0);
    EXPECT_EQ(cpp(a1, b1, -9), n1);
    EXPECT_EQ(cpp(a3, b3, -9), (std::array<Vek32s, 3>{n3[0], n3[1], n3[2]}));
  };
  one(OVERLOADS(normInf), vekiNorm_Inf_8u_C1RSfs, vekiNorm_Inf_8u_C3RSfs);
  one(OVERLOADS(normL1), vekiNorm_L1_8u_C1RSfs, vekiNorm_L1_8u_C3RSfs);
  one(OVERLOADS(normL2), vekiNorm_L2_8u_C1RSfs, vekiNorm_L2_8u_C3RSfs);
  two(OVERLOADS(normDiffInf), vekiNormDiff_Inf_8u_C1RSfs, vekiNormDiff_Inf_8u_C3RSfs);
  two(OVERLOADS(normDiffL1), vekiNormDiff_L1_8u_C1RSfs, vekiNormDiff_L1_8u_C3RSfs);
  two(OVERLOADS(normDiffL2), vekiNormDiff_L2_8u_C1RSfs, vekiNormDiff_L2_8u_C3RSfs);
  two(OVERLOADS(normRelInf), vekiNormRel_Inf_8u_C1RSfs, vekiNormRel_Inf_8u_C3RSfs);
  two(OVERLOADS(normRelL1), vekiNormRel_L1_8u_C1RSfs, vekiNormRel_L1_8u_C3RSfs);
  two(OVERLOADS(normRelL2), vekiNormRel_L2_8u_C1RSfs, vekiNormRel_L2_8u_C3RSfs);
  Vek32s norm = 0;
  I<1> black(size);
  set(black, 0);
  EXPECT_EQ(normRelInf(a1, black, &norm), vekStsDivByZero);
  EXPECT_EQ(normRelInf(a1, black).status, vekStsDivByZero);
  EXPECT_EQ(normRelInf(a1, black), norm);
  EXPECT_EQ(normL1(View<const Vek8u>(), 0, std::nothrow).status, vekStsNullPtrErr);
}

}  // namespace
}  // namespace vek::test
