// quorvex-render as a user runs it: files in, files out, exit codes and messages. The plug-in is
// bypassed where a test needs to know the exact output, because a bypassed plug-in must give its
// input delayed by the latency it reports, whatever its engine does.

#include <gtest/gtest.h>

#include <unistd.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <regex>

#include "common/Noise.h"
#include "tools/ToolRun.h"

namespace
{
using namespace tooltest;

constexpr double kLsb24 = 1.0 / 8388608.0;

// A scratch folder per test, removed afterwards.
class RenderTool : public ::testing::Test
{
  protected:
    void TearDown() override { fs::remove_all(mDir); }
    std::string Path(const std::string& name) const { return (mDir / name).string(); }
    ToolRun Tool(const std::vector<std::string>& args) const { return RunTool(args, mDir); }
    const fs::path mDir =
        fs::temp_directory_path() / ("quorvex_render_" + std::to_string(getpid()) + "_" +
                                     ::testing::UnitTest::GetInstance()->current_test_info()->name());
    const bool mMade = fs::create_directories(mDir);
};

// A signal that tells channels and positions apart, quantised to 24 bits as the file holds it: a
// tone on the left, fixed noise on the right; or a `held` level throughout. Written as `format`.
void Write(const std::string& path, int rate, int channels, size_t frames,
           int format = SF_FORMAT_WAV | SF_FORMAT_PCM_24, double held = 0.0)
{
    std::vector<double> s;
    testnoise::NoiseSource noise{12345u};
    for (size_t i = 0; i < frames; ++i)
        for (int ch = 0; ch < channels; ++ch)
        {
            const double n = noise.Next(0.4), tone = 0.5 * std::sin(0.0731 * static_cast<double>(i));
            const double v = held != 0.0 ? held : (ch == 0 ? tone : n);
            s.push_back(std::round(v / kLsb24) * kLsb24);
        }
    SF_INFO info{0, rate, channels, format, 0, 0}; // frames, rate, channels, format, sections, seekable
    SNDFILE* file = sf_open(path.c_str(), SFM_WRITE, &info);
    EXPECT_NE(file, nullptr) << sf_strerror(nullptr);
    sf_writef_double(file, s.data(), static_cast<sf_count_t>(frames));
    sf_close(file);
}

// The number in "quorvex-render: <what> <number>" of the tool's output, NaN when absent.
double Reported(const std::string& out, const std::string& what)
{
    std::smatch m;
    if (!std::regex_search(out, m, std::regex("quorvex-render: " + what + " (-?[0-9.]+|-inf)")))
        return std::nan("");
    return m[1] == "-inf" ? -INFINITY : std::stod(m[1]);
}

// Every line the tool writes to stderr carries its name.
void ExpectPrefixed(const std::string& err)
{
    std::istringstream lines(err);
    for (std::string line; std::getline(lines, line);)
        EXPECT_TRUE(line.empty() || line.rfind("quorvex-render: ", 0) == 0) << line;
}

// Stereo, mono doubled to stereo, an odd block size that doesn't divide the file and the default
// one, a tail of silence or none: the output is the input delayed by the reported latency.
TEST_F(RenderTool, BypassedRendersAreTheInputDelayedByTheReportedLatency)
{
    Write(Path("in.wav"), 44100, 2, 13000);
    Write(Path("mono.aiff"), 48000, 1, 5000, SF_FORMAT_AIFF | SF_FORMAT_PCM_16);
    // Each row: the arguments, ending in the input and the output file, the output format and
    // the frames of tail.
    const int wav24 = SF_FORMAT_WAV | SF_FORMAT_PCM_24, flac24 = SF_FORMAT_FLAC | SF_FORMAT_PCM_24;
    for (const auto& [args, format, tailFrames] :
         {std::tuple{std::vector<std::string>{"--set", "Bypass=on", "--block", "37", "--tail", "0.05",
                                              Path("in.wav"), Path("out.wav")},
                     wav24, 2205u},
          {{"--set", "Bypass=1", "--tail", "0", Path("mono.aiff"), Path("out.flac")}, flac24, 0u}})
    {
        const std::string inPath = args.end()[-2], outPath = args.back();
        const ToolRun run = Tool(args);
        SCOPED_TRACE(run.out + run.err);
        ASSERT_EQ(run.code, 0);
        const auto latency = static_cast<std::size_t>(Reported(run.out, "latency"));
        ASSERT_GT(latency, 0u);
        ASSERT_LT(latency, 1000u);
        const Audio in = ReadAudio(inPath), out = ReadAudio(outPath);
        EXPECT_EQ(out.format, format);
        ASSERT_EQ(out.channels, 2);
        ASSERT_EQ(out.rate, in.rate);
        ASSERT_EQ(out.Frames(), in.Frames() + tailFrames);
        for (int ch = 0; ch < 2; ++ch)
            for (size_t i = 0; i < out.Frames(); ++i)
            {
                const bool heard = i >= latency && i - latency < in.Frames();
                const double expected = heard ? in.At(i - latency, std::min(ch, in.channels - 1)) : 0.0;
                ASSERT_NEAR(out.At(i, ch), expected, 1.5 * kLsb24) << "channel " << ch << ", frame " << i;
            }
        // The summary names the file and measures what it holds.
        EXPECT_NE(run.out.find("quorvex-render: wrote " + outPath + "\n"), std::string::npos);
        EXPECT_NEAR(Reported(run.out, "peak"), PeakDb(out), 0.01);
        EXPECT_LT(Reported(run.out, "RMS"), Reported(run.out, "peak"));
    }
}

TEST_F(RenderTool, DefaultTailStopsAfterATenthOfASecondBelowMinus90Db)
{
    // A held level of -10 dBFS: loud to its last sample, so the quiet stretch starts exactly one
    // latency after the input ends.
    const size_t frames = 4800;
    Write(Path("in.wav"), 48000, 2, frames, SF_FORMAT_WAV | SF_FORMAT_PCM_24, 0.3162);
    const ToolRun run = Tool({"--set", "Bypass=on", "--block", "64", Path("in.wav"), Path("out.wav")});
    ASSERT_EQ(run.code, 0) << run.err;
    const size_t quietFrom = frames + static_cast<size_t>(Reported(run.out, "latency"));
    const Audio out = ReadAudio(Path("out.wav"));
    EXPECT_GE(out.Frames(), quietFrom + 4800);
    EXPECT_LT(out.Frames(), quietFrom + 4800 + 64);
    EXPECT_NEAR(out.At(quietFrom - 1, 0), 0.3162, kLsb24);
    EXPECT_EQ(out.At(quietFrom, 1), 0.0);
}

TEST_F(RenderTool, SettingsByNameAndKeyReachThePlugin)
{
    Write(Path("in.wav"), 48000, 2, 2000);
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
    EXPECT_EQ(ReadAudio(Path("out.wav")).Frames(), 2000u);
}

TEST_F(RenderTool, ErrorsNameTheirCauseWithTheExitCode)
{
    Write(Path("in.wav"), 48000, 2, 100);
    Write(Path("three.wav"), 48000, 3, 100);
    std::ofstream(Path("foreign.txt")) << "Something else entirely\n";
    const std::string in = Path("in.wav"), out = Path("out.wav");
    // Each row: the arguments, the exit code and what the message must mention.
    using Strings = std::vector<std::string>;
    const std::tuple<Strings, int, Strings> cases[] = {
        {{Path("missing.wav"), out}, 1, {Path("missing.wav")}},
        {{Path("three.wav"), out}, 1, {Path("three.wav"), "3 channels"}},
        {{"--set", "Feedback9=10", in, out}, 2, {"unknown parameter", "Feedback9"}},
        {{"--set", "Feedback 1=lots", in, out}, 2, {"bad value", "lots", "Feedback 1"}},
        {{"--set", "LimiterOn=MEDIUM", in, out}, 2, {"bad value", "MEDIUM", "Limiter On"}},
        {{"--block", "0", in, out}, 2, {"--block"}},
        {{"--rate", "44100", in, out}, 2, {"--rate"}},
        {{in}, 2, {"OUTPUT"}},
        {{in, Path("out.mp3")}, 2, {"out.mp3"}},
        {{"--bundle", Path("nowhere.vst3"), in, out}, 1, {"nowhere.vst3"}},
        {{"--preset", Path("missing.txt"), "--demo", out}, 2, {Path("missing.txt")}},
        {{"--preset", Path("foreign.txt"), "--demo", out}, 2, {"not a Quorvex preset file"}},
        {{"--set", "Feedback1=3", "--preset", Path("foreign.txt"), "--demo", out},
         2,
         {"give --preset first"}},
    };
    for (const auto& [args, code, mentions] : cases)
    {
        const ToolRun run = Tool(args);
        SCOPED_TRACE(args.front() + " " + args.back() + "\n" + run.err);
        EXPECT_EQ(run.code, code);
        for (const auto& m : mentions)
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
    EXPECT_EQ(Slurp(mDir / "new.txt"),
              "Quorvex V. 1.2.0r14 PresetFile!\nPresetVersion: 14\n\nADDPARAMS:\n\nDelayTaps\n"
              "1 2 3 4 5 6 7 8 \nLastPage\n2\nStepFX\n9 10 11 12 \nStepMod\n0 0 0 0 0 0 0 0 \n\n"
              "EParams:\nDirectIn1 60\nFeedback1 35\nLevel2 -6\nDelayMode1 3\nDelayRoute1 6\n");

    // Rendering through the written preset is rendering through the settings it holds, and the
    // taps it switched off, which no setting can: the renders differ from the plain demo phrase
    // (audible, and the same each time) and from the settings alone; here at another rate and tempo.
    const std::vector<std::string> settings = {"--set", "DirectIn1=60", "--set", "Feedback1=35",
                                               "--set", "Level2=-6",    "--set", "DelayMode1=3",
                                               "--set", "DelayRoute1=6"};
    std::vector<Audio> take;
    for (std::vector<std::string> args :
         {std::vector<std::string>{"--preset", Path("new.txt")}, settings, {}, {}})
    {
        args.insert(args.end(),
                    {"--demo", "--rate", "44100", "--tempo", "240", "--tail", "1", Path("take.wav")});
        const ToolRun demo = Tool(args);
        ASSERT_EQ(demo.code, 0) << demo.err;
        EXPECT_GT(Reported(demo.out, "RMS"), -50.0);
        take.push_back(ReadAudio(Path("take.wav")));
    }
    EXPECT_NE(take[0].samples, take[1].samples);
    EXPECT_EQ(take[0].Frames(), take[1].Frames());
    EXPECT_NE(take[0].samples, take[2].samples);
    EXPECT_EQ(take[2].samples, take[3].samples);
    EXPECT_EQ(take[2].rate, 44100);
    EXPECT_GT(take[2].Frames(), 44100u);
    EXPECT_GT(PeakDb(take[2]), -20.0);
}
} // namespace
