#!/usr/bin/env python3
"""Prints what the library costs its user, beside named peers, as two Markdown tables.

Usage: benchmarks/costs.py LIBRARY      such as build/benchmark/src/Velor.Base/libVelor2.Base.so

Of a shared library: the bytes that it takes in memory, the relocations that the loader works out, the static
constructors, and the processor time of a program that links it and does nothing. That of a program which links only
what our library needs stands beside it, since Qt and Poco are there anyhow in a program of ours.
Of a header and of a peer: the processor time of `g++ -fsyntax-only` on a file that includes nothing else, by that of
`<string>`, the least of several runs in turn; and the lines that are left after preprocessing."""

import pathlib
import re
import resource
import subprocess
import sys
import tempfile

ROOT = pathlib.Path(__file__).resolve().parent.parent
LIBRARIES = "/usr/lib/x86_64-linux-gnu"
NEEDED = ["-lQt6Gui", "-lQt6Xml", "-lQt6Core", "-lPocoZip", "-lPocoFoundation", "-lxxhash"]
PEERS = ["spdlog", "PocoFoundation", "PocoZip", "Qt6Xml", "Qt6Core"]
PEER_HEADERS = {"Kelb(DataStream|DeviceSource|IOSource)|VelorIODevice": "QIODevice",
                "Kelb(Synonyms|Tags)|Velor(DropData|Version|Wildcard)": "QString", "VelorDebugTrace": "QDomDocument",
                "VelorFile": "fstream", "VelorLog": "spdlog/spdlog.h", "Velor(Math|Vectors)": "glm/glm.hpp",
                "VelorRandom": "random", "VelorXxHash": "xxhash.h", "VelorZipStream": "Poco/Zip/Compress.h"}
STARTS = 50
RUNS = 5


def output(*command):
    return subprocess.run(command, check=True, capture_output=True, text=True).stdout


def processor_seconds(*command):
    before = resource.getrusage(resource.RUSAGE_CHILDREN)
    subprocess.run(command, check=True, capture_output=True)
    after = resource.getrusage(resource.RUSAGE_CHILDREN)
    return after.ru_utime + after.ru_stime - before.ru_utime - before.ru_stime


def least_in_turn(commands, runs):
    """The least processor time of each command, all run in turn, so that other work on the machine counts little."""
    times = {name: [] for name in commands}
    for _ in range(runs):
        for name, command in commands.items():
            times[name].append(processor_seconds(*command))
    return {name: min(all_times) for name, all_times in times.items()}


def print_libraries(library, folder):
    paths = {"Velor2.Base": library} | {name: f"{LIBRARIES}/lib{name}.so" for name in PEERS}
    source = pathlib.Path(folder) / "start.cpp"
    source.write_text("int main() {}\n")
    programs = {}
    links = {name: [path, f"-Wl,-rpath,{pathlib.Path(path).parent}"] for name, path in paths.items()}
    for name, link in ({"nothing": [], "what Velor2.Base needs": NEEDED} | links).items():
        programs[name] = [f"{folder}/{len(programs)}"]
        subprocess.run(["g++", source, "-o", programs[name][0], "-Wl,--no-as-needed", *link], check=True)
    starts = least_in_turn(programs, STARTS)

    print("| Shared library | KiB in memory | Relocations | of these by name | Static constructors | Start, ms |")
    print("|---|---:|---:|---:|---:|---:|")
    for name, path in paths.items():
        bytes_in_memory = int(output("size", path).splitlines()[1].split()[3])
        relocations = output("readelf", "-rW", path)
        by_offset = relocations.count("_RELATIVE")
        total = sum(map(int, re.findall(r"contains (\d+) entr", relocations)))
        constructors = re.search(r"\.init_array\s+\S+\s+\S+\s+\S+\s+(\w+)", output("readelf", "-SW", path))
        print(f"| `{name}` | {bytes_in_memory / 1024:,.0f} | {total:,} | {total - by_offset:,} | "
              f"{int(constructors[1], 16) // 8 if constructors else 0} | {starts[name] * 1e3:.1f} |")
    for name in ("what Velor2.Base needs", "nothing"):
        print(f"| {name} | | | | | {starts[name] * 1e3:.1f} |")


def peer_of(header):
    return next((peer for names, peer in PEER_HEADERS.items() if re.fullmatch(f"({names}).h", header.name)), "string")


def print_headers(folder):
    flags = ["-std=c++20", "-fPIC", f"-I{ROOT / 'src'}", *output("pkg-config", "--cflags", "Qt6Gui", "Qt6Xml").split()]
    ours = [pathlib.Path(name).relative_to("src") for name in output(ROOT / "tools/rooms.py").split()]
    peers = {header: peer_of(header) for header in ours}
    commands = {}
    for header in [*ours, "string", *peers.values()]:
        source = pathlib.Path(folder) / f"{len(commands)}.cpp"
        source.write_text(f"#include <{header}>\n")
        commands.setdefault(header, ["g++", *flags, "-fsyntax-only", source])
    times = least_in_turn(commands, RUNS)

    def figures(header):
        command = commands[header]
        text = output(*command[:-2], "-E", command[-1])
        lines = sum(1 for line in text.splitlines() if line.strip() and not line.startswith("#"))
        return f"{times[header] / times['string']:.2f} | {lines:,}"

    print("| Header | Time | Lines | Peer | Time | Lines |\n|---|---:|---:|---|---:|---:|")
    for header, peer in peers.items():
        print(f"| `{header.name}` | {figures(header)} | `<{peer}>` | {figures(peer)} |", flush=True)


with tempfile.TemporaryDirectory() as temporary:
    print_libraries(sys.argv[1], temporary)
    print()
    print_headers(temporary)
