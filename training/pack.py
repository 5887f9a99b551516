#!/usr/bin/python3
"""Packs an installation for the project's data/ folder: small tables plain, networks and libraries as
.tar.xz."""

import argparse
import io
import lzma
import os
import shutil
import tarfile

PLAIN = (
    "randcoil.tab",
    "rcadj.tab",
    "rcprev.tab",
    "rcnext.tab",
    "isoadj.tab",
    "sslimit.tab",
    "homology.tab",
    "weight.tab",
    "BLOSUM62.tab",
    "chi1.tab",
)
LIBRARIES = ("orbel.tab", "orbel_obsCS.tab")


def pack(path, folder, names):
    """Archive of tab/NAME files, the same bytes for the same tables."""
    buffer = io.BytesIO()
    with tarfile.open(fileobj=buffer, mode="w", format=tarfile.USTAR_FORMAT) as archive:
        for name in sorted(names):
            info = tarfile.TarInfo("tab/" + name)
            info.size = os.path.getsize(os.path.join(folder, name))
            info.mode = 0o644
            with open(os.path.join(folder, name), "rb") as handle:
                archive.addfile(info, handle)
    with lzma.open(path, "wb", preset=9) as handle:
        handle.write(buffer.getvalue())
    print(f"{path}: {len(names)} tables, {os.path.getsize(path) / 1e6:.2f} MB")


def main():
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("--install", required=True, help="installation folder (holds tab/)")
    parser.add_argument("--data", required=True, help="the project's data folder")
    options = parser.parse_args()
    tab = os.path.join(options.install, "tab")
    os.makedirs(os.path.join(options.data, "tab"), exist_ok=True)
    for name in PLAIN:
        shutil.copyfile(os.path.join(tab, name), os.path.join(options.data, "tab", name))
    pack(os.path.join(options.data, "database.tar.xz"), tab, LIBRARIES)
    networks = [name for name in os.listdir(tab) if ".level" in name]
    pack(os.path.join(options.data, "networks.tar.xz"), tab, networks)


if __name__ == "__main__":
    main()
