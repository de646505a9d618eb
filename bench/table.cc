#include "bench/table.h"

#include <algorithm>
#include <cstdio>
#include <nlohmann/json.hpp>
#include <sstream>

#include "bench/benchmarks.h"
#include "bench/report.h"

namespace vek::bench {
namespace {

/// One benchmark at one size beside one peer, or beside none.
struct Line {
  std::string name, family, size, peer;
  double ours = 0, theirs = 0;  ///< seconds a call, medians; theirs 0 without a peer
  double pixelsPerSecond = 0;
  double copyShare = 0;  ///< bytes moved a second, against memcpy of one plane

  double ratio() const { return theirs / ours; }
};

void printLine(const Line& line) {
  std::printf("%-56s %-10s %10.1f us", line.name.c_str(), line.size.c_str(), line.ours * 1e6);
  if (line.theirs > 0) {
    std::printf("  %-8s %10.1f us  x %.2f", line.peer.c_str(), line.theirs * 1e6, line.ratio());
  }
  std::printf("  %.2f of memcpy\n", line.copyShare);
  std::fflush(stdout);
}

std::vector<Line> measure(const TableOptions& options) {
  std::vector<Line> lines;
  for (VekiSize size : options.sizes) {
    for (const Benchmark& benchmark : benchmarks(options.filter)) {
      // Google Benchmark interleaves the repetitions of what one call runs.
      const std::string ours = label(benchmark.name, size);
      auto seconds = medians(quoted(ours) + "(/peer:.*)?|memcpy/" + sizeText(size));
      Line line;
      line.name = benchmark.name;
      line.family = benchmark.family;
      line.size = sizeText(size);
      line.ours = seconds[ours];
      const double pixels = static_cast<double>(size.width) * size.height;
      const double copy = seconds["memcpy/" + line.size];
      line.pixelsPerSecond = pixels / line.ours;
      line.copyShare = benchmark.bytesPerPixel() / line.ours / (2 / copy);
      const size_t before = lines.size();
      for (const Peer& peer : peers()) {
        if (peer.name != benchmark.name) continue;
        line.peer = peer.peer;
        line.theirs = seconds[label(benchmark.name, size, peer.peer)];
        lines.push_back(line);
      }
      if (lines.size() == before) lines.push_back(line);
      for (size_t i = before; i < lines.size(); ++i) printLine(lines[i]);
    }
  }
  return lines;
}

/// One line for each size: the geometric mean of the ratios of all pairs, and the lowest one.
std::string summary(const std::vector<Line>& lines, const std::vector<VekiSize>& sizes) {
  std::string text;
  for (VekiSize size : sizes) {
    std::vector<double> ratios;
    for (const Line& line : lines) {
      if (line.theirs > 0 && line.size == sizeText(size)) ratios.push_back(line.ratio());
    }
    if (ratios.empty()) continue;
    char line[128];
    std::snprintf(line, sizeof line,
                  "%s: %zu pairs, geometric mean of the ratios %.2f, lowest %.2f\n",
                  sizeText(size).c_str(), ratios.size(), geometricMean(ratios),
                  *std::min_element(ratios.begin(), ratios.end()));
    text += line;
  }
  return text;
}

std::string markdown(const std::vector<Line>& lines) {
  std::string text =
      "# Benchmarks\n\n" + circumstances() +
      ". One thread; medians of interleaved runs.\n\n"
      "Ratio is the peer's time over ours: above 1 we are faster. Copy is the bytes that a call "
      "reads and\nwrites a second, against those of `memcpy` of one plane of the same size.\n\n"
      "| function | size | ours, us | Mpixel/s | copy | peer | peer, us | ratio |\n"
      "|---|---|---:|---:|---:|---|---:|---:|\n";
  for (const Line& l : lines) {
    char row[320];
    std::snprintf(row, sizeof row, "| `%s` | %s | %.1f | %.0f | %.2f |", l.name.c_str(),
                  l.size.c_str(), l.ours * 1e6, l.pixelsPerSecond / 1e6, l.copyShare);
    text += row;
    if (l.theirs > 0) {
      std::snprintf(row, sizeof row, " %s | %.1f | %.2f |\n", l.peer.c_str(), l.theirs * 1e6,
                    l.ratio());
      text += row;
    } else {
      text += " | | |\n";
    }
  }
  return text;
}

std::string json(const std::vector<Line>& lines) {
  nlohmann::json pairs = nlohmann::json::array();
  for (const Line& l : lines) {
    pairs.push_back({{"function", l.name},
                     {"family", l.family},
                     {"size", l.size},
                     {"us", l.ours * 1e6},
                     {"pixels_per_s", l.pixelsPerSecond},
                     {"memcpy_share", l.copyShare},
                     {"peer", l.peer},
                     {"peer_us", l.theirs * 1e6}});
  }
  return nlohmann::json(
             {{"date", today()}, {"cpu", processor()}, {"compiler", compiler()}, {"pairs", pairs}})
             .dump(1) +
         "\n";
}

}  // namespace

std::optional<std::vector<VekiSize>> parseSizes(const std::string& text) {
  std::vector<VekiSize> sizes;
  std::istringstream list(text);
  for (std::string item; std::getline(list, item, ',');) {
    const size_t before = sizes.size();
    for (VekiSize s : standardSizes) {
      if (item == "all" || item == sizeText(s)) sizes.push_back(s);
    }
    if (sizes.size() == before) return std::nullopt;
  }
  return sizes;
}

std::string label(const std::string& name, VekiSize size, const std::string& peer) {
  return name + "/" + sizeText(size) + (peer.empty() ? "" : "/peer:" + peer);
}

int runTable(const TableOptions& options) {
  const std::vector<Line> lines = measure(options);
  std::fputs(summary(lines, options.sizes).c_str(), stdout);
  const bool written =
      writeFile(options.json, json(lines)) && writeFile(options.markdown, markdown(lines));
  return written ? 0 : 1;
}

}  // namespace vek::bench
