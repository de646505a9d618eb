// Colour conversions by libyuv.
#include <libyuv.h>

#include "bench/support.h"

namespace vek::bench {
namespace {

struct Planes {
  Image y, u, v;

  /// Chroma of 1/columns by 1/rows of the size.
  Planes(VekiSize size, int columns, int rows)
      : y(size.width, size.height),
        u((size.width + columns - 1) / columns, (size.height + rows - 1) / rows),
        v((size.width + columns - 1) / columns, (size.height + rows - 1) / rows) {}
};

using FromPlanes = decltype(&libyuv::I420ToRGB24);
using ToPlanes = decltype(&libyuv::RAWToI420);
using Packed = decltype(&libyuv::ARGBToRGB565);  // one image to another

/// Registers a conversion from planes to `dstBytes` bytes a pixel; `last`, if any, follows a first
/// step to four bytes.
void addFrom(const std::string& name, int columns, int rows, int dstBytes, FromPlanes convert,
             Packed last = nullptr) {
  addPeer(name, "libyuv", [=](VekiSize size) -> Call {
    const Planes src(size, columns, rows);
    const Image dst(dstBytes * size.width, size.height);
    const Image argb(4 * size.width, size.height);
    return [=] {
      const Image& first = last == nullptr ? dst : argb;
      convert(src.y.data(), src.y.step(), src.u.data(), src.u.step(), src.v.data(), src.v.step(),
              first.data(), first.step(), size.width, size.height);
      if (last == nullptr) return;
      last(argb.data(), argb.step(), dst.data(), dst.step(), size.width, size.height);
    };
  });
}

/// Registers a conversion from three bytes a pixel to planes; `first`, if any, makes four bytes.
void addTo(const std::string& name, int columns, int rows, ToPlanes convert,
           Packed first = nullptr) {
  addPeer(name, "libyuv", [=](VekiSize size) -> Call {
    const Image src(3 * size.width, size.height), argb(4 * size.width, size.height);
    const Planes dst(size, columns, rows);
    return [=] {
      if (first != nullptr) {
        first(src.data(), src.step(), argb.data(), argb.step(), size.width, size.height);
      }
      const Image& from = first == nullptr ? src : argb;
      convert(from.data(), from.step(), dst.y.data(), dst.y.step(), dst.u.data(), dst.u.step(),
              dst.v.data(), dst.v.step(), size.width, size.height);
    };
  });
}

/// Registers two steps between images of so many bytes a pixel, or only the first.
void addPacked(const std::string& name, int srcBytes, Packed first, int dstBytes,
               Packed last = nullptr) {
  addPeer(name, "libyuv", [=](VekiSize size) -> Call {
    const Image src(srcBytes * size.width, size.height), dst(dstBytes * size.width, size.height);
    const Image argb(4 * size.width, size.height);
    return [=] {
      const Image& between = last == nullptr ? dst : argb;
      first(src.data(), src.step(), between.data(), between.step(), size.width, size.height);
      if (last == nullptr) return;
      last(argb.data(), argb.step(), dst.data(), dst.step(), size.width, size.height);
    };
  });
}

/// Registers what leads to the packed formats. In four bytes of another order, red and blue have
/// changed places.
void addPackedFormats() {
  using namespace libyuv;
  const struct {
    const char* name;
    FromPlanes direct;  // from 4:2:0, null if there is none
    Packed fromArgb;
  } formats[] = {
      {"RGB565", I420ToRGB565, ARGBToRGB565},     {"RGB555", I420ToARGB1555, ARGBToARGB1555},
      {"RGB444", I420ToARGB4444, ARGBToARGB4444}, {"BGR565", nullptr, ARGBToRGB565},
      {"BGR555", nullptr, ARGBToARGB1555},        {"BGR444", nullptr, ARGBToARGB4444}};
  for (const auto& to : formats) {
    for (const char* space : {"YCbCr", "YUV"}) {
      const std::string name = std::string("veki") + space + "420To" + to.name + "_8u16u_P3C3R";
      if (to.direct != nullptr) {
        addFrom(name, 2, 2, 2, to.direct);
      } else {
        addFrom(name, 2, 2, 2, I420ToABGR, to.fromArgb);
      }
    }
    const bool swapped = to.direct == nullptr;
    addFrom(std::string("vekiYCbCrTo") + to.name + "_8u16u_P3C3R", 1, 1, 2,
            swapped ? I444ToABGR : I444ToARGB, to.fromArgb);
    addPacked(std::string("vekiYCbCr422To") + to.name + "_8u16u_C2C3R", 2, YUY2ToARGB, 2,
              to.fromArgb);
  }
}

[[maybe_unused]] const bool registered = [] {
  using namespace libyuv;
  addPackedFormats();
  for (const char* suffix : {"R", ""}) {
    addFrom(std::string("vekiYUV420ToRGB_8u_P3C3") + suffix, 2, 2, 3, I420ToRAW);
    addFrom(std::string("vekiYUV422ToRGB_8u_P3C3") + suffix, 2, 1, 3, I422ToRAW);
    addTo(std::string("vekiRGBToYUV420_8u_C3P3") + suffix, 2, 2, RAWToI420);
    addTo(std::string("vekiRGBToYUV422_8u_C3P3") + suffix, 2, 1, ARGBToI422, RAWToARGB);
  }
  addFrom("vekiYUVToRGB_8u_P3C3R", 1, 1, 3, I444ToRAW);
  addTo("vekiRGBToYUV_8u_C3P3R", 1, 1, ARGBToI444, RAWToARGB);
  addPacked("vekiRGBToYCbCr422_8u_C3C2R", 3, RAWToARGB, 2, ARGBToYUY2);
  addPacked("vekiRGBToYUV422_8u_C3C2R", 3, RAWToARGB, 2, ARGBToYUY2);
  addPacked("vekiYCbCr422ToRGB_8u_C2C3R", 2, YUY2ToARGB, 3, ARGBToRAW);
  addPacked("vekiYUV422ToRGB_8u_C2C3R", 2, YUY2ToARGB, 3, ARGBToRAW);
  addPacked("vekiRGBToGray_8u_C3C1R", 3, RAWToJ400, 1);
  addPeer("vekiCopy_8u_C1R", "libyuv", [](VekiSize size) -> Call {
    const Image src(size.width, size.height), dst(size.width, size.height);
    return
        [=] { CopyPlane(src.data(), src.step(), dst.data(), dst.step(), size.width, size.height); };
  });
  addPeer("vekiSet_8u_C1R", "libyuv", [](VekiSize size) -> Call {
    const Image dst(size.width, size.height);
    return [=] { SetPlane(dst.data(), dst.step(), size.width, size.height, 77); };
  });
  return true;
}();

}  // namespace
}  // namespace vek::bench
