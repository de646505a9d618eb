// Where the frames of the viewer come from.
#pragma once

#include <memory>
#include <string>
#include <vek/isp.hpp>

#include "vekcam/development.h"

namespace vekcam {

class FrameSource {
 public:
  enum class State { ready, waiting, ended };

  virtual ~FrameSource() = default;

  /// Takes the next frame, with the exposure if there is somebody to set it. `waiting`: there is none
  /// yet; `ended`: there will be none.
  virtual State next(const vek::Exposure& exposure) = 0;
  /// The frame that was taken last: rows of bytes.
  virtual vek::View<const vek::RawByte> frame() const = 0;
  /// What makes pictures of the frames: `scale` times smaller and then of this size before the rotation;
  /// of their own size if it has no width.
  virtual vek::Isp makeIsp(vek::Rotation rotation, vek::ToneCurve curve, int scale,
                           vek::Size resized) const = 0;
  virtual bool isExposed() const { return false; }  ///< whether the exposure does something
  virtual bool isBalanced() const { return true; }  ///< whether gains are found automatically
  /// The light after the present one, of a simulation; its name.
  virtual std::string nextLight() { return {}; }
};

/// A file, or "-" for standard input, of frames without anything between them.
std::unique_ptr<FrameSource> streamSource(const std::string& path, const FrameInfo& info,
                                          const DevelopmentSettings& settings);

/// The files of a directory in the order of their names, each a frame; others than of the right size are
/// a Failure.
std::unique_ptr<FrameSource> directorySource(const std::string& path, const FrameInfo& info,
                                             const DevelopmentSettings& settings);

/// The simulated camera.
std::unique_ptr<FrameSource> simulatedSource(vek::Size size);

}  // namespace vekcam
