#pragma once
// What the effect rack needs to know of the effect types: how to build a module, the law from a
// knob's percent to what the module takes, and whether P5 is the mix. The rack's tests stand in
// their own catalog; the plug-in uses the effect table and factory.

#include <memory>

#include "dsp/DSPShell.h"

// What the rack needs to know of the effect types.
class FxCatalog
{
  public:
    virtual ~FxCatalog() = default;
    // A new module of `type`, or null for OFF and unknown types; a right module is given its left
    // partner (built just before it). Off the audio thread.
    virtual std::unique_ptr<DSPShell> Create(int type, bool isRight, const DSPShell* left) const = 0;
    // What SetParam(p, ...) of a module of `type` receives for a knob at `percent`.
    virtual double ModuleValue(int type, int p, double percent) const = 0;
    // True when P5 of `type` is a mix, which the engine applies (and modulates) itself.
    virtual bool P5IsMix(int type) const = 0;
};

// The effect table and the factory as a catalog. Safe on any thread.
const FxCatalog& EffectTableCatalog();
