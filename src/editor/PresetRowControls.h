#pragma once
// The preset row along the top: the name of the current preset with its folder label, which opens
// the preset menu, the previous and next buttons and the save button. They hold no parameter:
// each press calls what the plug-in gave them.

#include <functional>
#include <string>

#include "editor/IControl.h"

// The preset name field: the name large, the folder label ("U:Mine", "F:Basics") small before it.
class IPresetMenuControl : public IControl
{
  public:
    IPresetMenuControl(IPlugBase* plug, const IRECT& rect, const IColor* accent, std::function<void()> open);
    void SetTexts(const std::string& name, const std::string& folderLabel);
    const std::string& Name() const { return mName; }
    const std::string& FolderLabel() const { return mFolder; }
    void OnMouseDown(int x, int y, const IMouseMod& mod) override;
    void Draw(IGraphics* graphics) override;

  private:
    const IColor* mAccent;
    std::function<void()> mOpen;
    std::string mName, mFolder;
    bool mHover = false;
};

// A button of the row, drawn as a glyph: previous, next or save. It acts on the press.
class IPresetButtonControl : public IControl
{
  public:
    enum class EGlyph
    {
        kPrevious,
        kNext,
        kSave
    };
    IPresetButtonControl(IPlugBase* plug, const IRECT& rect, EGlyph glyph, const IColor* accent,
                         std::function<void()> press);
    void OnMouseDown(int x, int y, const IMouseMod& mod) override;
    void OnMouseUp(int x, int y, const IMouseMod& mod) override;
    void Draw(IGraphics* graphics) override;

  private:
    EGlyph mGlyph;
    const IColor* mAccent;
    std::function<void()> mPress;
    bool mDown = false;
};
