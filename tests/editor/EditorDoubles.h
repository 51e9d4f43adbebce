#pragma once
// A plug-in base with four parameters that records what the host would hear (begin, perform,
// end), a control that records its draws, and a window of a given size on that plug-in, for the
// toolkit's tests without a display.

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "editor/IControl.h"
#include "editor/IGraphics.h"
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
        GetParam(kMode)->SetDisplayText(0, "SOFT");
        GetParam(kMode)->SetDisplayText(1, "HARD");
        GetParam(kMode)->SetDisplayText(2, "FOLD");
        GetParam(kSwitch)->InitBool("Switch", false);
        GetParam(kMix)->InitDouble("Mix", 50.0, 0.0, 100.0, 0.1, "%");
    }
    void BeginInformHostOfParamChange(int id) override { Log('B', id); }
    void InformHostOfParamChange(int id, double normalized) override
    {
        Log('P', id);
        mLastPerformed = normalized;
    }
    void EndInformHostOfParamChange(int id) override { Log('E', id); }
    void Log(char what, int id)
    {
        std::string entry(1, what);
        entry.append(std::to_string(id));
        mLog.push_back(entry);
    }

    // The log without repeated performs: "B0 P0 E0" for any number of moves in one gesture.
    std::string Gestures() const
    {
        std::string out;
        std::string last;
        for (const std::string& e : mLog)
        {
            if (e == last && e[0] == 'P') continue;
            if (!out.empty()) out.push_back(' ');
            out.append(e);
            last = e;
        }
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
    void Draw(IGraphics*) override
    {
        if (mDrawn) mDrawn->push_back(mTag);
    }
    void OnMouseDown(int x, int y, const IMouseMod& mod) override
    {
        ++mDowns;
        IControl::OnMouseDown(x, y, mod);
    }
    void OnMouseDrag(int x, int y, int dX, int dY, const IMouseMod&) override { mDrags += 1; }
    void OnMouseUp(int, int, const IMouseMod&) override { ++mUps; }

    std::vector<int>* mDrawn;
    int mTag;
    int mDowns = 0, mDrags = 0, mUps = 0;
};

inline IBitmap FakeStrip(int w, int frameH, int frames)
{
    IBitmap b;
    b.W = w;
    b.H = frameH * frames;
    b.N = frames;
    return b;
}

inline IMouseMod Left()
{
    IMouseMod m;
    m.L = true;
    return m;
}
inline IMouseMod Right()
{
    IMouseMod m;
    m.R = true;
    return m;
}

// The recording plug-in behind a window of W x H layout pixels.
template <int W, int H> struct Window : ::testing::Test
{
    RecordingPlug plug;
    IGraphics graphics{&plug, W, H, 25};

    template <typename C> C* Attach(C* c)
    {
        graphics.AttachControl(c);
        return c;
    }
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
        IRaster& r = graphics.Raster();
        return r.Pixels()[y * (r.Stride() / 4) + x];
    }
    int Red(int x, int y) { return static_cast<int>((Pixel(x, y) >> 16) & 0xFF); }
};
} // namespace editortest
