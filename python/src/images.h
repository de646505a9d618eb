// Images as Python objects have them: acquired without a copy, or refused with the argument's name.
#pragma once
#include <cstdint>
#include <pybind11/pybind11.h>
#include <string>
#include <vector>
#include <vek/view.hpp>

namespace vekpy {

namespace py = pybind11;

/// What images may look like; tools/operations.py explains the names.
enum class Layout : std::uint8_t {
  nothing,
  C1,
  C3,
  C4,
  C2,
  U16,
  S16,
  S32,
  COMPLEX,
  P420,
  P422,
  P444,
  NV12,
  BLOCK,
  BITS,
  value,
  numbers
};

/// A refusal: a vek.Error, or a TypeError if there is no status.
struct Refusal {
  VekStatus status;
  const char* argument;
  std::string message;
};
[[noreturn]] void refuse(VekStatus status, const char* argument, const char* text, ...)
    __attribute__((format(printf, 3, 4)));
[[noreturn]] void refuseType(const char* argument, const char* text, ...)
    __attribute__((format(printf, 2, 3)));
/// Sets the exception of Python that belongs to a refusal by this function.
void raise(const char* function, const Refusal& refusal);
/// Warns of a result that this function has a reservation about (a positive status), in the line of whoever called
/// it that many calls of Python up; where warnings are errors, throws.
void warn(const char* function, VekStatus status, int up = 1);
/// The refusal that belongs to a failure of the C++ interface.
Refusal refusalOf(const vek::Failure& failure);

/// A plane: rows of pixels that follow each other without a gap.
struct Plane {
  char* data = nullptr;
  std::int64_t step = 0;
  int columns = 0, rows = 0;
  std::int64_t rowBytes = 0;
};

/// An image argument. It keeps its buffers as long as it lives, and is destroyed with the GIL held.
class Image {
 public:
  Image() = default;
  Image(const Image&) = delete;
  Image& operator=(const Image&) = delete;
  ~Image();

  /// Acquires a buffer, or a tuple or list of two or three.
  void acquire(const char* name, PyObject* object, bool isDestination);
  /// Becomes a new image of `size` pixels. With `aligned`, rows begin at multiples of 64 bytes.
  void create(Layout layout, vek::Size size, bool aligned = false);

  /// Whether the buffers have the types and shapes of this layout. It says nothing about strides.
  bool looksLike(Layout layout) const;
  /// What they have instead, for messages.
  std::string described() const;
  /// Checks strides. What follows can then be used.
  void use(Layout layout);

  bool isGiven() const { return object_ != nullptr; }
  const char* name() const { return name_; }
  int planeCount() const { return count_; }
  const Plane& plane(int i = 0) const { return planes_[i]; }
  vek::Size size() const { return {planes_[0].columns, planes_[0].rows}; }
  /// A plane as a view of these pixels, which it has been found to look like.
  template <class Pixel, int channels = 1>
  vek::View<Pixel, channels> view(int i = 0) const {
    using View = vek::View<Pixel, channels>;
    const Plane& p = planes_[i];
    const vek::Bytes step(static_cast<int>(p.step));
    // NOLINTNEXTLINE(bugprone-casting-through-void): the type of the samples has been checked
    return View(static_cast<typename View::Storage*>(static_cast<void*>(p.data)),
                {p.columns, p.rows}, step);
  }
  template <vek::Chroma chroma>
  vek::Planes<Vek8u, chroma> planes() const {
    return {view<Vek8u>(0), view<Vek8u>(1), view<Vek8u>(2)};
  }
  /// What a function returns: the object that was given, or the new image.
  py::object object() const { return py::reinterpret_borrow<py::object>(object_); }

 private:
  void acquirePart(int i, PyObject* object, bool isDestination);

  const char* name_ = "";
  PyObject* object_ = nullptr;
  py::object owned_;    ///< of a new image
  py::object kept_[3];  ///< what stands for an object without the buffer protocol
  Py_buffer buffers_[3];
  int held_ = 0;   ///< buffers
  int count_ = 0;  ///< planes
  bool isSequence_ = false;
  char types_[3] = {};  ///< B, H, h, i, or ? for all others
  Plane planes_[3];
};

/// Refuses images that share memory. With `inPlace` they may be the same.
void checkOverlap(const Image& source, const Image& destination, bool inPlace);
/// Refuses a destination whose planes share memory.
void checkOverlap(const Image& destination);

/// What an image of this layout looks like, for messages.
const char* lookOf(Layout layout);

/// Whether an object stands for a whole number, and for nothing else.
bool isNumber(PyObject* object);
/// A number of 32 bits.
int integer(const char* name, PyObject* object);
/// The numbers of a sequence, or of the rows of one. Returns how many they are in a row.
int integers(const char* name, PyObject* object, std::vector<int>& values);
/// A size or a point.
void pair(const char* name, PyObject* object, int* x, int* y);
/// A number for all of three channels, or one for each, 0..limit. Returns 1 or 3.
int channelValues(const char* name, PyObject* object, std::uint32_t* values, std::uint32_t limit);

}  // namespace vekpy
