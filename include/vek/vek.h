/** @file vek.h
 *  What every function of the library shares: sample types, geometry records, status values, the
 *  allocator interface, versions and the division helpers.
 *
 *  These conventions hold for the whole library unless a function says otherwise:
 *
 *  - A row step is the distance in bytes between the starts of two consecutive rows. In an image
 *    with c interleaved 8-bit channels, pixel (x, y) starts at byte y * step + x * c from the image
 *    pointer. A step may be larger than the row and need not be a multiple of anything. The bytes
 *    between the end of a row and the start of the next one are neither read nor written. A step
 *    shorter than the row is accepted, and the rows then overlap. A destination byte that belongs
 *    to several rows holds what one of them wrote; which one is not defined.
 *  - Every function checks its arguments in the order that its comment gives, before it touches any
 *    data, and returns the status of the first check that fails. After an error nothing has been
 *    written.
 *  - Functions of the image sub-library (image.h) answer a null pointer with vekStsNullPtrErr.
 *    Functions of the camera sub-library (camera.h) answer every argument fault with
 *    vekStsBadArgErr.
 *  - Sources and destinations must not overlap unless the function says that it works in place.
 *    Images need no alignment unless the function asks for it.
 *  - No function starts a thread, takes a lock, or keeps global state. A function that takes no
 *    state object may run in any number of threads at once as long as their destinations are
 *    distinct. Only the InitAlloc functions allocate memory.
 *  - Results are the same bytes on every processor, except where destination rows overlap.
 *
 *  A comment in these headers that is marked as a quirk describes behaviour that looks like a fault
 *  and is intended: callers depend on it, and the same word marks the place in the code. */
#ifndef VEK_VEK_H
#define VEK_VEK_H

#include <stdint.h>

/** Marks what the shared library exports. */
#if defined(__GNUC__) || defined(__clang__)
#define VEK_API __attribute__((visibility("default")))
#else
#define VEK_API
#endif

#ifdef __cplusplus
extern "C" {
#endif

/** @defgroup types Sample types, planes and geometry
 *  The sample types are named by the codes that stand in function names.
 *  @{ */

typedef uint8_t Vek8u;   /**< a sample of 0..255 */
typedef uint16_t Vek16u; /**< a 16-bit pixel, or a 10-bit raw sample of 0..1023 */
typedef int16_t Vek16s;  /**< a signed 16-bit number */
typedef int32_t Vek32s;  /**< a signed 32-bit number */
typedef uint32_t Vek32u; /**< an unsigned 32-bit number */
typedef int64_t Vek64s;  /**< a signed 64-bit number; reserved, no function takes one yet */
typedef double Vek64f;   /**< a double */

/** The planes of a source image: an array of plane pointers, declared `Vek8u* planes[3]` or `const
 *  Vek8u* planes[3]`. Both are passed without a cast. C++ converts them to the pointer type that
 *  says so. C converts neither of them to it, and so the parameter is a pointer to void there; mind
 *  that a C compiler then accepts any other pointer, too. The binary interface is the same. */
#ifdef __cplusplus
typedef const Vek8u* const* VekConstPlanes;
#else
typedef const void* VekConstPlanes;
#endif

/** Size of a region in pixels (not in samples or bytes). */
typedef struct VekiSize {
  Vek32s width;  /**< pixels in a row */
  Vek32s height; /**< rows */
} VekiSize;

/** Rectangle in pixels, for the measurement windows of the camera functions and the destination of
 *  warps. */
typedef struct VekiRect {
  Vek32s x;      /**< column of the top left pixel */
  Vek32s y;      /**< row of the top left pixel */
  Vek32s width;  /**< pixels in a row */
  Vek32s height; /**< rows */
} VekiRect;

/** Point in pixels, for the anchor of the neighbourhood filters. */
typedef struct VekiPoint {
  Vek32s x; /**< column */
  Vek32s y; /**< row */
} VekiPoint;

/** @} */
/** @defgroup status Status values
 *  @{ */

/** Result of a function: 0 is success, a negative value is an error and nothing was written, a
 *  positive value is a warning and the result was produced. It is an int32_t rather than an enum,
 *  so that its size is the same everywhere. */
typedef int32_t VekStatus;

/** The values of a VekStatus. Each function's comment says which of them it returns. Those marked
 *  as reserved are returned by no function of this version. */
enum VekStatusValue {
  vekStsNoErr = 0,                /**< success */
  vekStsNotSupportedModeErr = -2, /**< a selector has an unsupported value */
  vekStsBadArgErr = -5,        /**< camera sub-library: any argument fault, null pointers included;
                                       image sub-library: a number is out of its range */
  vekStsSizeErr = -6,          /**< a width, height or length is below 1, or below 2 for the
                                       kernels of the convolutions; mirrors and gamma answer steps
                                       below 1 with it as well */
  vekStsCoeffRangeErr = -7,    /**< a filter coefficient is outside -32768..32767, or those of a
                                       warp are singular, too large or not finite */
  vekStsNullPtrErr = -8,       /**< image sub-library: a required pointer is null */
  vekStsMemAllocErr = -9,      /**< the allocator returned null */
  vekStsDivisorErr = -13,      /**< the divisor of a convolution is below 1 */
  vekStsStepErr = -14,         /**< a row step is below 1 */
  vekStsFftOrderErr = -15,     /**< an order of a Fourier transform is outside 0..10 */
  vekStsContextMatchErr = -17, /**< a state object is of another kind */
  vekStsThresholdErr = -18,    /**< the lower threshold is above the upper one */
  vekStsMirrorFlipErr = -21,   /**< the mirror axis is unknown */
  vekStsMaskSizeErr = -33,     /**< the size of a filter mask is not supported */
  vekStsAnchorErr = -34,       /**< the anchor lies outside the mask or kernel */
  vekStsStrideErr = -37,       /**< a row step is smaller than the bytes of a row, where
                                       rows must not overlap */
  vekStsSqrtWrn = 3,           /**< an L2 norm did not fit its result and was limited to the
                                       largest one */
  vekStsDivByZero = 6,         /**< a relative norm was taken against an image of zeros; the
                                       result is the largest one. Or moments of an image of zeros
                                       were normalized; the results are 0 */
  vekStsAeAtLimit = 32,        /**< an exposure control value sits at one of its limits */
  vekStsAwbGainAtLimit = 33,   /**< a white-balance gain sits at its minimum or maximum */
  vekStsAwbNoData = 34         /**< no white-balance window could be used; the gains stay */
};

/** Text of a status for logs and error messages: English, in lower case, without a full stop. The
 *  text is constant and never null. Values that no VekStatusValue names give "unknown status". */
VEK_API const char* vekStatusString(VekStatus status);

/** @} */
/** @defgroup allocator Allocator
 *  Memory for state objects. The library's own definitions use malloc and free. An application
 *  replaces them by defining a whole pair itself, with these prototypes. In a program that links
 *  the shared library its definitions are used instead (symbol interposition); with the static
 *  library they keep the default ones from being linked.
 *  @{ */

/** Takes memory for the states of the image sub-library. A replacement may return memory of any
 *  alignment, or null, which makes the calling InitAlloc function return vekStsMemAllocErr. The
 *  default returns null for a size below 1. */
VEK_API void* vekMalloc(int size);

/** Releases memory of vekMalloc; null is accepted. */
VEK_API void vekFree(void* ptr);

/** Takes memory for the states of the camera sub-library and their tables. A replacement returns
 *  memory that is aligned to at least 16 bytes on 64-bit targets and 8 bytes on 32-bit targets, or
 *  null, which makes the calling InitAlloc function return vekStsMemAllocErr. The default returns
 *  null for a size below 1. */
VEK_API void* vekiMalloc(int size);

/** Releases memory of vekiMalloc; null is accepted. */
VEK_API void vekiFree(void* ptr);

/** @} */
/** @defgroup versions Versions
 *  @{ */

#define VEK_VERSION_MAJOR 0        /**< of the package that this header belongs to */
#define VEK_VERSION_MINOR 2        /**< raised with additions to the interface */
#define VEK_VERSION_PATCH 0        /**< raised with corrections alone */
#define VEK_VERSION_STRING "0.2.0" /**< the three numbers, for messages */

/** VEK_VERSION_STRING of the library that the program runs with. It differs from the macro if the
 *  program was compiled against the headers of another version. Constant and never null. */
VEK_API const char* vekVersionString(void);

/** Version record of a sub-library.
 *
 *  @quirk The records are not the version of this package. They name the interface that the
 *  functions of a sub-library follow: 4.0 for the image sub-library, 5.0 for the camera
 *  sub-library. Programs compare these numbers and texts before they use the functions, so that all
 *  fields but targetCpu stay what they are from release to release. VEK_VERSION_STRING and
 *  vekVersionString name the package. */
typedef struct VekLibraryVersion {
  Vek32s major;          /**< 4 (image) or 5 (camera) */
  Vek32s minor;          /**< 0 */
  Vek32s majorBuild;     /**< 1 (image) or 0 (camera) */
  Vek32s build;          /**< 49 (image) or 1 (camera) */
  char targetCpu[4];     /**< "x64", "a64", "arm" or "any": the processor that this build is for */
  const char* Name;      /**< name of the sub-library */
  const char* Version;   /**< the version as a text */
  const char* BuildDate; /**< the date that belongs to the version, not that of this build */
} VekLibraryVersion;

/** Version record of the image sub-library. Constant, never null, the same on every call. */
VEK_API const VekLibraryVersion* vekiGetLibVersion(void);

/** Version record of the camera sub-library. Constant, never null, the same on every call. */
VEK_API const VekLibraryVersion* _vekGetLibVersion_VekCam(void);

/** @} */
/** @defgroup levels CPU levels
 *  A level is a set of instructions that the library has kernels for. All levels give the same
 *  results.
 *  @{ */

/** Name of a CPU level: "portable" for level 0; above it "sse4", "avx2" and "avx512" on x86-64,
 *  "neon" on ARM and "simd128" in WebAssembly, if this build has them. Null for other numbers. The
 *  number of a level is that of this build: a later one may have more levels below it. */
VEK_API const char* vekLevelName(int level);

/** The level that functions run at if they are called now: the highest of this build that the
 *  processor has, or vekLevelLimit() if that is lower. */
VEK_API int vekLevel(void);

/** The highest level that functions may run at; below 0 counts as 0. The library's own definition
 *  sets no limit (INT_MAX). An application that wants one defines this function itself, as it may
 *  replace a pair of allocator functions. It is called in every call of a function that has levels,
 *  in the same thread. */
VEK_API int vekLevelLimit(void);

/** @} */
/** @defgroup division Division helpers
 *  @{ */

/** @name Truncated division
 *  @{ */
/** Truncated unsigned division. Returns floor(n / d) and stores n mod d through pRem unless pRem is
 *  null. The 8-bit and 16-bit forms first reduce n and d to their low 8 or 16 bits. A divisor of 0
 *  (after that reduction) gives the quotient 0 and the remainder n. Nothing is rounded: a caller
 *  who wants rounding adds half the divisor to n. */
VEK_API unsigned int _vekDiv_8u(unsigned int n, unsigned int d, Vek8u* pRem);
VEK_API unsigned int _vekDiv_16u(unsigned int n, unsigned int d, Vek16u* pRem);
VEK_API Vek32u _vekDiv_32u(Vek32u n, Vek32u d, Vek32u* pRem);
/** @} */

/** @} */

#ifdef __cplusplus
}
#endif

#endif /* VEK_VEK_H */
