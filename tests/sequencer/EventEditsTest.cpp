#include "sequencer/edit/EventEdits.h"
#include "EditsFixture.h"
#include "sequencer/song/EventFind.h"
#include "sequencer/song/EventIndex.h"

#include <utility>

namespace {

constexpr EventLane notes, velocities{laneVelocity, 0}, points{laneAutomation, 0};

CPart* partA(CSeq* seq) {
    return seq->getProg()->tracks.getFirst()->parts.getFirst();
}

void pick(CBaseEvent* list, const std::string& which) {
    for (int i = 0; list; list = list->next, i++)
        list->flags = which.find(char('a' + i)) != std::string::npos ? eventSelected : 0;
}

/// Selects events and points of the first part by their letters.
std::function<void(Edits&)> picking(const char* events, const char* ofPoints = "") {
    return [=](Edits& e) {
        pick(partA(e.seq)->getEvents(), events);
        pick(partA(e.seq)->getParam(0), ofPoints);
    };
}

std::function<void(CSeq*)> dragging(const EventLane& lane, const EventDelta& delta) {
    return [=](CSeq* seq) { dragEvents(seq, partA(seq), lane, delta); };
}

const std::string others = ghost(3840) + ghost(7680);

const EditCase cases[] = {
    {"move", picking("ab"), dragging(notes, {.ticks = 100, .pitch = 2}), "Move",
     "| 0:3840 100=62/240 2010=64/960 ~0 ~1920 " + others, "", 1},
    {"within the part", picking("ab"), dragging(notes, {.ticks = 9999, .pitch = -99}), "Move",
     "| 0:3840 1929=0/240 3839=2/960 ~0 ~1920 " + others},
    {"past another", picking("a"), dragging(notes, {.ticks = 2000}), "Move",
     "| 0:3840 1910=62/960 2000=60/240 ~0 ~1920 " + others},
    {"louder", picking("ab"), dragging(notes, {.velocity = 50}), "Edit",
     "| 0:3840 0=60/240v127 1910=62/960v127 ~0 ~1920 " + others},
    {"copy", picking("a"),
     [](CSeq* seq) { copyEvents(seq, partA(seq), notes, {.ticks = 240, .pitch = 12}); }, "Copy",
     "| 0:3840 0=60/240 240=72/240 1910=62/960 ~0 ~1920 " + others},
    {"shorter", picking("ab"), [](CSeq* seq) { resizeEvents(seq, partA(seq), -500); }, "Resize",
     "| 0:3840 0=60/1 1910=62/460 ~0 ~1920 " + others},
    {"start later", picking("ab"), [](CSeq* seq) { resizeEventStart(seq, partA(seq), 300); },
     "Resize", "| 0:3840 239=60/1 2210=62/660 ~0 ~1920 " + others},
    {"start earlier", picking("ab"), [](CSeq* seq) { resizeEventStart(seq, partA(seq), -300); },
     "Resize", "| 0:3840 0=60/240 1610=62/1260 ~0 ~1920 " + others},
    {"delete", picking("a", "b"), [](CSeq* seq) { deleteEvents(seq, partA(seq)); }, "Delete",
     "| 0:3840 1910=62/960 ~0 " + others},
    {"insert", picking("a"), [](CSeq* seq) { insertEvent(seq, partA(seq), 960, note(64)); },
     "Insert", "| 0:3840 0=60/240 960=64/240 1910=62/960 ~0 ~1920 " + others},
    {"insert a point", picking(""),
     [](CSeq* seq) { insertPoint(seq, partA(seq), 0, 960, createEnvEvent(nullptr, 0.25f)); },
     "Insert", "| 0:3840 0=60/240 1910=62/960 ~0 ~960:25% ~1920 " + others},
    {"move a point", picking("ab", "b"), dragging(points, {.ticks = -960, .value = 0.7f}), "Move",
     "| 0:3840 0=60/240 1910=62/960 ~0 ~960:100% " + others},
    {"line of velocities", picking(""),
     [](CSeq* seq) {
         lineEditParts(seq, {partA(seq)}, velocities, {1910, 0, 1.0f, 0.0f});
     },
     "Edit", "| 0:3840 0=60/240v1 1910=62/960v127 ~0 ~1920 " + others},
    {"line over one point", picking(""),
     [](CSeq* seq) {
         lineEditParts(seq, {partA(seq)}, points, {960, 2880, 0.0f, 0.5f});
     },
     "Edit", "| 0:3840 0=60/240 1910=62/960 ~0 ~1920:25% " + others},
    {"draw controllers", picking(""),
     [](CSeq* seq) {
         std::unique_ptr<CPart> draft = contentDraft(partA(seq));
         for (const float value : {0.2f, 1.0f}) // the second changes what the first inserted
             setController(draft.get(), {laneController, 7}, 480, 600, value);
         applyDraft(seq, partA(seq), std::move(draft), "Edit CC7");
     },
     "Edit CC7", "| 0:3840 0=60/240 480=b0:7/127 1910=62/960 ~0 ~1920 " + others},
};

} // namespace

TEST(EventEdits, AreStepsOfTheHistory) {
    for (const EditCase& c : cases) checkEdit(c);
}

TEST(EventEdits, LeaveNoStepWhereNothingChanges) {
    Edits e;
    dragEvents(e.seq, partA(e.seq), notes, {.ticks = 100, .value = 1.0f}); // none is selected
    deleteEvents(e.seq, partA(e.seq));
    EXPECT_TRUE(e.host.undoList.empty());
}

/// A step on a ghost is one on its master, and the new event is what is selected.
TEST(EventEdits, ReachTheMaster) {
    Edits e;
    CPart* shown = e.part(e.midi, 2);
    insertEvent(e.seq, shown, 200, note(50));
    e.host.settle();
    EXPECT_EQ(notesOf(e.part(e.midi, 1)), (Ticks{{100, 64}, {200, 50}}));
    CBaseEvent* first = shown->getEvents();
    EXPECT_TRUE(!first->flags && first->next->flags == eventSelected);
    copyEvents(e.seq, shown, notes, {.ticks = 9999});
    e.host.settle();
    EXPECT_EQ(notesOf(shown), (Ticks{{100, 64}, {200, 50}, {1919, 50}}));
    EXPECT_FALSE(shown->getEvents()->next->flags);
}

/// Values of lanes are those of the messages.
TEST(EventEdits, SetValuesOfLanes) {
    struct Value {
        int kind, number;
        float value;
        int data; ///< -1: a lane without events of its own
    };
    const Value values[] = {{laneController, 11, 0.5f, asData(0xB0, 11, 64)},
                            {lanePressure, 0, 1.0f, asData(0xD0, 127, 0)},
                            {lanePitchBend, 0, 0.5f, asData(0xE0, 0, 64)}, // 8192
                            {lanePitchBend, 0, 2.0f, asData(0xE0, 127, 127)},
                            {laneProgram, 0, 10 / 127.0f, asData(0xC0, 10, 0)},
                            {laneAftertouch, 0, 0.5f, -1},
                            {laneVelocity, 0, 0.5f, -1}};
    for (const Value& v : values) {
        SCOPED_TRACE(testing::Message() << v.kind << " at " << v.value);
        const EventLane lane{v.kind, v.number};
        auto* event = static_cast<CMIDIEvent*>(newLaneEvent(lane, partMIDI, v.value));
        EXPECT_EQ(event ? event->data : -1, v.data);
        if (!event) continue;
        EXPECT_TRUE(onLane(lane, partMIDI, event));
        EXPECT_NEAR(laneValue(lane, partMIDI, event), std::min(v.value, 1.0f), 0.005f);
        setLaneValue(lane, partMIDI, event, 0.0f);
        EXPECT_EQ(event->data & 0x7F00, v.kind == laneController ? v.number << 8 : 0);
        freeEvent(event);
    }
    CMIDIEvent* quiet = note(60);
    setLaneValue(velocities, partMIDI, quiet, 0.0f);
    EXPECT_EQ(asByte2(quiet->data), 1); // a note still
    freeEvent(quiet);
}

/// A segment that falls bends the other way.
TEST(EventEdits, BendSegments) {
    Edits e;
    CPart* part = e.part(e.midi, 0);
    insertPoint(e.seq, part, 0, 960, createEnvEvent(nullptr, 0.9f)); // 0.5, 0.9, 0.5
    e.host.settle();
    const auto curves = [part] {
        std::vector<float> list;
        for (CBaseEvent* p = part->getParam(0); p; p = p->next)
            list.push_back(static_cast<CEnvEvent*>(p)->curve);
        return list;
    };
    const std::pair<float, std::vector<float>> bends[] = {{0.75f, {0.75f, 0.75f, -0.75f}},
                                                          {0.75f, {1.0f, 1.0f, -1.0f}}};
    for (const auto& [amount, expected] : bends) {
        pick(part->getParam(0), "abc");
        curveEvents(e.seq, part, 0, amount, false);
        e.host.settle();
        EXPECT_EQ(curves(), expected);
    }
    pick(part->getParam(0), "b");
    curveEvents(e.seq, part, 0, 0.0f, true);
    e.host.settle();
    EXPECT_EQ(curves(), (std::vector<float>{1.0f, 0.0f, -1.0f}));
}

/// Clips of a part of several, at their own speed, and hits of a kit of five sounds.
TEST(EventEdits, ChangeClipsAndHits) {
    Edits e;
    deleteAll<CPart>(e.prog()->tempos);
    CPart* part = e.addAudio(960, {{0, clip(e.sample, 24000, 47999)}, {1920, clip(e.sample)}});
    pick(part->getEvents(), "a");
    const auto now = [&] {
        e.host.settle();
        return e.show(e.audio);
    };
    resizeEvents(e.seq, part, 240);
    EXPECT_EQ(now(), "| 960:3840 0=24000-53999 1920=0-95999 ");
    resizeEventStart(e.seq, part, 480);
    EXPECT_EQ(now(), "| 960:3840 480=36000-53999 1920=0-95999 ");
    resizeEventStart(e.seq, part, -960); // not before the part
    EXPECT_EQ(now(), "| 960:3840 0=24000-53999 1920=0-95999 ");
    dragEvents(e.seq, part, notes, {.ticks = 2400});
    EXPECT_EQ(now(), "| 960:3840 1920=0-95999 2400=24000-53999 ");
    e.seq->addStandardKit(e.drums->track);
    CDrumEvent* hit = createDrumEvent();
    hit->flags = eventSelected;
    auto* hits = new CDrumPart;
    hits->addEvent(0, hit);
    e.drums->addPart(hits, nullptr);
    EXPECT_EQ(eventRange(e.seq, hits, notes).maxPitch, 4);
    dragEvents(e.seq, hits, notes, {.pitch = 9, .velocity = -64});
    e.host.settle();
    const auto* moved = static_cast<CDrumEvent*>(hits->getEvents());
    EXPECT_EQ(moved->sound, 4);
    EXPECT_NEAR(moved->velocity, 63 / 127.0f, 1e-6f);
    e.addAudio(9600, {{0, clip(e.sample)}});
    const int steps = e.host.undoIndex;
    pick(e.part(e.audio, 1)->getEvents(), "a");
    dragEvents(e.seq, e.part(e.audio, 1), notes, {.ticks = 100}); // its only clip
    EXPECT_EQ(e.host.undoIndex, steps);
}

/// Edges take at most a fifth; the middle of a segment is where it is drawn.
TEST(EventEdits, FindWhatIsUnderThePointer) {
    Edits e;
    CPart* part = e.part(e.midi, 0);
    struct Probe {
        double tick;
        int key, found, zone;
    };
    const Probe probes[] = {
        {0, 60, 0, zoneStart},       {47, 60, 0, zoneStart},   {48, 60, 0, zoneBody},
        {192, 60, 0, zoneEnd},       {240, 60, -1, 0},         {100, 61, -1, 0},
        {1910, 62, 1910, zoneStart}, {2869, 62, 1910, zoneEnd}};
    const EventIndex events(e.seq, part);
    for (const Probe& p : probes) {
        const FoundEvent found = findEvent(part, events, p.tick, p.key, 100.0);
        EXPECT_EQ(found.event ? found.tick : -1, p.found) << p.tick;
        EXPECT_EQ(found.zone, p.zone) << p.tick;
    }
    auto* last = static_cast<CEnvEvent*>(part->getParam(0)->next);
    last->value = 1.0f;
    last->curve = 0.0f;
    const PointProbe on{1900, 0.95, 40, 0.1}, middle{960, 0.75, 40, 0.1}, off{960, 0.5, 40, 0.1};
    EXPECT_TRUE(findPoint(part, 0, on).event == last && findPoint(part, 0, on).zone == zoneBody);
    EXPECT_TRUE(findPoint(part, 0, middle).event == last &&
                findPoint(part, 0, middle).zone == zoneCurve);
    EXPECT_EQ(findPoint(part, 0, off).event, nullptr);
}
