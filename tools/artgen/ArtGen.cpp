// quorvex-artgen: draws every bitmap of the editor's table and the background, at 1x and 2x,
// into a folder (the bundle's Contents/Resources/img at build time). No image is read: all of it
// is drawn here from code, so the art always matches the tables the editor reads.
//
// Usage: quorvex-artgen <output folder>
#include <cairo.h>
#include <fontconfig/fontconfig.h>

#include <cstdio>
#include <filesystem>
#include <string>

#include "Background.h"
#include "Bitmaps.h"
#include "editor/BitmapList.h"
#include "editor/MainLayout.h"
#include "editor/PageLayouts.h"

namespace
{
// Renders w x h at 100 % (scaled) by `draw` into a PNG; false on failure.
template <typename Draw> bool Render(const std::string& path, int w, int h, int scale, Draw&& draw)
{
    cairo_surface_t* surface = cairo_image_surface_create(CAIRO_FORMAT_ARGB32, w * scale, h * scale);
    cairo_t* cr = cairo_create(surface);
    cairo_scale(cr, scale, scale);
    draw(cr);
    cairo_destroy(cr);
    const bool ok = cairo_surface_write_to_png(surface, path.c_str()) == CAIRO_STATUS_SUCCESS;
    cairo_surface_destroy(surface);
    return ok;
}

std::string FileName(const std::string& dir, const char* name, int scale)
{
    return dir + "/" + name + (scale == 2 ? "@2x.png" : ".png");
}
} // namespace

int main(int argc, char** argv)
{
    if (argc != 2)
    {
        std::fprintf(stderr, "usage: quorvex-artgen <output folder>\n");
        return 2;
    }
    const std::string dir = argv[1];
    std::error_code ec;
    std::filesystem::create_directories(dir, ec);
    int failures = 0;
    for (int scale : {1, 2})
    {
        failures += !Render(FileName(dir, kBackgroundName, scale), kEditorWidth, kEditorHeight, scale,
                            [](cairo_t* cr) { art::DrawBackground(cr); });
        for (const PageLayout& page : kPageLayouts)
            failures += !Render(FileName(dir, page.mArtName, scale), kStageRect.W(), kStageRect.H(), scale,
                                [&](cairo_t* cr) { art::DrawPageArt(cr, page); });
        for (const BitmapRow& row : kBitmapRows)
            failures += !Render(FileName(dir, row.mName, scale), row.mW, row.mH * row.mFrames, scale,
                                [&](cairo_t* cr)
                                {
                                    for (int frame = 0; frame < row.mFrames; ++frame)
                                    {
                                        cairo_save(cr);
                                        cairo_translate(cr, 0, frame * row.mH);
                                        cairo_rectangle(cr, 0, 0, row.mW, row.mH);
                                        cairo_clip(cr);
                                        art::DrawBitmapFrame(cr, row, frame);
                                        cairo_restore(cr);
                                    }
                                });
    }
    // Font caches back to the system, so a leak checker sees only our own memory.
    cairo_debug_reset_static_data();
    FcFini();
    if (failures)
    {
        std::fprintf(stderr, "quorvex-artgen: %d files could not be written to %s\n", failures, dir.c_str());
        return 1;
    }
    return 0;
}
