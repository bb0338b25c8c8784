"""The version resource of a DLL holds the version, as numbers and as text:

    check_version.py LIBRARY VERSION
"""
import pathlib
import struct
import sys

library, version = sys.argv[1:]
content = pathlib.Path(library).read_bytes()
# The fixed part of the resource: signature, its own version, then two versions of two words each.
at = content.find(struct.pack("<II", 0xFEEF04BD, 0x00010000))
if at < 0:
    sys.exit("no version resource")
words = struct.unpack_from("<4I", content, at + 8)
numbers = [half for word in words for half in (word >> 16, word & 0xFFFF)]
expected = [int(part) for part in version.split(".")] + [0]
print("numbers", numbers)
if numbers != expected * 2:
    sys.exit(f"not {expected} for the file and the product")
for key, text in {"FileVersion": version, "ProductVersion": version,
                  "OriginalFilename": "zvrsit40.dll"}.items():
    at = content.find(f"{key}\0".encode("utf-16-le"))
    value = content[at + 2 * (len(key) + 1):].decode("utf-16-le", "replace").lstrip("\0")
    print(key, value.split("\0")[0])
    if at < 0 or value.split("\0")[0] != text:
        sys.exit(f"{key} is not {text}")
