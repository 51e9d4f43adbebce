#include "core/FxCatalog.h"

#include "fx/EffectTable.h"
#include "fx/FxFactory.h"
#include "fx/FxParamLaw.h"

namespace
{
class TableCatalog final : public FxCatalog
{
  public:
    std::unique_ptr<DSPShell> Create(int type, bool isRight, const DSPShell* left) const override
    {
        return CreateFxModule(type, isRight, left);
    }
    double ModuleValue(int type, int p, double percent) const override
    {
        return FxModuleValue(type, p, percent);
    }
    bool P5IsMix(int type) const override { return FxP5IsMix(type); }
};
} // namespace

const FxCatalog& EffectTableCatalog()
{
    static const TableCatalog catalog;
    return catalog;
}
