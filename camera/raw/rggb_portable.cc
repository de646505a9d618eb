#include "camera/raw/map_body.h"
#include "camera/raw/rggb_body.h"

namespace vek::portable {

constexpr RggbKernels rggbKernels = {
    mapSamples,
    {_veki10RGGBToYCbCrRot_8u_P3R_Margin<ChromaShare::row>,
     _veki10RGGBToYCbCrRot_8u_P3R_Margin<ChromaShare::column>,
     _veki10RGGBToYCbCrRot_8u_P3R_Margin<ChromaShare::block>},
    {quadRow<ChromaShare::row>, quadRow<ChromaShare::column>, quadRow<ChromaShare::block>}};

}  // namespace vek::portable
