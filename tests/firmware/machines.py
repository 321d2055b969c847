"""The virtual PCs that './dev test firmware' tries: a row for each, one thing of each changed.

What a row leaves out is as in the first one: QEMU's q35 with 1 GiB of memory, its usual display, a SATA disk, a PS/2
keyboard, and Debian's OVMF in a flash of 4 MiB.
"""

import dataclasses
import pathlib

FOLDER = pathlib.Path("/usr/share/OVMF")
GOP_NOT_FOUND = "GOP not found!"

NO_DISPLAY = ["-vga", "none"]
USB = ["-device", "qemu-xhci,id=usb"]


@dataclasses.dataclass(frozen=True)
class Firmware:
    name: str
    code: pathlib.Path
    variables: pathlib.Path
    arguments: tuple = ()
    signed: bool = False  # runs nothing but what is signed


OVMF = Firmware("OVMF, 4 MiB", FOLDER / "OVMF_CODE_4M.fd", FOLDER / "OVMF_VARS_4M.fd")
OVMF_2M = Firmware("OVMF, 2 MiB", FOLDER / "OVMF_CODE.fd", FOLDER / "OVMF_VARS.fd")
# Its variables are kept in system management mode.
SECURE = Firmware(
    "OVMF with Secure Boot", FOLDER / "OVMF_CODE_4M.secboot.fd", FOLDER / "OVMF_VARS_4M.snakeoil.fd",
    ("-machine", "q35,smm=on", "-global", "driver=cfi.pflash01,property=secure,value=on"), True,
)  # fmt: skip


@dataclasses.dataclass(frozen=True)
class Medium:
    """Where the interpreter is started from; {} in its arguments is the image file."""

    name: str
    arguments: tuple = ("-drive", "format=raw,file={}")
    read_only: bool = False
    kind: str = "disk"  # as media.py makes it: "disk", "cd", "big sectors" or "shell"


SATA = Medium("SATA disk")
NODE = "driver=raw,node-name=boot,file.driver=file,file.filename={}"


def block_device(name, *devices, node=NODE, **options):
    return Medium(name, ("-blockdev", node, *(word for device in devices for word in ("-device", device))), **options)


@dataclasses.dataclass(frozen=True)
class VirtualPC:
    name: str
    arguments: tuple = ()
    firmware: Firmware = OVMF
    medium: Medium = SATA
    memory: int = 1024  # MiB
    mode: tuple = None  # that SCREEN changes to
    says: str = None  # on the firmware's console, when nothing can be shown
    usb_keyboard: bool = False  # is typed on
    options: str = None  # the command line; then it is started from the UEFI shell


def with_display(name, *words, **options):
    return VirtualPC(name, tuple(NO_DISPLAY) + words, **options)


VIRTUAL_PCS = [
    VirtualPC("`q35`"),
    VirtualPC("`q35`", firmware=OVMF_2M),
    VirtualPC("`q35`", firmware=SECURE),
    # Displays
    VirtualPC("display `virtio-vga`", ("-vga", "virtio")),
    VirtualPC("display `qxl-vga`", ("-vga", "qxl")),
    VirtualPC("display `vmware-svga`", ("-vga", "vmware")),
    VirtualPC("display `cirrus-vga`", ("-vga", "cirrus")),
    with_display("display `bochs-display`", "-device", "bochs-display"),
    with_display("display `ramfb`", "-device", "ramfb"),
    VirtualPC("displays `VGA` and `virtio-gpu-pci`", ("-device", "virtio-gpu-pci")),
    VirtualPC("displays `VGA` and `bochs-display`", ("-device", "bochs-display")),
    with_display("display `virtio-gpu-pci`", "-device", "virtio-gpu-pci", says=GOP_NOT_FOUND),
    with_display("no display", says=GOP_NOT_FOUND),
    # Modes
    VirtualPC("640x480", mode=(640, 480)),
    VirtualPC("800x600", mode=(800, 600)),
    VirtualPC("1024x768", mode=(1024, 768)),
    VirtualPC("1920x1080", mode=(1920, 1080)),
    with_display("2560x1600", "-device", "VGA,vgamem_mb=64", mode=(2560, 1600)),
    with_display("1280x720 of `bochs-display`", "-device", "bochs-display", mode=(1280, 720)),
    # Media
    VirtualPC("`q35`", medium=block_device("NVMe disk", "nvme,drive=boot,serial=1")),
    VirtualPC("`q35`", medium=block_device("virtio disk", "virtio-blk-pci,drive=boot")),
    VirtualPC("`q35`", medium=block_device("SCSI disk", "virtio-scsi-pci", "scsi-hd,drive=boot")),
    VirtualPC("`q35`", medium=block_device("USB stick", "qemu-xhci", "usb-storage,drive=boot")),
    VirtualPC("`q35`", medium=block_device("USB stick that cannot be written", "qemu-xhci", "usb-storage,drive=boot",
                                           node=NODE + ",read-only=on", read_only=True)),
    VirtualPC("`q35`", medium=Medium("CD", ("-cdrom", "{}"), read_only=True, kind="cd")),
    VirtualPC("`q35`", medium=block_device(
        "NVMe disk with sectors of 4096 bytes", "nvme,drive=boot,serial=1,logical_block_size=4096,physical_block_size=4096",
        kind="big sectors")),
    # Memory
    VirtualPC("512 MiB of memory", memory=512),
    VirtualPC("2 GiB of memory", memory=2048),
    VirtualPC("4 GiB of memory, some of it above the first 4 GiB", memory=4096),
    VirtualPC("8 GiB of memory, most of it above the first 4 GiB", memory=8192),
    # Keyboards
    VirtualPC("USB keyboard", ("-machine", "q35,i8042=off", *USB, "-device", "usb-kbd,bus=usb.0"), usb_keyboard=True),
    VirtualPC("PS/2 and USB keyboards", (*USB, "-device", "usb-kbd,bus=usb.0"), usb_keyboard=True),
    # Processors
    VirtualPC("processor `qemu64`", ("-cpu", "qemu64")),
    VirtualPC("4 processors", ("-smp", "4")),
    VirtualPC("machine `pc`", ("-machine", "pc")),
    # From the UEFI shell
    VirtualPC("UEFI shell, with a command line", medium=Medium("SATA disk", kind="shell"), options='first "second argument"'),
]  # fmt: skip
