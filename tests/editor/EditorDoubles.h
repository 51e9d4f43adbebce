#pragma once
// A plug-in base with four parameters that records what the host would hear (begin, perform,
// end), a control that records its draws, and a window of a given size on that plug-in, for the
// toolkit's tests without a display.

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "editor/IControl.h"
#include "editor/IGraphics.h"
#include "editor/IOverlay.h"
#include "host/IPlugBase.h"
#include "params/IParamRecord.h"

namespace editortest
{
enum TestParams
{
    kGain = 0,   // double -12 .. 12 dB
    kMode = 1,   // enum of three texts
    kSwitch = 2, // bool
    kMix = 3,    // double 0 .. 100 %
    kNumTestParams
};

class RecordingPlug : public IPlugBase
{
  public:
    RecordingPlug() : IPlugBase(IPlugConfig{.nParams = kNumTestParams, .channelIOStr = "2-2"})
    {
        GetParam(kGain)->InitDouble("Gain", 0.0, -12.0, 12.0, 0.1, "dB");
        GetParam(kMode)->InitEnum("Mode", 0, 3);
        for (int i = 0; const char* text : {"SOFT", "HARD", "FOLD"})
            GetParam(kMode)->SetDisplayText(i++, text);
        GetParam(kSwitch)->InitBool("Switch", false);
        GetParam(kMix)->InitDouble("Mix", 50.0, 0.0, 100.0, 0.1, "%");
    }
    void BeginInformHostOfParamChange(int id) override { Log('B', id); }
    void InformHostOfParamChange(int id, double normalized) override { Log('P', id, normalized); }
    void EndInformHostOfParamChange(int id) override { Log('E', id); }
    void Log(char what, int id, double v = -1.0)
    {
        mLog.push_back(what + std::to_string(id));
        mLastPerformed = what == 'P' ? v : mLastPerformed;
    }
    // The log without repeated performs: "B0 P0 E0" for any number of moves in one gesture.
    std::string Gestures() const
    {
        std::string out, last;
        for (const std::string& e : mLog)
            if (e != last || e[0] != 'P') out += (out.empty() ? "" : " ") + (last = e);
        return out;
    }

    std::vector<std::string> mLog;
    double mLastPerformed = -1.0;
};

// Draws nothing but remembers the order of draws in a shared list.
class RecordingControl : public IControl
{
  public:
    RecordingControl(IPlugBase* plug, const IRECT& r, int id, std::vector<int>* drawn, int tag)
        : IControl(plug, r, id), mDrawn(drawn), mTag(tag)
    {
    }
    void Draw(IGraphics*) override { mDrawn->push_back(mTag); }
    void OnMouseDown(int x, int y, const IMouseMod& mod) override
    {
        ++mDowns;
        IControl::OnMouseDown(x, y, mod);
    }

    std::vector<int>* mDrawn;
    int mTag;
    int mDowns = 0;
};

// A strip whose bitmap failed to load: its size and frame count, no raster.
inline const auto FakeStrip = [](int w, int frameH, int frames) {
    return IBitmap{{}, w, frameH * frames, frames};
};
inline const auto Left = [] { return IMouseMod{.L = true}; };
inline const auto Right = [] { return IMouseMod{.R = true}; };

// Picks row `i` of the open list's first level with the mouse, as a user does.
inline void PickRow(IGraphics& g, int i)
{
    auto* popup = dynamic_cast<IPopupOverlay*>(g.ModalOverlay());
    ASSERT_NE(popup, nullptr);
    const IRECT r = popup->ItemRect(0, i);
    g.OnMouseOver(r.L + 4, r.T + 4, IMouseMod());
    g.OnMouseDown(r.L + 4, r.T + 4, Left());
    g.OnMouseUp(r.L + 4, r.T + 4, Left());
}

// The recording plug-in behind a window of W x H layout pixels.
template <int W, int H> struct Window : ::testing::Test
{
    RecordingPlug plug;
    IGraphics graphics{&plug, W, H, 25};

    template <typename C> C* Attach(C* c) { return graphics.AttachControl(c), c; }
    void Click(int x, int y, const IMouseMod& mod = Left())
    {
        graphics.OnMouseDown(x, y, mod);
        graphics.OnMouseUp(x, y, mod);
    }
    // Draws what is pending and forgets what the host heard so far.
    void Settle()
    {
        graphics.OnTimerTick();
        plug.mLog.clear();
    }
    std::uint32_t Pixel(int x, int y)
    {
        return graphics.Raster().Pixels()[y * (graphics.Raster().Stride() / 4) + x];
    }
    int Red(int x, int y) { return static_cast<int>((Pixel(x, y) >> 16) & 0xFF); }
    // Pixels of r whose red is above half.
    int RedPixels(const IRECT& r)
    {
        int n = 0;
        for (int y = r.T; y < r.B; ++y)
            for (int x = r.L; x < r.R; ++x)
                n += Red(x, y) > 128;
        return n;
    }
};
} // namespace editortest
