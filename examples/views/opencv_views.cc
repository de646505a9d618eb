// Images of OpenCV are used where they lie: a view takes the pointer, the size and the step, which is
// one of bytes in both libraries.
#include <cstdio>
#include <opencv2/core.hpp>
#include <vek/vek.hpp>

namespace {

/// A view of an image of OpenCV, whose pixels are B, G, R, or are single bytes.
template <class Pixel, int type>
vek::View<Pixel> viewOf(cv::Mat& mat) {
  CV_Assert(mat.type() == type && mat.dims == 2);
  return {mat.data, {mat.cols, mat.rows}, vek::Bytes(static_cast<int>(mat.step[0]))};
}

}  // namespace

int main() {
  try {
    cv::Mat large(480, 640, CV_8UC3, cv::Scalar(10, 60, 200));
    cv::Mat part = large(cv::Rect(100, 50, 320, 240));
    cv::Mat rgb(part.size(), CV_8UC3), gray(part.size(), CV_8UC1);

    // OpenCV's pixels are B, G, R. Passing them as R, G, B does not compile.
    const vek::View<vek::Bgr24> pixels = viewOf<vek::Bgr24, CV_8UC3>(part);
    const vek::View<vek::Rgb24> exchanged = viewOf<vek::Rgb24, CV_8UC3>(rgb);
    vek::permuteChannels(pixels, exchanged, std::array<int, 3>{2, 1, 0});
    vek::rgbToGray(exchanged, viewOf<Vek8u, CV_8UC1>(gray));

    // A view may be longer-lived than a cv::Mat header, but not than its pixels.
    vek::set(pixels, {0, 0, 0});
    const int luma = gray.at<Vek8u>(239, 319);
    std::printf("luma %d, inside %d, outside %d\n", luma, large.at<cv::Vec3b>(50, 100)[2],
                large.at<cv::Vec3b>(49, 100)[2]);
    return luma == 96 && large.at<cv::Vec3b>(50, 100)[2] == 0 &&
                   large.at<cv::Vec3b>(49, 100)[2] == 200
               ? 0
               : 1;
  } catch (const std::exception& error) {
    std::fprintf(stderr, "%s\n", error.what());
    return 1;
  }
}
