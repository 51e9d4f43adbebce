#pragma once
// queryInterface for the host-side objects that implement one interface besides FUnknown.

#include "pluginterfaces/base/funknown.h"

namespace vst3host
{
template <typename I> Steinberg::tresult QueryAnswer(I* self, const Steinberg::TUID iid, void** obj)
{
    using Steinberg::FUnknown;
    using Steinberg::FUnknownPrivate::iidEqual;
    if (iidEqual(iid, FUnknown::iid) || iidEqual(iid, I::iid))
    {
        *obj = self;
        return Steinberg::kResultOk;
    }
    *obj = nullptr;
    return Steinberg::kNoInterface;
}
} // namespace vst3host
