#include "editor/ControlLook.h"

#include <algorithm>
#include <cmath>

#include "editor/IGraphics.h"

namespace controllook
{
double KnobAngle(double value)
{
    return IBitmapKnobControl::kMinAngle +
           std::clamp(value, 0.0, 1.0) * (IBitmapKnobControl::kMaxAngle - IBitmapKnobControl::kMinAngle);
}

void DrawKnobFace(IGraphics* graphics, const IRECT& r, double value, float weight)
{
    const float cx = (r.L + r.R) / 2.0f, cy = (r.T + r.B) / 2.0f;
    const float radius = std::min(r.W(), r.H()) / 2.0f;
    if (radius < 2.0f) return;
    IRaster& raster = graphics->Raster();
    raster.FillCircle(Faded(kFaceEdge, weight), cx, cy, radius);
    raster.FillCircle(Faded(kFace, weight), cx, cy, radius - 1.0f);
    const double a = KnobAngle(value) * M_PI / 180.0;
    const double inner = radius * 0.25, outer = radius * 0.8;
    raster.DrawLine(Faded(kText, weight), cx + inner * std::sin(a), cy - inner * std::cos(a),
                    cx + outer * std::sin(a), cy - outer * std::cos(a), std::max(1.5, radius / 8.0));
}

void DrawButtonFace(IGraphics* graphics, const IRECT& r, bool lit, const IColor& accent)
{
    if (r.Empty()) return;
    IRaster& raster = graphics->Raster();
    const double radius = std::min(3.0, std::min(r.W(), r.H()) / 2.0);
    raster.FillRoundRect(kFaceEdge, r, radius);
    raster.FillRoundRect(kFace, r.Inset(1), std::max(0.0, radius - 1.0));
    if (lit && r.W() > 6 && r.H() > 6) raster.FillRoundRect(accent, r.Inset(3), std::max(0.0, radius - 2.0));
}

void DrawRoundFace(IGraphics* graphics, const IRECT& r, bool lit, const IColor& accent)
{
    const float cx = (r.L + r.R) / 2.0f, cy = (r.T + r.B) / 2.0f;
    const float radius = std::min(r.W(), r.H()) / 2.0f;
    if (radius < 2.0f) return;
    IRaster& raster = graphics->Raster();
    raster.FillCircle(kFaceEdge, cx, cy, radius);
    raster.FillCircle(kFace, cx, cy, radius - 1.0f);
    if (lit) raster.FillCircle(accent, cx, cy, radius * 0.45f);
}

void DrawRing(IGraphics* graphics, const IRECT& r, const IColor& color, float width)
{
    const float cx = (r.L + r.R) / 2.0f, cy = (r.T + r.B) / 2.0f;
    const float radius = std::min(r.W(), r.H()) / 2.0f - width / 2.0f;
    if (radius <= 0.0f) return;
    graphics->DrawArc(color, cx, cy, radius, 0.0f, 360.0f, width);
}

void DrawFrame(IGraphics* graphics, const IRECT& r, const IColor& color, int width)
{
    for (int i = 0; i < width; ++i)
        if (!r.Inset(i).Empty()) graphics->DrawRect(color, r.Inset(i));
}
} // namespace controllook
