# CPU levels: vek_sources() adds what every target runs, vek_level_sources() adds kernel sources that
# are compiled once more for each higher level, each time into that level's namespace (VEK_LEVEL).
include(CheckIncludeFileCXX)
check_include_file_cxx(hwy/highway.h VEK_HIGHWAY_FOUND)
if(CMAKE_SYSTEM_PROCESSOR MATCHES "^(x86_64|AMD64)$" AND CMAKE_SIZEOF_VOID_P EQUAL 8)
  check_include_file_cxx(sys/platform/x86.h VEK_HAVE_PLATFORM_X86)  # glibc >= 2.33 knows the CPU
endif()

# The levels above portable that this build has, lowest first. They are written with Highway's vectors.
set(VEK_LEVELS "")
set(VEK_LEVELS_BECAUSE "")
if(VEK_PORTABLE_ONLY)
  set(VEK_LEVELS_BECAUSE " (VEK_PORTABLE_ONLY)")
elseif(NOT VEK_USE_HIGHWAY)
  set(VEK_LEVELS_BECAUSE " (VEK_USE_HIGHWAY is off)")
elseif(NOT VEK_HIGHWAY_FOUND)
  set(VEK_LEVELS_BECAUSE " (the headers of Highway are not installed: libhwy-dev)")
elseif(VEK_HAVE_PLATFORM_X86)
  set(VEK_LEVELS avx2 avx512)
  # Without AES and PCLMUL Highway's AVX2 target falls back to SSSE3. The features, by glibc's names,
  # are exactly what the flags allow beyond the baseline; the mask makes glibc hide the level.
  set(VEK_FLAGS_avx2 -march=x86-64-v3 -maes -mpclmul)
  set(VEK_FEATURES_avx2 SSE3 SSSE3 SSE4_1 SSE4_2 POPCNT CMPXCHG16B LAHF64_SAHF64 AVX AVX2 BMI1 BMI2
                        F16C FMA LZCNT MOVBE AES PCLMULQDQ)
  set(VEK_MASK_avx2 -AVX2)
  set(VEK_FLAGS_avx512 -march=x86-64-v4 -maes -mpclmul -mavx512vbmi -mavx512vbmi2 -mavx512vnni
                       -mprefer-vector-width=512)
  set(VEK_FEATURES_avx512 ${VEK_FEATURES_avx2} AVX512F AVX512BW AVX512CD AVX512DQ AVX512VL AVX512_VBMI
                          AVX512_VBMI2 AVX512_VNNI)
  set(VEK_MASK_avx512 -AVX512BW)
elseif(CMAKE_SYSTEM_PROCESSOR MATCHES "^(aarch64|arm64)$")
  set(VEK_LEVELS neon)
  # Highway 1.0.3 would compile its functions, but not the constructors that GCC generates, for
  # processors with crypto instructions; without run-time dispatch it leaves the target alone.
  set(VEK_FLAGS_neon -DTOOLCHAIN_MISS_SYS_AUXV_H)
endif()

# The list as the sources see it.
set(each_level "")
set(level_features "")
foreach(level IN ITEMS portable LISTS VEK_LEVELS)
  list(TRANSFORM VEK_FEATURES_${level} REPLACE "(.+)" "X(\\1)" OUTPUT_VARIABLE features)
  list(JOIN features " " features)
  string(APPEND each_level " X(${level}, __VA_ARGS__)")
  string(APPEND level_features "#define VEK_FEATURES_${level}(X) ${features}\n")
endforeach()
configure_file(${CMAKE_CURRENT_LIST_DIR}/level_list.h.in generated/core/level_list.h @ONLY)

# What all objects of the library share: no C++ runtime, nothing visible that is not marked.
add_library(vek_compile INTERFACE)
target_include_directories(vek_compile INTERFACE ${PROJECT_SOURCE_DIR} ${PROJECT_SOURCE_DIR}/include
  ${PROJECT_BINARY_DIR}/generated)
target_compile_features(vek_compile INTERFACE cxx_std_20)
target_compile_options(vek_compile INTERFACE -fno-exceptions -fno-rtti -fno-threadsafe-statics
  ${VEK_WARNINGS})
# What Debian builds its packages with; docs/reliability.md has the cost. Read-only relocations and
# binding at load time are in library.cmake.
if(VEK_HARDEN AND NOT VEK_SANITIZE)
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

function(vek_object_library name level)
  add_library(${name} OBJECT)
  target_link_libraries(${name} PRIVATE vek_compile)
  target_compile_definitions(${name} PRIVATE VEK_LEVEL=${level}
    $<$<OR:$<CONFIG:Debug>,$<BOOL:${VEK_SANITIZE}>>:VEK_ASSERTIONS>)
  set_target_properties(${name} PROPERTIES POSITION_INDEPENDENT_CODE ON
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
