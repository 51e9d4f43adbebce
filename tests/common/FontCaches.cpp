// cairo and fontconfig keep font caches until the process ends; handing them back after the
// last test lets the leak checker see only what the editor owns.
#include <cairo.h>
#include <fontconfig/fontconfig.h>
#include <gtest/gtest.h>

namespace
{
class FontCaches : public ::testing::Environment
{
  public:
    void TearDown() override
    {
        cairo_debug_reset_static_data();
        FcFini();
    }
};
const auto* gFontCaches = ::testing::AddGlobalTestEnvironment(new FontCaches);
} // namespace
