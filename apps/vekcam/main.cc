// vekcam: a camera on a desk. See `vekcam --help`.
#include <CLI/CLI.hpp>
#include <algorithm>
#include <charconv>
#include <cstdio>
#include <exception>
#include <new>
#include <string>
#include <vector>

#include "vekcam/develop.h"
#include "vekcam/files.h"
#include "vekcam/simulate.h"

namespace {

using namespace vekcam;

constexpr int usageFault = 2;

/// "1920x1080".
VekiSize parseSize(const std::string& text) {
  VekiSize size = {0, 0};
  const char* const end = text.data() + text.size();
  const auto [x, widthError] = std::from_chars(text.data(), end, size.width);
  if (widthError == std::errc() && x != end && *x == 'x') {
    const auto [rest, heightError] = std::from_chars(x + 1, end, size.height);
    if (heightError == std::errc() && rest == end) return size;
  }
  throw CLI::ValidationError("expected WIDTHxHEIGHT, such as 1920x1080, not " + text);
}

CLI::Option* addSize(CLI::App& app, const std::string& name, VekiSize& size,
                     const std::string& help) {
  return app
      .add_option_function<std::string>(
          name, [&size](const std::string& text) { size = parseSize(text); }, help)
      ->type_name("WxH");
}

void addPictureOptions(CLI::App& app, int& degrees, Curve& curve) {
  app.add_option("--rotate", degrees, "Turn the picture clockwise by 0, 90, 180 or 270 degrees")
      ->check(CLI::IsMember({0, 90, 180, 270}))
      ->type_name("DEGREES");
  app.add_option_function<std::string>(
         "--curve",
         [&curve](const std::string& text) {
           curve = text == "linear" ? Curve::linear : Curve::standard;
         },
         "Tone curve: linear or standard (the default)")
      ->check(CLI::IsMember({"linear", "standard"}))
      ->type_name("CURVE");
}

void addSimulate(CLI::App& program, SimulateSettings& settings) {
  CLI::App& app =
      *program.add_subcommand("simulate", "Run a simulated camera through changing light");
  app.footer(
      "Shows a test scene to a simulated 10-bit RGGB sensor and closes the loop: exposure and\n"
      "white balance drive the sensor while the light changes every " +
      std::to_string(framesPerLight) +
      " frames, and every\n"
      "frame becomes a picture. Writes DIR/frames/*.png, DIR/contact_sheet.png and\n"
      "DIR/report.html, a page with the pictures, the course of all controls, and the time of\n"
      "each stage.");
  app.add_option("--frames", settings.frames, "Number of frames")
      ->check(CLI::Range(1, 9999))
      ->type_name("N")
      ->capture_default_str();
  app.add_option("--out", settings.directory, "Directory for the results")
      ->type_name("DIR")
      ->capture_default_str();
  addSize(app, "--size", settings.loop.size, "Size of the sensor, even [1280x720]");
  addSize(app, "--preview", settings.loop.preview,
          "Size of the pictures before they are turned, even [640x360]");
  addPictureOptions(app, settings.loop.degrees, settings.loop.curve);
  std::vector<std::string> meterings(allMeterings.size());
  std::ranges::transform(allMeterings, meterings.begin(), [](Metering m) { return name(m); });
  app.add_option_function<std::string>(
         "--metering",
         [&settings](const std::string& text) {
           const auto named = [&](Metering metering) { return text == name(metering); };
           settings.loop.metering = *std::ranges::find_if(allMeterings, named);
         },
         "What the exposure meters: isp (the default: the camera path's own law), frame,\n"
         "centre, windows (the whole and its middle), or histogram. The report compares\n"
         "with isp, or with frame.")
      ->check(CLI::IsMember(meterings))
      ->type_name("MODE");
  app.add_option("--seed", settings.loop.seed, "Seed of the sensor's noise")
      ->type_name("N")
      ->capture_default_str();
}

void addDevelop(CLI::App& program, DevelopSettings& settings) {
  CLI::App& app = *program.add_subcommand("develop", "Make a picture of one raw frame");
  app.footer(
      "The frame holds 10-bit samples in 16-bit little-endian words, RGGB, rows from the top.\n"
      "White balance is found automatically. A reduced picture needs a width that is a multiple\n"
      "of 4 and an even height: what is left over on the right and at the bottom of the frame\n"
      "is cropped.");
  app.add_option("FILE", settings.input, "The raw frame; - is standard input")
      ->required()
      ->type_name("");
  addSize(app, "--size", settings.size, "Size of the frame, even")->required();
  app.add_option("--step", settings.step, "Bytes from row to row [2 x width]")
      ->check(CLI::PositiveNumber)
      ->type_name("BYTES");
  addPictureOptions(app, settings.degrees, settings.curve);
  app.add_option("--scale", settings.scale, "Make the picture 1, 2 or 4 times smaller")
      ->check(CLI::IsMember({1, 2, 4}))
      ->type_name("N");
  app.add_option("--dead", settings.deadList, "Dead pixels to replace: a file of row,column lines")
      ->type_name("LIST.csv");
  app.add_option("-o,--output", settings.output, "The picture, .png or .ppm")
      ->required()
      ->type_name("OUT");
}

int fail(const std::string& message, int code) {
  std::fprintf(stderr, "vekcam: %s\n", message.c_str());
  return code;
}

int run(int argc, char** argv) {
  CLI::App program(
      "A camera built on the vek library: exposure, white balance, raw conversion and\n"
      "preview.",
      "vekcam");
  program.require_subcommand(0, 1);  // looked at below: an unknown option is the better complaint
  program.set_version_flag("--version", "vekcam " VEKCAM_VERSION);
  SimulateSettings simulateSettings;
  DevelopSettings developSettings;
  addSimulate(program, simulateSettings);
  addDevelop(program, developSettings);
  try {
    program.parse(argc, argv);
  } catch (const CLI::ParseError& error) {
    if (error.get_exit_code() == 0) return program.exit(error);  // help, version
    return fail(std::string(error.what()) + " (see vekcam --help)", usageFault);
  }
  if (program.get_subcommands().empty()) {
    return fail("which subcommand, simulate or develop? (see vekcam --help)", usageFault);
  }
  const std::string summary =
      program.got_subcommand("simulate") ? simulate(simulateSettings) : develop(developSettings);
  std::fputs(summary.c_str(), stdout);
  return 0;
}

}  // namespace

int main(int argc, char** argv) {
  int code = 1;
  try {
    code = run(argc, argv);
  } catch (const std::bad_alloc&) {
    return fail("out of memory", 1);
  } catch (const std::exception& error) {
    return fail(error.what(), 1);
  }
  if (std::fflush(stdout) != 0 || std::ferror(stdout)) {
    return fail("cannot write to standard output", 1);
  }
  return code;
}
