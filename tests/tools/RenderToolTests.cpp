// quorvex-render as a user runs it: files in, files out, exit codes and messages. The plug-in is
// bypassed where a test needs to know the exact output, because a bypassed plug-in must give its
// input delayed by the latency it reports, whatever its engine does.

#include <gtest/gtest.h>

#include <sndfile.h>
#include <unistd.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <regex>
#include <sstream>
#include <string>
#include <vector>

#include "common/Noise.h"

namespace
{
namespace fs = std::filesystem;

constexpr double kLsb24 = 1.0 / 8388608.0;

struct ToolRun
{
    int code = -1;
    std::string out;
    std::string err;
};

struct Audio
{
    int rate = 0;
    int channels = 0;
    int format = 0;
    std::vector<double> samples; // interleaved

    size_t Frames() const { return channels > 0 ? samples.size() / static_cast<size_t>(channels) : 0; }
    double At(size_t frame, int ch) const
    {
        return samples[frame * static_cast<size_t>(channels) + static_cast<size_t>(ch)];
    }
};

std::string Quote(const std::string& s)
{
    std::string q = "'";
    for (char c : s)
        q += c == '\'' ? std::string("'\\''") : std::string(1, c);
    return q + "'";
}

std::string Slurp(const fs::path& path)
{
    std::ifstream in(path);
    std::stringstream text;
    text << in.rdbuf();
    return text.str();
}

// A scratch folder per test, removed afterwards.
class RenderTool : public ::testing::Test
{
  protected:
    void SetUp() override
    {
        const auto* test = ::testing::UnitTest::GetInstance()->current_test_info();
        mDir =
            fs::temp_directory_path() / ("quorvex_render_" + std::to_string(getpid()) + "_" + test->name());
        fs::create_directories(mDir);
    }
    void TearDown() override { fs::remove_all(mDir); }

    std::string Path(const std::string& name) const { return (mDir / name).string(); }

    ToolRun Tool(const std::vector<std::string>& args) const
    {
        std::string command = Quote(QUORVEX_RENDER_TOOL);
        for (const auto& a : args)
            command.append(" ").append(Quote(a));
        command.append(" >").append(Quote(Path("stdout.txt")));
        command.append(" 2>").append(Quote(Path("stderr.txt"))).append(" </dev/null");
        const int status = std::system(command.c_str());
        ToolRun run;
        run.code = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
        run.out = Slurp(mDir / "stdout.txt");
        run.err = Slurp(mDir / "stderr.txt");
        return run;
    }

    fs::path mDir;
};

void Write(const std::string& path, int rate, int channels, const std::vector<double>& samples,
           int format = SF_FORMAT_WAV | SF_FORMAT_PCM_24)
{
    SF_INFO info{};
    info.samplerate = rate;
    info.channels = channels;
    info.format = format;
    SNDFILE* file = sf_open(path.c_str(), SFM_WRITE, &info);
    ASSERT_NE(file, nullptr) << sf_strerror(nullptr);
    sf_writef_double(file, samples.data(), static_cast<sf_count_t>(samples.size()) / channels);
    sf_close(file);
}

Audio Read(const std::string& path)
{
    SF_INFO info{};
    Audio audio;
    SNDFILE* file = sf_open(path.c_str(), SFM_READ, &info);
    EXPECT_NE(file, nullptr) << path << ": " << sf_strerror(nullptr);
    if (!file) return audio;
    audio.rate = info.samplerate;
    audio.channels = info.channels;
    audio.format = info.format;
    audio.samples.resize(static_cast<size_t>(info.frames * info.channels));
    sf_readf_double(file, audio.samples.data(), info.frames);
    sf_close(file);
    return audio;
}

// A signal that tells channels and positions apart: a tone on the left, fixed noise on the right,
// quantised to 24 bits as the file holds it.
std::vector<double> TestSignal(size_t frames, int channels)
{
    std::vector<double> s;
    testnoise::NoiseSource noise{12345u};
    for (size_t i = 0; i < frames; ++i)
        for (int ch = 0; ch < channels; ++ch)
        {
            const double n = noise.Next(0.4);
            const double v = ch == 0 ? 0.5 * std::sin(0.0731 * static_cast<double>(i)) : n;
            s.push_back(std::round(v / kLsb24) * kLsb24);
        }
    return s;
}

// The number in "quorvex-render: <what> <number>" of the tool's output, NaN when absent.
double Reported(const std::string& out, const std::string& what)
{
    std::smatch m;
    const std::regex line("quorvex-render: " + what + " (-?[0-9.]+|-inf)");
    if (!std::regex_search(out, m, line)) return std::nan("");
    return m[1] == "-inf" ? -INFINITY : std::stod(m[1]);
}

double PeakDb(const Audio& a)
{
    double peak = 0.0;
    for (double v : a.samples)
        peak = std::max(peak, std::abs(v));
    return 20.0 * std::log10(peak);
}

// Every line the tool writes to stderr carries its name.
void ExpectPrefixed(const std::string& err)
{
    std::istringstream lines(err);
    for (std::string line; std::getline(lines, line);)
    {
        if (!line.empty())
        {
            EXPECT_EQ(line.rfind("quorvex-render: ", 0), 0u) << line;
        }
    }
}

// Renders in and checks the output is in delayed by the reported latency, on both channels.
void ExpectDelayedCopy(const Audio& in, const Audio& out, int latency, size_t tailFrames)
{
    ASSERT_EQ(out.channels, 2);
    ASSERT_EQ(out.rate, in.rate);
    ASSERT_EQ(out.Frames(), in.Frames() + tailFrames);
    for (int ch = 0; ch < 2; ++ch)
        for (size_t i = 0; i < out.Frames(); ++i)
        {
            const size_t lag = static_cast<size_t>(latency);
            const double expected =
                i < lag || i - lag >= in.Frames() ? 0.0 : in.At(i - lag, std::min(ch, in.channels - 1));
            ASSERT_NEAR(out.At(i, ch), expected, 1.5 * kLsb24) << "channel " << ch << ", frame " << i;
        }
}

TEST_F(RenderTool, StereoRoundTripIsTheInputDelayedByTheReportedLatency)
{
    Write(Path("in.wav"), 44100, 2, TestSignal(13000, 2));
    const Audio in = Read(Path("in.wav"));
    // An odd block size that doesn't divide the file, and the default one.
    for (const char* block : {"37", "512"})
    {
        SCOPED_TRACE(block);
        const ToolRun run =
            Tool({"--set", "Bypass=on", "--block", block, "--tail", "0.05", Path("in.wav"), Path("out.wav")});
        ASSERT_EQ(run.code, 0) << run.err;
        const double latency = Reported(run.out, "latency");
        ASSERT_GT(latency, 0.0) << run.out;
        ASSERT_LT(latency, 1000.0);
        const Audio out = Read(Path("out.wav"));
        EXPECT_EQ(out.format, SF_FORMAT_WAV | SF_FORMAT_PCM_24);
        ExpectDelayedCopy(in, out, static_cast<int>(latency), 2205);
        // The summary names the file and measures what it holds.
        EXPECT_NE(run.out.find("quorvex-render: wrote " + Path("out.wav") + "\n"), std::string::npos)
            << run.out;
        EXPECT_NEAR(Reported(run.out, "peak"), PeakDb(out), 0.01);
        EXPECT_LT(Reported(run.out, "RMS"), Reported(run.out, "peak"));
    }
}

TEST_F(RenderTool, MonoInputIsDoubledIntoAFlacFile)
{
    Write(Path("mono.aiff"), 48000, 1, TestSignal(5000, 1), SF_FORMAT_AIFF | SF_FORMAT_PCM_16);
    const ToolRun run = Tool({"--set", "Bypass=1", "--tail", "0", Path("mono.aiff"), Path("out.flac")});
    ASSERT_EQ(run.code, 0) << run.err;
    const Audio out = Read(Path("out.flac"));
    EXPECT_EQ(out.format, SF_FORMAT_FLAC | SF_FORMAT_PCM_24);
    ExpectDelayedCopy(Read(Path("mono.aiff")), out, static_cast<int>(Reported(run.out, "latency")), 0);
}

TEST_F(RenderTool, DefaultTailStopsAfterATenthOfASecondBelowMinus90Db)
{
    // A held level of -10 dBFS: loud to its last sample, so the quiet stretch starts exactly one
    // latency after the input ends.
    const size_t frames = 4800;
    Write(Path("in.wav"), 48000, 2, std::vector<double>(2 * frames, 0.3162));
    const ToolRun run = Tool({"--set", "Bypass=on", "--block", "64", Path("in.wav"), Path("out.wav")});
    ASSERT_EQ(run.code, 0) << run.err;
    const size_t latency = static_cast<size_t>(Reported(run.out, "latency"));
    const Audio out = Read(Path("out.wav"));
    const size_t quietFrom = frames + latency;
    EXPECT_GE(out.Frames(), quietFrom + 4800);
    EXPECT_LT(out.Frames(), quietFrom + 4800 + 64);
    EXPECT_NEAR(out.At(quietFrom - 1, 0), 0.3162, kLsb24);
    EXPECT_EQ(out.At(quietFrom, 1), 0.0);
}

TEST_F(RenderTool, DemoPhraseIsAudibleAndTheSameEachTime)
{
    const ToolRun first = Tool({"--demo", "--rate", "44100", "--tempo", "240", Path("a.wav")});
    ASSERT_EQ(first.code, 0) << first.err;
    const ToolRun second = Tool({"--demo", "--rate", "44100", "--tempo", "240", Path("b.wav")});
    ASSERT_EQ(second.code, 0) << second.err;
    const Audio a = Read(Path("a.wav"));
    EXPECT_EQ(a.rate, 44100);
    EXPECT_GT(a.Frames(), 44100u);
    EXPECT_GT(PeakDb(a), -20.0);
    EXPECT_GT(Reported(first.out, "RMS"), -50.0);
    EXPECT_EQ(a.samples, Read(Path("b.wav")).samples);
}

TEST_F(RenderTool, SettingsByNameAndKeyReachThePlugin)
{
    Write(Path("in.wav"), 48000, 2, TestSignal(2000, 2));
    const ToolRun run = Tool({"--set", "Feedback 1=40", "--set", "DryLevel=25", "--set", "LimiterOn=SLOW II",
                              "--set", "Output Level=-3.5", "--set", "SlotOn2=0", "--set", "limiter level=6",
                              "--set", "Wet Level=250", "--tail", "0", Path("in.wav"), Path("out.wav")});
    ASSERT_EQ(run.code, 0) << run.err;
    // The values the plug-in holds after the changes went through a process call.
    for (const char* line :
         {"Feedback 1 = 40.0 %", "Dry Level = 25.0 %", "Limiter On = SLOW II", "Output Level = -3.5 dB",
          "SlotOn 2 = OFF", "Limiter Level = 6.0 dB", "Wet Level = 100.0 %"})
        EXPECT_NE(run.out.find(std::string("quorvex-render: ") + line + "\n"), std::string::npos)
            << line << "\n"
            << run.out;
    // Out of range: clamped with a warning, and the render still happens.
    EXPECT_NE(run.err.find("warning: Wet Level = 250"), std::string::npos) << run.err;
    EXPECT_NE(run.err.find("clamped to 100"), std::string::npos) << run.err;
    ExpectPrefixed(run.err);
    EXPECT_EQ(Read(Path("out.wav")).Frames(), 2000u);
}

TEST_F(RenderTool, ErrorsNameTheirCauseWithTheExitCode)
{
    Write(Path("in.wav"), 48000, 2, TestSignal(100, 2));
    Write(Path("three.wav"), 48000, 3, TestSignal(100, 3));
    const std::string in = Path("in.wav");
    const std::string out = Path("out.wav");
    const struct
    {
        std::vector<std::string> args;
        int code;
        std::vector<std::string> mentions;
    } cases[] = {
        {{Path("missing.wav"), out}, 1, {Path("missing.wav")}},
        {{Path("three.wav"), out}, 1, {Path("three.wav"), "3 channels"}},
        {{"--set", "Feedback9=10", in, out}, 2, {"unknown parameter", "Feedback9"}},
        {{"--set", "Nonsense Knob=1", in, out}, 2, {"unknown parameter", "Nonsense Knob"}},
        {{"--set", "Feedback 1=lots", in, out}, 2, {"bad value", "lots", "Feedback 1"}},
        {{"--set", "LimiterOn=MEDIUM", in, out}, 2, {"bad value", "MEDIUM", "Limiter On"}},
        {{"--block", "0", in, out}, 2, {"--block"}},
        {{"--rate", "44100", in, out}, 2, {"--rate"}},
        {{in}, 2, {"OUTPUT"}},
        {{in, Path("out.mp3")}, 2, {"out.mp3"}},
        {{"--bundle", Path("nowhere.vst3"), in, out}, 1, {"nowhere.vst3"}},
    };
    for (const auto& c : cases)
    {
        const ToolRun run = Tool(c.args);
        SCOPED_TRACE(c.args.front() + " " + c.args.back() + "\n" + run.err);
        EXPECT_EQ(run.code, c.code);
        for (const auto& m : c.mentions)
            EXPECT_NE(run.err.find(m), std::string::npos) << m;
        EXPECT_EQ(run.err.rfind("quorvex-render: ", 0), 0u);
        ExpectPrefixed(run.err);
        EXPECT_FALSE(fs::exists(out));
    }
}
TEST_F(RenderTool, PresetFileIsLoadedAsThePluginLoadsItAndWrittenBack)
{
    // Version 13: the tapped MIX slot loses 30% of its feedback; the masks come through as they are.
    const std::string old = "Quorvex V. 1.1.0r13 PresetFile!\nPresetVersion: 13\n\nADDPARAMS:\n\nDelayTaps\n"
                            "1 2 3 4 5 6 7 8 \nStepFX\n9 10 11 12 \n\nEParams:\nDirectIn1 60\nFeedback1 50\n"
                            "DelayMode1 3\nDelayRoute1 6\nLevel2 -20\nBogus 3\n";
    std::ofstream(Path("old.txt")) << old;
    const ToolRun run =
        Tool({"--preset", Path("old.txt"), "--set", "Level 2=-6", "--write-preset", Path("new.txt")});
    ASSERT_EQ(run.code, 0) << run.err;
    EXPECT_NE(run.err.find("no parameter has the key Bogus"), std::string::npos) << run.err;
    ExpectPrefixed(run.err);
    EXPECT_EQ(Slurp(mDir / "old.txt"), old); // the tool never rewrites what it was given
    const std::string written = Slurp(mDir / "new.txt");
    EXPECT_EQ(written, "Quorvex V. 1.2.0r14 PresetFile!\nPresetVersion: 14\n\nADDPARAMS:\n\nDelayTaps\n"
                       "1 2 3 4 5 6 7 8 \nLastPage\n2\nStepFX\n9 10 11 12 \nStepMod\n0 0 0 0 0 0 0 0 \n\n"
                       "EParams:\nDirectIn1 60\nFeedback1 35\nLevel2 -6\nDelayMode1 3\nDelayRoute1 6\n");

    // Rendering through the written preset is rendering through the settings it holds.
    const ToolRun viaPreset = Tool({"--preset", Path("new.txt"), "--demo", "--tail", "1", Path("a.wav")});
    ASSERT_EQ(viaPreset.code, 0) << viaPreset.err;
    const ToolRun viaSettings =
        Tool({"--set", "DirectIn1=60", "--set", "Feedback1=35", "--set", "Level2=-6", "--set", "DelayMode1=3",
              "--set", "DelayRoute1=6", "--demo", "--tail", "1", Path("b.wav")});
    ASSERT_EQ(viaSettings.code, 0) << viaSettings.err;
    const ToolRun plain = Tool({"--demo", "--tail", "1", Path("c.wav")});
    const Audio a = Read(Path("a.wav"));
    // The preset also switched taps off, which no setting can: the renders differ from the plain one.
    EXPECT_NE(a.samples, Read(Path("c.wav")).samples);
    EXPECT_NE(a.samples, Read(Path("b.wav")).samples);
    EXPECT_EQ(a.Frames(), Read(Path("b.wav")).Frames());
}

TEST_F(RenderTool, PresetErrorsNameTheirCause)
{
    std::ofstream(Path("foreign.txt")) << "Something else entirely\n";
    const struct
    {
        std::vector<std::string> args;
        std::string mention;
    } cases[] = {
        {{"--preset", Path("missing.txt"), "--demo", Path("o.wav")}, Path("missing.txt")},
        {{"--preset", Path("foreign.txt"), "--demo", Path("o.wav")}, "not a Quorvex preset file"},
        {{"--set", "Feedback1=3", "--preset", Path("foreign.txt"), "--demo", Path("o.wav")},
         "give --preset first"},
    };
    for (const auto& c : cases)
    {
        const ToolRun run = Tool(c.args);
        EXPECT_EQ(run.code, 2) << run.err;
        EXPECT_NE(run.err.find(c.mention), std::string::npos) << run.err;
        EXPECT_FALSE(fs::exists(Path("o.wav")));
    }
}
} // namespace
