#include "vekcam/simulate.h"

#include <algorithm>
#include <memory>

#include "vekcam/commands/commands.h"
#include "vekcam/commands/options.h"

namespace vekcam {

void addSimulate(CLI::App& program, Console& console) {
  CLI::App& app =
      addCommand(program, console, "simulate", "Run a simulated camera through changing light");
  app.footer(
      "Shows a test scene to a simulated 10-bit RGGB sensor and closes the loop: exposure and\n"
      "white balance drive the sensor while the light changes every " +
      std::to_string(framesPerLight) +
      " frames, and every\n"
      "frame becomes a picture. Writes DIR/frames/*.png, DIR/contact_sheet.png and\n"
      "DIR/report.html, a page with the pictures, the course of all controls, and the time of\n"
      "each stage.");
  const auto settings = std::make_shared<SimulateSettings>();
  app.add_option("--frames", settings->frames, "Number of frames")
      ->check(CLI::Range(1, 9999))
      ->type_name("N")
      ->capture_default_str();
  app.add_option("--out", settings->directory, "Directory for the results")
      ->type_name("DIR")
      ->capture_default_str();
  constexpr SizeLimits limits = {64, 8192};
  addSize(app, "--size", settings->loop.size, limits, "Size of the sensor, even [1280x720]");
  addSize(app, "--preview", settings->loop.preview, limits,
          "Size of the pictures before they are rotated, even [640x360]");
  addRotation(app, [settings](vek::Rotation r) { settings->loop.rotation = r; });
  addCurve(app, settings->loop.curve);
  std::vector<std::string> meterings(allMeterings.size());
  std::ranges::transform(allMeterings, meterings.begin(), [](Metering m) { return name(m); });
  app.add_option_function<std::string>(
         "--metering",
         [settings](const std::string& text) {
           const auto named = [&](Metering metering) { return text == name(metering); };
           settings->loop.metering = *std::ranges::find_if(allMeterings, named);
         },
         "What the exposure meters: isp (the default: the camera path's own law), frame,\n"
         "centre, windows (the whole and its middle), or histogram. The report compares\n"
         "with isp, or with frame.")
      ->check(CLI::IsMember(meterings))
      ->type_name("MODE");
  app.add_option("--seed", settings->loop.seed, "Seed of the sensor's noise")
      ->check([](const std::string& text) {  // which would wrap
        return text.starts_with('-') ? "expected a number of 0 or more, not " + text
                                     : std::string();
      })
      ->type_name("N")
      ->capture_default_str();
  app.add_option("--raw", settings->rawFrames,
                 "A file for the sensor's frames, one after another: RG10")
      ->type_name("FILE.raw");
  app.add_option_function<std::string>(
         "--scene",
         [settings](const std::string& text) {
           settings->loop.scene = text == "dark"   ? SceneKind::dark
                                  : text == "flat" ? SceneKind::flat
                                                   : SceneKind::chart;
         },
         "What the camera sees: chart (the default), dark or flat")
      ->check(CLI::IsMember({"chart", "dark", "flat"}))
      ->type_name("SCENE");
  addLevel(app);
  addJson(app, settings->json);
  app.callback([settings, &console] { simulate(*settings, console); });
}

}  // namespace vekcam
