#pragma once
// A block with a parameter of every type, its owner, and a talkative accessor and validator.

#include <gtest/gtest.h>

#include <climits>
#include <functional>
#include <memory>

#include "core/node.h"
#include "sdk/iparamb2.h"
#include "test_objects.h"

enum : ParamID {
    kFloat,
    kInt,
    kBool,
    kTime,
    kColor,
    kPoint,
    kString,
    kHeld,
    kTarget,
    kPlainTarget,
    kNode,
    kNodes,
    kMap
};

struct TestAccessor : PBAccessor {
    void Get(PB2Value& v, ReferenceMaker* o, ParamID, int, TimeValue, Interval& interval) override {
        owner = o;
        v.f *= 100;
        interval &= valid;
    }
    void Set(PB2Value& v, ReferenceMaker* o, ParamID i, int tab, TimeValue) override {
        ++sets;
        owner = o;
        id = i;
        entry = tab;
        lastSet = v.f;
        if (onSet) onSet();
        if (replace) v.f = replace;
        if (v.r && v.r == refuse) v.r = nullptr;
    }
    std::function<void()> onSet;
    ReferenceMaker* owner = nullptr;
    ReferenceTarget* refuse = nullptr;
    ParamID id = -1;
    int sets = 0, entry = -1;
    float lastSet = 0, replace = 0;
    Interval valid = FOREVER;
};

struct TestValidator : PBValidator {
    bool Validate(PB2Value& v) override {
        ++asked;
        return v.r != refuse;
    }
    ReferenceTarget* refuse = nullptr;
    int asked = 0;
};

struct BlockTest : testing::Test {
    BlockTest() {
        desc.id = 3;
        desc.refno = 0;
        Add(kFloat, "pid_float", "Float", TYPE_FLOAT, P_ANIMATABLE, 0, 1).def.f = 0.5f;
        Add(kInt, "pid_int", "", TYPE_INT, P_ANIMATABLE, -2, 10).def.i = 7;
        Add(kBool, "pid_bool", "Bool", TYPE_BOOL, 0).def.i = 1;
        Add(kTime, "pid_time", "Time", TYPE_TIMEVALUE, 0, float(INT_MIN), float(INT_MAX)).def.i = -1;
        Add(kColor, "pid_color", "Color", TYPE_RGBA, P_ANIMATABLE, 0, 1).def.p = {0.25f, 0.5f, 0.75f};
        Add(kPoint, "pid_point", "Point", TYPE_POINT3, 0);
        Add(kString, "pid_string", "String", TYPE_STRING, 0).def.s = "text";
        Add(kHeld, "pid_held", "Held", TYPE_FLOAT, P_TRANSIENT, 0, 20).accessor = &accessor;
        Add(kTarget, "pid_target", "Target", TYPE_REFTARG, P_SUBANIM).validator = &validator;
        Add(kPlainTarget, "pid_plainTarget", "PlainTarget", TYPE_REFTARG, 0).accessor = &refAccessor;
        Add(kNode, "pid_node", "Node", TYPE_INODE, 0).validator = &validator;
        ParamDef& nodes = Add(kNodes, "pid_nodes", "Nodes", TYPE_INODE_TAB, P_VARIABLE_SIZE);
        nodes.validator = &validator;
        nodes.accessor = &refAccessor;
        Add(kMap, "pid_map", "Map", TYPE_TEXMAP, 0);
        block = CreateParameterBlock2(&desc, &owner);
        owner.ReplaceReference(0, block);
    }
    ParamDef& Add(ParamID id, const char* intName, const char* name, ParamType2 type, unsigned flags) {
        ParamDef def;
        def.id = id;
        def.intName = intName;
        def.name = name;
        def.type = type;
        def.flags = flags;
        return desc.params.emplace_back(def);
    }
    ParamDef& Add(ParamID id, const char* intName, const char* name, ParamType2 type, unsigned flags, float low,
                  float high) {
        ParamDef& def = Add(id, intName, name, type, flags);
        def.hasRange = true;
        def.rangeLow = low;
        def.rangeHigh = high;
        return def;
    }

    TestAccessor accessor, refAccessor;
    TestValidator validator;
    ParamBlockDesc2 desc;
    host::Node node{"a"}, other{"b"};
    Thing target, owner{2};
    IParamBlock2* block = nullptr;
};
