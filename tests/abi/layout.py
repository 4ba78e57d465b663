"""Size and offsets of every class of the public headers, and the slots of its virtual operations."""
import pathlib
import re

import debug_information
from names import demangle, shorten, with_size_t

PROJECT = "Corvane::"


def dumped_classes(headers):
    """{name: (size, size as a base, alignment, [(offset, row)])} by the compiler's class dump; the rows are the
    pointers to virtual tables and the virtual bases."""
    result = {}
    blocks = re.findall(rf"^Class {PROJECT}(.*)\n   size=(\d+) align=(\d+)\n   base size=(\d+) .*\n((?:.+\n)*)",
                        headers.with_suffix(".class").read_text(), re.MULTILINE)
    for name, size, alignment, base_size, text in blocks:
        rows, offset = [], None
        for line in text.splitlines():
            part = re.match(r"(\S.*?) \(0x\w+\) (\d+)(.*)", line)
            if part:
                offset = int(part[2])
                if " virtual" in part[3]:
                    rows.append((offset, f"virtual base {part[1].rsplit('::', 1)[-1]}"))
            elif " vptr=" in line:
                rows.append((offset, "pointer to virtual table"))
        result[shorten(name)] = (size, base_size, alignment, rows)
    return result


def described_classes(headers):
    """(name without the project's namespace, entry) of every class, by name."""
    entries = debug_information.read_entries(headers.with_suffix(".o"))
    described = {shorten(name): entry for name, entry in debug_information.classes(entries)}
    return entries, sorted((name.removeprefix(PROJECT), entry) for name, entry in described.items()
                           if name.startswith(PROJECT))


def position(row):
    """At one offset: the pointer, what the class is derived from, members."""
    offset, text = row
    return offset, not text.startswith("pointer to"), not text.startswith("base"), ": " in text


def layout(_, headers):
    dumped = dumped_classes(headers)
    entries, classes = described_classes(headers)
    difference = set(dumped) ^ {name for name, _ in classes}
    if difference:
        raise ValueError(f"only one of class dump and debug information has {difference}")
    result = []
    for name, entry in classes:
        size, base_size, alignment, rows = dumped[name]
        rows += [row for row in debug_information.bases_and_members(entries, entry) if row[0] is not None]
        result.append(f"{name}: size {size}, as a base {base_size}, alignment {alignment}")
        result += [f"{offset:5} {text}" for offset, text in sorted(rows, key=position)]
    return result


def operations(_, headers):
    entries, classes = described_classes(headers)
    result = []
    for name, entry in classes:
        found = sorted(debug_information.virtual_operations(entries, entry), key=lambda row: (row[0] is None, row))
        if found:
            result.append(name)
        for (slot, symbol), text in zip(found, demangle([symbol for _, symbol in found])):
            short = "destructor" if slot is None else text.replace(f"{PROJECT}{name}::", "", 1).replace(PROJECT, "")
            result.append(f"{'' if slot is None else slot:5} {short}")
    return with_size_t(result, headers.with_suffix(".o"))


def defined_classes(header):
    """The names of the classes that a header defines, as they stand there."""
    head = r"(?<!enum )\b(?:class|struct)\s+(?:CORVANE_EXPORT\s+)?([\w:]+)(?:\s+final)?"
    bases = r"(?::[^:][^;{]*)?"
    return re.findall(rf"{head}\s*{bases}\{{", re.sub(r"//.*", "", header.read_text()))


def classes_of_headers(headers):
    """The names of all classes that public headers define."""
    paths = re.findall(r'#include "(.*)"', headers.with_suffix(".cpp").read_text())
    return [name for path in paths for name in defined_classes(pathlib.Path(path))]


def is_known(name, golden):
    """Whether the golden of a layout has the class, or an instance of the class template."""
    known = [re.sub(r"<.*>", "", line.split(": size")[0]) for line in golden if ": size" in line]
    return any(f"::{one}".endswith(f"::{name}") for one in known)
