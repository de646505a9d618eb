// The properties of vekisp: their types, and what they set.

#include "isp_properties.h"

#include <algorithm>
#include <array>

#include "video.h"

namespace vek::gst {
namespace {

enum Property {
  propFormat = 1,
  propBits,
  propOrder,
  propWidth,
  propHeight,
  propStride,
  propFramerate,
  propBlackLevel,
  propWhiteLevel,
  propGains,
  propDigitalGain,
  propCurve,
  propMatrix,
  propMatrixGains,
  propMatrixPlace,
  propRotation,
  propCrop,
  propScale,
  propAutoWhiteBalance,
  propAutoExposure,
  propExposureTarget,
  propShortestTime,
  propLongestTime,
  propSmallestGain,
  propLargestGain,
  propExposureTime,
  propExposureGain,
  propPostMessages
};

GType enumType(const char* name, const GEnumValue* values) {
  const GType known = g_type_from_name(name);
  return known != 0 ? known : g_enum_register_static(name, values);
}

GType formatType() {
  static const GEnumValue values[] = {
      {static_cast<int>(Raw::bytes), "One byte a sample", "bytes"},
      {static_cast<int>(Raw::plain16), "Little-endian words of `bits` valid bits", "plain16"},
      {static_cast<int>(Raw::csi2_10), "RAW10: 4 samples in 5 bytes", "csi2-10"},
      {static_cast<int>(Raw::csi2_12), "RAW12: 2 samples in 3 bytes", "csi2-12"},
      {static_cast<int>(Raw::csi2_14), "RAW14: 4 samples in 7 bytes", "csi2-14"},
      {0, nullptr, nullptr}};
  return enumType("GstVekIspFormat", values);
}

GType orderType() {
  static const GEnumValue values[] = {{static_cast<int>(Bayer::rggb), "R G, G B", orderNames[0]},
                                      {static_cast<int>(Bayer::grbg), "G R, B G", orderNames[1]},
                                      {static_cast<int>(Bayer::gbrg), "G B, R G", orderNames[2]},
                                      {static_cast<int>(Bayer::bggr), "B G, G R", orderNames[3]},
                                      {0, nullptr, nullptr}};
  return enumType("GstVekIspOrder", values);
}

GType curveType() {
  static const GEnumValue values[] = {{static_cast<int>(ToneCurve::srgb), "IEC 61966-2-1", "srgb"},
                                      {static_cast<int>(ToneCurve::bt709), "ITU-R BT.709", "bt709"},
                                      {static_cast<int>(ToneCurve::linear), "None", "linear"},
                                      {0, nullptr, nullptr}};
  return enumType("GstVekIspCurve", values);
}

GType placeType() {
  static const GEnumValue values[] = {
      {static_cast<int>(MatrixPlace::linear), "Before the tone curve: exact", "linear"},
      {static_cast<int>(MatrixPlace::afterCurve), "After the tone curve: faster", "after-curve"},
      {0, nullptr, nullptr}};
  return enumType("GstVekIspMatrixPlace", values);
}

/// Reads exactly `count` numbers.
bool numbers(GObject* self, const char* name, const GValue* array, double* to, guint count) {
  bool isRight = gst_value_array_get_size(array) == count;
  std::array<double, 9> read = {};
  for (guint i = 0; isRight && i < count; ++i) {
    GValue number = G_VALUE_INIT;
    g_value_init(&number, G_TYPE_DOUBLE);
    isRight = g_value_transform(gst_value_array_get_value(array, i), &number);
    if (isRight) read[i] = g_value_get_double(&number);
    g_value_unset(&number);
  }
  if (isRight) {
    std::copy_n(read.begin(), count, to);
  } else {
    g_warning("%s: %s takes %u numbers", GST_OBJECT_NAME(self), name, count);
  }
  return isRight;
}

void setNumbers(GValue* array, const double* from, guint count) {
  for (guint i = 0; i < count; ++i) {
    GValue number = G_VALUE_INIT;
    g_value_init(&number, G_TYPE_DOUBLE);
    g_value_set_double(&number, from[i]);
    gst_value_array_append_and_take_value(array, &number);
  }
}

void setGains(ColorGains& gains, const double* from) {
  gains = {from[0], from[1], from[2]};
}

}  // namespace

void installProperties(GObjectClass* object) {
  constexpr auto fixed = static_cast<GParamFlags>(G_PARAM_READWRITE | G_PARAM_STATIC_STRINGS |
                                                  GST_PARAM_MUTABLE_READY);
  constexpr auto live = static_cast<GParamFlags>(G_PARAM_READWRITE | G_PARAM_STATIC_STRINGS |
                                                 GST_PARAM_MUTABLE_PLAYING);
  const IspSettings defaults;
  const ExposureSettings& exposure = defaults.exposure;
  const auto add = [&](Property id, GParamSpec* spec) {
    g_object_class_install_property(object, id, spec);
  };
  const auto real = [&](Property id, const char* name, const char* text, double least, double most,
                        double value) {
    add(id, g_param_spec_double(name, nullptr, text, least, most, value, live));
  };
  const auto whole = [&](Property id, const char* name, const char* text, int least, int most,
                         int value, GParamFlags flags) {
    add(id, g_param_spec_int(name, nullptr, text, least, most, value, flags));
  };
  const auto list = [&](Property id, const char* name, const char* text, double least) {
    add(id,
        gst_param_spec_array(
            name, nullptr, text,
            g_param_spec_double("number", nullptr, "A number", least, G_MAXDOUBLE, 0, live), live));
  };
  constexpr double tiny = G_MINDOUBLE, huge = G_MAXDOUBLE;

  add(propFormat, g_param_spec_enum("format", nullptr, "How samples of untyped frames are packed",
                                    formatType(), static_cast<int>(defaults.format), fixed));
  whole(propBits, "bits", "Valid bits of untyped plain16 samples, 9 to 16; 0 is 10", 0, 16, 0,
        fixed);
  add(propOrder, g_param_spec_enum("order", nullptr, "Colours of untyped frames' first samples",
                                   orderType(), static_cast<int>(defaults.order), fixed));
  whole(propWidth, "width", "Samples in a row of untyped frames", 0, largestSide, 0, fixed);
  whole(propHeight, "height", "Rows of untyped frames", 0, largestSide, 0, fixed);
  whole(propStride, "stride", "Bytes from row to row unless buffers say so; 0: as usual", 0,
        G_MAXINT, 0, fixed);
  add(propFramerate,
      gst_param_spec_fraction("framerate", nullptr, "Frame rate of untyped frames, which get times",
                              0, 1, G_MAXINT, 1, 0, 1, fixed));
  whole(propBlackLevel, "black-level", "Black level in the samples' units", 0, 65534, 0, live);
  whole(propWhiteLevel, "white-level",
        "Where samples saturate, in their units; 0: at their largest value", 0, 65535, 0, live);
  list(propGains, "gains", "Gains of red, green and blue; those that white balance begins with", 0);
  real(propDigitalGain, "digital-gain", "Gain on top of them", 1, 8, 1);
  add(propCurve, g_param_spec_enum("curve", nullptr, "Tone curve", curveType(),
                                   static_cast<int>(defaults.curve), live));
  list(propMatrix, "matrix", "Camera to linear sRGB, 9 numbers by rows, which are scaled to sum 1",
       -huge);
  list(propMatrixGains, "matrix-gains",
       "Gains of the light in which the matrix was measured; zeros: of any light", 0);
  add(propMatrixPlace,
      g_param_spec_enum("matrix-place", nullptr, "Where the matrix is applied", placeType(),
                        static_cast<int>(defaults.color.place), live));
  add(propRotation, g_param_spec_enum("rotation", nullptr, "Rotation of the picture",
                                      rotationType(), static_cast<int>(defaults.rotation), live));
  list(propCrop, "crop", "Column, row, width and height of the part that is shown; zeros: all", 0);
  whole(propScale, "scale", "1, 2 or 4: blocks of so many samples a side become a pixel", 1, 4, 1,
        live);
  add(propAutoWhiteBalance, g_param_spec_boolean("auto-white-balance", nullptr,
                                                 "Whether gains follow the light", TRUE, live));
  add(propAutoExposure,
      g_param_spec_boolean("auto-exposure", nullptr,
                           "Whether messages tell what to expose the next frame with", FALSE,
                           live));
  real(propExposureTarget, "exposure-target", "Mean green sample that is aimed at, of 1023", 1,
       1022, exposure.target);
  real(propShortestTime, "min-exposure-time", "Shortest exposure time, in any unit", tiny, huge,
       exposure.least.time);
  real(propLongestTime, "max-exposure-time", "Longest exposure time", tiny, huge,
       exposure.most.time);
  real(propSmallestGain, "min-exposure-gain", "Smallest gain of the sensor", tiny, huge,
       exposure.least.gain);
  real(propLargestGain, "max-exposure-gain", "Largest gain of the sensor", tiny, huge,
       exposure.most.gain);
  real(propExposureTime, "exposure-time", "What the next frame was exposed with", tiny, huge, 1);
  real(propExposureGain, "exposure-gain", "The sensor's gain when the next frame was taken", tiny,
       huge, 1);
  add(propPostMessages,
      g_param_spec_boolean("post-messages", nullptr,
                           "Whether a message tells of every frame while something is automatic",
                           TRUE, live));

  for (const GType type : {formatType(), orderType(), curveType(), placeType(), rotationType()}) {
    gst_type_mark_as_plugin_api(type, static_cast<GstPluginAPIFlags>(0));
  }
}

unsigned setProperty(Properties& p, GObject* self, guint id, const GValue* value,
                     GParamSpec* spec) {
  IspSettings& isp = p.isp;
  double read[9];
  unsigned changed = 0;
  switch (id) {
    case propFormat:
      isp.format = static_cast<Raw>(g_value_get_enum(value));
      break;
    case propBits:
      isp.bits = g_value_get_int(value);
      break;
    case propOrder:
      isp.order = static_cast<Bayer>(g_value_get_enum(value));
      break;
    case propWidth:
      isp.size.width = g_value_get_int(value);
      break;
    case propHeight:
      isp.size.height = g_value_get_int(value);
      break;
    case propStride:
      p.stride = g_value_get_int(value);
      changed = changedShape;
      break;
    case propFramerate:
      p.framesPer = gst_value_get_fraction_numerator(value);
      p.seconds = gst_value_get_fraction_denominator(value);
      break;
    case propBlackLevel:
      isp.black = g_value_get_int(value);
      changed = changedLevels;
      break;
    case propWhiteLevel:
      isp.white = g_value_get_int(value);
      changed = changedLevels;
      break;
    case propGains:
      if (!numbers(self, spec->name, value, read, 3)) break;
      setGains(isp.gains, read);
      changed = changedGains;
      break;
    case propDigitalGain:
      isp.digitalGain = g_value_get_double(value);
      changed = changedGains;
      break;
    case propCurve:
      isp.curve = static_cast<ToneCurve>(g_value_get_enum(value));
      changed = changedCurve;
      break;
    case propMatrix:
      if (!numbers(self, spec->name, value, read, 9)) break;
      for (std::size_t i = 0; i < 9; ++i) isp.color.matrix[i / 3][i % 3] = read[i];
      changed = changedColor;
      break;
    case propMatrixGains:
      if (!numbers(self, spec->name, value, read, 3)) break;
      setGains(isp.color.gains, read);
      changed = changedColor;
      break;
    case propMatrixPlace:
      isp.color.place = static_cast<MatrixPlace>(g_value_get_enum(value));
      changed = changedColor;
      break;
    case propRotation:
      isp.rotation = static_cast<Rotation>(g_value_get_enum(value));
      changed = changedShape;
      break;
    case propCrop: {
      if (!numbers(self, spec->name, value, read, 4)) break;
      const auto side = [&](int i) { return static_cast<int>(std::clamp(read[i], -1., 1e6)); };
      isp.crop = {side(0), side(1), side(2), side(3)};
      changed = changedShape;
      break;
    }
    case propScale:
      isp.scale = g_value_get_int(value);
      changed = changedShape;
      break;
    case propAutoWhiteBalance:
      isp.whiteBalance = g_value_get_boolean(value);
      changed = changedBalance;
      break;
    case propAutoExposure:
      isp.exposure.on = g_value_get_boolean(value);
      changed = changedControl;
      break;
    case propExposureTarget:
      isp.exposure.target = g_value_get_double(value);
      changed = changedControl;
      break;
    case propShortestTime:
      isp.exposure.least.time = g_value_get_double(value);
      changed = changedControl;
      break;
    case propLongestTime:
      isp.exposure.most.time = g_value_get_double(value);
      changed = changedControl;
      break;
    case propSmallestGain:
      isp.exposure.least.gain = g_value_get_double(value);
      changed = changedControl;
      break;
    case propLargestGain:
      isp.exposure.most.gain = g_value_get_double(value);
      changed = changedControl;
      break;
    case propExposureTime:
      p.taken.time = g_value_get_double(value);
      changed = changedExposure;
      break;
    case propExposureGain:
      p.taken.gain = g_value_get_double(value);
      changed = changedExposure;
      break;
    case propPostMessages:
      p.postsMessages = g_value_get_boolean(value);
      break;
    default:
      G_OBJECT_WARN_INVALID_PROPERTY_ID(self, id, spec);
  }
  p.changed |= changed;
  return changed;
}

void getProperty(const Properties& p, GObject* self, guint id, GValue* value, GParamSpec* spec) {
  const IspSettings& isp = p.isp;
  const auto gains = [&](const ColorGains& of) {
    const double list[] = {of.red, of.green, of.blue};
    setNumbers(value, list, 3);
  };
  switch (id) {
    case propFormat:
      return g_value_set_enum(value, static_cast<int>(isp.format));
    case propBits:
      return g_value_set_int(value, isp.bits);
    case propOrder:
      return g_value_set_enum(value, static_cast<int>(isp.order));
    case propWidth:
      return g_value_set_int(value, isp.size.width);
    case propHeight:
      return g_value_set_int(value, isp.size.height);
    case propStride:
      return g_value_set_int(value, p.stride);
    case propFramerate:
      return gst_value_set_fraction(value, p.framesPer, p.seconds);
    case propBlackLevel:
      return g_value_set_int(value, isp.black.of[0]);
    case propWhiteLevel:
      return g_value_set_int(value, isp.white);
    case propGains:
      return gains(isp.gains);
    case propDigitalGain:
      return g_value_set_double(value, isp.digitalGain);
    case propCurve:
      return g_value_set_enum(value, static_cast<int>(isp.curve));
    case propMatrix:
      for (const auto& row : isp.color.matrix) setNumbers(value, row.data(), 3);
      return;
    case propMatrixGains:
      return gains(isp.color.gains);
    case propMatrixPlace:
      return g_value_set_enum(value, static_cast<int>(isp.color.place));
    case propRotation:
      return g_value_set_enum(value, static_cast<int>(isp.rotation));
    case propCrop: {
      const Rect crop = isp.crop;
      const double list[] = {double(crop.x), double(crop.y), double(crop.width),
                             double(crop.height)};
      return setNumbers(value, list, 4);
    }
    case propScale:
      return g_value_set_int(value, isp.scale);
    case propAutoWhiteBalance:
      return g_value_set_boolean(value, isp.whiteBalance);
    case propAutoExposure:
      return g_value_set_boolean(value, isp.exposure.on);
    case propExposureTarget:
      return g_value_set_double(value, isp.exposure.target);
    case propShortestTime:
      return g_value_set_double(value, isp.exposure.least.time);
    case propLongestTime:
      return g_value_set_double(value, isp.exposure.most.time);
    case propSmallestGain:
      return g_value_set_double(value, isp.exposure.least.gain);
    case propLargestGain:
      return g_value_set_double(value, isp.exposure.most.gain);
    case propExposureTime:
      return g_value_set_double(value, p.taken.time);
    case propExposureGain:
      return g_value_set_double(value, p.taken.gain);
    case propPostMessages:
      return g_value_set_boolean(value, p.postsMessages);
    default:
      G_OBJECT_WARN_INVALID_PROPERTY_ID(self, id, spec);
  }
}

}  // namespace vek::gst
