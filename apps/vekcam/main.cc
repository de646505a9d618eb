// vekcam: a camera on a desk. See `vekcam --help`.
#include <cstdio>
#include <exception>
#include <new>
#include <string>
#include <vek/view.hpp>

#include "vekcam/commands/commands.h"

namespace {

using namespace vekcam;

int fail(const std::string& message, ExitCode code) {
  std::fprintf(stderr, "vekcam: %s\n", message.c_str());
  return code;
}

int run(int argc, char** argv) {
  CLI::App program(
      "A camera built on the vek library: exposure, white balance, raw conversion and\n"
      "preview.",
      "vekcam");
  Console console;
  addCommands(program, console);
  try {
    program.parse(argc, argv);  // and does what the command says
    if (program.get_subcommands().empty()) throw UsageError("which command?");
  } catch (const CLI::ParseError& error) {
    if (error.get_exit_code() == 0) return program.exit(error);  // help, version
    throw UsageError(error.what());
  }
  return exitFine;
}

}  // namespace

int main(int argc, char** argv) {
  int code = exitFailure;
  try {
    code = run(argc, argv);
  } catch (const UsageError& error) {
    return fail(std::string(error.what()) + " (see vekcam --help)", exitUsage);
  } catch (const std::bad_alloc&) {
    return fail("out of memory", exitFailure);
  } catch (const std::exception& error) {
    return fail(error.what(), exitFailure);
  }
  if (std::fflush(stdout) != 0 || std::ferror(stdout)) {
    return fail("cannot write to standard output", exitFailure);
  }
  return code;
}
