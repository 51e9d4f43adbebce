#include "editor/ColorSets.h"

static_assert(kNumColorSets == 11);

int ColorRoles::Apply(int index)
{
    mCurrent = ValidColorSet(index);
    const ColorSetRow& row = kColorSets[mCurrent];
    for (int role = 0; role < kNumColorRoles; ++role)
        mSlots[role] = IColor::FromRGB(row.mRGB[role]);
    mRole1Follower = mSlots[1];
    mDarkText = kDarkText;
    mBrightText = kBrightText;
    return mCurrent;
}
