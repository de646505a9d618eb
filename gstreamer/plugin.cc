#include "video.h"

namespace {

gboolean registerElements(GstPlugin* plugin) {
  return gst_element_register(plugin, "vekisp", GST_RANK_NONE, gst_vek_isp_get_type()) &&
         gst_element_register(plugin, "vekconvert", GST_RANK_NONE, gst_vek_convert_get_type());
}

}  // namespace

#define PACKAGE "vek"
GST_PLUGIN_DEFINE(GST_VERSION_MAJOR, GST_VERSION_MINOR, vek,
                  "The camera path: raw frames to pictures, scaling, rotation, conversion",
                  registerElements, VEK_PLUGIN_VERSION, "Apache 2.0", "vek", "vek")
