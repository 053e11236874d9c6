#!/usr/bin/env python3
"""Extracts programs from the documentation and compares the output that it shows.

pages.py program PAGE                    prints the page's C program
pages.py codes HEADER                    prints the table of docs/result-codes.md
pages.py check PAGE SHOWN COMMAND...     the page shows the output of the command after the line SHOWN
pages.py run PAGE EMULATOR... PROGRAM    the same for the page's program, with the arguments that the page shows
"""
import re
import shlex
import subprocess
import sys
from pathlib import Path


def program(page):
    """The first C program of a page."""
    return re.search(r"```c\n(.*?)```", Path(page).read_text(encoding="utf-8"), re.DOTALL)[1]


def check(page, shown, command):
    """Fails unless the page has the output, up to the end of its block or a blank line."""
    output = subprocess.run(command, check=True, capture_output=True).stdout.decode().replace("\r\n", "\n")
    text = Path(page).read_text(encoding="utf-8")
    if not output or (f"{shown}\n{output}```" not in text and f"{shown}\n{output}\n" not in text):
        sys.exit(f"{page} does not show the output of {shlex.join(command)}:\n{output}")


def run(page, command):
    """Checks the output of the page's program with the arguments on the page: $ cc ... && ./program ARGUMENT..."""
    shown, arguments = re.search(r"^\$ cc .*(&& \./\w+ (.*))$", Path(page).read_text(encoding="utf-8"), re.MULTILINE).groups()
    check(page, shown, [*command, *shlex.split(arguments)])


def comment_tags(comment):
    """The tags of a documentation comment with their texts: ("@retval", "-1 no such file")."""
    text = re.sub(r"^(/\*\*| \*/?) ?", "", comment, flags=re.MULTILINE)
    for kind, tail in re.findall(r"^(@\w+)((?:.|\n(?!@|\n))*)", text, re.MULTILINE):
        yield kind, re.sub(r"\\\||\|", "/", " ".join(tail.split()))


def pointers(declaration):
    """The arguments of a declaration that can be null."""
    return re.findall(r"\*\s*(?:const\s+)?(\w+)\s*[,)]|(\w+)\[", declaration)


def code_rows(comment, declaration):
    """The rows of a function: (code, meaning)."""
    nullable = {"".join(names) for names in pointers(declaration)}
    rows = []
    nulls = {}
    for kind, text in comment_tags(comment):
        if kind == "@retval":
            code, meaning = text.split(" ", 1)
            rows.append((f"`{code.replace(',', ', ')}`", meaning))
        elif kind == "@return":
            rows.append(("", text))
        elif kind == "@param" and (null := re.search(r"[Nn]ull[^:.]*: (-?[0-9]+)", text)):
            names = text.split(" ", 1)[0].split(",")
            nulls.setdefault(null[1], []).extend(name for name in names if name in nullable)
    return rows + [(f"`{code}`", "null " + ", ".join(f"`{name}`" for name in names)) for code, names in nulls.items()]


def codes(header):
    """The results of all functions as a table."""
    tables = {}
    comment = ""
    text = Path(header).read_text(encoding="utf-8")
    for part in re.findall(r"^/\*\*.*?\*/|^TVMETA_API [^;]*", text, re.MULTILINE | re.DOTALL):
        if part.startswith("/**"):
            comment = part
            continue
        name = re.search(r"(\w+)\(", part)[1]
        copied = re.search(r"@copydetails (\w+)", comment)
        tables[name] = (tables[copied[1]] if copied else []) + code_rows(comment, part)
        first = f"{name}()"
        for code, meaning in tables[name] or [("", "nothing")]:
            yield f"| {first} | {code}{' ' if code else ''}| {meaning} |"
            first = ""


def main():
    """Runs one of the commands above."""
    command, page, *rest = sys.argv[1:]
    if command == "program":
        sys.stdout.write(program(page))
    elif command == "codes":
        print("\n".join(codes(page)))
    elif command == "check":
        check(page, rest[0], rest[1:])
    elif command == "run":
        run(page, rest)
    else:
        sys.exit(__doc__)


if __name__ == "__main__":
    main()
