// What the programs that work in bands have in common: a picture, and what is done to it.
#pragma once

#include <cstdio>
#include <vek/vek.hpp>

/// Makes 4:2:0 of a picture in bands that `executor` runs, and all at once, and compares.
template <class Executor>
int sameInBands(const Executor& executor) {
  const vek::Size size = {1280, 722};
  vek::Image<vek::Rgb24> picture(size);
  for (int y = 0; y < size.height; ++y) {
    for (int i = 0; i < 3 * size.width; ++i) picture.row(y)[i] = static_cast<Vek8u>(i * y / 7);
  }

  vek::Image420 inBands(size);
  vek::forBands(size.height, executor,
                [&](vek::Band band) { vek::rgbToYuv(band.of(picture), band.of(inBands)); });

  const vek::Image420 atOnce = vek::rgbToYuv<vek::Image420>(picture);
  const bool same = vek::normDiffL1(inBands.y(), atOnce.y()) == 0 &&
                    vek::normDiffL1(inBands.cb(), atOnce.cb()) == 0 &&
                    vek::normDiffL1(inBands.cr(), atOnce.cr()) == 0;
  std::puts(same ? "the same picture" : "another picture");
  return same ? 0 : 1;
}
