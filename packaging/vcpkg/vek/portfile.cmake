# The sources are those of the tree that this port lies in.
get_filename_component(SOURCE_PATH "${CURRENT_PORT_DIR}/../../.." ABSOLUTE)
vcpkg_cmake_configure(
  SOURCE_PATH "${SOURCE_PATH}"
  OPTIONS
    # Highway is headers alone, which are looked for among the compiler's own.
    "-DCMAKE_REQUIRED_INCLUDES=${CURRENT_INSTALLED_DIR}/include"
    "-DCMAKE_CXX_STANDARD_INCLUDE_DIRECTORIES=${CURRENT_INSTALLED_DIR}/include")
vcpkg_cmake_install()
vcpkg_cmake_config_fixup(CONFIG_PATH lib/cmake/vek)
vcpkg_fixup_pkgconfig()
file(REMOVE_RECURSE "${CURRENT_PACKAGES_DIR}/debug/include")
vcpkg_install_copyright(FILE_LIST "${SOURCE_PATH}/LICENSE")
# Both kinds of library are there in every triplet, with a target each.
set(VCPKG_POLICY_DLLS_IN_STATIC_LIBRARY enabled)
