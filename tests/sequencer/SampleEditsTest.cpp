#include "sequencer/edit/SampleEdits.h"

#include "EditsFixture.h"
#include "base/FullDisk.h"
#include "base/TempFolder.h"
#include "sequencer/take/Takes.h"

#include <filesystem>

namespace {

constexpr int fileFrames = 50000, first = 2000; ///< of the file, and the first that is played

/// A clip of 48000 frames in 1920 ticks; frame i of its file has the value i / 65536.
struct RampFixture : Edits {
    const TempFolder folder;
    CSample* ramp;
    CPart* part = nullptr;

    explicit RampFixture(int mode, bool several = false) {
        deleteAll<CPart>(prog()->tempos);
        host.tempAudioFolder = folder.file("");
        ramp = addSample(
            fileFrames, [](int i) { return i / 65536.0; }, 48000);
        const auto make = [&] {
            CAudioEvent* event = clip(ramp, first, fileFrames - 1);
            event->mode = (unsigned char)mode;
            event->ticks = 1920;
            return event;
        };
        part =
            several ? addAudio(960, {{0, make()}, {1000, make()}}) : addAudio(960, {{0, make()}});
        part->length = 1920;
        if (several) return;
        auto* takes = new Takes;
        takes->takes = {{0, 1920, first, fileFrames - 1}};
        takes->comp = {{0, 0, 1920}};
        part->takes = takes;
    }
    bool folderEmpty() const { return std::filesystem::is_empty(folder.path.asChar()); }
};

int frameOf(const CSample* sample, int at) {
    float value = 0.0f;
    sample->readFrames(at, 1, &value);
    return asRound(double(value) * 65536);
}

} // namespace

/// What goes, stays and comes lies in a new file, of which the clip plays what is left of its own;
/// a full disk leaves all as it was.
TEST(SampleEdits, ClipsPlayWhatIsLeft) {
    constexpr FrameRange middle{14000, 26000};
    const struct {
        const char* title;
        CStr (*run)(CSeq* seq, const ClipPlace& place, const FrameRange& frames);
        FrameRange frames;
        int start, end, ticks; ///< of the clip
        int at[2], from[2];    ///< frames of the new file, and where they were
    } cases[] = {
        {"Delete", deleteFrames, middle, 2000, 37999, 1440, {13999, 14000}, {13999, 26000}},
        {"Cut", cutFrames, {0, 14000}, 0, 35999, 1440, {0, 35999}, {14000, 49999}},
        {"Crop", cropFrames, middle, 0, 11999, 480, {0, 11999}, {14000, 25999}},
        {"Crop", cropFrames, {0, 26000}, 2000, 25999, 960, {0, 25999}, {0, 25999}},
        {"Paste",
         pasteOverFrames,
         {26000, 26000},
         2000,
         61999,
         2400,
         {26000, 38000},
         {14000, 26000}},
        {"Paste", pasteOverFrames, {0, 12000}, 0, 49999, 2000, {0, 12000}, {14000, 12000}},
    };
    for (const auto& c : cases)
        for (const int mode : {0, 1}) {
            SCOPED_TRACE(testing::Message()
                         << c.title << " of " << c.frames.from << " in " << mode);
            RampFixture e(mode);
            const ClipPlace place{e.part, 0};
            if (c.run == pasteOverFrames) copyFrames(e.seq, place, middle);
            const std::string start = e.bytes();
            const int copies = e.seq->clipboard.parts.getCount();
            {
                const FullDisk disk(5000);
                EXPECT_EQ(c.run(e.seq, place, c.frames), "Could not write file");
            }
            EXPECT_TRUE(e.bytes() == start && e.folderEmpty());
            EXPECT_EQ(e.seq->clipboard.parts.getCount(), copies);
            EXPECT_EQ(c.run(e.seq, place, c.frames), "");
            e.host.settle();
            EXPECT_STREQ(e.host.undoText().asChar(), c.title);
            const CAudioEvent* now = place.clip();
            EXPECT_EQ(std::tuple(now->start, now->end, e.seq->getTicks(e.part)),
                      std::tuple(c.start, c.end, c.ticks));
            EXPECT_EQ(takesOf(e.part)->takes[0].end, c.end);
            for (int i = 0; i < 2; i++)
                EXPECT_NEAR(frameOf(now->sample, c.at[i]), c.from[i], 2) << c.at[i];
            if (c.run == cutFrames) {
                const auto* gone =
                    static_cast<const CAudioEvent*>(e.seq->clipboard.parts.getFirst()->getEvents());
                EXPECT_EQ(std::tuple(gone->sample, gone->start, gone->end),
                          std::tuple(e.ramp, 0, 13999));
            }
            const std::string edited = e.bytes();
            e.undo();
            EXPECT_TRUE(e.bytes() == start);
            EXPECT_EQ(place.clip()->sample, e.ramp);
            e.redo();
            EXPECT_TRUE(e.bytes() == edited);
        }
}

TEST(SampleEdits, OthersAreLeftAlone) {
    RampFixture e(0, true);
    const ClipPlace place{e.part, 1};
    EXPECT_EQ(deleteFrames(e.seq, place, {0, fileFrames}), "Nothing would be left");
    EXPECT_EQ(pasteOverFrames(e.seq, place, {0, 0}), "The clipboard has no sound");
    for (auto* t : e.seq->tracks) t->locked = 1;
    EXPECT_EQ(deleteFrames(e.seq, place, {14000, 26000}), "");
    EXPECT_TRUE(e.host.undoList.empty() && e.folderEmpty());
    for (auto* t : e.seq->tracks) t->locked = 0;
    EXPECT_EQ(deleteFrames(e.seq, place, {14000, 26000}), "");
    e.host.settle();
    EXPECT_EQ((ClipPlace{e.part, 0}).clip()->sample, e.ramp);
    EXPECT_NE(place.clip()->sample, e.ramp);
    EXPECT_EQ(e.seq->getTicks(e.part), 1920);
}

/// What sounds goes on with the frames that the new file has there, without a click.
TEST(SampleEdits, AreHeardWhileTheSongPlays) {
    constexpr int before = 20000, gone = 10000;
    RampFixture e(0);
    e.readsDisk = true;
    e.host.setPos(960.0);
    e.host.start();
    e.device.forget();
    e.device.run(8);
    EXPECT_EQ(deleteFrames(e.seq, {e.part, 0}, {first + before, first + before + gone}), "");
    e.host.settle();
    e.device.run(24);
    const std::vector<float>& x = e.device.left;
    ASSERT_GE(x.size(), 30000u);
    const double step = double(e.ramp->rate) / double(e.host.rate); // frames of the file
    for (size_t i = 0; i < 30000; i++) {
        const double frame = double(i) * step;
        if (std::abs(frame - before) < 4) continue; // read between frames of both sides
        ASSERT_NEAR(x[i], (first + frame + (frame < before ? 0 : gone)) / 65536, 1e-4) << i;
    }
}
