#!/usr/bin/env python3
"""Tries every model below a folder: loads it, renders it small, and prints a table.

usage: import_table.py [--velmar PROGRAM] [--out FOLDER] [FOLDER...]

Every file with an extension that velmar reads must either load and render, or give exactly one line and exit status 2,
within ten seconds. The exit status is 0 when all files do. --out keeps the pictures.
"""

import argparse
import pathlib
import re
import subprocess
import sys
import tempfile
import time

FORMS = {".obj", ".ply", ".3ds", ".fbx", ".gltf", ".glb"}
LIMIT = 10
SCENE = """[scene]
import = [{{ file = {file} }}]
background = [0.1, 0.12, 0.15]
ambient = [0.2, 0.2, 0.2]
[render]
width = 64
height = 64
"""
VIEW = """camera = "view of all"
[[camera]]
name = "view of all"
position = {position}
target = {target}
fov = 40.0
near = {near}
far = {far}
[[light]]
name = "light of all"
type = "omni"
position = {light}
"""


def text(path):
    """A path as a TOML text."""
    return '"' + str(path).replace("\\", "\\\\").replace('"', '\\"') + '"'


def run(command):
    """Exit status (None after the limit), output, errors, seconds."""
    start = time.monotonic()
    try:
        r = subprocess.run(command, capture_output=True, timeout=LIMIT, check=False)
        return r.returncode, r.stdout.decode(errors="replace"), r.stderr.decode(errors="replace"), time.monotonic() - start
    except subprocess.TimeoutExpired:
        return None, "", "", time.monotonic() - start


def failure(status, errors):
    """(fine, text) for a command that did not succeed."""
    lines = errors.strip().splitlines()
    if status is None:
        return False, f"HANGS for more than {LIMIT} s"
    if status == 2 and len(lines) == 1 and lines[0].startswith("velmar: error: "):
        return True, "refused: " + lines[0][len("velmar: error: ") :]
    return False, f"exit status {status}, {len(lines)} lines: {' / '.join(lines[:2])}"


def view(bounds):
    """A camera and a light that show the box."""
    low, high = bounds
    middle = [(a + b) / 2 for a, b in zip(low, high)]
    size = max(sum((b - a) ** 2 for a, b in zip(low, high)) ** 0.5, 1e-6)
    place = [m + size * d for m, d in zip(middle, (0.8, -1.2, 0.7))]
    lit = [m + 3 * size * d for m, d in zip(middle, (0.9, -0.8, 1.0))]
    return VIEW.format(position=[float(p) for p in place], target=[float(m) for m in middle], near=size * 0.01, far=size * 10.0, light=[float(p) for p in lit])


def try_model(velmar, path, folder, picture):
    """(fine, text, seconds) of one file."""
    scene = folder / "scene.toml"
    head = SCENE.format(file=text(path))
    scene.write_text(head)
    status, output, errors, seconds = run([velmar, "info", scene])
    if status != 0:
        return *failure(status, errors), seconds
    box = re.search(r"^bounds: (\[.*\]) to (\[.*\])$", output, re.M)
    if not box:
        return True, "loaded, holds nothing to render", seconds
    scene.write_text(head + view([[float(x) for x in side.strip("[]").split(",")] for side in box.groups()]))
    status, _, errors, more = run([velmar, "render", scene, "-o", picture, "--quiet"])
    if status != 0:
        return *failure(status, errors), seconds + more
    notes = len(re.findall(r"^  note: ", output, re.M))
    counts = [len(re.findall(p, output, re.M)) for p in (r"^node '.*': mesh", r"^node '.*': shape", r"^  modifier ")]
    said = ", ".join(f"{n} {what}" for n, what in zip(counts, ("meshes", "shapes", "modifiers")) if n)
    return True, f"rendered: {said}" + (f", {notes} notes" if notes else ""), seconds + more


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--velmar", default=pathlib.Path(__file__).parent.parent / "build/release/bin/velmar")
    parser.add_argument("--out", type=pathlib.Path)
    parser.add_argument("folders", nargs="*", type=pathlib.Path, default=[pathlib.Path("/usr/share/assimp")])
    options = parser.parse_args()
    models = sorted(p for f in options.folders for p in f.rglob("*") if p.suffix.lower() in FORMS and p.is_file())
    if not models:
        sys.exit("no models found, expected Debian's assimp-testmodels or other folders")
    bad = 0
    with tempfile.TemporaryDirectory() as temp:
        folder = pathlib.Path(temp)
        if options.out:
            options.out.mkdir(parents=True, exist_ok=True)
        for i, path in enumerate(models):
            picture = (options.out or folder) / f"{i:03d}_{path.name}.png"
            fine, said, seconds = try_model(options.velmar, path.resolve(), folder, picture)
            bad += not fine
            print(f"{'ok ' if fine else 'BAD'} {seconds:5.2f} s  {path}  {said}", flush=True)
    print(f"{len(models)} files, {bad} of them neither rendered nor refused in one line")
    sys.exit(1 if bad else 0)


if __name__ == "__main__":
    main()
