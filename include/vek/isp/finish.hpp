/** @file finish.hpp
 *  From planes of YCbCr to an output of any kind. isp.hpp includes it. */
#ifndef VEK_ISP_FINISH_HPP
#define VEK_ISP_FINISH_HPP

#include "vek/view.hpp"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>

namespace vek {
inline namespace v0 {

/** @addtogroup isp
 *  @{ */

/// @cond
namespace detail {

inline bool isAligned(const void* pointer, std::uintptr_t bytes) {
  return reinterpret_cast<std::uintptr_t>(pointer) % bytes == 0;
}

constexpr int roundUp(int n, int multiple) {
  return (n + multiple - 1) / multiple * multiple;
}

enum class Pixels { i420, nv12, i422, rgb565, rgb555, rgb444, bgr24, rgb24, bgrx32, rgbx32 };

constexpr bool isPlanar(Pixels pixels) {
  return pixels == Pixels::i420 || pixels == Pixels::nv12 || pixels == Pixels::i422;
}

/// An output of any kind, or a part of it.
struct Target {
  Pixels pixels;
  Size size;
  Vek8u* planes[3];
  int steps[3];

  /// The part that begins at a column and a row; both even if chroma is shared.
  Target at(int x, int y) const {
    static constexpr int bytes[] = {1, 1, 1, 2, 2, 2, 3, 3, 4, 4};
    Target part = *this;
    const std::ptrdiff_t column = x, row = y;
    part.planes[0] += row * steps[0] + column * bytes[static_cast<int>(pixels)];
    const std::ptrdiff_t chromaRow = pixels == Pixels::i422 ? row : row / 2;
    if (pixels == Pixels::nv12) part.planes[1] += chromaRow * steps[1] + column;
    if (pixels == Pixels::i420 || pixels == Pixels::i422) {
      part.planes[1] += chromaRow * steps[1] + column / 2;
      part.planes[2] += chromaRow * steps[2] + column / 2;
    }
    return part;
  }
};

template <class Storage>
Target packedTarget(Pixels pixels, Storage* data, Size size, int step) {
  return {pixels, size, {reinterpret_cast<Vek8u*>(data), nullptr, nullptr}, {step, 0, 0}};
}
template <Chroma chroma>
Target planarTarget(Pixels pixels, const Planes<Vek8u, chroma>& v) {
  return {pixels,
          v.size(),
          {v.y().data(), v.cb().data(), v.cr().data()},
          {v.y().stepBytes(), v.cb().stepBytes(), v.cr().stepBytes()}};
}
inline Target target(const View<Rgb565>& v) {
  return packedTarget(Pixels::rgb565, v.data(), v.size(), v.stepBytes());
}
inline Target target(const View<Rgb555>& v) {
  return packedTarget(Pixels::rgb555, v.data(), v.size(), v.stepBytes());
}
inline Target target(const View<Rgb444>& v) {
  return packedTarget(Pixels::rgb444, v.data(), v.size(), v.stepBytes());
}
inline Target target(const View<Bgr24>& v) {
  return packedTarget(Pixels::bgr24, v.data(), v.size(), v.stepBytes());
}
inline Target target(const View<Rgb24>& v) {
  return packedTarget(Pixels::rgb24, v.data(), v.size(), v.stepBytes());
}
inline Target target(const View<Bgrx32>& v) {
  return packedTarget(Pixels::bgrx32, v.data(), v.size(), v.stepBytes());
}
inline Target target(const View<Rgbx32>& v) {
  return packedTarget(Pixels::rgbx32, v.data(), v.size(), v.stepBytes());
}
inline Target target(const Nv12<Vek8u>& v) {
  return {Pixels::nv12,
          v.size(),
          {v.y().data(), v.pairs().data(), nullptr},
          {v.y().stepBytes(), v.pairs().stepBytes(), 0}};
}
inline Target target(const Planes420<Vek8u>& v) {
  return planarTarget(Pixels::i420, v);
}
inline Target target(const Planes422<Vek8u>& v) {
  return planarTarget(Pixels::i422, v);
}

/// Copies rows of bytes.
inline void copyRows(const Vek8u* from, int fromStep, Vek8u* to, int toStep, int bytes, int rows) {
  for (int y = 0; y < rows; ++y) {
    std::memcpy(to + static_cast<std::ptrdiff_t>(y) * toStep,
                from + static_cast<std::ptrdiff_t>(y) * fromStep, static_cast<std::size_t>(bytes));
  }
}

/// Planes of YCbCr that begin at cache lines, as do their rows.
struct SourcePlanes {
  const Vek8u* planes[3];
  int steps[3];
};

/// Planes of `from` pixels, resized to `to`, rotated, and converted to the target's pixels.
struct Finish {
  Size from;
  Size to;  ///< before rotation
  Rotation rotation;
  Interpolation interpolation;

  bool isCopy() const {
    return rotation == Rotation::none && from.width == to.width && from.height == to.height;
  }
  Size size() const { return rotated(to, rotation); }

  /// Bytes that run() needs in `scratch`, which begins at a cache line.
  std::size_t scratchBytes() const {
    return 3 * static_cast<std::size_t>(roundUp(size().width, 64)) *
           static_cast<std::size_t>(size().height);
  }

  /// Where rows of the resized picture are in the rotated one.
  Rect place(Band rows) const {
    const Size part = rotated({to.width, rows.count}, rotation);
    const int below = to.height - rows.first - rows.count;
    switch (rotation) {
      case Rotation::ccw90:
        return {rows.first, 0, part.width, part.height};
      case Rotation::cw90:
        return {below, 0, part.width, part.height};
      case Rotation::half:
      case Rotation::mirrorTopBottom:
        return {0, below, part.width, part.height};
      default:
        return {0, rows.first, part.width, part.height};
    }
  }

  /// Makes rows of the resized picture, in pairs; all of them for 4:2:2. Calls for different rows may run at
  /// the same time, with the same scratch.
  void run(const SourcePlanes& source, const Target& target, Vek8u* scratch, Band rows) const {
    switch (target.pixels) {
      case Pixels::i420:
      case Pixels::nv12:
      case Pixels::i422:
        return planar(source, target, scratch, rows);
      case Pixels::rgb565:
        return packed(source, target, vekiCsc420RGB565, scratch, rows);
      case Pixels::rgb555:
        return packed(source, target, vekiCsc420RGB555, scratch, rows);
      case Pixels::rgb444:
        return packed(source, target, vekiCsc420RGB444, scratch, rows);
      default:
        return packed(source, target, vekiCsc420BGR24, scratch, rows);
    }
  }

 private:
  void planar(const SourcePlanes& source, const Target& target, Vek8u* scratch, Band rows) const {
    const bool is422 = target.pixels == Pixels::i422, isNv12 = target.pixels == Pixels::nv12;
    const Size size = this->size();
    const int chromaRows = is422 ? size.height : size.height / 2;
    SourcePlanes made = source;
    if (!isCopy()) {
      // Exchanging rows needs equal steps of chroma.
      const bool isDirect = !isNv12 && isAligned(target.planes[0], 4) && target.steps[0] % 4 == 0 &&
                            isAligned(target.planes[1], 2) && isAligned(target.planes[2], 2) &&
                            target.steps[1] % 2 == 0 && target.steps[1] == target.steps[2];
      const int step = roundUp(size.width, 64);
      Vek8u* planes[3] = {scratch, scratch + static_cast<std::ptrdiff_t>(step) * size.height,
                          nullptr};
      planes[2] = planes[1] + static_cast<std::ptrdiff_t>(step) * chromaRows;
      int steps[3] = {step, step, step};
      if (isDirect) {
        std::copy_n(target.planes, 3, planes);
        std::copy_n(target.steps, 3, steps);
      }
      const Steps sampling = samplingSteps(from, to);
      if (is422) {
        vekiYCbCr422RszRot_8u_P3R(source.planes, source.steps, from.width, from.height, planes,
                                  steps, to.width, to.height, static_cast<int>(interpolation),
                                  static_cast<int>(rotation), sampling.x, sampling.y);
      } else {
        vekiYCbCr420RszRotRows_8u_P3R(source.planes, source.steps, from.width, from.height, planes,
                                      steps, to.width, to.height, static_cast<int>(interpolation),
                                      static_cast<int>(rotation), sampling.x, sampling.y,
                                      rows.first, rows.count);
      }
      if (isDirect) return;
      made = {{planes[0], planes[1], planes[2]}, {step, step, step}};
    }
    const Rect part = place(rows);
    const Target there = target.at(part.x, part.y);
    const std::ptrdiff_t x = part.x, y = part.y, chromaY = is422 ? y : y / 2;
    made.planes[0] += y * made.steps[0] + x;
    for (int i : {1, 2}) made.planes[i] += chromaY * made.steps[i] + x / 2;
    if (isNv12) {
      vekiYCbCr420ToNV12_8u_P3P2R(made.planes, made.steps, there.planes, there.steps,
                                  {part.width, part.height});
      return;
    }
    for (int i = 0; i < 3; ++i) {
      copyRows(made.planes[i], made.steps[i], there.planes[i], there.steps[i],
               i == 0 ? part.width : part.width / 2,
               i == 0 || is422 ? part.height : part.height / 2);
    }
  }

  void packed(const SourcePlanes& source, const Target& target, int format, Vek8u* scratch,
              Band rows) const {
    const bool is24 = format == vekiCsc420BGR24;
    const bool is32 = target.pixels == Pixels::bgrx32 || target.pixels == Pixels::rgbx32;
    const bool isDirect =
        !is32 && isAligned(target.planes[0], 8) && target.steps[0] % (is24 ? 2 : 8) == 0;
    const int bytes = is24 ? 3 : 2;
    Vek8u* const made = isDirect ? target.planes[0] : scratch;
    const int step = isDirect ? target.steps[0] : roundUp(size().width * bytes, 64);
    const Steps sampling = samplingSteps(from, to);
    vekiYCbCr420RszCscRotRGBRows_8u_P3C3R(
        source.planes, source.steps, from.width, from.height, made, step, to.width, to.height,
        format, static_cast<int>(interpolation), static_cast<int>(rotation), sampling.x, sampling.y,
        rows.first, rows.count);
    const Rect part = place(rows);
    const Size size = {part.width, part.height};
    const Vek8u* const pixels =
        made + std::ptrdiff_t{part.y} * step + std::ptrdiff_t{part.x} * bytes;
    const Target there = target.at(part.x, part.y);
    constexpr int reversed[] = {2, 1, 0, 3}, kept[] = {0, 1, 2, 3};
    if (target.pixels == Pixels::rgb24) {
      vekiPermuteChannels_8u_C3R(pixels, step, there.planes[0], there.steps[0], size, reversed);
    } else if (is32) {
      vekiPermuteChannels_8u_C3C4R(pixels, step, there.planes[0], there.steps[0], size,
                                   target.pixels == Pixels::bgrx32 ? kept : reversed, 255);
    } else if (!isDirect) {
      copyRows(pixels, step, there.planes[0], there.steps[0], size.width * bytes, size.height);
    }
  }
};

}  // namespace detail
/// @endcond

/** @} */

}  // namespace v0
}  // namespace vek

#endif  // VEK_ISP_FINISH_HPP
