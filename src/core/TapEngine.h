#pragma once
// The multi-tap echo of one slot in TAPPED mode: up to 16 read heads on the slot's two delay lines,
// spaced by per-tap time steps with swing, each with its own level and pan, with "swell" pre-echoes
// on a square-law grid in front of each tap, one tap that feeds back and per-tap POST effects.
// It owns only parameter caches; the lines, the stage buffers and the effects belong to the slot.
//
// Threads: the setters come from the parameter path (OnParamChange, state restore) and only store
// Relaxed scalars; Process runs on the audio thread, never allocates and reads every cache fresh.

#include "delay/QLMMultiDelay.h"
#include "dsp/Relaxed.h"

#include <cstdint>
#include <limits>

inline constexpr int kNumTaps = kMaxDelayTaps;

// "Tap Pan Mode ".
enum TapPanMode
{
    kTapPanStereo = 0,
    kTapPanDualMono = 1,
    kTapPanLeft = 2,
    kTapPanRight = 3,
};

// The effect calls the tap engine makes into its slot. Audio thread only.
class ITapFx
{
  public:
    virtual ~ITapFx() = default;
    // POST module `index` on one block, in place: 2 x tap for the left side, 2 x tap + 1 the right.
    virtual void RunTapFx(double* buffer, int index) = 0;
    // The FB module pair (index -1) on the feedback pair, in place.
    virtual void RunFeedbackFx(double* left, double* right) = 0;
};

// One block's connection to the slot. Every pointer is a block of 32 doubles.
struct TapBlockIO
{
    double* postL = nullptr; // out: the tapped mix (cleared first)
    double* postR = nullptr;
    double* dlyL = nullptr; // out: the last tap's read, or the whole mix with DI out ALL
    double* dlyR = nullptr;
    double* fbOutL = nullptr; // out: the feedback tap's read, already times fbL
    double* fbOutR = nullptr;
    double* tapL = nullptr; // scratch of the slot (its mTapL, mTapR)
    double* tapR = nullptr;
    double stepSamples = 0.0; // samples per tap step, time base and time scale included
    double modL = 0.0;        // main modulation of each side, in samples
    double modR = 0.0;
    double fbL = 0.0;          // the slot's feedback gain; the left one serves both sides here
    double wet = 1.0;          // delay side of "Direct In "
    bool postFxOn = false;     // POST type not OFF and "FXOn PO " on
    bool fbFxOn = false;       // FB type not OFF and "FXOn FB " on
    bool postSwapping = false; // the POST position is being replaced: skip the effects
    ITapFx* fx = nullptr;      // null: nothing to run
};

class TapEngine
{
  public:
    TapEngine();
    TapEngine(const TapEngine&) = delete;
    TapEngine& operator=(const TapEngine&) = delete;

    // Audio thread. Reads every tap, fills the stage buffers of `io` and answers whether the POST
    // effect ran per tap, in which case the slot leaves out its POST effect over the whole signal.
    bool Process(QLMMultiDelay& left, QLMMultiDelay& right, const TapBlockIO& io);

    // Parameter path; each takes the parameter's own value and applies its law.
    void SetTapCount(int index);            // "DelayTaps ": index of the last tap
    void SetFeedbackTap(int value);         // "DelayTap FB ": 0 follows the last tap, v is tap v - 1
    void SetDiOut(int value);               // "DelayTap DI Out ": 0 LAST, 1 ALL
    void SetPanMode(int mode);              // "Tap Pan Mode "
    void SetTimeStepDepth(double percent);  // "Tap Time Step Depth "
    void SetLevelStepDepth(double percent); // "Tap Level Step Depth "
    void SetPanWidth(double percent);       // "Tap Pan Width "
    void SetSwing(double percent);          // "Delay Taps Swing "
    void SetSwell(double percent);          // "Delay Taps Swell "
    void SetTimeStep(int tap, double percent);
    void SetLevelStep(int tap, double percent);
    void SetPanStep(int tap, double percent); // -100..100
    void SetFxParam(int row, int choice);     // "Tap FX Param1 ", "Tap FX Param2 ": 0 none
    // Bit t of `mask` switches tap t of channel 0 (left) or 1 (right).
    void SetTapMask(int channel, std::uint32_t mask);
    // Bit t: the POST effect runs on tap t.
    void SetFxMask(std::uint32_t mask);

    // The caches, in their engine units.
    Relaxed<bool> tapOnL[kNumTaps];
    Relaxed<bool> tapOnR[kNumTaps];
    Relaxed<bool> tapFxOn[kNumTaps];
    Relaxed<double> tapTimeStep[kNumTaps];
    Relaxed<double> tapLevelStep[kNumTaps];
    Relaxed<double> tapPanStep[kNumTaps];
    Relaxed<int> tapCount{7};
    Relaxed<int> fbTapChoice{0};
    Relaxed<int> tapDiOut{0};
    Relaxed<int> tapPanMode{kTapPanStereo};
    Relaxed<double> tapTimeDepth{0.0};
    Relaxed<double> tapLevelDepth{0.0};
    Relaxed<double> tapPanDepth{1.0};
    Relaxed<double> tapSwing{0.0};
    Relaxed<double> tapSwell{0.0};
    Relaxed<int> tapFxParam[2];

    // The tap that feeds back, from "DelayTap FB " and the tap count.
    int FeedbackTap() const;

    // For the editor's tap numbers: while on, each block notes the sounding tap with the loudest
    // contribution (after its level and pan), or -1 below -80 dB. Off, it costs nothing.
    Relaxed<bool> trackPlaying{false};
    // Audio thread, after the block: the tap noted, then -1 until a block notes one again (a slot
    // in another mode plays no tap).
    int TakePlayingTap()
    {
        const int tap = mPlayingTap;
        mPlayingTap = -1;
        return tap;
    }

  private:
    // The pre-echoes of a tap at `acc` samples in one line: where each one's block starts in the
    // line's memory. They are the first `count` of the grid, whose gains they take.
    static constexpr int kMaxSwellEchoes = 16;
    struct SwellEchoes
    {
        int start[kMaxSwellEchoes];
        int count = 0;
    };
    void FindSwell(double acc, const QLMMultiDelay& line, SwellEchoes& echoes) const;
    // buffer = the tap's read plus its pre-echoes, read straight from the line's memory.
    void AddSwell(const QLMMultiDelay& line, const SwellEchoes& echoes, const double* read,
                  double* buffer) const;
    // The grid depends on the swell alone: laid out again only when it moves.
    void LayOutSwellGrid(double swell);

    // One tap of the running block: where it reads, what it plays and at which gains.
    struct TapPlan
    {
        double acc, gainA, gainB;
        float delayL, delayR;
        bool onL, onR, readL, readR, fx, skip;
    };
    // Every read of the block into mRead.
    void ReadTaps(QLMMultiDelay& left, QLMMultiDelay& right, const TapPlan* plan, int last);
    // Each tap's read, left and right.
    double mRead[kNumTaps][2][gBlockLen] = {};

    // The pre-echo grid of the swell in force: how far each pre-echo lies before its tap, and its
    // gain. NaN never equals itself, so the first block always lays the grid out.
    double mGridSwell = std::numeric_limits<double>::quiet_NaN();
    double mGridOffset[kMaxSwellEchoes] = {};
    double mGridGain[kMaxSwellEchoes] = {};
    int mGridCount = 0;
    Relaxed<int> mPlayingTap{-1};
};
