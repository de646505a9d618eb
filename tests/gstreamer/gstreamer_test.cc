// Pipelines with vekisp and vekconvert: every frame has the bytes that the C++ interface makes of it.

#include "vek/isp.hpp"
#include "vek/vek.hpp"

#include <cstdio>
#include <cstring>
#include <functional>
#include <glib/gstdio.h>
#include <gst/app/gstappsink.h>
#include <gst/app/gstappsrc.h>
#include <gst/video/video.h>
#include <gtest/gtest.h>
#include <memory>
#include <random>
#include <string>
#include <vector>

namespace {

using Bytes = std::vector<Vek8u>;

template <auto release>
struct Release {
  template <class T>
  void operator()(T* object) const {
    release(object);
  }
};
using Element = std::unique_ptr<GstElement, Release<gst_object_unref>>;
using Sample = std::unique_ptr<GstSample, Release<gst_sample_unref>>;
using Text = std::unique_ptr<gchar, Release<g_free>>;

Bytes noise(std::size_t count, unsigned least = 0, unsigned most = 255) {
  std::mt19937 random(7);
  Bytes bytes(count);
  for (Vek8u& byte : bytes) byte = static_cast<Vek8u>(least + random() % (most - least + 1));
  return bytes;
}

/// The rows of a view, one after another.
template <class View>
void append(Bytes& to, const View& view) {
  for (int y = 0; y < view.height(); ++y) {
    const auto* const row = reinterpret_cast<const Vek8u*>(view.row(y));
    to.insert(to.end(), row, row + view.rowBytes());
  }
}
template <class Image>
Bytes bytesOf(const Image& image) {
  Bytes result;
  if constexpr (requires { image.pairs(); }) {
    append(result, image.y());
    append(result, image.pairs());
  } else if constexpr (requires { image.cb(); }) {
    append(result, image.y());
    append(result, image.cb());
    append(result, image.cr());
  } else {
    append(result, image);
  }
  return result;
}

/// What a pipeline gave: rows without what lies between them.
struct Picture {
  std::string format;
  vek::Size size = {0, 0};
  Bytes bytes;
  GstClockTime time = 0;
};
struct Result {
  std::vector<Picture> pictures;
  std::vector<std::string> messages;  ///< of elements
  std::string caps, error;
};

Picture pictureOf(GstSample* sample) {
  GstVideoInfo info;
  GstVideoFrame frame;
  Picture picture;
  GstBuffer* const buffer = gst_sample_get_buffer(sample);
  if (!gst_video_info_from_caps(&info, gst_sample_get_caps(sample)) ||
      !gst_video_frame_map(&frame, &info, buffer, GST_MAP_READ)) {
    return picture;
  }
  picture.format = gst_video_format_to_string(GST_VIDEO_INFO_FORMAT(&info));
  picture.size = {info.width, info.height};
  picture.time = GST_BUFFER_PTS(buffer);
  for (guint plane = 0; plane < GST_VIDEO_FRAME_N_PLANES(&frame); ++plane) {
    const int component = plane == 0 ? 0 : 1;  // one that lies there
    const int bytes = GST_VIDEO_FRAME_COMP_WIDTH(&frame, component) *
                      GST_VIDEO_FRAME_COMP_PSTRIDE(&frame, component);
    const auto* row = static_cast<const Vek8u*>(GST_VIDEO_FRAME_PLANE_DATA(&frame, plane));
    for (int y = 0; y < GST_VIDEO_FRAME_COMP_HEIGHT(&frame, component); ++y) {
      picture.bytes.insert(picture.bytes.end(), row, row + bytes);
      row += GST_VIDEO_FRAME_PLANE_STRIDE(&frame, plane);
    }
  }
  gst_video_frame_unmap(&frame);
  return picture;
}

/// Called with the pipeline and a frame's number and buffer before it is pushed.
using AtFrame = std::function<void(GstElement*, std::size_t, GstBuffer*)>;

/// Runs "appsrc ! middle ! appsink" over frames of `caps`, or "middle ! appsink" without caps.
Result run(const std::string& middle, const std::string& caps, const std::vector<Bytes>& frames,
           const AtFrame& before = {}) {
  Result result;
  const std::string source =
      caps.empty() ? "" : "appsrc name=in format=time caps=\"" + caps + "\" ! ";
  GError* error = nullptr;
  const Element pipeline(
      gst_parse_launch((source + middle + " ! appsink name=out sync=false").c_str(), &error));
  if (error != nullptr) {
    result.error = error->message;
    g_clear_error(&error);
    return result;
  }
  const auto named = [&](const char* name) {
    return Element(gst_bin_get_by_name(GST_BIN(pipeline.get()), name));
  };
  const Element in = named("in"), out = named("out");
  gst_element_set_state(pipeline.get(), GST_STATE_PLAYING);
  // An error is seen at once, where waiting for a picture would take long.
  GstBus* const bus = gst_element_get_bus(pipeline.get());
  const auto listen = [&] {
    while (GstMessage* const message = gst_bus_pop(bus)) {
      if (GST_MESSAGE_TYPE(message) == GST_MESSAGE_ELEMENT) {
        const Text text(gst_structure_to_string(gst_message_get_structure(message)));
        result.messages.emplace_back(text.get());
      } else if (GST_MESSAGE_TYPE(message) == GST_MESSAGE_ERROR && result.error.empty()) {
        gst_message_parse_error(message, &error, nullptr);
        result.error = error->message;
        g_clear_error(&error);
      }
      gst_message_unref(message);
    }
    return result.error.empty();
  };
  const auto take = [&] {
    for (int tries = 0; tries < 1000 && listen(); ++tries) {
      const Sample sample(gst_app_sink_try_pull_sample(GST_APP_SINK(out.get()), 10 * GST_MSECOND));
      if (sample == nullptr) {
        if (gst_app_sink_is_eos(GST_APP_SINK(out.get()))) return false;
        continue;
      }
      result.pictures.push_back(pictureOf(sample.get()));
      result.caps = Text(gst_caps_to_string(gst_sample_get_caps(sample.get()))).get();
      return true;
    }
    return false;
  };
  for (std::size_t i = 0; i < frames.size(); ++i) {
    GstBuffer* const buffer = gst_buffer_new_memdup(frames[i].data(), frames[i].size());
    GST_BUFFER_PTS(buffer) = i * GST_SECOND;
    if (before) before(pipeline.get(), i, buffer);
    gst_app_src_push_buffer(GST_APP_SRC(in.get()), buffer);
    if (!take()) break;
  }
  while (frames.empty() && take()) {
  }
  listen();
  gst_object_unref(bus);
  gst_element_set_state(pipeline.get(), GST_STATE_NULL);
  return result;
}

void expectSame(const Result& result, const Bytes& wanted, const char* format, vek::Size size) {
  SCOPED_TRACE(format);
  EXPECT_EQ(result.error, "");
  ASSERT_EQ(result.pictures.size(), 1u);
  const Picture& picture = result.pictures[0];
  EXPECT_EQ(picture.format, format);
  EXPECT_EQ(picture.size.width, size.width);
  EXPECT_EQ(picture.size.height, size.height);
  EXPECT_TRUE(picture.bytes == wanted);
}

// ---- vekisp -----------------------------------------------------------------------------------

/// A frame of 10 bits in words, in rows of `step` bytes.
Bytes rawFrame(int step, int height) {
  Bytes bytes = noise(static_cast<std::size_t>(step) * static_cast<std::size_t>(height));
  for (std::size_t i = 1; i < bytes.size(); i += 2) bytes[i] &= 3;
  return bytes;
}

vek::View<const vek::RawByte> viewOf(const Bytes& bytes, int step) {
  return {bytes.data(), vek::Size{200, 70}, vek::Bytes(step)};
}

constexpr const char* caps10 =
    "video/x-bayer, format=gbrg10le, width=100, height=70, framerate=25/1";
vek::IspSettings settings10() {
  vek::IspSettings settings;
  settings.size = {100, 70};
  settings.format = vek::Raw::plain16;
  settings.bits = 10;
  settings.order = vek::Bayer::gbrg;
  return settings;
}

template <class Image>
void expectPicture(const char* format, const Bytes& frame) {
  vek::IspSettings settings = settings10();
  settings.black = 20;
  settings.gains = {1.5, 1, 2};
  settings.color.matrix = {{{1.6, -.4, -.2}, {-.3, 1.5, -.2}, {0, -.5, 1.5}}};
  settings.curve = vek::ToneCurve::bt709;
  settings.rotation = vek::Rotation::cw90;
  vek::Isp isp(settings);
  Image image(isp.outputSize());
  isp.process(viewOf(frame, 200), image);
  const std::string element =
      "vekisp black-level=20 gains=\"<1.5,1,2>\" curve=bt709 rotation=cw90 "
      "matrix=\"<1.6,-.4,-.2,-.3,1.5,-.2,0,-.5,1.5>\" ! video/x-raw,format=";
  expectSame(run(element + format, caps10, {frame}), bytesOf(image), format, isp.outputSize());
}

TEST(VekIsp, EveryFormat) {
  const Bytes frame = rawFrame(200, 70);
  expectPicture<vek::Image420>("I420", frame);
  expectPicture<vek::ImageNv12>("NV12", frame);
  expectPicture<vek::Image422>("Y42B", frame);
  expectPicture<vek::Image<vek::Rgb565>>("RGB16", frame);
  expectPicture<vek::Image<vek::Rgb555>>("RGB15", frame);
  expectPicture<vek::Image<vek::Bgr24>>("BGR", frame);
  expectPicture<vek::Image<vek::Rgb24>>("RGB", frame);
  expectPicture<vek::Image<vek::Bgrx32>>("BGRx", frame);
  expectPicture<vek::Image<vek::Rgbx32>>("RGBA", frame);
}

TEST(VekIsp, RowsSizesAndRange) {
  // Rows farther apart than usual, as a driver's buffers tell; a smaller picture of full range.
  const Bytes frame = rawFrame(256, 70);
  vek::IspSettings settings = settings10();
  settings.output = {60, 40};
  settings.range = vek::Range::full;
  vek::Isp isp(settings);
  vek::Image420 image(isp.outputSize());
  isp.process(viewOf(frame, 256), image);
  const auto addMeta = [](GstElement*, std::size_t, GstBuffer* buffer) {
    gsize offsets[4] = {};
    gint strides[4] = {256};
    gst_buffer_add_video_meta_full(buffer, GST_VIDEO_FRAME_FLAG_NONE, GST_VIDEO_FORMAT_ENCODED, 100,
                                   70, 1, offsets, strides);
  };
  const Result result =
      run("vekisp ! video/x-raw,format=I420,width=60,height=40,colorimetry=1:4:7:1", caps10,
          {frame}, addMeta);
  expectSame(result, bytesOf(image), "I420", {60, 40});
  EXPECT_NE(result.caps.find("framerate=(fraction)25/1"), std::string::npos) << result.caps;
  // 100 x 68 samples are shown in 60 x 40 pixels.
  EXPECT_NE(result.caps.find("pixel-aspect-ratio=(fraction)50/51"), std::string::npos)
      << result.caps;

  const Result natural =
      run("vekisp scale=2 ! video/x-raw,format=I420", caps10, {rawFrame(200, 70)});
  ASSERT_EQ(natural.pictures.size(), 1u) << natural.error;
  EXPECT_EQ(natural.pictures[0].size.width, 48);
  EXPECT_NE(natural.caps.find("colorimetry=(string)2:4:7:1"), std::string::npos) << natural.caps;
}

TEST(VekIsp, FilesOfPackedFrames) {
  const Bytes frames = noise(std::size_t{3} * 64 / 4 * 5 * 48);
  gchar* opened = nullptr;
  const gint file = g_file_open_tmp("vek-XXXXXX", &opened, nullptr);
  const Text name(opened);
  ASSERT_GE(file, 0);
  g_close(file, nullptr);
  ASSERT_TRUE(g_file_set_contents(name.get(), reinterpret_cast<const gchar*>(frames.data()),
                                  static_cast<gssize>(frames.size()), nullptr));
  const std::string source = std::string("filesrc location=") + name.get();
  const std::string element =
      " ! vekisp format=csi2-10 order=bggr width=64 height=48 framerate=10/1";
  const Result result =
      run(source + " blocksize=3840" + element + " ! video/x-raw,format=RGB", "", {});
  EXPECT_EQ(result.error, "");
  EXPECT_EQ(result.messages.size(), 3u);
  ASSERT_EQ(result.pictures.size(), 3u);
  vek::IspSettings settings;
  settings.size = {64, 48};
  settings.order = vek::Bayer::bggr;
  vek::Isp isp(settings);
  vek::Image<vek::Rgb24> image(isp.outputSize());
  for (std::size_t i = 0; i < 3; ++i) {
    isp.process({frames.data() + i * 3840, vek::Size{80, 48}}, image);
    EXPECT_TRUE(result.pictures[i].bytes == bytesOf(image)) << i;
    EXPECT_EQ(result.pictures[i].time, i * GST_SECOND / 10);
  }
  EXPECT_NE(run(source + " blocksize=3000" + element, "", {}).error.find("take 3840"),
            std::string::npos);
  EXPECT_NE(run(source + " ! vekisp", "", {}).error.find("width and height"), std::string::npos);
  std::remove(name.get());
}

TEST(VekIsp, ControlAndChangesWhileItRuns) {
  const Bytes frame = rawFrame(200, 70);
  vek::IspSettings settings = settings10();
  settings.exposure.most.time = 500;
  vek::Isp isp(settings);
  vek::Image<vek::Rgb24> image(isp.outputSize());
  const auto change = [](GstElement* pipeline, std::size_t i, GstBuffer*) {
    const Element element(gst_bin_get_by_name(GST_BIN(pipeline), "isp"));
    if (i == 2)
      g_object_set(element.get(), "black-level", 40, "white-level", 900, "exposure-time", 7.,
                   nullptr);
    if (i == 3) gst_util_set_object_arg(G_OBJECT(element.get()), "rotation", "half");
    if (i == 4) gst_util_set_object_arg(G_OBJECT(element.get()), "rotation", "ccw90");
  };
  const Result result =
      run("vekisp name=isp auto-exposure=true max-exposure-time=500 ! video/x-raw,format=RGB",
          caps10, std::vector<Bytes>(5, frame), change);
  EXPECT_EQ(result.error, "");
  ASSERT_EQ(result.pictures.size(), 5u);
  ASSERT_EQ(result.messages.size(), 5u);
  for (std::size_t i = 0; i < 5; ++i) {
    SCOPED_TRACE(i);
    if (i == 2) {
      isp.setLevels(40, 900);
      isp.setExposure({7, 1});
    }
    if (i >= 3) {  // another Isp goes on with what the last one had found
      settings.black = 40;
      settings.white = 900;
      settings.gains = isp.gains();
      settings.rotation = i == 3 ? vek::Rotation::half : vek::Rotation::ccw90;
      const vek::Exposure exposure = isp.results().exposure;
      isp = vek::Isp(settings);
      isp.setExposure(exposure);
      image = vek::Image<vek::Rgb24>(isp.outputSize());
    }
    isp.process(viewOf(frame, 200), image);
    EXPECT_TRUE(result.pictures[i].bytes == bytesOf(image));
    EXPECT_EQ(result.pictures[i].size.width, isp.outputSize().width);
    GstStructure* const message = gst_structure_from_string(result.messages[i].c_str(), nullptr);
    const auto value = [&](const char* name) {
      gdouble read = -1;
      EXPECT_TRUE(gst_structure_get_double(message, name, &read)) << name;
      return read;
    };
    EXPECT_NEAR(value("exposure-time"), isp.results().exposure.time, 1e-9);
    EXPECT_NEAR(value("red-gain"), isp.results().gains.red, 1e-9);
    EXPECT_NEAR(value("brightness"), isp.results().brightness, 1e-9);
    gst_structure_free(message);
  }
}

TEST(VekIsp, RefusesWithReasons) {
  const Bytes frame = rawFrame(200, 70);
  const auto expectError = [&](const char* middle, const char* part, const char* caps = caps10) {
    const std::string error = run(middle, caps, {frame}).error;
    EXPECT_NE(error.find(part), std::string::npos) << middle << ": " << error;
  };
  // Found when the elements are linked, and when the frames come.
  expectError("vekisp ! video/x-raw,format=I420,width=51", "can't handle caps");
  expectError("vekisp ! video/x-raw,format=RGB,framerate=50/1", "cannot make");
  expectError("vekisp ! video/x-raw,format=I420,colorimetry=bt709", "BT.601");
  expectError("vekisp crop=\"<0,0,50,40>\"", "red samples are in");
  expectError("vekisp stride=100", "rows take 200 bytes");
  expectError("vekisp black-level=2000", "black is 2000");
  expectError("vekisp", "A frame has 14000 bytes",
              "video/x-bayer, format=gbrg16le, width=100, height=80, framerate=25/1");
}

// ---- vekconvert -------------------------------------------------------------------------------

GstVideoInfo infoOf(const char* format, vek::Size size) {
  GstVideoInfo info;
  gst_video_info_set_format(&info, gst_video_format_from_string(format),
                            static_cast<guint>(size.width), static_cast<guint>(size.height));
  return info;
}
std::string capsOf(const char* format, vek::Size size) {
  return std::string("video/x-raw, format=") + format + ", width=" + std::to_string(size.width) +
         ", height=" + std::to_string(size.height) + ", framerate=25/1";
}

/// The planes of a frame that lies in memory as GStreamer lays it out.
template <vek::Chroma chroma>
vek::PlanarImage<chroma> planarCopy(const Bytes& bytes, const GstVideoInfo& info) {
  vek::PlanarImage<chroma> image({info.width, info.height});
  const vek::View<Vek8u> planes[] = {image.y(), image.cb(), image.cr()};
  for (std::size_t p = 0; p < 3; ++p) {
    for (int y = 0; y < planes[p].height(); ++y) {
      std::memcpy(planes[p].row(y),
                  bytes.data() + info.offset[p] + static_cast<std::size_t>(y * info.stride[p]),
                  static_cast<std::size_t>(planes[p].width()));
    }
  }
  return image;
}

template <vek::Chroma chroma>
struct Planar {
  const char* format;
  Bytes frame;
  vek::PlanarImage<chroma> image;

  Planar(const char* format_, vek::Size size)
      : format(format_),
        frame(noise(infoOf(format, size).size, 16, 235)),
        image(planarCopy<chroma>(frame, infoOf(format, size))) {}

  template <class Image>
  void expect(const char* to, const char* rotation, vek::Rotation enumerator,
              vek::Size size) const {
    SCOPED_TRACE(std::string(format) + " " + rotation);
    const auto wanted =
        vek::resize<Image>(image.view(), vek::rotated(size, enumerator), enumerator);
    expectSame(run(std::string("vekconvert rotation=") + rotation + " ! " + capsOf(to, size),
                   capsOf(format, image.size()), {frame}),
               bytesOf(wanted), to, size);
  }
};

TEST(VekConvert, PlanesToEveryFormat) {
  using vek::Rotation;
  // 132 and 68 are multiples of 4, not of 8: rows lie as most elements lay them, not as kernels want.
  constexpr vek::Size size = {132, 70}, half = {66, 34}, odd = {67, 35};
  const Planar<vek::Chroma::c420> i420("I420", size);
  i420.expect<vek::Image420>("I420", "cw90", Rotation::cw90, half);
  i420.expect<vek::Image420>("I420", "half", Rotation::half, size);
  i420.expect<vek::Image420>("I420", "mirror-top-bottom", Rotation::mirrorTopBottom, half);
  i420.expect<vek::Image<vek::Bgr24>>("BGR", "none", Rotation::none, odd);
  i420.expect<vek::Image<vek::Rgb565>>("RGB16", "ccw90", Rotation::ccw90, odd);
  i420.expect<vek::Image<vek::Rgb555>>("RGB15", "mirror-left-right", Rotation::mirrorLeftRight,
                                       half);
  const Planar<vek::Chroma::c422> y42b("Y42B", size);
  y42b.expect<vek::Image422>("Y42B", "ccw90", Rotation::ccw90, half);
  y42b.expect<vek::Image<vek::Bgr24>>("BGR", "cw90", Rotation::cw90, half);
  y42b.expect<vek::Image<vek::Rgb565>>("RGB16", "half", Rotation::half, odd);
  expectSame(
      run("vekconvert rotation=cw90 ! video/x-raw,format=I420", capsOf("Y42B", size), {y42b.frame}),
      bytesOf(vek::to420(y42b.image.view(), Rotation::cw90)), "I420", {70, 132});
}

TEST(VekConvert, InterleavedFrames) {
  const Bytes frame = noise(infoOf("UYVY", {134, 70}).size, 16, 235);
  vek::Image<vek::Uyvy> source({134, 70});
  for (int y = 0; y < 70; ++y)
    std::memcpy(source.row(y), frame.data() + static_cast<std::size_t>(y * 268), 268);
  const std::string caps = capsOf("UYVY", {134, 70});
  for (const int factor : {2, 4, 8}) {
    const vek::Size size = {134 / factor, 70 / factor};
    expectSame(run("vekconvert ! " + capsOf("RGB16", size), caps, {frame}),
               bytesOf(vek::reduce<vek::Rgb565>(source.view(), factor)), "RGB16", size);
  }
  const auto wanted =
      vek::reduce<vek::Rgb555>(source.view(), 2, vek::Reduction::first, vek::Rotation::cw90);
  expectSame(run("vekconvert interpolation=nearest rotation=cw90 ! video/x-raw,format=RGB15", caps,
                 {frame}),
             bytesOf(wanted), "RGB15", {35, 67});
  expectSame(run("vekconvert rotation=half ! video/x-raw,format=I420", caps, {frame}),
             bytesOf(vek::to420(source.view(), vek::Rotation::half)), "I420", {134, 70});
}

TEST(VekConvert, Negotiation) {
  constexpr vek::Size size = {64, 32};
  const Planar<vek::Chroma::c420> i420("I420", size);
  const auto sizeOf = [&](const char* middle) {
    const Result result = run(middle, capsOf("I420", size), {i420.frame});
    EXPECT_EQ(result.error, "") << middle;
    return result.pictures.empty() ? vek::Size{0, 0} : result.pictures[0].size;
  };
  EXPECT_EQ(sizeOf("vekconvert rotation=cw90").width, 32);
  EXPECT_EQ(sizeOf("vekconvert ! video/x-raw,width=32").height, 16);
  EXPECT_EQ(sizeOf("vekconvert rotation=ccw90 ! video/x-raw,width=16,format=BGR").height, 32);
  EXPECT_EQ(sizeOf("vekconvert ! video/x-raw,height=64,pixel-aspect-ratio=2/1").width, 64);
  // Nothing to do: what comes in goes out, until there is.
  const auto rotate = [](GstElement* pipeline, std::size_t i, GstBuffer*) {
    const Element element(gst_bin_get_by_name(GST_BIN(pipeline), "convert"));
    if (i == 1) gst_util_set_object_arg(G_OBJECT(element.get()), "rotation", "half");
  };
  const Result both =
      run("vekconvert name=convert", capsOf("I420", size), {i420.frame, i420.frame}, rotate);
  ASSERT_EQ(both.pictures.size(), 2u);
  EXPECT_TRUE(both.pictures[0].bytes == bytesOf(i420.image));
  EXPECT_TRUE(both.pictures[1].bytes ==
              bytesOf(vek::resize<vek::Image420>(i420.image.view(), size, vek::Rotation::half)));
  const std::string error =
      run("vekconvert ! video/x-raw,format=Y42B", capsOf("I420", size), {i420.frame}).error;
  EXPECT_NE(error.find("vekconvert cannot make"), std::string::npos) << error;
}

}  // namespace

int main(int argc, char** argv) {
  testing::InitGoogleTest(&argc, argv);
  gst_init(&argc, &argv);
  const int status = RUN_ALL_TESTS();
  gst_deinit();
  return status;
}
