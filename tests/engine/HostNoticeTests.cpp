// Values the plug-in writes itself while the user works its window (a step preset, an effect
// type's defaults) reach the host at once through the component handler, each as one gesture.

#include <gtest/gtest.h>

#include <map>

#include "common/HostDoubles.h"
#include "engine/Quorvex.h"
#include "fx/EffectTable.h"
#include "host/PlugInstance.h"
#include "modulators/StepPresets.h"
#include "params/ParamIds.h"

namespace
{
using namespace hostdoubles;

struct Plug
{
    Plug()
    {
        EXPECT_EQ(plug->initialize(&host), kResultOk);
        plug->setComponentHandler(&handler);
    }
    ~Plug()
    {
        plug->setComponentHandler(nullptr);
        plug->terminate();
        plug->release();
    }
    // What the handler was told, as each id's performed value; fails on a perform outside a
    // begin/end pair.
    std::map<ParamID, double> Told()
    {
        std::map<ParamID, double> told;
        std::map<ParamID, int> open;
        for (const auto& edit : handler.Edits())
        {
            open[edit.id] += edit.kind == 'b' ? 1 : (edit.kind == 'e' ? -1 : 0);
            if (edit.kind != 'p') continue;
            EXPECT_EQ(open[edit.id], 1) << "perform outside a gesture: " << edit.id;
            told[edit.id] = edit.value;
        }
        return told;
    }

    HostApplication host;
    ComponentHandler handler;
    IPlugVST3* plug = CreatePlugInstance();
};

TEST(HostNotices, WindowGesturesThatWriteOtherParametersTellTheHost)
{
    Plug p;
    Quorvex& q = *dynamic_cast<Quorvex*>(p.plug);

    // A ramp over five steps, snapped to the "GATE Steps" grid, written through the parameters.
    q.SetParameterFromGUI(kGate1Length, q.GetParam(kGate1Length)->GetNormalized(5.0));
    q.SetParameterFromGUI(kGATESteps1, q.GetParam(kGATESteps1)->GetNormalized(0.0));
    p.handler.Clear();
    q.ApplyGateStepPreset(0, kStepPresetRamp);
    auto told = p.Told();
    for (int i = 0; i < 5; ++i)
    {
        EXPECT_NEAR(q.GetParam(kGate1Step1 + i)->value, 25.0 * i, 1e-9) << "step " << i + 1;
        EXPECT_EQ(told.contains(kGate1Step1 + i) ? told[kGate1Step1 + i] : -1.0,
                  q.GetParam(kGate1Step1 + i)->GetNormalized());
    }

    // An effect type picked in the window starts from the type's knob defaults.
    const auto knob = [](int k) { return kFXParam1PR1 + k * (kFXParam2PR1 - kFXParam1PR1); };
    for (int k = 0; k < 5; ++k)
        q.SetParameterFromGUI(knob(k), 0.123);
    p.handler.Clear();
    q.BeginInformHostOfParamChange(kFX1PR); // the window's gesture around its pick
    q.SetParameterFromGUI(kFX1PR, q.GetParam(kFX1PR)->GetNormalized(3.0));
    q.EndInformHostOfParamChange(kFX1PR);
    told = p.Told();
    EXPECT_EQ(told.count(kFX1PR), 1u);
    const float* defaults = FindFxType(FxTypeFromMenu(kFxMenuPre, 3))->defaults;
    for (int k = 0; k < 5; ++k)
    {
        EXPECT_NEAR(q.GetParam(knob(k))->value, defaults[k] * 100.0, 1e-9) << "knob " << k + 1;
        EXPECT_EQ(told.contains(knob(k)) ? told[knob(k)] : -1.0, q.GetParam(knob(k))->GetNormalized());
    }
}
} // namespace
