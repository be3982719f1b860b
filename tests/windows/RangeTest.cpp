#include "ArrangeFixture.h"

#include "audiofiles/CSample.h"
#include "sequencer/song/Points.h"

#include <filesystem>

namespace {

class RangeTest : public ArrangeFixture {
protected:
    std::string markers() {
        std::string text;
        for (auto* m : seq()->getProg()->markers) text += std::to_string(m->pos / 240) + " ";
        return text;
    }
};

} // namespace

/// Markers go along with a range where that is asked for, and only then.
TEST_F(RangeTest, TakesMarkersAlongWhereAsked) {
    startWith({trackMIDI});
    auto* marker = new CMarkerPart;
    marker->pos = 1200;
    seq()->getProg()->addMarker(marker, nullptr);
    addPart(0, 0, 3840);
    win->onAction(win->getAction("rangetool"));
    for (const char* moved : {"5 ", "21 "}) {
        drag(point(960, 0), point(1920, 0));
        drag(point(1400, 0), point(1400 + 3840, 0));
        EXPECT_TRUE(pumpUntil([&] { return parts(0) == 3; }));
        EXPECT_EQ(markers(), moved);
        key("ctrl+z");
        EXPECT_TRUE(pumpUntil([&] { return parts(0) == 1; }));
        EXPECT_EQ(markers(), "5 ");
        key("Escape");
        win->onAction(win->getAction("rangemarkers"));
    }
}

/// What is exported lasts as long as the range, whatever was chosen before.
TEST_F(RangeTest, IsExported) {
    startWith({trackAudio});
    host->projectFile = at("song.qv").c_str();
    drop(tone("a.wav"), grid(), 0, yOf(0));
    ASSERT_TRUE(pumpUntil([&] { return parts(0) == 1; }));
    CAction* action = win->getAction("exportrange");
    seq()->unselectParts();
    EXPECT_FALSE(action->isReady()) << "nothing is chosen";
    win->onAction(win->getAction("rangetool"));
    drag(point(0, 0), point(960, 0));
    const char* title = "Export Project (wav, aif, mp3)";
    keysInDialog(title, {"Return"});
    keysInDialog("Save as", {"ctrl+a"});
    typeInDialog("Save as", at("out.wav"));
    keysInDialog("Save as", {"Return"});
    win->onAction(action);
    ASSERT_TRUE(pumpUntil([&] { return std::filesystem::exists(at("out.wav")); }));
    EXPECT_EQ(seq()->getProg()->rightLocator, 960);
    CSample out;
    ASSERT_TRUE(out.open(at("out.wav").c_str()));
    EXPECT_NEAR(out.frames, 22050, 22050 / 10) << "a quarter, and what rings on";
}

/// The menu of a recording gives the song the tempo at which it lasts so many bars.
TEST_F(RangeTest, BarsAreFittedToARecording) {
    startWith({trackAudio});
    drop(tone("a.wav"), grid(), 0, yOf(0));
    ASSERT_TRUE(pumpUntil([&] { return parts(0) == 1; }) && loaded());
    inMenu({"f", "f", "f", "Right", "Return"});
    clickAt(point(900, 0), "3");
    EXPECT_TRUE(pumpUntil([&] { return host->songTempo == 240.0f; })) << host->songTempo.load();
    key("ctrl+z");
    EXPECT_TRUE(pumpUntil([&] { return host->songTempo == 120.0f; }));
}
