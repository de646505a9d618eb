#include "vekcam/commands/commands.h"

#include "vekcam/commands/manual.h"

namespace vekcam {

void addCommands(CLI::App& program, Console& console) {
  program.require_subcommand(0, 1);  // looked at later: an unknown option is the better complaint
  program.set_version_flag("--version", "vekcam " VEKCAM_VERSION);
  program.footer(
      "vekcam COMMAND --help tells more.\n"
      "Exit codes: 0 fine, 1 input or output that cannot be used, 2 wrong usage.");
  // For whoever installs the program.
  program
      .add_flag_callback(
          "--man",
          [&program, &console] {
            console.data(manualPage(program));
            throw CLI::Success();
          },
          "Print the manual page")
      ->group("");
  program
      .add_option_function<std::string>(
          "--completion",
          [&program, &console](const std::string& shell) {
            console.data(completion(program, shell));
            throw CLI::Success();
          },
          "Print the completions for a shell")
      ->check(CLI::IsMember({"bash", "zsh", "fish"}))
      ->group("");
  addApply(program, console);
  addCalibrate(program, console);
  addDevelop(program, console);
  addInfo(program, console);
  addSimulate(program, console);
  addStream(program, console);
  addView(program, console);
}

CLI::App& addCommand(CLI::App& program, Console& console, const std::string& name,
                     const std::string& description) {
  CLI::App& command = *program.add_subcommand(name, description);
  command.add_flag("-q,--quiet", console.isQuiet, "Print errors and warnings alone");
  command.add_flag("-v,--verbose", console.isVerbose, "Print more about what is done");
  return command;
}

void addJson(CLI::App& command, bool& json) {
  command.add_flag("--json", json, "Print the figures as JSON");
}

}  // namespace vekcam
