#pragma once
// The pages' layout tables in one list. Each page is a table of rows of the same kind as the main
// layout; the art generator draws a page's panels, labels and scales into its stage art
// ("<art name>.png", the size of the stage) and the editor builds the page's controls from the
// same rows, so the two always agree. A table built more than once (the three effect pages, the
// four large delay views) gives one control list per instance, its parameters moved by the
// instance times the row's stride (or the page's step where the row has none).

#include <array>
#include <span>

#include "editor/EditorPages.h"
#include "editor/LayoutDelay.h"
#include "editor/LayoutEffects.h"
#include "editor/LayoutEnvelope.h"
#include "editor/LayoutGates.h"
#include "editor/LayoutLfo.h"
#include "editor/LayoutLogic.h"
#include "editor/LayoutOptions.h"
#include "editor/LayoutRouting.h"
#include "editor/MainLayout.h"

struct PageLayout
{
    const char* mArtName;
    std::span<const LayoutRow> mRows;
    EPageList mFirstList;
    int mInstances = 1;
    int mInstanceStep = 0;
};

// A row's parameter in instance i of its page.
constexpr int ParamOfRow(const LayoutRow& row, const PageLayout& page, int instance)
{
    if (row.mKind == ELayoutKind::kPageButton || row.mParam < 0) return row.mParam;
    return row.mParam + instance * (row.mStride != 0 ? row.mStride : page.mInstanceStep);
}

// Every page that has a layout; a page without one shows an empty stage. Each page's table lives in
// a header of its own, included here.
inline constexpr std::array kPageLayouts{
    PageLayout{"page_effects", kEffectsLayout, kListPreFx, 3, kFXOnFB1 - kFXOnPR1},
    PageLayout{"page_routing", kRoutingLayout, kListRouting},
    PageLayout{"page_lfo", kLfoLayout, kListLfo},
    PageLayout{"page_gates", kGatesLayout, kListGates},
    PageLayout{"page_envelope", kEnvelopeLayout, kListEnvelope},
    PageLayout{"page_logic", kLogicLayout, kListLogic},
    PageLayout{"page_options", kOptionsLayout, kListOptions},
    PageLayout{"page_delay", kDelayLayout, kListDelay},
    PageLayout{"page_large", kLargeDelayLayout, kListLarge1, 4, 1},
};
