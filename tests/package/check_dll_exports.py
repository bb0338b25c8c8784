"""The Windows library exports the classes and functions of a list, and nothing else:

    check_dll_exports.py OBJDUMP CXXFILT LIBRARY LIST
"""
import pathlib
import re
import subprocess
import sys


def exported_symbols(objdump, library):
    dump = subprocess.run([objdump, "-p", library], check=True, capture_output=True, text=True)
    table = dump.stdout.split("[Ordinal/Name Pointer] Table", 1)[1].split("\n\n", 1)[0]
    return [line.split()[-1] for line in table.splitlines()[1:] if "[" in line]


def demangled(cxxfilt, symbols):
    return subprocess.run([cxxfilt, "-n"], input="\n".join(symbols), check=True,
                          capture_output=True, text=True).stdout.splitlines()


def owner(symbol):
    """The class or function after the namespaces; the symbol itself when it is not ours."""
    name = re.sub(r"^(vtable|typeinfo|typeinfo name|VTT|non-virtual thunk) (for|to) ", "", symbol)
    match = re.match(r"zvrsit::(?:platform::)?(\w+)", name)
    return match.group(1) if match else symbol


def main():
    objdump, cxxfilt, library, listed = sys.argv[1:]
    wanted = set(pathlib.Path(listed).read_text().split())
    symbols = exported_symbols(objdump, library)
    found = {owner(symbol) for symbol in demangled(cxxfilt, symbols)}
    for name in sorted(found - wanted):
        print(f"exported, but not listed: {name}")
    for name in sorted(wanted - found):
        print(f"listed, but not exported: {name}")
    print(f"{len(symbols)} symbols of {len(found)} names")
    return 0 if symbols and found == wanted else 1


sys.exit(main())
