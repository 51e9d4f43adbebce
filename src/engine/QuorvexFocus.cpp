// The focus panel's texts (QuorvexFocus.cpp): an effect knob is named as its effect names it and
// shows the entry's text where the knob picks from a list; every other parameter shows its name
// and its value with its unit.

#include <string>
#include <utility>

#include "editor/FocusPanelControl.h"
#include "editor/QuorvexEditor.h"
#include "engine/Quorvex.h"
#include "fx/EffectTable.h"
#include "fx/FxParamLaw.h"

namespace
{
constexpr int kFxValueFamilies[kFxParams] = {kFXParam1PR1, kFXParam2PR1, kFXParam3PR1, kFXParam4PR1,
                                             kFXParam5PR1};
constexpr int kFxFamilySize = 12; // four slots in each of three positions

std::string WithUnit(const IParamRecord& p)
{
    std::string text = p.GetDisplayForHost(p.value, false);
    if (p.label[0] && !p.GetDisplayText(p.value)) text += std::string(" ") + p.label;
    return text;
}
} // namespace

std::pair<std::string, std::string> Quorvex::FocusTexts(int id)
{
    IParamRecord* p = GetParam(id);
    if (!p) return {};
    for (int k = 0; k < kFxParams; ++k)
    {
        const int offset = id - kFxValueFamilies[k];
        if (offset < 0 || offset >= kFxFamilySize) continue;
        const int position = offset / 4, slot = offset % 4;
        const IParamRecord* typeParam = GetParam(kFX1PR + position * 4 + slot);
        const int typeId =
            FxTypeFromMenu(position, typeParam ? static_cast<int>(typeParam->value.Load()) : 0);
        const FxTypeInfo* type = FindFxType(typeId);
        if (!type || typeId == 0) break;
        std::string value = WithUnit(*p);
        if (type->isList[k])
        {
            const int entry = static_cast<int>(FxModuleValue(typeId, k, p->value));
            const auto& labels = type->listLabels[k];
            if (entry >= 0 && entry < static_cast<int>(labels.size()))
                value = labels[static_cast<size_t>(entry)];
        }
        return {type->names[k], value};
    }
    return {p->name, WithUnit(*p)};
}

void Quorvex::PresentFocus()
{
    if (!mEditor || !mEditor->FocusPanel()) return;
    const int id = mFields.mFocusedParam;
    const auto [label, value] = id >= 0 ? FocusTexts(id) : std::pair<std::string, std::string>{};
    mEditor->FocusPanel()->SetTexts(label, value);
}
