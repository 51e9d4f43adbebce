#pragma once
// The editor's window as a VST 3 view. Created by IPlugVST3::createView only while an editor
// exists; it keeps a reference to its plug-in and leaves the plug-in's list of views when it dies.
// UI thread only.

#include "pluginterfaces/gui/iplugviewcontentscalesupport.h"
#include "public.sdk/source/common/pluginview.h"

class IPlugVST3;
class IEditorWindow;

class IPlugVST3View : public Steinberg::CPluginView, public Steinberg::IPlugViewContentScaleSupport
{
  public:
    explicit IPlugVST3View(IPlugVST3& plug);
    ~IPlugVST3View() override;

    Steinberg::tresult PLUGIN_API isPlatformTypeSupported(Steinberg::FIDString type) override;
    Steinberg::tresult PLUGIN_API attached(void* parent, Steinberg::FIDString type) override;
    Steinberg::tresult PLUGIN_API removed() override;
    Steinberg::tresult PLUGIN_API getSize(Steinberg::ViewRect* size) override;
    // Resizable with a fixed aspect ratio between 75 % and 200 %; the size sets the editor's scale.
    Steinberg::tresult PLUGIN_API onSize(Steinberg::ViewRect* newSize) override;
    Steinberg::tresult PLUGIN_API canResize() override;
    Steinberg::tresult PLUGIN_API checkSizeConstraint(Steinberg::ViewRect* rect) override;
    // Keys the host forwards go to the editor (its text box, its menus).
    Steinberg::tresult PLUGIN_API onKeyDown(Steinberg::char16 key, Steinberg::int16 keyCode,
                                            Steinberg::int16 modifiers) override;
    // The host's content scale (screen scale) becomes the editor's scale.
    Steinberg::tresult PLUGIN_API setContentScaleFactor(ScaleFactor factor) override;

    static constexpr double kMinScale = 0.75;
    static constexpr double kMaxScale = 2.0;

    // Asks the host's frame for a new size; the frame answers with onSize.
    bool RequestResize(int width, int height);
    Steinberg::IPlugFrame* Frame() const { return plugFrame; }

    Steinberg::tresult PLUGIN_API queryInterface(const Steinberg::TUID iid, void** obj) override;
    Steinberg::uint32 PLUGIN_API addRef() override { return CPluginView::addRef(); }
    Steinberg::uint32 PLUGIN_API release() override { return CPluginView::release(); }

  private:
    IEditorWindow* Editor() const;

    IPlugVST3& mPlug;
};
