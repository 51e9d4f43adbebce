// Factoring of direct filters into second-order sections (see IirSections.h).
//
// The roots of the denominator are found by Aberth iteration, in double and finished in long
// double (the poles of a sharp filter crowd together, and the taps hold them more finely than
// double evaluation of the polynomial can tell). Zeros at z = -1 and z = +1, where every low-pass
// and high-pass design puts all of its zeros, are divided out of the numerator exactly, and the
// rest of it is factored likewise. Conjugate pairs and neighbouring real roots make the sections.
//
// Sections are ordered by the quality factor of their poles as seen through the inverse bilinear
// map. That factor does not move when a bilinear design is only retuned, so a block-rate redesign
// hands each section the memory of its predecessor. Each numerator is scaled to unit gain at DC
// or Nyquist (whichever is larger; a band-pass section at its pole's angle), so the states carry
// signal-sized values; the overall gain rides on the first section. Poles on or outside the unit
// circle are pulled just inside it, so that taps rounded onto it cannot make a filter grow.
//
// Works on its arguments and the stack only: callable on the audio thread.

#include "dsp/IirSections.h"

#include <cmath>
#include <initializer_list>

namespace
{
constexpr int kMaxSections = kIirMaxOrder;

// Taps rounded onto the unit circle must not make a filter grow.
constexpr long double kMaxPoleRadius = 1.0L - 1e-9L;

// ---- Complex arithmetic, small enough to stay inline: double for the search, long double for the
// polish and the bookkeeping.

template <typename T> struct Complex
{
    T re, im;
};
using Cx = Complex<long double>;
using CxD = Complex<double>;
template <typename T> inline Complex<T> operator+(Complex<T> a, Complex<T> b)
{
    return {a.re + b.re, a.im + b.im};
}
template <typename T> inline Complex<T> operator-(Complex<T> a, Complex<T> b)
{
    return {a.re - b.re, a.im - b.im};
}
template <typename T> inline Complex<T> operator*(Complex<T> a, Complex<T> b)
{
    return {a.re * b.re - a.im * b.im, a.re * b.im + a.im * b.re};
}
template <typename T> inline Complex<T> operator*(T k, Complex<T> a)
{
    return {k * a.re, k * a.im};
}
template <typename T> inline T Norm(Complex<T> a)
{
    return a.re * a.re + a.im * a.im;
}
template <typename T> inline T Abs(Complex<T> a)
{
    return std::sqrt(Norm(a));
}
// The values met here (roots near the unit circle, filter polynomials) are far from overflow.
template <typename T> inline Complex<T> Div(Complex<T> a, Complex<T> b)
{
    const T inv = T(1) / Norm(b);
    return {(a.re * b.re + a.im * b.im) * inv, (a.im * b.re - a.re * b.im) * inv};
}
template <typename T> inline Complex<T> Recip(Complex<T> b)
{
    const T inv = T(1) / Norm(b);
    return {b.re * inv, -b.im * inv};
}

// p(z) and p'(z) of c[0] z^m + ... + c[m] by Horner's rule.
template <typename T> inline void Horner(const T* c, int m, Complex<T> z, Complex<T>& p, Complex<T>& dp)
{
    p = {c[0], T(0)};
    dp = {T(0), T(0)};
    for (int i = 1; i <= m; ++i)
    {
        dp = dp * z + p;
        p = p * z + Complex<T>{c[i], T(0)};
    }
}

// Aberth sweeps (Gauss-Seidel order) on the roots z of c[0] z^m + ... + c[m]. Stops when the
// largest squared relative step is below `done`, or when the steps stop shrinking: the roots are
// then as good as this precision can tell.
template <typename T> void AberthSweeps(const T* c, int m, Complex<T>* z, T radius, int maxSweeps, T done)
{
    T lastStep = T(1);
    for (int iter = 0; iter < maxSweeps; ++iter)
    {
        T maxStep = T(0);
        for (int k = 0; k < m; ++k)
        {
            Complex<T> p, dp;
            Horner(c, m, z[k], p, dp);
            if (p.re == T(0) && p.im == T(0)) continue;
            Complex<T> sum{T(0), T(0)};
            for (int j = 0; j < m; ++j)
                if (j != k) sum = sum + Recip(z[k] - z[j]);
            const Complex<T> den = dp - p * sum;
            if (den.re == T(0) && den.im == T(0)) continue;
            const Complex<T> step = Div(p, den);
            z[k] = z[k] - step;
            const T rel = Norm(step) / (Norm(z[k]) + radius * radius * T(1e-12));
            if (rel > maxStep) maxStep = rel;
        }
        if (maxStep < done) return;
        if (iter > 1 && maxStep < T(1e-4) && maxStep > T(0.25) * lastStep) return;
        lastStep = maxStep;
    }
}

// Roots of c[0] z^m + c[1] z^(m-1) + ... + c[m], with c[0] != 0 and c[m] != 0, m <= kIirMaxOrder.
void FindRoots(const long double* c, int m, Cx* roots)
{
    if (m <= 0) return;
    if (m == 1)
    {
        roots[0] = {-c[1] / c[0], 0.0L};
        return;
    }
    if (m == 2)
    {
        const long double disc = c[1] * c[1] - 4.0L * c[0] * c[2];
        if (disc >= 0.0L)
        {
            // The root of larger magnitude from the sum without cancellation, the other from the product.
            const long double q = -0.5L * (c[1] + std::copysign(std::sqrt(disc), c[1]));
            roots[0] = {q / c[0], 0.0L};
            roots[1] = {c[2] / q, 0.0L};
        }
        else
        {
            const long double re = -c[1] / (2.0L * c[0]);
            const long double im = std::sqrt(-disc) / (2.0L * std::fabs(c[0]));
            roots[0] = {re, im};
            roots[1] = {re, -im};
        }
        return;
    }

    // Aberth iteration in double, started on a circle around the centroid of the roots whose radius
    // is the geometric mean of their distances from it. The angular offset breaks the mirror
    // symmetry about the real axis, which would keep a pair of guesses from settling on two real
    // roots.
    double cd[kIirMaxOrder + 1];
    for (int i = 0; i <= m; ++i)
        cd[i] = static_cast<double>(c[i]);
    const double centre = -cd[1] / (m * cd[0]);
    double pc = cd[0];
    for (int i = 1; i <= m; ++i)
        pc = pc * centre + cd[i];
    double radius = std::pow(std::fabs(pc / cd[0]), 1.0 / m);
    if (!(radius > 1e-12) || !std::isfinite(radius)) radius = 1e-3 + std::fabs(centre);
    CxD z[kIirMaxOrder];
    const double turn = 6.283185307179586 / m;
    const CxD rot{std::cos(turn), std::sin(turn)};
    CxD dir{0.9210609940028851, 0.3894183423086505}; // angle 0.4
    for (int k = 0; k < m; ++k)
    {
        z[k] = CxD{centre, 0.0} + radius * dir;
        dir = dir * rot;
    }

    // Double carries the search; long double finishes it, since the roots of a crowded cluster
    // (a sharp filter's poles near z = 1 or z = -1) are held by the taps more finely than double
    // evaluation of the polynomial can tell.
    AberthSweeps(cd, m, z, radius, 40, 1e-14);
    Cx zl[kIirMaxOrder];
    for (int k = 0; k < m; ++k)
        zl[k] = Cx{z[k].re, z[k].im};
    AberthSweeps(c, m, zl, static_cast<long double>(radius), 20, 1e-26L);
    for (int k = 0; k < m; ++k)
        roots[k] = zl[k];
}

// A root to be grouped; an infinite root stands for a factor w = 1/z, a delay.
struct RootItem
{
    Cx z;
    bool infinite;
};

// A real factor of degree <= 2 in w = 1/z: c0 + c1 w + c2 w^2, with its roots in z.
struct Factor
{
    long double c0, c1, c2;
    int degree;
    RootItem root[2];
};

Factor Linear(const RootItem& r)
{
    if (r.infinite) return Factor{0.0L, 1.0L, 0.0L, 1, {r, r}};
    return Factor{1.0L, -r.z.re, 0.0L, 1, {r, r}};
}

Factor Product(const Factor& a, const Factor& b)
{
    return Factor{a.c0 * b.c0, a.c0 * b.c1 + a.c1 * b.c0, a.c1 * b.c1, 2, {a.root[0], b.root[0]}};
}

inline long double RealKey(const RootItem& r)
{
    return r.infinite ? HUGE_VALL : r.z.re;
}

// Groups n roots into real factors: conjugate pairs, and real roots sorted and paired with their
// neighbours. For odd n, one real root is left as a first-order factor, returned first: the one
// nearest to `near` (or the one of smallest magnitude when `near` is null). Returns the count.
int GroupRoots(const RootItem* items, int n, const Cx* near, Factor* out)
{
    bool used[kIirMaxOrder] = {};
    Factor pairs[kIirMaxOrder];
    int pairCount = 0;
    for (int k = 0; k < n; ++k)
    {
        const RootItem& r = items[k];
        const long double tol = 1e-12L * (1.0L + Abs(r.z));
        if (used[k] || r.infinite || r.z.im <= tol) continue; // real roots and lower halves come later
        int best = -1;
        long double bestDist = HUGE_VALL;
        for (int j = 0; j < n; ++j)
        {
            if (used[j] || items[j].infinite || items[j].z.im >= -tol) continue;
            const long double d = Norm(items[j].z - Cx{r.z.re, -r.z.im});
            if (d < bestDist)
            {
                bestDist = d;
                best = j;
            }
        }
        if (best < 0) continue;
        used[k] = used[best] = true;
        // The mean of the root and its partner's mirror image: exactly conjugate, real coefficients.
        const Cx z{0.5L * (r.z.re + items[best].z.re), 0.5L * (r.z.im - items[best].z.im)};
        pairs[pairCount++] =
            Factor{1.0L, -2.0L * z.re, Norm(z), 2, {RootItem{z, false}, RootItem{Cx{z.re, -z.im}, false}}};
    }

    RootItem real[kIirMaxOrder];
    int realCount = 0;
    for (int k = 0; k < n; ++k)
    {
        if (used[k]) continue;
        real[realCount] = items[k];
        real[realCount++].z.im = 0.0L;
    }
    // Insertion sort by value, delays last.
    for (int i = 1; i < realCount; ++i)
        for (int j = i; j > 0 && RealKey(real[j]) < RealKey(real[j - 1]); --j)
        {
            const RootItem t = real[j];
            real[j] = real[j - 1];
            real[j - 1] = t;
        }

    int count = 0;
    if (realCount % 2 == 1)
    {
        int pick = 0;
        long double bestDist = HUGE_VALL;
        for (int i = 0; i < realCount; ++i)
        {
            if (real[i].infinite) continue;
            const long double d = near != nullptr ? Abs(real[i].z - *near) : std::fabs(real[i].z.re);
            if (d < bestDist)
            {
                bestDist = d;
                pick = i;
            }
        }
        out[count++] = Linear(real[pick]);
        for (int i = pick; i + 1 < realCount; ++i)
            real[i] = real[i + 1];
        --realCount;
    }
    for (int i = 0; i + 1 < realCount; i += 2)
        out[count++] = Product(Linear(real[i]), Linear(real[i + 1]));
    for (int i = 0; i < pairCount; ++i)
        out[count++] = pairs[i];
    return count;
}

// Squared quality factor of a pole factor 1 + c1 w + c2 w^2, read through the inverse bilinear map
// s = (z - 1) / (z + 1): A s^2 + B s + C with A = P(-1), B = 2 (1 - c2), C = P(1). Retuning a
// bilinear design scales s and leaves this unchanged.
long double QualityKey(const Factor& f)
{
    const long double a = 1.0L - f.c1 + f.c2;
    const long double b = 2.0L * (1.0L - f.c2);
    const long double c = 1.0L + f.c1 + f.c2;
    if (!(a > 0.0L && b > 0.0L && c > 0.0L)) return HUGE_VALL;
    return a * c / (b * b);
}

Cx EvalFactor(const Factor& f, Cx w)
{
    return Cx{f.c0, 0.0L} + f.c1 * w + f.c2 * (w * w);
}
long double EvalFactor(const Factor& f, long double w)
{
    return f.c0 + w * (f.c1 + w * f.c2);
}

// Smallest squared distance between a finite root of `zeros` and the pole `p`.
long double ZeroDistance(const Factor& zeros, Cx p)
{
    long double d = HUGE_VALL;
    for (int i = 0; i < zeros.degree; ++i)
        if (!zeros.root[i].infinite) d = std::fmin(d, Norm(zeros.root[i].z - p));
    return d;
}

// Divides c[0] + c[1] w + ... + c[d] w^d by (1 - r w), r = +1 or -1, when w = r is a root to
// within rounding (then z = r is a zero). Returns the new degree.
int DeflateUnitRoot(long double* c, int d, long double r)
{
    if (d <= 0) return d;
    long double value = 0.0L, size = 0.0L, rk = 1.0L;
    for (int i = 0; i <= d; ++i)
    {
        value += c[i] * rk;
        size += std::fabs(c[i]);
        rk *= r;
    }
    if (!(std::fabs(value) <= 1e-10L * size)) return d;
    for (int i = 1; i < d; ++i)
        c[i] += r * c[i - 1];
    return d - 1;
}

// Finds the n poles and n zeros of a direct filter and its gain b0 / a0 (in the form
// gain * prod(1 - q/z) / prod(1 - p/z)). False for taps that give no usable filter.
bool FactorTaps(const double* taps, int n, RootItem* poles, RootItem* zeros, long double& gain)
{
    long double b[kIirMaxOrder + 1] = {};
    long double a[kIirMaxOrder + 1] = {};
    for (int i = 0; i <= n; ++i)
    {
        if (!std::isfinite(taps[i]) || !std::isfinite(taps[n + 1 + i])) return false;
        b[i] = taps[i];
        a[i] = taps[n + 1 + i];
    }
    if (a[0] == 0.0L) return false;

    // Poles: roots of a0 z^n + a1 z^(n-1) + ... + an; trailing zero taps are poles at the origin.
    int poleCount = 0;
    int degA = n;
    while (degA > 0 && a[degA] == 0.0L)
    {
        poles[poleCount++] = RootItem{Cx{0.0L, 0.0L}, false};
        --degA;
    }
    Cx roots[kIirMaxOrder];
    FindRoots(a, degA, roots);
    for (int k = 0; k < degA; ++k)
    {
        Cx z = roots[k];
        const long double r = Abs(z);
        if (r > kMaxPoleRadius) z = (kMaxPoleRadius / r) * z;
        poles[poleCount++] = RootItem{z, false};
    }

    // Zeros: leading zero taps are delays, trailing ones zeros at the origin; zeros at z = -1 and
    // z = +1 (Nyquist and DC) come out by exact division, the rest by root finding.
    int zeroCount = 0;
    int lead = 0;
    while (lead <= n && b[lead] == 0.0L)
        ++lead;
    if (lead > n) return false;
    for (int i = 0; i < lead; ++i)
        zeros[zeroCount++] = RootItem{Cx{0.0L, 0.0L}, true};
    long double* bw = b + lead;
    int degB = n - lead;
    while (degB > 0 && bw[degB] == 0.0L)
    {
        zeros[zeroCount++] = RootItem{Cx{0.0L, 0.0L}, false};
        --degB;
    }
    for (bool again = true; again;)
    {
        again = false;
        for (const long double r : {-1.0L, 1.0L})
        {
            const int d = DeflateUnitRoot(bw, degB, r);
            if (d < degB)
            {
                zeros[zeroCount++] = RootItem{Cx{r, 0.0L}, false};
                degB = d;
                again = true;
            }
        }
    }
    // The w-polynomial c0 + c1 w + ... read as the z-polynomial c0 z^d + c1 z^(d-1) + ... has the
    // same coefficient array, and its roots are the zeros in z.
    FindRoots(bw, degB, roots);
    for (int k = 0; k < degB; ++k)
        zeros[zeroCount++] = RootItem{roots[k], false};
    gain = bw[0] / a[0];
    return true;
}

// Groups n poles and n zeros into sections: the first-order one (odd n) in front, the others by
// rising quality factor, each with the zeros nearest to its poles and a numerator of unit gain at
// DC or Nyquist; the overall gain goes to the first section. n = 0 gives a single gain section.
void Assemble(const RootItem* poles, const RootItem* zeros, int n, long double gain, IirSection* out,
              int& sectionsOut, bool& halfFirstOut)
{
    if (n == 0)
    {
        out[0] = IirSection{static_cast<double>(gain), 0.0, 0.0, 0.0, 0.0};
        sectionsOut = 1;
        halfFirstOut = false;
        return;
    }
    Factor den[kMaxSections];
    Factor num[kMaxSections];
    const int sections = GroupRoots(poles, n, nullptr, den);
    const bool halfFirst = den[0].degree == 1;
    GroupRoots(zeros, n, halfFirst ? &den[0].root[0].z : nullptr, num);

    const int first = halfFirst ? 1 : 0;
    long double key[kMaxSections];
    for (int i = first; i < sections; ++i)
        key[i] = QualityKey(den[i]);
    for (int i = first + 1; i < sections; ++i)
        for (int j = i; j > first && key[j] < key[j - 1]; --j)
        {
            const Factor t = den[j];
            den[j] = den[j - 1];
            den[j - 1] = t;
            const long double tk = key[j];
            key[j] = key[j - 1];
            key[j - 1] = tk;
        }

    // Each pole section, sharpest first, takes the zero factor nearest to its pole.
    Factor numFor[kMaxSections];
    bool taken[kMaxSections] = {};
    if (halfFirst) numFor[0] = num[0];
    for (int i = sections - 1; i >= first; --i)
    {
        int best = -1;
        long double bestDist = HUGE_VALL;
        for (int j = first; j < sections; ++j)
        {
            if (taken[j]) continue;
            const long double d = ZeroDistance(num[j], den[i].root[0].z);
            if (best < 0 || d < bestDist)
            {
                best = j;
                bestDist = d;
            }
        }
        numFor[i] = num[best];
        taken[best] = true;
    }

    long double rest = gain;
    for (int i = 0; i < sections; ++i)
    {
        Factor& z = numFor[i];
        const Factor& p = den[i];
        const long double atDc = std::fabs(EvalFactor(z, 1.0L) / EvalFactor(p, 1.0L));
        const long double atNyquist = std::fabs(EvalFactor(z, -1.0L) / EvalFactor(p, -1.0L));
        long double norm = atDc > atNyquist ? atDc : atNyquist;
        const long double r = p.degree == 2 ? Abs(p.root[0].z) : 0.0L;
        if (r > 0.0L)
        {
            // A band-pass section has no gain at DC or Nyquist: fall back to the gain at the pole's
            // angle (w = 1/z on the unit circle).
            const Cx w{p.root[0].z.re / r, -p.root[0].z.im / r};
            const long double atPole = Abs(EvalFactor(z, w)) / Abs(EvalFactor(p, w));
            if (std::isfinite(atPole) && !(norm >= 1e-3L * atPole)) norm = atPole;
        }
        if (!(norm > 0.0L) || !std::isfinite(norm)) norm = 1.0L;
        z.c0 /= norm;
        z.c1 /= norm;
        z.c2 /= norm;
        rest *= norm;
    }

    for (int i = 0; i < sections; ++i)
    {
        const long double k = i == 0 ? rest : 1.0L;
        out[i] = IirSection{static_cast<double>(k * numFor[i].c0), static_cast<double>(k * numFor[i].c1),
                            static_cast<double>(k * numFor[i].c2), static_cast<double>(den[i].c1),
                            static_cast<double>(den[i].c2)};
    }
    sectionsOut = sections;
    halfFirstOut = halfFirst;
}

} // namespace

bool IirSectionsFromTaps(const double* taps, int order, IirSection* out, int& sections, bool& halfFirst)
{
    RootItem poles[kIirMaxOrder];
    RootItem zeros[kIirMaxOrder];
    long double gain = 0.0L;
    if (order < 0 || order > kIirMaxOrder || !FactorTaps(taps, order, poles, zeros, gain)) return false;
    Assemble(poles, zeros, order, gain, out, sections, halfFirst);
    return true;
}

void IirSectionsFromRoots(const IirRoot* poles, const IirRoot* zeros, int order, long double gain,
                          IirSection* out, int& sections, bool& halfFirst)
{
    RootItem p[kIirMaxOrder];
    RootItem z[kIirMaxOrder];
    const int n = order < 0 ? 0 : (order > kIirMaxOrder ? kIirMaxOrder : order);
    for (int i = 0; i < n; ++i)
    {
        p[i] = RootItem{Cx{poles[i].re, poles[i].im}, poles[i].infinite};
        z[i] = RootItem{Cx{zeros[i].re, zeros[i].im}, zeros[i].infinite};
    }
    Assemble(p, z, n, gain, out, sections, halfFirst);
}
