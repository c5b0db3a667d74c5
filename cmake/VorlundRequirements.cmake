# What the parts of the project need besides a compiler. A part that misses something is left out, and the end of the
# configuration says so; with VORLUND_REQUIRE_ALL, which ./test sets, that is an error.
set(VORLUND_GOOGLETEST_DIR /usr/src/googletest/googletest CACHE PATH "Sources of GoogleTest")

# vorlund_note_left_out(<part> <what is missing>): a line for the end of the configuration.
function(vorlund_note_left_out part missing)
    if(VORLUND_REQUIRE_ALL)
        message(FATAL_ERROR "VORLUND_REQUIRE_ALL is on, and something is missing for ${part}: ${missing}")
    endif()
    set_property(GLOBAL APPEND PROPERTY VORLUND_LEFT_OUT "${part}: ${missing}")
endfunction()

# vorlund_leave_out(<option> <part> <what is missing>): switches the option off for this run; the cache keeps the wish,
# so that the part is back as soon as what it needs is there.
macro(vorlund_leave_out option part missing)
    vorlund_note_left_out("${part}" "${missing}")
    set(${option} OFF)
endmacro()

# Says what was left out, where it is read: at the end.
function(vorlund_print_left_out)
    get_property(rows GLOBAL PROPERTY VORLUND_LEFT_OUT)
    foreach(row IN LISTS rows)
        message(STATUS "Left out: ${row}")
    endforeach()
endfunction()

if(VORLUND_BUILD_TESTS AND NOT EXISTS ${VORLUND_GOOGLETEST_DIR}/src/gtest-all.cc)
    vorlund_leave_out(VORLUND_BUILD_TESTS "the tests"
        "no sources of GoogleTest in VORLUND_GOOGLETEST_DIR, which is ${VORLUND_GOOGLETEST_DIR} (Debian: googletest)")
endif()

if(VORLUND_BUILD_TOOLS)
    find_path(CLI11_INCLUDE_DIR CLI/CLI.hpp NO_CMAKE_FIND_ROOT_PATH)
    find_path(STB_INCLUDE_DIR stb/stb_image_write.h NO_CMAKE_FIND_ROOT_PATH)
    if(NOT CLI11_INCLUDE_DIR)
        vorlund_leave_out(VORLUND_BUILD_TOOLS "the program vorlund" "no headers of CLI11 (Debian: libcli11-dev)")
    elseif(NOT STB_INCLUDE_DIR)
        vorlund_leave_out(VORLUND_BUILD_TOOLS "the program vorlund" "no headers of stb (Debian: libstb-dev)")
    endif()
endif()

if(VORLUND_WITH_XCB AND NOT WIN32)
    find_path(XCB_INCLUDE_DIR xcb/xcb.h)
    # The library loads libxcb when the first window opens; the plug-in window-output is linked to it.
    find_library(XCB_LIBRARY xcb)
    if(NOT XCB_INCLUDE_DIR OR NOT XCB_LIBRARY)
        vorlund_leave_out(VORLUND_WITH_XCB "windows on Linux" "no headers or no library of libxcb (Debian: libxcb1-dev)")
    endif()
endif()

if(VORLUND_BUILD_PLUGINS AND VORLUND_WITH_SNDFILE)
    if(WIN32)
        set(VORLUND_CODECS_DIR "" CACHE PATH "Where scripts/codecs.sh has put libsndfile for Windows")
        set(codecs NO_DEFAULT_PATH NO_CMAKE_FIND_ROOT_PATH)
        find_path(SNDFILE_INCLUDE_DIR sndfile.h PATHS ${VORLUND_CODECS_DIR}/include ${codecs})
        find_library(SNDFILE_LIBRARY sndfile PATHS ${VORLUND_CODECS_DIR}/lib ${codecs})
        set(missing "no libsndfile in VORLUND_CODECS_DIR, which is '${VORLUND_CODECS_DIR}' (scripts/codecs.sh builds it)")
    else()
        find_path(SNDFILE_INCLUDE_DIR sndfile.h)
        find_library(SNDFILE_LIBRARY sndfile)
        set(missing "no headers or no library of libsndfile (Debian: libsndfile1-dev)")
    endif()
    if(NOT SNDFILE_INCLUDE_DIR OR NOT SNDFILE_LIBRARY)
        vorlund_leave_out(VORLUND_WITH_SNDFILE "the plug-in sndfile" "${missing}")
    endif()
endif()
