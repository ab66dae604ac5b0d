// Channels of meshes: taking single ones over, selection weights.

#include <gtest/gtest.h>

#include "sdk/object.h"
#include "test_objects.h"

namespace {

// A cube with something in every channel, told apart by `mark`.
Mesh FullMesh(int mark) {
    Mesh mesh = UnitCube();
    const float value = float(mark);
    for (Point3& v : mesh.verts) v.x += value;
    for (Face& f : mesh.faces) f.SetMatID(mark);
    mesh.specNormals.normals = {{0, 0, value}};
    mesh.specNormals.faces.assign(12, TVFace{{0, 0, 0}});
    mesh.maps[1].tv = {{value, 0, 0}};
    mesh.maps[MAP_VERTCOLOR].tv = {{0, value, 0}};
    mesh.maps[mark + 10].tv = {{1, 1, 1}};
    mesh.vdata[VDATA_SELECT].assign(8, value);
    mesh.vdata[VDATA_WEIGHT].assign(8, value);
    mesh.faceSel.SetSize(12);
    mesh.faceSel.Set(mark);
    mesh.faceSets = {{"set" + std::to_string(mark), mesh.faceSel}};
    mesh.selLevel = mark;
    return mesh;
}

// Which channels of `mesh` are those of FullMesh(2) and not of FullMesh(1).
ChannelMask ChannelsOf2(const Mesh& mesh) {
    ChannelMask mask = 0;
    if (mesh.faces[0].MatID() == 2) mask |= TOPO_CHANNEL;
    if (mesh.verts[0].x == 2 && mesh.specNormals.normals[0].z == 2) mask |= GEOM_CHANNEL;
    if (mesh.maps.at(1).tv[0].x == 2 && mesh.maps.contains(12) && !mesh.maps.contains(11) &&
        mesh.vdata.at(VDATA_WEIGHT)[0] == 2)
        mask |= TEXMAP_CHANNEL;
    if (mesh.maps.at(MAP_VERTCOLOR).tv[0].y == 2) mask |= VERTCOLOR_CHANNEL;
    if (mesh.faceSel[2] && mesh.faceSets[0].first == "set2" && mesh.vdata.at(VDATA_SELECT)[0] == 2)
        mask |= SELECT_CHANNEL;
    if (mesh.selLevel == 2) mask |= SUBSEL_TYPE_CHANNEL;
    return mask;
}

TEST(MeshChannels, AreTakenOverOneByOne) {
    const ChannelMask all[] = {TOPO_CHANNEL,      GEOM_CHANNEL,   TEXMAP_CHANNEL,
                               VERTCOLOR_CHANNEL, SELECT_CHANNEL, SUBSEL_TYPE_CHANNEL};
    const Mesh two = FullMesh(2);
    ChannelMask together = 0;
    Mesh sum = FullMesh(1);
    for (const ChannelMask one : all) {
        Mesh mesh = FullMesh(1);
        EXPECT_EQ(ChannelsOf2(mesh), 0u);
        mesh.CopyChannels(two, one);
        EXPECT_EQ(ChannelsOf2(mesh), one);
        sum.CopyChannels(two, one);
        EXPECT_EQ(ChannelsOf2(sum), together |= one);
    }
    Mesh none = FullMesh(1);
    none.CopyChannels(two, DISP_ATTRIB_CHANNEL | MTL_CHANNEL);
    EXPECT_EQ(ChannelsOf2(none), 0u);
}

TEST(MeshChannels, CachesFollow) {
    Mesh mesh = UnitCube(1), flat = UnitCube(1);
    for (Point3& v : flat.verts) v.z += 3 * v.x;
    const Point3 before = mesh.VertexNormals()[0];
    mesh.CopyChannels(flat, GEOM_CHANNEL);
    EXPECT_EQ(mesh.VertexNormals()[0], flat.VertexNormals()[0]);
    EXPECT_NE(mesh.VertexNormals()[0], before);
    Mesh other = flat;
    std::swap(other.faces[0], other.faces[11]);
    other.InvalidateTopologyCache();
    mesh.CopyChannels(other, TOPO_CHANNEL);
    EXPECT_EQ(mesh.CornersOfVertex(7)[0], other.CornersOfVertex(7)[0]);
    Mesh more = flat;
    more.verts.push_back({5, 5, 5});
    more.InvalidateTopologyCache();
    mesh.CopyChannels(more, GEOM_CHANNEL);
    EXPECT_TRUE(mesh.CornersOfVertex(8).empty()) << "a vertex without faces";
    EXPECT_EQ(mesh.VertexNormals().size(), 9u);
}

TEST(MeshChannels, SelectionByLevel) {
    Mesh mesh = UnitCube();
    mesh.vertSel.SetSize(8);
    mesh.vertSel.Set(1);
    mesh.faceSel.SetSize(12);
    mesh.faceSel.Set(0); // corners 0, 2, 3
    mesh.vdata[VDATA_SELECT] = {0, 0, 0.5f, 0, 0, 0, 7, -3};
    const auto row = [&](int level) {
        mesh.selLevel = level;
        std::vector<float> weights;
        for (int v = 0; v < 8; ++v) weights.push_back(mesh.VertexSelection(v));
        return weights;
    };
    EXPECT_EQ(row(MESH_OBJECT), (std::vector<float>{1, 1, 1, 1, 1, 1, 1, 1}));
    EXPECT_EQ(row(MESH_VERTEX), (std::vector<float>{0, 1, 0.5f, 0, 0, 0, 1, 0}));
    EXPECT_EQ(row(MESH_FACE), (std::vector<float>{1, 0, 1, 1, 0, 0, 1, 0}));
}

TEST(ChannelIntervals, HoldForeverUntilNarrowed) {
    ChannelIntervals valid;
    EXPECT_EQ(valid.All(), FOREVER);
    valid[GEOM_CHAN_NUM] = Interval(0, 10);
    valid[TOPO_CHAN_NUM] = Interval(5, 20);
    EXPECT_EQ(valid.All(), Interval(5, 10));
    EXPECT_EQ(valid.Of(GEOM_CHANNEL), Interval(0, 10));
    EXPECT_EQ(valid.Of(SELECT_CHANNEL), FOREVER);
    valid.Invalidate(TOPO_CHANNEL | SELECT_CHANNEL);
    EXPECT_TRUE(valid.All().Empty());
    EXPECT_EQ(valid.Of(GEOM_CHANNEL), Interval(0, 10));
    TriObject tri;
    tri.SetChannelValidity(GEOM_CHAN_NUM, Interval(1, 2));
    EXPECT_EQ(tri.ObjectValidity(0), Interval(1, 2));
    EXPECT_EQ(tri.ChannelValidity(0, TOPO_CHAN_NUM), FOREVER);
}

} // namespace
