#include "fx/MasterFxLaws.h"

#include "dsp/FreqMapping.h"
#include "fx/LPHP.h"
#include "reverb/ReverbLaws.h"

#include <algorithm>
#include <cmath>
#include <cstdio>

namespace
{
enum MasterType : int
{
    kAmbience = 39,
    kHall = 40,
    kRoom = 41,
    kFixEq = 42,
    kTwoBandEq = 43,
    kShelfEq = 44,
    kDriveLpHp = 45,
};

// How the module takes an equaliser gain: a shelf its amplitude, a peak the knob fraction.
double ShelfAmp(double percent)
{
    return std::pow(10.0, MasterEqGainDb(percent) / 40.0);
}
double PeakFraction(double percent)
{
    return percent * 0.01;
}

std::string Format(const char* format, double value)
{
    char text[32];
    std::snprintf(text, sizeof text, format, value);
    return text;
}

std::string Hz(double hz)
{
    return hz >= 1000.0 ? Format("%.2f kHz", hz * 0.001) : Format("%.0f Hz", hz);
}

int DriveMode(double percent)
{
    return std::clamp(static_cast<int>(percent * 0.05), 0, static_cast<int>(kLphpModeLabels.size()) - 1);
}
} // namespace

double MasterEqGainDb(double percent)
{
    return (percent - 50.0) * 0.36;
}

MasterFxSetting MasterFxParam(int type, int p, double percent)
{
    const double v = std::clamp(percent, 0.0, 100.0);
    if (p < 0 || p >= kMasterFxKnobs) return {-1, 0.0};
    switch (type)
    {
    case kAmbience:
    {
        const double values[kMasterFxKnobs] = {AmbienceSize(v), AmbienceDecay(v), AmbienceModulation(v),
                                               AmbienceDamp(v)};
        return {p, values[p]};
    }
    case kHall:
    case kRoom:
    {
        const bool hall = type == kHall;
        const double values[kMasterFxKnobs] = {hall ? HallSizeSeconds(v) : RoomSizeSeconds(v),
                                               PreDelaySamples(hall ? HallPreDelayMs(v) : RoomPreDelayMs(v)),
                                               ReverbHighPass(v), hall ? HallDamp(v) : RoomDamp(v)};
        return {p, values[p]};
    }
    case kFixEq:
    {
        const double values[kMasterFxKnobs] = {ShelfAmp(v), v * 0.01 * 4500.0 + 500.0, PeakFraction(v),
                                               ShelfAmp(v)};
        return {p, values[p]};
    }
    case kTwoBandEq:
    {
        const double hz = v * 0.01 * 19950.0 + 50.0;
        const double values[kMasterFxKnobs] = {PeakFraction(v), hz, PeakFraction(v), hz};
        return {p, values[p]};
    }
    case kShelfEq:
    {
        const double values[kMasterFxKnobs] = {ShelfAmp(v), v * 0.01 * 950.0 + 50.0, ShelfAmp(v),
                                               v * 0.01 * 7250.0 + 250.0};
        return {p, values[p]};
    }
    case kDriveLpHp:
    {
        // The corners go as knob fractions: the filters apply the 50 * 400^x law themselves.
        const double values[kMasterFxKnobs] = {v * 0.01, v * 0.01, v * 0.01,
                                               static_cast<double>(DriveMode(v))};
        return {p, values[p]};
    }
    default:
        return {-1, 0.0};
    }
}

std::string MasterFxDisplay(int type, int p, double percent)
{
    const double v = std::clamp(percent, 0.0, 100.0);
    if (p < 0 || p >= kMasterFxKnobs) return {};
    const bool gainKnob = p == 0 || p == 2;
    switch (type)
    {
    case kAmbience:
        if (p == 0) return Format("%.2f x", AmbienceSize(v));
        if (p == 3) return Hz(AmbienceDampHz(v));
        return Format("%.1f %%", v);
    case kHall:
    case kRoom:
        if (p == 0) return Format("%.1f s", type == kHall ? HallSizeSeconds(v) : RoomSizeSeconds(v));
        if (p == 1) return Format("%.0f ms", type == kHall ? HallPreDelayMs(v) : RoomPreDelayMs(v));
        if (p == 2) return Hz(MapFreqHz(static_cast<float>(ReverbHighPass(v))));
        return Format("%.1f %%", v);
    case kFixEq:
        if (p == 1) return Hz(MasterFxParam(type, p, v).value);
        return Format("%+.1f dB", MasterEqGainDb(v));
    case kTwoBandEq:
    case kShelfEq:
        if (gainKnob) return Format("%+.1f dB", MasterEqGainDb(v));
        return Hz(MasterFxParam(type, p, v).value);
    case kDriveLpHp:
        if (p == 3) return kLphpModeLabels[static_cast<std::size_t>(DriveMode(v))];
        if (p == 2) return Format("%.1f %%", v);
        return Hz(MapFreqHz(static_cast<float>(v * 0.01)));
    default:
        return {};
    }
}
