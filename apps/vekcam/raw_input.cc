#include "vekcam/raw_input.h"

#include <algorithm>
#include <cctype>
#include <filesystem>
#include <fmt/format.h>

#include "vekcam/files.h"

namespace vekcam {

int FrameInfo::stepBytes() const {
  return step != 0 ? step : static_cast<int>(rowBytes(format, size.width));
}

vek::View<const vek::RawByte> FrameInfo::view(const std::vector<Vek8u>& bytes) const {
  return {bytes.data(),
          {static_cast<int>(rowBytes(format, size.width)), size.height},
          vek::Bytes(stepBytes())};
}

RawImage readPlainFrame(const std::string& path, const FrameInfo& info) {
  const int64_t whole = info.bytes();
  const int64_t samples = whole - info.stepBytes() + rowBytes(info.format, info.size.width);
  RawImage image = {info, readBytes(path, static_cast<size_t>(whole) + 1)};
  const auto got = static_cast<int64_t>(image.bytes.size());
  if (got >= samples && got <= whole) return image;
  const std::string name = inputName(path);
  std::error_code error;
  const auto size = std::filesystem::file_size(path, error);
  const int64_t bytes = error || path == "-" ? got : static_cast<int64_t>(size);
  const std::string guess = guessOf(bytes, info.size, info.format.order);
  const bool isKnown = bytes <= whole || !error;
  const std::string has =
      isKnown ? fmt::format("has {} bytes", withCommas(bytes)) : std::string("has more bytes");
  throw Failure(fmt::format("{} {}; {}x{} of {} takes {}{}{}{}", name, has, info.size.width,
                            info.size.height, nameOf(info.format), withCommas(whole),
                            info.step == 0 ? "" : fmt::format(" with a step of {}", info.step),
                            guess.empty() || !isKnown ? "" : "; ", isKnown ? guess : ""));
}

bool hasCameraRawName(const std::string& path) {
  constexpr std::array extensions = {".3fr", ".arw", ".cr2", ".cr3", ".crw", ".dcr",
                                     ".dng", ".erf", ".fff", ".iiq", ".kdc", ".mef",
                                     ".mos", ".mrw", ".nef", ".nrw", ".orf", ".pef",
                                     ".raf", ".rw2", ".rwl", ".sr2", ".srf", ".srw"};
  std::string extension = std::filesystem::path(path).extension().string();
  std::ranges::transform(extension, extension.begin(),
                         [](unsigned char c) { return std::tolower(c); });
  return std::ranges::find(extensions, extension) != extensions.end();
}

bool isCameraRaw(const std::string& path) {
  if (hasCameraRawName(path)) return true;
  std::error_code error;
  if (path == "-" || !std::filesystem::is_regular_file(path, error)) return false;
  const std::vector<Vek8u> bytes = readBytes(path, 4);
  const std::string_view magic(reinterpret_cast<const char*>(bytes.data()), bytes.size());
  return magic == std::string_view("II*\0", 4) || magic == std::string_view("MM\0*", 4);
}

}  // namespace vekcam
