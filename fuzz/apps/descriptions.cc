// A fuzz target: texts about cameras. What is read is written and read again.
#include <cstdint>
#include <cstdlib>
#include <string>

#include "vekcam/calibration.h"
#include "vekcam/camera_file.h"
#include "vekcam/failure.h"
#include "vekcam/files.h"

namespace {

template <class Parse>
void tryTo(const Parse& parse) {
  try {
    parse();
  } catch (const vekcam::Failure&) {
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  using namespace vekcam;
  const std::string_view text(reinterpret_cast<const char*>(data), size);
  tryTo([&] { parseDeadPixels(text, "list"); });
  tryTo([&] { parseChart(text, "chart"); });
  tryTo([&] {
    const std::string once = toJson(parseCamera(text, "camera"));
    if (toJson(parseCamera(once, "camera")) != once) std::abort();
  });
  if (const auto format = rawFormatNamed(text)) {
    if (rawFormatNamed(nameOf(*format)) != format) std::abort();
  }
  return 0;
}
