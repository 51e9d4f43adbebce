#pragma once
// One parameter: its kind, range, normalised mapping, texts and current value in its own unit.
// Ranges, names and texts are set once while the catalogue is built (before any host call) and
// never change afterwards. `value` is written under the plug-in's parameter mutex by the host and
// editor threads and read lock-free by the audio thread, hence a relaxed atomic.

#include "dsp/Relaxed.h"

#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

class IParamRecord
{
  public:
    enum EParamType
    {
        kTypeNone = 0,
        kTypeBool = 1,
        kTypeInt = 2,
        kTypeEnum = 3,
        kTypeDouble = 4
    };

    // Room of the fixed text fields, terminator included.
    static constexpr int kTextLen = 32;

    struct DisplayText
    {
        int value;
        char text[kTextLen];
    };

    // Replaces the power curve in both directions: toNormalized takes the position t in 0..1
    // within min..max, fromNormalized gives it back.
    struct Mapping
    {
        std::function<double(double)> toNormalized;
        std::function<double(double)> fromNormalized;
    };

    EParamType type = kTypeNone;
    Relaxed<double> value = 0.0;
    double min = 0.0;
    double max = 1.0;
    double step = 1.0;
    double shape = 1.0;
    double defaultValue = 0.0;
    int displayPrecision = 0;
    char name[kTextLen] = {};
    char label[kTextLen] = {};
    char group[kTextLen] = {};
    bool negateDisplay = false;
    bool canAutomate = true;
    bool linkedFlag = false;
    std::vector<DisplayText> displayTexts;
    std::optional<Mapping> mapping;

    // Labels that stand at fixed places of the scale, label k at k x spacing (the note values of a
    // synced LFO rate). Switched by the engine on any thread while the host reads the texts.
    struct ScaleLabels
    {
        const char* const* labels;
        int count;
        double spacing;
    };
    Relaxed<const ScaleLabels*> scaleLabels{nullptr};

    // Initialisers. keepValue leaves `value` alone and drops the display texts added so far.
    // A type already set is kept, so a record can be re-initialised with other values.
    void InitDouble(const char* name, double defaultVal, double min, double max, double step,
                    const char* label = "", const char* group = "", double shape = 1.0,
                    bool keepValue = false);
    void InitInt(const char* name, int defaultVal, int min, int max, const char* label = "",
                 const char* group = "", bool keepValue = false);
    void InitEnum(const char* name, int defaultVal, int count, const char* label = "", const char* group = "",
                  bool keepValue = false);
    void InitBool(const char* name, bool defaultVal, const char* label = "", const char* group = "",
                  bool keepValue = false);
    void SetDisplayText(int value, const char* text);

    // Digits behind the point for a step: multiplies by 10 until whole, at most six times.
    static int PrecisionOfStep(double step);

    // value -> 0..1: clamped to min..max, then the power curve t^(1/shape).
    double GetNormalized(double x) const;
    double GetNormalized() const { return GetNormalized(value); }
    // 0..1 -> value: min + (max - min) * n^shape, neither clamped nor quantised.
    double GetNonNormalized(double n) const;
    // The value that SetNormalized(n) stores, without storing it.
    double QuantizedFromNormalized(double n) const;
    // Sets `value` from a normalised n: non-double kinds snap to the nearest step (half up); the
    // result is cut at max, never at min.
    void SetNormalized(double n) { value = QuantizedFromNormalized(n); }

    // Text of the display text whose value is exactly v (an integer), or null; empty texts don't count.
    const char* GetDisplayText(double v) const;
    // Text for v, a value in the parameter's unit, or a normalised value when `normalized`: a
    // non-empty display text if wanted and present, else the number with displayPrecision digits.
    std::string GetDisplayForHost(double v, bool normalized, bool withDisplayTexts = true) const;
    // Value (in the parameter's unit) whose display text is exactly `text`; false when none is.
    bool GetValueFromDisplayText(std::string_view text, double& valueOut) const;
    // A list: a whole-numbered parameter whose values are named by display texts. Its values are
    // chosen by name only; a number typed for it names no entry.
    bool IsList() const { return type != kTypeDouble && !displayTexts.empty(); }
};
