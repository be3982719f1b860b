#include "surfaces/CCS.h"

#include "base/Numbers.h"
#include "engine/CQV.h"
#include "engine/DeviceMidi.h"
#include "engine/MidiBytes.h"
#include "engine/StoredValue.h"
#include "engine/ValueDoor.h"

namespace {

constexpr float highest = 127;
constexpr int pressed = 127;
constexpr int mostBanks = 1000;
constexpr int restMs = 500;    ///< after a hand has moved a control, nothing moves it
constexpr int refreshMs = 300; ///< from a change of the preset to when it is asked for

/// The message that has a control show a value; 0 for none that is short.
int messageOf(int source, int value) {
    if (source < firstNoteSource) return asData(midiController, source, value);
    if (source < pressureSource) return asData(midiNoteOn, source - firstNoteSource, value);
    if (source == pressureSource) return asData(midiPressure, value, 0);
    return source == bendSource ? asData(midiPitchBend, 0, value) : 0;
}

} // namespace

/// What a message of a device moves.
struct CCS::Moves {
    ControlMove moves[ControlReader::most];
    int count = 0;
    int program = -1;                         ///< of a program change
    std::span<const unsigned char> exclusive; ///< empty for a short message

    /// The value that a control has by it, 0 to 127; below 0 when it is not moved.
    float valueOf(const CHWCtrl& ctrl) const {
        if (!exclusive.empty()) return exclusiveValue(ctrl);
        for (int i = 0; i < count; i++)
            if (moves[i].source == ctrl.cc) return moves[i].value;
        return -1.0f;
    }
    /// A message without a value counts as a press.
    float exclusiveValue(const CHWCtrl& ctrl) const {
        const MidiBytes& like = ctrl.sysex.data;
        if (like.empty() || like.size() != exclusive.size()) return -1.0f;
        const int at = ctrl.valueByte();
        for (int i = 0; i < int(like.size()); i++)
            if (i != at && like[size_t(i)] != exclusive[size_t(i)]) return -1.0f;
        return at < 0 ? float(pressed) : float(exclusive[size_t(at)]);
    }
};

CCS::CCS(CQV* host) : qv(host) {
}

CCS::~CCS() {
    qv->deviceMidi->copies = false;
}

bool CCS::open(const CStr& file) {
    SurfaceDef read;
    if (!read.open(file)) return false;
    close();
    def = std::move(read);
    path = file;
    editGroup = def.groups.empty() ? -1 : 0;
    listen();
    askRefresh();
    return true;
}

bool CCS::save(const CStr& file) {
    if (!def.save(file)) return false;
    path = file;
    changed = false;
    return true;
}

void CCS::close() {
    def = SurfaceDef();
    preset.clear();
    path = "";
    changed = refreshing = false;
    bank = 0;
    editGroup = learnGroup = learnCtrl = -1;
    listen();
}

void CCS::listen() {
    qv->deviceMidi->copies = isOpen() || editing;
}

void CCS::idle() {
    listen();
    for (int message = 0; qv->deviceMidi->copied.pop(message);) handleMIDIIn(message);
    if (feedback >= 0) syncMidiValues();
    const int now = asTimeInMS();
    if (refreshing && now - changedAt > refreshMs && !preset.awaiting(now)) requestPreset();
}

/// Sends what parameters are now to the controls that show them, unless a hand is on them.
void CCS::syncMidiValues() {
    const int by = shift();
    for (CControlPages& section : def.sections)
        if (const CControlSectionPage* page = section.page())
            for (const CControlMap& map : page->maps) syncMap(map, by);
}

void CCS::syncMap(const CControlMap& map, int by) {
    if (map.mode != surfaceParam || map.group < 0 || !target) return;
    CHWCtrlGroup& group = def.groups[size_t(map.group)];
    for (int i = 0; i < group.numCtrls(); i++) {
        CHWCtrl& ctrl = *group.getCtrl(i);
        const ParamRef to = target(map.param + i + by);
        if (!to || asTimeInMS() - ctrl.touched < restMs) continue;
        const int now = asRound(double(paramShare(to.object, to.param) * highest));
        if (now == ctrl.val || !sendValue(ctrl, now)) continue;
        ctrl.val = now;
        ctrl.way.last = float(now);
    }
}

bool CCS::sendValue(const CHWCtrl& ctrl, int value) {
    if (isExclusive(ctrl.sysex.data)) {
        MidiBytes bytes = ctrl.sysex.data;
        const int at = ctrl.valueByte();
        if (at > 0) bytes[size_t(at)] = static_cast<unsigned char>(value);
        return at > 0 && sendSysex(bytes);
    }
    const int message = messageOf(ctrl.cc, value);
    return message && qv->deviceMidi->outside.push({message, int8_t(feedback), {}, 0});
}

bool CCS::sendSysex(const MidiBytes& bytes) const {
    return isExclusive(bytes) && sysexOut && sysexOut(bytes);
}

// What comes in.

void CCS::handleMIDIIn(int message) {
    lastEvent = message;
    if (editing && statusByte(message) == midiController) teach(asByte1(message));
    Moves moves;
    moves.count = controls.read(message, moves.moves);
    if (statusByte(message) == midiProgram) {
        moves.program = asByte1(message);
        askRefresh();
    }
    learn(moves);
    serveAll(moves);
}

void CCS::serveAll(const Moves& moves) {
    for (size_t i = 0; i < def.sections.size(); i++) {
        CControlSectionPage* page = def.sections[i].page();
        if (!page) continue;
        // One that turns the page ends the round: the others are those of another page.
        for (CControlMap& map : page->maps)
            if (handleMIDIMap(map, int(i), moves)) break;
    }
}

void CCS::teach(int cc) {
    if (editGroup < 0 || editGroup >= int(def.groups.size())) return;
    CHWCtrlGroup& group = def.groups[size_t(editGroup)];
    if (group.hasCC(cc) || group.numCtrls() >= SurfaceDef::mostCtrls) return;
    group.addCtrl("cc", cc);
    changed = true;
    taught++;
}

void CCS::learn(const Moves& moves) {
    const bool known = learnGroup >= 0 && learnGroup < int(def.groups.size());
    CHWCtrl* ctrl = known ? def.groups[size_t(learnGroup)].getCtrl(learnCtrl) : nullptr;
    if (!ctrl || moves.count == 0 || moves.moves[0].value <= 0.0f ||
        choosesNumber(moves.moves[0].source))
        return;
    ctrl->cc = moves.moves[0].source;
    learnGroup = learnCtrl = -1;
    changed = true;
    taught++;
}

/// True when it has turned a page.
bool CCS::handleMIDIMap(CControlMap& map, int section, const Moves& moves) {
    if (map.group < 0 || map.group >= int(def.groups.size())) return false;
    CHWCtrlGroup& group = def.groups[size_t(map.group)];
    const int before = def.sections[size_t(section)].current;
    for (int i = 0; i < group.numCtrls(); i++) {
        CHWCtrl& ctrl = *group.getCtrl(i);
        ctrl.mode = map.mode;
        if (moves.program >= 0 && map.mode == surfaceProgram) ctrl.val = moves.program;
        const float value = moves.valueOf(ctrl);
        if (value < 0.0f) continue;
        ctrl.val = asRound(double(value));
        ctrl.touched = asTimeInMS();
        if (map.sxOffset >= 0) setPresetByte(map.sxOffset + i, ctrl.val);
        serve(map, section, ctrl, i, value);
        if (def.sections[size_t(section)].current != before) return true;
    }
    return false;
}

void CCS::serve(CControlMap& map, int section, CHWCtrl& ctrl, int index, float value) {
    if (map.mode == surfaceParam) {
        if (target) setObjectParam(target(map.param + index + shift()), map, ctrl, value);
        return;
    }
    if (value <= 0.0f) return; // a button is let go
    switch (map.mode) {
    case surfaceBankDown:
    case surfaceBankUp:
        return turnBank(map.mode == surfaceBankUp ? 1 : -1);
    case surfaceTrackDown:
    case surfaceTrackUp:
        if (stepTrack) stepTrack(map.mode == surfaceTrackUp ? 1 : -1);
        return;
    case surfacePriorPage:
    case surfaceNextPage:
        return turnPage(-1, map.mode == surfaceNextPage ? 1 : -1);
    case surfacePageDown:
    case surfacePageUp:
        return turnPage(section, map.mode == surfacePageUp ? 1 : -1);
    default:
        return;
    }
}

void CCS::setObjectParam(const ParamRef& to, const CControlMap& map, CHWCtrl& ctrl, float value) {
    if (!to) return;
    ctrl.way.mode = map.takeOver;
    const float share = ctrl.way.take(value, paramShare(to.object, to.param));
    if (share != TakeOver::none) qv->values->nudgeParam(to.object, to.param, share);
}

// The preset of the device.

void CCS::handleSysex(std::span<const unsigned char> bytes) {
    if (preset.receive(bytes, asTimeInMS())) return presetReceive();
    Moves moves;
    moves.exclusive = bytes;
    serveAll(moves);
}

void CCS::askRefresh() {
    refreshing = def.getPreset.size() > 0;
    changedAt = asTimeInMS();
}

bool CCS::requestPreset() {
    refreshing = false;
    if (!sendSysex(def.getPreset.data)) return false;
    preset.await(def.getPreset.data, def.getPreset.offset, asTimeInMS());
    return true;
}

/// The controls of a group have bytes one behind the other.
void CCS::presetReceive() {
    for (CControlPages& section : def.sections) {
        CControlSectionPage* page = section.page();
        if (!page) continue;
        for (CControlMap& map : page->maps) {
            if (map.sxOffset < 0) continue;
            if (map.mode == surfaceText && map.controlType == surfaceLabel)
                map.text = preset.getText(map.sxOffset, map.sxDataSize);
            const bool moves = map.group >= 0 && map.group < int(def.groups.size());
            CHWCtrlGroup* group = moves ? &def.groups[size_t(map.group)] : nullptr;
            for (int i = 0; group && i < group->numCtrls(); i++)
                if (const int value = preset.byteAt(map.sxOffset + i); value >= 0)
                    group->getCtrl(i)->val = value;
        }
    }
}

void CCS::setPresetByte(int index, int value) {
    preset.setByte(index, value);
}

bool CCS::dumpPreset() {
    return sendSysex(presetMessage(def.setPresetText.c_str(), preset));
}

// Pages and banks.

int CCS::shift() {
    return bank * paramsOnPages();
}

int CCS::paramsOnPages() {
    int count = 0;
    for (CControlPages& section : def.sections)
        if (const CControlSectionPage* page = section.page())
            for (const CControlMap& map : page->maps)
                if (map.mode == surfaceParam && map.group >= 0)
                    count += def.groups[size_t(map.group)].numCtrls();
    return count;
}

void CCS::forgetWaiting() {
    for (CHWCtrlGroup& group : def.groups)
        for (CHWCtrl& ctrl : group.ctrls) ctrl.way.waiting = false;
}

bool CCS::waits() {
    for (CControlPages& section : def.sections) {
        const CControlSectionPage* page = section.page();
        if (!page) continue;
        for (const CControlMap& map : page->maps) {
            if (map.mode != surfaceParam || map.takeOver != mapPickup || map.group < 0) continue;
            for (const CHWCtrl& ctrl : def.groups[size_t(map.group)].ctrls)
                if (ctrl.way.waiting) return true;
        }
    }
    return false;
}

void CCS::turnBank(int by) {
    bank = asMinMax(bank + by, 0, mostBanks);
    forgetWaiting();
}

void CCS::turnPage(int section, int by) {
    for (size_t i = 0; i < def.sections.size(); i++) {
        CControlPages& pages = def.sections[i];
        if (section >= 0 && int(i) != section) continue;
        pages.current = asMinMax(pages.current + by, 0, asMax(int(pages.pages.size()) - 1, 0));
    }
    if (preset.defined()) presetReceive();
    forgetWaiting();
}

CStr CCS::pageText(int section) {
    if (section < 0 || section >= int(def.sections.size())) return "";
    CControlPages& pages = def.sections[size_t(section)];
    const CControlSectionPage* page = pages.page();
    if (!page) return "";
    return page->name + ", " + asStr(pages.current + 1) + " of " + asStr(int(pages.pages.size()));
}

CStr CCS::getLastEventStr() const {
    const CStr first = asStr(asByte1(lastEvent)), second = asStr(asByte2(lastEvent));
    if (noteOn(lastEvent)) return "Note on: " + first + " vel: " + second;
    if (noteOff(lastEvent)) return "Note off: " + first + " vel: " + second;
    if (statusByte(lastEvent) == midiController) return "CC " + first + " : " + second;
    return statusByte(lastEvent) == midiProgram ? "Program " + first : CStr();
}
