// Objects that keep something from call to call.
#include <pybind11/numpy.h>
#include <vek/vek.hpp>

#include "special.h"

namespace vekpy {

namespace {

/// An object made by `make(failure)`, or the refusal.
template <class Object, class Make>
std::unique_ptr<Held<Object>> made(const char* name, Make make) {
  return named(name, [&] {
    vek::Failure failure;
    Object object = make(failure);
    if (failure.status < 0) throw refusalOf(failure);
    return std::make_unique<Held<Object>>(std::move(object));
  });
}

template <class Object>
py::class_<Held<Object>> define(py::module_& module, const char* name) {
  py::class_<Held<Object>> type(module, name);
  type.def("close", [name](Held<Object>& self) { named(name, [&] { self.close(); }); });
  return type;
}

/// A frame of 10-bit samples.
vek::View<vek::Raw10> rawFrame(Image& image, const py::handle& object, bool isWritten = false) {
  image.acquire("frame", object.ptr(), isWritten);
  if (!image.looksLike(Layout::U16)) {
    refuseType("frame", "is %s; wanted is %s", image.described().c_str(), lookOf(Layout::U16));
  }
  image.use(Layout::U16);
  return image.view<vek::Raw10>();
}

template <class Number>
Number checked(const char* name, int value) {
  const auto number = static_cast<Number>(value);
  if (int{number} != value)
    refuse(vekStsBadArgErr, name, "is %d, which is out of its range", value);
  return number;
}

/// The fields of a record that have a name in Python.
template <class Params>
struct Field {
  const char* name;
  Vek16u Params::*narrow;
  Vek32s Params::*wide;
};

template <class Params, std::size_t count>
void read(Params& params, const py::dict& values, const Field<Params> (&fields)[count]) {
  for (const Field<Params>& field : fields) {
    const int value = integersOf(field.name, py::make_tuple(values[field.name]), 1)[0];
    if (field.narrow != nullptr) {
      params.*field.narrow = checked<Vek16u>(field.name, value);
    } else {
      params.*field.wide = value;
    }
  }
}

template <class Params, std::size_t count>
py::dict valuesOf(const Params& params, const Field<Params> (&fields)[count]) {
  py::dict values;
  for (const Field<Params>& field : fields) {
    values[field.name] = field.narrow != nullptr ? int{params.*field.narrow} : params.*field.wide;
  }
  return values;
}

using vek::BalanceParams;
using vek::ExposureParams;
constexpr Field<ExposureParams> exposureFields[] = {
    {"hist_count_thresh", &ExposureParams::histCountThresh, nullptr},
    {"hist_spread_thresh", &ExposureParams::histSpreadThresh, nullptr},
    {"dark_thresh", &ExposureParams::darkThresh, nullptr},
    {"bright_thresh", &ExposureParams::brightThresh, nullptr},
    {"target", &ExposureParams::target, nullptr},
    {"tolerance", &ExposureParams::tolerance, nullptr},
    {"scale_multiplier", &ExposureParams::scaleMultiplier, nullptr},
    {"step_size", &ExposureParams::stepSize, nullptr},
    {"scale_min", nullptr, &ExposureParams::scaleMin},
    {"scale_max", nullptr, &ExposureParams::scaleMax},
    {"step_min", nullptr, &ExposureParams::stepMin},
    {"step_max", nullptr, &ExposureParams::stepMax},
};

constexpr Field<BalanceParams> balanceFields[] = {
    {"ref_ratio_r", &BalanceParams::refRatioR, nullptr},
    {"ref_ratio_b", &BalanceParams::refRatioB, nullptr},
    {"hold_tol_r", &BalanceParams::holdTolR, nullptr},
    {"hold_tol_b", &BalanceParams::holdTolB, nullptr},
    {"valid_tol_r", &BalanceParams::validTolR, nullptr},
    {"valid_tol_b", &BalanceParams::validTolB, nullptr},
    {"wpd_limit1", &BalanceParams::wpdLimit1, nullptr},
    {"wpd_limit2", &BalanceParams::wpdLimit2, nullptr},
    {"wpd_limit3", &BalanceParams::wpdLimit3, nullptr},
    {"wpd_low", &BalanceParams::wpdLow, nullptr},
    {"wpd_high", &BalanceParams::wpdHigh, nullptr},
    {"min_white_count", nullptr, &BalanceParams::minWhiteCount},
    {"max_gain_step", &BalanceParams::maxGainStep, nullptr},
    {"gain_min", &BalanceParams::gainMin, nullptr},
    {"gain_max", &BalanceParams::gainMax, nullptr},
    {"default_gain_r", &BalanceParams::defaultGainR, nullptr},
    {"default_gain_g", &BalanceParams::defaultGainG, nullptr},
    {"default_gain_b", &BalanceParams::defaultGainB, nullptr},
};

vek::ExposureControls controlsOf(const char* name, const py::object& object) {
  const std::vector<int> n = integersOf(name, object, 2);
  return {checked<Vek16u>(name, n[0]), checked<Vek16u>(name, n[1])};
}

void defineExposure(py::module_& module) {
  using Exposure = Held<vek::AutoExposure>;
  auto type = define<vek::AutoExposure>(module, "AutoExposure");
  type.def(py::init([](int metering, const py::object& windows, const py::object& weights,
                       const py::dict& values) {
    return made<vek::AutoExposure>("AutoExposure", [&](vek::Failure& failure) {
      vek::ExposureParams params;
      params.metering = static_cast<vek::Metering>(metering);
      params.windows = rectsOf("windows", windows);
      params.weights = numbersOf<Vek16u>("weights", weights);
      read(params, values, exposureFields);
      return vek::AutoExposure(params, failure);
    });
  }));
  module.def("_recommended_exposure", [](const py::object& size, int metering,
                                         const py::object& least, const py::object& most) {
    return named("recommended_exposure", [&] {
      const vek::Size frame = sizeOf("frame_size", size);
      return valuesOf(
          vek::recommended::exposureParams(frame, static_cast<vek::Metering>(metering),
                                           controlsOf("least", least), controlsOf("most", most)),
          exposureFields);
    });
  });
  type.def("meter", [](Exposure& self, const py::object& frame, int step, int scale) {
    return named("AutoExposure.meter", [&] {
      const auto use = self.alone();
      Image image;
      const vek::View<const vek::Raw10> view = rawFrame(image, frame);
      vek::ExposureControls controls = {checked<Vek16u>("step", step),
                                        checked<Vek16u>("scale", scale)};
      const VekStatus status =
          unlocked([&](vek::Failure& on) { return use->meter(view, controls, on); });
      return py::make_tuple(controls.step, controls.scale, status);
    });
  });
}

void defineBalance(py::module_& module) {
  using Balance = Held<vek::AutoWhiteBalance>;
  auto type = define<vek::AutoWhiteBalance>(module, "AutoWhiteBalance");
  type.def(py::init(
      [](int method, const py::object& windows, const py::object& weights, const py::dict& values) {
        return made<vek::AutoWhiteBalance>("AutoWhiteBalance", [&](vek::Failure& failure) {
          vek::BalanceParams params;
          params.method = static_cast<vek::BalanceMethod>(method);
          params.windows = rectsOf("windows", windows);
          params.weights = numbersOf<Vek8u>("weights", weights);
          read(params, values, balanceFields);
          return vek::AutoWhiteBalance(params, failure);
        });
      }));
  module.def("_recommended_balance", [](const py::object& size, int method, int unit) {
    return named("recommended_balance", [&] {
      const vek::Size frame = sizeOf("frame_size", size);
      if (frame.width < 16 || frame.height < 16) {
        refuse(vekStsSizeErr, "frame_size", "is %d x %d; the least is 16 x 16", frame.width,
               frame.height);
      }
      if (unit < 1 || unit > 65535) refuse(vekStsBadArgErr, "unit", "is %d, not 1 to 65535", unit);
      const vek::BalanceParams params =
          vek::recommended::balanceParams(frame, static_cast<vek::BalanceMethod>(method), unit);
      py::dict values = valuesOf(params, balanceFields);
      py::list windows, weights;
      for (const vek::Rect& w : params.windows) {
        windows.append(py::make_tuple(w.x, w.y, w.width, w.height));
      }
      for (const int weight : params.weights) weights.append(weight);
      values["windows"] = windows;
      values["weights"] = weights;
      return values;
    });
  });
  type.def("measure", [](Balance& self, const py::object& frame, const py::object& before) {
    return named("AutoWhiteBalance.measure", [&] {
      const auto use = self.shared();
      Image image;
      const vek::View<const vek::Raw10> view = rawFrame(image, frame);
      const std::vector<int> g = integersOf("gains", before, 3);
      vek::BalanceGains gains = {checked<Vek16u>("gains", g[0]), checked<Vek16u>("gains", g[1]),
                                 checked<Vek16u>("gains", g[2])};
      const VekStatus status =
          unlocked([&](vek::Failure& on) { return use->measure(view, gains, on); });
      const auto [red, green, blue] = gains;
      return py::make_tuple(red, green, blue, status);
    });
  });
}

/// A plane of an image that `owner` keeps alive.
py::array arrayOf(const vek::View<Vek8u>& plane, const py::capsule& owner) {
  return py::array(py::dtype::of<Vek8u>(), {plane.height(), plane.width()},
                   {py::ssize_t{plane.stepBytes()}, py::ssize_t{1}}, plane.data(), owner);
}

struct Pipeline {
  vek::RawPipeline pipeline;
  vek::Chroma chroma = vek::Chroma::c420;
  bool hasDeadPixels = false;
};

template <vek::Chroma chroma>
py::tuple planesOf(const vek::RawPipeline& pipeline) {
  vek::Failure failure;
  auto image = std::make_unique<vek::PlanarImage<chroma>>(pipeline.destination<chroma>(failure));
  if (failure.status < 0) throw refusalOf(failure);
  const auto planes = image->view();
  const py::capsule owner(
      image.release(), [](void* memory) { delete static_cast<vek::PlanarImage<chroma>*>(memory); });
  return py::make_tuple(arrayOf(planes.y(), owner), arrayOf(planes.cb(), owner),
                        arrayOf(planes.cr(), owner));
}

void definePipeline(py::module_& module) {
  using Pipe = Held<Pipeline>;
  auto type = define<Pipeline>(module, "RawPipeline");
  type.def(py::init([](int curve, const py::object& table, const py::object& matrix,
                       const py::object& dead, const py::object& offset, const py::object& frame,
                       int frameStep, int chroma, const py::object& size, const py::object& steps,
                       int rotation, bool borderValid) {
    return made<Pipeline>("RawPipeline", [&](vek::Failure& failure) {
      vek::RawColor color;
      color.curve = static_cast<vek::GammaCurve>(curve);
      color.table = numbersOf<Vek8u>("table", table);
      const std::vector<int> m = integersOf("matrix", matrix, 9);
      for (std::size_t i = 0; i < 9; ++i) color.matrix[i] = checked<Vek16s>("matrix", m[i]);
      color.deadPixels = deadPixelsOf("dead_pixels", dead);
      const vek::Point origin = pointOf("offset", offset);
      color.columnOffset = origin.x;
      color.rowOffset = origin.y;
      Pipeline made;
      made.chroma = static_cast<vek::Chroma>(chroma);
      made.hasDeadPixels = !color.deadPixels.empty();
      const vek::Size out = sizeOf("size", size);
      std::array<int, 3> s = {0, 0, 0};
      if (!steps.is_none()) {
        const std::vector<int> given = integersOf("steps", steps, 3);
        std::copy(given.begin(), given.end(), s.begin());
      } else if (out.width > 0 && out.height > 0 && out.width < 1 << 20 && out.height < 1 << 20) {
        const auto stepsOf = [&](const auto& like) {
          s = {like.y().stepBytes(), like.cb().stepBytes(), like.cr().stepBytes()};
        };
        made.chroma == vek::Chroma::c420 ? stepsOf(vek::Image420({out.width, 2}))
                                         : stepsOf(vek::Image422({out.width, 2}));
      }
      made.pipeline =
          vek::RawPipeline(color, sizeOf("frame_size", frame), vek::Bytes(frameStep), made.chroma,
                           out, s, static_cast<vek::Rotation>(rotation), borderValid, failure);
      return made;
    });
  }));
  type.def("destination", [](Pipe& self) {
    return named("RawPipeline.destination", [&]() -> py::tuple {
      const auto use = self.shared();
      return use->chroma == vek::Chroma::c420 ? planesOf<vek::Chroma::c420>(use->pipeline)
                                              : planesOf<vek::Chroma::c422>(use->pipeline);
    });
  });
  type.def("process", [](Pipe& self, const py::object& frame, const py::object& out) {
    return named("RawPipeline.process", [&] {
      const auto use = self.shared();
      Image from, to;
      // Dead pixels are corrected in the frame.
      const vek::View<vek::Raw10> view = rawFrame(from, frame, use->hasDeadPixels);
      const bool is420 = use->chroma == vek::Chroma::c420;
      acquire(to, "out", out, is420 ? Layout::P420 : Layout::P422, true);
      checkOverlap(to);
      checkOverlap(from, to, false);
      unlocked([&](vek::Failure& on) {
        return is420 ? use->pipeline.process(view, to.planes<vek::Chroma::c420>(), on)
                     : use->pipeline.process(view, to.planes<vek::Chroma::c422>(), on);
      });
      return out;
    });
  });
}

void defineFft(py::module_& module) {
  using Fft = Held<vek::RealFft>;
  auto type = define<vek::RealFft>(module, "RealFft");
  type.def(py::init([](const py::object& size) {
    return made<vek::RealFft>("RealFft", [&](vek::Failure& failure) {
      return vek::RealFft(sizeOf("size", size), failure);
    });
  }));
  type.def("forward", [](Fft& self, const py::object& src, int scale, const py::object& out) {
    return named("RealFft.forward", [&] {
      const auto use = self.alone();
      Image from, to;
      const Layout layout = acquire(from, "src", src, Layout::C1, Layout::S32);
      destination(to, out, Layout::COMPLEX, use->spectrumSize());
      unlocked([&](vek::Failure& on) {
        const auto spectrum = to.view<vek::Complex32s>();
        return layout == Layout::C1 ? use->forward(from.view<const Vek8u>(), spectrum, scale, on)
                                    : use->forward(from.view<const Vek32s>(), spectrum, scale, on);
      });
      return to.object();
    });
  });
  type.def("inverse",
           [](Fft& self, const py::object& src, int scale, bool wide, const py::object& out) {
             return named("RealFft.inverse", [&] {
               const auto use = self.alone();
               Image from, to;
               acquire(from, "src", src, Layout::COMPLEX);
               destination(to, out, wide ? Layout::S32 : Layout::C1, use->size());
               unlocked([&](vek::Failure& on) {
                 const auto spectrum = from.view<const vek::Complex32s>();
                 return wide ? use->inverse(spectrum, to.view<Vek32s>(), scale, on)
                             : use->inverse(spectrum, to.view<Vek8u>(), scale, on);
               });
               return to.object();
             });
           });
}

template <class List>
py::tuple tupleOf(const List& numbers) {
  py::tuple result(numbers.size());
  for (std::size_t i = 0; i < numbers.size(); ++i) result[i] = numbers[i];
  return result;
}

void defineMoments(py::module_& module) {
  using Moments = Held<vek::Moments>;
  auto type = define<vek::Moments>(module, "Moments");
  type.def(py::init(
      [] { return made<vek::Moments>("Moments", [](vek::Failure&) { return vek::Moments(); }); }));
  type.def("measure", [](Moments& self, const py::object& src) {
    named("Moments.measure", [&] {
      const auto use = self.alone();
      Image from;
      const Layout layout = acquire(from, "src", src, Layout::C1, Layout::C3);
      unlocked([&](vek::Failure& on) {
        return layout == Layout::C1 ? use->measure<1>(from.view<const Vek8u>(), on)
                                    : use->measure<3>(from.view<const Vek8u, 3>(), on);
      });
    });
  });
  type.def("read", [](Moments& self, int which, int channel, const py::object& origin) {
    return named("Moments", [&] {
      const auto use = self.shared();
      const vek::Point from = pointOf("origin", origin);
      vek::MomentList moments = {};
      vek::HuMoments hu = {};
      const VekStatus status = unlocked([&](vek::Failure& on) {
        return which == 0   ? use->spatial(channel, &moments, from, on)
               : which == 1 ? use->central(channel, &moments, on)
               : which == 2 ? use->normalized(channel, &moments, on)
                            : use->hu(channel, &hu, on);
      });
      warn("Moments", status, 2);
      return which == 3 ? tupleOf(hu) : tupleOf(moments);
    });
  });
}

}  // namespace

void defineStates(py::module_& module) {
  defineExposure(module);
  defineBalance(module);
  definePipeline(module);
  defineFft(module);
  defineMoments(module);
}

}  // namespace vekpy
