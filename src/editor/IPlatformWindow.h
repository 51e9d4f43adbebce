#pragma once
// What the toolkit needs of a platform's window: show a part of the raster, follow a new size,
// and be gone when destroyed (no window, timer or event handler survives). Events come in
// through the IGraphics mouse and key calls, already in layout pixels. UI thread only.

#include "editor/IGraphicsTypes.h"

class IPlatformWindow
{
  public:
    virtual ~IPlatformWindow() = default;
    // Copies the raster's part under r (layout pixels) to the screen.
    virtual void Invalidate(const IRECT& r) = 0;
    // The raster was rebuilt at another scale: the window takes its device size.
    virtual void Resize(int deviceW, int deviceH) = 0;
};
