// Makes the pictures of docs/gallery.md.
// usage: gallery [DIRECTORY]
#include <cstdio>
#include <exception>

#include "picture.h"

int main(int argc, char** argv) {
  using namespace gallery;
  const std::string directory = argc > 1 ? argv[1] : ".";
  const struct {
    const char* name;
    Picture (*make)();
  } pictures[] = {{"fourier", fourierPicture},
                  {"cosine", cosinePicture},
                  {"moments", momentsPicture},
                  {"perspective", perspectivePicture},
                  {"dither", ditherPicture}};
  try {
    for (const auto& [name, make] : pictures) writePng(make(), directory + "/" + name + ".png");
  } catch (const std::exception& error) {
    std::fprintf(stderr, "gallery: %s\n", error.what());
    return 1;
  }
}
