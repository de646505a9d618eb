#include "vekcam/develop.h"

#include <memory>

#include "vekcam/commands/commands.h"
#include "vekcam/commands/options.h"

namespace vekcam {

void addDevelop(CLI::App& program, Console& console) {
  CLI::App& app = addCommand(program, console, "develop", "Make pictures of raw frames");
  app.footer(
      "FILE is a plain raw frame (rows from the top, without a header), a DNG, a raw file of a\n"
      "camera, or a directory of them. Several go into a directory, in parallel. White balance is\n"
      "found automatically unless it is given, or the file has it. A reduced picture needs a "
      "width\n"
      "that is a multiple of 4 and an even height: what is left over on the right and at the "
      "bottom\n"
      "of the frame is not shown.");
  struct State {
    DevelopSettings settings;
    DevelopmentFiles files;
  };
  const auto state = std::make_shared<State>();
  DevelopSettings& settings = state->settings;
  app.add_option("FILE", settings.inputs, "Raw frames and directories of them; - is standard input")
      ->required()
      ->type_name("");
  app.add_option("-o,--output", settings.output,
                 "A .png, .jpg, .ppm, .yuv or .y4m file, a directory, or - for standard output")
      ->required()
      ->type_name("OUT");
  app.add_option_function<std::string>(
         "--type", [&settings](const std::string& text) { settings.kind = outputKindNamed(text); },
         "Type of the pictures: png, jpg, ppm, yuv or y4m [that of the extension; png in a\n"
         "directory, ppm to standard output]")
      ->check(CLI::IsMember({"png", "jpg", "ppm", "yuv", "y4m"}))
      ->type_name("TYPE");
  app.add_option("--quality", settings.quality, "Quality of JPEG files")
      ->check(CLI::Range(1, 100))
      ->type_name("1..100")
      ->capture_default_str();
  addFrame(app, settings.frame, settings.isFormatGiven);
  addDevelopment(app, settings.development, state->files);
  addLevel(app);
  addJson(app, settings.json);
  app.callback([state, &console] {
    DevelopSettings& s = state->settings;
    readFiles(state->files, s.development, s.frame, s.isFormatGiven);
    console.resultsToError = s.output == "-";
    develop(s, console);
  });
}

}  // namespace vekcam
