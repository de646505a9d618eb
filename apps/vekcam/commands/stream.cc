#include "vekcam/stream.h"

#include <memory>

#include "vekcam/commands/commands.h"
#include "vekcam/commands/options.h"
#include "vekcam/develop.h"
#include "vekcam/parallel.h"

namespace vekcam {

void addStream(CLI::App& program, Console& console) {
  CLI::App& app =
      addCommand(program, console, "stream", "Make a video of a sequence of raw frames");
  app.footer(
      "The frames follow each other without anything between them. White balance follows the "
      "light\n"
      "unless --gains are given, and how the exposure should change is told. Every thread has a\n"
      "frame in flight.\n"
      "\n"
      "  v4l2-ctl --stream-mmap --stream-to=- | vekcam stream --size 1920x1080 --format pRAA | mpv "
      "-\n"
      "  rpicam-raw -t 0 -o - --mode 1920:1080:10:P | vekcam stream --size 1920x1080 \\\n"
      "      --format pBAA --step 2432 | mpv -\n"
      "  vekcam stream frames.raw --size 1920x1080 --format RG10 | ffmpeg -i - video.mkv\n"
      "  vekcam stream frames.raw --size 1920x1080 -o planes.yuv\n"
      "  mpv --demuxer=rawvideo --demuxer-rawvideo-w=1920 --demuxer-rawvideo-h=1080 planes.yuv");
  struct State {
    StreamSettings settings;
    DevelopmentFiles files;
    std::string type;
  };
  const auto state = std::make_shared<State>();
  StreamSettings& settings = state->settings;
  settings.threads = coreCount();
  app.add_option("FILE", settings.input, "Raw frames; - is standard input, the default")
      ->type_name("");
  app.add_option("-o,--output", settings.output,
                 "A .y4m or .yuv file; - is standard output, the default")
      ->type_name("OUT");
  app.add_option("--type", state->type,
                 "y4m, or yuv for planes of 4:2:0 alone [that of the extension; y4m]")
      ->check(CLI::IsMember({"y4m", "yuv"}))
      ->type_name("TYPE");
  app.add_option("--fps", settings.framesPerSecond, "Frames per second that players are told")
      ->check(CLI::Range(.001, 100000.))
      ->type_name("N")
      ->capture_default_str();
  app.add_option("--frames", settings.frames, "Stop after so many frames")
      ->check(CLI::Range(1, 1 << 30))
      ->type_name("N");
  app.add_option("--threads", settings.threads, "Frames in flight [one a core]")
      ->check(CLI::Range(1, 256))
      ->type_name("N");
  app.add_option("--statistics", settings.statistics,
                 "A file for a line of JSON about each frame: brightness, gains")
      ->type_name("FILE");
  addFrame(app, settings.frame, settings.isFormatGiven);
  addDevelopment(app, settings.development, state->files);
  addLevel(app);
  addJson(app, settings.json);
  app.callback([state, &console] {
    StreamSettings& s = state->settings;
    readFiles(state->files, s.development, s.frame, s.isFormatGiven);
    if (s.frame.size.width == 0) throw UsageError("--size is required");
    const auto kind = outputKindNamed(!state->type.empty() || s.output == "-"
                                          ? (state->type.empty() ? "y4m" : state->type)
                                          : s.output.substr(s.output.find_last_of('.') + 1));
    if (kind != OutputKind::y4m && kind != OutputKind::yuv) {
      throw UsageError("output " + s.output +
                       " ends neither in .y4m nor in .yuv, and there is no --type");
    }
    s.isY4m = kind == OutputKind::y4m;
    console.resultsToError = s.output == "-";
    stream(s, console);
  });
}

}  // namespace vekcam
