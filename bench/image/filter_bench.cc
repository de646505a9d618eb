#include "vek/image.h"

#include "bench/support.h"

namespace vek::bench {
namespace {

/// A source with `border` pixels around the region on every side.
struct Bordered {
  Image image;
  int offset;

  Bordered(VekiSize size, int channels, int border)
      : image((size.width + 2 * border) * channels, size.height + 2 * border),
        offset(border * image.step() + border * channels) {}
  const Vek8u* data() const { return image.data() + offset; }
};

/// call(src, srcStep, dst, dstStep, size) on images with enough border.
template <class Call>
void addFilter(const std::string& name, int channels, int border, Call call) {
  add(name, 2 * channels, [=](VekiSize size) {
    const Bordered src(size, channels, border);
    const Image dst(size.width * channels, size.height);
    return [=] { call(src.data(), src.image.step(), dst.data(), dst.step(), size); };
  });
}

VekiPoint centre(VekiSize mask) {
  return {mask.width / 2, mask.height / 2};
}

std::string label(VekiSize mask) {
  return std::to_string(mask.width) + "x" + std::to_string(mask.height);
}

void addBox(VekiSize mask) {
  const auto addForm = [=](const char* name, auto filter, int channels) {
    addFilter(name + label(mask), channels, mask.width,
              [=](auto src, int srcStep, auto dst, int dstStep, VekiSize size) {
                filter(src, srcStep, dst, dstStep, size, mask, centre(mask));
              });
  };
  addForm("vekiFilterBox_8u_C1R/", vekiFilterBox_8u_C1R, 1);
  addForm("vekiFilterBox_8u_C3R/", vekiFilterBox_8u_C3R, 3);
}

[[maybe_unused]] const bool registered = [] {
  for (int side : {3, 15, 31}) addBox({side, side});
  return true;
}();

}  // namespace
}  // namespace vek::bench
