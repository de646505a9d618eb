// Chains of operations on pictures, written as text: "gray | box 5x5 | threshold 100".
//
// A chain is parsed against the table of operations, and then run on any number of pictures. There are
// no files here and no command line: a program hands a picture in and takes one out.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <span>
#include <stdexcept>
#include <string>
#include <string_view>
#include <variant>
#include <vector>
#include <vek/view.hpp>

namespace chain {

using Gray = vek::Image<Vek8u>;
/// Three channels: red, green and blue, unless an operation has made something else of them.
using Color = vek::Image<vek::Rgb24>;
using Picture = std::variant<Gray, Color>;

/// Sides and pixels of a picture that an operation may make.
constexpr int largestSide = 32767;
constexpr int64_t largestArea = int64_t{1} << 27;

enum class Kind {
  integer,  ///< 5
  number,   ///< 0.5
  size,     ///< 5x3: width and height
  mask,     ///< the same, or 5 for 5x5
  point,    ///< 10,20: a column and a row
  color,    ///< 100, or 255,128,0 for color pictures
  operand,  ///< a color, or @NAME, another picture
  picture,  ///< @NAME alone
  list,     ///< 1,4,6,4,1; rows of a matrix are separated by /
  word      ///< one of some words
};

/// A parameter of an operation. In a chain its value stands in its place or, anywhere, behind its name:
/// "box 5x5 mirror", "box 5x5 border=mirror".
struct Parameter {
  const char* name = nullptr;  ///< null: there are no more
  Kind kind = Kind::integer;
  const char* fallback = nullptr;  ///< its value when it is left out; null: it must be given
  double low = 0, high = 0;        ///< limits of every number
  const char* words = nullptr;     ///< Kind::word: what it may be, separated by |
};

/// The value of a parameter.
struct Argument {
  std::string text;             ///< as written; of a picture without the @
  std::vector<double> numbers;  ///< of a word: its index
  int rows = 0;                 ///< Kind::list
  bool isPicture = false;
};

/// What an operation measures.
struct Figures {
  size_t step;            ///< of the chain, from 0
  std::string operation;  ///< with its arguments
  std::vector<std::string> labels;
  std::vector<std::vector<double>> channels;  ///< for each channel a value for each label
};

class Call;

struct Operation {
  const char* group;
  const char* name;
  const char* help;  ///< one line
  std::array<Parameter, 6> parameters;
  Picture (*run)(Call& call);

  std::span<const Parameter> all() const;  ///< the parameters that there are
};

/// All operations, those of a group together.
std::span<const Operation> operations();

/// The shortest text that is read as this number: 5, 0.5.
std::string numberText(double number);

/// "box WxH [border=replicate|mirror|constant|none]"
std::string usage(const Operation& operation);

/// What is wrong with a chain, or with what it was run on: one line that names the step.
class Error : public std::runtime_error {
 public:
  Error(const std::string& message, size_t position, size_t length)
      : std::runtime_error(message), position_(position), length_(length) {}
  size_t position() const { return position_; }  ///< where in the text the fault is
  size_t length() const { return length_; }      ///< and how many characters it has

 private:
  size_t position_, length_;
};

struct Step {
  const Operation* operation;
  std::vector<Argument> arguments;  ///< one for each parameter
  std::string text;
  size_t position;  ///< in the chain's text
};

using Chain = std::vector<Step>;

/// Throws an Error.
Chain parse(std::string_view text);

/// Gives the picture that a chain calls @NAME. What it throws is let through.
using Lookup = std::function<const Picture&(const std::string& name)>;

/// Runs a chain. @in is the picture that it began with; other names are looked up. What is measured is
/// appended to `figures`. Throws an Error.
Picture run(const Chain& steps, Picture picture, const Lookup& lookup,
            std::vector<Figures>& figures);

/// FNV-1a, 64 bits, over width, height and channels, each as four bytes with the low one first, and the
/// samples row after row. It is the same on every machine.
uint64_t digest(const Picture& picture);

}  // namespace chain
