#pragma once
// The host state chunk: the complete sound and view state of the plug-in as one block of bytes,
// written when the host saves a session and read back when it opens one. Reading accepts every
// older version, migrating old parameter values on the way, and refuses a newer one untouched.
// UI (host) thread; both directions hold the plug-in's parameter mutex.

#include <cstdint>

class ByteChunk;
class IStateHost;

inline constexpr std::int32_t kStateVersion = 0x10200;
// Versions at which fields and value lists changed.
inline constexpr std::int32_t kOldestReadableState = 0x833; // older chunks keep all defaults
inline constexpr std::int32_t kLastStateWithoutColorSet = 0x1015B;
inline constexpr std::int32_t kFirstStateWithAttenuator = 0x10101;
inline constexpr std::int32_t kFxListGrewAt = 0x10160; // PRE/POST effect list gained an entry
inline constexpr std::int32_t kFbListGrewAt = 0x10161; // feedback effect list gained an entry

// Appends the chunk. Returns true.
bool WriteStateChunk(IStateHost& host, ByteChunk& chunk);

// Reads a chunk from startPos and applies it. Returns the position after the parameter values
// (-1 for a chunk that ran out), or the position after the version word for a chunk that isn't read.
int ReadStateChunk(IStateHost& host, const ByteChunk& chunk, int startPos);

// Called by the plug-in's OnParamChange while the migration marker is set: brings the value of id
// from the marker's version to the present one, storing it back cut to its range.
void MigrateOldParam(IStateHost& host, int id);
