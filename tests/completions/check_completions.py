"""Asks bash what it would complete for the script dev and for the interpreter in the terminal, and looks whether
the man page tells all options.

usage: check_completions.py KORVANE-TERMINAL
"""

import re
import subprocess
import sys
import tempfile
from pathlib import Path

ROOT = Path(__file__).resolve().parent.parent.parent

# Sources a completion, asks the function that is registered for the first word, prints what it offers.
ASK = """
source "$1"; shift
name=$1
COMP_WORDS=("$@")
COMP_CWORD=$(($# - 1))
function=$(complete -p "${name##*/}" | sed 's/.* -F \\([a-z_]*\\) .*/\\1/')
"$function" "$name" "${COMP_WORDS[COMP_CWORD]}" "${COMP_WORDS[COMP_CWORD - 1]}"
printf '%s\\n' "${COMPREPLY[@]}"
"""


# Options of the terminal that the script dev gives it itself, or that are for measurements.
OF_THE_SCRIPT = {"--image", "--present", "--code-memory", "--help"}


def offered(completion, *words, folder=ROOT):
    done = subprocess.run(["bash", "-c", ASK, "bash", ROOT / "packaging/completions" / completion, *words], cwd=folder,
                          capture_output=True, text=True, check=True, timeout=120)
    if done.stderr:
        raise ValueError(done.stderr)
    return sorted(filter(None, done.stdout.splitlines()))


def told(text):
    """The options that a text names."""
    return set(re.findall(r"--[a-z][a-z-]*", text))


def main(terminal):
    found = []

    def expect(shown, expected, what):
        if shown != sorted(expected):
            found.append(f"{what}: {shown} and not {sorted(expected)}")

    dev = str(ROOT / "dev")
    usage = subprocess.run([dev, "help"], capture_output=True, text=True, check=True).stdout
    commands = {row[1] for row in re.finditer(r"^  ([a-z]+)", usage, re.M)}
    if not {"run", "qemu", "image", "build", "test", "bench", "format"} <= commands:
        found.append(f"the commands of dev are not understood: {commands}")
    # Every command that the script dispatches is told by its help, so that it is offered.
    dispatch = Path(dev).read_text().rpartition('case "$command" in')[2]
    handled = {word for row in re.findall(r"^    ([a-z][a-z |-]*)\)", dispatch, re.M) for word in re.split(r"\W+", row)}
    expect(offered("dev", dev, ""), handled - {"help", "h"}, "dev")
    expect(offered("dev", dev, "be"), ["bench"], "dev be")
    expect(offered("dev", dev, "test", ""), re.findall(r"^  test ([a-z]+) ", usage, re.M), "dev test")
    for missing in {"quick", "fresh"} - set(offered("dev", dev, "test", "")):
        found.append(f"dev test {missing} is not offered")
    begun = [word for word in ("--size", "--screenshot", "--script") if word in usage]
    expect(offered("dev", dev, "run", "--s"), begun, "dev run --s")
    options = subprocess.run([terminal, "--help"], capture_output=True, text=True, check=False)
    expect(offered("korvane", terminal, "-"), told(options.stdout), "korvane -")
    for missing in {"--script", "--volume", "--size", "--no-keys", "--no-rescue"} - told(options.stdout):
        found.append(f"korvane --help does not tell {missing}")
    for missing in told(options.stdout) - OF_THE_SCRIPT - told(usage):
        found.append(f"dev help does not tell {missing}, which dev run passes on")
    page = (ROOT / "packaging/man/korvane.1").read_text().replace("\\-", "-")
    # Each has an entry of its own: the line behind ".TP".
    entries = " ".join(re.findall(r"^\.TP\n(.*)", page, re.M)).replace('"', " ").split()
    untold = told(options.stdout) - set(entries)
    if untold or "--volume" not in page:
        found.append(f"the man page does not tell {untold}")
    if "--volume" not in offered("korvane", terminal, "--v"):
        found.append("korvane --v does not offer --volume")

    with tempfile.TemporaryDirectory(prefix="korvane-completions-") as folder:
        for name in ("a.bas", "A.BAS", "a.txt", "a.efi"):
            (Path(folder) / name).touch()
        (Path(folder) / "a.folder").mkdir()
        expect(offered("korvane", terminal, "a", folder=folder), ["a.bas", "a.folder"], "korvane a")
        expect(offered("korvane", terminal, "A", folder=folder), ["A.BAS"], "korvane A")
        expect(offered("korvane", terminal, "--volume", "a", folder=folder), ["a.folder"], "korvane --volume a")
        expect(offered("korvane", terminal, "--image", "a", folder=folder), ["a.efi", "a.folder"], "korvane --image a")
        expect(offered("korvane", terminal, "--code-memory", "", folder=folder), ["hidden", "refused"], "korvane --code-memory")
        expect(offered("dev", dev, "run", "a", folder=folder), ["a.bas", "a.folder"], "dev run a")
        expect(offered("dev", dev, "qemu", "a.t", folder=folder), ["a.txt"], "dev qemu a.t")
        expect(offered("dev", dev, "run", "--type", "a.t", folder=folder), ["a.txt"], "dev run --type a.t")
        # A script is a program; what follows it is anything.
        expect(offered("korvane", terminal, "--scr", folder=folder), ["--script"], "korvane --scr")
        expect(offered("korvane", terminal, "--script", "a", folder=folder), ["a.bas", "a.folder"], "korvane --script a")
        everything = ["a.bas", "a.efi", "a.folder", "a.txt"]
        expect(offered("korvane", terminal, "--script", "a.bas", "a", folder=folder), everything, "korvane --script a.bas a")
        expect(offered("korvane", terminal, "--script", "a.bas", "--s", folder=folder), [], "korvane --script a.bas --s")
        expect(offered("dev", dev, "run", "--script", "a", folder=folder), ["a.bas", "a.folder"], "dev run --script a")
        expect(offered("dev", dev, "run", "--script", "a.bas", "a", folder=folder), everything, "dev run --script a.bas a")
    print("\n".join(found))
    print(f"completions: {len(found)} failures")
    return 1 if found else 0


if __name__ == "__main__":
    sys.exit(main(*sys.argv[1:]))
