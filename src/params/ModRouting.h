#pragma once
// Modulation routing. There is no matrix: every modulatable destination holds a pointer to one
// source buffer (or null) and a depth, and combines them with its base value when it needs it.
//
// ModSourceBank owns the 14 source buffers of 32 doubles (LFO1-4, GATE1-4, ENV1-2, LOGIC1-4);
// each modulator rewrites its buffer at the end of a block, so every consumer reads it one block
// late. ModRouting keeps one route (source pointer, depth) per member of each modulated family and
// turns the ModSource/ModDepth parameters into them; its block-rate helpers give the slot path its
// modulated input gain, feedback, delay times, pan, level and send.
//
// Threads: OnParamChange and OnRateChange store scalars and pointers only (parameter thread, or the
// audio thread's sample-rate reset); the readers run on the audio thread. Buffers live as long as
// the bank, so a stored pointer never dangles. Nothing here allocates.

#include "dsp/Relaxed.h"
#include "dsp/TimeBase.h"

#include <array>
#include <atomic>

// ---- Sources ----

// Index of the "ModSourceList" value list; 0 is "OFF".
enum ModSourceIndex : int
{
    kModSourceOff = 0,
    kModSourceLFO1 = 1,    // .. LFO4 = 4
    kModSourceGate1 = 5,   // .. GATE4 = 8
    kModSourceEnv1 = 9,    // ENV2 = 10: there are two envelopes
    kModSourceLogic1 = 11, // .. LOGIC4 = 14
    kNumModSources = 15
};

class ModSourceBank
{
  public:
    // The buffer of a source, or null for "OFF" and any index outside 1..14.
    const double* SourceBuffer(int index) const;
    // The same buffer for the modulator that fills it.
    double* Buffer(int index) { return const_cast<double*>(SourceBuffer(index)); }

  private:
    alignas(64) double mBuffers[kNumModSources - 1][gBlockLen] = {};
};

// ---- Combiner and depth laws ----

// Base plus depth x source, within low..high. count <= 1: works on *base, or copies it to *result
// first and works there; clamps only when a source is set. count > 1: result (or, without one, the
// block at base) holds base + depth x source[i], limited above by high, then below by low.
void modulate(const double* source, double depth, double* base, double* result, int count, double low,
              double high);

// A depth knob's percent v (-100..100) to the stored depth. The cube makes small depths fine and
// keeps the sign.
inline double CubedDepth(double percent)
{
    const double x = percent * 0.01;
    return x * x * x;
}
inline double LinearDepth(double percent)
{
    return percent * 0.01;
}

enum class DepthLaw
{
    kCube,          // (v/100)^3
    kHalfCube,      // (v/100)^3 x 0.5: tap step time, in seconds
    kLinear,        // v/100
    kSamples,       // sampleRate x (v/100)^3 x 0.025: up to 25 ms, in samples
    kSamplesNegated // as kSamples with the sign flipped, for the right delay's time input
};
double DepthFromPercent(DepthLaw law, double percent);

// ---- Families ----

// Which of a slot's two delay modules a family is wired into.
enum class DelaySide
{
    kNone,
    kLeft,
    kRight,
    kBoth
};

// One modulated family: `width` consecutive destinations, each with a depth parameter and a source
// parameter at depthId + member and sourceId + member. valueId is the first id of the parameter
// driven (-1 for the logic modules' inputs, which drive no parameter).
struct ModFamily
{
    const char* name;
    int valueId;
    int depthId;
    int sourceId;
    int width;
    DepthLaw law;
    int delayInput; // modulation input of the slot's QLMMultiDelay, -1 when the engine reads it itself
    DelaySide delaySide;
};

enum ModFamilyId : int
{
    kModInputGain,
    kModPanning,
    kModFeedback,
    kModLevel,
    kModSend,
    kModDelayTimeL,
    kModDelayTimeR,
    kModTapsTime,
    kModDelaySpread,
    kModGrainSize,
    kModGrainSpeed,
    kModGrainPosition,
    kModLfoRate,
    kModFxParam1, // .. kModFxParam5; member = position x 4 + slot (PR, FB, PO)
    kModFxParam2,
    kModFxParam3,
    kModFxParam4,
    kModFxParam5,
    kModLogicSource1,
    kModLogicSource2,
    kModLogicDepth,
    kNumModFamilies
};

const ModFamily& GetModFamily(ModFamilyId family);

// What a parameter id is to the routing, if anything.
struct ModParamRef
{
    ModFamilyId family = kNumModFamilies; // kNumModFamilies: not a routing parameter
    int member = 0;
    bool isSource = false;
    bool Found() const { return family != kNumModFamilies; }
};
ModParamRef FindModParam(int id);

// ---- Routes ----

class ModRoute
{
  public:
    ModRoute() = default;
    ModRoute(const ModRoute&) = delete;
    ModRoute& operator=(const ModRoute&) = delete;

    const double* Source() const { return mSource; }
    int SourceIndex() const { return mSourceIndex; }
    double Depth() const
    {
        return std::atomic_ref<double>(const_cast<double&>(mDepth)).load(std::memory_order_relaxed);
    }
    // For modules that read their depth through a pointer (DSPShell::SetModDepth); the address is
    // fixed for the life of the routing.
    const double* DepthPointer() const { return &mDepth; }
    // Present source value times depth, 0 with no source: the block-rate read of sample 0.
    double Offset() const;

  private:
    friend class ModRouting;
    void SetDepth(double d) { std::atomic_ref<double>(mDepth).store(d, std::memory_order_relaxed); }

    Relaxed<const double*> mSource{nullptr};
    Relaxed<int> mSourceIndex{kModSourceOff};
    Relaxed<double> mPercent{0.0};
    alignas(std::atomic_ref<double>::required_alignment) double mDepth = 0.0;
};

struct DelayTimePair
{
    double left;
    double right;
};

class ModRouting
{
  public:
    static constexpr double kMaxGain = 4.0;         // input gain and level
    static constexpr double kMaxFeedback = 1.6;     // 160 %
    static constexpr double kShortestDelay = 0.001; // samples

    explicit ModRouting(const ModSourceBank& bank) : mBank(bank) {}
    ModRouting(const ModRouting&) = delete;
    ModRouting& operator=(const ModRouting&) = delete;

    // Parameter thread: a ModSource value (list index) stores the buffer pointer, a ModDepth value
    // (percent) the depth by its family's law. Returns the reference when the id is one of the
    // routing's, so that the caller can pass the route on to a module; "OFF" keeps the depth.
    ModParamRef OnParamChange(int id, double value);
    // After a sample-rate reset: depths held in samples follow the new rate.
    void OnRateChange();

    const ModRoute& Route(ModFamilyId family, int member) const;

    // Audio thread, once per block, slot 0..3. Each reads sample 0 of its source.
    // Input gain: base (linear x trim) modulated within 0..4; the caller applies the fade.
    double InputGainTarget(int slot, double base) const;
    // Feedback: base (Feedback/100 + the master scale) plus modulation, always within 0..1.6.
    double FeedbackAmount(int slot, double base) const;
    // Delay times in samples (unit x time + spread): the spread modulation lengthens the left and
    // shortens the right by the same amount; both stay at 0.001 samples or more.
    DelayTimePair DelayTimes(int slot, double left, double right) const;
    // Pan (-1..1) and level (linear, 0..4) targets for the slot's smoothers.
    double PanTarget(int slot, double base) const;
    double LevelTarget(int slot, double base) const;
    // Master send (M-FX Send/100) plus modulation, always within 0..1.
    double SendLevel(int slot, double base) const;

    // Thirteen four-wide families, five twelve-wide effect families, three four-wide logic ones.
    static constexpr int kNumRoutes = 13 * 4 + 5 * 12 + 3 * 4;

  private:
    ModRoute& MutableRoute(ModFamilyId family, int member);
    double Modulated(ModFamilyId family, int slot, double base, double low, double high) const;

    const ModSourceBank& mBank;
    std::array<ModRoute, kNumRoutes> mRoutes;
};
