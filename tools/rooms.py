#!/usr/bin/env python3
"""What the library consists of, for the other scripts: files by the lists in src/Velor.Base/CMakeLists.txt, classes by
the headers.

Usage: tools/rooms.py              prints the public headers, one a line
       tools/rooms.py --version    prints the version"""

import pathlib
import re
import sys

ROOT = pathlib.Path(__file__).resolve().parent.parent
FOLDER = ROOT / "src/Velor.Base"


def cmake_list(name):
    text = (FOLDER / "CMakeLists.txt").read_text(encoding="utf-8")
    return re.search(rf"^set\({name}\s([^)]*)\)", text, re.MULTILINE)[1].split()


def headers_with_sources():
    return sorted(FOLDER / f"{room}.h" for room in cmake_list("public_rooms"))


def public_headers():
    return sorted(headers_with_sources() + [FOLDER / name for name in cmake_list("public_headers")])


def all_rooms():
    headers = cmake_list("public_headers") + cmake_list("private_headers")
    return ({pathlib.Path(name).stem for name in headers} | set(cmake_list("public_rooms")) |
            set(cmake_list("private_rooms")))


def room_of(path):
    """The room with the longest name that the file's name begins with: a room may have several sources."""
    return max((room for room in all_rooms() if path.stem.startswith(room)), key=len, default=path.stem)


def classes_of(headers):
    """The classes outside of others that the headers define, with their namespace, and for each its export macro:
    VELOR_BASE_EXPORT, VELOR_BASE_TYPE, or None."""
    found = {}
    for path in headers:
        namespace = ""
        for line in path.read_text(encoding="utf-8").splitlines():
            if opened := re.match(r"namespace (\w+) \{$", line):
                namespace = opened[1] + "::"
            elif line.startswith("}"):
                namespace = namespace if line == "};" else ""
            elif name := re.match(r"(?:class|struct) (?:(VELOR_BASE_\w+) )?(\w+)(?! *[\w<]*;)", line):
                found[namespace + name[2]] = name[1]
    return found


def public_classes():
    return classes_of(public_headers())


def version():
    text = (FOLDER / "VelorBaseVersion.h").read_text(encoding="utf-8")
    return ".".join(re.findall(r"^#define VELOR_BASE_VERSION_[A-Z]+ (\d+)$", text, re.MULTILINE))


if __name__ == "__main__":
    print(version() if "--version" in sys.argv else "\n".join(str(path.relative_to(ROOT)) for path in public_headers()))
