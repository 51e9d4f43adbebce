#include "params/ParamCatalogue.h"

#include "params/ValueLists.h"

#include <string>
#include <utility>

namespace
{
enum class EKind : unsigned char
{
    kDouble,
    kInt,  // integer; with a list, the list gives its display texts
    kEnum, // range 0..list size - 1, texts from the list
    kBool
};

// One family of consecutive ids. The name pattern holds placeholders for the member's position:
//   '#'  member number 1..count; in twelve-wide rows the slot number 1..4,
//   '@'  position text " PR", " FB", " PO" of twelve-wide rows (index = position * 4 + slot),
//   '$'  step number 1..16 of 64-wide rows (index = 16 * (gate - 1) + step - 1; '#' is the gate),
//   '~'  logic module number of the logic doubles, which names module 2 after module 3.
struct FamilyRow
{
    int id;
    int count;
    const char* pattern;
    EKind kind;
    EValueList list;
    double defaultVal;
    double min;
    double max;
    double step;
    const char* unit;
    double shape;
    const char* group;
    bool linked;
};

constexpr FamilyRow Double(int id, int count, const char* pattern, double def, double min, double max,
                           double step, const char* unit, double shape, const char* group = "",
                           bool linked = false)
{
    return {id,   count, pattern, EKind::kDouble, EValueList::kNone, def, min, max, step,
            unit, shape, group,   linked};
}

constexpr FamilyRow Int(int id, int count, const char* pattern, int def, int min, int max, const char* unit,
                        bool linked = false)
{
    return {id,   count, pattern, EKind::kInt, EValueList::kNone, double(def), double(min), double(max), 1.0,
            unit, 1.0,   "",      linked};
}

constexpr FamilyRow IntList(int id, int count, const char* pattern, EValueList list, int def, int min,
                            int max)
{
    return {id,          count, pattern, EKind::kInt, list, double(def), double(min),
            double(max), 1.0,   "",      1.0,         "",   false};
}

constexpr FamilyRow Enum(int id, int count, const char* pattern, EValueList list, int def)
{
    return {id, count, pattern, EKind::kEnum, list, double(def), 0.0, 0.0, 1.0, "", 1.0, "", false};
}

constexpr FamilyRow Bool(int id, const char* pattern, bool def)
{
    return {id, 1,   pattern, EKind::kBool, EValueList::kNone, def ? 1.0 : 0.0, 0.0, 1.0, 1.0,
            "", 1.0, "",      false};
}

using L = EValueList;

// clang-format off
constexpr FamilyRow kFamilies[] = {
    IntList(kSlotOn1, 4, "SlotOn #", L::kOnOff, 0, 0, 1),
    IntList(kDelayOn1, 4, "DelayOn #", L::kOnOff, 1, 0, 1),
    Enum(kDirectOut1, 4, "Direct Out #", L::kDirectOut, 3),
    Enum(kInput1, 1, "Input 1", L::kSlotInput1, 0),
    Enum(kInput2, 1, "Input 2", L::kSlotInput2, 0),
    Enum(kInput3, 1, "Input 3", L::kSlotInput3, 0),
    Enum(kInput4, 1, "Input 4", L::kSlotInput4, 0),
    Double(kDirectIn1, 4, "Direct In #", 0, 0, 100, 0.1, "%", 1),
    Double(kModulation1, 4, "Modulation #", 100, 0, 100, 0.1, "%", 1),
    Enum(kMasterFXSource1, 4, "Master FX Source #", L::kMasterFxSource, 4),
    IntList(kPanPosition1, 4, "PanPosition #", L::kOnOff, 0, 0, 1),
    Double(kWidth1, 4, "Width #", 100, 0, 100, 0.1, "%", 1),
    Enum(kOutputMode1, 4, "Output Mode #", L::kOutputMode, 0),
    Double(kLROffset1, 4, "L/R Offset #", 0, -25, 25, 0.01, "ms", 1),
    Double(kInputGain1, 4, "Input Gain #", -3, -60, 12, 0.1, "dB", 0.5),
    Double(kInputGainModDepth1, 4, "Input Gain ModDepth #", 0, -100, 100, 0.1, "%", 1),
    Enum(kInputGainModSource1, 4, "InputGain ModSource#", L::kModSource, 0),
    Double(kPanning1, 4, "Panning #", 0, -100, 100, 0.1, "%", 1),
    Double(kPanningModDepth1, 4, "Panning ModDepth #", 0, -100, 100, 0.1, "%", 1),
    Enum(kPanningModSource1, 4, "Panning ModSource#", L::kModSource, 0),
    Double(kFeedback1, 4, "Feedback #", 50, 0, 160, 0.1, "%", 1),
    Double(kFeedbackModDepth1, 4, "Feedback ModDepth #", 0, -100, 100, 0.1, "%", 1),
    Enum(kFeedbackModSource1, 4, "Feedback ModSource#", L::kModSource, 0),
    Double(kLevel1, 4, "Level #", -3, -60, 12, 0.1, "%", 0.5),
    Double(kLevelModDepth1, 4, "Level ModDepth #", 0, -100, 100, 0.1, "%", 1),
    Enum(kLevelModSource1, 4, "Level ModSource#", L::kModSource, 0),
    Double(kMFXSend1, 4, "M-FX Send #", 50, 0, 100, 0.1, "%", 1),
    Double(kMFXSendModDepth1, 4, "M-FX Send ModDepth #", 0, -100, 100, 0.1, "%", 1),
    Enum(kMFXSendModSource1, 4, "M-FX Send ModSource#", L::kModSource, 0),
    Enum(kFX1PR, 4, "FX# PR", L::kFxType, 0),
    Enum(kFX1FB, 4, "FX# FB", L::kFxFeedbackType, 0),
    Enum(kFX1PO, 4, "FX# PO", L::kFxType, 0),
    Double(kFXParam1PR1, 12, "FXParam1 #@", 0, 0, 100, 0.01, "%", 1),
    Double(kFXParam1ModDepthPR1, 12, "FXParam1 ModDepth #@", 0, -100, 100, 0.01, "%", 1),
    Enum(kFXParam1ModSourcePR1, 12, "FXParam1 ModSource#@", L::kModSource, 0),
    Double(kFXParam2PR1, 12, "FXParam2 #@", 0, 0, 100, 0.01, "%", 1),
    Double(kFXParam2ModDepthPR1, 12, "FXParam2 ModDepth #@", 0, -100, 100, 0.01, "%", 1),
    Enum(kFXParam2ModSourcePR1, 12, "FXParam2 ModSource#@", L::kModSource, 0),
    Double(kFXParam3PR1, 12, "FXParam3 #@", 0, 0, 100, 0.01, "%", 1),
    Double(kFXParam3ModDepthPR1, 12, "FXParam3 ModDepth #@", 0, -100, 100, 0.01, "%", 1),
    Enum(kFXParam3ModSourcePR1, 12, "FXParam3 ModSource#@", L::kModSource, 0),
    Double(kFXParam4PR1, 12, "FXParam4 #@", 0, 0, 100, 0.01, "%", 1),
    Double(kFXParam4ModDepthPR1, 12, "FXParam4 ModDepth #@", 0, -100, 100, 0.01, "%", 1),
    Enum(kFXParam4ModSourcePR1, 12, "FXParam4 ModSource#@", L::kModSource, 0),
    Double(kFXParam5PR1, 12, "FXParam5 #@", 0, 0, 100, 0.01, "%", 1),
    Double(kFXParam5ModDepthPR1, 12, "FXParam5 ModDepth #@", 0, -100, 100, 0.01, "%", 1),
    Enum(kFXParam5ModSourcePR1, 12, "FXParam5 ModSource#@", L::kModSource, 0),
    IntList(kFXOnPR1, 4, "FXOn PR #", L::kOnOff, 0, 0, 1),
    IntList(kFXOnFB1, 4, "FXOn FB #", L::kOnOff, 0, 0, 1),
    IntList(kFXOnPO1, 4, "FXOn PO #", L::kOnOff, 0, 0, 1),
    Enum(kDelayMode1, 4, "Delay Mode #", L::kDelayMode, 0),
    Enum(kDelayRoute1, 4, "Delay Route #", L::kDelayRoute, 0),
    Enum(kDelayTaps1, 4, "DelayTaps #", L::kTapCount, 7),
    Enum(kDelayTapFB1, 4, "DelayTap FB #", L::kTapFeedback, 0),
    IntList(kFBProportional1, 4, "FBProportional #", L::kOnOff, 0, 0, 1),
    Enum(kTimebase1, 4, "Timebase #", L::kTimebase, 2),
    Enum(kTapTimebase1, 4, "TapTimebase #", L::kTimebase, 0),
    Int(kDelayFactorL1, 4, "DelayFactorL #", 4, 1, 16, "Count", true),
    Int(kDelayFactorR1, 4, "DelayFactorR #", 4, 1, 16, "Count", true),
    Double(kDelayTimeL1, 4, "Delay TimeL #", 500, 1, 4000, 0.01, "ms", 3),
    Double(kDelayTimeLModDepth1, 4, "Delay TimeL ModDepth #", 0, -100, 100, 0.01, "%", 1),
    Enum(kDelayTimeLModSource1, 4, "DelayTimeL ModSource#", L::kModSource, 0),
    Double(kDelayTimeR1, 4, "Delay TimeR #", 500, 1, 4000, 0.01, "ms", 3),
    Double(kDelayTimeRModDepth1, 4, "Delay TimeR ModDepth #", 0, -100, 100, 0.01, "%", 1),
    Enum(kDelayTimeRModSource1, 4, "DelayTimeR ModSource#", L::kModSource, 0),
    Enum(kTapFXParam1_1, 4, "Tap FX Param1 #", L::kTapFxParam, 0),
    Enum(kTapFXParam2_1, 4, "Tap FX Param2 #", L::kTapFxParam, 0),
    Enum(kTapFXParam1Steps1, 4, "Tap FX Param1 Steps #", L::kStepCount, 0),
    Enum(kTapFXParam2Steps1, 4, "Tap FX Param2 Steps #", L::kStepCount, 0),
    Double(kTapDelay1Step1Time, 64, "TapDelay# Step$ Time", 100, 0, 100, 0.1, "%", 1),
    Double(kTapDelay1Step1Level, 64, "TapDelay# Step$ Level", 100, 0, 100, 0.1, "%", 1),
    Double(kTapDelay1Step1Pan, 64, "TapDelay# Step$ Pan", 0, -100, 100, 0.1, "%", 1),
    Double(kTapDelay1Step1FXP1, 64, "TapDelay# Step$ FX P1", 0, 0, 100, 0.1, "%", 1),
    Double(kTapDelay1Step1FXP2, 64, "TapDelay# Step$ FX P2", 0, 0, 100, 0.1, "%", 1),
    Double(kTapTimeStepDepth1, 4, "Tap Time Step Depth #", 100, 0, 100, 0.01, "%", 1),
    Double(kTapLevelStepDepth1, 4, "Tap Level Step Depth #", 100, 0, 100, 0.01, "%", 1),
    Double(kTapPanWidth1, 4, "Tap Pan Width #", 100, 0, 100, 0.01, "%", 1),
    Double(kTapFXP1StepDepth1, 4, "Tap FX P1 Step Depth #", 100, 0, 100, 0.01, "%", 1),
    Double(kTapFXP2StepDepth1, 4, "Tap FX P2 Step Depth #", 100, 0, 100, 0.01, "%", 1),
    Enum(kTapTimeSteps1, 4, "Tap Time Steps #", L::kStepCount, 0),
    Enum(kTapLevelSteps1, 4, "Tap Level Steps #", L::kStepCount, 0),
    Enum(kTapPanSteps1, 4, "Tap Pan Steps #", L::kStepCount, 0),
    Enum(kTapPanMode1, 4, "Tap Pan Mode #", L::kTapPanMode, 0),
    Enum(kDelayTapDIOut1, 4, "DelayTap DI Out #", L::kTapDirectOut, 0),
    Double(kDelayTapsTime1, 4, "Delay Taps Time #", 50, 1, 500, 0.01, "ms", 2),
    Double(kDelayTapsTimeModDepth1, 4, "Delay Taps Time ModDepth #", 0, -100, 100, 0.01, "%", 1),
    Enum(kDelayTapsTimeModSource1, 4, "DelayTapsTime ModSource#", L::kModSource, 0),
    Double(kDelayTapsSwell1, 4, "Delay Taps Swell #", 0, 0, 100, 0.01, "%", 1),
    IntList(kDelayLRLink1, 4, "DelayL/R Link #", L::kOnOff, 0, 0, 1),
    Double(kDelaySpread1, 4, "Delay Spread #", 0, -20, 20, 0.01, "ms", 1),
    Double(kDelayModDepth1, 4, "Delay ModDepth #", 0, -100, 100, 0.01, "%", 1),
    Enum(kDelaySpreadModSource1, 4, "DelaySpread ModSource#", L::kModSource, 0),
    Double(kDelayLopass1, 4, "Delay Lopass #", 7500, 200, 20000, 0.1, "Hz", 4),
    Double(kDelayHipass1, 4, "Delay Hipass #", 20, 20, 3000, 0.1, "Hz", 4),
    Double(kGrainSize1, 4, "Grain Size #", 100, 1, 400, 0.01, "ms", 2),
    Double(kGrainSizeModDepth1, 4, "Grain Size ModDepth #", 0, -100, 100, 0.01, "%", 1),
    Enum(kGrainSizeModSource1, 4, "GrainSize ModSource#", L::kModSource, 0),
    Double(kGrainSpeed1, 4, "Grain Speed #", 0, -2, 2, 0.01, "2^", 1),
    Double(kGSpeedModDepth1, 4, "G-Speed ModDepth #", 0, -100, 100, 0.01, "%", 1),
    // Named after the spread but paired with Grain Speed; the stored name stays.
    Enum(kGrainSpreadModSource1, 4, "GrainSpread ModSource#", L::kModSource, 0),
    Double(kGrainPosition1, 4, "Grain Position #", 0, 0, 100, 0.01, "%", 1),
    Double(kGPositionModDepth1, 4, "G-Position ModDepth #", 0, -100, 100, 0.01, "%", 1),
    // Named after the speed but paired with Grain Position; the stored name stays.
    Enum(kGrainSpeedModSource1, 4, "GrainSpeed ModSource#", L::kModSource, 0),
    Double(kGrainFade1, 4, "Grain Fade #", 0, 0, 50, 0.01, "ms", 2),
    Enum(kReverseDelayTrigger1, 4, "Reverse Delay Trigger #", L::kReverseTrigger, 0),
    Double(kReverseXFade1, 4, "Reverse X-Fade #", 10, 1, 1000, 0.01, "ms", 2),
    IntList(kLFOOn1, 4, "LFO On #", L::kOnOff, 0, 0, 1),
    Enum(kLFOWave1, 4, "LFO Wave #", L::kWave, 0),
    Enum(kLFOPol1, 4, "LFO Pol #", L::kPolarity, 0),
    Enum(kLFOSync1, 4, "LFO Sync #", L::kLfoSync, 0),
    IntList(kLFOSwap1, 4, "LFO Swap #", L::kOnOff, 0, 0, 1),
    IntList(kLFOReverse1, 4, "LFO Reverse #", L::kOnOff, 0, 0, 1),
    Enum(kLFOMode1, 4, "LFO Mode #", L::kLfoMode, 0),
    Enum(kLFOTrigger1, 4, "LFO Trigger #", L::kLfoTrigger, 0),
    Double(kLFORate1, 4, "LFO Rate #", 0.5, 0.001, 500, 0.01, "Hz", 4, "lfo_rate", true),
    Double(kLFOFreqModDepth1, 4, "LFO Freq ModDepth #", 0, -100, 100, 0.1, "%", 1),
    Enum(kLFOFreqModSource1, 4, "LFO Freq ModSource#", L::kModSource, 0),
    Double(kLFODepth1, 4, "LFO Depth #", 50, 0, 100, 0.01, "%", 1),
    Double(kLFOPhase1, 4, "LFO Phase #", 0, 0, 100, 0.01, "%", 1),
    Double(kLFOGlide1, 4, "LFO Glide #", 10, 1, 2000, 0.01, "ms", 2),
    Int(kGate1Length, 4, "Gate# Length", 8, 1, 16, "Steps"),
    IntList(kGate1On, 4, "Gate# On", L::kOnOff, 0, 0, 1),
    Enum(kGate1Timebase, 4, "Gate# Timebase", L::kGateTimebase, 0),
    Enum(kGate1Direction, 4, "Gate# Direction", L::kGateDirection, 0),
    IntList(kGate1Sync, 4, "Gate# Sync", L::kOnOff, 0, 0, 1),
    Double(kGate1Glide, 4, "Gate# Glide", 0, 0, 2000, 0.1, "%", 2),
    Double(kGate1Depth, 4, "Gate# Depth", 100, 0, 100, 0.1, "%", 1),
    Enum(kGATEPol1, 4, "GATE Pol #", L::kPolarity, 0),
    Enum(kGATESteps1, 4, "GATE Steps #", L::kStepCount, 0),
    Double(kGate1Step1, 64, "Gate# Step$", 0, 0, 100, 0.1, "%", 1),
    IntList(kENV1On, 2, "ENV# On", L::kOnOff, 0, 0, 1),
    Enum(kENV1Mode, 2, "ENV# Mode", L::kEnvMode, 0),
    Enum(kENV1Source, 2, "ENV# Source", L::kEnvSource, 0),
    Double(kENV1Gain, 2, "ENV# Gain", 0, 0, 40, 0.01, "dB", 1),
    Double(kENV1Attack, 2, "ENV# Attack", 10, 0, 5000, 0.01, "ms", 3),
    Double(kENV1Decay, 2, "ENV# Decay", 100, 10, 15000, 0.01, "ms", 3),
    Double(kENV1Hold, 2, "ENV# Hold", 0, 0, 10000, 0.01, "ms", 3),
    Double(kENV1Threshold, 2, "ENV# Threshold", 0, -90, 0, 0.01, "db", 0.5),
    Double(kENV1Locut, 2, "ENV# Locut", 50, 50, 10000, 0.01, "Hz", 3),
    Double(kENV1Hicut, 2, "ENV# Hicut", 20000, 100, 20000, 0.01, "Hz", 3),
    Double(kENV1Depth, 2, "ENV# Depth", 100, 0, 100, 0.01, "%", 1),
    Enum(kENV1Output, 2, "ENV# Output", L::kEnvOutput, 0),
    IntList(kLogicOn1, 4, "Logic On #", L::kOnOff, 0, 0, 1),
    Enum(kLogic1Type, 4, "Logic# Type", L::kLogicType, 0),
    Double(kLogic1Source1Depth, 4, "Logic~ Source1 Depth", 0, -100, 100, 0.01, "%", 1),
    Enum(kLogic1Source1, 4, "Logic# Source1", L::kModSource, 0),
    Double(kLogic1Source2Depth, 4, "Logic~ Source2 Depth", 0, -100, 100, 0.01, "%", 1),
    Enum(kLogic1Source2, 4, "Logic# Source2", L::kModSource, 0),
    Double(kLogic1Smooth, 4, "Logic~ Smooth", 0, 0, 1000, 0.01, "ms", 3),
    Double(kLogic1Depth, 4, "Logic~ Depth", 0, 0, 100, 0.01, "%", 1),
    Double(kLogic1DepthMod, 4, "Logic~ Depth Mod", 0, -100, 100, 0.1, "%", 1),
    Enum(kLogic1DepthModSource, 4, "Logic# Depth ModSource", L::kModSource, 0),
    Enum(kMasterFX, 1, "MasterFX", L::kMasterFxType, 0),
    IntList(kMasterFXBypass, 1, "MasterFX Bypass", L::kOnOff, 0, 0, 1),
    Double(kMasterFXP1, 1, "MasterFX P1", 0, 0, 100, 0.1, "%", 1),
    Double(kMasterFXP2, 1, "MasterFX P2", 0, 0, 100, 0.1, "%", 1),
    Double(kMasterFXP3, 1, "MasterFX P3", 0, 0, 100, 0.1, "%", 1),
    Double(kMasterFXP4, 1, "MasterFX P4", 0, 0, 100, 0.1, "%", 1),
    Double(kMainModRate, 1, "Main ModRate", 30, 0, 100, 0.1, "%", 1),
    Double(kMainModDepth, 1, "Main ModDepth", 50, 0, 100, 0.1, "%", 1),
    Double(kFeedbackMaster, 1, "Feedback Master", 0, -50, 50, 0.1, "%", 1),
    Double(kDelayTimeScale, 1, "Delay Time Scale", 0, -100, 100, 0.1, "%", 1),
    Double(kMasterFXLevel, 1, "MasterFX Level", 75, 0, 200, 0.1, "%", 1),
    IntList(kLimiterOn, 1, "Limiter On", L::kLimiter, 0, 0, 3),
    Double(kLimiterLevel, 1, "Limiter Level", 0, 0, 36, 0.1, "dB", 1),
    Double(kWetLevel, 1, "Wet Level", 75, 0, 100, 0.1, "%", 1),
    Double(kDryLevel, 1, "Dry Level", 75, 0, 100, 0.1, "%", 1),
    Double(kOutputLevel, 1, "Output Level", 0, -12, 12, 0.1, "dB", 1),
    Double(kGlobalWidth, 1, "Global Width", 100, 0, 150, 0.1, "%", 1),
    IntList(kFBMatrix1, 4, "FB Matrix #", L::kOnOff, 0, 0, 1),
    Double(kSlot1FB1, 4, "Slot1 FB #", 0, -100, 100, 0.01, "%", 1),
    Double(kSlot2FB1, 4, "Slot2 FB #", 0, -100, 100, 0.01, "%", 1),
    Double(kSlot3FB1, 4, "Slot3 FB #", 0, -100, 100, 0.01, "%", 1),
    Double(kSlot4FB1, 4, "Slot4 FB #", 0, -100, 100, 0.01, "%", 1),
    Double(kDelayTapsSwing1, 4, "Delay Taps Swing #", 0, 0, 100, 0.01, "%", 1),
    Bool(kNoOp, "NoOp", false),
    Bool(kBP, "BP", false),
};
// clang-format on

// Of the slot switches only the first slot starts on.
struct DefaultOverride
{
    int id;
    double value;
};
constexpr DefaultOverride kDefaultOverrides[] = {{kSlotOn1, 1.0}};

constexpr int kPositions = 3;
constexpr int kSlotsPerPosition = 4;
constexpr int kStepsPerGate = 16;
constexpr const char* kPositionTexts[kPositions] = {" PR", " FB", " PO"};
// Module 2's doubles carry module 3's prefix: two names per pair, kept for stored presets.
constexpr int kLogicDoubleNumbers[4] = {1, 3, 3, 4};

constexpr bool HasChar(const char* s, char c)
{
    for (; *s; ++s)
        if (*s == c) return true;
    return false;
}

constexpr int Length(const char* s)
{
    int n = 0;
    while (s[n])
        ++n;
    return n;
}

// The member count a pattern's placeholders imply, or 0 where any count of serial members fits.
constexpr int CountForPattern(const char* pattern)
{
    if (HasChar(pattern, '@')) return kPositions * kSlotsPerPosition;
    if (HasChar(pattern, '$')) return 4 * kStepsPerGate;
    if (HasChar(pattern, '~')) return 4;
    if (HasChar(pattern, '#')) return 0;
    return 1;
}

constexpr bool RowIsValid(const FamilyRow& row)
{
    const int implied = CountForPattern(row.pattern);
    if (row.count < 1 || (implied != 0 && implied != row.count) || (implied == 0 && row.count == 1))
        return false;
    // The longest member name adds at most five characters to the pattern.
    if (Length(row.pattern) + 5 >= IParamRecord::kTextLen || Length(row.unit) >= IParamRecord::kTextLen)
        return false;
    const auto list = GetValueList(row.list);
    switch (row.kind)
    {
    case EKind::kDouble:
        return row.list == EValueList::kNone && row.step > 0 && row.shape > 0 && row.min < row.max &&
               row.min <= row.defaultVal && row.defaultVal <= row.max;
    case EKind::kInt:
        if (row.list != EValueList::kNone && int(list.size()) != row.max - row.min + 1) return false;
        return row.min < row.max && row.min <= row.defaultVal && row.defaultVal <= row.max;
    case EKind::kEnum:
        if (row.list == EValueList::kWave) return row.defaultVal == 0;
        return list.size() > 1 && row.defaultVal >= 0 && row.defaultVal < double(list.size());
    case EKind::kBool:
        return row.defaultVal == 0 || row.defaultVal == 1;
    }
    return false;
}

constexpr bool TableIsValid()
{
    int next = 0;
    for (const FamilyRow& row : kFamilies)
    {
        if (row.id != next || !RowIsValid(row)) return false;
        next += row.count;
    }
    return next == kNumParams;
}
static_assert(TableIsValid(), "family rows must be sorted, dense, consistent and cover every id");

constexpr bool OverridesAreValid()
{
    for (const DefaultOverride& o : kDefaultOverrides)
        if (o.id < 0 || o.id >= kNumParams) return false;
    return true;
}
static_assert(OverridesAreValid());

// Name of member `index` of a family.
std::string MemberName(const FamilyRow& row, int index)
{
    int number = index + 1;
    int step = 0;
    const char* position = "";
    if (HasChar(row.pattern, '@'))
    {
        number = index % kSlotsPerPosition + 1;
        position = kPositionTexts[index / kSlotsPerPosition];
    }
    else if (HasChar(row.pattern, '$'))
    {
        number = index / kStepsPerGate + 1;
        step = index % kStepsPerGate + 1;
    }
    std::string name;
    for (const char* p = row.pattern; *p; ++p)
    {
        switch (*p)
        {
        case '#':
            name += std::to_string(number);
            break;
        case '@':
            name += position;
            break;
        case '$':
            name += std::to_string(step);
            break;
        case '~':
            name += std::to_string(kLogicDoubleNumbers[index]);
            break;
        default:
            name += *p;
            break;
        }
    }
    return name;
}

void InitMember(IParamRecord& param, const FamilyRow& row, const std::string& name,
                std::span<const char* const> waveNames)
{
    switch (row.kind)
    {
    case EKind::kDouble:
        param.InitDouble(name.c_str(), row.defaultVal, row.min, row.max, row.step, row.unit, row.group,
                         row.shape);
        break;
    case EKind::kInt:
    {
        param.InitInt(name.c_str(), int(row.defaultVal), int(row.min), int(row.max), row.unit, row.group);
        const auto list = GetValueList(row.list);
        for (std::size_t i = 0; i < list.size(); ++i)
            param.SetDisplayText(int(row.min) + int(i), list[i]);
        break;
    }
    case EKind::kEnum:
        InitEnumFromList(param, name.c_str(),
                         row.list == EValueList::kWave ? waveNames : GetValueList(row.list),
                         int(row.defaultVal));
        break;
    case EKind::kBool:
        param.InitBool(name.c_str(), row.defaultVal != 0.0);
        break;
    }
    param.linkedFlag = row.linked;
}

std::vector<std::string> BuildKeys()
{
    std::vector<std::string> keys;
    keys.reserve(kNumParams);
    for (int id = 0; id < kNumParams; ++id)
    {
        std::string key;
        for (char c : ParamName(id))
            if (c != ' ') key += c;
        keys.push_back(std::move(key));
    }
    return keys;
}

const FamilyRow* FindFamily(int id)
{
    for (const FamilyRow& row : kFamilies)
        if (id >= row.id && id < row.id + row.count) return &row;
    return nullptr;
}
} // namespace

void InitEnumFromList(IParamRecord& param, const char* name, std::span<const char* const> list,
                      int defaultVal)
{
    param.InitEnum(name, defaultVal, int(list.size()));
    for (std::size_t i = 0; i < list.size(); ++i)
        param.SetDisplayText(int(i), list[i]);
}

void InitParams(std::vector<std::unique_ptr<IParamRecord>>& params, std::span<const char* const> waveNames)
{
    params.clear();
    params.reserve(kNumParams);
    for (const FamilyRow& row : kFamilies)
    {
        for (int i = 0; i < row.count; ++i)
        {
            auto param = std::make_unique<IParamRecord>();
            InitMember(*param, row, MemberName(row, i), waveNames);
            params.push_back(std::move(param));
        }
    }
    for (const DefaultOverride& o : kDefaultOverrides)
    {
        params[o.id]->defaultValue = o.value;
        params[o.id]->value = o.value;
    }
}

IParamRecord* GetParam(const std::vector<std::unique_ptr<IParamRecord>>& params, int id)
{
    if (id < 0 || id >= int(params.size())) return nullptr;
    return params[id].get();
}

std::string ParamName(int id)
{
    const FamilyRow* row = FindFamily(id);
    return row ? MemberName(*row, id - row->id) : std::string();
}

const std::vector<std::string>& ParamKeys()
{
    static const std::vector<std::string> keys = BuildKeys();
    return keys;
}

std::string_view ParamKey(int id)
{
    const auto& keys = ParamKeys();
    if (id < 0 || id >= int(keys.size())) return {};
    return keys[id];
}
