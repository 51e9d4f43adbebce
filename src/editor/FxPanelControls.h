#pragma once
// The parts of an effect panel that follow the effect chosen in the slot: the knob names and the
// type's icon. Both are bound to the type parameter and take no mouse; the position kind (pre,
// feedback or post menu) follows from which type parameter it is.

#include <array>
#include <string>

#include "editor/IControl.h"

struct FxTypeInfo;

// The effect a type parameter's normalised value chooses, or null for OFF and unknown entries.
const FxTypeInfo* FxTypeOfParam(IPlugBase* plug, int typeParam, double normalized);

class IFxKnobLabelControl : public IControl
{
  public:
    IFxKnobLabelControl(IPlugBase* plug, const IRECT& rect, int typeParam, const IText& text, int knob);
    void SetValueFromPlug(double value) override;
    void Draw(IGraphics* graphics) override;
    // The name shown, empty when the type has no knob there.
    std::string Text() const;

  private:
    IText mText;
    int mKnob;
};

// Icon names by menu label of the effect types.
struct FxIconRow
{
    const char* mTypeLabel;
    const char* mIcon;
};
inline constexpr std::array<FxIconRow, 23> kFxIcons{{
    {"FREQ SHIFT", "fxic_frq"},
    {"RING MOD", "fxic_rm"},
    {"PHASE", "fxic_ph"},
    {"PITCH SHIFT", "fxic_ps1"},
    {"PITCH SHIFT ST", "fxic_ps2"},
    {"SATURATE", "fxic_sat"},
    {"RECTIFY", "fxic_rect"},
    {"DESTROY", "fxic_dest"},
    {"NOISE", "fxic_nois"},
    {"LOFI I", "fxic_lofi1"},
    {"LOFI II", "fxic_lofi2"},
    {"WAVE SHAPE", "fxic_ws"},
    {"MULTI SVF", "fxic_svf"},
    {"HP/LP 24dB", "fxic_lphp"},
    {"MULTI 12dB", "fxic_bt"},
    {"PEAK", "fxic_pk"},
    {"DRIVE LP+HP", "fxic_cheb"},
    {"VARAIBLE LPHP", "fxic_varilphp"},
    {"PHASEBP", "fxic_phb"},
    {"COMB", "fxic_comb"},
    {"VOWEL", "fxic_vow"},
    {"COMPRESSOR", "fxic_comp"},
    {"OFF", "fxic_off"},
}};

class IFxIconControl : public IControl
{
  public:
    // icons: one bitmap per row of kFxIcons, in order.
    IFxIconControl(IPlugBase* plug, const IRECT& rect, int typeParam, const std::array<IBitmap, 23>& icons);
    void SetValueFromPlug(double value) override;
    void Draw(IGraphics* graphics) override;
    // Row of kFxIcons shown, -1 for none.
    int IconRow() const;

  private:
    std::array<IBitmap, 23> mIcons;
};

// Paints the panel's own body over a knob row that the effect type leaves unused, so that the
// printed scale and "DEPTH" of an absent knob don't show. panelTop and panelBottom are the ends of
// the panel's gradient.
class IFxRowCoverControl : public IControl
{
  public:
    IFxRowCoverControl(IPlugBase* plug, const IRECT& rect, int panelTop, int panelBottom);
    void Draw(IGraphics* graphics) override;

  private:
    int mPanelTop, mPanelBottom;
};
