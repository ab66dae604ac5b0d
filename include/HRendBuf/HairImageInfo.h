#pragma once
// The picture of a hair pass and its projection from camera space to the screen.

#include "sdk/point2.h"
#include "sdk/point3.h"

class Bitmap;
class RenderGlobalContext;
class RenderInfo;
class ViewParams;

/// Size, pixel aspect and camera-to-screen projection. Camera space looks down -Z; screen positions are pixels.
class HairImageInfo {
public:
    int width = 0, height = 0;
    float widthF = 0, heightF = 0;
    float aspect = 1;               ///< pixel aspect
    float centreX = 0, centreY = 0; ///< screen position of the optical axis
    float scaleX = 1, scaleY = 1;
    int projType = 0; ///< 0 perspective, 1 parallel
    RenderGlobalContext* renderGlobalContext = nullptr;
    RenderInfo* renderInfo = nullptr;
    int cameraIndex = 0;
    bool hasCustomProjection = false;

    /// Takes over size and projection of a render; without a context, the size of the host's render settings. True when
    /// width, height or aspect changed.
    bool SetFromContext(RenderGlobalContext* context, int camera);
    /// Takes over size and projection of a picture. False when it carries no render information.
    bool SetFromBitmap(Bitmap& bitmap);
    /// An explicit size in pixels, projected by the view alone.
    void SetSize(int w, int h, float pixelAspect);
    /// Computes projType and the scales: from the context or the render information when there is one, else from
    /// `view`.
    void ComputeScales(const ViewParams& view);
    /// Camera space to screen. Without a context or render information a perspective point at or behind the camera
    /// (z >= 0) answers (0, 0).
    Point2 MapCamToScreen(const Point3& p) const;
    /// The nearest position inside the pixel grid.
    Point2 ClampToImage(Point2 p) const;

private:
    void StoreSize(int w, int h, float pixelAspect);
    Point2 MapByContext(const Point3& p) const;
};
