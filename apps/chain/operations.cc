// The table of operations. An entry is what the documentation, the list, the completion of words and the
// parser know of an operation; its last member does the work.
#include <algorithm>
#include <numeric>

#include "chain/call.h"
#include "chain/larger.h"

namespace chain {
namespace {

using vek::Size;
using vek::View;

// Parameters that several operations have.

constexpr Parameter operand = {"value", Kind::operand, nullptr, 0, 255};
constexpr Parameter scale = {"scale", Kind::integer, "0", -16, 16};
constexpr Parameter border = {"border", Kind::word, "replicate",
                              0,        0,          "replicate|mirror|constant|none"};
constexpr Parameter ditherMethod = {"method", Kind::word, "ordered", 0, 0, "ordered|diffusion"};
constexpr Parameter interpolation = {"interpolation",       Kind::word, "linear", 0, 0,
                                     "nearest|linear|cubic"};
constexpr Parameter outside = {"outside", Kind::word, "constant", 0, 0, "constant|replicate"};
constexpr Parameter background = {"value", Kind::color, "0", 0, 255};
constexpr Parameter normKind = {"norm", Kind::word, "l2", 0, 0, "inf|l1|l2"};

constexpr Parameter color(const char* name) {
  return {name, Kind::color, nullptr, 0, 255};
}
constexpr Parameter size(const char* name, int low, int high) {
  return {name, Kind::size, nullptr, double(low), double(high)};
}
constexpr Parameter mask(int low) {
  return {"mask", Kind::mask, nullptr, double(low), 255};
}
constexpr Parameter integer(const char* name, int low, int high, const char* fallback = nullptr) {
  return {name, Kind::integer, fallback, double(low), double(high)};
}
constexpr Parameter number(const char* name, double low, double high, const char* fallback) {
  return {name, Kind::number, fallback, low, high};
}
constexpr Parameter list(const char* name, int low, int high, const char* fallback = nullptr) {
  return {name, Kind::list, fallback, double(low), double(high)};
}
constexpr Parameter words(const char* name, const char* all, const char* fallback = nullptr) {
  return {name, Kind::word, fallback, 0, 0, all};
}
constexpr Parameter corner(const char* name) {
  return {name, Kind::point, nullptr, -largestSide, largestSide};
}

// What several operations do. Each takes a lambda without captures, which it makes anew.

using Run = Picture (*)(Call&);

/// f(source, destination, call) for pictures of either kind.
template <class F>
constexpr Run each(F) {
  return [](Call& call) {
    return toNew(call.picture, [&](auto src, auto dst) { F()(src, dst, call); });
  };
}

/// f(source, constant or second picture, destination, call).
template <class F>
constexpr Run withOperand(F) {
  return [](Call& call) {
    return toNew(call.picture, [&](auto src, auto dst) {
      constexpr int n = viewChannels(dst);
      if (call.argument(0).isPicture) {
        F()(src, call.other<n>(0), dst, call);
      } else {
        F()(src, call.value<n>(0), dst, call);
      }
    });
  };
}

/// f(source, destination) from one pixel type to another of three channels.
template <class From, class To, class F>
constexpr Run recolored(F) {
  return [](Call& call) -> Picture {
    auto result = made<Color>(call.size());
    F()
    (View<const From>(View<const Vek8u, 3>(call.color().view())),
     View<To>(View<Vek8u, 3>(result.view())));
    return result;
  };
}

/// f(source, destination, call) of neighbourhoods of the size that `mask` gives; the source has been
/// padded. `isConvolution`: the pixel in the middle of an even mask is the other one.
template <class F>
Picture ofNeighbourhoods(const Call& call, Size mask, size_t borderAt, bool isConvolution, F f) {
  enum { replicate, mirror, constant, none };
  const int rule = call.integer(borderAt);
  const Size size = call.size();
  if (rule == none) {
    if (mask.width > size.width || mask.height > size.height) {
      throw Refusal("the picture of " + Call::text(size) + " is too small without a border");
    }
    return toNew(call.picture, {size.width - mask.width + 1, size.height - mask.height + 1}, f);
  }
  const auto before = [&](int side) { return isConvolution ? side - 1 - side / 2 : side / 2; };
  const vek::Margins margins = {before(mask.width), before(mask.height),
                                mask.width - 1 - before(mask.width),
                                mask.height - 1 - before(mask.height)};
  return toNew(call.picture, [&](auto src, auto dst) {
    constexpr int n = viewChannels(dst);
    constexpr vek::PadBorder rules[] = {vek::PadBorder::replicate, vek::PadBorder::mirror,
                                        vek::PadBorder::constant};
    const vek::Image<Vek8u, n> padded = vek::pad<n>(src, margins, rules[rule]);
    f(padded.view(), dst);
  });
}

/// A convolution with the kernel of the first argument and the divisor of the second, 0 for its sum.
template <class F>
Picture convolved(Call& call, Size kernel, F f) {
  const std::vector<Vek32s> entries = call.integers(0);
  int divisor = call.integer(1);
  if (divisor == 0) divisor = std::max(1, std::accumulate(entries.begin(), entries.end(), 0));
  return ofNeighbourhoods(call, kernel, 2, true,
                          [&](auto src, auto dst) { f(src, dst, entries.data(), divisor); });
}

int tapsOf(const Call& call) {
  const Argument& kernel = call.argument(0);
  if (kernel.rows != 1 || kernel.numbers.size() < 2)
    throw Refusal("kernel: expected one row of two or more");
  return static_cast<int>(kernel.numbers.size());
}

/// 3 x 3 neighbourhoods, as often as the first argument says.
template <class F>
constexpr Run repeated(F) {
  return [](Call& call) {
    const auto once = [&](const Call& of) {
      return ofNeighbourhoods(of, {3, 3}, 1, false, [](auto src, auto dst) { F()(src, dst); });
    };
    Picture picture = once(call);
    for (int i = 1; i < call.integer(0); ++i) picture = once(call.with(picture));
    return picture;
  };
}

Picture copied(const Picture& picture) {
  return toNew(picture, [](auto src, auto dst) { vek::copy<viewChannels(dst)>(src, dst); });
}

Picture toColor(const Picture& picture) {
  if (std::holds_alternative<Color>(picture)) return copied(picture);
  return merged({&std::get<Gray>(picture), &std::get<Gray>(picture), &std::get<Gray>(picture)});
}

Picture toGray(Call& call) {
  const Argument& weights = call.argument(0);
  if (std::holds_alternative<Gray>(call.picture)) return copied(call.picture);
  Gray gray = made<Gray>(call.size());
  if (weights.numbers.empty()) {
    vek::rgbToGray(call.color(), gray);
    return gray;
  }
  const std::vector<Vek32s> q14 = call.integers(0);
  if (q14.size() != 3) throw Refusal("weights: expected three, for red, green and blue");
  vek::colorToGray(call.color(), gray, {q14[0], q14[1], q14[2]});
  return gray;
}

Picture twisted(Call& call) {
  const std::vector<Vek32s> q14 = call.integers(0);
  if (q14.size() != 12 || call.argument(0).rows != 3) {
    throw Refusal("matrix: expected three rows of four numbers, A,B,C,D/E,F,G,H/I,J,K,L");
  }
  vek::Twist twist;
  for (size_t i = 0; i < 12; ++i) twist[i / 4][i % 4] = q14[i];
  Color result = made<Color>(call.size());
  vek::colorTwist(call.color(), View<Vek8u, 3>(result.view()), twist);
  return result;
}

Picture reordered(Call& call) {
  const std::vector<Vek32s> order = call.integers(0);
  if (order.size() != 3) throw Refusal("order: expected three channels");
  Color result = made<Color>(call.size());
  vek::permuteChannels(View<const Vek8u, 3>(call.color().view()), View<Vek8u, 3>(result.view()),
                       std::array<int, 3>{order[0], order[1], order[2]});
  return result;
}

/// BT.709's curve, of grey pictures as well.
template <class F>
constexpr Run curved(F) {
  return [](Call& call) -> Picture {
    const Picture source = toColor(call.picture);
    Color result = made<Color>(call.size());
    F()(View<const Vek8u, 3>(std::get<Color>(source).view()), View<Vek8u, 3>(result.view()));
    if (std::holds_alternative<Gray>(call.picture)) return channel(result, 0);
    return result;
  };
}

Picture subsampled(Call& call) {
  const View<const vek::Rgb24> rgb = call.color();
  Color result = made<Color>(call.size());
  switch (call.integer(0)) {
    case 0:
      vek::yuvToRgb(vek::rgbToYuv<vek::Image444>(rgb), result);
      break;
    case 1:
      vek::yuvToRgb(vek::rgbToYuv<vek::Image422>(rgb), result);
      break;
    case 2:
      vek::yuvToRgb(vek::rgbToYuv<vek::Image420>(rgb), result);
      break;
    case 3:
      vek::yuvToRgb(vek::toPlanes(vek::toNv12(vek::rgbToYuv<vek::Image420>(rgb))), result);
      break;
    case 4:
      vek::yuvToRgb(vek::rgbToYuv<vek::Image<vek::Yuy2>>(rgb), result);
      break;
    default:
      vek::yCbCrToRgb(vek::rgbToYCbCr<vek::Yuy2>(rgb), result);
  }
  return result;
}

/// 16-bit pixels with fields of these widths, blue in the lowest bits, as bytes.
template <class Pixel>
Color expanded(const vek::Image<Pixel>& pixels, int red, int green, int blue) {
  Color result = made<Color>(pixels.size());
  for (int y = 0; y < pixels.height(); ++y) {
    const Vek16u* const from = pixels.row(y);
    Vek8u* to = result.row(y);
    for (int x = 0; x < pixels.width(); ++x) {
      const auto field = [&](int at, int bits) {
        const int most = (1 << bits) - 1;
        *to++ = static_cast<Vek8u>(((from[x] >> at & most) * 510 + most) / (2 * most));
      };
      field(green + blue, red);
      field(blue, green);
      field(0, blue);
    }
  }
  return result;
}

template <class Pixel>
Color in16Bits(Call& call, int red, int green, int blue) {
  constexpr int withoutDithering = 2;
  const View<const vek::Rgb24> rgb = call.color();
  if (call.integer(1) == withoutDithering) {
    const vek::Image<vek::YCbCr24> ycc = vek::rgbToYCbCr<vek::YCbCr24>(rgb);
    return expanded(vek::yCbCrToRgb<Pixel>(ycc.view()), red, green, blue);
  }
  return expanded(vek::dither<Pixel>(rgb, call.word<vek::Dither>(1)), red, green, blue);
}

Picture ditheredTo16Bits(Call& call) {
  switch (call.integer(0)) {
    case 0:
      return in16Bits<vek::Rgb565>(call, 5, 6, 5);
    case 1:
      return in16Bits<vek::Rgb555>(call, 5, 5, 5);
    default:
      return in16Bits<vek::Rgb444>(call, 4, 4, 4);
  }
}

template <int bits>
void ditherPacked(View<const Vek8u> src, View<Vek8u> dst, vek::Dither method) {
  const vek::Image<vek::Packed<bits>> packed = vek::dither<vek::Packed<bits>>(src, method);
  constexpr int most = (1 << bits) - 1;
  for (int y = 0; y < src.height(); ++y) {
    for (int x = 0; x < src.width(); ++x) {
      const int at = x * bits;
      const int sample = packed.row(y)[at / 8] >> (8 - bits - at % 8) & most;
      dst.row(y)[x] = static_cast<Vek8u>(sample * 255 / most);
    }
  }
}

template <int n>
std::vector<double> listed(const vek::Value<Vek32s, n>& value, double unit = 1) {
  if constexpr (n == 1) {
    return {value * unit};
  } else {
    std::vector<double> numbers;
    for (const Vek32s number : value) numbers.push_back(number * unit);
    return numbers;
  }
}

/// The sum of f(rows) over bands of rows that L1 counts without wrapping.
template <int n, class F>
std::vector<double> inBands(Size size, F f) {
  std::vector<double> sums(n);
  const int rows = std::max(1, (1 << 23) / size.width);
  for (int y = 0; y < size.height; y += rows) {
    const std::vector<double> sum = listed<n>(f(y, std::min(rows, size.height - y)));
    for (size_t c = 0; c < n; ++c) sums[c] += sum[c];
  }
  return sums;
}

/// Tells a number for each channel and leaves the picture as it is. f(View<const Vek8u, n>).
template <class F>
Picture measured(Call& call, const char* label, F f) {
  const std::vector<double> values = std::visit(
      [&](const auto& image) -> std::vector<double> { return f(bytes(image)); }, call.picture);
  std::vector<std::vector<double>> channels;
  channels.reserve(values.size());
  for (const double value : values) channels.push_back({value});
  call.tell({label}, std::move(channels));
  return copied(call.picture);
}

enum Norm { inf, l1, l2 };

Picture norm(Call& call) {
  return measured(call, "norm", [&](auto a) {
    constexpr int n = viewChannels(a);
    if (call.integer(0) == inf) return listed<n>(vek::normInf<n>(a));
    if (call.integer(0) == l2) return listed<n>(vek::normL2<n>(a));
    return inBands<n>(a.size(), [&](int y, int rows) { return vek::normL1<n>(a.rows(y, rows)); });
  });
}

Picture normDifference(Call& call) {
  return measured(call, "norm of the difference", [&](auto a) {
    constexpr int n = viewChannels(a);
    const View<const Vek8u, n> b = call.other<n>(0);
    if (call.integer(1) == inf) return listed<n>(vek::normDiffInf<n>(a, b));
    if (call.integer(1) == l2) return listed<n>(vek::normDiffL2<n>(a, b));
    return inBands<n>(a.size(), [&](int y, int rows) {
      return vek::normDiffL1<n>(a.rows(y, rows), b.rows(y, rows));
    });
  });
}

Picture normRelative(Call& call) {
  return measured(call, "relative norm of the difference", [&](auto a) {
    constexpr int n = viewChannels(a);
    constexpr int fraction = 16;  // bits
    constexpr double unit = 1. / (1 << fraction);
    const View<const Vek8u, n> b = call.other<n>(0);
    const int kind = call.integer(1);
    vek::Value<Vek32s, n> norm = {};
    const VekStatus status = kind == inf  ? vek::normRelInf<n>(a, b, &norm, -fraction)
                             : kind == l1 ? vek::normRelL1<n>(a, b, &norm, -fraction)
                                          : vek::normRelL2<n>(a, b, &norm, -fraction);
    if (status == vekStsDivByZero) {
      throw Refusal("@" + call.argument(0).text + " is black, and nothing is relative to that");
    }
    return listed<n>(norm, unit);
  });
}

Picture moments(Call& call) {
  enum { spatial, central, normalized, hu };
  const int kind = call.integer(0);
  std::vector<std::vector<double>> channels;
  std::visit(
      [&](const auto& image) {
        vek::Moments state;
        state.measure<channelsOf<decltype(image)>>(bytes(image));
        for (int c = 0; c < channelsOf<decltype(image)>; ++c) {
          const auto add = [&](const auto& list) {
            channels.emplace_back(list.begin(), list.end());
          };
          if (kind == hu)
            add(state.hu(c));
          else if (kind == spatial)
            add(state.spatial(c));
          else if (kind == central)
            add(state.central(c));
          else
            add(state.normalized(c));
        }
      },
      call.picture);
  if (kind == hu) {
    call.tell({"h1", "h2", "h3", "h4", "h5", "h6", "h7"}, std::move(channels));
  } else {
    call.tell({"m00", "m10", "m01", "m20", "m11", "m02", "m30", "m21", "m12", "m03"},
              std::move(channels));
  }
  return copied(call.picture);
}

Picture padded(Call& call) {
  const std::vector<Vek32s> sides = call.integers(0);
  if (sides.size() != 1 && sides.size() != 4) {
    throw Refusal("margins: expected one for all sides, or LEFT,TOP,RIGHT,BOTTOM");
  }
  const auto side = [&](size_t i) { return sides[sides.size() == 1 ? 0 : i]; };
  const Size from = call.size();
  const Size to = {from.width + side(0) + side(2), from.height + side(1) + side(3)};
  return toNew(call.picture, to, [&](auto src, auto dst) {
    constexpr int n = viewChannels(dst);
    constexpr vek::PadBorder rules[] = {vek::PadBorder::replicate, vek::PadBorder::mirror,
                                        vek::PadBorder::constant};
    vek::pad<n>(src, dst, {side(0), side(1)}, rules[call.integer(1)], call.value<n>(2));
  });
}

Picture cropped(Call& call) {
  const Size size = call.pair(0), all = call.size();
  vek::Point at = {(all.width - size.width) / 2, (all.height - size.height) / 2};
  if (!call.argument(1).numbers.empty()) at = {call.pair(1).width, call.pair(1).height};
  if (at.x < 0 || at.y < 0 || at.x > all.width - size.width || at.y > all.height - size.height) {
    throw Refusal("the part is not inside the picture of " + Call::text(all));
  }
  return toNew(call.picture, size, [&](auto src, auto dst) {
    vek::copy<viewChannels(dst)>(src.sub({at.x, at.y, size.width, size.height}), dst);
  });
}

constexpr Operation
    table
        [] =
            {
                {"arithmetic",
                 "add",
                 "Adds; the sum is divided by 2^scale",
                 {operand, scale},
                 withOperand([](auto a, const auto& b, auto dst, const Call& call) {
                   vek::add<viewChannels(dst)>(a, b, dst, call.integer(1));
                 })},
                {"arithmetic",
                 "sub",
                 "Subtracts, down to 0; the difference is divided by 2^scale",
                 {operand, scale},
                 withOperand([](auto a, const auto& b, auto dst, const Call& call) {
                   vek::sub<viewChannels(dst)>(a, b, dst, call.integer(1));
                 })},
                {"arithmetic",
                 "mul",
                 "Multiplies; the product is divided by 2^scale",
                 {operand, scale},
                 withOperand([](auto a, const auto& b, auto dst, const Call& call) {
                   vek::mul<viewChannels(dst)>(a, b, dst, call.integer(1));
                 })},
                {"arithmetic",
                 "mul-scale",
                 "Multiplies fractions of 255, as a mask does",
                 {operand},
                 withOperand([](auto a, const auto& b, auto dst, const Call&) {
                   vek::mulScale<viewChannels(dst)>(a, b, dst);
                 })},
                {"arithmetic",
                 "sqr",
                 "Squares; the square is divided by 2^scale",
                 {scale},
                 each([](auto src, auto dst, const Call& call) {
                   vek::sqr<viewChannels(dst)>(src, dst, call.integer(0));
                 })},
                {"logic",
                 "and",
                 "Bits that are set in both",
                 {operand},
                 withOperand([](auto a, const auto& b, auto dst, const Call&) {
                   vek::bitAnd<viewChannels(dst)>(a, b, dst);
                 })},
                {"logic",
                 "or",
                 "Bits that are set in either",
                 {operand},
                 withOperand([](auto a, const auto& b, auto dst, const Call&) {
                   vek::bitOr<viewChannels(dst)>(a, b, dst);
                 })},
                {"logic",
                 "xor",
                 "Bits that differ",
                 {operand},
                 withOperand([](auto a, const auto& b, auto dst, const Call&) {
                   vek::bitXor<viewChannels(dst)>(a, b, dst);
                 })},
                {"logic", "not", "The negative", {}, each([](auto src, auto dst, const Call&) {
                   vek::bitNot<viewChannels(dst)>(src, dst);
                 })},
                {"logic",
                 "shift-left",
                 "Shifts bits left; those that leave the byte are lost",
                 {Parameter{"bits", Kind::color, nullptr, 0, 8}},
                 each([](auto src, auto dst, const Call& call) {
                   constexpr int n = viewChannels(dst);
                   vek::shiftLeft<n>(src, call.value<n, Vek32u>(0), dst);
                 })},
                {"logic",
                 "shift-right",
                 "Shifts bits right",
                 {Parameter{"bits", Kind::color, nullptr, 0, 8}},
                 each([](auto src, auto dst, const Call& call) {
                   constexpr int n = viewChannels(dst);
                   vek::shiftRight<n>(src, call.value<n, Vek32u>(0), dst);
                 })},
                {"thresholds",
                 "threshold",
                 "Black below, white from the threshold on",
                 {Parameter{"threshold", Kind::integer, nullptr, 1, 255}},
                 each([](auto src, auto dst, const Call& call) {
                   constexpr int n = viewChannels(dst);
                   const auto same = [](int value) {
                     if constexpr (n == 1)
                       return static_cast<Vek8u>(value);
                     else
                       return std::array<Vek8u, 3>{Vek8u(value), Vek8u(value), Vek8u(value)};
                   };
                   const int threshold = call.integer(0);
                   vek::replaceBelow<n>(src, dst, same(threshold), same(0));
                   vek::replaceAbove<n>(dst, dst, same(threshold - 1), same(255));
                 })},
                {"thresholds",
                 "clamp-above",
                 "Samples above the threshold become the threshold",
                 {color("threshold")},
                 each([](auto src, auto dst, const Call& call) {
                   constexpr int n = viewChannels(dst);
                   vek::clampAbove<n>(src, dst, call.value<n>(0));
                 })},
                {"thresholds",
                 "clamp-below",
                 "Samples below the threshold become the threshold",
                 {color("threshold")},
                 each([](auto src, auto dst, const Call& call) {
                   constexpr int n = viewChannels(dst);
                   vek::clampBelow<n>(src, dst, call.value<n>(0));
                 })},
                {"thresholds",
                 "replace-above",
                 "Samples above the threshold become the value",
                 {color("threshold"), color("value")},
                 each([](auto src, auto dst, const Call& call) {
                   constexpr int n = viewChannels(dst);
                   vek::replaceAbove<n>(src, dst, call.value<n>(0), call.value<n>(1));
                 })},
                {"thresholds",
                 "replace-below",
                 "Samples below the threshold become the value",
                 {color("threshold"), color("value")},
                 each([](auto src, auto dst, const Call& call) {
                   constexpr int n = viewChannels(dst);
                   vek::replaceBelow<n>(src, dst, call.value<n>(0), call.value<n>(1));
                 })},
                {"thresholds",
                 "replace-outside",
                 "Samples below low and above high become two values",
                 {color("low"), color("low-value"), color("high"), color("high-value")},
                 each([](auto src, auto dst, const Call& call) {
                   constexpr int n = viewChannels(dst);
                   vek::replaceOutside<n>(src, dst, call.value<n>(0), call.value<n>(1),
                                          call.value<n>(2), call.value<n>(3));
                 })},
                {"whole picture",
                 "copy",
                 "Changes nothing",
                 {},
                 [](Call& call) { return copied(call.picture); }},
                {"whole picture",
                 "set",
                 "One color everywhere",
                 {color("value")},
                 [](Call& call) {
                   return toNew(call.picture, [&](auto, auto dst) {
                     vek::set(dst, call.value<viewChannels(dst)>(0));
                   });
                 }},
                {"color",
                 "gray",
                 "Luma, or a sum with weights in 1/16384",
                 {list("weights", -131072, 131072, "")},
                 toGray},
                {"color",
                 "color",
                 "Grey as a color picture",
                 {},
                 [](Call& call) { return toColor(call.picture); }},
                {"color",
                 "channel",
                 "One channel: 0 is red",
                 {integer("channel", 0, 2)},
                 [](Call& call) -> Picture { return channel(call.color(), call.integer(0)); }},
                {"color",
                 "order",
                 "Channels in another order: 2,1,0 exchanges red and blue",
                 {list("order", 0, 2)},
                 reordered},
                {"color",
                 "twist",
                 "A 3 x 4 matrix in 1/16384 on the channels and 1",
                 {list("matrix", -4194304, 4194304)},
                 twisted},
                {"color",
                 "gamma",
                 "From linear light by the curve of BT.709",
                 {},
                 curved([](auto src, auto dst) { vek::gammaForward(src, dst); })},
                {"color",
                 "linear-light",
                 "To linear light by the curve of BT.709",
                 {},
                 curved([](auto src, auto dst) { vek::gammaInverse(src, dst); })},
                {"color",
                 "to-ycbcr",
                 "Y, Cb, Cr, shown as red, green and blue",
                 {},
                 recolored<vek::Rgb24, vek::YCbCr24>(
                     [](auto a, auto b) { vek::rgbToYCbCr(a, b); })},
                {"color",
                 "from-ycbcr",
                 "Back from Y, Cb, Cr",
                 {},
                 recolored<vek::YCbCr24, vek::Rgb24>(
                     [](auto a, auto b) { vek::yCbCrToRgb(a, b); })},
                {"color",
                 "to-yuv",
                 "Y, U, V in full range",
                 {},
                 recolored<vek::Rgb24, vek::Yuv24>([](auto a, auto b) { vek::rgbToYuv(a, b); })},
                {"color",
                 "from-yuv",
                 "Back from Y, U, V",
                 {},
                 recolored<vek::Yuv24, vek::Rgb24>([](auto a, auto b) { vek::yuvToRgb(a, b); })},
                {"color",
                 "to-xyz",
                 "CIE X, Y, Z",
                 {},
                 recolored<vek::Rgb24, vek::Xyz24>([](auto a, auto b) { vek::rgbToXyz(a, b); })},
                {"color",
                 "from-xyz",
                 "Back from X, Y, Z",
                 {},
                 recolored<vek::Xyz24, vek::Rgb24>([](auto a, auto b) { vek::xyzToRgb(a, b); })},
                {"color",
                 "to-luv",
                 "CIE L, u, v",
                 {},
                 recolored<vek::Rgb24, vek::Luv24>([](auto a, auto b) { vek::rgbToLuv(a, b); })},
                {"color",
                 "from-luv",
                 "Back from L, u, v",
                 {},
                 recolored<vek::Luv24, vek::Rgb24>([](auto a, auto b) { vek::luvToRgb(a, b); })},
                {"color",
                 "to-ycc",
                 "Photo YCC",
                 {},
                 recolored<vek::Rgb24, vek::Ycc24>([](auto a, auto b) { vek::rgbToYcc(a, b); })},
                {"color",
                 "from-ycc",
                 "Back from photo YCC",
                 {},
                 recolored<vek::Ycc24, vek::Rgb24>([](auto a, auto b) { vek::yccToRgb(a, b); })},
                {"color",
                 "to-hls",
                 "Hue, lightness, saturation",
                 {},
                 recolored<vek::Rgb24, vek::Hls24>([](auto a, auto b) { vek::rgbToHls(a, b); })},
                {"color",
                 "from-hls",
                 "Back from hue, lightness, saturation",
                 {},
                 recolored<vek::Hls24, vek::Rgb24>([](auto a, auto b) { vek::hlsToRgb(a, b); })},
                {"color",
                 "to-hsv",
                 "Hue, saturation, value",
                 {},
                 recolored<vek::Rgb24, vek::Hsv24>([](auto a, auto b) { vek::rgbToHsv(a, b); })},
                {"color",
                 "from-hsv",
                 "Back from hue, saturation, value",
                 {},
                 recolored<vek::Hsv24, vek::Rgb24>([](auto a, auto b) { vek::hsvToRgb(a, b); })},
                {"color",
                 "subsample",
                 "What is left after storing as YUV or, the last one, YCbCr",
                 {words("format", "444|422|420|nv12|yuy2|ycbcr422")},
                 subsampled},
                {"dithering",
                 "dither",
                 "Fewer levels in each channel",
                 {integer("levels", 2, 256), ditherMethod},
                 [](Call& call) {
                   return byChannels(call.picture, [&](View<const Vek8u> src, View<Vek8u> dst) {
                     vek::dither(src, dst, call.integer(0), call.word<vek::Dither>(1));
                   });
                 }},
                {"dithering",
                 "dither-bits",
                 "Samples of 1, 2 or 4 bits",
                 {words("bits", "1|2|4"), ditherMethod},
                 [](Call& call) {
                   return byChannels(call.picture, [&](View<const Vek8u> src, View<Vek8u> dst) {
                     constexpr auto functions =
                         std::array{ditherPacked<1>, ditherPacked<2>, ditherPacked<4>};
                     functions[static_cast<size_t>(call.integer(0))](src, dst,
                                                                     call.word<vek::Dither>(1));
                   });
                 }},
                {"dithering",
                 "pixels16",
                 "As 16-bit pixels show it",
                 {words("format", "rgb565|rgb555|rgb444"),
                  words("method", "ordered|diffusion|none", "ordered")},
                 ditheredTo16Bits},
                {"filters",
                 "box",
                 "The mean of a neighbourhood",
                 {mask(2), border},
                 [](Call& call) {
                   const Size mask = call.pair(0);
                   return ofNeighbourhoods(call, mask, 1, false, [&](auto src, auto dst) {
                     vek::filterBox<viewChannels(dst)>(src, dst, mask);
                   });
                 }},
                {"filters",
                 "median",
                 "The median of a neighbourhood of odd sides, in each channel",
                 {mask(1), border},
                 [](Call& call) {
                   const Size mask = call.pair(0);
                   if (mask.width % 2 == 0 || mask.height % 2 == 0)
                     throw Refusal("mask: sides must be odd");
                   return ofNeighbourhoods(call, mask, 1, false, [&](auto src, auto dst) {
                     vek::filterMedian<viewChannels(dst)>(src, dst, mask);
                   });
                 }},
                {"filters",
                 "median-color",
                 "The vector median of 3 x 3 or 5 x 5 pixels",
                 {words("mask", "3x3|5x5"), border},
                 [](Call& call) {
                   const bool isSmall = call.integer(0) == 0;
                   const int side = isSmall ? 3 : 5;
                   call.color();
                   return ofNeighbourhoods(call, {side, side}, 1, false, [&](auto src, auto dst) {
                     if constexpr (viewChannels(dst) == 3) {
                       vek::filterMedianColor(
                           src, dst, isSmall ? vek::MedianMask::square3 : vek::MedianMask::square5);
                     }
                   });
                 }},
                {"filters",
                 "filter",
                 "A convolution, divided by the kernel's sum unless a divisor is given",
                 {list("kernel", -32768, 32767), integer("divisor", 0, 1 << 30, "0"), border},
                 [](Call& call) {
                   const Argument& kernel = call.argument(0);
                   const Size mask = {static_cast<int>(kernel.numbers.size()) / kernel.rows,
                                      kernel.rows};
                   if (mask.width < 2 || mask.height < 2) {
                     throw Refusal("kernel: sides are 2 at least; see row and column");
                   }
                   return convolved(
                       call, mask, [&](auto src, auto dst, const Vek32s* entries, int divisor) {
                         vek::filter<viewChannels(dst)>(src, dst, {entries, mask}, divisor);
                       });
                 }},
                {"filters",
                 "row",
                 "A convolution along rows",
                 {list("kernel", -32768, 32767), integer("divisor", 0, 1 << 30, "0"), border},
                 [](Call& call) {
                   const int count = tapsOf(call);
                   return convolved(
                       call, {count, 1}, [&](auto src, auto dst, const Vek32s* taps, int divisor) {
                         vek::filterRow<viewChannels(dst)>(src, dst, {taps, count}, divisor);
                       });
                 }},
                {"filters",
                 "column",
                 "A convolution along columns",
                 {list("kernel", -32768, 32767), integer("divisor", 0, 1 << 30, "0"), border},
                 [](Call& call) {
                   const int count = tapsOf(call);
                   return convolved(
                       call, {1, count}, [&](auto src, auto dst, const Vek32s* taps, int divisor) {
                         vek::filterColumn<viewChannels(dst)>(src, dst, {taps, count}, divisor);
                       });
                 }},
                {"filters",
                 "erode",
                 "The least of 3 x 3 samples",
                 {integer("times", 1, 1000, "1"), border},
                 repeated([](auto src, auto dst) { vek::erode<viewChannels(dst)>(src, dst); })},
                {"filters",
                 "dilate",
                 "The greatest of 3 x 3 samples",
                 {integer("times", 1, 1000, "1"), border},
                 repeated([](auto src, auto dst) { vek::dilate<viewChannels(dst)>(src, dst); })},
                {"geometry",
                 "crop",
                 "A part, from the middle unless its corner is given",
                 {size("size", 1, largestSide), Parameter{"at", Kind::list, "", 0, largestSide}},
                 cropped},
                {"geometry",
                 "pad",
                 "A border: one number for all sides, or LEFT,TOP,RIGHT,BOTTOM",
                 {list("margins", 0, largestSide),
                  words("border", "replicate|mirror|constant", "replicate"), background},
                 padded},
                {"geometry",
                 "mirror",
                 "Mirrored",
                 {words("axis", "top-bottom|left-right|both")},
                 each([](auto src, auto dst, const Call& call) {
                   vek::mirror<viewChannels(dst)>(src, dst, call.word<vek::MirrorAxis>(0));
                 })},
                {"geometry",
                 "rotate",
                 "Quarter turns clockwise",
                 {words("degrees", "90|180|270")},
                 rotated},
                {"geometry", "transpose", "Rows become columns", {}, transposed},
                {"geometry",
                 "resize",
                 "Another size; before much reduction, box filters what would alias",
                 {size("size", 1, largestSide), interpolation},
                 resized},
                {"geometry",
                 "affine",
                 "Turned clockwise, scaled and sheared about the middle",
                 {number("angle", -3600, 3600, "0"), number("scale", .001, 1000, "1"),
                  number("shear", -100, 100, "0"), interpolation, outside, background},
                 affine},
                {"geometry",
                 "perspective",
                 "Four corners, clockwise from the top left, become those of the picture, or the "
                 "reverse",
                 {corner("top-left"), corner("top-right"), corner("bottom-right"),
                  corner("bottom-left"), words("direction", "straighten|project", "straighten"),
                  interpolation},
                 perspective},
                {"transforms",
                 "spectrum",
                 "The logarithm of the Fourier spectrum of the middle, 0 in its middle",
                 {},
                 spectrum},
                {"transforms",
                 "low-pass",
                 "Frequencies up to this many periods across the picture",
                 {integer("periods", 0, 512)},
                 [](Call& call) { return bandPass(call, true); }},
                {"transforms",
                 "high-pass",
                 "Frequencies above this many periods, about grey",
                 {integer("periods", 0, 512)},
                 [](Call& call) { return bandPass(call, false); }},
                {"transforms",
                 "dct",
                 "The logarithm of the coefficients of 8 x 8 blocks",
                 {},
                 cosineSpectrum},
                {"transforms",
                 "dct-keep",
                 "8 x 8 blocks with their first coefficients alone, in zigzag order",
                 {integer("count", 1, 64)},
                 keptCoefficients},
                {"figures", "norm", "Prints the norm of each channel", {normKind}, norm},
                {"figures",
                 "norm-diff",
                 "Prints the norm of the difference from another picture",
                 {Parameter{"picture", Kind::picture}, normKind},
                 normDifference},
                {"figures",
                 "norm-rel",
                 "The same relative to the other picture's norm",
                 {Parameter{"picture", Kind::picture}, normKind},
                 normRelative},
                {"figures",
                 "moments",
                 "Prints the moments of each channel up to the third order",
                 {words("kind", "spatial|central|normalized|hu", "central")},
                 moments},
};

}  // namespace

std::span<const Operation> operations() {
  return table;
}

}  // namespace chain
