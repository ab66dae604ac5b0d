#pragma once
// How nodes without a material look.

#include "materials/shaders.h"
#include "sdk/inode.h"
#include "sdk/mtl.h"

namespace host {

/// Matt, in the colour that the context's node has in wire views.
class NodeColorMtl : public Mtl {
public:
    void Shade(ShadeContext& sc) override {
        IllumParams ip;
        if (INode* const node = sc.Node()) ip.diffuse = ip.ambient = node->GetWireColor();
        ip.nLights = sc.nLights;
        shader_.Illum(sc, ip);
        sc.out.c = ip.finalC;
        sc.out.t = ip.finalT;
    }

private:
    BlinnShader shader_;
};

} // namespace host
