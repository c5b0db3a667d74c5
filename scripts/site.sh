#!/bin/bash
# Builds the site of the pages and of the headers into build/site/html, and checks its links. A warning of Doxygen fails.
# usage: scripts/site.sh [--pictures]
# With --pictures, Chromium shows every page in two widths: build/site/pictures, and errors of scripts fail.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."
theme=/usr/share/doxygen-awesome-css
if [[ ! -d $theme ]]; then
    echo "site: there is no $theme; ./run --site installs what the site needs" >&2
    exit 1
fi
site=build/site
rm -rf "$site/pages" "$site/html"
mkdir -p "$site/html"
scripts/site_pages.py "$site/pages" "$site/html"
version=$(sed -nE 's/^project\(Vorlund VERSION ([0-9.]+) .*/\1/p' CMakeLists.txt)
[[ -n $version ]]
sed "s/@PROJECT_VERSION@/$version/" include/vorlund/Version.h.in >"$site/Version.h"
{
    cat docs/site/Doxyfile
    echo "PROJECT_NUMBER = $version"
    echo "OUTPUT_DIRECTORY = $site"
    echo "INPUT = $site/pages include/vorlund bindings/c/include"
    echo "USE_MDFILE_AS_MAINPAGE = $site/pages/page_readme.md"
    echo "HTML_EXTRA_STYLESHEET = $theme/doxygen-awesome.css $theme/doxygen-awesome-sidebar-only.css docs/site/site.css"
} >"$site/Doxyfile"
doxygen "$site/Doxyfile"
scripts/site_finish.py "$site/html"
tests/docs/check_site.py "$site/html"
[[ ${1-} != --pictures ]] || tests/docs/show_site.py "$site/html" "$site/pictures"
