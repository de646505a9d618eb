// A directory for the files of one test.
#pragma once

#include <filesystem>
#include <fstream>
#include <iterator>
#include <stdlib.h>
#include <string>

namespace vekcam::test {

inline std::string contents(const std::string& path) {
  std::ifstream in(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(in), {}};
}

class Scratch {
 public:
  Scratch() {
    std::string name = (std::filesystem::temp_directory_path() / "vekcam-XXXXXX").string();
    directory_ = mkdtemp(name.data());
  }
  ~Scratch() {
    std::error_code ignored;
    std::filesystem::remove_all(directory_, ignored);
  }
  Scratch(const Scratch&) = delete;
  Scratch& operator=(const Scratch&) = delete;

  std::string path(const std::string& name) const { return (directory_ / name).string(); }

  /// Writes a file and returns its path.
  std::string file(const std::string& name, const std::string& bytes) const {
    std::ofstream(path(name), std::ios::binary) << bytes;
    return path(name);
  }

  /// Number of files.
  int count() const {
    int n = 0;
    for ([[maybe_unused]] const auto& entry : std::filesystem::directory_iterator(directory_)) ++n;
    return n;
  }

 private:
  std::filesystem::path directory_;
};

}  // namespace vekcam::test
