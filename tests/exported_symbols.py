"""Fails when the shared library exports a symbol that belongs to no exported class, or lacks an exported class.

Usage: exported_symbols.py LIBRARY"""

import re
import subprocess
import sys

CLASSES = ["VelorLog", "VelorLogManager", "LogListener", "VelorDebugTrace", "VelorDebugTraceNode",
           "KelbDataStream", "VelorIODevice", "VelorFile", "VelorXxHash", "VelorZipStream", "VelorMath",
           "VelorRandom", "VelorRandomFixed", "KelbTags", "VelorCategoryTags", "KelbSynonym", "KelbSynonyms",
           "VelorVersion", "VelorWildcard", "VelorDropData", "VelorPercentListener", "VelorProgressListener"]
# Header-only classes: what the compiler makes of them may stand in the library, but need not.
INLINE = ["VelorCurveKnot", "DoubleMinMax", "VelorDebugGenericNode<void>"]
# A caller derives from these and casts to them, but links none of their functions.
TYPES_ONLY = ["KelbIOSource", "KelbIODevice", "KelbFile", "KelbBase::IDataStream"]


def alternatives(names):
    return "|".join(re.escape(name) for name in names)


TYPE = re.compile(rf"(vtable|typeinfo|typeinfo name) for ({alternatives(CLASSES + INLINE + TYPES_ONLY)})(::\w+)*$")
MEMBER = re.compile(rf"(guard variable for )?({alternatives(CLASSES + INLINE)})(\[abi:\w+\])?::")
OPERATOR = re.compile(rf"(operator(<<|>>)\((QDataStream&|QDebug), |qHash\()({alternatives(CLASSES + INLINE)})\b")

listing = subprocess.run(["nm", "-DC", "--defined-only", sys.argv[1]], check=True, capture_output=True, text=True)
symbols = [line.split(maxsplit=2)[2] for line in listing.stdout.splitlines()]
strangers = [symbol for symbol in symbols
             if not (TYPE.match(symbol) or MEMBER.match(symbol) or OPERATOR.match(symbol))]
absent = [name for name in CLASSES if not any(symbol.startswith(name + "::") for symbol in symbols)]
# The virtual table of a class whose functions are all inline is left out where no code of the library needs it.
absent += [name for name in TYPES_ONLY if f"typeinfo for {name}" not in symbols]

for symbol in strangers:
    print(f"exported, but of no exported class: {symbol}")
for name in absent:
    print(f"not exported: {name}")
print(f"{len(symbols)} exported symbols")
sys.exit(1 if strangers or absent else 0)
