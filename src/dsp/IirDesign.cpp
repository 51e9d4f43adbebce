// Low-pass and high-pass designs for the direct filters of Iir.h: the poles of an analogue
// prototype normalised to a corner of 1 rad/s, scaled to the pre-warped corner tan(pi * relFreq)
// and mapped one by one through the bilinear transform s = (1 - w) / (1 + w), w = 1/z. Each pole
// (or conjugate pair) becomes a factor of unit gain at DC (low-pass) or Nyquist (high-pass); the
// factors are multiplied out in long double and rounded once into the taps. The exact poles and
// zeros are left in `work` (when given; sized by IirStateSize) for IirInit (IirSections.h).
//
// Butterworth (kind 0): -3.01 dB at the corner. Chebyshev type I (kind 1): the corner is the
// passband edge, at -ripple dB; the ripple peaks sit at 0 dB, so an even order is -ripple dB at DC
// (low-pass) or Nyquist (high-pass). Any other kind is taken as Butterworth.
//
// relFreq is clamped to kMinRelFreq..kMaxRelFreq, the range of the filter modules: beyond it the
// poles crowd into z = 1 or z = -1, closer than the rounded taps of even a fourth order can tell
// apart. (The roots left in `work` stay exact; taps alone of high orders already lose their poles
// near the ends of this range.) A ripple below kMinRippleDb is raised to it.
// Callable on any thread; no allocation.

#include "dsp/Iir.h"
#include "dsp/IirSections.h"

#include <cmath>

namespace
{
constexpr double kMinRelFreq = 2e-4;
constexpr double kMaxRelFreq = 0.49;
constexpr double kMinRippleDb = 1e-4;

// p *= (c0 + c1 w + c2 w^2), in place from the top; p has degree `deg` and room for the product.
void MultiplyInto(long double* p, int& deg, long double c0, long double c1, long double c2, int factorDeg)
{
    deg += factorDeg;
    for (int i = deg; i >= 0; --i)
    {
        long double v = i <= deg - factorDeg ? c0 * p[i] : 0.0L;
        if (i >= 1 && i - 1 <= deg - factorDeg) v += c1 * p[i - 1];
        if (factorDeg == 2 && i >= 2) v += c2 * p[i - 2];
        p[i] = v;
    }
}

// z = (1 + s) / (1 - s), the bilinear map with the corner already in s.
IirRoot Bilinear(long double sre, long double sim)
{
    const long double dre = 1.0L - sre, dim = -sim;
    const long double inv = 1.0L / (dre * dre + dim * dim);
    const long double nre = 1.0L + sre, nim = sim;
    return IirRoot{(nre * dre + nim * dim) * inv, (nim * dre - nre * dim) * inv, false};
}

void Design(double relFreq, double ripple, int order, double* taps, int kind, bool highpass,
            unsigned char* work)
{
    if (order < 1 || order > kIirMaxOrder || taps == nullptr) return;
    double f = relFreq;
    if (!(f >= kMinRelFreq)) f = kMinRelFreq;
    if (f > kMaxRelFreq) f = kMaxRelFreq;
    // Transcendentals in double (they are as exact as the rounding of the taps), products in long double.
    const long double k = std::tan(3.141592653589793 * f);

    // Prototype poles: -sh sin(theta) + j ch cos(theta), theta = pi (2i + 1) / (2 order).
    long double sh = 1.0L, ch = 1.0L, gain = 1.0L;
    if (kind == 1)
    {
        const double r = ripple > kMinRippleDb ? ripple : kMinRippleDb;
        const double e2 = std::expm1(r * (std::log(10.0) / 10.0)); // epsilon squared
        const double mu = std::asinh(1.0 / std::sqrt(e2)) / order;
        sh = std::sinh(mu);
        ch = std::cosh(mu);
        if (order % 2 == 0) gain = std::exp(r * (-std::log(10.0) / 20.0)); // 1 / sqrt(1 + e2)
    }

    long double b[kIirMaxOrder + 3] = {1.0L};
    long double a[kIirMaxOrder + 3] = {1.0L};
    int degB = 0, degA = 0;
    IirRoot poles[kIirMaxOrder];
    IirRoot zeros[kIirMaxOrder];
    const IirRoot zero{highpass ? 1.0L : -1.0L, 0.0L, false}; // all zeros at DC or at Nyquist
    for (IirRoot& z : zeros)
        z = zero;
    for (int i = 0; i < order / 2; ++i)
    {
        const double theta = 3.141592653589793 * (2 * i + 1) / (2 * order);
        const long double sigma = -sh * std::sin(theta);
        const long double omega = ch * std::cos(theta);
        const long double rho = sigma * sigma + omega * omega;
        // Poles in s: k p for the low-pass, k / p = k conj(p) / rho for the high-pass.
        poles[2 * i] =
            highpass ? Bilinear(k * sigma / rho, -k * omega / rho) : Bilinear(k * sigma, k * omega);
        poles[2 * i + 1] = IirRoot{poles[2 * i].re, -poles[2 * i].im, false};
        if (highpass)
        {
            // Pole pair k / p:
            // rho (1 - w)^2 / ((rho - 2 k sigma + k^2) - 2 (rho - k^2) w + (rho + 2 k sigma + k^2) w^2)
            MultiplyInto(b, degB, rho, -2.0L * rho, rho, 2);
            MultiplyInto(a, degA, rho - 2.0L * k * sigma + k * k, -2.0L * (rho - k * k),
                         rho + 2.0L * k * sigma + k * k, 2);
        }
        else
        {
            // Pole pair k p, with kr = k^2 rho:
            // kr (1 + w)^2 / ((1 - 2 k sigma + kr) - 2 (1 - kr) w + (1 + 2 k sigma + kr) w^2)
            const long double kr = k * k * rho;
            MultiplyInto(b, degB, kr, 2.0L * kr, kr, 2);
            MultiplyInto(a, degA, 1.0L - 2.0L * k * sigma + kr, -2.0L * (1.0L - kr),
                         1.0L + 2.0L * k * sigma + kr, 2);
        }
    }
    if (order % 2 == 1)
    {
        // The real pole (theta = pi / 2): -k sigma (1 + w) / ((1 - k sigma) - (1 + k sigma) w) for the
        // low-pass, sigma (1 - w) / ((sigma - k) - (sigma + k) w) for the high-pass.
        const long double sigma = -sh;
        poles[order - 1] = highpass ? Bilinear(k / sigma, 0.0L) : Bilinear(k * sigma, 0.0L);
        if (highpass)
        {
            MultiplyInto(b, degB, sigma, -sigma, 0.0L, 1);
            MultiplyInto(a, degA, sigma - k, -(sigma + k), 0.0L, 1);
        }
        else
        {
            MultiplyInto(b, degB, -k * sigma, -k * sigma, 0.0L, 1);
            MultiplyInto(a, degA, 1.0L - k * sigma, -(1.0L + k * sigma), 0.0L, 1);
        }
    }

    const long double a0 = a[0];
    for (int i = 0; i <= order; ++i)
    {
        taps[i] = static_cast<double>(gain * b[i] / a0);
        taps[order + 1 + i] = static_cast<double>(a[i] / a0);
    }
    IirStoreDesign(work, taps, order, poles, zeros, gain * b[0] / a0);
}
} // namespace

void IirDesignLowpass(double relFreq, double ripple, int order, double* taps, int kind, unsigned char* work)
{
    Design(relFreq, ripple, order, taps, kind, false, work);
}

void IirDesignHighpass(double relFreq, double ripple, int order, double* taps, int kind, unsigned char* work)
{
    Design(relFreq, ripple, order, taps, kind, true, work);
}
