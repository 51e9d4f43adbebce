#pragma once
// The drawn wave records: the curves that follow no closed formula, produced at build time by
// tools/wavegen as constant data. WaveStore merges them with the formula waves.

inline constexpr int kDrawnWaveCount = 19;

struct DrawnWave
{
    int id;
    const char* name;
    const double* samples; // 4096 points
};

extern const DrawnWave kDrawnWaves[kDrawnWaveCount];
