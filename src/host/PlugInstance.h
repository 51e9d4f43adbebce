#pragma once
// The one link from the module's factory down to the product: the engine layer defines this function
// (host/ never includes engine/), the factory calls it for each instance the host asks for.
// UI thread. Returns a new plug-in holding one reference for the caller; may throw std::bad_alloc,
// which the factory catches.

class IPlugVST3;

IPlugVST3* CreatePlugInstance();
