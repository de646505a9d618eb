#include "bench/table.h"

#include <cmath>
#include <cstdio>
#include <fstream>

#include "bench/report.h"
#include "bench/support.h"

namespace vek::bench {
namespace {

struct Line {
  std::string name, size, peer;
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
    for (const Entry& entry : entries()) {
      if (!entry.peer.empty() || entry.name.find(options.filter) == std::string::npos) continue;
      // Google Benchmark interleaves the repetitions of what one call runs.
      const std::string ours = label(entry.name, size, "");
      auto seconds = medians(quoted(ours) + "(/peer:.*)?|memcpy/" + sizeText(size));
      Line line;
      line.name = entry.name;
      line.size = sizeText(size);
      line.ours = seconds[ours];
      const double pixels = static_cast<double>(size.width) * size.height;
      const double copy = seconds["memcpy/" + line.size];
      line.pixelsPerSecond = pixels / line.ours;
      line.copyShare = entry.bytesPerPixel / line.ours / (2 / copy);
      const size_t before = lines.size();
      for (const Entry& peer : entries()) {
        if (peer.name != entry.name || peer.peer.empty()) continue;
        line.peer = peer.peer;
        line.theirs = seconds[label(entry.name, size, peer.peer)];
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
    double logs = 0, lowest = HUGE_VAL;
    int count = 0;
    for (const Line& line : lines) {
      if (line.theirs <= 0 || line.size != sizeText(size)) continue;
      logs += std::log(line.ratio());
      lowest = std::fmin(lowest, line.ratio());
      ++count;
    }
    if (count == 0) continue;
    char line[128];
    std::snprintf(line, sizeof line,
                  "%s: %d pairs, geometric mean of the ratios %.2f, lowest %.2f\n",
                  sizeText(size).c_str(), count, std::exp(logs / count), lowest);
    text += line;
  }
  return text;
}

bool writeMarkdown(const std::string& path, const std::vector<Line>& lines,
                   const std::vector<VekiSize>& sizes) {
  std::ofstream file(path);
  file
      << "# Benchmarks\n\nWritten by `./dev bench`: " << circumstances()
      << ". One thread; medians of interleaved runs.\n\n"
         "Ratio is the peer's time over ours: above 1 we are faster. Copy is the bytes that a call "
         "reads and\nwrites a second, against those of `memcpy` of one plane of the same size.\n\n";
  for (const char c : summary(lines, sizes)) file << (c == '\n' ? "\n\n" : std::string(1, c));
  char text[320];
  file << "| function | size | ours, us | Mpixel/s | copy | peer | peer, us | ratio |\n"
       << "|---|---|---:|---:|---:|---|---:|---:|\n";
  for (const Line& l : lines) {
    std::snprintf(text, sizeof text, "| `%s` | %s | %.1f | %.0f | %.2f |", l.name.c_str(),
                  l.size.c_str(), l.ours * 1e6, l.pixelsPerSecond / 1e6, l.copyShare);
    file << text;
    if (l.theirs > 0) {
      std::snprintf(text, sizeof text, " %s | %.1f | %.2f |\n", l.peer.c_str(), l.theirs * 1e6,
                    l.ratio());
      file << text;
    } else {
      file << " | | |\n";
    }
  }
  return static_cast<bool>(file.flush());
}

bool writeJson(const std::string& path, const std::vector<Line>& lines) {
  std::ofstream file(path);
  file << "{\"date\": \"" << today() << "\", \"cpu\": \"" << processor() << "\", \"pairs\": [";
  const char* separator = "\n";
  for (const Line& l : lines) {
    char text[400];
    std::snprintf(text, sizeof text,
                  "%s  {\"function\": \"%s\", \"size\": \"%s\", \"us\": %.3f, \"pixels_per_s\": "
                  "%.0f, \"memcpy_share\": %.3f, \"peer\": \"%s\", \"peer_us\": %.3f}",
                  separator, l.name.c_str(), l.size.c_str(), l.ours * 1e6, l.pixelsPerSecond,
                  l.copyShare, l.peer.c_str(), l.theirs * 1e6);
    file << text;
    separator = ",\n";
  }
  file << "\n]}\n";
  return static_cast<bool>(file.flush());
}

}  // namespace

int runTable(const TableOptions& options) {
  const std::vector<Line> lines = measure(options);
  std::fputs(summary(lines, options.sizes).c_str(), stdout);
  if (!options.json.empty() && !writeJson(options.json, lines)) {
    std::fprintf(stderr, "vek_bench: cannot write %s\n", options.json.c_str());
    return 1;
  }
  if (!options.markdown.empty() && !writeMarkdown(options.markdown, lines, options.sizes)) {
    std::fprintf(stderr, "vek_bench: cannot write %s\n", options.markdown.c_str());
    return 1;
  }
  return 0;
}

}  // namespace vek::bench
