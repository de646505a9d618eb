// The constants of a C1 or C3 operation, repeated over a run of bytes. A kernel reads them as it reads
// the row of a second image.
#pragma once

#include "vek/vek.h"

#include <stddef.h>
#include <string.h>

namespace vek {

struct Pattern {
  /// Three of the longest vectors, which is a multiple of every vector's length and of three channels.
  static constexpr int period = 192;

  /// One period, and as much again as a vector needs that begins at the second or third channel.
  alignas(64) Vek8u bytes[period + 24];

  /// Repeats `values[0]`, or the three values in channel order.
  Pattern(const Vek8u* values, int channels) {
    if (channels == 1) {
      memset(bytes, values[0], sizeof(bytes));
      return;
    }
    Vek8u unit[24];
    for (int i = 0; i < 24; ++i) unit[i] = values[i % 3];
    for (size_t at = 0; at < sizeof(bytes); at += sizeof(unit)) memcpy(bytes + at, unit, 24);
  }
};

}  // namespace vek
