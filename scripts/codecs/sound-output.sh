# shellcheck shell=bash disable=SC2034,SC2154
# SDL 2 with nothing but its audio, a DLL. Sourced by scripts/codecs.sh.
libraries="SDL 2"
packages=(libsdl2)
sources=("libsdl2 libsdl2_2.26.5+dfsg.orig.tar.gz b3f2c822151804125d08db94c65852f711c2e5df2145a59da120748dc32eb9c3 Zlib")

build_libraries() {
    local part
    local -a options=(-DSDL_SHARED=ON -DSDL_STATIC=OFF -DSDL_TEST=OFF -DSDL_AUDIO=ON)
    for part in VIDEO RENDER JOYSTICK HAPTIC SENSOR HIDAPI POWER LOCALE MISC; do options+=("-DSDL_$part=OFF"); done
    # The table through which SDL can be replaced at run time names functions of the parts that are left out.
    sed -i 's/^#define SDL_DYNAMIC_API 1$/#define SDL_DYNAMIC_API 0/' "$work/libsdl2/src/dynapi/SDL_dynapi.h"
    by_cmake libsdl2 "${options[@]}"
    cp "$work/libsdl2/LICENSE.txt" "$work/libsdl2/LICENSE"
}
