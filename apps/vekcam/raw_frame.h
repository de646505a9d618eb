// A raw frame in memory: 10-bit samples in 16-bit words, RGGB, with a mirrored border around it.
#pragma once

#include <cstddef>
#include <vector>
#include <vek/camera.h>

namespace vekcam {

/// A block of zeroed memory that starts at a cache line.
template <typename T>
class AlignedArray {
 public:
  explicit AlignedArray(size_t count)
      : lines_((count * sizeof(T) + sizeof(Line) - 1) / sizeof(Line)) {}
  T* data() { return reinterpret_cast<T*>(lines_.data()); }
  const T* data() const { return reinterpret_cast<const T*>(lines_.data()); }

 private:
  struct alignas(64) Line {
    unsigned char bytes[64];
  };
  std::vector<Line> lines_;
};

/// The frame plus two samples on every side, so that the raw pipeline may treat the frame's border
/// as valid: every pixel is then demosaiced by the interior rule, and the planes may start at the
/// aligned addresses that the preview functions ask for. Rows start at cache lines.
class RawFrame {
 public:
  static constexpr int border = 2;

  /// Width and height are even. All samples are 0.
  explicit RawFrame(VekiSize size);

  VekiSize size() const { return size_; }
  int width() const { return size_.width; }
  int height() const { return size_.height; }
  int step() const { return static_cast<int>(rowSamples_) * 2; }  ///< in bytes

  /// Sample 0 of row y; y is -2..height + 1 and the samples are -2..width + 1.
  Vek16u* row(int y) { return samples_.data() + offset(y); }
  const Vek16u* row(int y) const { return samples_.data() + offset(y); }

  /// Fills the border by mirroring about the outermost row and column, which keeps the Bayer phase:
  /// sample -1 is sample 1, sample -2 is sample 2.
  void mirrorBorder();

 private:
  ptrdiff_t offset(int y) const { return (y + border) * rowSamples_ + lead; }

  static constexpr int lead = 32;  ///< samples in front of a row: the border, a cache line wide

  VekiSize size_;
  ptrdiff_t rowSamples_;
  AlignedArray<Vek16u> samples_;
};

}  // namespace vekcam
