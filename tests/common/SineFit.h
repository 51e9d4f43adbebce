#pragma once
// Amplitude and phase of a steady sine in a signal: least-squares fit of a sin(wn) + b cos(wn)
// over a window, exact for a pure tone whatever the number of cycles the window holds.

#include <cmath>
#include <cstddef>
#include <vector>

namespace testfit
{
struct SineFit
{
    double amplitude;
    double phase; // radians, relative to sin(w n), in -pi..pi
};

// w in radians per sample; n counts from the start of y, so phases compare across windows.
template <typename T> SineFit FitSine(const std::vector<T>& y, double w, std::size_t from, std::size_t count)
{
    double ss = 0, cc = 0, sc = 0, ys = 0, yc = 0;
    for (std::size_t n = from; n < from + count; ++n)
    {
        const double s = std::sin(w * double(n)), c = std::cos(w * double(n));
        ss += s * s;
        cc += c * c;
        sc += s * c;
        ys += double(y[n]) * s;
        yc += double(y[n]) * c;
    }
    const double det = ss * cc - sc * sc;
    const double a = (ys * cc - yc * sc) / det, b = (yc * ss - ys * sc) / det;
    return {std::hypot(a, b), std::atan2(b, a)};
}
} // namespace testfit
