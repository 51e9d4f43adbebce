#pragma once
// The patches whose rendered output the golden summaries pin down: each delay mode and route,
// taps with swing, swell and step rows, every effect type in each position kind, each modulator
// kind driving something audible, each master effect and the limiter modes. A patch is a list of
// "Name=value" settings applied in order on a fresh instance (a type before its parameters, as a
// user would set them); a value is a display text of the parameter or a number in its unit.

#include <span>
#include <string_view>
#include <vector>

struct GoldenPatch
{
    std::string_view name;
    std::vector<std::string_view> settings;
};

// Slot 1 audible with echoes: the default patch passes only the direct sound.
#define QV_ECHOES "Direct In 1=50", "Feedback 1=55", "Delay TimeL 1=180", "Delay TimeR 1=270"
// The four slots' effect positions on, with knob values away from every default.
#define QV_FX_ON(s)                                                                                          \
    "SlotOn " #s "=ON", "Direct In " #s "=50", "Feedback " #s "=45", "FXOn PR " #s "=ON",                    \
        "FXOn FB " #s "=ON", "FXOn PO " #s "=ON"
#define QV_FX_KNOBS(s, pos)                                                                                  \
    "FXParam1 " #s " " #pos "=35", "FXParam2 " #s " " #pos "=62", "FXParam3 " #s " " #pos "=44",             \
        "FXParam4 " #s " " #pos "=71", "FXParam5 " #s " " #pos "=80"
#define QV_FX_SLOT(s, pre, fb, post)                                                                         \
    QV_FX_ON(s), "FX" #s " PR=" pre, QV_FX_KNOBS(s, PR), "FX" #s " FB=" fb, QV_FX_KNOBS(s, FB),              \
        "FX" #s " PO=" post, QV_FX_KNOBS(s, PO), "Delay TimeL " #s "=" #s "10",                              \
        "Delay TimeR " #s "=" #s "40"

inline const std::vector<GoldenPatch>& GoldenPatches()
{
    static const std::vector<GoldenPatch> patches = {
        {"default", {}},
        {"forward", {QV_ECHOES}},
        {"backward", {QV_ECHOES, "Delay Mode 1=BACKWARD", "Reverse X-Fade 1=40"}},
        {"grain", {QV_ECHOES, "Delay Mode 1=GRAIN", "Grain Size 1=80", "Grain Speed 1=1", "Grain Fade 1=12"}},
        {"tapped-swing-swell",
         {QV_ECHOES, "Delay Mode 1=TAPPED", "DelayTaps 1=8", "Delay Taps Time 1=60", "Delay Taps Swing 1=60",
          "Delay Taps Swell 1=70", "DelayTap FB 1=LENGTH"}},
        {"tapped-16-steps",
         {QV_ECHOES, "Delay Mode 1=TAPPED", "DelayTaps 1=16", "Delay Taps Time 1=45",
          "TapDelay1 Step2 Time=80", "TapDelay1 Step5 Time=20", "TapDelay1 Step3 Level=30",
          "TapDelay1 Step7 Level=0", "TapDelay1 Step4 Pan=-80", "TapDelay1 Step9 Pan=90",
          "Tap Pan Width 1=70", "Tap Pan Mode 1=DUAL MONO", "Tap Time Step Depth 1=60", "DelayTap FB 1=4"}},
        {"tapped-post-steps",
         {QV_ECHOES, "Delay Mode 1=TAPPED", "DelayTaps 1=6", "Delay Taps Time 1=90", "FXOn PO 1=ON",
          "FX1 PO=MULTI SVF", QV_FX_KNOBS(1, PO), "Tap FX Param1 1=PARAMETER 1", "TapDelay1 Step1 FX P1=10",
          "TapDelay1 Step2 FX P1=90", "TapDelay1 Step3 FX P1=40", "Tap FX P1 Step Depth 1=80"}},
        {"tapped-feedback-fx",
         {QV_ECHOES, "Delay Mode 1=TAPPED", "DelayTaps 1=4", "Delay Taps Time 1=70", "DelayTap FB 1=LENGTH",
          "FXOn FB 1=ON", "FX1 FB=PITCH SHIFT", QV_FX_KNOBS(1, FB)}},
        {"route-pp-l", {QV_ECHOES, "Delay Route 1=PP-L"}},
        {"route-pp-mr", {QV_ECHOES, "Delay Route 1=PP-MR", "Delay Spread 1=7"}},
        {"route-pp-l+r", {QV_ECHOES, "Delay Route 1=PP-L+R", "Delay Lopass 1=3000", "Delay Hipass 1=300"}},
        {"route-mix", {QV_ECHOES, "Delay Route 1=MIX", "Width 1=30", "L/R Offset 1=-4"}},
        {"route-m-r", {QV_ECHOES, "Delay Route 1=M-R", "Panning 1=-40"}},
        {"synced-dotted", {QV_ECHOES, "Timebase 1=1/8d", "Delay Time Scale=20"}},
        {"four-slots",
         {QV_ECHOES, "SlotOn 2=ON", "SlotOn 3=ON", "SlotOn 4=ON", "Direct In 2=50", "Direct In 3=60",
          "Direct In 4=40", "Input 2=SLOT 1", "Input 3=SLOT 1+2", "Input 4=SLOT 1+2+3", "Delay TimeL 2=95",
          "Delay TimeR 3=420", "Delay TimeL 4=333", "Feedback 3=30", "Output Mode 2=SWAP", "Level 4=-6"}},
        {"feedback-matrix",
         {QV_ECHOES, "SlotOn 2=ON", "Direct In 2=50", "Delay TimeL 2=140", "Delay TimeR 2=210",
          "FB Matrix 1=ON", "FB Matrix 2=ON", "Slot1 FB 2=60", "Slot2 FB 1=-45", "Slot2 FB 2=20",
          "Feedback Master=15"}},
        {"fx-a",
         {QV_FX_SLOT(1, "FREQ SHIFT", "FREQ SHIFT", "SATURATE"),
          QV_FX_SLOT(2, "RING MOD", "RING MOD", "RECTIFY"), QV_FX_SLOT(3, "PHASE", "PITCH SHIFT", "DESTROY"),
          QV_FX_SLOT(4, "PITCH SHIFT", "PITCH SHIFT ST", "NOISE")}},
        {"fx-b",
         {QV_FX_SLOT(1, "PITCH SHIFT ST", "SATURATE", "LOFI I"),
          QV_FX_SLOT(2, "SATURATE", "RECTIFY", "LOFI II"), QV_FX_SLOT(3, "RECTIFY", "DESTROY", "WAVE SHAPE"),
          QV_FX_SLOT(4, "DESTROY", "NOISE", "MULTI SVF")}},
        {"fx-c",
         {QV_FX_SLOT(1, "NOISE", "LOFI I", "HP/LP 24dB"), QV_FX_SLOT(2, "LOFI I", "LOFI II", "MULTI 12dB"),
          QV_FX_SLOT(3, "LOFI II", "MULTI 12dB", "PEAK"),
          QV_FX_SLOT(4, "WAVE SHAPE", "DRIVE LP+HP", "DRIVE LP+HP")}},
        {"fx-d",
         {QV_FX_SLOT(1, "MULTI SVF", "COMPRESSOR", "VARAIBLE LPHP"),
          QV_FX_SLOT(2, "HP/LP 24dB", "FREQ SHIFT", "PHASEBP"),
          QV_FX_SLOT(3, "MULTI 12dB", "RING MOD", "COMB"), QV_FX_SLOT(4, "PEAK", "SATURATE", "VOWEL")}},
        {"fx-e",
         {QV_FX_SLOT(1, "DRIVE LP+HP", "LOFI II", "COMPRESSOR"),
          QV_FX_SLOT(2, "VARAIBLE LPHP", "NOISE", "FREQ SHIFT"),
          QV_FX_SLOT(3, "PHASEBP", "RECTIFY", "RING MOD"), QV_FX_SLOT(4, "COMB", "DESTROY", "PHASE")}},
        {"fx-f",
         {QV_FX_SLOT(1, "VOWEL", "PITCH SHIFT", "PITCH SHIFT"),
          QV_FX_SLOT(2, "COMPRESSOR", "MULTI 12dB", "PITCH SHIFT ST")}},
        {"lfo-pan-time",
         {QV_ECHOES, "LFO On 1=ON", "LFO Rate 1=3", "LFO Depth 1=100", "Panning ModSource1=LFO1",
          "Panning ModDepth 1=90", "LFO On 2=ON", "LFO Wave 2=3", "LFO Rate 2=0.7",
          "DelayTimeL ModSource1=LFO2", "Delay TimeL ModDepth 1=40", "LFO Sync 3=STRAIGHT", "LFO On 3=ON",
          "MasterFX=QUORVEX"}},
        {"gate-level",
         {QV_ECHOES, "Gate1 On=ON", "Gate1 Timebase=1/16", "Gate1 Length=8", "Gate1 Step2=0",
          "Gate1 Step5=30", "Gate1 Step7=0", "Level ModSource1=GATE1", "Level ModDepth 1=-100",
          "Gate1 Glide=40"}},
        {"env-ducking",
         {QV_ECHOES, "ENV1 On=ON", "ENV1 Source=IN MONO", "ENV1 Gain=20", "ENV1 Attack=5", "ENV1 Decay=250",
          "Level ModSource1=ENV1", "Level ModDepth 1=-100", "ENV2 On=ON", "ENV2 Mode=GATE",
          "ENV2 Source=SLOT1 M", "Feedback ModSource1=ENV2", "Feedback ModDepth 1=30"}},
        {"logic-feedback",
         {QV_ECHOES, "LFO On 1=ON", "LFO Rate 1=2", "Gate1 On=ON", "Gate1 Step3=10", "Logic On 1=ON",
          "Logic1 Type=MULTIPLY", "Logic1 Source1=LFO1", "Logic1 Source1 Depth=80", "Logic1 Source2=GATE1",
          "Logic1 Source2 Depth=60", "Logic1 Smooth=20", "Feedback ModSource1=LOGIC1",
          "Feedback ModDepth 1=70", "FX1 FB=PITCH SHIFT", "FXOn FB 1=ON", "FXParam1 ModSource1 FB=LOGIC1",
          "FXParam1 ModDepth 1 FB=50"}},
        {"main-mod", {QV_ECHOES, "Modulation 1=100", "Main ModRate=70", "Main ModDepth=90"}},
        {"master-quorvex",
         {QV_ECHOES, "MasterFX=QUORVEX", "MasterFX P1=40", "MasterFX P2=60", "MasterFX P4=30",
          "MasterFX Level=90"}},
        {"master-reverb",
         {QV_ECHOES, "MasterFX=REVERB", "MasterFX P1=30", "MasterFX P2=20", "MasterFX P4=20",
          "MasterFX Level=80"}},
        {"master-room",
         {QV_ECHOES, "MasterFX=ROOM", "MasterFX P1=50", "MasterFX P3=40", "Master FX Source 1=POST FX"}},
        {"master-fix-eq",
         {QV_ECHOES, "MasterFX=FIX EQ", "MasterFX P1=80", "MasterFX P2=30", "MasterFX P3=20",
          "MasterFX P4=70"}},
        {"master-2band-eq",
         {QV_ECHOES, "MasterFX=2 BAND EQ", "MasterFX P1=75", "MasterFX P2=40", "MasterFX P3=25",
          "MasterFX P4=60"}},
        {"master-shelf",
         {QV_ECHOES, "MasterFX=LO/HI SHELF", "MasterFX P1=20", "MasterFX P2=50", "MasterFX P3=85",
          "MasterFX P4=40"}},
        {"master-drive",
         {QV_ECHOES, "MasterFX=DRIVE LP+HP", "MasterFX P1=30", "MasterFX P2=70", "MasterFX P3=90",
          "MasterFX P4=60"}},
        {"limiter-slow-i", {QV_ECHOES, "Limiter On=SLOW I", "Limiter Level=12", "Global Width=150"}},
        {"limiter-slow-ii",
         {QV_ECHOES, "Limiter On=SLOW II", "Limiter Level=18", "Global Width=40", "Dry Level=60"}},
        {"limiter-fast",
         {QV_ECHOES, "Limiter On=FAST", "Limiter Level=24", "Output Level=-3", "Wet Level=70"}},
    };
    return patches;
}

#undef QV_FX_SLOT
#undef QV_FX_KNOBS
#undef QV_FX_ON
#undef QV_ECHOES
