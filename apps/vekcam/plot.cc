#include "vekcam/plot.h"

#include <algorithm>
#include <cmath>
#include <cstdio>

namespace vekcam {
namespace {

constexpr double width = 960, height = 230;
constexpr size_t mostNames = 9;  ///< of spans, that fit beside each other
constexpr double left = 56, right = 12, top = 44, bottom = 26;

std::string number(double value) {
  char text[32];
  std::snprintf(text, sizeof text, "%.5g", std::round(value * 100) / 100);
  return text;
}

/// Maps frames and values to places on the page.
class Axes {
 public:
  Axes(const Plot& plot, size_t frames) : plot_(plot), frames_(std::max<size_t>(frames, 2) - 1) {}

  double x(double frame) const {
    const double at = frame / static_cast<double>(frames_);
    return left + at * (width - left - right);
  }

  double y(double value) const {
    const double clamped = std::clamp(value, plot_.low, plot_.high);
    const double at =
        (scaled(clamped) - scaled(plot_.low)) / (scaled(plot_.high) - scaled(plot_.low));
    return height - bottom - at * (height - top - bottom);
  }

  /// 1, 2, 5, 10, 20 ... on a logarithmic axis, else about four round numbers.
  std::vector<double> ticks() const {
    std::vector<double> values;
    if (plot_.logarithmic) {
      for (int i = 0; i < 15; ++i) values.push_back(std::pow(10, i / 3) * (i % 3 * (i % 3) + 1));
    } else {
      const double rough = (plot_.high - plot_.low) / 4;
      const double decade = std::pow(10, std::floor(std::log10(rough)));
      const double leading = rough / decade;
      const double step = decade * (leading < 1.5 ? 1 : leading < 3.5 ? 2 : leading < 7.5 ? 5 : 10);
      const double first = std::ceil(plot_.low / step);
      for (int i = 0; i < 15; ++i) values.push_back((first + i) * step);
    }
    std::erase_if(values, [&](double v) { return v < plot_.low || v > plot_.high; });
    return values;
  }

 private:
  double scaled(double value) const { return plot_.logarithmic ? std::log(value) : value; }

  const Plot& plot_;
  size_t frames_;
};

std::string rectangle(double x0, double y0, double x1, double y1, const std::string& attributes) {
  return "<rect x=\"" + number(x0) + "\" y=\"" + number(y0) + "\" width=\"" + number(x1 - x0) +
         "\" height=\"" + number(y1 - y0) + "\" " + attributes + "/>\n";
}

std::string text(double x, double y, const char* anchor, const std::string& words,
                 const std::string& attributes = "") {
  return "<text x=\"" + number(x) + "\" y=\"" + number(y) + "\" text-anchor=\"" + anchor + "\" " +
         attributes + ">" + words + "</text>\n";
}

}  // namespace

std::string svg(const Plot& plot) {
  size_t frames = 0;
  for (const Series& series : plot.series) frames = std::max(frames, series.values.size());
  const Axes axes(plot, frames);
  const double last = static_cast<double>(std::max<size_t>(frames, 1)) - 1;

  std::string out = "<svg viewBox=\"0 0 " + number(width) + " " + number(height) +
                    R"(" role="img" aria-label=")" + plot.title + "\">\n";
  out += text(left, 16, "start", plot.title, R"(class="title")");
  for (const Span& span : plot.spans) {
    const double from = axes.x(static_cast<double>(span.first));
    const double to = axes.x(std::min(static_cast<double>(span.first + span.count), last));
    out +=
        rectangle(from, top, to, height - bottom, R"(fill=")" + span.colour + R"(" opacity=".16")");
    if (plot.spans.size() > mostNames) continue;
    out += text((from + to) / 2, top - 8, "middle", span.name, R"(class="faint")");
  }
  if (plot.bandLow != plot.bandHigh) {
    out += rectangle(left, axes.y(plot.bandHigh), width - right, axes.y(plot.bandLow),
                     R"(class="band")");
  }
  for (const double tick : axes.ticks()) {
    const std::string y = number(axes.y(tick));
    out += R"(<path class="grid" d="M)" + number(left) + " " + y + "H" + number(width - right) +
           "\"/>\n";
    out += text(left - 6, axes.y(tick) + 4, "end", number(tick), R"(class="faint")");
  }
  const size_t stride = frames > 240 ? 48 : 12;
  for (size_t frame = 0; frame < frames; frame += stride) {
    out += text(axes.x(static_cast<double>(frame)), height - 8, "middle", std::to_string(frame),
                R"(class="faint")");
  }
  double legend = width - right;
  for (size_t i = plot.series.size(); i-- > 0;) {
    const Series& series = plot.series[i];
    out += text(legend, 16, "end", series.name, "fill=\"" + series.colour + "\"");
    legend -= 8.0 * static_cast<double>(series.name.size()) + 14;
    out += R"(<polyline fill="none" stroke=")" + series.colour + R"(" points=")";
    for (size_t frame = 0; frame < series.values.size(); ++frame) {
      out += number(axes.x(static_cast<double>(frame))) + "," +
             number(axes.y(series.values[frame])) + " ";
    }
    out += "\"/>\n";
  }
  return out + "</svg>\n";
}

}  // namespace vekcam
