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
