#!/usr/bin/env bash
# Writes the factory preset library, presets/Factory Presets/<Folder>/<Name>.txt, from the sound
# designs below. Each design is a list of settings in the render tool's --set form (key or name =
# value or display text) plus, where a design needs them, the tap and step masks; the tool writes
# every file with the plug-in's own preset writer, so the files are exactly what a saving plug-in
# writes. Run after a release build; the files it writes are the ones checked in.
# Usage: scripts/make-factory-presets.sh [build-dir]
set -euo pipefail
cd "$(dirname "$0")/.."
build="${1:-build/release}"
tool="$build/tools/render/quorvex-render"
out="presets/Factory Presets"
[ -x "$tool" ] || { echo "make-factory-presets: build $tool first" >&2; exit 1; }
scratch="$(mktemp -d)"
trap 'rm -rf "$scratch"' EXIT
rm -rf "$out"
count=0

# preset FOLDER/NAME [taps="8 masks"] [stepfx="4 masks"] [stepmod="8 masks"] -- SETTING...
preset() {
  local name="$1"
  shift
  local taps="65535 65535 65535 65535 65535 65535 65535 65535" stepfx="0 0 0 0" stepmod="0 0 0 0 0 0 0 0"
  while [ "$1" != "--" ]; do
    case "$1" in
      taps=*) taps="${1#taps=}" ;;
      stepfx=*) stepfx="${1#stepfx=}" ;;
      stepmod=*) stepmod="${1#stepmod=}" ;;
      *) echo "make-factory-presets: unknown mask $1" >&2; exit 1 ;;
    esac
    shift
  done
  shift
  printf 'Quorvex V. 1.2.0r14 PresetFile!\nPresetVersion: 14\n\nADDPARAMS:\n\nDelayTaps\n%s \nStepFX\n%s \nStepMod\n%s \n\nEParams:\n' \
    "$taps" "$stepfx" "$stepmod" >"$scratch/masks.txt"
  local args=()
  for s in "$@"; do args+=(--set "$s"); done
  mkdir -p "$out/$(dirname "$name")"
  if ! "$tool" --preset "$scratch/masks.txt" "${args[@]}" --write-preset "$out/$name.txt" >"$scratch/log" 2>&1 ||
    grep -q warning "$scratch/log"; then
    cat "$scratch/log" >&2
    echo "make-factory-presets: $name failed" >&2
    exit 1
  fi
  count=$((count + 1))
}

# Every design sends slot 1 fully into its delay (Direct In above 50 turns the direct part down).
# An effect's fifth knob is its mix (the phaser's is its feedback): designs set it, or the effect
# would pass its input untouched.
echo1=("DirectIn1=60")

# ---- Basics: the forward delay, synced and free, with its filters --------------------------------
preset "Basics/Quarter Note Echo" -- "${echo1[@]}" "Feedback1=45"
preset "Basics/Dotted Eighth Echo" -- "${echo1[@]}" "DelayFactorL1=3" "DelayFactorR1=3" "Feedback1=40" \
  "DelayLopass1=6000"
preset "Basics/Slapback" -- "DirectIn1=50" "Timebase1=MS" "DelayTimeL1=95" "DelayTimeR1=110" "Feedback1=8" \
  "DelayHipass1=180" "Level1=-1"
preset "Basics/Dark Repeats" -- "${echo1[@]}" "Feedback1=62" "DelayLopass1=1600" "DelayHipass1=120"
preset "Basics/Stereo Doubler" -- "DirectIn1=50" "Timebase1=MS" "DelayTimeL1=13" "DelayTimeR1=21" \
  "Feedback1=0" "DelayOn1=ON" "Level1=0"
preset "Basics/Proportional Dual Echo" -- "${echo1[@]}" "Timebase1=MS" "DelayTimeL1=250" "DelayTimeR1=375" \
  "FBProportional1=ON" "Feedback1=50"

# ---- Ping-Pong: every crossing route ---------------------------------------------------------------
preset "Ping-Pong/Ping-Pong Eighths" -- "${echo1[@]}" "DelayRoute1=PP-ML" "DelayFactorL1=2" \
  "DelayFactorR1=2" "Feedback1=55"
preset "Ping-Pong/Ping-Pong From The Right" -- "${echo1[@]}" "DelayRoute1=PP-MR" "DelayFactorL1=3" \
  "DelayFactorR1=3" "Feedback1=50" "DelayLopass1=5000"
preset "Ping-Pong/Stereo Ping-Pong" -- "${echo1[@]}" "DelayRoute1=PP-L+R" "Feedback1=50"
preset "Ping-Pong/Left Ping Triplets" -- "${echo1[@]}" "DelayRoute1=PP-L" "Timebase1=1/16t" \
  "DelayFactorL1=4" "DelayFactorR1=4" "Feedback1=50"
preset "Ping-Pong/Right Ping Dotted" -- "${echo1[@]}" "DelayRoute1=PP-R" "Timebase1=1/8d" "DelayFactorL1=2" \
  "DelayFactorR1=2" "Feedback1=45"
preset "Ping-Pong/Wide Pan Bounce" -- "${echo1[@]}" "DelayRoute1=PP-ML" "Width1=100" "GlobalWidth=140" \
  "Feedback1=50" "L/ROffset1=9"

# ---- Rhythmic Taps: the tapped mode, its steps, swing and swell --------------------------------
preset "Rhythmic Taps/Eight Even Taps" -- "DirectIn1=60" "DelayMode1=TAPPED" "DelayTaps1=8" \
  "DelayTapsTime1=125" "Feedback1=35" "TapLevelStepDepth1=100" \
  "TapDelay1Step1Level=100" "TapDelay1Step2Level=85" "TapDelay1Step3Level=72" "TapDelay1Step4Level=60" \
  "TapDelay1Step5Level=50" "TapDelay1Step6Level=40" "TapDelay1Step7Level=32" "TapDelay1Step8Level=25"
preset "Rhythmic Taps/Swung Sixteenths" -- "OutputLevel=-5" "DirectIn1=60" "DelayMode1=TAPPED" "TapTimebase1=1/16" \
  "DelayTaps1=8" "DelayTapsSwing1=65" "Feedback1=30" "TapPanMode1=DUAL MONO" \
  "TapDelay1Step1Pan=80" "TapDelay1Step2Pan=-80" "TapDelay1Step3Pan=60" "TapDelay1Step4Pan=-60" \
  "TapDelay1Step5Pan=40" "TapDelay1Step6Pan=-40" "TapDelay1Step7Pan=20" "TapDelay1Step8Pan=-20"
preset "Rhythmic Taps/Swelling Taps" -- "DirectIn1=60" "DelayMode1=TAPPED" "DelayTaps1=4" \
  "DelayTapsTime1=220" "DelayTapsSwell1=70" "Feedback1=30" "DelayLopass1=5000"
preset "Rhythmic Taps/Accent Pattern" taps="46261 46261 27306 27306 65535 65535 65535 65535" -- \
  "DirectIn1=60" "DelayMode1=TAPPED" "TapTimebase1=1/16" "DelayTaps1=16" "Feedback1=20" \
  "TapDelay1Step1Level=100" "TapDelay1Step3Level=45" "TapDelay1Step5Level=80" "TapDelay1Step7Level=40" \
  "TapDelay1Step9Level=90" "TapDelay1Step11Level=35" "TapDelay1Step13Level=70" "TapDelay1Step15Level=30" \
  "TapDelay1Step2Level=50" "TapDelay1Step4Level=50" "TapDelay1Step6Level=50" "TapDelay1Step8Level=50" \
  "TapDelay1Step10Level=40" "TapDelay1Step12Level=40" "TapDelay1Step14Level=30" "TapDelay1Step16Level=30"
preset "Rhythmic Taps/Bouncing Ball" -- "DirectIn1=60" "DelayMode1=TAPPED" "DelayTaps1=12" \
  "DelayTapsTime1=180" "Feedback1=0" \
  "TapDelay1Step1Time=100" "TapDelay1Step2Time=85" "TapDelay1Step3Time=72" "TapDelay1Step4Time=61" \
  "TapDelay1Step5Time=52" "TapDelay1Step6Time=44" "TapDelay1Step7Time=37" "TapDelay1Step8Time=31" \
  "TapDelay1Step9Time=26" "TapDelay1Step10Time=22" "TapDelay1Step11Time=19" "TapDelay1Step12Time=16" \
  "TapDelay1Step1Level=100" "TapDelay1Step2Level=90" "TapDelay1Step3Level=80" "TapDelay1Step4Level=70" \
  "TapDelay1Step5Level=62" "TapDelay1Step6Level=54" "TapDelay1Step7Level=46" "TapDelay1Step8Level=39" \
  "TapDelay1Step9Level=32" "TapDelay1Step10Level=26" "TapDelay1Step11Level=20" "TapDelay1Step12Level=15"
preset "Rhythmic Taps/Filter Step Taps" stepfx="65535 0 0 0" -- "DirectIn1=60" "DelayMode1=TAPPED" \
  "DelayTaps1=8" "DelayTapsTime1=150" "Feedback1=25" "FX1PO=HP/LP 24dB" "FXOnPO1=ON" "FXParam51PO=100" \
  "FXParam11PO=30" "FXParam21PO=40" "TapFXParam11=PARAMETER 1" \
  "TapDelay1Step1FXP1=10" "TapDelay1Step2FXP1=22" "TapDelay1Step3FXP1=34" "TapDelay1Step4FXP1=46" \
  "TapDelay1Step5FXP1=58" "TapDelay1Step6FXP1=70" "TapDelay1Step7FXP1=82" "TapDelay1Step8FXP1=94"
preset "Rhythmic Taps/Crushed Tap Steps" stepfx="43690 0 0 0" -- "OutputLevel=-4" "DirectIn1=60" "DelayMode1=TAPPED" \
  "TapTimebase1=1/8" "DelayTaps1=6" "Feedback1=25" "FX1PO=LOFI I" "FXOnPO1=ON" "FXParam51PO=100" "FXParam11PO=50" \
  "FXParam21PO=50" "TapFXParam11=PARAMETER 1" "TapDelay1Step2FXP1=80" "TapDelay1Step4FXP1=60" \
  "TapDelay1Step6FXP1=90"

# ---- Modulated: LFOs on time, pan, feedback and effects ------------------------------------------
preset "Modulated/Chorus Echo" -- "${echo1[@]}" "Feedback1=35" "LFOOn1=ON" "LFOWave1=SIN1" "LFORate1=0.8" \
  "LFODepth1=60" "LFOPol1=BI (+/-)" "DelayTimeLModSource1=LFO1" "DelayTimeLModDepth1=25" \
  "LFOOn2=ON" "LFOWave2=SIN1" "LFORate2=0.9" "LFOPhase2=50" "LFODepth2=60" "LFOPol2=BI (+/-)" \
  "DelayTimeRModSource1=LFO2" "DelayTimeRModDepth1=25"
preset "Modulated/Auto-Pan Echo" -- "${echo1[@]}" "Feedback1=50" "LFOOn1=ON" "LFOWave1=TRIANGLE" \
  "LFORate1=0.4" "LFODepth1=100" "LFOPol1=BI (+/-)" "PanningModSource1=LFO1" "PanningModDepth1=95"
preset "Modulated/Seasick Tape" -- "DirectIn1=60" "Timebase1=MS" "DelayTimeL1=330" "DelayTimeR1=345" \
  "Feedback1=55" "DelayLopass1=3200" "LFOOn1=ON" "LFOWave1=S&H" "LFORate1=3" "LFOGlide1=120" \
  "LFODepth1=70" "LFOPol1=BI (+/-)" "DelayTimeLModSource1=LFO1" "DelayTimeLModDepth1=20" \
  "DelayTimeRModSource1=LFO1" "DelayTimeRModDepth1=-20"
preset "Modulated/Wah Filter Echo" -- "${echo1[@]}" "Feedback1=50" "FX1PO=MULTI SVF" "FXOnPO1=ON" "FXParam51PO=100" \
  "FXParam11PO=45" "FXParam21PO=70" "LFOOn1=ON" "LFOSync1=STRAIGHT" "LFORate1=4" "LFOWave1=SIN1" \
  "LFODepth1=90" "FXParam1ModSource1PO=LFO1" "FXParam1ModDepth1PO=80"
preset "Modulated/Breathing Feedback" -- "${echo1[@]}" "Feedback1=45" "LFOOn1=ON" "LFOWave1=SIN2" \
  "LFORate1=0.15" "LFODepth1=100" "FeedbackModSource1=LFO1" "FeedbackModDepth1=60"
preset "Modulated/Main Mod Warble" -- "${echo1[@]}" "Feedback1=50" "Modulation1=100" "MainModRate=55" \
  "MainModDepth=80" "DelayLopass1=4500"

# ---- Character: effects in PRE, FB and POST -------------------------------------------------------
preset "Character/Saturated Tape" -- "${echo1[@]}" "Feedback1=38" "DelayLopass1=4000" "FX1FB=SATURATE" \
  "FXOnFB1=ON" "FXParam51FB=80" "FXParam11FB=12" "FXParam21FB=40"
preset "Character/Bitcrushed Echo" -- "${echo1[@]}" "Feedback1=45" "FX1PO=LOFI II" "FXOnPO1=ON" "FXParam51PO=60" "Level1=-6" \
  "FXParam11PO=60" "FXParam21PO=55"
preset "Character/Ring Mod Repeats" -- "${echo1[@]}" "Feedback1=45" "FX1FB=RING MOD" "FXOnFB1=ON" "FXParam51FB=100" \
  "FXParam11FB=35" "FXParam21FB=60"
preset "Character/Destroyed Dub" -- "${echo1[@]}" "Feedback1=36" "DelayLopass1=2200" "FX1FB=DESTROY" \
  "FXOnFB1=ON" "FXParam51FB=70" "FXParam11FB=10" "FXParam21FB=50"
preset "Character/Comb Resonator" -- "${echo1[@]}" "Feedback1=40" "FX1PR=COMB" "FXOnPR1=ON" "FXParam51PR=100" \
  "FXParam11PR=40" "FXParam21PR=60"
preset "Character/Phased Echo" -- "${echo1[@]}" "Feedback1=50" "FX1PO=PHASE" "FXOnPO1=ON" "FXParam51PO=45" \
  "FXParam11PO=30" "FXParam21PO=60" "FXParam31PO=50"
preset "Character/Vowel Talk" -- "${echo1[@]}" "Feedback1=45" "FX1PO=VOWEL" "FXOnPO1=ON" "FXParam41PO=60" "FXParam51PO=30" "FXParam11PO=40" \
  "FXParam21PO=60" "LFOOn1=ON" "LFOWave1=TRIANGLE" "LFORate1=0.5" "LFODepth1=90" \
  "FXParam1ModSource1PO=LFO1" "FXParam1ModDepth1PO=70"
preset "Character/Squashed Feedback" -- "${echo1[@]}" "Feedback1=70" "FX1FB=COMPRESSOR" "FXOnFB1=ON" "FXParam51FB=100" \
  "FXParam11FB=60" "FXParam21FB=50" "DelayLopass1=5000"
preset "Character/Noisy Drive" -- "${echo1[@]}" "Feedback1=45" "FX1PR=DRIVE LP+HP" "FXOnPR1=ON" "FXParam51PR=100" \
  "FXParam11PR=55" "FXParam21PR=40" "FX1FB=NOISE" "FXOnFB1=ON" "FXParam51FB=100" "FXParam11FB=20"

# ---- Pitch: shifting in the feedback path, grains and reverse ------------------------------------
preset "Pitch/Octave Climb" -- "${echo1[@]}" "Feedback1=50" "FX1FB=PITCH SHIFT" "FXOnFB1=ON" "FXParam51FB=100" \
  "FXParam11FB=75" "FXParam21FB=100" "DelayLopass1=8000"
preset "Pitch/Stereo Fifths" -- "${echo1[@]}" "Feedback1=45" "FX1FB=PITCH SHIFT ST" "FXOnFB1=ON" "FXParam51FB=100" \
  "FXParam11FB=64" "FXParam21FB=100"
preset "Pitch/Frequency Shift Spiral" -- "${echo1[@]}" "Feedback1=55" "FX1FB=FREQ SHIFT" "FXOnFB1=ON" "FXParam51FB=100" \
  "FXParam11FB=56" "FXParam21FB=50"
preset "Pitch/Grain Octave Cloud" -- "${echo1[@]}" "DelayMode1=GRAIN" "GrainSize1=90" "GrainSpeed1=1" \
  "GrainFade1=20" "Feedback1=40" "DelayLopass1=9000"
preset "Pitch/Backward Echo" -- "${echo1[@]}" "DelayMode1=BACKWARD" "ReverseX-Fade1=40" "Feedback1=40"
preset "Pitch/Grain Shimmer Down" -- "${echo1[@]}" "DelayMode1=GRAIN" "GrainSize1=140" "GrainSpeed1=-1" \
  "GrainPosition1=30" "GrainFade1=30" "Feedback1=35" "LFOOn1=ON" "LFORate1=0.3" "LFODepth1=80" \
  "GrainSizeModSource1=LFO1" "GrainSizeModDepth1=50"

# ---- Spaces: the master reverbs behind the echoes -------------------------------------------------
preset "Spaces/Small Room Echo" -- "${echo1[@]}" "Feedback1=30" "MasterFX=ROOM" "MasterFXP1=35" \
  "MasterFXP2=50" "MasterFXLevel=80" "M-FXSend1=60"
preset "Spaces/Big Hall Delay" -- "OutputLevel=-4" "${echo1[@]}" "Feedback1=40" "MasterFX=REVERB" "MasterFXP1=45" \
  "MasterFXP4=25" "MasterFXLevel=90" "M-FXSend1=70"
preset "Spaces/Quorvex Wash" -- "${echo1[@]}" "Feedback1=35" "MasterFX=QUORVEX" "MasterFXP1=40" \
  "MasterFXP2=50" "MasterFXLevel=85" "M-FXSend1=80"
preset "Spaces/Reverse Cathedral" -- "OutputLevel=-6" "DirectIn1=70" "DelayMode1=BACKWARD" "ReverseX-Fade1=60" "Feedback1=35" \
  "MasterFX=REVERB" "MasterFXP1=60" "MasterFXP4=30" "MasterFXLevel=100" "M-FXSend1=90" \
  "MasterFXSource1=DELAY"
preset "Spaces/Grain Cloud Hall" -- "OutputLevel=-5" "${echo1[@]}" "DelayMode1=GRAIN" "GrainSize1=200" "GrainSpeed1=0.5" \
  "GrainFade1=40" "Feedback1=30" "MasterFX=REVERB" "MasterFXP1=50" "MasterFXLevel=90" "M-FXSend1=85"
preset "Spaces/Ambient Mix Network" -- "DirectIn1=60" "DelayRoute1=MIX" "Feedback1=45" "SlotOn2=ON" \
  "DirectIn2=60" "Timebase2=MS" "DelayTimeL2=620" "DelayTimeR2=740" "DelayRoute2=MIX" "Feedback2=40" \
  "Panning1=-40" "Panning2=40" "MasterFX=ROOM" "MasterFXP1=40" "MasterFXLevel=70"

# ---- Ducking: the envelope followers turn the echoes down while you play ------------------------
preset "Ducking/Ducked Quarter Echo" -- "${echo1[@]}" "Feedback1=50" "ENV1On=ON" "ENV1Source=IN MONO" \
  "ENV1Attack=5" "ENV1Decay=250" "ENV1Gain=12" "LevelModSource1=ENV1" "LevelModDepth1=-95"
preset "Ducking/Sidechain Pump Echo" -- "${echo1[@]}" "Feedback1=55" "ENV1On=ON" "ENV1Source=SIDECHAIN" \
  "ENV1Attack=2" "ENV1Decay=180" "ENV1Gain=18" "LevelModSource1=ENV1" "LevelModDepth1=-100"
preset "Ducking/Ducked Ping-Pong Tail" -- "${echo1[@]}" "DelayRoute1=PP-ML" "Feedback1=55" "ENV2On=ON" \
  "ENV2Source=IN MONO" "ENV2Attack=10" "ENV2Decay=400" "ENV2Gain=10" "LevelModSource1=ENV2" \
  "LevelModDepth1=-90" "M-FXSendModSource1=ENV2" "M-FXSendModDepth1=-80" "MasterFX=ROOM" "MasterFXP1=30"

# ---- Gated: step gates on level and pan -----------------------------------------------------------
gate=("Gate1On=ON" "Gate1Timebase=1/16" "Gate1Length=16" "Gate1Step1=100" "Gate1Step2=0" "Gate1Step3=70"
  "Gate1Step4=0" "Gate1Step5=100" "Gate1Step6=40" "Gate1Step7=0" "Gate1Step8=80" "Gate1Step9=100"
  "Gate1Step10=0" "Gate1Step11=60" "Gate1Step12=0" "Gate1Step13=100" "Gate1Step14=0" "Gate1Step15=90"
  "Gate1Step16=30")
preset "Gated/Trance Gate Echo" -- "OutputLevel=-4" "${echo1[@]}" "Feedback1=50" "${gate[@]}" "LevelModSource1=GATE1" \
  "LevelModDepth1=100"
preset "Gated/Stepped Pan Gate" -- "${echo1[@]}" "DelayRoute1=PP-L+R" "Feedback1=45" "${gate[@]}" \
  "GATEPol1=BI (+/-)" "PanningModSource1=GATE1" "PanningModDepth1=90"
preset "Gated/Gliding Feedback Steps" -- "${echo1[@]}" "Feedback1=35" "Gate2On=ON" "Gate2Timebase=1/8" \
  "Gate2Length=8" "Gate2Glide=60" "Gate2Step1=100" "Gate2Step2=20" "Gate2Step3=60" "Gate2Step4=0" \
  "Gate2Step5=80" "Gate2Step6=10" "Gate2Step7=50" "Gate2Step8=0" "FeedbackModSource1=GATE2" \
  "FeedbackModDepth1=55"

# ---- Feedback Matrix: slots feeding each other ----------------------------------------------------
preset "Feedback Matrix/Cross-Feed Quartet" -- "DirectIn1=60" "SlotOn2=ON" "SlotOn3=ON" "SlotOn4=ON" \
  "DirectIn2=60" "DirectIn3=60" "DirectIn4=60" "Timebase1=MS" "Timebase2=MS" "Timebase3=MS" "Timebase4=MS" \
  "DelayTimeL1=310" "DelayTimeR1=310" "DelayTimeL2=470" "DelayTimeR2=470" "DelayTimeL3=530" \
  "DelayTimeR3=530" "DelayTimeL4=690" "DelayTimeR4=690" "Feedback1=50" "Feedback2=50" "Feedback3=50" \
  "Feedback4=50" "FBMatrix1=ON" "FBMatrix2=ON" "FBMatrix3=ON" "FBMatrix4=ON" "Slot1FB2=70" "Slot2FB3=70" \
  "Slot3FB4=70" "Slot4FB1=70" "Panning1=-60" "Panning2=60" "Panning3=-30" "Panning4=30" "Level1=-6" \
  "Level2=-6" "Level3=-6" "Level4=-6" "DelayLopass1=6000" "DelayLopass2=5000" "DelayLopass3=4000" \
  "DelayLopass4=3000"
preset "Feedback Matrix/Two Slot Exchange" -- "DirectIn1=60" "SlotOn2=ON" "Input2=STEREO" "DirectIn2=60" \
  "DelayFactorL2=6" "DelayFactorR2=6" "Feedback1=40" "Feedback2=40" "FBMatrix1=ON" "FBMatrix2=ON" \
  "Slot1FB1=30" "Slot2FB1=60" "Slot1FB2=60" "Slot2FB2=30" "Panning1=-50" "Panning2=50" "FX2FB=LOFI I" \
  "FXOnFB2=ON" "FXParam52FB=100" "FXParam12FB=40"
preset "Feedback Matrix/Serial Slot Chain" -- "DirectIn1=60" "SlotOn2=ON" "Input2=SLOT 1" "DirectIn2=70" \
  "SlotOn3=ON" "Input3=SLOT 2" "DirectIn3=70" "Feedback1=30" "Feedback2=30" "Feedback3=30" \
  "DelayFactorL2=3" "DelayFactorR2=3" "DelayFactorL3=2" "DelayFactorR3=2" "DirectOut1=DELAY" \
  "DirectOut2=DELAY" "Level1=-9" "Level2=-6" "FBMatrix3=ON" "Slot1FB3=40" "Slot3FB3=30"

# ---- Experimental: logic modules, mono routes, time scaling ---------------------------------------
preset "Experimental/Logic Gate Times LFO" -- "${echo1[@]}" "Feedback1=45" "LFOOn1=ON" "LFOWave1=SIN1" \
  "LFORate1=2" "LFODepth1=100" "${gate[@]}" "LogicOn1=ON" "Logic1Type=MULTIPLY" "Logic1Source1=LFO1" \
  "Logic1Source1Depth=100" "Logic1Source2=GATE1" "Logic1Source2Depth=100" "Logic1Depth=100" \
  "Logic1Smooth=5" "DelayTimeLModSource1=LOGIC1" "DelayTimeLModDepth1=35" "PanningModSource1=LOGIC1" \
  "PanningModDepth1=70"
preset "Experimental/Logic Max Of Two LFOs" -- "${echo1[@]}" "Feedback1=50" "LFOOn1=ON" "LFOWave1=RAMP" \
  "LFORate1=0.7" "LFODepth1=100" "LFOOn2=ON" "LFOWave2=SAW2" "LFORate2=1.3" "LFODepth2=100" \
  "LogicOn4=ON" "Logic4Type=MAX" "Logic4Source1=LFO1" "Logic4Source1Depth=100" "Logic4Source2=LFO2" \
  "Logic4Source2Depth=100" "Logic4Depth=100" "FX1PO=MULTI 12dB" "FXOnPO1=ON" "FXParam51PO=100" "FXParam11PO=40" \
  "FXParam1ModSource1PO=LOGIC4" "FXParam1ModDepth1PO=75"
preset "Experimental/Mono Left Tail" -- "${echo1[@]}" "DelayRoute1=M-L" "Feedback1=50" "Panning1=-70"
preset "Experimental/Mono Right Tail" -- "${echo1[@]}" "DelayRoute1=M-R" "Feedback1=50" "Panning1=70" \
  "DelayFactorL1=3" "DelayFactorR1=3"
preset "Experimental/Half Speed Time Scale" -- "${echo1[@]}" "Feedback1=40" "DelayTimeScale=-100" \
  "FeedbackMaster=10"
preset "Experimental/Rectified Rattle" -- "${echo1[@]}" "Feedback1=40" "FX1PO=RECTIFY" "FXOnPO1=ON" "FXParam51PO=100" \
  "FXParam11PO=60" "FX1PR=WAVE SHAPE" "FXOnPR1=ON" "FXParam51PR=100" "FXParam11PR=50"

# ---- Master: equalisers, drive and the limiter on the sum ---------------------------------------
preset "Master/Fixed EQ Echo" -- "OutputLevel=-4" "${echo1[@]}" "Feedback1=45" "MasterFX=FIX EQ" "MasterFXP1=70" \
  "MasterFXP2=40" "MasterFXLevel=100" "M-FXSend1=100"
preset "Master/Two Band EQ Echo" -- "OutputLevel=-4" "${echo1[@]}" "Feedback1=45" "MasterFX=2 BAND EQ" "MasterFXP1=30" \
  "MasterFXP2=70" "MasterFXP3=60" "MasterFXP4=40" "MasterFXLevel=100" "M-FXSend1=100"
preset "Master/Shelved Echo" -- "${echo1[@]}" "Feedback1=45" "MasterFX=LO/HI SHELF" "MasterFXP1=35" \
  "MasterFXP2=65" "MasterFXLevel=100" "M-FXSend1=100"
preset "Master/Driven Sum" -- "${echo1[@]}" "Feedback1=45" "MasterFX=DRIVE LP+HP" "MasterFXP1=60" \
  "MasterFXP2=40" "MasterFXP3=80" "MasterFXP4=100" "MasterFXLevel=90" "M-FXSend1=90"
preset "Master/Limited Loud Echo" -- "DirectIn1=55" "Feedback1=65" "InputGain1=6" "Level1=6" \
  "LimiterOn=FAST" "LimiterLevel=9" "OutputLevel=-3"
preset "Master/Gentle Limiter Bus" -- "${echo1[@]}" "Feedback1=50" "SlotOn2=ON" "DirectIn2=60" \
  "DelayFactorL2=6" "DelayFactorR2=6" "DelayRoute2=PP-ML" "LimiterOn=SLOW II" "LimiterLevel=4"

echo "make-factory-presets: wrote $count presets to $out"
