// FFTW has the processor that our levels have. It asks the processor itself for AVX, so that hiding it
// from the program (GLIBC_TUNABLES) would not limit it: these take the place of the functions that ask.
#if __has_include(<sys/platform/x86.h>) && defined(__x86_64__)
#include <sys/platform/x86.h>

extern "C" {

int fftw_have_simd_avx();
int fftwf_have_simd_avx();

int fftw_have_simd_avx() {
  return CPU_FEATURE_ACTIVE(SSE4_2) && CPU_FEATURE_ACTIVE(AVX2) ? 1 : 0;
}
int fftwf_have_simd_avx() {
  return fftw_have_simd_avx();
}

}  // extern "C"

#endif
