#pragma once
// Mix-in of the custom controls: a pointer to one of the editor's colour role slots and a fade
// weight. The slot is read at every draw, so applying another colour set recolours the control
// without telling it anything.
// UI thread only.

#include <algorithm>

#include "editor/IGraphicsTypes.h"

class IBlendControl
{
  public:
    explicit IBlendControl(const IColor* colorSlot = nullptr, float weight = 1.0f)
        : mColorSlot(colorSlot), mBlendWeight(std::clamp(weight, 0.0f, 1.0f))
    {
    }

    const IColor* ColorSlot() const { return mColorSlot; }
    void SetColorSlot(const IColor* slot) { mColorSlot = slot; }
    float BlendWeight() const { return mBlendWeight; }
    void SetBlendWeight(float weight) { mBlendWeight = std::clamp(weight, 0.0f, 1.0f); }

    // The slot's colour as it is now, its opacity scaled by the weight (and by `extra`, which a
    // grayed control passes); the fallback stands in for a control built without a slot.
    IColor BlendColor(float extra = 1.0f, const IColor& fallback = IColor(255, 0xE6, 0xE9, 0xEF)) const
    {
        const IColor& c = mColorSlot ? *mColorSlot : fallback;
        const float w = std::clamp(mBlendWeight * extra, 0.0f, 1.0f);
        return c.WithAlpha(static_cast<int>(c.A * w + 0.5f));
    }

  protected:
    const IColor* mColorSlot;
    float mBlendWeight;
};
