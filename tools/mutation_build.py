"""Compiles one changed source of src/ and links the tests with it, without touching the tree it came from: so that
several can be tried at once, and nothing is built twice.

The commands are those of the tree's own build, host/: every object that it has, but for the changed one. Warnings are
switched off, which takes time, and would keep mutants from compiling that only look odd. The linker is lld where it is
there.
"""

import hashlib
import json
import pathlib
import shlex
import shutil
import subprocess

INTERPRETER = "libinterpreter.a"
# The interpreter inside a test makes no machine code, because only the image's compiler has been told to make jumps of
# the calls that it relies on. That of these objects does so too, at the level they are compiled with: so there is machine
# code where the image would have it, and of every statement for mutants of what makes it.
THRESHOLDS = "native/fragments.cpp"
NATIVE = ["-DKORVANE_FREESTANDING"]
NATIVE_AT_ONCE = [*NATIVE, "-DKORVANE_NATIVE_THRESHOLD=1"]
# The places that a test reaches are noted with the lines that they come from.
NOTED = ["-fsanitize-coverage=trace-pc", "-g1"]


class Builder:
    """The objects and commands of the tree's host build."""

    def __init__(self, tree):
        self.tree = tree
        self.host = tree / "build/host"
        self.compiling = {}
        self.objects = {}  # of each source of src/
        for entry in json.loads((self.host / "compile_commands.json").read_text()):
            file = pathlib.Path(entry["file"])
            words = shlex.split(entry["command"])
            made = words[words.index("-o") + 1]
            if file.is_relative_to(tree / "src") and "/interpreter" in made:
                name = str(file.relative_to(tree / "src"))
                self.objects[name] = self.host / made
                self.compiling[name] = compiler_of(words)
        self.linking = {}

    def source(self, name):
        return (self.tree / "src" / name).read_text()

    def compile(self, name, text, made, extra=()):
        """Whether it compiles. The text comes in by standard input, and finds its neighbours from its own folder."""
        command = [*self.compiling[name], "-w", *extra, "-x", "c++", "-c", "-o", made, "-"]
        path = self.tree / "src" / name
        text = f'#line 1 "{path}"\n{text}'
        return subprocess.run(command, cwd=path.parent, input=text, text=True, capture_output=True, check=False).returncode == 0

    def link_command(self, program):
        """The words before and behind the interpreter's objects, without the program that is made."""
        if program not in self.linking:
            listing = subprocess.run(
                ["ninja", "-C", self.host, "-t", "commands", program], capture_output=True, text=True, check=True
            ).stdout.split("\n")
            words = shlex.split(listing[-2] if not listing[-1] else listing[-1])
            words = words[words.index("&&") + 1 :]
            words = words[: words.index("&&")]
            at = words.index("-o")
            words = words[:at] + words[at + 2 :]
            place = [number for number, word in enumerate(words) if word.endswith(INTERPRETER)][-1]
            before = [word for word in words[:place] if not word.endswith(INTERPRETER)]
            behind = words[place + 1 :]
            self.linking[program] = before, behind
        return self.linking[program]

    def link(self, program, made, changed, more=()):
        """The program with the objects of `changed`, by the names of their sources, in place of the tree's."""
        before, behind = self.link_command(program)
        objects = [changed.get(name, path) for name, path in self.objects.items()]
        linker = ["-fuse-ld=lld"] if shutil.which("ld.lld") else []
        command = [*before, *linker, "-o", made, *more, *objects, *behind]
        return subprocess.run(command, cwd=self.host, capture_output=True, text=True, check=False)


def compiler_of(words):
    """The words of a compile command that every source needs."""
    words = [word for word in words if "ccache" not in word]
    kept, at = [], 0
    while at < len(words):
        if words[at] == "-o" or words[at] == "-c":
            at += 2
            continue
        if words[at] not in ("-Werror", "-Wall", "-Wextra", "-Wconversion", "-Wshadow"):
            kept.append(words[at])
        at += 1
    return kept


def sum_of(path):
    return hashlib.sha256(pathlib.Path(path).read_bytes()).hexdigest()
