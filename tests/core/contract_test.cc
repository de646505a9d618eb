// The numbers that programs rely on without naming them: they are part of the binary interface.
#include "vek/camera.h"
#include "vek/image.h"

#include <gtest/gtest.h>
#include <set>
#include <string>

namespace {

struct Constant {
  int actual, expected;
  const char* name;
};

TEST(Contract, StatusValuesAndTheirTexts) {
  const Constant statuses[] = {{vekStsNoErr, 0, "NoErr"},
                               {vekStsNotSupportedModeErr, -2, "NotSupportedModeErr"},
                               {vekStsBadArgErr, -5, "BadArgErr"},
                               {vekStsSizeErr, -6, "SizeErr"},
                               {vekStsCoeffRangeErr, -7, "CoeffRangeErr"},
                               {vekStsNullPtrErr, -8, "NullPtrErr"},
                               {vekStsMemAllocErr, -9, "MemAllocErr"},
                               {vekStsDivisorErr, -13, "DivisorErr"},
                               {vekStsStepErr, -14, "StepErr"},
                               {vekStsFftOrderErr, -15, "FftOrderErr"},
                               {vekStsContextMatchErr, -17, "ContextMatchErr"},
                               {vekStsThresholdErr, -18, "ThresholdErr"},
                               {vekStsMirrorFlipErr, -21, "MirrorFlipErr"},
                               {vekStsMaskSizeErr, -33, "MaskSizeErr"},
                               {vekStsAnchorErr, -34, "AnchorErr"},
                               {vekStsStrideErr, -37, "StrideErr"},
                               {vekStsSqrtWrn, 3, "SqrtWrn"},
                               {vekStsDivByZero, 6, "DivByZero"},
                               {vekStsAeAtLimit, 32, "AeAtLimit"},
                               {vekStsAwbGainAtLimit, 33, "AwbGainAtLimit"},
                               {vekStsAwbNoData, 34, "AwbNoData"}};
  std::set<std::string> texts = {"unknown status"};
  std::set<int> values;
  for (const Constant& status : statuses) {
    EXPECT_EQ(status.actual, status.expected) << status.name;
    const std::string text = vekStatusString(status.expected);
    EXPECT_TRUE(texts.insert(text).second) << status.name << ": " << text;
    EXPECT_EQ(text.rfind("warning: ", 0) == 0, status.expected > 0) << status.name;
    values.insert(status.expected);
  }
  for (int value = -100; value <= 100; ++value) {
    if (values.count(value) != 0) continue;
    EXPECT_STREQ(vekStatusString(value), "unknown status") << value;
  }
  EXPECT_STREQ(vekStatusString(INT32_MIN), "unknown status");
  EXPECT_STREQ(vekStatusString(INT32_MAX), "unknown status");
}

TEST(Contract, Selectors) {
  const Constant selectors[] = {{vekiAEHistogram, 0, "AEHistogram"},
                                {vekiAEWholeFrame, 1, "AEWholeFrame"},
                                {vekiAEFiveZones, 2, "AEFiveZones"},
                                {vekiAECentre, 3, "AECentre"},
                                {vekiAECallerWindows, 4, "AECallerWindows"},
                                {vekiAWBGrayWorld, 0, "AWBGrayWorld"},
                                {vekiAWBWhitePoints, 1, "AWBWhitePoints"},
                                {vekiGammaModeCurve, 0, "GammaModeCurve"},
                                {vekiGammaModeTable, 1, "GammaModeTable"},
                                {vekiGammaCurveLinear, 0, "GammaCurveLinear"},
                                {vekiGammaCurveStandard, 1, "GammaCurveStandard"},
                                {vekiFilterModeDemosaic, 2, "FilterModeDemosaic"},
                                {vekiFilterModeReduce, 3, "FilterModeReduce"},
                                {vekiChroma422, 8, "Chroma422"},
                                {vekiChroma420, 9, "Chroma420"},
                                {vekiRotNone, 0, "RotNone"},
                                {vekiRot90Ccw, 1, "Rot90Ccw"},
                                {vekiRot90Cw, 2, "Rot90Cw"},
                                {vekiRot180, 3, "Rot180"},
                                {vekiMirrorLeftRight, 4, "MirrorLeftRight"},
                                {vekiMirrorTopBottom, 5, "MirrorTopBottom"},
                                {vekiInterpolateNearest, 0, "InterpolateNearest"},
                                {vekiInterpolateLinear, 1, "InterpolateLinear"},
                                {vekiCsc420RGB565, 4, "Csc420RGB565"},
                                {vekiCsc420RGB555, 5, "Csc420RGB555"},
                                {vekiCsc420RGB444, 6, "Csc420RGB444"},
                                {vekiCsc420BGR24, 7, "Csc420BGR24"},
                                {vekiCsc422RGB565, 0, "Csc422RGB565"},
                                {vekiCsc422RGB555, 1, "Csc422RGB555"},
                                {vekiCsc422RGB444, 2, "Csc422RGB444"},
                                {vekiCsc422BGR24, 3, "Csc422BGR24"},
                                {vekiReduceFirst, 0, "ReduceFirst"},
                                {vekiReduceAverage, 1, "ReduceAverage"},
                                {vekiCscC2RGB565, 0, "CscC2RGB565"},
                                {vekiCscC2RGB555, 1, "CscC2RGB555"},
                                {vekiMask3x3, 33, "Mask3x3"},
                                {vekiMask5x5, 55, "Mask5x5"},
                                {vekiMirrorHorizontalAxis, 0, "MirrorHorizontalAxis"},
                                {vekiMirrorVerticalAxis, 1, "MirrorVerticalAxis"},
                                {vekiMirrorBothAxes, 2, "MirrorBothAxes"},
                                {vekiRaw8, 0, "Raw8"},
                                {vekiRawPlain16, 1, "RawPlain16"},
                                {vekiRawCsi2_10, 2, "RawCsi2_10"},
                                {vekiRawCsi2_12, 3, "RawCsi2_12"},
                                {vekiRawCsi2_14, 4, "RawCsi2_14"},
                                {vekiBayerRGGB, 0, "BayerRGGB"},
                                {vekiBayerGRBG, 1, "BayerGRBG"},
                                {vekiBayerGBRG, 2, "BayerGBRG"},
                                {vekiBayerBGGR, 3, "BayerBGGR"},
                                {vekiBorderConstant, 0, "BorderConstant"},
                                {vekiBorderReplicate, 1, "BorderReplicate"},
                                {vekiBorderMirror, 2, "BorderMirror"},
                                {vekiBorderTransparent, 2, "BorderTransparent"},
                                {vekiWarpForward, 0, "WarpForward"},
                                {vekiWarpInverse, 1, "WarpInverse"},
                                {vekiWarpNearest, 0, "WarpNearest"},
                                {vekiWarpLinear, 1, "WarpLinear"},
                                {vekiWarpCubic, 2, "WarpCubic"}};
  for (const Constant& selector : selectors) {
    EXPECT_EQ(selector.actual, selector.expected) << selector.name;
  }
}

TEST(Contract, PackageVersion) {
  EXPECT_STREQ(vekVersionString(), VEK_PROJECT_VERSION);
  EXPECT_STREQ(VEK_VERSION_STRING, VEK_PROJECT_VERSION);
  EXPECT_EQ(std::to_string(VEK_VERSION_MAJOR) + "." + std::to_string(VEK_VERSION_MINOR) + "." +
                std::to_string(VEK_VERSION_PATCH),
            VEK_PROJECT_VERSION);
}

TEST(Contract, VersionRecordsOfTheSubLibraries) {
  const VekLibraryVersion& image = *vekiGetLibVersion();
  EXPECT_EQ(image.major, 4);
  EXPECT_EQ(image.minor, 0);
  EXPECT_EQ(image.majorBuild, 1);
  EXPECT_EQ(image.build, 49);
  EXPECT_STREQ(image.Name, "libvekiq7.a");
  EXPECT_STREQ(image.Version, "v4.0 Beta");
  EXPECT_STREQ(image.BuildDate, "Mar 16 2005");
  const VekLibraryVersion& camera = *_vekGetLibVersion_VekCam();
  EXPECT_EQ(camera.major, 5);
  EXPECT_EQ(camera.minor, 0);
  EXPECT_EQ(camera.majorBuild, 0);
  EXPECT_EQ(camera.build, 1);
  EXPECT_STREQ(camera.Name, "vekcam_d.lib");
  EXPECT_STREQ(camera.Version, "V5.0 Beta");
  EXPECT_STREQ(camera.BuildDate, "Tue Mar 15 09:44:08 2005");
#if defined(__x86_64__)
  const char* const targetCpu = "x64";
#elif defined(__aarch64__)
  const char* const targetCpu = "a64";
#elif defined(__arm__)
  const char* const targetCpu = "arm";
#else
  const char* const targetCpu = "any";
#endif
  EXPECT_STREQ(image.targetCpu, targetCpu);
  EXPECT_STREQ(camera.targetCpu, targetCpu);
}

}  // namespace
