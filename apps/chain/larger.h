// Operations that are more than a call of the library, and what works on single channels.
#pragma once

#include "chain/call.h"

namespace chain {

/// One channel of a picture in color.
Gray channel(const Color& picture, int index);
/// Three channels of one size.
Color merged(const std::array<const Gray*, 3>& channels);

/// f(source, destination) for each channel.
template <class F>
Picture byChannels(const Picture& picture, const F& f) {
  const auto once = [&](const Gray& source) {
    Gray result = made<Gray>(source.size());
    f(vek::View<const Vek8u>(source), vek::View<Vek8u>(result));
    return result;
  };
  if (const auto* const gray = std::get_if<Gray>(&picture)) return once(*gray);
  const auto& color = std::get<Color>(picture);
  const Gray red = once(channel(color, 0));
  const Gray green = once(channel(color, 1));
  const Gray blue = once(channel(color, 2));
  return merged({&red, &green, &blue});
}

Picture rotated(Call& call);
Picture transposed(Call& call);
Picture resized(Call& call);
/// The matrix of an affine map, row after row.
using AffineParts = std::array<double, 4>;
AffineParts affineParts(double angle, double scale, double shear);
Picture affine(Call& call);
/// The map from the unit square to four corners, (a u + b v + c) / (g u + h v + 1) and
/// (d u + e v + f) / (g u + h v + 1). Refuses corners of which three lie on one line.
using PerspectiveParts = std::array<double, 8>;
PerspectiveParts perspectiveParts(const std::array<double, 4>& x, const std::array<double, 4>& y);
Picture perspective(Call& call);

Picture spectrum(Call& call);
/// Low or high frequencies alone.
Picture bandPass(const Call& call, bool isLow);
Picture cosineSpectrum(Call& call);
Picture keptCoefficients(Call& call);

}  // namespace chain
