// Chains of operations: their text, what they compute, and what they answer to nonsense.
#include "chain/chain.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <vek/vek.hpp>

#include "chain/code/code.h"

namespace chain {
namespace {

template <class Image>
Picture noise(vek::Size size, uint32_t seed = 1) {
  Image image(size);
  for (int y = 0; y < size.height; ++y) {
    for (int64_t x = 0; x < image.rowBytes(); ++x) {
      image.row(y)[x] = static_cast<Vek8u>((seed = seed * 1664525 + 1013904223) >> 24);
    }
  }
  return image;
}

const Picture& unknown(const std::string& name) {
  throw std::runtime_error("no " + name);
}

uint64_t digestOf(const std::string& text, Picture picture) {
  std::vector<Figures> figures;
  return digest(run(parse(text), std::move(picture), unknown, figures));
}

/// A value that the parameter accepts.
std::string sample(const std::string& operation, const Parameter& parameter) {
  switch (parameter.kind) {
    case Kind::size:
    case Kind::mask:
      return "3x5";
    case Kind::point:
      return parameter.name[0] == 't' ? (parameter.name[4] == 'l' ? "1,1" : "9,2")
                                      : (parameter.name[7] == 'l' ? "0,8" : "8,9");
    case Kind::picture:
      return "@in";
    case Kind::word:
      return std::string(parameter.words).substr(0, std::string(parameter.words).find('|'));
    case Kind::list:
      return operation == "order"    ? "2,0,1"
             : operation == "twist"  ? "1,2,3,4/5,6,7,8/9,10,11,12"
             : operation == "filter" ? "1,2,1/0,3,0"
             : operation == "pad"    ? "3"
                                     : "1,4,1";
    default:
      return std::to_string(static_cast<int>(std::max(parameter.low, 2.)));
  }
}

// On pictures that are smaller than masks, no multiples of anything, and of either kind. An operation may
// refuse a picture, with its reason, and nothing else.
TEST(Chain, RunsEveryOperation) {
  for (const Operation& operation : operations()) {
    std::string text = operation.name;
    for (const Parameter& parameter : operation.all()) {
      if (parameter.fallback == nullptr) text += " " + sample(operation.name, parameter);
    }
    const Chain chain = parse(text);
    int refused = 0;
    for (const vek::Size size : {vek::Size{1, 1}, {5, 3}, {67, 41}}) {
      for (const bool isColor : {false, true}) {
        std::vector<Figures> figures;
        try {
          run(chain, isColor ? noise<Color>(size) : noise<Gray>(size), unknown, figures);
        } catch (const Error&) {
          ++refused;
        }
        EXPECT_TRUE(figures.size() == (std::string(operation.group) == "figures" ? 1 : 0)) << text;
      }
    }
    // Each operation has its text in each language, without a hole that is left.
    for (const Language language : {Language::c, Language::cpp, Language::python}) {
      const std::string program = code("color | " + text, language, false);
      EXPECT_EQ(program.find('$'), std::string::npos) << program;
      EXPECT_NE(program.find(std::string(operation.group) == "figures" ? "print" : "p2"),
                std::string::npos)
          << program;
    }
    EXPECT_LE(refused, operation.name == std::string("crop") ? 4 : 3) << text;
  }
}

TEST(Chain, PointsAtWhatIsWrong) {
  const struct {
    const char* text;
    size_t position, length;
    const char* says;
  } cases[] = {
      {"gray | box 5y5", 11, 3, "step 2, 'box 5y5': mask: expected WIDTHxHEIGHT"},
      {"", 0, 0, "step 1 is empty"},
      {"not||not", 4, 0, "step 2 is empty"},
      {"not | boxx 3", 6, 4, "is 'box' meant"},
      {"add 1,2", 4, 3, "value: expected a number"},
      {"add 256", 4, 3, "256 is outside 0..255"},
      {"add 1 2 3", 8, 1, "no place for '3' in 'add VALUE [scale=0]'"},
      {"add 1 value=2", 6, 7, "value is given twice"},
      {"box", 0, 3, "mask is missing"},
      {"box 3 border=x", 6, 8, "border: expected replicate, mirror, constant or none"},
      {"filter 1,2/3", 7, 5, "rows of equal lengths"},
      {"add @", 4, 1, "@PICTURE"},
      {"add \"1", 0, 6, "quote"},
      {"affine nan", 7, 3, "angle: expected a number"},
      {"affine 1e5", 7, 3, "angle: expected a number"},
      {"add 99999999999", 4, 11, "expected a number"},
  };
  for (const auto& c : cases) {
    try {
      parse(c.text);
      ADD_FAILURE() << c.text;
    } catch (const Error& error) {
      EXPECT_NE(std::string(error.what()).find(c.says), std::string::npos)
          << c.text << ": " << error.what();
      EXPECT_EQ(error.position(), c.position) << c.text;
      EXPECT_EQ(error.length(), c.length) << c.text;
    }
  }
  for (const auto& [text, says] :
       {std::pair{"gray | to-hsv", "step 2, 'to-hsv': the picture is grey"},
        {"gray | add 1,2,3", "is a color"},
        {"gray|add @in", "@in is in color"},
        {"rotate 90|sub @in", "@in is 12x9, but the picture is 9x12"},
        {"resize 32767x32767", "cannot be made"},
        {"perspective 0,0 1,1 2,2 3,3", "on one line"}}) {
    try {
      digestOf(text, noise<Color>({12, 9}));
      ADD_FAILURE() << text;
    } catch (const Error& error) {
      EXPECT_NE(std::string(error.what()).find(says), std::string::npos)
          << text << ": " << error.what();
    }
  }
}

TEST(Chain, MakesNoProgramOfWhatIsRefused) {
  EXPECT_THROW(code("gray | to-hsv", Language::cpp, true), Error);
  EXPECT_THROW(code("pixels16 rgb565", Language::python, false), Error);
}

// Two ways to the same picture.
TEST(Chain, KeepsWhatIsKnown) {
  const struct {
    const char *one, *other;
  } cases[] = {
      {"copy", "rotate 90 | rotate 270"},
      {"rotate 180", "mirror both"},
      {"rotate 90", "transpose | mirror left-right"},
      {"box 3", "pad 1 | box 3x3 border=none"},
      {"median 5x3 mirror", "pad 2,1,2,1 mirror | median 5x3 none"},
      {"erode 2", "not | dilate | dilate | not"},
      {"filter 1,2,1/2,4,2/1,2,1", "filter 1,2,1/2,4,2/1,2,1 divisor=16"},
      {"threshold 100", "replace-below 100 0 | replace-above 99 255"},
      {"copy", "xor 85 | xor value=85"},
      {"copy", "affine | order 2,1,0 | order 2,1,0"},
      {"copy", "low-pass 512"},
      {"set 128", "low-pass 0 | set 128"},
      {"sub @in", "set 0"},
      {"copy", "resize 120x81 nearest | resize 40x27 nearest"},
      {"copy", "mul-scale 0 | add @in"},
      {"channel 1", "order 1,1,1 | gray 0,16384,0"},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(digestOf(c.one, noise<Color>({40, 27})), digestOf(c.other, noise<Color>({40, 27})))
        << c.one << " and " << c.other;
  }
  // A digest that another program can be compared with: 2 x 1 x 1, samples 1 and 2.
  Gray small({2, 1});
  small.row(0)[0] = 1, small.row(0)[1] = 2;
  uint64_t expected = 0xCBF29CE484222325;
  for (const int byte : {2, 0, 0, 0, 1, 0, 0, 0, 1, 0, 0, 0, 1, 2}) {
    expected = (expected ^ static_cast<uint64_t>(byte)) * 0x100000001B3;
  }
  EXPECT_EQ(digest(std::move(small)), expected);
}

TEST(Chain, MeasuresInItsOwnOrder) {
  Gray gray({3, 2});
  for (int y = 0; y < 2; ++y) std::fill_n(gray.row(y), 3, static_cast<Vek8u>(20 * (y + 1)));
  std::vector<Figures> figures;
  run(parse("norm l1 | add 5 | norm-diff @in inf | norm-rel @in l1 | moments spatial"),
      std::move(gray), unknown, figures);
  ASSERT_EQ(figures.size(), 4u);
  EXPECT_EQ(figures[0].channels[0][0], 180);
  EXPECT_EQ(figures[1].step, 2u);
  EXPECT_EQ(figures[1].channels[0][0], 5);
  EXPECT_NEAR(figures[2].channels[0][0], 30. / 180, 1e-4);
  EXPECT_EQ(figures[3].labels[2], "m01");
  EXPECT_EQ(figures[3].channels[0][0], 210);
  EXPECT_EQ(figures[3].channels[0][2], 3 * 45);
}

}  // namespace
}  // namespace chain
