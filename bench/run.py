#!/usr/bin/env python3
"""Runs the benches and prints their figures beside the targets. Never fails on a figure."""
import json
import os
import re
import statistics
import subprocess
import tempfile
from pathlib import Path

ROOT = Path(__file__).resolve().parent.parent
BENCH, RELEASE = ROOT / "build/bench/bin", ROOT / "build/release/bin"
MESH, FACES = "/usr/share/glmark2/models/bunny.obj", 69666


def output(*command):
    return subprocess.run([str(c) for c in command], check=True, text=True, capture_output=True).stdout


def heading(text):
    print(f"\n{text}\n{'-' * len(text)}", flush=True)


def rates(program):
    """Items a second of a Google Benchmark program, by benchmark name: medians of five."""
    report = json.loads(output(BENCH / program, "--benchmark_format=json", "--benchmark_repetitions=5",
                               "--benchmark_min_time=0.3"))
    return {re.sub(r"_median$", "", b["name"]): b["items_per_second"] for b in report["benchmarks"]
            if b["name"].endswith("_median")}


def memory():
    """Pairs of allocate and free, each beside the general allocator's of the same run."""
    r = rates("memory_bench")
    for threads in (1, 2):
        suffix = f"/real_time/threads:{threads}"
        plain, tracked = r["BM_Malloc" + suffix], r["BM_Tracked" + suffix]
        overhead = (threads / tracked - threads / plain) * 1e9
        print(f"{threads} thread{'s' * (threads > 1)}: malloc {plain / 1e6:6.1f} M/s  tracked {tracked / 1e6:6.1f} M/s, "
              f"{overhead:.0f} ns more an allocation", end="")
        pools = {"MemoryManager": r["BM_MemoryManager" + suffix]}
        if threads == 1:
            pools["Pool"] = r["BM_Pool/real_time"]
        for name, rate in pools.items():
            print(f"  {name} {rate / 1e6:6.1f} M/s, {rate / plain:.1f} x (target 5)", end="")
        print()
    off, none = r["BM_ScopeTracerOff"], r["BM_NoScope"]
    print(f"a scope with the tracer off: {(1 / off - 1 / none) * 1e9:.2f} ns")


def camera():
    """Camera samples of the host's renderer beside a bare ray-tracing loop of the same run."""
    s = json.loads(output(BENCH / "camera_bench", ROOT / "bench/horse.toml"))
    for threads in (1, 2):
        print(f"{threads} thread{'s' * (threads > 1)}: bare loop {s[f'bare_{threads}'] / 1e6:5.2f} M/s  "
              f"one sample a pixel {s[f'one_{threads}'] / 1e6:5.2f} M/s, {s[f'one_share_{threads}']:.2f} of it (target 0.40)  "
              f"more at edges {s[f'edges_{threads}'] / 1e6:5.2f} M/s, {s[f'edges_share_{threads}']:.2f}")


def loading():
    """Seconds until a scene with a mesh of a million triangles stands, and until its first picture is there."""
    with tempfile.TemporaryDirectory() as folder:
        for form in ("obj", "ply"):
            subprocess.run([BENCH / "load_bench", "write", f"{folder}/million.{form}"], check=True)
            s = json.loads(output(BENCH / "load_bench", "load", f"{folder}/million.{form}"))
            print(f".{form}: {s['faces']:,} triangles in {s['load_s']:.2f} s, {s['load_faces_per_s'] / 1e6:.2f} M/s; "
                  f"first picture of 320 x 180 after {s['picture_s']:.2f} s more; file {s['bytes'] / 2**20:.0f} MiB")


def picture(strands, threads, runs):
    """Statistics of a picture of so many strands; the run with the median wall time."""
    with tempfile.TemporaryDirectory() as folder:
        stats = []
        for _ in range(runs):
            subprocess.run([RELEASE / "velmar", "render", ROOT / "bench/bunny.toml", "-o", f"{folder}/bunny.exr",
                            "--threads", str(threads), "--quiet", "--stats", f"{folder}/stats.json",
                            "--set", f"coat.pid_densPerFace={strands / FACES}"], check=True)
            stats.append(json.loads(Path(f"{folder}/stats.json").read_text()))
    middle = statistics.median_low(s["wall_s"] for s in stats)
    return next(s for s in stats if s["wall_s"] == middle)


def picture_line(strands, threads, s):
    print(f"{strands:>10,} strands, {threads} threads: wall {s['wall_s']:7.2f} s  CPU {s['cpu_s']:7.2f} s  "
          f"peak {s['peak_rss_bytes'] / 2**20:6.0f} MiB  {s['fragments']:,} fragments", flush=True)


def main():
    print(f"{os.cpu_count()} processors, load {os.getloadavg()[0]:.2f}")

    heading("Strands, one core")
    r = rates("strands_bench")
    reference = r["BM_Reference"]
    print(f"reference loop      {reference / 1e6:6.2f} M/s")
    print(f"straight fur        {r['BM_StraightFur'] / 1e6:6.2f} M/s  ratio {r['BM_StraightFur'] / reference:.2f} (target 0.33)")
    print(f"everything on       {r['BM_EverythingOn'] / 1e6:6.2f} M/s  ratio {r['BM_EverythingOn'] / reference:.2f} (target 0.10)")

    heading("Samples, one core")
    for name, rate in rates("raster_bench").items():
        print(f"{name[3:]:<19} {rate / 1e6:6.1f} M/s")

    heading("Pairs of allocate and free, 24 bytes, in batches")
    memory()
    heading("Skinned vertices (bones a vertex, threads)")
    for name, rate in rates("skin_bench").items():
        print(f"{name.removesuffix('/real_time'):<27} {rate / 1e6:6.1f} M/s")

    heading("Camera samples of the horse without hair, one light")
    camera()
    heading("Scenes with a mesh of a million triangles, both cores")
    loading()

    heading("Where the time goes")
    print(output(BENCH / "stages_bench", MESH, 300000), end="")

    heading("Pictures, 1280 x 720")
    for strands in (100_000, 1_000_000):
        one, two = picture(strands, 1, 3), picture(strands, 2, 3)
        picture_line(strands, 1, one)
        picture_line(strands, 2, two)
        print(f"{'':>10} two threads {one['wall_s'] / two['wall_s']:.2f} x one (target 1.8)")
    for strands in (3_000_000, 10_000_000):
        picture_line(strands, 2, picture(strands, 2, 1))

    heading("Against ray-traced curves, 1,000,000 strands, both cores")
    base = [json.loads(output(BENCH / "raytraced_baseline", MESH, 1_000_000)) for _ in range(3)]
    wall = statistics.median(b["wall_s"] for b in base)
    peak = statistics.median(b["peak_rss_bytes"] for b in base)
    print(f"baseline: wall {wall:.2f} s, peak {peak / 2**20:.0f} MiB")
    print(f"ours: {two['wall_s'] / wall:.2f} of its wall time (target 0.50), "
          f"{two['peak_rss_bytes'] / peak:.2f} of its memory (target 0.25)")


main()
