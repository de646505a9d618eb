// What wrapped calls compile to, when sizes are known and errors are returned: cost.sh looks for the one
// call that each function's name says.
#include "vek/vek.hpp"

namespace {

constexpr vek::Size size = {640, 480};

}  // namespace

// Somebody else's memory, so that what is written to it counts.
extern Vek8u a[640 * 480 * 3], b[640 * 480 * 3], result[640 * 480 * 3];
extern Vek8u y[640 * 480], cb[320 * 240], cr[320 * 240];
extern Vek16u pixels[640 * 480];

extern "C" {

VekStatus calls_vekiAdd_8u_C3RSfs() {
  return vek::add(vek::View<const Vek8u, 3>(a, size), vek::View<const Vek8u, 3>(b, size),
                  vek::View<Vek8u, 3>(result, size), 1, std::nothrow);
}
VekStatus calls_vekiAndC_8u_C1R() {
  return vek::bitAnd(vek::View<const Vek8u>(a, size), 7, vek::View<Vek8u>(result, size),
                     std::nothrow);
}
VekStatus calls_vekiRGBToGray_8u_C3C1R() {
  return vek::rgbToGray(vek::View<const vek::Rgb24>(a, size), vek::View<Vek8u>(result, size),
                        std::nothrow);
}
VekStatus calls_vekiYCbCr420ToBGR565_8u16u_P3C3R() {
  const vek::Size half = {320, 240};
  const vek::Planes420<const Vek8u> src(vek::View<const Vek8u>(y, size),
                                        vek::View<const Vek8u>(cb, half),
                                        vek::View<const Vek8u>(cr, half));
  return vek::yCbCrToRgb(src, vek::View<vek::Bgr565>(pixels, size), std::nothrow);
}
VekStatus calls_vekiFilterBox_8u_C1R() {
  return vek::filterBox(vek::View<const Vek8u>(a, size), vek::View<Vek8u>(result, {636, 478}),
                        {5, 3}, vek::atCentre, std::nothrow);
}
VekStatus calls_vekiPad_8u_C3R() {
  return vek::pad(vek::View<const Vek8u, 3>(a, {600, 440}), vek::View<Vek8u, 3>(result, size),
                  {4, 5}, vek::PadBorder::mirror, {}, std::nothrow);
}
VekStatus calls_vekiNormDiff_L2_8u_C1RSfs() {
  Vek32s norm = 0;
  vek::normDiffL2(vek::View<const Vek8u>(a, size), vek::View<const Vek8u>(b, size), &norm, 0,
                  std::nothrow);
  return norm;
}
// With exceptions, which leave by a path of their own.
void calls_vekiXor_8u_C1R_orThrows() {
  vek::bitXor(vek::View<const Vek8u>(a, size), vek::View<const Vek8u>(b, size),
              vek::View<Vek8u>(result, size));
}
// Sizes that are not known are compared, and nothing more.
VekStatus calls_vekiMulScale_8u_C1R_ofAnySize(const vek::View<const Vek8u>* first,
                                              const vek::View<const Vek8u>* second,
                                              const vek::View<Vek8u>* dst) {
  return vek::mulScale(*first, *second, *dst, std::nothrow);
}

}  // extern "C"
