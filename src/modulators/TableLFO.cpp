#include "modulators/TableLFO.h"

#include "dsp/OnePoleBlock.h"
#include "dsp/Vec.h"

#include "modulators/Rand15.h"
#include "modulators/WaveMenu.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace
{
const std::uint8_t kNoTrigger = 0;
constexpr double kDefaultRate = 44100.0;
constexpr double kGlideGuard = 1e-15; // keeps the glide recursion out of denormals
} // namespace

TableLFO::TableLFO() : trigger(&kNoTrigger)
{
    // Deliberately from the default rate, never again: the step stays below 46 points per sample.
    sLowerLimit = static_cast<int>(kWaveTableSize * 0.001 / kDefaultRate);
    sUpperLimit = static_cast<int>(kWaveTableSize * 500.0 / kDefaultRate);
}

void TableLFO::setWave(const WaveRecord* record)
{
    table = record ? record->samples : nullptr;
    const bool random = record && record->id == kRandomWaveId;
    if (random) holdValue = DrawHold();
    isRandom = random;
}

void TableLFO::setRate(double hz)
{
    rateHz = hz;
    increment = std::clamp(tableSize * hz / gSampleRate, double(sLowerLimit), double(sUpperLimit));
}

void TableLFO::setPhase(double fraction)
{
    phaseOffset = static_cast<int>(4095.0 * fraction);
}

void TableLFO::setGlide(double ms)
{
    const double t = ms * 1.5;
    const double a = std::clamp(std::exp(-2.0 * std::numbers::pi / (t * 0.001 * gSampleRate)), 0.0, 1.0);
    glideA = a;
    glideB = 1.0 - a;
}

void TableLFO::setPolarity(int p)
{
    polarity = p;
    switch (p)
    {
    case kPos:
        polScale = 0.5, polOffset = 0.5;
        break;
    case kNeg:
        polScale = -0.5, polOffset = -0.5;
        break;
    default:
        polScale = 1.0, polOffset = 0.0;
        break;
    }
}

void TableLFO::setMode(int m)
{
    loops = m == kLoop;
    noRetrigger = m == kLatch;
}

void TableLFO::setTrigger(const std::uint8_t* flag)
{
    trigger = flag ? flag : &kNoTrigger;
}

void TableLFO::setOn(bool enable)
{
    on = enable;
    if (!enable) std::fill(std::begin(out), std::end(out), 0.0);
}

void TableLFO::Restart()
{
    phase = 0.0;
    glideY = 0.0;
    lastOut = 0.0;
    rawOut = 0.0;
    std::fill(std::begin(out), std::end(out), 0.0);
    randState = 1u;
    holdValue = isRandom ? DrawHold() : 0.0;
}

double TableLFO::DrawHold()
{
    std::uint32_t state = randState;
    const int draw = NextRand15(state);
    randState = state;
    return double(draw) / kRand15Max;
}

void TableLFO::processBlock()
{
    FillBlock();
    glideY = OnePoleBlock(out, gBlockLen, glideA, glideB, kGlideGuard, glideY);
    FinishBlock();
}

void TableLFO::ProcessPair(TableLFO& a, TableLFO& b)
{
    a.FillBlock();
    b.FillBlock();
    OnePoleBlockPair(a.out, b.out, gBlockLen, a.glideA, a.glideB, b.glideA, b.glideB, kGlideGuard, a.glideY,
                     b.glideY);
    a.FinishBlock();
    b.FinishBlock();
}

void TableLFO::FinishBlock()
{
    VecScaleI(depth, out, gBlockLen);
    lastOut = out[0];
}

void TableLFO::FillBlock()
{
    const double* t = table;
    if (t)
    {
        double step = increment;
        if (const double* mod = rateModSource)
            step = std::clamp(tableSize * (rateHz + rateModDepth * mod[0] * 500.0) / gSampleRate,
                              double(sLowerLimit), double(sUpperLimit));
        const bool trig = *static_cast<const std::uint8_t*>(trigger) != 0;
        const bool wraps = loops, restarts = trig && !noRetrigger;
        const double end = tableSize, sign = swapSign, scale = polScale, offset = polOffset;
        const int offsetPoints = phaseOffset, mask = tableMask;
        // The next phase: a cycle ends at the table's end, where the wave loops, restarts on a
        // trigger, or holds at the end.
        bool newCycle = false;
        const auto advance = [&](double phase)
        {
            phase += step;
            if (phase >= end)
            {
                newCycle = newCycle || wraps || trig;
                phase = wraps ? phase - end : (trig ? 0.0 : end);
            }
            return phase;
        };
        double phase = advance(this->phase); // a local, so stores to `out` can't force it through memory
        if (restarts) phase = 0.0, newCycle = true;

        double value = 0.0;
        if (isRandom)
        {
            // Once a cycle began in this block, every following sample draws again.
            for (int i = 0;;)
            {
                if (newCycle) holdValue = DrawHold();
                value = 2.0 * holdValue - 1.0;
                out[i] = value * scale + offset;
                if (++i == gBlockLen) break;
                phase = advance(phase);
            }
        }
        else
        {
            // Backwards reads the table from its end: t[size - 1 - index].
            const bool backwards = reverse;
            const double* base = backwards ? t + tableSize - 1 : t;
            const int direction = backwards ? -1 : 1;
            for (int i = 0;;)
            {
                const int index = (static_cast<int>(std::min(phase, end - 1.0)) + offsetPoints) & mask;
                // min and max rather than clamp: the same values, without a branch per sample.
                value = std::min(std::max(sign * base[direction * index], -1.0), 1.0);
                out[i] = value * scale + offset;
                if (++i == gBlockLen) break;
                phase = advance(phase);
            }
        }
        this->phase = phase;
        rawOut = value;
    }
}

double TableLFO::SyncRatio(int index, int mode)
{
    const double ratio = std::exp2(index - 4) / 60.0;
    if (mode == kSyncDotted) return ratio / 1.5;
    if (mode == kSyncTriplet) return ratio * 1.5;
    return ratio;
}

int TableLFO::SyncIndexForRate(double hz, double tempo)
{
    const float steps = std::log2(static_cast<float>(960.0 * hz / tempo));
    if (!(steps > 0.0f)) return 0; // also catches a zero rate (log2 of 0 is -inf)
    return std::min(static_cast<int>(steps), kNumSyncSteps - 1);
}

void TableLFO::setSyncStep(int index, double tempo)
{
    syncIndex = std::clamp(index, 0, kNumSyncSteps - 1);
    if (syncMode == kSyncHz) return;
    syncRatio = SyncRatio(syncIndex, syncMode);
    setRate(tempo * syncRatio);
}

void TableLFO::tempoChanged(double tempo)
{
    if (syncMode != kSyncHz) setRate(tempo * syncRatio);
}

double TableLFO::setSyncMode(int mode, double tempo)
{
    const bool wasSynced = syncMode != kSyncHz;
    syncMode = mode;
    if (mode == kSyncHz) return rateHz;
    setSyncStep(wasSynced ? int(syncIndex) : SyncIndexForRate(rateHz, tempo), tempo);
    return syncIndex;
}
