#pragma once
// The editor's accent colours: eleven named colour sets, and the twelve role slots that controls
// point at. Applying a set copies its colours into the slots, so the whole editor recolours at
// its next redraw. The slots belong to one editor: two instances of the plug-in may show
// different sets.

#include <array>
#include <cstdint>

#include "editor/IGraphicsTypes.h"

inline constexpr int kNumColorRoles = 12;

struct ColorSetRow
{
    const char* mName;
    std::array<std::uint32_t, kNumColorRoles> mRGB; // role 0 .. 11, 0xRRGGBB
};

// clang-format off
inline constexpr std::array<ColorSetRow, 11> kColorSets{{
    {"DEFAULT",    {0xFFFFFF, 0x6176FF, 0x17FF6F, 0xCDFE53, 0x52FECE, 0xFB1352, 0xFFAD3D, 0xFFFA00, 0x359AFF, 0x00BBF9, 0x00E3F9, 0xDC64FF}},
    {"LIGHT",      {0xFFFFFF, 0xA6C0FD, 0xC2EAE5, 0xB5E3FE, 0xC7EAC2, 0xD0B3A1, 0xFEC8BD, 0xFEE7AE, 0xD0B3A1, 0xFF8282, 0xFFDCDC, 0xF7C8FE}},
    {"VIVID",      {0xFEF08B, 0x7BB6FD, 0xFDBA77, 0xD69AFE, 0x30FDC9, 0xFF6D83, 0x55D4FB, 0xFFFFFF, 0xD0B3A1, 0xC87AFA, 0xFFDCDC, 0xB8FEAE}},
    {"NEON",       {0xFF5AFF, 0x00FFFF, 0xFFC000, 0xC0FF00, 0xFFFF32, 0xFF6EFF, 0xFFFF32, 0x00FFFF, 0xFFFF1E, 0xC0FF00, 0xFFC000, 0xC0FF00}},
    {"FIRE",       {0xFCE116, 0xFD6275, 0xFD9D62, 0xFC6E16, 0xFDEB62, 0xFC2216, 0xFDEB62, 0xFC6E16, 0xFD6275, 0xFC6E16, 0xFD6275, 0xFDDE62}},
    {"ICE",        {0x62A8FD, 0x6A87FF, 0x94C4FE, 0x62F6FD, 0xE7E7E7, 0x7BB6FD, 0x62F6FD, 0x94C4FE, 0x62F6FD, 0x62F6FD, 0x62A8FD, 0xE0EEFF}},
    {"TRICOL",     {0xFF6E6E, 0x6E6EFF, 0xFF6E6E, 0xFFFFFF, 0xFFFFFF, 0xFF6E6E, 0xFFFFFF, 0x6E6EFF, 0xFF6E6E, 0xFFFFFF, 0x6E6EFF, 0x6E6EFF}},
    {"WHITE",      {0xFFFFFF, 0xFFFFFF, 0xFFFFFF, 0xFFFFFF, 0xFFFFFF, 0xFFFFFF, 0xFFFFFF, 0xFFFFFF, 0xFFFFFF, 0xFFFFFF, 0xFFFFFF, 0xFFFFFF}},
    {"YELLOW",     {0xFEE0AE, 0xFEEDAE, 0xFEF4AE, 0xFEE7AE, 0xFEFBAE, 0xF4FEAE, 0xEDFEAE, 0xE7FEAE, 0xE0FEAE, 0xFEE0AE, 0xFEEDAE, 0xFBFEAE}},
    {"AQUAMARINE", {0xAEFEE0, 0xAEFEED, 0xAEFEF4, 0xAEFEE7, 0xAEFEFB, 0xAEF4FE, 0xAEEDFE, 0xAEE7FE, 0xAEE0FE, 0xAEFEE0, 0xAEFEED, 0xAEFBFE}},
    {"PURPLE",     {0xEAAEFF, 0xEAAEFF, 0xEAAEFF, 0xEAAEFF, 0xEAAEFF, 0xE0AEFF, 0xD9AEFF, 0xD3AEFF, 0xCCAEFF, 0xEAAEFF, 0xEAAEFF, 0xE7AEFF}},
}};
// clang-format on

inline constexpr int kNumColorSets = static_cast<int>(kColorSets.size());

// A stored set index outside the table reads as the default set.
constexpr int ValidColorSet(int index)
{
    return index >= 0 && index < kNumColorSets ? index : 0;
}

class ColorRoles
{
  public:
    // Fixed colours of dark and bright labels, independent of the sets.
    static constexpr IColor kDarkText = IColor(255, 0x16, 0x19, 0x20);
    static constexpr IColor kBrightText = IColor(255, 0xE6, 0xE9, 0xEF);

    ColorRoles() { Apply(0); }
    ColorRoles(const ColorRoles&) = delete;
    ColorRoles& operator=(const ColorRoles&) = delete;

    // Copies the set's colours into the slots (role 1 also into its follower) and resets the text
    // slots; answers the index applied.
    int Apply(int index);
    int Current() const { return mCurrent; }

    // Slots stay at fixed addresses for the editor's lifetime: controls keep these pointers.
    const IColor* Role(int role) const { return &mSlots[static_cast<unsigned>(role) % kNumColorRoles]; }
    const IColor* Role1Follower() const { return &mRole1Follower; }
    const IColor* DarkText() const { return &mDarkText; }
    const IColor* BrightText() const { return &mBrightText; }

  private:
    std::array<IColor, kNumColorRoles> mSlots{};
    IColor mRole1Follower;
    IColor mDarkText;
    IColor mBrightText;
    int mCurrent = 0;
};
