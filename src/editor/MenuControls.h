#pragma once
// Controls that open popup menus: a text field over a list of strings bound to a parameter, a
// bitmap button with its parameter's display texts, a field with a menu of its own, and an
// invisible area that opens a given menu. A pick made in a popup that sets a parameter is one
// host gesture of its own (the press that opened the popup was another).
// UI thread only.

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "editor/IBlendControl.h"
#include "editor/IControl.h"
#include "editor/IPopupMenu.h"

// Hears the (sub-)menu an item was picked in and the item's index.
using MenuChoice = std::function<void(IPopupMenu* menu, int index)>;

// A text field showing the entry of a list of strings that the value selects (entry i for the
// value i / (n - 1)); a click pops the list up, the current entry checked, and the pick becomes
// the value. The list matches the parameter's values one for one.
class ITextPopupMenu : public IInvisibleSwitchControl, public IBlendControl
{
  public:
    ITextPopupMenu(IPlugBase* plug, const IRECT& rect, int paramIdx, std::vector<std::string> items,
                   const IText& style, const IColor* color);
    void SetItems(std::vector<std::string> items);
    const std::vector<std::string>& Items() const { return mItems; }
    // Index of the entry the value selects, -1 for an empty list.
    int Index() const;
    // The entry shown.
    std::string Text() const;
    // What a pick does: the value of entry index, told to the plug-in as one gesture.
    void Choose(int index);

    void OnMouseDown(int x, int y, const IMouseMod& mod) override;
    void Draw(IGraphics* graphics) override;

  private:
    std::vector<std::string> mItems;
    IText mStyle;
};

// A bitmap button that pops up its parameter's display texts (blank entries are no choice and
// are left out). With a text style it also writes the current text over the button; without a
// bitmap it draws a button of its own.
class IParamPopupMenu : public ISwitchPopUpControl
{
  public:
    IParamPopupMenu(IPlugBase* plug, const IRECT& rect, int paramIdx, const IBitmap& bitmap,
                    const IText* style = nullptr);
    // The display text of the current value, empty when the parameter has none.
    std::string ValueText() const;
    void Draw(IGraphics* graphics) override;

  private:
    bool mShowText;
    IText mStyle;
};

// A field with its own menu: a click opens it, a pick goes to the callback (and, when wanted,
// becomes the menu's only checked item).
class ISimpleMenu : public IControl
{
  public:
    ISimpleMenu(IPlugBase* plug, const IRECT& rect, std::shared_ptr<IPopupMenu> menu, MenuChoice onChoose,
                const IText& style, std::string text = {});
    IPopupMenu* Menu() const { return mMenu.get(); }
    void SetText(const std::string& text);
    const std::string& GetText() const { return mText; }
    void SetCheckChoice(bool check) { mCheckChoice = check; }

    void OnMouseDown(int x, int y, const IMouseMod& mod) override;
    void OnMouseDblClick(int x, int y, const IMouseMod& mod) override {}
    void Draw(IGraphics* graphics) override;

  private:
    std::shared_ptr<IPopupMenu> mMenu;
    MenuChoice mOnChoose;
    IText mStyle;
    std::string mText;
    bool mCheckChoice = false;
};

// An area that opens a given menu, with nothing drawn: the background shows the button.
class IEmptyPopupMenu : public IInvisibleSwitchControl
{
  public:
    IEmptyPopupMenu(IPlugBase* plug, const IRECT& rect, std::shared_ptr<IPopupMenu> menu,
                    MenuChoice onChoose);
    void SetMenu(std::shared_ptr<IPopupMenu> menu) { mMenu = std::move(menu); }
    IPopupMenu* Menu() const { return mMenu.get(); }
    void OnMouseDown(int x, int y, const IMouseMod& mod) override;
    void OnMouseDblClick(int x, int y, const IMouseMod& mod) override {}

  private:
    std::shared_ptr<IPopupMenu> mMenu;
    MenuChoice mOnChoose;
};
