// The cairo raster: bitmap strips and their 2x twins, and the blend that grays a control.
#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <tuple>

#include "editor/IGraphics.h"
#include "editor/IRaster.h"

namespace
{
namespace fs = std::filesystem;

// The pixel as 0xRRGGBB.
std::uint32_t At(IRaster& raster, int dx, int dy)
{
    return raster.Pixels()[dy * (raster.Stride() / 4) + dx] & 0xFFFFFF;
}

// A folder of small PNGs made with the raster itself.
struct ImageDir
{
    fs::path dir = fs::temp_directory_path() / ("quorvex-raster-" + std::to_string(::getpid()));
    ImageDir() { fs::create_directories(dir); }
    ~ImageDir() { fs::remove_all(dir); }

    // A strip of frames of w x h, frame k filled with colors[k], at `scale`.
    void Write(const std::string& file, int w, int h, std::initializer_list<IColor> colors,
               double scale = 1.0)
    {
        auto raster = MakeCairoRaster();
        raster->Resize(w, h * static_cast<int>(colors.size()), scale);
        int k = 0;
        for (const IColor& c : colors)
            raster->FillRect(c, IRECT::FromSize(0, h * k++, w, h));
        ASSERT_TRUE(raster->SavePNG((dir / file).string()));
    }
};

} // namespace

TEST(RasterTest, BitmapFramesTwinsAndBlendModes)
{
    ImageDir images;
    images.Write("strip.png", 4, 4, {IColor(255, 200, 0, 0), IColor(255, 0, 200, 0), IColor(255, 0, 0, 200)});
    images.Write("twin.png", 4, 4, {IColor(255, 200, 0, 0)});
    images.Write("twin@2x.png", 4, 4, {IColor(255, 0, 200, 0)}, 2.0);
    images.Write("grey.png", 4, 4, {IColor(255, 100, 100, 100)});

    IGraphics graphics(nullptr, 40, 40, 25);
    graphics.SetResourceDir(images.dir.string());
    const IBitmap strip = graphics.LoadIBitmap(1, "strip", 3);
    ASSERT_NE(strip.mRaster, nullptr);
    EXPECT_EQ(strip.W, 4);
    IRaster& raster = graphics.Raster();
    for (const auto& [frame, rgb] : {std::pair{1, 0xC80000u}, {2, 0x00C800u}, {3, 0x0000C8u}})
    {
        graphics.DrawBitmap(strip, IRECT(0, 0, 4, 4), frame);
        EXPECT_EQ(At(raster, 1, 1), rgb) << frame;
    }

    // The 2x twin serves a fine raster, the 1x image a plain one.
    const IBitmap twin = graphics.LoadIBitmap(2, "twin", 1);
    graphics.DrawBitmap(twin, IRECT(10, 0, 14, 4));
    EXPECT_EQ(At(raster, 11, 1), 0xC80000u);
    graphics.SetScale(2.0);
    graphics.DrawBitmap(twin, IRECT(10, 0, 14, 4));
    EXPECT_EQ(At(graphics.Raster(), 22, 2), 0x00C800u);
    graphics.SetScale(1.0);

    // {blend, weight, each channel over a 60-grey ground}
    const IBitmap grey = graphics.LoadIBitmap(3, "grey", 1);
    const std::tuple<IChannelBlend::EBlendMode, float, int> cases[] = {
        {IChannelBlend::kBlendNone, 1.0f, 100},
        {IChannelBlend::kBlendScale, 0.5f, 80},
        {IChannelBlend::kBlendScale, 0.0f, 60}};
    for (const auto& [mode, weight, expected] : cases)
    {
        graphics.FillIRect(IColor(255, 60, 60, 60), IRECT(20, 20, 30, 30));
        const IChannelBlend blend(mode, weight);
        graphics.DrawBitmap(grey, IRECT(20, 20, 24, 24), 1, &blend);
        EXPECT_NEAR(static_cast<int>(At(raster, 21, 21) >> 16), expected, 1) << mode << " " << weight;
    }
}
