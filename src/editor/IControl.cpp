#include "editor/IControl.h"

#include <algorithm>
#include <cmath>

#include "editor/IGraphics.h"
#include "host/IPlugBase.h"

void IControl::AddAuxParam(int paramIdx)
{
    mAuxParams.push_back({paramIdx, 0.0});
    if (mGraphics) mGraphics->InvalidateParamBindings();
}

IControl::IControl(IPlugBase* plug, const IRECT& rect, int paramIdx, IChannelBlend blend)
    : mPlug(plug), mRect(rect), mTargetRect(rect), mParamIdx(paramIdx), mBlend(blend)
{
}

void IControl::OnMouseDown(int x, int y, const IMouseMod& mod)
{
    if (!mod.R || mParamIdx < 0) return;
    // The host's menu is placed in the view's pixels; its "Enter value" item opens our own entry.
    const double scale = mGraphics ? mGraphics->Scale() : 1.0;
    if (mPlug && mPlug->PopupHostContextMenuForParam(mParamIdx, static_cast<int>(std::lround(x * scale)),
                                                     static_cast<int>(std::lround(y * scale)),
                                                     [this]
                                                     {
                                                         if (mGraphics)
                                                             mGraphics->PromptUserInput(this, mRect);
                                                     }))
        return;
    if (mGraphics) mGraphics->PromptUserInput(this, mRect);
}

void IControl::OnMouseDblClick(int x, int y, const IMouseMod& mod)
{
    if (mDefaultValue < 0.0) return;
    mValue = mDefaultValue;
    SetDirty(true);
}

void IControl::SetValueFromPlug(double value)
{
    if (mDefaultValue < 0.0) mDefaultValue = value;
    if (mValue != value)
    {
        mValue = value;
        SetDirty(false);
        Redraw();
    }
}

void IControl::SetValueFromUserInput(double value)
{
    if (mValue != value)
    {
        mValue = value;
        SetDirty(true);
        Redraw();
    }
}

void IControl::GrayOut(bool gray)
{
    mGrayed = gray;
    mBlend.mWeight = gray ? 0.35f : 1.0f;
    mBlend.mMode = gray ? IChannelBlend::kBlendScale : mBlend.mMode;
    SetDirty(false);
}

void IControl::Hide(bool hide)
{
    if (mHide != hide) mDirty = true;
    mHide = hide;
}

bool IControl::IsDirty()
{
    const bool dirty = mDirty;
    mDirty = false;
    return dirty;
}

void IControl::SetDirty(bool pushToPlug)
{
    if (mClampValue) mValue = std::clamp(mValue, 0.0, 1.0);
    mDirty = true;
    if (!pushToPlug) return;
    if (mParamIdx >= 0 && mPlug)
    {
        mPlug->SetParameterFromGUI(mParamIdx, mValue);
        // Other controls of the parameter (a second view of it, a label that follows it) see the
        // change now; the host doesn't echo an edit back.
        if (mGraphics) mGraphics->SetParameterFromControl(*this);
        for (const AuxParam& aux : mAuxParams)
            if (aux.mParamIdx >= 0) mPlug->SetParameterFromGUI(aux.mParamIdx, aux.mValue);
    }
    else if (mParamIdx < 0 && mAction)
        mAction(*this);
}

void IControl::SetAuxParamValueFromPlug(int auxIdx, double value)
{
    if (auxIdx < 0 || auxIdx >= static_cast<int>(mAuxParams.size())) return;
    if (mAuxParams[auxIdx].mValue != value)
    {
        mAuxParams[auxIdx].mValue = value;
        mDirty = true;
    }
}

// ---- IPanelControl ----------------------------------------------------------------------------

IPanelControl::IPanelControl(IPlugBase* plug, const IRECT& rect, const IColor* color)
    : IControl(plug, rect), mColor(color)
{
}

void IPanelControl::Draw(IGraphics* graphics)
{
    if (mColor) graphics->FillIRect(*mColor, mRect);
}

// ---- IBitmapControl ---------------------------------------------------------------------------

IBitmapControl::IBitmapControl(IPlugBase* plug, int x, int y, int paramIdx, const IBitmap& bitmap,
                               IChannelBlend blend)
    : IControl(plug, IRECT::FromSize(x, y, bitmap.W, bitmap.FrameH()), paramIdx, blend), mBitmap(bitmap)
{
}

IBitmapControl::IBitmapControl(IPlugBase* plug, const IRECT& rect, int paramIdx, const IBitmap& bitmap,
                               IChannelBlend blend)
    : IControl(plug, rect, paramIdx, blend), mBitmap(bitmap)
{
}

int IBitmapControl::FrameForValue(double value, int frames)
{
    if (frames <= 1) return 1;
    const int frame = 1 + static_cast<int>(value * (frames - 1) + 0.5);
    return std::clamp(frame, 1, frames);
}

void IBitmapControl::Draw(IGraphics* graphics)
{
    graphics->DrawBitmap(mBitmap, mRect, CurrentFrame(), &mBlend);
}

// ---- Switches ---------------------------------------------------------------------------------

double ISwitchControl::NextValue(double value, int states)
{
    if (states <= 1) return 0.0;
    const double next = value + 1.0 / (states - 1);
    return next > 1.001 ? 0.0 : next;
}

void ISwitchControl::OnMouseDown(int x, int y, const IMouseMod& mod)
{
    if (mod.R)
    {
        IControl::OnMouseDown(x, y, mod);
        return;
    }
    mValue = NextValue(mValue, mBitmap.N);
    SetDirty(true);
}

IInvisibleSwitchControl::IInvisibleSwitchControl(IPlugBase* plug, const IRECT& rect, int paramIdx, int states)
    : IControl(plug, rect, paramIdx), mStates(states)
{
}

void IInvisibleSwitchControl::OnMouseDown(int x, int y, const IMouseMod& mod)
{
    if (mod.R)
    {
        IControl::OnMouseDown(x, y, mod);
        return;
    }
    mValue = ISwitchControl::NextValue(mValue, mStates);
    SetDirty(true);
}

// ---- Radio buttons ----------------------------------------------------------------------------

IRadioButtonsControl::IRadioButtonsControl(IPlugBase* plug, const IRECT& rect, int paramIdx, int nButtons,
                                           const IBitmap& bitmap, EDirection direction)
    : IControl(plug, rect, paramIdx), mBitmap(bitmap)
{
    nButtons = std::max(1, nButtons);
    const int bw = bitmap.W, bh = bitmap.FrameH();
    // Buttons spread evenly over the rectangle, the first at its start and the last at its end.
    for (int i = 0; i < nButtons; ++i)
    {
        int x = rect.L, y = rect.T;
        if (nButtons > 1 && direction == kHorizontal) x += (rect.W() - bw) * i / (nButtons - 1);
        if (nButtons > 1 && direction == kVertical) y += (rect.H() - bh) * i / (nButtons - 1);
        mButtons.push_back(IRECT::FromSize(x, y, bw, bh));
    }
}

int IRadioButtonsControl::SelectedButton() const
{
    const int n = NButtons();
    return n > 1 ? std::clamp(static_cast<int>(mValue * (n - 1) + 0.5), 0, n - 1) : 0;
}

void IRadioButtonsControl::OnMouseDown(int x, int y, const IMouseMod& mod)
{
    if (mod.R)
    {
        IControl::OnMouseDown(x, y, mod);
        return;
    }
    const int n = NButtons();
    for (int i = 0; i < n; ++i)
        if (mButtons[i].Contains(x, y))
        {
            mValue = n > 1 ? static_cast<double>(i) / (n - 1) : 0.0;
            SetDirty(true);
            return;
        }
}

void IRadioButtonsControl::Draw(IGraphics* graphics)
{
    const int selected = SelectedButton();
    for (int i = 0; i < NButtons(); ++i)
        graphics->DrawBitmap(mBitmap, mButtons[i], i == selected ? 2 : 1, &mBlend);
}

// ---- Knobs ------------------------------------------------------------------------------------

IKnobControl::IKnobControl(IPlugBase* plug, const IRECT& rect, int paramIdx, EDirection direction,
                           double gearing)
    : IControl(plug, rect, paramIdx), mDirection(direction), mGearing(gearing)
{
}

void IKnobControl::OnMouseDown(int x, int y, const IMouseMod& mod)
{
    // A left press only grabs the knob; the value follows the drag.
    if (mod.R) IControl::OnMouseDown(x, y, mod);
}

void IKnobControl::OnMouseDrag(int x, int y, int dX, int dY, const IMouseMod& mod)
{
    const double span = mGearing * (mDirection == kVertical ? mRect.H() : mRect.W());
    if (span <= 0.0) return;
    double delta = mDirection == kVertical ? -dY / span : dX / span;
    if (mod.S || mod.C) delta *= 0.1;
    if (delta == 0.0) return;
    mValue += delta;
    SetDirty(true);
}

void IKnobControl::OnMouseWheel(int x, int y, const IMouseMod& mod, int d)
{
    mValue += d * ((mod.S || mod.C) ? kFineWheelStep : kWheelStep);
    SetDirty(true);
}

IBitmapKnobControl::IBitmapKnobControl(IPlugBase* plug, int x, int y, int paramIdx, const IBitmap& bitmap,
                                       const IColor* arcColor, bool bipolar)
    : IKnobControl(plug, IRECT::FromSize(x, y, bitmap.W, bitmap.FrameH()), paramIdx), mBitmap(bitmap),
      mArcColor(arcColor), mBipolar(bipolar)
{
}

void IBitmapKnobControl::Draw(IGraphics* graphics)
{
    graphics->DrawBitmap(mBitmap, mRect, IBitmapControl::FrameForValue(mValue, mBitmap.N), &mBlend);
    if (!mArcColor) return;
    // The value arc runs on the knob's rim track, from the bottom-left stop (or from the top for a
    // bipolar knob) to the value.
    const float cx = (mRect.L + mRect.R) / 2.0f, cy = (mRect.T + mRect.B) / 2.0f;
    const float radius = std::min(mRect.W(), mRect.H()) / 2.0f - 2.5f;
    const double angle = kMinAngle + std::clamp(mValue, 0.0, 1.0) * (kMaxAngle - kMinAngle);
    IColor color = *mArcColor;
    if (mGrayed) color.A = 90;
    const double from = mBipolar ? 0.0 : kMinAngle;
    if (std::fabs(angle - from) > 0.5)
        graphics->DrawArc(color, cx, cy, radius, static_cast<float>(from), static_cast<float>(angle), 3.0f);
}

// ---- Text -------------------------------------------------------------------------------------

ITextControl::ITextControl(IPlugBase* plug, const IRECT& rect, const IText& text, std::string str)
    : IControl(plug, rect), mText(text), mStr(std::move(str))
{
}

void ITextControl::Draw(IGraphics* graphics)
{
    graphics->DrawIText(mText, mStr.c_str(), mRect);
}

void ITextControl::SetTextFromPlug(const std::string& str)
{
    if (str == mStr) return;
    mStr = str;
    SetDirty(false);
}

void ITextInputControl::OnMouseDown(int x, int y, const IMouseMod& mod)
{
    if (!mGraphics || mDisablePrompt) return;
    mGraphics->PromptForText(mRect, mStr, [this](const std::string& text) { SetTextFromUser(text); });
}

void ITextInputControl::SetTextFromUser(const std::string& str)
{
    mStr = str;
    mDirty = true;
    if (mAction) mAction(*this);
}

// ---- Links and popups -------------------------------------------------------------------------

IURLControl::IURLControl(IPlugBase* plug, const IRECT& rect, std::string url)
    : IControl(plug, rect), mURL(std::move(url))
{
}

void IURLControl::OnMouseDown(int x, int y, const IMouseMod& mod)
{
    if (mGraphics) mGraphics->OpenURL(mURL);
}

void ISwitchPopUpControl::OnMouseDown(int x, int y, const IMouseMod& mod)
{
    if (mod.R)
        IControl::OnMouseDown(x, y, mod);
    else if (mGraphics && mParamIdx >= 0)
        mGraphics->PromptUserInput(this, mRect);
}
