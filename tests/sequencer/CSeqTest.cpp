#include "audiofiles/CSample.h"
#include "base/Numbers.h"

#include "SongFixture.h"

#include <algorithm>
#include <random>

namespace {

int countIO(CComp* c) {
    return c->inPorts.getCount() + c->outPorts.getCount() + c->inputs.getCount() +
           c->outputs.getCount();
}

struct SeqFixture : SongFixture, testing::Test {
    /// Undoes and redoes the last step and expects the same songs on both sides.
    void expectReversible(const std::string& before) {
        const std::string after = dump(seq);
        int borrowed = 0;
        for (auto* t : each<CTrack>(seq->tracks)) borrowed += countIO(t);
        EXPECT_EQ(countIO(seq), borrowed) << "the sequencer has what its tracks name";
        EXPECT_NE(before, after);
        undo();
        EXPECT_EQ(dump(seq), before);
        redo();
        EXPECT_EQ(dump(seq), after);
        undo();
        redo();
        EXPECT_EQ(dump(seq), after) << "a second time";
    }
};
using CSeqTest = SeqFixture;

std::vector<CPart*> contents(const CList& list) {
    std::vector<CPart*> parts;
    for (auto* part : each<CPart>(list)) parts.push_back(part);
    return parts;
}

} // namespace

TEST_F(CSeqTest, AddingATrackIsReversible) {
    seq->progs.add(seq->createProgram());
    track(trackMIDI);
    for (int kind : {1, 2, 3, 4, 5, -1}) {
        for (int index : {-1, 0, 1, 99}) {
            const std::string before = dump(seq);
            CSongTrack* made = nullptr;
            step([&](CUndo* u) { made = seq->addTrack(kind, prog(), u, index); });
            ASSERT_NE(made, nullptr) << kind;
            EXPECT_EQ(made->prog, prog());
            for (auto* p : each<CSeqProg>(seq->progs))
                EXPECT_EQ(p->tracks.indexed(p->songTrackOf(made->track)),
                          seq->tracks.indexed(made->track));
            expectReversible(before);
        }
    }
}

/// What a step adds is counted before it is linked.
TEST_F(CSeqTest, AStepMayBuildAWholeTrack) {
    CPart* parts[2];
    CSubTrack* lanes[9];
    step([&](CUndo* u) {
        CSongTrack* made = seq->addTrack(trackMIDI, prog(), u);
        parts[0] = made->addPart(midiPart(0), u);
        for (auto& lane : lanes)
            lane = made->track->addLane(new CSubTrack("lane", laneAutomation), u);
        parts[1] = made->addPart(midiPart(3840), u);
        EXPECT_EQ(seq->addTrack(trackMIDI, prog(), u)->track->id, "instrument-2");
    });
    for (int i = 0; i < 9; i++) EXPECT_EQ(lanes[i]->slot, i);
    for (CPart* part : parts) EXPECT_GE(part->reservedSlots(), 9);
}

TEST_F(CSeqTest, RemovingATrackTakesItsCablesAlong) {
    CTrack* folder = track(trackFolder)->track;
    CSongTrack* audio = track(trackAudio);
    CSongTrack* midi = track(trackMIDI);
    midi->track->folder = folder;
    midi->addPart(midiPart(0), nullptr);
    auto* synth = new CComp(&host);
    synth->inPorts.add(new CInputPort(synth));
    synth->addMIDICable(midi->track->outPort(), nullptr);
    host.comps.add(synth);
    for (CTrack* gone : {midi->track, audio->track, folder}) {
        const std::string before = dump(seq);
        step([&](CUndo* u) { seq->removeTrack(gone, u); });
        EXPECT_EQ(dump(seq).find(std::string("track ") + gone->id.asChar()), std::string::npos);
        expectReversible(before);
        undo();
    }
    synth->allNotesOff = 0;
    step([&](CUndo* u) { seq->removeTrack(midi->track, u); });
    EXPECT_TRUE(synth->midiCables.empty());
    EXPECT_EQ(synth->allNotesOff, 1) << "what it played must not hang";
    synth->allNotesOff = 0;
    undo();
    EXPECT_EQ(synth->allNotesOff, 0);
}

/// By position, at one position the longer first, where 0 counts as 960; ties keep their order.
TEST_F(CSeqTest, PartsAreOrderedLikeByAStableSort) {
    CSongTrack* songTrack = track(trackMIDI);
    std::mt19937 random(3);
    for (int count : {0, 1, 2, 3, 100, 1000}) {
        deleteAll<CPart>(songTrack->parts);
        for (int i = 0; i < count; i++) {
            const int lengths[] = {0, 960, 100, 3840};
            songTrack->linkPart(midiPart(int(random() % 20) * 960, lengths[random() % 4]));
        }
        auto expected = contents(songTrack->parts);
        std::stable_sort(expected.begin(), expected.end(), [](CPart* a, CPart* b) {
            const int lengthA = a->length ? int(a->length) : 960;
            const int lengthB = b->length ? int(b->length) : 960;
            return a->pos != b->pos ? a->pos < b->pos : lengthA > lengthB;
        });
        seq->orderParts(nullptr, nullptr, true);
        EXPECT_EQ(contents(songTrack->parts), expected) << count;
        EXPECT_EQ(songTrack->parts.getCount(), count);
    }
    songTrack->linkPart(midiPart(-5));
    EXPECT_EQ(contents(songTrack->parts).back()->pos, -5) << "the list can grow again";
}

TEST_F(CSeqTest, LengthOfAClipFollowsItsSample) {
    CSample sample;
    sample.rate = 22050.0f;
    sample.valid = true;
    CAudioPart part;
    CAudioEvent* event = createAudioEvent();
    event->sample = &sample;
    event->end = 22049; // a second, that is two quarters at 120
    part.addEvent(0, event);
    part.length = 7;
    EXPECT_EQ(seq->getTicks(&part), 1920);
    EXPECT_EQ(part.length, 1920);
    event->semitones = 11;
    event->fine = 1.0f; // an octave up
    EXPECT_EQ(seq->getTicks(&part), 960);
    event->end = -1;
    EXPECT_EQ(seq->getTicks(&part), 960) << "nothing counts as a quarter";
    event->end = 22049;
    event->semitones = -(1 << 20);
    EXPECT_GT(seq->getTicks(&part), 0) << "a rate below a frame";
    part.length = 7;
    event->mode = 1;
    EXPECT_EQ(seq->getTicks(&part), 7) << "the tempo rules";
    event->mode = 0;
    part.multiclip = 1;
    EXPECT_EQ(seq->getTicks(&part), 7) << "several clips";
    part.length = 0;
    EXPECT_EQ(seq->getTicks(&part), 960);
}

TEST_F(CSeqTest, AGhostIsMadeByAStepThatCanBeUndone) {
    CSongTrack* songTrack = track(trackMIDI);
    CPart* part = midiPart(960);
    part->addEvent(10, note(60));
    part->addEventParam(20, createEnvEvent(nullptr, 0.5f), 3);
    songTrack->addPart(part, nullptr);
    const Ticks notes = notesOf(part), points = pointsOf(part, 3);
    const std::string before = dump(seq);
    CPart* ghost = nullptr;
    const auto addGhost = [&](int pos) {
        step([&](CUndo* u) {
            ghost = seq->makeGhost(part, u);
            ghost->pos = pos;
            songTrack->addPart(ghost, u);
        });
    };
    addGhost(9600);
    ASSERT_EQ(seq->masterParts.getCount(), 1);
    CPart* master = static_cast<CPart*>(seq->masterParts.getFirst());
    EXPECT_EQ(part->ghostOf, master);
    EXPECT_EQ(part->events, nullptr) << "the events have moved";
    EXPECT_EQ(master->ghostCount, 2);
    EXPECT_EQ(notesOf(ghost), notes);
    EXPECT_EQ(pointsOf(ghost, 3), points);
    EXPECT_EQ(part->pos, 960);
    expectReversible(before);

    const std::string one = dump(seq);
    addGhost(19200);
    EXPECT_EQ(seq->masterParts.getCount(), 1);
    EXPECT_EQ(master->ghostCount, 3);
    expectReversible(one);
    undo();
    undo();
    EXPECT_EQ(dump(seq), before);
    EXPECT_EQ(part->ghostOf, nullptr);
    EXPECT_EQ(notesOf(part), notes);
}

/// An edit of the master reaches the playback of each ghost in the step itself.
TEST_F(CSeqTest, StepsTellPlaybackWhatToRebuild) {
    CSongTrack* first = track(trackMIDI);
    CSongTrack* second = track(trackMIDI);
    CPart* part = first->addPart(midiPart(0), nullptr);
    CPart* ghost = nullptr;
    step([&](CUndo* u) { second->addPart(ghost = seq->makeGhost(part, u), u); });
    CPart* master = part->ghostOf;
    const auto served = [&](CSongTrack* songTrack) {
        unsigned asked = 0;
        for (unsigned bit : {requestSetup, requestFlush, requestLanes})
            if (songTrack->requests.take(bit)) asked |= bit;
        return asked;
    };
    served(first), served(second);
    part->addPlay()->current = ghost->addPlay()->current = note(1);
    CBaseEvent* stale = part->play(0)->current;
    step([&](CUndo* u) {
        CPart* edited = master->copy(0);
        edited->addEvent(5, note(61));
        swapUndoPart(u, master, edited);
    });
    for (CSongTrack* songTrack : {first, second}) EXPECT_EQ(served(songTrack), requestLanes);
    EXPECT_EQ(part->numPlay, 0);
    EXPECT_EQ(ghost->play(0)->current, nullptr);
    EXPECT_EQ(notesOf(ghost), (Ticks{{5, 61}}));
    freeEvent(stale);

    step([&](CUndo* u) { u->asRemove(ghost, &second->parts); });
    EXPECT_EQ(served(second), requestSetup | requestFlush);
    EXPECT_EQ(served(first), 0u);
    undo();
    EXPECT_EQ(served(second), requestSetup);

    step([&](CUndo* u) { second->track->addLane(new CSubTrack("lane", laneAutomation), u); });
    EXPECT_EQ(served(second), requestLanes);
    EXPECT_EQ(served(first), 0u);
}

TEST_F(CSeqTest, TheEditPartIsTheOnlySelectedOneOfAnOpenTrack) {
    CSongTrack* songTrack = track(trackMIDI);
    CPart* a = songTrack->addPart(midiPart(0), nullptr);
    CPart* b = songTrack->addPart(midiPart(3840), nullptr);
    a->setSelected(true);
    EXPECT_EQ(seq->getEditPart(), nullptr) << "no track selected";
    seq->selectTrack(songTrack, true);
    EXPECT_EQ(seq->getEditPart(), nullptr) << "closed";
    songTrack->track->setOpen(true);
    CTrack* owner = nullptr;
    EXPECT_EQ(seq->getEditPartAndTrack(owner), a);
    EXPECT_EQ(owner, songTrack->track);
    b->setSelected(true);
    EXPECT_EQ(seq->getEditPart(), nullptr) << "two selected";
    seq->unselectParts();
    EXPECT_EQ(seq->getEditPart(), nullptr);
    EXPECT_EQ(seq->partToTrack(b), songTrack->track);
    EXPECT_EQ(seq->partToTrack(nullptr), nullptr);
}

TEST_F(CSeqTest, FreedObjectsAreForgotten) {
    CSongTrack* audio = track(trackAudio);
    auto* lane = static_cast<CSubTrack*>(audio->track->subTracks.getFirst());
    EXPECT_EQ(lane->object, audio->track->output());
    CSend* send = audio->track->output()->sendLevels[0];
    lane->object = send;
    CComp other(&host);
    seq->del(&other);
    EXPECT_EQ(lane->object, send);
    seq->del(audio->track->output());
    EXPECT_EQ(lane->object, nullptr);

    step([&](CUndo* u) { seq->selectTrack(seq->addTrack(trackMIDI, prog(), u), true); });
    undo();
    host.idle();
    EXPECT_TRUE(seq->selectedTracks.empty()) << "a track that left is not selected";
}
