#include "surfaces/CCS.h"

#include "base/Numbers.h"
#include "engine/CQV.h"
#include "engine/DeviceMidi.h"
#include "engine/MidiBytes.h"
#include "engine/StoredValue.h"
#include "engine/ValueDoor.h"

namespace {

constexpr float highest = 127;
constexpr int mostBanks = 1000;
constexpr int restMs = 500; ///< after a hand has moved a control, nothing moves it

} // namespace

CCS::CCS(CQV* host) : qv(host) {
}

CCS::~CCS() {
    qv->deviceMidi->copies = false;
}

bool CCS::open(const CStr& file) {
    SurfaceDef read;
    if (!read.open(file)) return false;
    def = std::move(read);
    path = file;
    changed = false;
    bank = 0;
    editGroup = def.groups.empty() ? -1 : 0;
    listen();
    tell();
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
    path = "";
    changed = false;
    bank = 0;
    editGroup = -1;
    listen();
    tell();
}

void CCS::tell() const {
    if (onChanged) onChanged();
}

void CCS::listen() {
    qv->deviceMidi->copies = isOpen() || editing;
}

void CCS::idle() {
    listen();
    for (int message = 0; qv->deviceMidi->copied.pop(message);) handleMIDIIn(message);
    if (feedback >= 0) syncMidiValues();
}

/// Sends what parameters are now to the controls that show them, unless a hand is on them.
void CCS::syncMidiValues() {
    const int shift = bank * paramsOnPages();
    for (CControlPages& section : def.sections)
        if (const CControlSectionPage* page = section.page())
            for (const CControlMap& map : page->maps) syncMap(map, shift);
}

void CCS::syncMap(const CControlMap& map, int shift) {
    if (map.mode != surfaceParam || map.group < 0 || !target) return;
    CHWCtrlGroup& group = def.groups[size_t(map.group)];
    for (int i = 0; i < group.numCtrls(); i++) {
        CHWCtrl& ctrl = *group.getCtrl(i);
        const ParamRef to = target(map.param + i + shift);
        if (!to || asTimeInMS() - ctrl.touched < restMs) continue;
        const int now = asRound(double(paramShare(to.object, to.param) * highest));
        if (now == ctrl.val) continue;
        const AamEvent event{asData(midiController, ctrl.cc, now), int8_t(feedback), {}, 0};
        if (qv->deviceMidi->outside.push(event)) ctrl.val = now;
    }
}

// What comes in.

void CCS::handleMIDIIn(int message) {
    lastEvent = message;
    if (editing && statusByte(message) == midiController) teach(asByte1(message));
    for (size_t i = 0; i < def.sections.size(); i++) {
        CControlSectionPage* page = def.sections[i].page();
        if (!page) continue;
        // One that turns the page ends the round: the others are those of another page.
        for (CControlMap& map : page->maps)
            if (handleMIDIMap(map, int(i), message)) break;
    }
    tell();
}

void CCS::teach(int cc) {
    if (editGroup < 0 || editGroup >= int(def.groups.size())) return;
    CHWCtrlGroup& group = def.groups[size_t(editGroup)];
    if (group.hasCC(cc) || group.numCtrls() >= SurfaceDef::mostCtrls) return;
    group.addCtrl("cc", cc);
    changed = true;
}

/// True when it has turned a page.
bool CCS::handleMIDIMap(CControlMap& map, int section, int message) {
    if (map.group < 0 || map.group >= int(def.groups.size())) return false;
    CHWCtrlGroup& group = def.groups[size_t(map.group)];
    const int before = def.sections[size_t(section)].current;
    for (int i = 0; i < group.numCtrls(); i++) {
        CHWCtrl& ctrl = *group.getCtrl(i);
        ctrl.mode = map.mode;
        if (statusByte(message) == midiProgram && map.mode == surfaceProgram)
            ctrl.val = asByte1(message);
        if (statusByte(message) != midiController || asByte1(message) != ctrl.cc) continue;
        ctrl.val = asByte2(message);
        ctrl.touched = asTimeInMS();
        serve(map, section, ctrl, i);
        if (def.sections[size_t(section)].current != before) return true;
    }
    return false;
}

void CCS::serve(CControlMap& map, int section, CHWCtrl& ctrl, int index) {
    if (map.mode == surfaceParam) {
        const int shift = bank * paramsOnPages();
        if (target) setObjectParam(target(map.param + index + shift), ctrl.val);
        return;
    }
    if (ctrl.val == 0) return; // a button is let go
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

void CCS::setObjectParam(const ParamRef& to, int value) {
    if (to) qv->values->nudgeParam(to.object, to.param, float(value) / highest);
}

// Pages and banks.

int CCS::paramsOnPages() {
    int count = 0;
    for (CControlPages& section : def.sections)
        if (const CControlSectionPage* page = section.page())
            for (const CControlMap& map : page->maps)
                if (map.mode == surfaceParam && map.group >= 0)
                    count += def.groups[size_t(map.group)].numCtrls();
    return count;
}

void CCS::turnBank(int by) {
    bank = asMinMax(bank + by, 0, mostBanks);
    tell();
}

void CCS::turnPage(int section, int by) {
    for (size_t i = 0; i < def.sections.size(); i++) {
        CControlPages& pages = def.sections[i];
        if (section >= 0 && int(i) != section) continue;
        pages.current = asMinMax(pages.current + by, 0, asMax(int(pages.pages.size()) - 1, 0));
    }
    tell();
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
