#pragma once
// One envelope modulator: an Envelope follower fed from one engine audio buffer, giving a
// modulation block (its output), a one-block trigger pulse on each rise of the level to full
// scale, and optionally its band-limited input for listening on the master outputs.
// The seventeen source choices are a table; the engine resolves a choice to a buffer pointer
// with ResolveEnvelopeSource and hands it over with SetSourceBuffer.
// Threads: setters from the parameter path; Process and Reset on the audio thread. Nothing
// allocates.

#include "dsp/Envelope.h"
#include "dsp/Relaxed.h"

#include <array>
#include <cstdint>
#include <span>

// "Envelope Source" menu values.
enum EnvelopeSourceChoice : int
{
    kEnvSrcInMono = 0,
    kEnvSrcInLeft,
    kEnvSrcInRight,
    kEnvSrcSlot1Mono, // each slot: mono, left, right; slot k starts at 3 + 3 (k - 1)
    kEnvSrcSlot1Left,
    kEnvSrcSlot1Right,
    kEnvSrcSlot2Mono,
    kEnvSrcSlot2Left,
    kEnvSrcSlot2Right,
    kEnvSrcSlot3Mono,
    kEnvSrcSlot3Left,
    kEnvSrcSlot3Right,
    kEnvSrcSlot4Mono,
    kEnvSrcSlot4Left,
    kEnvSrcSlot4Right,
    kEnvSrcSidechain,
    kEnvSrcMasterFx,
    kNumEnvSources
};

// Which engine buffer a choice reads.
enum class EnvBufferKind : int
{
    kInputMono, // sum of the input pair
    kInputLeft,
    kInputRight,
    kSlotMono, // the slot's mono sum
    kSlotLeft, // the slot's output channels, as currently routed
    kSlotRight,
    kSidechain, // the third input
    kMasterFx,  // the master effect's output
};

struct EnvSourceEntry
{
    const char* label;
    EnvBufferKind kind;
    int slot; // 0..3 for slot buffers, -1 otherwise
};

inline constexpr std::array<EnvSourceEntry, kNumEnvSources> kEnvSourceTable = {{
    {"IN MONO", EnvBufferKind::kInputMono, -1},
    {"IN LEFT", EnvBufferKind::kInputLeft, -1},
    {"IN RIGHT", EnvBufferKind::kInputRight, -1},
    {"SLOT1 M", EnvBufferKind::kSlotMono, 0},
    {"SLOT1 L", EnvBufferKind::kSlotLeft, 0},
    {"SLOT1 R", EnvBufferKind::kSlotRight, 0},
    {"SLOT2 M", EnvBufferKind::kSlotMono, 1},
    {"SLOT2 L", EnvBufferKind::kSlotLeft, 1},
    {"SLOT2 R", EnvBufferKind::kSlotRight, 1},
    {"SLOT3 M", EnvBufferKind::kSlotMono, 2},
    {"SLOT3 L", EnvBufferKind::kSlotLeft, 2},
    {"SLOT3 R", EnvBufferKind::kSlotRight, 2},
    {"SLOT4 M", EnvBufferKind::kSlotMono, 3},
    {"SLOT4 L", EnvBufferKind::kSlotLeft, 3},
    {"SLOT4 R", EnvBufferKind::kSlotRight, 3},
    {"SIDECHAIN", EnvBufferKind::kSidechain, -1},
    {"MASTER FX", EnvBufferKind::kMasterFx, -1},
}};

// The engine's candidate buffers at the moment of selection. Slot left/right are the pointers
// the slot's output routing holds then.
struct EnvSourceBuffers
{
    const double* inMono = nullptr;
    const double* inLeft = nullptr;
    const double* inRight = nullptr;
    std::array<const double*, 4> slotMono{};
    std::array<const double*, 4> slotLeft{};
    std::array<const double*, 4> slotRight{};
    const double* sidechain = nullptr;
    const double* masterFx = nullptr;
};

// The buffer a choice reads, or null for a choice outside the menu or a buffer not provided.
const double* ResolveEnvelopeSource(int choice, const EnvSourceBuffers& buffers);

class EnvelopeSource
{
  public:
    EnvelopeSource();

    // Buffer of gBlockLen samples; null = off (the level reads 0 and nothing runs).
    void SetSourceBuffer(const double* buffer) { mSourceBuffer = buffer; }
    const double* SourceBuffer() const { return mSourceBuffer; }

    // Parameter laws: dB to linear, ms passed on, Hz normalised to the 0..1 frequency control.
    void SetGain(double dB);
    void SetThreshold(double dB);
    void SetAttack(double ms) { mEnv.SetAttack(ms); }
    void SetDecay(double ms) { mEnv.SetRelease(ms); }
    void SetHold(double ms) { mEnv.SetHold(ms); }
    void SetLocut(double hz);
    void SetHicut(double hz);
    void SetDepth(double percent) { mEnv.SetDepth(percent / 100.0); }
    // "Env Mode": 0 "FOLLOWER", 1 "GATE".
    void SetMode(int mode) { mEnv.SetGateMode(mode == 1); }
    // Inverse of the 50 x 400^x frequency law.
    static double NormaliseFreq(double hz);

    void SetListen(bool on) { mListen = on; }
    bool Listening() const { return mListen; }

    void Reset();
    // One block, at its end. When listening, the filtered input replaces both master outputs
    // (either may be null).
    void Process(double* masterLeft, double* masterRight);
    // Process on two sources at once, each exactly as its own Process.
    static void ProcessPair(EnvelopeSource& a, EnvelopeSource& b, double* masterLeft, double* masterRight);

    const double* Output() const { return mEnv.mOut; }
    // 1 for the one block in which the level reached full scale, else 0.
    const std::uint8_t* TriggerFlag() const { return &mTriggerFlag; }
    bool Triggered() const { return mTriggerFlag != 0; }
    double Level() const { return mEnv.mEnvOut; }
    Envelope& GetEnvelope() { return mEnv; }

  private:
    // Hands the source to the envelope; false (and the pulse ended) when there is none.
    bool Prepare();
    // The trigger pulse and the listen output after the envelope ran.
    void Finish(double* masterLeft, double* masterRight);

    Envelope mEnv;
    Relaxed<const double*> mSourceBuffer{nullptr};
    Relaxed<bool> mListen{false};
    double mPreviousLevel = 0.0;
    std::uint8_t mTriggerFlag = 0;
};

// The listen control: toggles the chosen envelope's listen and clears every other one's, so at
// most one is heard. Parameter or editor thread.
void ToggleEnvelopeListen(std::span<EnvelopeSource* const> envelopes, int chosen);
