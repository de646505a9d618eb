// vek_bench_summary: the figures of the runs of vek_bench and vek_bench_levels in a few lines, put
// into a document between two marks, and the points of a plot.
#include <CLI/CLI.hpp>
#include <algorithm>
#include <cstdio>
#include <fstream>
#include <map>
#include <nlohmann/json.hpp>
#include <sstream>

#include "bench/report.h"

namespace vek::bench {
namespace {

using nlohmann::json;

const char* const beginMark = "<!-- written by ./dev bench -->\n";
const char* const endMark = "<!-- end -->\n";

/// Families in the order of the tables and, but for those without peers, of the rows of plot.gp.
const std::pair<const char*, const char*> families[] = {
    {"raw", "raw pipeline"},     {"preview", "preview"},   {"aaa", "exposure, white balance"},
    {"color", "colour"},         {"arith", "arithmetic"},  {"filter", "filters"},
    {"stat", "norms"},           {"channels", "channels"}, {"pad", "borders"},
    {"transform", "transforms"}, {"moments", "moments"},   {"warp", "warps"},
    {"dither", "dithering"},     {"front", "sensor data"}, {"", "all"},
};

/// The place of a family in the list, or of "all" if it has none.
size_t rowOf(const std::string& family) {
  size_t row = 0;
  while (*families[row].first != 0 && family != families[row].first) ++row;
  return row;
}

std::string format(const char* pattern, double value) {
  char text[32];
  std::snprintf(text, sizeof text, pattern, value);
  return text;
}

std::string source(const json& run) {
  return run["cpu"].get<std::string>() + ", " + run["date"].get<std::string>() + ", " +
         run["compiler"].get<std::string>();
}

double ratio(const json& pair) {
  return pair["peer_us"].get<double>() / pair["us"].get<double>();
}

/// The measured pairs that have a peer, lowest ratio first.
std::vector<json> pairsWithPeers(const json& run) {
  std::vector<json> pairs;
  for (const json& pair : run["pairs"]) {
    if (pair["peer_us"].get<double>() > 0) pairs.push_back(pair);
  }
  std::sort(pairs.begin(), pairs.end(),
            [](const json& a, const json& b) { return ratio(a) < ratio(b); });
  return pairs;
}

std::vector<std::string> sizesOf(const json& run) {
  std::vector<std::string> sizes;
  for (const json& pair : run["pairs"]) {
    const std::string size = pair["size"];
    if (std::find(sizes.begin(), sizes.end(), size) == sizes.end()) sizes.push_back(size);
  }
  return sizes;
}

/// How many times as fast as the peers, by family and size.
std::string peerTable(const json& run) {
  const std::vector<std::string> sizes = sizesOf(run);
  std::string text = "| family |", rule = "|---|";
  for (const std::string& size : sizes) {
    text += " " + size + ": pairs | geometric mean | lowest | highest |";
    rule += "---:|---:|---:|---:|";
  }
  text += "\n" + rule + "\n";
  for (const auto& [family, title] : families) {
    std::string cells;
    for (const std::string& size : sizes) {
      std::vector<double> ratios;
      for (const json& pair : pairsWithPeers(run)) {
        if (pair["size"] != size || (*family != 0 && pair["family"] != family)) continue;
        ratios.push_back(ratio(pair));
      }
      if (ratios.empty()) continue;
      cells += " " + std::to_string(ratios.size()) + " | " + format("%.2f", geometricMean(ratios)) +
               " | " + format("%.2f", ratios.front()) + " | " + format("%.1f", ratios.back()) +
               " |";
    }
    if (!cells.empty()) text += std::string("| ") + title + " |" + cells + "\n";  // or no peers
  }
  return text;
}

/// Every pair in which the peer is faster by more than 5 %.
std::string losses(const json& run) {
  std::string text =
      "| function | size | us | peer | peer, us | ratio |\n|---|---|---:|---|---:|---:|\n";
  for (const json& pair : pairsWithPeers(run)) {
    if (ratio(pair) >= 0.95) break;
    text += "| `" + pair["function"].get<std::string>() + "` | " + pair["size"].get<std::string>() +
            " | " + format("%.1f", pair["us"]) + " | " + pair["peer"].get<std::string>() + " | " +
            format("%.1f", pair["peer_us"]) + " | " + format("%.2f", ratio(pair)) + " |\n";
  }
  return text;
}

/// How many times as fast as the portable level, by family. What takes less than a microsecond works
/// on no image and has one form.
std::string levelTable(const json& run) {
  std::vector<std::string> levels;
  for (const char* level : {"sse4", "avx2", "avx512", "neon"}) {
    if (run["functions"][0]["us"].contains(level)) levels.push_back(level);
  }
  std::string text = "| family | functions |", rule = "|---|---:|";
  for (const std::string& level : levels) {
    text += " " + level + " |";
    rule += "---:|";
  }
  text += "\n" + rule + "\n";
  for (const auto& [family, title] : families) {
    std::map<std::string, std::vector<double>> gains;
    for (const json& f : run["functions"]) {
      const double portable = f["us"]["portable"];
      if (portable < 1 || (*family != 0 && f["family"] != family)) continue;
      for (const std::string& level : levels) {
        gains[level].push_back(portable / f["us"][level].get<double>());
      }
    }
    if (gains.empty()) continue;  // a run of some families
    text += std::string("| ") + title + " | " + std::to_string(gains[levels[0]].size()) + " |";
    for (const std::string& level : levels) {
      text += " " + format("%.1f", geometricMean(gains[level])) + " |";
    }
    text += "\n";
  }
  return text;
}

/// Lines of a row of the plot, a number of the size and the ratio.
std::string points(const json& run) {
  const std::vector<std::string> sizes = sizesOf(run);
  std::string text;
  for (const json& pair : pairsWithPeers(run)) {
    size_t size = 0;
    while (pair["size"] != sizes[size]) ++size;
    text += std::to_string(rowOf(pair["family"])) + " " + std::to_string(size) + " " +
            format("%.3f", ratio(pair)) + "\n";
  }
  return text;
}

json read(const std::string& path) {
  std::ifstream file(path);
  return json::parse(file);
}

/// Replaces what stands between the marks.
bool update(const std::string& path, const std::string& figures) {
  std::ifstream file(path);
  std::stringstream text;
  text << file.rdbuf();
  const std::string old = text.str();
  const size_t begin = old.find(beginMark), end = old.find(endMark);
  if (begin == std::string::npos || end == std::string::npos) {
    std::fprintf(stderr, "vek_bench_summary: no marks in %s\n", path.c_str());
    return false;
  }
  return writeFile(path, old.substr(0, begin) + beginMark + figures + old.substr(end));
}

int main(int argc, char** argv) {
  std::string peersFile, levelsFile, document, data;
  CLI::App app("Summary of benchmark runs");
  app.add_option("PEERS", peersFile, "JSON of vek_bench --table")->required();
  app.add_option("LEVELS", levelsFile, "JSON of vek_bench_levels")->required();
  app.add_option("--document", document, "file with marks to write between");
  app.add_option("--points", data, "file for the points of the plot");
  CLI11_PARSE(app, argc, argv);
  const json peers = read(peersFile), levels = read(levelsFile);
  const std::string figures = "## Beside the peers\n\n" + source(peers) + ":\n\n" +
                              peerTable(peers) + "\nWhere a peer is faster by more than 5 %:\n\n" +
                              losses(peers) + "\n## What the levels gain\n\n" + source(levels) +
                              ". How many times as fast as the portable level at " +
                              levels["size"].get<std::string>() + " (geometric means):\n\n" +
                              levelTable(levels) + "\n";
  if (document.empty()) std::fputs(figures.c_str(), stdout);
  return (document.empty() || update(document, figures)) && writeFile(data, points(peers)) ? 0 : 1;
}

}  // namespace
}  // namespace vek::bench

int main(int argc, char** argv) {
  return vek::bench::main(argc, argv);
}
