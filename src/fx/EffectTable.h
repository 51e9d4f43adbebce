#pragma once
// The effect table: one constant record per slot effect type, with the names, knob labels, flags,
// defaults and list labels of its five parameters, and the menus that choose a type per position
// kind. Pure data made at compile time; every function here is safe on any thread.

#include <span>

inline constexpr int kFxParams = 5;

// Colour group of a position's label: one per family of effects.
enum FxColour : int
{
    kFxColourNone = 0,
    kFxColourModulation,
    kFxColourPitch,
    kFxColourShaper,
    kFxColourFilter,
    kFxColourDynamics,
};

// Position kinds of the menus.
enum FxMenuKind : int
{
    kFxMenuPre = 0,
    kFxMenuFeedback = 1,
    kFxMenuPost = 2,
};

// The module class that runs a type; the factory builds one per class, several types share one.
enum class FxModuleClass : int
{
    kNone = 0,
    kFreqShifter,
    kRingMod,
    kPhaser,
    kPitchShifter,
    kShaper,
    kLofi,
    kFilter,
    kPhaseFilter,
    kComb,
    kCompressor,
    kDriveFilter,
    kVariableFilter,
    kCount
};

struct FxTypeInfo
{
    int id;
    const char* label;                                  // menu label
    const char* names[kFxParams];                       // parameter names, stored words kept as they stand
    bool bipolar[kFxParams];                            // 50 % is neutral
    bool hidden[kFxParams];                             // no knob shown
    bool isList[kFxParams];                             // the module receives the list index
    float defaults[kFxParams];                          // knob fraction 0..1 given on a type change
    int listCount[kFxParams];                           // entries less one (0 for a knob)
    float skew[kFxParams];                              // knob shape
    int colour;                                         // FxColour
    FxModuleClass module;                               // what runs it
    bool p5IsMix;                                       // P5 is the wet amount the engine mixes by
    const char* shortLabels[kFxParams];                 // knob labels; null where hidden
    std::span<const char* const> listLabels[kFxParams]; // empty where not a list
};

// The record of a type id, or null for an id the table doesn't know.
const FxTypeInfo* FindFxType(int id);
// Every record, in ascending id order (OFF first).
std::span<const FxTypeInfo> FxTypeTable();
// Whether the engine mixes wet and dry by P5: all types but OFF and those whose P5 is not a mix.
bool FxP5IsMix(int id);

// The type id chosen by entry menuIndex of the menu of a position kind; 0 when out of range.
int FxTypeFromMenu(int kind, int menuIndex);
// The ids and labels of a menu, entry by entry. The feedback menu has one id more than labels: its
// last label leads to the id before the last, and the last id (the compressor) stays out of reach.
std::span<const int> FxMenuIds(int kind);
std::span<const char* const> FxMenuLabels(int kind);
