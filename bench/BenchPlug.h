#pragma once
// A whole plug-in for the engine benchmarks, driven as a host drives it: owned until release(),
// parameters set through their records and OnParamChange.

#include <memory>

#include "engine/Quorvex.h"
#include "params/IParamRecord.h"

namespace bench_plug
{
struct Releaser
{
    void operator()(Quorvex* plug) const { plug->release(); }
};
using QuorvexPtr = std::unique_ptr<Quorvex, Releaser>;

inline void Set(Quorvex& plug, int id, double value)
{
    plug.GetParam(id)->value = value;
    plug.OnParamChange(id);
}
} // namespace bench_plug
