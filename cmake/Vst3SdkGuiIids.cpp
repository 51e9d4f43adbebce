// Interface ids of the SDK's view interfaces. The SDK declares them in its headers; the part of it
// that ships with Debian's package has no source that defines them, so the vst3sdk target adds this.
#include "pluginterfaces/gui/iplugview.h"
#include "pluginterfaces/gui/iplugviewcontentscalesupport.h"

namespace Steinberg
{
DEF_CLASS_IID(IPlugView)
DEF_CLASS_IID(IPlugFrame)
DEF_CLASS_IID(IPlugViewContentScaleSupport)
#if SMTG_OS_LINUX
namespace Linux
{
DEF_CLASS_IID(IEventHandler)
DEF_CLASS_IID(ITimerHandler)
DEF_CLASS_IID(IRunLoop)
} // namespace Linux
#endif
} // namespace Steinberg
