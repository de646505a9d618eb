// Raw formats, raw files and what is known about cameras.
#include <cstring>
#include <gtest/gtest.h>

#include "tests/apps/scratch.h"
#include "vekcam/camera_file.h"
#include "vekcam/development.h"
#include "vekcam/failure.h"

namespace vekcam {
namespace {

using test::Scratch;

TEST(RawFormat, HasManyNames) {
  const struct {
    const char* name;
    RawFormat format;
  } cases[] = {{"RG10", {vek::Raw::plain16, 10, vek::Bayer::rggb}},
               {"pBAA", {vek::Raw::csi2_10, 10, vek::Bayer::bggr}},
               {"pgAA", {vek::Raw::csi2_10, 10, vek::Bayer::grbg}},
               {"pGCC", {vek::Raw::csi2_12, 12, vek::Bayer::gbrg}},
               {"BG12", {vek::Raw::plain16, 12, vek::Bayer::bggr}},
               {"BA81", {vek::Raw::bytes, 8, vek::Bayer::bggr}},
               {"BYR2", {vek::Raw::plain16, 16, vek::Bayer::bggr}},
               {"RGGB", {vek::Raw::bytes, 8, vek::Bayer::rggb}},
               {"rggb10", {vek::Raw::plain16, 10, vek::Bayer::rggb}},
               {"gbrg14P", {vek::Raw::csi2_14, 14, vek::Bayer::gbrg}},
               {"SGRBG12_CSI2P", {vek::Raw::csi2_12, 12, vek::Bayer::grbg}},
               {"grbg9", {vek::Raw::plain16, 9, vek::Bayer::grbg}}};
  for (const auto& c : cases) {
    ASSERT_TRUE(rawFormatNamed(c.name)) << c.name;
    EXPECT_EQ(*rawFormatNamed(c.name), c.format) << c.name;
    EXPECT_EQ(*rawFormatNamed(nameOf(c.format)), c.format) << c.name;
  }
  for (const char* name : {"", "rggb", "RG1O", "pbaa", "rggb8p", "rggb17", "rggb7", "rggb10x",
                           "rggb99999999999", "s", "YUYV"}) {
    EXPECT_FALSE(rawFormatNamed(name)) << name;
  }
  EXPECT_EQ(guessOf(2592000, {0, 0}, vek::Bayer::rggb),
            "2,592,000 bytes is packed RAW10 of 1920x1080: --format pRAA --size 1920x1080");
  EXPECT_EQ(guessOf(1000, {0, 0}, vek::Bayer::rggb), "");
}

TEST(CameraFile, SaysWhatItSaid) {
  CameraFile camera;
  camera.format = *rawFormatNamed("pBAA");
  camera.size = {64, 32};
  camera.black = {64, 65, 66, 67};
  camera.dead = {{3, 4}, {31, 63}};
  camera.matrix = {{{{1.5, -.5, 0}}, {{-.25, 1.5, -.25}}, {{0, -.5, 1.5}}}};
  camera.gains = {1.8, 1, 1.25};
  const std::string text = toJson(camera);
  EXPECT_EQ(toJson(parseCamera(text, "x")), text);
  for (const char* fault :
       {"", "[]", "{", "{\"colour\": 1}", "{\"size\": [64]}", "{\"size\": [64, -2]}",
        "{\"size\": [64.5, 2]}", "{\"size\": [64, 32], \"dead\": [[32, 0]]}", "{\"dead\": [[1]]}",
        "{\"dead\": 1}", "{\"black\": [1, 2, 3, \"4\"]}", "{\"black\": [1, 2, 3, 1e9]}",
        "{\"matrix\": [[1, 0, 0], [0, 1, 0], [0, 0, 1e300]]}", "{\"format\": 1}",
        "{\"matrix\": [[1, -1, 0], [0, 1, 0], [0, 0, 1]]}", "{\"gains\": [9, 1, 1]}",
        "{\"gains\": [0, 0, 0]}", "{\"format\": \"MJPG\"}"}) {
    EXPECT_THROW(parseCamera(fault, "x"), Failure) << fault;
  }
}

/// A DNG of one uncompressed strip.
class Dng {
 public:
  std::string file(int width, int height, const std::vector<Vek16u>& samples, int orientation) {
    constexpr int shorts = 3, longs = 4, rationals = 5, signedRationals = 10, bytes = 1, ascii = 2;
    entry(254, longs, {0});
    entry(256, longs, {static_cast<uint32_t>(width)});
    entry(257, longs, {static_cast<uint32_t>(height)});
    entry(258, shorts, {16});
    entry(259, shorts, {1});      // not compressed
    entry(262, shorts, {32803});  // colour filter array
    text(271, ascii, "Maker");
    text(272, ascii, "Model");
    entry(273, longs, {0});  // where the samples begin: known at the end
    entry(274, shorts, {static_cast<uint32_t>(orientation)});
    entry(277, shorts, {1});
    entry(278, longs, {static_cast<uint32_t>(height)});
    entry(279, longs, {static_cast<uint32_t>(2 * width * height)});
    entry(33421, shorts, {2, 2});
    text(33422, bytes, std::string("\2\1\1\0", 4));  // BGGR
    text(50706, bytes, std::string("\1\4\0\0", 4));  // version
    text(50708, ascii, "Maker Model");
    entry(50714, longs, {64});   // black
    entry(50717, longs, {960});  // white
    // From XYZ to the camera's colours: those of sRGB.
    entry(50721, signedRationals,
          {32405, 10000, static_cast<uint32_t>(-15371), 10000, static_cast<uint32_t>(-4985), 10000,
           static_cast<uint32_t>(-9693), 10000, 18760, 10000, 416, 10000, 556, 10000,
           static_cast<uint32_t>(-2040), 10000, 10572, 10000});
    entry(50728, rationals, {1, 2, 1, 1, 2, 3});  // as shot: gains 2, 1, 1.5
    entry(50778, shorts, {21});                   // daylight
    const uint32_t first = 8 + 2 + 12 * count_ + 4;
    std::string out = "II*";
    out += '\0';
    add(out, 8, 4);
    add(out, count_, 2);
    const uint32_t pixels = first + static_cast<uint32_t>(values_.size());
    for (Entry& e : entries_) {
      if (e.tag == 273) e.value = pixels;
      add(out, e.tag, 2);
      add(out, e.type, 2);
      add(out, e.count, 4);
      add(out, e.isOffset ? first + e.value : e.value, 4);
    }
    add(out, 0, 4);
    out += values_;
    for (const Vek16u sample : samples) add(out, sample, 2);
    return out;
  }

 private:
  struct Entry {
    uint32_t tag, type, count, value;
    bool isOffset;
  };

  static void add(std::string& out, uint32_t value, int bytes) {
    for (int i = 0; i < bytes; ++i) out += static_cast<char>(value >> (8 * i) & 255);
  }

  void entry(uint32_t tag, uint32_t type, const std::vector<uint32_t>& values) {
    const int size = type == 3 ? 2 : 4;
    std::string bytes;
    for (const uint32_t v : values) add(bytes, v, size);
    put(tag, type, static_cast<uint32_t>(values.size()) / (type == 5 || type == 10 ? 2 : 1), bytes);
  }

  void text(uint32_t tag, uint32_t type, std::string bytes) {
    if (type == 2) bytes += '\0';
    put(tag, type, static_cast<uint32_t>(bytes.size()), bytes);
  }

  void put(uint32_t tag, uint32_t type, uint32_t count, std::string bytes) {
    ++count_;
    if (bytes.size() <= 4) {
      bytes.resize(4);
      uint32_t value;
      std::memcpy(&value, bytes.data(), 4);
      entries_.push_back({tag, type, count, value, false});
      return;
    }
    entries_.push_back({tag, type, count, static_cast<uint32_t>(values_.size()), true});
    if (bytes.size() % 2 != 0) bytes += '\0';
    values_ += bytes;
  }

  uint32_t count_ = 0;
  std::vector<Entry> entries_;
  std::string values_;
};

TEST(CameraRaw, TellsWhatADngSays) {
  if (libRawVersion().empty()) GTEST_SKIP() << "this build has no LibRaw";
  constexpr int width = 64, height = 48;
  std::vector<Vek16u> samples;
  for (int y = 0; y < height; ++y) {
    for (int x = 0; x < width; ++x) {  // a grey: blue, green, red in proportion 1/1.5, 1, 1/2
      const int light = (x & 1) + (y & 1) == 1 ? 448 : (x & 1) != 0 ? 224 : 299;
      samples.push_back(static_cast<Vek16u>(64 + light));
    }
  }
  samples[0] = 5000;  // above white
  const Scratch scratch;
  const std::string path = scratch.file("a.dng", Dng().file(width, height, samples, 6));
  const RawImage image = readCameraRaw(path);
  const FrameInfo& info = image.info;
  EXPECT_EQ(info.size.width, width);
  EXPECT_EQ(info.size.height, height);
  EXPECT_EQ(info.format, (RawFormat{vek::Raw::plain16, 10, vek::Bayer::bggr}));
  EXPECT_EQ(info.black, (std::array{64, 64, 64, 64}));
  EXPECT_EQ(info.white, 960);
  EXPECT_EQ(info.rotation, vek::Rotation::cw90);
  ASSERT_TRUE(info.asShot);
  EXPECT_NEAR(info.asShot->red, 2, 1e-3);
  EXPECT_NEAR(info.asShot->blue, 1.5, 1e-3);
  ASSERT_TRUE(info.color);
  EXPECT_NEAR(info.color->matrix[0][0], 1, .02);
  EXPECT_NEAR(info.color->matrix[0][1], 0, .02);
  EXPECT_EQ(image.bytes[0] | image.bytes[1] << 8, 960);
  EXPECT_EQ(image.bytes[2] | image.bytes[3] << 8, 512);

  DevelopmentSettings settings;
  settings.curve = vek::ToneCurve::linear;
  vek::Isp isp = makeIsp(withLevels(info, settings), settings, 1);
  vek::Image<vek::Rgb24> picture(isp.outputSize());
  isp.process(info.view(image.bytes), picture);
  // The part that begins on red, turned by a quarter.
  EXPECT_EQ(isp.outputSize().width, height - 2);
  const Vek8u* const pixel = picture.row(20) + 3 * 20;
  for (int i = 0; i < 3; ++i) EXPECT_NEAR(pixel[i], 127, 3) << i;  // 448 of 896
  // Truncated anywhere, it is refused or read, and nothing else.
  const std::string whole = test::contents(path);
  for (const size_t length : {0, 3, 8, 100, 200, 300, 400, 2000, 6400}) {
    const std::string part = scratch.file("part.dng", whole.substr(0, length));
    try {
      readCameraRaw(part);
    } catch (const Failure&) {
    }
  }
}

TEST(Doubts, AreAboutOrderAndLight) {
  // Things are yellow and brown rather than cyan.
  FrameInfo info;
  info.size = {64, 64};
  std::vector<Vek8u> bytes;
  for (int y = 0; y < 64; ++y) {
    for (int x = 0; x < 64; ++x) {
      const int detail = (x / 2 * 7 + y / 2 * 13) % 60;
      const int light = (x & 1) + (y & 1) == 1 ? 400 : (x & 1) != 0 ? 150 : 420;
      bytes.push_back(static_cast<Vek8u>((light + detail) & 255));
      bytes.push_back(static_cast<Vek8u>((light + detail) >> 8));
    }
  }
  vek::IspResults results;
  results.gains = {1, 1, 1};
  results.balanceHasData = true;
  const auto doubts = [&](vek::Bayer order) {
    info.format.order = order;
    const std::vector<std::string> all = doubtsAbout(info, bytes, results, true);
    return all.empty() ? std::string() : all[0];
  };
  EXPECT_EQ(doubts(vek::Bayer::rggb), "");
  EXPECT_NE(doubts(vek::Bayer::bggr).find("exchanged"), std::string::npos);
  EXPECT_NE(doubts(vek::Bayer::grbg).find("RGGB or BGGR"), std::string::npos);
  EXPECT_NE(doubts(vek::Bayer::gbrg).find("RGGB or BGGR"), std::string::npos);
  results.balanceHasData = false;
  EXPECT_NE(doubts(vek::Bayer::rggb).find("tells its light"), std::string::npos);
  bytes[1] |= 8;  // 2048 and more
  EXPECT_NE(doubts(vek::Bayer::rggb).find("samples of 12 bits, and RG10 has 10: --format RG12?"),
            std::string::npos);
}

}  // namespace
}  // namespace vekcam
