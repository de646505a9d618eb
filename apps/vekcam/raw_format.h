// Raw formats of sensors by their names.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vek/view.hpp>

namespace vekcam {

/// How a sensor's samples lie in a file.
struct RawFormat {
  vek::Raw packing = vek::Raw::plain16;
  int bits = 10;  ///< of a sample
  vek::Bayer order = vek::Bayer::rggb;

  bool operator==(const RawFormat&) const = default;
};

/// The format of a V4L2 fourCC (RG10, pBAA, BG12, pGCC, BYR2, ...), whose letters' cases matter, or of
/// a plain name in letters of any case: an order of colours, the bits, and P for packed samples, as in
/// rggb10, bggr12p, SGRBG10_CSI2P.
std::optional<RawFormat> rawFormatNamed(std::string_view name);

/// The fourCC, or the plain name of a format that has none.
std::string nameOf(const RawFormat& format);

/// "packed RAW10", "10 bits in 16".
std::string describe(const RawFormat& format);

/// Bytes of a row of samples, without padding.
int64_t rowBytes(const RawFormat& format, int width);

/// A hint at what a file of so many bytes may hold, of frames of `size` or, if its width is 0, of sizes
/// that sensors have: "2,592,000 bytes is packed RAW10 of 1920x1080: --format pRAA --size 1920x1080".
/// Empty if nothing fits. Of the formats of the same size the one with `order` is named.
std::string guessOf(int64_t bytes, vek::Size size, vek::Bayer order);

/// 2592000 as "2,592,000".
std::string withCommas(int64_t number);

}  // namespace vekcam
