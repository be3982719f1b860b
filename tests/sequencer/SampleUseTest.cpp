#include "SongFixture.h"
#include "base/TempFolder.h"

/// Parts of the song, of the clipboard, of a track that was removed, of a step that was undone, and
/// the other side of an edit lose a sample that is deleted, and nothing else; the song plays on.
TEST(SampleUse, DeletedSampleLeavesEveryPart) {
    const TempFolder folder;
    enterSequencer();
    SongFixture song;
    song.readsDisk = true;
    song.host.projectFile = folder.write("song.qv", "QVF");
    const std::vector<float> values(30000, 0.5f);
    CSample* samples[2];
    for (CSample*& sample : samples) {
        sample = CSample::createSample(song.host.requireSampleFilename("x.wav", nullptr), 0);
        sample->writeFrames(30000, values.data(), values.data());
        const GraphHold hold(&song.host);
        song.host.samples.add(sample);
    }
    CPart* parts[6];
    for (CPart*& part : parts) {
        part = new CAudioPart;
        for (CSample* sample : samples) {
            CAudioEvent* event = createAudioEvent();
            event->sample = sample;
            event->end = 29999;
            part->addEvent(0, event);
        }
    }
    CSongTrack *stays = song.track(trackAudio), *removed = song.track(trackAudio);
    stays->addPart(parts[0], nullptr);
    removed->addPart(parts[1], nullptr);
    song.seq->masterParts.add(parts[2]);
    song.seq->clipboard.parts.add(parts[3]);
    song.step([&](CUndo* u) { song.seq->removeTrack(removed->track, u); });
    song.step([&](CUndo* u) { u->asSwap(parts[0], parts[4]); });
    song.step([&](CUndo* u) { u->asAdd(parts[5], &stays->parts); });
    song.undo();
    song.host.start();
    song.device.run(3);
    ASSERT_TRUE(song.host.deleteSampleFromDisk(samples[1]));
    for (const CPart* part : parts) {
        const CBaseEvent* first = part->events;
        EXPECT_EQ(static_cast<const CAudioEvent*>(first)->sample, samples[0]);
        EXPECT_EQ(static_cast<const CAudioEvent*>(first->next)->sample, nullptr);
    }
    song.device.run(3);
}
