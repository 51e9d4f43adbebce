#pragma once
// The window's background and the pages' stage art, drawn from the layout tables.
#include <cairo.h>

struct PageLayout;

namespace art
{
// The whole window at 100 %: cairo user space is 1240 x 620.
void DrawBackground(cairo_t* cr);
// One page's stage art at 100 %: user space is the stage's size.
void DrawPageArt(cairo_t* cr, const PageLayout& page);
} // namespace art
