#include "EditsFixture.h"

#include "engine/CQV.h"
#include "sequencer/edit/EventDraft.h"
#include "sequencer/edit/EventShift.h"
#include "sequencer/edit/PartEdits.h"
#include "sequencer/song/EventIndex.h"

#include <random>

namespace {

using Found = std::vector<const CBaseEvent*>;

Found within(const EventIndex& index, double from, double to) {
    Found found;
    index.eachWithin(from, to, [&](const EventIndex::Entry& e) { found.push_back(e.event); });
    return found;
}

/// One that looks at every event.
Found plainly(CPart* part, double from, double to) {
    Found found;
    eachEvent(part->getEvents(), [&](CBaseEvent* e, int tick) {
        const int* length = eventLength(part->type, e);
        const double end = tick + double(length ? std::max(1, *length) : 1);
        if (tick < to && end > from) found.push_back(e);
    });
    return found;
}

/// Notes and messages at random; every fiftieth is as long as the part.
void fill(CPart* part, int count, std::mt19937& chance) {
    EventCollector events;
    for (int i = 0; i < count; i++) {
        CMIDIEvent* e = createMIDIEvent();
        e->data =
            i % 7 ? asData(midiNoteOn, int(chance() % 128), 90) : asData(midiController, 7, 9);
        e->length = i % 50 ? int(chance() % 400) : 40000;
        e->flags = chance() % 3 == 0;
        events.add(int(chance() % 40000), e);
    }
    part->setEvents(events.takeList());
}

std::string told(CPart* part) {
    std::ostringstream text;
    eachEvent(part->getEvents(), [&](CBaseEvent* e, int tick) {
        const auto* m = static_cast<CMIDIEvent*>(e);
        text << tick << ':' << m->data << ':' << m->length << (isSelected(e) ? "* " : " ");
    });
    return text.str();
}

} // namespace

TEST(EventIndex, FindsWhatLastsOverAStretch) {
    Edits e;
    CPart* part = e.part(e.midi, 0);
    std::mt19937 chance(5);
    for (const int count : {0, 1, 63, 64, 65, 1000}) {
        fill(part, count, chance);
        if (count == 65) part->getEvents()->next->delta = -3000; // out of order
        const EventIndex index(e.seq, part);
        for (const auto& [from, to] : std::initializer_list<std::pair<double, double>>{
                 {0, 1}, {-9, 0}, {100.5, 100.6}, {20000, 20400}, {39999, 90000}, {-1e9, 1e9}})
            EXPECT_EQ(within(index, from, to), plainly(part, from, to))
                << count << " events, " << from << " to " << to;
    }
}

TEST(EventIndex, FollowsStepsAndUndo) {
    Edits e;
    CPart* part = e.part(e.midi, 0);
    EventIndex index;
    const auto holds = [&] {
        index.refresh(e.seq, part);
        return within(index, -1e9, 1e9) == plainly(part, -1e9, 1e9);
    };
    EXPECT_TRUE(holds());
    select(part->getEvents(), true);
    for (int i = 0; i < 5; i++) {
        dragEvents(e.seq, part, {}, {.ticks = 10, .pitch = 1});
        e.host.settle();
        EXPECT_TRUE(holds()) << i;
        e.host.undoClicked(nullptr);
        e.host.settle();
        EXPECT_TRUE(holds()) << i;
    }
}

/// Whatever a drag went through, its draft is what one change of the part makes.
TEST(EventDraft, IsTheLatestChangeAlone) {
    Edits e;
    CPart* part = e.part(e.midi, 0);
    part->length = 40000;
    std::mt19937 chance(6);
    fill(part, 500, chance);
    EventDraft draft(e.seq, part);
    for (int i = 0; i < 40; i++) {
        const auto upTo = [&](int most) { return int(chance() % unsigned(2 * most)) - most; };
        const EventDelta by{upTo(3000), upTo(300), upTo(9), upTo(90)};
        const std::unique_ptr<CPart> once = contentDraft(part);
        if (i % 3 == 0) {
            draft.trim(by.ticks);
            trimEvents(e.seq, part, once.get(), by.ticks);
        } else {
            draft.change(by);
            changeEvents(e.seq, part, once.get(), {}, by);
        }
        ASSERT_EQ(told(draft.draft()), told(once.get())) << i;
    }
}
