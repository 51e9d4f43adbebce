#pragma once
// The Linux window back end: a child window inside the host's X11 parent ("X11EmbedWindowID"),
// on its own display connection. Everything runs through the host's run loop: the connection's
// file descriptor is registered as an event handler and the frame timer as a timer, so no thread
// of ours ever touches X11. Destroying the window unregisters both and closes the connection.
// UI thread only.

#include "editor/IGraphics.h"

// The platform type name the VST 3 view answers to.
inline constexpr const char* kX11PlatformType = "X11EmbedWindowID";

// Window factory for IGraphics::SetPlatform: the host context is the view's IPlugFrame, which
// must offer Steinberg::Linux::IRunLoop; without it no window is made.
PlatformWindowFactory MakeX11WindowFactory();
