#pragma once

#include "engine/ParamRef.h"
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
    /// What parameter `index` of what the user is at is; none without one.
    std::function<ParamRef(int index)> target;
    std::function<void(int by)> stepTrack; ///< the track before or behind becomes the selected one
    std::function<void()> onChanged; ///< the definition, a page, the bank or a value is another

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
    /// The last message in words, such as "CC 7 : 64".
    CStr getLastEventStr() const;
    /// The text of a page for the user: "Filter, 1 of 3"; empty without pages.
    CStr pageText(int section);
    void turnPage(int section, int by); ///< -1 all sections; stays within the pages
    void turnBank(int by);

private:
    void listen();
    void teach(int cc);
    bool handleMIDIMap(CControlMap& map, int section, int message);
    void serve(CControlMap& map, int section, CHWCtrl& ctrl, int index);
    void syncMidiValues();
    void syncMap(const CControlMap& map, int shift);
    void setObjectParam(const ParamRef& to, int value);
    int paramsOnPages();
    void tell() const;

    CQV* qv;
};
