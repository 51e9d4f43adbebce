#pragma once
// Whether the hottest loops run their four-lane form, compiled for AVX2 without FMA, beside the
// two-lane SSE2 form every x86-64 has. Both forms do the same operations in the same order per
// lane, so they give the same bits; the wide one does them with half the instructions. On where
// the processor has AVX2. Tests switch it off to hold the two forms side by side.

bool WideLanes();
// Asks for the wide forms on or off; on only where the processor has them. Answers the setting.
bool SetWideLanes(bool on);
