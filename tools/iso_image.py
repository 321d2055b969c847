"""Makes the image that boots from a CD and, written to it as it is, from a stick.

A CD's firmware finds the EFI system partition through El Torito, a stick's through the GPT: both lead to the same FAT
file system, which has room for programs on a stick and cannot be written on a CD. What else is in the ISO file system is
for people who look into it on another system.
"""

import os
import tempfile
import time
import uuid

from disk_image import SECTOR, DiskImage, run

PARTITION_MIB = 16
SECTORS_PER_CLUSTER = "4"  # 8192 clusters: FAT16
EFI_SYSTEM_PARTITION = "C12A7328-F81F-11D2-BA4B-00A0C93EC93B"


def make_partition(path, identity, image, files):
    """The EFI system partition: a FAT file system without a partition table around it."""
    partition = DiskImage(path, start=0)
    partition.make_file(PARTITION_MIB)
    sectors = str(PARTITION_MIB * 1024 * 1024 // SECTOR)
    partition.format(identity, "-T", sectors, "-h", "64", "-s", "32", "-c", SECTORS_PER_CLUSTER)
    return partition.install(image, files)


def make_iso(output, identity, epoch, image, files, visible):
    """Makes the file `output` with an interpreter and files ({name: path}) to boot, and the files `visible`
    ({name: path}) in the ISO file system. The same identity (a UUID) and the same time, which has to be in
    SOURCE_DATE_EPOCH too, give the same bytes."""
    timestamp = time.strftime("%Y%m%d%H%M%S00", time.gmtime(epoch))
    with tempfile.TemporaryDirectory(prefix="korvane-iso-") as folder:
        partition = os.path.join(folder, "partition.img")
        make_partition(partition, uuid.uuid5(identity, "compact disc"), image, files)
        run(
            "xorriso", "-as", "mkisofs", "-quiet", "-volid", "KORVANE", "-rational-rock", "-joliet", "-o", output,
            # The boot partition is at the end, where both tables point.
            "--set_all_file_dates", timestamp, "-append_partition", "2", EFI_SYSTEM_PARTITION, partition, "-appended_part_as_gpt",
            "-eltorito-catalog", "boot.cat", "--efi-boot", "--interval:appended_partition_2:all::", "-no-emul-boot",
            "-graft-points", *(f"{name}={path}" for name, path in sorted(visible.items())),
        )  # fmt: skip
