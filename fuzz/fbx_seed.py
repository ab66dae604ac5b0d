"""Small .fbx seeds, as text and as binary: a node is (name, values, nodes below)."""

import struct
import zlib

SECOND = 46186158000
EMPTY = [("Version", [100], [])]


class Long(int):
    """A whole number of 8 bytes."""


class Array(list):
    """Numbers of one kind: d (doubles), i, l (whole numbers of 4 and 8 bytes) or f (floats)."""

    def __init__(self, kind, values):
        super().__init__(values)
        self.kind = kind


def doubles(*values):
    return [Array("d", map(float, values))]


def integers(*values):
    return [Array("i", values)]


def prop(name, kind, label, *values):
    return ("P", [name, kind, label, "A", *values], [])


def props(*rows):
    return ("Properties70", [], list(rows))


def named(kind, name, number, sub, *below):
    return (kind if kind != "SubDeformer" else "Deformer", [Long(number), (kind, name), sub], list(below) or EMPTY)


def curve(number, times, values):
    return named(
        "AnimationCurve", "", number, "",
        ("Default", [0.0], []),
        ("KeyVer", [4009], []),
        ("KeyTime", [Array("l", times)], []),
        ("KeyValueFloat", [Array("f", map(float, values))], []),
        ("KeyAttrFlags", [Array("i", [24836])], []),
        ("KeyAttrDataFloat", [Array("f", [0.0] * 4)], []),
        ("KeyAttrRefCount", [Array("i", [len(times)])], []),
    )  # fmt: skip


def cluster(number, indices, weights, x):
    matrix = [1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0]
    return named(
        "SubDeformer", "", number, "Cluster",
        ("Indexes", integers(*indices), []),
        ("Weights", doubles(*weights), []),
        ("Transform", doubles(*matrix, -x, 0, 0, 1), []),
        ("TransformLink", doubles(*matrix, x, 0, 0, 1), []),
    )  # fmt: skip


def layer(name):
    return ("LayerElement", [], [("Type", [name], []), ("TypedIndex", [0], [])])


def document(objects, links):
    settings = props(
        prop("UpAxis", "int", "Integer", 2), prop("UnitScaleFactor", "double", "Number", 2.54), prop("TimeMode", "enum", "", 11)
    )
    return [
        ("FBXHeaderExtension", [], [("FBXVersion", [7400], [])]),
        ("GlobalSettings", [], [("Version", [1000], []), settings]),
        ("Objects", [], objects),
        ("Connections", [], [("C", ["OP" if len(row) > 2 else "OO", Long(row[0]), Long(row[1]), *row[2:]], []) for row in links]),
    ]


def skin():
    """A square that two bones move, with keys."""
    objects = [
        named(
            "Geometry", "g", 1, "Mesh",
            ("Vertices", doubles(0, 0, 0, 1, 0, 0, 1, 1, 0, 0, 1, 0), []),
            ("PolygonVertexIndex", integers(0, 1, 2, -4), []),
            ("LayerElementNormal", [0], [
                ("MappingInformationType", ["ByPolygonVertex"], []),
                ("ReferenceInformationType", ["Direct"], []),
                ("Normals", doubles(*[0, 0, 1] * 4), []),
            ]),
            ("Layer", [0], [layer("LayerElementNormal")]),
        ),
        named("Model", "sail", 2, "Mesh"),
        named("Model", "root", 3, "LimbNode"),
        named("Model", "tip", 4, "LimbNode", props(prop("Lcl Translation", "Lcl Translation", "", 1.0, 0.0, 0.0))),
        named("Deformer", "", 5, "Skin"),
        cluster(6, [0, 1], [1, 0.5], 0),
        cluster(7, [1, 2, 3], [0.5, 1, 1], 1),
        named("AnimationStack", "wave", 8, "", props(prop("LocalStop", "KTime", "Time", Long(SECOND)))),
        named("AnimationLayer", "", 9, ""),
        named("AnimationCurveNode", "R", 10, "", props(prop("d|X", "Number", "", 0.0))),
        curve(11, [0, SECOND], [0, 90]),
    ]  # fmt: skip
    links = [(2, 0), (3, 0), (4, 3), (1, 2), (5, 1), (6, 5), (7, 5), (3, 6), (4, 7), (9, 8), (10, 9)]
    return document(objects, links + [(10, 3, "Lcl Rotation"), (11, 10, "d|X")])


def paint():
    """A mesh with a material and a picture inside of the file."""
    objects = [
        named(
            "Geometry", "g", 1, "Mesh",
            ("Vertices", doubles(0, 0, 0, 1, 0, 0, 0, 1, 0), []),
            ("PolygonVertexIndex", integers(0, 1, -3), []),
            ("LayerElementUV", [0], [
                ("Name", ["m"], []),
                ("MappingInformationType", ["ByPolygonVertex"], []),
                ("ReferenceInformationType", ["IndexToDirect"], []),
                ("UV", doubles(0, 0, 1, 0, 0, 1), []),
                ("UVIndex", integers(0, 1, 2), []),
            ]),
            ("LayerElementMaterial", [0], [
                ("MappingInformationType", ["AllSame"], []),
                ("ReferenceInformationType", ["IndexToDirect"], []),
                ("Materials", integers(0), []),
            ]),
            ("Layer", [0], [layer("LayerElementUV"), layer("LayerElementMaterial")]),
        ),
        named("Model", "leaf", 2, "Mesh", props(prop("Lcl Scaling", "Lcl Scaling", "", 2.0, 2.0, 2.0))),
        named("Material", "paint", 3, "", ("ShadingModel", ["phong"], []), props(prop("Shininess", "double", "Number", 32.0))),
        named("Texture", "t", 4, "", ("RelativeFilename", ["a.png"], []), ("ModelUVScaling", [2.0, 2.0], [])),
        named("Video", "v", 5, "Clip", ("RelativeFilename", ["a.png"], []), ("Content", [b"\x89PNG"], [])),
        named("NodeAttribute", "", 6, "Camera", props(prop("FieldOfView", "FieldOfView", "", 40.0))),
        named("Model", "eye", 7, "Camera"),
        named("NodeAttribute", "", 8, "Light", props(prop("LightType", "enum", "", 2), prop("Intensity", "Number", "", 50.0))),
        named("Model", "lamp", 9, "Light"),
    ]  # fmt: skip
    return document(objects, [(2, 0), (1, 2), (3, 2), (4, 3, "DiffuseColor"), (5, 4), (7, 0), (6, 7), (9, 0), (8, 9)])


def text_value(v):
    if isinstance(v, tuple):
        return '"%s::%s"' % v
    if isinstance(v, bytes):
        return '"%s"' % v.hex()
    return '"%s"' % v if isinstance(v, str) else "%g" % v if isinstance(v, float) else str(v)


def text_node(node):
    name, values, below = node
    if values and isinstance(values[0], Array):
        return "%s: *%d {\na: %s\n}\n" % (name, len(values[0]), ",".join("%g" % v if isinstance(v, float) else str(v) for v in values[0]))
    out = name + ": " + ",".join(text_value(v) for v in values)
    return out + (" {\n" + "".join(map(text_node, below)) + "}" if below or not values else "") + "\n"


def text(nodes):
    return ("; FBX 7.4.0 project file\n" + "".join(map(text_node, nodes))).encode()


def binary_value(v):
    if isinstance(v, Array):
        data = struct.pack("<%d%s" % (len(v), v.kind.replace("l", "q")), *v)
        # Long ones as real files have them.
        packed = zlib.compress(data) if len(v) > 8 else data
        return v.kind.encode() + struct.pack("<III", len(v), len(v) > 8, len(packed)) + packed
    if isinstance(v, tuple):
        v = (v[1] + "\0\1" + v[0]).encode()
    elif isinstance(v, str):
        v = v.encode()
    elif isinstance(v, float):
        return b"D" + struct.pack("<d", v)
    elif isinstance(v, Long):
        return b"L" + struct.pack("<q", v)
    elif isinstance(v, int):
        return b"I" + struct.pack("<i", v)
    else:
        return b"R" + struct.pack("<I", len(v)) + v
    return b"S" + struct.pack("<I", len(v)) + v


def binary_node(node, start):
    name, values, below = node
    data = b"".join(map(binary_value, values))
    head = 13 + len(name)
    out = b""
    for child in below:
        out += binary_node(child, start + head + len(data) + len(out))
    if below:
        out += b"\0" * 13
    size = head + len(data) + len(out)
    return struct.pack("<IIIB", start + size, len(values), len(data), len(name)) + name.encode() + data + out


def binary(nodes):
    out = b"Kaydara FBX Binary  \0\x1a\0" + struct.pack("<I", 7400)
    for node in nodes:
        out += binary_node(node, len(out))
    return out + b"\0" * 13
