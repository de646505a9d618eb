// The camera path as one object.
#include <cstring>
#include <functional>
#include <memory>
#include <system_error>
#include <thread>
#include <vek/isp.hpp>

#include "formats.inc"
#include "special.h"

namespace vekpy {

namespace {

struct Camera {
  std::unique_ptr<vek::Isp> isp;
  bool hasWords = false;  ///< frames may be words
};
using Isp = Held<Camera>;

/// Refusals by exceptions of the C++ interface.
template <class F>
auto thrown(F f) {
  try {
    return f();
  } catch (const vek::Error& error) {
    const char* const reason = std::strstr(error.what(), error.argument());
    const std::size_t skipped = reason == nullptr ? 0 : std::strlen(error.argument()) + 1;
    throw Refusal{error.status(), error.argument(),
                  reason == nullptr ? error.what() : reason + skipped};
  }
}

vek::Matrix3 matrixOf(const py::object& object) {
  const std::vector<double> numbers = doublesOf("matrix", object);
  if (numbers.size() != 9)
    refuse(vekStsSizeErr, "matrix", "has %zu numbers, not 9", numbers.size());
  vek::Matrix3 matrix;
  for (std::size_t i = 0; i < 9; ++i) matrix[i / 3][i % 3] = numbers[i];
  return matrix;
}
vek::ColorGains gainsOf(const char* name, const py::object& object) {
  const std::vector<double> numbers = doublesOf(name, object);
  if (numbers.size() != 3) refuse(vekStsSizeErr, name, "has %zu numbers, not 3", numbers.size());
  return {numbers[0], numbers[1], numbers[2]};
}
vek::CameraColor colorOf(const py::object& matrix, const py::object& gains, int place) {
  return {matrixOf(matrix), gainsOf("matrix_gains", gains), static_cast<vek::MatrixPlace>(place)};
}
vek::ExposureSettings exposureOf(const py::object& object) {
  const std::vector<double> n = doublesOf("exposure", object);
  if (n.size() != 7) refuse(vekStsSizeErr, "exposure", "has %zu numbers, not 7", n.size());
  return {n[0] != 0, {n[1], n[2]}, {n[3], n[4]}, n[5], n[6]};
}
vek::ToneTable tableOf(const py::object& object) {
  const std::vector<double> numbers = doublesOf("curve", object);
  vek::ToneTable table;
  if (numbers.size() != table.size())
    refuse(vekStsSizeErr, "curve", "has %zu numbers, not %zu", numbers.size(), table.size());
  for (std::size_t i = 0; i < table.size(); ++i) table[i] = static_cast<float>(numbers[i]);
  return table;
}

/// One level, or those of R, Gr, Gb and B.
vek::BlackLevels blackOf(const py::object& object) {
  if (PySequence_Check(object.ptr()) == 0) return integer("black", object.ptr());
  const std::vector<int> b = integersOf("black", object, 4);
  return {b[0], b[1], b[2], b[3]};
}

std::unique_ptr<Isp> make(const py::dict& s) {
  vek::IspSettings settings;
  const auto number = [&](const char* name) { return integer(name, py::object(s[name]).ptr()); };
  settings.size = sizeOf("size", s["size"]);
  settings.format = static_cast<vek::Raw>(number("format"));
  settings.order = static_cast<vek::Bayer>(number("order"));
  settings.black = blackOf(py::object(s["black"]));
  settings.white = number("white");
  settings.bits = number("bits");
  if (!s["crop"].is_none()) {
    const std::vector<int> crop = integersOf("crop", s["crop"], 4);
    settings.crop = {crop[0], crop[1], crop[2], crop[3]};
  }
  settings.scale = number("scale");
  if (!s["output"].is_none()) settings.output = sizeOf("output", s["output"]);
  settings.rotation = static_cast<vek::Rotation>(number("rotation"));
  settings.range = static_cast<vek::Range>(number("range"));
  settings.curve = static_cast<vek::ToneCurve>(number("curve"));
  settings.color = colorOf(s["matrix"], s["matrix_gains"], number("matrix_place"));
  settings.gains = gainsOf("gains", s["gains"]);
  settings.digitalGain = py::object(s["digital_gain"]).cast<double>();
  settings.deadPixels = deadPixelsOf("dead_pixels", s["dead_pixels"]);
  settings.exposure = exposureOf(s["exposure"]);
  settings.whiteBalance = number("white_balance") != 0;
  settings.jobs = number("jobs");
  settings.bandRows = number("band_rows");
  return std::make_unique<Isp>(
      Camera{std::make_unique<vek::Isp>(settings), settings.format == vek::Raw::plain16});
}

/// Calls job(0) to job(n - 1), each in a thread.
void inThreads(int n, const std::function<void(int)>& job) {
  std::vector<std::thread> threads;
  int started = 1;
  try {
    for (; started < n; ++started) threads.emplace_back(job, started);
  } catch (const std::system_error&) {
    // No more threads: this one does what is left.
  }
  for (int i = started; i < n; ++i) job(i);
  job(0);
  for (std::thread& thread : threads) thread.join();
}

VekStatus processTo(vek::Isp& isp, const vek::View<const vek::RawByte>& frame, const Image& out,
                    int format, vek::Failure& on) {
  const auto run = [&](const auto& picture) { return isp.process(frame, picture, inThreads, on); };
  switch (format) {
    case i420:
      return run(out.planes<vek::Chroma::c420>());
    case i422:
      return run(out.planes<vek::Chroma::c422>());
    case nv12:
      return run(vek::Nv12<>(out.view<Vek8u>(0), out.view<Vek8u, 2>(1)));
    case rgb24:
      return run(out.view<vek::Rgb24>());
    case bgr24:
      return run(out.view<vek::Bgr24>());
    case rgbx32:
      return run(out.view<vek::Rgbx32>());
    case bgrx32:
      return run(out.view<vek::Bgrx32>());
    case rgb565:
      return run(out.view<vek::Rgb565>());
    case rgb555:
      return run(out.view<vek::Rgb555>());
    case rgb444:
      return run(out.view<vek::Rgb444>());
    default:
      refuse(vekStsNotSupportedModeErr, "format", "is none that it makes");
  }
}

py::object process(Isp& self, const py::object& object, const py::object& destinationObject,
                   int format) {
  const auto use = self.alone();
  vek::Isp& isp = *use->isp;
  Image from, to;
  from.acquire("frame", object.ptr(), false);
  const bool isWords = use->hasWords && from.looksLike(Layout::U16);
  if (!isWords && !from.looksLike(Layout::C1)) {
    refuseType("frame", "is %s; wanted are its bytes, uint8 (rows, bytes)",
               from.described().c_str());
  }
  from.use(isWords ? Layout::U16 : Layout::C1);
  const Plane& p = from.plane();
  if (p.rowBytes > INT32_MAX) refuse(vekStsSizeErr, "frame", "has rows of more than 2^31 bytes");
  const vek::View<const vek::RawByte> frame(reinterpret_cast<const Vek8u*>(p.data),
                                            {static_cast<int>(p.rowBytes), p.rows},
                                            vek::Bytes(static_cast<int>(p.step)));
  const Layout layout = layoutOf(format);
  if (layout == Layout::nothing) refuse(vekStsNotSupportedModeErr, "format", "is none");
  destination(to, destinationObject, layout, isp.outputSize());
  checkOverlap(from, to, false);
  unlocked([&](vek::Failure& on) { return processTo(isp, frame, to, format, on); });
  return to.object();
}

/// Calls `f` with the Isp.
template <class F>
auto changing(Isp& self, F f) {
  return named("Isp", [&] {
    const auto use = self.alone();
    return thrown([&] { return f(*use->isp); });
  });
}

py::tuple tupleOf(const vek::ColorGains& gains) {
  return py::make_tuple(gains.red, gains.green, gains.blue);
}

}  // namespace

void defineIsp(py::module_& module) {
  py::class_<Isp> type(module, "Isp");
  type.def(py::init([](const py::dict& settings) {
    return named("Isp", [&] { return thrown([&] { return make(settings); }); });
  }));
  type.def("close", [](Isp& self) { named("Isp", [&] { self.close(); }); });
  type.def("process", [](Isp& self, const py::object& frame, const py::object& out, int format) {
    return named("Isp.process", [&] { return process(self, frame, out, format); });
  });
  type.def("output_size", [](Isp& self) {
    return changing(self, [](const vek::Isp& isp) {
      return py::make_tuple(isp.outputSize().width, isp.outputSize().height);
    });
  });
  type.def("crop", [](Isp& self) {
    return changing(self, [](const vek::Isp& isp) {
      const vek::Rect r = isp.crop();
      return py::make_tuple(r.x, r.y, r.width, r.height);
    });
  });
  type.def("matrix", [](Isp& self) {
    return changing(self, [](const vek::Isp& isp) {
      const vek::Matrix3 m = isp.matrix();
      const auto row = [&](std::size_t i) { return py::make_tuple(m[i][0], m[i][1], m[i][2]); };
      return py::make_tuple(row(0), row(1), row(2));
    });
  });
  type.def("results", [](Isp& self) {
    return changing(self, [](const vek::Isp& isp) {
      const vek::IspResults& r = isp.results();
      return py::make_tuple(py::make_tuple(r.exposure.time, r.exposure.gain), tupleOf(r.gains),
                            r.brightness, r.saturated, r.exposureHeld, r.exposureAtLimit,
                            r.balanceHeld, r.balanceAtLimit, r.balanceHasData);
    });
  });
  type.def("set_levels", [](Isp& self, const py::object& black, int white) {
    changing(self, [&](vek::Isp& isp) { isp.setLevels(blackOf(black), white); });
  });
  type.def("set_gains", [](Isp& self, const py::object& gains, double digitalGain) {
    changing(self, [&](vek::Isp& isp) { isp.setGains(gainsOf("gains", gains), digitalGain); });
  });
  type.def("set_white_balance", [](Isp& self, bool on) {
    changing(self, [&](vek::Isp& isp) { isp.setWhiteBalance(on); });
  });
  type.def("set_exposure_settings", [](Isp& self, const py::object& exposure) {
    changing(self, [&](vek::Isp& isp) { isp.setExposureSettings(exposureOf(exposure)); });
  });
  type.def("set_exposure", [](Isp& self, double time, double gain) {
    changing(self, [&](vek::Isp& isp) { isp.setExposure({time, gain}); });
  });
  type.def("set_curve", [](Isp& self, const py::object& curve) {
    changing(self, [&](vek::Isp& isp) {
      if (isNumber(curve.ptr())) {
        isp.setCurve(static_cast<vek::ToneCurve>(integer("curve", curve.ptr())));
      } else {
        isp.setCurve(tableOf(curve));
      }
    });
  });
  type.def("set_color",
           [](Isp& self, const py::object& matrix, const py::object& gains, int place) {
             changing(self, [&](vek::Isp& isp) { isp.setColor(colorOf(matrix, gains, place)); });
           });
  type.def("set_dead_pixels", [](Isp& self, const py::object& dead) {
    changing(self, [&](vek::Isp& isp) { isp.setDeadPixels(deadPixelsOf("dead_pixels", dead)); });
  });
}

}  // namespace vekpy
