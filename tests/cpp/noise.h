// What the tests of the C++ interface share.
#pragma once

#include "vek/vek.hpp"

#include <random>
#include <string>

namespace vek::test {

template <class V, class = void>
constexpr bool isPlanar = false;
template <class V>
constexpr bool isPlanar<V, std::void_t<decltype(V().cb())>> = true;

template <class V>
void fill(const V& view, unsigned seed) {
  if constexpr (isPlanar<V>) {
    fill(view.y(), seed), fill(view.cb(), seed + 1), fill(view.cr(), seed + 2);
  } else {
    std::minstd_rand random(seed);
    for (int y = 0; y < view.height(); ++y) {
      auto* const row = reinterpret_cast<Vek8u*>(view.row(y));
      for (int i = 0; i < view.rowBytes(); ++i) row[i] = static_cast<Vek8u>(random() >> 7);
    }
  }
}

template <class V>
std::string bytes(const V& view) {
  std::string result;
  if constexpr (isPlanar<V>) {
    result = bytes(view.y()) + bytes(view.cb()) + bytes(view.cr());
  } else {
    for (int y = 0; y < view.height(); ++y) {
      result.append(reinterpret_cast<const char*>(view.row(y)),
                    static_cast<size_t>(view.rowBytes()));
    }
  }
  return result;
}

/// An image with something in it.
template <class Image>
Image random(Size of = {37, 22}, unsigned seed = 1) {
  Image image(of);
  fill(image.view(), seed);
  return image;
}

/// The planes and steps of an image as arrays.
template <class Planes>
struct Listed {
  explicit Listed(const Planes& p)
      : data{p.y().data(), p.cb().data(), p.cr().data()},
        steps{p.y().stepBytes(), p.cb().stepBytes(), p.cr().stepBytes()} {}
  decltype(Planes().y().data()) data[3];
  int steps[3];
};

}  // namespace vek::test
