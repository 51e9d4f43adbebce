#include "fx/EffectTable.h"

#include "fx/FilterFx.h"
#include "fx/LPHP.h"
#include "fx/Shaper.h"

#include <array>
#include <string_view>

namespace
{
// The one list label set no class exports: the frequency shifter's scales.
constexpr std::array kScaleLabels{"x1", "x10", "x100"};

// One parameter of a row, as written below; Row spreads five of them over the record's arrays.
struct Param
{
    const char* name = "";
    const char* shortLabel = nullptr; // null: hidden
    float def = 0.0f;                 // knob fraction; for a list, the entry index
    bool bipolar = false;
    std::span<const char* const> list = {};
};

constexpr Param Knob(const char* name, const char* shortLabel, float def)
{
    return {name, shortLabel, def, false, {}};
}
// A bipolar knob: neutral at 50 %, its usual default.
constexpr Param Bi(const char* name, const char* shortLabel, float def = 0.5f)
{
    return {name, shortLabel, def, true, {}};
}
constexpr Param Hidden(const char* name, float def)
{
    return {name, nullptr, def, false, {}};
}
constexpr Param List(const char* name, const char* shortLabel, int index, std::span<const char* const> labels)
{
    return {name, shortLabel, static_cast<float>(index), false, labels};
}

constexpr FxTypeInfo Row(int id, const char* label, int colour, FxModuleClass module, Param p1, Param p2,
                         Param p3, Param p4, Param p5)
{
    FxTypeInfo info{};
    info.id = id;
    info.label = label;
    info.colour = colour;
    info.module = module;
    info.p5IsMix = module != FxModuleClass::kNone;
    const Param params[kFxParams] = {p1, p2, p3, p4, p5};
    for (int p = 0; p < kFxParams; ++p)
    {
        const Param& q = params[p];
        const int count = static_cast<int>(q.list.size()) - 1;
        info.names[p] = q.name;
        info.shortLabels[p] = q.shortLabel;
        info.hidden[p] = q.shortLabel == nullptr;
        info.bipolar[p] = q.bipolar;
        info.isList[p] = !q.list.empty();
        info.listCount[p] = info.isList[p] ? count : 0;
        // A list's default is given as its index and stored as the knob fraction that selects it.
        info.defaults[p] = info.isList[p] ? q.def / static_cast<float>(count) : q.def;
        info.skew[p] = 1.0f;
        info.listLabels[p] = q.list;
    }
    return info;
}

// A type whose P5 is a parameter of its own rather than the wet amount.
constexpr FxTypeInfo NoMix(FxTypeInfo info)
{
    info.p5IsMix = false;
    return info;
}

constexpr Param kOff{};

// The shaper rows differ only in id, label, amount and the third parameter (resonance or filter
// mode). The amounts sit near unity loudness for noise at -6 dBFS: rectify is silent at 50 %.
constexpr FxTypeInfo ShaperRow(int id, const char* label, bool modeList, float amount)
{
    return Row(id, label, kFxColourShaper, FxModuleClass::kShaper, Knob("SHAPE AMOUNT ", "GAIN", amount),
               Knob("SHAPER FILTER FREQ", modeList ? "FREQ" : "LOPASS", 1.0f),
               modeList ? List("FILTER MODE", "MODE", 0, kShaperFilterModeLabels)
                        : Hidden("FILTER RES", 0.0f),
               Bi("SHAPE FILTER SPREAD", "SPREAD"), Knob("SHAPE MIX ", "MIX", 1.0f));
}

constexpr FxTypeInfo FilterRow(int id, const char* label, std::span<const char* const> modes)
{
    return Row(id, label, kFxColourFilter, FxModuleClass::kFilter, Knob("FILTER FREQ", "FREQ", 0.5f),
               Hidden("FILTER Q", 0.3f), Bi("FILTER SPREAD", "SPREAD"), List("FILTER MODE", "MODE", 0, modes),
               Knob("FILTER MIX", "MIX", 1.0f));
}

// clang-format off
constexpr std::array kTable{
    Row(0, "OFF", kFxColourNone, FxModuleClass::kNone, kOff, kOff, kOff, kOff, kOff),
    Row(1, "FREQ SHIFT", kFxColourModulation, FxModuleClass::kFreqShifter,
        Bi("FREQ SHIFT", "FREQ", 0.6f), List("FREQSHIFT SCALE", "SCALE", 1, kScaleLabels),
        Knob("FRQ SHIFT FB", "FB", 0.0f), Bi("FRQ SHIFT SPREAD", "SPREAD"), Knob("FREQSHIFT MIX", "MIX", 1.0f)),
    Row(2, "RING MOD", kFxColourModulation, FxModuleClass::kRingMod,
        Knob("RINGMOD FREQ", "FREQ", 0.5f), Knob("RINGMOD SHAPE", "SHAPE", 0.0f),
        Knob("RINGMOD WIDTH", "WIDTH", 0.0f), Bi("RINGMOD SPREAD", "SPREAD"), Knob("RINGMOD MIX", "MIX", 1.0f)),
    Row(3, "PHASE", kFxColourModulation, FxModuleClass::kPhaser,
        Knob("PHASE BASE", "PHASE", 0.5f), Knob("PHASE DEPTH", "DEPTH", 0.5f),
        Knob("PHASE STAGES", "STAGES", 0.5f), Knob("PHASE SPREAD", "SPREAD", 0.0f),
        Knob("PHASE FEEDBACK", "FB", 0.5f)),
    Row(4, "PITCH SHIFT", kFxColourPitch, FxModuleClass::kPitchShifter,
        Bi("PITCH COARSE", "COARSE"), Bi("PITCH FINE", "FINE"), Knob("PITCH BUF SIZE", "SIZE", 0.5f),
        Bi("PITCH SPREAD", "DETUNE"), Knob("PITCH SHIFT MIX", "MIX", 1.0f)),
    Row(5, "PITCH SHIFT ST", kFxColourPitch, FxModuleClass::kPitchShifter,
        Bi("PITCH1 COARSE ", "COARSE L"), Bi("PITCH2 COARSE", "COARSE R"), Knob("PITCH BUF SIZE", "SIZE", 0.5f),
        Bi("PITCH DETUNE", "DETUNE"), Knob("PITCH SHIFT MIX", "MIX", 1.0f)),
    NoMix(Row(6, "WAVE SHAPE", kFxColourShaper, FxModuleClass::kShaper,
        List("SHAPE MODE", "MODE", 0, kShapeModeLabels), Knob("GAIN", "GAIN", 0.25f),
        Knob("FILTER FREQ", "FREQ", 0.5f), Hidden("FILTER Q", 0.3f), Bi("SHAPE FILTER SPREAD", "SPREAD"))),
    ShaperRow(14, "SATURATE", false, 0.3f),
    ShaperRow(15, "SATURATE", true, 0.3f),
    ShaperRow(16, "RECTIFY", false, 0.9f),
    ShaperRow(17, "RECTIFY", true, 0.9f),
    ShaperRow(18, "DESTROY", false, 0.1f),
    ShaperRow(19, "DESTROY", true, 0.1f),
    ShaperRow(20, "NOISE", false, 0.3f),
    ShaperRow(21, "NOISE", true, 0.3f),
    Row(22, "LOFI II", kFxColourShaper, FxModuleClass::kLofi,
        Knob("LOFI DRIVE ", "DRIVE", 0.1f), Knob("LOFI NOISE", "NOISE", 0.0f),
        Knob("LOFI DOWNSAMPLE", "DNSAMPLE", 0.3f), Knob("LOFI BITCRUSH", "BITCRUSH", 0.3f),
        Knob("LOFI MIX ", "MIX", 1.0f)),
    // Without a mode list the filter is a high-pass, open at 0.
    Row(23, "LOFI I", kFxColourShaper, FxModuleClass::kShaper,
        Knob("LOFI AMOUNT ", "RATE", 0.3f), Knob("LOFI FILTER FREQ", "HIPASS", 0.0f), Hidden("LOFI RES", 0.0f),
        Bi("LOFI FILTER SPREAD", "SPREAD"), Knob("LOFI MIX ", "MIX", 1.0f)),
    Row(24, "LOFI I", kFxColourShaper, FxModuleClass::kShaper,
        Knob("LOFI AMOUNT ", "RATE", 0.3f), Knob("LOFI FILTER FREQ", "FREQ", 1.0f),
        List("FILTER MODE", "MODE", 0, kShaperFilterModeLabels), Bi("LOFI FILTER SPREAD", "SPREAD"),
        Knob("LOFI MIX ", "MIX", 1.0f)),
    FilterRow(29, "MULTI SVF", kSvfModeLabels),
    FilterRow(30, "HP/LP 24dB", kLowHighModeLabels),
    FilterRow(31, "MULTI 12dB", kMultiModeLabels),
    Row(32, "MULTI 12dB", kFxColourFilter, FxModuleClass::kFilter,
        Knob("FILTER FREQ", "FREQ", 0.5f), Knob("FILTER SLOPE", "SLOPE", 0.0f), Bi("FILTER SPREAD", "SPREAD"),
        List("FILTER MODE", "MODE", 0, kMultiModeLabels), Knob("FILTER MIX", "MIX", 1.0f)),
    Row(33, "PEAK", kFxColourFilter, FxModuleClass::kFilter,
        Knob("FILTER FREQ", "FREQ", 0.5f), Hidden("FILTER Q", 0.5f), Bi("FILTER SPREAD", "SPREAD"),
        Bi("PEAK GAIN", "GAIN", 0.75f), Knob("DIM", "DIM", 1.0f)),
    Row(34, "PHASEBP", kFxColourFilter, FxModuleClass::kPhaseFilter,
        Knob("PHASEBP FILTER FREQ", "FREQ", 0.5f), Hidden("FILTER Q", 0.5f), Bi("FILTER SPREAD", "SPREAD"),
        Knob("FILTER POLES", "POLES", 0.5f), Knob("FRQ SHIFT SPREAD", "MIX", 1.0f)),
    NoMix(Row(35, "COMB", kFxColourFilter, FxModuleClass::kComb,
        Knob("COMB FRQ", "FREQ", 0.5f), Knob("COMB FEEDBACK", "FB", 0.5f), Knob("COMB HIPASS", "HIPASS", 0.0f),
        Knob("COMB LOPASS", "LOPASS", 0.0f), Knob("COMB SPREAD", "SPREAD", 0.0f))),
    NoMix(Row(36, "VOWEL", kFxColourFilter, FxModuleClass::kFilter,
        Knob("VOWEL POS", "VOWEL POS", 0.5f), Knob("VOWEL SET", "MODE", 0.0f), Bi("VOWEL SPREAD", "SPREAD"),
        Knob("VOWEL GAIN", "GAIN", 0.5f), Knob("VOWEL DIM", "DIM", 1.0f))),
    NoMix(Row(37, "COMPRESSOR", kFxColourDynamics, FxModuleClass::kCompressor,
        Knob("COMP THRESHOLD", "THRESH", 0.6f), Knob("COMP RATIO", "RATIO", 0.3f),
        Knob("COMP ATTACK", "ATTACK", 0.4f), Knob("COMP RELEASE", "RELEASE", 0.5f), Knob("COMP GAIN", "GAIN", 0.1f))),
    Row(56, "DRIVE LP+HP", kFxColourFilter, FxModuleClass::kDriveFilter,
        Knob("FILTER FREQ", "FREQ HP", 0.0f), Knob("FILTER FREQ", "FREQ LP", 1.0f), Knob("GAIN", "GAIN", 0.2f),
        List("FILTER MODE", "MODE", 1, kLphpModeLabels), Knob("FILTER MIX", "MIX", 1.0f)),
    Row(57, "VARAIBLE LPHP", kFxColourFilter, FxModuleClass::kVariableFilter,
        Knob("HP FREQ", "FREQ HP", 0.0f), List("HP SLOPE", "HP SLOPE", 1, kVariLphpSlopeLabels),
        Knob("LP FREQ", "FREQ LP", 1.0f), List("LP SLOPE", "LP SLOPE", 1, kVariLphpSlopeLabels),
        Knob("FILTER MIX", "MIX", 1.0f)),
};

constexpr std::array kMainMenuIds{0, 1, 2, 3, 4, 5, 14, 16, 18, 20, 23, 22, 6, 29, 30, 31, 33, 56, 57, 34, 35, 36, 37};
constexpr std::array kMainMenuLabels{
    "OFF", "FREQ SHIFT", "RING MOD", "PHASE", "PITCH SHIFT", "PITCH SHIFT ST", "SATURATE", "RECTIFY", "DESTROY",
    "NOISE", "LOFI I", "LOFI II", "WAVE SHAPE", "MULTI SVF", "HP/LP 24dB", "MULTI 12dB", "PEAK", "DRIVE LP+HP",
    "VARAIBLE LPHP", "PHASEBP", "COMB", "VOWEL", "COMPRESSOR"};
constexpr std::array kFeedbackMenuIds{0, 1, 2, 4, 5, 15, 17, 19, 21, 24, 22, 32, 56, 57, 37};
constexpr std::array kFeedbackMenuLabels{
    "OFF", "FREQ SHIFT", "RING MOD", "PITCH SHIFT", "PITCH SHIFT ST", "SATURATE", "RECTIFY", "DESTROY", "NOISE",
    "LOFI I", "LOFI II", "MULTI 12dB", "DRIVE LP+HP", "COMPRESSOR"};
// clang-format on

constexpr const FxTypeInfo* Find(int id)
{
    for (const FxTypeInfo& info : kTable)
        if (info.id == id) return &info;
    return nullptr;
}

// Every record: ids ascending, defaults in range, list labels matching their counts, a default
// index inside its list, and a knob label exactly where the parameter is shown.
constexpr bool TableIsSound()
{
    for (std::size_t i = 0; i < kTable.size(); ++i)
    {
        const FxTypeInfo& r = kTable[i];
        if (i > 0 && r.id <= kTable[i - 1].id) return false;
        for (int p = 0; p < kFxParams; ++p)
        {
            if (!(r.defaults[p] >= 0.0f && r.defaults[p] <= 1.0f)) return false;
            if (r.isList[p] &&
                (r.listCount[p] < 1 || r.listLabels[p].size() != std::size_t(r.listCount[p] + 1)))
                return false;
            if (r.hidden[p] != (r.shortLabels[p] == nullptr)) return false;
        }
    }
    return true;
}

// Every menu id has a record whose label is the one the menu shows (the feedback menu's last label
// is off by one id by design, so only the entries before it are compared).
template <std::size_t N, std::size_t M>
constexpr bool MenuMatches(const std::array<int, N>& ids, const std::array<const char*, M>& labels,
                           std::size_t compared)
{
    for (std::size_t i = 0; i < N; ++i)
        if (Find(ids[i]) == nullptr) return false;
    for (std::size_t i = 0; i < compared; ++i)
        if (std::string_view(Find(ids[i])->label) != labels[i]) return false;
    return true;
}

static_assert(kTable.size() == 1 + 6 + 11 + 9 + 2, "one record per type id");
static_assert(TableIsSound());
static_assert(kMainMenuIds.size() == 23 && kMainMenuLabels.size() == kMainMenuIds.size());
static_assert(kFeedbackMenuIds.size() == 15 && kFeedbackMenuLabels.size() == 14);
static_assert(MenuMatches(kMainMenuIds, kMainMenuLabels, kMainMenuLabels.size()));
static_assert(MenuMatches(kFeedbackMenuIds, kFeedbackMenuLabels, kFeedbackMenuLabels.size() - 1));
} // namespace

const FxTypeInfo* FindFxType(int id)
{
    return Find(id);
}

std::span<const FxTypeInfo> FxTypeTable()
{
    return kTable;
}

bool FxP5IsMix(int id)
{
    const FxTypeInfo* info = Find(id);
    return info != nullptr && info->p5IsMix;
}

std::span<const int> FxMenuIds(int kind)
{
    if (kind == kFxMenuFeedback) return kFeedbackMenuIds;
    if (kind == kFxMenuPre || kind == kFxMenuPost) return kMainMenuIds;
    return {};
}

std::span<const char* const> FxMenuLabels(int kind)
{
    if (kind == kFxMenuFeedback) return kFeedbackMenuLabels;
    if (kind == kFxMenuPre || kind == kFxMenuPost) return kMainMenuLabels;
    return {};
}

int FxTypeFromMenu(int kind, int menuIndex)
{
    // The labels bound the choice: the feedback menu's extra id can't be picked.
    const std::span<const char* const> labels = FxMenuLabels(kind);
    if (menuIndex < 0 || menuIndex >= static_cast<int>(labels.size())) return 0;
    return FxMenuIds(kind)[static_cast<std::size_t>(menuIndex)];
}
