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
    kMapSource,   ///< MapSource
    kMapRotation, ///< turn of the map about (0.5, 0.5) in degrees, counter-clockwise where u points right and v up
};

/// What coordinates are taken from.
enum MapSource {
    kMapExplicit, ///< the mapping channel
    kMapSphere, ///< the view direction in the world, for environments: u = 0.5 towards +Y, 0.75 towards +X; v = 1 is up
    kMapScreen, ///< the place in the picture, (0, 0) lower left
    kMapCylinder, ///< the view direction: u as on the sphere; v runs over 0..1 from 45 degrees down to 45 degrees up
    kMapObject,   ///< the place in the object's own space
    kMapWorld,    ///< the place in the world
};

/// Coordinates of a map at shading points: turned, then tiled, then shifted. The third coordinate stays as it is.
struct MapCoords {
    int channel = 1, source = kMapExplicit;
    float tileU = 1, tileV = 1, offsetU = 0, offsetV = 0;
    float sine = 0, cosine = 1; ///< of the rotation
    /// The shared parameters, to append to a map's own.
    static std::vector<ParamDef> Params();
    /// Values of the block at `t`.
    void Read(IParamBlock2& block, TimeValue t);
    /// u, v and w at the context's point.
    Point3 At(ShadeContext& sc) const;
    /// How far u and v run over the picture's pixel there; 0 where that is not known or not wanted (filterMaps off).
    Point2 Footprint(ShadeContext& sc) const;
    /// Two orthonormal directions along the surface (camera space) and the change of coordinates per unit of length
    /// along each. False where coordinates do not lie on the surface.
    bool Along(ShadeContext& sc, Point3 directions[2], Point3 changes[2]) const;

private:
    /// A difference of source coordinates, turned and tiled.
    Point3 Change(const Point3& d) const;
};

} // namespace host
