#include "SongFixture.h"

#include "audiofiles/CSample.h"
#include "effects/CEffect.h"
#include "sequencer/edit/PartEdits.h"
#include "sequencer/song/TrackRouting.h"

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
        for (auto* t : seq->tracks) borrowed += countIO(t);
        EXPECT_EQ(countIO(seq), borrowed) << "the sequencer has what its tracks name";
        EXPECT_NE(before, after);
        for (int round = 0; round < 2; round++) {
            undo();
            EXPECT_EQ(dump(seq), before);
            redo();
            EXPECT_EQ(dump(seq), after);
        }
    }
};
using CSeqTest = SeqFixture;

} // namespace

TEST_F(CSeqTest, AddingATrackIsReversible) {
    seq->progs.add(seq->createProgram());
    track(trackMIDI);
    for (const auto& [kind, index] : {std::pair{1, 0}, {2, -1}, {3, 1}, {5, 99}, {-1, 0}}) {
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

/// A file numbers ports and outputs by a byte: what would not come back from it is refused.
TEST_F(CSeqTest, TracksEndWhereCablesCannotBeSaved) {
    const Told told;
    step([&](CUndo* u) {
        for (int i = 0; i < 254; i++) ASSERT_TRUE(seq->addTrack(trackMIDI, prog(), u));
    });
    EXPECT_TRUE(track(trackDrum) && track(trackAudio) && track(trackFolder));
    EXPECT_FALSE(seq->hasTrackRoom(trackMIDI) || seq->hasTrackRoom(trackDrum));
    EXPECT_TRUE(seq->hasTrackRoom(trackAudio));
    const std::string before = dump(seq);
    EXPECT_EQ(track(trackMIDI), nullptr);
    EXPECT_EQ(dump(seq), before);
    EXPECT_EQ(Told::messages, std::vector<std::string>{"Error: Too many tracks"});
}

/// A track leads where it is told and nowhere else, which is one step.
TEST_F(CSeqTest, TracksLeadWhereTheyAreTold) {
    CTrack *notes = track(trackMIDI)->track, *sound = track(trackAudio)->track;
    auto* first = device.add(new TestInstrument(&host));
    auto* second = device.add(new TestInstrument(&host));
    auto* rack = device.add(new CEffect(&host));
    using Comps = std::vector<CComp*>;
    EXPECT_EQ(trackTargets(seq, notes), (Comps{device.midiOut, first, second}));
    EXPECT_EQ(trackTargets(seq, sound), (Comps{device.out, rack}));
    EXPECT_EQ(trackTargets(seq, track(trackFolder)->track), Comps());
    EXPECT_EQ(trackTarget(seq, notes), nullptr);
    EXPECT_EQ(trackTarget(seq, sound), device.out);
    struct Step {
        CTrack* from;
        CComp* to;
        const char* name;
    };
    for (const Step& s : {Step{notes, first, "Instrument"},
                          {notes, second, "Instrument"},
                          {notes, nullptr, "Instrument"},
                          {sound, rack, "Output"},
                          {sound, nullptr, "Output"}}) {
        const std::string before = dump(seq);
        EXPECT_TRUE(setTrackTarget(seq, s.from, s.to));
        EXPECT_EQ(trackTarget(seq, s.from), s.to);
        EXPECT_EQ(host.undoText(), CStr(s.name));
        EXPECT_FALSE(setTrackTarget(seq, s.from, s.to)) << "once more";
        EXPECT_FALSE(
            setTrackTarget(seq, s.from, s.from == notes ? static_cast<CComp*>(rack) : first));
        expectReversible(before);
    }
}

TEST_F(CSeqTest, RemovingATrackTakesItsCablesAlong) {
    CTrack* folder = track(trackFolder)->track;
    CSongTrack *audio = track(trackAudio), *midi = track(trackMIDI);
    midi->track->folder = folder;
    midi->addPart(midiPart(0), nullptr);
    auto* synth = connect(midi, device.add(new TestInstrument(&host)));
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
    std::vector<CPart*> expected;
    for (int i = 0; i < 1000; i++)
        expected.push_back(
            songTrack->linkPart(midiPart(int(random() % 20) * 960, int(random() % 4) * 480)));
    std::ranges::stable_sort(expected, {}, [](CPart* p) {
        return std::pair(int(p->pos), p->length ? -int(p->length) : -960);
    });
    seq->orderParts(nullptr, nullptr, true);
    for (int i = 0; i < 1000; i++) ASSERT_EQ(songTrack->parts.items(i), expected[size_t(i)]) << i;
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
    EXPECT_EQ(seq->getTicks(&part), 1920);
    EXPECT_EQ(part.length, 1920);
    event->semitones = 11;
    event->fine = 1.0f; // an octave up
    EXPECT_EQ(seq->getTicks(&part), 960);
    event->semitones = -(1 << 20);
    EXPECT_GT(seq->getTicks(&part), 0) << "a rate below a frame";
    event->end = -1;
    EXPECT_EQ(seq->getTicks(&part), 960) << "nothing counts as a quarter";
    part.length = 7;
    for (bool several : {false, true}) { // or one that the tempo rules
        part.multiclip = several;
        event->mode = !several;
        EXPECT_EQ(seq->getTicks(&part), 7) << several;
    }
}

/// An edit of the master reaches the playback of each ghost in the step itself.
TEST_F(CSeqTest, StepsTellPlaybackWhatToRebuild) {
    CSongTrack *first = track(trackMIDI), *second = track(trackMIDI);
    CPart* part = first->addPart(midiPart(0), nullptr);
    CPart* ghost = nullptr;
    step([&](CUndo* u) { second->addPart(ghost = seq->makeGhost(part, u), u); });
    const auto served = [&] {
        unsigned asked[2] = {};
        for (unsigned bit : {requestSetup, requestFlush, requestLanes})
            for (CSongTrack* t : {first, second})
                if (t->requests.take(bit)) asked[t == second] |= bit;
        return std::pair(asked[0], asked[1]);
    };
    served();
    CMIDIEvent stale{};
    part->addPlay()->current = ghost->addPlay()->current = &stale;
    step([&](CUndo* u) {
        CPart* edited = part->ghostOf->copy(0);
        edited->addEvent(5, note(61));
        swapUndoPart(u, part->ghostOf, edited);
    });
    EXPECT_EQ(served(), std::pair(requestLanes, requestLanes));
    EXPECT_EQ(part->numPlay, 0);
    EXPECT_EQ(ghost->numPlay, 0);
    EXPECT_EQ(notesOf(ghost), (Ticks{{5, 61}}));

    step([&](CUndo* u) { u->asRemove(ghost, &second->parts); });
    EXPECT_EQ(served(), std::pair(0u, requestSetup | requestFlush));
    undo();
    EXPECT_EQ(served(), std::pair(0u, unsigned(requestSetup)));
    step([&](CUndo* u) { second->track->addLane(new CSubTrack("lane", laneAutomation), u); });
    EXPECT_EQ(served(), std::pair(0u, unsigned(requestLanes)));
    using Record = void (*)(CUndo*, CPart*);
    for (const Record record :
         {Record(recordMuteToggle), Record([](CUndo*u, CPart*p) { recordMove(u, p, 480); }),
          Record([](CUndo*u, CPart*p) { recordGrow(u, p, 480); })}) {
        step([&](CUndo* u) { record(u, part); });
        EXPECT_EQ(served(), std::pair(requestSetup | requestFlush, 0u));
        undo();
        EXPECT_EQ(served(), std::pair(requestSetup | requestFlush, 0u));
    }
}

TEST_F(CSeqTest, FreedObjectsAreForgotten) {
    CTrack* audio = track(trackAudio)->track;
    auto* lane = audio->subTracks.getFirst();
    CSend* send = audio->output()->sendLevels[0];
    lane->object = send;
    CComp other(&host);
    seq->del(&other);
    EXPECT_EQ(lane->object, send);
    seq->del(audio->output());
    EXPECT_EQ(lane->object, nullptr) << "it belongs to the output";

    step([&](CUndo* u) { seq->selectTrack(seq->addTrack(trackMIDI, prog(), u), true); });
    undo();
    host.idle();
    EXPECT_TRUE(seq->selection.tracks.empty()) << "a track that left is not selected";
}
