#!/usr/bin/env bash
# Fails when a C++ source is not formatted as .clang-format says, and names the files; './dev format' mends them.
set -euo pipefail
cd "$(dirname "$0")/.."

unformatted=()
while IFS= read -r -d '' file; do
    clang-format --dry-run --Werror "$file" 2>/dev/null || unformatted+=("$file")
done < <(find src host tests \( -name '*.cpp' -o -name '*.h' \) -print0)

[ ${#unformatted[@]} -eq 0 ] || {
    printf 'not formatted: %s\n' "${unformatted[@]}"
    exit 1
}
