// The program as its user meets it: command lines, messages, exit codes, files.
#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <gtest/gtest.h>
#include <string>
#include <sys/wait.h>

#include "tests/apps/scratch.h"

namespace vekcam::test {
namespace {

namespace fs = std::filesystem;

struct Outcome {
  int code;  ///< -1: it crashed
  std::string out, error;
};

class Program : public testing::Test {
 protected:
  /// Runs `vekcam <arguments>` in the scratch directory; `shell` goes in front.
  Outcome run(const std::string& arguments, const std::string& shell = "") const {
    const std::string out = io_.path("out");
    const std::string error = io_.path("error");
    const std::string command = "cd '" + scratch_.path("") + "' && " + shell +
                                " '" VEKCAM_PROGRAM "' " + arguments + " > " + out + " 2> " + error;
    const int status = std::system(command.c_str());
    return {WIFEXITED(status) && WEXITSTATUS(status) < 126 ? WEXITSTATUS(status) : -1,
            contents(out), contents(error)};
  }

  /// A 64 x 32 frame: grey as a sensor without gains sees it.
  std::string grey() const {
    std::string bytes;
    for (int y = 0; y < 32; ++y) {
      for (int x = 0; x < 64; ++x) {
        const int value = (x & 1) + (y & 1) == 1 ? 400 : (x & 1) ? 320 : 220;
        bytes += static_cast<char>(value & 255);
        bytes += static_cast<char>(value >> 8);
      }
    }
    return bytes;
  }

  Scratch scratch_;
  Scratch io_;
};

TEST_F(Program, AnswersBadInputWithOneLine) {
  scratch_.file("ok.raw", grey());
  scratch_.file("short.raw", grey().substr(0, 4000));
  scratch_.file("long.raw", grey() + "x");
  scratch_.file("noise.raw", std::string(4096, '\xFF'));
  scratch_.file("dead.csv", "1,2\n40,1\n");
  fs::create_symlink("/dev/full", scratch_.path("full.png"));
  scratch_.file("file", "");
  const int files = scratch_.count();

  const std::string size = " --size 64x32 ";
  const std::string good = "develop ok.raw -o out.png" + size;
  const struct {
    std::string arguments;
    const char* says;
  } cases[] = {
      {"", "which command"},
      {good + "--bogus", "--bogus"},
      {"develop --size 64x32 -o out.png", "FILE"},
      {"develop ok.raw -o out.png", "--size"},
      {good + "--rotate 45", "--rotate"},
      {good + "--step 126", "step"},
      {good + "--step 999999999", "step"},
      {good + "--dead dead.csv", "line 2"},
      {"develop none.raw -o out.png" + size, "none.raw"},
      {"develop short.raw -o out.png" + size, "row 31"},
      {"develop - -o out.png" + size + "< short.raw", "standard input is too short"},
      {"develop long.raw -o out.png" + size, "too long"},
      {"develop noise.raw -o out.png" + size, "65535"},
      {"develop ok.raw -o out.png --size 63x32", "odd"},
      {"develop ok.raw -o out.png --size 64x32x1", "WIDTHxHEIGHT"},
      {"develop ok.raw -o out.png --size 0x0", "outside"},
      {"develop ok.raw -o out.png --size 1000000x1000000", "outside"},
      {"develop ok.raw -o out.gif" + size, "out.gif"},
      {"develop ok.raw -o no/out.png" + size, "no/out.png"},
      {"develop ok.raw -o full.png" + size, "No space"},
      {"simulate --frames 0", "--frames"},
      {"simulate --size 65x64", "width 65 is odd"},
      {"simulate --preview 64x2", "height 2 is outside"},
      {"simulate --frames 1 --out file", "file"},
  };
  for (const auto& c : cases) {
    const Outcome outcome = run(c.arguments);
    EXPECT_GT(outcome.code, 0) << c.arguments;
    EXPECT_EQ(outcome.error.rfind("vekcam: ", 0), 0u) << c.arguments << ": " << outcome.error;
    EXPECT_EQ(std::ranges::count(outcome.error, '\n'), 1) << c.arguments << ": " << outcome.error;
    EXPECT_NE(outcome.error.find(c.says), std::string::npos)
        << c.arguments << ": " << outcome.error;
    EXPECT_EQ(outcome.out, "") << c.arguments;
    EXPECT_EQ(scratch_.count(), files) << c.arguments << " left a file";
  }
  const Outcome full = run(good, "trap '' XFSZ; ulimit -f 0;");  // even for the message, so no more
  EXPECT_GT(full.code, 0);
  EXPECT_EQ(scratch_.count(), files);
}

TEST_F(Program, ReportsThatItsWordsWereLost) {
  scratch_.file("ok.raw", grey());
  for (const char* arguments : {"--help", "develop ok.raw --size 64x32 -o out.png"}) {
    const int status = std::system(("cd '" + scratch_.path("") + "' && '" VEKCAM_PROGRAM "' " +
                                    arguments + " > /dev/full 2>&1")
                                       .c_str());
    EXPECT_EQ(WEXITSTATUS(status), 1) << arguments;
  }
}

TEST_F(Program, HelpGoesToStandardOutput) {
  for (const auto& [arguments, word] : {std::pair{"--help", "simulate"},
                                        {"develop --help", "--dead"},
                                        {"--version", "vekcam 0."}}) {
    const Outcome outcome = run(arguments);
    EXPECT_EQ(outcome.code, 0) << arguments;
    EXPECT_EQ(outcome.error, "") << arguments;
    EXPECT_NE(outcome.out.find(word), std::string::npos) << arguments;
  }
}

TEST_F(Program, DevelopsAGreyFrameToGrey) {
  scratch_.file("grey.raw", grey());
  scratch_.file("dead.csv", "row,column\n3,5\n");
  const std::string options =
      " --size 64x32 --rotate 90 --scale 2 --curve linear --dead dead.csv -o ";
  const Outcome outcome = run("develop - < grey.raw" + options + "a.ppm");
  ASSERT_EQ(outcome.code, 0) << outcome.error;
  EXPECT_NE(outcome.out.find("red 1.82, green 1.00, blue 1.25"), std::string::npos) << outcome.out;
  EXPECT_NE(outcome.out.find("raw pipeline"), std::string::npos);
  EXPECT_EQ(outcome.out.find("cropped"), std::string::npos);
  const std::string ppm = contents(scratch_.path("a.ppm"));
  ASSERT_EQ(ppm.substr(0, 13), "P6\n16 32\n255\n");
  for (size_t i = 13; i + 3 <= ppm.size(); i += 3) {
    const auto [low, high] =
        std::minmax({static_cast<unsigned char>(ppm[i]), static_cast<unsigned char>(ppm[i + 1]),
                     static_cast<unsigned char>(ppm[i + 2])});
    ASSERT_LE(high - low, 6) << "byte " << i;
    ASSERT_NEAR(high, 100, 20);  // 400 of 1023 on the linear curve
  }
  EXPECT_NE(run("develop grey.raw --size 64x32 --scale 4 --rotate 270 --step 128 -o a.png").code,
            -1);
  const Outcome cropped = run("develop - --size 60x32 --step 128 --scale 4 -o b.png < grey.raw");
  EXPECT_EQ(cropped.code, 0) << cropped.error;
  EXPECT_NE(cropped.out.find("cropped to the top left 48x32"), std::string::npos) << cropped.out;
  EXPECT_EQ(contents(scratch_.path("b.png")).substr(1, 3), "PNG");
}

TEST_F(Program, SimulatesIntoADirectory) {
  const Outcome outcome =
      run("simulate --frames 3 --size 96x64 --preview 64x64 --rotate 90 --metering histogram --out "
          "x/y");
  ASSERT_EQ(outcome.code, 0) << outcome.error;
  EXPECT_EQ(outcome.error, "");  // the progress bar is for terminals
  for (const char* word :
       {"frames per second", "exposure", "camera path", "colour difference", "report.html"}) {
    EXPECT_NE(outcome.out.find(word), std::string::npos) << word;
  }
  for (const char* file : {"frames/frame_0000.png", "frames/frame_0002.png", "contact_sheet.png"}) {
    EXPECT_EQ(contents(scratch_.path(std::string("x/y/") + file)).substr(1, 3), "PNG") << file;
  }
  EXPECT_FALSE(fs::exists(scratch_.path("x/y/frames/frame_0003.png")));
  EXPECT_NE(contents(scratch_.path("x/y/report.html")).find("</html>"), std::string::npos);
}

}  // namespace
}  // namespace vekcam::test
