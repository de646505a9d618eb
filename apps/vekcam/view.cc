#include "vekcam/view.h"

#include <algorithm>
#include <chrono>
#include <filesystem>
#include <thread>
#include <utility>

#include "vekcam/files.h"
#include "vekcam/picture_files.h"
#include "vekcam/viewer.h"

#ifdef VEKCAM_SDL
#include <SDL.h>
#endif

namespace vekcam {

#ifdef VEKCAM_SDL
namespace {

using Clock = std::chrono::steady_clock;

[[noreturn]] void failWith(const char* what) {
  throw Failure(std::string(what) + ": " + SDL_GetError());
}

/// A window that shows the viewer's canvas.
class Window {
 public:
  explicit Window(vek::Size size) {
    SDL_SetHint(SDL_HINT_NO_SIGNAL_HANDLERS, "1");  // control-C ends the program
    if (SDL_Init(SDL_INIT_VIDEO) != 0) failWith("there is no screen to open a window on");
    window_ = SDL_CreateWindow("vekcam view", SDL_WINDOWPOS_CENTERED, SDL_WINDOWPOS_CENTERED,
                               size.width, size.height, 0);
    if (window_ == nullptr) {
      SDL_Quit();
      failWith("cannot open a window");
    }
  }
  ~Window() {
    SDL_DestroyWindow(window_);
    SDL_Quit();
  }
  Window(const Window&) = delete;
  Window& operator=(const Window&) = delete;

  void show(const vek::View<const vek::Bgrx32>& canvas) {
    int width = 0, height = 0;
    SDL_GetWindowSize(window_, &width, &height);
    if (width != canvas.width() || height != canvas.height()) {
      SDL_SetWindowSize(window_, canvas.width(), canvas.height());
    }
    // The surface is only read.
    SDL_Surface* const from = SDL_CreateRGBSurfaceWithFormatFrom(
        const_cast<Vek8u*>(canvas.data()), canvas.width(), canvas.height(), 32, canvas.stepBytes(),
        SDL_PIXELFORMAT_RGB888);
    SDL_Surface* const to = SDL_GetWindowSurface(window_);
    const bool isShown = from != nullptr && to != nullptr &&
                         SDL_BlitSurface(from, nullptr, to, nullptr) == 0 &&
                         SDL_UpdateWindowSurface(window_) == 0;
    SDL_FreeSurface(from);
    if (!isShown) failWith("cannot draw into the window");
  }

  /// What the user has done, told to the viewer; false: the window was closed.
  static bool takeEvents(Viewer& viewer) {
    for (SDL_Event event; SDL_PollEvent(&event) != 0;) {
      switch (event.type) {
        case SDL_QUIT:
          return false;
        case SDL_KEYDOWN:
          viewer.press(keyOf(event.key.keysym.sym));
          break;
        case SDL_MOUSEBUTTONDOWN:
        case SDL_MOUSEBUTTONUP:
          viewer.point({event.button.x, event.button.y}, event.type == SDL_MOUSEBUTTONDOWN);
          break;
        case SDL_MOUSEMOTION:
          viewer.point({event.motion.x, event.motion.y},
                       (event.motion.state & SDL_BUTTON_LMASK) != 0);
          break;
        default:
          break;
      }
    }
    return true;
  }

 private:
  static int keyOf(SDL_Keycode key) {
    switch (key) {
      case SDLK_UP:
        return Viewer::up;
      case SDLK_DOWN:
        return Viewer::down;
      case SDLK_LEFT:
        return Viewer::left;
      case SDLK_RIGHT:
        return Viewer::right;
      case SDLK_ESCAPE:
        return 'Q';
      default:
        return key >= 'a' && key <= 'z' ? key - 'a' + 'A' : key < 256 ? key : 0;
    }
  }

  SDL_Window* window_ = nullptr;
};

void save(const vek::View<const vek::Bgrx32>& canvas, const std::string& path) {
  vek::Image<vek::Bgr24> picture(canvas.size());
  for (int y = 0; y < canvas.height(); ++y) {
    const Vek8u* from = canvas.row(y);
    Vek8u* to = picture.row(y);
    for (int x = 0; x < canvas.width(); ++x, from += 4) to = std::copy_n(from, 3, to);
  }
  writeFile(path, encodePicture(std::as_const(picture).view(), formatOf(path)));
}

std::unique_ptr<FrameSource> sourceOf(const ViewSettings& settings) {
  if (settings.input.empty()) return simulatedSource(settings.frame.size);
  if (std::filesystem::is_directory(settings.input)) {
    return directorySource(settings.input, settings.frame, settings.development);
  }
  return streamSource(settings.input, settings.frame, settings.development);
}

}  // namespace

std::string sdlVersion() {
  SDL_version version;
  SDL_GetVersion(&version);
  return std::to_string(version.major) + "." + std::to_string(version.minor) + "." +
         std::to_string(version.patch);
}

void view(const ViewSettings& settings, const Console& console) {
  const std::string screenshot =
      settings.screenshot.empty() ? "vekcam-view.png" : settings.screenshot;
  formatOf(screenshot);
  Viewer viewer(sourceOf(settings), settings.development.rotation.value_or(vek::Rotation::none),
                settings.development.curve);
  for (const char key : settings.keys) viewer.press(key);
  Window window(viewer.canvas().size());
  const std::chrono::duration<double> period(
      settings.framesPerSecond > 0 ? 1 / settings.framesPerSecond : 0);
  Clock::time_point next = Clock::now();
  const auto isDone = [&] {
    return viewer.isFinished() ||
           (settings.frames > 0 && (viewer.frames() >= settings.frames || viewer.hasEnded()));
  };
  while (!isDone() && Window::takeEvents(viewer)) {
    const bool isTime = Clock::now() >= next;
    if (isTime && viewer.advance()) {
      window.show(viewer.canvas());
      next = std::max(next + std::chrono::duration_cast<Clock::duration>(period), Clock::now());
    } else {
      std::this_thread::sleep_for(std::chrono::milliseconds(2));
    }
    if (viewer.wantsScreenshot()) {
      save(viewer.canvas(), screenshot);
      console.say(screenshot + "\n");
    }
  }
  if (!settings.screenshot.empty()) save(viewer.canvas(), screenshot);
  console.say(std::to_string(viewer.frames()) + " frames\n");
}

#else

std::string sdlVersion() {
  return {};
}

void view(const ViewSettings&, const Console&) {
  throw Failure("this vekcam was built without SDL2 (libsdl2-dev) and has no windows");
}

#endif

}  // namespace vekcam
