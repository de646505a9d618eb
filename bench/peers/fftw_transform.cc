// Fourier transforms by FFTW, of doubles and of floats, planned by measuring. Its data are floating-point
// numbers already: unlike ours, it converts nothing.
#include <fftw3.h>
#include <memory>

#include "bench/peers/transform.h"
#include "bench/support.h"

namespace vek::bench {
namespace {

struct Doubles {
  static constexpr const char* peer = "FFTW";
  using Real = double;
  using Complex = fftw_complex;
  using Plan = fftw_plan;
  static constexpr auto allocate = fftw_malloc;
  static constexpr auto release = fftw_free;
  static constexpr auto planForward = fftw_plan_dft_r2c_2d;
  static constexpr auto planInverse = fftw_plan_dft_c2r_2d;
  static constexpr auto execute = fftw_execute;
  static constexpr auto destroy = fftw_destroy_plan;
};

struct Floats {
  static constexpr const char* peer = "FFTW single";
  using Real = float;
  using Complex = fftwf_complex;
  using Plan = fftwf_plan;
  static constexpr auto allocate = fftwf_malloc;
  static constexpr auto release = fftwf_free;
  static constexpr auto planForward = fftwf_plan_dft_r2c_2d;
  static constexpr auto planInverse = fftwf_plan_dft_c2r_2d;
  static constexpr auto execute = fftwf_execute;
  static constexpr auto destroy = fftwf_destroy_plan;
};

/// An image, its spectrum and a plan. The inverse overwrites the spectrum: all of it is 0.
template <class Fftw>
class Transform {
 public:
  Transform(VekiSize size, bool forward)
      : image_(allocate<typename Fftw::Real>(size.width * size.height)),
        spectrum_(allocate<typename Fftw::Complex>((size.width / 2 + 1) * size.height)) {
    plan_ = forward ? Fftw::planForward(size.height, size.width, image_, spectrum_, FFTW_MEASURE)
                    : Fftw::planInverse(size.height, size.width, spectrum_, image_, FFTW_MEASURE);
    const int pixels = size.width * size.height;
    for (int i = 0; i < pixels; ++i) {
      image_[i] = static_cast<typename Fftw::Real>(i * 40503 % 256);
    }
    for (int i = 0; i < (size.width / 2 + 1) * size.height; ++i) {
      spectrum_[i][0] = spectrum_[i][1] = 0;
    }
  }
  ~Transform() {
    Fftw::destroy(plan_);
    Fftw::release(spectrum_);
    Fftw::release(image_);
  }
  Transform(const Transform&) = delete;
  Transform& operator=(const Transform&) = delete;

  void run() const { Fftw::execute(plan_); }

 private:
  template <class T>
  static T* allocate(int count) {
    return static_cast<T*>(Fftw::allocate(sizeof(T) * static_cast<size_t>(count)));
  }

  typename Fftw::Real* image_;
  typename Fftw::Complex* spectrum_;
  typename Fftw::Plan plan_;
};

template <class Fftw>
void add(const char* name, bool forward) {
  addPeer(name, Fftw::peer, [=](VekiSize size) -> Call {
    const auto transform = std::make_shared<Transform<Fftw>>(fourierSize(size), forward);
    return [=] { transform->run(); };
  });
}

[[maybe_unused]] const bool registered = [] {
  for (const char* name : forwardTransforms) add<Doubles>(name, true), add<Floats>(name, true);
  for (const char* name : inverseTransforms) add<Doubles>(name, false), add<Floats>(name, false);
  return true;
}();

}  // namespace
}  // namespace vek::bench
