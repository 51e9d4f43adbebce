#pragma once
// Builds the modules of an effect type: one per channel for the slot types, one stereo module for
// the master types. Allocates (the modules size their buffers for 96 kHz here), so it runs on the
// set-up or parameter thread, never on the audio thread. A new module is in its constructed state
// with no modulation wired; the caller sends the parameters.

#include "dsp/DSPShell.h"

#include <memory>

// The module of a slot effect type for the left or right channel; null for OFF and unknown ids.
// A right module is given its left partner, built just before it, where the type pairs them (the
// ring modulator's right carrier follows the left one's phase).
std::unique_ptr<DSPShell> CreateFxModule(int type, bool isRight, const DSPShell* left = nullptr);
// The module of a master effect type 39..45; null for any other id.
std::unique_ptr<DSPShell> CreateMasterFxModule(int type);
