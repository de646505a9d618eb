// The real two-dimensional Fourier transform: specs, checks.
#include "vek/image.h"

#include <string.h>

#include "core/check.h"
#include "core/tagged.h"
#include "image/transform/real_fft_kernels.h"

namespace vek {
namespace {

/// The words of a spec, after the tag in word 0. The roots of unity are constants of the
/// library, so that the orders are all that it holds.
enum SpecWord { orderXWord = 1, orderYWord, specWords = fewestTaggedWords };

constexpr int specBytes = taggedBytes(specWords);

/// The buffer begins anywhere in the program's memory, the kernels' at a multiple of 64.
constexpr int bufferAlignment = 64;

bool areOrders(int orderX, int orderY) {
  return orderX >= 0 && orderX <= 10 && orderY >= 0 && orderY <= 10;
}

void makeSpec(void* memory, int orderX, int orderY) {
  Vek32u* const words = makeTagged(memory, specWords, fftTag);
  words[orderXWord] = static_cast<Vek32u>(orderX);
  words[orderYWord] = static_cast<Vek32u>(orderY);
}

/// At any address.
void storeNumber(int number, int* to) {
  memcpy(to, &number, sizeof number);
}

int clamped(int v, int low, int high) {
  return v < low ? low : v > high ? high : v;
}

/// 2^exponent; the exponent is within -1022 .. 1023.
Vek64f powerOfTwo(int exponent) {
  const Vek64s bits = Vek64s{1023 + exponent} << 52;
  Vek64f power;
  memcpy(&power, &bits, sizeof power);
  return power;
}

template <class T>
const Vek8u* bytes(const T* p) {
  return reinterpret_cast<const Vek8u*>(p);
}
template <class T>
Vek8u* bytes(T* p) {
  return reinterpret_cast<Vek8u*>(p);
}

enum class Direction { forward, inverse };

/// `Src` and `Dst` are the types of the samples; a spectrum has two for each of its columns.
template <Direction direction, class Src, class Dst>
VekStatus transform(const Src* pSrc, int srcStep, Dst* pDst, int dstStep, int scaleFactor,
                    const void* pSpec, Vek8u* pBuffer,
                    void (*RealFftKernels::*kernel)(const RealFft&)) {
  constexpr bool forward = direction == Direction::forward;
  if (anyNull({pSrc, pDst, pSpec, pBuffer})) return vekStsNullPtrErr;
  if (!hasTag(pSpec, fftTag)) return vekStsContextMatchErr;
  if (anyBelowOne({srcStep, dstStep})) return vekStsStepErr;
  const Vek32u* const words = wordsOf(pSpec);
  RealFft fft = {.orderX = static_cast<int>(words[orderXWord]),
                 .orderY = static_cast<int>(words[orderYWord]),
                 .src = bytes(pSrc),
                 .srcStep = srcStep,
                 .dst = bytes(pDst),
                 .dstStep = dstStep,
                 .scale = 0,
                 .buffer = nullptr};
  const ptrdiff_t spectrumRow = 8 * fft.columns();
  const ptrdiff_t srcRow = forward ? fft.width() * ptrdiff_t{sizeof(Src)} : spectrumRow;
  const ptrdiff_t dstRow = forward ? spectrumRow : fft.width() * ptrdiff_t{sizeof(Dst)};
  if (srcStep < srcRow || dstStep < dstRow) return vekStsStrideErr;

  // Forward, the kernels have twice the spectrum.
  fft.scale = powerOfTwo(-clamped(scaleFactor, -64, 64) - (forward ? 1 : 0));
  const uintptr_t past = reinterpret_cast<uintptr_t>(pBuffer) % bufferAlignment;
  fft.buffer = reinterpret_cast<Vek64f*>(pBuffer + (bufferAlignment - past) % bufferAlignment);
  (select(realFftKernels).*kernel)(fft);
  return vekStsNoErr;
}

}  // namespace
}  // namespace vek

extern "C" {

VekStatus vekiGetSpecSize_RealFFT_32s(int orderX, int orderY, int* pSpecSize, int* pBufferSize) {
  if (vek::anyNull({pSpecSize, pBufferSize})) return vekStsNullPtrErr;
  if (!vek::areOrders(orderX, orderY)) return vekStsFftOrderErr;
  vek::storeNumber(vek::specBytes, pSpecSize);
  vek::storeNumber(8 * vek::fftBufferDoubles(orderX, orderY) + vek::bufferAlignment, pBufferSize);
  return vekStsNoErr;
}

VekStatus vekiInit_RealFFT_32s(int orderX, int orderY, VekiRealFFTSpec* pSpec) {
  if (pSpec == nullptr) return vekStsNullPtrErr;
  if (!vek::areOrders(orderX, orderY)) return vekStsFftOrderErr;
  vek::makeSpec(pSpec, orderX, orderY);
  return vekStsNoErr;
}

VekStatus vekiInitAlloc_RealFFT_32s(int orderX, int orderY, VekiRealFFTSpec** ppSpec) {
  if (ppSpec == nullptr) return vekStsNullPtrErr;
  if (!vek::areOrders(orderX, orderY)) return vekStsFftOrderErr;
  void* const memory = vekMalloc(vek::specBytes);
  if (memory == nullptr) return vekStsMemAllocErr;
  vek::makeSpec(memory, orderX, orderY);
  memcpy(ppSpec, &memory, sizeof memory);  // at any address
  return vekStsNoErr;
}

VekStatus vekiFree_RealFFT_32s(VekiRealFFTSpec* pSpec) {
  return vek::freeTagged(pSpec, vek::fftTag);
}

VekStatus vekiRealFFTFwd_8u32s_C1RSfs(const Vek8u* pSrc, int srcStep, Vek32s* pDst, int dstStep,
                                      int scaleFactor, const VekiRealFFTSpec* pSpec,
                                      Vek8u* pBuffer) {
  return vek::transform<vek::Direction::forward>(pSrc, srcStep, pDst, dstStep, scaleFactor, pSpec,
                                                 pBuffer, &vek::RealFftKernels::forwardBytes);
}

VekStatus vekiRealFFTFwd_32s_C1RSfs(const Vek32s* pSrc, int srcStep, Vek32s* pDst, int dstStep,
                                    int scaleFactor, const VekiRealFFTSpec* pSpec, Vek8u* pBuffer) {
  return vek::transform<vek::Direction::forward>(pSrc, srcStep, pDst, dstStep, scaleFactor, pSpec,
                                                 pBuffer, &vek::RealFftKernels::forwardInts);
}

VekStatus vekiRealFFTInv_32s8u_C1RSfs(const Vek32s* pSrc, int srcStep, Vek8u* pDst, int dstStep,
                                      int scaleFactor, const VekiRealFFTSpec* pSpec,
                                      Vek8u* pBuffer) {
  return vek::transform<vek::Direction::inverse>(pSrc, srcStep, pDst, dstStep, scaleFactor, pSpec,
                                                 pBuffer, &vek::RealFftKernels::inverseBytes);
}

VekStatus vekiRealFFTInv_32s_C1RSfs(const Vek32s* pSrc, int srcStep, Vek32s* pDst, int dstStep,
                                    int scaleFactor, const VekiRealFFTSpec* pSpec, Vek8u* pBuffer) {
  return vek::transform<vek::Direction::inverse>(pSrc, srcStep, pDst, dstStep, scaleFactor, pSpec,
                                                 pBuffer, &vek::RealFftKernels::inverseInts);
}

}  // extern "C"
