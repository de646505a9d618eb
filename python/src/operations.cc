// One function serves all operations: it reads a call's arguments as the operation's parameters say,
// chooses the variant that fits them, and makes the arguments of that variant's C function. It is called
// without pybind11's dispatcher, which alone would take longer than a small image.
#include "operations.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <vek/camera.h>
#include <vek/image.h>

#include "images.h"

namespace vekpy {

namespace {

/// An argument of a C function in every form that it may need.
struct Slot {
  const void* pointer = nullptr;
  std::int64_t number = 0;
  int x = 0, y = 0;
};

template <class Type>
Type get(const Slot& slot) {
  if constexpr (std::is_pointer_v<Type>) {
    return static_cast<Type>(const_cast<void*>(slot.pointer));
  } else if constexpr (std::is_integral_v<Type>) {
    return static_cast<Type>(slot.number);
  } else {
    return {slot.x, slot.y};
  }
}

template <class... Types, std::size_t... index>
VekStatus invoke(VekStatus (*function)(Types...), const Slot* slots,
                 std::index_sequence<index...> /*indices*/) {
  return function(get<Types>(slots[index])...);
}
template <class... Types>
constexpr std::make_index_sequence<sizeof...(Types)> indicesOf(
    VekStatus (* /*function*/)(Types...)) {
  return {};
}
/// Calls the function with these arguments.
template <auto function>
VekStatus invoke(const Slot* slots) {
  return invoke(function, slots, indicesOf(function));
}

/// What an argument of a C function is made from.
enum class From : std::uint8_t {
  data,    ///< an image's pixels, or the array of its planes
  step,    ///< an image's step, which all of its planes have
  steps,   ///< the array of the steps of its planes
  region,  ///< the size of the region
  value,   ///< a parameter
  extent,  ///< the size of a parameter that is a kernel
  result   ///< where numbers are returned
};
struct Argument {
  static constexpr std::uint8_t out = 2;  ///< index of the destination
  From from;
  std::uint8_t index;
};

struct Variant {
  const char* function;
  VekStatus (*invoke)(const Slot*);
  Layout sources[2];
  Layout out;
  int format;      ///< for this `format` alone, unless -1
  int channels;    ///< of a parameter that has a value for each
  bool isStepped;  ///< the function takes the steps of all images
  const Argument* arguments;
  int argumentCount;
};

enum class Kind : std::uint8_t {
  image,
  imageOrValue,
  destination,
  value,
  shifts,
  integer,
  size,
  point,
  anchor,
  tap,
  kernel,
  taps,
  integers3,
  integers12,
  order,
  format,
  chroma
};
struct Parameter {
  const char* name;
  Kind kind;
  bool isRequired;
  int number;  ///< if it is left out
};

/// How the region follows from the sources: all of it, or what a neighbourhood leaves.
enum class Shape : std::uint8_t { same, mask, kernel, row, column, three, square };

struct Operation {
  const char* name;
  const char* text;
  Shape shape;
  bool inPlace;
  const Parameter* parameters;
  int parameterCount;
  const Variant* variants;
  int variantCount;
};

#include "operations.inc"

constexpr int mostParameters = 6;

/// A parameter's value, for the C function.
struct Value {
  Slot slot;
  int count = 0;  ///< numbers
  std::uint32_t words[3];
  Vek8u bytes[3];
  std::vector<int> integers;
};

class Call {
 public:
  explicit Call(const Operation& operation) : op_(operation) {}

  void bind(PyObject* const* arguments, Py_ssize_t count, PyObject* names);
  PyObject* run();

 private:
  void read(int i);
  void readValue(Value& value, const Parameter& parameter, PyObject* object);
  bool accepts(const Variant& variant, int image) const;
  bool accepts(const Variant& variant) const;
  const Variant& choose() const;
  [[noreturn]] void refuseImages() const;
  VekiSize mask() const;
  void shift(VekiSize mask);
  void prepare(const Variant& variant);
  void use(const Variant& variant);
  void fill(const Variant& variant, Slot* slots);
  const char* argumentOf(VekStatus status) const;

  Image& image(std::uint8_t index) { return index == Argument::out ? out_ : sources_[index]; }

  const Operation& op_;
  PyObject* given_[mostParameters] = {};
  PyObject* givenOut_ = nullptr;
  Image sources_[2];
  int sourceCount_ = 0;
  Image out_;
  Value values_[mostParameters];
  bool isValue_ = false;  ///< the parameter that may be an image or a value is a value
  int format_ = -1, chroma_ = -1, order_ = 0;
  VekiSize region_ = {0, 0};
  std::int64_t before_ =
      0;  ///< bytes from the source's start to the pixel of the region's first one
  void* pointers_[3][3];
  int steps_[3][3];
  Vek32s results_[3] = {};
};

void Call::bind(PyObject* const* arguments, Py_ssize_t count, PyObject* names) {
  if (count > op_.parameterCount) {
    refuseType("arguments", "are %zd, of which at most %d have no name", count, op_.parameterCount);
  }
  std::copy(arguments, arguments + count, given_);
  const Py_ssize_t named = names == nullptr ? 0 : PyTuple_GET_SIZE(names);
  for (Py_ssize_t i = 0; i < named; ++i) {
    const char* const name = PyUnicode_AsUTF8(PyTuple_GET_ITEM(names, i));
    if (name == nullptr) throw py::error_already_set();
    PyObject** to = nullptr;
    for (int p = 0; p < op_.parameterCount; ++p) {
      if (std::strcmp(name, op_.parameters[p].name) == 0) to = &given_[p];
    }
    const bool hasOut =
        op_.variants[0].out != Layout::numbers && op_.parameters[0].kind != Kind::destination;
    if (to == nullptr && hasOut && std::strcmp(name, "out") == 0) to = &givenOut_;
    if (to == nullptr) refuseType(name, "is no argument of it");
    if (*to != nullptr) refuseType(name, "is given twice");
    *to = arguments[count + i];
  }
  for (int p = 0; p < op_.parameterCount; ++p) {
    if (given_[p] == nullptr && op_.parameters[p].isRequired)
      refuseType(op_.parameters[p].name, "is missing");
  }
  if (givenOut_ == Py_None) givenOut_ = nullptr;
}

void Call::read(int i) {
  const Parameter& parameter = op_.parameters[i];
  PyObject* const object = given_[i];
  Value& value = values_[i];
  switch (parameter.kind) {
    case Kind::imageOrValue:
      isValue_ = isNumber(object) || ((PyTuple_Check(object) || PyList_Check(object)) &&
                                      PySequence_Fast_GET_SIZE(object) > 0 &&
                                      isNumber(PySequence_Fast_GET_ITEM(object, 0)));
      if (isValue_) {
        readValue(value, parameter, object);
        return;
      }
      [[fallthrough]];
    case Kind::image:
      sources_[sourceCount_++].acquire(parameter.name, object, false);
      return;
    case Kind::destination:
      out_.acquire(parameter.name, object, true);
      return;
    default:
      if (object == nullptr || (object == Py_None && !parameter.isRequired)) {
        value.slot.number = value.slot.x = value.slot.y = parameter.number;
        std::fill_n(value.words, 3, static_cast<std::uint32_t>(parameter.number));
        std::fill_n(value.bytes, 3, static_cast<Vek8u>(parameter.number));
        value.slot.pointer = value.bytes;
        value.count = 1;
      } else {
        readValue(value, parameter, object);
      }
  }
  if (parameter.kind == Kind::format) format_ = static_cast<int>(value.slot.number);
  if (parameter.kind == Kind::chroma) chroma_ = static_cast<int>(value.slot.number);
  if (parameter.kind == Kind::order) order_ = value.count;
}

void Call::readValue(Value& value, const Parameter& parameter, PyObject* object) {
  const char* const name = parameter.name;
  Slot& slot = value.slot;
  switch (parameter.kind) {
    case Kind::shifts:
    case Kind::value:
    case Kind::imageOrValue: {
      const bool isShift = parameter.kind == Kind::shifts;
      value.count = channelValues(name, object, value.words, isShift ? UINT32_MAX : 255);
      for (int c = 0; c < 3; ++c) value.bytes[c] = static_cast<Vek8u>(value.words[c]);
      slot.number = value.words[0];
      slot.pointer = isShift ? static_cast<const void*>(value.words) : value.bytes;
      return;
    }
    case Kind::size:
    case Kind::point:
    case Kind::anchor:
      pair(name, object, &slot.x, &slot.y);
      return;
    case Kind::kernel:
    case Kind::taps:
    case Kind::integers3:
    case Kind::integers12:
    case Kind::order: {
      slot.x = integers(name, object, value.integers);
      value.count = static_cast<int>(value.integers.size());
      slot.y = value.count / slot.x;
      slot.number = value.count;
      slot.pointer = value.integers.data();
      const int wanted = parameter.kind == Kind::integers3 ? 3 : 12;
      if ((parameter.kind == Kind::integers3 || parameter.kind == Kind::integers12) &&
          value.count != wanted)
        refuse(vekStsSizeErr, name, "has %d numbers, not %d", value.count, wanted);
      return;
    }
    default:
      slot.number = integer(name, object);
  }
}

/// Whether a source is one of this variant's.
bool Call::accepts(const Variant& variant, int image) const {
  return sources_[image].looksLike(variant.sources[image]);
}

bool Call::accepts(const Variant& variant) const {
  if (variant.format != -1 && variant.format != format_) return false;
  if (order_ != 0 && order_ != (variant.out == Layout::C4 ? 4 : 3)) return false;
  const Layout first = variant.sources[0];
  if (chroma_ != -1 && first >= Layout::P420 && first <= Layout::P444 &&
      static_cast<int>(first) - static_cast<int>(Layout::P420) != chroma_)
    return false;
  if ((variant.sources[1] == Layout::value) != isValue_) return false;
  for (int i = 0; i < sourceCount_; ++i) {
    if (!accepts(variant, i)) return false;
  }
  return sourceCount_ > 0 || out_.looksLike(variant.out);
}

const Variant& Call::choose() const {
  const Variant* chosen = nullptr;
  for (int v = 0; v < op_.variantCount; ++v) {
    const Variant& variant = op_.variants[v];
    if (!accepts(variant)) continue;
    // Planes of a picture of one row or column may be of several kinds.
    if (chosen != nullptr)
      refuse(vekStsBadArgErr, sources_[0].name(), "may be %s or %s; `chroma` says which",
             lookOf(chosen->sources[0]), lookOf(variant.sources[0]));
    chosen = &variant;
  }
  if (chosen == nullptr) refuseImages();
  return *chosen;
}

/// Says which image no variant takes, and what is wanted instead.
void Call::refuseImages() const {
  const Image* wrong = sourceCount_ == 0 ? &out_ : &sources_[sourceCount_ - 1];
  int at = std::max(sourceCount_ - 1, 0);
  bool hasFormat = format_ == -1, isEachRight = true;
  for (int i = sourceCount_ - 1; i >= 0; --i) {
    bool isRight = false;
    for (int v = 0; v < op_.variantCount; ++v) {
      const Variant& variant = op_.variants[v];
      if (variant.format != -1 && variant.format != format_) continue;
      hasFormat = true;
      isRight = isRight || accepts(variant, i);
    }
    if (!isRight) {
      wrong = &sources_[i];
      at = i;
      isEachRight = false;
    }
  }
  if (!hasFormat) refuse(vekStsNotSupportedModeErr, "format", "is none that it makes");
  std::string wanted;
  for (int v = 0; v < op_.variantCount; ++v) {
    const Variant& variant = op_.variants[v];
    if (variant.format != -1 && variant.format != format_) continue;
    const std::string look = lookOf(sourceCount_ == 0 ? variant.out : variant.sources[at]);
    if (wanted.find(look) == std::string::npos) wanted += (wanted.empty() ? "" : " or ") + look;
  }
  // Two images that are right by themselves do not fit each other.
  const std::string other =
      at == 1 && isEachRight ? " beside " + sources_[0].described() : std::string();
  refuseType(wrong->name(), "is %s%s; wanted is %s", wrong->described().c_str(), other.c_str(),
             wanted.c_str());
}

/// The pixels of a neighbourhood.
VekiSize Call::mask() const {
  const Slot& slot = values_[1].slot;
  switch (op_.shape) {
    case Shape::mask:
    case Shape::kernel:
      return {slot.x, slot.y};
    case Shape::row:
      return {static_cast<int>(slot.number), 1};
    case Shape::column:
      return {1, static_cast<int>(slot.number)};
    case Shape::square:
      return slot.number == vekiMask5x5 ? VekiSize{5, 5} : VekiSize{3, 3};
    default:
      return {3, 3};
  }
}

/// Moves from all pixels to those whose neighbourhoods are inside.
void Call::shift(VekiSize mask) {
  if (mask.width < 1 || mask.height < 1 || mask.width > region_.width ||
      mask.height > region_.height) {
    refuse(vekStsMaskSizeErr, op_.parameterCount > 1 ? op_.parameters[1].name : "src",
           "of %d x %d does not fit into %d x %d pixels", mask.width, mask.height, region_.width,
           region_.height);
  }
  int x = mask.width / 2, y = mask.height / 2;
  for (int p = 2; p < op_.parameterCount; ++p) {
    const Kind kind = op_.parameters[p].kind;
    Slot& slot = values_[p].slot;
    if (kind == Kind::anchor) {
      if (given_[p] == nullptr || given_[p] == Py_None) {
        slot.x = x;
        slot.y = y;
      }
      x = slot.x;
      y = slot.y;
    } else if (kind == Kind::tap) {
      int& along = op_.shape == Shape::row ? x : y;
      if (slot.number == -1) slot.number = along;
      along = static_cast<int>(slot.number);
    }
  }
  if (x < 0 || y < 0 || x >= mask.width || y >= mask.height)
    refuse(vekStsAnchorErr, "anchor", "is outside a mask of %d x %d", mask.width, mask.height);
  // Convolutions count the kernel's entries backwards.
  if (op_.shape == Shape::kernel || op_.shape == Shape::row) x = mask.width - 1 - x;
  if (op_.shape == Shape::kernel || op_.shape == Shape::column) y = mask.height - 1 - y;
  const Plane& source = sources_[0].plane();
  before_ = y * source.step + source.rowBytes / source.columns * x;
  region_ = {region_.width - mask.width + 1, region_.height - mask.height + 1};
}

/// Sizes, and the destination.
void Call::prepare(const Variant& variant) {
  for (int i = 0; i < sourceCount_; ++i) sources_[i].use(variant.sources[i]);
  if (givenOut_ != nullptr) out_.acquire("out", givenOut_, true);
  if (out_.isGiven()) {
    if (!out_.looksLike(variant.out)) {
      refuseType(out_.name(), "is %s; wanted is %s", out_.described().c_str(), lookOf(variant.out));
    }
    out_.use(variant.out);
  }
  region_ = sourceCount_ > 0 ? sources_[0].size() : out_.size();
  if (sourceCount_ > 1) {
    const VekiSize other = sources_[1].size();
    if (other.width != region_.width || other.height != region_.height) {
      refuse(vekStsSizeErr, sources_[1].name(), "is %d x %d, but %s %d x %d", other.width,
             other.height, sources_[0].name(), region_.width, region_.height);
    }
  }
  if (variant.sources[0] == Layout::C2 && out_.isGiven() &&
      out_.size().width == region_.width - 1) {
    --region_.width;  // a picture of odd width, whose last pair is half used
  }
  if (op_.shape != Shape::same) shift(mask());
  if (variant.out == Layout::numbers) return;

  VekiSize wanted = region_;
  if (variant.out == Layout::C2) wanted.width += wanted.width % 2;
  if (variant.out == Layout::BITS) {
    const std::int64_t bits = values_[1].slot.number;
    if (bits != 1 && bits != 2 && bits != 4) refuse(vekStsBadArgErr, "bits", "is not 1, 2 or 4");
    wanted.width = static_cast<int>((wanted.width * bits + 7) / 8);
  }
  if (!out_.isGiven()) {
    out_.create(variant.out, variant.out == Layout::C2 ? region_ : wanted);
    return;
  }
  if (out_.size().width != wanted.width || out_.size().height != wanted.height) {
    refuse(vekStsSizeErr, out_.name(), "is %d x %d, not %d x %d", out_.size().width,
           out_.size().height, wanted.width, wanted.height);
  }
  checkOverlap(out_);
  for (int i = 0; i < sourceCount_; ++i) {
    checkOverlap(sources_[i], out_, op_.inPlace && variant.sources[i] == variant.out);
  }
}

/// What the C function takes of the images.
void Call::use(const Variant& variant) {
  for (int i = 0; i < 3; ++i) {
    const Image& image = i == Argument::out ? out_ : sources_[i];
    for (int p = 0; p < image.planeCount(); ++p) {
      const Plane& plane = image.plane(p);
      pointers_[i][p] = plane.data;
      steps_[i][p] = static_cast<int>(plane.step);
      if (!variant.isStepped && plane.step != plane.rowBytes) {
        refuse(vekStsStepErr, image.name(), "has rows of %lld bytes that are %lld apart",
               static_cast<long long>(plane.rowBytes), static_cast<long long>(plane.step));
      }
    }
  }
  pointers_[0][0] =
      sources_[0].planeCount() == 1 ? sources_[0].plane().data + before_ : pointers_[0][0];
}

void Call::fill(const Variant& variant, Slot* slots) {
  for (int a = 0; a < variant.argumentCount; ++a) {
    const auto [from, index] = variant.arguments[a];
    Slot& slot = slots[a];
    switch (from) {
      case From::data:
        slot.pointer = image(index).planeCount() == 1 ? pointers_[index][0]
                                                      : static_cast<void*>(pointers_[index]);
        break;
      case From::step:
        for (int p = 1; p < image(index).planeCount(); ++p) {
          if (steps_[index][p] != steps_[index][0]) {
            refuse(vekStsStepErr, image(index).name(),
                   "has planes with steps of %d and %d bytes, which must be the same",
                   steps_[index][0], steps_[index][p]);
          }
        }
        slot.number = steps_[index][0];
        break;
      case From::steps:
        slot.pointer = steps_[index];
        break;
      case From::region:
        slot.x = region_.width;
        slot.y = region_.height;
        break;
      case From::value: {
        const Value& value = values_[index];
        const Kind kind = op_.parameters[index].kind;
        const bool isPerChannel =
            kind == Kind::value || kind == Kind::imageOrValue || kind == Kind::shifts;
        if (isPerChannel && value.count == 3 && variant.channels == 1)
          refuse(vekStsBadArgErr, op_.parameters[index].name, "has three numbers for one channel");
        slot = value.slot;
        break;
      }
      case From::extent:
        slot = values_[index].slot;
        break;
      case From::result:
        slot.pointer = results_;
        break;
    }
  }
}

const char* Call::argumentOf(VekStatus status) const {
  switch (status) {
    case vekStsMaskSizeErr:
      return "mask";
    case vekStsAnchorErr:
      return "anchor";
    case vekStsDivisorErr:
      return "divisor";
    case vekStsCoeffRangeErr:
      return "coefficients";
    case vekStsThresholdErr:
      return "low";
    case vekStsMirrorFlipErr:
      return "axis";
    case vekStsSizeErr:
      return op_.shape == Shape::same ? "size" : op_.parameters[1].name;
    default:
      return "an argument";
  }
}

PyObject* Call::run() {
  for (int i = 0; i < op_.parameterCount; ++i) read(i);
  const Variant& variant = choose();
  prepare(variant);
  use(variant);
  Slot slots[12];
  fill(variant, slots);
  VekStatus status = vekStsNoErr;
  {
    const py::gil_scoped_release released;
    status = variant.invoke(slots);
  }
  if (status < 0) refuse(status, argumentOf(status), "is refused: %s", vekStatusString(status));
  warn(op_.name, status);
  if (variant.out != Layout::numbers) return out_.object().release().ptr();
  if (variant.sources[0] == Layout::C1) return PyLong_FromLong(results_[0]);
  return py::make_tuple(results_[0], results_[1], results_[2]).release().ptr();
}

PyObject* call(const Operation& op, PyObject* const* arguments, Py_ssize_t count, PyObject* names) {
  try {
    Call call(op);
    call.bind(arguments, count, names);
    return call.run();
  } catch (const Refusal& refusal) {
    raise(op.name, refusal);
  } catch (py::error_already_set& error) {
    error.restore();
  } catch (const std::bad_alloc&) {
    PyErr_NoMemory();
  }
  return nullptr;
}

/// The function that Python calls for a row of the table. Its `self` is the module, by which it is pickled.
template <std::size_t row>
PyObject* callRow(PyObject* /*self*/, PyObject* const* arguments, Py_ssize_t count,
                  PyObject* names) {
  return call(operations[row], arguments, count, names);
}
using Callable = PyObject* (*)(PyObject*, PyObject* const*, Py_ssize_t, PyObject*);
template <std::size_t... rows>
constexpr std::array<Callable, sizeof...(rows)> callables(std::index_sequence<rows...> /*rows*/) {
  return {&callRow<rows>...};
}

}  // namespace

void defineOperations(const py::module_& module) {
  constexpr std::size_t count = std::size(operations);
  constexpr auto functions = callables(std::make_index_sequence<count>());
  static std::array<PyMethodDef, count> methods;
  const py::object moduleName = module.attr("__name__");
  for (std::size_t i = 0; i < count; ++i) {
    const Operation& op = operations[i];
    // The type that a function has with these flags.
    const auto function = reinterpret_cast<PyCFunction>(reinterpret_cast<void (*)()>(functions[i]));
    methods[i] = {op.name, function, METH_FASTCALL | METH_KEYWORDS, op.text};
    PyObject* const made = PyCFunction_NewEx(&methods[i], module.ptr(), moduleName.ptr());
    if (made == nullptr) throw py::error_already_set();
    module.attr(op.name) = py::reinterpret_steal<py::object>(made);
  }
  py::dict texts, variants;
  py::list names;
  for (const auto& entry : documentation) texts[entry.name] = entry.text;
  for (const Operation& op : operations) {
    names.append(op.name);
    for (int v = 0; v < op.variantCount; ++v) variants[op.variants[v].function] = op.name;
  }
  module.attr("__all__") = names;
  module.attr("documentation") = texts;
  module.attr("functions") = variants;
}

}  // namespace vekpy
