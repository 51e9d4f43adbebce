#pragma once
// The plug-in's editor on the real parameter catalogue behind a base that records what the host
// hears, with the few gestures the page tests make on it.

#include <gtest/gtest.h>

#include <string>

#include "EditorDoubles.h"
#include "editor/IOverlay.h"
#include "editor/QuorvexEditor.h"
#include "params/IParamRecord.h"
#include "params/ParamCatalogue.h"
#include "params/ParamIds.h"

namespace editortest
{
inline constexpr const char* kCatalogueWaves[] = {"SINE", "TRIANGLE", "SAW"};

class CataloguePlug : public RecordingPlug
{
  public:
    CataloguePlug() { InitParams(params, kCatalogueWaves); }
};

struct CatalogueEditor : ::testing::Test
{
    CataloguePlug plug;
    QuorvexEditor editor;
    explicit CatalogueEditor(const char* art = QUORVEX_ART_DIR) : editor(&plug, art)
    {
        plug.AttachGraphics(&editor);
        editor.OnTimerTick();
        plug.mLog.clear();
    }
    ~CatalogueEditor() override { plug.AttachGraphics(nullptr); }

    // A list parameter set to entry `index` as the host would.
    void SetIndex(int param, int index)
    {
        IParamRecord* p = plug.GetParam(param);
        p->value = index;
        editor.SetParameterFromPlug(param, p->GetNormalized(), true);
    }
    void ClickAt(int x, int y, const IMouseMod& mod = Left())
    {
        editor.OnMouseDown(x, y, mod);
        editor.OnMouseUp(x, y, mod);
    }
    // A click in the middle of a control, which must be the one the mouse finds there.
    void Click(IControl* c, const IMouseMod& mod = Left())
    {
        const IRECT r = c->GetRECT();
        const int x = (r.L + r.R) / 2, y = (r.T + r.B) / 2;
        ASSERT_EQ(editor.GetControl(editor.HitTest(x, y)), c);
        ClickAt(x, y, mod);
    }
    IPopupOverlay* Popup() { return dynamic_cast<IPopupOverlay*>(editor.ModalOverlay()); }
    static std::string OneGesture(int param)
    {
        const std::string id = std::to_string(param);
        return "B" + id + " P" + id + " E" + id;
    }
};
} // namespace editortest
