"""Shows MultiType values and DataSets records in gdb as what they hold.

Installed where gdb loads it by itself together with libsoftphonecore.
"""

import gdb
import gdb.printing

# The numbers are those of MultiType::Type.
SLOTS = {
    1: ("DataSet", "set"),
    2: ("UInt", "uintValue"),
    3: ("Int", "intValue"),
    4: ("Bool", "boolValue"),
    5: ("String", "stringValue"),
    6: ("ByteArray", "bytesValue"),
    7: ("Int64", "int64Value"),
}

LONGEST = 200


def bytes_of(value, unit):
    """The content of a QString or QByteArray, as far as it is worth showing."""
    size = int(value["d"]["size"])
    if size == 0:
        return b""
    address = int(value["d"]["ptr"])
    return bytes(gdb.selected_inferior().read_memory(address, min(size, LONGEST) * unit))


def text_of(value):
    text = bytes_of(value, 2).decode("utf-16-le", "replace")
    return '"' + text.replace("\\", "\\\\").replace('"', '\\"') + '"'


def record_of(shared_pointer):
    return shared_pointer["_M_ptr"]


def key_of(variant):
    """The key of an entry as callers write it: a quoted text or an index."""
    for _, alternative in gdb.default_visualizer(variant).children():
        if alternative.type.strip_typedefs().code == gdb.TYPE_CODE_INT:
            return "[%d]" % int(alternative)
        return "[%s]" % text_of(alternative)
    return "[?]"


def following(node):
    """The node after one of std::map, by the pointers of its base."""
    if int(node["_M_right"]) != 0:
        node = node["_M_right"]
        while int(node["_M_left"]) != 0:
            node = node["_M_left"]
        return node
    while int(node) == int(node["_M_parent"]["_M_right"]):
        node = node["_M_parent"]
    return node["_M_parent"]


def entries_of(record):
    """The entries of a record, as (key text, value) pairs in key order."""
    # Not by the printer of std::map: it needs the type of a whole node, which the library's own debugging
    # information alone has.
    entries = record["entries"]
    kind = entries.type.strip_typedefs()
    key_type, value_type = kind.template_argument(0), kind.template_argument(1)
    tree = entries["_M_t"]["_M_impl"]
    header = tree["_M_header"]
    node = header["_M_left"]
    for _ in range(int(tree["_M_node_count"])):
        address = int(node) + header.type.sizeof
        key = gdb.Value(address).cast(key_type.pointer()).dereference()
        value = gdb.Value(address + key_type.sizeof).cast(value_type.pointer()).dereference()
        yield key_of(key), value
        node = following(node)


def describe(record):
    if int(record) == 0:
        return "null record"
    kind = "array" if record["isArray"] else "object"
    return "%s of %d" % (kind, int(record["entries"]["_M_t"]["_M_impl"]["_M_node_count"]))


class MultiTypePrinter:
    def __init__(self, value):
        self.value = value

    def to_string(self):
        tag = int(self.value["type"])
        if tag not in SLOTS:
            return "None"
        name, slot = SLOTS[tag]
        datum = self.value[slot]
        if name == "String":
            return "String " + text_of(datum)
        if name == "ByteArray":
            return "ByteArray of %d: %s" % (int(datum["d"]["size"]), bytes_of(datum, 1).hex())
        if name == "DataSet":
            return "DataSet " + describe(record_of(datum))
        return "%s %s" % (name, datum)

    def children(self):
        if int(self.value["type"]) != 1:
            return iter(())
        record = record_of(self.value["set"])
        return iter(()) if int(record) == 0 else entries_of(record.dereference())


class DataSetPrinter:
    def __init__(self, value):
        self.value = value

    def to_string(self):
        return "DataSet " + describe(record_of(self.value["data"]))

    def children(self):
        record = record_of(self.value["data"])
        return iter(()) if int(record) == 0 else entries_of(record.dereference())


def build_printers():
    printers = gdb.printing.RegexpCollectionPrettyPrinter("softphonecore")
    printers.add_printer("MultiType", "^MultiType$", MultiTypePrinter)
    printers.add_printer("DataSet", "^DataSets::DataSet$", DataSetPrinter)
    return printers


gdb.printing.register_pretty_printer(gdb.current_objfile(), build_printers(), replace=True)
