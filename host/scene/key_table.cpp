#include "scene/key_table.h"

#include "scene/effect_keys.h"
#include "scene/modifier_keys.h"

namespace host {

namespace {

using enum KeyType;

constexpr double kMost = 1e30;
constexpr const char* kBeyondWords = "constant|cycle|loop|pingpong|linear";

constexpr SceneKey kFile[] = {
    {"scene", kTable, "", "", "what the scene holds", 0, 0, "scene"},
    {"render", kTable, "", "", "how pictures are made", 0, 0, "render"},
    {"camera", kTables, "", "", "cameras", 0, 0, "camera"},
    {"light", kTables, "", "", "lights", 0, 0, "light"},
    {"material", kTables, "", "", "materials", 0, 0, "material"},
    {"map", kTables, "", "", "maps", 0, 0, "map"},
    {"node", kTables, "", "", "settings of imported nodes, and nodes with simple shapes", 0, 0, "node"},
    {"shape", kTables, "", "", "spline shapes", 0, 0, "shape"},
    {"keys", kTables, "", "", "values over time", 0, 0, "keys"},
    {"fur", kTables, "", "", "fur objects", 0, 0, "hair"},
    {"hair", kTables, "", "", "hair objects", 0, 0, "hair"},
    {"effect", kTables, "", "", "render effects, which work on finished pictures, in their order", 0, 0, "effect"},
    {"image_filter", kTables, "", "", "image filters, which work after the render effects, in their order", 0, 0,
     "image_filter"},
};

constexpr SceneKey kScene[] = {
    {"import", kImports, "[]", "",
     "mesh files (.obj, .ply, .3ds) and files with scenes (.gltf, .glb, .fbx: nodes, keys, skins, morph targets, "
     "cameras, lights, materials); nodes keep the files' names, and a file with one mesh answers to its file name too",
     0, 0, "import"},
    {"search", kNames, "[]", "",
     "folders where files are looked for that do not stand beside the scene; after them come those of the environment "
     "variable VELMAR_PATH (separated by colons)"},
    {"unit", kNumber, "1.0", "m",
     "length of a scene unit; files that state their own unit (.gltf, .glb, .fbx) are brought into it", 1e-9, 1e9},
    {"fps", kInteger, "30", "frames/s", "frame rate", 1, 4800},
    {"range", kPair, "[0, 100]", "frames", "first and last frame"},
    {"background", kColor, "[0, 0, 0]", "", "background colour"},
    {"environment", kText, "\"\"", "", "name of a map shown behind everything"},
    {"ambient", kColor, "[0, 0, 0]", "", "light that is everywhere"},
};

constexpr SceneKey kImport[] = {
    {"file", kText, "", "", "the mesh file"},
    {"scale", kNumber, "", "",
     "scene units in a unit of the file; left out: by the file's unit and the scene's, 1 where the file states none",
     1e-12, 1e12},
    {"up", kChoice, "", "",
     "the file's axis that points up; scenes are Z up. Left out: as the file states, Z where it does not", 0, 0, "y|z"},
    {"name", kText, "\"\"", "", "name of the node, for files with one mesh"},
    {"animation", kText, "\"\"", "",
     "name of the animation to take; left out: all of them, and where several move the same thing, the first one"},
};

constexpr SceneKey kRender[] = {
    {"width", kInteger, "640", "pixels", "picture width"},
    {"height", kInteger, "480", "pixels", "picture height"},
    {"camera", kText, "\"\"", "", "name of the camera; may be left out when there is only one, or only one [[camera]]"},
    {"aspect", kNumber, "1.0", "", "a pixel's width by its height"},
    {"threads", kInteger, "0", "", "render threads, 0 for as many as there are processors"},
    {"samples", kInteger, "3", "", "pixels at edges take this number squared of camera samples"},
    {"filter", kChoice, "\"box\"", "", "how samples make pixels", 0, 0, "box|gaussian|mitchell"},
    {"filter_width", kNumber, "1.0", "pixels", "how far apart the samples of a pixel lie at most", 1, 16},
    {"crop", kIntegers, "[]", "pixels",
     "[x0, y0, x1, y1]: only this part of the picture is made, without column x1 and line y1; the rest stays empty"},
    {"fields", kChoice, "\"none\"", "", "lines that are made half a frame later, and which of them come first", 0, 0,
     "none|even_first|odd_first"},
    {"channels", kNames, "[]", "",
     "G-buffer channels to make: \"material_id\", \"node_id\", \"render_id\", \"coverage\", \"color\", "
     "\"transparency\", \"real_pixel\", \"velocity\", \"uv\", \"normal\"; depth is always there. .exr files hold them "
     "as layers"},
    {"renderer_class", kIntegers, "[]", "",
     "two numbers: another class id that the renderer shows, to try what looks at it"},
    {"hair", kParameters, "", "", "parameters of the hair renderer"},
};

constexpr SceneKey kCamera[] = {
    {"name", kText, "", "", "name of the camera"},
    {"type", kChoice, "\"perspective\"", "", "projection", 0, 0, "perspective|orthographic"},
    {"position", kPoint, "[0, 0, 0]", "", "place of the camera"},
    {"target", kPoint, "", "",
     "the point it looks at; a perspective camera gets the node NAME.target there. Without it the camera is a "
     "free one, which looks straight down unless it is turned"},
    {"fov", kNumber, "45.0", "degrees", "horizontal angle of a perspective view", 0.1, 175},
    {"zoom", kNumber, "10.0", "", "scene units across the picture of an orthographic view", 1e-6, kMost},
    {"rotation", kPoint, "[0, 0, 0]", "degrees",
     "turns a camera without a target, as a node's rotation; [90, 0, 0] looks along +Y"},
    {"roll", kNumber, "0.0", "degrees", "turn about the view axis; the picture turns counter-clockwise", -kMost, kMost},
    {"near", kNumber, "", "", "clip range, from here", 0, kMost},
    {"far", kNumber, "", "", "clip range, up to here", 0, kMost},
    {"environment_near", kNumber, "0.0", "", "environment range, from here", 0, kMost},
    {"environment_far", kNumber, "1000.0", "", "environment range, up to here", 0, kMost},
};

constexpr SceneKey kLight[] = {
    {"name", kText, "", "", "name of the light"},
    {"type", kChoice, "\"omni\"", "", "kind of light", 0, 0, "omni|spot|direct"},
    {"on", kFlag, "true", "", "whether it shines"},
    {"color", kColor, "[1, 1, 1]", "", "colour"},
    {"multiplier", kNumber, "1.0", "", "strength", -kMost, kMost},
    {"position", kPoint, "[0, 0, 0]", "", "place of the light"},
    {"target", kPoint, "", "",
     "the point it shines at, the node NAME.target. Without it the light shines straight down"},
    {"hotspot", kNumber, "", "degrees", "full light inside this cone angle (spot) or radius (direct)", 0, kMost},
    {"falloff", kNumber, "", "degrees", "no light outside this cone angle (spot) or radius (direct)", 0, kMost},
    {"shape", kChoice, "\"round\"", "", "cross section of a spot's or direct light's cone", 0, 0, "round|rectangle"},
    {"aspect", kNumber, "1.0", "", "a rectangle's width by its height; hotspot and falloff are its width's", 0.001,
     1000},
    {"near_attenuation", kPair, "", "", "[start, end]: no light before the start, full light from the end on"},
    {"far_attenuation", kPair, "", "", "[start, end]: full light up to the start, none beyond the end"},
    {"decay", kChoice, "\"none\"", "", "how light gets weaker with distance: by start / distance or its square", 0, 0,
     "none|inverse|inverse_square"},
    {"decay_start", kNumber, "40.0", "", "distance of full light where light decays", 1e-6, kMost},
    {"shadows", kFlag, "false", "", "whether it casts shadows"},
    {"shadow_multiplier", kNumber, "1.0", "", "density of shadows: how much of a shadow counts", 0, 1},
    {"shadow_color", kColor, "[0, 0, 0]", "", "light that arrives in shadow"},
    {"shadow_bias", kNumber, "0.0", "", "shadows begin this far from a surface", 0, kMost},
    {"affect_diffuse", kFlag, "true", "", "whether it lights surfaces"},
    {"affect_specular", kFlag, "true", "", "whether it makes highlights"},
    {"ambient_only", kFlag, "false", "", "whether it adds to the ambient light only"},
    {"exclude", kNames, "[]", "", "nodes without this light"},
    {"include", kNames, "[]", "", "the only nodes with this light"},
};

constexpr SceneKey kMaterial[] = {
    {"name", kText, "", "", "name of the material"},
    {"type", kChoice, "\"standard\"", "", "kind of material", 0, 0, "standard|multi"},
    {"ambient", kColor, "", "", "colour in ambient light; the diffuse colour when left out"},
    {"diffuse", kColor, "", "", "colour"},
    {"specular", kColor, "", "", "colour of highlights"},
    {"glossiness", kNumber, "", "", "sharpness of highlights", 0, 1},
    {"specular_level", kNumber, "", "", "strength of highlights", 0, 10},
    {"self_illumination", kNumber, "", "", "share of the colour that shines by itself", 0, 1},
    {"self_illumination_color", kColor, "", "", "colour that shines by itself, in place of a share"},
    {"opacity", kNumber, "", "", "1 is opaque", 0, 1},
    {"two_sided", kFlag, "true", "", "whether faces are there on their back side"},
    {"shader", kText, "\"blinn\"", "",
     "what makes colours of values and lights: blinn, phong, or the class name of a plug-in's shader"},
    {"shader_set", kParameters, "", "", "parameters of the shader by their own names"},
    {"maps", kTexts, "", "",
     "maps by what they replace: ambient, diffuse, specular, glossiness, specular_level, self_illumination, opacity; "
     "bump tilts the normals"},
    {"map_amounts", kTexts, "", "",
     "by the same names, how much of a map counts, 0 to 1 (1 when left out); for bump the height of white over black "
     "in "
     "scene units (0.1 when left out)"},
    {"maps_off", kNames, "[]", "", "names of maps that are switched off"},
    {"materials", kNames, "[]", "", "a multi material's materials by material id; \"\" leaves one empty"},
};

constexpr SceneKey kMap[] = {
    {"name", kText, "", "", "name of the map"},
    {"type", kChoice, "\"bitmap\"", "", "kind of map", 0, 0, "bitmap|checker|noise|gradient|vertex_color"},
    {"file", kText, "", "", "a bitmap's picture"},
    {"raw", kFlag, "false", "", "the picture's numbers as they stand, without decoding sRGB"},
    {"filter", kChoice, "\"pyramid\"", "", "how a bitmap gets smaller", 0, 0, "none|pyramid|summed_area"},
    {"wrap_u", kChoice, "\"repeat\"", "", "how a bitmap or gradient goes on along u: clamp repeats its border", 0, 0,
     "repeat|mirror|clamp"},
    {"wrap_v", kChoice, "\"repeat\"", "", "the same along v, for bitmaps; gradients take wrap_u for both", 0, 0,
     "repeat|mirror|clamp"},
    {"color1", kColor, "[0, 0, 0]", "", "a checker's or noise's first colour"},
    {"color2", kColor, "[1, 1, 1]", "", "a checker's or noise's second colour"},
    {"noise", kChoice, "\"regular\"", "", "kind of noise", 0, 0, "regular|fractal|turbulence"},
    {"size", kNumber, "1.0", "", "length of a noise's waves, in units of the coordinates", 1e-6, kMost},
    {"levels", kNumber, "3.0", "", "octaves of fractal noise and turbulence", 1, 10},
    {"low", kNumber, "0.0", "", "noise up to here has the first colour", 0, 1},
    {"high", kNumber, "1.0", "", "noise from here on has the second colour", 0, 1},
    {"phase", kNumber, "0.0", "", "another cut through the noise; changed over time, it boils", -kMost, kMost},
    {"gradient", kChoice, "\"linear\"", "", "along u, or from the middle outwards", 0, 0, "linear|radial"},
    {"keys", kRows, "[[0, 0, 0, 0], [1, 1, 1, 1]]", "", "[place, red, green, blue] of a gradient, places from 0 to 1"},
    {"interpolation", kChoice, "\"linear\"", "", "between a gradient's keys", 0, 0, "linear|smooth|steps"},
    {"component", kChoice, "\"all\"", "", "what counts of vertex colours", 0, 0, "all|red|green|blue"},
    {"channel", kInteger, "", "", "mapping channel; 1 when left out, for vertex colours 0", -2, 99},
    {"tile", kPair, "[1, 1]", "", "repetitions along u and v"},
    {"offset", kPair, "[0, 0]", "", "shift along u and v, in repetitions"},
    {"rotation", kNumber, "0.0", "degrees", "turn about the middle, before tiling", -kMost, kMost},
    {"projection", kChoice, "\"explicit\"", "",
     "where coordinates come from: the channel, the view direction (sphere, cylinder), the place in the picture, in "
     "the "
     "object or in the world",
     0, 0, "explicit|sphere|screen|cylinder|object|world"},
    {"output", kTable, "", "", "adjustments", 0, 0, "output"},
};

constexpr SceneKey kOutput[] = {
    {"invert", kFlag, "false", "", "1 - colour instead of the colour"},
    {"level", kNumber, "1.0", "", "factor of the colour", -kMost, kMost},
    {"offset", kNumber, "0.0", "", "added to the colour", -kMost, kMost},
    {"amount", kNumber, "1.0", "", "factor of colour and alpha, after the offset", -kMost, kMost},
    {"clamp", kFlag, "false", "", "keeps colour and alpha inside 0 to 1"},
};

constexpr SceneKey kNode[] = {
    {"name", kText, "", "", "name of the node; that of an imported node changes it"},
    {"primitive", kChoice, "", "",
     "makes a new node with this shape, centred at its origin; [[keys]] and command lines call its parameters "
     "NAME.object",
     0, 0, "plane|sphere|box|empty"},
    {"size", kPoint, "[1, 1, 1]", "", "lengths of a plane or box along X, Y and Z"},
    {"radius", kNumber, "1.0", "", "radius of a sphere", 1e-12, kMost},
    {"segments", kInteger, "16", "", "divisions of a plane's or box's sides, or around a sphere", 1, 4096},
    {"parent", kText, "\"\"", "", "node that this one moves with"},
    {"position", kPoint, "[0, 0, 0]", "", "place"},
    {"rotation", kPoint, "[0, 0, 0]", "degrees",
     "turns about X, then Y, then Z, counter-clockwise as seen against the axis"},
    {"scale", kPoint, "[1, 1, 1]", "", "factors along its own axes"},
    {"material", kText, "\"\"", "", "name of its material"},
    {"wire_color", kColor, "[0.6, 0.6, 0.6]", "", "colour without a material"},
    {"visibility", kNumber, "1.0", "", "0 is invisible", 0, 1},
    {"hidden", kFlag, "false", "", "hidden"},
    {"frozen", kFlag, "false", "", "frozen"},
    {"renderable", kFlag, "true", "", "whether it renders at all"},
    {"primary_visibility", kFlag, "true", "", "whether cameras see it"},
    {"secondary_visibility", kFlag, "true", "", "whether other rays see it"},
    {"cast_shadows", kFlag, "true", "", "whether it casts shadows"},
    {"receive_shadows", kFlag, "true", "", "whether it receives shadows"},
    {"atmosphere", kFlag, "true", "", "whether atmospheric effects show in front of it"},
    {"gbuffer_id", kInteger, "0", "", "G-buffer id", 0, 65535},
    {"properties", kTexts, "", "", "user properties by name"},
    {"face_sets", kNamed, "", "", "named face sets of its mesh, by name", 0, 0, "selection"},
    {"modifiers", kTables, "", "", "its modifiers, from the lowest up", 0, 0, "modifier"},
};

constexpr SceneKey kKeys[] = {
    {"node", kText, "", "", "name of the node to move"},
    {"position", kRows, "[]", "", "[frame, x, y, z] for every key"},
    {"rotation", kRows, "[]", "degrees", "[frame, x, y, z] for every key, as a node's rotation"},
    {"scale", kRows, "[]", "", "[frame, x, y, z] for every key"},
    {"object", kText, "", "",
     "name of the object with the parameter: fur or hair, camera, light, material, map, effect, NODE.object, "
     "NODE.MODIFIER, or \"render\" for the hair renderer"},
    {"parameter", kText, "", "", "the parameter's internal or script name"},
    {"values", kRows, "[]", "", "[frame, value] or [frame, red, green, blue] for every key"},
    {"interpolation", kChoice, "\"linear\"", "",
     "how values go from key to key; constant is another word for step. A bezier key may have its own tangents: behind "
     "the value the change a frame on "
     "the "
     "way in, then on the way out (rotations: degrees a frame about the parent's X, Y and Z)",
     0, 0, "linear|bezier|step|constant"},
    {"tangents", kChoice, "\"auto\"", "",
     "of bezier keys without own ones: along the neighbours, never beyond their values, or smooth at any rate", 0, 0,
     "auto|smooth"},
    {"out_of_range", kChoice, "\"constant\"", "",
     "what follows the last key: its value, the range again and again (cycle; loop also leads from the last key to the "
     "first where the range is longer than the keys), forth and back, or straight on",
     0, 0, kBeyondWords},
    {"before_range", kChoice, "", "", "the same before the first key; as out_of_range when left out", 0, 0,
     kBeyondWords},
    {"range", kPair, "", "frames",
     "first and last frame of what repeats; from the first to the last key when left out"},
};

constexpr SceneKey kHair[] = {
    {"name", kText, "", "", "name of the object"},
    {"emitters", kNames, "[]", "", "nodes on which strands grow"},
    {"material", kText, "\"\"", "", "name of the material that shades the strands"},
    {"enabled", kFlag, "true", "", "whether it renders"},
    {"map_channels", kIntegers, "[]", "",
     "what the strands' mapping channels 0, 1, ... hold: -3 the emitter's vertex colours, -2 the strand's colour, -1 "
     "around and along the strand, 0 nothing, 1 to 99 that channel of the emitter"},
    {"params", kText, "", "", "parameter file, applied first"},
    {"set", kParameters, "", "",
     "parameters by internal or script name (upper and lower case are the same, _ stands for a space)"},
    {"curve", kNamed, "", "",
     "curves along the strands by parameter: thickness, curlRadius, curlTurns, dynWeight, dynHardness, dynInertia, "
     "clumpShape",
     0, 0, "curve"},
    {"surface", kNamed, "", "",
     "distributions over the emitter by parameter: length, density, thickness, leanAngle, leanDir, bendAmount, "
     "bendDir, curlRadius, curlTurns, clumpAmount, clumpRadius, colBase, colTip, leanAbsolute, bendAbsolute, dirRand, "
     "vdirRand",
     0, 0, "surface"},
    {"random", kNamed, "", "", "distributions of random values by parameter: length, thickness, colorH, colorS, colorV",
     0, 0, "curve"},
};

constexpr SceneKey kCurve[] = {
    {"enabled", kFlag, "true", "", "whether the curve counts"},
    {"knots", kKnots, "[]", "",
     "[x, y, \"smooth\" | \"corner\" | \"step\"] for every knot, x ascending from 0 to 1; the type may be left out "
     "(smooth; corner at the ends)"},
    {"noise", kFlag, "", "", "adds noise to the curve"},
    {"noise_size", kNumber, "", "", "height of the noise", -kMost, kMost},
    {"noise_density", kNumber, "", "", "waves of the noise along the curve", -kMost, kMost},
    {"noise_phase", kNumber, "", "", "shift of the noise", -kMost, kMost},
};

constexpr SceneKey kSurface[] = {
    {"enabled", kFlag, "true", "", "whether the distribution counts"},
    {"source", kChoice, "\"map\"", "", "what it is read from", 0, 0, "material|map|channel"},
    {"map", kText, "\"\"", "", "name of the map"},
    {"channel_type", kChoice, "\"uvw\"", "", "kind of channel", 0, 0,
     "uvw|colors|selection|weights|data|illumination|alpha"},
    {"channel", kInteger, "", "", "number of a mapping or vertex data channel", 1, 99},
    {"component", kChoice, "\"intensity\"", "", "component that counts", 0, 0, "intensity|red|green|blue|alpha"},
    {"submaterial", kInteger, "", "", "number of the sub-material", 1, 65535},
    {"final_shading", kFlag, "", "", "whether the material is shaded with the scene's lights"},
};

constexpr SceneSection kSections[] = {
    {"file", "the scene file", "Every part may be left out.", kFile},
    {"scene", "[scene]", "What the scene holds.", kScene},
    {"import", "an entry of `import`", "A file name alone stands for { file = \"...\" }.", kImport},
    {"render", "[render]",
     "How pictures are made. [render.hair] sets parameters of the hair renderer by their own names.", kRender},
    {"camera", "[[camera]]", "A camera.", kCamera},
    {"light", "[[light]]", "A light.", kLight},
    {"material", "[[material]]", "A material. Values left out keep the material's own defaults.", kMaterial},
    {"map", "[[map]]", "A map.", kMap},
    {"output", "`output` of a map", "What happens to a map's colours, in this order.", kOutput},
    {"node", "[[node]]", "Settings of an imported node, or a new node with a simple shape.", kNode},
    {"selection", "an entry of `face_sets` or `sets`, and `select`",
     "Faces, or vertices: all that one of the keys names.", keys::kSelection},
    {"modifier.mesh_select", "[[node.modifiers]] of type \"mesh_select\"",
     "Selects faces or vertices of the mesh. `modifiers = [{ type = ... }]` in [[node]] is the same as "
     "[[node.modifiers]].",
     keys::kMeshSelect},
    {"modifier.smooth", "[[node.modifiers]] of type \"smooth\"", "Gives the faces smoothing groups.", keys::kSmooth},
    {"modifier.normal_flip", "[[node.modifiers]] of type \"normal_flip\"",
     "Turns faces round: all, or the selected ones at face level.", keys::kNormalFlip},
    {"modifier.xform", "[[node.modifiers]] of type \"xform\"", "Moves, turns and scales the points or the selection.",
     keys::kXForm},
    {"modifier.bend", "[[node.modifiers]] of type \"bend\"", "Bends what stands along Z; the plane z = 0 stays.",
     keys::kBend},
    {"modifier.noise", "[[node.modifiers]] of type \"noise\"", "Moves points at random.", keys::kNoise},
    {"modifier.skin", "[[node.modifiers]] of type \"skin\"", "The mesh follows bones.", keys::kSkin},
    {"modifier.morph", "[[node.modifiers]] of type \"morph\"", "Adds shapes by weights.", keys::kMorph},
    {"morph_target", "[[node.modifiers.targets]]", "One shape of a morph modifier.", keys::kMorphTarget},
    {"modifier.mesh_cache", "[[node.modifiers]] of type \"mesh_cache\"",
     "Takes the vertices from a series of files (.obj, .ply, .3ds), read with the scale and up axis of the node's own "
     "file. Before the first and after the last frame the mesh stands still.",
     keys::kMeshCache},
    {"shape", "[[shape]]", "A node with splines.", keys::kShape},
    {"spline", "[[shape.splines]]", "A spline of a shape.", keys::kSpline},
    {"keys", "[[keys]]", "Values over time: the transform of a node, or a parameter of an object.", kKeys},
    {"hair", "[[fur]], [[hair]]", "A fur object (short strands that lean and bend) or a hair object (long strands).",
     kHair},
    {"curve", "an entry of `curve` or `random`", "A curve.", kCurve},
    {"surface", "an entry of `surface`", "A distribution over the emitter's surface.", kSurface},
    {"effect", "[[effect]]",
     "A render effect. `velmar params SCENE --object NAME --list` shows the parameters of one that has a name.",
     keys::kEffect},
    {"image_filter", "[[image_filter]]", "An image filter.", keys::kImageFilter},
};

} // namespace

const SceneKey* SceneSection::Find(std::string_view key) const {
    for (const SceneKey& k : keys)
        if (key == k.name) return &k;
    return nullptr;
}

std::span<const SceneSection> SceneSections() {
    return kSections;
}

const SceneSection* FindSceneSection(std::string_view name) {
    for (const SceneSection& s : kSections)
        if (name == s.name) return &s;
    return nullptr;
}

} // namespace host
