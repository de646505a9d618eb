// Cosine transforms of blocks inside libjpeg-turbo, which gives no access to them alone: all of encoding and
// decoding a grey picture at quality 100. The picture is smooth, so that Huffman codes, which are no part
// of our work, cost least.
#include <cstdio>
#include <cstdlib>
#include <jpeglib.h>
#include <memory>
#include <vector>

#include "bench/support.h"

namespace vek::bench {
namespace {

/// A compressor or a decompressor with its memory, kept between pictures. The library ends the program
/// where a call fails.
template <class Jpeg, void (*destroy)(Jpeg*)>
struct Handle {
  Handle() { jpeg.err = jpeg_std_error(&errors); }
  ~Handle() { destroy(&jpeg); }
  Handle(const Handle&) = delete;
  Handle& operator=(const Handle&) = delete;

  Jpeg jpeg = {};
  jpeg_error_mgr errors = {};
};
using Compressor = Handle<jpeg_compress_struct, jpeg_destroy_compress>;
using Decompressor = Handle<jpeg_decompress_struct, jpeg_destroy_decompress>;

/// Rows of a ramp, and where each begins.
struct Picture {
  explicit Picture(VekiSize size)
      : size(size), pixels(static_cast<size_t>(size.width) * static_cast<size_t>(size.height)) {
    for (int y = 0; y < size.height; ++y) {
      rows.push_back(pixels.data() + static_cast<size_t>(y) * static_cast<size_t>(size.width));
      for (int x = 0; x < size.width; ++x) rows.back()[x] = static_cast<JSAMPLE>((x + y) / 16);
    }
  }

  VekiSize size;
  std::vector<JSAMPLE> pixels;
  std::vector<JSAMPROW> rows;
};

/// Encodes the picture and returns the bytes in use of `file`, which is taken again if it is large enough.
unsigned long encode(jpeg_compress_struct& jpeg, Picture& picture, std::vector<Vek8u>& file) {
  Vek8u* bytes = file.data();
  unsigned long used = file.size();
  jpeg_mem_dest(&jpeg, &bytes, &used);
  jpeg.image_width = static_cast<JDIMENSION>(picture.size.width);
  jpeg.image_height = static_cast<JDIMENSION>(picture.size.height);
  jpeg.input_components = 1;
  jpeg.in_color_space = JCS_GRAYSCALE;
  jpeg_set_defaults(&jpeg);
  jpeg_set_quality(&jpeg, 100, TRUE);
  jpeg_start_compress(&jpeg, TRUE);
  while (jpeg.next_scanline < jpeg.image_height) {
    jpeg_write_scanlines(&jpeg, &picture.rows[jpeg.next_scanline],
                         jpeg.image_height - jpeg.next_scanline);
  }
  jpeg_finish_compress(&jpeg);
  if (bytes != file.data()) std::abort();  // it did not fit, and time went into growing
  return used;
}

void decode(jpeg_decompress_struct& jpeg, const std::vector<Vek8u>& file, unsigned long used,
            Picture& picture) {
  jpeg_mem_src(&jpeg, file.data(), used);
  jpeg_read_header(&jpeg, TRUE);
  jpeg_start_decompress(&jpeg);
  while (jpeg.output_scanline < jpeg.output_height) {
    jpeg_read_scanlines(&jpeg, &picture.rows[jpeg.output_scanline],
                        jpeg.output_height - jpeg.output_scanline);
  }
  jpeg_finish_decompress(&jpeg);
}

Call encoder(VekiSize size) {
  const auto made = std::make_shared<Compressor>();
  jpeg_create_compress(&made->jpeg);
  const auto picture = std::make_shared<Picture>(size);
  const auto file = std::make_shared<std::vector<Vek8u>>(2 * picture->pixels.size() + 65536);
  return [=] { encode(made->jpeg, *picture, *file); };
}

Call decoder(VekiSize size) {
  const auto picture = std::make_shared<Picture>(size);
  const auto file = std::make_shared<std::vector<Vek8u>>(2 * picture->pixels.size() + 65536);
  Compressor once;
  jpeg_create_compress(&once.jpeg);
  const unsigned long used = encode(once.jpeg, *picture, *file);
  const auto made = std::make_shared<Decompressor>();
  jpeg_create_decompress(&made->jpeg);
  return [=] { decode(made->jpeg, *file, used, *picture); };
}

[[maybe_unused]] const bool registered = [] {
  addPeer("vekiBlockDCTFwd_16s_C1R", "libjpeg-turbo", encoder);
  addPeer("vekiBlockDCTInv_16s_C1R", "libjpeg-turbo", decoder);
  return true;
}();

}  // namespace
}  // namespace vek::bench
