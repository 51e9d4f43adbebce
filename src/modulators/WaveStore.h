#pragma once
// The wave store: 33 read-only records of id, zero-padded name and one 4096-point cycle, shared by
// all table LFOs and the wave displays. Formula waves are computed exactly at first use; the drawn
// ones come from the generated data. Any thread may read; the store is built once, on first call
// (a function-local static), so call WaveStore() once from set-up before the audio thread starts.

#include <array>
#include <cstdint>

inline constexpr int kWaveTableSize = 4096;
inline constexpr int kWaveStoreSize = 33;
inline constexpr int kWaveNameLen = 20;

struct WaveRecord
{
    std::int32_t id;
    char name[kWaveNameLen];
    double samples[kWaveTableSize];
};

// All records, ordered by id.
const std::array<WaveRecord, kWaveStoreSize>& WaveStore();

// The record of this id, or null.
const WaveRecord* FindWave(int id);

// The `LFO Wave` menu: the store scanned for each menu id, in menu order.
using WaveList = std::array<const WaveRecord*, 27>;
WaveList BuildWaveList();
