#include "vek/image.h"

#include "bench/support.h"

namespace vek::bench {
namespace {

/// Bytes that a pixel takes in the first plane, and what divides the size of two further planes (0:
/// there are none).
struct Layout {
  int bytes;
  int chromaColumns = 0;
  int chromaRows = 1;

  double bytesPerPixel() const {
    return bytes + (chromaColumns == 0 ? 0 : 2.0 / (chromaColumns * chromaRows));
  }
};

constexpr Layout triples = {3}, pairs = {2}, words = {2};
constexpr Layout planes444 = {1, 1}, planes422 = {1, 2}, planes420 = {1, 2, 2};

struct Images {
  std::vector<Image> planes;
  int steps[3];

  Images(Layout layout, VekiSize size) {
    planes.emplace_back(layout.bytes * size.width, size.height);
    for (int p = 1; p < 3 && layout.chromaColumns != 0; ++p) {
      planes.emplace_back(size.width / layout.chromaColumns, size.height / layout.chromaRows);
    }
    for (size_t p = 0; p < planes.size(); ++p) steps[p] = planes[p].step();
  }
};

/// The images or their steps as an argument of the function's type.
struct Argument {
  const Images& images;
  Vek8u* pointers[3] = {};

  explicit Argument(const Images& of) : images(of) {
    for (size_t p = 0; p < of.planes.size(); ++p) pointers[p] = of.planes[p].data();
  }
  operator const Vek8u*() const { return pointers[0]; }
  operator Vek8u*() const { return pointers[0]; }
  operator Vek16u*() const { return images.planes[0].data<Vek16u>(); }
  operator const Vek8u* const*() const { return pointers; }
  operator Vek8u* const*() const { return pointers; }
  operator const int*() const { return images.steps; }
  operator int() const { return images.steps[0]; }
};

template <class Src, class SrcStep, class Dst, class DstStep>
void addMember(const char* name, Layout from, Layout to,
               VekStatus (*f)(Src, SrcStep, Dst, DstStep, VekiSize)) {
  add(name, from.bytesPerPixel() + to.bytesPerPixel(), [=](VekiSize size) {
    return [=, srcImages = Images(from, size), dstImages = Images(to, size)] {
      const Argument src(srcImages), dst(dstImages);
      f(static_cast<Src>(src), static_cast<SrcStep>(src), static_cast<Dst>(dst),
        static_cast<DstStep>(dst), size);
    };
  });
}

template <class Src, class Dst>
void addMember(const char* name, Layout from, Layout to, VekStatus (*f)(Src, Dst, VekiSize)) {
  add(name, from.bytesPerPixel() + to.bytesPerPixel(), [=](VekiSize size) {
    return [=, srcImages = Images(from, size), dstImages = Images(to, size)] {
      const Argument src(srcImages), dst(dstImages);
      f(static_cast<Src>(src), static_cast<Dst>(dst), size);
    };
  });
}

#define VEK_ADD(function, from, to) addMember(#function, from, to, function)

[[maybe_unused]] const bool registered = [] {
  VEK_ADD(vekiYCbCr420ToRGB565_8u16u_P3C3R, planes420, words);
  VEK_ADD(vekiYCbCr420ToRGB555_8u16u_P3C3R, planes420, words);
  VEK_ADD(vekiYCbCr420ToRGB444_8u16u_P3C3R, planes420, words);
  VEK_ADD(vekiYCbCr420ToBGR565_8u16u_P3C3R, planes420, words);
  VEK_ADD(vekiYCbCr420ToBGR555_8u16u_P3C3R, planes420, words);
  VEK_ADD(vekiYCbCr420ToBGR444_8u16u_P3C3R, planes420, words);
  VEK_ADD(vekiYUV420ToRGB565_8u16u_P3C3R, planes420, words);
  VEK_ADD(vekiYUV420ToRGB555_8u16u_P3C3R, planes420, words);
  VEK_ADD(vekiYUV420ToRGB444_8u16u_P3C3R, planes420, words);
  VEK_ADD(vekiYUV420ToBGR565_8u16u_P3C3R, planes420, words);
  VEK_ADD(vekiYUV420ToBGR555_8u16u_P3C3R, planes420, words);
  VEK_ADD(vekiYUV420ToBGR444_8u16u_P3C3R, planes420, words);
  VEK_ADD(vekiYCbCrToRGB565_8u16u_P3C3R, planes444, words);
  VEK_ADD(vekiYCbCrToRGB555_8u16u_P3C3R, planes444, words);
  VEK_ADD(vekiYCbCrToRGB444_8u16u_P3C3R, planes444, words);
  VEK_ADD(vekiYCbCrToBGR565_8u16u_P3C3R, planes444, words);
  VEK_ADD(vekiYCbCrToBGR555_8u16u_P3C3R, planes444, words);
  VEK_ADD(vekiYCbCrToBGR444_8u16u_P3C3R, planes444, words);
  VEK_ADD(vekiYCbCr422ToRGB565_8u16u_C2C3R, pairs, words);
  VEK_ADD(vekiYCbCr422ToRGB555_8u16u_C2C3R, pairs, words);
  VEK_ADD(vekiYCbCr422ToRGB444_8u16u_C2C3R, pairs, words);
  VEK_ADD(vekiYCbCr422ToBGR565_8u16u_C2C3R, pairs, words);
  VEK_ADD(vekiYCbCr422ToBGR555_8u16u_C2C3R, pairs, words);
  VEK_ADD(vekiYCbCr422ToBGR444_8u16u_C2C3R, pairs, words);
  VEK_ADD(vekiYCbCrToRGB565_8u16u_C3R, triples, words);
  VEK_ADD(vekiYCbCrToRGB555_8u16u_C3R, triples, words);
  VEK_ADD(vekiYCbCrToRGB444_8u16u_C3R, triples, words);
  VEK_ADD(vekiYCbCrToBGR565_8u16u_C3R, triples, words);
  VEK_ADD(vekiYCbCrToBGR555_8u16u_C3R, triples, words);
  VEK_ADD(vekiYCbCrToBGR444_8u16u_C3R, triples, words);
  VEK_ADD(vekiRGBToYCbCr_8u_C3R, triples, triples);
  VEK_ADD(vekiYCbCrToRGB_8u_C3R, triples, triples);
  VEK_ADD(vekiRGBToYCbCr422_8u_C3C2R, triples, pairs);
  VEK_ADD(vekiYCbCr422ToRGB_8u_C2C3R, pairs, triples);
  VEK_ADD(vekiRGBToYUV_8u_C3R, triples, triples);
  VEK_ADD(vekiYUVToRGB_8u_C3R, triples, triples);
  VEK_ADD(vekiRGBToYUV422_8u_C3C2R, triples, pairs);
  VEK_ADD(vekiYUV422ToRGB_8u_C2C3R, pairs, triples);
  VEK_ADD(vekiRGBToYUV420_8u_C3P3R, triples, planes420);
  VEK_ADD(vekiRGBToYUV422_8u_C3P3R, triples, planes422);
  VEK_ADD(vekiYUV420ToRGB_8u_P3C3R, planes420, triples);
  VEK_ADD(vekiYUV422ToRGB_8u_P3C3R, planes422, triples);
  VEK_ADD(vekiRGBToYUV_8u_C3P3R, triples, planes444);
  VEK_ADD(vekiYUVToRGB_8u_P3C3R, planes444, triples);
  VEK_ADD(vekiRGBToYUV420_8u_C3P3, triples, planes420);
  VEK_ADD(vekiRGBToYUV422_8u_C3P3, triples, planes422);
  VEK_ADD(vekiYUV420ToRGB_8u_P3C3, planes420, triples);
  VEK_ADD(vekiYUV422ToRGB_8u_P3C3, planes422, triples);
  return true;
}();

}  // namespace
}  // namespace vek::bench
