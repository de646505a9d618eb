/** @file transform.hpp
 *  Transforms in C++. vek.hpp includes it. */
#ifndef VEK_CPP_TRANSFORM_HPP
#define VEK_CPP_TRANSFORM_HPP

#include "vek/cpp/call.hpp"

#include <array>
#include <cstddef>
#include <utility>

namespace vek {
inline namespace v0 {

/** @defgroup cpptransform C++: transforms
 *  The functions of the group `transforms`.
 *  @{ */

/// Fourier transforms of one size, whose sides are powers of two up to 1024. Spectra have half as many
/// columns, and one more: see spectrumSize().
class RealFft {
 public:
  /// An empty one.
  RealFft() noexcept = default;
  /// For images of `size` (vekiInitAlloc_RealFFT_32s), with a buffer of its own.
  explicit RealFft(Size size, OnError onError = {}) {
    const detail::Call call{"RealFft", onError};
    RealFft made;
    if (!made.prepare(call, size)) return;
    made.work_ = detail::Memory(static_cast<std::size_t>(made.bufferBytes_));
    VekiRealFFTSpec* spec = nullptr;
    if (made.work_.data() != nullptr)
      vekiInitAlloc_RealFFT_32s(orderOf(size.width), orderOf(size.height), &spec);
    if (spec == nullptr) {
      OnError::refuse(onError, vekStsMemAllocErr, "RealFft", "size",
                      "of %d x %d needs more memory than there is", size.width, size.height);
      return;
    }
    made.owned_.reset(spec);
    made.spec_ = spec;
    onError.success();
    *this = std::move(made);
  }
  /// For images of `size`, in memory of the caller's that must stay where it is (vekiInit_RealFFT_32s).
  /// It has no buffer of its own.
  RealFft(Size size, Work memory, OnError onError = {}) {
    const detail::Call call{"RealFft", onError};
    RealFft made;
    if (!made.prepare(call, size)) return;
    if (memory.data == nullptr || memory.bytes < static_cast<std::size_t>(made.specBytes_)) {
      OnError::refuse(onError, vekStsSizeErr, "RealFft", "memory",
                      "has %zu bytes, but %d are needed", memory.bytes, made.specBytes_);
      return;
    }
    auto* const spec = static_cast<VekiRealFFTSpec*>(memory.data);
    if (call.done(vekiInit_RealFFT_32s(orderOf(size.width), orderOf(size.height), spec)) < 0)
      return;
    made.spec_ = spec;
    *this = std::move(made);
  }
  /// The transform of another one, which is empty afterwards.
  RealFft(RealFft&& other) noexcept { *this = std::move(other); }
  /// Takes the transform of another one, which is empty afterwards.
  RealFft& operator=(RealFft&& other) noexcept {
    owned_ = std::move(other.owned_);
    work_ = std::move(other.work_);
    spec_ = std::exchange(other.spec_, nullptr);
    size_ = std::exchange(other.size_, Size{0, 0});
    specBytes_ = other.specBytes_;
    bufferBytes_ = other.bufferBytes_;
    return *this;
  }

  bool empty() const noexcept { return spec_ == nullptr; }  ///< whether there is none
  Size size() const noexcept { return size_; }              ///< of images
  /// Of spectra, in complex numbers.
  Size spectrumSize() const noexcept { return {size_.width / 2 + 1, size_.height}; }
  /// Bytes that a transform works in (vekiGetSpecSize_RealFFT_32s).
  int workBytes() const noexcept { return bufferBytes_; }
  /// Bytes of a transform in memory of the caller's for images of `size`; 0 if there is none.
  static int bytesFor(Size size) noexcept {
    RealFft made;
    return made.prepare(detail::Call{"RealFft", std::nothrow}, size) ? made.specBytes_ : 0;
  }

  /// The spectrum of an image, times 2^-scale (vekiRealFFTFwd_8u32s_C1RSfs), calculated in `work`. Threads
  /// that share a transform have a `work` each.
  VEK_INLINE VekStatus forward(View<const Vek8u> src, View<Complex32s> dst, int scale, Work work,
                               OnError onError = {}) const {
    return run(detail::Call{"RealFft::forward", onError}, vekiRealFFTFwd_8u32s_C1RSfs, "src", src,
               size_, "dst", dst, spectrumSize(), scale, work);
  }
  /// The same of 32-bit samples (vekiRealFFTFwd_32s_C1RSfs).
  VEK_INLINE VekStatus forward(View<const Vek32s> src, View<Complex32s> dst, int scale, Work work,
                               OnError onError = {}) const {
    return run(detail::Call{"RealFft::forward", onError}, vekiRealFFTFwd_32s_C1RSfs, "src", src,
               size_, "dst", dst, spectrumSize(), scale, work);
  }
  /// The image of a spectrum, times 2^-scale (vekiRealFFTInv_32s8u_C1RSfs). The image comes back with the
  /// sum of both orders as scale.
  VEK_INLINE VekStatus inverse(View<const Complex32s> src, View<Vek8u> dst, int scale, Work work,
                               OnError onError = {}) const {
    return run(detail::Call{"RealFft::inverse", onError}, vekiRealFFTInv_32s8u_C1RSfs, "src", src,
               spectrumSize(), "dst", dst, size_, scale, work);
  }
  /// The same to 32-bit samples (vekiRealFFTInv_32s_C1RSfs).
  VEK_INLINE VekStatus inverse(View<const Complex32s> src, View<Vek32s> dst, int scale, Work work,
                               OnError onError = {}) const {
    return run(detail::Call{"RealFft::inverse", onError}, vekiRealFFTInv_32s_C1RSfs, "src", src,
               spectrumSize(), "dst", dst, size_, scale, work);
  }

  /// Any of these in the buffer of this object, which therefore is not shared by threads.
  template <class Source, class Destination>
  VEK_INLINE VekStatus forward(const Source& src, Destination&& dst, int scale = 0,
                               OnError onError = {}) {
    return forward(src.view(), dst.view(), scale, own(), onError);
  }
  /// The inverse likewise.
  template <class Source, class Destination>
  VEK_INLINE VekStatus inverse(const Source& src, Destination&& dst, int scale,
                               OnError onError = {}) {
    return inverse(src.view(), dst.view(), scale, own(), onError);
  }
  /// The spectrum of an image, in a new one.
  template <class Source>
  Image<Complex32s> forward(const Source& src, int scale = 0, OnError onError = {}) {
    return detail::made<Image<Complex32s>>(spectrumSize(), onError, [&](auto& dst) {
      return forward(src.view(), dst.view(), scale, own(), onError);
    });
  }
  /// The image of a spectrum, of samples of the type that is named: `fft.inverse<Vek8u>(spectrum, 16)`.
  template <class Sample>
  Image<Sample> inverse(Same<View<const Complex32s>> src, int scale, OnError onError = {}) {
    return detail::made<Image<Sample>>(
        size_, onError, [&](auto& dst) { return inverse(src, dst.view(), scale, own(), onError); });
  }

 private:
  /// -1 if it is no power of two.
  static int orderOf(int side) {
    for (int order = 0; order <= 10; ++order) {
      if (side == 1 << order) return order;
    }
    return -1;
  }
  bool prepare(detail::Call call, Size size) {
    const VekStatus status = vekiGetSpecSize_RealFFT_32s(orderOf(size.width), orderOf(size.height),
                                                         &specBytes_, &bufferBytes_);
    if (status == vekStsNoErr) {
      size_ = size;
      return true;
    }
    OnError::refuse(call.onError, status, call.function, "size",
                    "is %d x %d, not powers of two up to 1024", size.width, size.height);
    return false;
  }
  Work own() const {
    return {work_.data(), work_.data() == nullptr ? 0 : static_cast<std::size_t>(bufferBytes_)};
  }

  template <class F, class Source, class Destination>
  VEK_INLINE VekStatus run(detail::Call call, F f, const char* srcName, const Source& src,
                           Size srcSize, const char* dstName, const Destination& dst, Size dstSize,
                           int scale, Work work) const {
    if (empty()) return detail::refuseEmpty(call);
    if (!call.fits(srcName, src.size(), "the transform's", srcSize) ||
        !call.fits(dstName, dst.size(), "the transform's", dstSize))
      return vekStsSizeErr;
    if (work.data == nullptr || work.bytes < static_cast<std::size_t>(bufferBytes_)) {
      return OnError::refuse(call.onError, vekStsSizeErr, call.function, "work",
                             "has %zu bytes, but %d are needed", work.bytes, bufferBytes_);
    }
    return call.done(f(src.data(), src.stepBytes(), dst.data(), dst.stepBytes(), scale, spec_,
                       static_cast<Vek8u*>(work.data)));
  }

  detail::Owned<VekiRealFFTSpec, vekiFree_RealFFT_32s> owned_;
  detail::Memory work_;
  const VekiRealFFTSpec* spec_ = nullptr;
  Size size_ = {0, 0};
  int specBytes_ = 0;
  int bufferBytes_ = 0;
};

/// A block of 8 x 8 samples or coefficients, row after row.
using Block = std::array<Vek16s, 64>;

/// The cosine transform of a block (vekiBlockDCTFwd_16s_C1). In place as well.
VEK_INLINE VekStatus dctForward(const Block& src, Block& dst, OnError onError = {}) {
  return detail::Call{"dctForward", onError}.done(vekiBlockDCTFwd_16s_C1(src.data(), dst.data()));
}
/// The inverse (vekiBlockDCTInv_16s_C1). In place as well.
VEK_INLINE VekStatus dctInverse(const Block& src, Block& dst, OnError onError = {}) {
  return detail::Call{"dctInverse", onError}.done(vekiBlockDCTInv_16s_C1(src.data(), dst.data()));
}
/// The cosine transforms of all blocks of an image, whose sides are multiples of 8
/// (vekiBlockDCTFwd_16s_C1R). In place as well.
VEK_INLINE VekStatus dctForward(View<const Vek16s> src, View<Vek16s> dst, OnError onError = {}) {
  return detail::unary(detail::Call{"dctForward", onError}, vekiBlockDCTFwd_16s_C1R, src, dst);
}
/// The inverse (vekiBlockDCTInv_16s_C1R). In place as well.
VEK_INLINE VekStatus dctInverse(View<const Vek16s> src, View<Vek16s> dst, OnError onError = {}) {
  return detail::unary(detail::Call{"dctInverse", onError}, vekiBlockDCTInv_16s_C1R, src, dst);
}
/// The cosine transforms in a new image.
inline Image<Vek16s> dctForward(View<const Vek16s> src, OnError onError = {}) {
  return detail::made<Image<Vek16s>>(src.size(), onError,
                                     [&](auto& dst) { return dctForward(src, dst, onError); });
}
/// The inverse in a new image.
inline Image<Vek16s> dctInverse(View<const Vek16s> src, OnError onError = {}) {
  return detail::made<Image<Vek16s>>(src.size(), onError,
                                     [&](auto& dst) { return dctInverse(src, dst, onError); });
}

/** @} */

}  // namespace v0
}  // namespace vek

#endif  // VEK_CPP_TRANSFORM_HPP
