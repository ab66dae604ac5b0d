// [[camera]] and [[light]].

#include <cmath>
#include <numbers>

#include "core/camera.h"
#include "core/euler.h"
#include "core/light.h"
#include "scene/named_classes.h"

namespace host {

namespace {

// A node with this object, whose name is free for a node and for an object.
Node* NewNode(LoadContext& context, const SectionReader& reader, Object* object) {
    const std::string name = reader.Required("name");
    const bool taken = context.core.GetINodeByName(name.c_str()) != nullptr;
    Node* const node = context.core.CreateNode(name, object);
    if (taken) reader.FailAtKey("name", "second node " + Quoted(name) + ", expected a name of its own");
    context.AddObject(reader, name, object);
    return node;
}

// A camera or light sits at `position` and looks at `target`, where a node follows keys when `follow` is on; `turned`:
// without a target it has a rotation.
void Place(LoadContext& context, const SectionReader& reader, Node* node, bool follow, bool turned) {
    const Point3 position = reader.Point("position");
    if (!reader.Has("target")) {
        const Matrix3 turn = turned ? EulerMatrix(reader.Point("rotation")) : Matrix3();
        return node->SetNodeTM(0, turn * TransMatrix(position));
    }
    const Point3 target = reader.Point("target");
    if (position == target) reader.FailAtKey("target", "'target' is where 'position' is, expected another point");
    if (!follow) return node->SetNodeTM(0, LookAtMatrix(position, target));
    node->SetNodeTM(0, TransMatrix(position));
    Node* const aim = context.core.CreateNode(std::string(node->GetName()) + ".target", nullptr);
    aim->SetNodeTM(0, TransMatrix(target));
    node->SetTarget(aim);
}

void SetClip(const SectionReader& reader, IParamBlock2* block) {
    if (!reader.Has("near") && !reader.Has("far")) return;
    const float hither = reader.Has("near") ? reader.Number("near") : 0.0f;
    const float yon = reader.Has("far") ? reader.Number("far") : 1e9f;
    if (!(yon > hither)) reader.FailAtKey("far", "'far' is not beyond 'near', expected a larger number");
    block->SetValue(kCamManualClip, 0, 1);
    block->SetValue(kCamHither, 0, hither);
    block->SetValue(kCamYon, 0, yon);
}

void SetEnvironmentRange(const SectionReader& reader, IParamBlock2* block) {
    const float from = reader.Number("environment_near"), to = reader.Number("environment_far");
    if (!(to > from))
        reader.FailAtKey("environment_far",
                         "'environment_far' is not beyond 'environment_near', expected a larger number");
    block->SetValue(kCamNearRange, 0, from);
    block->SetValue(kCamFarRange, 0, to);
}

void LoadCamera(LoadContext& context, const SectionReader& reader) {
    const bool ortho = reader.Choice("type") == 1, aims = reader.Has("target");
    if (aims && reader.Has("rotation"))
        reader.FailAtKey("rotation", "both 'target' and 'rotation', expected one of them");
    auto* const camera = context.core.Adopt(aims && !ortho ? new TargetCamera : new FreeCamera);
    Node* const node = NewNode(context, reader, camera);
    IParamBlock2* const block = camera->Params();
    if (ortho) {
        // At 90 degrees the view is as wide as twice the distance of the target.
        block->SetValue(kCamOrtho, 0, 1);
        block->SetValue(kCamFov, 0, float(std::numbers::pi / 2));
        block->SetValue(kCamTargetDist, 0, reader.Number("zoom") / 2.0f);
    } else {
        block->SetValue(kCamFov, 0, float(double(reader.Number("fov")) * std::numbers::pi / 180.0));
        if (aims) block->SetValue(kCamTargetDist, 0, Length(reader.Point("target") - reader.Point("position")));
    }
    block->SetValue(kCamRoll, 0, float(double(reader.Number("roll")) * std::numbers::pi / 180.0));
    SetClip(reader, block);
    SetEnvironmentRange(reader, block);
    Place(context, reader, node, !ortho, true);
}

void SetNodeList(LoadContext& context, const SectionReader& reader, const char* key, IParamBlock2* block) {
    for (const std::string& name : reader.Names(key))
        block->Append(kLightExclude, context.At(reader.LineOf(key), [&] { return context.NodeNamed(name); }));
}

// [start, end] of an attenuation, which switches it on.
void SetAttenuation(const SectionReader& reader, const char* key, IParamBlock2* block, ParamID on, ParamID start,
                    ParamID end) {
    if (!reader.Has(key)) return;
    const auto [from, to] = reader.Pair(key);
    if (from < 0 || to < from)
        reader.FailAtKey(key, Quoted(key) + " ends before it starts or starts below 0, expected [start, end]");
    block->SetValue(on, 0, 1);
    block->SetValue(start, 0, from);
    block->SetValue(end, 0, to);
}

void SetFading(const SectionReader& reader, IParamBlock2* block) {
    SetAttenuation(reader, "near_attenuation", block, kLightNearOn, kLightNearStart, kLightNearEnd);
    SetAttenuation(reader, "far_attenuation", block, kLightFarOn, kLightFarStart, kLightFarEnd);
    block->SetValue(kLightDecay, 0, reader.Choice("decay"));
    block->SetValue(kLightDecayStart, 0, reader.Number("decay_start"));
}

void SetShadows(LoadContext& context, const SectionReader& reader, Light* light) {
    IParamBlock2* const block = light->Params();
    block->SetValue(kLightShadows, 0, reader.Flag("shadows") ? 1 : 0);
    block->SetValue(kLightShadowMultiplier, 0, reader.Number("shadow_multiplier"));
    block->SetValue(kLightShadowColor, 0, reader.ColorOf("shadow_color"));
    block->SetValue(kLightShadowBias, 0, reader.Number("shadow_bias"));
    if (reader.Text("shadow_type").empty()) {
        if (reader.Has("shadow_set"))
            reader.FailAtKey("shadow_set", "'shadow_set' without 'shadow_type', expected both");
        return;
    }
    const NamedClasses types(context.core, {SHADOW_TYPE_CLASS_ID});
    auto* const type = static_cast<ShadowType*>(MakeNamedObject(context, reader, types, "shadow_type", "shadow type"));
    context.SetParams(reader.Raw("shadow_set"), type, reader.Text("shadow_type"));
    light->SetShadowType(type);
    context.AddObject(reader, reader.Text("name") + ".shadow", type);
}

void LoadLight(LoadContext& context, const SectionReader& reader) {
    constexpr LightType kTypes[] = {OMNI_LGT, SPOT_LGT, DIRECT_LGT};
    const LightType type = kTypes[reader.Choice("type")];
    auto* const light = context.core.Adopt(new Light(type));
    Node* const node = NewNode(context, reader, light);
    IParamBlock2* const block = light->Params();
    block->SetValue(kLightOn, 0, reader.Flag("on") ? 1 : 0);
    block->SetValue(kLightColor, 0, reader.ColorOf("color"));
    block->SetValue(kLightMultiplier, 0, reader.Number("multiplier"));
    for (const auto& [key, id] : {std::pair("hotspot", kLightHotspot), std::pair("falloff", kLightFalloff)}) {
        if (!reader.Has(key)) continue;
        if (type == SPOT_LGT && reader.Number(key) > 179.5f)
            reader.FailAtKey(key, Quoted(key) + " is too wide for a spot light, expected at most 179.5 degrees");
        block->SetValue(id, 0, reader.Number(key));
    }
    block->SetValue(kLightShape, 0, reader.Choice("shape"));
    block->SetValue(kLightAspect, 0, reader.Number("aspect"));
    SetFading(reader, block);
    SetShadows(context, reader, light);
    block->SetValue(kLightAffectDiffuse, 0, reader.Flag("affect_diffuse") ? 1 : 0);
    block->SetValue(kLightAffectSpecular, 0, reader.Flag("affect_specular") ? 1 : 0);
    block->SetValue(kLightAmbientOnly, 0, reader.Flag("ambient_only") ? 1 : 0);
    if (reader.Has("exclude") && reader.Has("include"))
        reader.FailAtKey("include", "both 'exclude' and 'include', expected one of them");
    SetNodeList(context, reader, "exclude", block);
    SetNodeList(context, reader, "include", block);
    block->SetValue(kLightInclude, 0, reader.Has("include") ? 1 : 0);
    Place(context, reader, node, true, false);
}

} // namespace

void LoadCameras(LoadContext& context) {
    int count = 0;
    std::string name;
    context.ForEach("camera", "camera", [&](const SectionReader& reader) {
        LoadCamera(context, reader);
        name = reader.Text("name");
        ++count;
    });
    // The scene's own camera comes before those of imported files.
    if (count == 1 && context.scene.render.camera.empty()) context.scene.render.camera = name;
}

void LoadLights(LoadContext& context) {
    context.ForEach("light", "light", [&](const SectionReader& reader) { LoadLight(context, reader); });
}

} // namespace host
