#pragma once
// The editor's window as a VST 3 view. Created by IPlugVST3::createView only while an editor
// exists; it keeps a reference to its plug-in and leaves the plug-in's list of views when it dies.
// UI thread only.

#include "public.sdk/source/common/pluginview.h"

class IPlugVST3;
class IEditorWindow;

class IPlugVST3View : public Steinberg::CPluginView
{
  public:
    explicit IPlugVST3View(IPlugVST3& plug);
    ~IPlugVST3View() override;

    Steinberg::tresult PLUGIN_API isPlatformTypeSupported(Steinberg::FIDString type) override;
    Steinberg::tresult PLUGIN_API attached(void* parent, Steinberg::FIDString type) override;
    Steinberg::tresult PLUGIN_API removed() override;
    Steinberg::tresult PLUGIN_API getSize(Steinberg::ViewRect* size) override;

    // Asks the host's frame for a new size; the frame answers with onSize.
    bool RequestResize(int width, int height);
    Steinberg::IPlugFrame* Frame() const { return plugFrame; }

    OBJ_METHODS(IPlugVST3View, CPluginView)

  private:
    IEditorWindow* Editor() const;

    IPlugVST3& mPlug;
};
