// A camera's stream to video: packed RAW10 from standard input, I420 to standard output.
//
//     raw_stream WIDTH HEIGHT BLACK <FRAMES.raw >FRAMES.yuv
//
// Exposure and white balance run on every frame; what the sensor should be set to is printed.
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <stdexcept>
#include <vector>
#include <vek/isp.hpp>

namespace {

void writePlane(const vek::View<const Vek8u>& plane) {
  for (int y = 0; y < plane.height(); ++y) {
    std::fwrite(plane.row(y), 1, static_cast<std::size_t>(plane.width()), stdout);
  }
}

void run(int argc, char** argv) {
  if (argc != 4) throw std::runtime_error("arguments: WIDTH HEIGHT BLACK");
  vek::IspSettings settings;
  settings.size = {std::atoi(argv[1]), std::atoi(argv[2])};
  settings.format = vek::Raw::csi2_10;
  settings.black = std::atoi(argv[3]);
  // What this sensor can do: 1/30 s at most, in microseconds, and a gain of up to 16.
  settings.exposure.least = {20, 1};
  settings.exposure.most = {33333, 16};
  vek::Isp isp(settings);
  vek::Image420 picture(isp.outputSize());

  const int step = static_cast<int>(vek::rawRowBytes(settings.format, settings.size.width));
  std::vector<Vek8u> bytes(static_cast<std::size_t>(step) *
                           static_cast<std::size_t>(settings.size.height));
  for (int i = 0; std::fread(bytes.data(), bytes.size(), 1, stdin) == 1; ++i) {
    // A real sensor shows what it was set to some frames later: isp.setExposure() would say what this
    // frame was taken with.
    isp.process(vek::View<const vek::RawByte>(bytes, {step, settings.size.height}), picture);
    const vek::IspResults& results = isp.results();
    std::fprintf(stderr, "%d: brightness %.0f, next %.0f us at gain %.2f; red %.2f, blue %.2f\n", i,
                 results.brightness, results.exposure.time, results.exposure.gain,
                 results.gains.red, results.gains.blue);
    writePlane(picture.y());
    writePlane(picture.cb());
    writePlane(picture.cr());
  }
}

}  // namespace

int main(int argc, char** argv) {
  try {
    run(argc, argv);
  } catch (const std::exception& error) {
    std::fprintf(stderr, "raw_stream: %s\n", error.what());
    return 1;
  }
  return 0;
}
