#pragma once
// Preset files: plain text a user can read and edit. A file names only the parameters that differ
// from their defaults (a missing key means the default) and holds the tap and step masks. Reading
// is split in two stages, as the plug-in loads a preset: ParsePresetText takes a file apart into
// masks and a pending list of keys and values without touching anything, and ApplyPresetParams
// later gives every parameter its value. Files of older format versions are migrated on the way,
// version by version, so that they sound as they did.
// UI thread; nothing here allocates on, or is called from, the audio thread.

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "state/StateFields.h"

class IStateHost;

inline constexpr int kPresetVersion = 14;
inline constexpr std::string_view kPresetProductWord = "Quorvex";
// The version of the writing program in the first line; informative only, the reader ignores it.
inline constexpr std::string_view kPresetWriterVersion = "1.2.0r14";

enum class PresetReadResult
{
    kOk,
    kNoFile,    // the file can't be opened
    kWrongFile, // its first token isn't the product word
};

// One file taken apart: what stage one of loading gathers.
struct PresetData
{
    int version = 0;
    // "DelayTaps": the masks read so far (a file cut short applies those it has).
    std::array<std::int32_t, kNumTapMasks> tapOnMask{};
    int tapMasksRead = 0;
    std::optional<int> lastPage;
    // Zero unless the file sets them.
    std::int32_t stepFxMask[kNumSlots] = {};
    std::int32_t stepModMask[kNumStepModRows][kNumSlots] = {};
    // The pending lists: keys in file order and their values as 32-bit floats.
    std::vector<std::string> keys;
    std::vector<float> values;
    // Reading stopped at something that isn't a number; what came before stands.
    bool stoppedEarly = false;
    // The format version itself couldn't be read: the file is damaged, not old.
    bool versionMissing = false;
};

// Stage one without side effects. kOk once the first token is the product word, however far the
// rest could be read.
PresetReadResult ParsePresetText(std::string_view text, PresetData& data);
PresetReadResult ReadPresetText(const std::string& fullPath, PresetData& data);

// Stage one's effect on the plug-in: step masks zeroed then set, tap masks read so far applied,
// the remembered delay page.
void ApplyPresetMasks(IStateHost& host, const PresetData& data);

// Stage two's parameter loop: for each id in order, the first pending key equal to its key gives
// the value (migrated from the file's version, cut to the range) and leaves the lists; an id
// without a key gets its default; ParamChanged follows either way. Files older than the present
// format then lose 30% of the feedback of each slot that was tapped with the MIX route.
void ApplyPresetParams(IStateHost& host, PresetData& data);

// A value of `id` as a file of `version` stored it, brought to the present format (the migration
// rows from the newest down, each on the result of the one before). Not cut to the range.
double MigratePresetValue(int id, double value, int version);

// The file as the writer lays it out: parameters that differ from their defaults as 32-bit floats,
// printed with six significant digits.
std::string PresetFileText(IStateHost& host);
// False when the file can't be opened or the stream fails while writing.
bool WritePresetText(const std::string& fullPath, IStateHost& host);

// The preset name display: the file name without extension, at most 38 characters, then cut at
// the last "." it still holds.
std::string PresetNameOf(std::string_view relativePath);
// The folder label: "F:" for the factory tree, else "U:", and the folder between the tree and the
// file, at most 30 characters.
std::string PresetFolderLabelOf(std::string_view relativePath);
