#include "GoldenSummary.h"

#include <algorithm>
#include <cinttypes>
#include <cmath>
#include <cstdio>
#include <sstream>
#include <utility>

#include "common/Fft.h"

namespace
{
constexpr double kFirstBandHz = 31.25;
constexpr std::size_t kClickMs = 1000; // the phrase's click
constexpr double kEchoFloor = 1e-4;    // envelope level below which nothing counts as an echo
constexpr int kEchoGapMs = 40;         // two peaks closer than this are one event
constexpr std::size_t kEchoCount = 6;

std::uint64_t Fnv1a(const std::vector<double>& l, const std::vector<double>& r)
{
    std::uint64_t h = 1469598103934665603ull;
    const auto eat = [&h](const std::vector<double>& x)
    {
        for (double v : x)
        {
            unsigned char bytes[sizeof v];
            std::memcpy(bytes, &v, sizeof v);
            for (unsigned char b : bytes)
                h = (h ^ b) * 1099511628211ull;
        }
    };
    eat(l);
    eat(r);
    return h;
}

// RMS of each octave band of [from, to) of both channels together, from the power spectrum.
void Bands(const std::vector<double>& l, const std::vector<double>& r, std::size_t from, std::size_t to,
           double rate, double* out)
{
    std::size_t n = 1;
    while (n < to - from)
        n <<= 1;
    std::vector<double> power(n / 2 + 1, 0.0);
    for (const std::vector<double>* x : {&l, &r})
    {
        std::vector<std::complex<double>> a(n);
        for (std::size_t i = from; i < to; ++i)
            a[i - from] = (*x)[i];
        Fft(a);
        for (std::size_t k = 0; k <= n / 2; ++k)
            power[k] += std::norm(a[k]);
    }
    for (int b = 0; b < GoldenSummary::kBands; ++b)
    {
        const double lo = b == 0 ? 0.0 : kFirstBandHz * std::pow(2.0, b);
        const double hi = b == GoldenSummary::kBands - 1 ? rate : kFirstBandHz * std::pow(2.0, b + 1);
        double sum = 0.0;
        for (std::size_t k = 0; k <= n / 2; ++k)
        {
            const double hz = static_cast<double>(k) * rate / static_cast<double>(n);
            if (hz >= lo && hz < hi) sum += power[k];
        }
        // Parseval: the band's share of the window's mean square.
        out[b] = std::sqrt(2.0 * sum / (static_cast<double>(n) * static_cast<double>(to - from)));
    }
}

// Where the click at 1 s and its echoes land: the loudest peaks of the 1 ms RMS envelope of both
// channels from the click on, at least 40 ms apart, in time order (ms from the start).
std::vector<int> Echoes(const std::vector<double>& l, const std::vector<double>& r, double rate)
{
    const auto msLen = static_cast<std::size_t>(rate / 1000.0);
    std::vector<double> env;
    for (std::size_t at = 0; at + msLen <= l.size(); at += msLen)
    {
        double sum = 0.0;
        for (std::size_t i = at; i < at + msLen; ++i)
            sum += l[i] * l[i] + r[i] * r[i];
        env.push_back(std::sqrt(sum / static_cast<double>(msLen)));
    }
    std::vector<std::pair<double, int>> peaks;
    for (std::size_t i = kClickMs; i + 1 < env.size(); ++i)
        if (env[i] > kEchoFloor && env[i] >= env[i - 1] && env[i] > env[i + 1])
            peaks.emplace_back(env[i], static_cast<int>(i));
    std::sort(peaks.begin(), peaks.end(), [](const auto& a, const auto& b) { return a.first > b.first; });
    std::vector<int> onsets;
    for (const auto& [level, ms] : peaks)
    {
        if (onsets.size() == kEchoCount) break;
        const bool apart = std::all_of(onsets.begin(), onsets.end(),
                                       [ms](int other) { return std::abs(other - ms) >= kEchoGapMs; });
        if (apart) onsets.push_back(ms);
    }
    std::sort(onsets.begin(), onsets.end());
    return onsets;
}

bool Near(double a, double b)
{
    return std::abs(a - b) <= 1e-9 * std::max(std::abs(a), std::abs(b)) + 1e-15;
}
} // namespace

GoldenSummary GoldenSummary::Of(const std::vector<double>& l, const std::vector<double>& r, double rate)
{
    GoldenSummary s;
    for (std::size_t i = 0; i < l.size(); ++i)
    {
        s.peakL = std::max(s.peakL, std::abs(l[i]));
        s.peakR = std::max(s.peakR, std::abs(r[i]));
    }
    const std::size_t n = l.size();
    const std::size_t edges[kWindows + 1] = {0, n / 5, n / 2, n};
    for (int w = 0; w < kWindows; ++w)
        Bands(l, r, edges[w], edges[w + 1], rate, s.bandRms[w]);
    s.echoesMs = Echoes(l, r, rate);
    s.hash = Fnv1a(l, r);
    return s;
}

std::string GoldenSummary::ToLine() const
{
    std::ostringstream line;
    char buf[64];
    std::snprintf(buf, sizeof buf, "peak %.17g %.17g", peakL, peakR);
    line << buf << " bands";
    for (const auto& window : bandRms)
        for (double v : window)
        {
            std::snprintf(buf, sizeof buf, " %.17g", v);
            line << buf;
        }
    line << " echoes " << echoesMs.size();
    for (int ms : echoesMs)
        line << ' ' << ms;
    std::snprintf(buf, sizeof buf, " hash %016" PRIx64, hash);
    line << buf;
    return line.str();
}

bool GoldenSummary::FromLine(const std::string& line, GoldenSummary& out)
{
    std::istringstream in(line);
    std::string word;
    std::size_t echoes = 0;
    if (!(in >> word) || word != "peak" || !(in >> out.peakL >> out.peakR >> word) || word != "bands")
        return false;
    for (auto& window : out.bandRms)
        for (double& v : window)
            if (!(in >> v)) return false;
    if (!(in >> word) || word != "echoes" || !(in >> echoes) || echoes > kEchoCount) return false;
    out.echoesMs.assign(echoes, 0);
    for (int& ms : out.echoesMs)
        if (!(in >> ms)) return false;
    return (in >> word) && word == "hash" && (in >> std::hex >> out.hash);
}

std::string GoldenSummary::Difference(const GoldenSummary& expected) const
{
    std::ostringstream diff;
    if (!Near(peakL, expected.peakL) || !Near(peakR, expected.peakR))
        diff << "peaks " << peakL << ' ' << peakR << " instead of " << expected.peakL << ' ' << expected.peakR
             << "; ";
    for (int w = 0; w < kWindows; ++w)
        for (int b = 0; b < kBands; ++b)
            if (!Near(bandRms[w][b], expected.bandRms[w][b]))
                diff << "window " << w << " band " << b << ": " << bandRms[w][b] << " instead of "
                     << expected.bandRms[w][b] << "; ";
    if (echoesMs != expected.echoesMs) diff << "echo positions moved; ";
    if (hash != expected.hash) diff << "samples differ (hash); ";
    return diff.str();
}
