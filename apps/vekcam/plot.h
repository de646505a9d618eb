// Line plots as SVG, to stand in a page.
#pragma once

#include <string>
#include <vector>

namespace vekcam {

struct Series {
  std::string name;
  std::string colour;
  std::vector<double> values;  ///< one per frame
};

/// A stretch of frames with a common background.
struct Span {
  std::string name;
  std::string colour;
  size_t first, count;
};

struct Plot {
  std::string title;
  double low = 0, high = 1;  ///< ends of the vertical axis
  bool logarithmic = false;
  std::vector<Series> series;
  std::vector<Span> spans;
  double bandLow = 0, bandHigh = 0;  ///< a marked range of values, if the ends differ
};

std::string svg(const Plot& plot);

}  // namespace vekcam
