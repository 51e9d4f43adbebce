#include "fx/FxFactory.h"

#include "fx/Comb.h"
#include "fx/CompressorFx.h"
#include "fx/EQ_ST.h"
#include "fx/FilterFx.h"
#include "fx/HilbertShifter.h"
#include "fx/LPHP.h"
#include "fx/Lofi.h"
#include "fx/MVPitchShifter.h"
#include "fx/PhaseFilter.h"
#include "fx/PhaserC.h"
#include "fx/RingMod.h"
#include "fx/Shaper.h"
#include "reverb/AFdnReverb.h"
#include "reverb/Ambience.h"

std::unique_ptr<DSPShell> CreateFxModule(int type, bool isRight)
{
    switch (type)
    {
    case 1:
        return std::make_unique<HilbertShifter>(isRight);
    case 2:
        return std::make_unique<RingMod>(isRight);
    case 3:
        return std::make_unique<PhaserC>(isRight);
    case 4:
    case 5:
        return std::make_unique<MVPitchShifter>(type == 5, isRight);
    case 6:
    case 14:
    case 15:
    case 16:
    case 17:
    case 18:
    case 19:
    case 20:
    case 21:
    case 23:
    case 24:
        return std::make_unique<Shaper>(type, isRight);
    case 22:
        return std::make_unique<Lofi>(isRight);
    case 29:
    case 30:
    case 31:
    case 32:
    case 33:
    case 36:
        return std::make_unique<FilterFx>(type, isRight);
    case 34:
        return std::make_unique<PhaseFilter>(isRight);
    case 35:
        return std::make_unique<Comb>(isRight);
    case 37:
        return std::make_unique<CompressorFx>(isRight);
    case 56:
        return std::make_unique<LPHP>(isRight);
    case 57:
        return std::make_unique<VARILPHP>(isRight);
    default:
        return nullptr;
    }
}

std::unique_ptr<DSPShell> CreateMasterFxModule(int type)
{
    switch (type)
    {
    case 39:
        return std::make_unique<Ambience>();
    case 40:
        return std::make_unique<AFdnReverb>(16, 7, 1);
    case 41:
        return std::make_unique<AFdnReverb>(10, 2, 4);
    case 42:
    case 43:
    case 44:
        return std::make_unique<EQ_ST>(type - 42);
    case 45:
        return std::make_unique<LPHP_ST>();
    default:
        return nullptr;
    }
}
