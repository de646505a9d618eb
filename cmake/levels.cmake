# CPU levels: vek_sources() adds what every target runs, vek_level_sources() adds kernel sources that
# are compiled once more for each higher level, each time into that level's namespace (VEK_LEVEL).
include(CheckCXXSourceCompiles)
include(CheckIncludeFileCXX)
set(vek_highway_include "")
if(EMSCRIPTEN AND EXISTS /usr/include/hwy/highway.h)
  # Beside Highway's headers are those of the system that compiles.
  set(vek_highway_include ${PROJECT_BINARY_DIR}/highway)
  file(MAKE_DIRECTORY ${vek_highway_include})
  file(CREATE_LINK /usr/include/hwy ${vek_highway_include}/hwy SYMBOLIC)
endif()
set(CMAKE_REQUIRED_INCLUDES ${vek_highway_include})
check_include_file_cxx(hwy/highway.h VEK_HIGHWAY_FOUND)
unset(CMAKE_REQUIRED_INCLUDES)

# The one list of levels. Of each level above portable:
#   VEK_FLAGS_      the compiler's flags
#   VEK_FEATURES_   the features to ask the processor for, by glibc's names: exactly those that the
#                   flags allow beyond the baseline (tests/invariants/objects.sh)
#   VEK_MASK_       what makes glibc hide the level and those above it (GLIBC_TUNABLES)
#   VEK_VECTORS_    what its vector registers look like in a disassembly
#   VEK_QEMU_       QEMU's processor whose highest level it is, or VEK_BOCHS_ that of Bochs, which is slower
set(VEK_LEVELS "")
set(VEK_LEVELS_BECAUSE "")
set(VEK_CPU_DETECTION static)
if(NOT VEK_USE_HIGHWAY)
  set(VEK_LEVELS_BECAUSE " (VEK_USE_HIGHWAY is off)")
elseif(NOT VEK_HIGHWAY_FOUND)
  set(VEK_LEVELS_BECAUSE " (the headers of Highway are not installed: libhwy-dev)")
elseif(CMAKE_SYSTEM_PROCESSOR MATCHES "^(x86_64|AMD64)$" AND CMAKE_SIZEOF_VOID_P EQUAL 8)
  set(VEK_LEVELS sse4 avx2 avx512)
  set(VEK_QEMU_portable qemu64)

  # Highway's SSE4 target wants AES and PCLMUL, too, which the first processors with SSE4.2 lack.
  set(VEK_FLAGS_sse4 -march=x86-64-v2 -DHWY_DISABLE_PCLMUL_AES)
  set(VEK_FEATURES_sse4 SSE3 SSSE3 SSE4_1 SSE4_2 POPCNT CMPXCHG16B LAHF64_SAHF64)
  set(VEK_MASK_sse4 -SSE4_2)
  set(VEK_VECTORS_sse4 %xmm)
  set(VEK_QEMU_sse4 Nehalem)

  # Without AES and PCLMUL Highway's AVX2 target falls back to SSSE3.
  set(VEK_FLAGS_avx2 -march=x86-64-v3 -maes -mpclmul)
  set(VEK_FEATURES_avx2 ${VEK_FEATURES_sse4} AVX AVX2 BMI1 BMI2 F16C FMA LZCNT MOVBE AES PCLMULQDQ)
  set(VEK_MASK_avx2 -AVX2)
  set(VEK_VECTORS_avx2 %ymm)
  set(VEK_BOCHS_avx2 corei7_haswell_4770)  # QEMU 7.2 misreads gathers whose index is in register 4 or 12

  set(VEK_FLAGS_avx512 -march=x86-64-v4 -maes -mpclmul -mavx512vbmi -mavx512vbmi2 -mavx512vnni
                       -mprefer-vector-width=512)
  set(VEK_FEATURES_avx512 ${VEK_FEATURES_avx2} AVX512F AVX512BW AVX512CD AVX512DQ AVX512VL AVX512_VBMI
                          AVX512_VBMI2 AVX512_VNNI)
  set(VEK_MASK_avx512 -AVX512BW)
  set(VEK_VECTORS_avx512 %[xyz]mm)
  set(VEK_BOCHS_avx512 corei7_icelake_u)  # QEMU 7.2 has none

  # Who is asked for the features: glibc, which knows since 2.33, or the processor itself.
  check_include_file_cxx(sys/platform/x86.h VEK_HAVE_PLATFORM_X86)
  set(VEK_CPU_DETECTION cpuid)
  if(VEK_HAVE_PLATFORM_X86 AND NOT VEK_USE_CPUID)
    set(VEK_CPU_DETECTION glibc)
  endif()
elseif(CMAKE_SYSTEM_PROCESSOR MATCHES "^(aarch64|arm64)$")
  set(VEK_LEVELS neon)
  # Highway 1.0.3 would compile its functions, but not the constructors that GCC generates, for
  # processors with crypto instructions; without run-time dispatch it leaves the target alone.
  set(VEK_FLAGS_neon -DTOOLCHAIN_MISS_SYS_AUXV_H)
  set(VEK_VECTORS_neon "v[0-9]+\\.(16b|8b|8h|4h|4s|2s|2d)|q[0-9]")
elseif(CMAKE_SYSTEM_PROCESSOR MATCHES "^arm" AND CMAKE_SIZEOF_VOID_P EQUAL 4)
  check_include_file_cxx(sys/auxv.h VEK_HAVE_AUXV)
  if(VEK_HAVE_AUXV)
    set(VEK_LEVELS neon)
    set(VEK_CPU_DETECTION auxv)
    # Without run-time dispatch Highway leaves the target alone, as above. Where floating point is
    # calculated in software, or its arguments are at least passed so, the level keeps to that.
    set(VEK_FLAGS_neon -march=armv7-a+simd -DTOOLCHAIN_MISS_SYS_AUXV_H)
    check_cxx_source_compiles("#if !defined(__ARM_PCS_VFP)\n#error\n#endif\nint main() {}" VEK_HARD_FLOAT)
    if(NOT VEK_HARD_FLOAT)
      list(APPEND VEK_FLAGS_neon -mfloat-abi=softfp)
    endif()
    set(VEK_FEATURES_neon NEON)
    set(VEK_VECTORS_neon "\\bv[a-z0-9]+(\\.[a-z]?[0-9]+)+[^a-z]")
    set(VEK_QEMU_neon cortex-a8)
    set(VEK_QEMU_portable arm926)
    if(VEK_HARD_FLOAT)
      set(VEK_QEMU_portable cortex-a9,neon=off)
    endif()
  else()
    set(VEK_LEVELS_BECAUSE " (no <sys/auxv.h> tells whether there is NEON)")
  endif()
elseif(EMSCRIPTEN)
  # Nothing is chosen at run time: what runs WebAssembly without vectors refuses a module that has any.
  # VEK_USE_HIGHWAY=OFF makes one that has none.
  set(VEK_LEVELS simd128)
  set(VEK_FLAGS_simd128 -msimd128 -Wno-pragma-clang-attribute)
endif()

if(NOT VEK_BUILD_LEVELS STREQUAL "all")
  set(known ${VEK_LEVELS})
  set(VEK_LEVELS "")
  foreach(level IN LISTS known)
    if(level IN_LIST VEK_BUILD_LEVELS)
      list(APPEND VEK_LEVELS ${level})
    endif()
  endforeach()
  foreach(level IN LISTS VEK_BUILD_LEVELS)
    if(NOT level IN_LIST known AND NOT level STREQUAL "portable")
      list(JOIN known ", " known)
      message(FATAL_ERROR "VEK_BUILD_LEVELS has ${level}; beside portable this build can have: ${known}")
    endif()
  endforeach()
  set(VEK_LEVELS_BECAUSE " (VEK_BUILD_LEVELS)")
endif()

# The list as the sources and as scripts see it.
set(each_level "")
set(level_features "")
set(level_lines "")
foreach(level IN ITEMS portable LISTS VEK_LEVELS)
  list(TRANSFORM VEK_FEATURES_${level} REPLACE "(.+)" "X(\\1)" OUTPUT_VARIABLE features)
  list(JOIN features " " features)
  string(APPEND each_level " X(${level}, __VA_ARGS__)")
  string(APPEND level_features "#define VEK_FEATURES_${level}(X) ${features}\n")
  string(APPEND level_lines "${level}")
  foreach(property IN ITEMS MASK VECTORS QEMU BOCHS)
    set(value "${VEK_${property}_${level}}")
    if(property STREQUAL "MASK" AND NOT VEK_CPU_DETECTION STREQUAL "glibc")
      set(value "")
    endif()
    if(value STREQUAL "")
      set(value -)
    endif()
    string(APPEND level_lines " ${value}")
  endforeach()
  string(APPEND level_lines "\n")
endforeach()
configure_file(${CMAKE_CURRENT_LIST_DIR}/level_list.h.in generated/core/level_list.h @ONLY)
file(WRITE ${PROJECT_BINARY_DIR}/levels.txt
  "# level mask vectors QEMU Bochs\n${level_lines}")

# What all objects of the library share: no C++ runtime, nothing visible that is not marked.
add_library(vek_compile INTERFACE)
target_include_directories(vek_compile INTERFACE ${PROJECT_SOURCE_DIR} ${PROJECT_SOURCE_DIR}/include
  ${PROJECT_BINARY_DIR}/generated)
target_include_directories(vek_compile SYSTEM INTERFACE ${vek_highway_include})
target_compile_features(vek_compile INTERFACE cxx_std_20)
# A product and a sum are two roundings on every processor: GCC would fuse them where it can.
target_compile_options(vek_compile INTERFACE -fno-exceptions -fno-rtti -fno-threadsafe-statics
  -ffp-contract=off ${VEK_WARNINGS})
# What Debian builds its packages with; docs/reliability.md has the cost. Read-only relocations and
# binding at load time are in library.cmake.
if(VEK_HARDEN AND NOT VEK_SANITIZE AND NOT EMSCRIPTEN)
  target_compile_options(vek_compile INTERFACE -fstack-protector-strong
    $<$<NOT:$<CONFIG:Debug>>:-U_FORTIFY_SOURCE;-D_FORTIFY_SOURCE=2>)
  if(CMAKE_SYSTEM_PROCESSOR MATCHES "^(x86_64|AMD64)$")
    target_compile_options(vek_compile INTERFACE -fcf-protection)
    set(VEK_BRANCH_PROTECTION IBT)
  elseif(CMAKE_SYSTEM_PROCESSOR MATCHES "^(aarch64|arm64)$")
    target_compile_options(vek_compile INTERFACE -mbranch-protection=standard)
    set(VEK_BRANCH_PROTECTION BTI)
  endif()
endif()

get_property(vek_can_share GLOBAL PROPERTY TARGET_SUPPORTS_SHARED_LIBS)
function(vek_object_library name level)
  add_library(${name} OBJECT)
  target_link_libraries(${name} PRIVATE vek_compile)
  target_compile_definitions(${name} PRIVATE VEK_LEVEL=${level} $<$<CONFIG:Debug>:VEK_ASSERTIONS>)
  if(VEK_SANITIZE)
    target_compile_definitions(${name} PRIVATE VEK_ASSERTIONS)
  endif()
  set_target_properties(${name} PROPERTIES POSITION_INDEPENDENT_CODE ${vek_can_share}
    CXX_VISIBILITY_PRESET hidden VISIBILITY_INLINES_HIDDEN ON)
  # In every build type but Debug, and without one, too: GCC 12 vectorises nothing of this at -O2.
  target_compile_options(${name} PRIVATE $<$<NOT:$<CONFIG:Debug>>:-O3>)
endfunction()

vek_object_library(vek_portable portable)
foreach(level IN LISTS VEK_LEVELS)
  vek_object_library(vek_${level} ${level})
  target_compile_options(vek_${level} PRIVATE ${VEK_FLAGS_${level}})
  if(VEK_SANITIZE MATCHES "undefined")
    # AddressSanitizer sees what these checks of every pointer would; in unrolled vector code they only
    # multiply the time to compile.
    target_compile_options(vek_${level} PRIVATE
      -fno-sanitize=null,alignment,bounds,object-size,pointer-overflow)
  endif()
endforeach()

if(VEK_FUZZ)
  # Unsigned and implicit conversions too, in what all targets run; fuzz/wraps.txt is what may wrap.
  target_compile_options(vek_portable PRIVATE -fsanitize=integer -fno-sanitize-recover=integer
    -fsanitize-ignorelist=${PROJECT_SOURCE_DIR}/fuzz/wraps.txt)
endif()

function(vek_sources)
  target_sources(vek_portable PRIVATE ${ARGN})
endfunction()

function(vek_level_sources)
  foreach(level IN LISTS VEK_LEVELS)
    target_sources(vek_${level} PRIVATE ${ARGN})
  endforeach()
endfunction()
