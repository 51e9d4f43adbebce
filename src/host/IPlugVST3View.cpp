#include "host/IPlugVST3View.h"

#include "host/IEditorWindow.h"
#include "host/IPlugVST3.h"

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
        editor->OpenWindow(parent);
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
        size->right = editor->Width();
        size->bottom = editor->Height();
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
