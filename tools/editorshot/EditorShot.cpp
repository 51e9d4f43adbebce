// quorvex-editor-shot: draws the editor offscreen, exactly as the window shows it, into a PNG.
// It builds the editor on the real parameter catalogue at its defaults, so the picture shows a
// fresh instance. Usage: quorvex-editor-shot <art folder> <scale> <colour set> <out.png> [dialog]
// where dialog is "message" (an alert), "save:<folder>" (the save prompt over that folder) or
// "page:<n>" (page n shown instead of the default page).
#include <cstdio>
#include <cstdlib>
#include <string>

#include "editor/QuorvexEditor.h"
#include "host/IPlugBase.h"
#include "params/ParamCatalogue.h"
#include "params/ParamIds.h"

namespace
{
constexpr const char* kWaves[] = {"SINE"};

class ShotPlug : public IPlugBase
{
  public:
    ShotPlug() : IPlugBase(IPlugConfig{.nParams = kNumParams, .channelIOStr = "2-2"})
    {
        InitParams(params, kWaves);
    }
};
} // namespace

int main(int argc, char** argv)
{
    if (argc != 5 && argc != 6)
    {
        std::fprintf(stderr, "usage: quorvex-editor-shot <art folder> <scale> <colour set> <out.png> "
                             "[message|save:<folder>|page:<n>]\n");
        return 2;
    }
    const double scale = std::strtod(argv[2], nullptr);
    if (!(scale >= 0.5 && scale <= 4.0))
    {
        std::fprintf(stderr, "quorvex-editor-shot: scale %s out of 0.5..4\n", argv[2]);
        return 2;
    }
    ShotPlug plug;
    QuorvexEditor editor(&plug, argv[1]);
    plug.AttachGraphics(&editor);
    editor.SetScale(scale);
    editor.SetColorSet(std::atoi(argv[3]));
    const std::string dialog = argc == 6 ? argv[5] : "";
    if (dialog == "message")
        editor.ShowMessageBox("Can't write into Fatory Preset Folder!\nPlease save to User Preset Folder!",
                              "QUORVEX");
    else if (dialog.rfind("save:", 0) == 0)
        editor.PromptForFile("New Preset", dialog.substr(5), "txt", {}, "SAVE PRESET");
    else if (dialog.rfind("page:", 0) == 0)
        editor.ShowPage(std::atoi(dialog.c_str() + 5), false);
    editor.OnTimerTick();
    const bool ok = editor.Raster().SavePNG(argv[4]);
    plug.AttachGraphics(nullptr);
    if (!ok) std::fprintf(stderr, "quorvex-editor-shot: cannot write %s\n", argv[4]);
    return ok ? 0 : 1;
}
