#!/bin/bash
# Prints the plug-in of docs/plugins-in-c.md as it is there. usage: tests/install/c/tone.sh
page=$(dirname "${BASH_SOURCE[0]}")/../../../docs/plugins-in-c.md
# shellcheck disable=SC2016
sed -n '/^```c$/,/^```/{/^```/d;p}' "$page"
