#include "vekcam/files.h"

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <cstdio>
#include <fcntl.h>
#include <filesystem>
#include <memory>
#include <system_error>
#include <unistd.h>
#include <utility>

namespace vekcam {
namespace {

namespace fs = std::filesystem;

std::string reason() {
  return std::generic_category().message(errno);
}

struct Closer {
  void operator()(std::FILE* file) const {
    if (file != stdin) std::fclose(file);
  }
};
using Reader = std::unique_ptr<std::FILE, Closer>;

Reader openToRead(const std::string& path) {
  Reader file(path == "-" ? stdin : std::fopen(path.c_str(), "rb"));
  if (!file) throw Failure("cannot open " + path + ": " + reason());
  return file;
}

/// A file descriptor that is written to until it is closed, with every result looked at.
class Writer {
 public:
  /// `name` is the file that messages speak of.
  Writer(const std::string& path, int flags, const std::string& name)
      : name_(name), fd_(open(path.c_str(), O_WRONLY | O_CLOEXEC | flags, 0666)) {
    if (fd_ < 0) fail();
  }
  ~Writer() {
    if (fd_ >= 0) ::close(fd_);
  }
  Writer(const Writer&) = delete;
  Writer& operator=(const Writer&) = delete;

  void write(std::string_view bytes) {
    while (!bytes.empty()) {
      const ssize_t n = ::write(fd_, bytes.data(), bytes.size());
      if (n < 0 && errno == EINTR) continue;
      if (n < 0) fail();
      bytes.remove_prefix(static_cast<size_t>(n));
    }
  }

  void close() {
    if (::close(std::exchange(fd_, -1)) != 0) fail();
  }

 private:
  [[noreturn]] void fail() const { throw Failure("cannot write " + name_ + ": " + reason()); }

  std::string name_;
  int fd_;
};

/// Removes a file at the end of the scope unless it was released.
class Remover {
 public:
  explicit Remover(fs::path path) : path_(std::move(path)) {}
  ~Remover() {
    std::error_code ignored;
    if (!path_.empty()) fs::remove(path_, ignored);
  }
  Remover(const Remover&) = delete;
  Remover& operator=(const Remover&) = delete;
  void release() { path_.clear(); }

 private:
  fs::path path_;
};

bool parseInt(std::string_view text, int& value) {
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
  return error == std::errc() && end == text.data() + text.size();
}

std::string withoutSpaces(std::string_view line) {
  std::string text;
  for (const char c : line) {
    if (std::string_view(" \t\r").find(c) == std::string_view::npos) text += c;
  }
  return text;
}

}  // namespace

std::string inputName(const std::string& path) {
  return path == "-" ? "standard input" : path;
}

std::vector<Vek8u> readBytes(const std::string& path, size_t most) {
  const Reader file = openToRead(path);
  std::vector<Vek8u> bytes;
  constexpr size_t block = size_t{1} << 20;
  while (bytes.size() < most) {
    const size_t had = bytes.size();
    bytes.resize(had + std::min(block, most - had));
    const size_t got = std::fread(bytes.data() + had, 1, bytes.size() - had, file.get());
    bytes.resize(had + got);
    if (std::ferror(file.get())) throw Failure("cannot read " + inputName(path) + ": " + reason());
    if (got == 0) break;
  }
  return bytes;
}

std::vector<VekiDeadPixel> parseDeadPixels(std::string_view text, const std::string& name) {
  std::vector<VekiDeadPixel> list;
  for (int number = 1; !text.empty(); ++number) {
    const size_t end = text.find('\n');
    const std::string line = withoutSpaces(text.substr(0, end));
    text.remove_prefix(end == std::string_view::npos ? text.size() : end + 1);
    if (line.empty() || line[0] == '#' || (list.empty() && line == "row,column")) continue;
    const std::string_view entry = line;
    const size_t comma = entry.find(',');
    VekiDeadPixel pixel;
    if (comma == std::string_view::npos || !parseInt(entry.substr(0, comma), pixel.row) ||
        !parseInt(entry.substr(comma + 1), pixel.column)) {
      throw Failure(name + ", line " + std::to_string(number) + ": expected row,column");
    }
    if (pixel.row < 0 || pixel.column < 0) {
      throw Failure(name + ", line " + std::to_string(number) + ": outside any frame");
    }
    list.push_back(pixel);
  }
  return list;
}

std::string readFile(const std::string& path, size_t mostBytes) {
  const std::string name = path == "-" ? "standard input" : path;
  const Reader file = openToRead(path);
  std::string bytes;
  char block[1 << 16];
  while (const size_t got = std::fread(block, 1, sizeof block, file.get())) {
    bytes.append(block, got);
    if (bytes.size() > mostBytes) {
      throw Failure(name + " has more than " + std::to_string(mostBytes) + " bytes");
    }
  }
  if (std::ferror(file.get())) throw Failure("cannot read " + name + ": " + reason());
  return bytes;
}

void writeFile(const std::string& path, std::string_view bytes) {
  if (path == "-") {
    if (std::fwrite(bytes.data(), 1, bytes.size(), stdout) != bytes.size() ||
        std::fflush(stdout) != 0) {
      throw Failure("cannot write to standard output: " + reason());
    }
    return;
  }
  std::error_code error;
  const fs::file_status status = fs::status(path, error);
  if (fs::exists(status) && !fs::is_regular_file(status)) {
    Writer out(path, 0, path);
    out.write(bytes);
    out.close();
    return;
  }
  // Through a link, so that the link stays and its target is replaced.
  const fs::path target = fs::exists(status) ? fs::canonical(path) : fs::path(path);
  const std::string part = target.string() + ".part" + std::to_string(getpid());
  Writer out(part, O_CREAT | O_EXCL, path);
  Remover remover(part);
  out.write(bytes);
  out.close();
  fs::rename(part, target, error);
  if (error) throw Failure("cannot write " + path + ": " + error.message());
  remover.release();
}

}  // namespace vekcam
