#pragma once

#include "vek/view.hpp"

#include <gst/base/gstbasetransform.h>
#include <gst/video/video.h>

// What the two elements share: views of GStreamer's frames, buffers with aligned rows, and sizes.

namespace vek::gst {

/// The largest side that the elements take or make.
inline constexpr int largestSide = 32768;

/// A buffer that is mapped as a frame for as long as this lives.
class Frame {
 public:
  Frame(const GstVideoInfo& info, GstBuffer* buffer, GstMapFlags access)
      : isMapped_(gst_video_frame_map(&frame_, &info, buffer, access)) {}
  ~Frame() {
    if (isMapped_) gst_video_frame_unmap(&frame_);
  }
  Frame(const Frame&) = delete;
  Frame& operator=(const Frame&) = delete;

  explicit operator bool() const { return isMapped_; }
  GstVideoFrame* get() { return &frame_; }

 private:
  GstVideoFrame frame_ = {};
  bool isMapped_;
};

inline Size sizeOf(const GstVideoInfo& info) {
  return {GST_VIDEO_INFO_WIDTH(&info), GST_VIDEO_INFO_HEIGHT(&info)};
}

/// A frame of one plane.
template <class Pixel>
View<Pixel> packed(GstVideoFrame* frame) {
  using Storage = typename View<Pixel>::Storage;
  return {static_cast<Storage*>(GST_VIDEO_FRAME_PLANE_DATA(frame, 0)), sizeOf(frame->info),
          Bytes(GST_VIDEO_FRAME_PLANE_STRIDE(frame, 0))};
}

/// One component of a planar frame: 0 is Y, 1 is Cb, 2 is Cr, in whatever order they lie.
template <class Sample>
View<Sample> plane(GstVideoFrame* frame, int component) {
  return {
      static_cast<Sample*>(GST_VIDEO_FRAME_COMP_DATA(frame, component)),
      {GST_VIDEO_FRAME_COMP_WIDTH(frame, component), GST_VIDEO_FRAME_COMP_HEIGHT(frame, component)},
      Bytes(GST_VIDEO_FRAME_COMP_STRIDE(frame, component))};
}

/// The three planes of a frame.
template <class Sample, Chroma chroma>
Planes<Sample, chroma> planes(GstVideoFrame* frame) {
  return {plane<Sample>(frame, 0), plane<Sample>(frame, 1), plane<Sample>(frame, 2)};
}

/// Rows of 128 bytes, which makes those of 4:2:2 chroma half as long, and of 64 bytes in one plane.
GstVideoAlignment rowAlignment(const GstVideoInfo& info);

/// Decides about the buffers that are written: downstream's if it offers some. Where it reads the
/// rows' distance from the buffers, rows are aligned.
gboolean decideAllocation(GstQuery* query);

/// Offers buffers with aligned rows to upstream.
gboolean proposeAllocation(GstQuery* query);

/// Chooses a size for what is open in `structure`: `natural` if possible, and so that the picture keeps
/// its proportions, by its pixels' if they may be chosen. `ratio` is that of the pixels of `natural`.
void fixateSize(GstStructure* structure, Size natural, GstVideoRectangle ratio);

/// Width and height of the pixels of caps, as width and height of the result; 1 and 1 if unknown.
GstVideoRectangle pixelRatio(const GstStructure* structure, bool isQuarterTurn);

/// Posts the error that nothing that downstream takes can be made of `caps`.
void explainRefusal(GstBaseTransform* element, const GstCaps* caps);

constexpr bool isQuarterTurn(Rotation rotation) {
  return rotation == Rotation::cw90 || rotation == Rotation::ccw90;
}

/// The type of the properties `rotation`.
GType rotationType();

}  // namespace vek::gst

// The types of the two elements, for plugin.cc.
G_BEGIN_DECLS
GType gst_vek_isp_get_type(void);
GType gst_vek_convert_get_type(void);
G_END_DECLS
