#include "vek/view.hpp"

#include <algorithm>
#include <cstring>
#include <gtest/gtest.h>
#include <string>
#include <vector>

namespace vek::test {
namespace {

template <class Image, class... Arguments>
constexpr bool isMadeFrom = std::is_constructible_v<Image, Arguments...>;
template <class From, class To>
constexpr bool converts = std::is_convertible_v<From, To>;

// What may be written is accepted where it is only read, and nothing else.
static_assert(converts<View<Vek8u, 3>, View<const Vek8u, 3>>);
static_assert(converts<Image<Vek8u, 3>&, View<Vek8u, 3>>);
static_assert(converts<const Image<Vek8u, 3>&, View<const Vek8u, 3>>);
static_assert(converts<View<Rgb24>, View<const Rgb24>>);
static_assert(converts<Image420&, Planes420<>> && converts<ImageNv12&, Nv12<>>);
static_assert(converts<const Image420&, Planes420<const Vek8u>>);
static_assert(!isMadeFrom<View<Vek8u>, View<const Vek8u>>);
static_assert(!isMadeFrom<View<Vek8u>, const Vek8u*, Size>);
static_assert(!isMadeFrom<View<Vek8u>, const std::vector<Vek8u>&, Size>);
static_assert(!isMadeFrom<View<Vek8u, 3>, const Image<Vek8u, 3>&>);
static_assert(!isMadeFrom<View<Vek8u, 3>, const Image<Rgb24>&>);
static_assert(!isMadeFrom<View<Vek8u, 3>, Image<Vek8u, 3>>);
static_assert(!isMadeFrom<Planes420<>, const Image420&>);
static_assert(!isMadeFrom<Nv12<>, const ImageNv12&> && !isMadeFrom<Nv12<>, Nv12<const Vek8u>>);
// Channels and their order are part of the type; bytes become pixels only where that is said.
static_assert(!isMadeFrom<View<Vek8u, 3>, View<Vek8u>>);
static_assert(converts<View<Rgb24>, View<Vek8u, 3>> && converts<Image<Rgb24>&, View<Vek8u, 3>>);
static_assert(!converts<View<Vek8u, 3>, View<Rgb24>> && isMadeFrom<View<Rgb24>, View<Vek8u, 3>>);
static_assert(!converts<View<Bgr24>, View<Rgb24>> && !converts<View<Bgr24>, View<const Rgb24>>);
static_assert(!isMadeFrom<View<Rgb565>, View<Bgr565>> && !isMadeFrom<View<Yuy2>, View<Uyvy>>);
static_assert(!isMadeFrom<Planes420<>, Planes422<>>);
// A step is one of bytes.
static_assert(!isMadeFrom<View<Vek8u>, Vek8u*, Size, int>);
static_assert(!isMadeFrom<View<Rgb565>, Vek8u*, Size, Bytes>);
static_assert(!converts<int, Bytes> && !converts<Interpolation, Rotation>);
static_assert(sizeof(View<Rgb24>) <= sizeof(void*) + 4 * sizeof(int));

/// The failure of `make`, which is a call with a Failure as the last argument.
template <class Make>
Failure failureOf(Make make) {
  Failure failure;
  make(failure);
  return failure;
}

TEST(View, RefusesWhatIsNoImage) {
  Vek8u bytes[48] = {};
  const auto check = [&](VekStatus status, const char* argument, auto make) {
    const Failure failure = failureOf(make);
    EXPECT_EQ(failure.status, status) << failure.message;
    EXPECT_STREQ(failure.argument, argument) << failure.message;
  };
  Vek8u* const null = nullptr;
  Vek8u* const data = bytes;
  using Pixels = View<Vek8u, 3>;
  const auto made = [](const auto& view) { EXPECT_TRUE(view.empty()); };
  check(vekStsNullPtrErr, "data", [&](Failure& f) { made(Pixels(null, {4, 4}, f)); });
  check(vekStsSizeErr, "size", [&](Failure& f) { made(Pixels(data, {0, 4}, f)); });
  check(vekStsSizeErr, "size", [&](Failure& f) { made(Pixels(data, {4, -1}, f)); });
  check(vekStsStrideErr, "step", [&](Failure& f) { made(Pixels(data, {4, 4}, Bytes(11), f)); });
  check(vekStsStrideErr, "step", [&](Failure& f) { made(View<Yuy2>(data, {3, 4}, Bytes(7), f)); });
  check(vekStsSizeErr, "data", [&](Failure& f) { made(Pixels(bytes, {4, 5}, f)); });
  check(vekStsSizeErr, "data", [&](Failure& f) { made(Pixels(bytes, {4, 4}, Bytes(13), f)); });
  check(vekStsStrideErr, "step", [&](Failure& f) { made(Pixels(data, {1 << 30, 1}, f)); });
  const View<Vek8u> luma(bytes, {4, 4});
  check(vekStsSizeErr, "cr", [&](Failure& f) {
    made(Planes420<>(luma, luma.sub({0, 0, 2, 2}), luma, f));
  });
  check(vekStsSizeErr, "data", [&](Failure& f) { made(Planes422<>(bytes, 48, {5, 5}, f)); });
  EXPECT_EQ(Planes420<>(bytes, 43, {5, 5}).cr().data(), bytes + 34);
  check(vekStsSizeErr, "y", [&](Failure& f) { made(Planes420<>(View<Vek8u>(), luma, luma, f)); });
  check(vekStsMemAllocErr, "size", [&](Failure& f) { made(Image<Vek32s>({1 << 29, 1}, f)); });

  const Pixels last(bytes, {4, 3}, Bytes(18));
  EXPECT_EQ(last.row(2), bytes + 36);
  EXPECT_EQ(last.rowBytes(), 12);
}

TEST(View, PartsStartWherePixelsDo) {
  Image<Packed<1>> bits({20, 4});
  EXPECT_EQ(bits.rowBytes(), 3);
  EXPECT_EQ(bits.sub({8, 1, 12, 2}).data(), bits.row(1) + 1);
  Failure failure;
  EXPECT_TRUE(bits.sub({4, 0, 8, 1}, failure).empty());
  EXPECT_EQ(failure.status, vekStsBadArgErr);

  Image<Raw10> raw({8, 8});
  EXPECT_EQ(raw.sub({2, 4, 6, 4}).data(), raw.row(4) + 2);
  EXPECT_TRUE(raw.sub({1, 0, 2, 2}, std::nothrow).empty());
  EXPECT_TRUE(raw.rows(1, 2, std::nothrow).empty());
  EXPECT_TRUE(raw.rows(6, 4, std::nothrow).empty());
  const int most = std::numeric_limits<int>::max();
  EXPECT_TRUE(raw.sub({2, 2, most, most}, std::nothrow).empty());

  // Chroma goes along, and an odd last column or row has some of its own.
  Image420 planes({7, 5});
  const Planes420<> part = planes.sub({4, 2, 3, 3});
  EXPECT_EQ(part.cr().data(), planes.cr().row(1) + 2);
  EXPECT_EQ(part.cb().width(), 2);
  EXPECT_EQ(part.cb().height(), 2);
  EXPECT_TRUE(planes.sub({4, 1, 3, 3}, std::nothrow).empty());
  EXPECT_FALSE(Image422({7, 5}).rows(1, 3).empty());
  const ImageNv12 nv12({7, 5});
  EXPECT_EQ(nv12.sub({4, 2, 3, 3}).pairs().data(), nv12.pairs().row(1) + 4);
}

TEST(Image, OwnsAlignedRows) {
  for (const int width : {1, 21, 64, 1365, 4096}) {
    Image<Vek8u, 3> image({width, 3});
    EXPECT_GE(image.stepBytes(), 3 * width);
    EXPECT_EQ(image.stepBytes() % 64, 0);
    EXPECT_NE(image.stepBytes() % 4096, 0);
    EXPECT_EQ(reinterpret_cast<uintptr_t>(image.data()) % 64, 0u);
    std::memset(image.row(2), 7, static_cast<size_t>(image.rowBytes()));

    const Vek8u* const row = image.row(2);
    Image<Vek8u, 3> moved(std::move(image));
    EXPECT_TRUE(image.empty());  // NOLINT(bugprone-use-after-move): that is what is tested
    EXPECT_EQ(moved.row(2), row);
    image = Image<Vek8u, 3>({1, 1});
    image = std::move(moved);
    EXPECT_EQ(image.row(2)[0], 7);
  }
  Image420 planes({6, 4});
  EXPECT_EQ(planes.cr().stepBytes() * 2, planes.y().stepBytes());
  std::memset(planes.y().row(3), 1, 6);
  std::memset(planes.cb().row(1), 2, 3);
  std::memset(planes.cr().row(1), 3, 3);
  EXPECT_EQ(planes.y().row(3)[5] + 10 * planes.cb().row(1)[2] + 100 * planes.cr().row(1)[2], 321);
  const Vek8u* const cr = planes.cr().data();
  Image420 moved(std::move(planes));
  EXPECT_TRUE(planes.empty());  // NOLINT(bugprone-use-after-move)
  EXPECT_EQ(moved.cr().data(), cr);
}

TEST(Errors, AllFormsSayTheSame) {
  Vek8u bytes[4] = {};
  std::error_code code;
  EXPECT_TRUE(View<Vek8u>(bytes, {4, 2}, code).empty());
  EXPECT_EQ(code, std::error_code(vekStsSizeErr, category()));
  EXPECT_EQ(code, std::errc::invalid_argument);
  EXPECT_FALSE(View<Vek8u>(bytes, {2, 2}, code).empty());
  EXPECT_FALSE(code);

  try {
    View<Vek8u>(bytes, {4, 2});
    FAIL() << "nothing was thrown";
  } catch (const Error& error) {
    EXPECT_EQ(error.status(), vekStsSizeErr);
    EXPECT_EQ(error.code(), std::error_code(vekStsSizeErr, category()));
    EXPECT_STREQ(error.text(), vekStatusString(vekStsSizeErr));
    EXPECT_STREQ(error.function(), "View");
    EXPECT_STREQ(error.argument(), "data");
    EXPECT_EQ(std::string(error.what()),
              std::string("vek::View: data has 4 bytes, too few for 2 rows of 4 bytes, 4 bytes "
                          "apart: ") +
                  error.text());
  }
}

TEST(Helpers, SamplingStepsAreAccepted) {
  EXPECT_EQ(samplingSteps({1280, 720}, {640, 360}).x, 131072);
  EXPECT_EQ(samplingSteps({64, 48}, {64, 48}).y, 65536);
  const Image<Vek8u> luma({64, 64});
  for (int from = 2; from <= 64; ++from) {
    for (int to = 2; to <= 64; to += 2) {
      const auto step = samplingSteps({from, from}, {to, to});
      EXPECT_LE((to - 1) * step.x, (from - 1) * 65536) << from << " to " << to;
      const Image420 src({from, from});
      Image420 dst({to, to});
      const Vek8u* const from3[] = {src.y().data(), src.cb().data(), src.cr().data()};
      Vek8u* const to3[] = {dst.y().data(), dst.cb().data(), dst.cr().data()};
      const int srcSteps[] = {src.y().stepBytes(), src.cb().stepBytes(), src.cr().stepBytes()};
      const int dstSteps[] = {dst.y().stepBytes(), dst.cb().stepBytes(), dst.cr().stepBytes()};
      EXPECT_EQ(vekiYCbCr420RszRot_8u_P3R(from3, srcSteps, from, from, to3, dstSteps, to, to, 0, 0,
                                          step.x, step.y),
                0)
          << from << " to " << to;
    }
  }
  EXPECT_EQ(rotated({3, 2}, Rotation::cw90).width, 2);
  EXPECT_EQ(rotated({3, 2}, Rotation::half).width, 3);
  EXPECT_EQ(rawRowBytes(Raw::csi2_10, 5), 10);
  EXPECT_EQ(rawRowBytes(Raw::csi2_14, 4), 7);
}

TEST(Helpers, BandsCoverEveryRowOnce) {
  const auto backwards = [](int jobs, const auto& job) {
    while (jobs-- > 0) job(jobs);
  };
  for (const int rows : {1, 23, 24, 25, 48, 100}) {
    std::vector<int> seen(static_cast<size_t>(rows));
    forBands(
        rows, backwards,
        [&](Band band) {
          EXPECT_EQ(band.first % 24, 0);
          for (int y = 0; y < band.count; ++y) ++seen[static_cast<size_t>(band.first + y)];
        },
        24);
    EXPECT_EQ(std::count(seen.begin(), seen.end(), 1), rows);
  }
  Image420 planes({8, 70});
  forBands(70, [&](Band band) {
    EXPECT_EQ(band.of(planes).cb().data(), planes.cb().row(band.first / 2));
  });
}

}  // namespace
}  // namespace vek::test
