// Automatic exposure of one camera.
#pragma once

#include <array>
#include <memory>
#include <vector>

#include "vekcam/library_call.h"
#include "vekcam/raw_frame.h"
#include "vekcam/sensor.h"

namespace vekcam {

enum class Metering { isp, frame, centre, windows, histogram };
inline constexpr std::array allMeterings = {Metering::isp, Metering::frame, Metering::centre,
                                            Metering::windows, Metering::histogram};

const char* name(Metering metering);

/// The laws of the library's own exposure function: all but Metering::isp.
class Exposure {
 public:
  Exposure(Metering metering, VekiSize size);

  /// Meters the frame and moves the controls for the next one. The exposure time is the
  /// scale-controlled value: it is clamped here, since the library multiplies without a limit. A
  /// frame that is blown out for the histogram starts again from the shortest exposure.
  VekStatus update(const RawFrame& frame, Controls& controls);

  /// The brightness that the metering mode sees, and the band that it keeps it in: a mean of green
  /// samples for the histogram, of the sum of a quad's two greens for the other modes.
  double brightness(const RawFrame& frame) const;
  double low() const { return target_ - margin_; }
  double high() const { return target_ + margin_; }
  bool inBand(double brightness) const { return brightness >= low() && brightness <= high(); }
  double fullScale() const { return metering_ == Metering::histogram ? 1023 : 2046; }

 private:
  double target_, margin_;
  Metering metering_;
  std::vector<VekiRect> windows_;  ///< kept alive for the state
  std::vector<Vek16u> weights_;
  std::unique_ptr<VekiAEState, Releaser<vekiFree_AE_10RGGB_8u_C1R>> state_;
};

}  // namespace vekcam
