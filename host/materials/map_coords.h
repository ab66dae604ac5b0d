#pragma once
// Where on a map a point lies.

#include "sdk/iparamb2.h"
#include "sdk/shadecontext.h"

namespace host {

// Parameters that all maps with coordinates share.
enum MapCoordParam : ParamID {
    kMapChannel = 100, ///< mapping channel, -2..99
    kMapTileU,         ///< repetitions of the map over 0..1
    kMapTileV,
    kMapOffsetU, ///< shift of the map, in repetitions
    kMapOffsetV,
    kMapSource, ///< MapSource
};

/// What coordinates are taken from.
enum MapSource {
    kMapExplicit, ///< the mapping channel
    kMapSphere, ///< the view direction in the world, for environments: u = 0.5 towards +Y, 0.75 towards +X; v = 1 is up
    kMapScreen, ///< the place in the picture, (0, 0) lower left
};

/// Coordinates of a map at shading points.
struct MapCoords {
    int channel = 1, source = kMapExplicit;
    float tileU = 1, tileV = 1, offsetU = 0, offsetV = 0;
    /// The shared parameters, to append to a map's own.
    static std::vector<ParamDef> Params();
    /// Values of the block at `t`.
    void Read(IParamBlock2& block, TimeValue t);
    /// u and v at the context's point, tiled and shifted.
    Point2 At(ShadeContext& sc) const;
};

} // namespace host
