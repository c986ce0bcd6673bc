# A port for an overlay: vcpkg install veltor-utils --overlay-ports=packaging. It builds the checkout that it lies in.
set(SOURCE_PATH "${CURRENT_PORT_DIR}/../..")

vcpkg_cmake_configure(SOURCE_PATH "${SOURCE_PATH}"
  OPTIONS -DBUILD_TESTING=OFF -DVELTOR_PYTHON=OFF -DVELTOR_TOOLS=ON -DVELTOR_QT=5)
vcpkg_cmake_install()
vcpkg_cmake_config_fixup(PACKAGE_NAME veltor-utils CONFIG_PATH lib/cmake/veltor-utils)
vcpkg_fixup_pkgconfig()
vcpkg_copy_tools(TOOL_NAMES veltor AUTO_CLEAN)
file(REMOVE_RECURSE "${CURRENT_PACKAGES_DIR}/debug/include" "${CURRENT_PACKAGES_DIR}/debug/share")
vcpkg_install_copyright(FILE_LIST "${SOURCE_PATH}/LICENSE")
