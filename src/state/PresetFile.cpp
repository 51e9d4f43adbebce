#include "state/PresetFile.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstdio>
#include <fstream>
#include <iterator>
#include <limits>
#include <sstream>

#include "params/IParamRecord.h"
#include "params/ParamCatalogue.h"
#include "params/ParamIds.h"
#include "state/IStateHost.h"
#include "state/PresetFolders.h"

namespace
{
constexpr int kMaxSectionTokens = kNumParams;
constexpr std::int32_t kAllSteps = 0xFFFF;
constexpr double kTappedMode = 3.0;
constexpr double kMixRoute = 6.0;
constexpr double kOldTappedMixFeedback = 0.7;
constexpr float kOldFreqModDepthScale = 0.27820796f;
// Levels were stored as linear gains before version 4: 20 / ln(10) turns ln into dB.
constexpr double kLnToDb = 8.685889638065037;
// Old time base lists, index by index into the present ones.
constexpr int kOldTimebaseMap[] = {0, 2, 3, 4, 8, 9, 10};
constexpr int kOldTapTimebaseMap[] = {0, 1, 2, 3, 4, 8, 9, 10};

bool InFamily(int id, int first, int count = kNumSlots)
{
    return id >= first && id < first + count;
}

// Whitespace-separated tokens, as a text stream hands them out.
class Tokens
{
  public:
    explicit Tokens(std::string_view text) : mText(text) {}

    std::optional<std::string_view> Next()
    {
        while (mPos < mText.size() && IsSpace(mText[mPos]))
            ++mPos;
        if (mPos >= mText.size()) return std::nullopt;
        const std::size_t start = mPos;
        while (mPos < mText.size() && !IsSpace(mText[mPos]))
            ++mPos;
        return mText.substr(start, mPos - start);
    }

    // A whole token that is a decimal integer of 32 bits; a leading "+" is allowed.
    std::optional<std::int32_t> NextInt()
    {
        auto token = Next();
        if (!token) return std::nullopt;
        std::string_view t = *token;
        if (t.size() > 1 && t[0] == '+' && t[1] != '-') t.remove_prefix(1);
        std::int32_t value = 0;
        const auto [end, ec] = std::from_chars(t.data(), t.data() + t.size(), value);
        if (ec != std::errc() || end != t.data() + t.size()) return std::nullopt;
        return value;
    }

    // A whole token that is a finite number; kept as a 32-bit float, a preset value's precision.
    std::optional<float> NextFloat()
    {
        auto token = Next();
        if (!token) return std::nullopt;
        std::string_view t = *token;
        if (t.size() > 1 && t[0] == '+' && t[1] != '-') t.remove_prefix(1);
        double value = 0.0;
        const auto [end, ec] = std::from_chars(t.data(), t.data() + t.size(), value);
        if (ec != std::errc() || end != t.data() + t.size() || !std::isfinite(value)) return std::nullopt;
        const float f = static_cast<float>(value);
        if (!std::isfinite(f)) return std::nullopt;
        return f;
    }

    bool AtEnd()
    {
        while (mPos < mText.size() && IsSpace(mText[mPos]))
            ++mPos;
        return mPos >= mText.size();
    }

  private:
    static bool IsSpace(char c)
    {
        return c == ' ' || c == '\n' || c == '\t' || c == '\r' || c == '\v' || c == '\f';
    }

    std::string_view mText;
    std::size_t mPos = 0;
};

bool IsFreqModDepthKey(std::string_view key)
{
    for (int i = 0; i < kNumSlots; ++i)
        if (key == ParamKey(kLFOFreqModDepth1 + i)) return true;
    return false;
}

// Reads the ADDPARAMS entries up to "EParams:"; false when a number is missing.
bool ParseExtras(Tokens& tokens, PresetData& data)
{
    auto token = tokens.Next();
    for (int count = 0; token && *token != "EParams:" && count < kMaxSectionTokens; ++count)
    {
        if (*token == "DelayTaps")
        {
            for (int i = 0; i < kNumTapMasks; ++i)
            {
                const auto mask = tokens.NextInt();
                if (!mask) return false;
                data.tapOnMask[static_cast<std::size_t>(i)] = *mask;
                data.tapMasksRead = i + 1;
            }
        }
        else if (*token == "LastPage")
        {
            const auto page = tokens.NextInt();
            if (!page) return false;
            data.lastPage = *page;
        }
        else if (*token == "StepFX")
        {
            for (std::int32_t& mask : data.stepFxMask)
            {
                const auto value = tokens.NextInt();
                if (!value) return false;
                mask = *value;
            }
        }
        else if (*token == "StepMod" && data.version > 7)
        {
            for (auto& row : data.stepModMask)
                for (std::int32_t& mask : row)
                {
                    const auto value = tokens.NextInt();
                    if (!value) return false;
                    mask = *value;
                }
        }
        else if (*token == "StepMod")
        {
            // Before version 8 each step mask came as two halves, and every tap had its effect on.
            for (auto& row : data.stepModMask)
                for (int slot = 0; slot < kNumSlots; ++slot)
                {
                    const auto a = tokens.NextInt();
                    const auto b = a ? tokens.NextInt() : std::nullopt;
                    if (!b) return false;
                    row[slot] = *a | *b;
                    data.stepFxMask[slot] = kAllSteps;
                }
        }
        token = tokens.Next();
    }
    return true;
}
} // namespace

PresetReadResult ParsePresetText(std::string_view text, PresetData& data)
{
    data = PresetData{};
    Tokens tokens(text);
    const auto first = tokens.Next();
    if (!first || *first != kPresetProductWord) return PresetReadResult::kWrongFile;

    // "V.", the writer's version text, "PresetFile!", "PresetVersion:"; then the format version.
    for (int i = 0; i < 4; ++i)
        tokens.Next();
    const auto version = tokens.NextInt();
    if (!version)
    {
        data.versionMissing = true;
        data.stoppedEarly = true;
        return PresetReadResult::kOk;
    }
    data.version = *version;

    if (!ParseExtras(tokens, data))
    {
        data.stoppedEarly = true;
        return PresetReadResult::kOk;
    }

    while (auto key = tokens.Next())
    {
        if (tokens.AtEnd()) break; // a last key without a value: the file simply ends
        auto value = tokens.NextFloat();
        if (!value)
        {
            // A value that isn't a number ends the reading; the keys before it stand.
            data.stoppedEarly = true;
            break;
        }
        if (data.version < 3 && IsFreqModDepthKey(*key))
            *value =
                static_cast<float>(static_cast<double>(*value) * static_cast<double>(kOldFreqModDepthScale));
        data.keys.emplace_back(*key);
        data.values.push_back(*value);
    }
    return PresetReadResult::kOk;
}

PresetReadResult ReadPresetText(const std::string& fullPath, PresetData& data)
{
    data = PresetData{};
    std::ifstream file(fullPath, std::ios::binary);
    if (!file.is_open()) return PresetReadResult::kNoFile;
    std::ostringstream text;
    text << file.rdbuf();
    if (file.bad()) return PresetReadResult::kNoFile;
    return ParsePresetText(text.str(), data);
}

void ApplyPresetMasks(IStateHost& host, const PresetData& data)
{
    StateFields& f = host.Fields();
    std::copy(std::begin(data.stepFxMask), std::end(data.stepFxMask), std::begin(f.mStepFxMask));
    for (int row = 0; row < kNumStepModRows; ++row)
        std::copy(std::begin(data.stepModMask[row]), std::end(data.stepModMask[row]),
                  std::begin(f.mStepModMask[row]));
    for (int i = 0; i < data.tapMasksRead; ++i)
    {
        f.mTapOnMask[i] = data.tapOnMask[static_cast<std::size_t>(i)];
        host.ApplyTapMask(i, f.mTapOnMask[i]);
    }
    if (data.lastPage)
        f.mPageMemory = *data.lastPage >= kFirstLargeDelayPage ? *data.lastPage : kDelayOverviewPage;
    host.RebuildStepViews();
}

double MigratePresetValue(int id, double value, int version)
{
    if (version >= kPresetVersion) return value;
    if (version < 13 && InFamily(id, kFX1FB) && value > 12.0) value += 1.0;
    const bool fxSelector = InFamily(id, kFX1PR) || InFamily(id, kFX1PO);
    if (version < 12 && fxSelector && value > 17.0) value += 1.0;
    if (version < 9)
    {
        if (fxSelector && value > 10.0) value += 2.0;
        if (InFamily(id, kFX1FB) && value > 9.0) value += 1.0;
    }
    if (version < 6 && InFamily(id, kLFOWave1) && value > 18.0) value += 4.0;
    if (version < 5)
    {
        // Slot 3 keeps its stored index: old files were written that way and sound right with it.
        const bool timebase = id == kTimebase1 || id == kTimebase2 || id == kTimebase4;
        const auto remap = [&value](const auto& table)
        {
            const double index = std::floor(value);
            if (index == value && index >= 0.0 && index < static_cast<double>(std::size(table)))
                value = table[static_cast<std::size_t>(index)];
        };
        if (timebase) remap(kOldTimebaseMap);
        if (InFamily(id, kTapTimebase1)) remap(kOldTapTimebaseMap);
    }
    if (version < 4 && InFamily(id, kLevel1))
        value = value > 0.0 ? std::log(value) * kLnToDb : -std::numeric_limits<double>::infinity();
    return value;
}

void ApplyPresetParams(IStateHost& host, PresetData& data)
{
    const std::size_t count = std::min(data.keys.size(), data.values.size());
    std::vector<char> taken(count, 0);
    std::size_t head = 0; // first key not yet taken
    std::optional<double> mode[kNumSlots];
    std::optional<double> route[kNumSlots];

    const int params = host.ParamCount();
    for (int id = 0; id < params; ++id)
    {
        IParamRecord* param = host.Param(id);
        if (param == nullptr) continue;
        const std::string_view key = ParamKey(id);
        while (head < count && taken[head])
            ++head;
        std::size_t hit = head;
        while (hit < count && (taken[hit] || data.keys[hit] != key))
            ++hit;
        if (hit < count)
        {
            taken[hit] = 1;
            const double stored = data.values[hit];
            if (InFamily(id, kDelayMode1)) mode[id - kDelayMode1] = stored;
            if (InFamily(id, kDelayRoute1)) route[id - kDelayRoute1] = stored;
            const double value = MigratePresetValue(id, stored, data.version);
            param->value = std::clamp(value, param->min, param->max);
        }
        else
        {
            param->value = param->defaultValue;
        }
        host.ParamChanged(id);
    }

    if (data.version < kPresetVersion)
        for (int slot = 0; slot < kNumSlots; ++slot)
        {
            IParamRecord* feedback = host.Param(kFeedback1 + slot);
            if (feedback == nullptr || mode[slot] != kTappedMode || route[slot] != kMixRoute) continue;
            feedback->value =
                std::clamp(feedback->value * kOldTappedMixFeedback, feedback->min, feedback->max);
            host.ParamChanged(kFeedback1 + slot);
        }

    // Keys no parameter took stay pending until the next file is read.
    std::vector<std::string> leftKeys;
    std::vector<float> leftValues;
    for (std::size_t i = 0; i < count; ++i)
        if (!taken[i])
        {
            leftKeys.push_back(std::move(data.keys[i]));
            leftValues.push_back(data.values[i]);
        }
    data.keys = std::move(leftKeys);
    data.values = std::move(leftValues);
}

std::string PresetFileText(IStateHost& host)
{
    const StateFields& f = host.Fields();
    std::string text;
    text.reserve(4096);
    text += std::string(kPresetProductWord) + " V. " + std::string(kPresetWriterVersion) + " PresetFile!\n";
    text += "PresetVersion: " + std::to_string(kPresetVersion) + "\n\nADDPARAMS:\n\nDelayTaps\n";
    const auto words = [&text](const auto& masks)
    {
        for (std::int32_t m : masks)
            text += std::to_string(m) + " ";
        text += "\n";
    };
    words(f.mTapOnMask);
    text += "LastPage\n" + std::to_string(f.mLastPage) + "\nStepFX\n";
    words(f.mStepFxMask);
    text += "StepMod\n";
    for (const auto& row : f.mStepModMask)
        for (std::int32_t m : row)
            text += std::to_string(m) + " ";
    text += "\n\nEParams:\n";

    char number[32];
    for (int id = 0; id < host.ParamCount(); ++id)
    {
        const IParamRecord* param = host.Param(id);
        if (param == nullptr) continue;
        const float value = static_cast<float>(param->value.Load());
        if (value == static_cast<float>(param->defaultValue)) continue;
        // The stream's default: six significant digits, the shorter of fixed and scientific.
        std::snprintf(number, sizeof(number), "%g", static_cast<double>(value));
        text += std::string(ParamKey(id)) + " " + number + "\n";
    }
    return text;
}

bool WritePresetText(const std::string& fullPath, IStateHost& host)
{
    std::ofstream file(fullPath, std::ios::binary | std::ios::trunc);
    if (!file.is_open()) return false;
    const std::string text = PresetFileText(host);
    file.write(text.data(), static_cast<std::streamsize>(text.size()));
    file.flush();
    return file.good();
}

std::string PresetNameOf(std::string_view relativePath)
{
    const std::size_t slash = relativePath.rfind('/');
    const std::size_t start = slash == std::string_view::npos ? 0 : slash + 1;
    const std::size_t dot = relativePath.rfind('.');
    const std::size_t end = dot == std::string_view::npos || dot < start ? relativePath.size() : dot;
    std::string name(relativePath.substr(start, end - start));
    if (name.size() > 38) name.resize(38);
    if (const std::size_t inner = name.rfind('.'); inner != std::string::npos) name.resize(inner);
    return name;
}

std::string PresetFolderLabelOf(std::string_view relativePath)
{
    const std::string_view path = relativePath.empty() ? relativePath : relativePath.substr(1);
    const std::size_t first = path.find('/');
    const std::size_t last = path.rfind('/');
    std::string_view tree;
    std::string_view folder;
    if (first != last)
    {
        tree = path.substr(0, first);
        folder = path.substr(first + 1, last - first - 1);
    }
    std::string label = tree == kFactoryTreeName ? "F:" : "U:";
    label += folder.substr(0, 30);
    return label;
}
