#include "vekcam/console.h"

#include <cstdio>
#include <fmt/format.h>
#include <unistd.h>

namespace vekcam {

void Console::say(const std::string& text) const {
  if (!isQuiet) data(text);
}

void Console::data(const std::string& text) const {
  std::fputs(text.c_str(), resultsToError ? stderr : stdout);
}

void Console::detail(const std::string& line) const {
  if (isVerbose) std::fputs((line + "\n").c_str(), stderr);
}

void Console::warn(const std::string& line) const {
  std::fputs(("vekcam: warning: " + line + "\n").c_str(), stderr);
}

Progress::Progress(const Console& console, int total)
    : total_(total), isShown_(!console.isQuiet && isatty(STDERR_FILENO) == 1) {}

Progress::~Progress() {
  if (isShown_) std::fputs("\r\033[K", stderr);
}

void Progress::advance(const std::string& what) {
  const std::lock_guard lock(mutex_);
  ++done_;
  if (!isShown_) return;
  constexpr int width = 32;
  const int filled = width * done_ / total_;
  fmt::print(stderr, "\r\033[K[{:=<{}}{: <{}}] {}/{}  {}", "", filled, "", width - filled, done_,
             total_, what);
  std::fflush(stderr);
}

}  // namespace vekcam
