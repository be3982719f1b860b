#include "SongFixture.h"

#include "audiofiles/CSample.h"
#include "base/Paths.h"

#include <cstdlib>
#include <filesystem>
#include <fstream>

namespace {

CPart* clips(CSample* first, CSample* second) {
    auto* part = new CAudioPart;
    part->multiclip = 1;
    for (CSample* sample : {first, second}) {
        CAudioEvent* event = createAudioEvent();
        event->sample = sample;
        event->end = 20000;
        part->addEvent(0, event);
    }
    return part;
}

} // namespace

/// Parts of the song, of the clipboard, of a track that was removed, and both sides of an edit lose
/// a sample that is deleted, and nothing else; the song plays on, and so does its history.
TEST(SampleUse, DeletedSampleLeavesEveryPart) {
    std::string folder = "/tmp/sampleuseXXXXXX";
    ASSERT_TRUE(mkdtemp(folder.data()));
    enterSequencer();
    SongFixture song;
    song.host.projectFile = (folder + "/song.qv").c_str();
    std::ofstream(folder + "/song.qv") << "QVF";
    CSample* samples[2];
    for (CSample*& sample : samples) {
        const std::vector<float> values(30000, 0.5f);
        std::unique_ptr<CSample> file(
            CSample::createSample(song.host.requireSampleFilename("x.wav", nullptr), 0));
        file->writeFrames(30000, values.data(), values.data());
        file->writeHeader();
        file->keep = true;
        sample = song.host.addSample(file->filename, 1);
    }
    auto *stays = samples[0], *goes = samples[1];
    const CStr file = goes->filename;
    std::vector<CPart*> parts;
    for (int i = 0; i < 6; ++i) parts.push_back(clips(stays, goes));
    CSongTrack* songTrack = song.track(trackAudio);
    songTrack->addPart(parts[0], nullptr);
    song.seq->copies.add(parts[1]);
    song.seq->masterParts.add(parts[2]);
    CSongTrack* removed = song.track(trackAudio);
    removed->addPart(parts[3], nullptr);
    song.step([&](CUndo* u) { song.seq->removeTrack(removed->track, u); });
    song.step([&](CUndo* u) { u->asSwap(parts[0], parts[4]); });
    song.step([&](CUndo* u) { u->asAdd(parts[5], &songTrack->parts); });
    song.undo();
    song.host.start();
    song.device.run(3);

    ASSERT_TRUE(song.host.deleteSampleFromDisk(goes));
    EXPECT_TRUE(fileExists(stays->filename) && !fileExists(file));
    for (size_t i = 0; i < parts.size(); ++i) {
        int kept = 0, lost = 0;
        for (CBaseEvent* e = parts[i]->events; e; e = e->next)
            ++(static_cast<CAudioEvent*>(e)->sample ? kept : lost);
        EXPECT_TRUE(kept == 1 && lost == 1) << i;
    }
    song.device.run(3);
    song.undo();
    song.undo();
    song.device.run(3);
    std::filesystem::remove_all(folder);
}
