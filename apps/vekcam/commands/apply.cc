#include "vekcam/apply.h"

#include <algorithm>
#include <map>
#include <memory>

#include "vekcam/commands/commands.h"
#include "vekcam/commands/options.h"

namespace vekcam {

void addApply(CLI::App& program, Console& console) {
  CLI::App& app = addCommand(program, console, "apply", "Apply a chain of operations to pictures");
  app.footer(
      "  vekcam apply in.png 'gray | box 5x5 | threshold 100' out.png\n"
      "  vekcam apply --out DIR 'median 3x3' *.jpg\n"
      "  vekcam apply a.png 'norm-diff @b.png'\n\n"
      "Steps are separated by | and --list names them. @NAME is another picture, @in the one that\n"
      "the chain began with. Pictures are PNG, JPEG, PGM and PPM; - is standard input or output.");
  struct Settings : ApplySettings {
    std::vector<std::string> arguments;
    bool isList = false;
  };
  const auto settings = std::make_shared<Settings>();
  app.add_option("ARGUMENTS", settings->arguments, "IN CHAIN [OUT], or with --out CHAIN IN...")
      ->type_name("");
  app.add_option("--out", settings->directory, "Directory for the pictures of several files")
      ->type_name("DIR");
  const std::map<std::string, PictureFormat> formats = {{"png", PictureFormat::png},
                                                        {"jpg", PictureFormat::jpeg},
                                                        {"ppm", PictureFormat::ppm},
                                                        {"pgm", PictureFormat::pgm}};
  app.add_option_function<std::string>(
         "--format",
         [settings, formats](const std::string& text) { settings->format = formats.at(text); },
         "Format of the pictures, if not that of their names [standard output: png]")
      ->check(CLI::IsMember({"png", "jpg", "ppm", "pgm"}))
      ->type_name("FORMAT");
  app.add_option("--quality", settings->quality, "Quality of JPEGs")
      ->check(CLI::Range(1, 100))
      ->type_name("1..100")
      ->capture_default_str();
  app.add_flag("--list", settings->isList, "Print all operations");
  app.add_flag("--digest", settings->withDigest, "Print a digest of each result's pixels");
  const std::map<std::string, chain::Language> languages = {{"c", chain::Language::c},
                                                            {"c++", chain::Language::cpp},
                                                            {"python", chain::Language::python}};
  app.add_option_function<std::string>(
         "--code",
         [settings, languages](const std::string& text) { settings->code = languages.at(text); },
         "Print a program that does the same with pictures like IN")
      ->check(CLI::IsMember({"c", "c++", "python"}))
      ->type_name("LANGUAGE");
  addLevel(app);
  addJson(app, settings->json);
  app.callback([settings, &console] {
    if (settings->isList) {
      console.data(settings->json ? operationsAsJson() : listOfOperations());
      return;
    }
    std::vector<std::string>& arguments = settings->arguments;
    if (!settings->directory.empty()) {
      if (arguments.size() < 2) throw UsageError("expected a chain and files");
      settings->chain = arguments[0];
      settings->inputs.assign(arguments.begin() + 1, arguments.end());
    } else {
      if (arguments.size() < 2 || arguments.size() > 3) {
        throw UsageError("expected IN CHAIN OUT; several files go to --out DIR");
      }
      settings->inputs = {arguments[0]};
      settings->chain = arguments[1];
      if (arguments.size() == 3) settings->output = arguments[2];
      console.resultsToError = settings->output == "-";
    }
    apply(*settings, console);
  });
}

}  // namespace vekcam
