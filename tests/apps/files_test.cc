// Files and pictures.
#include "vekcam/files.h"

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <iterator>
#include <png.h>
#include <sys/resource.h>

#include "tests/apps/scratch.h"
#include "vekcam/picture.h"

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

TEST(RawFile, ReadsRowsAtTheStep) {
  const Scratch scratch;
  // 16 x 2, 34 bytes a row; the last row ends with its samples.
  std::string bytes(66, '\0');
  bytes[2] = '\xFF';  // row 0, sample 1: 1023
  bytes[3] = '\x03';
  bytes[34] = '\x07';  // row 1, sample 0: 7
  bytes[33] = '\x55';  // padding
  for (const char* padding : {"", "\x55\x55"}) {
    const RawFrame frame = readRawFrame(scratch.file("a.raw", bytes + padding), {16, 2}, 34);
    EXPECT_EQ(frame.row(0)[0], 0);
    EXPECT_EQ(frame.row(0)[1], 1023);
    EXPECT_EQ(frame.row(1)[0], 7);
    EXPECT_EQ(frame.row(1)[15], 0);
  }
  bytes[34] = '\0';
  bytes[35] = '\x04';  // 1024, the first sample of more than 10 bits
  EXPECT_THROW(readRawFrame(scratch.file("b.raw", bytes), {16, 2}, 34), Failure);
}

TEST(DeadList, TakesRowsAndColumnsOnly) {
  const Scratch scratch;
  const auto read = [&](const std::string& text) {
    return readDeadPixels(scratch.file("dead.csv", text), {8, 4});
  };
  const std::vector<VekiDeadPixel> list = read("row,column\n# comment\n\n 3 , 7 \r\n0,0");
  ASSERT_EQ(list.size(), 2u);
  EXPECT_EQ(list[0].row, 3);
  EXPECT_EQ(list[0].column, 7);
  for (const char* fault : {"1", "1,", ",1", "1,2,3", "1;2", "a,1", "4,0", "0,8", "-1,0",
                            "99999999999,0", "0,0\nrow,column\n"}) {
    EXPECT_THROW(read(fault), Failure) << fault;
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

TEST(Picture, EncodesWhatItHolds) {
  Picture picture(5, 3);
  for (size_t i = 0; i < picture.bgr.size(); ++i) picture.bgr[i] = static_cast<Vek8u>(37 * i * i);
  const std::string png = encodePng(picture);
  png_image image = {};
  image.version = PNG_IMAGE_VERSION;
  ASSERT_TRUE(png_image_begin_read_from_memory(&image, png.data(), png.size()));
  ASSERT_EQ(image.width, 5u);
  ASSERT_EQ(image.height, 3u);
  image.format = PNG_FORMAT_BGR;
  std::vector<Vek8u> decoded(45);
  ASSERT_TRUE(png_image_finish_read(&image, nullptr, decoded.data(), 0, nullptr));
  EXPECT_EQ(decoded, picture.bgr);

  const std::string ppm = encodePpm(picture);
  ASSERT_EQ(ppm.substr(0, 11), "P6\n5 3\n255\n");
  ASSERT_EQ(ppm.size(), 11u + 45u);
  EXPECT_EQ(static_cast<Vek8u>(ppm[11]), picture.bgr[2]);
  EXPECT_EQ(static_cast<Vek8u>(ppm[55]), picture.bgr[42]);

  const Picture half = reduced(picture, 2);
  ASSERT_EQ(half.width, 2);
  ASSERT_EQ(half.height, 1);
  const int sum = picture.row(0)[6] + picture.row(0)[9] + picture.row(1)[6] + picture.row(1)[9];
  EXPECT_EQ(half.row(0)[3], (sum + 2) / 4);
}

}  // namespace
}  // namespace vekcam
