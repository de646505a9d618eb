#include "bench/rebound.h"

#include "vek/camera.h"

#include <cstdlib>
#include <dlfcn.h>

#include "bench/exported.h"

// A variable for each function, and the function that jumps where it says. Arguments stay where they
// are, so no signature is needed. Register x16 is the one that AArch64 leaves to such code.
#define VEK_DECLARE(function) void* vekBound_##function;
extern "C" {
VEK_EACH_EXPORTED(VEK_DECLARE)
}

#if defined(__x86_64__)
#define VEK_JUMP(function)                                                      \
  asm(".text\n.globl " #function "\n.type " #function ", @function\n" #function \
      ":\n"                                                                     \
      "endbr64\njmp *vekBound_" #function "(%rip)\n");
#elif defined(__aarch64__)
#define VEK_JUMP(function)                                                                   \
  asm(".text\n.globl " #function "\n.type " #function ", %function\n" #function              \
      ":\n"                                                                                  \
      "hint #34\nadrp x16, vekBound_" #function "\nldr x16, [x16, :lo12:vekBound_" #function \
      "]\nbr x16\n");
#endif
VEK_EACH_EXPORTED(VEK_JUMP)

/// A table that the tests' definitions read, which are linked, but not called.
const Vek32s _vekYCbCr_RGB[5] = {};

namespace vek::bench {

Library::Library(const std::string& path)
    // A name without a slash would be searched for among the system's libraries.
    : handle_(dlopen((path.find('/') == std::string::npos ? "./" + path : path).c_str(),
                     RTLD_NOW | RTLD_LOCAL)) {
  if (handle_ == nullptr) error_ = dlerror();
}

bool Library::has(const std::string& function) const {
  return dlsym(handle_, function.c_str()) != nullptr;
}

void Library::bind() const {
  const auto find = [this](const char* function) {
    void* const found = dlsym(handle_, function);
    return found != nullptr ? found : reinterpret_cast<void*>(std::abort);
  };
#define VEK_BIND(function) vekBound_##function = find(#function);
  VEK_EACH_EXPORTED(VEK_BIND)
}

}  // namespace vek::bench
