#include "ParameterSettings.h"

#include "ParseNumber.h"

#include "Utf16.h"

#include <algorithm>
#include <cerrno>
#include <cmath>
#include <cstdlib>
#include <sstream>

namespace render
{
using namespace Steinberg;
using namespace Steinberg::Vst;

namespace
{
std::string Trim(const std::string& s)
{
    const auto first = s.find_first_not_of(" \t");
    if (first == std::string::npos) return {};
    return s.substr(first, s.find_last_not_of(" \t") - first + 1);
}

std::string Number(double v)
{
    std::ostringstream out;
    out << v;
    return out.str();
}

// The step of a stepped parameter whose display text is exactly text, as a normalised value.
bool MatchStepText(IEditController& c, const vst3host::ParamEntry& p, const std::string& text,
                   double& normalized)
{
    for (int32 k = 0; k <= p.stepCount; ++k)
    {
        const double v = static_cast<double>(k) / p.stepCount;
        String128 shown{};
        if (c.getParamStringByValue(p.id, v, shown) == kResultOk && vst3host::ToUtf8(shown) == text)
        {
            normalized = v;
            return true;
        }
    }
    return false;
}
} // namespace

bool ResolveSetting(vst3host::PluginInstance& plug, const std::string& text, ParameterSetting& setting,
                    std::string& error, std::vector<std::string>& warnings)
{
    // Titles may hold '=' themselves: take the first split whose left side names a parameter.
    const vst3host::ParamEntry* param = nullptr;
    std::string name;
    std::string value;
    for (size_t eq = text.find('='); eq != std::string::npos && !param; eq = text.find('=', eq + 1))
    {
        name = Trim(text.substr(0, eq));
        value = Trim(text.substr(eq + 1));
        param = plug.Find(name);
    }
    if (!param)
    {
        error = "unknown parameter \"" + Trim(text.substr(0, text.find('='))) + "\"";
        return false;
    }

    IEditController& c = plug.Controller();
    double normalized = 0.0;
    if (param->stepCount > 0 && MatchStepText(c, *param, value, normalized))
    {
        setting = {param, normalized};
        return true;
    }
    double plain = 0.0;
    if (ToNumber(value, plain))
    {
        const double a = c.normalizedParamToPlain(param->id, 0.0);
        const double b = c.normalizedParamToPlain(param->id, 1.0);
        const double lo = std::min(a, b);
        const double hi = std::max(a, b);
        const double clamped = std::clamp(plain, lo, hi);
        if (clamped != plain)
            warnings.push_back(param->title + " = " + value + " is outside " + Number(lo) + " to " +
                               Number(hi) + (param->units.empty() ? "" : " " + param->units) +
                               "; clamped to " + Number(clamped));
        setting = {param, std::clamp(c.plainParamToNormalized(param->id, clamped), 0.0, 1.0)};
        return true;
    }
    // Other spellings of a list entry the plug-in itself reads. Continuous parameters take numbers
    // only, so that a typo never becomes some value.
    std::u16string wide = vst3host::ToUtf16(value);
    if (param->stepCount > 0 && !value.empty() &&
        c.getParamValueByString(param->id, reinterpret_cast<TChar*>(wide.data()), normalized) == kResultOk &&
        std::isfinite(normalized))
    {
        setting = {param, std::clamp(normalized, 0.0, 1.0)};
        return true;
    }
    error = "bad value \"" + value + "\" for parameter \"" + param->title + "\"" +
            (param->stepCount > 0 ? ": give a number or one of its display texts" : ": give a number") +
            (param->units.empty() ? "" : " in " + param->units);
    return false;
}
} // namespace render
