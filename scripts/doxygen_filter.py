#!/usr/bin/env python3
"""Shows Doxygen a header or a document of ours:  doxygen_filter.py FILE

Our comments are plain, and Doxygen reads those that are marked as documentation. What is no code in
them is escaped, so that a backslash or "<a>" is what it looks like. A comment is about all functions
behind it, up to an empty line or the next comment: it is repeated for each. Doxygen would also take
the backslash in `\\` for an escape of the quote behind it.
"""
import re
import sys

CODE = re.compile(r"(`[^`]*`)")
HEADLINE = re.compile(r"\s*// -+ .* -+$")  # of a group of functions


def with_backslashes(text):
    return text.replace("`\\`", "<code>\\\\</code>")


def escaped(text):
    parts = CODE.split(text)
    return with_backslashes("".join(part if i % 2 else re.sub(r"([\\<>@#&%])", r"\\\1", part)
                                    for i, part in enumerate(parts)))


def header(lines):
    comment, ended = [], False  # ended: a function has ended, and nothing stood behind it yet
    for line in lines:
        about = None if HEADLINE.match(line) else re.match(r"(\s*)// ?(.*)$", line)
        trailing = re.match(r"(.*[;,{}].*?)  // (.*)$", line)
        if about:
            if ended or not comment:
                comment = []
            comment.append(f"{about[1]}/// {escaped(about[2])}\n")
            yield comment[-1]
        elif not line.strip() or HEADLINE.match(line):
            comment = []
            yield "\n"
        elif re.match(r"class |struct |enum |#|\s*(public|protected|private):|\s*}", line):
            comment = []
            yield line
        else:
            if ended:
                yield from comment
            yield f"{trailing[1]}  ///< {escaped(trailing[2])}\n" if trailing else line
        ended = bool(re.search(r"\)( const)?;\s*$", line)) and not about


def main():
    with open(sys.argv[1], encoding="utf-8") as file:
        lines = file.readlines()
    if sys.argv[1].endswith(".md"):
        sys.stdout.write(with_backslashes("".join(lines)))
    else:
        sys.stdout.writelines(header(lines))


main()
