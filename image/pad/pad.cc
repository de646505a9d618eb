// Borders around an image.
#include "vek/image.h"

#include <string.h>

#include "core/check.h"
#include "core/kernel/place_kernels.h"

namespace vek {
namespace {

/// A source in its destination: everything in pixels but the step.
struct Frame {
  Vek8u* dst;
  ptrdiff_t step;
  VekiSize size;   ///< of the destination
  VekiSize inner;  ///< of the source
  int left, top;

  Vek8u* row(ptrdiff_t y) const { return dst + y * step; }
  int right() const { return size.width - left - inner.width; }
  int bottom() const { return size.height - top - inner.height; }
};

/// memmove where it could be memcpy: rows of a short step overlap.
void copyBytes(Vek8u* dst, const Vek8u* src, ptrdiff_t n) {
  memmove(dst, src, static_cast<size_t>(n));
}

template <int channels>
void fill(Vek8u* dst, ptrdiff_t pixels, const Vek8u* pixel) {
  if constexpr (channels == 1) {
    memset(dst, *pixel, static_cast<size_t>(pixels));
  } else {
    if (pixels == 0) return;
    // The first pixels one by one, as reading what was just written takes long; each but the last is
    // stored with a byte of the next. Then what is filled is doubled.
    const ptrdiff_t n = pixels * channels, few = pixels < 16 ? pixels : 16;
    const Vek8u four[4] = {pixel[0], pixel[1], pixel[2]};
    for (ptrdiff_t i = 0; i < few - 1; ++i) memcpy(dst + i * channels, four, 4);
    memcpy(dst + (few - 1) * channels, four, channels);
    for (ptrdiff_t done = few * channels; done < n; done *= 2) {
      copyBytes(dst + done, dst, done < n - done ? done : n - done);
    }
  }
}

/// How a position beyond an edge is mirrored at both edges: `count` of them at a time, at most
/// side - 1, come from as many positions inside, which alternately are those next to the near edge in
/// reverse and those next to the far one.
template <class Run>
void mirrorRuns(int border, int side, Run run) {
  bool reversed = true;
  for (int done = 0; done < border; reversed = !reversed) {
    const int count = border - done < side - 1 ? border - done : side - 1;
    run(done, count, reversed);
    done += count;
  }
}

/// The columns beside the source of row y.
template <int channels>
void padRow(const Frame& frame, ptrdiff_t y, int border, const Vek8u* value, PlaceTile place) {
  const int left = frame.left, right = frame.right(), width = frame.inner.width;
  Vek8u* const first = frame.row(y) + ptrdiff_t{left} * channels;
  Vek8u* const end = first + ptrdiff_t{width} * channels;
  if (border == vekiBorderMirror && width > 1) {
    const auto copy = [&](const Vek8u* src, int count, Vek8u* dst, bool reversed) {
      if (!reversed) {
        copyBytes(dst, src, ptrdiff_t{count} * channels);
      } else if (count > 16) {
        place(src, 0, count, 1, dst + ptrdiff_t{count - 1} * channels, -channels, 0);
      } else {  // few are moved by the time that the call takes
        for (int i = 0; i < count; ++i) {
          memcpy(dst + ptrdiff_t{count - 1 - i} * channels, src + ptrdiff_t{i} * channels,
                 channels);
        }
      }
    };
    mirrorRuns(left, width, [&](int done, int count, bool reversed) {
      copy(reversed ? first + channels : end - ptrdiff_t{count + 1} * channels, count,
           first - ptrdiff_t{done + count} * channels, reversed);
    });
    mirrorRuns(right, width, [&](int done, int count, bool reversed) {
      copy(reversed ? end - ptrdiff_t{count + 1} * channels : first + channels, count,
           end + ptrdiff_t{done} * channels, reversed);
    });
    return;
  }
  fill<channels>(frame.row(y), left, border == vekiBorderConstant ? value : first);
  fill<channels>(end, right, border == vekiBorderConstant ? value : end - channels);
}

/// The row of the source, from 0, that row y of the destination repeats, counted from the source.
int repeatedRow(int y, int height, int border) {
  if (border == vekiBorderReplicate || height == 1) return y < 0 ? 0 : height - 1;
  const Vek64s period = 2 * (Vek64s{height} - 1);
  const Vek64s phase = (y < 0 ? -Vek64s{y} : Vek64s{y}) % period;
  return static_cast<int>(phase < height ? phase : period - phase);
}

/// The rows above and below the source, whose own rows are complete.
template <int channels>
void padRows(const Frame& frame, int border, const Vek8u* value) {
  const ptrdiff_t bytes = ptrdiff_t{frame.size.width} * channels;
  const Vek8u* filled = nullptr;
  for (int y = 0; y < frame.size.height; ++y) {
    if (y == frame.top) y += frame.inner.height;
    if (y == frame.size.height) return;
    if (border != vekiBorderConstant) {
      const int from = repeatedRow(y - frame.top, frame.inner.height, border);
      copyBytes(frame.row(y), frame.row(ptrdiff_t{frame.top} + from), bytes);
    } else if (filled == nullptr || channels == 1) {
      fill<channels>(frame.row(y), frame.size.width, value);
      filled = frame.row(y);
    } else {
      copyBytes(frame.row(y), filled, bytes);
    }
  }
}

bool isSmaller(VekiSize size, VekiSize inner, int left, int top) {
  return size.width < Vek64s{left} + inner.width || size.height < Vek64s{top} + inner.height;
}

/// `value` has one entry for each channel.
template <int channels>
VekStatus pad(const Vek8u* pSrc, int srcStep, VekiSize srcSize, Vek8u* pDst, int dstStep,
              VekiSize dstSize, int left, int top, int border, const Vek8u* value) {
  if (anyNull({pSrc, pDst, value})) return vekStsNullPtrErr;
  if (isEmpty(srcSize) || isEmpty(dstSize)) return vekStsSizeErr;
  if (left < 0 || top < 0) return vekStsBadArgErr;
  if (isSmaller(dstSize, srcSize, left, top)) return vekStsSizeErr;
  if (anyBelowOne({srcStep, dstStep})) return vekStsStepErr;
  if (border < vekiBorderConstant || border > vekiBorderMirror) return vekStsBadArgErr;

  const Frame frame = {pDst, dstStep, dstSize, srcSize, left, top};
  const PlaceTile place = select(placeKernels).of(channels);
  const Vek8u* src = pSrc;
  for (int y = 0; y < srcSize.height; ++y, src += srcStep) {
    const ptrdiff_t row = ptrdiff_t{top} + y;
    Vek8u* const dst = frame.row(row) + ptrdiff_t{left} * channels;
    if (dst != src) copyBytes(dst, src, ptrdiff_t{srcSize.width} * channels);
    padRow<channels>(frame, row, border, value, place);
  }
  padRows<channels>(frame, border, value);
  return vekStsNoErr;
}

}  // namespace
}  // namespace vek

extern "C" VekStatus vekiPad_8u_C1R(const Vek8u* pSrc, int srcStep, VekiSize srcSize, Vek8u* pDst,
                                    int dstStep, VekiSize dstSize, int left, int top, int border,
                                    Vek8u value) {
  return vek::pad<1>(pSrc, srcStep, srcSize, pDst, dstStep, dstSize, left, top, border, &value);
}

extern "C" VekStatus vekiPad_8u_C3R(const Vek8u* pSrc, int srcStep, VekiSize srcSize, Vek8u* pDst,
                                    int dstStep, VekiSize dstSize, int left, int top, int border,
                                    const Vek8u value[3]) {
  return vek::pad<3>(pSrc, srcStep, srcSize, pDst, dstStep, dstSize, left, top, border, value);
}
