"""The screen on real firmware: every mode that it offers, and the examples' pictures."""

import sys

import pytest
from conftest import ROOT, make_disk
from woken_machine import wake

sys.path.insert(0, str(ROOT / "tests" / "pictures"))

from compare_pictures import read_png  # noqa: E402

# Resolutions that firmware for virtual and real machines has; a firmware offers some of them. 1366x768 is not among
# them: the virtual display adapter cuts widths to a multiple of 8, and its firmware reports scan lines of 1366 pixels all
# the same.
RESOLUTIONS = [
    (640, 400), (640, 480), (800, 480), (800, 600), (832, 624), (960, 540), (960, 640), (1024, 600), (1024, 768),
    (1152, 864), (1152, 870), (1280, 720), (1280, 760), (1280, 768), (1280, 800), (1280, 854), (1280, 960), (1280, 1024),
    (1360, 768), (1400, 1050), (1440, 900), (1600, 900), (1600, 1200), (1680, 1050), (1920, 1080), (2560, 1600),
]  # fmt: skip

# Changes to the mode W x H and draws its corners.
PROGRAM = [
    "10 SCREEN W,H:X=GRAMAXX-1:Y=GRAMAXY-1",
    "20 PSET (0,0),4:PSET (X,0),2:PSET (0,Y),1:PSET (X,Y),14",
    '30 LOCATE 5,1:PRINT "MARKED";GRAMAXX;GRAMAXY',
]
FAILURE = "Illegal function call"


def corners(screen):
    right, bottom = screen.width - 1, screen.height - 1
    return [screen.pixel(x, y) for x, y in [(0, 0), (right, 0), (0, bottom), (right, bottom)]]


def test_every_offered_mode_can_be_set_and_left_again(prompt):
    for line in PROGRAM:
        prompt.type_line(line)
    offered = []
    mode = (1280, 800)
    for width, height in [*RESOLUTIONS, (1280, 800)]:
        prompt.type_line(f"CLS:W={width}:H={height}:GOTO 10")
        marked = f"MARKED {width}  {height}"
        screen = prompt.wait_for(
            lambda screen: FAILURE in screen.rows() or marked in screen.rows(), 60, f"SCREEN {width},{height} to end"
        )
        if FAILURE not in screen.rows():
            mode = (width, height)
            offered.append(mode)
            assert corners(screen) == [0xAA0000, 0x00AA00, 0x0000AA, 0xFFFF55]
        assert (screen.width, screen.height) == mode
    assert mode == (1280, 800) and (640, 480) in offered and len(offered) > 10


@pytest.mark.parametrize("name", ["plotter", "maze", "mandelbrot", "dashboard"])
def test_an_example_shows_its_picture(tmp_path, name):
    width, height, pixels = read_png(ROOT / "docs" / "pictures" / f"{name}.png")
    program = (ROOT / "examples" / f"{name}.bas").read_bytes()
    disk = make_disk(tmp_path, files={"STARTUP.BAS": program})

    with wake(disk) as machine:
        machine.wait_for(
            lambda screen: (screen.width, screen.height, screen.pixels) == (width, height, pixels),
            120,
            f"the picture of {name}",
        )
