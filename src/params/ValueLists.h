#pragma once
// The value lists of the enum and switch parameters, as constant data: entry i is the text of
// value i. Blank entries at the end of the effect lists count towards the range (menus skip
// them). The texts are stored words: kept exactly, spelling included. The wave list is not here:
// its names come from the wave menu and are handed to the catalogue.

#include <array>
#include <cmath>
#include <span>

// The entry a list or switch parameter's value selects (values are stored as doubles).
inline int ListIndex(double value)
{
    return static_cast<int>(std::lround(value));
}

// clang-format off
inline constexpr std::array kOnOffList{"OFF", "ON"};
inline constexpr std::array kLimiterList{"OFF", "SLOW I", "SLOW II", "FAST"};
inline constexpr std::array kFxTypeList{
    "OFF",        "FREQ SHIFT",  "RING MOD",      "PHASE",      "PITCH SHIFT", "PITCH SHIFT ST", "SATURATE",
    "RECTIFY",    "DESTROY",     "NOISE",         "LOFI I",     "LOFI II",     "WAVE SHAPE",     "MULTI SVF",
    "HP/LP 24dB", "MULTI 12dB",  "PEAK",          "DRIVE LP+HP", "VARAIBLE LPHP", "PHASEBP",      "COMB",
    "VOWEL",      "COMPRESSOR",  "",              ""};
inline constexpr std::array kFxFeedbackTypeList{
    "OFF",     "FREQ SHIFT", "RING MOD", "PITCH SHIFT", "PITCH SHIFT ST", "SATURATE", "RECTIFY", "DESTROY",
    "NOISE",   "LOFI I",     "LOFI II",  "MULTI 12dB",  "DRIVE LP+HP",    "COMPRESSOR", "",      "",
    "",        "",           "",         "",            "",               "",           "",      "",
    ""};
inline constexpr std::array kMasterFxTypeList{"OFF",       "QUORVEX",     "REVERB",     "ROOM",
                                              "FIX EQ",    "2 BAND EQ",   "LO/HI SHELF", "DRIVE LP+HP"};
inline constexpr std::array kSlotInputList1{"MONO", "LEFT", "RIGHT", "STEREO", "MASTER-FX"};
inline constexpr std::array kSlotInputList2{"MONO", "LEFT", "RIGHT", "STEREO", "MASTER-FX", "SLOT 1"};
inline constexpr std::array kSlotInputList3{"MONO",      "LEFT",   "RIGHT",  "STEREO",
                                            "MASTER-FX", "SLOT 1", "SLOT 2", "SLOT 1+2"};
inline constexpr std::array kSlotInputList4{"MONO",     "LEFT",     "RIGHT",    "STEREO",  "MASTER-FX",
                                            "SLOT 1",   "SLOT 2",   "SLOT 3",   "SLOT 1+2", "SLOT 1+3",
                                            "SLOT 2+3", "SLOT 1+2+3"};
inline constexpr std::array kDirectOutList{"PRE FX", "DELAY", "POST FX", "OUT"};
inline constexpr std::array kMasterFxSourceList{"INPUT", "PRE FX", "DELAY", "POST FX", "OUT"};
inline constexpr std::array kDelayModeList{"FORWARD", "BACKWARD", "GRAIN", "TAPPED"};
inline constexpr std::array kDelayRouteList{"DUAL", "PP-L", "PP-ML", "PP-R", "PP-MR",
                                            "PP-L+R", "MIX", "M-L", "M-R"};
inline constexpr std::array kReverseTriggerList{"OFF", "BAR", "ENV1", "ENV2"};
inline constexpr std::array kTapCountList{"1", "2",  "3",  "4",  "5",  "6",  "7",  "8",
                                          "9", "10", "11", "12", "13", "14", "15", "16"};
inline constexpr std::array kTapFeedbackList{"LENGTH", "1",  "2",  "3",  "4",  "5",  "6",  "7",  "8",
                                             "9",      "10", "11", "12", "13", "14", "15", "16"};
inline constexpr std::array kTapDirectOutList{"LAST", "ALL"};
inline constexpr std::array kTapFxParamList{"OFF",         "PARAMETER 1", "PARAMETER 2",
                                            "PARAMETER 3", "PARAMETER 4", "PARAMETER 5"};
inline constexpr std::array kTapPanModeList{"STEREO", "DUAL MONO", "LEFT", "RIGHT"};
inline constexpr std::array kOutputModeList{"NORM", "SWAP", "MUTE"};
inline constexpr std::array kStepCountList{"NO STEP", "1 STEP",   "2 STEPS",  "3 STEPS",  "4 STEPS",
                                           "5 STEPS", "6 STEPS",  "7 STEPS",  "8 STEPS",  "9 STEPS",
                                           "10 STEPS", "11 STEPS", "12 STEPS"};
inline constexpr std::array kTimebaseList{"MS",   "1/8",   "1/16",  "1/32", "1/64", "1/8d",
                                          "1/16d", "1/32d", "1/8t", "1/16t", "1/32t"};
inline constexpr std::array kGateTimebaseList{
    "1/4",         "1/8",         "1/16",        "1/32",        "1/64",        "1/4d",
    "1/8d",        "1/16d",       "1/32d",       "1/4t",        "1/8t",        "1/16t",
    "ENV1",        "ENV2",        "GATE1 LEVEL", "GATE2 LEVEL", "GATE3 LEVEL", "GATE4 LEVEL",
    "GATE1 START", "GATE2 START", "GATE3 START", "GATE4 START"};
inline constexpr std::array kGateDirectionList{"FORWARD", "BACKWARD", "FORWARD/BACKWARD", "RANDOM"};
inline constexpr std::array kPolarityList{"POS (+)", "NEG (-)", "BI (+/-)"};
inline constexpr std::array kLfoSyncList{"HZ", "STRAIGHT", "DOTTED", "TRIPLET"};
inline constexpr std::array kLfoModeList{"LOOP", "ONE SHOT", "LATCH"};
inline constexpr std::array kLfoTriggerList{"OFF",         "QUARTER",     "BAR",         "2BARS",
                                            "ENV1",        "ENV2",        "GATE1 LEVEL", "GATE2 LEVEL",
                                            "GATE3 LEVEL", "GATE4 LEVEL", "GATE1 START", "GATE2 START",
                                            "GATE3 START", "GATE4 START"};
inline constexpr std::array kModSourceList{"OFF",   "LFO1",  "LFO2",  "LFO3",   "LFO4",
                                           "GATE1", "GATE2", "GATE3", "GATE4",  "ENV1",
                                           "ENV2",  "LOGIC1", "LOGIC2", "LOGIC3", "LOGIC4"};
inline constexpr std::array kLogicTypeList{"ADD",     "MULTIPLY", "MIN",    "MAX",  "ABS MIN",
                                           "ABS MAX", "GATE",     "HIGHER", "LOWER"};
inline constexpr std::array kEnvModeList{"FOLLOWER", "GATE"};
inline constexpr std::array kEnvSourceList{"IN MONO", "IN LEFT", "IN RIGHT", "SLOT1 M", "SLOT1 L", "SLOT1 R",
                                           "SLOT2 M", "SLOT2 L", "SLOT2 R",  "SLOT3 M", "SLOT3 L", "SLOT3 R",
                                           "SLOT4 M", "SLOT4 L", "SLOT4 R",  "SIDECHAIN", "MASTER FX"};
inline constexpr std::array kEnvOutputList{"LOGARITHMIC", "LINEAR"};
// clang-format on

// Lengths fix the enum ranges stored in presets; the effect lists keep their blank tails.
static_assert(kFxTypeList.size() == 25 && kFxFeedbackTypeList.size() == 25);
static_assert(kStepCountList.size() == 13 && kTapFeedbackList.size() == 17 && kGateTimebaseList.size() == 22);
static_assert(kLfoTriggerList.size() == 14 && kModSourceList.size() == 15 && kEnvSourceList.size() == 17);

// The lists by name, for tables that refer to a list. kWave stands for the wave menu, whose
// names the catalogue is given by its caller; kNone marks a parameter without a list.
enum class EValueList : unsigned char
{
    kNone,
    kOnOff,
    kLimiter,
    kFxType,
    kFxFeedbackType,
    kMasterFxType,
    kSlotInput1,
    kSlotInput2,
    kSlotInput3,
    kSlotInput4,
    kDirectOut,
    kMasterFxSource,
    kDelayMode,
    kDelayRoute,
    kReverseTrigger,
    kTapCount,
    kTapFeedback,
    kTapDirectOut,
    kTapFxParam,
    kTapPanMode,
    kOutputMode,
    kStepCount,
    kTimebase,
    kGateTimebase,
    kGateDirection,
    kPolarity,
    kLfoSync,
    kLfoMode,
    kLfoTrigger,
    kModSource,
    kLogicType,
    kEnvMode,
    kEnvSource,
    kEnvOutput,
    kWave
};

// Entries of a list; empty for kNone and kWave.
constexpr std::span<const char* const> GetValueList(EValueList list)
{
    switch (list)
    {
    case EValueList::kOnOff:
        return kOnOffList;
    case EValueList::kLimiter:
        return kLimiterList;
    case EValueList::kFxType:
        return kFxTypeList;
    case EValueList::kFxFeedbackType:
        return kFxFeedbackTypeList;
    case EValueList::kMasterFxType:
        return kMasterFxTypeList;
    case EValueList::kSlotInput1:
        return kSlotInputList1;
    case EValueList::kSlotInput2:
        return kSlotInputList2;
    case EValueList::kSlotInput3:
        return kSlotInputList3;
    case EValueList::kSlotInput4:
        return kSlotInputList4;
    case EValueList::kDirectOut:
        return kDirectOutList;
    case EValueList::kMasterFxSource:
        return kMasterFxSourceList;
    case EValueList::kDelayMode:
        return kDelayModeList;
    case EValueList::kDelayRoute:
        return kDelayRouteList;
    case EValueList::kReverseTrigger:
        return kReverseTriggerList;
    case EValueList::kTapCount:
        return kTapCountList;
    case EValueList::kTapFeedback:
        return kTapFeedbackList;
    case EValueList::kTapDirectOut:
        return kTapDirectOutList;
    case EValueList::kTapFxParam:
        return kTapFxParamList;
    case EValueList::kTapPanMode:
        return kTapPanModeList;
    case EValueList::kOutputMode:
        return kOutputModeList;
    case EValueList::kStepCount:
        return kStepCountList;
    case EValueList::kTimebase:
        return kTimebaseList;
    case EValueList::kGateTimebase:
        return kGateTimebaseList;
    case EValueList::kGateDirection:
        return kGateDirectionList;
    case EValueList::kPolarity:
        return kPolarityList;
    case EValueList::kLfoSync:
        return kLfoSyncList;
    case EValueList::kLfoMode:
        return kLfoModeList;
    case EValueList::kLfoTrigger:
        return kLfoTriggerList;
    case EValueList::kModSource:
        return kModSourceList;
    case EValueList::kLogicType:
        return kLogicTypeList;
    case EValueList::kEnvMode:
        return kEnvModeList;
    case EValueList::kEnvSource:
        return kEnvSourceList;
    case EValueList::kEnvOutput:
        return kEnvOutputList;
    case EValueList::kNone:
    case EValueList::kWave:
        break;
    }
    return {};
}
