#include <gtest/gtest.h>

#include <atomic>
#include <memory>
#include <thread>

#include "core/FxModuleList.h"

// The replacement protocol on its own: users on two threads enter and read every module of the
// list while a builder replaces it thousands of times. A user must only ever see one complete
// generation of modules, never a module that was freed (the sanitizer builds check the memory,
// every build checks the generations), and the builder's step with the list runs while users are
// kept out.

namespace
{
class GenModule : public DSPShell
{
  public:
    explicit GenModule(int gen) : mGen(gen) {}
    ~GenModule() override { mGen = -1; }
    void Process() override {}
    std::atomic<int> mGen;
};

FxModuleList::Modules Generation(int gen, int count)
{
    FxModuleList::Modules modules;
    for (int k = 0; k < count; ++k)
        modules[static_cast<std::size_t>(k)] = std::make_unique<GenModule>(gen);
    return modules;
}
} // namespace

TEST(FxModuleList, UsersSeeWholeGenerationsWhileTheBuilderReplaces)
{
    FxModuleList list;
    list.Replace(Generation(0, 2), 2, [] {});
    std::atomic<bool> stop{false};
    std::atomic<int> torn{0}, entered{0}, refused{0};
    const auto user = [&]
    {
        while (!stop.load())
        {
            if (!list.Enter())
            {
                refused.fetch_add(1);
                continue;
            }
            entered.fetch_add(1);
            const int n = list.Count();
            const int first = n > 0 ? static_cast<GenModule*>(list.Module(0))->mGen.load() : -2;
            for (int k = 0; k < n; ++k)
                if (static_cast<GenModule*>(list.Module(k))->mGen.load() != first || first < 0)
                    torn.fetch_add(1);
            list.Leave();
        }
    };
    std::thread a(user), b(user);
    bool keptOut = true;
    for (int gen = 1; gen <= 3001; ++gen)
    {
        const int count = gen % 3 == 0 ? FxModuleList::kCapacity : 2;
        list.Replace(Generation(gen, count), count,
                     [&]
                     {
                         // Nobody gets in while the list changes hands.
                         if (list.Enter())
                         {
                             keptOut = false;
                             list.Leave();
                         }
                     });
        if (gen % 500 == 0) std::this_thread::yield();
    }
    stop = true;
    a.join();
    b.join();
    EXPECT_EQ(torn.load(), 0);
    EXPECT_TRUE(keptOut);
    EXPECT_GT(entered.load(), 0);
    EXPECT_EQ(list.Users(), 0);
    EXPECT_FALSE(list.Swapping());
    ASSERT_EQ(list.Count(), 2);
    EXPECT_EQ(static_cast<GenModule*>(list.Module(0))->mGen.load(), 3001);
    EXPECT_EQ(list.Module(2), nullptr);
}
