// The scene in front of the simulated sensor.
#pragma once

#include <vector>
#include <vek/vek.h>

namespace vekcam {

/// Linear light or reflectance; 1 is a perfect white under a light of level 1.
struct Rgb {
  float r, g, b;
};

/// Reflectances of a test scene (colour patches, gradients, fine detail, text, shaded balls) at the
/// centre of every sample. A 16:9 frame shows it exactly; other shapes see more of the wall.
enum class SceneKind { chart, dark, flat };

struct Scene {
  explicit Scene(VekiSize size, SceneKind kind = SceneKind::chart);

  VekiSize size;
  std::vector<Rgb> reflectance;  ///< rows of size.width
};

/// Of the colour patches, the last six of which are grey, and of the steps of the grey wedge.
constexpr int patchCount = 24;
constexpr int firstGreyPatch = 18;
constexpr int wedgeSteps = 16;

Rgb patchReflectance(int patch);

/// The middle of a patch, or of a step of the wedge, in samples of a scene of this size.
VekiRect patchArea(int patch, VekiSize size);
VekiRect wedgeArea(int step, VekiSize size);

/// Rings whose phase grows with the square of the distance from their centre, about a mean: they show how
/// much contrast detail of each size keeps.
struct Rings {
  double x, y;        ///< centre, in samples
  double radius;      ///< in samples
  double phaseScale;  ///< times the square of the distance, in samples, is the phase
  VekiSize size;      ///< of the scene

  static constexpr double mean = .44, contrast = .40 / mean;  ///< of the rings' light

  explicit Rings(VekiSize size);
};

}  // namespace vekcam
