#!/usr/bin/env python3
"""Compares pictures of velmar with those of an independent renderer, Blender's Cycles.

usage: compare.py [--velmar PROGRAM] [--blender PROGRAM] [--out FOLDER]

Both render the same scenes with the same cameras: a sphere on a checkered plane under every kind of light, and a skinned
model with a picture at three frames. Silhouettes must be within one pixel, colours within 2 percent. The exit status is
0 when they are, 1 when not, 77 where Blender is not installed. --out keeps scenes and pictures.
"""

import argparse
import json
import os
import pathlib
import shutil
import subprocess
import sys
import tempfile

import scenes

HERE = pathlib.Path(__file__).resolve().parent
MOST_PIXELS = 1
MOST_DIFFERENCE = 0.02
# A comparison of few pixels would say little.
LEAST_COMPARED = 0.5
SECONDS = 600


def options():
    p = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    p.add_argument("--velmar", default=str(HERE.parents[1] / "build" / "release" / "bin" / "velmar"))
    p.add_argument("--blender", default="blender")
    p.add_argument("--out", type=pathlib.Path)
    return p.parse_args()


def run(command):
    # Blender takes the modules of the first python3 in the path: that must be the system's, not this script's.
    environment = {**os.environ, "PATH": os.defpath}
    r = subprocess.run(command, capture_output=True, timeout=SECONDS, check=False, env=environment)
    if r.returncode != 0:
        sys.exit("%s failed:\n%s" % (command[0], (r.stdout + r.stderr).decode(errors="replace")[-2000:]))


def render_ours(velmar, folder):
    """Renders all scenes; returns what the other renderer needs to know."""
    job = []
    for number, scene in enumerate(scenes.all_scenes()):
        place = folder / ("%d" % number)
        place.mkdir(parents=True, exist_ok=True)
        file = scenes.write_scene(place, scene)
        ours = place / "velmar.exr"
        run([velmar, "render", "--quiet", "-f", str(scene["frame"]), "-o", str(ours), str(file)])
        job.append({**scene, "folder": str(place), "ours": str(ours), "theirs": str(place / "blender.exr")})
    return job


def report(job, rows):
    """Prints the table; True when everything is within its limits."""
    print("%-20s %5s %12s %10s %10s %9s" % ("scene", "frame", "silhouette", "largest", "mean", "compared"))
    good = True
    for scene, row in zip(job, rows, strict=True):
        fine = row["silhouette"] <= MOST_PIXELS and row["largest"] <= MOST_DIFFERENCE and row["compared"] >= LEAST_COMPARED
        good &= fine
        print(
            "%-20s %5d %9s px %8.2f %% %8.3f %% %7.0f %%%s"
            % (scene["name"], scene["frame"], row["silhouette"], 100 * row["largest"], 100 * row["mean"], 100 * row["compared"],
               "" if fine else "  OUT")
        )  # fmt: skip
    return good


def compare(o, folder):
    job = render_ours(o.velmar, folder)
    (folder / "job.json").write_text(json.dumps(job))
    result = folder / "result.json"
    script = [str(HERE / "blender_side.py"), "--", str(folder / "job.json"), str(result)]
    run([o.blender, "-b", "--factory-startup", "--python-exit-code", "1", "--python", *script])
    if len(job) < 6:
        print("the skinned model of assimp-testmodels is not installed and was left out")
    return report(job, json.loads(result.read_text()))


def main():
    o = options()
    o.blender = shutil.which(o.blender)
    if not o.blender:
        print("Blender is not installed")
        return 77
    if o.out:
        return 0 if compare(o, o.out.resolve()) else 1
    with tempfile.TemporaryDirectory() as temp:
        return 0 if compare(o, pathlib.Path(temp)) else 1


if __name__ == "__main__":
    sys.exit(main())
