"""The kinds whose goldens state a rule, one class a golden: what g++ made of probes.cpp."""
import re

import debug_information
from names import operation


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
            return [operation(symbol) for symbol in symbols]
        if in_slots:
            symbols.append(entry[1])
        in_slots = in_slots or entry[1].startswith("_ZTI")
    raise ValueError(f"{probes}.s has no table of {probe}")


def dumped_names(probes, probe):
    """The same table by the compiler's class dump, which tells names only."""
    text = probes.with_suffix(".class").read_text()
    table = re.search(rf"^Vtable for {probe}\n(.*?)::endOfTable$", text, re.MULTILINE | re.DOTALL)
    if not table:
        raise ValueError(f"{probes}.class has no table of {probe}")
    return re.findall(r"\)[\w:<>]*?::(~?\w+)$", table[1].split("_ZTI", 1)[1], re.MULTILINE)


def slots(class_name, probes):
    result = emitted_slots(probes, f"{class_name}Probe")
    names = [re.sub(r"\(.*", "", slot) for slot in result]
    dumped = ["destructor" if name.startswith("~") else name for name in dumped_names(probes, f"{class_name}Probe")]
    if [re.sub(r".* destructor", "destructor", name) for name in names] != dumped:
        raise ValueError(f"the class dump and the compiled table of {class_name} differ:\n{dumped}\n{names}")
    return result


def members(class_name, probes):
    entries = debug_information.read_entries(probes.with_suffix(".o"))
    found = [entry for _, entry in debug_information.classes(entries)
             if entry[1]["DW_AT_name"] in (class_name, f"{class_name}<int>")]
    if len(found) != 1:
        raise ValueError(f"{len(found)} classes are called {class_name} in {probes}.o")
    rows = debug_information.bases_and_members(entries, found[0])
    offsets = [offset for offset, text in rows if ": " in text]
    if offsets != sorted(offsets):
        raise ValueError(f"the members of {class_name} do not lie in the order of their declaration: {offsets}")
    return [text for _, text in rows]
