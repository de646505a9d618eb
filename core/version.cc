#include "vek/vek.h"

namespace {

#if defined(__x86_64__)
#define VEK_TARGET_CPU "x64"
#elif defined(__aarch64__)
#define VEK_TARGET_CPU "a64"
#elif defined(__arm__)
#define VEK_TARGET_CPU "arm"
#else
#define VEK_TARGET_CPU "any"
#endif

// @quirk Not the package's version: programs compare these records with the interface they know.
constexpr VekLibraryVersion imageVersion = {
    4, 0, 1, 49, VEK_TARGET_CPU, "libvekiq7.a", "v4.0 Beta", "Mar 16 2005"};

constexpr VekLibraryVersion cameraVersion = {
    5, 0, 0, 1, VEK_TARGET_CPU, "vekcam_d.lib", "V5.0 Beta", "Tue Mar 15 09:44:08 2005"};

}  // namespace

extern "C" {

const char* vekVersionString(void) {
  return VEK_VERSION_STRING;
}

const VekLibraryVersion* vekiGetLibVersion(void) {
  return &imageVersion;
}

const VekLibraryVersion* _vekGetLibVersion_VekCam(void) {
  return &cameraVersion;
}

}  // extern "C"
