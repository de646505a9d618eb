# CPU levels: vek_sources() adds what every target runs, vek_level_sources() adds kernel sources that
# are compiled once more for each higher level, each time into that level's namespace (VEK_LEVEL).
if(CMAKE_SYSTEM_PROCESSOR MATCHES "^(x86_64|AMD64)$" AND CMAKE_SIZEOF_VOID_P EQUAL 8)
  include(CheckIncludeFileCXX)
  check_include_file_cxx(sys/platform/x86.h VEK_HAVE_PLATFORM_X86)  # glibc >= 2.33 knows the CPU
endif()
if(VEK_HAVE_PLATFORM_X86 AND NOT VEK_PORTABLE_ONLY)
  set(VEK_LEVELS avx2 avx512)
  set(VEK_LEVELS_DEFINITION VEK_LEVELS_X86)
  # Without AES and PCLMUL Highway's AVX2 target falls back to SSSE3. core/cpu_features.cc tests at
  # run time exactly what these flags allow.
  set(VEK_FLAGS_avx2 -march=x86-64-v3 -maes -mpclmul)
  set(VEK_FLAGS_avx512 -march=x86-64-v4 -maes -mpclmul -mavx512vbmi -mavx512vbmi2 -mavx512vnni
                       -mprefer-vector-width=512)
elseif(CMAKE_SYSTEM_PROCESSOR MATCHES "^(aarch64|arm64)$" AND NOT VEK_PORTABLE_ONLY)
  set(VEK_LEVELS neon)
  set(VEK_LEVELS_DEFINITION VEK_LEVELS_NEON)
  # Highway 1.0.3 would compile its functions, but not the constructors that GCC generates, for
  # processors with crypto instructions; without run-time dispatch it leaves the target alone.
  set(VEK_FLAGS_neon -DTOOLCHAIN_MISS_SYS_AUXV_H)
else()
  set(VEK_LEVELS "")
  set(VEK_LEVELS_DEFINITION VEK_LEVELS_NONE)
endif()

include(CheckIncludeFileCXX)
check_include_file_cxx(hwy/highway.h VEK_HIGHWAY_FOUND)
if(VEK_HIGHWAY_FOUND AND VEK_USE_HIGHWAY)
  set(VEK_HAVE_HIGHWAY 1)
else()
  set(VEK_HAVE_HIGHWAY 0)
  message(STATUS "vek: Highway not used, the fast levels compile the plain loops")
endif()

# What all objects of the library share: no C++ runtime, nothing visible that is not marked.
add_library(vek_compile INTERFACE)
target_include_directories(vek_compile INTERFACE ${PROJECT_SOURCE_DIR} ${PROJECT_SOURCE_DIR}/include)
target_compile_features(vek_compile INTERFACE cxx_std_20)
target_compile_options(vek_compile INTERFACE -fno-exceptions -fno-rtti -fno-threadsafe-statics
  ${VEK_WARNINGS})
# What Debian builds its packages with; docs/reliability.md has the cost. Read-only relocations and
# binding at load time are in library.cmake.
if(VEK_HARDEN AND NOT VEK_SANITIZE)
  target_compile_options(vek_compile INTERFACE -fstack-protector-strong
    $<$<CONFIG:Release,RelWithDebInfo,MinSizeRel>:-U_FORTIFY_SOURCE;-D_FORTIFY_SOURCE=2>)
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
  target_compile_definitions(${name} PRIVATE VEK_LEVEL=${level} ${VEK_LEVELS_DEFINITION}
    VEK_HAVE_HIGHWAY=${VEK_HAVE_HIGHWAY})
  set_target_properties(${name} PROPERTIES POSITION_INDEPENDENT_CODE ON
    CXX_VISIBILITY_PRESET hidden VISIBILITY_INLINES_HIDDEN ON)
  # GCC 12 vectorises nothing of this at -O2.
  target_compile_options(${name} PRIVATE $<$<CONFIG:Release,RelWithDebInfo>:-O3>)
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
