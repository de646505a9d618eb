// vekisp: raw Bayer frames in, pictures out.

#include "vek/isp.hpp"

#include <algorithm>
#include <array>
#include <cstring>
#include <memory>
#include <string>

#include "video.h"

GST_DEBUG_CATEGORY_STATIC(gst_vek_isp_debug);
#define GST_CAT_DEFAULT gst_vek_isp_debug

namespace {

using namespace vek;

// Formats that GStreamer 1.22 does not know yet are those of later versions: words of 16 bits with the
// sample in the low ones.
#define VEK_ORDERS(bits) "bggr" bits ", gbrg" bits ", grbg" bits ", rggb" bits
#define VEK_SIDES "width = (int) [ 16, 32768 ], height = (int) [ 16, 32768 ]"
#define VEK_RATE "framerate = (fraction) [ 0/1, MAX ]"
#define VEK_BAYER_CAPS                                                                          \
  "video/x-bayer, format = (string) { " VEK_ORDERS("") ", " VEK_ORDERS("10le") ", " VEK_ORDERS( \
      "12le") ", " VEK_ORDERS("14le") ", " VEK_ORDERS("16le") " }, " VEK_SIDES ", " VEK_RATE
// Rows of shared chroma come in pairs.
#define VEK_PICTURE_CAPS                                                                       \
  "video/x-raw, format = (string) { I420, NV12, Y42B, YV12 }, width = (int) [ 2, 32768, 2 ], " \
  "height = (int) [ 2, 32768, 2 ], " VEK_RATE                                                  \
  "; video/x-raw, format = (string) { BGRx, RGBx, BGRA, RGBA, BGR, RGB, RGB16, RGB15 }, "      \
  "width = (int) [ 2, 32768 ], height = (int) [ 2, 32768 ], " VEK_RATE

GstStaticPadTemplate sinkTemplate =
    GST_STATIC_PAD_TEMPLATE("sink", GST_PAD_SINK, GST_PAD_ALWAYS,
                            GST_STATIC_CAPS(VEK_BAYER_CAPS "; application/octet-stream"));
GstStaticPadTemplate srcTemplate =
    GST_STATIC_PAD_TEMPLATE("src", GST_PAD_SRC, GST_PAD_ALWAYS, GST_STATIC_CAPS(VEK_PICTURE_CAPS));

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

/// The frames that come in.
struct Source {
  bool isUntyped = false;
  Size size = {0, 0};
  Raw format = Raw::bytes;
  Bayer order = Bayer::rggb;
  int bits = 0;
  int stride = 0;
  int framesPer = 0, seconds = 1;
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

struct State {
  Properties properties;
  // Below: of the streaming thread.
  Source source;
  GstVideoInfo out = {};
  std::unique_ptr<Isp> isp;
  bool isRefused = false;  ///< whether makeIsp() has posted why
  guint64 frames = 0;
};

}  // namespace

struct GstVekIsp {
  GstBaseTransform parent;
  State* state;
};
struct GstVekIspClass {
  GstBaseTransformClass parent;
};
G_DEFINE_TYPE(GstVekIsp, gst_vek_isp, GST_TYPE_BASE_TRANSFORM)

namespace {

GstVekIsp* toIsp(gpointer object) {
  return reinterpret_cast<GstVekIsp*>(object);
}

Properties propertiesOf(GstVekIsp* self) {
  GST_OBJECT_LOCK(self);
  Properties copy = self->state->properties;
  GST_OBJECT_UNLOCK(self);
  return copy;
}

// ---- Properties -------------------------------------------------------------------------------

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

constexpr const char* orderNames[] = {"rggb", "grbg", "gbrg", "bggr"};

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
bool numbers(GstVekIsp* self, const char* name, const GValue* array, double* to, guint count) {
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

void setProperty(GObject* object, guint id, const GValue* value, GParamSpec* spec) {
  GstVekIsp* const self = toIsp(object);
  GST_OBJECT_LOCK(self);
  Properties& p = self->state->properties;
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
      G_OBJECT_WARN_INVALID_PROPERTY_ID(object, id, spec);
  }
  p.changed |= changed;
  GST_OBJECT_UNLOCK(self);
  // Whether another size comes out now is for the negotiation to say.
  if (changed & changedShape) gst_base_transform_reconfigure_src(GST_BASE_TRANSFORM(self));
}

void getProperty(GObject* object, guint id, GValue* value, GParamSpec* spec) {
  const Properties p = propertiesOf(toIsp(object));
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
      G_OBJECT_WARN_INVALID_PROPERTY_ID(object, id, spec);
  }
}

// ---- Negotiation ------------------------------------------------------------------------------

/// What the frames of fixed caps are. Untyped ones are what the properties say, and the caps' fields
/// where they say something else.
Source sourceOf(const GstStructure* caps, const Properties& properties) {
  const IspSettings& isp = properties.isp;
  Source source;
  source.isUntyped = gst_structure_has_name(caps, "application/octet-stream");
  source.size = isp.size;
  source.framesPer = properties.framesPer;
  source.seconds = properties.seconds;
  gst_structure_get_int(caps, "width", &source.size.width);
  gst_structure_get_int(caps, "height", &source.size.height);
  gst_structure_get_fraction(caps, "framerate", &source.framesPer, &source.seconds);
  if (source.isUntyped) {
    source.format = isp.format;
    source.bits = isp.bits;
    source.order = isp.order;
    source.stride = static_cast<int>(rawRowBytes(source.format, source.size.width));
  } else {
    // An order and, if it is not 8, the number of bits: bggr, bggr12le.
    const char* const format = gst_structure_get_string(caps, "format");
    for (int i = 0; i < 4; ++i) {
      if (std::strncmp(format, orderNames[i], 4) == 0) source.order = static_cast<Bayer>(i);
    }
    source.bits = static_cast<int>(std::strtol(format + 4, nullptr, 10));
    source.format = source.bits == 0 ? Raw::bytes : Raw::plain16;
    // Rows of video/x-bayer hold a multiple of 4 samples.
    source.stride = static_cast<int>(rawRowBytes(source.format, (source.size.width + 3) / 4 * 4));
  }
  if (properties.stride != 0) source.stride = properties.stride;
  return source;
}

IspSettings settingsFor(const Source& source, const Properties& properties) {
  IspSettings settings = properties.isp;
  settings.size = source.size;
  settings.format = source.format;
  settings.bits = source.bits;
  settings.order = source.order;
  return settings;
}

bool isYuv(const GstStructure* caps) {
  GstVideoInfo info;
  const char* const format = gst_structure_get_string(caps, "format");
  if (format == nullptr) return false;
  gst_video_info_init(&info);
  return gst_video_info_set_format(&info, gst_video_format_from_string(format), 16, 16) &&
         GST_VIDEO_INFO_IS_YUV(&info);
}

GstVideoTransferFunction transferOf(ToneCurve curve) {
  switch (curve) {
    case ToneCurve::bt709:
      return GST_VIDEO_TRANSFER_BT709;
    case ToneCurve::linear:
      return GST_VIDEO_TRANSFER_GAMMA10;
    case ToneCurve::srgb:
      break;
  }
  return GST_VIDEO_TRANSFER_SRGB;
}

/// Says what the colours are unless downstream does: without it, large pictures would be taken for
/// BT.709. Of a list the first with the right matrix is taken.
void fixateColorimetry(GstStructure* caps, ToneCurve curve) {
  const bool yuv = isYuv(caps);
  const GValue* const wanted = gst_structure_get_value(caps, "colorimetry");
  if (wanted != nullptr && GST_VALUE_HOLDS_LIST(wanted)) {
    for (guint i = 0; i < gst_value_list_get_size(wanted); ++i) {
      const char* const text = g_value_get_string(gst_value_list_get_value(wanted, i));
      GstVideoColorimetry one;
      if (text == nullptr || !gst_video_colorimetry_from_string(&one, text)) continue;
      if (yuv && one.matrix != GST_VIDEO_COLOR_MATRIX_BT601) continue;
      gst_structure_fixate_field_string(caps, "colorimetry", text);
      break;
    }
  }
  if (wanted != nullptr) return;
  const GstVideoColorimetry colorimetry = {
      yuv ? GST_VIDEO_COLOR_RANGE_16_235 : GST_VIDEO_COLOR_RANGE_0_255,
      yuv ? GST_VIDEO_COLOR_MATRIX_BT601 : GST_VIDEO_COLOR_MATRIX_RGB, transferOf(curve),
      GST_VIDEO_COLOR_PRIMARIES_BT709};
  gchar* const text = gst_video_colorimetry_to_string(&colorimetry);
  gst_structure_set(caps, "colorimetry", G_TYPE_STRING, text, nullptr);
  g_free(text);
}

/// What can come out of the frames of `caps`, or be asked of them: only the frame rate is the same.
GstCaps* transformCaps(GstBaseTransform*, GstPadDirection direction, GstCaps* caps,
                       GstCaps* filter) {
  GstStaticPadTemplate& other = direction == GST_PAD_SINK ? srcTemplate : sinkTemplate;
  GstCaps* const all = gst_static_pad_template_get_caps(&other);
  GstCaps* result = gst_caps_new_empty();
  for (guint i = 0; i < gst_caps_get_size(caps); ++i) {
    const GValue* const rate =
        gst_structure_get_value(gst_caps_get_structure(caps, i), "framerate");
    GstCaps* const some = gst_caps_copy(all);
    for (guint j = 0; j < gst_caps_get_size(some); ++j) {
      GstStructure* const structure = gst_caps_get_structure(some, j);
      if (gst_structure_has_name(structure, "application/octet-stream")) continue;
      if (rate == nullptr) {
        gst_structure_remove_field(structure, "framerate");
      } else {
        gst_structure_set_value(structure, "framerate", rate);
      }
    }
    result = gst_caps_merge(result, some);
  }
  gst_caps_unref(all);
  if (filter == nullptr) return result;
  GstCaps* const both = gst_caps_intersect_full(filter, result, GST_CAPS_INTERSECT_FIRST);
  gst_caps_unref(result);
  return both;
}

GstCaps* fixateCaps(GstBaseTransform* element, GstPadDirection direction, GstCaps* caps,
                    GstCaps* others) {
  GstVekIsp* const self = toIsp(element);
  others = gst_caps_make_writable(gst_caps_truncate(others));
  GstStructure* const picture = gst_caps_get_structure(others, 0);
  if (direction == GST_PAD_SINK && gst_caps_is_fixed(caps)) {
    const Properties properties = propertiesOf(self);
    const Source source = sourceOf(gst_caps_get_structure(caps, 0), properties);
    try {
      const Size natural = Isp(settingsFor(source, properties)).outputSize();
      gst::fixateSize(picture, natural, {0, 0, 1, 1});
    } catch (const std::exception& error) {
      GST_DEBUG_OBJECT(self, "%s", error.what());  // setCaps() posts it
    }
    if (source.framesPer > 0) {
      gst_structure_fixate_field_nearest_fraction(picture, "framerate", source.framesPer,
                                                  source.seconds);
      if (!gst_structure_has_field(picture, "framerate")) {
        gst_structure_set(picture, "framerate", GST_TYPE_FRACTION, source.framesPer, source.seconds,
                          nullptr);
      }
    }
    gst_structure_fixate_field(picture, "format");
    fixateColorimetry(picture, properties.isp.curve);
  }
  return gst_caps_fixate(others);
}

/// Makes the Isp for what is negotiated; one that was there hands its exposure and gains on. Posts
/// why there can be none.
bool makeIsp(GstVekIsp* self, const Properties& properties) {
  State& state = *self->state;
  IspSettings settings = settingsFor(state.source, properties);
  settings.output = rotated(gst::sizeOf(state.out), settings.rotation);
  const GstVideoColorimetry& colors = GST_VIDEO_INFO_COLORIMETRY(&state.out);
  settings.range = colors.range == GST_VIDEO_COLOR_RANGE_0_255 ? Range::full : Range::studio;
  const bool continues = state.isp != nullptr;
  Exposure exposure = properties.taken;
  if (continues) {
    if ((properties.changed & changedExposure) == 0) exposure = state.isp->results().exposure;
    if ((properties.changed & changedGains) == 0) settings.gains = state.isp->gains();
  }
  try {
    if (state.source.size.width == 0 || state.source.size.height == 0) {
      OnError().failure(vekStsSizeErr, "vekisp", "width and height",
                        "must say how large untyped frames are");
    }
    if (state.source.stride < rawRowBytes(state.source.format, state.source.size.width)) {
      OnError().failure(
          vekStsStrideErr, "vekisp", "stride", "is %d; rows take %d bytes", state.source.stride,
          static_cast<int>(rawRowBytes(state.source.format, state.source.size.width)));
    }
    if (GST_VIDEO_INFO_IS_YUV(&state.out) && colors.matrix != GST_VIDEO_COLOR_MATRIX_BT601) {
      OnError().failure(vekStsBadArgErr, "vekisp", "colorimetry",
                        "must have the matrix of BT.601, which is the one that is computed");
    }
    auto isp = std::make_unique<Isp>(settings);
    isp->setExposure(exposure);
    state.isp = std::move(isp);
    return true;
  } catch (const std::exception& error) {
    state.isRefused = true;
    GST_ELEMENT_ERROR(
        self, STREAM, FORMAT, ("%s.", error.what()),
        ("from %d x %d samples to %d x %d pixels", settings.size.width, settings.size.height,
         gst::sizeOf(state.out).width, gst::sizeOf(state.out).height));
    return false;
  }
}

gboolean setCaps(GstBaseTransform* element, GstCaps* in, GstCaps* out) {
  GstVekIsp* const self = toIsp(element);
  State& state = *self->state;
  const Properties properties = propertiesOf(self);
  state.source = sourceOf(gst_caps_get_structure(in, 0), properties);
  return gst_video_info_from_caps(&state.out, out) && makeIsp(self, properties);
}

gboolean transformSize(GstBaseTransform*, GstPadDirection direction, GstCaps*, gsize, GstCaps* caps,
                       gsize* size) {
  GstVideoInfo info;
  if (direction != GST_PAD_SINK || !gst_video_info_from_caps(&info, caps)) return FALSE;
  *size = info.size;
  return TRUE;
}

gboolean decide(GstBaseTransform*, GstQuery* query) {
  return gst::decideAllocation(query);
}

/// Rows of raw frames may be any distance apart.
gboolean propose(GstBaseTransform*, GstQuery*, GstQuery* query) {
  gst_query_add_allocation_meta(query, GST_VIDEO_META_API_TYPE, nullptr);
  return TRUE;
}

GstBaseTransformClass* parentClass() {
  return GST_BASE_TRANSFORM_CLASS(gst_vek_isp_parent_class);
}

gboolean takeCaps(GstBaseTransform* element, GstEvent* event) {
  GstCaps* caps = nullptr;
  gst_event_parse_caps(event, &caps);
  caps = gst_caps_ref(caps);
  bool& isRefused = toIsp(element)->state->isRefused;
  isRefused = false;
  const gboolean isTaken = parentClass()->sink_event(element, event);
  if (!isTaken && !isRefused) gst::explainRefusal(element, caps);
  gst_caps_unref(caps);
  return isTaken;
}

/// A file has no type and counts bytes: its frames are what the properties say.
bool makeTyped(GstBaseTransform* element) {
  GstCaps* const caps = gst_caps_new_empty_simple("application/octet-stream");
  GstEvent* const event = gst_event_new_caps(caps);
  gst_caps_unref(caps);
  gst_pad_store_sticky_event(GST_BASE_TRANSFORM_SINK_PAD(element), event);
  return takeCaps(element, event);
}

gboolean sinkEvent(GstBaseTransform* element, GstEvent* event) {
  if (GST_EVENT_TYPE(event) == GST_EVENT_CAPS) return takeCaps(element, event);
  if (GST_EVENT_TYPE(event) == GST_EVENT_SEGMENT) {
    if (!gst_pad_has_current_caps(GST_BASE_TRANSFORM_SINK_PAD(element)) && !makeTyped(element)) {
      gst_event_unref(event);
      return FALSE;
    }
    const GstSegment* segment = nullptr;
    gst_event_parse_segment(event, &segment);
    if (segment->format == GST_FORMAT_BYTES) {
      GstSegment timed;
      gst_segment_init(&timed, GST_FORMAT_TIME);
      gst_event_unref(event);
      event = gst_event_new_segment(&timed);
    }
  }
  return parentClass()->sink_event(element, event);
}

// ---- Frames -----------------------------------------------------------------------------------

/// Hands what has changed to the Isp, or makes another one.
bool update(GstVekIsp* self, const Properties& properties) {
  State& state = *self->state;
  const unsigned changed = properties.changed;
  if (state.isp == nullptr || (changed & changedShape)) {
    GstCaps* const caps = gst_pad_get_current_caps(GST_BASE_TRANSFORM_SINK_PAD(self));
    state.source = sourceOf(gst_caps_get_structure(caps, 0), properties);
    gst_caps_unref(caps);
    return makeIsp(self, properties);
  }
  Isp& isp = *state.isp;
  const IspSettings& settings = properties.isp;
  try {
    if (changed & changedLevels) isp.setLevels(settings.black, settings.white);
    if (changed & changedGains) isp.setGains(settings.gains, settings.digitalGain);
    if (changed & changedCurve) isp.setCurve(settings.curve);
    if (changed & changedColor) isp.setColor(settings.color);
    if (changed & changedBalance) isp.setWhiteBalance(settings.whiteBalance);
    if (changed & changedControl) isp.setExposureSettings(settings.exposure);
    if (changed & changedExposure) isp.setExposure(properties.taken);
    return true;
  } catch (const std::exception& error) {
    GST_ELEMENT_ERROR(self, LIBRARY, SETTINGS, ("%s.", error.what()), (nullptr));
    return false;
  }
}

VekStatus process(Isp& isp, View<const RawByte> from, GstVideoFrame* to) {
  using gst::packed;
  using gst::planes;
  switch (GST_VIDEO_FRAME_FORMAT(to)) {
    case GST_VIDEO_FORMAT_I420:
    case GST_VIDEO_FORMAT_YV12:
      return isp.process(from, planes<Vek8u, Chroma::c420>(to));
    case GST_VIDEO_FORMAT_Y42B:
      return isp.process(from, planes<Vek8u, Chroma::c422>(to));
    case GST_VIDEO_FORMAT_NV12: {
      const Size half = {GST_VIDEO_FRAME_COMP_WIDTH(to, 1), GST_VIDEO_FRAME_COMP_HEIGHT(to, 1)};
      const View<Vek8u, 2> pairs(static_cast<Vek8u*>(GST_VIDEO_FRAME_PLANE_DATA(to, 1)), half,
                                 Bytes(GST_VIDEO_FRAME_PLANE_STRIDE(to, 1)));
      return isp.process(from, Nv12<Vek8u>(gst::plane<Vek8u>(to, 0), pairs));
    }
    case GST_VIDEO_FORMAT_RGB16:
      return isp.process(from, packed<Rgb565>(to));
    case GST_VIDEO_FORMAT_RGB15:
      return isp.process(from, packed<Rgb555>(to));
    case GST_VIDEO_FORMAT_BGR:
      return isp.process(from, packed<Bgr24>(to));
    case GST_VIDEO_FORMAT_RGB:
      return isp.process(from, packed<Rgb24>(to));
    case GST_VIDEO_FORMAT_BGRx:
    case GST_VIDEO_FORMAT_BGRA:  // the fourth byte is 255
      return isp.process(from, packed<Bgrx32>(to));
    default:
      return isp.process(from, packed<Rgbx32>(to));
  }
}

void post(GstVekIsp* self, GstBuffer* frame) {
  const IspResults& results = self->state->isp->results();
  const GstClockTime time = GST_BUFFER_PTS(frame);
  const GstSegment& segment = GST_BASE_TRANSFORM(self)->segment;
  GstStructure* const structure = gst_structure_new(
      "vekisp", "timestamp", G_TYPE_UINT64, time, "running-time", G_TYPE_UINT64,
      gst_segment_to_running_time(&segment, GST_FORMAT_TIME, time), "exposure-time", G_TYPE_DOUBLE,
      results.exposure.time, "exposure-gain", G_TYPE_DOUBLE, results.exposure.gain, "red-gain",
      G_TYPE_DOUBLE, results.gains.red, "blue-gain", G_TYPE_DOUBLE, results.gains.blue,
      "brightness", G_TYPE_DOUBLE, results.brightness, "saturated", G_TYPE_DOUBLE,
      results.saturated, "exposure-held", G_TYPE_BOOLEAN, results.exposureHeld, "exposure-at-limit",
      G_TYPE_BOOLEAN, results.exposureAtLimit, "balance-held", G_TYPE_BOOLEAN, results.balanceHeld,
      "balance-at-limit", G_TYPE_BOOLEAN, results.balanceAtLimit, "balance-has-data",
      G_TYPE_BOOLEAN, results.balanceHasData, nullptr);
  gst_element_post_message(GST_ELEMENT(self), gst_message_new_element(GST_OBJECT(self), structure));
}

GstFlowReturn transform(GstBaseTransform* element, GstBuffer* in, GstBuffer* out) {
  GstVekIsp* const self = toIsp(element);
  State& state = *self->state;
  GST_OBJECT_LOCK(self);
  const Properties properties = state.properties;
  state.properties.changed = 0;
  GST_OBJECT_UNLOCK(self);
  if (!update(self, properties)) return GST_FLOW_ERROR;

  const Source& source = state.source;
  gsize offset = 0;
  int stride = source.stride;
  if (const GstVideoMeta* const meta = gst_buffer_get_video_meta(in)) {
    offset = meta->offset[0];
    stride = meta->stride[0];
  }
  const auto rowBytes = static_cast<int>(rawRowBytes(source.format, source.size.width));
  GstMapInfo map;
  if (!gst_buffer_map(in, &map, GST_MAP_READ)) {
    GST_ELEMENT_ERROR(self, RESOURCE, READ, ("A frame cannot be read."), (nullptr));
    return GST_FLOW_ERROR;
  }
  GstFlowReturn flow = GST_FLOW_ERROR;
  const gsize needed = offset +
                       static_cast<gsize>(stride) * static_cast<gsize>(source.size.height - 1) +
                       static_cast<gsize>(rowBytes);
  gst::Frame picture(state.out, out, GST_MAP_WRITE);
  if (stride < rowBytes || map.size < needed) {
    GST_ELEMENT_ERROR(self, STREAM, FORMAT,
                      ("A frame has %" G_GSIZE_FORMAT " bytes; %d x %d samples with rows %d bytes "
                       "apart take %" G_GSIZE_FORMAT ".",
                       map.size, source.size.width, source.size.height, stride, needed),
                      ("A file is read in frames if its source has a blocksize of so many bytes."));
  } else if (!picture) {
    GST_ELEMENT_ERROR(self, RESOURCE, WRITE, ("A picture cannot be written."), (nullptr));
  } else {
    try {
      process(*state.isp, {map.data + offset, Size{rowBytes, source.size.height}, Bytes(stride)},
              picture.get());
      flow = GST_FLOW_OK;
    } catch (const std::exception& error) {
      GST_ELEMENT_ERROR(self, STREAM, FORMAT, ("%s.", error.what()), (nullptr));
    }
  }
  gst_buffer_unmap(in, &map);
  if (flow != GST_FLOW_OK) return flow;

  if (source.isUntyped && !GST_BUFFER_PTS_IS_VALID(out) && source.framesPer > 0) {
    const auto timeOf = [&](guint64 frame) {
      return gst_util_uint64_scale(frame, GST_SECOND * static_cast<guint64>(source.seconds),
                                   static_cast<guint64>(source.framesPer));
    };
    GST_BUFFER_PTS(out) = timeOf(state.frames);
    GST_BUFFER_DURATION(out) = timeOf(state.frames + 1) - GST_BUFFER_PTS(out);
  }
  ++state.frames;
  if (properties.postsMessages && (properties.isp.whiteBalance || properties.isp.exposure.on))
    post(self, out);
  return flow;
}

gboolean stop(GstBaseTransform* element) {
  State& state = *toIsp(element)->state;
  state.isp.reset();
  state.frames = 0;
  return TRUE;
}

void finalize(GObject* object) {
  delete toIsp(object)->state;
  G_OBJECT_CLASS(gst_vek_isp_parent_class)->finalize(object);
}

// ---- The class --------------------------------------------------------------------------------

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
  whole(propWidth, "width", "Samples in a row of untyped frames", 0, gst::largestSide, 0, fixed);
  whole(propHeight, "height", "Rows of untyped frames", 0, gst::largestSide, 0, fixed);
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
  add(propRotation,
      g_param_spec_enum("rotation", nullptr, "Rotation of the picture", gst::rotationType(),
                        static_cast<int>(defaults.rotation), live));
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
}

}  // namespace

static void gst_vek_isp_class_init(GstVekIspClass* klass) {
  GST_DEBUG_CATEGORY_INIT(gst_vek_isp_debug, "vekisp", 0, "raw frames to pictures");
  auto* const object = reinterpret_cast<GObjectClass*>(klass);
  auto* const element = reinterpret_cast<GstElementClass*>(klass);
  object->set_property = setProperty;
  object->get_property = getProperty;
  object->finalize = finalize;
  installProperties(object);
  gst_element_class_set_static_metadata(
      element, "Raw frames to pictures", "Filter/Converter/Video",
      "Develops raw Bayer frames, with automatic exposure and white balance", "vek");
  gst_element_class_add_static_pad_template(element, &sinkTemplate);
  gst_element_class_add_static_pad_template(element, &srcTemplate);
  for (const GType type :
       {formatType(), orderType(), curveType(), placeType(), gst::rotationType()}) {
    gst_type_mark_as_plugin_api(type, static_cast<GstPluginAPIFlags>(0));
  }
  GstBaseTransformClass* const base = &klass->parent;
  base->transform_caps = transformCaps;
  base->fixate_caps = fixateCaps;
  base->set_caps = setCaps;
  base->transform_size = transformSize;
  base->decide_allocation = decide;
  base->propose_allocation = propose;
  base->sink_event = sinkEvent;
  base->transform = transform;
  base->stop = stop;
}

static void gst_vek_isp_init(GstVekIsp* self) {
  self->state = new State;
  gst_base_transform_set_qos_enabled(GST_BASE_TRANSFORM(self), TRUE);
}
