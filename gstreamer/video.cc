#include "video.h"

#include <algorithm>

namespace vek::gst {

GstVideoAlignment rowAlignment(const GstVideoInfo& info) {
  GstVideoAlignment alignment;
  gst_video_alignment_reset(&alignment);
  for (guint& multiple : alignment.stride_align) multiple = 63;
  if (GST_VIDEO_INFO_N_PLANES(&info) > 1) alignment.stride_align[0] = 127;
  return alignment;
}

namespace {

constexpr gsize memoryAlignment = 63;  // as GStreamer counts: the bits that are zero

/// Sets up a pool for frames of `caps`. Buffers say how far their rows are apart, if `hasMeta` allows
/// that, and have aligned ones then.
bool configure(GstBufferPool* pool, GstCaps* caps, const GstVideoInfo& info, guint size,
               guint least, guint most, GstAllocator* allocator, GstAllocationParams params,
               bool hasMeta) {
  GstStructure* config = gst_buffer_pool_get_config(pool);
  params.align |= memoryAlignment;
  gst_buffer_pool_config_set_params(config, caps, size, least, most);
  gst_buffer_pool_config_set_allocator(config, allocator, &params);
  if (hasMeta && gst_buffer_pool_has_option(pool, GST_BUFFER_POOL_OPTION_VIDEO_META)) {
    gst_buffer_pool_config_add_option(config, GST_BUFFER_POOL_OPTION_VIDEO_META);
    if (gst_buffer_pool_has_option(pool, GST_BUFFER_POOL_OPTION_VIDEO_ALIGNMENT)) {
      GstVideoAlignment alignment = rowAlignment(info);
      gst_buffer_pool_config_add_option(config, GST_BUFFER_POOL_OPTION_VIDEO_ALIGNMENT);
      gst_buffer_pool_config_set_video_alignment(config, &alignment);
    }
  }
  if (gst_buffer_pool_set_config(pool, config)) return true;
  // The pool may have changed the numbers to what it can do.
  config = gst_buffer_pool_get_config(pool);
  if (gst_buffer_pool_config_validate_params(config, caps, size, least, most))
    return gst_buffer_pool_set_config(pool, config);
  gst_structure_free(config);
  return false;
}

}  // namespace

gboolean decideAllocation(GstQuery* query) {
  GstCaps* caps = nullptr;
  gst_query_parse_allocation(query, &caps, nullptr);
  GstVideoInfo info;
  if (caps == nullptr || !gst_video_info_from_caps(&info, caps)) return FALSE;

  GstAllocator* allocator = nullptr;
  GstAllocationParams params;
  gst_allocation_params_init(&params);
  if (gst_query_get_n_allocation_params(query) > 0)
    gst_query_parse_nth_allocation_param(query, 0, &allocator, &params);

  const bool hasMeta = gst_query_find_allocation_meta(query, GST_VIDEO_META_API_TYPE, nullptr);
  const bool isOffered = gst_query_get_n_allocation_pools(query) > 0;
  GstBufferPool* pool = nullptr;
  guint size = 0, least = 0, most = 0;
  if (isOffered) gst_query_parse_nth_allocation_pool(query, 0, &pool, &size, &least, &most);
  size = std::max(size, static_cast<guint>(info.size));
  bool isReady =
      pool != nullptr && configure(pool, caps, info, size, least, most, allocator, params, hasMeta);
  if (!isReady) {
    g_clear_object(&pool);
    pool = gst_video_buffer_pool_new();
    size = static_cast<guint>(info.size);
    isReady = configure(pool, caps, info, size, least, most, allocator, params, hasMeta);
  }
  if (isReady && isOffered) {
    gst_query_set_nth_allocation_pool(query, 0, pool, size, least, most);
  } else if (isReady) {
    gst_query_add_allocation_pool(query, pool, size, least, most);
  }
  gst_object_unref(pool);
  if (allocator != nullptr) gst_object_unref(allocator);
  return isReady;
}

gboolean proposeAllocation(GstQuery* query) {
  GstCaps* caps = nullptr;
  gboolean needsPool = FALSE;
  gst_query_parse_allocation(query, &caps, &needsPool);
  GstVideoInfo info;
  if (caps == nullptr || !gst_video_info_from_caps(&info, caps)) return FALSE;
  if (needsPool) {
    GstAllocationParams params;
    gst_allocation_params_init(&params);
    GstBufferPool* const pool = gst_video_buffer_pool_new();
    const auto size = static_cast<guint>(info.size);
    if (configure(pool, caps, info, size, 0, 0, nullptr, params, true))
      gst_query_add_allocation_pool(query, pool, size, 0, 0);
    gst_object_unref(pool);
  }
  gst_query_add_allocation_meta(query, GST_VIDEO_META_API_TYPE, nullptr);
  return TRUE;
}

GstVideoRectangle pixelRatio(const GstStructure* structure, bool isQuarterTurn) {
  GstVideoRectangle ratio = {0, 0, 1, 1};
  if (!gst_structure_get_fraction(structure, "pixel-aspect-ratio", &ratio.w, &ratio.h) ||
      ratio.w <= 0 || ratio.h <= 0) {
    ratio.w = ratio.h = 1;
  }
  if (isQuarterTurn) std::swap(ratio.w, ratio.h);
  return ratio;
}

void fixateSize(GstStructure* structure, Size natural, GstVideoRectangle ratio) {
  const GValue* const wanted = gst_structure_get_value(structure, "pixel-aspect-ratio");
  const bool isRatioFixed = wanted != nullptr && gst_value_is_fixed(wanted);
  // The width of the picture over its height, in pixels of the output.
  guint64 across = static_cast<guint64>(natural.width) * static_cast<guint64>(ratio.w);
  guint64 down = static_cast<guint64>(natural.height) * static_cast<guint64>(ratio.h);
  if (isRatioFixed) {
    const GstVideoRectangle fixed = pixelRatio(structure, false);
    across *= static_cast<guint64>(fixed.h);
    down *= static_cast<guint64>(fixed.w);
    natural.width = static_cast<int>(
        gst_util_uint64_scale_round(static_cast<guint64>(natural.height), across, down));
  }
  int width = 0, height = 0;
  if (gst_structure_get_int(structure, "width", &width)) {
    natural.height =
        static_cast<int>(gst_util_uint64_scale_round(static_cast<guint64>(width), down, across));
  } else if (gst_structure_get_int(structure, "height", &height)) {
    natural.width =
        static_cast<int>(gst_util_uint64_scale_round(static_cast<guint64>(height), across, down));
  }
  gst_structure_fixate_field_nearest_int(structure, "width", natural.width);
  gst_structure_fixate_field_nearest_int(structure, "height", natural.height);
  if (isRatioFixed || !gst_structure_get_int(structure, "width", &width) ||
      !gst_structure_get_int(structure, "height", &height)) {
    return;
  }
  // across / down = width * n / (height * d)
  int n = 1, d = 1;
  const auto reduced = [](guint64 value) {
    return static_cast<int>(std::min<guint64>(value, G_MAXINT));
  };
  if (!gst_util_fraction_multiply(reduced(across), reduced(down), height, width, &n, &d)) return;
  if (wanted != nullptr) {
    gst_structure_fixate_field_nearest_fraction(structure, "pixel-aspect-ratio", n, d);
  } else if (n != d) {
    gst_structure_set(structure, "pixel-aspect-ratio", GST_TYPE_FRACTION, n, d, nullptr);
  }
}

void explainRefusal(GstBaseTransform* element, const GstCaps* caps) {
  if (GST_PAD_IS_FLUSHING(GST_BASE_TRANSFORM_SRC_PAD(element))) return;
  GstCaps* const wanted = gst_pad_peer_query_caps(GST_BASE_TRANSFORM_SRC_PAD(element), nullptr);
  gchar* const from = gst_caps_to_string(caps);
  gchar* const to = gst_caps_to_string(wanted);
  GST_ELEMENT_ERROR(element, STREAM, FORMAT,
                    ("%s cannot make what is asked for of these frames.",
                     GST_OBJECT_NAME(gst_element_get_factory(GST_ELEMENT(element)))),
                    ("The frames are %s; what follows takes %s", from, to));
  g_free(from);
  g_free(to);
  gst_caps_unref(wanted);
}

GType rotationType() {
  static const GEnumValue values[] = {
      {static_cast<int>(Rotation::none), "As it is", "none"},
      {static_cast<int>(Rotation::ccw90), "A quarter turn counter-clockwise", "ccw90"},
      {static_cast<int>(Rotation::cw90), "A quarter turn clockwise", "cw90"},
      {static_cast<int>(Rotation::half), "Half a turn", "half"},
      {static_cast<int>(Rotation::mirrorLeftRight), "Columns in reverse order",
       "mirror-left-right"},
      {static_cast<int>(Rotation::mirrorTopBottom), "Rows in reverse order", "mirror-top-bottom"},
      {0, nullptr, nullptr}};
  static const GType type = g_enum_register_static("GstVekRotation", values);
  return type;
}

}  // namespace vek::gst
