#!/usr/bin/env python3
"""Checks what motion_pack wrote, with programs that are not ours: verify.py FOLDER ARCHIVE

7z tests the archive, bsdtar unpacks it, each unpacked file is compared with the one in FOLDER, and xxhsum checks the
manifest in FOLDER. The archive and the manifest must name the same files. Exits 1 at the first thing that is wrong.
"""
import filecmp
import os
import subprocess
import sys
import tempfile


def stop(text):
    sys.exit(f"verify: {text}")


def run(*command, **options):
    done = subprocess.run(command, stdout=subprocess.PIPE, stderr=subprocess.STDOUT, **options)
    if done.returncode != 0:
        stop(f"{command[0]} found a fault:\n{done.stdout.decode(errors='replace')}")
    return done.stdout


def read_manifest(path):
    """The digest of each name. A line that starts with a backslash has its name escaped."""
    digests = {}
    with open(path, newline="\n", encoding="utf-8") as lines:
        for line in lines:
            digest, name = line.rstrip("\n").split("  ", 1)
            if digest.startswith("\\"):
                digest, name = digest[1:], name.replace("\\\\", "\0").replace("\\n", "\n").replace("\0", "\\")
            digests[name] = digest
    return digests


def name_in_archive(name):
    folder, slash, file = name.replace("\\", "/").rpartition("/")
    return folder.lower() + slash + file


def files_below(folder):
    return {os.path.relpath(os.path.join(place, name), folder) for place, _, names in os.walk(folder) for name in names}


def check_content(folder, archive, names):
    with tempfile.TemporaryDirectory() as unpacked:
        run("bsdtar", "-xf", os.path.abspath(archive), "-C", unpacked, env={**os.environ, "LC_ALL": "C.UTF-8"})
        expected = {name_in_archive(name): name for name in names}
        if wrong := files_below(unpacked) ^ set(expected):
            stop(f"the archive and the manifest name different files: {sorted(wrong)[:5]}")
        for entry, name in expected.items():
            if not filecmp.cmp(os.path.join(unpacked, entry), os.path.join(folder, name), shallow=False):
                stop(f"the archive has other content for {name!r} than the folder")


def check_manifest(folder, manifest, digests):
    """The checksum program of Debian 12 cannot read names with a line break: it gets their content instead."""
    with open(manifest, "rb") as lines:
        plain = b"".join(line for line in lines if not line.startswith(b"\\"))
    if plain:
        run("xxhsum", "-c", "--strict", "-q", "-", input=plain, cwd=folder)
    for name in (name for name in digests if "\n" in name):
        with open(os.path.join(folder, name), "rb") as content:
            if run("xxhsum", "-H64", "-", stdin=content).split()[0].decode() != digests[name]:
                stop(f"the manifest has a wrong digest for {name!r}")


def verify(folder, archive):
    """Returns how many files the archive holds."""
    digests = read_manifest(archive + ".xxh64")
    run("7z", "t", archive)
    check_content(folder, archive, digests)
    check_manifest(folder, archive + ".xxh64", digests)
    return len(digests)


if __name__ == "__main__":
    if len(sys.argv) != 3:
        sys.exit(__doc__)
    print(f"verified: {verify(*sys.argv[1:])} files by 7z, bsdtar and xxhsum")
