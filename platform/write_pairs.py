#!/usr/bin/env python3
"""Writes the source of pair_data_win32.h:  write_pairs.py FILE"""
import sys

SOURCE = """#include "platform/pair_data_win32.h"

namespace zvrsit::platform {

const PairMeanings kBig5Pairs = {
%s
};
const PairMeanings kGb18030Pairs = {
%s
};
const PairRun kGb18030Runs[] = {
%s
};
const std::size_t kGb18030RunCount = sizeof kGb18030Runs / sizeof kGb18030Runs[0];

}  // namespace zvrsit::platform
"""
FOUR_BYTE_CHARACTERS = 39420  # with no more than 16 bits


def meaning(codec, *octets):
    try:
        text = bytes(octets).decode(codec)
    except UnicodeDecodeError:
        return 0
    return ord(text) if len(text) == 1 else 0


def pairs(codec):
    for lead in range(0x81, 0xFF):
        yield "{%s}," % ", ".join(hex(meaning(codec, lead, trail)) for trail in range(0x40, 0xFF))


def runs():
    step = None  # from the number of a character to its code point
    for number in range(FOUR_BYTE_CHARACTERS):
        row, fourth = divmod(number, 10)
        row, third = divmod(row, 126)
        first, second = divmod(row, 10)
        point = meaning("gb18030", first + 0x81, second + 0x30, third + 0x81, fourth + 0x30)
        if number == 0 or (point - number if point else None) != step:
            step = point - number if point else None
            yield f"{{{number}, {point:#x}}},"
    yield f"{{{FOUR_BYTE_CHARACTERS}, 0}},"


with open(sys.argv[1], "w", encoding="ascii") as out:
    out.write(SOURCE % tuple("\n".join(lines)
                             for lines in (pairs("big5hkscs"), pairs("gb18030"), runs())))
