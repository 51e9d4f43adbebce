#pragma once
// Audio files through libsndfile: a whole mono or stereo file read into memory (mono doubled to
// both channels), and a writer that streams stereo 24-bit PCM blocks into WAV, FLAC or AIFF.

#include <sndfile.h>

#include <string>
#include <vector>

namespace render
{
struct StereoAudio
{
    double rate = 0.0;
    std::vector<double> left;
    std::vector<double> right;
};

bool ReadAudio(const std::string& path, StereoAudio& audio, std::string& error);

// The libsndfile major format named by the extension of path, or 0 when it names none we write.
int FormatForPath(const std::string& path);

class AudioWriter
{
  public:
    AudioWriter() = default;
    ~AudioWriter();
    AudioWriter(const AudioWriter&) = delete;
    AudioWriter& operator=(const AudioWriter&) = delete;

    bool Open(const std::string& path, double rate, std::string& error);
    // Samples beyond full scale are clipped, never wrapped.
    bool Write(const double* left, const double* right, size_t frames, std::string& error);
    bool Close(std::string& error);

  private:
    SNDFILE* mFile = nullptr;
    std::string mPath;
    std::vector<double> mInterleaved;
};
} // namespace render
