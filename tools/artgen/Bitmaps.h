#pragma once
// One frame of a bitmap of the editor's table, drawn in 100 % pixels at the context's origin.

#include <cairo.h>

#include "editor/BitmapList.h"

namespace art
{
void DrawBitmapFrame(cairo_t* cr, const BitmapRow& row, int frame);
}
