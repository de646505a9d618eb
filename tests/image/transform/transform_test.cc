#include "tests/definition/transform.h"

#include "vek/image.h"

#include <cstring>
#include <gtest/gtest.h>
#include <vector>

#include "image/transform/block_dct_basis.h"
#include "image/transform/real_fft_units.h"
#include "tests/support/digest.h"
#include "tests/support/levels.h"
#include "tests/support/random.h"

namespace vek::test {
namespace {

using Bytes = std::vector<Vek8u>;
using Ints = std::vector<Vek32s>;
using Shorts = std::vector<Vek16s>;

template <class T>
uint64_t digestOf(const std::vector<T>& numbers) {
  Digest digest;
  digest.add(numbers.data(), numbers.size());
  return digest.value();
}

template <class T>
std::vector<T> numbers(Noise& from, size_t count) {
  std::vector<T> all(count);
  for (T& v : all) v = from.draw<T>();
  return all;
}

// ---- Fourier ------------------------------------------------------------------------------------

/// A size with its spec and buffer. Images and spectra are without padding.
class Fourier {
 public:
  Fourier(int orderX, int orderY)
      : width(1 << orderX), height(1 << orderY), spectrum(8 * (width / 2 + 1)) {
    int specBytes = 0, bufferBytes = 0;
    EXPECT_EQ(vekiGetSpecSize_RealFFT_32s(orderX, orderY, &specBytes, &bufferBytes), 0);
    EXPECT_EQ(vekiInitAlloc_RealFFT_32s(orderX, orderY, &spec_), 0);
    buffer_.resize(static_cast<size_t>(bufferBytes));
  }
  ~Fourier() { vekiFree_RealFFT_32s(spec_); }
  Fourier(const Fourier&) = delete;
  Fourier& operator=(const Fourier&) = delete;

  const int width, height, spectrum;  ///< the last one: bytes of a row

  size_t pixels() const { return static_cast<size_t>(width) * static_cast<size_t>(height); }
  size_t parts() const { return static_cast<size_t>(spectrum) / 4 * static_cast<size_t>(height); }

  Ints forward(const Bytes& image, int scaleFactor) {
    Ints result(parts());
    EXPECT_EQ(vekiRealFFTFwd_8u32s_C1RSfs(image.data(), width, result.data(), spectrum, scaleFactor,
                                          spec_, buffer_.data()),
              0);
    return result;
  }
  Ints forward(const Ints& image, int scaleFactor) {
    Ints result(parts());
    EXPECT_EQ(vekiRealFFTFwd_32s_C1RSfs(image.data(), 4 * width, result.data(), spectrum,
                                        scaleFactor, spec_, buffer_.data()),
              0);
    return result;
  }
  template <class T>
  std::vector<T> inverse(const Ints& numbers, int scaleFactor) {
    std::vector<T> image(pixels());
    const auto call = [&](auto f, auto* to) {
      EXPECT_EQ(f(numbers.data(), spectrum, to, width * static_cast<int>(sizeof(T)), scaleFactor,
                  spec_, buffer_.data()),
                0);
    };
    if constexpr (sizeof(T) == 1) call(vekiRealFFTInv_32s8u_C1RSfs, image.data());
    if constexpr (sizeof(T) == 4) call(vekiRealFFTInv_32s_C1RSfs, image.data());
    return image;
  }

 private:
  VekiRealFFTSpec* spec_ = nullptr;
  Bytes buffer_;
};

/// A sum over the bits of the cosines of the first quarter, by a program of its own.
TEST(RealFft, Cosines) {
  uint64_t sum = 0;
  for (uint64_t j = 0; j <= 256; ++j) {
    uint64_t bits;
    memcpy(&bits, &unitCosines.at[j], sizeof bits);
    sum += (2 * j + 1) * bits;
  }
  EXPECT_EQ(sum, 0xCCB1B2534802C9EB);
}

/// Results of a plain program of its own, on noise.
TEST(RealFft, Digests) {
  const struct {
    int orderX, orderY;
    uint64_t ofBytes, ofInts, ofInverse;
  } cases[] = {{3, 0, 0xE9022346141D3EF8, 0xA257727D2EE89006, 0x74872746E413A5A3},
               {4, 4, 0x1ABBDD09D67F7FE2, 0x4B5E67480441ADC3, 0x8C7CC220815CD035},
               {8, 8, 0x44B0159DC2001012, 0x9C802A0104B0EDF3, 0x945AB7AC3F978443}};
  for (Level level : levels()) {
    const LevelScope scope(level);
    for (const auto& c : cases) {
      Fourier fourier(c.orderX, c.orderY);
      const int orders = c.orderX + c.orderY;
      Noise noise;
      const Bytes image = numbers<Vek8u>(noise, fourier.pixels());
      EXPECT_EQ(digestOf(fourier.forward(image, 0)), c.ofBytes) << name(level);
      const Ints ints = numbers<Vek32s>(noise, fourier.pixels());
      EXPECT_EQ(digestOf(fourier.forward(ints, orders - 3)), c.ofInts) << name(level);
      const Ints spectrum = numbers<Vek32s>(noise, fourier.parts());
      EXPECT_EQ(digestOf(fourier.inverse<Vek32s>(spectrum, orders)), c.ofInverse) << name(level);
    }
  }
}

TEST(RealFft, KnownSpectra) {
  for (Level level : levels()) {
    const LevelScope scope(level);
    const Bytes row = {0, 10, 20, 30, 40, 50, 60, 255};
    EXPECT_EQ(Fourier(2, 1).forward(Bytes{1, 2, 3, 4, 5, 6, 7, 9}, 0),
              (Ints{37, 0, -4, 5, -5, 0, -17, 0, 0, -1, 1, 0}));
    EXPECT_EQ(Fourier(3, 0).forward(row, 0), (Ints{465, 0, 91, 227, -40, 225, -171, 147, -225, 0}));
    EXPECT_EQ(Fourier(3, 0).forward(row, 1), (Ints{232, 0, 45, 114, -20, 112, -85, 74, -112, 0}));
    // What is imaginary in the first and the middle column has no place in a real image.
    EXPECT_EQ(Fourier(2, 0).inverse<Vek8u>({10, 77, 0, 0, 2, -99}, 2), (Bytes{3, 2, 3, 2}));
  }
}

/// The largest transforms: images come back, and the greatest sum just fits.
TEST(RealFft, LargestSize) {
  int specBytes = 0, bufferBytes = 0;
  EXPECT_EQ(vekiGetSpecSize_RealFFT_32s(10, 10, &specBytes, &bufferBytes), 0);
  EXPECT_EQ(bufferBytes, 8781888);
  Fourier fourier(10, 10);
  Noise from;
  const Bytes noise = numbers<Vek8u>(from, fourier.pixels()), white(fourier.pixels(), 255);
  for (Level level : levels()) {
    const LevelScope scope(level);
    EXPECT_EQ(fourier.inverse<Vek8u>(fourier.forward(noise, 0), 20), noise) << name(level);
    EXPECT_EQ(fourier.forward(white, -3)[0], 255 << 23) << name(level);
    EXPECT_EQ(fourier.forward(white, -4)[0], INT32_MAX) << name(level);
  }
}

// ---- Cosine -------------------------------------------------------------------------------------

Shorts forwardBlock(const Shorts& samples) {
  Shorts result(64);
  EXPECT_EQ(vekiBlockDCTFwd_16s_C1(samples.data(), result.data()), 0);
  return result;
}
Shorts inverseBlock(const Shorts& coefficients) {
  Shorts result(64);
  EXPECT_EQ(vekiBlockDCTInv_16s_C1(coefficients.data(), result.data()), 0);
  return result;
}

Shorts withFirst(int value) {
  Shorts block(64);
  block[0] = static_cast<Vek16s>(value);
  return block;
}

TEST(BlockDct, KnownBlocks) {
  for (Level level : levels()) {
    const LevelScope scope(level);
    EXPECT_EQ(forwardBlock(Shorts(64, -32768)), withFirst(-32768));
    EXPECT_EQ(forwardBlock(Shorts(64, 4095)), withFirst(32760));
    EXPECT_EQ(inverseBlock(withFirst(8)), Shorts(64, 1));
    EXPECT_EQ(inverseBlock(withFirst(4)), Shorts(64, 1));
    EXPECT_EQ(inverseBlock(withFirst(-4)), Shorts(64, 0));
    EXPECT_EQ(inverseBlock(withFirst(32767)), Shorts(64, 4096));
    Shorts ramp(64), expected(64);
    const int row[] = {532, -291, 0, -30, 0, -9, 0, -2}, column[] = {532, -55, 0, -6, 0, -2, 0, 0};
    for (size_t i = 0; i < 64; ++i) ramp[i] = static_cast<Vek16s>(16 * (i % 8) + 3 * (i / 8));
    for (size_t i = 0; i < 8; ++i) {
      expected[i] = static_cast<Vek16s>(row[i]), expected[8 * i] = static_cast<Vek16s>(column[i]);
    }
    EXPECT_EQ(forwardBlock(ramp), expected) << name(level);
  }
}

/// Results of a plain program of its own, on noise.
TEST(BlockDct, Digests) {
  const struct {
    int shift;
    uint64_t forward, inverse;
  } cases[] = {{7, 0xFD82C2F49C03D83B, 0xC5141E94537549FF},
               {4, 0x6BA1084E29898D54, 0xEA663533425D51D2},
               {0, 0x880B8110034E8CC6, 0xBF85BA88AAC4700A}};
  for (Level level : levels()) {
    const LevelScope scope(level);
    for (const auto& c : cases) {
      Noise noise;
      Shorts all = numbers<Vek16s>(noise, 64000), results(64000);
      for (Vek16s& v : all) v = static_cast<Vek16s>(v >> c.shift);
      for (size_t i = 0; i < all.size(); i += 64) vekiBlockDCTFwd_16s_C1(&all[i], &results[i]);
      EXPECT_EQ(digestOf(results), c.forward) << name(level);
      for (size_t i = 0; i < all.size(); i += 64) vekiBlockDCTInv_16s_C1(&all[i], &results[i]);
      EXPECT_EQ(digestOf(results), c.inverse) << name(level);
    }
  }
}

/// Kernels calculate in 16 bits while samples, before both passes, are from -16384 to 16383: rows of
/// basis functions of amplitudes about this range, in signs that make the largest sums.
TEST(BlockDct, AboutTheRangeOfSixteenBits) {
  Random random(20050316);
  const int amplitudes[] = {16383, 16384, 255, 256, 257, 181, 362, 6000, 11585, 32767};
  for (int round = 0; round < 3000; ++round) {
    const int amplitude = random.of(amplitudes) + random.in(-1, 1), u = random.in(0, 7);
    const int v = random.in(0, 7);
    Shorts samples(128), expected(128), results(128);
    for (size_t i = 0; i < 128; ++i) {
      const auto x = static_cast<int>(i % 16), y = static_cast<int>(i / 16);
      const bool negative = (dctBasis[u][x % 8] < 0) != (dctBasis[v][y] < 0);
      const int value = (negative ? -amplitude : amplitude) - (random.chance(20) ? 1 : 0);
      samples[i] =
          static_cast<Vek16s>(x < 8 && round % 2 == 0 ? i : std::clamp(value, -32768, 32767));
    }
    for (bool inverse : {false, true}) {
      const auto define =
          inverse ? definition::cosineBlocks<true> : definition::cosineBlocks<false>;
      const auto call = inverse ? vekiBlockDCTInv_16s_C1R : vekiBlockDCTFwd_16s_C1R;
      define(samples.data(), 32, expected.data(), 32, {16, 8});
      for (Level level : levels()) {
        const LevelScope scope(level);
        EXPECT_EQ(call(samples.data(), 32, results.data(), 32, {16, 8}), 0);
        ASSERT_EQ(results, expected) << name(level) << ", round " << round;
      }
    }
  }
}

}  // namespace
}  // namespace vek::test
