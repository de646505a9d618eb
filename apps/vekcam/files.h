// Files in and out.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>
#include <vek/camera.h>
#include <vek/vek.h>

#include "vekcam/failure.h"

namespace vekcam {

/// Reads up to `most` bytes; "-" is standard input.
std::vector<Vek8u> readBytes(const std::string& path, size_t most);

/// The most that a text is read of.
constexpr size_t mostTextBytes = size_t{64} << 20;

/// "standard input" for "-".
std::string inputName(const std::string& path);

/// A list of "row,column" lines. Blank lines, lines that begin with '#' and a heading "row,column" are
/// passed over; other lines are a Failure that begins with `name`.
std::vector<VekiDeadPixel> parseDeadPixels(std::string_view text, const std::string& name);

/// All of a file; "-" is standard input. More than `mostBytes` are a Failure.
std::string readFile(const std::string& path, size_t mostBytes);

/// Writes a file that is either complete or not there: the bytes go to a temporary name beside the
/// target, which takes its place when everything is written. A target that exists and is no regular
/// file (a device, a pipe) is written to directly; "-" is standard output.
void writeFile(const std::string& path, std::string_view bytes);

}  // namespace vekcam
