#!/usr/bin/env bash
# Fails when a C++ source is not formatted as .clang-format says, and names the files; './dev format' mends them. Fails
# too when a comment begins with three slashes: comments have one form, which the formatter does not see to.
set -euo pipefail
cd "$(dirname "$0")/.."

if ! report=$(find src host web tests bench \( -name '*.cpp' -o -name '*.h' \) -print0 |
    xargs -0 clang-format --dry-run --Werror 2>&1); then
    sed -n 's/:[0-9]*:[0-9]*: error: .*/ is not formatted/p' <<<"$report" | sort -u
    exit 1
fi
if grep -rnE --include='*.cpp' --include='*.h' '^\s*///' src host web tests bench; then
    echo "comments begin with two slashes"
    exit 1
fi
