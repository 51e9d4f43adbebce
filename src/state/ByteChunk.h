#pragma once
// Growing byte buffer of the host state chunk and the preset records. Values are appended in the
// machine's byte order (little-endian on every target), without padding. It keeps no read position:
// every reader takes a position and returns the next one, or -1 when the position is negative or
// the value would pass the end; a failed read leaves its target as it was, so a short chunk simply
// runs out. Not thread-safe; the plug-in guards its chunks with its parameter mutex.

#include <cstdint>
#include <cstring>
#include <string>
#include <type_traits>
#include <vector>

class ByteChunk
{
  public:
    int Size() const { return static_cast<int>(mBytes.size()); }
    // Grows with zero bytes or cuts; returns the new size.
    int Resize(int newSize);
    void Clear() { mBytes.clear(); }
    const std::uint8_t* Data() const { return mBytes.data(); }
    std::uint8_t* Data() { return mBytes.data(); }

    // Appends the bytes; returns the new size.
    int PutBytes(const void* data, int size);
    // Copies size bytes from pos; returns pos + size, or -1 (target untouched).
    int GetBytes(void* data, int size, int pos) const;

    template <typename T> int Put(const T& value)
    {
        static_assert(std::is_trivially_copyable_v<T>);
        return PutBytes(&value, static_cast<int>(sizeof(T)));
    }
    template <typename T> int Get(T& value, int pos) const
    {
        static_assert(std::is_trivially_copyable_v<T>);
        return GetBytes(&value, static_cast<int>(sizeof(T)), pos);
    }

    bool operator==(const ByteChunk& other) const = default;

  private:
    std::vector<std::uint8_t> mBytes;
};

// String field: a 32-bit signed length, then that many bytes, no terminator; 0 is the empty text.
int PutStr(ByteChunk& chunk, const std::string& text);
// Reads a string field at pos. A length below 1, or one that passes the end, leaves the target
// alone, and the position still moves on by the stored length. Returns the next position or -1.
int GetStr(const ByteChunk& chunk, std::string& target, int pos);
