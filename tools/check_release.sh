#!/usr/bin/env bash
# Makes the release twice, from nothing but what is committed, in two new folders and without any cache, for two people
# who differ in what they can differ in, and compares all its files byte by byte.
set -euo pipefail
cd "$(dirname "$(readlink -f "${BASH_SOURCE[0]}")")/.."

work=$(mktemp -d -t korvane-releases-XXXXXX)
trap 'rm -rf "$work"' EXIT
first=$work/first
second=$work/a-second-time/in-a-folder-of-a-longer-name

# release_in FOLDER [NAME=VALUE...]: makes the release in a new clone.
release_in() {
    local folder=$1
    shift
    git -c advice.detachedHead=false clone --quiet --no-hardlinks . "$folder"
    env CCACHE_DISABLE=1 KORVANE_SKIP_PACKAGES=1 "$@" "$folder/dev" release
}

release_in "$first" TZ=UTC LC_ALL=C
(umask 077 && release_in "$second" TZ=Asia/Kathmandu LC_ALL=C.UTF-8 HOME="$work" USER=somebody)
diff -r "$first/dist" "$second/dist"
echo "identical:"
cat "$first/dist/SHA256SUMS"
