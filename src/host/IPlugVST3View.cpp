#include "host/IPlugVST3View.h"

#include "host/IEditorWindow.h"
#include "host/IPlugVST3.h"

#include <algorithm>
#include <cmath>

using namespace Steinberg;

IPlugVST3View::IPlugVST3View(IPlugVST3& plug) : mPlug(plug)
{
    mPlug.addRef();
}

IPlugVST3View::~IPlugVST3View()
{
    mPlug.RemoveView(this);
    mPlug.release();
}

IEditorWindow* IPlugVST3View::Editor() const
{
    return mPlug.GetEditorWindow();
}

tresult PLUGIN_API IPlugVST3View::isPlatformTypeSupported(FIDString type)
{
    const IEditorWindow* editor = Editor();
    return editor && type && editor->IsPlatformTypeSupported(type) ? kResultTrue : kResultFalse;
}

tresult PLUGIN_API IPlugVST3View::attached(void* parent, FIDString type)
{
    IEditorWindow* editor = Editor();
    if (!editor || !type || !editor->IsPlatformTypeSupported(type)) return kResultFalse;
    try
    {
        // A host without what the back end needs (its run loop) gets no half-made window.
        if (!editor->OpenWindow(parent, plugFrame)) return kResultFalse;
        mPlug.OnGUIOpen();
    }
    catch (...)
    {
        return kInternalError;
    }
    return CPluginView::attached(parent, type);
}

tresult PLUGIN_API IPlugVST3View::removed()
{
    try
    {
        mPlug.OnGUIClose();
        if (IEditorWindow* editor = Editor()) editor->CloseWindow();
    }
    catch (...)
    {
        CPluginView::removed();
        return kInternalError;
    }
    return CPluginView::removed();
}

tresult PLUGIN_API IPlugVST3View::getSize(ViewRect* size)
{
    if (!size) return kInvalidArgument;
    if (const IEditorWindow* editor = Editor())
    {
        size->left = 0;
        size->top = 0;
        size->right = static_cast<int32>(std::lround(editor->Width() * editor->Scale()));
        size->bottom = static_cast<int32>(std::lround(editor->Height() * editor->Scale()));
        return kResultTrue;
    }
    return CPluginView::getSize(size);
}

bool IPlugVST3View::RequestResize(int width, int height)
{
    ViewRect wanted(0, 0, width, height);
    setRect(wanted);
    if (!plugFrame) return false;
    return plugFrame->resizeView(this, &wanted) == kResultTrue;
}

tresult PLUGIN_API IPlugVST3View::queryInterface(const TUID iid, void** obj)
{
    if (FUnknownPrivate::iidEqual(iid, IPlugViewContentScaleSupport::iid))
    {
        addRef();
        *obj = static_cast<IPlugViewContentScaleSupport*>(this);
        return kResultOk;
    }
    return CPluginView::queryInterface(iid, obj);
}

tresult PLUGIN_API IPlugVST3View::canResize()
{
    return Editor() ? kResultTrue : kResultFalse;
}

tresult PLUGIN_API IPlugVST3View::checkSizeConstraint(ViewRect* rect)
{
    const IEditorWindow* editor = Editor();
    if (!rect || !editor) return kInvalidArgument;
    // The width decides; the height follows the editor's aspect ratio.
    const double scale =
        std::clamp(static_cast<double>(rect->getWidth()) / editor->Width(), kMinScale, kMaxScale);
    rect->right = rect->left + static_cast<int32>(std::lround(editor->Width() * scale));
    rect->bottom = rect->top + static_cast<int32>(std::lround(editor->Height() * scale));
    return kResultTrue;
}

tresult PLUGIN_API IPlugVST3View::onSize(ViewRect* newSize)
{
    if (!newSize) return kInvalidArgument;
    IEditorWindow* editor = Editor();
    if (editor && editor->Width() > 0)
    {
        const double scale =
            std::clamp(static_cast<double>(newSize->getWidth()) / editor->Width(), kMinScale, kMaxScale);
        if (std::fabs(scale - editor->Scale()) > 1e-6) editor->SetScale(scale);
    }
    return CPluginView::onSize(newSize);
}

tresult PLUGIN_API IPlugVST3View::setContentScaleFactor(ScaleFactor factor)
{
    IEditorWindow* editor = Editor();
    if (!editor || !(factor > 0.0f)) return kResultFalse;
    const double scale = std::clamp(static_cast<double>(factor), kMinScale, kMaxScale);
    if (std::fabs(scale - editor->Scale()) < 1e-6) return kResultTrue;
    editor->SetScale(scale);
    RequestResize(static_cast<int>(std::lround(editor->Width() * scale)),
                  static_cast<int>(std::lround(editor->Height() * scale)));
    return kResultTrue;
}

tresult PLUGIN_API IPlugVST3View::onKeyDown(char16 key, int16 keyCode, int16 modifiers)
{
    IEditorWindow* editor = Editor();
    return editor && editor->OnHostKeyDown(static_cast<char16_t>(key), keyCode) ? kResultTrue : kResultFalse;
}
