// Which instantiation bears which name: included once by each level's source, behind its kernels
// (its own, or those of ycbcr_body.h and convert_planes_body.h).
#pragma once

#include "image/color/ycbcr_kernels.h"

namespace vek::VEK_LEVEL {
namespace {

template <class Format>
constexpr ConvertPlanes ycbcr420To = convertPlanes<2, ycbcrToRgb, Format>;
template <class Format>
constexpr ConvertPlanes yuv420To = convertPlanes<2, yuvToRgb, Format>;
template <class Format>
constexpr ConvertPlanes ycbcrPlanesTo = convertPlanes<1, ycbcrToRgb, Format>;
template <class Format>
constexpr auto ycbcr422To = fromInterleaved<Interleaved422, ycbcrToRgb, Format>;
template <class Format>
constexpr auto ycbcrTo = fromInterleaved<Interleaved444, ycbcrToRgb, Format>;

}  // namespace

constexpr YcbcrPackedKernels ycbcrPackedKernels = {
    .YCBCR420_RGB565_8u16u_P3C3 = ycbcr420To<Rgb565>,
    .YCBCR420_RGB555_8u16u_P3C3 = ycbcr420To<Rgb555>,
    .YCBCR420_RGB444_8u16u_P3C3 = ycbcr420To<Rgb444>,
    .YCBCR420_BGR565_8u16u_P3C3 = ycbcr420To<Bgr565>,
    .YCBCR420_BGR555_8u16u_P3C3 = ycbcr420To<Bgr555>,
    .YCBCR420_BGR444_8u16u_P3C3 = ycbcr420To<Bgr444>,
    .YUV420_RGB565_8u16u_P3C3 = yuv420To<Rgb565>,
    .YUV420_RGB555_8u16u_P3C3 = yuv420To<Rgb555>,
    .YUV420_RGB444_8u16u_P3C3 = yuv420To<Rgb444>,
    .YUV420_BGR565_8u16u_P3C3 = yuv420To<Bgr565>,
    .YUV420_BGR555_8u16u_P3C3 = yuv420To<Bgr555>,
    .YUV420_BGR444_8u16u_P3C3 = yuv420To<Bgr444>,
    .YCBCR_RGB565_8u16u_P3C3 = ycbcrPlanesTo<Rgb565>,
    .YCBCR_RGB555_8u16u_P3C3 = ycbcrPlanesTo<Rgb555>,
    .YCBCR_RGB444_8u16u_P3C3 = ycbcrPlanesTo<Rgb444>,
    .YCBCR_BGR565_8u16u_P3C3 = ycbcrPlanesTo<Bgr565>,
    .YCBCR_BGR555_8u16u_P3C3 = ycbcrPlanesTo<Bgr555>,
    .YCBCR_BGR444_8u16u_P3C3 = ycbcrPlanesTo<Bgr444>,
    .YCBCR422_RGB565_8u16u_C2C3 = ycbcr422To<Rgb565>,
    .YCBCR422_RGB555_8u16u_C2C3 = ycbcr422To<Rgb555>,
    .YCBCR422_RGB444_8u16u_C2C3 = ycbcr422To<Rgb444>,
    .YCBCR422_BGR565_8u16u_C2C3 = ycbcr422To<Bgr565>,
    .YCBCR422_BGR555_8u16u_C2C3 = ycbcr422To<Bgr555>,
    .YCBCR422_BGR444_8u16u_C2C3 = ycbcr422To<Bgr444>,
    .YCBCR_RGB565_8u16u_C3 = ycbcrTo<Rgb565>,
    .YCBCR_RGB555_8u16u_C3 = ycbcrTo<Rgb555>,
    .YCBCR_RGB444_8u16u_C3 = ycbcrTo<Rgb444>,
    .YCBCR_BGR565_8u16u_C3 = ycbcrTo<Bgr565>,
    .YCBCR_BGR555_8u16u_C3 = ycbcrTo<Bgr555>,
    .YCBCR_BGR444_8u16u_C3 = ycbcrTo<Bgr444>,
};

/// Rgb24 stands for three bytes in order, whatever the space.
constexpr YcbcrRgbKernels ycbcrRgbKernels = {
    .lineRGBToYCbCr_8u_C3R = fromInterleaved<Interleaved444, RGB_YCbCr_Q10_C2, Rgb24>,
    .lineYCbCrToRGB_8u_C3R = fromInterleaved<Interleaved444, YCbCr_RGB_Q10_C2, Rgb24>,
    .lineRGBToYCbCr422_8u_C3C2R = toInterleaved422<ReducedYcbcr>,
    .lineYCbCr422ToRGB_8u_C2C3R = fromInterleaved<Interleaved422, ycbcrToRgb, Rgb24>,
    .lineRGBToYUV_8u_C3R = fromInterleaved<Interleaved444, RGB_YUV_Q10_C2, Rgb24>,
    .lineYUVToRGB_8u_C3R = fromInterleaved<Interleaved444, YUV_RGB_Q10_C2, Rgb24>,
    .lineRGBToYUV_8u_C3P3R = toPlanes444<RGB_YUV_Q10_C2>,
    .lineYUVToRGB_8u_P3C3R = convertPlanes<1, YUV_RGB_Q10_C2, Rgb24>,
    .lineRGBToYUV422_8u_C3R = toInterleaved422<ReducedYuv>,
    .lineYUV422ToRGB_8u_C3R = fromInterleaved<Interleaved422, yuvToRgb, Rgb24>,
    .lineRGBToYUV422_8u_C3P3R = toPlanes422<ReducedYuv>,
    .lineYUV422ToRGB_8u_P3C3R = convertPlanes<2, yuvToRgb, Rgb24>,
    .rgbToYuv420Pair = toPlanes420<ReducedYuv>,
};

}  // namespace vek::VEK_LEVEL
