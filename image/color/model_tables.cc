// The exported look-up tables: the values that the kernels use, under their public names.
#include "image/color/model_tables.h"

#include "vek/image.h"

namespace vek::portable {

// The public declarations are plain arrays, which no initialiser can fill from another table; an
// alias gives the computed table the public name and type.
extern "C" {
extern const Table<Vek16s, 512> vekReciprocalsQ14;
constexpr Table<Vek16s, 512> vekReciprocalsQ14 = reciprocalsQ14;
extern const Table<Vek8u, 256> vekLightness;
constexpr Table<Vek8u, 256> vekLightness = lightness;
}

}  // namespace vek::portable

extern "C" {
extern const Vek16s RCP_Q14[512] __attribute__((alias("vekReciprocalsQ14")));
extern const Vek8u RGB_LUV_L_channel[256] __attribute__((alias("vekLightness")));
}
