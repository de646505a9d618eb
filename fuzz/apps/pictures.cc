// A fuzz target: pictures that are decoded are encoded again, and lossless ones come back.
#include <cstdint>
#include <cstdlib>
#include <string>
#include <vek/vek.hpp>

#include "vekcam/files.h"
#include "vekcam/picture_files.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  using namespace vekcam;
  try {
    const StoredPicture picture =
        decodePicture({reinterpret_cast<const char*>(data), size}, "input");
    const PictureView view = picture;
    if (view.size().width > 2048 || view.size().height > 2048) return 0;
    encodePicture(view, PictureFormat::jpeg, 50);
    for (const PictureFormat format : {PictureFormat::png, PictureFormat::ppm}) {
      const StoredPicture back = decodePicture(encodePicture(view, format), "what was encoded");
      if (encodePicture(back, format) != encodePicture(view, format)) std::abort();
    }
  } catch (const Failure&) {
  }
  return 0;
}
