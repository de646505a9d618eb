// Conversions of one interleaved image to another, row by row.
#pragma once

#include "vek/vek.h"

#include <stddef.h>

#include "core/region.h"

namespace vek {

/// Converts a row of n >= 1 pixels. Both pointers may be at any address; source and destination do
/// not overlap.
using ConvertRow = void (*)(ptrdiff_t n, const Vek8u* src, Vek8u* dst);

/// Images of three bytes a pixel.
template <class Bytes>
using Triples = Plane<Bytes, 3>;
/// Images of four bytes for two pixels: Y0, Cb, Y1, Cr or Y0, U, Y1, V.
template <class Bytes>
using Pairs422 = Plane<Bytes, 4, 2>;

/// Converts a region of three bytes a pixel to another one.
inline void convertTriples(ConvertRow row, const Vek8u* pSrc, int srcStep, Vek8u* pDst, int dstStep,
                           VekiSize roi) {
  forEachRow(roi.width, roi.height, row, Triples<const Vek8u>{pSrc, srcStep},
             Triples<Vek8u>{pDst, dstStep});
}

}  // namespace vek
