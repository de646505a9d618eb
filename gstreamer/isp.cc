// vekisp: raw Bayer frames in, pictures out.

#include "vek/isp.hpp"

#include <algorithm>
#include <array>
#include <cstring>
#include <memory>
#include <string>

#include "isp_properties.h"
#include "video.h"

GST_DEBUG_CATEGORY_STATIC(gst_vek_isp_debug);
#define GST_CAT_DEFAULT gst_vek_isp_debug

namespace {

using namespace vek;
using gst::Properties;

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

void setProperty(GObject* object, guint id, const GValue* value, GParamSpec* spec) {
  GstVekIsp* const self = toIsp(object);
  GST_OBJECT_LOCK(self);
  const unsigned changed = gst::setProperty(self->state->properties, object, id, value, spec);
  GST_OBJECT_UNLOCK(self);
  // Whether another size comes out now is for the negotiation to say.
  if (changed & gst::changedShape) gst_base_transform_reconfigure_src(GST_BASE_TRANSFORM(self));
}

void getProperty(GObject* object, guint id, GValue* value, GParamSpec* spec) {
  gst::getProperty(propertiesOf(toIsp(object)), object, id, value, spec);
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
      if (std::strncmp(format, gst::orderNames[i], 4) == 0) source.order = static_cast<Bayer>(i);
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
    if ((properties.changed & gst::changedExposure) == 0) exposure = state.isp->results().exposure;
    if ((properties.changed & gst::changedGains) == 0) settings.gains = state.isp->gains();
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
  if (state.isp == nullptr || (changed & gst::changedShape)) {
    GstCaps* const caps = gst_pad_get_current_caps(GST_BASE_TRANSFORM_SINK_PAD(self));
    state.source = sourceOf(gst_caps_get_structure(caps, 0), properties);
    gst_caps_unref(caps);
    return makeIsp(self, properties);
  }
  Isp& isp = *state.isp;
  const IspSettings& settings = properties.isp;
  try {
    if (changed & gst::changedLevels) isp.setLevels(settings.black, settings.white);
    if (changed & gst::changedGains) isp.setGains(settings.gains, settings.digitalGain);
    if (changed & gst::changedCurve) isp.setCurve(settings.curve);
    if (changed & gst::changedColor) isp.setColor(settings.color);
    if (changed & gst::changedBalance) isp.setWhiteBalance(settings.whiteBalance);
    if (changed & gst::changedControl) isp.setExposureSettings(settings.exposure);
    if (changed & gst::changedExposure) isp.setExposure(properties.taken);
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

}  // namespace

static void gst_vek_isp_class_init(GstVekIspClass* klass) {
  GST_DEBUG_CATEGORY_INIT(gst_vek_isp_debug, "vekisp", 0, "raw frames to pictures");
  auto* const object = reinterpret_cast<GObjectClass*>(klass);
  auto* const element = reinterpret_cast<GstElementClass*>(klass);
  object->set_property = setProperty;
  object->get_property = getProperty;
  object->finalize = finalize;
  gst::installProperties(object);
  gst_element_class_set_static_metadata(
      element, "Raw frames to pictures", "Filter/Converter/Video",
      "Develops raw Bayer frames, with automatic exposure and white balance", "vek");
  gst_element_class_add_static_pad_template(element, &sinkTemplate);
  gst_element_class_add_static_pad_template(element, &srcTemplate);
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
