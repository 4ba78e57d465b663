"""Mangled names as people write them."""
import re
import subprocess

SHORT = {
    r"std::(__cxx11::)?basic_string<char(, std::char_traits<char>, std::allocator<char> )?>": "std::string",
    r"std::basic_string_view<char, std::char_traits<char> >": "std::string_view",
    r"std::chrono::duration<long( long)?, std::ratio<1l+, 1000l+> >": "std::chrono::milliseconds",
    r"std::chrono::duration<long( long)?, std::ratio<1l+, 1000000000l+> >": "std::chrono::nanoseconds",
    r"\[abi:cxx11\]": "",
    r" >": ">",
}


def shorten(text):
    for pattern, short in SHORT.items():
        text = re.sub(pattern, short, text)
    return text


def demangle(symbols):
    """The names of a list of symbols, in its order."""
    output = subprocess.run(["c++filt"], input="\n".join(symbols), check=True, capture_output=True, text=True).stdout
    return [shorten(line) for line in output.splitlines()]


def operation(symbol):
    """An operation without its class: "setOpacity(unsigned int)"."""
    if re.search(r"D[0124]Ev$", symbol):
        return {"0": "deleting ", "1": "complete "}.get(symbol[-3], "") + "destructor"
    name, rest = re.fullmatch(r"(.*?)(\(.*)", demangle([symbol])[0]).groups()
    return name.rsplit("::", 1)[-1] + rest.replace("Corvane::", "")


def is_64_bit(elf_file):
    header = subprocess.run(["readelf", "--file-header", elf_file], check=True, capture_output=True, text=True).stdout
    return "ELF64" in header


def with_size_t(names, elf_file):
    """Calls std::size_t so where that can be told: on 64 bits, because the interface has no other unsigned long."""
    return [name.replace("unsigned long", "std::size_t") for name in names] if is_64_bit(elf_file) else names


def without_size_t(names, elf_file):
    """The other way round, for goldens: on 32 bits it is an unsigned int like others."""
    return names if is_64_bit(elf_file) else [name.replace("std::size_t", "unsigned int") for name in names]
