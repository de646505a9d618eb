// Resize, rotation and conversion by OpenCV, on one thread: resized planes, one conversion, one
// rotation. Planar 4:2:2 has no conversion there.
#include "vek/camera.h"

#include <opencv2/core.hpp>
#include <opencv2/imgproc.hpp>

#include "bench/peers/preview.h"

namespace vek::bench {
namespace {

cv::Mat view(const Image& image, VekiSize size, int type) {
  return {size.height, size.width, type, image.data(), static_cast<size_t>(image.step())};
}

void resize(const PreviewCase& c, const cv::Mat& from, cv::Mat& to) {
  const int filter = c.interpolation == 0 ? cv::INTER_NEAREST
                     : c.interleaved      ? cv::INTER_AREA
                                          : cv::INTER_LINEAR;
  cv::resize(from, to, to.size(), 0, 0, filter);
}

void rotate(const PreviewCase& c, const cv::Mat& from, cv::Mat& to) {
  constexpr int codes[] = {0, cv::ROTATE_90_COUNTERCLOCKWISE, cv::ROTATE_90_CLOCKWISE,
                           cv::ROTATE_180};
  if (c.rotation == vekiMirrorLeftRight) {
    cv::flip(from, to, 1);
  } else {
    cv::rotate(from, to, codes[c.rotation]);
  }
}

Call planar(const PreviewCase& c, VekiSize size) {
  const VekiSize scaled = c.scaled(size), out = c.out(size);
  const Planes src(c, size), small(c, scaled), turned(c, out);
  return [=] {
    const auto plane = [&](const Image& from, const Image& middle, const Image& to, int chroma) {
      const int x = chroma != 0 ? 2 : 1, y = chroma != 0 ? c.chromaRows : 1;
      const auto of = [&](VekiSize s) { return VekiSize{s.width / x, s.height / y}; };
      cv::Mat last = view(from, of(size), CV_8U);
      cv::Mat result = view(to, of(out), CV_8U);
      if (c.down != 1) {
        cv::Mat reduced = c.rotation == 0 ? result : view(middle, of(scaled), CV_8U);
        resize(c, last, reduced);
        last = reduced;
      }
      if (c.rotation != 0) {
        rotate(c, last, result);
      } else if (c.down == 1) {
        last.copyTo(result);
      }
    };
    plane(src.y, small.y, turned.y, 0);
    plane(src.cb, small.cb, turned.cb, 1);
    plane(src.cr, small.cr, turned.cr, 1);
  };
}

/// 4:2:0 lies in one image, the chroma planes below the luma; interleaved 4:2:2 is converted before
/// it is reduced.
Call rgb(const PreviewCase& c, VekiSize size) {
  const VekiSize scaled = c.scaled(size);
  const bool is565 = c.pixels == Pixels::rgb565;
  const auto whole = [](VekiSize s) { return cv::Mat(s.height * 3 / 2, s.width, CV_8U); };
  cv::Mat src = c.interleaved ? cv::Mat(size.height, size.width, CV_8UC2) : whole(size);
  cv::randu(src, cv::Scalar::all(0), cv::Scalar::all(256));
  cv::Mat small = whole(scaled), bgr, reduced(scaled.height, scaled.width, CV_8UC3), packed, turned;
  return [=]() mutable {
    if (c.interleaved) {
      cv::cvtColor(src, bgr, cv::COLOR_YUV2BGR_UYVY);
      resize(c, bgr, reduced);
    } else if (c.down != 1) {
      const auto plane = [](const cv::Mat& all, VekiSize s, int i) {
        uint8_t* const data = all.data + (i == 0 ? 0 : s.width * s.height * (3 + i) / 4);
        return i == 0 ? cv::Mat(s.height, s.width, CV_8U, data)
                      : cv::Mat(s.height / 2, s.width / 2, CV_8U, data);
      };
      for (int i = 0; i < 3; ++i) {
        cv::Mat to = plane(small, scaled, i);
        resize(c, plane(src, size, i), to);
      }
      cv::cvtColor(small, reduced, cv::COLOR_YUV2BGR_I420);
    } else {
      cv::cvtColor(src, reduced, cv::COLOR_YUV2BGR_I420);
    }
    if (is565) cv::cvtColor(reduced, packed, cv::COLOR_BGR2BGR565);
    if (c.rotation != 0) rotate(c, is565 ? packed : reduced, turned);
  };
}

[[maybe_unused]] const bool registered = [] {
  cv::setNumThreads(1);
  for (const PreviewCase& c : previewCases) {
    if (c.pixels == Pixels::planar) {
      addPeer(c.name(), "OpenCV", [c](VekiSize size) { return planar(c, size); });
    } else if (c.interleaved || c.chromaRows == 2) {
      addPeer(c.name(), "OpenCV", [c](VekiSize size) { return rgb(c, size); });
    }
  }
  return true;
}();

}  // namespace
}  // namespace vek::bench
