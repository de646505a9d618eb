#include "vekcam/viewer.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdio>

#include "vekcam/exposure.h"
#include "vekcam/font.h"

namespace vekcam {
namespace {

constexpr int panelWidth = 252;
constexpr int margin = 12;
constexpr int textScale = 2;
constexpr int lineHeight = (glyphRows + 4) * textScale;
constexpr int slidersTop = 6 * lineHeight;
constexpr int sliderHeight = 2 * lineHeight;
constexpr int leastHeight = 480;  ///< what the panel needs
constexpr vek::Size largestPicture = {960, 720};

// Pixels are B, G, R, X from the lowest byte on.
constexpr uint32_t paper = 0x20242A, ink = 0xD8DEE6, faint = 0x5A6470, lively = 0x4FA3FF;

double now() {
  const auto time = std::chrono::steady_clock::now().time_since_epoch();
  return std::chrono::duration<double>(time).count();
}

void average(double& mean, double value) {
  mean = mean == 0 ? value : mean + (value - mean) / 8;
}

std::string fixed(double value, int digits) {
  char text[32];
  std::snprintf(text, sizeof text, "%.*f", digits, value);
  return text;
}

/// The largest even size of this shape, no larger than it, that fits.
vek::Size fitting(vek::Size size, vek::Size limit) {
  const double factor =
      std::min({1., double(limit.width) / size.width, double(limit.height) / size.height});
  const auto even = [&](int side) { return std::max(2, static_cast<int>(side * factor) & ~1); };
  return {even(size.width), even(size.height)};
}

}  // namespace

Viewer::Viewer(std::unique_ptr<FrameSource> source, vek::Rotation rotation, vek::ToneCurve curve)
    : source_(std::move(source)),
      rotation_(rotation),
      curve_(curve),
      sliders_{{{"EXPOSURE", 0, 3, 0, .25, false},
                {"RED", .25, 8, 1, 1.05, true},
                {"BLUE", .25, 8, 1, 1.05, true}}} {
  if (source_->isExposed())
    sliders_[exposure].low = -7, sliders_[exposure].high = 5;
  else
    isAutoExposed_ = false;
  isAutoBalanced_ = source_->isBalanced();
  makeIsp();
  sliders_[red].value = isp_->gains().red;
  sliders_[blue].value = isp_->gains().blue;
}

void Viewer::makeIsp() {
  vek::Rect crop = {};
  {
    const vek::Isp whole = source_->makeIsp(rotation_, curve_, 1, {0, 0});
    crop = whole.crop();
    output_ = vek::rotated(fitting(whole.outputSize(), largestPicture), rotation_);
  }
  int scale = 1;
  for (const int factor : {2, 4}) {
    const bool isWhole = crop.width % (8 * factor) == 0 && crop.height % (8 * factor) == 0;
    if (isWhole && crop.width / factor >= output_.width && crop.height / factor >= output_.height) {
      scale = factor;
    }
  }
  const bool isFirst = isp_ == nullptr;
  isp_ = std::make_unique<vek::Isp>(source_->makeIsp(rotation_, curve_, scale, output_));
  isp_->setWhiteBalance(isAutoBalanced_);
  if (!isFirst) applySliders();
  makeCanvas();
}

void Viewer::makeCanvas() {
  picture_ = isp_->outputSize();
  canvas_ = vek::Image<vek::Bgrx32>(
      {picture_.width + panelWidth, std::max(picture_.height, leastHeight)});
  fill({0, 0, canvas_.width(), canvas_.height()}, paper);
}

/// What the sensor is set to: stops about 128 rows, as time while that lasts, then as gain.
vek::Exposure Viewer::wantedExposure() const {
  const vek::Exposure automatic = isp_->results().exposure;
  const double rows = 128 * std::exp2(sliders_[exposure].value);
  const double time = std::clamp<double>(isAutoExposed_ ? automatic.time : rows,
                                         controlRange.minExposure, controlRange.maxExposure);
  const double gain = std::clamp<double>(isAutoExposed_ ? automatic.gain : rows / time,
                                         controlRange.minGain / 16., controlRange.maxGain / 16.);
  return {std::round(time), gain};
}

void Viewer::applySliders() {
  const double digital = source_->isExposed() ? 1 : std::exp2(sliders_[exposure].value);
  isp_->setGains({sliders_[red].value, 1, sliders_[blue].value}, digital);
}

/// Sliders show what was decided automatically.
void Viewer::followAutomatic() {
  const auto show = [&](size_t slider, double value) {
    sliders_[slider].value = std::clamp(value, sliders_[slider].low, sliders_[slider].high);
  };
  if (isAutoBalanced_) {
    show(red, isp_->results().gains.red);
    show(blue, isp_->results().gains.blue);
  }
  if (isAutoExposed_) {
    const vek::Exposure taken = isp_->results().exposure;
    show(exposure, std::log2(taken.time * taken.gain / 128));
  }
}

bool Viewer::takeFrame() {
  const vek::Exposure wanted = wantedExposure();
  const FrameSource::State state = source_->next(wanted);
  hasEnded_ = state == FrameSource::State::ended;
  if (state != FrameSource::State::ready) return false;
  isp_->setExposure(wanted);
  ++frames_;
  const double time = now();
  if (lastFrame_ >= 0) average(period_, time - lastFrame_);
  lastFrame_ = time;
  return true;
}

void Viewer::process() {
  const double start = now();
  isp_->process(source_->frame(), canvas_.view().sub({0, 0, picture_.width, picture_.height}));
  average(milliseconds_, 1e3 * (now() - start));
  followAutomatic();
}

bool Viewer::advance() {
  const bool isNew = (!isPaused_ || frames_ == 0) && !hasEnded_ && takeFrame();
  if (!isNew && !isStale_) return false;
  // A frame that stays is developed again: the controls may have been moved.
  if (frames_ > 0) process();
  drawPanel();
  isStale_ = false;
  return true;
}

bool Viewer::wantsScreenshot() {
  return std::exchange(wantsScreenshot_, false);
}

void Viewer::change(size_t slider, double value) {
  Slider& s = sliders_[slider];
  s.value = std::clamp(value, s.low, s.high);
  if (slider == exposure) {
    isAutoExposed_ = false;
  } else {
    isAutoBalanced_ = false;
    isp_->setWhiteBalance(false);
  }
  applySliders();
}

void Viewer::press(int key) {
  isStale_ = true;
  const Slider& slider = sliders_[selected_];
  const auto moved = [&](bool up) {
    return slider.isLogarithmic ? (up ? slider.value * slider.step : slider.value / slider.step)
                                : slider.value + (up ? slider.step : -slider.step);
  };
  switch (key) {
    case 'A':
      isAutoExposed_ = source_->isExposed() && !isAutoExposed_;
      break;
    case 'W':
      isAutoBalanced_ = !isAutoBalanced_;
      isp_->setWhiteBalance(isAutoBalanced_);
      break;
    case 'C':
      curve_ = static_cast<vek::ToneCurve>((static_cast<int>(curve_) + 1) % 3);
      isp_->setCurve(curve_);
      break;
    case 'R': {
      constexpr vek::Rotation clockwise[] = {vek::Rotation::none, vek::Rotation::cw90,
                                             vek::Rotation::half, vek::Rotation::ccw90};
      const auto at = std::find(std::begin(clockwise), std::end(clockwise), rotation_);
      rotation_ = clockwise[(at - std::begin(clockwise) + 1) % 4];
      makeIsp();
      break;
    }
    case 'H':
      hasHistogram_ = !hasHistogram_;
      break;
    case 'L':
      light_ = source_->nextLight();
      std::ranges::transform(light_, light_.begin(),
                             [](char c) { return c >= 'a' && c <= 'z' ? char(c - 32) : c; });
      break;
    case ' ':
      isPaused_ = !isPaused_;
      break;
    case 'N':
      isPaused_ = true;
      takeFrame();
      break;
    case 'S':
      wantsScreenshot_ = true;
      break;
    case 'Q':
      isFinished_ = true;
      break;
    case up:
    case down:
      selected_ = (selected_ + (key == up ? sliders_.size() - 1 : 1)) % sliders_.size();
      break;
    case left:
    case right:
      change(selected_, moved(key == right));
      break;
    default:
      break;
  }
}

void Viewer::point(vek::Point at, bool isDown) {
  if (!isDown) {
    dragged_ = sliders_.size();
    return;
  }
  for (size_t i = 0; dragged_ == sliders_.size() && i < sliders_.size(); ++i) {
    const vek::Rect area = track(i);
    const bool isHit = at.x >= area.x - margin && at.x < area.x + area.width + margin &&
                       at.y >= area.y - margin && at.y < area.y + area.height + margin;
    if (isHit) dragged_ = i;
  }
  if (dragged_ == sliders_.size()) return;
  const Slider& slider = sliders_[dragged_];
  const vek::Rect area = track(dragged_);
  const double part = std::clamp((at.x - area.x) / double(area.width), 0., 1.);
  selected_ = dragged_;
  isStale_ = true;
  change(dragged_, slider.isLogarithmic ? slider.low * std::pow(slider.high / slider.low, part)
                                        : slider.low + part * (slider.high - slider.low));
}

vek::Rect Viewer::track(size_t slider) const {
  return {picture_.width + margin,
          slidersTop + static_cast<int>(slider) * sliderHeight + lineHeight,
          panelWidth - 2 * margin, 6};
}

void Viewer::fill(vek::Rect area, uint32_t color) {
  for (int y = area.y; y < area.y + area.height; ++y) {
    Vek8u* at = canvas_.row(y) + 4 * static_cast<ptrdiff_t>(area.x);
    for (int x = 0; x < area.width; ++x, at += 4) {
      for (int i = 0; i < 4; ++i) at[i] = static_cast<Vek8u>(color >> 8 * i);
    }
  }
}

void Viewer::write(int x, int y, const std::string& text, uint32_t color) {
  const int dots = static_cast<int>(text.size()) * glyphPitch;
  for (int row = 0; row < glyphRows; ++row) {
    for (int column = 0; column < dots; ++column) {
      const vek::Rect dot = {x + column * textScale, y + row * textScale, textScale, textScale};
      if (dot.x + dot.width > canvas_.width()) break;
      if (textDot(text, column, row)) fill(dot, color);
    }
  }
}

void Viewer::drawHistogram(vek::Rect area) {
  std::array<std::array<int, 64>, 3> counts = {};
  for (int y = 0; y < picture_.height; ++y) {
    const Vek8u* at = canvas_.row(y);
    for (int x = 0; x < picture_.width; ++x, at += 4) {
      for (size_t c = 0; c < 3; ++c) ++counts[c][at[c] >> 2];
    }
  }
  // The ends, where saturated samples are, may be cut off.
  int most = 1;
  for (const auto& channel : counts)
    most = std::max(most, *std::max_element(&channel[1], &channel[63]));
  fill(area, 0x14171B);
  const int width = area.width / 64;
  for (int bin = 0; bin < 64; ++bin) {
    const auto height = [&](size_t c) {
      return static_cast<int>(std::min<int64_t>(
          area.height, int64_t{area.height} * counts[c][static_cast<size_t>(bin)] / most));
    };
    const std::array<int, 3> heights = {height(0), height(1), height(2)};
    for (int y = 0; y < area.height; ++y) {
      // Where channels overlap, their colors add up.
      uint32_t color = 0;
      for (size_t c = 0; c < 3; ++c) {
        if (y < heights[c]) color |= 0xC8U << 8 * c;
      }
      if (color != 0) fill({area.x + bin * width, area.y + area.height - 1 - y, width, 1}, color);
    }
  }
}

void Viewer::drawPanel() {
  const int x = picture_.width + margin;
  fill({picture_.width, 0, panelWidth, canvas_.height()}, paper);
  int y = margin;
  const auto line = [&](const std::string& text, uint32_t color = ink) {
    write(x, y, text, color);
    y += lineHeight;
  };
  line("FRAME " + std::to_string(frames_) + (hasEnded_ ? " END" : isPaused_ ? " PAUSED" : ""));
  line(fixed(milliseconds_, 2) + " MS A FRAME");
  line(period_ > 0 ? fixed(1 / period_, 1) + " FPS" : "");
  constexpr const char* curves[] = {"SRGB", "BT709", "LINEAR"};
  line(std::string("CURVE ") + curves[static_cast<size_t>(curve_)]);
  line(light_, faint);
  for (size_t i = 0; i < sliders_.size(); ++i) {
    const Slider& slider = sliders_[i];
    const bool isAutomatic = i == exposure ? isAutoExposed_ : isAutoBalanced_;
    const vek::Rect area = track(i);
    write(x, area.y - lineHeight, slider.name, i == selected_ ? lively : ink);
    std::string value = slider.value > 0 && !slider.isLogarithmic ? "+" : "";
    value.append(fixed(slider.value, 2)).append(isAutomatic ? " AUTO" : "");
    write(x + 9 * glyphPitch * textScale, area.y - lineHeight, value, isAutomatic ? faint : ink);
    const double part =
        slider.isLogarithmic
            ? std::log(slider.value / slider.low) / std::log(slider.high / slider.low)
            : (slider.value - slider.low) / (slider.high - slider.low);
    fill(area, faint);
    fill({area.x + static_cast<int>(part * (area.width - 8)), area.y - 4, 8, area.height + 8},
         i == selected_ ? lively : ink);
  }
  y = slidersTop + 3 * sliderHeight + lineHeight;
  if (hasHistogram_) drawHistogram({x, y, (panelWidth - 2 * margin) / 64 * 64, 96});
  y += 96 + lineHeight / 2;
  for (const char* help : {"A W  AUTOMATIC", "C R  CURVE ROTATE", "H S  HISTOGRAM SHOT",
                           "N    NEXT FRAME", "ARROWS  SLIDERS", "SPACE Q PAUSE QUIT"}) {
    if (y + lineHeight > canvas_.height()) break;
    line(help, faint);
  }
}

}  // namespace vekcam
