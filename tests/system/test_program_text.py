"""Program files on disks: converted as the terminal converts them."""

import subprocess

import pytest
from conftest import IMAGE, ROOT
from disk_image import DiskImage, DiskImageError
from program_text import ProgramTextError, to_codes

TERMINAL = ROOT / "build" / "host" / "host" / "korvane-terminal"


@pytest.mark.parametrize("data, codes", [
    (b"10 PRINT 1\r\n", b"10 PRINT 1\r\n"),
    (b"\xef\xbb\xbf10 '\xc3\xa9\n", b"10 '\x82\n"),
    ("10 '░☺⌂\u00a0字♪\n".encode(), b"10 '\xb0\x01\x7f\xff??\n"),
    (b"10 '\x82\xb0\n", b"10 '\x82\xb0\n"),
    (b"\t10\tEND\n \t\r\n\x1a", b" 10 END\n\r\n"),
    (b"10 END\r  \r20 END", b"10 END\r\r20 END"),
    (b"", b""),
])  # fmt: skip
def test_text_becomes_codes(data, codes):
    assert to_codes(data) == codes


@pytest.mark.parametrize("encoding", ["utf-16", "utf-16-le", "utf-16-be"])
def test_utf_16_is_refused(encoding):
    with pytest.raises(ProgramTextError):
        to_codes("10 END\n".encode(encoding))


def test_terminal_reads_the_same(tmp_path):
    """Every character of the code page, as both converters read it."""
    characters = "".join(bytes([code]).decode("cp437") for code in range(128, 256)) + "☺♥►⌂字"
    program = f'10 A$="{characters}"\n20 FOR I=1 TO LEN(A$):PRINT ASC(MID$(A$,I)):NEXT\n'.encode()
    (tmp_path / "p.bas").write_bytes(program)
    done = subprocess.run(
        [TERMINAL, "--image", IMAGE, "--script", tmp_path / "p.bas"], stdin=subprocess.DEVNULL, capture_output=True,
        check=True,
    )  # fmt: skip
    text = to_codes(program).split(b'"')[1]
    assert [int(line) for line in done.stdout.split()] == list(text)


def test_disk_holds_codes(tmp_path):
    (tmp_path / "p.bas").write_bytes("10 'é\n".encode())
    (tmp_path / "p.txt").write_bytes("é\n".encode())
    disk = DiskImage(tmp_path / "disk.img").create()
    disk.install(IMAGE, {"P.BAS": tmp_path / "p.bas", "P.TXT": tmp_path / "p.txt"})
    assert disk.get_bytes("P.BAS") == b"10 '\x82\n"
    assert disk.get_bytes("P.TXT") == "é\n".encode()


def test_disk_refuses_utf_16(tmp_path):
    (tmp_path / "p.bas").write_bytes("10 END\n".encode("utf-16"))
    with pytest.raises(DiskImageError, match="p.bas: it is in UTF-16"):
        DiskImage(tmp_path / "disk.img").create().install(IMAGE, {"P.BAS": tmp_path / "p.bas"})
