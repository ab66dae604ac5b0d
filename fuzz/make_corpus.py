#!/usr/bin/env python3
"""Writes the seed files of the fuzz targets into fuzz/corpus: small files that use as much of every form as possible.

bones.fbx and the .3ds seed are made from the .gltf ones by the `assimp` program of assimp-utils, where it is installed.
"""

import base64
import json
import math
import pathlib
import shutil
import struct
import subprocess
import tempfile
import zlib

import fbx_seed

CORPUS = pathlib.Path(__file__).parent / "corpus"
FLOAT, USHORT, UBYTE = 5126, 5123, 5121
TYPES = {1: "SCALAR", 2: "VEC2", 3: "VEC3", 4: "VEC4", 16: "MAT4"}
FORMATS = {FLOAT: "f", USHORT: "H", UBYTE: "B"}


def png(width, height, pixels):
    def chunk(name, data):
        return struct.pack(">I", len(data)) + name + data + struct.pack(">I", zlib.crc32(name + data))

    rows = b"".join(b"\0" + bytes(pixels[y * width * 3 : (y + 1) * width * 3]) for y in range(height))
    header = struct.pack(">IIBBBBB", width, height, 8, 2, 0, 0, 0)
    return b"\x89PNG\r\n\x1a\n" + chunk(b"IHDR", header) + chunk(b"IDAT", zlib.compress(rows)) + chunk(b"IEND", b"")


CHECKER = png(2, 2, [255, 0, 0, 0, 255, 0, 0, 0, 255, 255, 255, 255])


class Gltf:
    """A file in work: accessors are appended to one buffer."""

    def __init__(self):
        self.bytes = b""
        self.json = {"asset": {"version": "2.0"}, "bufferViews": [], "accessors": []}

    def view(self, data):
        self.bytes += b"\0" * (-len(self.bytes) % 4)
        self.json["bufferViews"].append({"buffer": 0, "byteOffset": len(self.bytes), "byteLength": len(data)})
        self.bytes += data
        return len(self.json["bufferViews"]) - 1

    def accessor(self, rows, kind=FLOAT, **more):
        rows = [r if isinstance(r, (list, tuple)) else [r] for r in rows]
        data = b"".join(struct.pack("<%d%s" % (len(r), FORMATS[kind]), *r) for r in rows)
        entry = {"bufferView": self.view(data), "componentType": kind, "count": len(rows), "type": TYPES[len(rows[0])]}
        entry.update(more)
        self.json["accessors"].append(entry)
        return len(self.json["accessors"]) - 1

    def text(self):
        uri = "data:application/octet-stream;base64," + base64.b64encode(self.bytes).decode()
        return json.dumps({**self.json, "buffers": [{"uri": uri, "byteLength": len(self.bytes)}]}).encode()

    def binary(self):
        data = self.bytes + b"\0" * (-len(self.bytes) % 4)
        text = json.dumps({**self.json, "buffers": [{"byteLength": len(data)}]}).encode()
        text += b" " * (-len(text) % 4)
        chunks = struct.pack("<I4s", len(text), b"JSON") + text + struct.pack("<I4s", len(data), b"BIN\0") + data
        return struct.pack("<4sII", b"glTF", 2, 12 + len(chunks)) + chunks


QUAD = [(0, 0, 0), (1, 0, 0), (1, 1, 0), (0, 1, 0)]
IDENTITY = [1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1]


def quad_primitive(g, **more):
    attributes = {
        "POSITION": g.accessor(QUAD, min=[0, 0, 0], max=[1, 1, 0]),
        "NORMAL": g.accessor([(0, 0, 1)] * 4),
        "TEXCOORD_0": g.accessor([(0, 1), (1, 1), (1, 0), (0, 0)]),
    }
    attributes.update(more.pop("attributes", {}))
    return {"attributes": attributes, "indices": g.accessor([0, 1, 2, 0, 2, 3], USHORT), **more}


def skinned():
    """Two joints, a morph target, cubic and step keys."""
    g = Gltf()
    joints = g.accessor([(0, 1, 0, 0)] * 4, UBYTE)
    weights = g.accessor([(1, 0, 0, 0), (0.5, 0.5, 0, 0), (0, 1, 0, 0), (0, 1, 0, 0)])
    target = g.accessor([(0, 0, 0.5), (0, 0, 0), (0, 0, 0.25), (0, 0, 0)])
    primitive = quad_primitive(
        g,
        attributes={"JOINTS_0": joints, "WEIGHTS_0": weights, "COLOR_0": g.accessor([(255, 128, 0, 255)] * 4, UBYTE, normalized=True)},
        targets=[{"POSITION": target}],
        material=0,
    )
    half = math.sqrt(0.5)
    g.json.update(
        meshes=[{"name": "sail", "primitives": [primitive], "weights": [0.5], "extras": {"targetNames": ["bulge"]}}],
        skins=[{"joints": [1, 2], "inverseBindMatrices": g.accessor([IDENTITY] * 2)}],
        nodes=[
            {"name": "sail", "mesh": 0, "skin": 0},
            {"name": "root", "children": [2]},
            {"name": "tip", "translation": [1, 0, 0]},
        ],
        scenes=[{"nodes": [0, 1]}],
        scene=0,
        materials=[
            {
                "name": "cloth",
                "pbrMetallicRoughness": {
                    "baseColorTexture": {"index": 0, "extensions": {"KHR_texture_transform": {"scale": [2, 2], "offset": [0.5, 0]}}},
                    "baseColorFactor": [1, 0.5, 0.25, 0.5],
                    "roughnessFactor": 0.25,
                },
                "alphaMode": "BLEND",
                "emissiveFactor": [0.1, 0, 0],
            }
        ],
        textures=[{"source": 0, "sampler": 0}],
        samplers=[{"wrapS": 33071}],
        images=[{"name": "checker", "mimeType": "image/png", "bufferView": g.view(CHECKER)}],
        animations=[
            {
                "name": "wave",
                "samplers": [
                    {"input": g.accessor([0, 1], min=[0], max=[1]), "output": g.accessor([(0, 0, 0, 1), (0, 0, half, half)])},
                    {
                        "input": g.accessor([0, 1, 2]),
                        "output": g.accessor([(0, 0, 0), (1, 0, 0), (0, 1, 0)] * 3),
                        "interpolation": "CUBICSPLINE",
                    },
                    {"input": g.accessor([0, 0.5]), "output": g.accessor([0, 1]), "interpolation": "STEP"},
                ],
                "channels": [
                    {"sampler": 0, "target": {"node": 1, "path": "rotation"}},
                    {"sampler": 1, "target": {"node": 2, "path": "translation"}},
                    {"sampler": 2, "target": {"node": 0, "path": "weights"}},
                ],
            }
        ],
    )
    return g


def without_pictures(g):
    for key in ("textures", "samplers", "images"):
        del g.json[key]
    del g.json["materials"][0]["pbrMetallicRoughness"]["baseColorTexture"]
    return g


def bones():
    """The skin alone, in a form that the `assimp` program hands on whole."""
    g = skinned()
    primitive = g.json["meshes"][0]["primitives"][0]
    del primitive["targets"], primitive["material"]
    for key in ("weights", "extras"):
        del g.json["meshes"][0][key]
    for key in ("materials", "textures", "samplers", "images"):
        del g.json[key]
    animation = g.json["animations"][0]
    animation["channels"], animation["samplers"] = animation["channels"][:1], animation["samplers"][:1]
    return g


def views():
    """Cameras, lights, lines, strips and fans, changed elements."""
    g = Gltf()
    sparse = g.accessor(QUAD)
    g.json["accessors"][sparse]["sparse"] = {
        "count": 1,
        "indices": {"bufferView": g.view(struct.pack("<H", 2)), "componentType": USHORT},
        "values": {"bufferView": g.view(struct.pack("<3f", 1, 1, 1))},
    }
    points = {"POSITION": sparse}
    g.json.update(
        extensionsUsed=["KHR_lights_punctual"],
        meshes=[
            {"primitives": [{"attributes": points, "mode": mode} for mode in (0, 1, 2, 3, 5, 6)]},
            {"primitives": [{"attributes": points, "mode": 3}]},
        ],
        cameras=[
            {"type": "perspective", "perspective": {"yfov": 0.7, "aspectRatio": 1.5, "znear": 0.1, "zfar": 100}},
            {"type": "orthographic", "orthographic": {"xmag": 2, "ymag": 2, "znear": 0.1, "zfar": 100}},
        ],
        extensions={
            "KHR_lights_punctual": {
                "lights": [
                    {"type": "directional", "intensity": 3},
                    {"type": "point", "color": [1, 0.5, 0], "intensity": 100},
                    {"type": "spot", "spot": {"innerConeAngle": 0.2, "outerConeAngle": 0.4}},
                ]
            }
        },
        nodes=[
            {"mesh": 0, "matrix": [1, 0, 0, 0, 0, 0, 1, 0, 0, -1, 0, 0, 0, 0, 2, 1]},
            {"mesh": 1, "camera": 0, "children": [2, 3]},
            {"camera": 1, "translation": [0, 0, 5]},
            {"extensions": {"KHR_lights_punctual": {"light": 0}}, "children": [4, 5]},
            {"extensions": {"KHR_lights_punctual": {"light": 1}}, "translation": [0, 3, 0]},
            {"extensions": {"KHR_lights_punctual": {"light": 2}}, "scale": [2, 2, 2]},
        ],
        scenes=[{"nodes": [0, 1]}],
    )
    return g


def ply_binary(order):
    name = {"<": "little", ">": "big"}[order]
    header = (
        f"ply\nformat binary_{name}_endian 1.0\ncomment seed\nelement vertex 4\nproperty float x\nproperty float y\n"
        "property float z\nproperty uchar red\nproperty uchar green\nproperty uchar blue\nproperty float u\n"
        "property float v\nelement face 1\nproperty list uchar int vertex_indices\nend_header\n"
    )
    rows = b"".join(struct.pack(order + "3f3B2f", *p, 255, 128, 0, p[0], p[1]) for p in QUAD)
    return header.encode() + rows + struct.pack(order + "B4i", 4, 0, 1, 2, 3)


OBJ = b"""mtllib none.mtl
o first
v 0 0 0 1 0 0
v 1 0 0 0 1 0
v 1 1 0.5 0 0 1
v 0 1 0 1 1 1
vt 0 0
vt 1 0 0
vn 0 0 1
g front side
s 1
usemtl red
f 1/1/1 2/2/1 3//1 4
o second
s off
f -4 -3 -1
l 1 2 3
"""

PLY = b"""ply
format ascii 1.0
element vertex 3
property float x
property float y
property float z
property float red
property float green
property float blue
element face 1
property list uchar int vertex_index
property list uchar float texcoord
property int flags
element edge 1
property int vertex1
property int vertex2
end_header
0 0 0 1 0 0
1 0 0 0 1 0
0 1 0 0 0 1
3 0 1 2 6 0 0 1 0 0 1 7
0 1
"""

# Small files, each with one kind of thing: what is changed in them matters more often.
SCENES = {
    "smallest": b"""[scene]
import = ["quad.obj"]
""",
    "imports": b"""[scene]
import = ["quad.obj", { file = "quad.ply", scale = 2.0, up = "y", name = "other" }, "skinned.glb"]
fps = 24
range = [0, 10]
unit = 0.01
""",
    "views": b"""[render]
width = 8
camera = "cam"
channels = ["uv"]
[[camera]]
name = "cam"
position = [2.0, -3.0, 1.5]
target = [0, 0, 0.5]
near = 0.1
[[light]]
name = "key"
type = "spot"
position = [0, 0, 3]
hotspot = 20
target = [0, 0, 0]
far_attenuation = [1, 2]
""",
    "materials": b"""[[map]]
name = "m"
type = "checker"
tile = [2, 2]
map1 = "ramp"
output = { invert = true }
[[map]]
name = "ramp"
type = "gradient"
key_maps = ["", "tint"]
[[map]]
name = "tint"
type = "multiply"
color1 = [1, 0.5, 0]
[[material]]
name = "red"
diffuse = [1, 0, 0]
opacity_cutoff = 0.5
maps = { diffuse = "m", opacity = "ramp" }
map_amounts = { diffuse = 0.5 }
[[material]]
name = "both"
type = "multi"
materials = ["red", ""]
[[node]]
name = "a"
primitive = "plane"
segments = 1
material = "both"
""",
    "gradient": b"""[[map]]
name = "g"
type = "gradient"
keys = [[0, 0, 0, 0], [1, 1, 1, 1]]
[scene]
environment = "g"
""",
    "sets": b"""[scene]
import = ["quad.obj"]
[[node]]
name = "quad"
properties = { a = "b", c = 1 }
face_sets = { one = { ids = [0], ranges = [[0, 1]] } }
modifiers = [{ type = "mesh_select", level = "face", soft = true, select = { sets = ["one"] } }, { type = "bend", angle = 9 }]
""",
    "modifiers": b"""[[node]]
name = "b"
primitive = "box"
segments = 1
modifiers = [{ type = "skin", bones = ["c"], weights = [[0, 0, 1]] }, { type = "morph", targets = [{ moves = [[0, 0, 0, 1]], keys = [[0, 1]] }] }]
[[node]]
name = "c"
primitive = "empty"
parent = ""
[[node.modifiers]]
type = "xform"
position = [0, 0, 1]
""",
    "cache": b"""[scene]
import = ["quad.obj"]
[[node]]
name = "quad"
modifiers = [{ type = "mesh_cache", frames = ["quad.obj", "quad.obj"] }]
""",
    "shapes": b"""[[shape]]
name = "line"
splines = [{ points = [[0, 0, 0], [1, 0, 0]], keys = [[0, 1, 0, 0, 0]] }]
[[shape]]
name = "obj"
file = "quad.obj"
""",
    "keys": b"""[[node]]
name = "n"
primitive = "sphere"
segments = 4
[[keys]]
node = "n"
position = [[0, 0, 0, 0], [10, 1, 0, 0]]
interpolation = "constant"
[[light]]
name = "key"
[[keys]]
object = "key"
parameter = "multiplier"
values = [[0, 1], [5, 2.5e-1]]
""",
    "effects": b"""[[effect]]
class = "depth_fog"
name = "mist"
set = { color = [0.5, 0.5, 0.6], far = 10, onlyId = 3 }
[[image_filter]]
class = "negative"
config = [50]
""",
}


def put(folder, name, data):
    path = CORPUS / folder / name
    path.parent.mkdir(parents=True, exist_ok=True)
    path.write_bytes(data)


def export(name, data, folder, extension, *more):
    """Lets the `assimp` program turn a .glb file into another form."""
    if not shutil.which("assimp"):
        return
    with tempfile.TemporaryDirectory() as temp:
        source, target = pathlib.Path(temp) / "in.glb", pathlib.Path(temp) / ("out." + extension)
        source.write_bytes(data)
        subprocess.run(["assimp", "export", source, target, *more], check=False, stdout=subprocess.DEVNULL)
        if target.exists():
            put(folder, name + "." + extension, target.read_bytes())


def main():
    for name, g in (("skinned", skinned()), ("views", views())):
        put("gltf", name + ".gltf", g.text())
        put("gltf", name + ".glb", g.binary())
    put("gltf", "plain.glb", without_pictures(skinned()).binary())
    export("bones", bones().binary(), "fbx", "fbx", "-ffbxa")
    export("skinned", skinned().binary(), "3ds", "3ds")
    for name, nodes in (("skin", fbx_seed.skin()), ("paint", fbx_seed.paint())):
        put("fbx", name + ".fbx", fbx_seed.text(nodes))
        put("fbx", name + "_binary.fbx", fbx_seed.binary(nodes))
    put("obj", "all.obj", OBJ)
    put("ply", "ascii.ply", PLY)
    put("ply", "little.ply", ply_binary("<"))
    put("ply", "big.ply", ply_binary(">"))
    for name, text in SCENES.items():
        put("scene", name + ".toml", text)


if __name__ == "__main__":
    main()
