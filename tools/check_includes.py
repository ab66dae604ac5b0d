#!/usr/bin/env python3
"""Checks who includes whom, from the include lines alone. Prints one line a violation; exit status 1 when there is any."""
import re
import subprocess
import sys
from pathlib import Path

ROOT = Path(__file__).resolve().parent.parent
INCLUDE = re.compile(r'^\s*#\s*include\s*([<"])([^>"]+)[>"]')

# Header roots of our own code, by what an include line starts with.
SDK, DIAG, HOST = "sdk/", "DebugTools/", ("core/", "modifiers/", "shapes/", "import/", "image/", "render/", "materials/", "scene/", "cli/")
STRANDS = "IHairInfo.h"

# Plug-in modules of the objects floor and above; the engine must not include them.
OBJECTS = ("Base/BaseAtmo", "Base/ParamBlocks", "HairAtmo", "FurAtmo", "HRendAtm", "HairDLL", "CurveCtl/CurveCtl",
           "Base/SurfDist/SurfDist.h", "Base/DumMtl")
ENGINE_DIRS = ("src/Base/HUtil", "src/Base/CtlHairMesh", "src/Base/FaceSel", "src/Base/CreateHair", "src/HRendBuf",
               "src/HRB_Thick", "include/Base/HUtil", "include/Base/CtlHairMesh", "include/Base/CreateHair",
               "include/HRendBuf", "include/HRB_Thick")


def plugin_headers():
    return {str(p.relative_to(ROOT / "include")) for p in (ROOT / "include").rglob("*.h")}


def problem(path, quoted, name, plugin):
    """What is wrong with this include, or None."""
    is_sdk, is_diag, is_host = name.startswith(SDK), name.startswith(DIAG), name.startswith(HOST)
    is_plugin = quoted and name in plugin
    third_party = not quoted and ("/" in name or name.endswith((".h", ".hpp"))) and not name.startswith(("experimental/",))
    system = name.split("/")[0] in ("sys", "unistd.h", "dlfcn.h", "fcntl.h", "pthread.h", "signal.h", "time.h", "errno.h",
                                    "link.h", "elf.h", "linux", "windows.h", "sched.h", "emmintrin.h", "smmintrin.h",
                                    "immintrin.h", "cpuid.h", "process.h", "cxxabi.h", "dbghelp.h", "malloc.h",
                                    "ucontext.h", "unwind.h")
    top = path.split("/")[0]
    if path.startswith("host/sdk"):
        if quoted and not is_sdk: return "host/sdk includes the standard library and itself only"
        if third_party and not system: return "host/sdk has no third-party dependency"
    elif top == "host":
        if is_plugin and name != STRANDS: return "the host never includes plug-in headers"
    elif top in ("src", "include"):
        if is_host: return "the plug-in knows the host by host/sdk only"
        if third_party and not system: return "the plug-in has no third-party dependency"
        if path.startswith(ENGINE_DIRS) and name.startswith(OBJECTS): return "the engine never includes the objects"
    elif top == "DebugTools":
        if is_sdk or is_host or is_plugin: return "DebugTools includes nothing of ours"
        if third_party and not system: return "DebugTools has no third-party dependency"
    elif top in ("apps", "python"):
        if is_plugin and name != STRANDS: return "apps never include plug-in internals"
    return None


def main():
    files = subprocess.run(["git", "ls-files", "-co", "--exclude-standard", "*.h", "*.cpp"], cwd=ROOT, text=True,
                           capture_output=True, check=True).stdout.split()
    plugin, bad = plugin_headers(), 0
    for path in files:
        if path.startswith(("tests/", "bench/", "fuzz/")) or not (ROOT / path).exists():
            continue
        for number, line in enumerate((ROOT / path).read_text(errors="replace").splitlines(), 1):
            m = INCLUDE.match(line)
            why = m and problem(path, m.group(1) == '"', m.group(2), plugin)
            if why:
                print(f"{path}:{number}: {line.strip()}: {why}")
                bad += 1
    return 1 if bad else 0


sys.exit(main())
