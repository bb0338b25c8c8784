#!/usr/bin/env python3
"""Reads from programs and libraries whether they are built so that faults are hard to use.

Usage: check_hardening.py FILE...   ELF files, or PE files of Windows
"""
import re
import subprocess
import sys


def run(*words):
    return subprocess.run(words, check=True, capture_output=True, text=True).stdout


def elf_faults(file):
    head, program = run("readelf", "-hW", file), run("readelf", "-lW", file)
    dynamic, symbols = run("readelf", "-dW", file), run("readelf", "--dyn-syms", "-W", file)
    is_program = "INTERP" in program
    checks = [("position-independent", re.search(r"Type:\s+DYN", head)),
              ("PIE", not is_program or re.search(r"FLAGS_1.*PIE", dynamic)),
              ("RELRO", "GNU_RELRO" in program),
              ("bound at once", re.search(r"BIND_NOW|FLAGS_1.*NOW", dynamic)),
              ("stack not executable", re.search(r"GNU_STACK.* RW +0x", program)),
              ("no segment to write and run", not re.search(r"LOAD .* RWE ", program)),
              ("no relocations of code", "TEXTREL" not in dynamic),
              ("stack protector", "__stack_chk_fail" in symbols)]
    if "X86-64" in head:
        landings = run("objdump", "-d", "--no-show-raw-insn", "-j", ".text", file).count("endbr64")
        checks.append(("control-flow protection", landings > 10))
    return [name for name, holds in checks if not holds]


def is_fortified(file):
    """Small ones may have no call of the kind."""
    return re.search(r"__\w+_chk@", run("readelf", "--dyn-syms", "-W", file).replace("__stack_chk", "")) is not None


def pe_faults(file):
    text = run("objdump", "-p", file)
    wanted = ["DYNAMIC_BASE", "NX_COMPAT"] + ["HIGH_ENTROPY_VA"] * ("PE32+" in text or "pei-x86-64" in text)
    return [name for name in wanted if name not in text]


def main(files):
    faults = 0
    for file in files:
        with open(file, "rb") as opened:
            is_elf = opened.read(4) == b"\x7fELF"
        for fault in elf_faults(file) if is_elf else pe_faults(file):
            print(f"{file}: {fault}: no")
            faults += 1
    if is_elf and not any(is_fortified(file) for file in files):
        print("fortified: no")
        faults += 1
    assert files
    return faults > 0


sys.exit(main(sys.argv[1:]))
