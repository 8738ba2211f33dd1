"""Shows values of Velor2.Base in gdb as their debug output has them: TVec3d(1, 2, 3), VelorVersion(6.1.2).

gdb loads this by itself when the library is installed under gdb's own prefix, /usr on most systems; README.md tells
how to load it from elsewhere. A payload of a drag is shown by its kind and the names in it. Nothing is called in the
program that is being looked at, so that values can be shown in a core file, too."""

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


def texts_of(container, text=text_of):
    """What `text` makes of the elements of a QList."""
    pointer, size = array_of(container)
    if not 0 <= size <= MAX_CHARACTERS:
        return ["<not built>"]
    texts = [text(pointer[i]) for i in range(min(size, MAX_LIST))]
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


class Lists:
    """A class with one list, of which `texts` makes the texts to show."""

    def __init__(self, value, texts):
        self.value = value
        self.texts = texts

    def to_string(self):
        name = self.value.type.strip_typedefs().unqualified().name
        if not self.value.type.fields():
            return name + "(<the debug information of the library is missing>)"
        return name + "(" + ", ".join(self.texts(self.value)) + ")"


def tags(value):
    return Lists(value, lambda value: texts_of(value["mTags"]))


def synonym(value):
    return Lists(value, lambda value: texts_of(value["mValues"]))


def synonyms(value):
    def text_of_group(group):
        return synonym(group.dereference()).to_string()

    return Lists(value, lambda value: texts_of(value["mGroups"], text_of_group))


def drop_data(value):
    def name_of_item(item):
        return text_of(item["name"])

    return Lists(value, lambda value: [str(value["mType"])] + texts_of(value["mItems"], name_of_item))


def build():
    printers = gdb.printing.RegexpCollectionPrettyPrinter("Velor2.Base")
    printers.add_printer("TVec2d", r"^TVec2d<.*>$", components("TVec2d", dict.fromkeys("xy", "")))
    printers.add_printer("TVec3d", r"^TVec3d<.*>$", components("TVec3d", dict.fromkeys("xyz", "")))
    printers.add_printer("TMat4d", r"^TMat4d<.*>$", Matrix)
    printers.add_printer("quat", r"^quat$", components("quat", {field: field + " " for field in "xyzw"}))
    printers.add_printer("VelorVersion", r"^VelorVersion$", Version)
    printers.add_printer("DoubleMinMax", r"^DoubleMinMax$", components("DoubleMinMax", {"min": "", "max": ""}))
    knot = components("VelorCurveKnot", {"position": "", "tangent": ""})
    printers.add_printer("VelorCurveKnot", r"^VelorCurveKnot$", knot)
    printers.add_printer("KelbTags", r"^(KelbTags|VelorCategoryTags)$", tags)
    printers.add_printer("KelbSynonym", r"^KelbSynonym$", synonym)
    printers.add_printer("KelbSynonyms", r"^KelbSynonyms$", synonyms)
    printers.add_printer("VelorDropData", r"^VelorDropData$", drop_data)
    return printers


gdb.printing.register_pretty_printer(None, build(), replace=True)
