#include "modulators/WaveMenu.h"
#include "params/ParamCatalogue.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <map>
#include <string>
#include <vector>

// The catalogue checked member by member against an independent transcription of the parameter
// table: one expected row per family, with the value lists written out again in full.

namespace
{
constexpr double kUnset = -12345.0; // no entry in the table (enum and bool ranges come from their list)

struct ExpectedFamily
{
    int id;
    int count;
    const char* firstName;
    const char* lastName;
    const char* kind;
    const char* list;
    double defaultVal;
    double min;
    double max;
    double step;
    const char* unit;
    double shape;
};

// clang-format off
const ExpectedFamily kExpected[] = {
    {0, 1, "SlotOn 1", "SlotOn 1", "int", "OnOffList", 1, 0, 1, 1, "", kUnset},
    {1, 3, "SlotOn 2", "SlotOn 4", "int", "OnOffList", 0, 0, 1, 1, "", kUnset},
    {4, 4, "DelayOn 1", "DelayOn 4", "int", "OnOffList", 1, 0, 1, 1, "", kUnset},
    {8, 4, "Direct Out 1", "Direct Out 4", "enum", "DirectOutList", 3, kUnset, kUnset, kUnset, "", kUnset},
    {12, 1, "Input 1", "Input 1", "enum", "SlotInputList1", 0, kUnset, kUnset, kUnset, "", kUnset},
    {13, 1, "Input 2", "Input 2", "enum", "SlotInputList2", 0, kUnset, kUnset, kUnset, "", kUnset},
    {14, 1, "Input 3", "Input 3", "enum", "SlotInputList3", 0, kUnset, kUnset, kUnset, "", kUnset},
    {15, 1, "Input 4", "Input 4", "enum", "SlotInputList4", 0, kUnset, kUnset, kUnset, "", kUnset},
    {16, 4, "Direct In 1", "Direct In 4", "double", "", 0, 0, 100, 0.1, "%", 1},
    {20, 4, "Modulation 1", "Modulation 4", "double", "", 100, 0, 100, 0.1, "%", 1},
    {24, 4, "Master FX Source 1", "Master FX Source 4", "enum", "MasterFxSourceList", 4, kUnset, kUnset, kUnset, "", kUnset},
    {28, 4, "PanPosition 1", "PanPosition 4", "int", "OnOffList", 0, 0, 1, 1, "", kUnset},
    {32, 4, "Width 1", "Width 4", "double", "", 100, 0, 100, 0.1, "%", 1},
    {36, 4, "Output Mode 1", "Output Mode 4", "enum", "OutputModeList", 0, kUnset, kUnset, kUnset, "", kUnset},
    {40, 4, "L/R Offset 1", "L/R Offset 4", "double", "", 0, -25, 25, 0.01, "ms", 1},
    {44, 4, "Input Gain 1", "Input Gain 4", "double", "", -3, -60, 12, 0.1, "dB", 0.5},
    {48, 4, "Input Gain ModDepth 1", "Input Gain ModDepth 4", "double", "", 0, -100, 100, 0.1, "%", 1},
    {52, 4, "InputGain ModSource1", "InputGain ModSource4", "enum", "ModSourceList", 0, kUnset, kUnset, kUnset, "", kUnset},
    {56, 4, "Panning 1", "Panning 4", "double", "", 0, -100, 100, 0.1, "%", 1},
    {60, 4, "Panning ModDepth 1", "Panning ModDepth 4", "double", "", 0, -100, 100, 0.1, "%", 1},
    {64, 4, "Panning ModSource1", "Panning ModSource4", "enum", "ModSourceList", 0, kUnset, kUnset, kUnset, "", kUnset},
    {68, 4, "Feedback 1", "Feedback 4", "double", "", 50, 0, 160, 0.1, "%", 1},
    {72, 4, "Feedback ModDepth 1", "Feedback ModDepth 4", "double", "", 0, -100, 100, 0.1, "%", 1},
    {76, 4, "Feedback ModSource1", "Feedback ModSource4", "enum", "ModSourceList", 0, kUnset, kUnset, kUnset, "", kUnset},
    {80, 4, "Level 1", "Level 4", "double", "", -3, -60, 12, 0.1, "%", 0.5},
    {84, 4, "Level ModDepth 1", "Level ModDepth 4", "double", "", 0, -100, 100, 0.1, "%", 1},
    {88, 4, "Level ModSource1", "Level ModSource4", "enum", "ModSourceList", 0, kUnset, kUnset, kUnset, "", kUnset},
    {92, 4, "M-FX Send 1", "M-FX Send 4", "double", "", 50, 0, 100, 0.1, "%", 1},
    {96, 4, "M-FX Send ModDepth 1", "M-FX Send ModDepth 4", "double", "", 0, -100, 100, 0.1, "%", 1},
    {100, 4, "M-FX Send ModSource1", "M-FX Send ModSource4", "enum", "ModSourceList", 0, kUnset, kUnset, kUnset, "", kUnset},
    {104, 4, "FX1 PR", "FX4 PR", "enum", "FxTypeList", 0, kUnset, kUnset, kUnset, "", kUnset},
    {108, 4, "FX1 FB", "FX4 FB", "enum", "FxFeedbackTypeList", 0, kUnset, kUnset, kUnset, "", kUnset},
    {112, 4, "FX1 PO", "FX4 PO", "enum", "FxTypeList", 0, kUnset, kUnset, kUnset, "", kUnset},
    {116, 12, "FXParam1 1 PR", "FXParam1 4 PO", "double", "", 0, 0, 100, 0.01, "%", 1},
    {128, 12, "FXParam1 ModDepth 1 PR", "FXParam1 ModDepth 4 PO", "double", "", 0, -100, 100, 0.01, "%", 1},
    {140, 12, "FXParam1 ModSource1 PR", "FXParam1 ModSource4 PO", "enum", "ModSourceList", 0, kUnset, kUnset, kUnset, "", kUnset},
    {152, 12, "FXParam2 1 PR", "FXParam2 4 PO", "double", "", 0, 0, 100, 0.01, "%", 1},
    {164, 12, "FXParam2 ModDepth 1 PR", "FXParam2 ModDepth 4 PO", "double", "", 0, -100, 100, 0.01, "%", 1},
    {176, 12, "FXParam2 ModSource1 PR", "FXParam2 ModSource4 PO", "enum", "ModSourceList", 0, kUnset, kUnset, kUnset, "", kUnset},
    {188, 12, "FXParam3 1 PR", "FXParam3 4 PO", "double", "", 0, 0, 100, 0.01, "%", 1},
    {200, 12, "FXParam3 ModDepth 1 PR", "FXParam3 ModDepth 4 PO", "double", "", 0, -100, 100, 0.01, "%", 1},
    {212, 12, "FXParam3 ModSource1 PR", "FXParam3 ModSource4 PO", "enum", "ModSourceList", 0, kUnset, kUnset, kUnset, "", kUnset},
    {224, 12, "FXParam4 1 PR", "FXParam4 4 PO", "double", "", 0, 0, 100, 0.01, "%", 1},
    {236, 12, "FXParam4 ModDepth 1 PR", "FXParam4 ModDepth 4 PO", "double", "", 0, -100, 100, 0.01, "%", 1},
    {248, 12, "FXParam4 ModSource1 PR", "FXParam4 ModSource4 PO", "enum", "ModSourceList", 0, kUnset, kUnset, kUnset, "", kUnset},
    {260, 12, "FXParam5 1 PR", "FXParam5 4 PO", "double", "", 0, 0, 100, 0.01, "%", 1},
    {272, 12, "FXParam5 ModDepth 1 PR", "FXParam5 ModDepth 4 PO", "double", "", 0, -100, 100, 0.01, "%", 1},
    {284, 12, "FXParam5 ModSource1 PR", "FXParam5 ModSource4 PO", "enum", "ModSourceList", 0, kUnset, kUnset, kUnset, "", kUnset},
    {296, 4, "FXOn PR 1", "FXOn PR 4", "int", "OnOffList", 0, 0, 1, 1, "", kUnset},
    {300, 4, "FXOn FB 1", "FXOn FB 4", "int", "OnOffList", 0, 0, 1, 1, "", kUnset},
    {304, 4, "FXOn PO 1", "FXOn PO 4", "int", "OnOffList", 0, 0, 1, 1, "", kUnset},
    {308, 4, "Delay Mode 1", "Delay Mode 4", "enum", "DelayModeList", 0, kUnset, kUnset, kUnset, "", kUnset},
    {312, 4, "Delay Route 1", "Delay Route 4", "enum", "DelayRouteList", 0, kUnset, kUnset, kUnset, "", kUnset},
    {316, 4, "DelayTaps 1", "DelayTaps 4", "enum", "TapCountList", 7, kUnset, kUnset, kUnset, "", kUnset},
    {320, 4, "DelayTap FB 1", "DelayTap FB 4", "enum", "TapFeedbackList", 0, kUnset, kUnset, kUnset, "", kUnset},
    {324, 4, "FBProportional 1", "FBProportional 4", "int", "OnOffList", 0, 0, 1, 1, "", kUnset},
    {328, 4, "Timebase 1", "Timebase 4", "enum", "TimebaseList", 2, kUnset, kUnset, kUnset, "", kUnset},
    {332, 4, "TapTimebase 1", "TapTimebase 4", "enum", "TimebaseList", 0, kUnset, kUnset, kUnset, "", kUnset},
    {336, 4, "DelayFactorL 1", "DelayFactorL 4", "int", "", 4, 1, 16, 1, "Count", kUnset},
    {340, 4, "DelayFactorR 1", "DelayFactorR 4", "int", "", 4, 1, 16, 1, "Count", kUnset},
    {344, 4, "Delay TimeL 1", "Delay TimeL 4", "double", "", 500, 1, 4000, 0.01, "ms", 3},
    {348, 4, "Delay TimeL ModDepth 1", "Delay TimeL ModDepth 4", "double", "", 0, -100, 100, 0.01, "%", 1},
    {352, 4, "DelayTimeL ModSource1", "DelayTimeL ModSource4", "enum", "ModSourceList", 0, kUnset, kUnset, kUnset, "", kUnset},
    {356, 4, "Delay TimeR 1", "Delay TimeR 4", "double", "", 500, 1, 4000, 0.01, "ms", 3},
    {360, 4, "Delay TimeR ModDepth 1", "Delay TimeR ModDepth 4", "double", "", 0, -100, 100, 0.01, "%", 1},
    {364, 4, "DelayTimeR ModSource1", "DelayTimeR ModSource4", "enum", "ModSourceList", 0, kUnset, kUnset, kUnset, "", kUnset},
    {368, 4, "Tap FX Param1 1", "Tap FX Param1 4", "enum", "TapFxParamList", 0, kUnset, kUnset, kUnset, "", kUnset},
    {372, 4, "Tap FX Param2 1", "Tap FX Param2 4", "enum", "TapFxParamList", 0, kUnset, kUnset, kUnset, "", kUnset},
    {376, 4, "Tap FX Param1 Steps 1", "Tap FX Param1 Steps 4", "enum", "StepCountList", 0, kUnset, kUnset, kUnset, "", kUnset},
    {380, 4, "Tap FX Param2 Steps 1", "Tap FX Param2 Steps 4", "enum", "StepCountList", 0, kUnset, kUnset, kUnset, "", kUnset},
    {384, 64, "TapDelay1 Step1 Time", "TapDelay4 Step16 Time", "double", "", 100, 0, 100, 0.1, "%", 1},
    {448, 64, "TapDelay1 Step1 Level", "TapDelay4 Step16 Level", "double", "", 100, 0, 100, 0.1, "%", 1},
    {512, 64, "TapDelay1 Step1 Pan", "TapDelay4 Step16 Pan", "double", "", 0, -100, 100, 0.1, "%", 1},
    {576, 64, "TapDelay1 Step1 FX P1", "TapDelay4 Step16 FX P1", "double", "", 0, 0, 100, 0.1, "%", 1},
    {640, 64, "TapDelay1 Step1 FX P2", "TapDelay4 Step16 FX P2", "double", "", 0, 0, 100, 0.1, "%", 1},
    {704, 4, "Tap Time Step Depth 1", "Tap Time Step Depth 4", "double", "", 100, 0, 100, 0.01, "%", 1},
    {708, 4, "Tap Level Step Depth 1", "Tap Level Step Depth 4", "double", "", 100, 0, 100, 0.01, "%", 1},
    {712, 4, "Tap Pan Width 1", "Tap Pan Width 4", "double", "", 100, 0, 100, 0.01, "%", 1},
    {716, 4, "Tap FX P1 Step Depth 1", "Tap FX P1 Step Depth 4", "double", "", 100, 0, 100, 0.01, "%", 1},
    {720, 4, "Tap FX P2 Step Depth 1", "Tap FX P2 Step Depth 4", "double", "", 100, 0, 100, 0.01, "%", 1},
    {724, 4, "Tap Time Steps 1", "Tap Time Steps 4", "enum", "StepCountList", 0, kUnset, kUnset, kUnset, "", kUnset},
    {728, 4, "Tap Level Steps 1", "Tap Level Steps 4", "enum", "StepCountList", 0, kUnset, kUnset, kUnset, "", kUnset},
    {732, 4, "Tap Pan Steps 1", "Tap Pan Steps 4", "enum", "StepCountList", 0, kUnset, kUnset, kUnset, "", kUnset},
    {736, 4, "Tap Pan Mode 1", "Tap Pan Mode 4", "enum", "TapPanModeList", 0, kUnset, kUnset, kUnset, "", kUnset},
    {740, 4, "DelayTap DI Out 1", "DelayTap DI Out 4", "enum", "TapDirectOutList", 0, kUnset, kUnset, kUnset, "", kUnset},
    {744, 4, "Delay Taps Time 1", "Delay Taps Time 4", "double", "", 50, 1, 500, 0.01, "ms", 2},
    {748, 4, "Delay Taps Time ModDepth 1", "Delay Taps Time ModDepth 4", "double", "", 0, -100, 100, 0.01, "%", 1},
    {752, 4, "DelayTapsTime ModSource1", "DelayTapsTime ModSource4", "enum", "ModSourceList", 0, kUnset, kUnset, kUnset, "", kUnset},
    {756, 4, "Delay Taps Swell 1", "Delay Taps Swell 4", "double", "", 0, 0, 100, 0.01, "%", 1},
    {760, 4, "DelayL/R Link 1", "DelayL/R Link 4", "int", "OnOffList", 0, 0, 1, 1, "", kUnset},
    {764, 4, "Delay Spread 1", "Delay Spread 4", "double", "", 0, -20, 20, 0.01, "ms", 1},
    {768, 4, "Delay ModDepth 1", "Delay ModDepth 4", "double", "", 0, -100, 100, 0.01, "%", 1},
    {772, 4, "DelaySpread ModSource1", "DelaySpread ModSource4", "enum", "ModSourceList", 0, kUnset, kUnset, kUnset, "", kUnset},
    {776, 4, "Delay Lopass 1", "Delay Lopass 4", "double", "", 7500, 200, 20000, 0.1, "Hz", 4},
    {780, 4, "Delay Hipass 1", "Delay Hipass 4", "double", "", 20, 20, 3000, 0.1, "Hz", 4},
    {784, 4, "Grain Size 1", "Grain Size 4", "double", "", 100, 1, 400, 0.01, "ms", 2},
    {788, 4, "Grain Size ModDepth 1", "Grain Size ModDepth 4", "double", "", 0, -100, 100, 0.01, "%", 1},
    {792, 4, "GrainSize ModSource1", "GrainSize ModSource4", "enum", "ModSourceList", 0, kUnset, kUnset, kUnset, "", kUnset},
    {796, 4, "Grain Speed 1", "Grain Speed 4", "double", "", 0, -2, 2, 0.01, "2^", 1},
    {800, 4, "G-Speed ModDepth 1", "G-Speed ModDepth 4", "double", "", 0, -100, 100, 0.01, "%", 1},
    {804, 4, "GrainSpread ModSource1", "GrainSpread ModSource4", "enum", "ModSourceList", 0, kUnset, kUnset, kUnset, "", kUnset},
    {808, 4, "Grain Position 1", "Grain Position 4", "double", "", 0, 0, 100, 0.01, "%", 1},
    {812, 4, "G-Position ModDepth 1", "G-Position ModDepth 4", "double", "", 0, -100, 100, 0.01, "%", 1},
    {816, 4, "GrainSpeed ModSource1", "GrainSpeed ModSource4", "enum", "ModSourceList", 0, kUnset, kUnset, kUnset, "", kUnset},
    {820, 4, "Grain Fade 1", "Grain Fade 4", "double", "", 0, 0, 50, 0.01, "ms", 2},
    {824, 4, "Reverse Delay Trigger 1", "Reverse Delay Trigger 4", "enum", "ReverseTriggerList", 0, kUnset, kUnset, kUnset, "", kUnset},
    {828, 4, "Reverse X-Fade 1", "Reverse X-Fade 4", "double", "", 10, 1, 1000, 0.01, "ms", 2},
    {832, 4, "LFO On 1", "LFO On 4", "int", "OnOffList", 0, 0, 1, 1, "", kUnset},
    {836, 4, "LFO Wave 1", "LFO Wave 4", "enum", "WaveList", 0, kUnset, kUnset, kUnset, "", kUnset},
    {840, 4, "LFO Pol 1", "LFO Pol 4", "enum", "PolarityList", 0, kUnset, kUnset, kUnset, "", kUnset},
    {844, 4, "LFO Sync 1", "LFO Sync 4", "enum", "LfoSyncList", 0, kUnset, kUnset, kUnset, "", kUnset},
    {848, 4, "LFO Swap 1", "LFO Swap 4", "int", "OnOffList", 0, 0, 1, 1, "", kUnset},
    {852, 4, "LFO Reverse 1", "LFO Reverse 4", "int", "OnOffList", 0, 0, 1, 1, "", kUnset},
    {856, 4, "LFO Mode 1", "LFO Mode 4", "enum", "LfoModeList", 0, kUnset, kUnset, kUnset, "", kUnset},
    {860, 4, "LFO Trigger 1", "LFO Trigger 4", "enum", "LfoTriggerList", 0, kUnset, kUnset, kUnset, "", kUnset},
    {864, 4, "LFO Rate 1", "LFO Rate 4", "double", "", 0.5, 0.001, 500, 0.01, "Hz", 4},
    {868, 4, "LFO Freq ModDepth 1", "LFO Freq ModDepth 4", "double", "", 0, -100, 100, 0.1, "%", 1},
    {872, 4, "LFO Freq ModSource1", "LFO Freq ModSource4", "enum", "ModSourceList", 0, kUnset, kUnset, kUnset, "", kUnset},
    {876, 4, "LFO Depth 1", "LFO Depth 4", "double", "", 50, 0, 100, 0.01, "%", 1},
    {880, 4, "LFO Phase 1", "LFO Phase 4", "double", "", 0, 0, 100, 0.01, "%", 1},
    {884, 4, "LFO Glide 1", "LFO Glide 4", "double", "", 10, 1, 2000, 0.01, "ms", 2},
    {888, 4, "Gate1 Length", "Gate4 Length", "int", "", 8, 1, 16, 1, "Steps", kUnset},
    {892, 4, "Gate1 On", "Gate4 On", "int", "OnOffList", 0, 0, 1, 1, "", kUnset},
    {896, 4, "Gate1 Timebase", "Gate4 Timebase", "enum", "GateTimebaseList", 0, kUnset, kUnset, kUnset, "", kUnset},
    {900, 4, "Gate1 Direction", "Gate4 Direction", "enum", "GateDirectionList", 0, kUnset, kUnset, kUnset, "", kUnset},
    {904, 4, "Gate1 Sync", "Gate4 Sync", "int", "OnOffList", 0, 0, 1, 1, "", kUnset},
    {908, 4, "Gate1 Glide", "Gate4 Glide", "double", "", 0, 0, 2000, 0.1, "%", 2},
    {912, 4, "Gate1 Depth", "Gate4 Depth", "double", "", 100, 0, 100, 0.1, "%", 1},
    {916, 4, "GATE Pol 1", "GATE Pol 4", "enum", "PolarityList", 0, kUnset, kUnset, kUnset, "", kUnset},
    {920, 4, "GATE Steps 1", "GATE Steps 4", "enum", "StepCountList", 0, kUnset, kUnset, kUnset, "", kUnset},
    {924, 64, "Gate1 Step1", "Gate4 Step16", "double", "", 0, 0, 100, 0.1, "%", 1},
    {988, 2, "ENV1 On", "ENV2 On", "int", "OnOffList", 0, 0, 1, 1, "", kUnset},
    {990, 2, "ENV1 Mode", "ENV2 Mode", "enum", "EnvModeList", 0, kUnset, kUnset, kUnset, "", kUnset},
    {992, 2, "ENV1 Source", "ENV2 Source", "enum", "EnvSourceList", 0, kUnset, kUnset, kUnset, "", kUnset},
    {994, 2, "ENV1 Gain", "ENV2 Gain", "double", "", 0, 0, 40, 0.01, "dB", 1},
    {996, 2, "ENV1 Attack", "ENV2 Attack", "double", "", 10, 0, 5000, 0.01, "ms", 3},
    {998, 2, "ENV1 Decay", "ENV2 Decay", "double", "", 100, 10, 15000, 0.01, "ms", 3},
    {1000, 2, "ENV1 Hold", "ENV2 Hold", "double", "", 0, 0, 10000, 0.01, "ms", 3},
    {1002, 2, "ENV1 Threshold", "ENV2 Threshold", "double", "", 0, -90, 0, 0.01, "db", 0.5},
    {1004, 2, "ENV1 Locut", "ENV2 Locut", "double", "", 50, 50, 10000, 0.01, "Hz", 3},
    {1006, 2, "ENV1 Hicut", "ENV2 Hicut", "double", "", 20000, 100, 20000, 0.01, "Hz", 3},
    {1008, 2, "ENV1 Depth", "ENV2 Depth", "double", "", 100, 0, 100, 0.01, "%", 1},
    {1010, 2, "ENV1 Output", "ENV2 Output", "enum", "EnvOutputList", 0, kUnset, kUnset, kUnset, "", kUnset},
    {1012, 4, "Logic On 1", "Logic On 4", "int", "OnOffList", 0, 0, 1, 1, "", kUnset},
    {1016, 4, "Logic1 Type", "Logic4 Type", "enum", "LogicTypeList", 0, kUnset, kUnset, kUnset, "", kUnset},
    {1020, 4, "Logic1 Source1 Depth", "Logic4 Source1 Depth", "double", "", 0, -100, 100, 0.01, "%", 1},
    {1024, 4, "Logic1 Source1", "Logic4 Source1", "enum", "ModSourceList", 0, kUnset, kUnset, kUnset, "", kUnset},
    {1028, 4, "Logic1 Source2 Depth", "Logic4 Source2 Depth", "double", "", 0, -100, 100, 0.01, "%", 1},
    {1032, 4, "Logic1 Source2", "Logic4 Source2", "enum", "ModSourceList", 0, kUnset, kUnset, kUnset, "", kUnset},
    {1036, 4, "Logic1 Smooth", "Logic4 Smooth", "double", "", 0, 0, 1000, 0.01, "ms", 3},
    {1040, 4, "Logic1 Depth", "Logic4 Depth", "double", "", 0, 0, 100, 0.01, "%", 1},
    {1044, 4, "Logic1 Depth Mod", "Logic4 Depth Mod", "double", "", 0, -100, 100, 0.1, "%", 1},
    {1048, 4, "Logic1 Depth ModSource", "Logic4 Depth ModSource", "enum", "ModSourceList", 0, kUnset, kUnset, kUnset, "", kUnset},
    {1052, 1, "MasterFX", "MasterFX", "enum", "MasterFxTypeList", 0, kUnset, kUnset, kUnset, "", kUnset},
    {1053, 1, "MasterFX Bypass", "MasterFX Bypass", "int", "OnOffList", 0, 0, 1, 1, "", kUnset},
    {1054, 1, "MasterFX P1", "MasterFX P1", "double", "", 0, 0, 100, 0.1, "%", 1},
    {1055, 1, "MasterFX P2", "MasterFX P2", "double", "", 0, 0, 100, 0.1, "%", 1},
    {1056, 1, "MasterFX P3", "MasterFX P3", "double", "", 0, 0, 100, 0.1, "%", 1},
    {1057, 1, "MasterFX P4", "MasterFX P4", "double", "", 0, 0, 100, 0.1, "%", 1},
    {1058, 1, "Main ModRate", "Main ModRate", "double", "", 30, 0, 100, 0.1, "%", 1},
    {1059, 1, "Main ModDepth", "Main ModDepth", "double", "", 50, 0, 100, 0.1, "%", 1},
    {1060, 1, "Feedback Master", "Feedback Master", "double", "", 0, -50, 50, 0.1, "%", 1},
    {1061, 1, "Delay Time Scale", "Delay Time Scale", "double", "", 0, -100, 100, 0.1, "%", 1},
    {1062, 1, "MasterFX Level", "MasterFX Level", "double", "", 75, 0, 200, 0.1, "%", 1},
    {1063, 1, "Limiter On", "Limiter On", "int", "LimiterList", 0, 0, 3, 1, "", kUnset},
    {1064, 1, "Limiter Level", "Limiter Level", "double", "", 0, 0, 36, 0.1, "dB", 1},
    {1065, 1, "Wet Level", "Wet Level", "double", "", 75, 0, 100, 0.1, "%", 1},
    {1066, 1, "Dry Level", "Dry Level", "double", "", 75, 0, 100, 0.1, "%", 1},
    {1067, 1, "Output Level", "Output Level", "double", "", 0, -12, 12, 0.1, "dB", 1},
    {1068, 1, "Global Width", "Global Width", "double", "", 100, 0, 150, 0.1, "%", 1},
    {1069, 4, "FB Matrix 1", "FB Matrix 4", "int", "OnOffList", 0, 0, 1, 1, "", kUnset},
    {1073, 4, "Slot1 FB 1", "Slot1 FB 4", "double", "", 0, -100, 100, 0.01, "%", 1},
    {1077, 4, "Slot2 FB 1", "Slot2 FB 4", "double", "", 0, -100, 100, 0.01, "%", 1},
    {1081, 4, "Slot3 FB 1", "Slot3 FB 4", "double", "", 0, -100, 100, 0.01, "%", 1},
    {1085, 4, "Slot4 FB 1", "Slot4 FB 4", "double", "", 0, -100, 100, 0.01, "%", 1},
    {1089, 4, "Delay Taps Swing 1", "Delay Taps Swing 4", "double", "", 0, 0, 100, 0.01, "%", 1},
    {1093, 1, "NoOp", "NoOp", "bool", "", 0, kUnset, kUnset, kUnset, "", kUnset},
    {1094, 1, "BP", "BP", "bool", "", 0, kUnset, kUnset, kUnset, "", kUnset},
};
// clang-format on

using Texts = std::vector<std::string>;

const std::map<std::string, Texts>& ExpectedLists()
{
    static const std::map<std::string, Texts> lists = {
        {"OnOffList", {"OFF", "ON"}},
        {"LimiterList", {"OFF", "SLOW I", "SLOW II", "FAST"}},
        {"FxTypeList",
         {"OFF",
          "FREQ SHIFT",
          "RING MOD",
          "PHASE",
          "PITCH SHIFT",
          "PITCH SHIFT ST",
          "SATURATE",
          "RECTIFY",
          "DESTROY",
          "NOISE",
          "LOFI I",
          "LOFI II",
          "WAVE SHAPE",
          "MULTI SVF",
          "HP/LP 24dB",
          "MULTI 12dB",
          "PEAK",
          "DRIVE LP+HP",
          "VARAIBLE LPHP",
          "PHASEBP",
          "COMB",
          "VOWEL",
          "COMPRESSOR",
          "",
          ""}},
        {"FxFeedbackTypeList",
         {"OFF",
          "FREQ SHIFT",
          "RING MOD",
          "PITCH SHIFT",
          "PITCH SHIFT ST",
          "SATURATE",
          "RECTIFY",
          "DESTROY",
          "NOISE",
          "LOFI I",
          "LOFI II",
          "MULTI 12dB",
          "DRIVE LP+HP",
          "COMPRESSOR",
          "",
          "",
          "",
          "",
          "",
          "",
          "",
          "",
          "",
          "",
          ""}},
        {"MasterFxTypeList",
         {"OFF", "QUORVEX", "REVERB", "ROOM", "FIX EQ", "2 BAND EQ", "LO/HI SHELF", "DRIVE LP+HP"}},
        {"SlotInputList1", {"MONO", "LEFT", "RIGHT", "STEREO", "MASTER-FX"}},
        {"SlotInputList2", {"MONO", "LEFT", "RIGHT", "STEREO", "MASTER-FX", "SLOT 1"}},
        {"SlotInputList3", {"MONO", "LEFT", "RIGHT", "STEREO", "MASTER-FX", "SLOT 1", "SLOT 2", "SLOT 1+2"}},
        {"SlotInputList4",
         {"MONO", "LEFT", "RIGHT", "STEREO", "MASTER-FX", "SLOT 1", "SLOT 2", "SLOT 3", "SLOT 1+2",
          "SLOT 1+3", "SLOT 2+3", "SLOT 1+2+3"}},
        {"DirectOutList", {"PRE FX", "DELAY", "POST FX", "OUT"}},
        {"MasterFxSourceList", {"INPUT", "PRE FX", "DELAY", "POST FX", "OUT"}},
        {"DelayModeList", {"FORWARD", "BACKWARD", "GRAIN", "TAPPED"}},
        {"DelayRouteList", {"DUAL", "PP-L", "PP-ML", "PP-R", "PP-MR", "PP-L+R", "MIX", "M-L", "M-R"}},
        {"ReverseTriggerList", {"OFF", "BAR", "ENV1", "ENV2"}},
        {"TapCountList",
         {"1", "2", "3", "4", "5", "6", "7", "8", "9", "10", "11", "12", "13", "14", "15", "16"}},
        {"TapFeedbackList",
         {"LENGTH", "1", "2", "3", "4", "5", "6", "7", "8", "9", "10", "11", "12", "13", "14", "15", "16"}},
        {"TapDirectOutList", {"LAST", "ALL"}},
        {"TapFxParamList",
         {"OFF", "PARAMETER 1", "PARAMETER 2", "PARAMETER 3", "PARAMETER 4", "PARAMETER 5"}},
        {"TapPanModeList", {"STEREO", "DUAL MONO", "LEFT", "RIGHT"}},
        {"OutputModeList", {"NORM", "SWAP", "MUTE"}},
        {"StepCountList",
         {"NO STEP", "1 STEP", "2 STEPS", "3 STEPS", "4 STEPS", "5 STEPS", "6 STEPS", "7 STEPS", "8 STEPS",
          "9 STEPS", "10 STEPS", "11 STEPS", "12 STEPS"}},
        {"TimebaseList",
         {"MS", "1/8", "1/16", "1/32", "1/64", "1/8d", "1/16d", "1/32d", "1/8t", "1/16t", "1/32t"}},
        {"GateTimebaseList",
         {"1/4",         "1/8",         "1/16",        "1/32",        "1/64",        "1/4d",
          "1/8d",        "1/16d",       "1/32d",       "1/4t",        "1/8t",        "1/16t",
          "ENV1",        "ENV2",        "GATE1 LEVEL", "GATE2 LEVEL", "GATE3 LEVEL", "GATE4 LEVEL",
          "GATE1 START", "GATE2 START", "GATE3 START", "GATE4 START"}},
        {"GateDirectionList", {"FORWARD", "BACKWARD", "FORWARD/BACKWARD", "RANDOM"}},
        {"PolarityList", {"POS (+)", "NEG (-)", "BI (+/-)"}},
        {"LfoSyncList", {"HZ", "STRAIGHT", "DOTTED", "TRIPLET"}},
        {"LfoModeList", {"LOOP", "ONE SHOT", "LATCH"}},
        {"LfoTriggerList",
         {"OFF", "QUARTER", "BAR", "2BARS", "ENV1", "ENV2", "GATE1 LEVEL", "GATE2 LEVEL", "GATE3 LEVEL",
          "GATE4 LEVEL", "GATE1 START", "GATE2 START", "GATE3 START", "GATE4 START"}},
        {"ModSourceList",
         {"OFF", "LFO1", "LFO2", "LFO3", "LFO4", "GATE1", "GATE2", "GATE3", "GATE4", "ENV1", "ENV2", "LOGIC1",
          "LOGIC2", "LOGIC3", "LOGIC4"}},
        {"LogicTypeList", {"ADD", "MULTIPLY", "MIN", "MAX", "ABS MIN", "ABS MAX", "GATE", "HIGHER", "LOWER"}},
        {"EnvModeList", {"FOLLOWER", "GATE"}},
        {"EnvSourceList",
         {"IN MONO", "IN LEFT", "IN RIGHT", "SLOT1 M", "SLOT1 L", "SLOT1 R", "SLOT2 M", "SLOT2 L", "SLOT2 R",
          "SLOT3 M", "SLOT3 L", "SLOT3 R", "SLOT4 M", "SLOT4 L", "SLOT4 R", "SIDECHAIN", "MASTER FX"}},
        {"EnvOutputList", {"LOGARITHMIC", "LINEAR"}},
        {"WaveList", {"SIN1",      "SIN2",       "SIN3",     "SIN4",    "SIN5",      "SIN6",      "SIN7",
                      "SIN8",      "SAWSIN",     "SAW2",     "STEPSIN", "RAMP",      "TRIANGLE",  "RAMPPULSE",
                      "EXPFALL",   "SLIDE",      "THE RIDE", "POOL",    "HALFPULSE", "1/3 PULSE", "1/4 PULSE",
                      "1/8 PULSE", "1/16 PULSE", "SINPULSE", "STAIR3",  "STEP8",     "S&H"}},
    };
    return lists;
}

int DigitsOfStep(double step)
{
    if (step == 1.0) return 0;
    if (step == 0.1) return 1;
    if (step == 0.01) return 2;
    ADD_FAILURE() << "unexpected step " << step;
    return -1;
}

class Catalogue : public ::testing::Test
{
  protected:
    void SetUp() override { InitParams(mParams, kWaveMenuNames); }
    std::vector<std::unique_ptr<IParamRecord>> mParams;
};
} // namespace

TEST_F(Catalogue, EveryIdHasOneRecordAndTheFamiliesCoverThemInOrder)
{
    ASSERT_EQ(kNumParams, 1095);
    ASSERT_EQ(mParams.size(), 1095u);
    for (const auto& p : mParams)
        ASSERT_NE(p, nullptr);
    int next = 0;
    for (const ExpectedFamily& f : kExpected)
    {
        EXPECT_EQ(f.id, next) << f.firstName;
        next += f.count;
    }
    EXPECT_EQ(next, kNumParams);
    EXPECT_STREQ(mParams[kBP]->name, "BP");
    EXPECT_STREQ(mParams[kNoOp]->name, "NoOp");
}

TEST_F(Catalogue, EveryMemberMatchesItsFamilyRow)
{
    const std::map<std::string, IParamRecord::EParamType> kinds = {{"bool", IParamRecord::kTypeBool},
                                                                   {"int", IParamRecord::kTypeInt},
                                                                   {"enum", IParamRecord::kTypeEnum},
                                                                   {"double", IParamRecord::kTypeDouble}};
    for (const ExpectedFamily& f : kExpected)
    {
        SCOPED_TRACE(f.firstName);
        EXPECT_STREQ(mParams[f.id]->name, f.firstName);
        EXPECT_STREQ(mParams[f.id + f.count - 1]->name, f.lastName);

        const Texts* texts = nullptr;
        if (*f.list)
        {
            auto it = ExpectedLists().find(f.list);
            ASSERT_NE(it, ExpectedLists().end()) << f.list;
            texts = &it->second;
        }
        const std::string kind = f.kind;
        double min = f.min, max = f.max, step = f.step, shape = f.shape == kUnset ? 1.0 : f.shape;
        if (kind == "enum")
        {
            min = 0.0;
            max = double(texts->size()) - 1.0;
            step = 1.0;
        }
        if (kind == "bool")
        {
            min = 0.0;
            max = 1.0;
            step = 1.0;
        }
        const bool isLfoRate = std::string(f.firstName) == "LFO Rate 1";
        const bool isLinked = isLfoRate || std::string(f.firstName).rfind("DelayFactor", 0) == 0;

        for (int id = f.id; id < f.id + f.count; ++id)
        {
            const IParamRecord& p = *mParams[id];
            SCOPED_TRACE(p.name);
            EXPECT_EQ(p.type, kinds.at(kind));
            EXPECT_EQ(p.defaultValue, f.defaultVal);
            EXPECT_EQ(double(p.value), f.defaultVal);
            EXPECT_EQ(p.min, min);
            EXPECT_EQ(p.max, max);
            EXPECT_EQ(p.step, step);
            EXPECT_EQ(p.shape, shape);
            EXPECT_STREQ(p.label, f.unit);
            EXPECT_STREQ(p.group, isLfoRate ? "lfo_rate" : "");
            EXPECT_EQ(p.linkedFlag, isLinked);
            EXPECT_TRUE(p.canAutomate);
            EXPECT_FALSE(p.negateDisplay);
            EXPECT_FALSE(p.mapping.has_value());
            EXPECT_EQ(p.displayPrecision, DigitsOfStep(step));

            Texts got;
            for (const auto& t : p.displayTexts)
            {
                EXPECT_EQ(t.value, int(min) + int(got.size()));
                got.push_back(t.text);
            }
            if (kind == "bool")
                EXPECT_EQ(got, (Texts{"", "on"}));
            else if (texts)
                EXPECT_EQ(got, *texts);
            else
                EXPECT_TRUE(got.empty());
        }
    }
}

TEST_F(Catalogue, MembersAreNumberedByTheirPlaceInTheFamily)
{
    // Twelve-wide effect rows run position-major, slot-minor.
    EXPECT_STREQ(mParams[116 + 4 * 1 + 1]->name, "FXParam1 2 FB");
    EXPECT_STREQ(mParams[188 + 4 * 1 + 1]->name, "FXParam3 2 FB");
    EXPECT_STREQ(mParams[212 + 4 * 2 + 3]->name, "FXParam3 ModSource4 PO");
    EXPECT_STREQ(mParams[272 + 4 * 0 + 2]->name, "FXParam5 ModDepth 3 PR");
    // Step rows run gate-major.
    EXPECT_STREQ(mParams[512 + 16 * 2 + 6]->name, "TapDelay3 Step7 Pan");
    EXPECT_STREQ(mParams[640 + 16 * 3 + 15]->name, "TapDelay4 Step16 FX P2");
    EXPECT_STREQ(mParams[924 + 16 * 1 + 15]->name, "Gate2 Step16");
    EXPECT_STREQ(mParams[924 + 16 * 2]->name, "Gate3 Step1");
    EXPECT_STREQ(mParams[907]->name, "Gate4 Sync");
    EXPECT_STREQ(mParams[989]->name, "ENV2 On");
    EXPECT_STREQ(mParams[1074]->name, "Slot1 FB 2");
    EXPECT_STREQ(mParams[14]->name, "Input 3");
    EXPECT_STREQ(mParams[kFX1FB + 2]->name, "FX3 FB");
    // The enum families of the logic modules are numbered properly.
    EXPECT_STREQ(mParams[1017]->name, "Logic2 Type");
    EXPECT_STREQ(mParams[1025]->name, "Logic2 Source1");
    EXPECT_STREQ(mParams[1049]->name, "Logic2 Depth ModSource");
}

TEST_F(Catalogue, LogicModuleTwoDoublesCarryModuleThreeNames)
{
    const std::map<int, std::string> quirks = {{1021, "Logic3 Source1 Depth"},
                                               {1029, "Logic3 Source2 Depth"},
                                               {1037, "Logic3 Smooth"},
                                               {1041, "Logic3 Depth"},
                                               {1045, "Logic3 Depth Mod"}};
    for (const auto& [id, name] : quirks)
    {
        EXPECT_EQ(mParams[id]->name, name);
        EXPECT_EQ(mParams[id + 1]->name, name);
        EXPECT_EQ(std::string(mParams[id - 1]->name).substr(0, 7), "Logic1 ");
        EXPECT_EQ(std::string(mParams[id + 2]->name).substr(0, 7), "Logic4 ");
    }
    // These five pairs are the only names that occur twice.
    std::map<std::string, std::vector<int>> byName;
    for (int id = 0; id < kNumParams; ++id)
        byName[mParams[id]->name].push_back(id);
    std::vector<int> lowerOfPairs;
    for (const auto& [name, ids] : byName)
    {
        ASSERT_LE(ids.size(), 2u) << name;
        if (ids.size() == 2)
        {
            EXPECT_EQ(ids[1], ids[0] + 1) << name;
            lowerOfPairs.push_back(ids[0]);
        }
    }
    std::sort(lowerOfPairs.begin(), lowerOfPairs.end());
    EXPECT_EQ(lowerOfPairs, (std::vector<int>{1021, 1029, 1037, 1041, 1045}));
}

TEST_F(Catalogue, OnlyTheFirstSlotStartsOnAndEveryDelayStartsOn)
{
    EXPECT_EQ(double(mParams[kSlotOn1]->value), 1.0);
    EXPECT_EQ(mParams[kSlotOn1]->defaultValue, 1.0);
    for (int id : {kSlotOn2, kSlotOn3, kSlotOn4})
    {
        EXPECT_EQ(double(mParams[id]->value), 0.0);
        EXPECT_EQ(mParams[id]->defaultValue, 0.0);
    }
    for (int id = kDelayOn1; id <= kDelayOn4; ++id)
        EXPECT_EQ(double(mParams[id]->value), 1.0);
}

TEST_F(Catalogue, DefaultsShowTheirListTexts)
{
    for (int i = 0; i < 4; ++i)
    {
        const struct
        {
            int id;
            const char* text;
        } cases[] = {{kTimebase1 + i, "1/16"},
                     {kTapTimebase1 + i, "MS"},
                     {kDelayTaps1 + i, "8"},
                     {kDirectOut1 + i, "OUT"},
                     {kMasterFXSource1 + i, "OUT"}};
        for (const auto& c : cases)
        {
            const IParamRecord& p = *mParams[c.id];
            SCOPED_TRACE(p.name);
            EXPECT_EQ(p.GetDisplayForHost(p.value, false), c.text);
            // The host asks with normalised values.
            EXPECT_EQ(p.GetDisplayForHost(p.GetNormalized(), true), c.text);
        }
    }
}

TEST_F(Catalogue, LimiterOnIsAFourValuedIntegerNamingItsSpeed)
{
    const IParamRecord& p = *mParams[kLimiterOn];
    EXPECT_STREQ(p.name, "Limiter On");
    EXPECT_EQ(p.type, IParamRecord::kTypeInt);
    EXPECT_EQ(p.min, 0.0);
    EXPECT_EQ(p.max, 3.0);
    const char* texts[] = {"OFF", "SLOW I", "SLOW II", "FAST"};
    for (int v = 0; v < 4; ++v)
    {
        EXPECT_EQ(p.GetDisplayForHost(v, false), texts[v]);
        double back = -1;
        ASSERT_TRUE(p.GetValueFromDisplayText(texts[v], back));
        EXPECT_EQ(back, v);
    }
    EXPECT_EQ(p.GetDisplayForHost(1.0, true), "FAST");
}

TEST_F(Catalogue, WideRangesReachTheirMaxima)
{
    for (int id = kFeedback1; id <= kFeedback4; ++id)
        EXPECT_EQ(mParams[id]->max, 160.0);
    EXPECT_EQ(mParams[kMasterFXLevel]->max, 200.0);
    EXPECT_EQ(mParams[kGlobalWidth]->max, 150.0);
    // And the normalised top lands there.
    mParams[kFeedback2]->SetNormalized(1.0);
    EXPECT_EQ(double(mParams[kFeedback2]->value), 160.0);
}

TEST_F(Catalogue, WaveMenuNamesComeFromTheCaller)
{
    const char* waves[] = {"A", "B", "C"};
    std::vector<std::unique_ptr<IParamRecord>> params;
    InitParams(params, waves);
    for (int id = kLFOWave1; id <= kLFOWave4; ++id)
    {
        EXPECT_EQ(params[id]->max, 2.0);
        ASSERT_EQ(params[id]->displayTexts.size(), 3u);
        EXPECT_STREQ(params[id]->displayTexts[2].text, "C");
        double v = -1;
        ASSERT_TRUE(params[id]->GetValueFromDisplayText("B", v));
        EXPECT_EQ(v, 1.0);
    }
}

TEST_F(Catalogue, EveryParameterSurvivesTheNormalisedRoundTrip)
{
    for (int id = 0; id < kNumParams; ++id)
    {
        IParamRecord& p = *mParams[id];
        SCOPED_TRACE(p.name);
        const double range = p.max - p.min;
        const int steps = int(std::lround(range / p.step));
        EXPECT_EQ(p.GetNormalized(p.min), 0.0);
        EXPECT_EQ(p.GetNormalized(p.max), 1.0);
        double lastNorm = -1.0;
        // Grid points spread over the range, the default and both ends.
        std::vector<double> xs = {p.defaultValue};
        for (int k = 0; k <= 16; ++k)
            xs.push_back(p.min + std::floor(steps * (k / 16.0)) * p.step);
        for (std::size_t k = 0; k < xs.size(); ++k)
        {
            const double x = std::min(xs[k], p.max);
            const double n = p.GetNormalized(x);
            ASSERT_GE(n, 0.0);
            ASSERT_LE(n, 1.0);
            if (k > 1)
            {
                EXPECT_GE(n, lastNorm) << x;
            }
            if (k > 0) lastNorm = n;
            p.SetNormalized(n);
            if (p.type == IParamRecord::kTypeDouble)
                EXPECT_NEAR(double(p.value), x, 1e-9 * range) << x;
            else
                EXPECT_EQ(double(p.value), x);
        }
    }
}
