// Chains in C++.
#include "chain/code/dialect.h"

namespace chain {
namespace {

constexpr Text operations[] = {
    {"add", "=vek::add<$n>($s, $0, $1)"},
    {"sub", "=vek::sub<$n>($s, $0, $1)"},
    {"mul", "=vek::mul<$n>($s, $0, $1)"},
    {"mul-scale", "=vek::mulScale<$n>($s, $0)"},
    {"sqr", "=vek::sqr<$n>($s, $0)"},
    {"and", "=vek::bitAnd<$n>($s, $0)"},
    {"or", "=vek::bitOr<$n>($s, $0)"},
    {"xor", "=vek::bitXor<$n>($s, $0)"},
    {"not", "=vek::bitNot<$n>($s)"},
    {"shift-left", "=vek::shiftLeft<$n>($s, $0)"},
    {"shift-right", "=vek::shiftRight<$n>($s, $0)"},
    {"threshold", "=vek::replaceAbove<$n>(vek::replaceBelow<$n>($s, $v0, $z0), $m0, $w0)"},
    {"clamp-above", "=vek::clampAbove<$n>($s, $0)"},
    {"clamp-below", "=vek::clampBelow<$n>($s, $0)"},
    {"replace-above", "=vek::replaceAbove<$n>($s, $0, $1)"},
    {"replace-below", "=vek::replaceBelow<$n>($s, $0, $1)"},
    {"replace-outside", "=vek::replaceOutside<$n>($s, $0, $1, $2, $3)"},
    {"copy", "=vek::copy<$n>($s)"},
    {"set", R"(vek::Image<Vek8u, $n> $d($s.size());
vek::set($d, $0);)"},
    {"gray gray", "=vek::copy<1>($s)"},
    {"gray empty", "=vek::rgbToGray(as<vek::Rgb24>($s))"},
    {"gray", "=vek::colorToGray($s, {$0})"},
    {"color gray", "=merged($s, $s, $s)"},
    {"color", "=vek::copy<3>($s)"},
    {"channel", "=vek::colorToGray($s, {$k0})"},
    {"order", "=vek::permuteChannels<3>($s, std::array<int, 3>{$0})"},
    {"twist", R"(const vek::Twist twist$i = {$0};
const auto $d = vek::colorTwist($s, twist$i);)"},
    {"gamma gray", "=vek::colorToGray(vek::gammaForward(merged($s, $s, $s)), {16384, 0, 0})"},
    {"gamma", "=vek::gammaForward($s)"},
    {"linear-light gray",
     "=vek::colorToGray(vek::gammaInverse(merged($s, $s, $s)), {16384, 0, 0})"},
    {"linear-light", "=vek::gammaInverse($s)"},
    {"to-ycbcr", R"(vek::Image<Vek8u, 3> $d($s.size());
vek::rgbToYCbCr(as<vek::Rgb24>($s), to<vek::YCbCr24>($d));)"},
    {"from-ycbcr", R"(vek::Image<Vek8u, 3> $d($s.size());
vek::yCbCrToRgb(as<vek::YCbCr24>($s), to<vek::Rgb24>($d));)"},
    {"to-yuv", R"(vek::Image<Vek8u, 3> $d($s.size());
vek::rgbToYuv(as<vek::Rgb24>($s), to<vek::Yuv24>($d));)"},
    {"from-yuv", R"(vek::Image<Vek8u, 3> $d($s.size());
vek::yuvToRgb(as<vek::Yuv24>($s), to<vek::Rgb24>($d));)"},
    {"to-xyz", R"(vek::Image<Vek8u, 3> $d($s.size());
vek::rgbToXyz(as<vek::Rgb24>($s), to<vek::Xyz24>($d));)"},
    {"from-xyz", R"(vek::Image<Vek8u, 3> $d($s.size());
vek::xyzToRgb(as<vek::Xyz24>($s), to<vek::Rgb24>($d));)"},
    {"to-luv", R"(vek::Image<Vek8u, 3> $d($s.size());
vek::rgbToLuv(as<vek::Rgb24>($s), to<vek::Luv24>($d));)"},
    {"from-luv", R"(vek::Image<Vek8u, 3> $d($s.size());
vek::luvToRgb(as<vek::Luv24>($s), to<vek::Rgb24>($d));)"},
    {"to-ycc", R"(vek::Image<Vek8u, 3> $d($s.size());
vek::rgbToYcc(as<vek::Rgb24>($s), to<vek::Ycc24>($d));)"},
    {"from-ycc", R"(vek::Image<Vek8u, 3> $d($s.size());
vek::yccToRgb(as<vek::Ycc24>($s), to<vek::Rgb24>($d));)"},
    {"to-hls", R"(vek::Image<Vek8u, 3> $d($s.size());
vek::rgbToHls(as<vek::Rgb24>($s), to<vek::Hls24>($d));)"},
    {"from-hls", R"(vek::Image<Vek8u, 3> $d($s.size());
vek::hlsToRgb(as<vek::Hls24>($s), to<vek::Rgb24>($d));)"},
    {"to-hsv", R"(vek::Image<Vek8u, 3> $d($s.size());
vek::rgbToHsv(as<vek::Rgb24>($s), to<vek::Hsv24>($d));)"},
    {"from-hsv", R"(vek::Image<Vek8u, 3> $d($s.size());
vek::hsvToRgb(as<vek::Hsv24>($s), to<vek::Rgb24>($d));)"},
    {"subsample 444", R"(vek::Image<Vek8u, 3> $d($s.size());
vek::yuvToRgb(vek::rgbToYuv<vek::Image444>(as<vek::Rgb24>($s)), to<vek::Rgb24>($d));)"},
    {"subsample 422", R"(vek::Image<Vek8u, 3> $d($s.size());
vek::yuvToRgb(vek::rgbToYuv<vek::Image422>(as<vek::Rgb24>($s)), to<vek::Rgb24>($d));)"},
    {"subsample 420", R"(vek::Image<Vek8u, 3> $d($s.size());
vek::yuvToRgb(vek::rgbToYuv<vek::Image420>(as<vek::Rgb24>($s)), to<vek::Rgb24>($d));)"},
    {"subsample nv12", R"(vek::Image<Vek8u, 3> $d($s.size());
vek::yuvToRgb(vek::toPlanes(vek::toNv12(vek::rgbToYuv<vek::Image420>(as<vek::Rgb24>($s)))), to<vek::Rgb24>($d));)"},
    {"subsample yuy2", R"(vek::Image<Vek8u, 3> $d($s.size());
vek::yuvToRgb(vek::rgbToYuv<vek::Image<vek::Yuy2>>(as<vek::Rgb24>($s)), to<vek::Rgb24>($d));)"},
    {"subsample ycbcr422", R"(vek::Image<Vek8u, 3> $d($s.size());
vek::yCbCrToRgb(vek::rgbToYCbCr<vek::Yuy2>(as<vek::Rgb24>($s)), to<vek::Rgb24>($d));)"},
    {"dither",
     "=perChannel($s, [](vek::View<const Vek8u> src) { return vek::dither(src, $0, $1); })"},
    {"dither-bits",
     "=perChannel($s, [](vek::View<const Vek8u> src) { return ditheredToBits<$0>(src, $1); })"},
    {"pixels16 none",
     "=expanded(vek::yCbCrToRgb<vek::Rgb$0>(vek::rgbToYCbCr<vek::YCbCr24>(as<vek::Rgb24>($s)).view("
     ")), $0)"},
    {"pixels16", "=expanded(vek::dither<vek::Rgb$0>(as<vek::Rgb24>($s), $1), $0)"},
    {"box", "=vek::filterBox<$n>($p($s), {$mw, $mh})"},
    {"median", "=vek::filterMedian<$n>($p($s), {$mw, $mh})"},
    {"median-color", "=vek::filterMedianColor($p($s), vek::MedianMask::square$mw)"},
    {"filter", R"(const Vek32s kernel$i[] = {$f0};
const auto $d = vek::filter<$n>($p($s), {kernel$i, {$mw, $mh}}, $1);)"},
    {"row", R"(const Vek32s taps$i[] = {$0};
const auto $d = vek::filterRow<$n>($p($s), taps$i, $1);)"},
    {"column", R"(const Vek32s taps$i[] = {$0};
const auto $d = vek::filterColumn<$n>($p($s), taps$i, $1);)"},
    {"erode 1", "=vek::erode<$n>($p($s))"},
    {"erode", R"(auto $d = vek::erode<$n>($p($s));
for (int i = 1; i < $0; ++i) $d = vek::erode<$n>($p($d));)"},
    {"dilate 1", "=vek::dilate<$n>($p($s))"},
    {"dilate", R"(auto $d = vek::dilate<$n>($p($s));
for (int i = 1; i < $0; ++i) $d = vek::dilate<$n>($p($d));)"},
    {"crop empty", R"(const vek::Size size$i = {$0};
const auto $d = vek::copy<$n>($s.sub(
    {($s.width() - size$i.width) / 2, ($s.height() - size$i.height) / 2, size$i.width, size$i.height}));)"},
    {"crop", "=vek::copy<$n>($s.sub({$1, $0}))"},
    {"pad", "=vek::pad<$n>($s, {$q0}, $1, $2)"},
    {"mirror", "=vek::mirror<$n>($s, $0)"},
    {"rotate 90",
     R"(=vek::warp<$n>($s, {$s.height(), $s.width()}, vek::AffineMap{0, 1, 0, -1, 0, $s.height() - 1.}, vek::WarpDirection::inverse,
    vek::Interpolation::nearest, vek::WarpBorder::replicate))"},
    {"rotate 180",
     R"(=vek::warp<$n>($s, $s.size(), vek::AffineMap{-1, 0, $s.width() - 1., 0, -1, $s.height() - 1.}, vek::WarpDirection::inverse,
    vek::Interpolation::nearest, vek::WarpBorder::replicate))"},
    {"rotate 270",
     R"(=vek::warp<$n>($s, {$s.height(), $s.width()}, vek::AffineMap{0, -1, $s.width() - 1., 1, 0, 0}, vek::WarpDirection::inverse,
    vek::Interpolation::nearest, vek::WarpBorder::replicate))"},
    {"transpose",
     R"(=vek::warp<$n>($s, {$s.height(), $s.width()}, vek::AffineMap{0, 1, 0, 1, 0, 0}, vek::WarpDirection::inverse,
    vek::Interpolation::nearest, vek::WarpBorder::replicate))"},
    {"resize", R"(const vek::Size size$i = {$0};
const double x$i = double($s.width()) / size$i.width, y$i = double($s.height()) / size$i.height;
const auto $d = vek::warp<$n>($s, size$i, vek::AffineMap{x$i, 0, (x$i - 1) / 2, 0, y$i, (y$i - 1) / 2},
                             vek::WarpDirection::inverse, $1, vek::WarpBorder::replicate);)"},
    {"affine",
     R"(const double a$i = $a0, b$i = $a1, c$i = $a2, d$i = $a3;  // about the middle, x, y
const double x$i = ($s.width() - 1) / 2., y$i = ($s.height() - 1) / 2.;
const vek::AffineMap map$i = {a$i, b$i, x$i - a$i * x$i - b$i * y$i, c$i, d$i, y$i - c$i * x$i - d$i * y$i};
const auto $d = vek::warp<$n>($s, $s.size(), map$i, vek::WarpDirection::forward, $3, $4, $5);)"},
    {"perspective",
     R"(const double u$i = 1. / std::max(1, $s.width() - 1), v$i = 1. / std::max(1, $s.height() - 1);
const vek::PerspectiveMap map$i = {$a0 * u$i, $a1 * v$i, $a2, $a3 * u$i, $a4 * v$i, $a5, $a6 * u$i, $a7 * v$i, 1};
const auto $d = vek::warp<$n>($s, $s.size(), map$i, $4, $5, vek::WarpBorder::constant);)"},
    {"spectrum", "=perChannel($s, spectrum)"},
    {"low-pass",
     "=perChannel($s, [](vek::View<const Vek8u> src) { return bandPass(src, $0, true); })"},
    {"high-pass",
     "=perChannel($s, [](vek::View<const Vek8u> src) { return bandPass(src, $0, false); })"},
    {"dct", "=perChannel($s, [](vek::View<const Vek8u> src) { return blockCosines(src, 0); })"},
    {"dct-keep",
     "=perChannel($s, [](vek::View<const Vek8u> src) { return blockCosines(src, $0); })"},
    {"norm", "print(vek::norm$0<$n>($s), 1);"},
    {"norm-diff", "print(vek::normDiff$1<$n>($s, $0), 1);"},
    {"norm-rel", "print(vek::normRel$1<$n>($s, $0, -16), 1 / 65536.);"},
    {"moments", R"(vek::Moments moments$i;
moments$i.measure<$n>($s);
for (int c = 0; c < $n; ++c) {
  for (const double moment : moments$i.$0(c)) std::printf("%.10g\n", moment);
})"},
};

constexpr Text words[] = {
    {"border", "vek::PadBorder::replicate|vek::PadBorder::mirror|vek::PadBorder::constant"},
    {"method", "vek::Dither::ordered|vek::Dither::diffusion|none"},
    {"interpolation",
     "vek::Interpolation::nearest|vek::Interpolation::linear|vek::Interpolation::cubic"},
    {"outside", "vek::WarpBorder::constant|vek::WarpBorder::replicate"},
    {"axis", "vek::MirrorAxis::horizontal|vek::MirrorAxis::vertical|vek::MirrorAxis::both"},
    {"direction", "vek::WarpDirection::inverse|vek::WarpDirection::forward"},
    {"norm", "Inf|L1|L2"},
    {"format", "565|555|444"},
};

constexpr Text helpers[] = {
    {"readPicture", R"(template <int channels>
vek::Image<Vek8u, channels> readPicture(const char* path) {
  int kind, width, height;
  std::FILE* const file = std::fopen(path, "rb");
  if (!file || std::fscanf(file, "P%d %d %d 255", &kind, &width, &height) != 3 ||
      kind != (channels == 1 ? 5 : 6)) {
    std::exit(2);
  }
  std::fgetc(file);
  vek::Image<Vek8u, channels> picture({width, height});
  for (int y = 0; y < height; ++y) {
    if (std::fread(picture.row(y), channels, width, file) != size_t(width)) std::exit(2);
  }
  std::fclose(file);
  return picture;
}
)"},
    {"writePicture", R"(template <int channels>
void writePicture(const char* path, const vek::View<const Vek8u, channels>& picture) {
  std::FILE* const file = std::fopen(path, "wb");
  if (!file) std::exit(2);
  std::fprintf(file, "P%d\n%d %d\n255\n", channels == 1 ? 5 : 6, picture.width(), picture.height());
  for (int y = 0; y < picture.height(); ++y) {
    std::fwrite(picture.row(y), channels, picture.width(), file);
  }
  if (std::fclose(file) != 0) std::exit(2);
}
)"},
    {"as", R"(/// Three bytes as pixels of a color model.
template <class Pixel>
vek::View<const Pixel> as(const vek::View<const Vek8u, 3>& picture) {
  return vek::View<const Pixel>(picture);
}
)"},
    {"to", R"(template <class Pixel>
vek::View<Pixel> to(vek::Image<Vek8u, 3>& picture) {
  return vek::View<Pixel>(vek::View<Vek8u, 3>(picture));
}
)"},
    {"merged", R"(/// Three channels as one picture.
vek::Image<Vek8u, 3> merged(vek::View<const Vek8u> a, vek::View<const Vek8u> b, vek::View<const Vek8u> c) {
  vek::Image<Vek8u, 3> result(a.size());
  for (int y = 0; y < a.height(); ++y) {
    Vek8u* to = result.row(y);
    for (int x = 0; x < a.width(); ++x) *to++ = a.row(y)[x], *to++ = b.row(y)[x], *to++ = c.row(y)[x];
  }
  return result;
}
)"},
    {"perChannel", R"(template <class F>
vek::Image<Vek8u> perChannel(const vek::Image<Vek8u>& picture, F f) {
  return f(picture);
}
template <class F>
vek::Image<Vek8u, 3> perChannel(const vek::Image<Vek8u, 3>& picture, F f) {
  return merged(f(vek::colorToGray(picture, {16384, 0, 0})), f(vek::colorToGray(picture, {0, 16384, 0})),
                f(vek::colorToGray(picture, {0, 0, 16384})));
}
)"},
    {"expanded", R"(/// 16-bit pixels with fields of so many bits, such as 565.
template <class Image>
vek::Image<Vek8u, 3> expanded(const Image& pixels, int fields) {
  vek::Image<Vek8u, 3> result(pixels.size());
  const int bits[] = {fields / 100, fields / 10 % 10, fields % 10};
  const int at[] = {bits[1] + bits[2], bits[2], 0};
  for (int y = 0; y < pixels.height(); ++y) {
    for (int x = 0; x < pixels.width(); ++x) {
      for (int c = 0; c < 3; ++c) {
        const int most = (1 << bits[c]) - 1;
        result.row(y)[3 * x + c] = Vek8u(((pixels.row(y)[x] >> at[c] & most) * 510 + most) / (2 * most));
      }
    }
  }
  return result;
}
)"},
    {"ditheredToBits", R"(template <int bits>
vek::Image<Vek8u> ditheredToBits(vek::View<const Vek8u> src, vek::Dither method) {
  const auto packed = vek::dither<vek::Packed<bits>>(src, method);
  vek::Image<Vek8u> result(src.size());
  constexpr int most = (1 << bits) - 1;
  for (int y = 0; y < src.height(); ++y) {
    for (int x = 0; x < src.width(); ++x) {
      const int sample = packed.row(y)[x * bits / 8] >> (8 - bits - x * bits % 8) & most;
      result.row(y)[x] = Vek8u(sample * 255 / most);
    }
  }
  return result;
}
)"},
    {"logarithm", R"(/// log2(value + 1) in 1/256, rounded down.
int logarithm(std::uint64_t value) {
  int result = 0;
  while ((value + 1) >> (result + 1) != 0) ++result;
  std::uint64_t mantissa = (value + 1) << (63 - result) >> 32;
  for (int bit = 0; bit < 8; ++bit) {
    mantissa = mantissa * mantissa >> 31;
    const int isSet = mantissa >> 32 != 0;
    mantissa >>= isSet;
    result = 2 * result + isSet;
  }
  return result;
}
)"},
    {"orderOf", R"(/// The power of two that is n, or the next one above.
int orderOf(int n) {
  int order = 0;
  while (1 << order < n) ++order;
  return order;
}
)"},
    {"spectrum", R"(/// The logarithm of the spectrum of the middle, frequency 0 in its middle.
vek::Image<Vek8u> spectrum(vek::View<const Vek8u> src) {
  vek::Size size = {1024, 1024};
  while (size.width > src.width()) size.width /= 2;
  while (size.height > src.height()) size.height /= 2;
  const int left = (src.width() - size.width) / 2, top = (src.height() - size.height) / 2;
  vek::RealFft fft(size);
  const auto numbers = fft.forward(src.sub({left, top, size.width, size.height}));
  vek::Image<Vek32s> logs(numbers.size());
  int largest = 1;
  for (int y = 0; y < logs.height(); ++y) {
    for (int x = 0; x < logs.width(); ++x) {
      const std::int64_t re = numbers.row(y)[2 * x], im = numbers.row(y)[2 * x + 1];
      logs.row(y)[x] = logarithm(std::uint64_t(re * re) + std::uint64_t(im * im));
      largest = std::max(largest, logs.row(y)[x]);
    }
  }
  vek::Image<Vek8u> result(size);
  for (int y = 0; y < size.height; ++y) {
    for (int x = 0; x < size.width; ++x) {
      const int kx = x - size.width / 2, ky = y - size.height / 2;
      const int row = (kx < 0 ? -ky : ky) & (size.height - 1);
      result.row(y)[x] = Vek8u(std::min(255, 255 * logs.row(row)[std::abs(kx)] / largest));
    }
  }
  return result;
}
)"},
    {"bandPass",
     R"(vek::Image<Vek8u> bandPass(vek::View<const Vek8u> src, int periods, bool isLow) {
  const int orderX = orderOf(src.width()), orderY = orderOf(src.height());
  const vek::Size size = {1 << orderX, 1 << orderY};
  const double limit = double(periods) / std::max(src.width(), src.height());
  vek::RealFft fft(size);
  auto numbers = fft.forward(vek::pad<1>(src, {0, 0, size.width - src.width(), size.height - src.height()},
                                         vek::PadBorder::mirror));
  for (int ky = 0; ky < size.height; ++ky) {
    const double y = double(std::min(ky, size.height - ky)) / size.height;
    for (int kx = 0; kx <= size.width / 2; ++kx) {
      const double x = double(kx) / size.width;
      if ((x * x + y * y <= limit * limit) != isLow) std::fill_n(numbers.row(ky) + 2 * kx, 2, 0);
    }
  }
  if (!isLow) numbers.row(0)[0] = 128 * size.width * size.height;
  const auto whole = fft.inverse<Vek8u>(numbers, orderX + orderY);
  return vek::copy<1>(whole.sub({0, 0, src.width(), src.height()}));
}
)"},
    {"blockCosines",
     R"(/// Blocks of 8 x 8 with their first coefficients, in the order of JPEG; with a count of 0 the logarithms of
/// all coefficients.
vek::Image<Vek8u> blockCosines(vek::View<const Vek8u> src, int count) {
  int zigzag[64], next = 0;
  for (int sum = 0; sum < 15; ++sum) {
    for (int i = std::max(0, sum - 7); i <= std::min(sum, 7); ++i) {
      const int row = sum % 2 == 0 ? sum - i : i;
      zigzag[8 * row + sum - row] = next++;
    }
  }
  const auto whole = vek::pad<1>(src, {0, 0, -src.width() & 7, -src.height() & 7}, vek::PadBorder::replicate);
  vek::Image<Vek16s> blocks(whole.size());
  for (int y = 0; y < whole.height(); ++y) {
    for (int x = 0; x < whole.width(); ++x) blocks.row(y)[x] = Vek16s(whole.row(y)[x] - 128);
  }
  vek::dctForward(blocks, blocks);
  for (int y = 0; count > 0 && y < blocks.height(); ++y) {
    for (int x = 0; x < blocks.width(); ++x) {
      if (zigzag[y % 8 * 8 + x % 8] >= count) blocks.row(y)[x] = 0;
    }
  }
  if (count > 0) vek::dctInverse(blocks, blocks);
  vek::Image<Vek8u> result(src.size());
  for (int y = 0; y < src.height(); ++y) {
    for (int x = 0; x < src.width(); ++x) {
      const int sample = blocks.row(y)[x];
      const int value = count > 0 ? sample + 128 : 255 * logarithm(std::uint64_t(std::abs(sample))) / logarithm(1024);
      result.row(y)[x] = Vek8u(std::clamp(value, 0, 255));
    }
  }
  return result;
}
)"},
    {"print", R"(template <class Norm>
void print(const Norm& norm, double unit) {
  if constexpr (std::is_arithmetic_v<Norm>) {
    std::printf("%g\n", norm * unit);
  } else {
    for (const auto channel : norm) std::printf("%g\n", channel * unit);
  }
}
)"},
};

}  // namespace

const Dialect cppDialect = {
    "//",
    R"(// c++ -std=c++20 program.cc -lvek && ./a.out IN OUT: PGM and PPM files
#include <algorithm>
#include <array>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <vek/vek.hpp>

)",
    R"(int main(int argc, char** argv) {
  if (argc != 3) return 2;
  const auto p0 = readPicture<$n>(argv[1]);

@body
  writePicture<$r>(argv[2], $d);
}
)",
    "const auto $d = ",
    ";",
    "",
    operations,
    helpers,
    words};

}  // namespace chain
