"""Runs inside of Blender: builds the scenes of a job, renders them and compares the pictures with the other renderer's.

blender -b --factory-startup --python-exit-code 1 --python blender_side.py -- JOB.json RESULT.json
"""

import json
import math
import pathlib
import sys

import bpy
import numpy as np
from mathutils import Vector

sys.path.insert(0, str(pathlib.Path(__file__).parent))
import measure
import scenes


def aim(thing, position, target):
    thing.location = position
    thing.rotation_euler = (Vector(target) - Vector(position)).to_track_quat("-Z", "Y").to_euler()


def add(name, data):
    thing = bpy.data.objects.new(name, data)
    bpy.context.scene.collection.objects.link(thing)
    return thing


def lambert(name, color=None, picture=None):
    material = bpy.data.materials.new(name)
    material.use_nodes = True
    nodes, links = material.node_tree.nodes, material.node_tree.links
    nodes.clear()
    shader = nodes.new("ShaderNodeBsdfDiffuse")
    links.new(shader.outputs[0], nodes.new("ShaderNodeOutputMaterial").inputs[0])
    if color:
        shader.inputs["Color"].default_value = (*color, 1)
    if picture:
        image = nodes.new("ShaderNodeTexImage")
        image.image = bpy.data.images.load(picture)
        links.new(image.outputs["Color"], shader.inputs["Color"])
    return material


def add_mesh(mesh):
    data = bpy.data.meshes.new(mesh["name"])
    data.from_pydata(mesh["points"], [], mesh["faces"])
    for i, color in enumerate(mesh["colors"]):
        data.materials.append(lambert("%s %d" % (mesh["name"], i), color=color))
    for i, face in enumerate(data.polygons):
        face.use_smooth = mesh["smooth"]
        face.material_index = mesh["which"][i] if "which" in mesh else 0
    add(mesh["name"], data)


def add_model(model, folder):
    # No frame is left out before the file's first one.
    bpy.ops.import_scene.fbx(filepath=model["file"], anim_offset=0.0)
    for name in model["others"]:
        bpy.data.objects.remove(bpy.data.objects[name])
    data = bpy.data.objects[model["mesh"]].data
    data.materials.clear()
    data.materials.append(lambert("skin", picture=str(folder / model["picture"])))
    data.use_auto_smooth = False
    for face in data.polygons:
        face.use_smooth = False
        face.material_index = 0


def even_out(spot):
    """Cycles dims a spot light by the cosine of the angle to its axis; velmar's cone is even inside of the hotspot."""
    spot.use_nodes = True
    nodes, links = spot.node_tree.nodes, spot.node_tree.links
    parts, inverse = nodes.new("ShaderNodeSeparateXYZ"), nodes.new("ShaderNodeMath")
    links.new(nodes.new("ShaderNodeTexCoord").outputs["Normal"], parts.inputs[0])
    inverse.operation = "DIVIDE"
    # The light shines down its own Z axis.
    inverse.inputs[0].default_value = -1
    links.new(parts.outputs["Z"], inverse.inputs[1])
    links.new(inverse.outputs[0], nodes["Emission"].inputs["Strength"])


def add_light(light, shadows):
    kind = {"direct": "SUN", "omni": "POINT", "spot": "SPOT"}[light["type"]]
    data = bpy.data.lights.new("key", kind)
    data.cycles.cast_shadow = shadows
    if kind == "SUN":
        # Watts a square metre: a white surface throws back 1/pi of what falls straight on it.
        data.energy = math.pi * light["strength"]
        data.angle = 0
    else:
        # Watts over the whole sphere: 1/(4 pi r^2) of them fall on a square metre, again 1/pi of it comes back.
        data.energy = 4 * math.pi**2 * scenes.DECAY_START**2 * light["strength"]
        data.shadow_soft_size = 0
    if kind == "SPOT":
        data.spot_size = math.radians(light["cone"])
        data.spot_blend = 0
        even_out(data)
    thing = add("key", data)
    aim(thing, light["position"], light.get("target", (0, 0, -1e6)))


def add_camera(camera):
    data = bpy.data.cameras.new("cam")
    data.sensor_fit = "HORIZONTAL"
    data.angle = math.radians(camera["fov"])
    thing = add("cam", data)
    aim(thing, camera["position"], camera["target"])
    bpy.context.scene.camera = thing


def settings(scene, size, fps):
    """Direct light only, exact numbers, nothing behind the objects."""
    scene.render.engine = "CYCLES"
    cycles = scene.cycles
    cycles.device = "CPU"
    cycles.samples = 64
    cycles.use_adaptive_sampling = cycles.use_denoising = False
    cycles.max_bounces = 0
    cycles.pixel_filter_type = "BOX"
    cycles.filter_width = 1.0
    scene.render.film_transparent = True
    scene.render.resolution_x, scene.render.resolution_y = size
    scene.render.resolution_percentage = 100
    scene.render.fps = fps
    scene.render.image_settings.file_format = "OPEN_EXR"
    scene.render.image_settings.color_depth = "32"
    scene.render.image_settings.color_mode = "RGBA"
    scene.view_settings.view_transform = "Standard"
    scene.world = bpy.data.worlds.new("black")
    scene.world.color = (0, 0, 0)


def read(path):
    image = bpy.data.images.load(path)
    image.colorspace_settings.name = "Non-Color"
    pixels = np.empty(image.size[0] * image.size[1] * 4, np.float32)
    image.pixels.foreach_get(pixels)
    return pixels.reshape(image.size[1], image.size[0], 4)


def render(work):
    bpy.ops.wm.read_factory_settings(use_empty=True)
    scene = bpy.context.scene
    for mesh in work["meshes"]:
        add_mesh(mesh)
    if "model" in work:
        add_model(work["model"], pathlib.Path(work["folder"]))
    settings(scene, work["size"], work.get("fps", 30))
    add_light(work["light"], work["shadows"])
    add_camera(work["camera"])
    scene.frame_set(work["frame"])
    scene.render.filepath = work["theirs"]
    bpy.ops.render.render(write_still=True)


def main():
    job, result = sys.argv[sys.argv.index("--") + 1 :]
    rows = []
    for work in json.loads(pathlib.Path(job).read_text()):
        render(work)
        rows.append(measure.compare(read(work["ours"]), read(work["theirs"])))
    pathlib.Path(result).write_text(json.dumps(rows))


main()
