#pragma once

#include "base/CStr.h"

class CAAM;
class CIniFile;
class CQV;

// The devices as the settings tell, and back. A device and a MIDI port are kept by index and by
// name: where both tell something else, since the list has changed, the name holds.

/// What the device bridge lets one choose port by port, and where the choice is kept.
struct PortKind {
    const char *section, *key; ///< each port has the key with its number behind
    const char* nameKey;       ///< likewise, for its name; null: the number tells enough
    int kept;                  ///< ports that the settings have places for
    int (*count)(const CAAM* bridge);
    CStr (CAAM::*name)(int);
    bool (CAAM::*enabled)(int);
    void (CAAM::*enable)(int, int);
};
extern const PortKind audioInputs, audioOutputs, midiInputs, midiOutputs;

/// Opens the device of section "audio" with its block, rate and channels; without a block that the
/// user has chosen it takes that of the device, with no channel enabled the first two of each
/// direction. A device that is not there is replaced by none. Without any device it tells the user,
/// and goes on.
void openAudio(CIniFile& ini, CAAM* bridge);
/// Enables the ports of the sections "MIDI inputs" and "MIDI outputs".
void enableMidi(CIniFile& ini, CAAM* bridge);

/// The ports that MIDI clock goes to and comes from (engine/MidiClock.h), and those of a control
/// surface, all kept by name; a port that is not there now stays in the settings, and counts as
/// none.
void chooseMidiRoles(CIniFile& ini, CQV* host);
void saveClockOut(CQV* host, int device);
/// The song follows the clock as long as there is a port, and then no time code.
void saveClockIn(CQV* host, int device);
/// The same of time code (engine/MidiTimeCode.h).
void saveCodeOut(CQV* host, int device);
void saveCodeIn(CQV* host, int device);
void saveCodeRate(CQV* host, int rate); ///< CodeRate, of what is sent
void saveCodeHour(CQV* host, int hour); ///< 0 to 23, that the song begins at

/// The ports of a control surface, -1 none (DeviceMidi::controlIn), in the same way.
void saveControlIn(CQV* host, int device);
void saveControlOut(CQV* host, int device);

/// Keeps the device that is chosen, -1 for none.
void saveDevice(CAAM* bridge);
/// Keeps which ports of the kind are enabled. Those that are not there now stay enabled.
void savePorts(CAAM* bridge, const PortKind& kind);
/// The name of the device that the settings want when the list has none of that name; else empty.
CStr missingDevice(CIniFile& ini, CAAM* bridge);
