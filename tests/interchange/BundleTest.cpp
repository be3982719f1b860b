#include "interchange/Bundle.h"

#include "interchange/ZipFile.h"
#include "project/ProjectFixture.h"
#include "project/SongSounds.h"

#include <filesystem>

namespace fs = std::filesystem;

namespace {

/// A song that plays files of one name from two folders, and one that is gone.
void fill(ProjectFixture& of, const TempFolder& folder) {
    CSeq* seq = addSequencer(of.host);
    CSongTrack* track = seq->addTrack(trackAudio, seq->getProg(), nullptr);
    int tick = 0;
    for (const char* name : {"a/tone.wav", "b/tone.wav", "gone.wav"}) {
        fs::create_directories(fs::path(folder.file(name).asChar()).parent_path());
        writeWav(folder.file(name), 1000 + tick, 16, 1);
        auto* part = new CAudioPart;
        part->pos = tick++;
        CAudioEvent* event = createAudioEvent();
        event->sample = of.host->addSample(folder.file(name), 1);
        event->end = event->sample->frames - 1;
        part->addEvent(0, event);
        track->addPart(part, nullptr);
    }
    fs::remove(folder.file("gone.wav").asChar());
}

} // namespace

/// The archive, unpacked elsewhere after all else is gone, opens as the same song; the project that
/// was packed stays where it is.
TEST(Bundle, LacksNothing) {
    const TempFolder folder, elsewhere;
    {
        ProjectFixture of;
        fill(of, folder);
        std::vector<CStr> lost, names;
        for (const auto* sample : of.host->samples) names.push_back(sample->filename);
        ASSERT_EQ(packProject(of.project, folder.file("My song.zip"), lost), DawResult::good);
        ASSERT_EQ(lost.size(), 1u);
        EXPECT_EQ(lost[0], folder.file("gone.wav"));
        EXPECT_TRUE(of.host->projectFile.empty() && of.host->audioFolder.empty());
        for (size_t i = 0; i < names.size(); i++)
            EXPECT_EQ(of.host->samples.items(int(i))->filename, names[i]);
        EXPECT_EQ(packProject(of.project, folder.file("no/such.zip"), lost), DawResult::notWritten);
        EXPECT_EQ(packProject(of.project, folder.file("b.zip"), lost,
                              [](const CStr&, float) { return false; }),
                  DawResult::cancelled);
        EXPECT_FALSE(fs::exists(folder.file("b.zip").asChar()));
    }
    const ZipReader zip(folder.file("My song.zip").asChar());
    EXPECT_FALSE(zip.hadEvil());
    for (const ZipReader::Entry& entry : zip.entries()) {
        const fs::path to = fs::path(elsewhere.path.asChar()) / entry.name;
        fs::create_directories(to.parent_path());
        EXPECT_TRUE(zip.extract(entry.name, 1 << 24, to));
    }
    fs::remove_all(folder.file("a").asChar());
    fs::remove_all(folder.file("b").asChar());
    ProjectFixture of;
    ASSERT_EQ(openProject(of.project, elsewhere.file("My song/My song.qv"), false),
              LoadResult::good);
    std::set<int> lengths;
    for (const auto* sample : of.host->samples)
        if (sample->valid) lengths.insert(sample->frames);
    EXPECT_EQ(lengths, (std::set<int>{1000, 1001}));
}
