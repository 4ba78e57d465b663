"""What a shared library exports.

Weak symbols are left out, mostly: they are copies of what headers define, a program that uses one has a copy of its
own, and how many a library holds depends on the compiler and its optimisation. Promised among them are

- members of the project's class templates: the library instantiates them for all, and their headers say so. But not
  those that copy and destroy: they are defaulted, which some compilers leave out of the instantiation;
- inline variables of the project's namespace, which all libraries of a process share;
- the tables of a class whose destructor the library defines. The tables of a class without such an operation are
  copies, too.

The complete, base and deleting forms of a constructor or destructor are one line. A type's name and the tables of a
half-constructed object are in no golden, and must not be there: cmake/exports.map keeps them inside.
"""
import re
import subprocess

from names import demangle, with_size_t

COPY_OR_DESTRUCTOR = r"(Corvane::(\w+)<.*>)::(?:~.*|operator=\(.*|\2\(\1 const&\))"
TABLE = r"(?:vtable|VTT|typeinfo) for (.*)"
INSIDE = r"(?:typeinfo name|construction vtable) for .*"


def exported(library):
    """(type, binding, name) of every symbol that the library defines for others."""
    output = subprocess.run(["readelf", "--wide", "--dyn-syms", library], check=True, capture_output=True, text=True)
    rows = [line.split() for line in output.stdout.splitlines() if re.match(r"\s*\d+: ", line)]
    rows = [row for row in rows if len(row) >= 8 and row[6] != "UND" and row[4] != "LOCAL"]
    names = demangle([row[7].split("@")[0] for row in rows])
    return [(row[3], row[4], name) for row, name in zip(rows, names)]


def symbols(_, library):
    found = exported(library)
    strong = {name for _, binding, name in found if binding == "GLOBAL"}

    def is_promised(kind, name):
        table = re.fullmatch(TABLE, name)
        owner = table[1] if table else name
        of_template = re.match(r"Corvane::\w+<.*>(::|$)", owner) and not re.fullmatch(COPY_OR_DESTRUCTOR, owner)
        variable = kind == "OBJECT" and re.fullmatch(r"Corvane::\w+", name)
        own_table = table and f"{owner}::~{owner.rsplit('::', 1)[-1]}()" in strong
        return of_template or variable or own_table

    def counts(kind, binding, name):
        return binding == "GLOBAL" or re.fullmatch(INSIDE, name) or is_promised(kind, name)

    result = {name for kind, binding, name in found if counts(kind, binding, name)}
    return sorted(with_size_t(result, library))
