// The norm kernels of a level, from its accumulate<Measure, Values, channels>().
#pragma once

#include "image/stat/norm_kernels.h"

namespace vek::VEK_LEVEL {
namespace {

constexpr NormKernel ownNormInf_8u_C1R = accumulate<Largest, Image, 1>;
constexpr NormKernel ownNormInf_8u_C3R = accumulate<Largest, Image, 3>;
constexpr NormKernel ownNormDiffInf_8u_C1R = accumulate<Largest, Difference, 1>;
constexpr NormKernel ownNormDiffInf_8u_C3R = accumulate<Largest, Difference, 3>;
constexpr NormKernel ownNormL1_8u_C1R = accumulate<Sum, Image, 1>;
constexpr NormKernel ownNormL1_8u_C3R = accumulate<Sum, Image, 3>;
constexpr NormKernel ownNormDiffL1_8u_C1R = accumulate<Sum, Difference, 1>;
constexpr NormKernel ownNormDiffL1_8u_C3R = accumulate<Sum, Difference, 3>;
constexpr NormKernel ownNormL2_8u_C1R = accumulate<SumOfSquares, Image, 1>;
constexpr NormKernel ownNormL2_8u_C3R = accumulate<SumOfSquares, Image, 3>;
constexpr NormKernel ownNormDiffL2_8u_C1R = accumulate<SumOfSquares, Difference, 1>;
constexpr NormKernel ownNormDiffL2_8u_C3R = accumulate<SumOfSquares, Difference, 3>;

}  // namespace

constexpr NormKernels normKernels = {
    {ownNormInf_8u_C1R, ownNormInf_8u_C3R}, {ownNormDiffInf_8u_C1R, ownNormDiffInf_8u_C3R},
    {ownNormL1_8u_C1R, ownNormL1_8u_C3R},   {ownNormDiffL1_8u_C1R, ownNormDiffL1_8u_C3R},
    {ownNormL2_8u_C1R, ownNormL2_8u_C3R},   {ownNormDiffL2_8u_C1R, ownNormDiffL2_8u_C3R}};

}  // namespace vek::VEK_LEVEL
