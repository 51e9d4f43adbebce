// Preset files and the preset browser of the plug-in: loading in two stages with the output held
// silent, writing, saving, and the menu with its previous / next stepping. UI thread throughout;
// the audio thread sees a load only as silence followed by the engine's fade-in.

#include <chrono>
#include <thread>

#include "editor/QuorvexEditor.h"
#include "engine/Quorvex.h"

namespace
{
constexpr std::string_view kNoFileText = "NO FILE";
constexpr std::string_view kWrongFileText = "WRONG FILE";
constexpr auto kAudioPoll = std::chrono::microseconds(200);
} // namespace

void Quorvex::HoldAudioForPreset()
{
    // The process call and the block loop test the flag after marking themselves inside, so once
    // both are seen outside neither runs until the flag clears.
    HoldAudio(mPresetLoading);
    while (mBlockLoop.IsHeld())
        std::this_thread::sleep_for(kAudioPoll);
}

void Quorvex::ApplyTapMask(int index, std::int32_t mask)
{
    if (index < 0 || index >= 2 * kNumSlots) return;
    mSlots[index / 2].Taps().SetTapMask(index % 2, static_cast<std::uint32_t>(mask));
}

bool Quorvex::ReadPresetFile(const std::string& relativePath)
{
    mPresetFile = mPresetFolders.FullPath(relativePath);
    const PresetReadResult result = ReadPresetText(mPresetFile, mPendingPreset);
    if (result != PresetReadResult::kOk)
    {
        mFields.mPresetName = result == PresetReadResult::kNoFile ? kNoFileText : kWrongFileText;
        mPresetLoading.store(false);
        return false;
    }
    HoldAudioForPreset();
    ApplyPresetMasks(*this, mPendingPreset);
    SetPresetFolderLabel(relativePath);
    SetPresetNames(relativePath);
    return true;
}

void Quorvex::ApplyPendingPreset()
{
    HoldAudioForPreset();
    mFadeIn.Request();
    ApplyPresetParams(*this, mPendingPreset);
    RedrawParamControls();
    if (mPendingPreset.lastPage)
    {
        mFields.mLastPage = *mPendingPreset.lastPage;
        if (mEditor) mEditor->ShowPage(mFields.mLastPage, true);
    }
    RebuildStepViews();
    mFields.mFocusedParam = -1;
    // An old file is brought to the present format on disk. A file whose version couldn't even be
    // read is damaged rather than old, and is left as it is.
    if (mPendingPreset.version < kPresetVersion && !mPendingPreset.versionMissing)
        WritePresetFile(mPresetFile, true);
    SyncTapFxMasks();
    mEffects.ServicePending();
    ClearEngine();
    FlushTimedLabels();
    mPresetLoading.store(false);
}

bool Quorvex::LoadPreset(const std::string& relativePath)
{
    if (!ReadPresetFile(relativePath))
    {
        // The list no longer matches the disk: every instance rebuilds at its next use.
        RaisePresetListGeneration();
        return false;
    }
    ApplyPendingPreset();
    return true;
}

bool Quorvex::WritePresetFile(const std::string& fullPath, bool force)
{
    if (!force && mPresetLoading.load()) return false;
    return WritePresetText(fullPath, *this);
}

void Quorvex::SavePresetDialog()
{
    if (!mEditor) return;
    mEditor->PromptForFile(
        "New Preset", mPresetFolders.user, std::string(kPresetExtension),
        [this](const std::string& path)
        {
            // Cancelled, or no name: nothing is saved.
            if (!path.empty()) SavePresetAs(path);
        },
        "SAVE PRESET");
}

PresetSaveResult Quorvex::SavePresetAs(const std::string& chosenPath)
{
    PresetSaveTarget target;
    const PresetSaveResult result = SavePresetFile(
        mPresetFolders, chosenPath, [this](const std::string& path) { return WritePresetFile(path, false); },
        target);
    switch (result)
    {
    case PresetSaveResult::kNoName:
        mMessage.ShowText(kNoPresetNameText);
        break;
    case PresetSaveResult::kFactoryTree:
        ShowMessage(kMsgFactoryFolderReadOnly);
        break;
    case PresetSaveResult::kWriteFailed:
        ShowMessage(kMsgCannotWritePreset);
        break;
    case PresetSaveResult::kOutsideUserTree:
        ShowMessage(kMsgNotInUserFolder);
        break;
    case PresetSaveResult::kSaved:
        mPresetFile = target.fullPath;
        mFields.mPresetName = target.name;
        SetPresetFolderLabel(target.relativePath);
        // Raised before this instance rebuilds, so it notes the new count and won't rebuild again.
        RaisePresetListGeneration();
        RebuildPresetMenu();
        SelectPresetItem(target.relativePath);
        break;
    }
    return result;
}

void Quorvex::SetPresetNames(const std::string& relativePath)
{
    mFields.mPresetName = PresetNameOf(relativePath);
}

void Quorvex::SetPresetFolderLabel(const std::string& relativePath)
{
    mFields.mPresetFolderLabel = PresetFolderLabelOf(relativePath);
}

void Quorvex::RebuildPresetMenu()
{
    mPresetMenu.Rebuild(mPresetFolders.base);
    // A session may have named a selection before the menu existed.
    if (mPresetMenu.SelectedPath().empty() && !mFields.mPresetMenuFolder.empty())
    {
        if (const int menu = mPresetMenu.MenuOfFolder(mFields.mPresetMenuFolder); menu >= 0)
            mPresetMenu.SelectItem(menu, mFields.mPresetMenuIndex);
    }
    NoteMenuSelection();
}

void Quorvex::EnsurePresetMenu()
{
    if (!mPresetMenu.Built() || mPresetMenu.Stale()) RebuildPresetMenu();
}

const IPresetMenu& Quorvex::PresetMenu()
{
    EnsurePresetMenu();
    return mPresetMenu;
}

void Quorvex::NoteMenuSelection()
{
    if (mPresetMenu.SelectedPath().empty()) return;
    mFields.mPresetMenuFolder = mPresetMenu.SelectedMenuFolder();
    mFields.mPresetMenuIndex = mPresetMenu.SelectedIndex();
}

bool Quorvex::SelectPresetItem(const std::string& relativePath)
{
    EnsurePresetMenu();
    if (!mPresetMenu.SelectPath(relativePath)) return false;
    NoteMenuSelection();
    return true;
}

// The state chunk's selection: kept in the fields, and shown in the menu when it has that folder.
void Quorvex::SelectPresetMenuItem(const std::string& folder, int index)
{
    if (folder.empty()) return;
    // Only a selection that this machine's menu can show is taken over; a session from elsewhere
    // naming a folder that is not here leaves the selection (and what the next save stores) alone.
    EnsurePresetMenu();
    const int menu = mPresetMenu.MenuOfFolder(folder);
    if (menu < 0 || !mPresetMenu.SelectItem(menu, index)) return;
    NoteMenuSelection();
}

bool Quorvex::PickPresetMenuItem(int menu, int item)
{
    EnsurePresetMenu();
    if (!mPresetMenu.SelectItem(menu, item)) return false;
    NoteMenuSelection();
    return LoadPreset(mPresetMenu.SelectedPath() + std::string(kPresetDotExtension));
}

namespace
{
// The menu model as the editor's popup menus: sub-menus nested, the section headers not
// selectable, the selection checked. `models` maps each popup menu back to its model's index.
std::shared_ptr<IPopupMenu> ToPopupMenu(const std::vector<PresetMenuData>& menus, int index,
                                        std::vector<std::pair<const IPopupMenu*, int>>& models, int depth = 0)
{
    auto menu = std::make_shared<IPopupMenu>();
    models.push_back({menu.get(), index});
    for (const PresetMenuItem& item : menus[static_cast<size_t>(index)].items)
    {
        if (item.subMenu >= 0 && item.subMenu < static_cast<int>(menus.size()) && depth < 16)
            menu->AddItem(item.text, ToPopupMenu(menus, item.subMenu, models, depth + 1));
        else
            menu->AddItem(item.text, item.header
                                         ? IPopupMenu::kDisabled
                                         : (item.checked ? IPopupMenu::kChecked : IPopupMenu::kNoFlags));
    }
    return menu;
}
} // namespace

void Quorvex::OpenPresetMenu()
{
    if (!mEditor) return;
    EnsurePresetMenu();
    auto models = std::make_shared<std::vector<std::pair<const IPopupMenu*, int>>>();
    std::shared_ptr<IPopupMenu> root = ToPopupMenu(mPresetMenu.Menus(), 0, *models);
    if (root->NItems() == 0) root->AddItem("(no presets)", IPopupMenu::kDisabled);
    mEditor->CreateIPopupMenu(root, mEditor->PresetMenuAnchor(),
                              [this, models](IPopupMenu* chosen, int item)
                              {
                                  if (!chosen) return;
                                  for (const auto& [menu, index] : *models)
                                      if (menu == chosen)
                                      {
                                          PickPresetMenuItem(index, item);
                                          return;
                                      }
                              });
}

void Quorvex::PresentPresetTexts()
{
    if (mEditor) mEditor->SetPresetTexts(mFields.mPresetName, mFields.mPresetFolderLabel);
}

void Quorvex::StepPreset(bool forward)
{
    if (mPresetLoading.load()) return;
    EnsurePresetMenu();
    const std::string before = mPresetMenu.SelectedPath();
    const auto path = mPresetMenu.Step(forward);
    if (!path) return;
    if (LoadPreset(*path + std::string(kPresetDotExtension)))
    {
        NoteMenuSelection();
        return;
    }
    // A failing step leaves the selection as it was.
    if (before.empty())
        mPresetMenu.ClearSelection();
    else
        mPresetMenu.SelectPath(before);
}
