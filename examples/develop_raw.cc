// A raw frame to a picture, by the camera path of the C++ interface.
//
//     develop_raw FRAME.raw WIDTH HEIGHT BLACK [RGGB|GRBG|GBRG|BGGR] >PICTURE.ppm
//
// The frame is packed RAW10, rows without padding. The white balance finds its gains in the frame itself.
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>
#include <vek/isp.hpp>

namespace {

vek::Bayer orderNamed(const std::string& name) {
  const char* const names[] = {"RGGB", "GRBG", "GBRG", "BGGR"};
  for (int i = 0; i < 4; ++i) {
    if (name == names[i]) return static_cast<vek::Bayer>(i);
  }
  throw std::runtime_error(name + " is no order of colours");
}

/// An executor: calls job(0) to job(n - 1) at once and waits for all of them.
struct Threads {
  template <class Job>
  void operator()(int n, Job&& job) const {
    std::vector<std::thread> threads;
    for (int i = 1; i < n; ++i) threads.emplace_back([&job, i] { job(i); });
    job(0);
    for (std::thread& thread : threads) thread.join();
  }
};

void develop(int argc, char** argv) {
  if (argc < 5) throw std::runtime_error("arguments: FRAME.raw WIDTH HEIGHT BLACK [ORDER]");
  vek::IspSettings settings;
  settings.size = {std::atoi(argv[2]), std::atoi(argv[3])};
  settings.format = vek::Raw::csi2_10;
  settings.order = orderNamed(argc > 5 ? argv[5] : "RGGB");
  settings.black = std::atoi(argv[4]);
  settings.exposure.on = false;  // the frame is what it is
  settings.jobs = 2;
  vek::Isp isp(settings);  // throws vek::Error, which says what is wrong

  std::ifstream file(argv[1], std::ios::binary);
  const std::vector<char> bytes{std::istreambuf_iterator<char>(file), {}};
  const int step = static_cast<int>(vek::rawRowBytes(settings.format, settings.size.width));
  const std::vector<Vek8u> samples(bytes.begin(), bytes.end());
  // The view checks that the file is long enough, process() that the rows are.
  const vek::View<const vek::RawByte> frame(samples, {step, settings.size.height});

  vek::Image<vek::Rgb24> picture(isp.outputSize());
  // Each pass measures with the gains of the one before it; two or three are enough.
  for (int i = 0; i < 8 && !isp.results().balanceHeld; ++i) isp.process(frame, picture, Threads());

  std::printf("P6\n%d %d\n255\n", picture.width(), picture.height());
  for (int y = 0; y < picture.height(); ++y) {
    std::fwrite(picture.row(y), 3, static_cast<std::size_t>(picture.width()), stdout);
  }
  std::fprintf(stderr, "gains: red %.2f, blue %.2f\n", isp.gains().red, isp.gains().blue);
}

}  // namespace

int main(int argc, char** argv) {
  try {
    develop(argc, argv);
  } catch (const std::exception& error) {
    std::fprintf(stderr, "develop_raw: %s\n", error.what());
    return 1;
  }
  return 0;
}
