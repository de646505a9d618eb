#include "vekcam/commands/options.h"

#include <charconv>
#include <climits>
#include <fmt/format.h>
#include <vek/vek.h>

#include "vekcam/files.h"

namespace vekcam {
namespace {

int levelLimit = INT_MAX;

vek::Size parseSize(const std::string& text, SizeLimits limits) {
  const auto fail = [&] {
    return CLI::ValidationError("expected WIDTHxHEIGHT, such as 1920x1080, not " + text);
  };
  vek::Size size = {0, 0};
  const char* const end = text.data() + text.size();
  const auto [x, widthError] = std::from_chars(text.data(), end, size.width);
  if (widthError != std::errc() || x == end || (*x != 'x' && *x != 'X')) throw fail();
  const auto [rest, heightError] = std::from_chars(x + 1, end, size.height);
  if (heightError != std::errc() || rest != end) throw fail();
  for (const auto& [side, n] : {std::pair{"width", size.width}, {"height", size.height}}) {
    if (n < limits.least || n > limits.most) {
      throw CLI::ValidationError(
          fmt::format("{} {} is outside {}..{}", side, n, limits.least, limits.most));
    }
    if (n % 2 != 0) throw CLI::ValidationError(fmt::format("{} {} is odd", side, n));
  }
  return size;
}

/// Numbers between commas.
template <size_t count, class Number>
std::array<Number, count> parseNumbers(const std::string& text, Number least, Number most) {
  std::array<Number, count> numbers = {};
  const char* at = text.data();
  const char* const end = at + text.size();
  for (size_t i = 0; i < count; ++i) {
    const auto [rest, error] = std::from_chars(at, end, numbers[i]);
    const bool isEnd = i + 1 == count ? rest == end : rest != end && *rest == ',';
    if (error != std::errc() || !isEnd)
      throw CLI::ValidationError(
          fmt::format("expected {} numbers with commas, not {}", count, text));
    if (!(numbers[i] >= least && numbers[i] <= most)) {
      throw CLI::ValidationError(fmt::format("{} is outside {}..{}", numbers[i], least, most));
    }
    at = rest + 1;
  }
  return numbers;
}

/// An option of one text. What `parse` throws is said of the option.
template <class Parse>
CLI::Option* addParsed(CLI::App& command, const std::string& name, const std::string& type,
                       const std::string& help, const Parse& parse) {
  const auto checked = [name, parse](const std::string& text) {
    try {
      parse(text);
    } catch (const CLI::ValidationError& error) {
      throw CLI::ValidationError(name, error.what());
    }
  };
  return command.add_option_function<std::string>(name, checked, help)->type_name(type);
}

}  // namespace

CLI::Option* addSize(CLI::App& command, const std::string& name, vek::Size& size, SizeLimits limits,
                     const std::string& help) {
  return addParsed(command, name, "WxH", help,
                   [&size, limits](const std::string& text) { size = parseSize(text, limits); });
}

void addRotation(CLI::App& command, const std::function<void(vek::Rotation)>& set) {
  addParsed(command, "--rotate", "DEGREES",
            "Rotate the picture clockwise by 0, 90, 180 or 270 degrees",
            [set](const std::string& text) {
              set(text == "90"    ? vek::Rotation::cw90
                  : text == "180" ? vek::Rotation::half
                  : text == "270" ? vek::Rotation::ccw90
                                  : vek::Rotation::none);
            })
      ->check(CLI::IsMember({"0", "90", "180", "270"}));
}

void addCurve(CLI::App& command, vek::ToneCurve& curve) {
  addParsed(command, "--curve", "CURVE", "Tone curve: srgb (the default), bt709 or linear",
            [&curve](const std::string& text) {
              curve = text == "linear"  ? vek::ToneCurve::linear
                      : text == "bt709" ? vek::ToneCurve::bt709
                                        : vek::ToneCurve::srgb;
            })
      ->check(CLI::IsMember({"srgb", "bt709", "linear"}));
}

void addBlack(CLI::App& command, std::optional<std::array<int, 4>>& black) {
  addParsed(command, "--black", "N|R,GR,GB,B", "Black level, in the units of the samples",
            [&black](const std::string& text) {
              if (text.find(',') != std::string::npos) {
                black = parseNumbers<4, int>(text, 0, 65534);
              } else {
                const int all = parseNumbers<1, int>(text, 0, 65534)[0];
                black = {all, all, all, all};
              }
            });
}

void addLevel(CLI::App& command) {
  addParsed(command, "--level", "LEVEL",
            "Highest CPU level to use, such as portable; pictures do not change",
            [](const std::string& text) {
              levelLimit = INT_MAX;
              const int highest = vekLevel();
              for (int level = 0; level <= highest; ++level) {
                if (text == vekLevelName(level)) levelLimit = level;
              }
              if (levelLimit == INT_MAX) {
                throw CLI::ValidationError(fmt::format(
                    "there is no level {} here; the highest is {}", text, vekLevelName(highest)));
              }
            });
}

void addFrame(CLI::App& command, FrameInfo& frame, bool& isFormatGiven) {
  addSize(command, "--size", frame.size, {smallestFrameSide, largestFrameSide},
          "Size of plain raw frames, even");
  addParsed(command, "--format", "FORMAT",
            "Format of plain raw frames: a V4L2 fourCC, or a name such as rggb10 or bggr12p [RG10]",
            [&frame, &isFormatGiven](const std::string& text) {
              const auto format = rawFormatNamed(text);
              if (!format) throw CLI::ValidationError(text + " is no raw format");
              frame.format = *format;
              isFormatGiven = true;
            });
  command.add_option("--step", frame.step, "Bytes from row to row of plain raw frames")
      ->check(CLI::Range(1, 1 << 20))
      ->type_name("BYTES");
}

void addDevelopment(CLI::App& command, DevelopmentSettings& settings, DevelopmentFiles& files) {
  addParsed(command, "--gains", "R,B|auto",
            "Gains of red and blue over green, or auto, which is the default but for raw files\n"
            "that tell the camera's",
            [&settings](const std::string& text) {
              settings.balancesAnew = text == "auto";
              if (settings.balancesAnew) {
                settings.gains.reset();
                return;
              }
              const auto gains = parseNumbers<2, double>(text, .125, 8);
              settings.gains = vek::ColorGains{gains[0], 1, gains[1]};
            });
  addBlack(command, settings.black);
  command.add_option("--white", settings.white, "Where samples saturate, in their units")
      ->check(CLI::Range(1, 65535))
      ->type_name("N");
  addParsed(command, "--matrix", "9 NUMBERS",
            "Rows of the matrix from the camera's balanced colors to linear sRGB, with commas",
            [&settings](const std::string& text) {
              const auto numbers = parseNumbers<9, double>(text, -100, 100);
              settings.matrix.emplace();
              for (size_t i = 0; i < 9; ++i) (*settings.matrix)[i / 3][i % 3] = numbers[i];
              for (const auto& row : *settings.matrix) {
                if (!(row[0] + row[1] + row[2] > .01))
                  throw CLI::ValidationError("a row does not sum to more than 0");
              }
            });
  command.add_option("--camera", files.camera, "What vekcam calibrate found about the camera")
      ->type_name("FILE.json");
  command.add_option("--dead", files.dead, "Dead pixels to replace: a file of row,column lines")
      ->type_name("LIST.csv");
  addCurve(command, settings.curve);
  command.add_option("--scale", settings.scale, "Make the picture 1, 2 or 4 times smaller")
      ->check(CLI::IsMember({1, 2, 4}))
      ->type_name("N");
  addSize(command, "--resize", settings.resized, {2, largestFrameSide},
          "Size of the picture before it is rotated, even");
  addRotation(command, [&settings](vek::Rotation rotation) { settings.rotation = rotation; });
}

void readFiles(const DevelopmentFiles& files, DevelopmentSettings& settings, FrameInfo& frame,
               bool isFormatGiven) {
  if (!files.camera.empty()) {
    settings.camera = parseCamera(readFile(files.camera, mostTextBytes), files.camera);
    if (!isFormatGiven && settings.camera.format) frame.format = *settings.camera.format;
    if (frame.size.width == 0 && settings.camera.size) frame.size = *settings.camera.size;
  }
  if (!files.dead.empty())
    settings.dead = parseDeadPixels(readFile(files.dead, mostTextBytes), files.dead);
  const int64_t row = rowBytes(frame.format, frame.size.width);
  if (frame.step != 0 && frame.step < row) {
    throw UsageError(
        fmt::format("a step of {} bytes is shorter than a row of {}", frame.step, row));
  }
}

}  // namespace vekcam

/// The library's functions ask for it.
extern "C" VEK_API int vekLevelLimit(void) {
  return vekcam::levelLimit;
}
