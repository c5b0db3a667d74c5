# shellcheck shell=bash
# Roots of Debian 12 to install packages into. They are made once, in VORLUND_CACHE (by default ~/.cache/vorlund), and used
# under an overlay, so that each test begins with the same one. Needs root and debootstrap. Sourced by the checks here.

roots=${VORLUND_CACHE:-${XDG_CACHE_HOME:-$HOME/.cache}/vorlund}/roots
mirror=http://deb.debian.org/debian

# make_root bare|build: prints its folder. "bare" is the smallest Debian; "build" has what compiles programs besides.
make_root() {
    local folder=$roots/bookworm-$1
    if [[ ! -e $folder.complete ]]; then
        rm -rf "$folder"
        mkdir -p "$roots"
        if [[ $1 == bare ]]; then
            debootstrap --variant=minbase bookworm "$folder" "$mirror" >&2 || return
        else
            cp -a "$(make_root bare)" "$folder" || return
            printf 'APT::Install-Recommends "false";\n' >"$folder/etc/apt/apt.conf.d/90small"
            cp -L /etc/resolv.conf "$folder/etc/resolv.conf"
            chroot "$folder" env DEBIAN_FRONTEND=noninteractive sh -c \
                'apt-get update && apt-get install -y g++ cmake ninja-build make pkgconf ccache && apt-get clean' >&2 || return
        fi
        touch "$folder.complete"
    fi
    echo "$folder"
}

# in_root bare|build FOLDER COMMAND...: runs a command in a fresh copy of the root, with FOLDER as /mnt there and a cache of
# compiled files. What it writes elsewhere is lost.
in_root() {
    local root work status
    root=$(make_root "$1") || return
    work=$(mktemp -d)
    mkdir -p "$work/upper" "$work/work" "$work/root" "$roots/ccache"
    # The mounts go with their namespace.
    # shellcheck disable=SC2016
    unshare --mount sh -euc '
        root=$1 work=$2 folder=$3 cache=$4
        shift 4
        mount -t tmpfs none "$work"
        mkdir "$work/upper" "$work/work" "$work/root"
        mount -t overlay overlay -o "lowerdir=$root,upperdir=$work/upper,workdir=$work/work" "$work/root"
        mount -t proc proc "$work/root/proc"
        mount --rbind /dev "$work/root/dev"
        mount --bind "$folder" "$work/root/mnt"
        cp -L /etc/resolv.conf "$work/root/etc/resolv.conf"
        mkdir -p "$work/root/ccache"
        mount --bind "$cache" "$work/root/ccache"
        exec chroot "$work/root" env -i PATH=/usr/sbin:/usr/bin:/sbin:/bin HOME=/root LC_ALL=C.UTF-8 TERM=dumb \
            DEBIAN_FRONTEND=noninteractive CCACHE_DIR=/ccache "$@"
    ' sh "$root" "$work" "$2" "$roots/ccache" "${@:3}"
    status=$?
    rm -rf "$work"
    return "$status"
}
