#!/usr/bin/env python3
"""Checks that files compiled for newer processors leave no function behind that other files could share.

usage: check_kernels.py OBJECT...   (those whose names hold Avx are looked at)
"""
import re
import subprocess
import sys


def shared_symbols(path):
    lines = subprocess.run(["nm", "-C", path], capture_output=True, text=True, check=True).stdout.splitlines()
    weak = (re.match(r"[0-9a-f]* +[WVu] (.*)", line) for line in lines)
    return [m.group(1) for m in weak if m and not re.search(r"Float8|Float16", m.group(1))]


def main():
    objects = [path for path in sys.argv[1:] if "Avx" in path]
    found = {path: shared_symbols(path) for path in objects}
    for path, symbols in found.items():
        for symbol in symbols:
            print(f"{path}: other files could share {symbol}", file=sys.stderr)
    if not objects:
        print("no object is compiled for newer processors", file=sys.stderr)
    return 0 if objects and not any(found.values()) else 1


sys.exit(main())
