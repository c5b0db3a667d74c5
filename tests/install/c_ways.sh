# shellcheck shell=bash disable=SC2016,SC2154
# The ways of programs and plug-ins in C. Sourced by consumers.sh.

# The first line in the blocks of a page that begins with these words.
line_of() {
    local line
    line=$(sed -n '/^```/,/^```/s/^\(\$ \)\?\('"$2"'.*\)/\2/p' "$sources/docs/$1" | head -n 1)
    [[ -n $line ]] || { echo "docs/$1 has no line that begins with '$2'" >&2; return 1; }
    echo "$line"
}

# The compiler of C, in the words of the pages and here.
c_compiler=gcc
[[ -z $machine ]] || c_compiler=$machine-gcc-posix

# runs_c PROGRAM PLUGIN
runs_c() { run "$1" "$recording" "$2" >>"$work/c.log" 2>&1 || { tail -n 5 "$work/c.log"; exit 1; }; }

# The plug-in of the guide, as it is there, in a folder that has what its commands name.
tone=$work/tone
mkdir "$tone"
"$here/c/tone.sh" >"$tone/tone.c"
ln -s "$prefix/include" "$tone/include"
ln -s "$(dirname "$(find "$prefix/lib" -name VorlundPluginTable.def)")" "$tone/cmake"

logged c-cmake cmake -G Ninja -S "$here/c" -B "$work/c-cmake" -DCMAKE_BUILD_TYPE=Release -DVORLUND_WANTED="$version" \
    -DVORLUND_TONE="$tone/tone.c" "${options[@]}"
logged c-build cmake --build "$work/c-cmake"
runs_c "$work/c-cmake/c_consumer$exe" "$work/c-cmake/plugins/tone.$so"
way "C: find_package, and a plug-in by vorlund_add_plugin TABLE, in a project of C alone"

# shellcheck disable=SC2046
$c_compiler -std=c99 "$here/c/consumer.c" -o "$work/c-consumer$exe" $(pkg-config --cflags --libs vorlund-c)
runs_c "$work/c-consumer$exe" "$work/c-cmake/plugins/tone.$so"
way "C: pkg-config"

# The lines of the pages, with the names of files as here.
hand=$work/c-hand
mkdir "$hand"
cp "$here/c/consumer.c" "$hand/host.c"
if [[ -n $machine ]]; then
    ln -s "$prefix" "$hand/vorlund"
    line=$(line_of c.md i686-w64-mingw32-gcc)
    plugin_line=$(line_of plugins-in-c.md i686-w64-mingw32-gcc)
    line=${line/i686-w64-mingw32-gcc/$c_compiler} plugin_line=${plugin_line/i686-w64-mingw32-gcc/$c_compiler}
else
    line=$(line_of c.md 'cc examples.11-c-host')
    line=${line/examples\/11-c-host\/main.c/host.c}
    # It goes on in a second line.
    plugin_line=$(sed -n '/^gcc .*tone\.c/{N;s/\\\n//;p}' "$sources/docs/plugins-in-c.md")
fi
(cd "$hand" && bash -euc "$line")
(cd "$tone" && bash -euc "$plugin_line")
runs_c "$hand/host$exe" "$tone/tone.$so"
way "C: program and plug-in by the lines of the pages"

# What other compilers for Windows link: the library that comes along, and one made from the definition.
microsoft() {
    local client=$sources/tests/bindings/others/msvc triple=i686 bits=i386 safe=/safeseh:no library
    mkdir "$work/msvc"
    cd "$work/msvc" || return
    cp "$client/kernel32.def" "$prefix/lib/vorlund_c.def" .
    if [[ $target == win64 ]]; then
        triple=x86_64 bits=i386:x86-64 safe=""
        sed -i 's/@[0-9]*//' ./*.def
    fi
    llvm-dlltool -m "$bits" -k -D kernel32.dll -d kernel32.def -l kernel32.lib
    llvm-dlltool -m "$bits" -k -D vorlund-c-1.dll -d vorlund_c.def -l own.lib
    clang --target="$triple-pc-windows-msvc" -ffreestanding -I "$prefix/include" -c "$client/client.c" -o client.obj
    for library in own.lib "$prefix/lib/vorlund-c.lib"; do
        # shellcheck disable=SC2086
        lld-link /nodefaultlib /subsystem:console /entry:start $safe /out:client.exe client.obj "$library" kernel32.lib
        run ./client.exe | tr -d '\r' >output
        grep -qx 'version 1 0' output
        grep -qx 'handles 0 0' output
        # Names as the DLL has them, without decoration.
        llvm-readobj --coff-imports client.exe | grep 'Symbol: vorlund_open ' >/dev/null
    done
}
if [[ -n $machine ]]; then
    logged microsoft microsoft
    way "C: clang and lld-link with vorlund-c.lib, and with one from vorlund_c.def"
fi
