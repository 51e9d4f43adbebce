#pragma once
// Denormal discipline. Flush-to-zero and denormals-are-zero are set for the thread that builds the
// plug-in and, scoped, around every processing call, because the audio thread need not be the one
// that built the plug-in. Recursive code does not rely on this alone: it carries kDenormGuard.

inline constexpr double kDenormGuard = 1e-15;

// (y + 1e-15) - 1e-15: pushes a recursive state out of the denormal range without moving it otherwise.
inline double Undenormal(double y)
{
    return (y + kDenormGuard) - kDenormGuard;
}

// Sets flush-to-zero and denormals-are-zero for the calling thread.
void EnableFlushDenormals();

// Sets both modes for its lifetime and restores the caller's modes afterwards.
class ScopedFlushDenormals
{
  public:
    ScopedFlushDenormals();
    ~ScopedFlushDenormals();
    ScopedFlushDenormals(const ScopedFlushDenormals&) = delete;
    ScopedFlushDenormals& operator=(const ScopedFlushDenormals&) = delete;

  private:
    unsigned mSaved = 0;
};
