#include "sequencer/edit/Ripple.h"
#include "EditsFixture.h"
#include "sequencer/edit/RangeEdits.h"

#include <map>

namespace {

/// A clip of 3840 ticks at 7680 of the audio track, and the parts of those letters selected.
std::function<void(Edits&)> selecting(const char* which) {
    return [which](Edits& e) {
        e.addAudio(7680, {{0, clip(e.sample)}});
        e.select(e.midi, which);
    };
}

void insertBar(CSeq* seq, Ripple ripple) {
    CPart* made = nullptr;
    auto* on = seq->getProg()->tracks.getFirst();
    EXPECT_EQ(insertPart(seq, on, {3840, 960}, ripple, made), "");
}

void deleteTime(CSeq* seq, Ripple ripple) {
    auto* on = seq->getProg()->tracks.getFirst();
    EXPECT_EQ(deleteRange(seq, {960, 4800, {on}}, ripple), "");
}

template <class F>
std::function<void(CSeq*)> with(Ripple ripple, F edit) {
    return [=](CSeq* seq) { edit(seq, ripple); };
}

const auto moveOn = [](CSeq* seq, Ripple r) { EXPECT_EQ(moveParts(seq, 960, 0, r), ""); };
const auto remove = [](CSeq* seq, Ripple r) { EXPECT_EQ(deleteParts(seq, r), ""); };

const std::string movedA = "| 960:3840 0=60/240 1910=62/960 ~0 ~1920 ";
const std::string left = "| 0:960 0=60/240 ~0 ";

struct RippleCase {
    EditCase edit;
    int audioPos; ///< afterwards
};

const RippleCase cases[] = {
    {{"move alone", selecting("b"), with(Ripple::off, moveOn), "Move",
      noteA + ghost(4800) + ghost(7680)},
     7680},
    {{"move a track", selecting("a"), with(Ripple::track, moveOn), "Move",
      movedA + ghost(4800) + ghost(8640)},
     7680},
    {{"move what is later", selecting("b"), with(Ripple::track, moveOn), "Move",
      noteA + ghost(4800) + ghost(8640)},
     7680},
    {{"move all", selecting("a"), with(Ripple::all, moveOn), "Move",
      movedA + ghost(4800) + ghost(8640), "1920@100 3840@140 5760@90 M960:3840"},
     8640},
    {{"delete", selecting("b"), with(Ripple::track, remove), "Delete", noteA + ghost(5760)}, 7680},
    {{"delete two", selecting("ab"), with(Ripple::track, remove), "Delete", ghost(1920)}, 7680},
    {{"delete of all", selecting("a"), with(Ripple::all, remove), "Delete", ghost(0) + ghost(3840),
      "0@100 0@140 960@90 M0:3840"},
     3840},
    {{"insert", selecting(""), with(Ripple::track, insertBar), "Insert part",
      noteA + "| 3840:960 " + ghost(4800) + ghost(8640)},
     7680},
    {{"insert for all", selecting(""), with(Ripple::all, insertBar), "Insert part",
      noteA + "| 3840:960 " + ghost(4800) + ghost(8640), "960@100 2880@140 5760@90 M0:3840"},
     8640},
    {{"delete time", selecting(""), with(Ripple::track, deleteTime), "Delete",
      left + "| 960:960 " + ghost(3840)},
     7680},
    {{"delete time for all", selecting(""), with(Ripple::all, deleteTime), "Delete",
      left + "| 960:960 " + ghost(3840), "960@100 960@140 960@90 M0:3840"},
     3840},
};

} // namespace

TEST(Ripple, IsAStepOfTheHistory) {
    for (const RippleCase& c : cases) {
        checkEdit(c.edit);
        Edits e;
        c.edit.prepare(e);
        c.edit.run(e.seq);
        e.host.settle();
        EXPECT_EQ(e.part(e.audio, 0)->pos, c.audioPos) << c.edit.name;
    }
}

/// What is told before is what goes along, and nothing of a locked track does.
TEST(Ripple, TellsBeforeWhatGoesAlong) {
    for (const bool locked : {false, true}) {
        Edits e;
        selecting("a")(e);
        e.audio->track->locked = locked;
        std::map<CPart*, int> before;
        e.seq->eachSongTrack([&](CSongTrack* t) {
            for (auto* p : t->parts)
                if (!p->selected()) before[p] = p->pos;
        });
        for (const CList* list : listsOf(e.prog()->tempos, e.prog()->markers))
            for (auto* p : each<CPart>(*list)) before[p] = p->pos;
        const std::vector<RippleShift> told = rippleOfMove(e.seq, Ripple::all, 240);
        EXPECT_EQ(told.size(), locked ? 6u : 7u);
        for (const RippleShift& shift : told) before[shift.part] += shift.ticks;
        EXPECT_EQ(moveParts(e.seq, 240, 0, Ripple::all), "");
        e.host.settle();
        for (const auto& [part, pos] : before) EXPECT_EQ(part->pos, pos);
        EXPECT_EQ(e.part(e.audio, 0)->pos, locked ? 7680 : 7920);
    }
}

TEST(Ripple, IsRefusedWhole) {
    Edits e;
    selecting("a")(e);
    e.audio->addPart(new CAudioPart, nullptr)->pos = 1 << 30;
    const std::string start = e.bytes();
    CPart* made = nullptr;
    EXPECT_EQ(moveParts(e.seq, 240, 0, Ripple::all), "The song would become too long");
    EXPECT_EQ(insertPart(e.seq, e.midi, {0, 240}, Ripple::all, made),
              "The song would become too long");
    EXPECT_EQ(moveParts(e.seq, 240, 1, Ripple::track), "A track does not take these parts");
    EXPECT_TRUE(!made && e.host.undoList.empty() && e.bytes() == start);
}
