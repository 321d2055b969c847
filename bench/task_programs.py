"""The tasks of bench/tasks, completed by the programs that are made from others."""

import pathlib
import re
import shutil

import make_jumps

ROOT = pathlib.Path(__file__).resolve().parent.parent

# Tasks whose program for the image bwbasic understands as it is.
BWBASIC_TASKS = ("empty_loop", "expressions", "functions", "mandelbrot", "matrix", "strings", "while_else")

# Tasks whose program for Lua has operators that LuaJIT does not have.
LUAJIT_TASKS = ("integers", "lcg_int64", "while_else")

# Tasks that are others of them with a line in front; the other interpreters, for which the line says nothing, play theirs.
VARIANTS = {"mandelbrot_single": ("mandelbrot", "5 DEFSNG A-Z\n")}


def for_bwbasic(program):
    """It is so slow that once is enough, and stays at its prompt after END."""
    return re.sub(r"END$", "SYSTEM", re.sub(r" R = \d+$", " R = 1", program, count=1, flags=re.MULTILINE).rstrip()) + "\n"


def for_luajit(program):
    """// by a function, and & with ones by a remainder: LuaJIT has the operators of Lua 5.1."""
    program = re.sub(r"(\w+) // (\w+)", r"floor(\1 / \2)", program)
    program = program.replace("& 4294967295", "% 4294967296")
    return "local floor = math.floor\n" + program


def write_tasks(folder):
    """Writes a folder for each task below `folder`, with one program for each language; gives them sorted."""
    shutil.copytree(ROOT / "bench/tasks", folder)
    for name in BWBASIC_TASKS:
        (folder / name / "bwbasic.bas").write_text(for_bwbasic((folder / name / "korvane.bas").read_text()))
    for name in LUAJIT_TASKS:
        (folder / name / "luajit.lua").write_text(for_luajit((folder / name / "lua.lua").read_text()))
    for name, (original, line) in VARIANTS.items():
        shutil.copytree(folder / original, folder / name)
        program = folder / name / "korvane.bas"
        program.write_text(line + program.read_text())
    make_jumps.write_programs(folder / "jumps")
    return sorted(folder.iterdir(), key=lambda task: task.name)
