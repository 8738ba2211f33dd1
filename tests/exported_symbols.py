"""Fails when the shared library exports a symbol that belongs to no exported class, or lacks an exported class.

Usage: exported_symbols.py LIBRARY"""

import pathlib
import re
import subprocess
import sys

sys.dont_write_bytecode = True
sys.path.insert(0, str(pathlib.Path(__file__).resolve().parent.parent / "tools"))
import rooms

CLASSES = [name for name, macro in rooms.public_classes().items() if macro == "VELOR_BASE_EXPORT"]
# A caller derives from these and casts to them, but links none of their functions.
TYPES_ONLY = [name for name, macro in rooms.public_classes().items() if macro == "VELOR_BASE_TYPE"]
# Header-only: what the compiler makes of it may stand in the library, but need not.
INLINE = ["VelorDebugGenericNode<void>"]


def alternatives(names):
    return "|".join(re.escape(name) for name in names)


TYPE = re.compile(rf"(?:vtable|typeinfo|typeinfo name) for ({alternatives(CLASSES + INLINE + TYPES_ONLY)})(::\w+)*$")
MEMBER = re.compile(rf"(?:guard variable for )?({alternatives(CLASSES + INLINE)})(\[abi:\w+\])?::")
OPERATOR = re.compile(rf"(?:operator(?:<<|>>)\((?:QDataStream&|QDebug), |qHash\()({alternatives(CLASSES)})\b")

listing = subprocess.run(["nm", "-DC", "--defined-only", sys.argv[1]], check=True, capture_output=True, text=True)
symbols = [line.split(maxsplit=2)[2] for line in listing.stdout.splitlines()]
matches = {symbol: TYPE.match(symbol) or MEMBER.match(symbol) or OPERATOR.match(symbol) for symbol in symbols}
strangers = [symbol for symbol, match in matches.items() if not match]
# Where all functions are inline and no code of the library needs them, the virtual table is left out; for a header
# without a source, so is the type information.
linked = {match[1] for match in matches.values() if match and match.re is not TYPE}
absent = [name for name in CLASSES if name not in linked]
absent += [name for name, macro in rooms.classes_of(rooms.headers_with_sources()).items()
           if macro == "VELOR_BASE_TYPE" and f"typeinfo for {name}" not in symbols]

for symbol in strangers:
    print(f"exported, but of no exported class: {symbol}")
for name in absent:
    print(f"not exported: {name}")
print(f"{len(symbols)} exported symbols")
sys.exit(1 if strangers or absent else 0)
