/** @file color.hpp
 *  Colour conversions and orders of channels in C++. vek.hpp includes it. */
#ifndef VEK_CPP_COLOR_HPP
#define VEK_CPP_COLOR_HPP

#include "vek/cpp/call.hpp"

#include <array>
#include <cstddef>
#include <type_traits>

namespace vek {
inline namespace v0 {

/** @defgroup cppcolor C++: colour
 *  The functions of the groups `ycbcr`, `channels` and `models`. Interleaved pixels say in their type
 *  what their channels are, and `yCbCr` and `yuv` in the names what planes are: studio-range BT.601, or
 *  full range.
 *  @{ */

/// Planar 4:2:0 to 16-bit pixels (vekiYCbCr420ToRGB565_8u16u_P3C3R and its kin).
template <Fields fields>
VEK_INLINE VekStatus yCbCrToRgb(const Planes420<const Vek8u>& src, View<Pixel16<fields>> dst,
                                OnError onError = {}) {
  return detail::fromPlanes(
      detail::Call{"yCbCrToRgb", onError},
      detail::byFields<fields>(vekiYCbCr420ToRGB565_8u16u_P3C3R, vekiYCbCr420ToRGB555_8u16u_P3C3R,
                               vekiYCbCr420ToRGB444_8u16u_P3C3R, vekiYCbCr420ToBGR565_8u16u_P3C3R,
                               vekiYCbCr420ToBGR555_8u16u_P3C3R, vekiYCbCr420ToBGR444_8u16u_P3C3R),
      src, dst);
}

/// Planar 4:4:4, all planes with the same step, to 16-bit pixels (vekiYCbCrToRGB565_8u16u_P3C3R and its
/// kin).
template <Fields fields>
VEK_INLINE VekStatus yCbCrToRgb(const Planes444<const Vek8u>& src, View<Pixel16<fields>> dst,
                                OnError onError = {}) {
  const detail::Call call{"yCbCrToRgb", onError};
  if (!call.same("dst", dst, "src", src)) return vekStsSizeErr;
  if (!detail::oneStep(call, "src", src)) return vekStsStepErr;
  const auto f = detail::byFields<fields>(
      vekiYCbCrToRGB565_8u16u_P3C3R, vekiYCbCrToRGB555_8u16u_P3C3R, vekiYCbCrToRGB444_8u16u_P3C3R,
      vekiYCbCrToBGR565_8u16u_P3C3R, vekiYCbCrToBGR555_8u16u_P3C3R, vekiYCbCrToBGR444_8u16u_P3C3R);
  return call.done(
      f(detail::listed(src).data, src.y().stepBytes(), dst.data(), dst.stepBytes(), src.size()));
}

/// Interleaved 4:2:2 to 16-bit pixels (vekiYCbCr422ToRGB565_8u16u_C2C3R and its kin).
template <Fields fields>
VEK_INLINE VekStatus yCbCrToRgb(View<const Yuy2> src, View<Pixel16<fields>> dst,
                                OnError onError = {}) {
  return detail::unary(
      detail::Call{"yCbCrToRgb", onError},
      detail::byFields<fields>(vekiYCbCr422ToRGB565_8u16u_C2C3R, vekiYCbCr422ToRGB555_8u16u_C2C3R,
                               vekiYCbCr422ToRGB444_8u16u_C2C3R, vekiYCbCr422ToBGR565_8u16u_C2C3R,
                               vekiYCbCr422ToBGR555_8u16u_C2C3R, vekiYCbCr422ToBGR444_8u16u_C2C3R),
      src, dst);
}

/// Interleaved 4:4:4 to 16-bit pixels (vekiYCbCrToRGB565_8u16u_C3R and its kin).
template <Fields fields>
VEK_INLINE VekStatus yCbCrToRgb(View<const YCbCr24> src, View<Pixel16<fields>> dst,
                                OnError onError = {}) {
  return detail::unary(
      detail::Call{"yCbCrToRgb", onError},
      detail::byFields<fields>(vekiYCbCrToRGB565_8u16u_C3R, vekiYCbCrToRGB555_8u16u_C3R,
                               vekiYCbCrToRGB444_8u16u_C3R, vekiYCbCrToBGR565_8u16u_C3R,
                               vekiYCbCrToBGR555_8u16u_C3R, vekiYCbCrToBGR444_8u16u_C3R),
      src, dst);
}

/// Interleaved 4:4:4 to RGB24, rounded (vekiYCbCrToRGB_8u_C3R).
VEK_INLINE VekStatus yCbCrToRgb(View<const YCbCr24> src, View<Rgb24> dst, OnError onError = {}) {
  return detail::unary(detail::Call{"yCbCrToRgb", onError}, vekiYCbCrToRGB_8u_C3R, src, dst);
}

/// Interleaved 4:2:2 to RGB24 (vekiYCbCr422ToRGB_8u_C2C3R).
VEK_INLINE VekStatus yCbCrToRgb(View<const Yuy2> src, View<Rgb24> dst, OnError onError = {}) {
  return detail::unary(detail::Call{"yCbCrToRgb", onError}, vekiYCbCr422ToRGB_8u_C2C3R, src, dst);
}

/// Any of these in a new image, whose pixels are named: `yCbCrToRgb<Rgb565>(src)`.
template <class Pixel, class Source>
Image<Pixel> yCbCrToRgb(const Source& src, OnError onError = {}) {
  return detail::made<Image<Pixel>>(
      src.size(), onError, [&](auto& dst) { return yCbCrToRgb(src, dst.view(), onError); });
}

/// RGB24 to interleaved 4:4:4 (vekiRGBToYCbCr_8u_C3R).
VEK_INLINE VekStatus rgbToYCbCr(View<const Rgb24> src, View<YCbCr24> dst, OnError onError = {}) {
  return detail::unary(detail::Call{"rgbToYCbCr", onError}, vekiRGBToYCbCr_8u_C3R, src, dst);
}

/// RGB24 to interleaved 4:2:2 (vekiRGBToYCbCr422_8u_C3C2R).
VEK_INLINE VekStatus rgbToYCbCr(View<const Rgb24> src, View<Yuy2> dst, OnError onError = {}) {
  return detail::unary(detail::Call{"rgbToYCbCr", onError}, vekiRGBToYCbCr422_8u_C3C2R, src, dst);
}

/// Any of these in a new image, whose pixels are named: `rgbToYCbCr<Yuy2>(src)`.
template <class Pixel>
Image<Pixel> rgbToYCbCr(Same<View<const Rgb24>> src, OnError onError = {}) {
  return detail::made<Image<Pixel>>(
      src.size(), onError, [&](auto& dst) { return rgbToYCbCr(src, dst.view(), onError); });
}

/// Planar 4:2:0 to 16-bit pixels (vekiYUV420ToRGB565_8u16u_P3C3R and its kin).
template <Fields fields>
VEK_INLINE VekStatus yuvToRgb(const Planes420<const Vek8u>& src, View<Pixel16<fields>> dst,
                              OnError onError = {}) {
  return detail::fromPlanes(
      detail::Call{"yuvToRgb", onError},
      detail::byFields<fields>(vekiYUV420ToRGB565_8u16u_P3C3R, vekiYUV420ToRGB555_8u16u_P3C3R,
                               vekiYUV420ToRGB444_8u16u_P3C3R, vekiYUV420ToBGR565_8u16u_P3C3R,
                               vekiYUV420ToBGR555_8u16u_P3C3R, vekiYUV420ToBGR444_8u16u_P3C3R),
      src, dst);
}

/// Interleaved 4:4:4 to RGB24 (vekiYUVToRGB_8u_C3R).
VEK_INLINE VekStatus yuvToRgb(View<const Yuv24> src, View<Rgb24> dst, OnError onError = {}) {
  return detail::unary(detail::Call{"yuvToRgb", onError}, vekiYUVToRGB_8u_C3R, src, dst);
}

/// Interleaved 4:2:2 to RGB24 (vekiYUV422ToRGB_8u_C2C3R).
VEK_INLINE VekStatus yuvToRgb(View<const Yuy2> src, View<Rgb24> dst, OnError onError = {}) {
  return detail::unary(detail::Call{"yuvToRgb", onError}, vekiYUV422ToRGB_8u_C2C3R, src, dst);
}

/// Planar 4:2:0 to RGB24 (vekiYUV420ToRGB_8u_P3C3R).
VEK_INLINE VekStatus yuvToRgb(const Planes420<const Vek8u>& src, View<Rgb24> dst,
                              OnError onError = {}) {
  return detail::fromPlanes(detail::Call{"yuvToRgb", onError}, vekiYUV420ToRGB_8u_P3C3R, src, dst);
}

/// Planar 4:2:2 to RGB24 (vekiYUV422ToRGB_8u_P3C3R).
VEK_INLINE VekStatus yuvToRgb(const Planes422<const Vek8u>& src, View<Rgb24> dst,
                              OnError onError = {}) {
  return detail::fromPlanes(detail::Call{"yuvToRgb", onError}, vekiYUV422ToRGB_8u_P3C3R, src, dst);
}

/// Planar 4:4:4, all planes with the same step, to RGB24 (vekiYUVToRGB_8u_P3C3R).
VEK_INLINE VekStatus yuvToRgb(const Planes444<const Vek8u>& src, View<Rgb24> dst,
                              OnError onError = {}) {
  const detail::Call call{"yuvToRgb", onError};
  if (!call.same("dst", dst, "src", src)) return vekStsSizeErr;
  if (!detail::oneStep(call, "src", src)) return vekStsStepErr;
  return call.done(vekiYUVToRGB_8u_P3C3R(detail::listed(src).data, src.y().stepBytes(), dst.data(),
                                         dst.stepBytes(), src.size()));
}
/// Any of these in a new image, whose pixels are named: `yuvToRgb<Rgb24>(src)`.
template <class Pixel, class Source>
Image<Pixel> yuvToRgb(const Source& src, OnError onError = {}) {
  return detail::made<Image<Pixel>>(src.size(), onError,
                                    [&](auto& dst) { return yuvToRgb(src, dst.view(), onError); });
}

/// RGB24 to interleaved 4:4:4 (vekiRGBToYUV_8u_C3R).
VEK_INLINE VekStatus rgbToYuv(View<const Rgb24> src, View<Yuv24> dst, OnError onError = {}) {
  return detail::unary(detail::Call{"rgbToYuv", onError}, vekiRGBToYUV_8u_C3R, src, dst);
}

/// RGB24 to interleaved 4:2:2 (vekiRGBToYUV422_8u_C3C2R).
VEK_INLINE VekStatus rgbToYuv(View<const Rgb24> src, View<Yuy2> dst, OnError onError = {}) {
  return detail::unary(detail::Call{"rgbToYuv", onError}, vekiRGBToYUV422_8u_C3C2R, src, dst);
}

/// RGB24 to planar 4:2:0 (vekiRGBToYUV420_8u_C3P3R).
VEK_INLINE VekStatus rgbToYuv(View<const Rgb24> src, const Planes420<>& dst, OnError onError = {}) {
  return detail::toPlanes(detail::Call{"rgbToYuv", onError}, vekiRGBToYUV420_8u_C3P3R, src, dst);
}

/// RGB24 to planar 4:2:2 (vekiRGBToYUV422_8u_C3P3R).
VEK_INLINE VekStatus rgbToYuv(View<const Rgb24> src, const Planes422<>& dst, OnError onError = {}) {
  return detail::toPlanes(detail::Call{"rgbToYuv", onError}, vekiRGBToYUV422_8u_C3P3R, src, dst);
}

/// RGB24 to planar 4:4:4, all planes with the same step (vekiRGBToYUV_8u_C3P3R).
VEK_INLINE VekStatus rgbToYuv(View<const Rgb24> src, const Planes444<>& dst, OnError onError = {}) {
  const detail::Call call{"rgbToYuv", onError};
  if (!call.same("dst", dst, "src", src)) return vekStsSizeErr;
  if (!detail::oneStep(call, "dst", dst)) return vekStsStepErr;
  return call.done(vekiRGBToYUV_8u_C3P3R(src.data(), src.stepBytes(), detail::listed(dst).data,
                                         dst.y().stepBytes(), src.size()));
}
/// Any of these in a new image, the type of which is named: `rgbToYuv<Image420>(src)`.
template <class Result>
Result rgbToYuv(Same<View<const Rgb24>> src, OnError onError = {}) {
  return detail::made<Result>(src.size(), onError,
                              [&](auto& dst) { return rgbToYuv(src, dst.view(), onError); });
}

/// RGB24 to planar 4:2:0 or 4:2:2, all without padding (vekiRGBToYUV420_8u_C3P3, vekiRGBToYUV422_8u_C3P3).
template <Chroma chroma>
VEK_INLINE std::enable_if_t<chroma != Chroma::c444, VekStatus> rgbToYuvUnpadded(
    View<const Rgb24> src, const Planes<Vek8u, chroma>& dst, OnError onError = {}) {
  const detail::Call call{"rgbToYuvUnpadded", onError};
  if (!call.same("dst", dst, "src", src)) return vekStsSizeErr;
  if (!detail::unpadded(call, "src", src) || !detail::unpadded<chroma>(call, "dst", dst))
    return vekStsStepErr;
  return call.done((chroma == Chroma::c420 ? vekiRGBToYUV420_8u_C3P3 : vekiRGBToYUV422_8u_C3P3)(
      src.data(), detail::listed(dst).data, src.size()));
}
/// Planar 4:2:0 or 4:2:2 to RGB24, all without padding (vekiYUV420ToRGB_8u_P3C3, vekiYUV422ToRGB_8u_P3C3).
template <Chroma chroma>
VEK_INLINE std::enable_if_t<chroma != Chroma::c444, VekStatus> yuvToRgbUnpadded(
    const Planes<const Vek8u, chroma>& src, View<Rgb24> dst, OnError onError = {}) {
  const detail::Call call{"yuvToRgbUnpadded", onError};
  if (!call.same("dst", dst, "src", src)) return vekStsSizeErr;
  if (!detail::unpadded(call, "src", src) || !detail::unpadded(call, "dst", dst))
    return vekStsStepErr;
  return call.done((chroma == Chroma::c420 ? vekiYUV420ToRGB_8u_P3C3 : vekiYUV422ToRGB_8u_P3C3)(
      detail::listed(src).data, dst.data(), src.size()));
}

/// RGB24 to XYZ (vekiRGBToXYZ_8u_C3R).
VEK_INLINE VekStatus rgbToXyz(View<const Rgb24> src, View<Xyz24> dst, OnError onError = {}) {
  return detail::unary(detail::Call{"rgbToXyz", onError}, vekiRGBToXYZ_8u_C3R, src, dst);
}

/// The same in a new image.
inline Image<Xyz24> rgbToXyz(View<const Rgb24> src, OnError onError = {}) {
  return detail::made<Image<Xyz24>>(src.size(), onError,
                                    [&](auto& dst) { return rgbToXyz(src, dst, onError); });
}

/// XYZ to RGB24 (vekiXYZToRGB_8u_C3R).
VEK_INLINE VekStatus xyzToRgb(View<const Xyz24> src, View<Rgb24> dst, OnError onError = {}) {
  return detail::unary(detail::Call{"xyzToRgb", onError}, vekiXYZToRGB_8u_C3R, src, dst);
}

/// The same in a new image.
inline Image<Rgb24> xyzToRgb(View<const Xyz24> src, OnError onError = {}) {
  return detail::made<Image<Rgb24>>(src.size(), onError,
                                    [&](auto& dst) { return xyzToRgb(src, dst, onError); });
}

/// RGB24 to YCC (vekiRGBToYCC_8u_C3R).
VEK_INLINE VekStatus rgbToYcc(View<const Rgb24> src, View<Ycc24> dst, OnError onError = {}) {
  return detail::unary(detail::Call{"rgbToYcc", onError}, vekiRGBToYCC_8u_C3R, src, dst);
}

/// The same in a new image.
inline Image<Ycc24> rgbToYcc(View<const Rgb24> src, OnError onError = {}) {
  return detail::made<Image<Ycc24>>(src.size(), onError,
                                    [&](auto& dst) { return rgbToYcc(src, dst, onError); });
}

/// YCC to RGB24 (vekiYCCToRGB_8u_C3R).
VEK_INLINE VekStatus yccToRgb(View<const Ycc24> src, View<Rgb24> dst, OnError onError = {}) {
  return detail::unary(detail::Call{"yccToRgb", onError}, vekiYCCToRGB_8u_C3R, src, dst);
}

/// The same in a new image.
inline Image<Rgb24> yccToRgb(View<const Ycc24> src, OnError onError = {}) {
  return detail::made<Image<Rgb24>>(src.size(), onError,
                                    [&](auto& dst) { return yccToRgb(src, dst, onError); });
}

/// RGB24 to LUV (vekiRGBToLUV_8u_C3R).
VEK_INLINE VekStatus rgbToLuv(View<const Rgb24> src, View<Luv24> dst, OnError onError = {}) {
  return detail::unary(detail::Call{"rgbToLuv", onError}, vekiRGBToLUV_8u_C3R, src, dst);
}

/// The same in a new image.
inline Image<Luv24> rgbToLuv(View<const Rgb24> src, OnError onError = {}) {
  return detail::made<Image<Luv24>>(src.size(), onError,
                                    [&](auto& dst) { return rgbToLuv(src, dst, onError); });
}

/// LUV to RGB24 (vekiLUVToRGB_8u_C3R).
VEK_INLINE VekStatus luvToRgb(View<const Luv24> src, View<Rgb24> dst, OnError onError = {}) {
  return detail::unary(detail::Call{"luvToRgb", onError}, vekiLUVToRGB_8u_C3R, src, dst);
}

/// The same in a new image.
inline Image<Rgb24> luvToRgb(View<const Luv24> src, OnError onError = {}) {
  return detail::made<Image<Rgb24>>(src.size(), onError,
                                    [&](auto& dst) { return luvToRgb(src, dst, onError); });
}

/// RGB24 to HLS (vekiRGBToHLS_8u_C3R).
VEK_INLINE VekStatus rgbToHls(View<const Rgb24> src, View<Hls24> dst, OnError onError = {}) {
  return detail::unary(detail::Call{"rgbToHls", onError}, vekiRGBToHLS_8u_C3R, src, dst);
}

/// The same in a new image.
inline Image<Hls24> rgbToHls(View<const Rgb24> src, OnError onError = {}) {
  return detail::made<Image<Hls24>>(src.size(), onError,
                                    [&](auto& dst) { return rgbToHls(src, dst, onError); });
}

/// HLS to RGB24 (vekiHLSToRGB_8u_C3R).
VEK_INLINE VekStatus hlsToRgb(View<const Hls24> src, View<Rgb24> dst, OnError onError = {}) {
  return detail::unary(detail::Call{"hlsToRgb", onError}, vekiHLSToRGB_8u_C3R, src, dst);
}

/// The same in a new image.
inline Image<Rgb24> hlsToRgb(View<const Hls24> src, OnError onError = {}) {
  return detail::made<Image<Rgb24>>(src.size(), onError,
                                    [&](auto& dst) { return hlsToRgb(src, dst, onError); });
}

/// RGB24 to HSV (vekiRGBToHSV_8u_C3R).
VEK_INLINE VekStatus rgbToHsv(View<const Rgb24> src, View<Hsv24> dst, OnError onError = {}) {
  return detail::unary(detail::Call{"rgbToHsv", onError}, vekiRGBToHSV_8u_C3R, src, dst);
}

/// The same in a new image.
inline Image<Hsv24> rgbToHsv(View<const Rgb24> src, OnError onError = {}) {
  return detail::made<Image<Hsv24>>(src.size(), onError,
                                    [&](auto& dst) { return rgbToHsv(src, dst, onError); });
}

/// HSV to RGB24 (vekiHSVToRGB_8u_C3R).
VEK_INLINE VekStatus hsvToRgb(View<const Hsv24> src, View<Rgb24> dst, OnError onError = {}) {
  return detail::unary(detail::Call{"hsvToRgb", onError}, vekiHSVToRGB_8u_C3R, src, dst);
}

/// The same in a new image.
inline Image<Rgb24> hsvToRgb(View<const Hsv24> src, OnError onError = {}) {
  return detail::made<Image<Rgb24>>(src.size(), onError,
                                    [&](auto& dst) { return hsvToRgb(src, dst, onError); });
}

/// Luma of RGB24 (vekiRGBToGray_8u_C3C1R).
VEK_INLINE VekStatus rgbToGray(View<const Rgb24> src, View<Vek8u> dst, OnError onError = {}) {
  return detail::unary(detail::Call{"rgbToGray", onError}, vekiRGBToGray_8u_C3C1R, src, dst);
}

/// The same in a new image.
inline Image<Vek8u> rgbToGray(View<const Rgb24> src, OnError onError = {}) {
  return detail::made<Image<Vek8u>>(src.size(), onError,
                                    [&](auto& dst) { return rgbToGray(src, dst, onError); });
}

/// A weighted sum of the channels, with weights in 1/16384 (vekiColorToGrayQ14_8u_C3C1R).
VEK_INLINE VekStatus colorToGray(View<const Vek8u, 3> src, View<Vek8u> dst,
                                 const std::array<Vek32s, 3>& weights, OnError onError = {}) {
  return detail::unary(detail::Call{"colorToGray", onError}, vekiColorToGrayQ14_8u_C3C1R, src, dst,
                       weights.data());
}
/// The same in a new image.
inline Image<Vek8u> colorToGray(View<const Vek8u, 3> src, const std::array<Vek32s, 3>& weights,
                                OnError onError = {}) {
  return detail::made<Image<Vek8u>>(
      src.size(), onError, [&](auto& dst) { return colorToGray(src, dst, weights, onError); });
}

/// A linear map of the channels: for each result three coefficients and an offset, in 1/16384
/// (vekiColorTwistQ14_8u_C3R).
using Twist = Vek32s[3][4];
/// Applies a linear map of the channels.
VEK_INLINE VekStatus colorTwist(View<const Vek8u, 3> src, View<Vek8u, 3> dst, const Twist& twist,
                                OnError onError = {}) {
  return detail::unary(detail::Call{"colorTwist", onError}, vekiColorTwistQ14_8u_C3R, src, dst,
                       twist);
}
/// The same in a new image.
inline Image<Vek8u, 3> colorTwist(View<const Vek8u, 3> src, const Twist& twist,
                                  OnError onError = {}) {
  return detail::made<Image<Vek8u, 3>>(
      src.size(), onError, [&](auto& dst) { return colorTwist(src, dst, twist, onError); });
}

/// Channel i of `dst` is channel order[i] of `src` (vekiPermuteChannels_8u_C3R). In place as well.
VEK_INLINE VekStatus permuteChannels(View<const Vek8u, 3> src, View<Vek8u, 3> dst,
                                     const std::array<int, 3>& order, OnError onError = {}) {
  return detail::unary(detail::Call{"permuteChannels", onError}, vekiPermuteChannels_8u_C3R, src,
                       dst, order.data());
}
/// The same for four channels (vekiPermuteChannels_8u_C4R). In place as well.
VEK_INLINE VekStatus permuteChannels(View<const Vek8u, 4> src, View<Vek8u, 4> dst,
                                     const std::array<int, 4>& order, OnError onError = {}) {
  return detail::unary(detail::Call{"permuteChannels", onError}, vekiPermuteChannels_8u_C4R, src,
                       dst, order.data());
}
/// The same from four channels to three (vekiPermuteChannels_8u_C4C3R).
VEK_INLINE VekStatus permuteChannels(View<const Vek8u, 4> src, View<Vek8u, 3> dst,
                                     const std::array<int, 3>& order, OnError onError = {}) {
  return detail::unary(detail::Call{"permuteChannels", onError}, vekiPermuteChannels_8u_C4C3R, src,
                       dst, order.data());
}
/// The same from three channels to four, where an order of 3 stands for `value`
/// (vekiPermuteChannels_8u_C3C4R).
VEK_INLINE VekStatus permuteChannels(View<const Vek8u, 3> src, View<Vek8u, 4> dst,
                                     const std::array<int, 4>& order, Vek8u value,
                                     OnError onError = {}) {
  return detail::unary(detail::Call{"permuteChannels", onError}, vekiPermuteChannels_8u_C3C4R, src,
                       dst, order.data(), value);
}

/// Any of these in a new image of as many channels as `order` has entries. `value` is what an order of 3
/// stands for, from three channels to four alone.
template <int channels, std::size_t count>
detail::Supported<channels == 4 ? 3 : channels, Image<Vek8u, static_cast<int>(count)>>
permuteChannels(View<const Vek8u, channels> src, const std::array<int, count>& order,
                Vek8u value = 255, OnError onError = {}) {
  return detail::made<Image<Vek8u, static_cast<int>(count)>>(src.size(), onError, [&](auto& dst) {
    if constexpr (channels == 3 && count == 4) {
      return permuteChannels(src, dst, order, value, onError);
    } else {
      return permuteChannels(src, dst, order, onError);
    }
  });
}

/// Planar 4:2:0 to semi-planar (vekiYCbCr420ToNV12_8u_P3P2R).
VEK_INLINE VekStatus toNv12(const Planes420<const Vek8u>& src, const Nv12<>& dst,
                            OnError onError = {}) {
  const detail::Call call{"toNv12", onError};
  if (!call.same("dst", dst, "src", src)) return vekStsSizeErr;
  const auto from = detail::listed(src);
  Vek8u* const to[] = {dst.y().data(), dst.pairs().data()};
  const int steps[] = {dst.y().stepBytes(), dst.pairs().stepBytes()};
  return call.done(vekiYCbCr420ToNV12_8u_P3P2R(from.data, from.steps, to, steps, src.size()));
}
/// The same in a new image.
inline ImageNv12 toNv12(const Planes420<const Vek8u>& src, OnError onError = {}) {
  return detail::made<ImageNv12>(src.size(), onError,
                                 [&](auto& dst) { return toNv12(src, dst.view(), onError); });
}
/// Semi-planar 4:2:0 to planar (vekiNV12ToYCbCr420_8u_P2P3R).
VEK_INLINE VekStatus toPlanes(const Nv12<const Vek8u>& src, const Planes420<>& dst,
                              OnError onError = {}) {
  const detail::Call call{"toPlanes", onError};
  if (!call.same("dst", dst, "src", src)) return vekStsSizeErr;
  const Vek8u* const from[] = {src.y().data(), src.pairs().data()};
  const int steps[] = {src.y().stepBytes(), src.pairs().stepBytes()};
  const auto to = detail::listed(dst);
  return call.done(vekiNV12ToYCbCr420_8u_P2P3R(from, steps, to.data, to.steps, src.size()));
}
/// The same in a new image.
inline Image420 toPlanes(const Nv12<const Vek8u>& src, OnError onError = {}) {
  return detail::made<Image420>(src.size(), onError,
                                [&](auto& dst) { return toPlanes(src, dst.view(), onError); });
}

/** @} */

}  // namespace v0
}  // namespace vek

#endif  // VEK_CPP_COLOR_HPP
