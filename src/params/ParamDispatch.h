#pragma once
// One owner per parameter id. A family is a row {name, first id, count, handler}; the table of all
// rows is checked once when it is built, so that every id of the catalogue has exactly one row and
// a change reaches exactly one handler. A row without a handler owns ids that the engine reads where
// it uses them (or that only the editor reads): their change needs no work.
// Threads: built once; Find is read-only and safe from any thread.

#include <array>
#include <span>
#include <vector>

#include "params/ParamIds.h"

// One parameter change as a family handler sees it: `member` is the id's place in its row.
struct ParamChange
{
    int id;
    int member;
    double value;
};

template <typename Target> class ParamDispatch
{
  public:
    struct Row
    {
        const char* family;
        int first;
        int count;
        void (*apply)(Target&, const ParamChange&);
    };

    explicit ParamDispatch(std::span<const std::span<const Row>> tables)
    {
        mOwner.fill(kNoOwner);
        for (std::span<const Row> table : tables)
            for (const Row& row : table)
                Add(row);
    }

    // The row owning `id`, or null when none (or several) do; then OwnerCount says which.
    const Row* Find(int id) const
    {
        if (id < 0 || id >= kNumParams || mOwner[id] < 0) return nullptr;
        return &mRows[static_cast<std::size_t>(mOwner[id])];
    }
    int OwnerCount(int id) const { return id >= 0 && id < kNumParams ? mOwners[id] : 0; }

    // Hands a change to its family; false for an id that no single row owns.
    bool Apply(Target& target, int id, double value) const
    {
        const Row* row = Find(id);
        if (row == nullptr) return false;
        if (row->apply != nullptr) row->apply(target, {id, id - row->first, value});
        return true;
    }

  private:
    static constexpr int kNoOwner = -1;
    static constexpr int kSeveral = -2;

    void Add(const Row& row)
    {
        const int index = static_cast<int>(mRows.size());
        mRows.push_back(row);
        for (int id = row.first; id < row.first + row.count; ++id)
        {
            if (id < 0 || id >= kNumParams) continue;
            ++mOwners[id];
            mOwner[id] = mOwners[id] == 1 ? index : kSeveral;
        }
    }

    std::vector<Row> mRows;
    std::array<int, kNumParams> mOwner{};
    std::array<int, kNumParams> mOwners{};
};
