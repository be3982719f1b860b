#include "ui/ComputerKeys.h"

#include "engine/CQV.h"
#include "engine/DeviceComps.h"
#include "engine/MidiBytes.h"
#include "engine/ObjectKinds.h"
#include "gui/CApp.h"
#include "gui/CWin.h"
#include "ui/PlaceText.h"
#include "ui/Workspace.h"

#include <algorithm>

namespace {

constexpr int velocity = 100, octave = 12, highest = 127;
constexpr int highestLowest = 96; ///< with two octaves above
constexpr int escapePlace = 9, octaveDownPlace = 34, octaveUpPlace = 35;
constexpr int silent = -1, strange = -2;

/// Semitones above the left end of a row of letters; the rows of black keys begin one place left.
constexpr int whites[] = {0, 2, 4, 5, 7, 9, 11, 12, 14, 16};
constexpr int blacks[] = {silent, 1, 3, silent, 6, 8, 10, silent, 13, 15};

struct KeyRow {
    int firstPlace;
    const int (&steps)[10];
    int above;
};
constexpr KeyRow keyRows[] = {
    {52, whites, 0}, {38, blacks, 0}, {24, whites, octave}, {10, blacks, octave}};

/// Semitones above the lowest key; `silent` for a key between, `strange` for one elsewhere.
int stepOf(int place) {
    for (const KeyRow& row : keyRows) {
        const int at = place - row.firstPlace;
        if (at >= 0 && at < 10) return row.steps[at] == silent ? silent : row.steps[at] + row.above;
    }
    return strange;
}

} // namespace

ComputerKeys::ComputerKeys(Workspace& space) : workspace(space), app(*space.mainWindow()->app) {
    held.fill(-1);
}

ComputerKeys::~ComputerKeys() {
    if (on()) app.keyPlayer = nullptr;
}

bool ComputerKeys::on() const {
    return app.keyPlayer == this;
}

void ComputerKeys::set(bool wanted) {
    if (wanted == on()) return;
    app.keyPlayer = wanted ? this : nullptr;
    for (signed char& key : held) {
        if (key >= 0) send(key, false);
        key = -1;
    }
    tell();
}

void ComputerKeys::tell() const {
    if (!on()) return workspace.setStatus("Computer keyboard off");
    const int upper = lowest + octave;
    workspace.setStatus(CStr("Computer keyboard: the lowest row of letters plays from ") +
                        noteToStr(lowest) + ", the upper one from " + noteToStr(upper) +
                        "; the keys beside P change octaves, Escape ends it");
}

void ComputerKeys::send(int key, bool pressed) const {
    auto* in = compAs<CMIDIIn>(workspace.host()->getMIDIIn());
    if (in) in->addMidiEvent(asData(midiNoteOn, key, pressed ? velocity : 0));
}

bool ComputerKeys::placePressed(int place) {
    if (place < 0 || place >= places) return false;
    if (place == escapePlace) return set(false), true;
    if (place == octaveDownPlace || place == octaveUpPlace) {
        lowest = std::clamp(lowest + (place == octaveUpPlace ? octave : -octave), 0, highestLowest);
        return tell(), true;
    }
    const int step = stepOf(place);
    const int key = lowest + step;
    if (step >= 0 && key <= highest && held[size_t(place)] < 0) {
        held[size_t(place)] = static_cast<signed char>(key);
        send(key, true);
    }
    return step != strange;
}

bool ComputerKeys::placeReleased(int place) {
    if (place < 0 || place >= places || held[size_t(place)] < 0) return false;
    send(held[size_t(place)], false);
    held[size_t(place)] = -1;
    return true;
}
