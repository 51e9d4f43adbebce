#pragma once
// quorvex-render run as a user runs it, from a shell with its output and errors captured, and the
// audio files it reads and writes, through libsndfile. The DAW test reads its exports with these too.

#include <sndfile.h>
#include <sys/wait.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

#include "common/Measure.h"

namespace tooltest
{
namespace fs = std::filesystem;

inline std::string Slurp(const fs::path& path)
{
    std::stringstream text;
    text << std::ifstream(path, std::ios::binary).rdbuf();
    return text.str();
}

// `s` as one word for the shell.
inline std::string Quote(const std::string& s)
{
    std::string q = "'";
    for (char c : s)
        q += c == '\'' ? std::string("'\\''") : std::string(1, c);
    return q + "'";
}

struct ToolRun
{
    int code = -1;
    std::string out, err;
};

#ifdef QUORVEX_RENDER_TOOL
// Runs the tool on `args` with no input, its output and errors caught in files of `scratch`.
inline ToolRun RunTool(const std::vector<std::string>& args, const fs::path& scratch)
{
    std::string command = Quote(QUORVEX_RENDER_TOOL);
    for (const auto& a : args)
        command += " " + Quote(a);
    command += " >" + Quote(scratch / "stdout.txt") + " 2>" + Quote(scratch / "stderr.txt") + " </dev/null";
    const int status = std::system(command.c_str());
    return {WIFEXITED(status) ? WEXITSTATUS(status) : -1, Slurp(scratch / "stdout.txt"),
            Slurp(scratch / "stderr.txt")};
}
#endif

struct Audio
{
    int rate = 0, channels = 0, format = 0;
    std::vector<double> samples; // interleaved

    std::size_t Frames() const
    {
        return channels > 0 ? samples.size() / static_cast<std::size_t>(channels) : 0;
    }
    double At(std::size_t frame, int ch) const
    {
        return samples[frame * static_cast<std::size_t>(channels) + ch];
    }
};

// The loudest sample's level in dBFS, -inf for no samples.
inline double PeakDb(const Audio& a)
{
    return testmeasure::Db(testmeasure::Peak(a.samples));
}

// The file's samples as doubles; an empty Audio when it can't be read.
inline Audio ReadAudio(const fs::path& path)
{
    SF_INFO info{};
    Audio audio;
    SNDFILE* file = sf_open(path.c_str(), SFM_READ, &info);
    if (!file) return audio;
    audio = {info.samplerate, info.channels, info.format, std::vector<double>(info.frames * info.channels)};
    sf_readf_double(file, audio.samples.data(), info.frames);
    sf_close(file);
    return audio;
}
} // namespace tooltest
