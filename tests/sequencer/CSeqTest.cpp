#include "audiofiles/CSample.h"
#include "base/Numbers.h"

#include "SongFixture.h"

#include <algorithm>
#include <random>

namespace {

struct SeqFixture : SongFixture, testing::Test {
    /// Undoes and redoes the last step and expects the same songs on both sides.
    void expectReversible(const std::string& before) {
        const std::string after = dump(seq);
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

TEST_F(CSeqTest, ATrackOfAProgramThatIsBeingBuilt) {
    auto* fresh = seq->createProgram();
    CSongTrack* made = seq->addTrack(trackMIDI, fresh, nullptr);
    EXPECT_EQ(made->prog, fresh);
    EXPECT_EQ(fresh->tracks.getCount(), 1);
    EXPECT_EQ(prog()->tracks.getCount(), 1) << "and the others have it too";
    delete fresh;
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
    step([&](CUndo* u) { seq->removeTrack(midi->track, u); });
    EXPECT_TRUE(synth->midiCables.empty());
    EXPECT_EQ(synth->allNotesOff, 1) << "what it played must not hang";
}

TEST_F(CSeqTest, TracksAreNumberedByKind) {
    const std::pair<int, const char*> words[] = {{1, "folder"}, {2, "instrument"}, {3, "audio"},
                                                 {5, "drum"},   {4, "track"},      {77, "track"}};
    for (const auto& [kind, word] : words) {
        for (int number = 1; number <= 2; number++) {
            const CStr name = CStr(word) + "-" + asStr(number);
            if (kind == 77) {
                EXPECT_EQ(seq->autoNameTrack(kind), "track-3");
                continue;
            }
            EXPECT_EQ(seq->autoNameTrack(kind), name);
            EXPECT_EQ(track(kind)->track->id, name);
        }
    }
}

TEST_F(CSeqTest, KindsTakeTheirPartsOnly) {
    for (int kind : {1, 2, 3, 4, 5}) {
        CSongTrack* songTrack = track(kind);
        EXPECT_EQ(songTrack->addPart(new CMIDIPart, nullptr) != nullptr, kind == trackMIDI) << kind;
        EXPECT_EQ(songTrack->addPart(new CAudioPart, nullptr) != nullptr, kind == trackAudio);
        EXPECT_EQ(songTrack->addPart(new CDrumPart, nullptr) != nullptr, kind == trackDrum);
        EXPECT_EQ(songTrack->addPart(new CPart, nullptr), nullptr);
    }
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

TEST_F(CSeqTest, TheSummaryCountsTheSelection) {
    CSongTrack* midi = track(trackMIDI);
    CSongTrack* audio = track(trackAudio);
    CSample mono, stereo;
    mono.chs = 1;
    auto* clips = new CAudioPart;
    clips->multiclip = 1;
    for (CSample* sample : {&mono, &stereo, &stereo, static_cast<CSample*>(nullptr)}) {
        CAudioEvent* event = createAudioEvent();
        event->sample = sample;
        clips->addEvent(0, event);
    }
    audio->addPart(clips, nullptr);
    CPart* part = midi->addPart(midiPart(0), nullptr);
    step([&](CUndo* u) { midi->addPart(seq->makeGhost(part, u), u); });
    midi->addPart(midiPart(0), nullptr);
    CPartSummary summary;
    seq->getPartSummary(summary);
    EXPECT_EQ(summary.parts, 0) << "no track is selected";
    seq->selectAll();
    part->setSelected(false);
    seq->getPartSummary(summary);
    EXPECT_EQ(summary.parts, 4);
    EXPECT_EQ(summary.selected, 3);
    EXPECT_EQ(summary.midi, 2);
    EXPECT_EQ(summary.ghosts, 1);
    EXPECT_EQ(summary.audio, 1);
    EXPECT_EQ(summary.multiclip, 1);
    EXPECT_EQ(summary.monoEvents, 1);
    EXPECT_EQ(summary.stereoEvents, 2);
    clips->setEvents(nullptr);
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

/// Two programs, and a stretch of steps undone and redone in a row.
TEST_F(CSeqTest, RandomStepsUndoneAndRedoneGiveTheSameSong) {
    enterSequencer();
    seq->progs.add(seq->createProgram());
    std::mt19937 random(11);
    std::vector<std::string> states{dump(seq)};
    const auto songTrack = [&]() -> CSongTrack* {
        auto* p = static_cast<CSeqProg*>(seq->progs.items(int(random() % 2)));
        return static_cast<CSongTrack*>(p->tracks.items(int(random() % 5)));
    };
    for (int i = 0; i < 300; i++) {
        step([&](CUndo* u) {
            CSongTrack* on = songTrack();
            const unsigned action = on ? unsigned(random() % 5) : 0;
            if (action == 0) seq->addTrack(1 + int(random() % 5), prog(), u, int(random() % 6) - 1);
            if (action == 1) on->addPart(midiPart(int(random() % 9) * 960), u);
            if (action == 2) on->track->addLane(new CSubTrack("lane", laneAutomation), u);
            if (action == 3 && seq->tracks.getCount() > 4) seq->removeTrack(on->track, u);
            auto* part = on ? static_cast<CPart*>(on->parts.getFirst()) : nullptr;
            if (action == 4 && part) {
                CPart* edited = part->content()->copy(0);
                edited->addEvent(int(random() % 960), note(int(random() % 128)));
                edited->addEventParam(int(random() % 960), createEnvEvent(nullptr, 0.5f), 1);
                swapUndoPart(u, part->content(), edited);
                CPart* ghost = random() % 2 ? part->copy(0) : nullptr;
                if (ghost) on->addPart(ghost, u);
            }
        });
        if (host.undoList.getCount() + 1 > int(states.size())) states.push_back(dump(seq));
    }
    ASSERT_GT(states.size(), 100u);
    for (size_t i = states.size() - 1; i-- > 0;) {
        undo();
        ASSERT_EQ(dump(seq), states[i]) << "undone to " << i;
    }
    for (size_t i = 1; i < states.size(); i++) {
        redo();
        ASSERT_EQ(dump(seq), states[i]) << "redone to " << i;
    }
}
