// What goes wrong, by whose fault it is.
#pragma once

#include <stdexcept>

namespace vekcam {

/// Input or output that cannot be used: one line, without the program's name. Exit code 1.
struct Failure : std::runtime_error {
  using std::runtime_error::runtime_error;
};

/// A command line that cannot be meant: one line likewise. Exit code 2.
struct UsageError : std::runtime_error {
  using std::runtime_error::runtime_error;
};

enum ExitCode { exitFine = 0, exitFailure = 1, exitUsage = 2 };

}  // namespace vekcam
