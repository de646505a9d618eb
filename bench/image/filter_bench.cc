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

/// Filters that take a mask and an anchor.
template <class Filter>
void addMasked(const std::string& name, Filter filter, int channels, VekiSize mask) {
  addFilter(name + label(mask), channels, mask.width,
            [=](auto src, int srcStep, auto dst, int dstStep, VekiSize size) {
              filter(src, srcStep, dst, dstStep, size, mask, centre(mask));
            });
}

/// Kernels that fit sums of 16 bits (a binomial one) and of 32, with and without a power of two.
struct Kernel {
  const char* variant;
  std::vector<Vek32s> entries;
  int divisor;
};

const Kernel kernels3[] = {{"smooth", {1, 2, 1, 2, 4, 2, 1, 2, 1}, 16},
                           {"sharp", {-90, -90, -90, -90, 1000, -90, -90, -90, -90}, 280}};
const Kernel kernels5[] = {{"mean", std::vector<Vek32s>(25, 1), 25},
                           {"wide", std::vector<Vek32s>(25, 100), 2500}};
const Kernel lines[] = {
    {"3", {1, 2, 1}, 4}, {"5", {1, 4, 6, 4, 1}, 16}, {"15", std::vector<Vek32s>(15, 70), 1050}};

void addFilter2D(const Kernel& kernel, int side) {
  const auto addForm = [&](const char* name, auto filter, int channels) {
    addFilter(name + label({side, side}) + kernel.variant, channels, side,
              [=](auto src, int srcStep, auto dst, int dstStep, VekiSize size) {
                filter(src, srcStep, dst, dstStep, size, kernel.entries.data(), {side, side},
                       centre({side, side}), kernel.divisor);
              });
  };
  addForm("vekiFilter_8u_C1R/", vekiFilter_8u_C1R, 1);
  addForm("vekiFilter_8u_C3R/", vekiFilter_8u_C3R, 3);
}

void addFilter1D(const Kernel& kernel) {
  const auto addForm = [&](const char* name, auto filter, int channels) {
    addFilter(std::string(name) + kernel.variant, channels, 15,
              [=](auto src, int srcStep, auto dst, int dstStep, VekiSize size) {
                const int count = static_cast<int>(kernel.entries.size());
                filter(src, srcStep, dst, dstStep, size, kernel.entries.data(), count, count / 2,
                       kernel.divisor);
              });
  };
  addForm("vekiFilterRow_8u_C1R/", vekiFilterRow_8u_C1R, 1);
  addForm("vekiFilterRow_8u_C3R/", vekiFilterRow_8u_C3R, 3);
  addForm("vekiFilterColumn_8u_C1R/", vekiFilterColumn_8u_C1R, 1);
  addForm("vekiFilterColumn_8u_C3R/", vekiFilterColumn_8u_C3R, 3);
}

/// Functions without parameters besides the images, and those with one number.
template <class Filter, class... Parameter>
void addPlain(const std::string& name, Filter filter, int channels, int border,
              Parameter... parameter) {
  addFilter(name, channels, border,
            [=](auto src, int srcStep, auto dst, int dstStep, VekiSize size) {
              filter(src, srcStep, dst, dstStep, size, parameter...);
            });
}

void addMirror(const char* variant, int flip) {
  addPlain(std::string("vekiMirror_8u_C1R/") + variant, vekiMirror_8u_C1R, 1, 0, flip);
  addPlain(std::string("vekiMirror_8u_C3R/") + variant, vekiMirror_8u_C3R, 3, 0, flip);
}

[[maybe_unused]] const bool registered = [] {
  for (int side : {3, 5, 15, 31}) {
    addMasked("vekiFilterBox_8u_C1R/", vekiFilterBox_8u_C1R, 1, {side, side});
    addMasked("vekiFilterBox_8u_C3R/", vekiFilterBox_8u_C3R, 3, {side, side});
  }
  for (int side : {3, 5, 7, 11, 15, 31}) {
    addMasked("vekiFilterMedian_8u_C1R/", vekiFilterMedian_8u_C1R, 1, {side, side});
    addMasked("vekiFilterMedian_8u_C3R/", vekiFilterMedian_8u_C3R, 3, {side, side});
  }
  for (const Kernel& kernel : kernels3) addFilter2D(kernel, 3);
  for (const Kernel& kernel : kernels5) addFilter2D(kernel, 5);
  for (const Kernel& kernel : lines) addFilter1D(kernel);
  addPlain("vekiFilterMedianColor_8u_C3R/3x3", vekiFilterMedianColor_8u_C3R, 3, 1, vekiMask3x3);
  addPlain("vekiFilterMedianColor_8u_C3R/5x5", vekiFilterMedianColor_8u_C3R, 3, 2, vekiMask5x5);
  addPlain("vekiErode3x3_8u_C1R", vekiErode3x3_8u_C1R, 1, 1);
  addPlain("vekiErode3x3_8u_C3R", vekiErode3x3_8u_C3R, 3, 1);
  addPlain("vekiDilate3x3_8u_C1R", vekiDilate3x3_8u_C1R, 1, 1);
  addPlain("vekiDilate3x3_8u_C3R", vekiDilate3x3_8u_C3R, 3, 1);
  addMirror("rows", vekiMirrorHorizontalAxis);
  addMirror("columns", vekiMirrorVerticalAxis);
  addMirror("both", vekiMirrorBothAxes);
  addPlain("vekiGammaFwd_8u_C3R", vekiGammaFwd_8u_C3R, 3, 0);
  addPlain("vekiGammaInv_8u_C3R", vekiGammaInv_8u_C3R, 3, 0);
  return true;
}();

}  // namespace
}  // namespace vek::bench
