#include "vekcam/files.h"

#include <cerrno>
#include <charconv>
#include <cstdio>
#include <cstring>
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

std::string withoutSpaces(const char* line) {
  std::string text;
  for (; *line != '\0'; ++line) {
    if (std::strchr(" \t\r\n", *line) == nullptr) text += *line;
  }
  return text;
}

}  // namespace

RawFrame readRawFrame(const std::string& path, VekiSize size, int step) {
  const std::string name = path == "-" ? "standard input" : path;
  const std::string shape = std::to_string(size.width) + "x" + std::to_string(size.height) +
                            " with a step of " + std::to_string(step) + " bytes";
  const auto tooShort = [&](int row) {
    return Failure(name + " is too short for " + shape + ": row " + std::to_string(row) +
                   " is incomplete");
  };
  const Reader file = openToRead(path);
  RawFrame frame(size);
  const size_t rowBytes = static_cast<size_t>(size.width) * 2;
  std::vector<unsigned char> bytes(static_cast<size_t>(step));
  for (int y = 0; y < size.height; ++y) {
    const size_t got = std::fread(bytes.data(), 1, bytes.size(), file.get());
    if (std::ferror(file.get())) throw Failure("cannot read " + name + ": " + reason());
    const bool complete = got == bytes.size() || (y == size.height - 1 && got == rowBytes);
    if (!complete) {
      throw tooShort(y);
    }
    Vek16u* const row = frame.row(y);
    for (size_t x = 0; x < static_cast<size_t>(size.width); ++x) {
      const int value = bytes[2 * x] | bytes[2 * x + 1] << 8;
      if (value > 1023) {
        throw Failure(name + " does not hold 10-bit samples: " + std::to_string(value) +
                      " at row " + std::to_string(y) + ", column " + std::to_string(x));
      }
      row[x] = static_cast<Vek16u>(value);
    }
  }
  if (std::fgetc(file.get()) != EOF) throw Failure(name + " is too long for " + shape);
  return frame;
}

std::vector<VekiDeadPixel> readDeadPixels(const std::string& path, VekiSize size) {
  const Reader file = openToRead(path);
  std::vector<VekiDeadPixel> list;
  char line[256];
  for (int number = 1; std::fgets(line, sizeof line, file.get()) != nullptr; ++number) {
    const std::string text = withoutSpaces(line);
    if (text.empty() || text[0] == '#' || (list.empty() && text == "row,column")) continue;
    const std::string_view entry = text;
    const size_t comma = entry.find(',');
    VekiDeadPixel pixel;
    if (comma == std::string_view::npos || !parseInt(entry.substr(0, comma), pixel.row) ||
        !parseInt(entry.substr(comma + 1), pixel.column)) {
      throw Failure(path + ", line " + std::to_string(number) + ": expected row,column");
    }
    if (pixel.row < 0 || pixel.row >= size.height || pixel.column < 0 ||
        pixel.column >= size.width) {
      throw Failure(path + ", line " + std::to_string(number) + ": outside the frame");
    }
    list.push_back(pixel);
  }
  if (std::ferror(file.get())) throw Failure("cannot read " + path + ": " + reason());
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
