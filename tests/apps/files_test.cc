// Files and pictures.
#include "vekcam/files.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <iterator>
#include <png.h>
#include <string_view>
#include <sys/resource.h>
#include <vek/vek.hpp>

#include "tests/apps/scratch.h"
#include "vekcam/picture.h"
#include "vekcam/picture_files.h"

namespace {
bool refusesToRename = false;
}

/// The C library's, which std::filesystem calls, but for a file system that refuses.
extern "C" int rename(const char* from, const char* to) noexcept {
  if (!refusesToRename) return renameat(AT_FDCWD, from, AT_FDCWD, to);
  errno = EIO;
  return -1;
}

namespace vekcam {
namespace {

namespace fs = std::filesystem;
using test::contents;
using test::Scratch;

TEST(DeadList, TakesRowsAndColumnsOnly) {
  const std::vector<VekiDeadPixel> list =
      parseDeadPixels("row,column\n# comment\n\n 3 , 7 \r\n0,0", "dead.csv");
  ASSERT_EQ(list.size(), 2u);
  EXPECT_EQ(list[0].row, 3);
  EXPECT_EQ(list[0].column, 7);
  for (const char* fault :
       {"1", "1,", ",1", "1,2,3", "1;2", "a,1", "-1,0", "99999999999,0", "0,0\nrow,column\n"}) {
    EXPECT_THROW(parseDeadPixels(fault, "dead.csv"), Failure) << fault;
  }
}

TEST(Output, ReplacesFilesWholeOrNotAtAll) {
  const Scratch scratch;
  const std::string target = scratch.file("out.bin", "old");
  fs::create_symlink(target, scratch.path("link.bin"));
  writeFile(scratch.path("link.bin"), "new");
  EXPECT_TRUE(fs::is_symlink(scratch.path("link.bin")));
  EXPECT_EQ(contents(target), "new");

  // A disk with no room left: files may hold 1000 bytes.
  std::signal(SIGXFSZ, SIG_IGN);
  rlimit before;
  getrlimit(RLIMIT_FSIZE, &before);
  const rlimit full = {1000, before.rlim_max};
  setrlimit(RLIMIT_FSIZE, &full);
  EXPECT_THROW(writeFile(target, std::string(5000, 'x')), Failure);
  EXPECT_THROW(writeFile(scratch.path("other.bin"), std::string(5000, 'x')), Failure);
  setrlimit(RLIMIT_FSIZE, &before);
  refusesToRename = true;
  EXPECT_THROW(writeFile(target, "x"), Failure);
  refusesToRename = false;
  EXPECT_EQ(contents(target), "new");
  EXPECT_EQ(scratch.count(), 2);  // the target and the link

  EXPECT_THROW(writeFile(scratch.path("no/such/directory"), "x"), Failure);
  EXPECT_THROW(writeFile(scratch.path("."), "x"), Failure);
  fs::create_symlink("/dev/full", scratch.path("full"));
  EXPECT_THROW(writeFile(scratch.path("full"), "x"), Failure);
  EXPECT_TRUE(fs::is_symlink(scratch.path("full")));
}

/// A picture of gentle slopes, which a JPEG keeps.
vek::Image<vek::Rgb24> slopes(vek::Size size) {
  vek::Image<vek::Rgb24> image(size);
  for (int y = 0; y < size.height; ++y) {
    for (int x = 0; x < size.width; ++x) {
      Vek8u* const rgb = image.view().row(y) + 3 * x;
      rgb[0] = static_cast<Vek8u>(4 * x), rgb[1] = static_cast<Vek8u>(200 - 3 * y), rgb[2] = 90;
    }
  }
  return image;
}

int largestDifference(const vek::Image<vek::Rgb24>& a, const StoredPicture& stored) {
  const auto& b = std::get<vek::Image<vek::Rgb24>>(stored);
  if (a.width() != b.width() || a.height() != b.height()) return 256;
  const std::array<Vek32s, 3> most = vek::normDiffInf<3>(a, b);
  return std::ranges::max(most);
}

TEST(Picture, ComesBackFromEveryFormat) {
  const Scratch scratch;
  const vek::Image<vek::Rgb24> color = slopes({47, 31});
  const vek::Image<Vek8u> gray = vek::rgbToGray(color);
  for (const char* name : {"a.PNG", "a.ppm", "a.jpg", "a.JPEG"}) {
    writeFile(scratch.path(name), encodePicture(color.view(), formatOf(name), 98));
    EXPECT_LE(largestDifference(color, readPicture(scratch.path(name))),
              std::tolower(name[2]) == 'j' ? 6 : 0)
        << name;
  }
  for (const char* name : {"a.png", "a.PGM", "a.jpg"}) {
    const StoredPicture back = decodePicture(encodePicture(gray.view(), formatOf(name), 98), name);
    const auto* const image = std::get_if<vek::Image<Vek8u>>(&back);
    ASSERT_NE(image, nullptr) << name;
    EXPECT_LE(vek::normDiffInf<1>(gray, *image), 4) << name;
  }
  // Grey as PPM has equal channels; the same bytes in the other order exchange red and blue.
  const StoredPicture ppm = decodePicture(encodePicture(gray.view(), PictureFormat::ppm), "");
  EXPECT_EQ(vek::rgbToGray(std::get<vek::Image<vek::Rgb24>>(ppm)).view().row(9)[5],
            gray.view().row(9)[5]);
  const vek::View<const vek::Bgr24> exchanged{vek::View<const Vek8u, 3>(color)};
  for (const PictureFormat format : {PictureFormat::png, PictureFormat::ppm}) {
    const StoredPicture back = decodePicture(encodePicture(exchanged, format), "");
    EXPECT_EQ(largestDifference(color, decodePicture(encodePicture(color.view(), format), "")), 0);
    const Vek8u* const pixel = std::get<vek::Image<vek::Rgb24>>(back).view().row(2) + 3 * 7;
    EXPECT_EQ((std::array{pixel[0], pixel[1], pixel[2]}), (std::array<Vek8u, 3>{90, 194, 28}));
  }
  EXPECT_THROW(encodePicture(color.view(), PictureFormat::pgm), Failure);
  EXPECT_THROW(formatOf("a.gif"), Failure);
}

TEST(Picture, ReadsOtherDepthsAndPalettes) {
  using namespace std::string_literals;
  // 16 bits, the second sample above the largest; comments in the header.
  const auto pgm = decodePicture("P5 #x\n2\n#y\n1 1000\n\x01\xF4\xFF\xFF"s, "");
  EXPECT_EQ(std::get<vek::Image<Vek8u>>(pgm).view().row(0)[0], 128);
  EXPECT_EQ(std::get<vek::Image<Vek8u>>(pgm).view().row(0)[1], 255);

  png_image image = {};
  image.version = PNG_IMAGE_VERSION;
  image.width = 2;
  image.height = 1;
  image.format = PNG_FORMAT_RGBA_COLORMAP;
  image.colormap_entries = 2;
  const Vek8u palette[] = {200, 10, 20, 255, 1, 2, 3, 0};  // the second is transparent
  std::string png(1000, '\0');
  png_alloc_size_t bytes = png.size();
  ASSERT_TRUE(png_image_write_to_memory(&image, png.data(), &bytes, 0, "\0\1", 0, palette));
  const auto colors = decodePicture(png.substr(0, bytes), "");
  const Vek8u* const row = std::get<vek::Image<vek::Rgb24>>(colors).view().row(0);
  EXPECT_EQ(std::vector(row, row + 6), (std::vector<Vek8u>{200, 10, 20, 255, 255, 255}));
}

/// Where the stored picture's first pixel and the last one of its first row are to be seen.
struct Corners {
  int first[2], last[2];  // right?, bottom?
};

TEST(Picture, IsTurnedAsItsCameraSays) {
  vek::Image<Vek8u> stored({24, 16});
  for (int y = 0; y < 16; ++y) {
    for (int x = 0; x < 24; ++x) stored.row(y)[x] = static_cast<Vek8u>(5 * x + 8 * y);
  }
  const std::string jpeg = encodePicture(stored.view(), PictureFormat::jpeg, 100);
  constexpr Corners corners[] = {{{0, 0}, {1, 0}}, {{1, 0}, {0, 0}}, {{1, 1}, {0, 1}},
                                 {{0, 1}, {1, 1}}, {{0, 0}, {0, 1}}, {{1, 0}, {1, 1}},
                                 {{1, 1}, {1, 0}}, {{0, 1}, {0, 0}}};
  for (char orientation = 0; orientation <= 9; ++orientation) {
    SCOPED_TRACE(int{orientation});
    // An application marker of one big-endian directory of one short number.
    std::string exif(
        "\xFF\xE1\0\x22"
        "Exif\0\0"
        "MM\0*\0\0\0\x8"
        "\0\1"
        "\1\x12\0\3\0\0\0\1\0o\0\0"
        "\0\0\0\0",
        36);
    exif[exif.find('o')] = orientation;
    const auto seen =
        std::get<vek::Image<Vek8u>>(decodePicture(jpeg.substr(0, 2) + exif + jpeg.substr(2), "x"));
    const bool isNone = orientation < 1 || orientation > 8;
    const Corners& at = corners[isNone ? 0 : orientation - 1];
    const bool isTransposed = orientation >= 5 && !isNone;
    ASSERT_EQ(seen.width(), isTransposed ? 16 : 24);
    const auto corner = [&](const int(&place)[2]) {
      return seen.row(place[1] * (seen.height() - 1))[place[0] * (seen.width() - 1)];
    };
    EXPECT_NEAR(corner(at.first), 0, 3);
    EXPECT_NEAR(corner(at.last), 5 * 23, 3);
  }
}

TEST(Picture, RefusesWhatIsDamagedOrEnormous) {
  const vek::Image<vek::Rgb24> color = slopes({64, 48});
  for (const PictureFormat format : {PictureFormat::png, PictureFormat::jpeg, PictureFormat::ppm}) {
    const std::string whole = encodePicture(color.view(), format);
    for (const size_t count : {size_t{3}, whole.size() / 3, whole.size() - 20}) {
      EXPECT_THROW(decodePicture(whole.substr(0, count), "x"), Failure) << count;
    }
  }
  std::string png = encodePicture(color.view(), PictureFormat::png);
  png[18] = 127;  // 32576 columns or so: more than so few bytes can hold
  EXPECT_THROW(decodePicture(png, "x"), Failure);
  std::string jpeg = encodePicture(color.view(), PictureFormat::jpeg);
  const size_t frame = jpeg.find("\xFF\xC0");
  ASSERT_NE(frame, jpeg.npos);
  jpeg[frame + 5] = jpeg[frame + 7] = '\xFF';
  for (const std::string& bytes :
       {jpeg, std::string("P5 40000 1 255\n"), std::string("P6 32767 32767 255\n"),
        std::string("P6 99999999999 1 255\n"), std::string("GIF89a"), std::string()}) {
    try {
      decodePicture(bytes, "x.png");
      FAIL();
    } catch (const Failure& failure) {
      EXPECT_EQ(std::string_view(failure.what()).substr(0, 6), "x.png ") << failure.what();
    }
  }
}

TEST(Picture, ReducesByMeans) {
  Picture picture(5, 3);
  for (size_t i = 0; i < picture.bgr.size(); ++i) picture.bgr[i] = static_cast<Vek8u>(37 * i * i);

  const Picture half = reduced(picture, 2);
  ASSERT_EQ(half.width, 2);
  ASSERT_EQ(half.height, 1);
  const int sum = picture.row(0)[6] + picture.row(0)[9] + picture.row(1)[6] + picture.row(1)[9];
  EXPECT_EQ(half.row(0)[3], (sum + 2) / 4);
}

}  // namespace
}  // namespace vekcam
