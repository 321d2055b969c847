"""Virtual PCs that wake where their firmware first reads a disk, instead of starting from cold.

Until then firmware does the same for all disks of a size, and it is most of what a start takes: 3.7 of 4.4 s of a
processor. So one machine is run to that moment, with a disk that cannot be read, where QEMU stops it; what it is then is
kept in build/woken until QEMU, its firmware or these tools change. A woken machine reads its own disk from the first
block on. Machines with devices of their own, those of './dev qemu' and those of tests/firmware start from cold.
"""

import fcntl
import hashlib
import os
import pathlib
import time

import programs
import qemu_machine
from qemu_machine import Machine, MachineError

FOLDER = pathlib.Path(__file__).resolve().parents[2] / "build" / "woken"
FIRMWARE_TIMEOUT = 90

# Every read of the disk fails, which stops the machine; it reads again when it goes on.
UNREADABLE_DISK = (
    "if=ide,rerror=stop,driver=blkdebug,image.driver=null-co,image.size={},"
    "inject-error.0.event=none,inject-error.0.iotype=read,inject-error.0.errno=5"
)


def identity(path):
    status = os.stat(path)
    return f"{path} {status.st_size} {status.st_mtime_ns}\n"


def state_file(size):
    """The state of a machine whose firmware is about to read a disk of so many bytes; made when there is none yet."""
    parts = [programs.find(qemu_machine.QEMU), qemu_machine.FIRMWARE_CODE, qemu_machine.FIRMWARE_VARIABLES]
    parts += [qemu_machine.__file__, __file__]
    name = hashlib.sha256(("".join(map(identity, parts)) + str(size)).encode()).hexdigest()[:16]
    path = FOLDER / f"{size}-{name}"
    FOLDER.mkdir(parents=True, exist_ok=True)
    with open(FOLDER / "lock", "wb") as lock:
        fcntl.flock(lock, fcntl.LOCK_EX)
        if not path.exists():
            for stale in FOLDER.glob(f"{size}-*"):
                stale.unlink()
            unfinished = FOLDER / "unfinished"
            make_state(size, unfinished)
            unfinished.rename(path)
    return path


def make_state(size, path):
    with Machine(None, arguments=["-drive", UNREADABLE_DISK.format(size)]) as machine:
        deadline = time.monotonic() + FIRMWARE_TIMEOUT
        while machine.status() != "io-error":
            if time.monotonic() > deadline:
                raise MachineError(f"the firmware has read no disk in {FIRMWARE_TIMEOUT} s")
            time.sleep(0.05)
        machine.save_state(path)


def wake(disk):
    """A machine with this disk (a DiskImage), whose firmware now looks for what to boot; close it (or use it in a with statement)."""
    return Machine(disk.path, state=state_file(os.path.getsize(disk.path)))
