#pragma once
// The built-in demo phrase: two bars of plucked notes on an eighth-note grid at the given tempo,
// panned left and right, with a short noise-burst snare on beats two and four, then one bar for
// the last note to ring. Deterministic: the same rate and tempo give the same samples. Peak -6 dBFS.

#include "AudioFile.h"

namespace render
{
StereoAudio MakeDemoPhrase(double rate, double tempo);
} // namespace render
