#pragma once

#include "engine/ControlSource.h"
#include "engine/ParamRef.h"
#include "surfaces/CPresetBuffer.h"
#include "surfaces/SurfaceDef.h"

#include <functional>

class CQV;

/// Makes a controller of MIDI usable that a definition describes: its pages lead the knobs to the
/// parameters of whatever the user is at. It sees what MIDI devices send as a copy, and sets
/// parameters as the user's own hand would. Interface thread.
class CCS {
public:
    SurfaceDef def;
    CStr path;            ///< of its file; empty without one
    bool editing = false; ///< knobs that move become part of `editGroup`
    int editGroup = -1;   ///< index
    int bank = 0;         ///< of parameters; as many as the current pages show make one
    int feedback = -1;    ///< MIDI output that the values are sent back to; -1 none
    bool changed = false; ///< the definition is not as its file has it
    int lastEvent = 0;    ///< packed; 0 none yet
    int taught = 0;       ///< counts what the device has changed of the definition
    CPresetBuffer preset; ///< of the device
    /// What parameter `index` of what the user is at is; none without one.
    std::function<ParamRef(int index)> target;
    std::function<void(int by)> stepTrack; ///< the track before or behind becomes the selected one
    /// Sends a system exclusive message to the device; false where that goes nowhere.
    std::function<bool(const MidiBytes& bytes)> sysexOut;
    /// A control of the definition that takes the next source which moves; -1 none.
    int learnGroup = -1, learnCtrl = -1;

    explicit CCS(CQV* host);
    ~CCS();
    CCS(const CCS&) = delete;
    CCS& operator=(const CCS&) = delete;

    bool open(const CStr& file); ///< false, and nothing changes, without the file
    bool save(const CStr& file); ///< which it belongs to from then on; false if that fails
    void close();                ///< without a definition
    bool isOpen() const { return !def.sections.empty() || !def.groups.empty(); }
    void idle(); ///< serves what has come; interface tick
    /// A message of a device, packed as in engine/MidiBytes.h.
    void handleMIDIIn(int message);
    /// A system exclusive message of a device: a dump of its preset, or what a control sends.
    void handleSysex(std::span<const unsigned char> bytes);
    /// Asks the device for its preset, as the definition tells. False where that goes nowhere.
    bool requestPreset();
    bool dumpPreset(); ///< sends the preset, as it is now, to the device; as above
    void setPresetByte(int index, int value);
    /// The last message in words, such as "CC 7 : 64".
    CStr getLastEventStr() const;
    /// The text of a page for the user: "Filter, 1 of 3"; empty without pages.
    CStr pageText(int section);
    void turnPage(int section, int by); ///< -1 all sections; stays within the pages
    void turnBank(int by);
    int shift();  ///< of the parameters, by the bank
    bool waits(); ///< a control of the current pages, to be picked up

private:
    void listen();
    struct Moves;
    void teach(int cc);
    void learn(const Moves& moves);
    void serveAll(const Moves& moves);
    bool handleMIDIMap(CControlMap& map, int section, const Moves& moves);
    void serve(CControlMap& map, int section, CHWCtrl& ctrl, int index, float value);
    void syncMidiValues();
    void syncMap(const CControlMap& map, int by);
    bool sendValue(const CHWCtrl& ctrl, int value);
    void setObjectParam(const ParamRef& to, const CControlMap& map, CHWCtrl& ctrl, float value);
    void presetReceive();
    void askRefresh();
    bool sendSysex(const MidiBytes& bytes) const;
    int paramsOnPages();
    void forgetWaiting();

    CQV* qv;
    ControlReader controls;
    bool refreshing = false; ///< the preset is to be asked for, once all is quiet
    int changedAt = 0;       ///< when it became another one, as `asTimeInMS`
};
