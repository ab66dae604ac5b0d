#pragma once
// What a surface distribution is set to, as plain data.

class Texmap;

/// Where a surface distribution reads from.
enum SurfDistSource { SURFDIST_SUBMATERIAL = 0, SURFDIST_MAP = 1, SURFDIST_CHANNEL = 2 };

/// Which mesh channel (source "Channel").
enum SurfDistChannel {
    SURFCHAN_UVW = 0,
    SURFCHAN_VERTEX_COLORS = 1,
    SURFCHAN_SOFT_SELECTION = 2,
    SURFCHAN_WEIGHTS = 3,
    SURFCHAN_VERTEX_DATA = 4,
    SURFCHAN_ILLUMINATION = 5,
    SURFCHAN_ALPHA = 6,
};

/// Which component becomes the scalar.
enum SurfDistComponent {
    SURFCOMP_INTENSITY = 0,
    SURFCOMP_RED = 1,
    SURFCOMP_GREEN = 2,
    SURFCOMP_BLUE = 3,
    SURFCOMP_ALPHA = 4
};

/// Settings of one surface distribution.
struct SurfDistSettings {
    bool enabled = false;
    bool useFinalShading = false; ///< shade the sub-material with the scene's lights
    int source = SURFDIST_SUBMATERIAL;
    int subMtlId = 0; ///< 0: the face's own material; k > 0: sub-material k
    int channelType = SURFCHAN_UVW;
    int channel = 1; ///< mapping channel or vertex data channel
    int component = SURFCOMP_INTENSITY;
    Texmap* map = nullptr; ///< for source "Map"; not owned
};
