#include <gtest/gtest.h>

#include <string>

#include "engine/Quorvex.h"
#include "params/ParamCatalogue.h"

// Every parameter id reaches exactly one family: none is dropped on the floor, none is handled by
// two families whose order would decide the outcome.
TEST(ParamOwners, EveryIdHasExactlyOneFamily)
{
    const Quorvex::Dispatch& owners = Quorvex::ParamOwners();
    std::string orphans, shared;
    for (int id = 0; id < kNumParams; ++id)
    {
        if (owners.OwnerCount(id) == 0) orphans += ParamName(id) + "; ";
        if (owners.OwnerCount(id) > 1) shared += ParamName(id) + "; ";
    }
    EXPECT_EQ(orphans + shared, "");
    EXPECT_EQ(owners.Find(kNumParams), nullptr);
    EXPECT_EQ(owners.Find(-1), nullptr);
}

// A row's member is the id's place in its family, as its handler reads it.
TEST(ParamOwners, MembersCountFromEachFamilysFirstId)
{
    const Quorvex::Dispatch& owners = Quorvex::ParamOwners();
    const auto member = [&owners](int id) { return id - owners.Find(id)->first; };
    EXPECT_EQ(member(kFeedback3), 2);
    EXPECT_EQ(member(kSlot3FB2), 9); // source slot 3, destination slot 2
    EXPECT_EQ(member(kTapDelay2Step5Level), 1 * 16 + 4);
    EXPECT_EQ(member(kFXParam3PO2), 9); // POST of slot 2: position 8 + 1
    EXPECT_EQ(member(kGate3Step16), 2 * 16 + 15);
    EXPECT_EQ(std::string(owners.Find(kFXParam2ModSourceFB4)->family), "FXParam2");
}
