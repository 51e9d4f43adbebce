#pragma once
// The envelope page: the two envelope followers, one wide panel each. Left the follower's value
// lists (what it listens to, how it reacts, the shape of its output), in the middle its knobs in
// signal order (input gain and band, depth; then threshold and the envelope's times), right the
// meters of its input and output, which the editor's tick feeds.

#include "core/EditorReadouts.h"
#include "editor/ModPageLayout.h"

namespace envlayout
{
using namespace modlayout;
inline constexpr const char* kTitles[] = {"ENVELOPE 1", "ENVELOPE 2"};
inline constexpr int kRowsPerFollower = 20;

struct KnobSpec
{
    int mParam;
    const char* mLabel;
};
inline constexpr KnobSpec kKnobs[2][4] = {
    {{kENV1Gain, "GAIN"}, {kENV1Locut, "LOCUT"}, {kENV1Hicut, "HICUT"}, {kENV1Depth, "DEPTH"}},
    {{kENV1Threshold, "THRESHOLD"}, {kENV1Attack, "ATTACK"}, {kENV1Hold, "HOLD"}, {kENV1Decay, "RELEASE"}},
};

// The meters of follower e: input first, then output.
constexpr IRECT MeterRect(const IRECT& panel, int which)
{
    const int vuW = kBitmapRows[BitmapId("VU")].mW, vuH = kBitmapRows[BitmapId("VU")].mH;
    return IRECT::FromSize(panel.R - 112 + which * 44, panel.T + 40, vuW, vuH);
}

constexpr std::array<LayoutRow, 2 * kRowsPerFollower> Make()
{
    Rows<2 * kRowsPerFollower> rows;
    for (int e = 0; e < 2; ++e)
    {
        const IRECT p = GridPanel(0, 1, e, 2);
        rows.Panel(p, kTitles[e], kRoleEnvelope);
        rows.Switch(TitleSwitch(p), kENV1On + e);

        const char* names[] = {"SOURCE", "MODE", "OUTPUT"};
        const int params[] = {kENV1Source, kENV1Mode, kENV1Output};
        for (int k = 0; k < 3; ++k)
        {
            const int y = p.T + 62 + k * 40;
            rows.Label(IRECT(p.L + 16, y, p.L + 86, y + kFieldH), names[k]);
            rows.Field(IRECT(p.L + 90, y, p.L + 250, y + kFieldH), params[k] + e, kRoleEnvelope);
        }

        for (int r = 0; r < 2; ++r)
            for (int k = 0; k < 4; ++k)
            {
                rows.Knob(p.L + 340 + k * 110, p.T + 40 + r * 96, kKnobs[r][k].mParam + e, "knob_hard_main",
                          kRoleEnvelope, kKnobs[r][k].mLabel);
            }

        const char* meters[] = {"IN", "OUT"};
        for (int m = 0; m < 2; ++m)
        {
            const IRECT vu = MeterRect(p, m);
            // IN hears the follower's source, OUT is its output (the ENV sources follow the gates).
            const int meter = m == 0 ? EditorReadouts::kEnvIn1 + e : EditorReadouts::kMod1 + 8 + e;
            rows.Add({ELayoutKind::kMeter, vu, -1, BitmapId("VU"), -1, "", meter});
            rows.Caption(IRECT(vu.L - 12, vu.B + 6, vu.R + 12, vu.B + 20), meters[m]);
        }
    }
    return rows.Done();
}
} // namespace envlayout

inline constexpr auto kEnvelopeLayout = envlayout::Make();
