#pragma once
// The host's view of one parameter record: the SDK's ParameterInfo filled once from the record, and
// the conversions (text, plain value) answered by the record itself. The record outlives this
// object (both belong to the plug-in). Callers hold the plug-in's paramsMutex.

#include "public.sdk/source/vst/vstparameters.h"

class IParamRecord;

class IPlugParameter : public Steinberg::Vst::Parameter
{
  public:
    IPlugParameter(IParamRecord& record, Steinberg::Vst::ParamID id, Steinberg::Vst::UnitID unitId);

    void toString(Steinberg::Vst::ParamValue normalized, Steinberg::Vst::String128 string) const override;
    // Display texts first, then a number in the parameter's unit (as displayed, sign included).
    bool fromString(const Steinberg::Vst::TChar* string,
                    Steinberg::Vst::ParamValue& normalized) const override;
    Steinberg::Vst::ParamValue toPlain(Steinberg::Vst::ParamValue normalized) const override;
    Steinberg::Vst::ParamValue toNormalized(Steinberg::Vst::ParamValue plain) const override;

    const IParamRecord& Record() const { return mRecord; }

    OBJ_METHODS(IPlugParameter, Parameter)

  private:
    IParamRecord& mRecord;
};
