#include "vekcam/picture_files.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <charconv>
#include <csetjmp>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <jpeglib.h>
#include <libexif/exif-data.h>
#include <memory>
// After the library's own header, on which it depends.
#include <jerror.h>
#include <png.h>
#include <utility>
#include <vek/vek.hpp>

#include "vekcam/files.h"

namespace vekcam {
namespace {

using vek::Image;
using vek::Rgb24;

template <class Number>
std::string sizeText(Number width, Number height) {
  return std::to_string(width) + "x" + std::to_string(height);
}

/// The size, unless it is none or too large.
vek::Size checkedSize(uint64_t width, uint64_t height, const std::string& name) {
  if (width < 1 || height < 1 || width > largestPictureSide || height > largestPictureSide ||
      width * height > largestPictureArea) {
    throw Failure(name + " is a picture of " + sizeText(width, height) +
                  " pixels; sides are 1 to " + std::to_string(largestPictureSide) +
                  ", and pixels at most " + std::to_string(largestPictureArea));
  }
  return {static_cast<int>(width), static_cast<int>(height)};
}

StoredPicture emptyPicture(vek::Size size, bool isColor) {
  if (isColor) return Image<Rgb24>(size);
  return Image<Vek8u>(size);
}

template <class F>
void withPixels(StoredPicture& picture, F&& use) {
  std::visit([&](auto& image) { use(image.view().data(), image.stepBytes()); }, picture);
}

// PNG

StoredPicture decodePng(std::string_view bytes, const std::string& name) {
  struct Owner {
    ~Owner() { png_image_free(&image); }
    png_image image = {};
  } owner;
  png_image& image = owner.image;
  image.version = PNG_IMAGE_VERSION;
  const auto fail = [&] { throw Failure(name + " is a damaged PNG: " + image.message); };
  if (!png_image_begin_read_from_memory(&image, bytes.data(), bytes.size())) fail();
  const vek::Size size = checkedSize(image.width, image.height, name);
  // Deflate makes at most 1032 bytes of one, and a pixel has one bit at least.
  if (static_cast<uint64_t>(size.width) * static_cast<uint64_t>(size.height) / 8 / 1032 >
      bytes.size()) {
    throw Failure(name + " is incomplete: " + std::to_string(bytes.size()) +
                  " bytes cannot hold a PNG of " + sizeText(image.width, image.height));
  }
  const bool isColor = (image.format & PNG_FORMAT_FLAG_COLOR) != 0;
  image.format = isColor ? PNG_FORMAT_RGB : PNG_FORMAT_GRAY;
  image.flags |= PNG_IMAGE_FLAG_16BIT_sRGB;
  StoredPicture picture = emptyPicture(size, isColor);
  const png_color white = {255, 255, 255};
  bool isComplete = false;
  withPixels(picture, [&](Vek8u* data, int step) {
    isComplete = png_image_finish_read(&image, &white, data, step, nullptr) != 0;
  });
  if (!isComplete) fail();
  return picture;
}

std::string encodePng(const PictureView& picture) {
  png_image image = {};
  image.version = PNG_IMAGE_VERSION;
  image.width = static_cast<png_uint_32>(picture.size().width);
  image.height = static_cast<png_uint_32>(picture.size().height);
  constexpr std::array<png_uint_32, 3> formats = {PNG_FORMAT_GRAY, PNG_FORMAT_RGB, PNG_FORMAT_BGR};
  image.format = formats[static_cast<size_t>(picture.order())];
  image.flags = PNG_IMAGE_FLAG_FAST;  // noise does not compress, whatever the effort
  png_alloc_size_t bytes = PNG_IMAGE_PNG_SIZE_MAX(image);
  std::string png(bytes, '\0');
  if (!png_image_write_to_memory(&image, png.data(), &bytes, 0, picture.row(0), picture.step(),
                                 nullptr)) {
    throw Failure(std::string("cannot encode the picture: ") + image.message);
  }
  png.resize(bytes);
  return png;
}

// JPEG. The library reports errors through a function that must not return: it jumps back to guarded(),
// over frames of the library's and of functions without objects that have destructors.

struct JpegErrors {
  jpeg_error_mgr manager;  // the first member: the library knows this address alone
  std::jmp_buf back;
  char message[JMSG_LENGTH_MAX];
};

JpegErrors& errorsOf(j_common_ptr jpeg) {
  return *reinterpret_cast<JpegErrors*>(jpeg->err);
}

[[noreturn]] void jumpBack(j_common_ptr jpeg) {
  jpeg->err->format_message(jpeg, errorsOf(jpeg).message);
  std::longjmp(errorsOf(jpeg).back, 1);  // NOLINT(cert-err52-cpp): see above
}

/// Warnings are about data that is missing or damaged, which the library replaces by grey; they are
/// errors here, but for those of which the pixels know nothing.
void takeMessage(j_common_ptr jpeg, int level) {
  const int code = jpeg->err->msg_code;
  if (level >= 0 || code == JWRN_EXTRANEOUS_DATA || code == JWRN_JFIF_MAJOR ||
      code == JWRN_ADOBE_XFORM) {
    return;
  }
  jumpBack(jpeg);
}

/// A picture of many progressive scans takes long and says nothing more.
void limitScans(j_common_ptr jpeg) {
  constexpr int mostScans = 200;
  const auto* const reader = reinterpret_cast<j_decompress_ptr>(jpeg);
  if (reader->input_scan_number <= mostScans) return;
  jpeg->err->msg_code = JERR_BAD_PROGRESSION;
  jumpBack(jpeg);
}

void setUp(JpegErrors& errors) {
  jpeg_std_error(&errors.manager);
  errors.manager.error_exit = jumpBack;
  errors.manager.emit_message = takeMessage;
  errors.message[0] = '\0';
}

/// Whether `step`, which calls the library, came to its end.
template <class Step>
bool guarded(JpegErrors& errors, const Step& step) {
  if (setjmp(errors.back) != 0) return false;
  step();
  return true;
}

struct JpegReader {
  JpegReader() { setUp(errors); }
  ~JpegReader() { jpeg_destroy_decompress(&jpeg); }
  JpegReader(const JpegReader&) = delete;
  JpegReader& operator=(const JpegReader&) = delete;

  JpegErrors errors;
  jpeg_decompress_struct jpeg = {};
  jpeg_progress_mgr progress = {limitScans, 0, 0, 0, 0};
};

/// The orientation that the camera has noted in its first application marker: 1 to 8, 1 if there is none.
int orientationOf(const jpeg_decompress_struct& jpeg) {
  const jpeg_marker_struct* const marker = jpeg.marker_list;
  if (marker == nullptr) return 1;
  const std::unique_ptr<ExifData, decltype(&exif_data_unref)> data(
      exif_data_new_from_data(marker->data, marker->data_length), exif_data_unref);
  if (data == nullptr) return 1;
  const ExifEntry* const entry =
      exif_content_get_entry(data->ifd[EXIF_IFD_0], EXIF_TAG_ORIENTATION);
  if (entry == nullptr || entry->format != EXIF_FORMAT_SHORT || entry->size < 2) return 1;
  const int orientation = exif_get_short(entry->data, exif_data_get_byte_order(data.get()));
  return orientation >= 1 && orientation <= 8 ? orientation : 1;
}

/// The picture as it is to be seen. From 5 on, its rows become columns; before that, the sides that are
/// said here are exchanged.
template <class Pixel>
Image<Pixel> upright(const Image<Pixel>& stored, int orientation) {
  const bool isTransposed = orientation >= 5;
  const bool isMirrored = orientation == 2 || orientation == 3 || orientation >= 7;
  const bool isFlipped =
      orientation == 3 || orientation == 4 || orientation == 6 || orientation == 7;
  const int w = stored.width(), h = stored.height();
  constexpr int bytes = std::is_same_v<Pixel, Vek8u> ? 1 : 3;
  Image<Pixel> seen(isTransposed ? vek::Size{h, w} : vek::Size{w, h});
  for (int y = 0; y < seen.height(); ++y) {
    Vek8u* pixel = seen.row(y);
    for (int x = 0; x < seen.width(); ++x, pixel += bytes) {
      const int column = isTransposed ? y : x, row = isTransposed ? x : y;
      const Vek8u* const from = stored.row(isFlipped ? h - 1 - row : row) +
                                bytes * (isMirrored ? w - 1 - column : column);
      std::copy_n(from, bytes, pixel);
    }
  }
  return seen;
}

StoredPicture decodeJpeg(std::string_view bytes, const std::string& name) {
  constexpr long mostMemory = 1L << 30;
  JpegReader reader;
  jpeg_decompress_struct& jpeg = reader.jpeg;
  const auto fail = [&] {
    throw Failure(name + " is a damaged or unusual JPEG: " + reader.errors.message);
  };
  jpeg.err = &reader.errors.manager;
  const bool hasHeader = guarded(reader.errors, [&] {
    jpeg_create_decompress(&jpeg);
    jpeg.mem->max_memory_to_use = mostMemory;
    jpeg.progress = &reader.progress;
    jpeg_mem_src(&jpeg, reinterpret_cast<const unsigned char*>(bytes.data()), bytes.size());
    jpeg_save_markers(&jpeg, JPEG_APP0 + 1, 0xFFFF);
    jpeg_read_header(&jpeg, TRUE);
    jpeg.out_color_space = jpeg.num_components == 1 ? JCS_GRAYSCALE : JCS_RGB;
  });
  if (!hasHeader) fail();
  const int orientation = orientationOf(jpeg);  // the library forgets markers at the end
  StoredPicture picture = emptyPicture(checkedSize(jpeg.image_width, jpeg.image_height, name),
                                       jpeg.out_color_space == JCS_RGB);
  bool isComplete = false;
  withPixels(picture, [&](Vek8u* data, int step) {
    isComplete = guarded(reader.errors, [&] {
      jpeg_start_decompress(&jpeg);
      while (jpeg.output_scanline < jpeg.output_height) {
        JSAMPROW row = data + static_cast<ptrdiff_t>(jpeg.output_scanline) * step;
        jpeg_read_scanlines(&jpeg, &row, 1);
      }
      jpeg_finish_decompress(&jpeg);
    });
  });
  if (!isComplete) fail();
  if (orientation == 1) return picture;
  return std::visit([&](const auto& image) -> StoredPicture { return upright(image, orientation); },
                    picture);
}

struct JpegWriter {
  JpegWriter() { setUp(errors); }
  ~JpegWriter() {
    jpeg_destroy_compress(&jpeg);
    std::free(bytes);
  }
  JpegWriter(const JpegWriter&) = delete;
  JpegWriter& operator=(const JpegWriter&) = delete;

  JpegErrors errors;
  jpeg_compress_struct jpeg = {};
  unsigned char* bytes = nullptr;
  unsigned long count = 0;
};

std::string encodeJpeg(const PictureView& picture, int quality) {
  JpegWriter writer;
  jpeg_compress_struct& jpeg = writer.jpeg;
  jpeg.err = &writer.errors.manager;
  const bool isComplete = guarded(writer.errors, [&] {
    jpeg_create_compress(&jpeg);
    jpeg_mem_dest(&jpeg, &writer.bytes, &writer.count);
    constexpr std::array<J_COLOR_SPACE, 3> orders = {JCS_GRAYSCALE, JCS_EXT_RGB, JCS_EXT_BGR};
    jpeg.in_color_space = orders[static_cast<size_t>(picture.order())];
    jpeg.input_components = picture.order() == PictureView::Order::gray ? 1 : 3;
    jpeg.image_width = static_cast<JDIMENSION>(picture.size().width);
    jpeg.image_height = static_cast<JDIMENSION>(picture.size().height);
    jpeg_set_defaults(&jpeg);
    jpeg_set_quality(&jpeg, quality, TRUE);
    jpeg.optimize_coding = TRUE;
    jpeg_start_compress(&jpeg, TRUE);
    while (jpeg.next_scanline < jpeg.image_height) {
      JSAMPROW row = const_cast<JSAMPROW>(picture.row(static_cast<int>(jpeg.next_scanline)));
      jpeg_write_scanlines(&jpeg, &row, 1);
    }
    jpeg_finish_compress(&jpeg);
  });
  if (!isComplete)
    throw Failure(std::string("cannot encode the picture: ") + writer.errors.message);
  return {reinterpret_cast<const char*>(writer.bytes), writer.count};
}

// PGM and PPM

/// A number of a header, behind white space and comments; -1 if there is none.
int headerNumber(std::string_view bytes, size_t& at) {
  const auto isSpace = [](char c) { return std::isspace(static_cast<unsigned char>(c)) != 0; };
  while (at < bytes.size() && (isSpace(bytes[at]) || bytes[at] == '#')) {
    if (bytes[at] == '#')
      at = std::min(bytes.find('\n', at), bytes.size());
    else
      ++at;
  }
  int value = -1;
  const auto [end, error] = std::from_chars(bytes.data() + at, bytes.data() + bytes.size(), value);
  at = static_cast<size_t>(end - bytes.data());
  return error == std::errc() ? value : -1;
}

StoredPicture decodePnm(std::string_view bytes, const std::string& name) {
  const bool isColor = bytes[1] == '6';
  size_t at = 2;
  const int width = headerNumber(bytes, at);
  const int height = headerNumber(bytes, at);
  const int largest = headerNumber(bytes, at);
  if (width < 0 || height < 0 || largest < 1 || largest > 65535 || at >= bytes.size()) {
    throw Failure(name + " has a damaged PGM or PPM header");
  }
  ++at;  // one white space
  const vek::Size size =
      checkedSize(static_cast<uint64_t>(width), static_cast<uint64_t>(height), name);
  const size_t sampleBytes = largest > 255 ? 2 : 1;
  const size_t rowSamples = static_cast<size_t>(width) * (isColor ? 3 : 1);
  if ((bytes.size() - at) / (rowSamples * sampleBytes) < static_cast<size_t>(height)) {
    throw Failure(name + " is incomplete: " + std::to_string(bytes.size() - at) +
                  " bytes of pixels are too few for " + sizeText(size.width, size.height));
  }
  StoredPicture picture = emptyPicture(size, isColor);
  withPixels(picture, [&](Vek8u* data, int step) {
    for (int y = 0; y < height; ++y) {
      Vek8u* const row = data + static_cast<ptrdiff_t>(y) * step;
      for (size_t i = 0; i < rowSamples; ++i, at += sampleBytes) {
        int value = static_cast<Vek8u>(bytes[at]);
        if (sampleBytes == 2) value = value << 8 | static_cast<Vek8u>(bytes[at + 1]);
        row[i] = static_cast<Vek8u>((std::min(value, largest) * 255 + largest / 2) / largest);
      }
    }
  });
  return picture;
}

std::string encodePnm(const PictureView& picture, bool isColor) {
  const auto [width, height] = picture.size();
  const bool isGray = picture.order() == PictureView::Order::gray;
  std::string bytes = (isColor ? "P6\n" : "P5\n") + std::to_string(width) + " " +
                      std::to_string(height) + "\n255\n";
  bytes.reserve(bytes.size() + static_cast<size_t>(width) * static_cast<size_t>(height) * 3);
  for (int y = 0; y < height; ++y) {
    const auto* const row = reinterpret_cast<const char*>(picture.row(y));
    if (isColor == isGray) {
      for (int x = 0; x < width; ++x) bytes.append(3, row[x]);
    } else if (picture.order() == PictureView::Order::bgr) {
      for (int x = 0; x < 3 * width; x += 3) bytes.append({row[x + 2], row[x + 1], row[x]});
    } else {
      bytes.append(row, static_cast<size_t>(width) * (isColor ? 3 : 1));
    }
  }
  return bytes;
}

}  // namespace

StoredPicture decodePicture(std::string_view bytes, const std::string& name) {
  if (bytes.starts_with("\x89PNG")) return decodePng(bytes, name);
  if (bytes.starts_with("\xFF\xD8\xFF")) return decodeJpeg(bytes, name);
  if (bytes.starts_with("P5") || bytes.starts_with("P6")) return decodePnm(bytes, name);
  throw Failure(name + " is neither PNG nor JPEG nor binary PGM or PPM");
}

StoredPicture readPicture(const std::string& path) {
  constexpr size_t mostBytes = size_t{1} << 30;
  return decodePicture(readFile(path, mostBytes), path == "-" ? "standard input" : path);
}

Image<Rgb24> readColorPicture(const std::string& path) {
  StoredPicture picture = readPicture(path);
  if (auto* const color = std::get_if<Image<Rgb24>>(&picture)) return std::move(*color);
  const Image<Vek8u>& gray = std::get<Image<Vek8u>>(picture);
  Image<Rgb24> color(gray.size());
  for (int y = 0; y < gray.height(); ++y) {
    for (int x = 0; x < gray.width(); ++x) {
      std::fill_n(color.view().row(y) + 3 * static_cast<ptrdiff_t>(x), 3, gray.view().row(y)[x]);
    }
  }
  return color;
}

PictureFormat formatOf(const std::string& path) {
  std::string extension = std::filesystem::path(path).extension().string();
  for (char& c : extension) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
  constexpr std::pair<const char*, PictureFormat> formats[] = {{".png", PictureFormat::png},
                                                               {".jpg", PictureFormat::jpeg},
                                                               {".jpeg", PictureFormat::jpeg},
                                                               {".ppm", PictureFormat::ppm},
                                                               {".pgm", PictureFormat::pgm}};
  for (const auto& [name, format] : formats) {
    if (extension == name) return format;
  }
  throw Failure("output " + path + " does not end in .png, .jpg, .ppm or .pgm");
}

std::string encodePicture(const PictureView& picture, PictureFormat format, int quality) {
  switch (format) {
    case PictureFormat::png:
      return encodePng(picture);
    case PictureFormat::jpeg:
      return encodeJpeg(picture, quality);
    case PictureFormat::ppm:
      return encodePnm(picture, true);
    case PictureFormat::pgm:
      break;
  }
  if (picture.order() != PictureView::Order::gray) {
    throw Failure("a PGM file holds grey pictures, and this one is in color");
  }
  return encodePnm(picture, false);
}

}  // namespace vekcam
