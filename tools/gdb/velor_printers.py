"""Shows values of Velor2.Base in gdb as their debug output has them: TVec3d(1, 2, 3), VelorVersion(6.1.2).

gdb loads this by itself when the library is installed under its own prefix, /usr on most systems; elsewhere say
`source <this file>`, in ~/.gdbinit for instance. Nothing is called in the program that is being looked at, so that
values can be shown in a core file, too."""

import gdb
import gdb.printing

# A size beyond this belongs to a variable that was not built yet.
MAX_CHARACTERS = 1 << 20
MAX_LIST = 200


def array_of(container):
    """The first element's address and the size of a QString or QList."""
    data = container["d"]
    return data["ptr"], int(data["size"])


def text_of(string):
    pointer, size = array_of(string)
    if not 0 <= size <= MAX_CHARACTERS:
        return "<not built>"
    if size == 0:
        return ""
    memory = gdb.selected_inferior().read_memory(int(pointer), 2 * size)
    return bytes(memory).decode("utf-16-le", "replace")


def texts_of(strings):
    pointer, size = array_of(strings)
    if not 0 <= size <= MAX_CHARACTERS:
        return ["<not built>"]
    texts = [text_of(pointer[i]) for i in range(min(size, MAX_LIST))]
    return texts + ["..."] if size > MAX_LIST else texts


def components(name, fields):
    """A printer of a class with these fields, labelled where `fields` maps them to labels."""

    class Printer:
        def __init__(self, value):
            self.value = value

        def to_string(self):
            return name + "(" + ", ".join(label + str(self.value[field]) for field, label in fields.items()) + ")"

    return Printer


class Matrix:
    def __init__(self, value):
        self.value = value

    def to_string(self):
        array = self.value["elements"]
        elements = array[array.type.fields()[0]]
        low, high = elements.type.strip_typedefs().range()
        return "TMat4d(" + ", ".join(str(elements[i]) for i in range(low, high + 1)) + ")"


class Version:
    def __init__(self, value):
        self.value = value

    def to_string(self):
        return "VelorVersion(" + ".".join(str(self.value[part]) for part in ("mMajor", "mMid", "mMinor")) + ")"


class Tags:
    def __init__(self, value):
        self.value = value

    def to_string(self):
        name = self.value.type.strip_typedefs().unqualified().name
        if not self.value.type.fields():
            return name + "(<the debug information of the library is missing>)"
        return name + "(" + ", ".join(texts_of(self.value["mTags"])) + ")"


def build():
    printers = gdb.printing.RegexpCollectionPrettyPrinter("Velor2.Base")
    printers.add_printer("TVec2d", r"^TVec2d<.*>$", components("TVec2d", dict.fromkeys("xy", "")))
    printers.add_printer("TVec3d", r"^TVec3d<.*>$", components("TVec3d", dict.fromkeys("xyz", "")))
    printers.add_printer("TMat4d", r"^TMat4d<.*>$", Matrix)
    printers.add_printer("quat", r"^quat$", components("quat", {field: field + " " for field in "xyzw"}))
    printers.add_printer("VelorVersion", r"^VelorVersion$", Version)
    printers.add_printer("KelbTags", r"^(KelbTags|VelorCategoryTags)$", Tags)
    return printers


gdb.printing.register_pretty_printer(None, build(), replace=True)
