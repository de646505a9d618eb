// Files: raw frames and dead-pixel lists in, pictures and pages out.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "vekcam/failure.h"
#include "vekcam/raw_frame.h"

namespace vekcam {

/// Reads one frame of 16-bit little-endian words, `step` bytes from row to row; "-" is standard
/// input. The bytes after the last row's samples may be missing; anything else that does not fit
/// the size, and any sample above 1023, is a Failure.
RawFrame readRawFrame(const std::string& path, VekiSize size, int step);

/// Reads a list of "row,column" lines. Blank lines, lines that begin with '#' and a heading
/// "row,column" are passed over; positions outside the frame are a Failure.
std::vector<VekiDeadPixel> readDeadPixels(const std::string& path, VekiSize size);

/// All of a file; "-" is standard input. More than `mostBytes` are a Failure.
std::string readFile(const std::string& path, size_t mostBytes);

/// Writes a file that is either complete or not there: the bytes go to a temporary name beside the
/// target, which takes its place when everything is written. A target that exists and is no regular
/// file (a device, a pipe) is written to directly; "-" is standard output.
void writeFile(const std::string& path, std::string_view bytes);

}  // namespace vekcam
