#include "ArrangeFixture.h"

#include "audiofiles/CSample.h"
#include "engine/CClick.h"
#include "gui/Selections.h"
#include "gui/controls/CMenu.h"
#include "gui/controls/CPopup.h"
#include "sequencer/midi/CSMF.h"
#include "sequencer/render/CRender.h"
#include "sequencer/song/Points.h"
#include "ui/CMeter.h"

#include <cmath>
#include <filesystem>

/// The song as the main window shows it: heads of tracks, parts, what is brought in.
class SongWindowTest : public ArrangeFixture {
protected:
    static CCtrl* nameField(CWin* dialog) {
        for (auto* c : dialog->clientGroup->controls)
            if (c->id == "name") return c;
        return nullptr;
    }
    /// What the song view shows.
    Shot picture() {
        if (win->left != 0) win->move(0, 0, 800, 500); // all on the screen
        settle();
        const CPoint at = page()->controlPos(song());
        Shot all(page()->handle, page()->width, page()->height);
        corner = at;
        return all;
    }
    /// Differing points of two pictures of the view.
    int differences(const Shot& a, const Shot& b) {
        int count = 0;
        const int bottom = corner.y + song()->height, right = corner.x + song()->width;
        for (int y = corner.y; y < bottom; y++)
            for (int x = corner.x; x < right; x++) count += a.at(x, y) != b.at(x, y);
        return count;
    }
    static void addNote(CPart* part) {
        CMIDIEvent* note = createMIDIEvent();
        note->data = 0x644090;
        part->addEvent(0, note);
    }
    int samplers() {
        int count = 0;
        for (auto* comp : host->comps) count += comp->type == compSampler;
        return count;
    }

    CPoint corner;
};

/// Nobody has asked for a loop in a new project, and a file without one goes out whole.
TEST_F(SongWindowTest, NothingLoopsUnasked) {
    start();
    for (int kind = kindEmpty; kind <= kindDemo; kind++) {
        ASSERT_TRUE(load(kind));
        EXPECT_EQ(host->loop, 0) << kind;
        if (!seq()) continue;
        int from = -1, to = -1;
        seq()->getLoopSection(from, to);
        EXPECT_EQ(seq()->getLoop(), 0) << kind;
        EXPECT_EQ(from, 0) << kind;
        EXPECT_GE(to, std::max(barTicks, seq()->renderDuration())) << kind;
        EXPECT_FALSE(host->modified()) << kind;
    }
}

/// What a new track of the menu is good for is there, comes and goes as one step, and the track is
/// the one that the next take goes to.
TEST_F(SongWindowTest, NewTracksCanBeHeard) {
    start();
    ASSERT_TRUE(load(kindEmpty));
    key("ctrl+i");
    ASSERT_TRUE(pumpUntil([&] { return tracks() == 1; }));
    EXPECT_EQ(samplers(), 1);
    EXPECT_EQ(selectedRow(), 0);
    key("ctrl+z");
    EXPECT_TRUE(pumpUntil([&] { return tracks() == 0 && samplers() == 0; }));
    key("ctrl+y");
    EXPECT_TRUE(pumpUntil([&] { return tracks() == 1 && samplers() == 1; }));
    inMenu({"Right", "Down", "Down", "Return"});
    for (const char* k : {"F10", "Right", "Right", "Right", "Right", "Down"}) key(k);
    ASSERT_TRUE(pumpUntil([&] { return tracks() == 2; }));
    EXPECT_EQ(row(1)->track->kind, trackDrum);
    EXPECT_NE(row(1)->track->drumSound(4), nullptr);
    EXPECT_EQ(selectedRow(), 1);
}

/// With more tracks than have room, the wheel, the arrows and the bar reach the last one.
TEST_F(SongWindowTest, EveryTrackCanBeReached) {
    start();
    ASSERT_TRUE(load(kindPortaStudio));
    for (int i = 0; i < 8; i++) seq()->addTrack(trackAudio, seq()->getProg(), nullptr);
    seq()->songNotices.raise(SeqNotice::tracks);
    loaded();
    win->move(0, 0, 800, 500);
    settle();
    const auto choose = [&](int y) {
        mouseTo(find<HeadList>("heads"), 60, y);
        act({"click", "1"});
        return selectedRow();
    };
    EXPECT_EQ(choose(10), 0);
    for (int i = 0; i < 30; i++) act({"click", "5"});
    settle();
    EXPECT_EQ(choose(grid()->height - 75), 15);
    for (int i = 0; i < 20; i++) key("Up");
    EXPECT_EQ(selectedRow(), 0);
    EXPECT_EQ(choose(10), 0) << "the arrows have scrolled to the start";
    for (int i = 0; i < 20; i++) key("Down");
    EXPECT_EQ(selectedRow(), 15);
    EXPECT_EQ(choose(grid()->height - 10), 15) << "and to the end";
}

/// A message stays while the pointer goes over what has no hint, and yields to the next hint.
TEST_F(SongWindowTest, MessagesStayUntilAHint) {
    start();
    ASSERT_TRUE(load(kindDefault));
    app->mainWin = &*win;
    auto* line = find<CCtrl>("status", win->clientGroup);
    ASSERT_TRUE(line);
    picture();
    const auto told = [&] {
        settle();
        const Shot all(win->handle, win->width, win->height);
        const CPoint at = win->controlPos(line);
        std::vector<int> points;
        for (int y = at.y; y < at.y + line->height; y++)
            for (int x = at.x; x < at.x + line->width / 2; x++) points.push_back(all.at(x, y));
        return points;
    };
    mouseTo(line, 5, 5);
    const auto nothing = told();
    win->setStatus("Exported song.wav");
    const auto message = told();
    mouseTo(song(), 5, song()->height - 5);
    EXPECT_TRUE(message != nothing && told() == message);
    mouseTo(grid(), 50, 60);
    const auto hint = told();
    EXPECT_TRUE(hint != nothing && hint != message);
    mouseTo(line, 5, 5);
    EXPECT_TRUE(told() == nothing) << "a hint goes with the pointer";
}

/// What is not heard, what was taken back, where the loop lies: each of them is seen.
TEST_F(SongWindowTest, ShowsWhatHasChanged) {
    start();
    ASSERT_TRUE(load(kindDefault));
    win->options().hints.set(0);
    Shot before = picture();
    struct Case {
        const char *what, *on, *off;
    };
    const Case cases[] = {
        {"mute of the track", "m", "m"}, {"the loop", "l", "l"}, {"a marker", "ctrl+t", "ctrl+z"}};
    for (const Case& c : cases) {
        key(c.on);
        EXPECT_TRUE(pumpUntil([&] { return differences(before, picture()) > 100; })) << c.what;
        key(c.off);
        EXPECT_TRUE(pumpUntil([&] { return differences(before, picture()) == 0; })) << c.what;
    }
    key("ctrl+a");
    ASSERT_TRUE(pumpUntil([&] { return differences(before, picture()) > 100; }));
    before = picture();
    key("ctrl+m");
    EXPECT_TRUE(pumpUntil([&] { return differences(before, picture()) > 1000; }))
        << "mute of a part";
}

/// The level of a track is that of the instrument which it feeds at present.
TEST_F(SongWindowTest, MeterFollowsTheCables) {
    start();
    ASSERT_TRUE(load(kindEmpty));
    key("ctrl+i");
    ASSERT_TRUE(pumpUntil([&] { return tracks() == 1; }));
    CComp* synth = host->firstOfType(compSampler);
    ASSERT_TRUE(synth && loaded());
    const auto shows = [&](const COutputChannel* channel) {
        return pumpUntil([&] {
            auto* head = find<TrackHead>("track");
            return head && find<CMeter>("meter", head)->channel == channel;
        });
    };
    EXPECT_TRUE(shows(synth->output()));
    CUndo* step = host->undoStart("Unplug", host.get());
    step->asRemove(static_cast<CObject*>(synth->midiCables.first()), &synth->midiCables);
    host->undoEnd(step, true);
    EXPECT_TRUE(shows(nullptr));
    key("ctrl+z");
    EXPECT_TRUE(shows(synth->output()));
}

TEST_F(SongWindowTest, UndoneTakesLeaveTheScreen) {
    start();
    ASSERT_TRUE(load(kindEmpty));
    host->click->enabled = 0;
    key("ctrl+i");
    ASSERT_TRUE(pumpUntil([&] { return tracks() == 1; }) && loaded());
    const Shot before = picture();
    CUndo* step = host->startTakeStep(); // a take itself needs a device
    row(0)->addPart(new CMIDIPart, step);
    host->undoEnd(step, true);
    EXPECT_TRUE(pumpUntil([&] { return differences(before, picture()) > 1000; }));
    key("ctrl+z");
    EXPECT_TRUE(pumpUntil([&] { return differences(before, picture()) == 0; }));
    key("ctrl+y");
    EXPECT_TRUE(pumpUntil([&] { return differences(before, picture()) > 1000; }));
}

/// Audio in every format, by menu and by drop, is there with its length, at the place it was
/// brought to.
TEST_F(SongWindowTest, AudioComesByMenuAndDrop) {
    start();
    ASSERT_TRUE(load(kindEmpty));
    host->projectFile = at("song.qv").c_str();
    const auto partOf = [&](int i) { return tracks() > i ? row(i)->parts.getFirst() : nullptr; };
    key("6"); // a beat on
    inMenu({"i", "Return"});
    inDialog("Import audio", [this] { app->modalWin->setKeyCtrl(nameField(app->modalWin)); });
    typeInDialog("Import audio", tone("menu.wav"));
    keysInDialog("Import audio", {"Return"});
    for (const char* k : {"F10", "Down"}) key(k);
    ASSERT_TRUE(pumpUntil([&] { return partOf(0) != nullptr; }));
    EXPECT_EQ(partOf(0)->pos, 960);
    EXPECT_EQ(seq()->getTicks(partOf(0)), 1920); // a second at 120
    int index = 1;
    for (const char* name : {"a.flac", "b.ogg", "c.aiff"}) {
        drop(tone(name), grid(), 0, grid()->height - 5);
        ASSERT_TRUE(pumpUntil([&] { return partOf(index) != nullptr; })) << name;
        EXPECT_EQ(partOf(index)->pos, 0) << name;
        EXPECT_EQ(seq()->getTicks(partOf(index)), 1920) << name;
        index++;
    }
    // On a track, by the grid; one step each.
    drop(tone("d.wav"), grid(), grid()->width - 1, 20);
    ASSERT_TRUE(pumpUntil([&] { return row(0)->parts.getCount() == 2; }));
    EXPECT_EQ(row(0)->parts.last()->pos % 240, 0);
    for (int left = 4; left > 0; left--) {
        key("ctrl+z");
        ASSERT_TRUE(pumpUntil([&] { return tracks() == left && row(0)->parts.getCount() == 1; }))
            << left;
    }
}

/// The loop asks whether it is meant, and only while it is on.
TEST_F(SongWindowTest, MidiExportAsksAboutTheLoop) {
    start();
    ASSERT_TRUE(load(kindDefault));
    host->projectFile = at("song.qv").c_str();
    auto* far = new CMIDIPart;
    far->pos = 4 * barTicks;
    addNote(row(0)->parts.first());
    addNote(far);
    row(0)->addPart(far, nullptr);
    const auto exported = [&](const std::string& name) {
        inMenu({"e", "e", "Return"}); // the second entry with this letter
        typeInDialog("Save as", at(name));
        keysInDialog("Save as", {"Return"});
        for (const char* k : {"F10", "Down"}) key(k);
        EXPECT_TRUE(pumpUntil([&] { return std::filesystem::exists(at(name)); })) << name;
        std::error_code none;
        return std::filesystem::file_size(at(name), none);
    };
    const auto whole = exported("whole.mid");
    EXPECT_EQ(titles.size(), 1u);
    key("l");
    keysInDialog("Export to MIDI file", {"Return"});
    EXPECT_LT(exported("loop.mid"), whole);
    keysInDialog("Export to MIDI file", {"n"});
    EXPECT_EQ(exported("again.mid"), whole);
}

/// Peaks that an offline render has left are nothing that anybody has heard.
TEST_F(SongWindowTest, RendersLeaveNoPeaks) {
    start();
    ASSERT_TRUE(load(kindDefault));
    host->projectFile = at("song.qv").c_str();
    addNote(row(0)->parts.first());
    key("ctrl+a");
    key("ctrl+b");
    ASSERT_TRUE(pumpUntil([&] { return tracks() == 2; }));
    for (auto* comp : host->comps)
        for (auto* channel : comp->outputs)
            EXPECT_EQ(channel->holdL + channel->holdR, 0.0f) << comp->id.asChar();
}

TEST_F(SongWindowTest, BounceOfNothingTellsWhatToDo) {
    start();
    ASSERT_TRUE(load(kindDefault));
    seq()->unselectParts();
    keysInDialog("Bounce to new track", {"Return"});
    key("ctrl+b");
    EXPECT_TRUE(pumpUntil([&] { return !titles.empty() && !app->modalWin; }));
    EXPECT_EQ(tracks(), 1);
}
