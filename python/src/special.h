// Functions and objects whose calls are not rows of the table of operations.
#pragma once
#include <pybind11/pybind11.h>
#include <utility>

#include "images.h"

namespace vekpy {

void defineFunctions(py::module_& module);
void defineStates(py::module_& module);
void defineIsp(py::module_& module);

/// Calls `f`; refusals become exceptions of Python that name this function.
template <class F>
auto named(const char* function, F f) {
  try {
    return f();
  } catch (const Refusal& refusal) {
    raise(function, refusal);
  } catch (const py::cast_error&) {
    raise(function, {vekStsBadArgErr, "an argument", "has a number out of its range"});
  }
  throw py::error_already_set();
}

/// Calls `f(failure)` without the GIL. Returns its status if that is no error.
template <class F>
VekStatus unlocked(F f) {
  vek::Failure failure;
  VekStatus status = vekStsNoErr;
  {
    const py::gil_scoped_release released;
    status = f(failure);
  }
  if (status < 0) throw refusalOf(failure);
  return status;
}

/// Acquires an image that looks like this.
inline void acquire(Image& image, const char* name, const py::handle& object, Layout layout,
                    bool isDestination = false) {
  image.acquire(name, object.ptr(), isDestination);
  if (!image.looksLike(layout))
    refuseType(name, "is %s; wanted is %s", image.described().c_str(), lookOf(layout));
  image.use(layout);
}
/// Acquires an image of one of two layouts, and tells which.
inline Layout acquire(Image& image, const char* name, const py::handle& object, Layout usual,
                      Layout other) {
  image.acquire(name, object.ptr(), false);
  const Layout layout = image.looksLike(other) ? other : usual;
  if (!image.looksLike(layout)) {
    refuseType(name, "is %s; wanted is %s or %s", image.described().c_str(), lookOf(usual),
               lookOf(other));
  }
  image.use(layout);
  return layout;
}
/// The layout of pictures of a format; Layout::nothing if there is no such format.
Layout layoutOf(int format);
/// Acquires a destination, or makes one if there is none.
inline void destination(Image& image, const py::handle& object, Layout layout, vek::Size size) {
  if (object.is_none()) {
    image.create(layout, size, true);
  } else {
    acquire(image, "out", object, layout, true);
    checkOverlap(image);
  }
}

inline vek::Size sizeOf(const char* name, const py::handle& object) {
  vek::Size size = {0, 0};
  pair(name, object.ptr(), &size.width, &size.height);
  return size;
}
inline vek::Point pointOf(const char* name, const py::handle& object) {
  vek::Point point = {0, 0};
  pair(name, object.ptr(), &point.x, &point.y);
  return point;
}
inline std::vector<int> integersOf(const char* name, const py::handle& object, std::size_t count) {
  std::vector<int> numbers;
  integers(name, object.ptr(), numbers);
  if (numbers.size() != count)
    refuse(vekStsSizeErr, name, "has %zu numbers, not %zu", numbers.size(), count);
  return numbers;
}
/// Rectangles, or pairs: rows of `length` numbers. May be empty.
inline std::vector<int> rowsOf(const char* name, const py::handle& object, int length) {
  std::vector<int> numbers;
  if (object.is_none() || py::len(object) == 0) return numbers;
  if (integers(name, object.ptr(), numbers) != length)
    refuse(vekStsSizeErr, name, "has rows that are not of %d numbers", length);
  return numbers;
}
inline std::vector<vek::Rect> rectsOf(const char* name, const py::handle& object) {
  const std::vector<int> n = rowsOf(name, object, 4);
  std::vector<vek::Rect> rects;
  for (std::size_t i = 0; i + 3 < n.size(); i += 4)
    rects.push_back({n[i], n[i + 1], n[i + 2], n[i + 3]});
  return rects;
}
inline std::vector<VekiDeadPixel> deadPixelsOf(const char* name, const py::handle& object) {
  const std::vector<int> n = rowsOf(name, object, 2);
  std::vector<VekiDeadPixel> dead;
  for (std::size_t i = 0; i + 1 < n.size(); i += 2) dead.push_back({n[i], n[i + 1]});
  return dead;
}
/// Unsigned numbers that fit into this type.
template <class Number>
std::vector<Number> numbersOf(const char* name, const py::handle& object) {
  std::vector<int> numbers;
  if (!object.is_none() && py::len(object) != 0) integers(name, object.ptr(), numbers);
  std::vector<Number> result;
  for (const int n : numbers) {
    result.push_back(static_cast<Number>(n));
    if (n != int{result.back()}) refuse(vekStsBadArgErr, name, "has %d, which is too large", n);
  }
  return result;
}
inline std::vector<double> doublesOf(const char* name, const py::handle& object) {
  std::vector<double> numbers;
  const auto add = [&](const py::handle& item) {
    const double number = PyFloat_AsDouble(item.ptr());
    if (number == -1 && PyErr_Occurred() != nullptr) {
      PyErr_Clear();
      refuseType(name, "has a %s among its numbers", Py_TYPE(item.ptr())->tp_name);
    }
    numbers.push_back(number);
  };
  if (PySequence_Check(object.ptr()) == 0)
    refuseType(name, "is a %s, not a sequence of numbers", Py_TYPE(object.ptr())->tp_name);
  for (const py::handle item : object) {
    if (PyFloat_Check(item.ptr()) || isNumber(item.ptr()) || PySequence_Check(item.ptr()) == 0) {
      add(item);
    } else {
      for (const py::handle entry : item) add(entry);
    }
  }
  return numbers;
}

/// An object of the C++ interface, as Python holds it: it can be closed, and refuses calls that would
/// meet another one.
template <class Object>
class Held {
 public:
  explicit Held(Object object) : object_(std::move(object)) {}

  void close() {
    if (users_ != 0) refuse(vekStsBadArgErr, "self", "is in use by another thread");
    object_ = Object();
    isClosed_ = true;
  }

  /// A call's use of it. `alone`: no other call may run.
  class Use {
   public:
    Use(Held& held, bool alone) : held_(held) {
      if (held.isClosed_) refuse(vekStsBadArgErr, "self", "is closed");
      if (held.isTaken_ || (alone && held.users_ != 0))
        refuse(vekStsBadArgErr, "self", "is in use by another thread");
      ++held.users_;
      held.isTaken_ = alone;
    }
    ~Use() {
      --held_.users_;
      held_.isTaken_ = false;
    }
    Use(const Use&) = delete;
    Use& operator=(const Use&) = delete;
    Object& operator*() const { return held_.object_; }
    Object* operator->() const { return &held_.object_; }

   private:
    Held& held_;
  };
  Use alone() { return Use(*this, true); }
  Use shared() { return Use(*this, false); }

 private:
  Object object_;
  int users_ = 0;
  bool isTaken_ = false, isClosed_ = false;
};

}  // namespace vekpy
