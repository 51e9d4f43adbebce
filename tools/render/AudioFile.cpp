#include "AudioFile.h"

#include <algorithm>
#include <cctype>
#include <cmath>
#include <filesystem>

namespace render
{
bool ReadAudio(const std::string& path, StereoAudio& audio, std::string& error)
{
    SF_INFO info{};
    SNDFILE* file = sf_open(path.c_str(), SFM_READ, &info);
    if (!file)
    {
        error = "cannot read " + path + ": " + sf_strerror(nullptr);
        return false;
    }
    if (info.channels < 1 || info.channels > 2)
    {
        error =
            path + " has " + std::to_string(info.channels) + " channels; only mono and stereo are rendered";
        sf_close(file);
        return false;
    }
    const size_t channels = static_cast<size_t>(info.channels);
    std::vector<double> interleaved(static_cast<size_t>(info.frames) * channels);
    const sf_count_t got = sf_readf_double(file, interleaved.data(), info.frames);
    sf_close(file);
    if (got != info.frames)
    {
        error = "cannot read " + path + ": the file ends early";
        return false;
    }
    const size_t frames = static_cast<size_t>(got);
    audio.rate = info.samplerate;
    audio.left.resize(frames);
    audio.right.resize(frames);
    for (size_t i = 0; i < frames; ++i)
    {
        audio.left[i] = interleaved[i * channels];
        audio.right[i] = interleaved[i * channels + channels - 1];
    }
    return true;
}

int FormatForPath(const std::string& path)
{
    std::string ext = std::filesystem::path(path).extension().string();
    std::transform(ext.begin(), ext.end(), ext.begin(), [](unsigned char c) { return std::tolower(c); });
    if (ext == ".wav") return SF_FORMAT_WAV;
    if (ext == ".flac") return SF_FORMAT_FLAC;
    if (ext == ".aif" || ext == ".aiff") return SF_FORMAT_AIFF;
    return 0;
}

AudioWriter::~AudioWriter()
{
    if (mFile) sf_close(mFile);
}

bool AudioWriter::Open(const std::string& path, double rate, std::string& error)
{
    SF_INFO info{};
    info.samplerate = static_cast<int>(std::lround(rate));
    info.channels = 2;
    info.format = FormatForPath(path) | SF_FORMAT_PCM_24;
    mPath = path;
    mFile = sf_open(path.c_str(), SFM_WRITE, &info);
    if (!mFile)
    {
        error = "cannot write " + path + ": " + sf_strerror(nullptr);
        return false;
    }
    sf_command(mFile, SFC_SET_CLIPPING, nullptr, SF_TRUE);
    return true;
}

bool AudioWriter::Write(const double* left, const double* right, size_t frames, std::string& error)
{
    mInterleaved.resize(frames * 2);
    for (size_t i = 0; i < frames; ++i)
    {
        mInterleaved[2 * i] = left[i];
        mInterleaved[2 * i + 1] = right[i];
    }
    if (sf_writef_double(mFile, mInterleaved.data(), static_cast<sf_count_t>(frames)) !=
        static_cast<sf_count_t>(frames))
    {
        error = "cannot write " + mPath + ": " + sf_strerror(mFile);
        return false;
    }
    return true;
}

bool AudioWriter::Close(std::string& error)
{
    const int result = mFile ? sf_close(mFile) : 0;
    mFile = nullptr;
    if (result != 0)
    {
        error = "cannot finish " + mPath + ": " + sf_error_number(result);
        return false;
    }
    return true;
}
} // namespace render
