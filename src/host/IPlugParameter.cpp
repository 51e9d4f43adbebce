#include "host/IPlugParameter.h"

#include "host/HostText.h"
#include "params/IParamRecord.h"

#include <cmath>
#include <cstdlib>

using namespace Steinberg;
using namespace Steinberg::Vst;

namespace
{
constexpr int kTextUnits = 128;
}

IPlugParameter::IPlugParameter(IParamRecord& record, ParamID id, UnitID unitId) : mRecord(record)
{
    info.id = id;
    WidenText(record.name, info.title, kTextUnits);
    WidenText(record.label, info.units, kTextUnits);
    info.stepCount =
        record.type == IParamRecord::kTypeDouble ? 0 : static_cast<int32>(record.max - record.min);
    info.defaultNormalizedValue = record.GetNormalized(record.defaultValue);
    info.flags = record.canAutomate ? ParameterInfo::kCanAutomate : 0;
    info.unitId = unitId;
    precision = record.displayPrecision;
    valueNormalized = info.defaultNormalizedValue;
}

void IPlugParameter::toString(ParamValue normalized, String128 string) const
{
    WidenText(mRecord.GetDisplayForHost(normalized, true), string, kTextUnits);
}

bool IPlugParameter::fromString(const TChar* string, ParamValue& normalized) const
{
    const std::string text = NarrowText(string, kTextUnits);
    double value = 0.0;
    if (!mRecord.GetValueFromDisplayText(text, value))
    {
        // "1/17" for a time base or "08" for a tap count is no entry of the list: refused, rather
        // than read as a position that may hold another entry or none.
        if (mRecord.IsList()) return false;
        char* end = nullptr;
        value = std::strtod(text.c_str(), &end);
        if (end == text.c_str() || !std::isfinite(value)) return false;
        if (mRecord.negateDisplay) value = -value;
    }
    normalized = mRecord.GetNormalized(value);
    return true;
}

ParamValue IPlugParameter::toPlain(ParamValue normalized) const
{
    return mRecord.QuantizedFromNormalized(normalized);
}

ParamValue IPlugParameter::toNormalized(ParamValue plain) const
{
    return mRecord.GetNormalized(plain);
}
