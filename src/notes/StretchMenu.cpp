#include "notes/StretchMenu.h"

#include "audiofiles/CSample.h"
#include "base/Delegates.h"
#include "base/Numbers.h"
#include "engine/CSnap.h"
#include "gui/controls/CPopup.h"
#include "notes/WaveState.h"
#include "sequencer/edit/PinEdits.h"
#include "sequencer/song/CSeq.h"

namespace {

void addHere(WaveState& state) {
    addPins(state.seq(), state.place(), {state.range.from, state.range.to});
}

void addAtMarks(WaveState& state) {
    addPins(state.seq(), state.place(), state.marks);
}

void toGrid(WaveState& state) {
    quantizePins(state.seq(), state.place(), state.seq()->snap->getTicks());
}

/// To the next line of the grid, or the one before.
void step(WaveState& state, int way) {
    const int pin = state.pinHere(), grid = state.seq()->snap->getTicks();
    const double tick = state.tickOf(state.clip()->pins.list[pin].frame) + way * grid;
    movePin(state.seq(), state.place(), pin, state.pinShare(tick));
}

void tune(WaveState& state, float by) {
    const int pin = state.pinHere();
    tunePin(state.seq(), state.place(), pin, state.clip()->pins.list[pin].pitch + by);
}

bool always(const WaveState& state) {
    return state.sample() != nullptr;
}

bool withMarks(const WaveState& state) {
    return state.sample() && !state.marks.empty();
}

bool withPins(const WaveState& state) {
    return state.sample() && state.clip()->pins.count > 0;
}

bool onPin(const WaveState& state) {
    return state.sample() && state.pinHere() >= 0;
}

struct Entry {
    const char* text; ///< null for a line
    void (*run)(WaveState&) = nullptr;
    bool (*ready)(const WaveState&) = always;
};

constexpr Entry entries[] = {
    {"Add at the place, or at the ends of the range", addHere},
    {"Add at the marks", addAtMarks, withMarks},
    {"All to the lines of the grid", toGrid, withPins},
    {nullptr},
    {"A step of the grid later", [](WaveState& state) { step(state, 1); }, onPin},
    {"A step of the grid earlier", [](WaveState& state) { step(state, -1); }, onPin},
    {"A semitone higher from here", [](WaveState& state) { tune(state, 1.0f); }, onPin},
    {"A semitone lower from here", [](WaveState& state) { tune(state, -1.0f); }, onPin},
    {nullptr},
    {"Delete", [](WaveState& state) { deletePin(state.seq(), state.place(), state.pinHere()); },
     onPin},
    {"Delete all", [](WaveState& state) { deletePins(state.seq(), state.place()); }, withPins},
};

class RunEntry : public COnChange {
public:
    RunEntry(WaveState& shared, const Entry& one) : state(shared), entry(one) {}
    void operator()(CObject*) override {
        if (state.seq() && entry.ready(state)) entry.run(state);
    }

private:
    WaveState& state;
    const Entry& entry;
};

} // namespace

void fillStretchMenu(CPopup* popup, WaveState& state) {
    for (const Entry& entry : entries) {
        if (!entry.text) {
            popup->addSeparator();
            continue;
        }
        CMenuItem* item = popup->add(entry.text, new RunEntry(state, entry));
        item->enabled = state.seq() && entry.ready(state);
    }
}
