#include "sequencer/edit/Transform.h"

#include "base/Numbers.h"
#include "engine/MidiBytes.h"
#include "sequencer/edit/EventEdits.h"
#include "sequencer/edit/PartEdits.h"
#include "sequencer/song/EventKinds.h"
#include "sequencer/song/TempoMap.h"

#include <algorithm>
#include <cmath>
#include <map>
#include <random>
#include <unordered_map>
#include <unordered_set>
#include <vector>

namespace {

constexpr TransformValue none{nullptr, 0, 0, 0};
constexpr TransformShape shapes[] = {
    {"Quantize",
     {{{"Strength %", 0, 100, 100},
       {"Swing %", 0, 100, 0},
       {"Within %", 1, 100, 100},
       {"Ends too", 0, 1, 0}}}},
    {"Humanise",
     {{{"Ticks", 0, 240, 20},
       {"Velocity", 0, 64, 10},
       {"Length %", 0, 50, 0},
       {"Variation", 1, 99, 1}}}},
    {"Legato", {{{"Gap ticks", -480, 480, 0}, none, none, none}}},
    {"Velocity",
     {{{"Scale %", 0, 200, 100},
       {"Add", -127, 127, 0},
       {"Least", 1, 127, 1},
       {"Most", 1, 127, 127}}}},
    {"Velocity ramp", {{{"From", 1, 127, 40}, {"To", 1, 127, 110}, none, none}}},
    {"Compress velocities", {{{"Keep %", 0, 200, 50}, none, none, none}}},
    {"Transpose", {{{"Semitones", -48, 48, 12}, none, none, none}}},
    {"Stretch", {{{"Percent", 10, 400, 200}, none, none, none}}},
    {"Reverse", {{none, none, none, none}}},
    {"Mirror pitch", {{none, none, none, none}}},
    {"Arpeggiate", {{{"Step ticks", 15, 1920, 240}, {"Down", 0, 1, 0}, none, none}}},
    {"Strum", {{{"Ticks", 1, 240, 20}, {"Down", 0, 1, 0}, {"Softer %", 0, 50, 0}, none}}},
    {"Thin controllers", {{{"Ticks", 1, 960, 30}, {"Change", 0, 64, 2}, none, none}}},
    {"Transpose in scale", {{{"Degrees", -21, 21, 2}, none, none, none}}},
    {"Invert chords", {{{"Turns", -6, 6, 1}, none, none, none}}},
    {"Spread chords", {{{"Octaves", 1, 3, 1}, none, none, none}}},
};

/// A note or hit of the draft that is changed.
struct Note {
    CBaseEvent* event;
    int partType;
    int tick;

    int* length() const { return eventLength(partType, event); }
    int64_t end() const { return int64_t(tick) + *length(); }
    void moveTo(double to) {
        tick = int(std::clamp(std::round(to), double(-maxTicks), double(maxTicks)));
    }
    CMIDIEvent* midi() const { return asMessage(event); }
    CDrumEvent* hit() const { return asHit(event); }
    int row() const { return partType == partDrum ? hit()->sound : asByte1(midi()->data); }
    double velocity() const {
        return partType == partDrum ? double(hit()->velocity) * 127 : asByte2(midi()->data);
    }
    void setRow(int row, int top) const {
        row = asMinMax(row, 0, top);
        if (partType == partDrum)
            hit()->sound = row;
        else
            midi()->data = asData(midi()->data & 0xFF, row, asByte2(midi()->data));
    }
    void setVelocity(double to) const {
        to = std::clamp(to, 1.0, 127.0);
        if (partType == partDrum)
            hit()->velocity = float(to / 127);
        else
            midi()->data = asData(midi()->data & 0xFF, asByte1(midi()->data), asRound(to));
    }
    void setLength(double to) const {
        *length() = int(std::clamp(std::round(to), 1.0, double(maxTicks)));
    }
};
using Notes = std::vector<Note>;

int partOf(int whole, int percent) {
    return asRound(double(whole) * percent / 100);
}

/// The line of a grid nearest to a tick; odd ones stand later.
int swungLine(int tick, int grid, int swing) {
    const int shift = partOf(grid, swing) / 2;
    int best = 0, distance = maxTicks;
    const int near = int(std::floor(double(tick) / grid));
    for (int k = near - 1; k <= near + 1; k++) {
        const int line = k * grid + (k & 1 ? shift : 0);
        if (std::abs(line - tick) > distance) continue; // half way it is the later one
        best = line;
        distance = std::abs(line - tick);
    }
    return best;
}

void quantizeNotes(Notes& notes, const TransformValues& v, const TransformScope& scope) {
    const int grid = asMax(1, scope.grid);
    const auto moved = [&](int tick) {
        const int by = swungLine(tick, grid, v[1]) - tick;
        return v[2] >= 100 || 2 * std::abs(by) <= partOf(grid, v[2]) ? tick + partOf(by, v[0])
                                                                     : tick;
    };
    for (Note& n : notes) {
        const int end = saturate(n.end());
        n.tick = moved(n.tick);
        if (v[3]) n.setLength(double(moved(end)) - n.tick);
    }
}

void humanise(Notes& notes, const TransformValues& v, const TransformScope&) {
    std::minstd_rand dice{unsigned(v[3])};
    const auto within = [&dice](int most) {
        return most * (2.0 * double(dice() - dice.min()) / double(dice.max() - dice.min()) - 1.0);
    };
    for (Note& n : notes) {
        n.tick += asRound(within(v[0]));
        n.setVelocity(n.velocity() + within(v[1]));
        n.setLength(*n.length() * (1 + within(v[2]) / 100));
    }
}

void makeLegato(Notes& notes, const TransformValues& v, const TransformScope&) {
    for (size_t i = 0, next = 0; i < notes.size(); i++) {
        next = std::max(next, i);
        while (next < notes.size() && notes[next].tick <= notes[i].tick) next++;
        if (next < notes.size())
            notes[i].setLength(double(notes[next].tick) - notes[i].tick - v[0]);
    }
}

void scaleVelocity(Notes& notes, const TransformValues& v, const TransformScope&) {
    for (const Note& n : notes) {
        const double to = n.velocity() * v[0] / 100 + v[1];
        n.setVelocity(std::clamp<double>(to, std::min(v[2], v[3]), std::max(v[2], v[3])));
    }
}

void rampVelocity(Notes& notes, const TransformValues& v, const TransformScope&) {
    const double from = notes.front().tick, span = notes.back().tick - from;
    for (const Note& n : notes)
        n.setVelocity(v[0] + (v[1] - v[0]) * (span > 0 ? (n.tick - from) / span : 0));
}

void compressVelocity(Notes& notes, const TransformValues& v, const TransformScope&) {
    double sum = 0;
    for (const Note& n : notes) sum += n.velocity();
    const double mean = sum / double(notes.size());
    for (const Note& n : notes) n.setVelocity(mean + (n.velocity() - mean) * v[0] / 100);
}

/// All of them by the same, as far as they all go.
void transpose(Notes& notes, const TransformValues& v, const TransformScope& scope) {
    int low = scope.topRow, high = 0;
    for (const Note& n : notes) {
        low = asMin(low, n.row());
        high = asMax(high, n.row());
    }
    const int by = std::clamp(v[0], std::min(0, -low), std::max(0, scope.topRow - high));
    for (const Note& n : notes) n.setRow(n.row() + by, scope.topRow);
}

void stretch(Notes& notes, const TransformValues& v, const TransformScope&) {
    const int from = notes.front().tick;
    for (Note& n : notes) {
        n.setLength(double(*n.length()) * v[0] / 100);
        n.moveTo(from + (double(n.tick) - from) * v[0] / 100);
    }
}

void reverse(Notes& notes, const TransformValues&, const TransformScope&) {
    const int from = notes.front().tick;
    int64_t to = from;
    for (const Note& n : notes) to = std::max(to, n.end());
    for (Note& n : notes) n.moveTo(double(from + to - n.end()));
}

void mirror(Notes& notes, const TransformValues&, const TransformScope& scope) {
    const auto [low, high] = std::ranges::minmax(notes, {}, &Note::row);
    const int sum = low.row() + high.row();
    for (const Note& n : notes) n.setRow(sum - n.row(), scope.topRow);
}

/// Calls `each(note, place)` for the notes of every chord, from the first to sound on.
template <class F>
void eachOfChord(Notes& notes, bool down, F&& each) {
    for (size_t first = 0; first < notes.size();) {
        size_t end = first;
        while (end < notes.size() && notes[end].tick == notes[first].tick) end++;
        std::vector<Note*> chord;
        for (size_t i = first; i < end; i++) chord.push_back(&notes[i]);
        std::ranges::stable_sort(chord, [down](const Note* a, const Note* b) {
            return down ? a->row() > b->row() : a->row() < b->row();
        });
        for (size_t i = 0; i < chord.size(); i++) each(*chord[i], int(i));
        first = end;
    }
}

void arpeggiate(Notes& notes, const TransformValues& v, const TransformScope&) {
    std::vector<std::pair<Note*, int>> placed;
    eachOfChord(notes, v[1], [&](Note& n, int place) { placed.emplace_back(&n, place); });
    for (const auto& [n, place] : placed) {
        n->moveTo(n->tick + double(place) * v[0]);
        n->setLength(v[0]);
    }
}

void strum(Notes& notes, const TransformValues& v, const TransformScope&) {
    std::vector<std::pair<Note*, int>> placed;
    eachOfChord(notes, v[1], [&](Note& n, int place) { placed.emplace_back(&n, place); });
    for (const auto& [n, place] : placed) {
        const double later = double(place) * v[0];
        n->setLength(*n->length() - later);
        n->moveTo(n->tick + later);
        n->setVelocity(n->velocity() * std::pow(1 - v[2] / 100.0, place));
    }
}

void moveDegrees(Notes& notes, const TransformValues& v, const TransformScope& scope) {
    if (notes.front().partType == partDrum) return;
    for (const Note& n : notes) n.setRow(scope.scale(n.tick).moved(n.row(), v[0]), scope.topRow);
}

/// A turn that would leave the keys is none.
void invertChords(Notes& notes, const TransformValues& v, const TransformScope& scope) {
    std::map<int, std::vector<Note*>> chords;
    for (Note& n : notes) chords[n.tick].push_back(&n);
    if (notes.front().partType == partDrum) return;
    for (auto& [tick, chord] : chords)
        for (int turn = 0; turn < std::abs(v[0]); turn++) {
            const auto [low, high] = std::ranges::minmax(chord, {}, &Note::row);
            const Note* moved = v[0] > 0 ? low : high;
            const int to = moved->row() + (v[0] > 0 ? octaveKeys : -octaveKeys);
            if (to >= 0 && to <= scope.topRow) moved->setRow(to, scope.topRow);
        }
}

void spreadChords(Notes& notes, const TransformValues& v, const TransformScope& scope) {
    if (notes.front().partType == partDrum) return;
    std::vector<std::pair<Note*, int>> moved;
    eachOfChord(notes, false, [&](Note& n, int place) {
        const int to = n.row() + octaveKeys * v[0];
        if (place % 2 == 1 && to <= scope.topRow) moved.emplace_back(&n, to);
    });
    for (const auto& [n, to] : moved) n->setRow(to, scope.topRow);
}

constexpr void (*changes[])(Notes&, const TransformValues&, const TransformScope&) = {
    quantizeNotes, humanise,     makeLegato,  scaleVelocity, rampVelocity, compressVelocity,
    transpose,     stretch,      reverse,     mirror,        arpeggiate,   strum,
    nullptr, // transformThin
    moveDegrees,   invertChords, spreadChords};

/// A message's value, and which row of values it belongs to; -1 for what is not thinned.
struct Message {
    int key = -1, value = 0;
};
Message messageOf(int data) {
    switch (statusByte(data)) {
    case midiController:
        return {data & 0xFFFF, asByte2(data)};
    case midiPressure:
        return {data & 0xFF, asByte1(data)};
    case midiPitchBend:
        return {data & 0xFF, asByte2(data)};
    default:
        return {};
    }
}

/// The last message of a row always stays: it is where the value ends.
void thin(CPart* draft, const TransformValues& v, bool all) {
    if (draft->type != partMIDI) return;
    struct Kept {
        int tick = 0, value = 0;
    };
    std::map<int, Kept> kept;
    std::map<int, CBaseEvent*> last;
    std::unordered_set<CBaseEvent*> chosen, going;
    for (CBaseEvent* e = draft->getEvents(); e; e = e->next)
        if (const Message m = messageOf(asMessage(e)->data); m.key >= 0) last[m.key] = e;
    eachEvent(draft->getEvents(), [&](CBaseEvent* e, int tick) {
        if (isSelected(e)) chosen.insert(e);
        const Message m = messageOf(asMessage(e)->data);
        if (m.key < 0 || (!all && !isSelected(e))) return;
        const auto before = kept.find(m.key);
        const bool near = before != kept.end() && (tick - before->second.tick < v[0] ||
                                                   std::abs(m.value - before->second.value) < v[1]);
        if (near && last[m.key] != e)
            going.insert(e);
        else
            kept[m.key] = {tick, m.value};
    });
    for (CBaseEvent* e = draft->getEvents(); e; e = e->next) select(e, going.contains(e));
    draft->deleteSelected();
    for (CBaseEvent* e = draft->getEvents(); e; e = e->next) select(e, chosen.contains(e));
}

} // namespace

std::span<const TransformShape> transformShapes() {
    return shapes;
}

TransformValues usualValues(int kind) {
    TransformValues values{};
    for (size_t i = 0; i < values.size(); i++) values[i] = shapes[kind].values[i].usual;
    return values;
}

void transformEvents(CPart* draft, int kind, const TransformValues& values,
                     const TransformScope& scope) {
    const bool all = !hasSelectedEvents(draft);
    if (kind == transformThin) return thin(draft, values, all);
    Notes notes;
    eachEvent(draft->getEvents(), [&](CBaseEvent* e, int tick) {
        if (eventLength(draft->type, e) && (all || isSelected(e)))
            notes.push_back({e, draft->type, tick});
    });
    if (notes.empty()) return;
    changes[kind](notes, values, scope);
    std::unordered_map<const CBaseEvent*, int> places;
    for (const Note& n : notes) places[n.event] = asMinMax(n.tick, scope.firstTick, maxTicks);
    placeEvents(draft, [&](CBaseEvent* e, int tick) {
        const auto placed = places.find(e);
        return placed == places.end() ? tick : placed->second;
    });
}
