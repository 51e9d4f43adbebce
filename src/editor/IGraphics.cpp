#include "editor/IGraphics.h"

#include <cmath>
#include <cstdlib>
#include <cstring>

#include "editor/IFilePromptOverlay.h"
#include "editor/IMessageBoxOverlay.h"
#include "editor/IPlatformWindow.h"
#include "params/IParamRecord.h"

IGraphics::IGraphics(IPlugBase* plug, int width, int height, int fps)
    : mPlug(plug), mWidth(width), mHeight(height), mFPS(fps), mRaster(MakeCairoRaster()),
      mURLOpener(OpenURLInBrowser)
{
    mRaster->Resize(mWidth, mHeight, mScale);
}

IGraphics::~IGraphics()
{
    CloseWindow();
}

int IGraphics::AttachControl(IControl* control)
{
    control->SetGraphics(this);
    mControls.emplace_back(control);
    mShown.push_back(false);
    return NControls() - 1;
}

IControl* IGraphics::GetControl(int idx) const
{
    return idx >= 0 && idx < NControls() ? mControls[idx].get() : nullptr;
}

IBitmap IGraphics::LoadIBitmap(int id, const char* name, int frames)
{
    IBitmap bitmap;
    bitmap.N = std::max(1, frames);
    if (!name || mResourceDir.empty()) return bitmap;
    bitmap.mRaster = LoadRasterImage(mResourceDir, name);
    RasterImageSize(bitmap.mRaster.get(), bitmap.W, bitmap.H);
    return bitmap;
}

int IGraphics::SetColorSet(int index)
{
    const int applied = mColors.Apply(index);
    SetAllControlsDirty();
    return applied;
}

// ---- Drawing ----------------------------------------------------------------------------------

void IGraphics::DrawBitmap(const IBitmap& bitmap, const IRECT& rect, int frame, const IChannelBlend* blend)
{
    mRaster->DrawBitmap(bitmap, rect, frame, blend);
}

void IGraphics::DrawRotatedBitmap(const IBitmap& bitmap, int cx, int cy, double angleDeg,
                                  const IChannelBlend* blend)
{
    mRaster->DrawRotatedBitmap(bitmap, cx, cy, angleDeg, blend);
}

void IGraphics::DrawRect(const IColor& color, const IRECT& rect)
{
    mRaster->DrawRect(color, rect);
}

void IGraphics::FillIRect(const IColor& color, const IRECT& rect)
{
    mRaster->FillRect(color, rect);
}

void IGraphics::FillCircle(const IColor& color, int cx, int cy, float radius)
{
    mRaster->FillCircle(color, cx, cy, radius);
}

void IGraphics::DrawLine(const IColor& color, float x1, float y1, float x2, float y2, float width)
{
    mRaster->DrawLine(color, x1, y1, x2, y2, width);
}

void IGraphics::DrawArc(const IColor& color, float cx, float cy, float radius, float fromDeg, float toDeg,
                        float width)
{
    mRaster->DrawArc(color, cx, cy, radius, fromDeg, toDeg, width);
}

void IGraphics::DrawIText(const IText& text, const char* str, const IRECT& rect)
{
    mRaster->DrawText(text, str, rect);
}

IRECT IGraphics::MeasureIText(const IText& text, const char* str)
{
    return mRaster->MeasureText(text, str);
}

// ---- Redraw -----------------------------------------------------------------------------------

bool IGraphics::IsDirty(IRECT& rect)
{
    IRECT r;
    for (int i = 0; i < NControls(); ++i)
    {
        IControl& c = *mControls[i];
        const bool dirty = c.IsDirty();
        // A control that hid since its last draw leaves an area to paint over.
        if (dirty && (!c.IsHidden() || mShown[i])) r = r.Union(c.GetRECT());
    }
    if (mModal && mModal->TakeDirty()) r = r.Union(mModal->Bounds());
    if (mTooltip && mTooltip->TakeDirty()) r = r.Union(mTooltip->Bounds());
    const IRECT overlays =
        (mModal ? mModal->Bounds() : IRECT()).Union(mTooltip ? mTooltip->Bounds() : IRECT());
    if (!(overlays == mOverlayDrawn)) r = r.Union(overlays).Union(mOverlayDrawn);
    if (mFullRedraw) r = IRECT(0, 0, mWidth, mHeight);
    mFullRedraw = false;
    rect = r.Intersect(IRECT(0, 0, mWidth, mHeight));
    return !rect.Empty();
}

void IGraphics::Draw(const IRECT& rect)
{
    mRaster->PushClip(rect);
    if (mBackground.mRaster)
        mRaster->DrawBitmap(mBackground, IRECT(0, 0, mWidth, mHeight), 1, nullptr);
    else
        mRaster->FillRect(mPanelColor, rect);
    for (int i = 0; i < NControls(); ++i)
    {
        IControl& c = *mControls[i];
        mShown[i] = !c.IsHidden();
        if (c.IsHidden() || !c.GetRECT().Intersects(rect)) continue;
        c.Draw(this);
        c.SetClean();
    }
    mOverlayDrawn = IRECT();
    for (IOverlay* overlay : {mModal.get(), mTooltip.get()})
        if (overlay && overlay->Bounds().Intersects(rect))
        {
            overlay->Draw(*mRaster);
            mOverlayDrawn = mOverlayDrawn.Union(overlay->Bounds());
        }
        else if (overlay)
            mOverlayDrawn = mOverlayDrawn.Union(overlay->Bounds());
    mRaster->PopClip();
}

IRECT IGraphics::OnTimerTick()
{
    if (mIdleHook) mIdleHook();
    if (mMouseOver >= 0 && mMouseCapture < 0 && !mModal && !mTooltipShown &&
        ++mHoverTicks >= kTooltipDelayTicks)
    {
        mTooltipShown = true;
        const IControl* c = GetControl(mMouseOver);
        if (c && !c->Tooltip().empty())
            mTooltip = std::make_unique<ITooltipOverlay>(mLastX, mLastY, c->Tooltip(), mWidth, mHeight,
                                                         *mRaster, mColors);
    }
    IRECT r;
    if (!IsDirty(r)) return IRECT();
    Draw(r);
    if (mWindow) mWindow->Invalidate(r);
    return r;
}

void IGraphics::SetScale(double scale)
{
    if (scale <= 0.0) return;
    mScale = scale;
    mRaster->Resize(mWidth, mHeight, mScale);
    SetAllControlsDirty();
    if (mWindow) mWindow->Resize(mRaster->DeviceWidth(), mRaster->DeviceHeight());
}

// ---- Plug-in side -----------------------------------------------------------------------------

void IGraphics::SetParameterFromPlug(int id, double value, bool normalized)
{
    if (!normalized && mPlug)
        if (const IParamRecord* param = mPlug->GetParam(id)) value = param->GetNormalized(value);
    if (mBindingsStale || mBoundControls != mControls.size()) BindParams();
    if (id < 0 || id >= static_cast<int>(mBindings.size())) return;
    for (const ParamBinding& binding : mBindings[static_cast<std::size_t>(id)])
    {
        if (binding.aux < 0)
            binding.control->SetValueFromPlug(value);
        else
            binding.control->SetAuxParamValueFromPlug(binding.aux, value);
    }
}

void IGraphics::BindParams()
{
    mBindings.clear();
    const auto bind = [this](int id, IControl* control, int aux)
    {
        if (id < 0) return;
        if (static_cast<std::size_t>(id) >= mBindings.size())
            mBindings.resize(static_cast<std::size_t>(id) + 1);
        mBindings[static_cast<std::size_t>(id)].push_back({control, aux});
    };
    for (const auto& control : mControls)
    {
        bind(control->ParamIdx(), control.get(), -1);
        const auto& aux = control->AuxParams();
        for (int i = 0; i < static_cast<int>(aux.size()); ++i)
            bind(aux[i].mParamIdx, control.get(), i);
    }
    mBoundControls = mControls.size();
    mBindingsStale = false;
}

void IGraphics::SetParameterFromControl(const IControl& source)
{
    for (const auto& control : mControls)
        if (control.get() != &source && control->ParamIdx() == source.ParamIdx())
            control->SetValueFromPlug(source.GetValue());
}

void IGraphics::PrepDraw()
{
    mRaster->Resize(mWidth, mHeight, mScale);
    SetAllControlsDirty();
}

// ---- Window -----------------------------------------------------------------------------------

void IGraphics::SetPlatform(const char* platformType, PlatformWindowFactory factory)
{
    mPlatformType = platformType ? platformType : "";
    mWindowFactory = std::move(factory);
}

bool IGraphics::IsPlatformTypeSupported(const char* type) const
{
    return type && mWindowFactory && mPlatformType == type;
}

bool IGraphics::OpenWindow(void* parent, void* hostContext)
{
    CloseWindow();
    if (!mWindowFactory) return false;
    mWindow = mWindowFactory(*this, parent, hostContext);
    if (!mWindow) return false;
    SetAllControlsDirty();
    return true;
}

void IGraphics::CloseWindow()
{
    if (mGestureParam >= 0) EndGesture();
    mMouseCapture = -1;
    mMouseOver = -1;
    mModal.reset();
    mTooltip.reset();
    mWindow.reset();
}

// ---- Mouse and keys ---------------------------------------------------------------------------

int IGraphics::HitTest(int x, int y) const
{
    for (int i = NControls() - 1; i >= 0; --i)
    {
        const IControl& c = *mControls[i];
        if (!c.IsHidden() && !c.IsGrayed() && c.IsHit(x, y)) return i;
    }
    return -1;
}

void IGraphics::BeginGesture(IControl* control)
{
    mGestureParam = control->ParamIdx();
    if (mGestureParam >= 0 && mPlug) mPlug->BeginInformHostOfParamChange(mGestureParam);
}

void IGraphics::EndGesture()
{
    if (mGestureParam >= 0 && mPlug) mPlug->EndInformHostOfParamChange(mGestureParam);
    mGestureParam = -1;
}

template <typename Event> void IGraphics::ToModal(Event&& event)
{
    // The overlay is held aside while it runs: a pick may open the next prompt in its place.
    std::unique_ptr<IOverlay> modal = std::move(mModal);
    event(*modal);
    if (!mModal && !modal->Closed()) mModal = std::move(modal);
}

void IGraphics::OnMouseDown(int x, int y, const IMouseMod& mod)
{
    mTooltip.reset();
    mTooltipShown = true;
    if (IControl* c = Press(x, y, mod)) c->OnMouseDown(x, y, mod);
}

// A press goes to an open overlay, or captures the control under it for the drags and the release.
IControl* IGraphics::Press(int x, int y, const IMouseMod& mod)
{
    mLastX = x;
    mLastY = y;
    if (mModal)
    {
        ToModal([&](IOverlay& m) { m.OnMouseDown(x, y, mod); });
        return nullptr;
    }
    mMouseCapture = HitTest(x, y);
    IControl* c = GetControl(mMouseCapture);
    // One host gesture per left press; a right press opens a prompt, which makes its own.
    if (c && !mod.R) BeginGesture(c);
    if (c && !mod.R && c->ParamIdx() >= 0 && mTouchHook) mTouchHook(c->ParamIdx());
    return c;
}

void IGraphics::OnMouseUp(int x, int y, const IMouseMod& mod)
{
    if (IControl* c = GetControl(mMouseCapture)) c->OnMouseUp(x, y, mod);
    mMouseCapture = -1;
    EndGesture();
}

void IGraphics::OnMouseDrag(int x, int y, const IMouseMod& mod)
{
    const int dX = x - mLastX, dY = y - mLastY;
    mLastX = x;
    mLastY = y;
    if (mModal && mMouseCapture < 0)
    {
        mModal->OnMouseMove(x, y);
        return;
    }
    if (IControl* c = GetControl(mMouseCapture))
        if (dX != 0 || dY != 0) c->OnMouseDrag(x, y, dX, dY, mod);
}

void IGraphics::OnMouseDblClick(int x, int y, const IMouseMod& mod)
{
    if (IControl* c = Press(x, y, mod)) c->OnMouseDblClick(x, y, mod);
}

void IGraphics::OnMouseWheel(int x, int y, const IMouseMod& mod, int d)
{
    if (mModal)
    {
        mModal->OnMouseWheel(x, y, d);
        return;
    }
    if (mMouseCapture >= 0) return;
    IControl* c = GetControl(HitTest(x, y));
    if (!c) return;
    // Each notch is a gesture of its own, so that hosts record wheel moves as edits.
    BeginGesture(c);
    c->OnMouseWheel(x, y, mod, d);
    EndGesture();
}

void IGraphics::OnMouseOver(int x, int y, const IMouseMod& mod)
{
    mLastX = x;
    mLastY = y;
    if (mModal)
    {
        mModal->OnMouseMove(x, y);
        return;
    }
    const int over = HitTest(x, y);
    if (over != mMouseOver)
    {
        if (IControl* old = GetControl(mMouseOver)) old->OnMouseOut();
        mMouseOver = over;
        mHoverTicks = 0;
        mTooltipShown = false;
        mTooltip.reset();
    }
    if (IControl* c = GetControl(over)) c->OnMouseOver(x, y, mod);
}

void IGraphics::OnMouseOut()
{
    if (IControl* old = GetControl(mMouseOver)) old->OnMouseOut();
    mMouseOver = -1;
    mTooltip.reset();
}

bool IGraphics::OnKeyDown(int x, int y, int key)
{
    if (mModal)
    {
        bool used = false;
        ToModal([&](IOverlay& m) { used = m.OnKeyDown(key); });
        return used;
    }
    IControl* c = GetControl(HitTest(x, y));
    return c && c->OnKeyDown(x, y, key);
}

bool IGraphics::OnHostKeyDown(char16_t character, int virtualKey)
{
    // The host's virtual key numbers (VST 3 VirtualKeyCodes) of the keys the toolkit uses.
    struct VirtualKey
    {
        int mHost;
        int mKey;
    };
    static constexpr VirtualKey kVirtualKeys[] = {
        {1, kKeyBackspace}, {2, kKeyTab},     {4, kKeyEnter},     {6, kKeyEscape}, {7, ' '},
        {9, kKeyEnd},       {10, kKeyHome},   {11, kKeyLeft},     {12, kKeyUp},    {13, kKeyRight},
        {14, kKeyDown},     {15, kKeyPageUp}, {16, kKeyPageDown}, {19, kKeyEnter}, {22, kKeyDelete},
    };
    int key = character >= 32 ? static_cast<int>(character) : kKeyNone;
    if (key == kKeyNone)
        for (const VirtualKey& v : kVirtualKeys)
            if (v.mHost == virtualKey) key = v.mKey;
    return key != kKeyNone && OnKeyDown(mLastX, mLastY, key);
}

// ---- Prompts ----------------------------------------------------------------------------------

bool IGraphics::ParseValueEntry(const IParamRecord& param, const std::string& text, double& value)
{
    const char* begin = text.c_str();
    char* end = nullptr;
    const double v = std::strtod(begin, &end);
    if (end == begin || !std::isfinite(v)) return false;
    value = std::clamp(v, std::min(param.min, param.max), std::max(param.min, param.max));
    return true;
}

void IGraphics::SetFromPrompt(IControl* control, double normalized)
{
    // A prompt's answer is one complete gesture of its own.
    const int id = control->ParamIdx();
    if (mPlug && id >= 0) mPlug->BeginInformHostOfParamChange(id);
    control->SetValueFromUserInput(normalized);
    if (mPlug && id >= 0) mPlug->EndInformHostOfParamChange(id);
}

void IGraphics::PromptUserInput(IControl* control, const IRECT& rect)
{
    if (!control || control->IsPromptDisabled() || !mPlug) return;
    const IParamRecord* param = mPlug->GetParam(control->ParamIdx());
    if (!param) return;
    const int id = control->ParamIdx();
    if (!param->displayTexts.empty())
    {
        auto menu = std::make_shared<IPopupMenu>();
        const double current = param->GetNonNormalized(control->GetValue());
        std::vector<int> values;
        for (const IParamRecord::DisplayText& entry : param->displayTexts)
        {
            if (!entry.text[0]) continue; // blank entries are no choice
            const int item = menu->AddItem(entry.text);
            values.push_back(entry.value);
            if (std::fabs(entry.value - current) < 0.5) menu->SetItemChecked(item, true);
        }
        CreateIPopupMenu(menu, rect,
                         [this, control, id, values](IPopupMenu* chosen, int index)
                         {
                             if (!chosen || index < 0 || index >= static_cast<int>(values.size())) return;
                             const IParamRecord* p = mPlug->GetParam(id);
                             if (p) SetFromPrompt(control, p->GetNormalized(values[index]));
                         });
        return;
    }
    const std::string text =
        param->GetDisplayForHost(param->GetNonNormalized(control->GetValue()), false, false);
    PromptForText(rect, text,
                  [this, control, id](const std::string& entered)
                  {
                      const IParamRecord* p = mPlug->GetParam(id);
                      double value = 0.0;
                      if (p && ParseValueEntry(*p, entered, value))
                          SetFromPrompt(control, p->GetNormalized(value));
                  });
}

void IGraphics::CreateIPopupMenu(std::shared_ptr<IPopupMenu> menu, const IRECT& anchor, PopupDone done)
{
    if (!menu || menu->NItems() == 0) return;
    mTooltip.reset();
    mModal = std::make_unique<IPopupOverlay>(std::move(menu), anchor, mWidth, mHeight, *mRaster, mColors,
                                             std::move(done));
}

void IGraphics::PromptForText(const IRECT& rect, const std::string& text, TextDone done)
{
    mTooltip.reset();
    mModal = std::make_unique<ITextEntryOverlay>(rect, text, *mRaster, mColors, std::move(done));
}

bool IGraphics::MessageBoxShowing() const
{
    return dynamic_cast<const IMessageBoxOverlay*>(mModal.get()) != nullptr;
}

void IGraphics::ShowMessageBox(const std::string& text, const std::string& caption,
                               std::function<void()> done)
{
    mTooltip.reset();
    if (auto* box = dynamic_cast<IMessageBoxOverlay*>(mModal.get()))
    {
        box->SetText(text, caption);
        return;
    }
    mModal = std::make_unique<IMessageBoxOverlay>(text, caption, mWidth, mHeight, *mRaster, mColors,
                                                  std::move(done));
}

void IGraphics::PromptForFile(const std::string& fileName, const std::string& dir,
                              const std::string& extension, std::function<void(const std::string& path)> done,
                              const std::string& caption)
{
    mTooltip.reset();
    mModal = std::make_unique<IFilePromptOverlay>(caption, fileName, dir, extension, mWidth, mHeight,
                                                  *mRaster, mColors, std::move(done));
}

bool IGraphics::OpenURL(const std::string& url)
{
    return mURLOpener && mURLOpener(url);
}
