#!/usr/bin/env python3
"""Compares the binary interface with its goldens.

    check_abi.py slots      PROBES  GOLDEN...   a class's virtual operations in slot order
    check_abi.py members    PROBES  GOLDEN...   a class's bases and members in declaration order
    check_abi.py layout     HEADERS GOLDEN      size and offsets of every class of the public headers
    check_abi.py operations HEADERS GOLDEN      slots of every virtual operation of these classes
    check_abi.py complete   HEADERS GOLDEN      whether the golden of a layout knows every class that a header defines
    check_abi.py symbols    LIBRARY GOLDEN      what a shared library exports
    check_abi.py --update layout|operations|symbols FOUND GOLDEN   writes the golden

PROBES and HEADERS are paths, without extension, of what g++ made of a source file: .class (its class dump), .s
(assembly) and .o (with debug information). The goldens of slots and members state a rule, so only people write them.
"""
import difflib
import pathlib
import sys

sys.dont_write_bytecode = True
import layout
import probes
import symbols
from names import is_64_bit, without_size_t

KINDS = {"slots": probes.slots, "members": probes.members, "layout": layout.layout, "operations": layout.operations,
         "symbols": symbols.symbols}
FOR_ALL_PROCESSORS = ("operations", "symbols")


def golden_lines(path):
    return [line for line in path.read_text().splitlines() if line and not line.startswith("#")]


def elf_file(kind, found):
    return found if kind == "symbols" else found.with_suffix(".o")


def check(kind, found, golden):
    """Whether what was found is as the golden says."""
    expected, actual = golden_lines(golden), KINDS[kind](golden.stem, found)
    if kind in FOR_ALL_PROCESSORS:
        expected = without_size_t(expected, elf_file(kind, found))
    if kind == "symbols":
        expected.sort()
    if expected and expected == actual:
        print(f"{golden.stem}: {len(actual)} lines of {kind} as in the golden")
        return True
    print("\n".join(difflib.unified_diff(expected, actual, str(golden), "as compiled", lineterm="")))
    print(f"{golden.stem}: {kind} not as in the golden")
    return False


def check_complete(headers, golden):
    """Whether the golden of a layout has every class of the headers, templates that nothing instantiates included."""
    names, lines = layout.classes_of_headers(headers), golden_lines(golden)
    missing = [name for name in names if not layout.is_known(name, lines)]
    for name in missing:
        print(f"{golden.stem}: no golden for {name}, which a public header defines")
    print(f"{golden.stem}: {len(names)} classes are defined in public headers")
    return bool(names) and not missing


def update(kind, found, golden):
    """Writes the golden anew; its comment stays."""
    if kind in FOR_ALL_PROCESSORS and not is_64_bit(elf_file(kind, found)):
        sys.exit(f"The {kind} of all processors are written from a 64-bit build: others do not tell what a size_t is.")
    comment = [line for line in golden.read_text().splitlines() if line.startswith("#")] if golden.exists() else []
    golden.parent.mkdir(parents=True, exist_ok=True)
    golden.write_text("\n".join(comment + KINDS[kind](golden.stem, found)) + "\n")


def main():
    if sys.argv[1] == "--update":
        return update(sys.argv[2], *map(pathlib.Path, sys.argv[3:]))
    kind, found, *goldens = sys.argv[1], *map(pathlib.Path, sys.argv[2:])
    results = [check_complete(found, one) if kind == "complete" else check(kind, found, one) for one in goldens]
    sys.exit(0 if results and all(results) else 1)


try:
    main()
except ValueError as error:
    sys.exit(f"check_abi.py: {error}")
