#pragma once

#include "vek/isp.hpp"

#include <gst/gst.h>

// The properties of vekisp.

namespace vek::gst {

/// What has been set since the last frame. All but the first are handed to the Isp that is there.
enum Change : unsigned {
  changedShape = 1,  ///< another Isp is needed
  changedLevels = 2,
  changedGains = 4,
  changedCurve = 8,
  changedColor = 16,
  changedBalance = 32,
  changedControl = 64,
  changedExposure = 128
};

/// What the properties say, under the object's lock.
struct Properties {
  IspSettings isp;  ///< format, bits, order and size are those of untyped frames
  Exposure taken = {1, 1};
  int stride = 0;
  int framesPer = 0, seconds = 1;
  bool postsMessages = true;
  unsigned changed = 0;

  Properties() { isp.exposure.on = false; }
};

/// By Bayer.
inline constexpr const char* orderNames[] = {"rggb", "grbg", "gbrg", "bggr"};

/// Adds the properties to the element's class.
void installProperties(GObjectClass* object);

/// Sets one of them, and returns what that changes. A value that it cannot be is warned about.
unsigned setProperty(Properties& p, GObject* self, guint id, const GValue* value, GParamSpec* spec);

void getProperty(const Properties& p, GObject* self, guint id, GValue* value, GParamSpec* spec);

}  // namespace vek::gst
