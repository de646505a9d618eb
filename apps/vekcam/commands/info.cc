#include <fmt/format.h>
#include <memory>
#include <nlohmann/json.hpp>
#include <thread>
#include <vek/vek.h>

#include "vekcam/commands/commands.h"
#include "vekcam/raw_input.h"
#include "vekcam/view.h"

namespace vekcam {
namespace {

std::string info(bool json) {
  std::vector<std::string> levels;
  for (int level = 0; vekLevelName(level) != nullptr; ++level)
    levels.emplace_back(vekLevelName(level));
  const std::string inUse = vekLevelName(vekLevel());
  const std::string libRaw = libRawVersion();
  const std::string windows = sdlVersion();
  if (json) {
    const nlohmann::ordered_json data = {
        {"vekcam", VEKCAM_VERSION},
        {"vek", vekVersionString()},
        {"levels", levels},
        {"level", inUse},
        {"cores", std::thread::hardware_concurrency()},
        {"libraw", libRaw.empty() ? nlohmann::ordered_json() : nlohmann::ordered_json(libRaw)},
        {"sdl", windows.empty() ? nlohmann::ordered_json() : nlohmann::ordered_json(windows)}};
    return data.dump(2) + "\n";
  }
  return fmt::format(
      "vekcam {}, library vek {}\n"
      "levels: {} (in use: {})\n"
      "cores: {}\n"
      "DNG and raw files of cameras: {}\n"
      "windows: {}\n",
      VEKCAM_VERSION, vekVersionString(), fmt::join(levels, ", "), inUse,
      std::thread::hardware_concurrency(),
      libRaw.empty() ? "no, this build is without LibRaw" : "LibRaw " + libRaw,
      windows.empty() ? "no, this build is without SDL2" : "SDL " + windows);
}

}  // namespace

void addInfo(CLI::App& program, Console& console) {
  CLI::App& app = addCommand(program, console, "info", "Tell versions, CPU levels and features");
  const auto json = std::make_shared<bool>(false);
  addJson(app, *json);
  app.callback([json, &console] { console.data(info(*json)); });
}

}  // namespace vekcam
