#!/usr/bin/env bash
# A specialised statement must end by jumping to the next one: if it called it, every statement would take stack until
# the run loop gets control back. Looks for calls of a token's `execute` in the compiled image's objects.
set -euo pipefail
cd "$(dirname "$0")/../build/image/CMakeFiles/korvane.efi.dir/src/fast"

# From memory at the offset of Token::execute, or through a register; steps are called at another offset.
calls='call +\*(0x38\(|%r)'
failed=0
for object in *.obj; do
    allowed=0
    case $object in
        run_fast.cpp.obj) allowed=1 ;; # run() itself starts the chain of statements
        sides.cpp.obj) continue ;;     # holds no statements, and calls steps through registers
    esac
    found=$(x86_64-w64-mingw32-objdump -d --no-show-raw-insn "$object" | grep -cE "$calls" || true)
    if [ "$found" != "$allowed" ]; then
        echo "$object: $found calls that may be a statement's, expected $allowed"
        failed=1
    fi
done
exit $failed
