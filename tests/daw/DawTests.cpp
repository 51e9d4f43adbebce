// Quorvex in a real DAW: Debian's Ardour 7, headless (ardour7-lua on the Dummy backend), scans the
// built bundle, builds a session with a click track through the plug-in, sets parameters by their
// VST 3 titles, automates one, exports, saves, reopens the session in a new process and exports
// again. The exports are read back here and checked by echo positions, levels and bit identity.
//
// Each test runs Ardour in its own scratch folder with its own HOME and XDG folders, so the user's
// Ardour configuration, plug-in cache and scan lists are never read or written. Ardour finds the
// bundle through a link in that HOME's ~/.vst3, one of the folders it searches for VST 3 bundles;
// its own scanner (ardour-vst3-scanner, the program Ardour's GUI runs for a scan) writes the cache
// that ardour7-lua reads, since the Lua session tool only reads the cache and never scans.
//
// The Lua side, session.lua next to this file, has two modes:
//   create <dir> <name> <frames> <report>: a session with one stereo track "Clicks" holding a
//     silent region of <frames> (Ardour's Lua imports no files: the region is a bounce of the empty
//     track, whose two mono files the driver then overwrites) and Quorvex first in its processor
//     box. The report names the plug-in's module, the region's files and the parameter titles.
//   run <dir> <name> <commands> <preset id>: opens the session and runs a command file, one command
//     a line, fields split by tabs: set <title> <value>; settle (waits for process callbacks, the
//     engine running in its own thread, and until Ardour's view of the latency has held for eight
//     callbacks); automate <title> <sample> <value> ... (put in Play mode); export <file> <frames>
//     (the master bus as float WAV); values <file> (each parameter as Ardour's control and its
//     plug-in object hold it, and the latency); save.
// Any failure there raises a Lua error, which makes ardour7-lua exit non-zero; a run that ends
// prints "QUORVEX-DAW done".

#include <gtest/gtest.h>

#include <unistd.h>

#include <cmath>
#include <map>
#include <tuple>

#include "tools/ToolRun.h"

namespace
{
using namespace tooltest;

constexpr int kRate = 48000;
constexpr size_t kFrames = static_cast<size_t>(2.5 * kRate);
// The export preset the rig installs (quorvex-float.preset next to this file): 32-bit float WAV at
// the session rate, so that the exports can be compared bit for bit and no dither or conversion
// stands between the plug-in and the file. Its format id is Ardour's "BWAV 32float".
constexpr const char* kPresetId = "6d1c8f52-3c57-4f0e-9a51-51756f72d0b1";

// Lines of tab-separated fields, by their first field.
std::multimap<std::string, std::vector<std::string>> Fields(const fs::path& path)
{
    std::multimap<std::string, std::vector<std::string>> out;
    std::ifstream in(path);
    for (std::string line; std::getline(in, line);)
    {
        std::vector<std::string> f;
        std::stringstream fields(line);
        for (std::string field; std::getline(fields, field, '\t');)
            f.push_back(field);
        if (!f.empty()) out.emplace(f[0], std::vector<std::string>(f.begin() + 1, f.end()));
    }
    return out;
}

struct Peak
{
    size_t at = 0;
    double level = 0.0;
};
size_t Ms(double ms)
{
    return static_cast<size_t>(std::llround(ms * kRate / 1000.0));
}

// Ardour's processor-specific mixing and peak routines (on a processor with AVX-512 it picks
// those) went with heap corruption in its own export code: on such a machine most runs of this
// test died there (glibc's "free(): invalid next size" and the like), also with our plug-in
// loaded but never processing. With its plain routines no run has.
constexpr const char* kPlainArdourRoutines = " ARDOUR_FPU_FLAGS=0";

// A scratch folder with an isolated Ardour configuration and the bundle under test, removed
// afterwards unless the test failed (then its logs and sessions are left for a look).
class ArdourRig
{
  public:
    ArdourRig() : mRoot(fs::temp_directory_path() / ("quorvex_daw_" + std::to_string(getpid())))
    {
        fs::remove_all(mRoot);
        for (const char* dir : {"home/.vst3", "config/ardour7/export", "data", "cache"})
            fs::create_directories(mRoot / dir);
    }
    ~ArdourRig()
    {
        if (::testing::Test::HasFailure())
            std::cout << "Ardour's folders and logs are kept in " << mRoot << "\n";
        else
            fs::remove_all(mRoot);
    }
    fs::path Root() const { return mRoot; }

    // Ardour's tools, the isolated home with the bundle linked into ~/.vst3, the export preset,
    // and Ardour's own scan of the bundle.
    ::testing::AssertionResult Prepare()
    {
        for (const char* tool : {QUORVEX_ARDOUR_LUA, QUORVEX_ARDOUR_VST3_SCANNER})
            if (access(tool, X_OK) != 0)
                return ::testing::AssertionFailure()
                       << tool << " is missing: the DAW test needs Debian's Ardour 7 "
                       << "(run `bash scripts/setup.sh tests`, which installs the `ardour` package)";
        const char* installed = std::getenv("QUORVEX_BUNDLE");
        const fs::path bundle = installed != nullptr && *installed != '\0' ? installed : QUORVEX_BUNDLE_DIR;
        if (!fs::is_regular_file(bundle / "Contents/x86_64-linux/Quorvex.so"))
            return ::testing::AssertionFailure() << "no built bundle at " << bundle;
        fs::create_symlink(fs::absolute(bundle), mRoot / "home/.vst3/Quorvex.vst3");
        fs::copy_file(QUORVEX_DAW_SCRIPTS "/quorvex-float.preset",
                      mRoot / "config/ardour7/export/quorvex-float.preset");
        const fs::path scanner = QUORVEX_ARDOUR_VST3_SCANNER;
        auto scan = Run("LD_LIBRARY_PATH=" + Quote(scanner.parent_path()) + " " + Quote(scanner) + " -f " +
                            Quote(mRoot / "home/.vst3/Quorvex.vst3"),
                        "scan");
        if (!scan) return scan;
        if (fs::is_directory(mRoot / "cache/ardour7/vst"))
            for (const auto& e : fs::directory_iterator(mRoot / "cache/ardour7/vst"))
                if (e.path().extension() == ".v3i") return ::testing::AssertionSuccess();
        return ::testing::AssertionFailure() << "Ardour's scan left no cache entry:\n" << mLastLog;
    }

    // One ardour7-lua process on session.lua; it must exit 0 and say it is done.
    ::testing::AssertionResult Lua(const std::vector<std::string>& args, const std::string& tag)
    {
        std::string command = Quote(QUORVEX_ARDOUR_LUA) + " " + Quote(QUORVEX_DAW_SCRIPTS "/session.lua");
        for (const auto& a : args)
            command += " " + Quote(a);
        auto run = Run(command, tag);
        if (run && mLastLog.find("QUORVEX-DAW done") == std::string::npos)
            return ::testing::AssertionFailure() << tag << " did not finish:\n" << mLastLog;
        return run;
    }

  private:
    // Runs a command with the isolated home and XDG folders and its output in a log. Every Ardour
    // process gets 180 s, after which its process group is killed; a healthy one needs a few
    // seconds even on a busy machine.
    ::testing::AssertionResult Run(const std::string& command, const std::string& tag)
    {
        const fs::path log = mRoot / (tag + ".log");
        const std::string env = "env -u LD_LIBRARY_PATH HOME=" + Quote(mRoot / "home") +
                                " XDG_CONFIG_HOME=" + Quote(mRoot / "config") +
                                " XDG_DATA_HOME=" + Quote(mRoot / "data") +
                                " XDG_CACHE_HOME=" + Quote(mRoot / "cache") + kPlainArdourRoutines;
        const int status = std::system(
            ("timeout -k 5 180 " + env + " " + command + " </dev/null >" + Quote(log) + " 2>&1").c_str());
        mLastLog = Slurp(log);
        if (!WIFEXITED(status) || WEXITSTATUS(status) != 0)
            return ::testing::AssertionFailure()
                   << tag << " failed with status " << status
                   << (WEXITSTATUS(status) == 124 ? " (killed after 180 s)" : "") << ":\n"
                   << mLastLog;
        return ::testing::AssertionSuccess();
    }

    fs::path mRoot;
    std::string mLastLog;
};

// A session made by session.lua, with the click signal written into its region's files.
struct Session
{
    fs::path dir;
    std::vector<std::string> titles;
    std::string module;
};

::testing::AssertionResult CreateSession(ArdourRig& rig, const std::vector<size_t>& clicks, Session& out)
{
    out.dir = rig.Root() / "session";
    const fs::path report = rig.Root() / "session.report";
    auto made = rig.Lua({"create", out.dir, "session", std::to_string(kFrames), report}, "create");
    if (!made) return made;
    std::vector<float> signal(kFrames, 0.0f);
    for (size_t c : clicks)
        signal[c] = 0.25f;
    int sources = 0;
    for (const auto& [key, f] : Fields(report))
    {
        if (key == "module") out.module = f.at(0);
        if (key == "param") out.titles.push_back(f.at(1));
        if (key != "source") continue;
        ++sources;
        SF_INFO info{0, kRate, 1, SF_FORMAT_WAV | SF_FORMAT_FLOAT, 0, 0}; // mono float WAV at 48 kHz
        SNDFILE* file = sf_open(f.at(1).c_str(), SFM_WRITE, &info);
        if (file == nullptr) return ::testing::AssertionFailure() << "cannot write " << f.at(1);
        const bool whole = sf_writef_float(file, signal.data(), kFrames) == static_cast<sf_count_t>(kFrames);
        sf_close(file);
        if (!whole) return ::testing::AssertionFailure() << "short write to " << f.at(1);
    }
    if (sources != 2) return ::testing::AssertionFailure() << "the session has no stereo region";
    return ::testing::AssertionSuccess();
}

// One line of a command file for session.lua, its fields split by tabs.
std::string Line(std::initializer_list<std::string> fields)
{
    std::string line;
    for (const auto& f : fields)
        line += (line.empty() ? "" : "\t") + f;
    return line + "\n";
}
std::string Set(const std::string& title, double value)
{
    return Line({"set", title, (std::ostringstream() << value).str()});
}

// Ardour's view of every parameter, by title (its control's value and what its plug-in object
// reports), and the latency it uses.
struct Values
{
    int latency = -1;
    std::map<std::string, std::pair<double, double>> byTitle;
};

::testing::AssertionResult ReadValues(const fs::path& path, Values& out)
{
    for (const auto& [key, f] : Fields(path))
    {
        if (key == "latency") out.latency = std::stoi(f.at(0));
        if (key == "value") out.byTitle[f.at(0)] = {std::stod(f.at(1)), std::stod(f.at(2))};
    }
    if (out.latency < 0 || out.byTitle.empty()) return ::testing::AssertionFailure() << "incomplete " << path;
    return ::testing::AssertionSuccess();
}

// Where the samples land. At 48 kHz the plug-in reports 80 samples of latency (48 of look-ahead
// plus one 32-sample block of its framing). Its path delays the input by 112 samples
// (quorvex-render, which compensates nothing, puts the dry click 112 samples late): 32 more than
// it reports, a block of its framing that it keeps to itself. Ardour compensates the reported 80,
// so in an export the dry click sits 112 - 80 = 32 samples after its place on the timeline.
constexpr int kReportedLatency = 80;
constexpr size_t kDryOffset = 32;
// The slot's delay filters ("Delay Lopass" at 20 kHz, "Delay Hipass" at 20 Hz, set below) smear
// an echo slightly: its peak lands 3 samples after the nominal delay time, and in quorvex-render
// too, so it is the plug-in's and not Ardour's. At these settings each repeat lands exactly one
// delay time after the one before it: the 3 samples do not add up.
constexpr size_t kEchoFilterOffset = 3;

size_t DryAt(size_t click)
{
    return click + kDryOffset;
}
size_t EchoAt(size_t click, double delayMs)
{
    return DryAt(click) + Ms(delayMs) + kEchoFilterOffset;
}

// The peak of a side (0 left, 1 right) within 5 ms of frame `at`: an echo that moved by a sample
// shows up as a wrong position.
Peak Around(const Audio& x, int side, size_t at)
{
    Peak p{at - Ms(5), 0.0};
    for (size_t i = at - Ms(5); i < std::min(at + Ms(5), x.Frames()); ++i)
        if (std::abs(x.At(i, side)) > p.level) p = {i, std::abs(x.At(i, side))};
    return p;
}
} // namespace

// The whole path of a session through Ardour: scan, parameters set by title, echoes where the
// settings put them, automation, values the plug-in writes by itself, two exports in one process,
// save, and a new process that reopens the session and must hold the same values and export the
// same samples. (How long the echoes ring and where each route sends them is measured in the
// engine suite's slot paths; here what counts is that Ardour's settings, latency compensation and
// automation reach the plug-in and come back out.)
//
// The values the plug-in writes: slot 1 synced at Ardour's default 120 bpm with "Timebase 1" at
// 1/16 and both "DelayFactor" counts at 4 (4 x 1/16 = one beat = 500 ms), while the free times
// hold 200 and 300 ms unheard. Switching "Timebase 1" to OFF makes the plug-in keep what was heard:
// it writes 500 ms into "Delay TimeL 1" and "Delay TimeR 1" itself. Ardour's view of those two
// parameters must follow, or a save stores times that are not the ones playing and a reopened
// session sounds different.
TEST(ArdourSession, EchoesAutomationWrittenTimesSaveAndReopen)
{
    ArdourRig rig;
    ASSERT_TRUE(rig.Prepare());
    const size_t clickA = Ms(250), clickB = Ms(2000);
    Session s;
    ASSERT_TRUE(CreateSession(rig, {clickA, clickB}, s));
    // Ardour took the plug-in from the scan of our link, not from some other installed copy.
    EXPECT_EQ(s.module, (rig.Root() / "home/.vst3/Quorvex.vst3/Contents/x86_64-linux/Quorvex.so").string());
    const auto file = [&](const std::string& name) { return (rig.Root() / name).string(); };
    const auto exportTo = [&](const std::string& name) {
        return Line({"export", file(name + ".wav"), std::to_string(kFrames)});
    };
    const auto run = [&](const std::string& commands, const std::string& tag)
    {
        std::ofstream(file(tag + ".commands")) << commands;
        return rig.Lua({"run", s.dir, "session", file(tag + ".commands"), kPresetId}, tag);
    };

    // One slot of plain echoes, 200 ms left and 300 ms right: free time, no delay-time wobble, the
    // delay filters wide open, half the input into the delay and the direct signal kept.
    std::string commands;
    for (const auto& [title, value] : {std::pair{"Timebase 1", 0.0},
                                       {"Delay TimeL 1", 200.0},
                                       {"Delay TimeR 1", 300.0},
                                       {"Feedback 1", 50.0},
                                       {"Direct In 1", 50.0},
                                       {"Modulation 1", 0.0},
                                       {"Delay Lopass 1", 20000.0},
                                       {"Delay Hipass 1", 20.0}})
    {
        EXPECT_NE(std::find(s.titles.begin(), s.titles.end(), title), s.titles.end())
            << "Ardour lists no parameter titled \"" << title << "\"";
        commands += Set(title, value);
    }
    commands += Line({"settle"}) + exportTo("plain");
    // Direct In 1 in Play mode: 50 % up to 1 s, then closed within 10 ms, so click A is heard in
    // the delay and click B is not. The automation stays for the rest of the session.
    commands += Line({"automate", "Direct In 1", "0", "50", std::to_string(Ms(1000)), "50",
                      std::to_string(Ms(1010)), "0"}) +
                Line({"settle"}) + exportTo("automated");
    // Without the feedback: synced, then switched to free times.
    commands += Set("Feedback 1", 0) + Set("Timebase 1", 2) + Set("DelayFactorL 1", 4) +
                Set("DelayFactorR 1", 4) + Line({"settle"}) + exportTo("synced") + Set("Timebase 1", 0) +
                Line({"settle"}) + Line({"values", file("before.values")}) + exportTo("free") +
                Line({"save"}) + Line({"settle"}) + exportTo("saved");
    ASSERT_TRUE(run(commands, "session-run"));
    ASSERT_TRUE(
        run(Line({"settle"}) + Line({"values", file("after.values")}) + exportTo("reopened"), "reopen"));

    Values before, after;
    ASSERT_TRUE(ReadValues(rig.Root() / "before.values", before));
    ASSERT_TRUE(ReadValues(rig.Root() / "after.values", after));
    EXPECT_EQ(before.latency, kReportedLatency);
    // Each export float stereo at 48 kHz (so that exports compare bit for bit), read whole.
    std::map<std::string, Audio> wav;
    for (const char* name : {"plain", "automated", "synced", "free", "saved", "reopened"})
    {
        const Audio& w = wav[name] = ReadAudio(rig.Root() / (std::string(name) + ".wav"));
        ASSERT_TRUE(w.channels == 2 && w.rate == kRate && (w.format & SF_FORMAT_SUBMASK) == SF_FORMAT_FLOAT)
            << name << ": " << w.channels << " channels at " << w.rate << " Hz, format " << w.format;
        ASSERT_EQ(w.Frames(), kFrames) << name;
    }
    const Audio &p = wav["plain"], &e = wav["automated"];
    for (size_t click : {clickA, clickB})
        for (const auto& [side, ms] : {std::pair{0, 200.0}, {1, 300.0}})
        {
            SCOPED_TRACE(::testing::Message() << "plain echoes, click at " << click << ", side " << side);
            EXPECT_EQ(Around(p, side, DryAt(click)).at, DryAt(click));
            EXPECT_GT(Around(p, side, DryAt(click)).level, 0.1);
            EXPECT_EQ(Around(p, side, EchoAt(click, ms)).at, EchoAt(click, ms));
            EXPECT_GT(Around(p, side, EchoAt(click, ms)).level, 0.05);
        }
    // Direct In 1 automated from 50 % to 0 at 1 s: click A (before the change) still goes into the
    // delay; click B (after it) is heard dry only: the window of its first echoes holds no more
    // than a trace of click A's tail.
    EXPECT_EQ(Around(e, 0, DryAt(clickB)).at, DryAt(clickB));
    for (const auto& [side, ms] : {std::pair{0, 200.0}, {1, 300.0}})
    {
        EXPECT_NEAR(Around(e, side, EchoAt(clickA, ms)).level, Around(p, side, EchoAt(clickA, ms)).level,
                    1e-6);
        EXPECT_LT(Around(e, side, EchoAt(clickB, ms)).level,
                  0.03 * Around(p, side, EchoAt(clickB, ms)).level);
    }
    // Synced, then free after the switch, in this process, after the save and after the reopen:
    // one echo a side of click A (no feedback) at one beat, and none at the unheard free times.
    for (const char* name : {"synced", "free", "saved", "reopened"})
        for (int side : {0, 1})
        {
            SCOPED_TRACE(::testing::Message() << name << ", side " << side);
            const Audio& x = wav[name];
            EXPECT_EQ(Around(x, side, DryAt(clickA)).at, DryAt(clickA));
            EXPECT_EQ(Around(x, side, EchoAt(clickA, 500)).at, EchoAt(clickA, 500));
            EXPECT_GT(Around(x, side, EchoAt(clickA, 500)).level, 0.05);
            for (double unheard : {200.0, 300.0})
                EXPECT_LT(Around(x, side, EchoAt(clickA, unheard)).level, 1e-4) << unheard << " ms";
        }
    // Ardour's view of the times the plug-in wrote.
    for (const char* title : {"Delay TimeL 1", "Delay TimeR 1"})
    {
        EXPECT_NEAR(before.byTitle[title].first, 500.0, 1e-3) << "Ardour's control of " << title;
        EXPECT_NEAR(before.byTitle[title].second, 500.0, 1e-3) << "Ardour's plug-in object for " << title;
    }
    EXPECT_EQ(before.byTitle["Timebase 1"].first, 0.0);

    // Through the save and the reopen: Ardour's values and the plug-in's are the same, and so are
    // the exports, to the bit; a second export in the same process, right after the save, matches
    // too: exporting twice plays the same, and saving asks the plug-in for its state, which must
    // not change what it plays.
    EXPECT_EQ(before.latency, after.latency);
    EXPECT_EQ(before.byTitle.size(), after.byTitle.size());
    const std::pair<double, double> missing{NAN, NAN}; // equal to nothing
    for (const auto& [title, v] : before.byTitle)
        EXPECT_EQ(after.byTitle.contains(title) ? after.byTitle[title] : missing, v)
            << "\"" << title << "\" as Ardour's control and plug-in object hold it, after the reopen";
    EXPECT_TRUE(wav["free"].samples == wav["saved"].samples)
        << "a second export in the process, after the save";
    EXPECT_TRUE(wav["free"].samples == wav["reopened"].samples) << "after the reopen";
}
