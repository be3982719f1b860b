#pragma once

#include <cstdint>

class CApp;
union _XEvent;

/// The address that a property of any window holds, in one item of 32 bits or in two, low half
/// first. 0 when there is none, or the window has gone.
uint64_t getProperty(unsigned long window, unsigned long atom);

/// Gives an event to the function that its window names in `_XEventProc`, if that window lies
/// inside one of ours and `CApp::isPluginCode` knows the address: anybody can write the property.
void callPlugin(const CApp* app, const _XEvent& event);
