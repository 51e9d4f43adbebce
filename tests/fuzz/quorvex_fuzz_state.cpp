// Fuzzes the host state-chunk reader: any bytes, of any version word, are read as a host's stored
// session. Beyond not crashing, every parameter must end finite and inside its range, no flag of
// the reading may stay set, and a chunk written afterwards must read back to itself.

#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstdlib>

#include "state/ByteChunk.h"
#include "state/FakeStateHost.h"
#include "state/StateChunk.h"

namespace
{
void Check(bool condition)
{
    if (!condition) std::abort();
}
} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size)
{
    static FakeStateHost host;
    static FakeStateHost copy;
    host.mFields = StateFields{};
    host.mChanges.clear();
    host.mMessages.clear();
    host.mAppliedTapMasks.clear();

    ByteChunk chunk;
    chunk.PutBytes(bytes, static_cast<int>(size));
    ReadStateChunk(host, chunk, 0);
    Check(!host.mFields.mLoadingState && !host.mFields.mRestoringState && host.mFields.mMigrationMarker == 0);
    for (int id = 0; id < host.ParamCount(); ++id)
    {
        const IParamRecord& p = *host.Param(id);
        const double v = p.value;
        Check(std::isfinite(v) && v >= p.min && v <= p.max);
    }

    ByteChunk written;
    WriteStateChunk(host, written);
    copy.mFields = StateFields{};
    Check(ReadStateChunk(copy, written, 0) == written.Size());
    ByteChunk rewritten;
    WriteStateChunk(copy, rewritten);
    Check(rewritten == written);
    return 0;
}
