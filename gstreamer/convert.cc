// vekconvert: resizes, rotates and converts YCbCr frames, as the preview functions do.

#include "vek/vek.hpp"

#include <algorithm>
#include <cstdint>
#include <gst/video/gstvideofilter.h>
#include <optional>

#include "video.h"

namespace {

using namespace vek;

#define VEK_SIDES(least) "width = (int) [ " #least ", 32768 ], height = (int) [ " #least ", 32768 ]"
#define VEK_CAPS(formats, least)              \
  "video/x-raw, format = (string) { " formats \
  " }, " VEK_SIDES(least) ", framerate = (fraction) [ 0/1, MAX ]"

GstStaticPadTemplate sinkTemplate = GST_STATIC_PAD_TEMPLATE(
    "sink", GST_PAD_SINK, GST_PAD_ALWAYS, GST_STATIC_CAPS(VEK_CAPS("I420, Y42B, UYVY", 2)));
GstStaticPadTemplate srcTemplate =
    GST_STATIC_PAD_TEMPLATE("src", GST_PAD_SRC, GST_PAD_ALWAYS,
                            GST_STATIC_CAPS(VEK_CAPS("I420, Y42B, BGR, RGB16, RGB15", 1)));

/// Which sizes a conversion can make.
enum class Sizes {
  any,
  even,
  same,     ///< the source's, which are even
  divided,  ///< a half, a quarter or an eighth of the source's, rounded down
};

/// Which rotations a conversion can do.
enum class Rotations { all, noQuarterTurns, noMirrors };

struct Conversion {
  GstVideoFormat from, to;
  Sizes sizes;
  Rotations rotations;
};

constexpr Conversion conversions[] = {
    {GST_VIDEO_FORMAT_I420, GST_VIDEO_FORMAT_I420, Sizes::even, Rotations::all},
    {GST_VIDEO_FORMAT_I420, GST_VIDEO_FORMAT_BGR, Sizes::any, Rotations::all},
    {GST_VIDEO_FORMAT_I420, GST_VIDEO_FORMAT_RGB16, Sizes::any, Rotations::all},
    {GST_VIDEO_FORMAT_I420, GST_VIDEO_FORMAT_RGB15, Sizes::any, Rotations::all},
    {GST_VIDEO_FORMAT_Y42B, GST_VIDEO_FORMAT_Y42B, Sizes::even, Rotations::all},
    {GST_VIDEO_FORMAT_Y42B, GST_VIDEO_FORMAT_I420, Sizes::same, Rotations::all},
    {GST_VIDEO_FORMAT_Y42B, GST_VIDEO_FORMAT_BGR, Sizes::any, Rotations::all},
    {GST_VIDEO_FORMAT_Y42B, GST_VIDEO_FORMAT_RGB16, Sizes::any, Rotations::noQuarterTurns},
    {GST_VIDEO_FORMAT_Y42B, GST_VIDEO_FORMAT_RGB15, Sizes::any, Rotations::noQuarterTurns},
    {GST_VIDEO_FORMAT_UYVY, GST_VIDEO_FORMAT_I420, Sizes::same, Rotations::all},
    {GST_VIDEO_FORMAT_UYVY, GST_VIDEO_FORMAT_RGB16, Sizes::divided, Rotations::noMirrors},
    {GST_VIDEO_FORMAT_UYVY, GST_VIDEO_FORMAT_RGB15, Sizes::divided, Rotations::noMirrors},
};

bool canRotate(Rotations rotations, Rotation rotation) {
  switch (rotations) {
    case Rotations::noQuarterTurns:
      return !gst::isQuarterTurn(rotation);
    case Rotations::noMirrors:
      return rotation != Rotation::mirrorLeftRight && rotation != Rotation::mirrorTopBottom;
    case Rotations::all:
      break;
  }
  return true;
}

/// A frame's copy with rows and planes as the library wants them, where a buffer has others.
class AlignedFrame {
 public:
  AlignedFrame() = default;
  ~AlignedFrame() { gst_clear_buffer(&buffer_); }
  AlignedFrame(const AlignedFrame&) = delete;
  AlignedFrame& operator=(const AlignedFrame&) = delete;

  /// Makes room for frames like `info`, or for none.
  void set(const GstVideoInfo* info) {
    gst_clear_buffer(&buffer_);
    if (info == nullptr) return;
    info_ = *info;
    GstVideoAlignment alignment = gst::rowAlignment(info_);
    gst_video_info_align(&info_, &alignment);
  }

  /// The memory, which is taken when it is first needed.
  GstBuffer* buffer() {
    if (buffer_ == nullptr) {
      GstAllocationParams params;
      gst_allocation_params_init(&params);
      params.align = 63;
      buffer_ = gst_buffer_new_allocate(nullptr, info_.size, &params);
    }
    return buffer_;
  }
  const GstVideoInfo& info() const { return info_; }

 private:
  GstVideoInfo info_ = {};
  GstBuffer* buffer_ = nullptr;
};

struct State {
  Rotation rotation = Rotation::none;  // these two under the object's lock
  Interpolation interpolation = Interpolation::linear;
  AlignedFrame source, destination;
};

}  // namespace

struct GstVekConvert {
  GstVideoFilter parent;
  State* state;
};
struct GstVekConvertClass {
  GstVideoFilterClass parent;
};
G_DEFINE_TYPE(GstVekConvert, gst_vek_convert, GST_TYPE_VIDEO_FILTER)

namespace {

GstVekConvert* toConvert(gpointer object) {
  return reinterpret_cast<GstVekConvert*>(object);
}

struct Settings {
  Rotation rotation;
  Interpolation interpolation;
};

Settings settingsOf(GstVekConvert* self) {
  GST_OBJECT_LOCK(self);
  const Settings settings = {self->state->rotation, self->state->interpolation};
  GST_OBJECT_UNLOCK(self);
  return settings;
}

// ---- Negotiation ------------------------------------------------------------------------------

bool hasFormat(const GstStructure* structure, GstVideoFormat format) {
  const GValue* const value = gst_structure_get_value(structure, "format");
  if (value == nullptr) return true;
  GValue wanted = G_VALUE_INIT;
  g_value_init(&wanted, G_TYPE_STRING);
  g_value_set_static_string(&wanted, gst_video_format_to_string(format));
  const bool has = gst_value_intersect(nullptr, value, &wanted);
  g_value_unset(&wanted);
  return has;
}

/// The least and the most of an int, a range or a list of ints.
void bounds(const GValue* value, int& least, int& most) {
  least = 1;
  most = gst::largestSide;
  if (value == nullptr) return;
  if (GST_VALUE_HOLDS_INT_RANGE(value)) {
    least = gst_value_get_int_range_min(value);
    most = gst_value_get_int_range_max(value);
  } else if (G_VALUE_HOLDS_INT(value)) {
    least = most = g_value_get_int(value);
  } else if (GST_VALUE_HOLDS_LIST(value)) {
    std::swap(least, most);
    for (guint i = 0; i < gst_value_list_get_size(value); ++i) {
      const GValue* const one = gst_value_list_get_value(value, i);
      if (!G_VALUE_HOLDS_INT(one)) continue;
      least = std::min(least, g_value_get_int(one));
      most = std::max(most, g_value_get_int(one));
    }
  }
}

/// The sides of all images, of multiples of `multiple`, between these limits; false if there is none.
bool setRange(GstStructure* structure, const char* side, int least, int most, int multiple) {
  least = (std::max(least, 1) + multiple - 1) / multiple * multiple;
  most = std::min(most, gst::largestSide) / multiple * multiple;
  if (least > most) return false;
  if (least == most) {
    gst_structure_set(structure, side, G_TYPE_INT, least, nullptr);
    return true;
  }
  GValue range = G_VALUE_INIT;
  g_value_init(&range, GST_TYPE_INT_RANGE);
  gst_value_set_int_range_step(&range, least, most, multiple);
  gst_structure_take_value(structure, side, &range);
  return true;
}

/// The structure of the other side of a conversion, with sides of `factor`; null if there is none.
GstStructure* otherSide(const GstStructure* from, const Conversion& conversion,
                        GstPadDirection direction, Rotation rotation, int factor) {
  GstStructure* const to = gst_structure_copy(from);
  const bool isQuarter = gst::isQuarterTurn(rotation), isForward = direction == GST_PAD_SINK;
  const GstVideoFormat format = isForward ? conversion.to : conversion.from;
  gst_structure_set(to, "format", G_TYPE_STRING, gst_video_format_to_string(format), nullptr);
  if (conversion.to != conversion.from)
    gst_structure_remove_fields(to, "colorimetry", "chroma-site", nullptr);
  bool isPossible = true;
  for (const bool isWidth : {true, false}) {
    const char* const side = isWidth ? "width" : "height";
    const char* const source = isWidth != isQuarter ? "width" : "height";
    int least = 2, most = gst::largestSide, multiple = 1;
    if (conversion.sizes == Sizes::even && isForward) multiple = 2;
    if (conversion.sizes == Sizes::same) {
      bounds(gst_structure_get_value(from, source), least, most);
      multiple = 2;
    } else if (conversion.sizes == Sizes::divided) {
      bounds(gst_structure_get_value(from, source), least, most);
      if (isForward) {
        least /= factor;
        most /= factor;
      } else {
        least = std::min(least, gst::largestSide) * factor;
        most = std::min(most, gst::largestSide) * factor + factor - 1;
      }
    }
    isPossible &= setRange(to, side, least, most, multiple);
  }
  int n = 1, d = 1;
  if (conversion.sizes == Sizes::any || conversion.sizes == Sizes::even) {
    // Sides that are scaled differently make other pixels of pixels.
    if (gst_structure_has_field(from, "pixel-aspect-ratio")) {
      gst_structure_set(to, "pixel-aspect-ratio", GST_TYPE_FRACTION_RANGE, 1, G_MAXINT, G_MAXINT, 1,
                        nullptr);
    }
  } else if (isQuarter && gst_structure_get_fraction(from, "pixel-aspect-ratio", &n, &d)) {
    gst_structure_set(to, "pixel-aspect-ratio", GST_TYPE_FRACTION, d, n, nullptr);
  }
  if (isPossible) return to;
  gst_structure_free(to);
  return nullptr;
}

GstCaps* transformCaps(GstBaseTransform* element, GstPadDirection direction, GstCaps* caps,
                       GstCaps* filter) {
  const Rotation rotation = settingsOf(toConvert(element)).rotation;
  GstCaps* result = gst_caps_new_empty();
  for (guint i = 0; i < gst_caps_get_size(caps); ++i) {
    const GstStructure* const structure = gst_caps_get_structure(caps, i);
    GstCapsFeatures* const features = gst_caps_get_features(caps, i);
    if (!gst_caps_features_is_any(features) &&
        !gst_caps_features_is_equal(features, GST_CAPS_FEATURES_MEMORY_SYSTEM_MEMORY)) {
      continue;
    }
    for (const Conversion& conversion : conversions) {
      const GstVideoFormat here = direction == GST_PAD_SINK ? conversion.from : conversion.to;
      if (!hasFormat(structure, here) || !canRotate(conversion.rotations, rotation)) continue;
      const bool isDivided = conversion.sizes == Sizes::divided;
      for (int factor = isDivided ? 2 : 1; factor <= (isDivided ? 8 : 1); factor *= 2) {
        GstStructure* const other = otherSide(structure, conversion, direction, rotation, factor);
        if (other != nullptr) result = gst_caps_merge_structure(result, other);
      }
    }
  }
  if (filter == nullptr) return result;
  GstCaps* const both = gst_caps_intersect_full(filter, result, GST_CAPS_INTERSECT_FIRST);
  gst_caps_unref(result);
  return both;
}

GstCaps* fixateCaps(GstBaseTransform* element, GstPadDirection direction, GstCaps* caps,
                    GstCaps* others) {
  others = gst_caps_make_writable(gst_caps_truncate(others));
  const GstStructure* const from = gst_caps_get_structure(caps, 0);
  Size size = {0, 0};
  if (direction == GST_PAD_SINK && gst_structure_get_int(from, "width", &size.width) &&
      gst_structure_get_int(from, "height", &size.height)) {
    const Rotation rotation = settingsOf(toConvert(element)).rotation;
    gst::fixateSize(gst_caps_get_structure(others, 0), rotated(size, rotation),
                    gst::pixelRatio(from, gst::isQuarterTurn(rotation)));
  }
  return gst_caps_fixate(others);
}

gboolean setInfo(GstVideoFilter* filter, GstCaps* inCaps, GstVideoInfo* in, GstCaps* outCaps,
                 GstVideoInfo* out) {
  GstVekConvert* const self = toConvert(filter);
  const bool isSame = gst_caps_is_equal(inCaps, outCaps);
  gst_base_transform_set_passthrough(GST_BASE_TRANSFORM(self),
                                     isSame && settingsOf(self).rotation == Rotation::none);
  self->state->source.set(in);
  self->state->destination.set(out);
  return TRUE;
}

gboolean sinkEvent(GstBaseTransform* element, GstEvent* event) {
  GstBaseTransformClass* const parent = GST_BASE_TRANSFORM_CLASS(gst_vek_convert_parent_class);
  if (GST_EVENT_TYPE(event) != GST_EVENT_CAPS) return parent->sink_event(element, event);
  GstCaps* caps = nullptr;
  gst_event_parse_caps(event, &caps);
  caps = gst_caps_ref(caps);
  const gboolean isTaken = parent->sink_event(element, event);
  if (!isTaken) gst::explainRefusal(element, caps);
  gst_caps_unref(caps);
  return isTaken;
}

gboolean decide(GstBaseTransform*, GstQuery* query) {
  return gst::decideAllocation(query);
}

gboolean propose(GstBaseTransform*, GstQuery*, GstQuery* query) {
  return gst::proposeAllocation(query);
}

// ---- Frames -----------------------------------------------------------------------------------

/// Whether all planes begin at multiples of 8 bytes, with such steps, that of 4:2:2 chroma is half of
/// luma's and that of both chroma planes is one: all that any of the functions asks for.
bool isAligned(const GstVideoFrame* frame) {
  for (guint i = 0; i < GST_VIDEO_FRAME_N_PLANES(frame); ++i) {
    const auto address = reinterpret_cast<std::uintptr_t>(GST_VIDEO_FRAME_PLANE_DATA(frame, i));
    const int stride = GST_VIDEO_FRAME_PLANE_STRIDE(frame, i);
    if (address % 8 != 0 || stride % 8 != 0) return false;
    if (i == 2 && stride != GST_VIDEO_FRAME_PLANE_STRIDE(frame, 1)) return false;
    if (i == 1 && GST_VIDEO_FRAME_FORMAT(frame) == GST_VIDEO_FORMAT_Y42B &&
        2 * stride != GST_VIDEO_FRAME_PLANE_STRIDE(frame, 0)) {
      return false;
    }
  }
  return true;
}

/// Resizes planes to what can be made of them in any size.
template <class Source>
VekStatus resizeTo(const Source& source, GstVideoFrame* to, const Settings& settings) {
  const auto into = [&](const auto& destination) {
    return resize(source, destination, settings.rotation, settings.interpolation);
  };
  switch (GST_VIDEO_FRAME_FORMAT(to)) {
    case GST_VIDEO_FORMAT_BGR:
      return into(gst::packed<Bgr24>(to));
    case GST_VIDEO_FORMAT_RGB16:
      return into(gst::packed<Rgb565>(to));
    default:
      return into(gst::packed<Rgb555>(to));
  }
}

VekStatus convert(GstVideoFrame* from, GstVideoFrame* to, const Settings& settings) {
  const GstVideoFormat format = GST_VIDEO_FRAME_FORMAT(to);
  const bool is420 = format == GST_VIDEO_FORMAT_I420;
  const auto planes420 = [&] { return gst::planes<Vek8u, Chroma::c420>(to); };
  switch (GST_VIDEO_FRAME_FORMAT(from)) {
    case GST_VIDEO_FORMAT_I420: {
      const auto source = gst::planes<const Vek8u, Chroma::c420>(from);
      if (is420) return resize(source, planes420(), settings.rotation, settings.interpolation);
      return resizeTo(source, to, settings);
    }
    case GST_VIDEO_FORMAT_Y42B: {
      const auto source = gst::planes<const Vek8u, Chroma::c422>(from);
      if (is420) return to420(source, planes420(), settings.rotation);
      if (format != GST_VIDEO_FORMAT_Y42B) return resizeTo(source, to, settings);
      return resize(source, gst::planes<Vek8u, Chroma::c422>(to), settings.rotation,
                    settings.interpolation);
    }
    default: {
      const auto source = gst::packed<const Uyvy>(from);
      if (is420) return to420(source, planes420(), settings.rotation);
      const Size size = rotated(gst::sizeOf(to->info), settings.rotation);
      int factor = 2;
      while (factor < 8 && source.width() / factor != size.width) factor *= 2;
      const auto reduction =
          settings.interpolation == Interpolation::linear ? Reduction::average : Reduction::first;
      if (format == GST_VIDEO_FORMAT_RGB16)
        return reduce(source, gst::packed<Rgb565>(to), factor, reduction, settings.rotation);
      return reduce(source, gst::packed<Rgb555>(to), factor, reduction, settings.rotation);
    }
  }
}

/// A frame, or a copy of it where that is needed.
class AlignedView {
 public:
  AlignedView(GstVideoFrame* frame, AlignedFrame& memory, bool isSource)
      : frame_(frame), isDestination_(!isSource) {
    if (isAligned(frame)) return;
    copy_.emplace(memory.info(), memory.buffer(), GST_MAP_READWRITE);
    if (isSource) gst_video_frame_copy(copy_->get(), frame);
  }
  ~AlignedView() {
    if (copy_ && isDestination_) gst_video_frame_copy(frame_, copy_->get());
  }
  AlignedView(const AlignedView&) = delete;
  AlignedView& operator=(const AlignedView&) = delete;

  GstVideoFrame* get() { return copy_ ? copy_->get() : frame_; }

 private:
  GstVideoFrame* frame_;
  std::optional<gst::Frame> copy_;
  bool isDestination_;
};

GstFlowReturn transformFrame(GstVideoFilter* filter, GstVideoFrame* from, GstVideoFrame* to) {
  GstVekConvert* const self = toConvert(filter);
  try {
    AlignedView source(from, self->state->source, true);
    AlignedView destination(to, self->state->destination, false);
    convert(source.get(), destination.get(), settingsOf(self));
    return GST_FLOW_OK;
  } catch (const std::exception& error) {
    GST_ELEMENT_ERROR(self, STREAM, FORMAT, ("%s.", error.what()), (nullptr));
    return GST_FLOW_ERROR;
  }
}

// ---- The class --------------------------------------------------------------------------------

enum Property { propRotation = 1, propInterpolation };

GType interpolationType() {
  static const GEnumValue values[] = {
      {static_cast<int>(Interpolation::nearest), "The nearest sample", "nearest"},
      {static_cast<int>(Interpolation::linear), "A blend of the four samples around", "linear"},
      {0, nullptr, nullptr}};
  static const GType type = g_enum_register_static("GstVekInterpolation", values);
  return type;
}

void setProperty(GObject* object, guint id, const GValue* value, GParamSpec* spec) {
  GstVekConvert* const self = toConvert(object);
  GST_OBJECT_LOCK(self);
  switch (id) {
    case propRotation:
      self->state->rotation = static_cast<Rotation>(g_value_get_enum(value));
      break;
    case propInterpolation:
      self->state->interpolation = static_cast<Interpolation>(g_value_get_enum(value));
      break;
    default:
      G_OBJECT_WARN_INVALID_PROPERTY_ID(object, id, spec);
  }
  GST_OBJECT_UNLOCK(self);
  if (id != propRotation) return;
  // Caps may stay the same, and setInfo() is not called then.
  if (g_value_get_enum(value) != static_cast<int>(Rotation::none))
    gst_base_transform_set_passthrough(GST_BASE_TRANSFORM(self), FALSE);
  gst_base_transform_reconfigure_src(GST_BASE_TRANSFORM(self));
}

void getProperty(GObject* object, guint id, GValue* value, GParamSpec* spec) {
  const Settings settings = settingsOf(toConvert(object));
  switch (id) {
    case propRotation:
      return g_value_set_enum(value, static_cast<int>(settings.rotation));
    case propInterpolation:
      return g_value_set_enum(value, static_cast<int>(settings.interpolation));
    default:
      G_OBJECT_WARN_INVALID_PROPERTY_ID(object, id, spec);
  }
}

gboolean stop(GstBaseTransform* element) {
  State& state = *toConvert(element)->state;
  state.source.set(nullptr);
  state.destination.set(nullptr);
  return TRUE;
}

void finalize(GObject* object) {
  delete toConvert(object)->state;
  G_OBJECT_CLASS(gst_vek_convert_parent_class)->finalize(object);
}

}  // namespace

static void gst_vek_convert_class_init(GstVekConvertClass* klass) {
  auto* const object = reinterpret_cast<GObjectClass*>(klass);
  auto* const element = reinterpret_cast<GstElementClass*>(klass);
  constexpr auto live = static_cast<GParamFlags>(G_PARAM_READWRITE | G_PARAM_STATIC_STRINGS |
                                                 GST_PARAM_MUTABLE_PLAYING);
  object->set_property = setProperty;
  object->get_property = getProperty;
  object->finalize = finalize;
  g_object_class_install_property(
      object, propRotation,
      g_param_spec_enum("rotation", nullptr, "Rotation of the picture", gst::rotationType(),
                        static_cast<int>(Rotation::none), live));
  g_object_class_install_property(
      object, propInterpolation,
      g_param_spec_enum("interpolation", nullptr, "How luma is sampled", interpolationType(),
                        static_cast<int>(Interpolation::linear), live));
  gst_type_mark_as_plugin_api(interpolationType(), static_cast<GstPluginAPIFlags>(0));
  gst_element_class_set_static_metadata(
      element, "Preview converter", "Filter/Converter/Video/Scaler",
      "Resizes, rotates and converts YCbCr frames (studio-range BT.601)", "vek");
  gst_element_class_add_static_pad_template(element, &sinkTemplate);
  gst_element_class_add_static_pad_template(element, &srcTemplate);
  auto* const base = reinterpret_cast<GstBaseTransformClass*>(klass);
  base->transform_caps = transformCaps;
  base->fixate_caps = fixateCaps;
  base->sink_event = sinkEvent;
  base->decide_allocation = decide;
  base->propose_allocation = propose;
  base->stop = stop;
  klass->parent.set_info = setInfo;
  klass->parent.transform_frame = transformFrame;
}

static void gst_vek_convert_init(GstVekConvert* self) {
  self->state = new State;
}
