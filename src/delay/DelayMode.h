#pragma once
// The two lists a slot's delay is set up by: how a channel reads its ring (DelayMode) and how the
// engine routes around the two channels of a slot (DelayStereoMode). Values are stored in presets
// and automated by hosts, so their order is fixed.

enum DelayMode : int
{
    DelayForward = 0,  // "FORWARD": all-pass head, high-pass then low-pass behind it
    DelayBackward = 1, // "BACKWARD": reverse segments with a cross-fade at each restart
    DelayGrain = 2,    // "GRAIN": repeating grains at a variable speed, cubic head
    DelayTapped = 3,   // "TAPPED": one all-pass head per tap, no filters
};

inline constexpr int kNumDelayModes = 4;
inline constexpr const char* kDelayModeLabels[kNumDelayModes] = {"FORWARD", "BACKWARD", "GRAIN", "TAPPED"};

enum DelayStereoMode : int
{
    DelayDual = 0,
    DelayPingPongL = 1,
    DelayPingPongML = 2,
    DelayPingPongR = 3,
    DelayPingPongMR = 4,
    DelayPingPongLR = 5,
    DelayMix = 6,
    DelayMixL = 7,
    DelayMixR = 8,
};

inline constexpr int kNumDelayStereoModes = 9;
inline constexpr const char* kDelayStereoModeLabels[kNumDelayStereoModes] = {
    "DUAL", "PP-L", "PP-ML", "PP-R", "PP-MR", "PP-L+R", "MIX", "M-L", "M-R"};
