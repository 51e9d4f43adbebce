#pragma once
// A preset folder of a test's own and preset files of any version, for the suites that load and
// save presets through the whole plug-in.

#include <fstream>
#include <sstream>
#include <string>

#include "EngineRig.h"
#include "state/PresetFixtures.h"

namespace engine_rig
{
using preset_test::TempFolder;

// A preset folder of the test's own; instances made while it lives use it.
class PresetRig
{
  public:
    PresetRig() { setenv("QUORVEX_PRESET_DIR", mDir.Path().c_str(), 1); }
    QuorvexPtr Make() const
    {
        QuorvexPtr plug(new Quorvex());
        plug->SetSampleRate(kRate);
        return plug;
    }
    const TempFolder& Dir() const { return mDir; }
    std::string Read(const std::string& relative) const
    {
        std::ifstream file(mDir.Path() + relative, std::ios::binary);
        std::ostringstream text;
        text << file.rdbuf();
        return text.str();
    }

  private:
    TempFolder mDir;
};

inline std::string File(int version, const std::string& body)
{
    return "Quorvex V. 1.0.0r" + std::to_string(version) +
           " PresetFile!\nPresetVersion: " + std::to_string(version) +
           "\n\nADDPARAMS:\n\nLastPage\n12\n\nEParams:\n" + body;
}
} // namespace engine_rig
