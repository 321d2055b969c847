"""What a measurement depends on: the machine, how busy it was, the image and the compiler that made it."""

import os
import pathlib
import platform
import shutil
import subprocess

COMPILER = "g++-mingw-w64-x86-64"


def processor():
    for line in pathlib.Path("/proc/cpuinfo").read_text().splitlines():
        if line.startswith("model name"):
            return line.split(":", 1)[1].strip()
    return platform.processor() or "unknown"


def package_version(package):
    """The name and version of an installed Debian package."""
    shown = ""
    if shutil.which("dpkg-query"):
        shown = subprocess.run(["dpkg-query", "-W", "-f=${Package} ${Version}", package],
                               capture_output=True, text=True, check=False).stdout
    return shown or f"{package} (not a package)"


def machine_lines(image, rounds):
    return [
        f"Processor: {processor()}, {os.cpu_count()} cores; load average at the start {os.getloadavg()[0]:.1f}",
        f"Image: {image.stat().st_size} bytes, made by {package_version(COMPILER)}; {rounds} rounds",
    ]
