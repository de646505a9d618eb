# The shared and the static library over one set of objects, their installation and package files. Where
# there are no shared libraries (WebAssembly), the static one stands for both.
include(CheckCSourceCompiles)
set(vek_objects $<TARGET_OBJECTS:vek_portable>)
foreach(level IN LISTS VEK_LEVELS)
  list(APPEND vek_objects $<TARGET_OBJECTS:vek_${level}>)
endforeach()

add_library(vek_static STATIC ${vek_objects})
add_library(vek::static ALIAS vek_static)
set_target_properties(vek_static PROPERTIES OUTPUT_NAME vek EXPORT_NAME static)
set(vek_libraries vek_static)
if(vek_can_share)
  add_library(vek SHARED ${vek_objects})
  set_target_properties(vek PROPERTIES VERSION ${PROJECT_VERSION} SOVERSION 0 EXPORT_NAME vek)
  list(INSERT vek_libraries 0 vek)
else()
  add_library(vek ALIAS vek_static)
endif()
list(GET vek_libraries 0 first)
add_library(vek::vek ALIAS ${first})
foreach(target IN LISTS vek_libraries)
  # Linked as C: the library needs the C library alone.
  set_target_properties(${target} PROPERTIES LINKER_LANGUAGE C)
  target_include_directories(${target} PUBLIC $<BUILD_INTERFACE:${PROJECT_SOURCE_DIR}/include>
    $<INSTALL_INTERFACE:${CMAKE_INSTALL_INCLUDEDIR}>)
endforeach()
if(vek_can_share AND UNIX AND NOT APPLE AND NOT VEK_SANITIZE)
  # -nostartfiles leaves out the C start files' writable data and load-time code; ours has none.
  # --as-needed drops the C++ runtime, which CMake adds for C++ objects.
  foreach(option IN ITEMS -nostartfiles LINKER:--as-needed LINKER:-z,defs LINKER:-z,relro LINKER:-z,now
                          LINKER:-z,noexecstack
                          LINKER:--version-script=${PROJECT_SOURCE_DIR}/cmake/symbols.map)
    set(CMAKE_REQUIRED_LINK_OPTIONS ${option})
    string(MAKE_C_IDENTIFIER "VEK_LINKER_KNOWS_${option}" known)
    check_c_source_compiles("int main(void) { return 0; }" ${known})
    if(${known})
      target_link_options(vek PRIVATE ${option})
    endif()
  endforeach()
  unset(CMAKE_REQUIRED_LINK_OPTIONS)
  set_target_properties(vek PROPERTIES LINK_DEPENDS ${PROJECT_SOURCE_DIR}/cmake/symbols.map)
endif()

if(NOT VEK_INSTALL)
  return()
endif()
include(CMakePackageConfigHelpers)
set(vek_package_dir ${CMAKE_INSTALL_LIBDIR}/cmake/vek)
write_basic_package_version_file(${PROJECT_BINARY_DIR}/vekConfigVersion.cmake
  COMPATIBILITY SameMinorVersion)
# Found relative to itself, so that an installed tree can be moved, unless the directories are absolute.
set(vek_pc_libdir "\${prefix}/${CMAKE_INSTALL_LIBDIR}")
set(vek_pc_includedir "\${prefix}/${CMAKE_INSTALL_INCLUDEDIR}")
if(IS_ABSOLUTE "${CMAKE_INSTALL_INCLUDEDIR}")
  set(vek_pc_includedir "${CMAKE_INSTALL_INCLUDEDIR}")
endif()
if(IS_ABSOLUTE "${CMAKE_INSTALL_LIBDIR}")
  set(vek_pc_libdir "${CMAKE_INSTALL_LIBDIR}")
  set(vek_pc_prefix "${CMAKE_INSTALL_PREFIX}")
else()
  file(RELATIVE_PATH vek_pc_prefix ${CMAKE_INSTALL_FULL_LIBDIR}/pkgconfig ${CMAKE_INSTALL_PREFIX})
  set(vek_pc_prefix "\${pcfiledir}/${vek_pc_prefix}")
endif()
configure_file(cmake/vek.pc.in vek.pc @ONLY)
install(TARGETS ${vek_libraries} EXPORT vekTargets
  RUNTIME COMPONENT Runtime
  LIBRARY COMPONENT Runtime NAMELINK_COMPONENT Development
  ARCHIVE COMPONENT Development)
install(DIRECTORY include/vek DESTINATION ${CMAKE_INSTALL_INCLUDEDIR} COMPONENT Development)
install(EXPORT vekTargets NAMESPACE vek:: DESTINATION ${vek_package_dir} COMPONENT Development)
configure_file(cmake/vekConfig.cmake.in vekConfig.cmake COPYONLY)
install(FILES ${PROJECT_BINARY_DIR}/vekConfig.cmake ${PROJECT_BINARY_DIR}/vekConfigVersion.cmake
  DESTINATION ${vek_package_dir} COMPONENT Development)
install(FILES ${PROJECT_BINARY_DIR}/vek.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig
  COMPONENT Development)
