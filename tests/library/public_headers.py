#!/usr/bin/env python3
"""public_headers.py ROOT HEADER...: tells whether the public headers are those that offer something (ZKMB_API) and
those that they include."""
import os
import re
import sys

FOLDERS = ("base", "platform", "recovery", "export", "ZkMobileBackup")


def headers(root):
    for folder in FOLDERS:
        for path, _, names in os.walk(os.path.join(root, folder)):
            yield from (os.path.relpath(os.path.join(path, name), root) for name in names if name.endswith(".h"))


def text_of(root, header):
    with open(os.path.join(root, header), encoding="utf-8") as file:
        return file.read()


def needed(root):
    found = {header for header in headers(root) if re.search(r"\bZKMB_API\b", text_of(root, header))}
    waiting = list(found)
    while waiting:
        included = set(re.findall(r'#include "([^"]+)"', text_of(root, waiting.pop()))) - found
        found |= included
        waiting += included
    return found


def main(root, *listed):
    wanted = needed(root)
    for header in sorted(wanted - set(listed)):
        print("not in cmake/PublicHeaders.cmake: " + header)
    for header in sorted(set(listed) - wanted):
        print("offers nothing, but stands in cmake/PublicHeaders.cmake: " + header)
    return 0 if wanted == set(listed) else 1


if __name__ == "__main__":
    sys.exit(main(*sys.argv[1:]))
