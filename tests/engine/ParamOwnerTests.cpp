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
