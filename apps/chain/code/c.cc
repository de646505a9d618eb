// Chains in C.
#include "chain/code/dialect.h"

namespace chain {
namespace {

constexpr Text operations[] = {
    {"add", "=vekiAdd$C_8u_C$nRSfs($S, $0, $D, $Z, $1)"},
    // Of two pictures this subtracts the first from the second.
    {"sub picture", "=vekiSub_8u_C$nRSfs($0, $S, $D, $Z, $1)"},
    {"sub", "=vekiSubC_8u_C$nRSfs($S, $0, $D, $Z, $1)"},
    {"mul", "=vekiMul$C_8u_C$nRSfs($S, $0, $D, $Z, $1)"},
    {"mul-scale", "=vekiMul$CScale_8u_C$nR($S, $0, $D, $Z)"},
    {"sqr", "=vekiSqr_8u_C$nRSfs($S, $D, $Z, $0)"},
    {"and", "=vekiAnd$C_8u_C$nR($S, $0, $D, $Z)"},
    {"or", "=vekiOr$C_8u_C$nR($S, $0, $D, $Z)"},
    {"xor", "=vekiXor$C_8u_C$nR($S, $0, $D, $Z)"},
    {"not", "=vekiNot_8u_C$nR($S, $D, $Z)"},
    {"shift-left", "=vekiLShiftC_8u_C$nR($S, $0, $D, $Z)"},
    {"shift-right", "=vekiRShiftC_8u_C$nR($S, $0, $D, $Z)"},
    {"threshold", R"(const Picture $d = made($s.width, $s.height, $n);
check(vekiThreshold_LTVal_8u_C$nR($S, $D, $Z, $v0, $z0));
check(vekiThreshold_GTVal_8u_C$nR($D, $D, $Z, $m0, $w0));)"},
    {"clamp-above", "=vekiThreshold_GT_8u_C$nR($S, $D, $Z, $0)"},
    {"clamp-below", "=vekiThreshold_LT_8u_C$nR($S, $D, $Z, $0)"},
    {"replace-above", "=vekiThreshold_GTVal_8u_C$nR($S, $D, $Z, $0, $1)"},
    {"replace-below", "=vekiThreshold_LTVal_8u_C$nR($S, $D, $Z, $0, $1)"},
    {"replace-outside", "=vekiThreshold_LTValGTVal_8u_C$nR($S, $D, $Z, $0, $1, $2, $3)"},
    {"copy", "=vekiCopy_8u_C$nR($S, $D, $Z)"},
    {"set", "=vekiSet_8u_C$nR($0, $D, $Z)"},
    {"gray gray", "=vekiCopy_8u_C1R($S, $D, $Z)"},
    {"gray empty", "=vekiRGBToGray_8u_C3C1R($S, $D, $Z)"},
    {"gray", "=vekiColorToGrayQ14_8u_C3C1R($S, $D, $Z, (const Vek32s[]){$0})"},
    {"color gray", "const Picture $d = merged((Picture[]){$s, $s, $s});"},
    {"color", "=vekiCopy_8u_C3R($S, $D, $Z)"},
    {"channel", "=vekiColorToGrayQ14_8u_C3C1R($S, $D, $Z, (const Vek32s[]){$k0})"},
    {"order", "=vekiPermuteChannels_8u_C3R($S, $D, $Z, (const int[]){$0})"},
    {"twist", "=vekiColorTwistQ14_8u_C3R($S, $D, $Z, (const Vek32s[3][4]){$0})"},
    {"gamma gray", R"(const Picture q$i = merged((Picture[]){$s, $s, $s});
check(vekiGammaFwd_8u_C3R(q$i.data, q$i.step, q$i.data, q$i.step, sizeOf(q$i)));
const Picture $d = channel(q$i, 0);
free(q$i.data);)"},
    {"gamma", "=vekiGammaFwd_8u_C3R($S, $D, $Z)"},
    {"linear-light gray", R"(const Picture q$i = merged((Picture[]){$s, $s, $s});
check(vekiGammaInv_8u_C3R(q$i.data, q$i.step, q$i.data, q$i.step, sizeOf(q$i)));
const Picture $d = channel(q$i, 0);
free(q$i.data);)"},
    {"linear-light", "=vekiGammaInv_8u_C3R($S, $D, $Z)"},
    {"to-ycbcr", "=vekiRGBToYCbCr_8u_C3R($S, $D, $Z)"},
    {"from-ycbcr", "=vekiYCbCrToRGB_8u_C3R($S, $D, $Z)"},
    {"to-yuv", "=vekiRGBToYUV_8u_C3R($S, $D, $Z)"},
    {"from-yuv", "=vekiYUVToRGB_8u_C3R($S, $D, $Z)"},
    {"to-xyz", "=vekiRGBToXYZ_8u_C3R($S, $D, $Z)"},
    {"from-xyz", "=vekiXYZToRGB_8u_C3R($S, $D, $Z)"},
    {"to-luv", "=vekiRGBToLUV_8u_C3R($S, $D, $Z)"},
    {"from-luv", "=vekiLUVToRGB_8u_C3R($S, $D, $Z)"},
    {"to-ycc", "=vekiRGBToYCC_8u_C3R($S, $D, $Z)"},
    {"from-ycc", "=vekiYCCToRGB_8u_C3R($S, $D, $Z)"},
    {"to-hls", "=vekiRGBToHLS_8u_C3R($S, $D, $Z)"},
    {"from-hls", "=vekiHLSToRGB_8u_C3R($S, $D, $Z)"},
    {"to-hsv", "=vekiRGBToHSV_8u_C3R($S, $D, $Z)"},
    {"from-hsv", "=vekiHSVToRGB_8u_C3R($S, $D, $Z)"},
    {"subsample 444", R"(const Picture y$i = made($s.width, $s.height, 3);  /* three planes */
Vek8u* planes$i[] = {y$i.data, y$i.data + $s.width * $s.height, y$i.data + 2 * $s.width * $s.height};
check(vekiRGBToYUV_8u_C3P3R($S, planes$i, $s.width, sizeOf($s)));
const Picture $d = made($s.width, $s.height, 3);
check(vekiYUVToRGB_8u_P3C3R(planes$i, $s.width, $D, $Z));
free(y$i.data);)"},
    {"subsample 422", R"(const Picture y$i = made($s.width, $s.height, 1);
const Picture u$i = made(($s.width + 1) / 2, $s.height, 1), v$i = made(($s.width + 1) / 2, $s.height, 1);
Vek8u* planes$i[] = {y$i.data, u$i.data, v$i.data};
const int steps$i[] = {y$i.step, u$i.step, v$i.step};
check(vekiRGBToYUV422_8u_C3P3R($S, planes$i, steps$i, sizeOf($s)));
const Picture $d = made($s.width, $s.height, 3);
check(vekiYUV422ToRGB_8u_P3C3R(planes$i, steps$i, $D, $Z));
free(y$i.data), free(u$i.data), free(v$i.data);)"},
    {"subsample 420", R"(const Picture y$i = made($s.width, $s.height, 1);
const Picture u$i = made(($s.width + 1) / 2, ($s.height + 1) / 2, 1);
const Picture v$i = made(u$i.width, u$i.height, 1);
Vek8u* planes$i[] = {y$i.data, u$i.data, v$i.data};
const int steps$i[] = {y$i.step, u$i.step, v$i.step};
check(vekiRGBToYUV420_8u_C3P3R($S, planes$i, steps$i, sizeOf($s)));
const Picture $d = made($s.width, $s.height, 3);
check(vekiYUV420ToRGB_8u_P3C3R(planes$i, steps$i, $D, $Z));
free(y$i.data), free(u$i.data), free(v$i.data);)"},
    {"subsample nv12", R"(const Picture y$i = made($s.width, $s.height, 1);
const Picture u$i = made(($s.width + 1) / 2, ($s.height + 1) / 2, 1);
const Picture v$i = made(u$i.width, u$i.height, 1), uv$i = made(2 * u$i.width, u$i.height, 1);
Vek8u *planes$i[] = {y$i.data, u$i.data, v$i.data}, *nv12_$i[] = {y$i.data, uv$i.data};
const int steps$i[] = {y$i.step, u$i.step, v$i.step}, nv12Steps$i[] = {y$i.step, uv$i.step};
check(vekiRGBToYUV420_8u_C3P3R($S, planes$i, steps$i, sizeOf($s)));
check(vekiYCbCr420ToNV12_8u_P3P2R(planes$i, steps$i, nv12_$i, nv12Steps$i, sizeOf($s)));
check(vekiNV12ToYCbCr420_8u_P2P3R(nv12_$i, nv12Steps$i, planes$i, steps$i, sizeOf($s)));
const Picture $d = made($s.width, $s.height, 3);
check(vekiYUV420ToRGB_8u_P3C3R(planes$i, steps$i, $D, $Z));
free(y$i.data), free(u$i.data), free(v$i.data), free(uv$i.data);)"},
    {"subsample yuy2", R"(const Picture y$i = made(($s.width + 1) / 2 * 4, $s.height, 1);
check(vekiRGBToYUV422_8u_C3C2R($S, y$i.data, y$i.step, sizeOf($s)));
const Picture $d = made($s.width, $s.height, 3);
check(vekiYUV422ToRGB_8u_C2C3R(y$i.data, y$i.step, $D, $Z));
free(y$i.data);)"},
    {"subsample ycbcr422", R"(const Picture y$i = made(($s.width + 1) / 2 * 4, $s.height, 1);
check(vekiRGBToYCbCr422_8u_C3C2R($S, y$i.data, y$i.step, sizeOf($s)));
const Picture $d = made($s.width, $s.height, 3);
check(vekiYCbCr422ToRGB_8u_C2C3R(y$i.data, y$i.step, $D, $Z));
free(y$i.data);)"},
    {"dither gray", "=vekiDither_8u_C1R($S, $D, $Z, $0, $1, (VekiPoint){0, 0})"},
    {"dither", R"(Picture q$i[3];
for (int c = 0; c < 3; ++c) {
  q$i[c] = channel($s, c);
  check(vekiDither_8u_C1R(q$i[c].data, q$i[c].step, q$i[c].data, q$i[c].step, sizeOf($s), $0, $1,
                          (VekiPoint){0, 0}));
}
const Picture $d = merged(q$i);
for (int c = 0; c < 3; ++c) free(q$i[c].data);)"},
    {"dither-bits gray", "const Picture $d = ditheredToBits($s, $0, $1);"},
    {"dither-bits", R"(Picture q$i[3];
for (int c = 0; c < 3; ++c) {
  const Picture one = channel($s, c);
  q$i[c] = ditheredToBits(one, $0, $1);
  free(one.data);
}
const Picture $d = merged(q$i);
for (int c = 0; c < 3; ++c) free(q$i[c].data);)"},
    {"pixels16 none", R"(const Picture y$i = made($s.width, $s.height, 3);
check(vekiRGBToYCbCr_8u_C3R($S, y$i.data, y$i.step, sizeOf($s)));
Vek16u* const q$i = malloc((size_t)$s.width * (size_t)$s.height * 2);
check(vekiYCbCrToRGB$0_8u16u_C3R(y$i.data, y$i.step, q$i, 2 * $s.width, sizeOf($s)));
const Picture $d = expanded(q$i, sizeOf($s), $0);
free(y$i.data), free(q$i);)"},
    {"pixels16", R"(Vek16u* const q$i = malloc((size_t)$s.width * (size_t)$s.height * 2);
check(vekiDitherRGB$0_8u16u_C3R($S, q$i, 2 * $s.width, sizeOf($s), $1, (VekiPoint){0, 0}));
const Picture $d = expanded(q$i, sizeOf($s), $0);
free(q$i);)"},
    {"box", R"(const Picture q$i = $p($s);
const Picture $d = made(q$i.width - $mw + 1, q$i.height - $mh + 1, $n);
check(vekiFilterBox_8u_C$nR(at(q$i, $bx, $by), q$i.step, $D, $Z, (VekiSize){$mw, $mh},
                            (VekiPoint){$bx, $by}));
free(q$i.data);)"},
    {"median", R"(const Picture q$i = $p($s);
const Picture $d = made(q$i.width - $mw + 1, q$i.height - $mh + 1, $n);
check(vekiFilterMedian_8u_C$nR(at(q$i, $bx, $by), q$i.step, $D, $Z, (VekiSize){$mw, $mh},
                               (VekiPoint){$bx, $by}));
free(q$i.data);)"},
    {"median-color", R"(const Picture q$i = $p($s);
const Picture $d = made(q$i.width - $mw + 1, q$i.height - $mh + 1, 3);
check(vekiFilterMedianColor_8u_C3R(at(q$i, $bx, $by), q$i.step, $D, $Z, vekiMask$0));
free(q$i.data);)"},
    {"filter", R"(const Picture q$i = $p($s);
const Picture $d = made(q$i.width - $mw + 1, q$i.height - $mh + 1, $n);
const Vek32s kernel$i[] = {$f0};
check(vekiFilter_8u_C$nR(at(q$i, $bx, $by), q$i.step, $D, $Z, kernel$i, (VekiSize){$mw, $mh},
                         (VekiPoint){$ax, $ay}, $1));
free(q$i.data);)"},
    {"row", R"(const Picture q$i = $p($s);
const Picture $d = made(q$i.width - $mw + 1, q$i.height, $n);
const Vek32s kernel$i[] = {$0};
check(vekiFilterRow_8u_C$nR(at(q$i, $bx, 0), q$i.step, $D, $Z, kernel$i, $mw, $ax, $1));
free(q$i.data);)"},
    {"column", R"(const Picture q$i = $p($s);
const Picture $d = made(q$i.width, q$i.height - $mh + 1, $n);
const Vek32s kernel$i[] = {$0};
check(vekiFilterColumn_8u_C$nR(at(q$i, 0, $by), q$i.step, $D, $Z, kernel$i, $mh, $ay, $1));
free(q$i.data);)"},
    {"erode", R"(Picture $d = $s;
for (int i = 0; i < $0; ++i) {
  const Picture from = $d, q = $p(from);
  $d = made(q.width - 2, q.height - 2, $n);
  check(vekiErode3x3_8u_C$nR(at(q, 1, 1), q.step, $D, $Z));
  free(q.data);
  if (i > 0) free(from.data);
})"},
    {"dilate", R"(Picture $d = $s;
for (int i = 0; i < $0; ++i) {
  const Picture from = $d, q = $p(from);
  $d = made(q.width - 2, q.height - 2, $n);
  check(vekiDilate3x3_8u_C$nR(at(q, 1, 1), q.step, $D, $Z));
  free(q.data);
  if (i > 0) free(from.data);
})"},
    {"crop empty", R"(const VekiSize size$i = {$0};
const Picture $d = made(size$i.width, size$i.height, $n);
check(vekiCopy_8u_C$nR(at($s, ($s.width - $d.width) / 2, ($s.height - $d.height) / 2), $s.step, $D, $Z));)"},
    {"crop", R"(const VekiSize size$i = {$0};
const Picture $d = made(size$i.width, size$i.height, $n);
check(vekiCopy_8u_C$nR(at($s, $1), $s.step, $D, $Z));)"},
    {"pad", "const Picture $d = padded($s, $q0, $1, $c2);"},
    {"mirror", "=vekiMirror_8u_C$nR($S, $D, $Z, $0)"},
    {"rotate 90", R"(const Picture $d = made($s.height, $s.width, $n);
const double map$i[] = {0, 1, 0, -1, 0, $s.height - 1};
check(vekiAffineWarp_8u_C$nR($W, map$i, vekiWarpInverse, vekiWarpNearest, vekiBorderReplicate, $z0));)"},
    {"rotate 180", R"(const Picture $d = made($s.width, $s.height, $n);
const double map$i[] = {-1, 0, $s.width - 1, 0, -1, $s.height - 1};
check(vekiAffineWarp_8u_C$nR($W, map$i, vekiWarpInverse, vekiWarpNearest, vekiBorderReplicate, $z0));)"},
    {"rotate 270", R"(const Picture $d = made($s.height, $s.width, $n);
const double map$i[] = {0, -1, $s.width - 1, 1, 0, 0};
check(vekiAffineWarp_8u_C$nR($W, map$i, vekiWarpInverse, vekiWarpNearest, vekiBorderReplicate, $z0));)"},
    {"transpose", R"(const Picture $d = made($s.height, $s.width, $n);
const double map$i[] = {0, 1, 0, 1, 0, 0};
check(vekiAffineWarp_8u_C$nR($W, map$i, vekiWarpInverse, vekiWarpNearest, vekiBorderReplicate, $z0));)"},
    {"resize", R"(const Picture $d = made($0, $n);
const double x$i = (double)$s.width / $d.width, y$i = (double)$s.height / $d.height;
const double map$i[] = {x$i, 0, (x$i - 1) / 2, 0, y$i, (y$i - 1) / 2};
check(vekiAffineWarp_8u_C$nR($W, map$i, vekiWarpInverse, $1, vekiBorderReplicate, $z0));)"},
    {"affine", R"(const Picture $d = made($s.width, $s.height, $n);
const double a$i = $a0, b$i = $a1, c$i = $a2, d$i = $a3;  /* about the middle, x, y */
const double x$i = ($s.width - 1) / 2., y$i = ($s.height - 1) / 2.;
const double map$i[] = {a$i, b$i, x$i - a$i * x$i - b$i * y$i, c$i, d$i, y$i - c$i * x$i - d$i * y$i};
check(vekiAffineWarp_8u_C$nR($W, map$i, vekiWarpForward, $3, $4, $5));)"},
    {"perspective", R"(const Picture $d = made($s.width, $s.height, $n);
const double u$i = $s.width > 1 ? 1. / ($s.width - 1) : 1, v$i = $s.height > 1 ? 1. / ($s.height - 1) : 1;
const double map$i[] = {$a0 * u$i, $a1 * v$i, $a2, $a3 * u$i, $a4 * v$i, $a5, $a6 * u$i, $a7 * v$i, 1};
check(vekiPerspectiveWarp_8u_C$nR($W, map$i, $4, $5, vekiBorderConstant, $z0));)"},
    {"spectrum", "const Picture $d = perChannel($s, spectrum, 0);"},
    {"low-pass", "const Picture $d = perChannel($s, lowPass, $0);"},
    {"high-pass", "const Picture $d = perChannel($s, highPass, $0);"},
    {"dct", "const Picture $d = perChannel($s, blockCosines, 0);"},
    {"dct-keep", "const Picture $d = perChannel($s, blockCosines, $0);"},
    {"norm", R"(Vek32s norm$i[3];
check(vekiNorm_$0_8u_C$nRSfs($S, sizeOf($s), norm$i, 0));
for (int c = 0; c < $n; ++c) printf("%d\n", norm$i[c]);)"},
    {"norm-diff", R"(Vek32s norm$i[3];
check(vekiNormDiff_$1_8u_C$nRSfs($S, $0, sizeOf($s), norm$i, 0));
for (int c = 0; c < $n; ++c) printf("%d\n", norm$i[c]);)"},
    {"norm-rel", R"(Vek32s norm$i[3];  /* in 1/65536 */
check(vekiNormRel_$1_8u_C$nRSfs($S, $0, sizeOf($s), norm$i, -16));
for (int c = 0; c < $n; ++c) printf("%g\n", norm$i[c] / 65536.);)"},
    {"moments spatial", R"(VekiMomentState* state$i = NULL;
check(vekiInitAlloc_Moments_8u(&state$i));
check(vekiMoments_8u_C$nR($S, sizeOf($s), state$i));
for (int c = 0; c < $n; ++c) {
  double moments[10];  /* m00 m10 m01 m20 m11 m02 m30 m21 m12 m03 */
  check(vekiSpatialMoments_64f(state$i, c, (VekiPoint){0, 0}, moments));
  for (int i = 0; i < 10; ++i) printf("%.10g\n", moments[i]);
}
vekiFree_Moments_8u(state$i);)"},
    {"moments hu", R"(VekiMomentState* state$i = NULL;
check(vekiInitAlloc_Moments_8u(&state$i));
check(vekiMoments_8u_C$nR($S, sizeOf($s), state$i));
for (int c = 0; c < $n; ++c) {
  double moments[7];
  check(vekiHuMoments_64f(state$i, c, moments));
  for (int i = 0; i < 7; ++i) printf("%.10g\n", moments[i]);
}
vekiFree_Moments_8u(state$i);)"},
    {"moments", R"(VekiMomentState* state$i = NULL;
check(vekiInitAlloc_Moments_8u(&state$i));
check(vekiMoments_8u_C$nR($S, sizeOf($s), state$i));
for (int c = 0; c < $n; ++c) {
  double moments[10];  /* m00 m10 m01 m20 m11 m02 m30 m21 m12 m03 */
  check($0(state$i, c, moments));
  for (int i = 0; i < 10; ++i) printf("%.10g\n", moments[i]);
}
vekiFree_Moments_8u(state$i);)"},
};

constexpr Text words[] = {
    {"border", "vekiBorderReplicate|vekiBorderMirror|vekiBorderConstant"},
    {"method", "vekiDitherOrdered|vekiDitherDiffusion|none"},
    {"interpolation", "vekiWarpNearest|vekiWarpLinear|vekiWarpCubic"},
    {"outside", "vekiBorderConstant|vekiBorderReplicate"},
    {"axis", "vekiMirrorHorizontalAxis|vekiMirrorVerticalAxis|vekiMirrorBothAxes"},
    {"direction", "vekiWarpInverse|vekiWarpForward"},
    {"norm", "Inf|L1|L2"},
    {"format", "565|555|444"},
    {"kind",
     "vekiSpatialMoments_64f|vekiCentralMoments_64f|vekiNormalizedMoments_64f|vekiHuMoments_64f"},
};

constexpr Text helpers[] = {
    {"check", R"(static void check(VekStatus status) {
  if (status >= 0) return;
  fprintf(stderr, "%s\n", vekStatusString(status));
  exit(1);
}
)"},
    {"made", R"(static Picture made(int width, int height, int channels) {
  const size_t bytes = (size_t)width * (size_t)channels * (size_t)height;
  const Picture p = {width, height, channels, width * channels, malloc(bytes)};
  if (!p.data) check(vekStsMemAllocErr);
  return p;
}
)"},
    {"sizeOf", R"(static VekiSize sizeOf(Picture p) {
  return (VekiSize){p.width, p.height};
}
)"},
    {"at", R"(static Vek8u* at(Picture p, int x, int y) {
  return p.data + (ptrdiff_t)y * p.step + x * p.channels;
}
)"},
    {"readPicture", R"(static Picture readPicture(const char* path) {
  int kind, width, height;
  FILE* const file = fopen(path, "rb");
  if (!file || fscanf(file, "P%d %d %d 255", &kind, &width, &height) != 3) exit(2);
  fgetc(file);
  const Picture p = made(width, height, kind == 5 ? 1 : 3);
  if (fread(p.data, (size_t)p.step, (size_t)height, file) != (size_t)height) exit(2);
  fclose(file);
  return p;
}
)"},
    {"writePicture", R"(static void writePicture(const char* path, Picture p) {
  FILE* const file = fopen(path, "wb");
  if (!file) exit(2);
  fprintf(file, "P%d\n%d %d\n255\n", p.channels == 1 ? 5 : 6, p.width, p.height);
  fwrite(p.data, (size_t)p.step, (size_t)p.height, file);
  if (fclose(file) != 0) exit(2);
}
)"},
    {"padded", R"(/* With a border of so many samples. */
static Picture padded(Picture p, int left, int top, int right, int bottom, int border, const Vek8u* value) {
  const Picture q = made(p.width + left + right, p.height + top + bottom, p.channels);
  if (p.channels == 1)
    check(vekiPad_8u_C1R(p.data, p.step, sizeOf(p), q.data, q.step, sizeOf(q), left, top, border, value[0]));
  else
    check(vekiPad_8u_C3R(p.data, p.step, sizeOf(p), q.data, q.step, sizeOf(q), left, top, border, value));
  return q;
}
)"},
    {"channel", R"(static Picture channel(Picture p, int index) {
  const Vek32s weights[] = {index == 0 ? 16384 : 0, index == 1 ? 16384 : 0, index == 2 ? 16384 : 0};
  const Picture q = made(p.width, p.height, 1);
  check(vekiColorToGrayQ14_8u_C3C1R(p.data, p.step, q.data, q.step, sizeOf(p), weights));
  return q;
}
)"},
    {"merged", R"(/* Three channels as one picture. */
static Picture merged(const Picture* planes) {
  const Picture q = made(planes[0].width, planes[0].height, 3);
  for (ptrdiff_t i = 0; i < (ptrdiff_t)q.width * q.height; ++i) {
    for (int c = 0; c < 3; ++c) q.data[3 * i + c] = planes[c].data[i];
  }
  return q;
}
)"},
    {"expanded", R"(/* 16-bit pixels with fields of so many bits, such as 565. */
static Picture expanded(const Vek16u* from, VekiSize size, int fields) {
  const Picture q = made(size.width, size.height, 3);
  const int bits[] = {fields / 100, fields / 10 % 10, fields % 10};
  const int at[] = {bits[1] + bits[2], bits[2], 0};
  for (ptrdiff_t i = 0; i < (ptrdiff_t)size.width * size.height; ++i) {
    for (int c = 0; c < 3; ++c) {
      const int most = (1 << bits[c]) - 1;
      q.data[3 * i + c] = (Vek8u)(((from[i] >> at[c] & most) * 510 + most) / (2 * most));
    }
  }
  return q;
}
)"},
    {"ditheredToBits", R"(static Picture ditheredToBits(Picture p, int bits, int method) {
  const Picture packed = made((p.width * bits + 7) / 8, p.height, 1), q = made(p.width, p.height, 1);
  check(vekiDitherPacked_8u_C1R(p.data, p.step, packed.data, packed.step, sizeOf(p), bits, method,
                                (VekiPoint){0, 0}));
  const int most = (1 << bits) - 1;
  for (int y = 0; y < p.height; ++y) {
    for (int x = 0; x < p.width; ++x) {
      const int sample = *at(packed, x * bits / 8, y) >> (8 - bits - x * bits % 8) & most;
      *at(q, x, y) = (Vek8u)(sample * 255 / most);
    }
  }
  free(packed.data);
  return q;
}
)"},
    {"logarithm", R"(/* log2(value + 1) in 1/256, rounded down. */
static int logarithm(uint64_t value) {
  int result = 0;
  while ((value + 1) >> (result + 1) != 0) ++result;
  uint64_t mantissa = (value + 1) << (63 - result) >> 32;
  for (int bit = 0; bit < 8; ++bit) {
    mantissa = mantissa * mantissa >> 31;
    const int isSet = mantissa >> 32 != 0;
    mantissa >>= isSet;
    result = 2 * result + isSet;
  }
  return result;
}
)"},
    {"orderOf", R"(/* The power of two that is n, or the next one above. */
static int orderOf(int n) {
  int order = 0;
  while (1 << order < n) ++order;
  return order;
}
)"},
    {"transform",
     R"(/* The transform of a picture whose sides are powers of two, and back if there is a picture to write.
 * A spectrum has rows of width / 2 + 1 complex numbers. */
static void transform(Picture p, Vek32s* spectrum, int isBack) {
  VekiRealFFTSpec* spec = NULL;
  int bytes = 0, buffer = 0;
  const int orderX = orderOf(p.width), orderY = orderOf(p.height), step = (p.width / 2 + 1) * 8;
  check(vekiInitAlloc_RealFFT_32s(orderX, orderY, &spec));
  check(vekiGetSpecSize_RealFFT_32s(orderX, orderY, &bytes, &buffer));
  Vek8u* const work = malloc((size_t)buffer + 1);
  if (isBack)
    check(vekiRealFFTInv_32s8u_C1RSfs(spectrum, step, p.data, p.step, orderX + orderY, spec, work));
  else
    check(vekiRealFFTFwd_8u32s_C1RSfs(p.data, p.step, spectrum, step, 0, spec, work));
  free(work);
  vekiFree_RealFFT_32s(spec);
}
)"},
    {"spectrum", R"(/* The logarithm of the spectrum of the middle, frequency 0 in its middle. */
static Picture spectrum(Picture p, int unused) {
  (void)unused;
  int width = 1024, height = 1024;
  while (width > p.width) width /= 2;
  while (height > p.height) height /= 2;
  const Picture q = made(width, height, 1);
  const Vek8u* const middle = at(p, (p.width - width) / 2, (p.height - height) / 2);
  check(vekiCopy_8u_C1R(middle, p.step, q.data, q.step, sizeOf(q)));
  const int columns = width / 2 + 1;
  Vek32s* const numbers = malloc((size_t)columns * (size_t)height * 8);
  transform(q, numbers, 0);
  int largest = 1;
  int* const logs = malloc((size_t)columns * (size_t)height * sizeof(int));
  for (int i = 0; i < columns * height; ++i) {
    const int64_t re = numbers[2 * i], im = numbers[2 * i + 1];
    logs[i] = logarithm((uint64_t)(re * re) + (uint64_t)(im * im));
    if (logs[i] > largest) largest = logs[i];
  }
  for (int y = 0; y < height; ++y) {
    for (int x = 0; x < width; ++x) {
      const int kx = x - width / 2, ky = y - height / 2;
      const int value = 255 * logs[((kx < 0 ? -ky : ky) & (height - 1)) * columns + abs(kx)] / largest;
      *at(q, x, y) = (Vek8u)(value < 255 ? value : 255);
    }
  }
  free(numbers), free(logs);
  return q;
}
)"},
    {"bandPass", R"(static Picture bandPass(Picture p, int periods, int isLow) {
  const int width = 1 << orderOf(p.width), height = 1 << orderOf(p.height), columns = width / 2 + 1;
  const Picture q = padded(p, 0, 0, width - p.width, height - p.height, vekiBorderMirror, p.data);
  const double limit = (double)periods / (p.width > p.height ? p.width : p.height);
  Vek32s* const numbers = malloc((size_t)columns * (size_t)height * 8);
  transform(q, numbers, 0);
  for (int ky = 0; ky < height; ++ky) {
    const double y = (double)(ky < height - ky ? ky : height - ky) / height;
    for (int kx = 0; kx < columns; ++kx) {
      const double x = (double)kx / width;
      if ((x * x + y * y <= limit * limit) == isLow) continue;
      numbers[2 * (ky * columns + kx)] = numbers[2 * (ky * columns + kx) + 1] = 0;
    }
  }
  if (!isLow) numbers[0] = 128 * width * height;
  transform(q, numbers, 1);
  const Picture part = made(p.width, p.height, 1);
  check(vekiCopy_8u_C1R(q.data, q.step, part.data, part.step, sizeOf(part)));
  free(numbers), free(q.data);
  return part;
}
)"},
    {"lowPass", R"(static Picture lowPass(Picture p, int periods) {
  return bandPass(p, periods, 1);
}
)"},
    {"highPass", R"(static Picture highPass(Picture p, int periods) {
  return bandPass(p, periods, 0);
}
)"},
    {"blockCosines",
     R"(/* Blocks of 8 x 8 with their first coefficients, in the order of JPEG; with a count of 0 the logarithms of
 * all coefficients. */
static Picture blockCosines(Picture p, int count) {
  int zigzag[64], next = 0;
  for (int sum = 0; sum < 15; ++sum) {
    for (int i = sum > 7 ? sum - 7 : 0; i <= sum && i <= 7; ++i) {
      const int row = sum % 2 == 0 ? sum - i : i;
      zigzag[8 * row + sum - row] = next++;
    }
  }
  const int width = (p.width + 7) / 8 * 8, height = (p.height + 7) / 8 * 8;
  const Picture whole = padded(p, 0, 0, width - p.width, height - p.height, vekiBorderReplicate, p.data);
  Vek16s* const blocks = malloc((size_t)width * (size_t)height * 2);
  for (int i = 0; i < width * height; ++i) blocks[i] = (Vek16s)(whole.data[i] - 128);
  check(vekiBlockDCTFwd_16s_C1R(blocks, 2 * width, blocks, 2 * width, sizeOf(whole)));
  for (int i = 0; count > 0 && i < width * height; ++i) {
    if (zigzag[i / width % 8 * 8 + i % width % 8] >= count) blocks[i] = 0;
  }
  if (count > 0) check(vekiBlockDCTInv_16s_C1R(blocks, 2 * width, blocks, 2 * width, sizeOf(whole)));
  const Picture q = made(p.width, p.height, 1);
  for (int y = 0; y < p.height; ++y) {
    for (int x = 0; x < p.width; ++x) {
      const int sample = blocks[y * width + x];
      const int value = count > 0 ? sample + 128 : 255 * logarithm((uint64_t)abs(sample)) / logarithm(1024);
      *at(q, x, y) = (Vek8u)(value < 0 ? 0 : value > 255 ? 255 : value);
    }
  }
  free(blocks), free(whole.data);
  return q;
}
)"},
    {"perChannel",
     R"(static Picture perChannel(Picture p, Picture (*f)(Picture, int), int argument) {
  if (p.channels == 1) return f(p, argument);
  Picture planes[3];
  for (int c = 0; c < 3; ++c) {
    const Picture one = channel(p, c);
    planes[c] = f(one, argument);
    free(one.data);
  }
  const Picture q = merged(planes);
  for (int c = 0; c < 3; ++c) free(planes[c].data);
  return q;
}
)"},
};

}  // namespace

const Dialect cDialect = {"//",
                          R"(// cc program.c -lvek && ./a.out IN OUT: PGM and PPM files
#include <stddef.h>
#include <stdint.h>
#include <stdio.h>
#include <stdlib.h>
#include <vek/image.h>

typedef struct {
  int width, height, channels, step;
  Vek8u* data;
} Picture;

)",
                          R"(int main(int argc, char** argv) {
  if (argc != 3) return 2;
  const Picture p0 = readPicture(argv[1]);

@body
  writePicture(argv[2], $d);
}
)",
                          "const Picture $d = made($s.width, $s.height, $r);\ncheck(",
                          ");",
                          "free($s.data);\n",
                          operations,
                          helpers,
                          words};

}  // namespace chain
