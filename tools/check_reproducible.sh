#!/usr/bin/env bash
# Builds the image again, from a copy of the sources at another path and without any cache, and compares it with
# build/korvane.efi byte by byte: the image depends on its sources alone.
set -euo pipefail
cd "$(dirname "$0")/.."

copy=$(mktemp -d -t korvane-second-build-XXXXXX)
trap 'rm -rf "$copy"' EXIT
cp -r CMakeLists.txt CMakePresets.json cmake tools src "$copy"
export CCACHE_DISABLE=1
(cd "$copy" && cmake --preset image >/dev/null && ninja -C build/image --quiet)
cmp build/korvane.efi "$copy/build/korvane.efi"
echo "identical: $(sha256sum build/korvane.efi)"
