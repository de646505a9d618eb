#include "vekcam/camera_file.h"

#include <cmath>
#include <fmt/format.h>
#include <nlohmann/json.hpp>

#include "vekcam/failure.h"

namespace vekcam {
namespace {

using Json = nlohmann::json;

constexpr int largestSide = 65536;
constexpr double largestNumber = 1e6;

/// One member of the file; what is wrong with it is said by its name.
class Member {
 public:
  Member(const Json& json, std::string where) : json_(json), where_(std::move(where)) {}

  [[noreturn]] void fail(const char* wanted) const {
    throw Failure(fmt::format("{} is not {}", where_, wanted));
  }

  double number() const {
    if (!json_.is_number()) fail("a number");
    const double value = json_.get<double>();
    if (!(std::abs(value) <= largestNumber)) fail("a number of reasonable size");
    return value;
  }

  int integer(int least, int most) const {
    if (!json_.is_number_integer()) fail("an integer");
    const double value = json_.get<double>();  // integers of any size are in order here
    if (value < least || value > most)
      fail(fmt::format("an integer in {}..{}", least, most).c_str());
    return static_cast<int>(value);
  }

  Member at(size_t i) const { return {json_[i], fmt::format("{}[{}]", where_, i)}; }

  void checkArray(size_t length) const {
    if (!json_.is_array() || json_.size() != length)
      fail(fmt::format("an array of {}", length).c_str());
  }

  const Json& json() const { return json_; }

 private:
  const Json& json_;
  std::string where_;
};

}  // namespace

CameraFile parseCamera(std::string_view text, const std::string& name) {
  const Json json = Json::parse(text, nullptr, false);
  if (json.is_discarded()) throw Failure(name + " is not JSON");
  if (!json.is_object()) throw Failure(name + " is not a camera's file: it is no object");
  const auto member = [&](const char* key) {
    const auto found = json.find(key);
    return found == json.end() ? std::nullopt
                               : std::optional(Member(*found, fmt::format("{}: {}", name, key)));
  };
  for (const auto& [key, value] : json.items()) {
    constexpr std::array known = {"format", "size", "black", "white", "dead", "matrix", "gains"};
    if (std::ranges::find(known, key) == known.end())
      throw Failure(fmt::format("{}: a camera's file has no {}", name, key));
  }
  CameraFile camera;
  if (const auto format = member("format")) {
    if (format->json().is_string())
      camera.format = rawFormatNamed(format->json().get<std::string>());
    if (!camera.format) format->fail("the name of a raw format");
  }
  if (const auto size = member("size")) {
    size->checkArray(2);
    camera.size =
        vek::Size{size->at(0).integer(1, largestSide), size->at(1).integer(1, largestSide)};
  }
  if (const auto black = member("black")) {
    black->checkArray(4);
    camera.black.emplace();
    for (size_t i = 0; i < 4; ++i) (*camera.black)[i] = black->at(i).integer(0, 65534);
  }
  if (const auto white = member("white")) camera.white = white->integer(1, 65535);
  if (const auto dead = member("dead")) {
    if (!dead->json().is_array()) dead->fail("an array");
    const vek::Size size = camera.size.value_or(vek::Size{largestSide, largestSide});
    for (size_t i = 0; i < dead->json().size(); ++i) {
      const Member pixel = dead->at(i);
      pixel.checkArray(2);
      camera.dead.push_back(
          {pixel.at(0).integer(0, size.height - 1), pixel.at(1).integer(0, size.width - 1)});
    }
  }
  if (const auto matrix = member("matrix")) {
    matrix->checkArray(3);
    camera.matrix.emplace();
    for (size_t i = 0; i < 3; ++i) {
      matrix->at(i).checkArray(3);
      double sum = 0;
      for (size_t j = 0; j < 3; ++j) {
        (*camera.matrix)[i][j] = matrix->at(i).at(j).number();
        sum += (*camera.matrix)[i][j];
      }
      if (!(sum > 1e-3)) matrix->at(i).fail("a row that sums to more than 0");
    }
  }
  if (const auto gains = member("gains")) {
    gains->checkArray(3);
    const double g[3] = {gains->at(0).number(), gains->at(1).number(), gains->at(2).number()};
    for (size_t i = 0; i < 3; ++i) {
      const double most = vek::recommended::mostWhiteBalance;
      if (!(g[1] > 0 && g[i] * most >= g[1] && g[i] <= g[1] * most))
        gains->fail("three gains that are within 1/8..8 of green");
    }
    camera.gains = vek::ColorGains{g[0] / g[1], 1, g[2] / g[1]};
  }
  return camera;
}

std::string toJson(const CameraFile& camera) {
  const auto rounded = [](double value) { return std::round(value * 1e4) / 1e4; };
  nlohmann::ordered_json json;
  if (camera.format) json["format"] = nameOf(*camera.format);
  if (camera.size) json["size"] = {camera.size->width, camera.size->height};
  if (camera.black) json["black"] = *camera.black;
  if (camera.white) json["white"] = *camera.white;
  if (camera.gains) json["gains"] = {rounded(camera.gains->red), 1, rounded(camera.gains->blue)};
  if (camera.matrix) {
    for (const auto& row : *camera.matrix)
      json["matrix"].push_back({rounded(row[0]), rounded(row[1]), rounded(row[2])});
  }
  json["dead"] = nlohmann::ordered_json::array();
  for (const VekiDeadPixel& pixel : camera.dead) json["dead"].push_back({pixel.row, pixel.column});
  return json.dump(2) + "\n";
}

}  // namespace vekcam
