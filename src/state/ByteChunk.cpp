#include "state/ByteChunk.h"

#include <cstdint>
#include <limits>

int ByteChunk::Resize(int newSize)
{
    mBytes.resize(static_cast<std::size_t>(newSize > 0 ? newSize : 0), 0);
    return Size();
}

int ByteChunk::PutBytes(const void* data, int size)
{
    if (size > 0)
    {
        const auto* bytes = static_cast<const std::uint8_t*>(data);
        mBytes.insert(mBytes.end(), bytes, bytes + size);
    }
    return Size();
}

int ByteChunk::GetBytes(void* data, int size, int pos) const
{
    if (pos < 0 || size < 0 || static_cast<std::int64_t>(pos) + size > Size()) return -1;
    if (size > 0) std::memcpy(data, mBytes.data() + pos, static_cast<std::size_t>(size));
    return pos + size;
}

int PutStr(ByteChunk& chunk, const std::string& text)
{
    const auto length = static_cast<std::int32_t>(text.size());
    chunk.Put(length);
    return chunk.PutBytes(text.data(), length);
}

int GetStr(const ByteChunk& chunk, std::string& target, int pos)
{
    std::int32_t length = 0;
    pos = chunk.Get(length, pos);
    if (pos < 0) return -1;
    const std::int64_t next = static_cast<std::int64_t>(pos) + length;
    if (length >= 1 && next <= chunk.Size())
        target.assign(reinterpret_cast<const char*>(chunk.Data()) + pos, static_cast<std::size_t>(length));
    if (next < 0 || next > std::numeric_limits<int>::max()) return -1;
    return static_cast<int>(next);
}
