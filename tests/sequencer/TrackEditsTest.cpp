#include "sequencer/edit/TrackEdits.h"
#include "EditsFixture.h"
#include "engine/CompTypes.h"
#include "instruments/CDrumSound.h"
#include "instruments/CLayer.h"
#include "instruments/CSampler.h"
#include "sequencer/song/CSubTrack.h"
#include "sequencer/song/FolderSum.h"
#include "sequencer/song/TrackRouting.h"

namespace {

struct Duplicates : Edits {
    CTrack* at(int i) { return seq->tracks.items(i); }
    CSongTrack* row(int i) { return prog()->tracks.items(i); }
    int synths() {
        int n = 0;
        for (const auto* c : host.comps) n += c->type == compSampler;
        return n;
    }
};

} // namespace

/// All that a track is comes beside it, in one step; what is its own is its own again, and what is
/// shared stays so.
TEST(TrackEdits, DuplicatesHaveAllOfTheirTracks) {
    Duplicates t;
    CTrack *notes = t.midi->track, *sound = t.audio->track, *kit = t.drums->track;
    CSampler* synth = t.connect(t.midi, t.device.add(new CSampler(&t.host)));
    CTrack* second = t.track(trackMIDI)->track;
    CTrack* folder = t.track(trackFolder)->track;
    t.host.settle();
    notes->id = "Bass";
    notes->colour = 0x102030;
    notes->channel = 3;
    notes->setRowHeight(90);
    notes->groove.offsets[1] = 0.25f;
    notes->folder = folder;
    sound->folder = folder;
    synth->output()->pan = -0.5f;
    sound->output()->vol = 0.5f;
    auto* moved = new CSubTrack("Pan", laneAutomation);
    moved->object = synth->output();
    moved->param = 1;
    notes->addLane(moved, nullptr);
    t.seq->addStandardKit(kit);
    kit->drumSound(1)->output->vol = 0.25f;
    t.addAudio(960, {{0, clip(t.sample, 100, 5000)}});
    t.host.undoClear();
    t.device.run();
    const std::string before = t.write();
    const int synths = t.synths();

    EXPECT_EQ(duplicateTracks(t.seq, {notes, kit, folder}), "");
    t.host.settle();
    EXPECT_EQ(t.host.undoText(), "Duplicate track");
    EXPECT_EQ(t.host.undoList.getCount(), 1);
    ASSERT_EQ(t.seq->tracks.getCount(), 9) << "the folder brings what is in it, once";
    CTrack *bass = t.at(5), *tone = t.at(6), *drums = t.at(7), *group = t.at(8);
    EXPECT_EQ(bass->id, "Bass 2");
    EXPECT_EQ(bass->colour, 0x102030);
    EXPECT_EQ(bass->channel, 3);
    EXPECT_EQ(bass->getRowHeight(), 90);
    EXPECT_EQ(bass->groove.offsets[1], 0.25f);
    EXPECT_EQ(bass->folder, group);
    EXPECT_EQ(tone->folder, group);
    EXPECT_EQ(tone->output()->vol, 0.5f);
    EXPECT_TRUE(bass->selected() && drums->selected() && group->selected());
    EXPECT_FALSE(tone->selected() || notes->selected());
    // A synthesizer of its own, with its strip, which the lane moves.
    CComp* twin = trackTarget(t.seq, bass);
    ASSERT_TRUE(twin && twin != synth);
    EXPECT_EQ(t.synths(), synths + 1);
    EXPECT_EQ(twin->numProgs(), synth->numProgs());
    EXPECT_EQ(twin->output()->pan, -0.5f);
    EXPECT_EQ(trackTarget(t.seq, notes), synth);
    EXPECT_EQ(bass->subTracks.last()->object, twin->output());
    EXPECT_EQ(trackTarget(t.seq, tone), t.host.getAudioOut());
    ASSERT_TRUE(drums->drumSound(1));
    EXPECT_EQ(drums->drumLayer()->sounds.getCount(), kit->drumLayer()->sounds.getCount());
    EXPECT_EQ(drums->drumSound(1)->output->vol, 0.25f);
    EXPECT_EQ(drums->openHeight, kit->openHeight);
    // The parts.
    ASSERT_EQ(t.row(5)->parts.getCount(), 3);
    EXPECT_EQ(t.part(t.row(5), 2)->ghostOf, t.part(t.midi, 2)->ghostOf);
    EXPECT_NE(t.part(t.row(5), 0)->getEvents(), t.part(t.midi, 0)->getEvents());
    EXPECT_EQ(t.part(t.row(6), 0)->pos, 960);
    // What two tracks play they share.
    setTrackTarget(t.seq, second, twin);
    t.host.settle();
    EXPECT_EQ(duplicateTracks(t.seq, {second}), "");
    t.host.settle();
    EXPECT_EQ(t.synths(), synths + 1);
    EXPECT_EQ(trackTarget(t.seq, t.at(4)), twin) << "right behind it";
    t.device.run();
    const std::string after = t.write();
    for (int i = 0; i < 3; i++) t.undo();
    t.device.run();
    EXPECT_EQ(t.write(), before);
    for (int i = 0; i < 3; i++) t.redo();
    t.device.run();
    EXPECT_EQ(t.write(), after);
    t.read(after);
    EXPECT_EQ(t.write(), after);
}

/// Where a file would have no room for all, there is none of them.
TEST(TrackEdits, DuplicatesComeWholeOrNotAtAll) {
    Duplicates t;
    while (t.seq->hasTrackRoom(trackAudio, nullptr, 2)) t.track(trackAudio);
    t.host.settle();
    t.host.undoClear();
    const int count = t.seq->tracks.getCount();
    EXPECT_EQ(duplicateTracks(t.seq, {t.audio->track, t.drums->track}), "Too many tracks");
    EXPECT_EQ(t.seq->tracks.getCount(), count);
    EXPECT_TRUE(t.host.undoList.empty());
}

/// What leads to the audio out, through racks and synthesizers too, leads to one group; tracks that
/// come or go are cabled along.
TEST(TrackEdits, AFolderIsSummed) {
    Duplicates t;
    CTrack* folder = t.track(trackFolder)->track;
    CTrack* inner = t.track(trackFolder)->track;
    CTrack *notes = t.midi->track, *sound = t.audio->track, *kit = t.drums->track;
    CSampler* synth = t.connect(t.midi, t.device.add(new CSampler(&t.host)));
    CTrack* other = t.track(trackMIDI)->track;
    CSampler* shared = t.connect(t.track(trackMIDI), t.device.add(new CSampler(&t.host)));
    setTrackTarget(t.seq, other, shared);
    CTrack* second = t.at(6);
    notes->folder = second->folder = inner->folder = folder;
    sound->folder = inner;
    folder->id = "Band";
    t.host.settle();
    t.host.undoClear();
    CComp* out = t.host.getAudioOut();
    const auto leads = [&](CComp* to) {
        std::string all;
        for (const COutputChannel* ch :
             {synth->output(), shared->output(), sound->output(), kit->output()})
            all += fedBy(to, ch) ? '1' : '0';
        return all;
    };
    t.device.run();
    const std::string before = t.write();
    const std::string direct = leads(out);
    EXPECT_EQ(folderGroup(t.seq, folder), nullptr);
    ASSERT_TRUE(sumFolder(t.seq, folder));
    t.host.settle();
    CComp* band = folderGroup(t.seq, folder);
    ASSERT_TRUE(band);
    EXPECT_EQ(band->id, "Band");
    EXPECT_EQ(leads(band), "1010") << "the shared one plays a track outside";
    EXPECT_EQ(leads(out), "0101");
    EXPECT_TRUE(fedBy(out, band->output()));
    ASSERT_TRUE(sumFolder(t.seq, inner));
    t.host.settle();
    CComp* within = folderGroup(t.seq, inner);
    ASSERT_TRUE(within && within != band);
    EXPECT_EQ(folderGroup(t.seq, folder), band);
    EXPECT_EQ(leads(within), "0010");
    EXPECT_TRUE(fedBy(band, within->output()));
    moveTracksTo(t.seq, {sound, notes}, {});
    t.host.settle();
    EXPECT_EQ(leads(out), direct);
    t.undo();
    t.host.settle();
    moveTracksTo(t.seq, {kit}, {nullptr, inner});
    t.host.settle();
    EXPECT_EQ(leads(within), "0011");
    ASSERT_TRUE(sumFolder(t.seq, inner)) << "and no more";
    t.host.settle();
    EXPECT_EQ(leads(band), "1011");
    EXPECT_FALSE(t.host.comps.contains(within));
    for (int i = 0; i < 4; i++) t.undo();
    t.device.run();
    EXPECT_EQ(t.write(), before);
}
