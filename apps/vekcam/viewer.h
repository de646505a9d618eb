// What `vekcam view` shows and what its keys and sliders do, without a window: a canvas of pixels.
#pragma once

#include <array>
#include <memory>
#include <string>
#include <vek/isp.hpp>

#include "vekcam/frame_source.h"

namespace vekcam {

class Viewer {
 public:
  /// Keys other than letters and the space.
  enum Key : int { up = 256, down, left, right };

  Viewer(std::unique_ptr<FrameSource> source, vek::Rotation rotation, vek::ToneCurve curve);

  /// Shows the next frame, if it is time for one and there is one; whether the canvas has changed.
  bool advance();
  /// A letter in capitals, a space or a Key.
  void press(int key);
  /// The pointer is at this place, with its button down or not.
  void point(vek::Point at, bool isDown);

  /// The picture and the controls. Its size changes when the picture is rotated.
  vek::View<const vek::Bgrx32> canvas() const { return canvas_; }
  bool isFinished() const { return isFinished_; }  ///< Q was pressed
  bool hasEnded() const { return hasEnded_; }      ///< there are no more frames
  bool wantsScreenshot();                          ///< S was pressed since the last call
  int frames() const { return frames_; }           ///< how many were shown

  /// A slider's value, for tests: exposure in stops, gains of red and blue.
  double value(size_t slider) const { return sliders_[slider].value; }

 private:
  struct Slider {
    const char* name;
    double low, high, value;
    double step;  ///< of a key; factors if it is logarithmic
    bool isLogarithmic;
  };
  enum : size_t { exposure, red, blue };

  void makeIsp();
  void makeCanvas();
  bool takeFrame();
  void process();
  void change(size_t slider, double value);
  void applySliders();
  void followAutomatic();
  vek::Exposure wantedExposure() const;

  vek::Rect track(size_t slider) const;
  void fill(vek::Rect area, uint32_t color);
  void write(int x, int y, const std::string& text, uint32_t color);
  void drawPanel();
  void drawHistogram(vek::Rect area);

  std::unique_ptr<FrameSource> source_;
  vek::Rotation rotation_;
  vek::ToneCurve curve_;
  vek::Size output_ = {0, 0};  ///< of the picture before it is rotated
  std::unique_ptr<vek::Isp> isp_;
  vek::Image<vek::Bgrx32> canvas_;
  vek::Size picture_ = {0, 0};  ///< at the canvas's left
  std::array<Slider, 3> sliders_;
  size_t selected_ = 0;
  size_t dragged_ = 3;  ///< none
  bool isAutoExposed_ = true, isAutoBalanced_ = true, isPaused_ = false, hasHistogram_ = true;
  bool isFinished_ = false, hasEnded_ = false, wantsScreenshot_ = false, isStale_ = true;
  std::string light_;
  int frames_ = 0;
  double milliseconds_ = 0;  ///< of a frame, averaged
  double period_ = 0;        ///< seconds from frame to frame, averaged
  double lastFrame_ = -1;    ///< when it was shown
};

}  // namespace vekcam
