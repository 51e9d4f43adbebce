// The factory's way to the product: host/ knows only this function, the engine defines it.
#include "engine/Quorvex.h"
#include "host/PlugInstance.h"

IPlugVST3* CreatePlugInstance()
{
    return new Quorvex();
}
