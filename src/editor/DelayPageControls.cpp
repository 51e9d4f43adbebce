#include "editor/DelayPageControls.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <memory>
#include <numbers>
#include <random>

#include "editor/IGraphics.h"
#include "editor/IPopupMenu.h"
#include "editor/QuorvexEditor.h"
#include "params/IParamRecord.h"
#include "params/ParamIds.h"

namespace
{
constexpr IColor kTick = IColor::FromRGB(0x3B414D);
constexpr IColor kTickBright = IColor::FromRGB(0x6C7485);
constexpr IColor kLabelText = IColor::FromRGB(0xB8BFCC);
constexpr IColor kDimText = IColor::FromRGB(0x8A93A4);
constexpr IColor kWell = IColor::FromRGB(0x0B0D10);
constexpr IColor kWellBorder = IColor::FromRGB(0x2A303B);
constexpr IColor kButtonOff = IColor::FromRGB(0x242933);
constexpr IColor kButtonText = IColor::FromRGB(0xE8EBF0);
constexpr IColor kButtonTextOff = IColor::FromRGB(0x7C8596);

IText LabelStyle(const IColor* color, int size, IText::EAlign align = IText::kAlignCenter)
{
    IText text;
    text.mSize = size;
    text.mStyle = IText::kStyleBold;
    text.mColor = color;
    text.mAlign = align;
    return text;
}

// A lit or dark rounded button face with its text.
void DrawButtonFace(IGraphics* graphics, const IRECT& r, const IColor* color, bool lit, bool grayed,
                    const char* text)
{
    IRaster& raster = graphics->Raster();
    const IColor accent = color ? *color : kLabelText;
    raster.FillRoundRect(lit ? accent : kWellBorder, r, 3.0);
    if (!lit) raster.FillRoundRect(kButtonOff, r.Inset(1), 2.5);
    IText style = LabelStyle(lit ? &kWell : &kButtonTextOff, 10);
    if (grayed) style.mColor = &kTick;
    raster.DrawText(style, text, r);
}

// Index of a list parameter from a normalised value.
int ListIndex(IPlugBase* plug, int param, double normalized)
{
    const IParamRecord* p = plug ? plug->GetParam(param) : nullptr;
    return p ? static_cast<int>(std::lround(p->QuantizedFromNormalized(normalized))) : 0;
}

// The large view's selector: two segments, the level taps and the effect steps of one slot.
class DelayViewSelect : public IControl
{
  public:
    DelayViewSelect(QuorvexEditor& editor, const IRECT& rect, int slot, const IColor* color)
        : IControl(editor.Plug(), rect), mEditor(editor), mSlot(slot), mColor(color)
    {
    }
    IRECT Segment(int i) const
    {
        const int mid = (mRect.L + mRect.R) / 2;
        return i == 0 ? IRECT(mRect.L, mRect.T, mid - 2, mRect.B) : IRECT(mid + 2, mRect.T, mRect.R, mRect.B);
    }
    void OnMouseDown(int x, int y, const IMouseMod& mod) override
    {
        const int page = (Segment(1).Contains(x, y) ? kPageLargeSteps : kPageLargeLevels) + mSlot;
        if (mEditor.Actions().showPage)
            mEditor.Actions().showPage(page);
        else
            mEditor.ShowPage(page, false);
    }
    void OnMouseDblClick(int x, int y, const IMouseMod& mod) override { OnMouseDown(x, y, mod); }
    void Draw(IGraphics* graphics) override
    {
        const bool steps = mEditor.Pages().Shown() >= kPageLargeSteps;
        DrawButtonFace(graphics, Segment(0), mColor, !steps, false, "LEVEL TAPS");
        DrawButtonFace(graphics, Segment(1), mColor, steps, false, "EFFECT STEPS");
    }

  private:
    QuorvexEditor& mEditor;
    int mSlot;
    const IColor* mColor;
};

// Whether a parameter is one of the slot's 16 steps of a step family (named by its first id).
bool IsFamily(int param, int slot, int family)
{
    const int first = family + slot * layout::kStepColumns;
    return param >= first && param < first + layout::kStepColumns;
}
} // namespace

// ---- DelayModeKnob ----

DelayModeKnob::DelayModeKnob(IPlugBase* plug, const IRECT& rect, int paramIdx, const IBitmap& bitmap,
                             const IColor* arc, bool bipolar, std::string label)
    : IBitmapKnobControl(plug, rect.L, rect.T, paramIdx, bitmap, arc, bipolar), mLabel(std::move(label)),
      mBipolarScale(bipolar)
{
}

void DelayModeKnob::Draw(IGraphics* graphics)
{
    // The same ticks as the background's knob scale: seven for a small knob, the ends (and the
    // middle of a bipolar knob) brighter.
    IRaster& raster = graphics->Raster();
    const double cx = (mRect.L + mRect.R) / 2.0, cy = (mRect.T + mRect.B) / 2.0;
    const double r0 = mRect.W() / 2.0 + 1.5, r1 = r0 + (mRect.W() >= 48 ? 3.5 : 2.5);
    const int ticks = mRect.W() >= 48 ? 11 : 7;
    for (int i = 0; i < ticks; ++i)
    {
        const double v = static_cast<double>(i) / (ticks - 1);
        const double a = (kMinAngle + v * (kMaxAngle - kMinAngle) - 90.0) * std::numbers::pi / 180.0;
        const bool major = i == 0 || i == ticks - 1 || (mBipolarScale && i == ticks / 2);
        raster.DrawLine(major ? kTickBright : kTick, cx + std::cos(a) * r0, cy + std::sin(a) * r0,
                        cx + std::cos(a) * r1, cy + std::sin(a) * r1, major ? 1.4 : 1.0);
    }
    if (!mLabel.empty()) raster.DrawText(LabelStyle(&kLabelText, 10), mLabel.c_str(), KnobLabelRect(mRect));
    IBitmapKnobControl::Draw(graphics);
}

// ---- StepFaderControl ----

StepFaderControl::StepFaderControl(IPlugBase* plug, const IRECT& rect, int paramIdx, const IColor* color,
                                   bool bipolar)
    : IKnobControl(plug, rect, paramIdx, kVertical, 1.0), mColor(color), mBipolar(bipolar)
{
}

void StepFaderControl::Draw(IGraphics* graphics)
{
    IRaster& raster = graphics->Raster();
    raster.FillRoundRect(kWellBorder, mRect, 3.0);
    const IRECT well = mRect.Inset(1);
    raster.FillRoundRect(kWell, well, 2.5);
    const IColor base = mColor ? *mColor : kLabelText;
    const IColor fill = mGrayed ? base.WithAlpha(60) : base.WithAlpha(200);
    const IRECT inner = well.Inset(2);
    const double v = std::clamp(mValue, 0.0, 1.0);
    const int level = inner.B - static_cast<int>(std::lround(v * inner.H()));
    if (mBipolar)
    {
        const int mid = (inner.T + inner.B) / 2;
        if (level != mid)
            raster.FillRect(fill, IRECT(inner.L, std::min(level, mid), inner.R, std::max(level, mid)));
        raster.FillRect(kTickBright, IRECT(inner.L, mid, inner.R, mid + 1));
    }
    else if (level < inner.B)
        raster.FillRect(fill, IRECT(inner.L, level, inner.R, inner.B));
    // The value's edge as a brighter cap line.
    const IColor cap = mGrayed ? kTick : IColor::FromRGB(0xF2F4F7);
    raster.FillRect(cap, IRECT(inner.L, std::clamp(level - 1, inner.T, inner.B - 2), inner.R,
                               std::clamp(level + 1, inner.T + 2, inner.B)));
}

// ---- DelayTextButton ----

DelayTextButton::DelayTextButton(IPlugBase* plug, const IRECT& rect, const IColor* color, std::string text,
                                 std::function<bool()> lit, std::function<void()> press)
    : IControl(plug, rect), mColor(color), mText(std::move(text)), mLit(std::move(lit)),
      mPress(std::move(press))
{
}

void DelayTextButton::OnMouseDown(int x, int y, const IMouseMod& mod)
{
    // The right button belongs to the host's menu; these buttons carry no parameter.
    if (mod.R) return;
    if (mPress) mPress();
    mDirty = true;
}

void DelayTextButton::Draw(IGraphics* graphics)
{
    if (mFrameless && !IsLit())
        graphics->Raster().DrawText(LabelStyle(&kDimText, 10), mText.c_str(), mRect);
    else
        DrawButtonFace(graphics, mRect, mColor, IsLit(), mGrayed, mText.c_str());
}

// ---- TapNumberControl ----

TapNumberControl::TapNumberControl(IPlugBase* plug, const IRECT& rect, const IColor* color, std::string text,
                                   DelayPages* pages, int slot, int tap)
    : DelayTextButton(
          plug, rect, color, std::move(text), [pages, slot, tap] { return pages->PlayingTap(slot) == tap; },
          nullptr),
      mPages(pages), mSlot(slot), mTap(tap)
{
    SetFrameless(true);
    SetTooltip("Channels of tap " + std::to_string(tap + 1));
}

void TapNumberControl::OnMouseDown(int x, int y, const IMouseMod& mod)
{
    if (mod.R || !mGraphics) return;
    auto menu = std::make_shared<IPopupMenu>();
    for (const char* mark : kChannelMarks)
        menu->AddItem(mark);
    menu->CheckItemAlone(mPages->TapChannels(mSlot, mTap));
    mGraphics->CreateIPopupMenu(menu, mRect,
                                [pages = mPages, slot = mSlot, tap = mTap](IPopupMenu*, int index)
                                {
                                    if (index >= 0) pages->SetTapChannels(slot, tap, index);
                                });
}

// ---- SourceFieldControl ----

std::string SourceFieldControl::ShortText() const
{
    const IParamRecord* param = mPlug ? mPlug->GetParam(mParamIdx) : nullptr;
    if (!param) return {};
    const int source = static_cast<int>(param->QuantizedFromNormalized(mValue));
    if (source >= 0 && source < static_cast<int>(std::size(kShortSourceOf)) && kShortSourceOf[source] >= 0)
        return kShortModSources[kShortSourceOf[source]];
    return ValueText();
}

void SourceFieldControl::Draw(IGraphics* graphics)
{
    static constexpr IColor kField = IColor::FromRGB(0x0F1217);
    static constexpr IColor kBorder = IColor::FromRGB(0x2F3541);
    static constexpr IColor kText = IColor::FromRGB(0xE8EBF0);
    IRaster& raster = graphics->Raster();
    raster.FillRoundRect(kBorder, mRect, 3.0);
    raster.FillRoundRect(kField, mRect.Inset(1), 2.5);
    const std::string value = ShortText();
    const IRECT textRect(mRect.L + 3, mRect.T, mRect.R - 3, mRect.B);
    // The largest size from 11 down to 8 that fits the field.
    IText text = LabelStyle(&kText, 11);
    while (text.mSize > 8 && raster.MeasureText(text, value.c_str()).W() > textRect.W())
        --text.mSize;
    raster.DrawText(text, value.c_str(), textRect);
}

// ---- DelayMenuLabel ----

DelayMenuLabel::DelayMenuLabel(IPlugBase* plug, const IRECT& rect, std::string text, const IColor* color,
                               const char* const* items, int count, Choose choose)
    : IControl(plug, rect), mText(std::move(text)), mColor(color), mItems(items), mCount(count),
      mChoose(std::move(choose))
{
}

void DelayMenuLabel::OnMouseDown(int x, int y, const IMouseMod& mod)
{
    if (mod.R || !mGraphics) return;
    auto menu = std::make_shared<IPopupMenu>();
    for (int i = 0; i < mCount; ++i)
        menu->AddItem(mItems[i]);
    mGraphics->CreateIPopupMenu(menu, mRect,
                                [choose = mChoose](IPopupMenu*, int index)
                                {
                                    if (index >= 0 && choose) choose(index);
                                });
}

void DelayMenuLabel::Draw(IGraphics* graphics)
{
    IRaster& raster = graphics->Raster();
    raster.FillRoundRect(kWellBorder, mRect, 3.0);
    raster.FillRoundRect(kButtonOff, mRect.Inset(1), 2.5);
    raster.DrawText(LabelStyle(mColor ? mColor : &kLabelText, 10, IText::kAlignNear), mText.c_str(),
                    IRECT(mRect.L + 6, mRect.T, mRect.R - 14, mRect.B));
    const double ax = mRect.R - 8.5, ay = (mRect.T + mRect.B) / 2.0;
    raster.DrawLine(kDimText, ax - 3.0, ay - 1.5, ax, ay + 1.5, 1.3);
    raster.DrawLine(kDimText, ax, ay + 1.5, ax + 3.0, ay - 1.5, 1.3);
}

// ---- DelayPages ----

DelayPages::DelayPages(QuorvexEditor& editor) : mEditor(editor) {}

bool DelayPages::Bit(EStepMask mask, int slot, int tap) const
{
    const std::uint16_t bit = static_cast<std::uint16_t>(1u << (tap & 15));
    switch (mask)
    {
    case kMaskTapOnL:
    case kMaskTapOnR:
        return (mTapOn[slot & 3][mask - kMaskTapOnL] & bit) != 0;
    case kMaskStepFx:
        return (mStepFx[slot & 3] & bit) != 0;
    case kMaskStepMod1:
    case kMaskStepMod2:
        return (mStepMod[mask - kMaskStepMod1][slot & 3] & bit) != 0;
    default:
        return false;
    }
}

void DelayPages::Toggle(EStepMask mask, int slot, int tap)
{
    slot &= 3;
    tap &= 15;
    const std::uint16_t bit = static_cast<std::uint16_t>(1u << tap);
    switch (mask)
    {
    case kMaskTapOnL:
    case kMaskTapOnR:
        mTapOn[slot][mask - kMaskTapOnL] ^= bit;
        if (mActions.tapOn)
            mActions.tapOn(slot, tap, Bit(kMaskTapOnL, slot, tap), Bit(kMaskTapOnR, slot, tap));
        break;
    case kMaskStepFx:
        mStepFx[slot] ^= bit;
        if (mActions.stepFx) mActions.stepFx(slot, tap, Bit(mask, slot, tap));
        break;
    case kMaskStepMod1:
    case kMaskStepMod2:
        mStepMod[mask - kMaskStepMod1][slot] ^= bit;
        if (mActions.stepMod) mActions.stepMod(slot, mask - kMaskStepMod1, tap, Bit(mask, slot, tap));
        break;
    default:
        return;
    }
    Refresh();
}

int DelayPages::TapChannels(int slot, int tap) const
{
    return (Bit(kMaskTapOnL, slot, tap) ? 1 : 0) | (Bit(kMaskTapOnR, slot, tap) ? 2 : 0);
}

void DelayPages::SetTapChannels(int slot, int tap, int mark)
{
    slot &= 3;
    tap &= 15;
    const std::uint16_t bit = static_cast<std::uint16_t>(1u << tap);
    for (int channel = 0; channel < 2; ++channel)
    {
        std::uint16_t& word = mTapOn[slot][channel];
        word = static_cast<std::uint16_t>((mark >> channel) & 1 ? word | bit : word & ~bit);
    }
    if (mActions.tapOn) mActions.tapOn(slot, tap, (mark & 1) != 0, (mark & 2) != 0);
    Refresh();
}

void DelayPages::SetTapOnMask(int slot, int channel, std::uint16_t mask)
{
    mTapOn[slot & 3][channel & 1] = mask;
    Refresh();
}

void DelayPages::SetStepFxMask(int slot, std::uint16_t mask)
{
    mStepFx[slot & 3] = mask;
    Refresh();
}

void DelayPages::SetStepModMask(int row, int slot, std::uint16_t mask)
{
    mStepMod[row & 1][slot & 3] = mask;
    Refresh();
}

int DelayPages::Index(int param, int slot) const
{
    // The overview holds a control of every slot's mode, time base and tap count, shown or not,
    // whose value is the parameter's.
    for (int row = slot * layout::kDelayRowsPerSlot; row < (slot + 1) * layout::kDelayRowsPerSlot; ++row)
        if (kDelayLayout[row].mParam == param)
            if (const IControl* c = mEditor.ControlOfPageRow(kListDelay, row))
                return ListIndex(mEditor.Plug(), param, c->GetValue());
    return 0;
}

int DelayPages::LargeIndex(int param, int slot) const
{
    const auto list = static_cast<EPageList>(kListLarge1 + (slot & 3));
    for (int row = 0; row < static_cast<int>(kLargeDelayLayout.size()); ++row)
        if (const IControl* c = mEditor.ControlOfPageRow(list, row))
            if (c->ParamIdx() == param) return ListIndex(mEditor.Plug(), param, c->GetValue());
    return 0;
}

namespace
{
// A preset's value of step i of 0..n, normalised: the curves from 0 to 1, the pan positions
// from full left (0) to full right (1). Random values come from `random`.
double PresetValue(bool pan, int preset, int i, int n, std::mt19937& random)
{
    const double x = n > 0 ? static_cast<double>(i) / n : 0.0;
    const double tri = n > 0 ? 1.0 - std::abs(2.0 * i - n) / n : 0.0;
    const double uniform = std::uniform_real_distribution<double>(0.0, 1.0)(random);
    if (!pan)
    {
        const double curve[] = {0.0, 1.0, x, x * x, tri, std::sin(std::numbers::pi * x), 0.5, uniform};
        return curve[std::clamp(preset, 0, 7)];
    }
    const double positions[] = {0.0, 1.0, x, 1.0 - x, x * x, 1.0 - x * x, tri, 1.0 - tri, 0.5, uniform};
    return positions[std::clamp(preset, 0, 9)];
}

// Bit t of a tap pattern for the left and the right channel.
void PatternBits(int pattern, int t, std::mt19937& random, bool& left, bool& right)
{
    auto both = [&](bool on) { left = right = on; };
    switch (pattern)
    {
    case 0: // ALL ON
        return both(true);
    case 1: // ALL OFF
        return both(false);
    case 2: // LEFT
        left = true, right = false;
        return;
    case 3: // RIGHT
        left = false, right = true;
        return;
    case 4: // PING PONG: the channels take turns
        left = t % 2 == 0, right = t % 2 == 1;
        return;
    case 5: // SYNCOPED: every third tap
        return both(t % 3 == 0);
    case 6: // SYNCOPED ST: every third tap, the channels taking turns
        left = t % 6 == 0, right = t % 6 == 3;
        return;
    case 7: // TWO-ONE: two on, one off
        return both(t % 3 != 2);
    case 8: // BOUNCER: gaps that grow by one, as a ball's bounces slow
        return both(t == 0 || t == 1 || t == 3 || t == 6 || t == 10 || t == 15);
    case 9: // RHYTHM I: three, three, two
        return both(t % 8 == 0 || t % 8 == 3 || t % 8 == 6);
    case 10: // RHYTHM II: three, three, four, two, four
        return both(t == 0 || t == 3 || t == 6 || t == 10 || t == 12);
    default: // RANDOMIZE
        left = (random() & 1) != 0;
        right = (random() & 1) != 0;
        return;
    }
}

std::mt19937 ClockSeeded()
{
    return std::mt19937(
        static_cast<std::mt19937::result_type>(std::chrono::steady_clock::now().time_since_epoch().count()));
}
} // namespace

void DelayPages::ApplyStepPreset(int slot, int r, int preset)
{
    if (r < 0 || r >= layout::kNumStepRows || layout::kStepRows[r].kind != ELayoutKind::kTapStepFader) return;
    slot &= 3;
    const int family = layout::kStepRows[r].param;
    const bool pan = family == kTapDelay1Step1Pan;
    const int stepsParam = family == kTapDelay1Step1Time    ? kTapTimeSteps1
                           : family == kTapDelay1Step1Level ? kTapLevelSteps1
                           : pan                            ? kTapPanSteps1
                           : family == kTapDelay1Step1FXP1  ? kTapFXParam1Steps1
                                                            : kTapFXParam2Steps1;
    const int steps = LargeIndex(stepsParam + slot, slot); // 0: no grid
    const bool random = pan ? preset == 9 : preset == 7;
    // Random presets fill all 16 steps; the others the taps in use.
    const int n = random ? layout::kStepColumns - 1 : Index(kDelayTaps1 + slot, slot);
    std::mt19937 generator = ClockSeeded();
    for (int i = 0; i <= n; ++i)
    {
        IControl* fader = Fader(slot, r, i);
        if (!fader) continue;
        double v = PresetValue(pan, preset, i, n, generator);
        if (steps > 0) v = std::min(1.0, std::floor((steps + 1) * v) / steps);
        WriteStep(fader, v);
    }
}

void DelayPages::WriteStep(IControl* fader, double normalized)
{
    const double v = std::clamp(normalized, 0.0, 1.0);
    // A step already there is left out: the host sees no empty gesture.
    if (!fader || fader->GetValue() == v) return;
    IPlugBase* plug = mEditor.Plug();
    const int id = fader->ParamIdx();
    if (plug) plug->BeginInformHostOfParamChange(id);
    fader->SetValueFromUserInput(v);
    if (plug) plug->EndInformHostOfParamChange(id);
}

IControl* DelayPages::Fader(int slot, int r, int tap) const
{
    if (r < 0 || r >= layout::kNumStepRows || layout::kStepRows[r].kind != ELayoutKind::kTapStepFader)
        return nullptr;
    return mEditor.ControlOfPageRow(static_cast<EPageList>(kListLarge1 + (slot & 3)),
                                    layout::StepRowControl(r, tap));
}

void DelayPages::MoveRow(int slot, int r, int dir)
{
    const int count = Index(kDelayTaps1 + (slot & 3), slot & 3) + 1;
    std::array<double, layout::kStepColumns> values{};
    for (int i = 0; i < count; ++i)
    {
        const IControl* fader = Fader(slot, r, i);
        if (!fader) return;
        values[i] = fader->GetValue();
    }
    for (int i = 0; i < count; ++i)
        WriteStep(Fader(slot, r, i), values[((i - dir) % count + count) % count]);
}

void DelayPages::CopySlot(int slot)
{
    slot &= 3;
    for (int r = 0; r < layout::kNumStepRows; ++r)
        for (int t = 0; t < layout::kStepColumns; ++t)
            if (const IControl* fader = Fader(slot, r, t)) mCopy.mValues[r][t] = fader->GetValue();
    mCopy.mTapOn = mTapOn[slot];
    mCopy.mStepFx = mStepFx[slot];
    mCopy.mStepMod = {mStepMod[0][slot], mStepMod[1][slot]};
    mCopy.mValid = true;
    mCopy.mSlot = slot;
    Notify(slot, "COPIED");
}

void DelayPages::AddTitle(int slot, IMyTextControl* title)
{
    mTitles[static_cast<std::size_t>(slot & 3)].push_back(title);
    mEditor.AddTimedLabel(title);
}

void DelayPages::Notify(int slot, const std::string& notice)
{
    // One and a half seconds of editor frames.
    const int ticks = std::max(1, mEditor.FPS() * 3 / 2);
    for (IMyTextControl* title : mTitles[static_cast<std::size_t>(slot & 3)])
        title->SetTimedText(std::string(layout::kSlotTitles[slot & 3]) + "  -  " + notice, ticks);
}

void DelayPages::PasteSlot(int slot)
{
    if (!mCopy.mValid) return;
    slot &= 3;
    for (int r = 0; r < layout::kNumStepRows; ++r)
        for (int t = 0; t < layout::kStepColumns; ++t)
            WriteStep(Fader(slot, r, t), mCopy.mValues[r][t]);
    mTapOn[slot] = mCopy.mTapOn;
    mStepFx[slot] = mCopy.mStepFx;
    mStepMod[0][slot] = mCopy.mStepMod[0];
    mStepMod[1][slot] = mCopy.mStepMod[1];
    for (int t = 0; t < layout::kStepColumns; ++t)
    {
        if (mActions.tapOn) mActions.tapOn(slot, t, Bit(kMaskTapOnL, slot, t), Bit(kMaskTapOnR, slot, t));
        if (mActions.stepFx) mActions.stepFx(slot, t, Bit(kMaskStepFx, slot, t));
        if (mActions.stepMod)
            for (int row = 0; row < 2; ++row)
                mActions.stepMod(slot, row, t, Bit(static_cast<EStepMask>(kMaskStepMod1 + row), slot, t));
    }
    Refresh();
    Notify(slot, std::string("PASTED FROM ") + layout::kSlotTitles[mCopy.mSlot]);
}

void DelayPages::ApplyTapPattern(int slot, int pattern)
{
    slot &= 3;
    std::mt19937 generator = ClockSeeded();
    for (int t = 0; t < layout::kStepColumns; ++t)
    {
        bool left = false, right = false;
        PatternBits(pattern, t, generator, left, right);
        const std::uint16_t bit = static_cast<std::uint16_t>(1u << t);
        mTapOn[slot][0] = static_cast<std::uint16_t>(left ? mTapOn[slot][0] | bit : mTapOn[slot][0] & ~bit);
        mTapOn[slot][1] = static_cast<std::uint16_t>(right ? mTapOn[slot][1] | bit : mTapOn[slot][1] & ~bit);
        if (mActions.tapOn) mActions.tapOn(slot, t, left, right);
    }
    Refresh();
    if (pattern >= 0 && pattern < static_cast<int>(std::size(kTapPatterns)))
        Notify(slot, kTapPatterns[pattern]);
}

void DelayPages::SetPlayingTap(int slot, int tap)
{
    slot &= 3;
    if (mPlaying[slot] == tap) return;
    const auto list = static_cast<EPageList>(kListLarge1 + slot);
    for (int column : {mPlaying[slot], tap})
        if (column >= 0 && column < layout::kStepColumns)
            if (IControl* c = mEditor.ControlOfPageRow(list, layout::StepColumnNumber(column)))
                c->SetDirty(false);
    mPlaying[slot] = tap;
}

void DelayPages::Refresh()
{
    const int page = mEditor.Pages().Shown();
    if (page == kPageDelay) RefreshOverview();
    if (PageState::IsLargeView(page)) RefreshLarge(PageState::SlotOfLargeView(page), page >= kPageLargeSteps);
}

void DelayPages::RefreshOverview()
{
    for (int row = 0; row < static_cast<int>(kDelayLayout.size()); ++row)
    {
        IControl* c = mEditor.ControlOfPageRow(kListDelay, row);
        if (!c) continue;
        const int slot = row / layout::kDelayRowsPerSlot;
        const int mode = std::clamp(Index(kDelayMode1 + slot, slot), 0, 3);
        const int synced = Index(kTimebase1 + slot, slot) != 0 ? 1 : 0;
        const DelayRowRule& rule = kDelayRules[row];
        c->Hide(!((rule.mModes >> mode) & 1) || !((rule.mSync >> synced) & 1));
    }
}

void DelayPages::RefreshLarge(int slot, bool steps)
{
    const auto list = static_cast<EPageList>(kListLarge1 + slot);
    const int taps = Index(kDelayTaps1 + slot, slot) + 1;
    for (int row = 0; row < static_cast<int>(kLargeDelayLayout.size()); ++row)
    {
        IControl* c = mEditor.ControlOfPageRow(list, row);
        if (!c) continue;
        const DelayRowRule& rule = kLargeDelayRules[row];
        c->Hide(!((rule.mViews >> (steps ? 1 : 0)) & 1) || rule.mColumn >= taps);
        c->SetDirty(false);
        if (kLargeDelayLayout[row].mKind != ELayoutKind::kTapStepFader) continue;
        // An effect step's faders go gray while the step's effect, or its modulation, is off.
        const int tap = kLargeDelayLayout[row].mIndex;
        const int param = c->ParamIdx();
        bool gray = false;
        if (IsFamily(param, slot, kTapDelay1Step1FXP1))
            gray = !Bit(kMaskStepFx, slot, tap) || !Bit(kMaskStepMod1, slot, tap);
        else if (IsFamily(param, slot, kTapDelay1Step1FXP2))
            gray = !Bit(kMaskStepFx, slot, tap) || !Bit(kMaskStepMod2, slot, tap);
        c->GrayOut(gray);
    }
}

void DelayPages::OnParam(int id)
{
    const bool shapes = (id >= kDelayMode1 && id <= kDelayMode4) || (id >= kTimebase1 && id <= kTimebase4) ||
                        (id >= kDelayTaps1 && id <= kDelayTaps4);
    if (!shapes) return;
    Refresh();
    // Sections drawn over one another: a full redraw clears what a hidden one leaves.
    mEditor.SetAllControlsDirty();
}

// ---- Building ----

IControl* BuildDelayPageControl(QuorvexEditor& editor, const LayoutRow& row, int param, int instance)
{
    IPlugBase* plug = editor.Plug();
    const int role = row.mColorRole >= 0 ? row.mColorRole : layout::kSlotRole[instance & 3];
    const IColor* color = editor.Colors().Role(role);
    switch (row.mKind)
    {
    case ELayoutKind::kModeKnob:
    {
        const EArt art = kBitmapRows[row.mBitmap].mArt;
        auto* knob =
            new DelayModeKnob(plug, row.mRect, param, editor.BitmapOf(row.mBitmap), color,
                              art == EArt::kKnobBipolar || art == EArt::kKnobSoftBipolar, row.mLabel);
        if (const IParamRecord* p = plug ? plug->GetParam(param) : nullptr) knob->SetTooltip(p->name);
        return knob;
    }
    case ELayoutKind::kModeLabel:
    {
        const bool colored = row.mColorRole >= 0;
        const bool near = row.mRect.W() > 60;
        auto* label = new ITextControl(plug, row.mRect,
                                       LabelStyle(colored ? color : &kDimText, colored ? 11 : 10,
                                                  near ? IText::kAlignNear : IText::kAlignCenter),
                                       row.mLabel);
        label->SetTargetArea(IRECT());
        return label;
    }
    case ELayoutKind::kSlotTitle:
    {
        auto* title = new IMyTextControl(plug, row.mRect, LabelStyle(color, 12, IText::kAlignNear), color);
        title->SetText(std::string(layout::kSlotTitles[instance & 3]) + "  -  TAP STEPS");
        title->SetTargetArea(IRECT());
        editor.Delay().AddTitle(instance & 3, title);
        return title;
    }
    case ELayoutKind::kLargeViewButton:
    {
        const int slot = row.mIndex;
        auto* button = new DelayTextButton(plug, row.mRect, color, "STEPS", nullptr,
                                           [&editor, slot]
                                           {
                                               editor.Pages().SelectSlot(slot);
                                               if (editor.Actions().toggleLargeDelayView)
                                                   editor.Actions().toggleLargeDelayView();
                                               else
                                                   editor.ToggleLargeDelayView(false);
                                           });
        button->SetTooltip("Open the slot's taps and steps");
        return button;
    }
    case ELayoutKind::kLargeBackButton:
    {
        auto* button = new DelayTextButton(plug, row.mRect, color, row.mLabel, nullptr,
                                           [&editor]
                                           {
                                               if (editor.Actions().toggleLargeDelayView)
                                                   editor.Actions().toggleLargeDelayView();
                                               else
                                                   editor.ToggleLargeDelayView(false);
                                           });
        button->SetTooltip("Back to the delay overview");
        return button;
    }
    case ELayoutKind::kSourceField:
    {
        auto* field = new SourceFieldControl(plug, row.mRect, param, nullptr);
        if (const IParamRecord* p = plug ? plug->GetParam(param) : nullptr) field->SetTooltip(p->name);
        return field;
    }
    case ELayoutKind::kStepPresetMenu:
    {
        const int r = row.mIndex;
        const int slot = instance & 3;
        const bool pan = layout::kStepRows[r].param == kTapDelay1Step1Pan;
        DelayPages* pages = &editor.Delay();
        auto* menu = new DelayMenuLabel(
            plug, row.mRect, row.mLabel, nullptr, pan ? kStepPanPresets : kStepCurvePresets,
            pan ? static_cast<int>(std::size(kStepPanPresets))
                : static_cast<int>(std::size(kStepCurvePresets)),
            [pages, slot, r](int preset) { pages->ApplyStepPreset(slot, r, preset); });
        menu->SetTooltip("Presets of the row");
        return menu;
    }
    case ELayoutKind::kTapPatternMenu:
    {
        const int slot = instance & 3;
        DelayPages* pages = &editor.Delay();
        auto* menu = new DelayMenuLabel(
            plug, row.mRect, row.mLabel, nullptr, kTapPatterns, static_cast<int>(std::size(kTapPatterns)),
            [pages, slot](int pattern) { pages->ApplyTapPattern(slot, pattern); });
        menu->SetTooltip("On/off patterns of the taps");
        return menu;
    }
    case ELayoutKind::kStepMove:
    {
        const int r = row.mIndex / 2, dir = row.mIndex % 2 == 0 ? -1 : 1;
        const int slot = instance & 3;
        DelayPages* pages = &editor.Delay();
        auto* button = new DelayTextButton(plug, row.mRect, color, row.mLabel, nullptr,
                                           [pages, slot, r, dir] { pages->MoveRow(slot, r, dir); });
        button->SetTooltip(dir < 0 ? "Move the row one tap left" : "Move the row one tap right");
        return button;
    }
    case ELayoutKind::kSlotClipboard:
    {
        const bool paste = row.mIndex == 1;
        const int slot = instance & 3;
        DelayPages* pages = &editor.Delay();
        auto* button = new DelayTextButton(plug, row.mRect, color, row.mLabel, nullptr,
                                           [pages, slot, paste]
                                           {
                                               if (paste)
                                                   pages->PasteSlot(slot);
                                               else
                                                   pages->CopySlot(slot);
                                           });
        button->SetTooltip(paste ? "Paste the copied steps and taps onto this slot"
                                 : "Copy this slot's steps and taps");
        return button;
    }
    case ELayoutKind::kTapNumber:
    {
        return new TapNumberControl(plug, row.mRect, color, row.mLabel, &editor.Delay(), instance & 3,
                                    row.mIndex);
    }
    case ELayoutKind::kLargeViewSelect:
        return new DelayViewSelect(editor, row.mRect, instance & 3, color);
    case ELayoutKind::kTapStepFader:
    {
        const bool bipolar = kBitmapRows[row.mBitmap].mArt == EArt::kStepFaderBipolar;
        auto* fader = new StepFaderControl(plug, row.mRect, param, color, bipolar);
        if (const IParamRecord* p = plug ? plug->GetParam(param) : nullptr) fader->SetTooltip(p->name);
        return fader;
    }
    case ELayoutKind::kStepMaskButton:
    {
        const auto mask = static_cast<EStepMask>(row.mIndex / layout::kStepColumns);
        const int tap = row.mIndex % layout::kStepColumns;
        const int slot = instance & 3;
        DelayPages* pages = &editor.Delay();
        auto* button = new DelayTextButton(
            plug, row.mRect, color, row.mLabel,
            [pages, mask, slot, tap] { return pages->Bit(mask, slot, tap); },
            [pages, mask, slot, tap] { pages->Toggle(mask, slot, tap); });
        static constexpr const char* kWhat[kNumStepMasks] = {"left channel", "right channel", "effect",
                                                             "FX P1 modulation", "FX P2 modulation"};
        button->SetTooltip("Tap " + std::to_string(tap + 1) + " " + kWhat[mask] + " on/off");
        return button;
    }
    default:
        return nullptr;
    }
}
