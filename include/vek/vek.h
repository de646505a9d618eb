/** @file vek.h
 *  What every function of the library shares: sample types, geometry records, status values, the
 *  allocator interface, the version records and the division helpers.
 *
 *  Conventions that hold for the whole library unless a function says otherwise:
 *
 *  - A row step is the distance in bytes between the starts of two consecutive rows. Pixel (x, y)
 *    of an image with c interleaved 8-bit channels starts at byte y * step + x * c from the image
 *    pointer. A step may be larger than the row and need not be a multiple of anything; the bytes
 *    between the end of a row and the next row are neither read nor written. A step shorter than
 *    the row is accepted: the rows then overlap, and which of them a byte of a destination that
 *    belongs to several comes from is not defined.
 *  - Every function checks its arguments in the order that its comment gives, before it touches any
 *    data, and returns the status of the first check that fails. Nothing is written on an error.
 *  - Functions of the image sub-library (image.h) answer a null pointer with vekStsNullPtrErr;
 *    functions of the camera sub-library (camera.h) answer every argument fault with
 *    vekStsBadArgErr.
 *  - Sources and destinations must not overlap unless the function says that it works in place.
 *  - No function starts a thread, takes a lock, or keeps global state; functions that take no state
 *    object may run in any number of threads at once on distinct destinations. Only the InitAlloc
 *    functions allocate.
 *  - Results are the same bytes on every processor, overlapping destination rows aside.
 */
#ifndef VEK_VEK_H
#define VEK_VEK_H

#include <stdint.h>

#if defined(__GNUC__) || defined(__clang__)
#define VEK_API __attribute__((visibility("default")))
#else
#define VEK_API
#endif

#ifdef __cplusplus
extern "C" {
#endif

/* ---- Sample and value types, named by the codes that stand in function names ---------------- */

typedef uint8_t Vek8u;
typedef uint16_t Vek16u; /**< also the container of 10-bit raw samples, 0..1023 */
typedef int16_t Vek16s;
typedef int32_t Vek32s;
typedef uint32_t Vek32u;
typedef int64_t Vek64s;
typedef double Vek64f;

/** The planes of a source image: the array of its plane pointers, `Vek8u* planes[3]` or
 *  `const Vek8u* planes[3]`. C, unlike C++, converts neither of the two implicitly to the pointer type
 *  that would say so; a pointer to void takes both without a cast. */
#ifdef __cplusplus
typedef const Vek8u* const* VekConstPlanes;
#else
typedef const void* VekConstPlanes;
#endif

/** Size of a region in pixels (not samples, not bytes). */
typedef struct VekiSize {
  Vek32s width;
  Vek32s height;
} VekiSize;

/** Rectangle in pixels; the measurement windows of the camera functions. */
typedef struct VekiRect {
  Vek32s x;
  Vek32s y;
  Vek32s width;
  Vek32s height;
} VekiRect;

/** Point in pixels; the anchor of the neighbourhood filters. */
typedef struct VekiPoint {
  Vek32s x;
  Vek32s y;
} VekiPoint;

/* ---- Status values -------------------------------------------------------------------------- */

/** Result of a function: 0 is success, a negative value is an error and nothing was written, a
 *  positive value is a warning and the result was produced. It is an int32_t rather than an enum, so
 *  that its size is the same everywhere. */
typedef int32_t VekStatus;

enum {
  vekStsNoErr = 0,                /**< success */
  vekStsNotSupportedModeErr = -2, /**< unsupported selector in a camera resize/rotate function */
  vekStsBadArgErr = -5,        /**< argument out of range; every fault in the camera sub-library */
  vekStsSizeErr = -6,          /**< width, height or length below 1 */
  vekStsCoeffRangeErr = -7,    /**< filter coefficient outside -32768..32767 */
  vekStsNullPtrErr = -8,       /**< a required pointer is null */
  vekStsMemAllocErr = -9,      /**< the allocator returned null */
  vekStsDivisorErr = -13,      /**< divisor below 1 */
  vekStsStepErr = -14,         /**< row step below 1 */
  vekStsFftOrderErr = -15,     /**< FFT order above 10 */
  vekStsContextMatchErr = -17, /**< a state object of another kind */
  vekStsThresholdErr = -18,    /**< lower threshold above the upper one */
  vekStsMirrorFlipErr = -21,   /**< unknown mirror axis */
  vekStsMaskSizeErr = -33,     /**< invalid kernel or mask size */
  vekStsAnchorErr = -34,       /**< anchor outside the kernel */
  vekStsStrideErr = -37,       /**< row step smaller than the row's bytes */
  vekStsSqrtWrn = 3,           /**< an L2 norm does not fit its result */
  vekStsDivByZero = 6,         /**< relative norm against an image of zeros */
  vekStsAeAtLimit = 32,        /**< an exposure control value sits at one of its limits */
  vekStsAwbGainAtLimit = 33,   /**< a white-balance gain sits at the minimum or maximum */
  vekStsAwbNoData = 34         /**< no usable white-balance window; the gains are unchanged */
};

/** Text of a status for logs and error messages: English, in lower case, without a full stop. The
 *  text is constant and never null; values that no function returns give "unknown status". */
VEK_API const char* vekStatusString(VekStatus status);

/* ---- Allocator ------------------------------------------------------------------------------ */

/** Memory for state objects. The library's own definitions use malloc and free. An application
 *  replaces them by defining a whole pair itself, with these prototypes: in a program that links
 *  the shared library its definitions are used instead (symbol interposition), and with the static
 *  library they keep the default ones from being linked.
 *
 *  vekiMalloc serves the camera states and their tables and must return memory aligned to at least
 *  16 bytes on 64-bit targets and 8 bytes on 32-bit targets, or null. A null answer makes the
 *  calling InitAlloc function return vekStsMemAllocErr. vekMalloc serves tagged image states;
 *  no alignment is expected of it. Both Free functions accept null. A size below 1 gives null. */
VEK_API void* vekMalloc(int size);
VEK_API void vekFree(void* ptr);
VEK_API void* vekiMalloc(int size);
VEK_API void vekiFree(void* ptr);

/* ---- Versions ------------------------------------------------------------------------------- */

#define VEK_VERSION_MAJOR 0        /**< of the package that this header belongs to */
#define VEK_VERSION_MINOR 1        /**< raised with additions to the interface */
#define VEK_VERSION_PATCH 0        /**< raised with corrections alone */
#define VEK_VERSION_STRING "0.1.0" /**< the three numbers, for messages */

/** VEK_VERSION_STRING of the library that the program runs with. It differs from the macro if the
 *  program was compiled against the headers of another version. Constant and never null. */
VEK_API const char* vekVersionString(void);

/** Version record of a sub-library. */
typedef struct VekLibraryVersion {
  Vek32s major;
  Vek32s minor;
  Vek32s majorBuild;
  Vek32s build;
  char targetCpu[4]; /**< "x64", "a64", "arm" or "any": the processor that this build is for */
  const char* Name;
  const char* Version;
  const char* BuildDate;
} VekLibraryVersion;

/** Version record of the image sub-library; constant, never null, the same on every call. */
VEK_API const VekLibraryVersion* vekiGetLibVersion(void);

/** Version record of the camera sub-library; constant, never null, the same on every call. */
VEK_API const VekLibraryVersion* _vekGetLibVersion_VekCam(void);

/* ---- CPU levels ----------------------------------------------------------------------------- */

/** Name of a CPU level: "portable" for level 0; above it "avx2" and "avx512" on x86-64, "neon" on
 *  AArch64, if this build has them; null for other numbers. All levels give the same results. */
VEK_API const char* vekLevelName(int level);

/** The level that functions run at if they are called now: the highest of this build that the
 *  processor has, or vekLevelLimit() if that is lower. */
VEK_API int vekLevel(void);

/** The highest level that functions may run at; below 0 counts as 0. The library's own definition
 *  sets no limit (INT_MAX). An application that wants one defines this function itself, as it may
 *  replace a pair of allocator functions. It is called in every call of a function that has levels,
 *  in the same thread. */
VEK_API int vekLevelLimit(void);

/* ---- Division helpers ----------------------------------------------------------------------- */

/** Truncated unsigned division: returns floor(n / d) and stores n mod d through pRem unless it is
 *  null. The 8-bit and 16-bit forms first reduce n and d to their low 8 or 16 bits. A divisor of 0
 *  (after that reduction) gives quotient 0 and remainder n. Nothing is rounded: a caller who wants
 *  rounding adds half the divisor. */
VEK_API unsigned int _vekDiv_8u(unsigned int n, unsigned int d, Vek8u* pRem);
VEK_API unsigned int _vekDiv_16u(unsigned int n, unsigned int d, Vek16u* pRem);
VEK_API Vek32u _vekDiv_32u(Vek32u n, Vek32u d, Vek32u* pRem);

#ifdef __cplusplus
}
#endif

#endif /* VEK_VEK_H */
