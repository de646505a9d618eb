// The exported functions as this program defines them: each jumps to the function of that name in the
// library that was bound last. So any code that calls exported functions runs with either of two
// builds of the library.
#pragma once

#include <string>

namespace vek::bench {

/// A loaded build of the library. It stays loaded.
class Library {
 public:
  /// Loads the shared library at `path`; what is wrong is in error() then.
  explicit Library(const std::string& path);

  const std::string& error() const { return error_; }
  bool has(const std::string& function) const;

  /// From now on exported functions are those of this library. Calling one that it does not have
  /// ends the program.
  void bind() const;

 private:
  void* handle_;
  std::string error_;
};

}  // namespace vek::bench
