#include "editor/FxPanelControls.h"

#include <cmath>
#include <cstring>

#include "editor/IGraphics.h"
#include "editor/PanelLook.h"
#include "fx/EffectTable.h"
#include "params/IParamRecord.h"
#include "params/ParamIds.h"

namespace
{
// Pre, feedback and post type parameters lie in three runs of four.
int MenuKindOf(int typeParam)
{
    return (typeParam - kFX1PR) / (kFX1FB - kFX1PR);
}
} // namespace

const FxTypeInfo* FxTypeOfParam(IPlugBase* plug, int typeParam, double normalized)
{
    const IParamRecord* param = plug ? plug->GetParam(typeParam) : nullptr;
    if (!param) return nullptr;
    const int index = static_cast<int>(std::lround(param->GetNonNormalized(normalized)));
    const int id = FxTypeFromMenu(MenuKindOf(typeParam), index);
    return id > 0 ? FindFxType(id) : nullptr;
}

IFxKnobLabelControl::IFxKnobLabelControl(IPlugBase* plug, const IRECT& rect, int typeParam, const IText& text,
                                         int knob)
    : IControl(plug, rect, typeParam), mText(text), mKnob(knob)
{
    SetTargetArea(IRECT());
}

std::string IFxKnobLabelControl::Text() const
{
    const FxTypeInfo* type = FxTypeOfParam(mPlug, mParamIdx, mValue);
    if (!type || type->hidden[mKnob] || !type->shortLabels[mKnob]) return {};
    return type->shortLabels[mKnob];
}

void IFxKnobLabelControl::SetValueFromPlug(double value)
{
    const std::string before = Text();
    IControl::SetValueFromPlug(value);
    if (Text() != before) mDirty = true;
}

void IFxKnobLabelControl::Draw(IGraphics* graphics)
{
    graphics->DrawIText(mText, Text().c_str(), mRect);
}

IFxIconControl::IFxIconControl(IPlugBase* plug, const IRECT& rect, int typeParam,
                               const std::array<IBitmap, 23>& icons)
    : IControl(plug, rect, typeParam), mIcons(icons)
{
    SetTargetArea(IRECT());
}

int IFxIconControl::IconRow() const
{
    const IParamRecord* param = mPlug ? mPlug->GetParam(mParamIdx) : nullptr;
    if (!param) return -1;
    const FxTypeInfo* type = FxTypeOfParam(mPlug, mParamIdx, mValue);
    const char* label = type ? type->label : "OFF";
    for (size_t i = 0; i < kFxIcons.size(); ++i)
        if (std::strcmp(kFxIcons[i].mTypeLabel, label) == 0) return static_cast<int>(i);
    return -1;
}

void IFxIconControl::SetValueFromPlug(double value)
{
    const int before = IconRow();
    IControl::SetValueFromPlug(value);
    if (IconRow() != before) mDirty = true;
}

void IFxIconControl::Draw(IGraphics* graphics)
{
    const int row = IconRow();
    if (row >= 0) graphics->DrawBitmap(mIcons[static_cast<size_t>(row)], mRect, 1);
}

IFxRowCoverControl::IFxRowCoverControl(IPlugBase* plug, const IRECT& rect, int panelTop, int panelBottom)
    : IControl(plug, rect, -1), mPanelTop(panelTop), mPanelBottom(panelBottom)
{
}

void IFxRowCoverControl::Draw(IGraphics* graphics)
{
    graphics->Raster().FillVerticalGradient(IColor::FromRGB(kPanelBodyTop), IColor::FromRGB(kPanelBodyBottom),
                                            mPanelTop, mPanelBottom, mRect);
}
