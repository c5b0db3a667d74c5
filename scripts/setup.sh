# shellcheck shell=bash
# Installs the Debian packages that a purpose needs. Sourced by ./run and ./test.

# Prints the packages of a purpose, one word each.
vorlund_packages() {
    local build="g++ cmake ninja-build libcli11-dev libeigen3-dev libstb-dev"
    # Checks of texts and structure are written in Python; conversions are compared with those of sox.
    local tests="$build googletest pkgconf python3 sox"
    # What tests/realfiles compares with.
    local recordings="alsa-utils sox sndfile-programs"
    # The plug-in sndfile, and what writes the files of its tests.
    local sounds="libsndfile1-dev" sound_tools="flac lame opus-tools sndfile-programs sox vorbis-tools"
    # The plug-in resample.
    local rates="libsoxr-dev"
    # The plug-in audio, and the sound server of its tests.
    local sound_output="libsdl2-dev libpulse-dev" sound_server="libsdl2-2.0-0 pulseaudio pulseaudio-utils"
    # What makes the files of the tests of the plug-in y4m.
    local video_tools="ffmpeg"
    # The plug-in image, and what makes the files of its tests.
    local pictures="libpng-dev libjpeg62-turbo-dev"
    local picture_tools="$video_tools golang-1.19-src imagemagick libjpeg-turbo-progs"
    # The plug-in measure.
    local levels="libebur128-dev"
    # What scripts/codecs.sh builds libraries for Windows with.
    local codecs="bzip2 make patch pkgconf xz-utils"
    # Clients and plug-ins in Pascal and C#, and those of compilers with the binary interface of Microsoft's.
    local others="fp-compiler mono-mcs mono-runtime" microsoft="clang lld llvm"
    # Wheels of the package for Python, and what reads and compares in its tests.
    local wheel="python3-cffi python3-dev python3-numpy python3-pip python3-setuptools python3-wheel"
    local python="$wheel python3-distributed python3-pytest python3-soundfile"
    # Checks of form and of the binary interface, and the other compiler of the C interface.
    local checks="clang clang-format clang-tidy abigail-tools xz-utils git"
    # What reads the manual pages and the completions of the program.
    local readers="fish man-db mandoc zsh"
    # The site, and what looks at it.
    local site="doxygen doxygen-awesome-css python3" browser="chromium chromium-driver fonts-dejavu-core python3-selenium"
    # What draws the plots of the pages.
    local plots="python3-matplotlib"
    # What ./run --bench compares with.
    local peers="libcereal-dev libeigen3-dev libglib2.0-dev libglm-dev libprotobuf-dev libsamplerate0-dev libsdl2-dev"
    peers+=" libsndfile1-dev libsoxr-dev libswresample-dev libavutil-dev libxcb1-dev qt6-base-dev sox"
    peers+=" python3-cffi python3-dev python3-numpy python3-pip python3-scipy python3-setuptools python3-soundfile python3-wheel"
    # A display for the tests of windows, and what windows on Linux are built with.
    local windows="openbox xvfb libxcb1-dev libxcb-xtest0-dev"
    # What is in every package, and the compiler of each zip.
    local packages="$build python3 git" mingw32="g++-mingw-w64-i686-posix" mingw64="g++-mingw-w64-x86-64-posix"
    case $1 in
    package-deb) echo "$packages dpkg-dev file $sounds $rates $sound_output $pictures $levels libxcb1-dev" ;;
    package-win32) echo "$packages $codecs llvm $mingw32" ;;
    package-win64) echo "$packages $codecs llvm $mingw64" ;;
    packages)
        # Both word sizes of Windows under Wine, what makes roots of Debian, and clients of Microsoft's binary interface.
        echo "$packages dpkg-dev file $sounds $rates $sound_output $pictures $levels libxcb1-dev $codecs $microsoft $mingw32 $mingw64"
        echo "ccache debootstrap flac lame lintian wine wine32:i386 wine64 xvfb"
        ;;
    site) echo "$site" ;;
    site-pictures) echo "$site $browser" ;;
    run-linux) echo "$build" ;;
    run-linux-codecs) echo "$sounds" ;;
    run-win32-codecs) echo "$codecs" ;;
    run-linux-pictures) echo "$pictures libxcb1-dev" ;;
    run-win32-pictures) echo "$codecs" ;;
    bench-linux) echo "$build libbenchmark-dev pkgconf python3 $plots util-linux xvfb" ;;
    bench-peers) echo "$peers" ;;
    bench-win32) echo "$build $codecs g++-mingw-w64-i686-posix wine wine32:i386 python3 util-linux" ;;
    run-win32) echo "$build g++-mingw-w64-i686-posix wine wine32:i386" ;;
    # wine64 as well: the tests' Wine prefix serves both word sizes.
    win32) echo "$tests $recordings $sound_tools $picture_tools $codecs libsndfile1 $microsoft g++-mingw-w64-i686-posix wine wine32:i386 wine64 xvfb" ;;
    win64) echo "$tests $wheel $recordings $sound_tools $picture_tools $codecs libsndfile1 $microsoft g++-mingw-w64-x86-64-posix wine wine32:i386 wine64 xvfb" ;;
    # The static emulator, for what scripts/target.sh says.
    linux-arm64) echo "$tests $wheel $recordings $sound_tools $picture_tools libsndfile1 g++-aarch64-linux-gnu qemu-user-static" ;;
    linux) echo "$tests $others $python $recordings $windows $rates $sounds $sound_tools $sound_output $sound_server $pictures $levels $picture_tools $checks $readers $site" ;;
    linux-asan | linux-tsan) echo "$tests $windows $rates $sounds $sound_tools $sound_output $sound_server $pictures $levels $picture_tools" ;;
    linux32-asan) echo "$tests $video_tools libc6-dev-i386 lib32stdc++-12-dev lib32asan8 lib32ubsan1" ;;
    linux-coverage) echo "$tests $others $recordings $windows $video_tools gcovr" ;;
    linux-fuzz) echo "g++ cmake ninja-build clang libclang-rt-14-dev $pictures" ;;
    *) return 1 ;;
    esac
}

# vorlund_require LOG PURPOSE...: makes the packages of all purposes present. Installs nothing, and needs neither
# root nor a network, when they are. Notes go to standard error, what apt says goes to the file LOG.
vorlund_require() {
    local log=$1 purpose package attempt sudo=""
    local -a missing=()
    shift
    for purpose in "$@"; do
        for package in $(vorlund_packages "$purpose"); do
            [[ " ${missing[*]} " == *" $package "* ]] && continue
            dpkg-query -W -f '${Status}' "$package" 2>/dev/null | grep -q ' installed$' || missing+=("$package")
        done
    done
    ((${#missing[@]})) || return 0

    if ((EUID != 0)); then
        if ! command -v sudo >/dev/null; then
            echo "vorlund: these packages are missing, and there is neither root nor sudo: ${missing[*]}" >&2
            return 1
        fi
        sudo=sudo
    fi
    echo "vorlund: installing ${missing[*]}" >&2
    mkdir -p "$(dirname "$log")"
    {
        if [[ " ${missing[*]} " == *:i386\ * ]]; then $sudo dpkg --add-architecture i386; fi
        # An index may be out of step for a moment. One that stays so (the i386 half of the security archive is
        # known for it) is no reason to stop: what matters is whether the packages install.
        for attempt in 1 2 3; do
            $sudo apt-get update && break
            ((attempt == 3)) || sleep 5
        done
        # The release is named because the two halves of a multi-architecture package must have one version, and
        # a mixture of archives may offer two.
        vorlund_install "$sudo" -t bookworm "${missing[@]}" || vorlund_install "$sudo" "${missing[@]}"
    } >>"$log" 2>&1 || {
        tail -n 20 "$log" >&2
        echo "vorlund: the packages could not be installed; see $log" >&2
        return 1
    }
}

# vorlund_require_each LOG PURPOSE: the packages of a purpose without which the rest goes on, as many as can be had.
vorlund_require_each() {
    local log=$1 package sudo=""
    vorlund_require "$log" "$2" && return
    ((EUID == 0)) || sudo=sudo
    for package in $(vorlund_packages "$2"); do
        dpkg-query -W -f '${Status}' "$package" 2>/dev/null | grep -q ' installed$' ||
            vorlund_install "$sudo" "$package" >>"$log" 2>&1 ||
            echo "vorlund: going on without $package" >&2
    done
}

vorlund_install() {
    $1 env DEBIAN_FRONTEND=noninteractive apt-get install -y --no-install-recommends "${@:2}"
}
