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

# Header-only, so the building machine's serve every target.
if(VORLUND_BUILD_TOOLS OR (VORLUND_BUILD_PLUGINS AND VORLUND_WITH_VISUAL))
    find_path(STB_INCLUDE_DIR stb/stb_image_write.h NO_CMAKE_FIND_ROOT_PATH)
    find_path(EIGEN3_INCLUDE_DIR unsupported/Eigen/FFT PATH_SUFFIXES eigen3 NO_CMAKE_FIND_ROOT_PATH)
endif()

if(VORLUND_BUILD_PLUGINS AND VORLUND_WITH_VISUAL AND NOT (STB_INCLUDE_DIR AND EIGEN3_INCLUDE_DIR))
    vorlund_leave_out(VORLUND_WITH_VISUAL "the plug-in visual" "no headers of Eigen or stb (Debian: libeigen3-dev, libstb-dev)")
endif()

if(VORLUND_BUILD_TOOLS)
    find_path(CLI11_INCLUDE_DIR CLI/CLI.hpp NO_CMAKE_FIND_ROOT_PATH)
    if(NOT CLI11_INCLUDE_DIR)
        vorlund_leave_out(VORLUND_BUILD_TOOLS "the program vorlund" "no headers of CLI11 (Debian: libcli11-dev)")
    elseif(NOT STB_INCLUDE_DIR)
        vorlund_leave_out(VORLUND_BUILD_TOOLS "the program vorlund" "no headers of stb (Debian: libstb-dev)")
    elseif(NOT EIGEN3_INCLUDE_DIR)
        vorlund_leave_out(VORLUND_BUILD_TOOLS "the program vorlund" "no headers of Eigen (Debian: libeigen3-dev)")
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

# Where a script of this project has put the libraries of plug-ins for a target that is not the building machine: include
# and lib, on Windows also bin and licences.
set(VORLUND_HAS_FOREIGN_LIBRARIES FALSE)
if(WIN32 OR CMAKE_CROSSCOMPILING)
    set(VORLUND_HAS_FOREIGN_LIBRARIES TRUE)
    set(VORLUND_CODECS_DIR "" CACHE PATH "Where libsndfile for the target is")
    set(VORLUND_LEVELS_DIR "" CACHE PATH "Where libebur128 for the target is")
    set(VORLUND_PICTURES_DIR "" CACHE PATH "Where libpng and libjpeg-turbo for the target are")
    set(VORLUND_RATES_DIR "" CACHE PATH "Where libsoxr and libsamplerate for the target are")
    set(VORLUND_SOUND_OUTPUT_DIR "" CACHE PATH "Where SDL 2 for the target is")
    if(VORLUND_CODECS_DIR AND NOT WIN32)
        # Programs that are linked with them; what these libraries need lies beside them.
        add_link_options(LINKER:-rpath-link,${VORLUND_CODECS_DIR}/lib)
    endif()
endif()

# vorlund_find_library(<prefix> <folder> <header> <library>...): sets <prefix>_INCLUDE_DIR and <prefix>_LIBRARY in the
# cache: those of the system, or of the folder that the variable <folder> names.
function(vorlund_find_library prefix folder header)
    set(place "")
    if(VORLUND_HAS_FOREIGN_LIBRARIES)
        set(place NO_DEFAULT_PATH NO_CMAKE_FIND_ROOT_PATH)
    endif()
    find_path(${prefix}_INCLUDE_DIR ${header} PATHS ${${folder}}/include ${place})
    find_library(${prefix}_LIBRARY NAMES ${ARGN} PATHS ${${folder}}/lib ${place})
endfunction()

# vorlund_leave_out_plugin(<name> <folder> <libraries> <Debian packages>): the plug-in <name> lacks libraries.
macro(vorlund_leave_out_plugin name folder libraries packages)
    string(TOUPPER ${name} option)
    if(VORLUND_HAS_FOREIGN_LIBRARIES)
        set(missing "no ${libraries} in ${folder}, which is '${${folder}}' (scripts/codecs.sh or scripts/arm64-libraries.sh puts it there)")
    else()
        set(missing "no headers or no library of ${libraries} (Debian: ${packages})")
    endif()
    vorlund_leave_out(VORLUND_WITH_${option} "the plug-in ${name}" "${missing}")
endmacro()

if(VORLUND_BUILD_PLUGINS AND VORLUND_WITH_AUDIO)
    vorlund_find_library(SDL2 VORLUND_SOUND_OUTPUT_DIR SDL2/SDL.h SDL2)
    if(NOT SDL2_INCLUDE_DIR OR NOT SDL2_LIBRARY)
        vorlund_leave_out_plugin(audio VORLUND_SOUND_OUTPUT_DIR "SDL 2" libsdl2-dev)
    elseif(NOT WIN32)
        # What SDL does not tell of a sound server is asked of it.
        vorlund_find_library(PULSE VORLUND_SOUND_OUTPUT_DIR pulse/pulseaudio.h pulse)
        if(NOT PULSE_INCLUDE_DIR)
            vorlund_leave_out_plugin(audio VORLUND_SOUND_OUTPUT_DIR libpulse libpulse-dev)
        endif()
    endif()
endif()

if(VORLUND_BUILD_PLUGINS AND VORLUND_WITH_SNDFILE)
    vorlund_find_library(SNDFILE VORLUND_CODECS_DIR sndfile.h sndfile)
    if(NOT SNDFILE_INCLUDE_DIR OR NOT SNDFILE_LIBRARY)
        vorlund_leave_out_plugin(sndfile VORLUND_CODECS_DIR libsndfile libsndfile1-dev)
    endif()
endif()

if(VORLUND_BUILD_PLUGINS AND VORLUND_WITH_IMAGE)
    vorlund_find_library(IMAGE_PNG VORLUND_PICTURES_DIR png.h png16 png)
    vorlund_find_library(IMAGE_JPEG VORLUND_PICTURES_DIR jpeglib.h jpeg)
    if(IMAGE_PNG_INCLUDE_DIR AND IMAGE_JPEG_INCLUDE_DIR AND IMAGE_PNG_LIBRARY AND IMAGE_JPEG_LIBRARY)
        set(IMAGE_INCLUDE_DIRS ${IMAGE_PNG_INCLUDE_DIR} ${IMAGE_JPEG_INCLUDE_DIR})
        set(IMAGE_LIBRARIES ${IMAGE_PNG_LIBRARY} ${IMAGE_JPEG_LIBRARY})
    else()
        vorlund_leave_out_plugin(image VORLUND_PICTURES_DIR "libpng and libjpeg-turbo" "libpng-dev, libjpeg62-turbo-dev")
    endif()
endif()

if(VORLUND_BUILD_PLUGINS AND VORLUND_WITH_MEASURE)
    vorlund_find_library(EBUR128 VORLUND_LEVELS_DIR ebur128.h ebur128)
    if(NOT EBUR128_INCLUDE_DIR OR NOT EBUR128_LIBRARY)
        vorlund_leave_out_plugin(measure VORLUND_LEVELS_DIR libebur128 libebur128-dev)
    endif()
endif()

if(VORLUND_BUILD_PLUGINS AND VORLUND_WITH_RESAMPLE)
    set(VORLUND_RESAMPLE_LIBRARY soxr CACHE STRING "The library of the plug-in resample: soxr or samplerate")
    set_property(CACHE VORLUND_RESAMPLE_LIBRARY PROPERTY STRINGS soxr samplerate)
    # Anew at each change of the choice.
    unset(RESAMPLE_INCLUDE_DIR CACHE)
    unset(RESAMPLE_LIBRARY CACHE)
    vorlund_find_library(RESAMPLE VORLUND_RATES_DIR ${VORLUND_RESAMPLE_LIBRARY}.h ${VORLUND_RESAMPLE_LIBRARY})
    if(NOT RESAMPLE_INCLUDE_DIR OR NOT RESAMPLE_LIBRARY)
        vorlund_leave_out_plugin(resample VORLUND_RATES_DIR lib${VORLUND_RESAMPLE_LIBRARY} "libsoxr-dev, libsamplerate0-dev")
    endif()
endif()
