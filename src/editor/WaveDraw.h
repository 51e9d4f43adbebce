#pragma once
// One cycle of an LFO's wave, drawn across the rectangle with the LFO's settings: the phase
// offset shifts where the cycle starts, reverse reads it backwards, swap turns its sign, and the
// polarity maps it as the LFO does (POS 0..1, NEG -1..0, BI -1..1), the top of the rectangle
// being +1 and the bottom -1. The wave comes either as a table the plug-in owns or as a function
// of the phase (0..1 to -1..1).
// UI thread only; the table may be rewritten by the engine meanwhile, and a torn read only
// shows for one frame.

#include <functional>
#include <vector>

#include "editor/IBlendControl.h"
#include "editor/IControl.h"

class WaveDraw : public IControl, public IBlendControl
{
  public:
    using WaveFunction = std::function<double(double phase)>;
    enum EPolarity
    {
        kPos = 0,
        kNeg = 1,
        kBi = 2
    };

    WaveDraw(IPlugBase* plug, const IRECT& rect, const IColor* color);

    // The table is read, never copied: it must outlive the control or be replaced first.
    void SetTable(const double* table, int size);
    void SetFunction(WaveFunction wave);
    // Fraction of a cycle, 0..1.
    void SetPhase(double fraction);
    void SetPolarity(int polarity);
    void SetReverse(bool reverse);
    void SetSwap(bool swap);

    bool HasWave() const;
    // The output (after polarity, -1..1) at a position 0..1 across one cycle.
    double ValueAt(double position) const;
    // The curve's vertical position in layout pixels for an output value.
    double YFor(double value) const;
    // The points of the drawn curve, one per pixel column and one on the right edge.
    std::vector<std::pair<double, double>> Points() const;

    bool IsHit(int x, int y) const override { return false; }
    void Draw(IGraphics* graphics) override;

  private:
    double RawAt(double position) const;

    const double* mTable = nullptr;
    int mTableSize = 0;
    WaveFunction mFunction;
    double mPhase = 0.0;
    int mPolarity = kBi;
    bool mReverse = false;
    bool mSwap = false;
};
