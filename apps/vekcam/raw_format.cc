#include "vekcam/raw_format.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <fmt/format.h>

namespace vekcam {
namespace {

using vek::Bayer;
using vek::Raw;

struct Packing {
  Raw raw;
  int bits;
  std::array<const char*, 4> fourCcs;  ///< of RGGB, GRBG, GBRG, BGGR
};

constexpr Packing packings[] = {
    {Raw::bytes, 8, {"RGGB", "GRBG", "GBRG", "BA81"}},
    {Raw::plain16, 10, {"RG10", "BA10", "GB10", "BG10"}},
    {Raw::plain16, 12, {"RG12", "BA12", "GB12", "BG12"}},
    {Raw::plain16, 14, {"RG14", "GR14", "GB14", "BG14"}},
    {Raw::plain16, 16, {"RG16", "GR16", "GB16", "BYR2"}},
    {Raw::csi2_10, 10, {"pRAA", "pgAA", "pGAA", "pBAA"}},
    {Raw::csi2_12, 12, {"pRCC", "pgCC", "pGCC", "pBCC"}},
    {Raw::csi2_14, 14, {"pREE", "pgEE", "pGEE", "pBEE"}},
};

constexpr std::array<const char*, 4> orders = {"rggb", "grbg", "gbrg", "bggr"};

constexpr vek::Size usualSizes[] = {
    {320, 240},   {640, 360},   {640, 480},   {640, 512},   {800, 600},   {1024, 768},
    {1280, 720},  {1280, 800},  {1280, 960},  {1280, 1024}, {1296, 972},  {1440, 1080},
    {1456, 1088}, {1536, 864},  {1600, 1200}, {1600, 1300}, {1640, 1232}, {1920, 1080},
    {1920, 1200}, {2028, 1080}, {2028, 1520}, {2048, 1536}, {2304, 1296}, {2560, 1440},
    {2592, 1944}, {3264, 2448}, {3280, 2464}, {3840, 2160}, {4032, 3024}, {4056, 3040},
    {4096, 2160}, {4608, 2592}, {7680, 4320}, {8000, 6000}, {9152, 6944}};

/// Takes `text` off the front of `name` if it is there.
bool skip(std::string_view& name, std::string_view text) {
  if (!name.starts_with(text)) return false;
  name.remove_prefix(text.size());
  return true;
}

std::optional<RawFormat> plainName(std::string_view name) {
  std::string lower(name);
  std::ranges::transform(lower, lower.begin(), [](unsigned char c) { return std::tolower(c); });
  std::string_view rest = lower;
  skip(rest, "s");
  RawFormat format;
  const auto order = std::ranges::find_if(orders, [&](const char* o) { return skip(rest, o); });
  if (order == orders.end()) return std::nullopt;
  format.order = static_cast<Bayer>(order - orders.begin());
  format.bits = 0;
  while (!rest.empty() && rest[0] >= '0' && rest[0] <= '9' && format.bits < 100) {
    format.bits = 10 * format.bits + (rest[0] - '0');
    rest.remove_prefix(1);
  }
  const bool isPacked = skip(rest, "_csi2p") || skip(rest, "p");
  if (!rest.empty()) return std::nullopt;
  switch (format.bits) {
    case 8:
      format.packing = Raw::bytes;
      return isPacked ? std::nullopt : std::optional(format);
    case 10:
      format.packing = isPacked ? Raw::csi2_10 : Raw::plain16;
      return format;
    case 12:
      format.packing = isPacked ? Raw::csi2_12 : Raw::plain16;
      return format;
    case 14:
      format.packing = isPacked ? Raw::csi2_14 : Raw::plain16;
      return format;
    default:
      format.packing = Raw::plain16;
      return format.bits >= 9 && format.bits <= 16 && !isPacked ? std::optional(format)
                                                                : std::nullopt;
  }
}

const Packing* packingOf(const RawFormat& format) {
  const auto same = [&](const Packing& p) {
    return p.raw == format.packing && p.bits == format.bits;
  };
  const auto* const found = std::ranges::find_if(packings, same);
  return found == std::end(packings) ? nullptr : found;
}

}  // namespace

std::optional<RawFormat> rawFormatNamed(std::string_view name) {
  for (const Packing& packing : packings) {
    const auto& codes = packing.fourCcs;
    const auto code = std::ranges::find(codes, name);
    if (code != codes.end())
      return RawFormat{packing.raw, packing.bits, static_cast<Bayer>(code - codes.begin())};
  }
  return plainName(name);
}

std::string nameOf(const RawFormat& format) {
  const auto order = static_cast<size_t>(format.order);
  if (const Packing* const packing = packingOf(format)) return packing->fourCcs[order];
  return fmt::format("{}{}", orders[order], format.bits);
}

std::string describe(const RawFormat& format) {
  switch (format.packing) {
    case Raw::bytes:
      return "8 bits";
    case Raw::plain16:
      return fmt::format("{} bits in 16", format.bits);
    default:
      return fmt::format("packed RAW{}", format.bits);
  }
}

int64_t rowBytes(const RawFormat& format, int width) {
  return vek::rawRowBytes(format.packing, width);
}

std::string guessOf(int64_t bytes, vek::Size size, vek::Bayer order) {
  const auto guess = [&](vek::Size s) {
    for (const Packing& packing : packings) {
      const RawFormat format = {packing.raw, packing.bits, order};
      if (rowBytes(format, s.width) * s.height != bytes) continue;
      // Words of 10 to 16 bits have the same size; 10 is the most usual one.
      const bool isAnyWord = packing.raw == Raw::plain16;
      return fmt::format("{} bytes is {} of {}x{}: --format {}{}", withCommas(bytes),
                         isAnyWord ? "16-bit words" : describe(format), s.width, s.height,
                         nameOf(format),
                         size.width == 0 ? fmt::format(" --size {}x{}", s.width, s.height) : "");
    }
    return std::string();
  };
  if (size.width != 0) return guess(size);
  for (const vek::Size usual : usualSizes) {
    std::string text = guess(usual);
    if (!text.empty()) return text;
  }
  return "";
}

std::string withCommas(int64_t number) {
  std::string text;
  for (; number >= 1000; number /= 1000) text = fmt::format(",{:03}{}", number % 1000, text);
  return std::to_string(number) + text;
}

}  // namespace vekcam
