#include "images.h"

#include <cstdarg>
#include <cstdio>
#include <cstring>
#include <limits>
#include <pybind11/numpy.h>
#include <utility>

namespace vekpy {

namespace {

constexpr int most = std::numeric_limits<int>::max();

std::string formatted(const char* text, std::va_list values) {
  char message[400];
  std::vsnprintf(message, sizeof message, text, values);
  return message;
}

/// The type of a buffer's samples.
char typeOf(const Py_buffer& buffer) {
  const char* format = buffer.format == nullptr ? "B" : buffer.format;
  const std::uint16_t one = 1;
  char lowByte = 0;
  std::memcpy(&lowByte, &one, 1);
  if (*format == '@' || *format == '=' || *format == (lowByte == 1 ? '<' : '>')) ++format;
  if (format[0] == '\0' || format[1] != '\0') return '?';
  if ((*format == 'l' || *format == 'i') && buffer.itemsize == 4) return 'i';
  return std::strchr("BHhd", *format) != nullptr ? *format : '?';
}

char typeOf(Layout layout) {
  switch (layout) {
    case Layout::U16:
      return 'H';
    case Layout::S16:
    case Layout::BLOCK:
      return 'h';
    case Layout::S32:
    case Layout::COMPLEX:
      return 'i';
    default:
      return 'B';
  }
}

const char* nameOf(char type) {
  switch (type) {
    case 'B':
      return "uint8";
    case 'H':
      return "uint16";
    case 'h':
      return "int16";
    case 'i':
      return "int32";
    case 'd':
      return "float64";
    default:
      return "another type";
  }
}

/// Interleaved samples of a pixel of plane i.
int channelsOf(Layout layout, int i) {
  switch (layout) {
    case Layout::C3:
      return 3;
    case Layout::C4:
      return 4;
    case Layout::C2:
    case Layout::COMPLEX:
      return 2;
    case Layout::NV12:
      return 1 + i;
    default:
      return 1;
  }
}

int planesOf(Layout layout) {
  if (layout == Layout::NV12) return 2;
  return layout == Layout::P420 || layout == Layout::P422 || layout == Layout::P444 ? 3 : 1;
}

/// Whether chroma has half as many columns.
bool isHalvedAcross(Layout layout) {
  return layout == Layout::P420 || layout == Layout::P422 || layout == Layout::NV12;
}
/// Whether chroma has half as many rows.
bool isHalvedDown(Layout layout) {
  return layout == Layout::P420 || layout == Layout::NV12;
}

template <class Number>
Number halved(Number n) {
  return n / 2 + n % 2;
}

}  // namespace

void refuse(VekStatus status, const char* argument, const char* text, ...) {
  std::va_list values;
  va_start(values, text);
  std::string message = formatted(text, values);
  va_end(values);
  throw Refusal{status, argument, std::move(message)};
}

void refuseType(const char* argument, const char* text, ...) {
  std::va_list values;
  va_start(values, text);
  std::string message = formatted(text, values);
  va_end(values);
  throw Refusal{vekStsNoErr, argument, std::move(message)};
}

void raise(const char* function, const Refusal& refusal) {
  const std::string message =
      std::string(function) + ": " + refusal.argument + " " + refusal.message;
  if (refusal.status == vekStsNoErr) {
    PyErr_SetString(PyExc_TypeError, message.c_str());
    return;
  }
  try {
    const py::object type = py::module_::import("vek._errors").attr("Error");
    const py::object error = type(message, refusal.status, function, refusal.argument);
    PyErr_SetObject(type.ptr(), error.ptr());
  } catch (py::error_already_set& error) {
    error.restore();
  }
}

void warn(const char* function, VekStatus status, int up) {
  if (status <= vekStsNoErr) return;
  const py::object type = py::module_::import("vek._errors").attr("ResultWarning");
  if (PyErr_WarnFormat(type.ptr(), up, "%s: %s", function, vekStatusString(status)) != 0) {
    throw py::error_already_set();
  }
}

Refusal refusalOf(const vek::Failure& failure) {
  // The message is the function, the argument and the reason.
  const char* reason = std::strstr(failure.message, failure.argument);
  reason = reason == nullptr ? failure.message : reason + std::strlen(failure.argument);
  while (*reason == ' ') ++reason;
  const bool isOut = std::strcmp(failure.argument, "dst") == 0;
  return {failure.status, isOut ? "out" : failure.argument, reason};
}

Image::~Image() {
  for (int i = 0; i < held_; ++i) PyBuffer_Release(&buffers_[i]);
}

void Image::acquire(const char* name, PyObject* object, bool isDestination) {
  name_ = name;
  object_ = object;
  isSequence_ = PyTuple_Check(object) || PyList_Check(object);
  if (!isSequence_) {
    acquirePart(0, object, isDestination);
    count_ = 1;
    return;
  }
  // A list may change while its entries are acquired.
  const py::tuple planes = py::reinterpret_borrow<py::object>(object);
  const auto parts = static_cast<Py_ssize_t>(planes.size());
  if (parts != 2 && parts != 3)
    refuseType(name_, "has %zd parts; pictures have two or three planes", parts);
  for (int i = 0; i < static_cast<int>(parts); ++i) {
    acquirePart(i, PyTuple_GET_ITEM(planes.ptr(), i), isDestination);
  }
  count_ = static_cast<int>(parts);
}

void Image::acquirePart(int i, PyObject* object, bool isDestination) {
  if (PyObject_CheckBuffer(object) == 0) {
    // NumPy wraps what these protocols show, without a copy.
    const bool isArray = PyObject_HasAttrString(object, "__array_interface__") != 0;
    if (!isArray && PyObject_HasAttrString(object, "__dlpack__") == 0)
      refuseType(name_, "is a %s, which is no image", Py_TYPE(object)->tp_name);
    try {
      const py::module_ numpy = py::module_::import("numpy");
      kept_[i] = numpy.attr(isArray ? "asarray" : "from_dlpack")(py::handle(object));
    } catch (py::error_already_set& error) {
      refuseType(name_, "cannot be used without a copy: %s", error.what());
    }
    object = kept_[i].ptr();
  }
  Py_buffer& buffer = buffers_[i];
  if (PyObject_GetBuffer(object, &buffer, PyBUF_STRIDES | PyBUF_FORMAT) != 0) {
    PyErr_Clear();
    refuseType(name_, "is a %s without strides", Py_TYPE(object)->tp_name);
  }
  ++held_;
  if (isDestination && buffer.readonly != 0) refuse(vekStsBadArgErr, name_, "is read-only");
  types_[i] = typeOf(buffer);
}

std::string Image::described() const {
  std::string text = isSequence_ ? "planes of " : "";
  for (int i = 0; i < count_; ++i) {
    text += std::string(i == 0 ? "" : ", ") + nameOf(types_[i]) + " (";
    for (int d = 0; d < buffers_[i].ndim; ++d) {
      text += (d == 0 ? "" : ", ") + std::to_string(buffers_[i].shape[d]);
    }
    text += ")";
  }
  return text;
}

const char* lookOf(Layout layout) {
  switch (layout) {
    case Layout::C1:
      return "uint8 (rows, columns)";
    case Layout::C3:
      return "uint8 (rows, columns, 3)";
    case Layout::C4:
      return "uint8 (rows, columns, 4)";
    case Layout::C2:
      return "uint8 (rows, even columns, 2)";
    case Layout::U16:
      return "uint16 (rows, columns)";
    case Layout::S16:
      return "int16 (rows, columns)";
    case Layout::S32:
      return "int32 (rows, columns)";
    case Layout::COMPLEX:
      return "int32 (rows, columns, 2)";
    case Layout::P420:
      return "three planes of 4:2:0";
    case Layout::P422:
      return "three planes of 4:2:2";
    case Layout::P444:
      return "three planes of 4:4:4";
    case Layout::NV12:
      return "a plane and one of (rows, columns, 2)";
    case Layout::BLOCK:
      return "int16 (64)";
    case Layout::BITS:
      return "uint8 (rows, bytes)";
    case Layout::value:
      return "a number, or one for each channel";
    default:
      return "nothing";
  }
}

bool Image::looksLike(Layout layout) const {
  if (count_ != planesOf(layout) || isSequence_ != (count_ > 1)) return false;
  for (int i = 0; i < count_; ++i) {
    const Py_buffer& b = buffers_[i];
    const int channels = channelsOf(layout, i);
    if (types_[i] != typeOf(layout)) return false;
    if (layout == Layout::BLOCK) return b.ndim == 1 && b.shape[0] == 64;
    if (b.ndim != (channels == 1 ? 2 : 3) || (channels > 1 && b.shape[2] != channels)) return false;
  }
  if (layout == Layout::C2) return buffers_[0].shape[1] % 2 == 0;
  for (int i = 1; i < count_; ++i) {
    const Py_ssize_t *luma = buffers_[0].shape, *chroma = buffers_[i].shape;
    if (chroma[0] != (isHalvedDown(layout) ? halved(luma[0]) : luma[0])) return false;
    if (chroma[1] != (isHalvedAcross(layout) ? halved(luma[1]) : luma[1])) return false;
  }
  return true;
}

void Image::use(Layout layout) {
  const bool isBlock = layout == Layout::BLOCK;
  for (int i = 0; i < count_; ++i) {
    if (planes_[i].data != nullptr) continue;
    const Py_buffer& b = buffers_[i];
    for (int d = 0; d < b.ndim; ++d) {
      if (b.shape[d] < 1) refuse(vekStsSizeErr, name_, "is empty");
      if (b.shape[d] > most) refuse(vekStsSizeErr, name_, "has a side of %zd", b.shape[d]);
    }
    // From the samples of a pixel outwards. The stride of a dimension with one entry means nothing.
    std::int64_t bytes = b.itemsize;
    for (int d = b.ndim - 1; d >= (isBlock ? 0 : 1); --d) {
      if (b.shape[d] > 1 && b.strides[d] != bytes) {
        refuse(vekStsStepErr, name_, "has %s that are %zd bytes apart, not %lld; it takes a copy",
               d == 2 ? "channels" : "pixels", b.strides[d], static_cast<long long>(bytes));
      }
      bytes *= b.shape[d];
    }
    Plane p;
    p.data = static_cast<char*>(b.buf);
    p.rows = isBlock ? 1 : static_cast<int>(b.shape[0]);
    p.columns = isBlock ? 64 : static_cast<int>(b.shape[1]);
    p.rowBytes = bytes;
    p.step = p.rows == 1 ? bytes : b.strides[0];
    if (bytes > most || p.step > most)
      refuse(vekStsStepErr, name_, "has rows of more than 2^31 bytes");
    // Rows that overlap are as good as a view for reading, but views need whole rows.
    if (p.step < bytes) {
      refuse(vekStsStrideErr, name_, "has rows of %lld bytes that are %lld apart; it takes a copy",
             static_cast<long long>(bytes), static_cast<long long>(p.step));
    }
    planes_[i] = p;
  }
}

void Image::create(Layout layout, vek::Size size, bool aligned) {
  const char type = typeOf(layout);
  const int bytes = type == 'B' ? 1 : type == 'i' ? 4 : 2;
  const auto dtype = type == 'B'   ? py::dtype::of<Vek8u>()
                     : type == 'H' ? py::dtype::of<Vek16u>()
                     : type == 'h' ? py::dtype::of<Vek16s>()
                                   : py::dtype::of<Vek32s>();
  name_ = "out";
  count_ = planesOf(layout);
  isSequence_ = count_ > 1;
  if (size.width < 1 || size.height < 1)
    refuse(vekStsSizeErr, name_, "would be %d x %d", size.width, size.height);
  py::object made[3];
  for (int i = 0; i < count_; ++i) {
    Plane& p = planes_[i];
    const int channels = channelsOf(layout, i);
    p.rows = i > 0 && isHalvedDown(layout) ? halved(size.height) : size.height;
    p.columns = i > 0 && isHalvedAcross(layout) ? halved(size.width) : size.width;
    if (layout == Layout::C2) p.columns += p.columns % 2;
    p.rowBytes = std::int64_t{p.columns} * channels * bytes;
    p.step = aligned ? (p.rowBytes + 63) / 64 * 64 : p.rowBytes;
    if (p.step > most) refuse(vekStsSizeErr, name_, "would be %d columns wide", size.width);

    py::object memory;
    char* start = nullptr;
    if (aligned) {
      const py::array room(py::dtype::of<Vek8u>(), std::vector<py::ssize_t>{p.rows * p.step + 63});
      start = static_cast<char*>(const_cast<void*>(room.data()));
      start += (64 - reinterpret_cast<std::uintptr_t>(start) % 64) % 64;
      memory = room;
    }
    py::array::ShapeContainer shape{py::ssize_t{p.rows}, py::ssize_t{p.columns}};
    py::array::StridesContainer strides{py::ssize_t{p.step}, py::ssize_t{channels} * bytes};
    if (layout == Layout::BLOCK) {
      shape = {py::ssize_t{64}};
      strides = {py::ssize_t{bytes}};
    } else if (channels > 1) {
      shape = {py::ssize_t{p.rows}, py::ssize_t{p.columns}, py::ssize_t{channels}};
      strides = {py::ssize_t{p.step}, py::ssize_t{channels} * bytes, py::ssize_t{bytes}};
    }
    py::array array(dtype, std::move(shape), std::move(strides), start, memory);
    p.data = static_cast<char*>(const_cast<void*>(array.data()));
    made[i] = std::move(array);
  }
  owned_ = count_ == 1   ? made[0]
           : count_ == 2 ? py::object(py::make_tuple(made[0], made[1]))
                         : py::object(py::make_tuple(made[0], made[1], made[2]));
  object_ = owned_.ptr();
}

namespace {

/// Whether two planes share a byte.
bool overlap(const Plane& a, const Plane& b) {
  const auto end = [](const Plane& p) { return p.data + (p.rows - 1) * p.step + p.rowBytes; };
  if (a.data >= end(b) || b.data >= end(a)) return false;
  for (std::int64_t i = 0, j = 0; i < a.rows && j < b.rows;) {
    const char *p = a.data + i * a.step, *q = b.data + j * b.step;
    if (p < q + b.rowBytes && q < p + a.rowBytes) return true;
    ++(p < q ? i : j);
  }
  return false;
}

}  // namespace

void checkOverlap(const Image& source, const Image& destination, bool inPlace) {
  for (int i = 0; i < source.planeCount(); ++i) {
    for (int j = 0; j < destination.planeCount(); ++j) {
      const Plane &a = source.plane(i), &b = destination.plane(j);
      const bool isSame =
          i == j && a.data == b.data && a.step == b.step && a.rowBytes == b.rowBytes;
      if ((inPlace && isSame) || !overlap(a, b)) continue;
      refuse(vekStsBadArgErr, destination.name(),
             isSame ? "is %s, which does not work in place" : "overlaps %s", source.name());
    }
  }
}

void checkOverlap(const Image& destination) {
  for (int i = 1; i < destination.planeCount(); ++i) {
    for (int j = 0; j < i; ++j) {
      if (overlap(destination.plane(i), destination.plane(j)))
        refuse(vekStsBadArgErr, destination.name(), "has planes that overlap");
    }
  }
}

bool isNumber(PyObject* object) {
  return PyLong_Check(object) || (PyIndex_Check(object) && !PySequence_Check(object));
}

namespace {

std::int64_t number(const char* name, PyObject* object, std::int64_t least, std::int64_t greatest) {
  const auto value = py::reinterpret_steal<py::object>(PyNumber_Index(object));
  if (!value) {
    PyErr_Clear();
    refuseType(name, "is a %s, not a whole number", Py_TYPE(object)->tp_name);
  }
  int overflows = 0;
  const long long n = PyLong_AsLongLongAndOverflow(value.ptr(), &overflows);
  if (overflows != 0 || n < least || n > greatest) {
    refuse(vekStsBadArgErr, name, "has a number outside %lld..%lld", static_cast<long long>(least),
           static_cast<long long>(greatest));
  }
  return n;
}

py::object sequence(const char* name, PyObject* object, const char* wanted) {
  // A tuple, as a list may change while its entries are asked for their values.
  PyObject* const items = PyUnicode_Check(object) ? nullptr : PySequence_Tuple(object);
  if (items == nullptr) {
    PyErr_Clear();
    refuseType(name, "is a %s, not %s", Py_TYPE(object)->tp_name, wanted);
  }
  return py::reinterpret_steal<py::object>(items);
}

}  // namespace

int integer(const char* name, PyObject* object) {
  return static_cast<int>(number(name, object, std::numeric_limits<int>::min(), most));
}

int integers(const char* name, PyObject* object, std::vector<int>& values) {
  const py::object items = sequence(name, object, "a sequence of whole numbers");
  const auto rows = static_cast<std::size_t>(PyTuple_GET_SIZE(items.ptr()));
  std::size_t columns = rows;
  values.clear();
  for (std::size_t i = 0; i < rows; ++i) {
    PyObject* const item = PyTuple_GET_ITEM(items.ptr(), static_cast<Py_ssize_t>(i));
    if (isNumber(item) || !PySequence_Check(item)) {
      values.push_back(integer(name, item));
      continue;
    }
    const py::object row = sequence(name, item, "a row of whole numbers");
    const auto length = static_cast<std::size_t>(PyTuple_GET_SIZE(row.ptr()));
    if (i == 0) columns = length;
    if (length != columns || values.size() != i * length)
      refuse(vekStsSizeErr, name, "has rows of different lengths");
    for (std::size_t j = 0; j < length; ++j) {
      PyObject* const entry = PyTuple_GET_ITEM(row.ptr(), static_cast<Py_ssize_t>(j));
      values.push_back(integer(name, entry));
    }
  }
  if (values.empty() || values.size() > std::size_t{1} << 20)
    refuse(vekStsSizeErr, name, "has %zu numbers", values.size());
  return static_cast<int>(columns);
}

void pair(const char* name, PyObject* object, int* x, int* y) {
  const py::object items = sequence(name, object, "a pair of whole numbers");
  if (PyTuple_GET_SIZE(items.ptr()) != 2) refuseType(name, "is not a pair of whole numbers");
  *x = integer(name, PyTuple_GET_ITEM(items.ptr(), 0));
  *y = integer(name, PyTuple_GET_ITEM(items.ptr(), 1));
}

int channelValues(const char* name, PyObject* object, std::uint32_t* values, std::uint32_t limit) {
  if (isNumber(object) || !PySequence_Check(object)) {
    const auto value = static_cast<std::uint32_t>(number(name, object, 0, limit));
    values[0] = values[1] = values[2] = value;
    return 1;
  }
  const py::object items = sequence(name, object, "a number for each channel");
  const auto count = static_cast<int>(PyTuple_GET_SIZE(items.ptr()));
  if (count != 3) refuse(vekStsBadArgErr, name, "has %d numbers, not one or three", count);
  for (int i = 0; i < 3; ++i) {
    PyObject* const item = PyTuple_GET_ITEM(items.ptr(), i);
    values[i] = static_cast<std::uint32_t>(number(name, item, 0, limit));
  }
  return 3;
}

}  // namespace vekpy
