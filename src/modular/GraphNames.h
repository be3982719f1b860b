#pragma once

#include "base/CStr.h"
#include "modular/GraphModel.h"

// What a person calls the things on the canvas. Interface thread.

/// A component, "Sequencer" for the song.
CStr boxName(const CComp* comp);
/// A port without its component, such as "MIDI in", "Out 2", or the name of the track it is of.
CStr portName(const GraphModel& model, int port);
/// The same with its component: "Delay, in".
CStr fullPortName(const GraphModel& model, int port);
CStr portKindName(const GraphModel::Port& port); ///< "audio output", "mono audio output"
/// "Bass to Delay", with the ports where there is a choice.
CStr cableName(const GraphModel& model, int cable);
/// Of a component, port or cable of the model: "the cable Bass to Delay".
CStr itemName(const GraphModel& model, const CObject* item);
