#include "vekcam/view.h"

#include <map>
#include <memory>

#include "vekcam/commands/commands.h"
#include "vekcam/commands/options.h"

namespace vekcam {

void addView(CLI::App& program, Console& console) {
  CLI::App& app = addCommand(program, console, "view", "Show raw frames in a window");
  app.footer(
      "Keys: A automatic exposure, W automatic white balance, C tone curve, R rotation,\n"
      "H histogram, S screenshot, L next light (simulation), arrows or the mouse move the "
      "sliders,\n"
      "space pauses, N next frame, Q or Escape closes the window.");
  const auto settings = std::make_shared<ViewSettings>();
  const auto files = std::make_shared<DevelopmentFiles>();
  const auto isFormatGiven = std::make_shared<bool>(false);
  app.add_option("INPUT", settings->input,
                 "Frames: a file, a directory, or - for standard input [a simulated camera]")
      ->type_name("");
  addFrame(app, settings->frame, *isFormatGiven);
  addDevelopment(app, settings->development, *files);
  for (const char* size : {"--scale", "--resize"}) app.remove_option(app.get_option(size));
  addLevel(app);
  app.add_option("--fps", settings->framesPerSecond, "Frames shown in a second, at most")
      ->check(CLI::Range(.01, 1e6))
      ->type_name("N");
  app.add_option("--keys", settings->keys, "Keys that are pressed before the first frame")
      ->type_name("KEYS");
  app.add_option("--frames", settings->frames, "Close the window after so many frames")
      ->check(CLI::Range(1, 1000000))
      ->type_name("N");
  app.add_option("--screenshot", settings->screenshot,
                 "Picture of the window, written at the end and with S [vekcam-view.png]")
      ->type_name("FILE");
  app.callback([settings, files, isFormatGiven, &console] {
    readFiles(*files, settings->development, settings->frame, *isFormatGiven);
    vek::Size& size = settings->frame.size;
    if (size.width == 0 && !settings->input.empty()) throw UsageError("--size is required");
    if (size.width == 0) size = {1280, 720};
    view(*settings, console);
  });
}

}  // namespace vekcam
