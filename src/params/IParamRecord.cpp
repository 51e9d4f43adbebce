#include "params/IParamRecord.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstring>

namespace
{
void CopyText(char (&dst)[IParamRecord::kTextLen], const char* src)
{
    std::snprintf(dst, sizeof(dst), "%s", src ? src : "");
}
} // namespace

int IParamRecord::PrecisionOfStep(double stepSize)
{
    int digits = 0;
    double scaled = std::fabs(stepSize);
    // A relative tolerance for the binary error of decimal steps (0.01 is not exactly a hundredth).
    while (digits < 6 && std::fabs(scaled - std::round(scaled)) > 1e-9 * scaled)
    {
        scaled *= 10.0;
        ++digits;
    }
    return digits;
}

void IParamRecord::InitDouble(const char* nameText, double defaultVal, double minVal, double maxVal,
                              double stepSize, const char* labelText, const char* groupText, double shapeVal,
                              bool keepValue)
{
    if (type == kTypeNone) type = kTypeDouble;
    CopyText(name, nameText);
    CopyText(label, labelText);
    CopyText(group, groupText);
    min = minVal;
    max = std::max(maxVal, minVal + stepSize);
    step = stepSize;
    if (shapeVal != 0.0) shape = shapeVal;
    defaultValue = defaultVal;
    displayPrecision = PrecisionOfStep(stepSize);
    if (keepValue)
        displayTexts.clear();
    else
        value = defaultVal;
}

void IParamRecord::InitInt(const char* nameText, int defaultVal, int minVal, int maxVal,
                           const char* labelText, const char* groupText, bool keepValue)
{
    if (type == kTypeNone) type = kTypeInt;
    InitDouble(nameText, defaultVal, minVal, std::max(maxVal, minVal + 1), 1.0, labelText, groupText, 1.0,
               keepValue);
}

void IParamRecord::InitEnum(const char* nameText, int defaultVal, int count, const char* labelText,
                            const char* groupText, bool keepValue)
{
    if (type == kTypeNone) type = kTypeEnum;
    InitInt(nameText, defaultVal, 0, count - 1, labelText, groupText, keepValue);
}

void IParamRecord::InitBool(const char* nameText, bool defaultVal, const char* labelText,
                            const char* groupText, bool keepValue)
{
    if (type == kTypeNone) type = kTypeBool;
    InitEnum(nameText, defaultVal ? 1 : 0, 2, labelText, groupText, keepValue);
    SetDisplayText(0, "");
    SetDisplayText(1, "on");
}

void IParamRecord::SetDisplayText(int textValue, const char* text)
{
    DisplayText entry{textValue, {}};
    CopyText(entry.text, text);
    displayTexts.push_back(entry);
}

double IParamRecord::GetNormalized(double x) const
{
    const double t = (std::clamp(x, min, max) - min) / (max - min);
    if (mapping) return mapping->toNormalized(t);
    return std::pow(t, 1.0 / shape);
}

double IParamRecord::GetNonNormalized(double n) const
{
    const double t = mapping ? mapping->fromNormalized(n) : std::pow(n, shape);
    return min + (max - min) * t;
}

double IParamRecord::QuantizedFromNormalized(double n) const
{
    double v = GetNonNormalized(n);
    if (type != kTypeDouble) v = std::floor(v / step + 0.5) * step;
    return std::min(v, max);
}

const char* IParamRecord::GetDisplayText(double v) const
{
    if (v != std::floor(v)) return nullptr;
    for (const DisplayText& entry : displayTexts)
        if (entry.value == v && entry.text[0] != '\0') return entry.text;
    return nullptr;
}

std::string IParamRecord::GetDisplayForHost(double v, bool normalized, bool withDisplayTexts) const
{
    // A normalised value shows the value that setting it would store, so that an int or enum
    // reads as the entry it selects.
    if (normalized) v = QuantizedFromNormalized(v);
    if (const ScaleLabels* scale = scaleLabels)
        return scale
            ->labels[std::clamp(static_cast<int>(std::lround(v / scale->spacing)), 0, scale->count - 1)];
    if (withDisplayTexts)
        if (const char* text = GetDisplayText(v)) return text;
    if (negateDisplay) v = -v;
    char buf[64];
    if (displayPrecision == 0)
        std::snprintf(buf, sizeof(buf), "%lld", static_cast<long long>(std::llround(v)));
    else
        std::snprintf(buf, sizeof(buf), "%.*f", displayPrecision, v);
    return buf;
}

bool IParamRecord::GetValueFromDisplayText(std::string_view text, double& valueOut) const
{
    if (const ScaleLabels* scale = scaleLabels)
        for (int k = 0; k < scale->count; ++k)
            if (text == scale->labels[k])
            {
                valueOut = k * scale->spacing;
                return true;
            }
    for (const DisplayText& entry : displayTexts)
    {
        if (text == entry.text)
        {
            valueOut = entry.value;
            return true;
        }
    }
    return false;
}
