#!/usr/bin/env bash
# The same as tools/check_tail_calls.sh for WebAssembly, where jumps have to be asked for (KORVANE_JUMP): a call through a
# pointer after which a specialised statement or a step only returns has to be one.
set -euo pipefail
cd "$(dirname "$0")/../build/wasm/CMakeFiles/machine_parts.dir/src/fast"

failed=0
jumps=0
for object in *.obj; do
    [ "$object" != text_steps.cpp.obj ] || continue # texts have no chains; a step may end by calling a function
    code=$(llvm-objdump-19 -d --no-show-raw-insn "$object")
    jumps=$((jumps + $(grep -c return_call_indirect <<<"$code" || true)))
    # Behind such a call come only moves of its result and the ends of blocks.
    found=$(awk '
        /^[0-9a-f]+ <.*>:$/ { name = $2; call = 0 }
        /^$/ && call { print name; call = 0 }
        $2 == "call_indirect" { call = 1; next }
        $2 !~ /^(local\.get|local\.set|local\.tee|end|return|)$/ { call = 0 }' <<<"$code
" | sort -u)
    [ -z "$found" ] || {
        printf '%s: calls where it should jump\n%s\n' "$object" "$found"
        failed=1
    }
done
[ "$jumps" -gt 100 ] || {
    echo "only $jumps jumps are found in all objects"
    failed=1
}
exit $failed
