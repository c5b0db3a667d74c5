# shellcheck shell=bash disable=SC2034,SC2154
# ./test --packages: makes all packages and tests each in a root or prefix where nothing of Vorlund is. Sourced by ./test,
# after scripts/suites.sh.

# packages_target: packages, what is in them, and that a second build makes the same; the other forms of the library.
packages_target() {
    target=packages
    local passed=0 failed=0 skipped_total=0 start=$SECONDS kind out=build/packages
    echo "== $target"
    step recipes tests/packages/check_recipes.py
    for kind in deb win32 win64; do
        step "package $kind" ./package "$kind"
        if [[ $kind == deb ]]; then
            step "installed deb" tests/packages/check_deb.sh "$out" "$logs"
        else
            step "unpacked $kind" tests/packages/check_zip.sh "$kind" "$out" "$logs"
        fi
    done
    step "same contents" tests/packages/check_contents.py same $out/vorlund-*-win32.zip $out/vorlund-*-win64.zip
    step "sources inside" sources_inside
    step "fresh clone" tests/packages/check_clone.sh
    for kind in deb win32 win64; do step "twice $kind" tests/packages/check_twice.sh "$kind" "$out"; done
    row "made and tested in $((SECONDS - start)) s"
}

# The library as a part of somebody else's project. The builds lie where those of the presets do, so that a cache of compiled
# files serves them too.
sources_inside() {
    local work=$PWD/build
    vorlund_wine_env build/wine-test
    vorlund_wine_prefix || return
    tests/install/embedded.sh "$PWD" "$work" linux && tests/install/embedded.sh "$PWD" "$work" win32
}
