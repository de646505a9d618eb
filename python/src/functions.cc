// Functions whose destination has another size or alignment than their source. They are called through the
// C++ interface, which refuses what the C functions would read or write beyond the images.
#include <cstring>
#include <vek/vek.hpp>

#include "formats.inc"
#include "special.h"

namespace vekpy {

namespace {

using vek::Interpolation;
using vek::Rotation;

/// A raw frame as bytes: of any format, or words of Raw::plain16.
vek::View<const vek::RawByte> rawFrame(Image& image, const py::handle& object, vek::Raw format) {
  image.acquire("src", object.ptr(), false);
  if (format == vek::Raw::plain16 && image.looksLike(Layout::U16)) {
    image.use(Layout::U16);
    const Plane& p = image.plane();
    if (p.columns > INT32_MAX / 2) refuse(vekStsSizeErr, "src", "has rows of more than 2^31 bytes");
    return {reinterpret_cast<const Vek8u*>(p.data),
            {2 * p.columns, p.rows},
            vek::Bytes(static_cast<int>(p.step))};
  }
  if (!image.looksLike(Layout::C1)) {
    refuseType("src", "is %s; wanted are the frame's bytes, uint8 (rows, bytes)",
               image.described().c_str());
  }
  image.use(Layout::C1);
  return image.view<const vek::RawByte>();
}

py::object rawTo10Rggb(const py::object& src, const py::object& out, const py::object& size,
                       int format, int bits, int order, const py::object& black,
                       const py::object& gain) {
  vek::RawFrontEnd frontEnd;
  frontEnd.format = static_cast<vek::Raw>(format);
  frontEnd.bits = bits;
  frontEnd.order = static_cast<vek::Bayer>(order);
  const auto four = [](const char* name, const py::object& object, std::array<Vek16u, 4>& to) {
    const std::vector<Vek16u> numbers = numbersOf<Vek16u>(name, object);
    if (numbers.size() != 4) refuse(vekStsSizeErr, name, "has %zu numbers, not 4", numbers.size());
    std::copy(numbers.begin(), numbers.end(), to.begin());
  };
  four("black", black, frontEnd.black);
  four("gain", gain, frontEnd.gain);
  Image from, to;
  const auto frame = rawFrame(from, src, frontEnd.format);
  vek::Failure failure;
  const vek::Rect region = vek::rawRegion(sizeOf("size", size), frontEnd.order, failure);
  if (failure.status < 0) throw refusalOf(failure);
  destination(to, out, Layout::U16, {region.width, region.height});
  checkOverlap(from, to, false);
  if (to.size().width != region.width || to.size().height != region.height) {
    refuse(vekStsSizeErr, "out", "is %d x %d, not %d x %d", to.size().width, to.size().height,
           region.width, region.height);
  }
  unlocked([&](vek::Failure& on) {
    return vek::rawTo10Rggb(frame, to.view<vek::Raw10>(), frontEnd, {region.x, region.y}, on);
  });
  return to.object();
}

/// A raw frame without its outermost samples, if they are a border.
vek::Size insideOf(const Image& frame, bool hasBorder) {
  const int around = hasBorder ? 2 : 0;
  const vek::Size size = {frame.size().width - around, frame.size().height - around};
  if (size.width < 2 || size.height < 2) refuse(vekStsSizeErr, "src", "is too small");
  return size;
}
vek::View<const vek::Raw10> insideView(const Image& frame, bool hasBorder) {
  const Plane& p = frame.plane();
  const char* const first = p.data + (hasBorder ? p.step + std::int64_t{sizeof(Vek16u)} : 0);
  return {reinterpret_cast<const Vek16u*>(first), insideOf(frame, hasBorder),
          vek::Bytes(static_cast<int>(p.step))};
}

py::object colorMatrix(const py::object& src, const py::object& out, const py::object& matrix,
                       int order, bool borderValid) {
  Image from, to;
  acquire(from, "src", src, Layout::U16);
  const std::vector<int> numbers = integersOf("matrix", matrix, 9);
  vek::BayerMatrix entries;
  for (std::size_t i = 0; i < 9; ++i) {
    if (numbers[i] < -16383 || numbers[i] > 16383)
      refuse(vekStsBadArgErr, "matrix", "has %d, which is beyond 16383", numbers[i]);
    entries[i] = static_cast<Vek16s>(numbers[i]);
  }
  destination(to, out, Layout::U16, insideOf(from, borderValid));
  checkOverlap(from, to, false);
  const auto inside = insideView(from, borderValid);
  unlocked([&](vek::Failure& on) {
    return vek::colorMatrix(inside, to.view<vek::Raw10>(), entries, static_cast<vek::Bayer>(order),
                            borderValid, on);
  });
  return to.object();
}

py::object demosaic(const py::object& src, const py::object& out, const py::object& table,
                    bool isBgr, bool borderValid) {
  Image from, to;
  acquire(from, "src", src, Layout::U16);
  const std::vector<Vek8u> numbers = numbersOf<Vek8u>("table", table);
  vek::GammaTable10 entries;
  if (numbers.size() != entries.size())
    refuse(vekStsSizeErr, "table", "has %zu numbers, not 1024", numbers.size());
  std::copy(numbers.begin(), numbers.end(), entries.begin());
  destination(to, out, Layout::C3, insideOf(from, borderValid));
  checkOverlap(from, to, false);
  const auto inside = insideView(from, borderValid);
  unlocked([&](vek::Failure& on) {
    return isBgr ? vek::demosaic(inside, to.view<vek::Bgr24>(), entries, borderValid, on)
                 : vek::demosaic(inside, to.view<vek::Rgb24>(), entries, borderValid, on);
  });
  return to.object();
}

py::object pad(const py::object& src, const py::object& out, const py::object& margins, int border,
               const py::object& value) {
  Image from, to;
  const Layout layout = acquire(from, "src", src, Layout::C1, Layout::C3);
  const std::vector<int> m = integersOf("margins", margins, 4);
  constexpr int limit = 1 << 29;
  for (const int n : m) {
    if (n < 0 || n > limit) refuse(vekStsBadArgErr, "margins", "have %d", n);
  }
  std::uint32_t values[3];
  if (channelValues("value", value.ptr(), values, 255) == 3 && layout == Layout::C1)
    refuse(vekStsBadArgErr, "value", "has three numbers for one channel");
  const std::int64_t width = std::int64_t{m[0]} + from.size().width + m[2];
  const std::int64_t height = std::int64_t{m[1]} + from.size().height + m[3];
  if (width > INT32_MAX || height > INT32_MAX) refuse(vekStsSizeErr, "margins", "are too large");
  const vek::Size size = {static_cast<int>(width), static_cast<int>(height)};
  if (out.is_none()) {
    to.create(layout, size);
  } else {
    acquire(to, "out", out, layout, true);
    const Plane &a = from.plane(), &b = to.plane();
    const int pixel = layout == Layout::C3 ? 3 : 1;
    if (to.size().width != size.width || to.size().height != size.height) {
      refuse(vekStsSizeErr, "out", "is %d x %d, not %d x %d", to.size().width, to.size().height,
             size.width, size.height);
    }
    // The source may lie in its place already.
    const bool inPlace = a.data == b.data + m[1] * b.step + m[0] * pixel && a.step == b.step;
    if (!inPlace) checkOverlap(from, to, false);
  }
  const auto kind = static_cast<vek::PadBorder>(border);
  unlocked([&](vek::Failure& on) {
    if (layout == Layout::C1) {
      return vek::pad<1>(from.view<const Vek8u>(), to.view<Vek8u>(), {m[0], m[1]}, kind,
                         static_cast<Vek8u>(values[0]), on);
    }
    const std::array<Vek8u, 3> three = {static_cast<Vek8u>(values[0]),
                                        static_cast<Vek8u>(values[1]),
                                        static_cast<Vek8u>(values[2])};
    return vek::pad<3>(from.view<const Vek8u, 3>(), to.view<Vek8u, 3>(), {m[0], m[1]}, kind, three,
                       on);
  });
  return to.object();
}

template <class Source>
VekStatus resizeTo(const Source& src, Image& to, int format, Rotation rotation,
                   Interpolation interpolation, vek::Failure& on) {
  const auto run = [&](const auto& dst) {
    return vek::resize(src, dst, rotation, interpolation, on);
  };
  switch (format) {
    case rgb565:
      return run(to.view<vek::Rgb565>());
    case rgb555:
      return run(to.view<vek::Rgb555>());
    case rgb444:
      return run(to.view<vek::Rgb444>());
    default:
      return run(to.view<vek::Bgr24>());
  }
}

py::object resize(const py::object& src, const py::object& out, const py::object& scaled,
                  int format, int rotation, int interpolation, int chroma) {
  Image from, to;
  from.acquire("src", src.ptr(), false);
  bool is420 = from.looksLike(Layout::P420);
  const bool is422 = from.looksLike(Layout::P422);
  if (!is420 && !is422) {
    refuseType("src", "is %s; wanted is %s or %s", from.described().c_str(), lookOf(Layout::P420),
               lookOf(Layout::P422));
  }
  if (is420 && is422) is420 = chroma != static_cast<int>(vek::Chroma::c422);
  from.use(is420 ? Layout::P420 : Layout::P422);
  if (format == -1) format = is420 ? i420 : i422;
  const bool isPlanar = format == (is420 ? i420 : i422);
  if (!isPlanar && format != rgb565 && format != rgb555 && format != rgb444 && format != bgr24)
    refuse(vekStsNotSupportedModeErr, "format", "is none that it makes of %s",
           from.described().c_str());
  const auto turn = static_cast<Rotation>(rotation);
  const auto between = static_cast<Interpolation>(interpolation);
  const Layout layout = layoutOf(format);
  if (scaled.is_none() && out.is_none()) refuseType("size", "is missing");
  destination(to, out, layout,
              scaled.is_none() ? from.size() : vek::rotated(sizeOf("size", scaled), turn));
  checkOverlap(from, to, false);
  if (!scaled.is_none()) {
    const vek::Size wanted = vek::rotated(sizeOf("size", scaled), turn);
    if (to.size().width != wanted.width || to.size().height != wanted.height) {
      refuse(vekStsSizeErr, "out", "is %d x %d, not %d x %d", to.size().width, to.size().height,
             wanted.width, wanted.height);
    }
  }
  unlocked([&](vek::Failure& on) {
    if (is420) {
      const vek::Planes420<const Vek8u> planes = from.planes<vek::Chroma::c420>();
      return isPlanar ? vek::resize(planes, to.planes<vek::Chroma::c420>(), turn, between, on)
                      : resizeTo(planes, to, format, turn, between, on);
    }
    const vek::Planes422<const Vek8u> planes = from.planes<vek::Chroma::c422>();
    return isPlanar ? vek::resize(planes, to.planes<vek::Chroma::c422>(), turn, between, on)
                    : resizeTo(planes, to, format, turn, between, on);
  });
  return to.object();
}

py::object reduce(const py::object& src, const py::object& out, int factor, int reduction,
                  int rotation, int format) {
  Image from, to;
  acquire(from, "src", src, Layout::C2);
  if (factor != 2 && factor != 4 && factor != 8)
    refuse(vekStsBadArgErr, "factor", "is %d, not 2, 4 or 8", factor);
  if (format != rgb565 && format != rgb555)
    refuse(vekStsNotSupportedModeErr, "format", "is not rgb565 or rgb555");
  const auto turn = static_cast<Rotation>(rotation);
  const vek::Size size = {from.size().width / factor, from.size().height / factor};
  destination(to, out, Layout::U16, vek::rotated(size, turn));
  checkOverlap(from, to, false);
  const auto kind = static_cast<vek::Reduction>(reduction);
  const auto source = from.view<const vek::Uyvy>();
  unlocked([&](vek::Failure& on) {
    return format == rgb565 ? vek::reduce(source, to.view<vek::Rgb565>(), factor, kind, turn, on)
                            : vek::reduce(source, to.view<vek::Rgb555>(), factor, kind, turn, on);
  });
  return to.object();
}

py::object to420(const py::object& src, const py::object& out, int rotation) {
  Image from, to;
  from.acquire("src", src.ptr(), false);
  const bool isPlanar = from.looksLike(Layout::P422);
  if (!isPlanar && !from.looksLike(Layout::C2)) {
    refuseType("src", "is %s; wanted is %s or %s", from.described().c_str(), lookOf(Layout::P422),
               lookOf(Layout::C2));
  }
  from.use(isPlanar ? Layout::P422 : Layout::C2);
  const auto turn = static_cast<Rotation>(rotation);
  destination(to, out, Layout::P420, vek::rotated(from.size(), turn));
  checkOverlap(from, to, false);
  unlocked([&](vek::Failure& on) {
    const auto planes = to.planes<vek::Chroma::c420>();
    return isPlanar ? vek::to420(vek::Planes422<const Vek8u>(from.planes<vek::Chroma::c422>()),
                                 planes, turn, on)
                    : vek::to420(from.view<const vek::Uyvy>(), planes, turn, on);
  });
  return to.object();
}

py::object warp(const py::object& src, const py::object& out, const py::object& size,
                const py::object& map, int direction, int interpolation, int border,
                const py::object& value, const py::object& place) {
  Image from, to;
  const Layout layout = acquire(from, "src", src, Layout::C1, Layout::C3);
  const std::vector<double> numbers = doublesOf("map", map);
  if (numbers.size() != 6 && numbers.size() != 9)
    refuse(vekStsSizeErr, "map", "has %zu numbers, not 6 or 9", numbers.size());
  std::uint32_t values[3];
  if (channelValues("value", value.ptr(), values, 255) == 3 && layout == Layout::C1)
    refuse(vekStsBadArgErr, "value", "has three numbers for one channel");
  const vek::Point at = pointOf("place", place);
  const auto outside = static_cast<vek::WarpBorder>(border);
  if (out.is_none()) {
    to.create(layout, size.is_none() ? from.size() : sizeOf("size", size));
    if (outside == vek::WarpBorder::transparent)
      std::memset(to.plane().data, 0, static_cast<std::size_t>(to.plane().step * to.plane().rows));
  } else {
    acquire(to, "out", out, layout, true);
    checkOverlap(from, to, false);
    const vek::Size wanted = size.is_none() ? to.size() : sizeOf("size", size);
    if (to.size().width != wanted.width || to.size().height != wanted.height)
      refuse(vekStsSizeErr, "out", "is not %d x %d", wanted.width, wanted.height);
  }
  vek::AffineMap affine;
  vek::PerspectiveMap perspective;
  const bool isAffine = numbers.size() == 6;
  isAffine ? std::copy(numbers.begin(), numbers.end(), affine.begin())
           : std::copy(numbers.begin(), numbers.end(), perspective.begin());
  const auto which = static_cast<vek::WarpDirection>(direction);
  const auto between = static_cast<Interpolation>(interpolation);
  const auto one = static_cast<Vek8u>(values[0]);
  const std::array<Vek8u, 3> three = {one, static_cast<Vek8u>(values[1]),
                                      static_cast<Vek8u>(values[2])};
  unlocked([&](vek::Failure& on) {
    const auto run = [&](const auto& matrix) {
      return layout == Layout::C1 ? vek::warp<1>(from.view<const Vek8u>(), to.view<Vek8u>(), matrix,
                                                 which, between, outside, one, at, on)
                                  : vek::warp<3>(from.view<const Vek8u, 3>(), to.view<Vek8u, 3>(),
                                                 matrix, which, between, outside, three, at, on);
    };
    return isAffine ? run(affine) : run(perspective);
  });
  return to.object();
}

py::object empty(const py::object& size, int format) {
  const Layout layout = layoutOf(format);
  if (layout == Layout::nothing) refuse(vekStsNotSupportedModeErr, "format", "is none");
  Image image;
  image.create(layout, sizeOf("size", size), true);
  return image.object();
}

py::tuple divide(unsigned int n, unsigned int d, int bits) {
  if (bits != 8 && bits != 16 && bits != 32) refuse(vekStsBadArgErr, "bits", "are not 8, 16 or 32");
  if (bits == 8) {
    const auto r = vek::divide(static_cast<Vek8u>(n), static_cast<Vek8u>(d));
    return py::make_tuple(r.quotient, r.remainder);
  }
  if (bits == 16) {
    const auto r = vek::divide(static_cast<Vek16u>(n), static_cast<Vek16u>(d));
    return py::make_tuple(r.quotient, r.remainder);
  }
  const auto r = vek::divide(Vek32u{n}, Vek32u{d});
  return py::make_tuple(r.quotient, r.remainder);
}

py::tuple libraryVersion(const VekLibraryVersion& v) {
  return py::make_tuple(v.major, v.minor, v.majorBuild, v.build, v.Name, v.Version, v.BuildDate);
}

}  // namespace

Layout layoutOf(int format) {
  switch (format) {
    case i420:
      return Layout::P420;
    case i422:
      return Layout::P422;
    case i444:
      return Layout::P444;
    case nv12:
      return Layout::NV12;
    case gray8:
      return Layout::C1;
    case yuy2:
    case uyvy:
      return Layout::C2;
    case rgbx32:
    case bgrx32:
      return Layout::C4;
    case rgb24:
    case bgr24:
    case ycbcr24:
    case yuv24:
      return Layout::C3;
    default:
      return format >= rgb565 && format <= raw10 ? Layout::U16 : Layout::nothing;
  }
}

void defineFunctions(py::module_& module) {
  const auto define = [&](const char* name, auto function) {
    module.def((std::string("_") + name).c_str(), [name, function](const py::args& args) {
      return named(name, [&] { return function(args); });
    });
  };
  const auto number = [](const py::args& args, std::size_t i) {
    return integer("a number", args[i].ptr());
  };
  define("raw_to_10rggb", [=](const py::args& a) {
    return rawTo10Rggb(a[0], a[1], a[2], number(a, 3), number(a, 4), number(a, 5), a[6], a[7]);
  });
  define("raw_region", [=](const py::args& a) {
    vek::Failure failure;
    const auto r =
        vek::rawRegion(sizeOf("size", a[0]), static_cast<vek::Bayer>(number(a, 1)), failure);
    if (failure.status < 0) throw refusalOf(failure);
    return py::make_tuple(r.x, r.y, r.width, r.height);
  });
  define("color_matrix", [=](const py::args& a) {
    return colorMatrix(a[0], a[1], a[2], number(a, 3), number(a, 4) != 0);
  });
  define("demosaic", [=](const py::args& a) {
    return demosaic(a[0], a[1], a[2], number(a, 3) != 0, number(a, 4) != 0);
  });
  define("pad", [=](const py::args& a) { return pad(a[0], a[1], a[2], number(a, 3), a[4]); });
  define("resize", [=](const py::args& a) {
    return resize(a[0], a[1], a[2], number(a, 3), number(a, 4), number(a, 5), number(a, 6));
  });
  define("reduce", [=](const py::args& a) {
    return reduce(a[0], a[1], number(a, 2), number(a, 3), number(a, 4), number(a, 5));
  });
  define("to_420", [=](const py::args& a) { return to420(a[0], a[1], number(a, 2)); });
  define("warp", [=](const py::args& a) {
    return warp(a[0], a[1], a[2], a[3], number(a, 4), number(a, 5), number(a, 6), a[7], a[8]);
  });
  define("empty", [=](const py::args& a) { return empty(a[0], number(a, 1)); });
  define("divide", [=](const py::args& a) {
    return divide(a[0].cast<unsigned int>(), a[1].cast<unsigned int>(), number(a, 2));
  });
  module.def("status_text", &vekStatusString);
  module.def("version", &vekVersionString);
  module.def("level", &vekLevel);
  module.def("level_limit", &vekLevelLimit);
  module.def("level_name", &vekLevelName);
  module.def("image_version", [] { return libraryVersion(vek::imageVersion()); });
  module.def("camera_version", [] { return libraryVersion(vek::cameraVersion()); });
}

}  // namespace vekpy
