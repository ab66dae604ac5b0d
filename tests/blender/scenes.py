"""The scenes that both renderers get, and how a scene file says them."""

import json
import math
import pathlib
import struct
import zlib

MODELS = pathlib.Path("/usr/share/assimp/models")
SKINNED = MODELS / "FBX" / "huesitos.fbx"

BALL = (0.8, 0.6, 0.4)
DARK, BRIGHT = (0.2, 0.3, 0.5), (0.7, 0.6, 0.2)
# The plane has this many squares a side; the mesh has one face a square, so that both renderers see the same borders.
SQUARES = 8
HALF = 4.0

# Surfaces are shown in their own colour where light of strength 1 falls straight on them. The lights that have a place
# fade with the square of the distance in both renderers, from this distance on.
DECAY_START = 2.0

LIGHTS = {
    "direct": {"type": "direct", "position": (-3.0, -2.0, 6.0), "target": (0.0, 0.0, 0.0), "strength": 0.9},
    "omni": {"type": "omni", "position": (-2.0, -2.5, 4.0), "strength": 3.0},
    # The cone's border is sharp: how it fades in between is each renderer's own matter.
    "spot": {"type": "spot", "position": (-2.0, -2.5, 5.0), "target": (0.0, 0.0, 0.3), "strength": 5.0, "cone": 44.0},
}


def sphere(radius, center, around=128, upwards=64):
    """Vertices and faces."""
    points = [(0, 0, radius)]
    for i in range(1, upwards):
        t = math.pi * i / upwards
        for j in range(around):
            p = 2 * math.pi * j / around
            points.append((radius * math.sin(t) * math.cos(p), radius * math.sin(t) * math.sin(p), radius * math.cos(t)))
    points.append((0, 0, -radius))

    def ring(i, j):
        return 1 + (i - 1) * around + j % around

    faces = [(0, ring(1, j), ring(1, j + 1)) for j in range(around)]
    for i in range(1, upwards - 1):
        faces += [(ring(i, j), ring(i + 1, j), ring(i + 1, j + 1), ring(i, j + 1)) for j in range(around)]
    last = len(points) - 1
    faces += [(ring(upwards - 1, j), last, ring(upwards - 1, j + 1)) for j in range(around)]
    return [tuple(c + o for c, o in zip(p, center)) for p in points], faces


def checkered_plane():
    """Vertices, faces, and which of two colours each face has."""
    n = SQUARES + 1
    points = [(HALF * (2 * x / SQUARES - 1), HALF * (2 * y / SQUARES - 1), 0.0) for y in range(n) for x in range(n)]

    def at(x, y):
        return y * n + x

    squares = [(x, y) for y in range(SQUARES) for x in range(SQUARES)]
    faces = [(at(x, y), at(x + 1, y), at(x + 1, y + 1), at(x, y + 1)) for x, y in squares]
    return points, faces, [(x + y) % 2 for x, y in squares]


def ball_scene(light):
    points, faces = sphere(1.0, (0.0, 0.0, 1.0))
    plane, squares, colors = checkered_plane()
    return {
        "name": "ball under " + light,
        "frame": 0,
        "size": (320, 240),
        "camera": {"position": (0.0, -8.0, 5.0), "target": (0.0, 0.0, 0.5), "fov": 50.0},
        "light": LIGHTS[light],
        "shadows": True,
        "meshes": [
            {"name": "ball", "points": points, "faces": faces, "smooth": True, "colors": [BALL]},
            {"name": "floor", "points": plane, "faces": squares, "smooth": False, "colors": [DARK, BRIGHT], "which": colors},
        ],
    }


def skinned_scene(frame):
    return {
        "name": "skinned model",
        "frame": frame,
        "fps": 25,
        "size": (640, 480),
        "camera": {"position": (6.5, -8.0, 5.5), "target": (0.8, 3.0, 2.5), "fov": 45.0},
        "light": {"type": "direct", "position": (2.0, -6.0, 7.0), "target": (0.8, 3.0, 2.2), "strength": 0.9},
        "shadows": False,
        "meshes": [],
        "model": {"file": str(SKINNED), "mesh": "Cylinder", "others": ["Lamp"], "picture": "cells.png"},
    }


def all_scenes():
    scenes = [ball_scene(light) for light in LIGHTS]
    if SKINNED.exists():
        scenes += [skinned_scene(frame) for frame in (0, 33, 39)]
    return scenes


def png_chunk(name, data):
    return struct.pack(">I", len(data)) + name + data + struct.pack(">I", zlib.crc32(name + data))


def write_cells(path, cells=6, size=32):
    """A picture of squares that all have another colour, so that a wrong place shows."""
    side = cells * size
    colors = [[(60 + 32 * x, 60 + 32 * y, 60 + (x * 5 + y * 3) % 6 * 32) for x in range(cells)] for y in range(cells)]
    rows = b"".join(b"\0" + b"".join(bytes(colors[y // size][x // size]) for x in range(side)) for y in range(side))
    header = png_chunk(b"IHDR", struct.pack(">IIBBBBB", side, side, 8, 2, 0, 0, 0))
    path.write_bytes(b"\x89PNG\r\n\x1a\n" + header + png_chunk(b"IDAT", zlib.compress(rows)) + png_chunk(b"IEND", b""))


def write_obj(path, mesh):
    lines = ["v %.9g %.9g %.9g" % tuple(p) for p in mesh["points"]] + ["s " + ("1" if mesh["smooth"] else "off")]
    for i, face in enumerate(mesh["faces"]):
        lines.append("usemtl c%d" % mesh.get("which", [0] * (i + 1))[i])
        lines.append("f " + " ".join(str(v + 1) for v in face))
    path.write_text("\n".join(lines) + "\n")


def toml(value):
    return json.dumps(list(value) if isinstance(value, tuple) else value)


def section(title, **entries):
    return "\n[%s]\n" % title + "".join("%s = %s\n" % (k, toml(v)) for k, v in entries.items())


def light_section(light, shadows):
    entries = {"name": "key", "type": light["type"], "position": light["position"], "multiplier": light["strength"], "shadows": shadows}
    if "target" in light:
        entries["target"] = light["target"]
    if light["type"] == "direct":
        # The other renderer's sun has no border.
        entries.update(hotspot=1000.0, falloff=1001.0)
    else:
        entries.update(decay="inverse_square", decay_start=DECAY_START)
    if light["type"] == "spot":
        entries.update(hotspot=light["cone"], falloff=light["cone"] + 0.01)
    return section("[light]", **entries)


def material_sections(name, colors):
    """A material without highlights, or one of several by material id."""
    names = ["%s %d" % (name, i) for i in range(len(colors))]
    out = "".join(section("[material]", name=n, diffuse=c, specular_level=0) for n, c in zip(names, colors))
    return out + section("[material]", name=name, type="multi", materials=names)


def write_scene(folder, scene):
    """Writes the scene file and what it imports; returns its path."""
    imports = [{"file": m["name"] + ".obj"} for m in scene["meshes"]]
    body = ""
    for mesh in scene["meshes"]:
        write_obj(folder / (mesh["name"] + ".obj"), mesh)
        body += material_sections(mesh["name"], mesh["colors"])
        body += section("[node]", name=mesh["name"], material=mesh["name"])
    if "model" in scene:
        model = scene["model"]
        imports.append({"file": model["file"]})
        write_cells(folder / model["picture"])
        body += section("[map]", name="cells", file=model["picture"])
        body += section("[material]", name="skin", diffuse=(1, 1, 1), specular_level=0)
        body += '[material.maps]\ndiffuse = "cells"\n'
        # Flat faces: how normals turn with a skin is each renderer's own matter.
        body += section("[node]", name=model["mesh"], material="skin")
        body += '[[node.modifiers]]\ntype = "smooth"\nmode = "none"\n'
        # The model's own lights shine on nothing.
        for name in model["others"]:
            body += section("[keys]", object=name, parameter="multiplier", values=[[0, 0]])
    camera = scene["camera"]
    head = section("scene", fps=scene.get("fps", 30)) + "import = [%s]\n" % ", ".join("{ file = %s }" % toml(i["file"]) for i in imports)
    head += section("render", width=scene["size"][0], height=scene["size"][1], camera="cam", samples=8)
    head += section("[camera]", name="cam", position=camera["position"], target=camera["target"], fov=camera["fov"])
    path = folder / "scene.toml"
    path.write_text(head + light_section(scene["light"], scene["shadows"]) + body)
    return path
