#!/usr/bin/env python3
"""Checks that docs/host.md names every file of the host, and no file that is not there. Exit status 1 when it does not."""
import re
import sys
from fnmatch import fnmatch
from pathlib import Path

ROOT = Path(__file__).resolve().parent.parent
PAGE = ROOT / "docs/host.md"
# "core/ref.cpp", "gltf_*", "toml_value.*": what stands between single backticks and looks like a file of ours.
NAME = re.compile(r"`((?:[a-z0-9_]+/)*[a-z0-9_]+(?:\*?\.(?:h|cpp|\*)|\*))`")


def names_file(pattern, path):
    """Whether the page's `pattern` means `path`; folders may be left out, and a source stands for its header."""
    stem = re.sub(r"\.(h|cpp|\*)$", "", pattern)
    here = path.relative_to(ROOT / "host").with_suffix("").as_posix()
    return fnmatch(here, stem) or fnmatch(here, "*/" + stem)


def main():
    patterns = [name.removeprefix("host/") for name in NAME.findall(PAGE.read_text())]
    files = [p for p in (ROOT / "host").rglob("*") if p.suffix in (".h", ".cpp")]
    problems = [f"{p.relative_to(ROOT)}: {PAGE.name} does not name it"
                for p in files if not any(names_file(pattern, p) for pattern in patterns)]
    problems += [f"{PAGE.name}: there is no file `{pattern}` in the host"
                 for pattern in patterns if not any(names_file(pattern, p) for p in files)]
    print("\n".join(sorted(set(problems))), end="\n" if problems else "", file=sys.stderr)
    return 1 if problems else 0


sys.exit(main())
