#pragma once
// The waves offered by the LFO wave menu, in menu order: the menu index is the `LFO Wave n`
// value, the store id picks the record in the wave store. Store records not listed here stay
// unused. Id 38 is the sample-and-hold wave, recognised by its id alone.

#include <array>

struct WaveMenuEntry
{
    int storeId;
    const char* name;
};

inline constexpr std::array<WaveMenuEntry, 27> kWaveMenu = {{
    {0, "SIN1"},       {1, "SIN2"},       {2, "SIN3"},        {3, "SIN4"},       {4, "SIN5"},
    {5, "SIN6"},       {6, "SIN7"},       {7, "SIN8"},        {9, "SAWSIN"},     {10, "SAW2"},
    {11, "STEPSIN"},   {12, "RAMP"},      {13, "TRIANGLE"},   {14, "RAMPPULSE"}, {15, "EXPFALL"},
    {33, "SLIDE"},     {32, "THE RIDE"},  {16, "POOL"},       {17, "HALFPULSE"}, {34, "1/3 PULSE"},
    {35, "1/4 PULSE"}, {36, "1/8 PULSE"}, {37, "1/16 PULSE"}, {18, "SINPULSE"},  {19, "STAIR3"},
    {20, "STEP8"},     {38, "S&H"},
}};

inline constexpr int kRandomWaveId = 38;

// Menu names alone, in menu order, as the parameter catalogue takes them.
inline constexpr std::array<const char*, kWaveMenu.size()> kWaveMenuNames = []
{
    std::array<const char*, kWaveMenu.size()> names{};
    for (std::size_t i = 0; i < kWaveMenu.size(); ++i)
        names[i] = kWaveMenu[i].name;
    return names;
}();
