/** @file raw.hpp
 *  The raw pipeline in C++. vek.hpp includes it. */
#ifndef VEK_CPP_RAW_HPP
#define VEK_CPP_RAW_HPP

#include "vek/cpp/call.hpp"

#include <array>
#include <cstddef>
#include <cstdint>
#include <utility>
#include <vector>

namespace vek {
inline namespace v0 {

/** @addtogroup cppstates
 *  @{ */

/// Built-in gamma curves.
enum class GammaCurve : Vek32u {
  linear = vekiGammaCurveLinear,  ///< a straight line: 1023 becomes 255
  bt709 = vekiGammaCurveStandard  ///< the transfer function of BT.709
};

/// Colour part of a raw pipeline; VekiRggbColorParam says what the numbers do.
struct RawColor {
  GammaCurve curve = GammaCurve::bt709;  ///< the gamma curve, if there is no table
  std::vector<Vek8u> table;              ///< a gamma table of 1024 entries, or none
  std::array<Vek16s, 9> matrix = {256, 0, 0, 0, 256, 0, 0, 0, 256};  ///< in 1/256, row after row
  /// In coordinates of the sensor. Those that the region, with its valid border, does not have are
  /// left out.
  std::vector<VekiDeadPixel> deadPixels;
  int rowOffset = 0;     ///< sensor row of the region's first row
  int columnOffset = 0;  ///< sensor column of the region's first column
};

/// The raw pipeline: frames of one size to planes of one size. Calls do not change it, so that threads
/// may share one for distinct frames.
class RawPipeline {
 public:
  /// An empty one.
  RawPipeline() noexcept = default;

  /// For regions of `frameSize` samples, at frames with this step, to planes of `dstSize` with these
  /// steps (vekiInitAlloc_10RGGBtoYCbCr_RotRsz_P3R). The destination is the rotated region, or a half or
  /// a quarter of it. With `borderValid` one more sample on every side of the region is valid; see
  /// process().
  RawPipeline(const RawColor& color, Size frameSize, Bytes frameStep, Chroma chroma, Size dstSize,
              const std::array<int, 3>& dstSteps, Rotation rotation = Rotation::none,
              bool borderValid = false, OnError onError = {}) {
    const detail::Call call{"RawPipeline", onError};
    const Size turned = rotated(frameSize, rotation);
    const int scale = scaleOf(turned, dstSize);
    if (!isAccepted(call, color, frameSize, frameStep, chroma, dstSize, dstSteps, rotation, scale))
      return;

    RawPipeline made;
    made.table_ = color.table;
    const bool border = borderValid && scale == 1;
    for (const VekiDeadPixel& pixel : color.deadPixels) {
      const Vek32s row = pixel.row - color.rowOffset, column = pixel.column - color.columnOffset;
      if (pixel.row >= color.rowOffset && pixel.column >= color.columnOffset &&
          row < frameSize.height + border && column < frameSize.width + border) {
        made.deadPixels_.push_back({row, column});
      }
    }
    made.geometry_ = {frameStep.count,
                      frameSize.width,
                      frameSize.height,
                      {dstSteps[0], dstSteps[1], dstSteps[2]},
                      dstSize.width,
                      dstSize.height,
                      scale == 1 ? vekiFilterModeDemosaic : vekiFilterModeReduce,
                      static_cast<Vek32s>(rotation),
                      chroma == Chroma::c420 ? vekiChroma420 : vekiChroma422,
                      border};
    // Offsets of 0 make the state use the list where it lies; a copy of the library's would be lost.
    const VekiRggbColorParam record = {
        color.table.empty() ? 0U + vekiGammaModeCurve : 0U + vekiGammaModeTable,
        {static_cast<Vek32u>(color.curve), 0, 0},
        {made.table_.data(), nullptr, nullptr},
        made.deadPixels_.empty() ? nullptr : made.deadPixels_.data(),
        static_cast<Vek32s>(made.deadPixels_.size()),
        0,
        0,
        0,
        color.matrix.data()};
    VekiRggbToYCbCrState* state = nullptr;
    const VekStatus status =
        vekiInitAlloc_10RGGBtoYCbCr_RotRsz_P3R(&record, &made.geometry_, &state);
    made.state_.reset(state);
    if (call.done(status) == vekStsNoErr) *this = std::move(made);
  }
  /// For frames and planes like these.
  template <Chroma chroma>
  RawPipeline(const RawColor& color, View<const Raw10> frame,
              const Planes<const Vek8u, chroma>& dst, Rotation rotation = Rotation::none,
              OnError onError = {})
      : RawPipeline(color, frame.size(), Bytes(frame.stepBytes()), chroma, dst.size(),
                    {dst.y().stepBytes(), dst.cb().stepBytes(), dst.cr().stepBytes()}, rotation,
                    false, onError) {}

  /// Whether there is none.
  bool empty() const noexcept { return state_ == nullptr; }

  /// Planes that this pipeline writes to: those of `size` whose second column is aligned where it asks
  /// for that.
  template <Chroma chroma>
  PlanarImage<chroma> destination(OnError onError = {}) const {
    return PlanarImage<chroma>(
        {geometry_.dstWidth, geometry_.dstHeight},
        geometry_.filterMode == vekiFilterModeDemosaic && geometry_.srcBorderValid == 0 ? 1 : 0,
        onError);
  }

  /// Converts a frame and corrects its dead pixels in place (veki10RGGBtoYCbCr_RotRsz_8u_P3R). A view of
  /// samples that may not be changed, or an image that is const, is refused if there are dead pixels.
  /// With a valid border the frame has it: the region begins two samples to the right and two below the
  /// frame's first sample, and ends two before its last column and row.
  template <class Frame, Chroma chroma>
  VEK_INLINE VekStatus process(Frame&& frame, const Planes<Vek8u, chroma>& dst,
                               OnError onError = {}) const {
    return run(frame.view(), dst, onError);
  }

 private:
  template <Chroma chroma>
  VEK_INLINE VekStatus run(View<const Raw10> frame, const Planes<Vek8u, chroma>& dst,
                           OnError onError) const {
    if (!deadPixels_.empty()) {
      return OnError::refuse(onError, vekStsBadArgErr, "RawPipeline::process", "frame",
                             "may not be changed, but it has %zu dead pixels", deadPixels_.size());
    }
    // Without dead pixels frames are only read.
    return run(detail::Access::view<View<Raw10>>(frame), dst, onError);
  }
  template <Chroma chroma>
  VEK_INLINE VekStatus run(View<Raw10> frame, const Planes<Vek8u, chroma>& dst,
                           OnError onError) const {
    static_assert(chroma != Chroma::c444, "the raw pipeline makes 4:2:0 and 4:2:2");
    const detail::Call call{"RawPipeline::process", onError};
    const VekiRggbGeometry& g = geometry_;
    if (empty()) return detail::refuseEmpty(call);
    const int border = g.srcBorderValid;
    const bool frameFits =
        border != 0 ? frame.width() == g.srcWidth + 4 && frame.height() == g.srcHeight + 4
                    : frame.width() == g.srcWidth && frame.height() == g.srcHeight;
    if (!frameFits || frame.stepBytes() != g.srcStep) {
      return OnError::refuse(onError, vekStsBadArgErr, "RawPipeline::process", "frame",
                             "is %d x %d with a step of %d bytes, but the pipeline is for %d x %d, "
                             "a border of %d, and %d bytes",
                             frame.width(), frame.height(), frame.stepBytes(), g.srcWidth,
                             g.srcHeight, border, g.srcStep);
    }
    if ((chroma == Chroma::c420) != (g.chromaFormat == vekiChroma420)) {
      return OnError::refuse(onError, vekStsBadArgErr, "RawPipeline::process", "dst",
                             "has another chroma format than the pipeline");
    }
    if (dst.width() != g.dstWidth || dst.height() != g.dstHeight ||
        dst.y().stepBytes() != g.dstStep[0] || dst.cb().stepBytes() != g.dstStep[1] ||
        dst.cr().stepBytes() != g.dstStep[2]) {
      return OnError::refuse(onError, vekStsBadArgErr, "RawPipeline::process", "dst",
                             "is %d x %d with steps of %d, %d and %d bytes, but the pipeline is "
                             "for %d x %d with %d, %d and %d",
                             dst.width(), dst.height(), dst.y().stepBytes(), dst.cb().stepBytes(),
                             dst.cr().stepBytes(), g.dstWidth, g.dstHeight, g.dstStep[0],
                             g.dstStep[1], g.dstStep[2]);
    }
    return call.done(veki10RGGBtoYCbCr_RotRsz_8u_P3R(border != 0 ? frame.row(2) + 2 : frame.data(),
                                                     detail::listed(dst).data, state_.get()),
                     [&](VekStatus status) {
                       return OnError::refuse(
                           onError, status, "RawPipeline::process", "dst",
                           "is not aligned as destination() is, or the frame is at an odd address");
                     });
  }

  static int scaleOf(Size turned, Size dst) {
    for (const int scale : {1, 2, 4}) {
      if (turned.width == std::int64_t{dst.width} * scale &&
          turned.height == std::int64_t{dst.height} * scale)
        return scale;
    }
    return 0;
  }

  /// All that the library checks: it keeps memory of calls that it refuses.
  static bool isAccepted(detail::Call call, const RawColor& color, Size frame, Bytes step,
                         Chroma chroma, Size dst, const std::array<int, 3>& steps,
                         Rotation rotation, int scale) {
    const auto refuse = [&](const char* argument, const char* why) {
      OnError::refuse(call.onError, vekStsBadArgErr, call.function, argument, "%s", why);
      return false;
    };
    const int unit = scale == 1 ? 8 : 4;
    if (!color.table.empty() && color.table.size() != 1024)
      return refuse("color", "has a table that has not 1024 entries");
    if (color.table.empty() && color.curve != GammaCurve::linear &&
        color.curve != GammaCurve::bt709)
      return refuse("color", "has an unknown curve");
    if (color.rowOffset < 0 || color.columnOffset < 0)
      return refuse("color", "has a negative offset");
    if ((step.count & 1) != 0) return refuse("frameStep", "is odd");
    if (frame.width < 2 || frame.height < 2 || ((frame.width | frame.height) & 1) != 0)
      return refuse("frameSize", "is odd or below 2 x 2");
    if (static_cast<unsigned>(rotation) > static_cast<unsigned>(Rotation::half))
      return refuse("rotation", "is a mirror");
    if (chroma == Chroma::c444) return refuse("chroma", "is not 4:2:0 or 4:2:2");
    if (dst.width < 1 || dst.height < 1 || scale == 0) {
      const Size turned = rotated(frame, rotation);
      OnError::refuse(call.onError, vekStsBadArgErr, call.function, "dstSize",
                      "is %d x %d, which is not %d x %d, half or a quarter of it", dst.width,
                      dst.height, turned.width, turned.height);
      return false;
    }
    if (scale != 1 && (dst.width % 4 != 0 || dst.height % 2 != 0))
      return refuse("dstSize",
                    "is reduced and has a width that is not a multiple of 4 or an odd height");
    for (std::size_t i = 0; i < 3; ++i) {
      const int least = i == 0 ? dst.width : dst.width / 2;
      if (steps[i] < least || steps[i] % (i == 0 ? unit : unit / 2) != 0)
        return refuse("dstSteps",
                      "are less than the rows, or not multiples of 8, 4 and 4 (reduced: of 4, 2 "
                      "and 2) bytes");
    }
    return true;
  }

  std::vector<Vek8u> table_;
  std::vector<VekiDeadPixel> deadPixels_;
  VekiRggbGeometry geometry_ = {};
  detail::Owned<VekiRggbToYCbCrState, vekiFree_10RGGBtoYCbCr_RotRsz_P3R> state_;
};

/** @} */

/** @addtogroup cppfront
 *  @{ */

/// A gamma table of the raw pipeline: an entry for each 10-bit sample.
using GammaTable10 = std::array<Vek8u, 1024>;

/// @cond
namespace detail {
template <class Dst>
VEK_INLINE VekStatus demosaic(const View<const Raw10>& src, const Dst& dst,
                              const GammaTable10& table, int channelOrder, bool borderValid,
                              OnError onError) {
  const Call call{"demosaic", onError};
  if (!call.same("dst", dst, "src", src)) return vekStsSizeErr;
  return call.done(
      vekiDemosaic_10RGGB_16u8u_C1C3R(src.data(), src.stepBytes(), dst.data(), dst.stepBytes(),
                                      src.size(), table.data(), channelOrder, borderValid ? 1 : 0),
      [&](VekStatus status) {
        return OnError::refuse(onError, status, "demosaic", "src", "is empty or misaligned");
      });
}
}  // namespace detail
/// @endcond

/// Makes pixels of a raw frame that begins on a red sample, through a gamma table
/// (vekiDemosaic_10RGGB_16u8u_C1C3R). With `borderValid` one more sample on every side of `src` is valid;
/// without, neighbours outside of it are mirrored.
VEK_INLINE VekStatus demosaic(View<const Raw10> src, View<Rgb24> dst, const GammaTable10& table,
                              bool borderValid = false, OnError onError = {}) {
  return detail::demosaic(src, dst, table, vekiChannelsRGB, borderValid, onError);
}
/// The same in the order B, G, R.
VEK_INLINE VekStatus demosaic(View<const Raw10> src, View<Bgr24> dst, const GammaTable10& table,
                              bool borderValid = false, OnError onError = {}) {
  return detail::demosaic(src, dst, table, vekiChannelsBGR, borderValid, onError);
}
/// The same in a new image, R, G, B.
inline Image<Rgb24> demosaic(View<const Raw10> src, const GammaTable10& table,
                             bool borderValid = false, OnError onError = {}) {
  return detail::made<Image<Rgb24>>(src.size(), onError, [&](auto& dst) {
    return demosaic(src, View<Rgb24>(dst), table, borderValid, onError);
  });
}

/** @} */

}  // namespace v0
}  // namespace vek

#endif  // VEK_CPP_RAW_HPP
