#!/usr/bin/env python3
"""Compares the binary interface of classes with their goldens.

    check_abi.py slots   PROBES GOLDEN...    virtual operations in slot order
    check_abi.py members PROBES GOLDEN...    bases and members in declaration order

PROBES is the path, without extension, of what g++ made of probes.cpp: .class (its class dump), .s (assembly) and .o (with
debug information). GOLDEN is golden/slots/CLASS.txt or golden/members/CLASS.txt.
"""
import difflib
import functools
import pathlib
import re
import subprocess
import sys


def fail(message):
    sys.exit(f"check_abi.py: {message}")


def golden_lines(path):
    return [line for line in path.read_text().splitlines() if line and not line.startswith("#")]


# ---- slots


def readable(symbol):
    """What one slot points to, without its class: "setOpacity(unsigned int)"."""
    if re.search(r"D1Ev$", symbol):
        return "complete destructor"
    if re.search(r"D0Ev$", symbol):
        return "deleting destructor"
    text = subprocess.run(["c++filt", symbol], check=True, capture_output=True, text=True).stdout.strip()
    text = text.replace("std::__cxx11::basic_string<char, std::char_traits<char>, std::allocator<char> >", "std::string")
    name, rest = re.fullmatch(r"(.*?)(\(.*)", text.replace("[abi:cxx11]", "")).groups()
    return name.rsplit("::", 1)[-1] + rest.replace("Corvane::", "")


def emitted_slots(probes, probe):
    """The table as it stands in the compiled code, up to the probe's own first operation."""
    symbols, in_table, in_slots = [], False, False
    for line in probes.with_suffix(".s").read_text().splitlines():
        if line == f"_ZTV{len(probe)}{probe}:":
            in_table = True
        entry = re.match(r"\s+\.(?:quad|long|word|xword|4byte|8byte)\s+(\S+)", line)
        if not in_table or not entry:
            continue
        if "endOfTable" in entry[1]:
            return [readable(symbol) for symbol in symbols]
        if in_slots:
            symbols.append(entry[1])
        in_slots = in_slots or entry[1].startswith("_ZTI")
    fail(f"{probes}.s has no table of {probe}")


def dumped_names(probes, probe):
    """The same table by the compiler's class dump, which tells names only."""
    text = probes.with_suffix(".class").read_text()
    table = re.search(rf"^Vtable for {probe}\n(.*?)::endOfTable$", text, re.MULTILINE | re.DOTALL)
    if not table:
        fail(f"{probes}.class has no table of {probe}")
    return re.findall(r"\)[\w:<>]*?::(~?\w+)$", table[1].split("_ZTI", 1)[1], re.MULTILINE)


def slots(class_name, probes):
    result = emitted_slots(probes, f"{class_name}Probe")
    names = [re.sub(r"\(.*", "", slot) for slot in result]
    dumped = ["destructor" if name.startswith("~") else name for name in dumped_names(probes, f"{class_name}Probe")]
    if [re.sub(r".* destructor", "destructor", name) for name in names] != dumped:
        fail(f"the class dump and the compiled table of {class_name} differ:\n{dumped}\n{names}")
    return result


# ---- members


@functools.cache
def read_debug_entries(probes):
    """{offset: (tag, {attribute: value}, [offsets of children])} of the object's debug information."""
    output = subprocess.run(["readelf", "--wide", "--debug-dump=info", probes.with_suffix(".o")], check=True,
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


BASE_TYPES = {("5", "4"): "int32", ("7", "4"): "uint32", ("8", "1"): "uint8", ("2", "1"): "bool", ("6", "1"): "char",
              ("5", "8"): "int64", ("7", "8"): "uint64"}


def type_name(entries, offset):
    """A type in short: "int32", "char**", "Window*", "vector"."""
    tag, attributes, _ = entries[offset]
    if tag in ("DW_TAG_typedef", "DW_TAG_const_type"):
        if attributes.get("DW_AT_name") in ("string", "ReturnCode"):
            return attributes["DW_AT_name"]
        return type_name(entries, attributes["DW_AT_type"])
    if tag == "DW_TAG_pointer_type":
        return type_name(entries, attributes["DW_AT_type"]) + "*"
    if tag == "DW_TAG_base_type":
        return BASE_TYPES[attributes["DW_AT_encoding"].split()[0], attributes["DW_AT_byte_size"]]
    name = attributes["DW_AT_name"].split("<")[0]
    return "string" if name == "basic_string" else name


def members(class_name, probes):
    entries = read_debug_entries(probes)
    found = [entry for entry in entries.values() if entry[0] in ("DW_TAG_class_type", "DW_TAG_structure_type")
             and entry[1].get("DW_AT_name") in (class_name, f"{class_name}<int>")
             and "DW_AT_declaration" not in entry[1]]
    if len(found) != 1:
        fail(f"{len(found)} classes are called {class_name} in {probes}.o")
    result, positions = [], []
    for tag, attributes, _ in (entries[child] for child in found[0][2]):
        if tag == "DW_TAG_inheritance":
            virtual = "virtual " if "DW_AT_virtuality" in attributes else ""
            result.append(f"{virtual}base {type_name(entries, attributes['DW_AT_type'])}")
        elif tag == "DW_TAG_member" and "DW_AT_data_member_location" in attributes \
                and not attributes["DW_AT_name"].startswith("_vptr"):
            result.append(f"{attributes['DW_AT_name']}: {type_name(entries, attributes['DW_AT_type'])}")
            positions.append(int(attributes["DW_AT_data_member_location"]))
    if positions != sorted(positions):
        fail(f"the members of {class_name} do not lie in the order of their declaration: {positions}")
    return result


def check(kind, probes, golden):
    """Whether the class that the golden is named after is as the golden says."""
    expected = golden_lines(golden)
    actual = {"slots": slots, "members": members}[kind](golden.stem, probes)
    if expected and expected == actual:
        print(f"{golden.stem}: {len(actual)} {kind} as in the golden")
        return True
    print("\n".join(difflib.unified_diff(expected, actual, str(golden), "as compiled", lineterm="")))
    print(f"{golden.stem}: the {kind} are not those of the golden")
    return False


def main():
    kind, probes, goldens = sys.argv[1], pathlib.Path(sys.argv[2]), [pathlib.Path(path) for path in sys.argv[3:]]
    results = [check(kind, probes, golden) for golden in goldens]
    sys.exit(0 if results and all(results) else 1)


main()
