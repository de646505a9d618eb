#include "chain/chain.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <new>

#include "chain/call.h"

namespace chain {
namespace {

bool isSpace(char c) {
  return c == ' ' || c == '\t' || c == '\n' || c == '\r';
}

std::vector<std::string_view> split(std::string_view text, char separator) {
  std::vector<std::string_view> parts;
  for (size_t from = 0;;) {
    const size_t to = text.find(separator, from);
    parts.push_back(text.substr(from, to - from));
    if (to == std::string_view::npos) return parts;
    from = to + 1;
  }
}

/// What is to be written for a parameter of this kind.
std::string expected(const Parameter& parameter) {
  switch (parameter.kind) {
    case Kind::integer:
      return "a whole number";
    case Kind::number:
      return "a number";
    case Kind::size:
    case Kind::mask:
      return "WIDTHxHEIGHT";
    case Kind::point:
      return "COLUMN,ROW";
    case Kind::color:
      return "a number or RED,GREEN,BLUE";
    case Kind::operand:
      return "a number, RED,GREEN,BLUE or @PICTURE";
    case Kind::picture:
      return "@PICTURE";
    case Kind::list:
      return "whole numbers separated by commas";
    case Kind::word:
      break;
  }
  std::string words;
  const std::vector<std::string_view> all = split(parameter.words, '|');
  for (size_t i = 0; i < all.size(); ++i) {
    if (i > 0) words += i + 1 < all.size() ? ", " : " or ";
    words += all[i];
  }
  return words;
}

bool parseNumber(std::string_view text, bool isWhole, double& number) {
  const char* const end = text.data() + text.size();
  if (isWhole) {
    int whole = 0;
    const auto [rest, error] = std::from_chars(text.data(), end, whole);
    number = whole;
    return error == std::errc() && rest == end;
  }
  // In the "C" locale, which programs start with; from_chars() does not read fractions everywhere.
  const std::string copy(text);
  if (copy.find_first_not_of("-.0123456789") != std::string::npos) return false;
  char* rest = nullptr;
  number = std::strtod(copy.c_str(), &rest);
  return rest != copy.c_str() && *rest == '\0' && std::isfinite(number);
}

/// What is wrong with a value; empty if nothing is.
std::string parseValue(const Parameter& parameter, std::string_view text, Argument& argument) {
  const Kind kind = parameter.kind;
  const auto unexpected = [&] { return "expected " + expected(parameter); };
  argument.text = text;
  if ((kind == Kind::operand || kind == Kind::picture) && text.starts_with('@')) {
    argument.text = text.substr(1);
    argument.isPicture = true;
    return argument.text.empty() ? unexpected() : "";
  }
  if (kind == Kind::picture) return unexpected();
  if (kind == Kind::word) {
    const std::vector<std::string_view> words = split(parameter.words, '|');
    const auto at = std::find(words.begin(), words.end(), text);
    if (at == words.end()) return unexpected();
    argument.numbers = {static_cast<double>(at - words.begin())};
    return "";
  }
  // An empty list, which only a fallback may be, stands for none.
  if (kind == Kind::list && text.empty() && parameter.fallback != nullptr &&
      *parameter.fallback == '\0') {
    return "";
  }
  const bool isWhole = kind != Kind::number;
  size_t columns = 0;
  for (const std::string_view row : split(text, kind == Kind::list ? '/' : '\0')) {
    const std::vector<std::string_view> parts =
        split(row, kind == Kind::size || kind == Kind::mask ? 'x' : ',');
    if (argument.rows++ == 0) columns = parts.size();
    if (parts.size() != columns) return "expected rows of equal lengths";
    for (const std::string_view part : parts) {
      double number = 0;
      if (!parseNumber(part, isWhole, number)) return unexpected();
      if (number < parameter.low || number > parameter.high) {
        return std::string(part) + " is outside " + numberText(parameter.low) + ".." +
               numberText(parameter.high);
      }
      argument.numbers.push_back(number);
    }
  }
  if (kind == Kind::mask && argument.numbers.size() == 1) {
    argument.numbers.push_back(argument.numbers[0]);
  }
  const size_t count = argument.numbers.size();
  const bool fits = kind == Kind::list ? count <= 4096
                    : kind == Kind::size || kind == Kind::mask || kind == Kind::point ? count == 2
                    : kind == Kind::color || kind == Kind::operand ? count == 1 || count == 3
                                                                   : count == 1;
  return fits ? "" : unexpected();
}

struct Token {
  std::string text;
  size_t position, length;  ///< in the chain's text, with quotes
};

/// The words of a step. Quotes keep spaces and bars together.
std::vector<Token> tokens(std::string_view text, size_t offset) {
  std::vector<Token> list;
  bool inToken = false, isQuoted = false;
  for (size_t i = 0; i < text.size(); ++i) {
    if (!isQuoted && isSpace(text[i])) {
      inToken = false;
      continue;
    }
    if (!inToken) list.push_back({"", offset + i, 0});
    inToken = true;
    if (text[i] == '"')
      isQuoted = !isQuoted;
    else
      list.back().text += text[i];
    list.back().length = offset + i + 1 - list.back().position;
  }
  return list;
}

/// The chain's text cut at bars that are not quoted: positions and lengths.
std::vector<std::pair<size_t, size_t>> cut(std::string_view text) {
  std::vector<std::pair<size_t, size_t>> steps;
  bool isQuoted = false;
  size_t from = 0;
  for (size_t i = 0; i <= text.size(); ++i) {
    if (i < text.size() && text[i] == '"') isQuoted = !isQuoted;
    if (i < text.size() && (isQuoted || text[i] != '|')) continue;
    size_t begin = from, end = i;
    while (begin < end && isSpace(text[begin])) ++begin;
    while (end > begin && isSpace(text[end - 1])) --end;
    steps.emplace_back(begin, end - begin);
    from = i + 1;
  }
  return steps;
}

/// Letters to change, insert or remove.
size_t editDistance(std::string_view a, std::string_view b) {
  std::vector<size_t> row(b.size() + 1);
  for (size_t j = 0; j <= b.size(); ++j) row[j] = j;
  for (size_t i = 1; i <= a.size(); ++i) {
    size_t diagonal = std::exchange(row[0], i);
    for (size_t j = 1; j <= b.size(); ++j) {
      const size_t replaced = diagonal + (a[i - 1] != b[j - 1] ? 1 : 0);
      diagonal = row[j];
      row[j] = std::min({replaced, row[j] + 1, row[j - 1] + 1});
    }
  }
  return row[b.size()];
}

std::string unknownOperation(const std::string& name) {
  const Operation* nearest = nullptr;
  size_t least = 3;
  for (const Operation& operation : operations()) {
    const size_t distance = name.size() > 40 ? least : editDistance(name, operation.name);
    if (distance < least) nearest = &operation, least = distance;
  }
  return "there is no operation '" + name + "'" +
         (nearest == nullptr ? "" : std::string("; is '") + nearest->name + "' meant?");
}

std::string place(size_t index, const std::string& text) {
  return "step " + std::to_string(index + 1) + ", '" + text + "': ";
}

Step parseStep(std::string_view text, size_t index, size_t position) {
  Step step = {nullptr, {}, std::string(text), position};
  const auto fail = [&](const std::string& what, size_t at, size_t length) {
    throw Error(place(index, step.text) + what, at, length);
  };
  if (std::count(text.begin(), text.end(), '"') % 2 != 0)
    fail("a quote is not closed", position, text.size());
  const std::vector<Token> words = tokens(text, position);
  const auto named = [&](const Operation& operation) { return words[0].text == operation.name; };
  const std::span<const Operation> all = operations();
  const auto found = std::find_if(all.begin(), all.end(), named);
  if (found == all.end()) fail(unknownOperation(words[0].text), words[0].position, words[0].length);
  step.operation = &*found;

  const std::span<const Parameter> parameters = found->all();
  step.arguments.resize(parameters.size());
  std::vector<bool> isGiven(parameters.size());
  size_t next = 0;
  for (size_t i = 1; i < words.size(); ++i) {
    const Token& word = words[i];
    std::string_view value = word.text;
    size_t to = parameters.size();
    if (const size_t equals = value.find('='); equals != std::string_view::npos) {
      const auto isName = [&](const Parameter& p) { return value.substr(0, equals) == p.name; };
      to = static_cast<size_t>(std::find_if(parameters.begin(), parameters.end(), isName) -
                               parameters.begin());
      if (to < parameters.size()) value.remove_prefix(equals + 1);
    }
    if (to == parameters.size()) {
      while (next < parameters.size() && isGiven[next]) ++next;
      to = next;
    }
    if (to == parameters.size()) {
      fail("there is no place for '" + word.text + "' in '" + usage(*found) + "'", word.position,
           word.length);
    }
    if (isGiven[to]) {
      fail(std::string(parameters[to].name) + " is given twice", word.position, word.length);
    }
    isGiven[to] = true;
    const std::string wrong = parseValue(parameters[to], value, step.arguments[to]);
    if (!wrong.empty()) {
      fail(std::string(parameters[to].name) + ": " + wrong, word.position, word.length);
    }
  }
  for (size_t i = 0; i < parameters.size(); ++i) {
    if (isGiven[i]) continue;
    if (parameters[i].fallback == nullptr) {
      fail(std::string(parameters[i].name) + " is missing: expected " + expected(parameters[i]),
           position, text.size());
    }
    parseValue(parameters[i], parameters[i].fallback, step.arguments[i]);
  }
  return step;
}

}  // namespace

std::string numberText(double number) {
  char text[32];
  if (number == std::trunc(number) && std::abs(number) < 1e15) {
    std::snprintf(text, sizeof text, "%.0f", number);
    return text;
  }
  for (int digits = 1; digits <= 17; ++digits) {
    std::snprintf(text, sizeof text, "%.*g", digits, number);
    if (std::strtod(text, nullptr) == number) break;
  }
  return text;
}

std::span<const Parameter> Operation::all() const {
  const auto end = std::find_if(parameters.begin(), parameters.end(),
                                [](const Parameter& p) { return p.name == nullptr; });
  return {parameters.begin(), end};
}

std::string usage(const Operation& operation) {
  std::string text = operation.name;
  for (const Parameter& parameter : operation.all()) {
    std::string name = parameter.name;
    if (parameter.fallback == nullptr) {
      std::transform(name.begin(), name.end(), name.begin(), [](char c) {
        return c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c;
      });
      text.append(" ").append(parameter.kind == Kind::word ? parameter.words : name);
    } else {
      const char* const value = parameter.kind == Kind::word ? parameter.words : parameter.fallback;
      text.append(" [").append(name).append("=").append(value).append("]");
    }
  }
  return text;
}

Chain parse(std::string_view text) {
  Chain chain;
  for (const auto& [position, length] : cut(text)) {
    if (length == 0) {
      const std::string number = std::to_string(chain.size() + 1);
      throw Error("step " + number + " is empty", position, length);
    }
    chain.push_back(parseStep(text.substr(position, length), chain.size(), position));
  }
  return chain;
}

Picture run(const Chain& steps, Picture picture, const Lookup& lookup,
            std::vector<Figures>& figures) {
  bool needsInput = false;
  for (const Step& step : steps) {
    for (const Argument& argument : step.arguments) {
      needsInput = needsInput || (argument.isPicture && argument.text == "in");
    }
  }
  const Picture input =
      needsInput
          ? toNew(picture, [](auto src, auto dst) { vek::copy<viewChannels(src)>(src, dst); })
          : Picture();
  for (size_t i = 0; i < steps.size(); ++i) {
    const Step& step = steps[i];
    const auto fail = [&](const char* what) {
      throw Error(place(i, step.text) + what, step.position, step.text.size());
    };
    try {
      Call call(step, i, picture, input, lookup, figures);
      picture = step.operation->run(call);
    } catch (const Refusal& refusal) {
      fail(refusal.what());
    } catch (const vek::Error& error) {
      if (error.status() == vekStsMemAllocErr) throw std::bad_alloc();
      fail(error.what());
    }
  }
  return picture;
}

uint64_t digest(const Picture& picture) {
  uint64_t value = 0xCBF29CE484222325;
  const auto take = [&](uint32_t byte) { value = (value ^ byte) * 0x100000001B3; };
  std::visit(
      [&](const auto& image) {
        const auto view = bytes(image);
        constexpr int channels = channelsOf<decltype(image)>;
        for (const int number : {view.width(), view.height(), channels}) {
          for (int i = 0; i < 4; ++i) take(static_cast<uint32_t>(number) >> 8 * i & 255);
        }
        for (int y = 0; y < view.height(); ++y) {
          const Vek8u* const row = view.row(y);
          for (ptrdiff_t x = 0; x < ptrdiff_t{view.width()} * channels; ++x) take(row[x]);
        }
      },
      picture);
  return value;
}

}  // namespace chain
