#!/usr/bin/env python3
"""Compares the symbols that the shared library offers with the list in public_symbols.txt.

public_symbols.py LIBRARY            prints what differs, status 1 when something does
public_symbols.py LIBRARY --refresh  writes the list anew

Names are demangled; the variants of one constructor or destructor count as one symbol.
"""
import os
import subprocess
import sys

LIST = os.path.join(os.path.dirname(os.path.abspath(__file__)), "public_symbols.txt")


def offered(library):
    output = subprocess.run(["nm", "--dynamic", "--defined-only", "--demangle", library],
                            check=True, capture_output=True, text=True).stdout
    return {line.split(" ", 2)[2] for line in output.splitlines()}


def listed():
    with open(LIST, encoding="utf-8") as file:
        return set(file.read().splitlines())


def refresh(symbols):
    with open(LIST, "w", encoding="utf-8") as file:
        file.writelines(symbol + "\n" for symbol in sorted(symbols))


def compare(symbols, expected):
    for symbol in sorted(symbols - expected):
        print("offered, but not in the list: " + symbol)
    for symbol in sorted(expected - symbols):
        print("in the list, but not offered: " + symbol)
    return 0 if symbols == expected else 1


def main(arguments):
    if not arguments or arguments[1:] not in ([], ["--refresh"]):
        sys.exit(__doc__)
    symbols = offered(arguments[0])
    if len(arguments) > 1:
        refresh(symbols)
        return 0
    return compare(symbols, listed())


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
