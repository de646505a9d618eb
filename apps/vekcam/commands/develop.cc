#include "vekcam/develop.h"

#include <memory>

#include "vekcam/commands/commands.h"
#include "vekcam/commands/options.h"

namespace vekcam {

void addDevelop(CLI::App& program, Console& console) {
  CLI::App& app = addCommand(program, console, "develop", "Make a picture of one raw frame");
  app.footer(
      "The frame holds 10-bit samples in 16-bit little-endian words, RGGB, rows from the top.\n"
      "White balance is found automatically. A reduced picture needs a width that is a multiple\n"
      "of 4 and an even height: what is left over on the right and at the bottom of the frame\n"
      "is cropped.");
  const auto settings = std::make_shared<DevelopSettings>();
  app.add_option("FILE", settings->input, "The raw frame; - is standard input")
      ->required()
      ->type_name("");
  addSize(app, "--size", settings->size, {16, 16384}, "Size of the frame, even")->required();
  app.add_option("--step", settings->step, "Bytes from row to row [2 x width]")
      ->check(CLI::Range(1, 1 << 20))
      ->type_name("BYTES");
  addRotation(app, settings->rotation);
  addCurve(app, settings->curve);
  app.add_option("--scale", settings->scale, "Make the picture 1, 2 or 4 times smaller")
      ->check(CLI::IsMember({1, 2, 4}))
      ->type_name("N");
  app.add_option("--dead", settings->deadList, "Dead pixels to replace: a file of row,column lines")
      ->type_name("LIST.csv");
  app.add_option("-o,--output", settings->output, "The picture, .png or .ppm")
      ->required()
      ->type_name("OUT");
  app.callback([settings, &console] { console.say(develop(*settings)); });
}

}  // namespace vekcam
