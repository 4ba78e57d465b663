"""Bases, members and virtual operations of classes, out of the debug information that g++ writes."""
import functools
import re
import subprocess

CLASS_TAGS = ("DW_TAG_class_type", "DW_TAG_structure_type")
BASE_TYPES = {("5", "4"): "int32", ("7", "4"): "uint32", ("8", "1"): "uint8", ("2", "1"): "bool",
              ("5", "8"): "int64", ("7", "8"): "uint64"}


@functools.cache
def read_entries(object_file):
    """{offset: (tag, {attribute: value}, [offsets of children])} of an object file; the unit itself comes first."""
    output = subprocess.run(["readelf", "--wide", "--debug-dump=info", object_file], check=True,
                            capture_output=True, text=True).stdout
    entries, parents, current = {}, {}, None
    for line in output.splitlines():
        entry = re.match(r"\s*<(\w+)><(\w+)>: Abbrev Number: \d+ \((DW_TAG_\w+)\)", line)
        if entry:
            depth, current = int(entry[1], 16), entry[2]
            entries[current] = (entry[3], {}, [])
            parents[depth] = current
            if depth:
                entries[parents[depth - 1]][2].append(current)
            continue
        attribute = re.match(r"\s*<\w+>\s+(DW_AT_\w+)\s*: (?:\(\w+\) )?(?:\(.*?\): )?(?:<0x(\w+)>|(.*?)\s*$)", line)
        if attribute and current:
            entries[current][1][attribute[1]] = attribute[2] or attribute[3]
    return entries


def classes(entries):
    """(qualified name, entry) of every class that is defined in the unit, outer ones first."""
    def below(offset, scope):
        for child in entries[offset][2]:
            tag, attributes, _ = entries[child]
            if tag not in CLASS_TAGS + ("DW_TAG_namespace",) or "DW_AT_name" not in attributes:
                continue
            name = scope + attributes["DW_AT_name"]
            if tag in CLASS_TAGS and "DW_AT_declaration" not in attributes:
                yield name, entries[child]
            yield from below(child, f"{name}::")

    yield from below(next(iter(entries)), "")


def type_name(entries, offset):
    """A type in short: "int32", "char**", "Window*", "vector"."""
    tag, attributes, _ = entries[offset]
    name = attributes.get("DW_AT_name")
    if tag == "DW_TAG_typedef":
        nameless = "DW_AT_name" not in entries[attributes["DW_AT_type"]][1]
        is_leaf = entries[attributes["DW_AT_type"]][0] in CLASS_TAGS + ("DW_TAG_union_type",)
        if name in ("string", "ReturnCode") or (nameless and is_leaf):
            return name
    if tag in ("DW_TAG_typedef", "DW_TAG_const_type"):
        return type_name(entries, attributes["DW_AT_type"])
    if tag == "DW_TAG_pointer_type":
        return type_name(entries, attributes["DW_AT_type"]) + "*"
    if tag == "DW_TAG_base_type" and name != "char":  # which has a sign on some processors and none on others
        return BASE_TYPES[attributes["DW_AT_encoding"].split()[0], attributes["DW_AT_byte_size"]]
    name = name.split("<")[0]
    return "string" if name == "basic_string" else name


def bases_and_members(entries, entry):
    """[(offset, text)] in the order of declaration; a virtual base has no offset of its own: None."""
    result = []
    for tag, attributes, _ in (entries[child] for child in entry[2]):
        if tag == "DW_TAG_inheritance":
            is_virtual = "DW_AT_virtuality" in attributes
            result.append((None if is_virtual else int(attributes["DW_AT_data_member_location"]),
                           f"{'virtual ' if is_virtual else ''}base {type_name(entries, attributes['DW_AT_type'])}"))
        elif tag == "DW_TAG_member" and "DW_AT_data_member_location" in attributes \
                and not attributes["DW_AT_name"].startswith("_vptr"):
            result.append((int(attributes["DW_AT_data_member_location"]),
                           f"{attributes['DW_AT_name']}: {type_name(entries, attributes['DW_AT_type'])}"))
    return result


def virtual_operations(entries, entry):
    """[(slot, mangled name)] of what a class declares itself; of a destructor's slots nothing is said: None."""
    result = []
    for tag, attributes, _ in (entries[child] for child in entry[2]):
        if tag == "DW_TAG_subprogram" and "DW_AT_virtuality" in attributes:
            slot = re.search(r"DW_OP_constu: (\d+)", attributes.get("DW_AT_vtable_elem_location", ""))
            result.append((slot and int(slot[1]), attributes["DW_AT_linkage_name"]))
    return result
