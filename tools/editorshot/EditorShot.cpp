// quorvex-editor-shot: draws the editor offscreen, exactly as the window shows it, into a PNG.
// It builds the editor on the real parameter catalogue at its defaults, so the picture shows a
// fresh instance. Usage: quorvex-editor-shot <art folder> <scale> <colour set> <out.png> [dialog]
// where dialog is "message" (an alert), "save:<folder>" (the save prompt over that folder) or
// "page:<n>" (page n shown instead of the default page, with a showcase patch set).
#include <cstdio>
#include <cstdlib>
#include <string>

#include "editor/QuorvexEditor.h"
#include "editor/WaveDraw.h"
#include "fx/EffectTable.h"
#include "host/IPlugBase.h"
#include "modulators/WaveMenu.h"
#include "modulators/WaveStore.h"
#include "params/IParamRecord.h"
#include "params/ParamCatalogue.h"
#include "params/ParamIds.h"

namespace
{

class ShotPlug : public IPlugBase
{
  public:
    ShotPlug() : IPlugBase(IPlugConfig{.nParams = kNumParams, .channelIOStr = "2-2"})
    {
        InitParams(params, kWaveMenuNames);
    }
};
// A patch that fills the pages the way a session would, for the page pictures: an effect of a
// different family in every position, a few gate steps, a preset name.
struct ShowcaseRow
{
    int id;
    const char* text; // a display text, or null to take value
    double value;
};
constexpr ShowcaseRow kShowcase[] = {
    {kFX1PR, "FREQ SHIFT", 0},
    {kFX2PR, "PHASE", 0},
    {kFX3PR, "COMB", 0},
    {kFX4PR, "COMPRESSOR", 0},
    {kFX1FB, "PITCH SHIFT", 0},
    {kFX2FB, "SATURATE", 0},
    {kFX3FB, "LOFI I", 0},
    {kFX4FB, "MULTI 12dB", 0},
    {kFX1PO, "MULTI SVF", 0},
    {kFX2PO, "VOWEL", 0},
    {kFX3PO, "DRIVE LP+HP", 0},
    {kFX4PO, "PEAK", 0},
    {kFXOnPR1, "ON", 0},
    {kFXOnFB1, "ON", 0},
    {kFXOnPO2, "ON", 0},
    {kSlotOn2, "ON", 0},
    {kLFOOn1, "ON", 0},
    {kLFOWave2, nullptr, 3},
    {kLFOWave3, nullptr, 7},
    {kLFOWave4, nullptr, 12},
    {kFeedback1, nullptr, 45},
    {kDirectIn1, nullptr, 50},
    {kMasterFX, "REVERB", 0},
    {kDelayTimeLModSource1, "LFO1", 0},
    {kDelayTimeLModDepth1, nullptr, 20},
    {kFeedbackModSource2, "ENV1", 0},
    {kFeedbackModDepth2, nullptr, 35},
    {kLevelModSource1, "LFO1", 0},
    {kLevelModDepth1, nullptr, 25},
};

void ApplyShowcase(IPlugBase& plug, QuorvexEditor& editor)
{
    for (const ShowcaseRow& row : kShowcase)
    {
        IParamRecord* p = plug.GetParam(row.id);
        if (!p) continue;
        double v = row.value;
        if (row.text && !p->GetValueFromDisplayText(row.text, v)) continue;
        p->value = v;
        editor.SetParameterFromPlug(row.id, p->GetNormalized(), true);
    }
    // Each effect's knobs where choosing the effect puts them.
    const int values[kFxParams] = {kFXParam1PR1, kFXParam2PR1, kFXParam3PR1, kFXParam4PR1, kFXParam5PR1};
    for (int position = 0; position < 3; ++position)
        for (int slot = 0; slot < 4; ++slot)
        {
            const int offset = position * 4 + slot;
            const int typeId =
                FxTypeFromMenu(position, static_cast<int>(plug.GetParam(kFX1PR + offset)->value));
            const FxTypeInfo* type = FindFxType(typeId);
            if (!type || typeId == 0) continue;
            for (int k = 0; k < kFxParams; ++k)
            {
                IParamRecord* p = plug.GetParam(values[k] + offset);
                p->value = type->defaults[k] * 100.0;
                editor.SetParameterFromPlug(values[k] + offset, p->GetNormalized(), true);
            }
        }
    // The LFO displays show the waves the LFOs choose, as the plug-in hands them over.
    static const WaveList waves = BuildWaveList();
    int lfo = 0;
    for (int idx : editor.ListControls(kListLfo))
        if (auto* wave = dynamic_cast<WaveDraw*>(editor.GetControl(idx)))
        {
            const auto choice = static_cast<size_t>(plug.GetParam(kLFOWave1 + lfo++)->value);
            if (choice < waves.size() && waves[choice])
                wave->SetTable(waves[choice]->samples, kWaveTableSize);
        }
    for (int step = 0; step < 16; ++step)
        if (IParamRecord* p = plug.GetParam(kGate1Step1 + step))
        {
            p->SetNormalized(0.25 + 0.75 * ((step * 5) % 16) / 15.0);
            editor.SetParameterFromPlug(kGate1Step1 + step, p->GetNormalized(), true);
        }
}
} // namespace

int main(int argc, char** argv)
{
    if (argc != 5 && argc != 6)
    {
        std::fprintf(stderr, "usage: quorvex-editor-shot <art folder> <scale> <colour set> <out.png> "
                             "[message|save:<folder>|page:<n>]\n");
        return 2;
    }
    const double scale = std::strtod(argv[2], nullptr);
    if (!(scale >= 0.5 && scale <= 4.0))
    {
        std::fprintf(stderr, "quorvex-editor-shot: scale %s out of 0.5..4\n", argv[2]);
        return 2;
    }
    ShotPlug plug;
    QuorvexEditor editor(&plug, argv[1]);
    plug.AttachGraphics(&editor);
    editor.SetScale(scale);
    editor.SetColorSet(std::atoi(argv[3]));
    const std::string dialog = argc == 6 ? argv[5] : "";
    if (dialog == "message")
        editor.ShowMessageBox("Can't write into Fatory Preset Folder!\nPlease save to User Preset Folder!",
                              "QUORVEX");
    else if (dialog.rfind("save:", 0) == 0)
        editor.PromptForFile("New Preset", dialog.substr(5), "txt", {}, "SAVE PRESET");
    else if (dialog.rfind("page:", 0) == 0)
    {
        ApplyShowcase(plug, editor);
        editor.SetPresetTexts("Showcase", "F:Basics");
        editor.ShowPage(std::atoi(dialog.c_str() + 5), false);
    }
    editor.OnTimerTick();
    const bool ok = editor.Raster().SavePNG(argv[4]);
    plug.AttachGraphics(nullptr);
    if (!ok) std::fprintf(stderr, "quorvex-editor-shot: cannot write %s\n", argv[4]);
    return ok ? 0 : 1;
}
