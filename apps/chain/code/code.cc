#include "chain/code/code.h"

#include <algorithm>
#include <cctype>
#include <numeric>
#include <set>

#include "chain/chain.h"
#include "chain/code/dialect.h"
#include "chain/larger.h"

namespace chain {
namespace {

const Dialect& dialectOf(Language language) {
  switch (language) {
    case Language::c:
      return cDialect;
    case Language::cpp:
      return cppDialect;
    case Language::python:
      break;
  }
  return pythonDialect;
}

const char* find(std::span<const Text> texts, const std::string& name) {
  for (const Text& text : texts) {
    if (text.name == name) return text.text;
  }
  return nullptr;
}

std::string joined(const std::vector<double>& numbers, size_t from, size_t count) {
  std::string text;
  for (size_t i = from; i < from + count; ++i) {
    text += (i == from ? "" : ", ") + numberText(numbers[i]);
  }
  return text;
}

/// The sides of a neighbourhood; 0 if the operation has none.
std::array<int, 2> neighbourhoodOf(const Step& step) {
  const std::string name = step.operation->name;
  const std::vector<double>* const first =
      step.arguments.empty() ? nullptr : &step.arguments[0].numbers;
  if (name == "box" || name == "median") {
    return {static_cast<int>((*first)[0]), static_cast<int>((*first)[1])};
  }
  if (name == "median-color") return (*first)[0] == 0 ? std::array{3, 3} : std::array{5, 5};
  if (name == "erode" || name == "dilate") return {3, 3};
  if (name == "filter" || name == "row" || name == "column") {
    const int count = static_cast<int>(first->size()), rows = step.arguments[0].rows;
    if (name == "row") return {count, 1};
    if (name == "column") return {1, count};
    return {count / rows, rows};
  }
  return {0, 0};
}

bool isConvolution(const Step& step) {
  return std::string(step.operation->parameters[0].name == nullptr
                         ? ""
                         : step.operation->parameters[0].name) == "kernel";
}

/// Fills the holes of one step's text.
class Renderer {
 public:
  Renderer(const Step& step, size_t index, Language language, int channels, std::string source,
           std::string destination, int resultChannels)
      : step_(step),
        index_(index),
        language_(language),
        channels_(channels),
        source_(std::move(source)),
        destination_(std::move(destination)),
        resultChannels_(resultChannels) {}

  std::string fill(std::string_view text) const {
    std::string result;
    for (size_t i = 0; i < text.size(); ++i) {
      if (text[i] != '$') {
        result += text[i];
        continue;
      }
      const char key = text[++i];
      if (key == 'p') {  // of what is in the parentheses
        const size_t end = text.find(')', i);
        const std::string_view of = text.substr(i + 2, end - i - 2);
        result += padded(of == "$s" ? source_ : of == "$d" ? destination_ : std::string(of));
        i = end;
      } else if (key == 'm' && std::isdigit(static_cast<unsigned char>(text[i + 1])) != 0) {
        result += value(number(text[++i]) - 1);
      } else if (std::string_view("mbavfkzwcq").find(key) != std::string_view::npos) {
        result += two(key, text[++i]);
      } else {
        result += one(key);
      }
    }
    return result;
  }

  /// What has to be there before: other pictures.
  std::string before() const {
    if (language_ == Language::python || !hasOther()) return "";
    const std::string name = std::string("other") + std::to_string(index_) + " = readPicture";
    return language_ == Language::c ? "const Picture " + name + "(\"" + other() + "\");\n"
                                    : "const auto " + name + "<" + std::to_string(channels_) +
                                          ">(\"" + other() + "\");\n";
  }

 private:
  bool isC() const { return language_ == Language::c; }
  double number(char digit) const { return argument(digit).numbers[0]; }
  const Argument& argument(char digit) const {
    return step_.arguments[static_cast<size_t>(digit - '0')];
  }
  /// The other picture's name, as it stands in quotes.
  std::string other() const {
    std::string name;
    for (const char c : step_.arguments[0].text) {
      if (c == '\\' || c == '\n') name += '\\';
      name += c == '\n' ? 'n' : c;
    }
    return name;
  }
  bool hasOther() const {
    return !step_.arguments.empty() && step_.arguments[0].isPicture && other() != "in";
  }

  std::string one(char key) const {
    switch (key) {
      case 's':
        return source_;
      case 'd':
        return destination_;
      case 'n':
        return std::to_string(channels_);
      case 'r':
        return std::to_string(resultChannels_);
      case 'i':
        return std::to_string(index_);
      case 'S':
        return source_ + ".data, " + source_ + ".step";
      case 'D':
        return destination_ + ".data, " + destination_ + ".step";
      case 'Z':
        return "sizeOf(" + destination_ + ")";
      case 'W':
        return source_ + ".data, " + source_ + ".step, sizeOf(" + source_ + "), " + destination_ +
               ".data, " + destination_ + ".step, (VekiRect){0, 0, " + destination_ + ".width, " +
               destination_ + ".height}";
      case 'C':
        return step_.arguments[0].isPicture ? "" : "C";
      default:
        return literal(static_cast<size_t>(key - '0'));
    }
  }

  std::string two(char key, char of) const {
    const auto [width, height] = neighbourhoodOf(step_);
    const int side = of == 'x' || of == 'w' ? width : height;
    switch (key) {
      case 'm':
        return std::to_string(side);
      case 'b':
        return std::to_string(isConvolution(step_) ? side - 1 - side / 2 : side / 2);
      case 'v':
        return value(number(of));
      case 'z':
        return value(0);
      case 'w':
        return value(255);
      case 'c':
        return "(const Vek8u[]){" + bare(value(argument(of).numbers)) + "}";
      case 'q': {
        const std::vector<double>& sides = argument(of).numbers;
        return joined(sides.size() == 4 ? sides : std::vector<double>(4, sides[0]), 0, 4);
      }
      case 'f':
        return joined(argument(of).numbers, 0, argument(of).numbers.size());
      case 'k': {
        const int channel = static_cast<int>(number(of));
        return channel == 0 ? "16384, 0, 0" : channel == 1 ? "0, 16384, 0" : "0, 0, 16384";
      }
      default:
        return of == 'x' || of == 'y' ? std::to_string(side / 2)
                                      : numberText(map()[static_cast<size_t>(of - '0')]);
    }
  }

  std::vector<double> map() const {
    if (std::string(step_.operation->name) == "affine") {
      const AffineParts parts = affineParts(number('0'), number('1'), number('2'));
      return {parts.begin(), parts.end()};
    }
    std::array<double, 4> x, y;
    for (size_t i = 0; i < 4; ++i) {
      x[i] = step_.arguments[i].numbers[0], y[i] = step_.arguments[i].numbers[1];
    }
    const PerspectiveParts parts = perspectiveParts(x, y);
    return {parts.begin(), parts.end()};
  }

  /// One number for each channel.
  std::string value(double number) const { return value(std::vector<double>{number}); }
  std::string value(const std::vector<double>& numbers) const {
    if (channels_ == 1) return numberText(numbers[0]);
    const std::vector<double> all =
        numbers.size() == 3 ? numbers : std::vector<double>(3, numbers[0]);
    const std::string text = joined(all, 0, 3);
    const std::string type =
        std::string(step_.operation->name).starts_with("shift") ? "Vek32u" : "Vek8u";
    return isC()                        ? "(const " + type + "[]){" + text + "}"
           : language_ == Language::cpp ? "std::array<" + type + ", 3>{" + text + "}"
                                        : "(" + text + ")";
  }

  /// What is between braces.
  static std::string bare(const std::string& text) {
    const size_t open = text.find('{');
    return open == std::string::npos ? text : text.substr(open + 1, text.size() - open - 2);
  }

  std::string literal(size_t i) const {
    const Argument& argument = step_.arguments[i];
    const Parameter& parameter = step_.operation->parameters[i];
    const std::vector<double>& numbers = argument.numbers;
    if (argument.isPicture) {
      if (language_ == Language::python)
        return other() == "in" ? "p0" : "read(\"" + other() + "\")";
      const std::string name =
          other() == "in" ? "p0" : std::string("other") + std::to_string(index_);
      return isC() ? name + ".data, " + name + ".step" : name;
    }
    switch (parameter.kind) {
      case Kind::color:
      case Kind::operand:
        return value(numbers);
      case Kind::word: {
        const char* const words = find(dialectOf(language_).words, parameter.name);
        return words == nullptr ? argument.text : nth(words, static_cast<size_t>(numbers[0]));
      }
      case Kind::list:
        if (argument.rows > 1) return rows(argument);
        [[fallthrough]];
      default:
        return i == 1 && isConvolution(step_) && numbers[0] == 0
                   ? numberText(sumOf(step_.arguments[0].numbers))
                   : joined(numbers, 0, numbers.size());
    }
  }

  /// What a kernel is divided by unless its divisor is given.
  static double sumOf(const std::vector<double>& kernel) {
    return std::max(1., std::accumulate(kernel.begin(), kernel.end(), 0.));
  }

  static std::string nth(std::string_view words, size_t n) {
    for (; n > 0; --n) words.remove_prefix(words.find('|') + 1);
    return std::string(words.substr(0, words.find('|')));
  }

  /// A matrix, one row after the other.
  std::string rows(const Argument& argument) const {
    const char open = language_ == Language::python ? '(' : '{';
    const char close = language_ == Language::python ? ')' : '}';
    const size_t columns = argument.numbers.size() / static_cast<size_t>(argument.rows);
    std::string text;
    for (size_t at = 0; at < argument.numbers.size(); at += columns) {
      text += (at == 0 ? "" : ", ") + (open + joined(argument.numbers, at, columns)) + close;
    }
    return text;
  }

  std::string padded(const std::string& picture) const {
    const Argument& border = step_.arguments.back();  // the last parameter of all neighbourhoods
    const bool isNone = border.text == "none";
    if (isNone && !isC()) return picture;
    const auto [width, height] = neighbourhoodOf(step_);
    const auto side = [&](int before) { return std::to_string(isNone ? 0 : before); };
    const auto before = [&](int n) { return isConvolution(step_) ? n - 1 - n / 2 : n / 2; };
    const std::string margins = side(before(width)) + ", " + side(before(height)) + ", " +
                                side(width - 1 - before(width)) + ", " +
                                side(height - 1 - before(height));
    const std::string rule = nth(find(dialectOf(language_).words, "border"),
                                 isNone ? 0 : static_cast<size_t>(border.numbers[0]));
    const std::string black = channels_ == 1 ? "(const Vek8u[]){0}" : "(const Vek8u[]){0, 0, 0}";
    switch (language_) {
      case Language::c:
        return "padded(" + picture + ", " + margins + ", " + rule + ", " + black + ")";
      case Language::cpp:
        return std::string("vek::pad<") + std::to_string(channels_) + ">(" + picture + ", {" +
               margins + "}, " + rule + ")";
      case Language::python:
        break;
    }
    return "vek.pad(" + picture + ", (" + margins + "), " + rule + ")";
  }

  const Step& step_;
  size_t index_;
  Language language_;
  int channels_;
  std::string source_, destination_;
  int resultChannels_;
};

/// The operation's text under these circumstances.
const char* textOf(const Dialect& dialect, const Step& step, int channels) {
  const std::string name = step.operation->name;
  std::vector<std::string> circumstances = {channels == 1 ? " gray" : " color"};
  for (const Argument& argument : step.arguments) {
    if (argument.isPicture) circumstances.emplace_back(" picture");
    circumstances.push_back(std::string(" ") + (argument.text.empty() ? "empty" : argument.text));
  }
  for (const std::string& circumstance : circumstances) {
    if (const char* const text = find(dialect.operations, name + circumstance)) return text;
  }
  return find(dialect.operations, name);
}

std::string indented(const std::string& text, const char* by) {
  std::string result;
  for (size_t from = 0; from < text.size();) {
    const size_t to = std::min(text.find('\n', from), text.size() - 1) + 1;
    if (text[from] != '\n') result += by;
    result.append(text, from, to - from);
    from = to;
  }
  return result;
}

/// Whether a program calls a function or hands it to another one.
bool calls(const std::string& program, const std::string& function) {
  for (size_t at = 0; (at = program.find(function, at)) != std::string::npos; ++at) {
    const char before = at == 0 ? ' ' : program[at - 1];
    const char after = program[at + function.size()];
    const bool isWhole = std::isalnum(static_cast<unsigned char>(before)) == 0 && before != '_' &&
                         before != ':' && before != '.';
    if (isWhole && std::string_view("(<,)").find(after) != std::string_view::npos) return true;
  }
  return false;
}

bool needsColor(const Operation& operation) {
  const std::string_view name = operation.name;
  if (std::string_view(operation.group) == "color") {
    return name != "gray" && name != "color" && name != "gamma" && name != "linear-light";
  }
  return name == "pixels16" || name == "median-color";
}

/// A comment of one line.
void addComment(std::string& program, const Dialect& dialect, std::string text) {
  std::replace(text.begin(), text.end(), '\n', ' ');
  program.append(dialect.comment).append(" ").append(text).append("\n");
}

bool needsInput(const Chain& steps) {
  return std::any_of(steps.begin(), steps.end(), [](const Step& step) {
    return std::any_of(step.arguments.begin(), step.arguments.end(),
                       [](const Argument& a) { return a.isPicture && a.text == "in"; });
  });
}

}  // namespace

std::string code(std::string_view text, Language language, bool isColor) {
  const Chain steps = parse(text);
  const Dialect& dialect = dialectOf(language);
  const bool isInputKept = needsInput(steps);
  int channels = isColor ? 3 : 1, picture = 0;
  const auto nameOf = [](int number) { return std::string("p") + std::to_string(number); };
  std::string body;
  for (size_t i = 0; i < steps.size(); ++i) {
    const Step& step = steps[i];
    const std::string name = step.operation->name;
    const bool isFigure = std::string(step.operation->group) == "figures";
    const int made = name == "gray" || name == "channel" ? 1 : name == "color" ? 3 : channels;
    const int next = isFigure ? picture : picture + 1;
    const Renderer renderer(step, i + 1, language, channels, nameOf(picture), nameOf(next), made);
    if (channels == 1 && needsColor(*step.operation)) {
      throw Error(std::string("step ") + std::to_string(i + 1) + ", '" + step.text +
                      "': the picture is grey, and this needs color: put 'color' in front",
                  step.position, step.text.size());
    }
    if (i > 0) body += "\n";
    addComment(body, dialect, step.text);
    body += renderer.before();
    const char* const found = textOf(dialect, step, channels);
    if (found == nullptr) throw std::logic_error(name + " has no text in this language");
    if (*found == '=') {
      body += renderer.fill(dialect.callBegin);
      body += renderer.fill(found + 1);
      body += dialect.callEnd;
    } else {
      body += renderer.fill(found);
    }
    body += "\n";
    if (!isFigure && !(picture == 0 && isInputKept)) body += renderer.fill(dialect.release);
    picture = next;
    channels = made;
  }

  const Step none = {};
  const Renderer ends(none, 0, language, isColor ? 3 : 1, nameOf(0), nameOf(picture), channels);
  std::string rest = ends.fill(dialect.tail);
  rest.replace(rest.find("@body"), 5, indented(body, language == Language::python ? "" : "  "));
  for (size_t i = dialect.helpers.size(); i-- > 0;) {
    const Text& helper = dialect.helpers[i];
    if (calls(rest, helper.name)) rest = std::string(helper.text).append("\n").append(rest);
  }
  std::string program;
  addComment(program, dialect, std::string(text));
  return program.append(dialect.head).append(rest);
}

}  // namespace chain
