# Not run: nobody had vcpkg at hand. tests/packages/check_recipes.py compares the options with those of CMakeLists.txt.
# An overlay port: vcpkg install vorlund --overlay-ports=packaging/vcpkg, from a clone.
get_filename_component(SOURCE_PATH "${CURRENT_PORT_DIR}/../../.." ABSOLUTE)

vcpkg_check_features(OUT_FEATURE_OPTIONS features FEATURES
    c VORLUND_BUILD_C
    tools VORLUND_BUILD_TOOLS
    plugins VORLUND_BUILD_PLUGINS
    xcb VORLUND_WITH_XCB
    sndfile VORLUND_WITH_SNDFILE
    image VORLUND_WITH_IMAGE
    measure VORLUND_WITH_MEASURE
    resample VORLUND_WITH_RESAMPLE
    visual VORLUND_WITH_VISUAL
    audio VORLUND_WITH_AUDIO)

vcpkg_cmake_configure(
    SOURCE_PATH "${SOURCE_PATH}"
    OPTIONS
        ${features}
        -DVORLUND_BUILD_TESTS=OFF
        -DVORLUND_BUILD_EXAMPLES=OFF
        -DVORLUND_BUILD_FUZZ=OFF
        -DVORLUND_BUILD_BENCH=OFF
        -DVORLUND_INSTALL=ON
        -DVORLUND_REQUIRE_ALL=ON)
vcpkg_cmake_install()
vcpkg_cmake_config_fixup(PACKAGE_NAME Vorlund CONFIG_PATH lib/cmake/Vorlund)
vcpkg_fixup_pkgconfig()
file(REMOVE_RECURSE "${CURRENT_PACKAGES_DIR}/debug/include" "${CURRENT_PACKAGES_DIR}/debug/share")
vcpkg_install_copyright(FILE_LIST "${SOURCE_PATH}/LICENSE")
