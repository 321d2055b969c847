#!/usr/bin/env bash
# Fails when an image is larger than it may be, for it is copied into every standalone program.
#
#     tools/check_size.sh IMAGE KIB
set -euo pipefail

size=$(stat -c %s "$1")
echo "$1: $size bytes of at most $(($2 * 1024))"
[ "$size" -le $(($2 * 1024)) ]
