#pragma once
// The editor's background bitmap (1240 x 620 at 100 %), drawn from the main layout table.

#include <cairo.h>

namespace art
{
void DrawBackground(cairo_t* cr);
}
