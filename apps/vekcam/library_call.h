// Calling the library from C++: statuses become exceptions, states are released by their owners.
#pragma once

#include <stdexcept>
#include <string>
#include <vek/vek.h>

namespace vekcam {

/// The status, unless it is an error: vekcam checks everything beforehand, so an error that is left
/// is a fault of its own or a lack of memory.
inline VekStatus succeeded(VekStatus status, const char* function) {
  if (status < 0) {
    throw std::runtime_error(std::string(function) + " failed with status " +
                             std::to_string(status) + ": " + vekStatusString(status));
  }
  return status;
}

/// Releases a state of the library through its own function.
template <auto release>
struct Releaser {
  template <typename State>
  void operator()(State* state) const {
    release(state);
  }
};

}  // namespace vekcam
