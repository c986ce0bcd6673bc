# A port for an overlay: vcpkg install veltor-utils --overlay-ports=packaging/vcpkg. It builds the checkout that it
# lies in. Not run by vcpkg yet; docs/platforms.md tells what was tried.
set(SOURCE_PATH "${CURRENT_PORT_DIR}/../..")

set(options
  "-DVELTOR_LRELEASE=${CURRENT_HOST_INSTALLED_DIR}/tools/qt5-tools/bin/lrelease${VCPKG_HOST_EXECUTABLE_SUFFIX}")
if(VCPKG_TARGET_IS_LINUX) # libdw is found by it
  vcpkg_find_acquire_program(PKGCONFIG)
  list(APPEND options "-DPKG_CONFIG_EXECUTABLE=${PKGCONFIG}")
endif()
vcpkg_cmake_configure(SOURCE_PATH "${SOURCE_PATH}"
  OPTIONS -DBUILD_TESTING=OFF -DVELTOR_PYTHON=OFF -DVELTOR_TOOLS=ON -DVELTOR_QT=5 ${options}
  MAYBE_UNUSED_VARIABLES PKG_CONFIG_EXECUTABLE)
vcpkg_cmake_install()
vcpkg_cmake_config_fixup(PACKAGE_NAME veltor-utils CONFIG_PATH lib/cmake/veltor-utils)
vcpkg_fixup_pkgconfig()
vcpkg_copy_tools(TOOL_NAMES veltor AUTO_CLEAN)
file(REMOVE_RECURSE "${CURRENT_PACKAGES_DIR}/debug/include" "${CURRENT_PACKAGES_DIR}/debug/share")
vcpkg_install_copyright(FILE_LIST "${SOURCE_PATH}/LICENSE")
