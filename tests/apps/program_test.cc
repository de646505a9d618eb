// The program as its user meets it: command lines, messages, exit codes, files.
#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>
#include <string>
#include <sys/wait.h>

#include "tests/apps/scratch.h"
#include "vekcam/scene.h"
#include "vekcam/sensor.h"

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
  scratch_.file("nothing.dng", "II*");
  scratch_.file("fullhd.raw", std::string(2592000, '\0'));
  fs::create_symlink("/dev/full", scratch_.path("full.png"));
  scratch_.file("file", "");
  scratch_.file("in.ppm", "P6 2 1 255\nabcdef");
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
      {"develop ok.raw -o out.png", "--size is required"},
      {"develop fullhd.raw -o out.png", "--format pRAA --size 1920x1080"},
      {"develop fullhd.raw -o out.png --size 1920x1080",
       "packed RAW10 of 1920x1080: --format pRAA"},
      {good + "--format RG1O", "RG1O is no raw format"},
      {good + "--gains 1,9", "9 is outside"},
      {good + "--matrix 1,2", "9 numbers"},
      {good + "--black 1023", "black level 1023"},
      {good + "--black 64 --white 60", "64 is not below 60"},
      {good + "--white 1024", "white is 1024, not in 64..1023"},
      {good + "--camera dead.csv", "is not JSON"},
      {good + "--level best", "the highest is"},
      {"develop ok.raw ok.raw -o out.png" + size, "a directory"},
      {"develop nothing.dng -o out.png", "cannot read nothing.dng"},
      {"develop . -o out.png --size 1X2X3", "WIDTHxHEIGHT"},
      {"stream ok.raw -o out.avi" + size, "out.avi"},
      {"stream ok.raw --type y4m -o /dev/full" + size, "No space"},
      {"stream short.raw -o out.y4m" + size, "4,000 of the 4,096 bytes of frame 0"},
      {"calibrate -o out.json" + size, "--dark"},
      {"calibrate --chart ok.raw -o out.json" + size, "--corners"},
      {"calibrate --flat noise.raw -o out.json" + size, "too bright"},
      {good + "--rotate 45", "--rotate"},
      {good + "--step 126", "step"},
      {good + "--step 999999999", "step"},
      {good + "--dead dead.csv", "outside"},
      {"develop none.raw -o out.png" + size, "none.raw"},
      {"develop short.raw -o out.png" + size, "has 4,000 bytes; 64x32 of RG10 takes 4,096"},
      {"develop - -o out.png" + size + "< short.raw", "standard input has 4,000 bytes"},
      {"develop long.raw -o out.png" + size, "has 4,097 bytes"},
      {"develop ok.raw -o out.png --size 63x32", "odd"},
      {"develop ok.raw -o out.png --size 64x32x1", "WIDTHxHEIGHT"},
      {"develop ok.raw -o out.png --size 0x0", "outside"},
      {"develop ok.raw -o out.png --size 1000000x1000000", "outside"},
      {"develop ok.raw -o out.gif" + size, "out.gif"},
      {"develop ok.raw -o no/out.png" + size, "no/out.png"},
      {"develop ok.raw -o full.png" + size, "No space"},
      {"apply ok.raw not out.png", "ok.raw is neither PNG"},
      {"apply in.ppm 'not | box 5y5' out.png", "step 2, 'box 5y5': mask: expected WIDTHxHEIGHT"},
      {"apply in.ppm 'add @none.png' out.png", "none.png"},
      {"apply in.ppm not out.gif", "out.gif"},
      {"apply in.ppm not out.pgm", "in color"},
      {"apply in.ppm not full.png", "No space"},
      {"apply in.ppm", "IN CHAIN OUT"},
      {"apply --out d not in.ppm ./in.ppm", "would both become"},
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
      " --size 64X32 --rotate 90 --scale 2 --curve linear --dead dead.csv -o ";
  const Outcome outcome = run("develop - < grey.raw" + options + "a.ppm");
  ASSERT_EQ(outcome.code, 0) << outcome.error;
  EXPECT_NE(outcome.out.find("red 1.82, green 1.00, blue 1.25"), std::string::npos) << outcome.out;
  const std::string ppm = contents(scratch_.path("a.ppm"));
  ASSERT_EQ(ppm.substr(0, 13), "P6\n16 32\n255\n");
  for (size_t i = 13; i + 3 <= ppm.size(); i += 3) {
    const auto [low, high] =
        std::minmax({static_cast<unsigned char>(ppm[i]), static_cast<unsigned char>(ppm[i + 1]),
                     static_cast<unsigned char>(ppm[i + 2])});
    ASSERT_LE(high - low, 6) << "byte " << i;
    ASSERT_NEAR(high, 100, 20);  // 400 of 1023 on the linear curve
  }
  // The same picture by other ways: standard output, the portable level, given gains, the planes.
  const Outcome piped = run("develop grey.raw --level portable" + options + "- --type ppm");
  EXPECT_EQ(piped.out, ppm);
  EXPECT_NE(piped.error.find("standard output"), std::string::npos) << piped.error;
  const Outcome cropped =
      run("develop - --size 60x32 --step 128 --scale 4 --json -o b.PNG < grey.raw");
  EXPECT_EQ(cropped.code, 0) << cropped.error;
  EXPECT_NE(cropped.out.find("48"), std::string::npos) << cropped.out;
  EXPECT_EQ(contents(scratch_.path("b.PNG")).substr(1, 3), "PNG");
  EXPECT_EQ(run("develop grey.raw --size 64x32 --gains 1.8,1.3 -q -o c.y4m").out, "");
  EXPECT_EQ(contents(scratch_.path("c.y4m")).substr(0, 20), "YUV4MPEG2 W64 H32 F2");
}

TEST_F(Program, DevelopsDirectoriesAndGoesOnAfterAFailure) {
  fs::create_directory(scratch_.path("in"));
  for (const char* name : {"in/a.raw", "in/b.raw", "in/c.raw"}) scratch_.file(name, grey());
  scratch_.file("in/b.raw", "short");
  scratch_.file("in/notes.txt", "no frame");
  const Outcome outcome = run("develop in -o out/ --type jpg --size 64x32");
  EXPECT_EQ(outcome.code, 1);
  EXPECT_NE(outcome.error.find("b.raw has 5 bytes"), std::string::npos) << outcome.error;
  EXPECT_NE(outcome.error.find("1 of 3 files"), std::string::npos) << outcome.error;
  EXPECT_EQ(contents(scratch_.path("out/a.jpg")).substr(0, 2), "\xFF\xD8");
  EXPECT_TRUE(fs::exists(scratch_.path("out/c.jpg")));
  EXPECT_FALSE(fs::exists(scratch_.path("out/b.jpg")));
  EXPECT_EQ(run("develop in/a.raw ./in/a.raw -o out/ --size 64x32").code, 2);
}

// However many threads there are, all frames come in their order, with the white balance of one of them.
TEST_F(Program, StreamsFrames) {
  ASSERT_EQ(run("simulate --frames 7 --size 96x64 --preview 64x64 --raw frames.raw --out x").code,
            0);
  std::string first;
  for (const char* threads : {"1", "2", "3"}) {
    const Outcome outcome =
        run("stream frames.raw --size 96x64 --gains 1.8,1.4 --statistics s.jsonl "
            "--threads " +
            std::string(threads));
    ASSERT_EQ(outcome.code, 0) << outcome.error;
    EXPECT_NE(outcome.error.find("7 frames"), std::string::npos) << outcome.error;
    EXPECT_EQ(outcome.out.size(), outcome.out.find('\n') + 1 + 7 * (6 + 96 * 64 * 3 / 2));
    if (first.empty()) first = outcome.out;
    EXPECT_EQ(outcome.out, first) << threads;
    const std::string statistics = contents(scratch_.path("s.jsonl"));
    EXPECT_EQ(std::ranges::count(statistics, '\n'), 7);
  }
  EXPECT_EQ(run("stream frames.raw --size 96x64 --threads 3 -o a.yuv --json").code, 0);
  EXPECT_EQ(fs::file_size(scratch_.path("a.yuv")), 7 * 96 * 64 * 3 / 2);
  EXPECT_EQ(run("stream frames.raw --size 96x64 2>/dev/null | head -c 100").code, 0);
}

TEST_F(Program, CalibratesTheSimulatedCamera) {
  const std::string simulate = "simulate --frames 8 --size 320x180 --preview 160x90 ";
  ASSERT_EQ(run(simulate + "--raw chart.raws --out x").code, 0);
  ASSERT_EQ(run(simulate + "--scene dark --raw dark.raws --out x").code, 0);
  ASSERT_EQ(run(simulate + "--scene flat --raw flat.raws --out x").code, 0);
  for (const char* kind : {"chart", "dark", "flat"}) {  // the last frame: exposure has settled
    const std::string frames = contents(scratch_.path(std::string(kind) + ".raws"));
    scratch_.file(std::string(kind) + ".raw", frames.substr(frames.size() - 320 * 180 * 2));
  }
  std::string reference;
  for (int i = 0; i < patchCount; ++i) {
    const Rgb c = patchReflectance(i);
    reference += std::to_string(c.r) + "," + std::to_string(c.g) + "," + std::to_string(c.b) + "\n";
  }
  scratch_.file("chart.csv", reference);
  // The board is at (0.5, 0.5) and 6.9 x 4.6 of a plane of 16 x 9.
  const Outcome outcome =
      run("calibrate --dark dark.raw --flat flat.raw --chart chart.raw --size 320x180 --json "
          "--corners 10,10,148,10,148,102,10,102 --reference chart.csv -o camera.json");
  ASSERT_EQ(outcome.code, 0) << outcome.error;
  const auto found = nlohmann::json::parse(outcome.out);
  EXPECT_LE(found["colorDifference"]["mean"], 4) << outcome.out;
  EXPECT_EQ(found["black"], nlohmann::json({0, 0, 0, 0}));
  EXPECT_NEAR(found["gains"][0], 1 / .55, .1);
  EXPECT_NEAR(found["gains"][2], 1 / .7, .1);
  for (size_t i = 0; i < 3; ++i) {
    for (size_t j = 0; j < 3; ++j)
      EXPECT_NEAR(found["matrix"][i][j], Sensor::colorCorrection()[i][j], .25) << i << ", " << j;
  }
  // 11 pixels are dead; some read 0, others 1023.
  const int defects =
      static_cast<int>(found["brightInTheDark"]) + static_cast<int>(found["offInLight"]);
  EXPECT_EQ(defects, 11) << outcome.out;
  EXPECT_EQ(run("develop chart.raw --camera camera.json -o out.png").code, 0);
}

TEST_F(Program, TellsAboutItself) {
  EXPECT_NE(run("info").out.find("portable"), std::string::npos);
  EXPECT_NO_THROW(
      EXPECT_EQ(nlohmann::json::parse(run("info --json").out)["levels"][0], "portable"));
  const std::string page = run("--man").out;
  for (const char* word : {".TH VEKCAM 1", "vekcam develop", "\\-\\-quality", "EXIT STATUS"})
    EXPECT_NE(page.find(word), std::string::npos) << word;
  for (const char* shell : {"bash", "zsh", "fish"}) {
    const std::string words = run(std::string("--completion ") + shell).out;
    for (const char* word : {"develop", "quality", "bt709"})
      EXPECT_NE(words.find(word), std::string::npos) << shell << ": " << word;
  }
}

TEST_F(Program, SimulatesIntoADirectory) {
  const Outcome outcome =
      run("simulate --frames 3 --size 96x64 --preview 64x64 --rotate 90 --metering histogram --out "
          "x/y");
  ASSERT_EQ(outcome.code, 0) << outcome.error;
  EXPECT_EQ(outcome.error, "");  // the progress bar is for terminals
  for (const char* word :
       {"frames per second", "exposure", "camera path", "color difference", "report.html"}) {
    EXPECT_NE(outcome.out.find(word), std::string::npos) << word;
  }
  for (const char* file : {"frames/frame_0000.png", "frames/frame_0002.png", "contact_sheet.png"}) {
    EXPECT_EQ(contents(scratch_.path(std::string("x/y/") + file)).substr(1, 3), "PNG") << file;
  }
  EXPECT_FALSE(fs::exists(scratch_.path("x/y/frames/frame_0003.png")));
  EXPECT_EQ(run("simulate --frames 1 --size 96x64 --preview 64x64 --out x/y").code, 0);
  EXPECT_FALSE(fs::exists(scratch_.path("x/y/frames/frame_0002.png"))) << "is of an earlier run";
  EXPECT_NE(contents(scratch_.path("x/y/report.html")).find("</html>"), std::string::npos);
}

TEST_F(Program, AppliesChainsToFiles) {
  scratch_.file("a.ppm", "P6 2 1 255\n\1\2\3\4\5\6");
  scratch_.file("b.ppm", "P6 1 1 255\n\7\7\7");
  const Outcome one = run("apply a.ppm 'add 10 | norm inf' - --format ppm");
  ASSERT_EQ(one.code, 0) << one.error;
  EXPECT_EQ(one.out, "P6\n2 1\n255\n\x0B\x0C\x0D\x0E\x0F\x10");
  EXPECT_NE(one.error.find("norm: 14 15 16"), std::string::npos) << one.error;
  EXPECT_EQ(run("apply - 'sub @in' b.png --digest < a.ppm").code, 0);
  const Outcome several = run("apply --out d --format pgm --json gray a.ppm b.ppm");
  ASSERT_EQ(several.code, 0) << several.error;
  EXPECT_NE(several.out.find(R"("output": "d/b.pgm")"), std::string::npos) << several.out;
  EXPECT_EQ(contents(scratch_.path("d/b.pgm")), "P5\n1 1\n255\n\7");
  // One that fails does not stop the others.
  const Outcome some = run("apply --out e not none.ppm b.ppm");
  EXPECT_EQ(some.code, 1);
  EXPECT_NE(some.error.find("1 of 2 files failed"), std::string::npos) << some.error;
  EXPECT_TRUE(fs::exists(scratch_.path("e/b.ppm")));
  const Outcome list = run("apply --list");
  EXPECT_NE(list.out.find("box MASK [border=replicate|mirror|constant|none]"), std::string::npos);
}

// A window on a screen of its own, with keys as a keyboard sends them.
TEST_F(Program, ShowsFramesInAWindow) {
  const auto hasProgram = [](const std::string& name) {
    return std::system(("command -v " + name + " > /dev/null").c_str()) == 0;
  };
  if (!hasProgram("xvfb-run") || !hasProgram("xdotool")) GTEST_SKIP() << "needs xvfb and xdotool";
  const std::string screen = "env ASAN_OPTIONS=detect_leaks=0 xvfb-run -a ";
  const Outcome shot = run("view --size 320x180 --frames 3 --keys CH --screenshot a.png", screen);
  if (shot.error.find("without SDL2") != std::string::npos) GTEST_SKIP() << shot.error;
  ASSERT_EQ(shot.code, 0) << shot.error;
  EXPECT_NE(run("apply a.png norm --json").out.find(R"("width": 572)"), std::string::npos);
  scratch_.file("keys.sh",
                "'" VEKCAM_PROGRAM
                "' view --size 320x180 --screenshot b.png &\n"
                "window=$(timeout 30 xdotool search --sync --onlyvisible --name 'vekcam view')\n"
                "xdotool mousemove --window $window 20 20 key r sleep 1 key q\n"
                "wait $!\n");
  const int status = std::system(
      ("cd '" + scratch_.path("") + "' && timeout 100 " + screen + "sh keys.sh > log 2>&1")
          .c_str());
  EXPECT_EQ(WEXITSTATUS(status), 0) << contents(scratch_.path("log"));
  EXPECT_NE(run("apply b.png norm --json").out.find(R"("width": 432)"), std::string::npos)
      << contents(scratch_.path("log"));
  EXPECT_NE(run("view none.raw").code, 0);
}

}  // namespace
}  // namespace vekcam::test
