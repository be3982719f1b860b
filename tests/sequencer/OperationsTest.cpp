#include "EditsFixture.h"
#include "audiofiles/CAudioProcessor.h"
#include "base/TempFolder.h"
#include "engine/CSnap.h"
#include "sequencer/edit/AudioProcess.h"
#include "sequencer/edit/BarEdits.h"
#include "sequencer/edit/ClipEdits.h"
#include "sequencer/edit/EventEdits.h"
#include "sequencer/edit/MidiProcess.h"
#include "sequencer/edit/PartActions.h"
#include "sequencer/edit/PartMerge.h"
#include "sequencer/edit/Quantize.h"
#include "sequencer/edit/RangeEdits.h"
#include "sequencer/edit/Remix.h"
#include "sequencer/edit/Ripple.h"
#include "sequencer/play/AudioVoices.h"
#include "sequencer/song/PartOrder.h"

#include <optional>
#include <random>

namespace {

/// A song of all classes of parts, on which anything is done at random.
struct Anything : Edits {
    const TempFolder folder;
    std::mt19937 random;
    CSongTrack* more = track(trackMIDI);

    explicit Anything(unsigned seed) : random(seed) {
        host.tempAudioFolder = folder.file("");
        for (int i = 0; i < clipFrames; i++)
            reinterpret_cast<short*>(sample->data)[i] = short(i / 9000 % 2 ? 25000 : 0);
        for (int pos : {0, 1920}) addAudio(pos, {{0, clip(sample, 4000, 90000)}});
        addAudio(1920, {{0, clip(sample)}, {960, clip(sample, 100, 50000)}});
        seq->addStandardKit(drums->track);
        for (int twin : {0, 1}) {
            auto* hits = new CDrumPart;
            hits->pos = 480;
            for (int i = 0; i < 4; i++) {
                CDrumEvent* hit = createDrumEvent();
                hit->sound = twin;
                hits->addEvent(i * 240, hit);
            }
            drums->addPart(hits, nullptr);
        }
        step([&](CUndo* u) {
            CPart* linked = seq->makeGhost(part(audio, 0), u);
            linked->pos = 9600;
            audio->addPart(linked, u);
        });
        auto* section = prog()->markers.getFirst();
        prog()->session.add(section);
        host.undoClear();
    }

    /// Parts at the ends of what ticks can tell.
    void addExtremes() {
        constexpr int far = 1 << 30;
        for (const int offset : {-far, 0, far}) {
            CPart* part = midiPart(offset ? far : 0, far);
            part->offset = offset;
            for (const int tick : {0, far}) part->addEvent(tick, note(64, far));
            part->addEventParam(far, createEnvEvent(nullptr, 1.0f), 0);
            more->addPart(part, nullptr);
            CAudioEvent* event = clip(sample, 0, offset ? clipFrames - 1 : 0);
            event->mode = playResample;
            event->ticks = offset ? far : 0;
            CPart* sound = addAudio(offset ? far : 0, {{0, event}});
            sound->length = far;
            sound->offset = offset;
        }
    }

    int pick(int n) { return int(random() % unsigned(n)); }
    int ticks() { return (pick(21) - 10) * 240 + pick(3) - 1; }
    float value() { return float(pick(101)) / 100.0f; }
    CSongTrack* anyTrack() { return prog()->tracks.items(pick(prog()->tracks.getCount())); }
    CPart* anyPart() {
        ListOf<CPart> parts;
        prog()->getSelectedParts(&parts);
        return parts.items(pick(std::max(1, parts.getCount())));
    }
    void onPart(const std::function<void(CPart*)>& act) {
        if (CPart* p = anyPart()) act(p);
    }
    TimeRange anyRange() {
        const int from = pick(30) * 480 + pick(2) * 7;
        return {from, from + 480 * (1 + pick(8)), {anyTrack(), anyTrack()}, pick(2) == 0};
    }
    Ripple anyRipple() { return Ripple(pick(3)); }
    EventLane anyLane() { return pick(2) ? EventLane{} : EventLane{laneAutomation, 0}; }
    EventDelta anyDelta() { return {ticks(), ticks(), pick(9) - 4, pick(41) - 20, value() - 0.5f}; }
    /// Selects parts, and events and points of theirs, at random.
    void selectAnything() {
        at(pick(12) * 480);
        locators(pick(8) * 480, 480 + pick(16) * 480);
        seq->snap->index = pick(7);
        eachPart([this](CPart* p) {
            p->setSelected(pick(3) == 0);
            for (CBaseEvent* list : {p->getEvents(), static_cast<CBaseEvent*>(p->getParam(0))})
                for (CBaseEvent* e = list; e; e = e->next) e->flags = pick(2) ? eventSelected : 0;
        });
    }
    template <class F>
    void eachPart(F visit) {
        seq->eachSongTrack([&](CSongTrack* t) {
            for (auto* p : t->parts) visit(p);
        });
    }
    int partCount() {
        int count = 0;
        eachPart([&count](CPart*) { count++; });
        return count;
    }
    /// What is stored but for how it is shown.
    std::string content() {
        leaveView();
        seq->snap->index = 3;
        eachPart([](CPart* p) {
            for (int list = -1; list < maxSlots; list++)
                for (CBaseEvent* e = list < 0 ? p->getEvents() : p->getParam(list); e; e = e->next)
                    e->flags = 0;
        });
        return bytes();
    }
};

using Act = void (*)(Anything&);

/// What makes no file.
const Act acts[] = {
    [](Anything& e) { moveParts(e.seq, e.ticks(), e.pick(5) - 2); },
    [](Anything& e) { copyParts(e.seq, e.ticks(), e.pick(5) - 2, e.pick(2) == 0); },
    [](Anything& e) { resizeParts(e.seq, e.ticks(), e.pick(2) == 0); },
    [](Anything& e) { resizePartsStart(e.seq, e.ticks()); },
    [](Anything& e) { insertPart(e.seq, e.anyTrack(), e.pick(20000)); },
    [](Anything& e) { splitRange(e.seq, e.anyRange()); },
    [](Anything& e) { moveRange(e.seq, e.anyRange(), e.ticks(), e.pick(3) - 1); },
    [](Anything& e) { copyRange(e.seq, e.anyRange(), e.ticks(), e.pick(3) - 1); },
    [](Anything& e) { duplicateRange(e.seq, e.anyRange()); },
    [](Anything& e) { deleteRange(e.seq, e.anyRange(), e.anyRipple()); },
    [](Anything& e) { muteRange(e.seq, e.anyRange()); },
    [](Anything& e) { stretchRange(e.seq, e.anyRange(), 100 + e.pick(5000)); },
    [](Anything& e) { moveParts(e.seq, e.ticks(), e.pick(3) - 1, e.anyRipple()); },
    [](Anything& e) { deleteParts(e.seq, e.anyRipple()); },
    [](Anything& e) {
        CPart* made = nullptr;
        insertPart(e.seq, e.anyTrack(), {e.pick(9999), 480}, e.anyRipple(), made);
    },
    [](Anything& e) {
        e.onPart([&](CPart* p) { dragEvents(e.seq, p, e.anyLane(), e.anyDelta()); });
    },
    [](Anything& e) {
        e.onPart([&](CPart* p) { copyEvents(e.seq, p, e.anyLane(), e.anyDelta()); });
    },
    [](Anything& e) { e.onPart([&](CPart* p) { resizeEvents(e.seq, p, e.ticks()); }); },
    [](Anything& e) { e.onPart([&](CPart* p) { resizeEventStart(e.seq, p, e.ticks()); }); },
    [](Anything& e) { e.onPart([&](CPart* p) { deleteEvents(e.seq, p); }); },
    [](Anything& e) {
        CPart* p = e.anyPart();
        if (p) insertPoint(e.seq, p, 0, e.pick(4000), createEnvEvent(nullptr, e.value()));
    },
    [](Anything& e) {
        e.onPart([&](CPart* p) { curveEvents(e.seq, p, 0, e.value(), e.pick(2) == 0); });
    },
    [](Anything& e) {
        const ValueLine line{e.pick(4000), e.pick(9000), e.value(), e.value()};
        if (CPart* p = e.anyPart()) lineEditParts(e.seq, {p}, {laneVelocity, 0}, line);
    },
    [](Anything& e) { processMIDI(e.seq, e.pick(midiProcessCount)); },
    [](Anything& e) { setClips(e.seq, ClipSetting(e.pick(7)), e.value() * 20.0f); },
    [](Anything& e) { reverseClips(e.seq); },
    [](Anything& e) { slipParts(e.seq, e.ticks()); },
    [](Anything& e) { e.onPart([&](CPart* p) { loopPart(e.seq, p, e.pick(4)); }); },
    [](Anything& e) { processAudio(e.seq, processBeatslice); },
    [](Anything& e) { processAudio(e.seq, processAutoslice); },
    [](Anything& e) { glueParts(e.seq); },
    [](Anything& e) { e.seq->splitAtCursorClicked(); },
    [](Anything& e) { removeBars(e.seq); },
    [](Anything& e) { unghostParts(e.seq); },
};

const Act fileActs[] = {
    [](Anything& e) { processAudio(e.seq, processFlatten); },
    [](Anything& e) {
        processAudio(e.seq, e.pick(processFlatten), {e.anyPart(), 0, 480});
    },
    [](Anything& e) { remix(e.seq, static_cast<CSeqProg*>(e.seq->progs.getFirst())); },
};

/// Anything at all, with undo and redo in between, and then the whole way back.
void doAnything(Anything& e, int steps, bool files, const std::function<void()>& between) {
    for (int i = 0; i < steps; i++) {
        e.selectAnything();
        if (e.partCount() > 90) {
            e.seq->selectAll();
            deleteParts(e.seq);
        }
        const int what = e.pick(int(std::size(acts)) + 8);
        if (what < 5)
            e.host.undoClicked();
        else if (what < 8)
            e.host.redoClicked();
        else if (files && e.pick(10) == 0)
            fileActs[e.pick(int(std::size(fileActs)))](e);
        else
            acts[what - 8](e);
        e.host.settle();
        e.seq->eachSongTrack(
            [](CSongTrack* t) { ASSERT_TRUE(inOrder(t->parts, earlier, nullptr)); });
        between();
        ASSERT_FALSE(testing::Test::HasFailure()) << "step " << i;
    }
    while (e.host.undoIndex >= 0) e.undo();
}

} // namespace

TEST(Operations, LeadBackFromAnywhere) {
    for (unsigned seed = 1; seed <= 4; seed++) {
        SCOPED_TRACE(seed);
        Anything e(seed);
        if (seed % 2) e.addExtremes();
        const std::string start = e.content();
        doAnything(e, 300, true, [] {});
        EXPECT_TRUE(e.content() == start);
    }
}

/// While the song plays nothing forbidden happens in its blocks.
TEST(Operations, HappenWhileTheSongPlays) {
    Anything e(99);
    const std::string start = e.content();
    e.host.setFrames(128);
    rtReset();
    std::optional<BlockThread> audio(std::in_place, [&e] {
        e.device.run();
        e.device.forget();
    });
    e.host.start();
    doAnything(e, 400, false, [&] {
        e.host.idle();
        ASSERT_TRUE(audio->next());
    });
    e.host.stop();
    e.leaveView();
    for (int i = 0; i < 2; i++) ASSERT_TRUE(audio->next());
    audio.reset();
    EXPECT_TRUE(e.content() == start);
    EXPECT_EQ(rtViolations(), 0);
}
