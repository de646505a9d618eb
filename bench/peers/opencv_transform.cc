// Fourier and cosine transforms by OpenCV, of floats. Its data are floats already: unlike ours, it
// converts nothing.
#include "bench/peers/opencv.h"
#include "bench/peers/transform.h"

namespace vek::bench {
namespace {

void addFourier(const char* name, int flags) {
  addPeer(name, "OpenCV", [=](VekiSize size) -> Call {
    const cv::Mat src = noise(fourierSize(size), CV_32F);
    return [=, dst = cv::Mat()]() mutable { cv::dft(src, dst, flags); };
  });
}

/// Block by block: cv::dct has one size for the whole of an image.
void addCosine(const char* name, bool whole, int flags) {
  addPeer(name, "OpenCV", [=](VekiSize size) -> Call {
    const VekiSize blocks = whole ? VekiSize{size.width / 8, size.height / 8} : VekiSize{1, 1};
    const cv::Mat src = noise({8 * blocks.width, 8 * blocks.height}, CV_32F), dst = src.clone();
    return [=] {
      for (int y = 0; y < blocks.height; ++y) {
        for (int x = 0; x < blocks.width; ++x) {
          const cv::Rect block(8 * x, 8 * y, 8, 8);
          cv::Mat to = dst(block);
          cv::dct(src(block), to, flags);
        }
      }
    };
  });
}

[[maybe_unused]] const bool registered = [] {
  for (const char* name : forwardTransforms) addFourier(name, 0);
  for (const char* name : inverseTransforms)
    addFourier(name, cv::DFT_INVERSE | cv::DFT_REAL_OUTPUT);
  addCosine("vekiBlockDCTFwd_16s_C1", false, 0);
  addCosine("vekiBlockDCTInv_16s_C1", false, cv::DCT_INVERSE);
  addCosine("vekiBlockDCTFwd_16s_C1R", true, 0);
  addCosine("vekiBlockDCTInv_16s_C1R", true, cv::DCT_INVERSE);
  return true;
}();

}  // namespace
}  // namespace vek::bench
