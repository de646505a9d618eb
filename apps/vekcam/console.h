// What commands tell, and where.
#pragma once

#include <mutex>
#include <string>

namespace vekcam {

/// --quiet and --verbose of the command that runs. Commands whose pictures go to standard output send
/// their results to standard error.
class Console {
 public:
  bool isQuiet = false;
  bool isVerbose = false;
  bool resultsToError = false;

  /// A result, with its line ends; nothing with --quiet.
  void say(const std::string& text) const;
  /// Figures that were asked for by --json: said even with --quiet.
  void data(const std::string& text) const;
  /// A line for those who want to know more, on standard error.
  void detail(const std::string& line) const;
  /// A line about a result that may not be what was wanted, on standard error; said even with --quiet.
  void warn(const std::string& line) const;
};

/// A bar on the terminal; nothing when standard error is none or the console is quiet. Threads may share
/// it.
class Progress {
 public:
  Progress(const Console& console, int total);
  ~Progress();
  Progress(const Progress&) = delete;
  Progress& operator=(const Progress&) = delete;

  /// One more is done.
  void advance(const std::string& what);

 private:
  std::mutex mutex_;
  int total_, done_ = 0;
  bool isShown_;
};

}  // namespace vekcam
