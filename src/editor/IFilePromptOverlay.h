#pragma once
// The save prompt: a list of a folder and its sub-folders to save into, a name field and the
// CANCEL and SAVE buttons. The folder list is read once, when the prompt opens; hidden folders
// (a name beginning with ".") are left out. SAVE (or Enter) reports the full path of the new
// file, CANCEL (or Escape) an empty path; so does a name that is blank. UI thread only.

#include <functional>
#include <string>
#include <vector>

#include "editor/IOverlay.h"
#include "editor/TextEditLine.h"

class IFilePromptOverlay final : public IOverlay
{
  public:
    using Done = std::function<void(const std::string& path)>;
    static constexpr int kRowH = 20;
    static constexpr int kVisibleRows = 9;
    static constexpr int kIndent = 14;

    struct Folder
    {
        std::string mRelative; // "" for the top folder, else "A/B" below it
        std::string mName;     // what the row shows
        int mDepth = 0;
    };

    IFilePromptOverlay(std::string caption, const std::string& fileName, std::string dir,
                       std::string extension, int windowW, int windowH, IRaster& measure,
                       const ColorRoles& colors, Done done);

    // The sub-folders of dir, sorted by path regardless of case, the top folder first.
    static std::vector<Folder> ScanFolders(const std::string& dir);
    // The path a name saves to in a folder: characters a file name can't hold become "-", and the
    // extension is added unless the name ends in it already. Empty for a blank name.
    static std::string PathFor(const std::string& dir, const std::string& relative, const std::string& name,
                               const std::string& extension);

    IRECT Bounds() const override { return mRect.Union(mRect.Shift(3, 4)); }
    void Draw(IRaster& raster) override;
    void OnMouseDown(int x, int y, const IMouseMod& mod) override;
    void OnMouseMove(int x, int y) override;
    void OnMouseWheel(int x, int y, int d) override;
    bool OnKeyDown(int key) override;

    // Geometry and state, for tests and the host-side test driver.
    const std::vector<Folder>& Folders() const { return mFolders; }
    int SelectedFolder() const { return mSelected; }
    int FirstVisibleFolder() const { return mFirst; }
    // Row of folder i, empty when scrolled out of view.
    IRECT FolderRect(int i) const;
    IRECT NameRect() const { return mNameRect; }
    IRECT SaveRect() const { return mSaveRect; }
    IRECT CancelRect() const { return mCancelRect; }
    const std::string& Name() const { return mName.Text(); }

  private:
    void Select(int i);
    void Finish(bool save);

    std::string mCaption, mDir, mExtension;
    std::vector<Folder> mFolders;
    TextEditLine mName;
    IRaster& mMeasure;
    const ColorRoles& mColors;
    Done mDone;
    IText mStyle;
    IRECT mRect, mListRect, mNameRect, mSaveRect, mCancelRect;
    int mSelected = 0;
    int mFirst = 0;
    int mHoverButton = 0; // 1 save, 2 cancel
};
