#pragma once
// The editing state of one line of text: the text, the caret and the selection, and what the
// editing keys do to them. Shared by the value entry box and the save prompt's name field.

#include <string>

class TextEditLine
{
  public:
    enum class EResult
    {
        kEdited,  // the text, caret or selection moved
        kAccept,  // Enter
        kCancel,  // Escape
        kIgnored, // a key that edits nothing here
    };

    // Starts with everything selected: typing replaces the old text.
    explicit TextEditLine(std::string text = {});

    EResult OnKey(int key);
    // Places the caret at character index i; with extend the selection runs from the anchor.
    void PlaceCaret(int i, bool extend);

    const std::string& Text() const { return mText; }
    int Caret() const { return mCaret; }
    int SelStart() const { return mCaret < mAnchor ? mCaret : mAnchor; }
    int SelEnd() const { return mCaret < mAnchor ? mAnchor : mCaret; }

  private:
    void DeleteSelection();

    std::string mText;
    int mCaret;
    int mAnchor = 0;
};
