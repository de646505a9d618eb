// Filters a picture: a PGM or PPM file with 8 bits a sample goes in, one of the same kind comes out.
//   filter_image box|median|sharpen|edges IN.ppm OUT.ppm
#include <cstdio>
#include <fstream>
#include <limits>
#include <stdexcept>
#include <string>
#include <vek/vek.hpp>

namespace {

/// The next number of the header, after blanks and comments.
int number(std::istream& in) {
  while ((in >> std::ws) && in.peek() == '#') in.ignore(std::numeric_limits<int>::max(), '\n');
  int value = -1;
  in >> value;
  return value;
}

template <int channels>
vek::Image<Vek8u, channels> read(std::istream& in, vek::Size size) {
  vek::Image<Vek8u, channels> image(size);
  for (int y = 0; y < size.height; ++y) {
    in.read(reinterpret_cast<char*>(image.row(y)), image.rowBytes());
  }
  return image;
}

template <int channels>
vek::Image<Vek8u, channels> filtered(const vek::Image<Vek8u, channels>& picture,
                                     const std::string& how) {
  // Every filter here looks at 3 x 3 or 5 x 5 pixels, so the picture gets a border of one or two.
  const int border = how == "box" || how == "median" ? 2 : 1;
  const vek::Image<Vek8u, channels> padded =
      vek::pad(picture, {border, border, border, border}, vek::PadBorder::replicate);
  if (how == "box") return vek::filterBox(padded, {5, 5});
  if (how == "median") return vek::filterMedian(padded, {5, 5});
  if (how == "sharpen") {
    const Vek32s kernel[3][3] = {{0, -1, 0}, {-1, 8, -1}, {0, -1, 0}};
    return vek::filter(padded, kernel, 4);
  }
  // What the greatest sample of a neighbourhood is above the least one.
  return vek::sub(vek::dilate(padded), vek::erode(padded));
}

template <int channels>
void run(std::istream& in, vek::Size size, const std::string& how, const char* to) {
  const vek::Image<Vek8u, channels> picture = read<channels>(in, size);
  if (!in) throw std::runtime_error("the file ends before the picture does");
  const vek::Image<Vek8u, channels> result = filtered(picture, how);
  std::ofstream out(to, std::ios::binary);
  out << (channels == 1 ? "P5" : "P6") << '\n' << size.width << ' ' << size.height << "\n255\n";
  for (int y = 0; y < size.height; ++y) {
    out.write(reinterpret_cast<const char*>(result.row(y)), result.rowBytes());
  }
  if (!out.flush()) throw std::runtime_error("the result cannot be written");
}

}  // namespace

int main(int argc, char** argv) {
  const std::string how = argc == 4 ? argv[1] : "";
  if (how != "box" && how != "median" && how != "sharpen" && how != "edges") {
    std::fprintf(stderr, "usage: filter_image box|median|sharpen|edges IN OUT\n");
    return 2;
  }
  try {
    std::ifstream in(argv[2], std::ios::binary);
    std::string magic;
    in >> magic;
    const int width = number(in), height = number(in), most = number(in);
    in.get();
    if (!in || (magic != "P5" && magic != "P6") || most != 255) {
      throw std::runtime_error("this is no PGM or PPM file with 8 bits a sample");
    }
    if (magic == "P5") {
      run<1>(in, {width, height}, how, argv[3]);
    } else {
      run<3>(in, {width, height}, how, argv[3]);
    }
  } catch (const std::exception& error) {  // a vek::Error is one
    std::fprintf(stderr, "filter_image: %s\n", error.what());
    return 1;
  }
  return 0;
}
