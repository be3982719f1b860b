#include "ArrangeFixture.h"

#include "arrange/LaneHead.h"
#include "engine/StripValues.h"
#include "engine/ValueDoor.h"
#include "gui/dialogs/CColourWin.h"
#include "sequencer/edit/TrackEdits.h"
#include "sequencer/song/CSubTrack.h"
#include "sequencer/song/FolderSum.h"
#include "sequencer/song/TrackInstrument.h"
#include "sequencer/song/TrackRouting.h"
#include "sequencer/song/TrackValues.h"

/// Heads of tracks under the mouse and the keys: what is left in the song.
class TrackHeadTest : public ArrangeFixture {
protected:
    HeadList* heads() { return find<HeadList>("heads"); }
    TrackHead* head(int index) {
        for (auto* c : heads()->controls)
            if (c->id == "track" && static_cast<TrackHead*>(c)->songTrack() == row(index))
                return static_cast<TrackHead*>(c);
        return nullptr;
    }
    CCtrl* on(int index, const char* id) {
        for (auto* c : head(index)->controls)
            if (c->id == id) return c;
        return nullptr;
    }
    void toMiddle(CCtrl* ctrl) { mouseTo(ctrl, ctrl->width / 2, ctrl->height / 2); }
    void clickOn(CCtrl* ctrl, const char* button = "1") {
        toMiddle(ctrl);
        act({"click", button});
    }
    void dragHead(CCtrl* from, CPoint start, CCtrl* to, CPoint end, bool escape = false) {
        const CPoint a = page()->controlPos(from), b = page()->controlPos(to);
        const CPoint at = page()->getPos(true);
        const auto go = [&](int x, int y) {
            act({"mousemove", std::to_string(at.x + x), std::to_string(at.y + y)});
        };
        go(a.x + start.x, a.y + start.y);
        act({"mousedown", "1"});
        go((a.x + start.x + b.x + end.x) / 2, (a.y + start.y + b.y + end.y) / 2);
        go(b.x + end.x, b.y + end.y);
        if (escape) key("Escape");
        act({"mouseup", "1"});
        EXPECT_TRUE(loaded());
    }
    std::string names() {
        std::string all;
        for (auto* t : seq()->tracks) all += std::string(t->id.asChar()) + " ";
        return all;
    }
    std::string selection() {
        std::string all;
        for (int i = 0; i < tracks(); i++) all += row(i)->track->selected() ? '1' : '0';
        return all;
    }
    template <class F>
    std::string flags(F of) {
        std::string all;
        for (int i = 0; i < tracks(); i++) all += of(row(i)) ? '1' : '0';
        return all;
    }
    std::string mutes() {
        return flags([](CSongTrack* t) { return t->muted(); });
    }
    void letters() {
        for (int i = 0; i < tracks(); i++)
            row(i)->track->id = CStr(std::string(1, char('a' + i)).c_str());
    }
};

TEST_F(TrackHeadTest, SwitchesOfOneSeveralAndASwipe) {
    startWith({trackAudio, trackMIDI, trackAudio, trackDrum});
    const struct {
        const char* id;
        bool (*on)(CSongTrack*);
    } switches[] = {{"arm", [](CSongTrack* t) { return t->track->recArm != 0; }},
                    {"mute", [](CSongTrack* t) { return t->muted(); }},
                    {"solo", [](CSongTrack* t) { return t->soloed(); }},
                    {"monitor", [](CSongTrack* t) { return t->track->monitor != 0; }}};
    for (const auto& s : switches) {
        const auto is = [&](const char* wanted) {
            return pumpUntil([&] { return flags(s.on) == wanted; });
        };
        seq()->unselectTracks();
        clickOn(on(1, s.id));
        EXPECT_TRUE(is("0100")) << s.id;
        // On one of several selected it is all of them; all go to one state, in one step.
        seq()->selectTrack(row(1), true);
        seq()->selectTrack(row(2), true);
        clickOn(on(2, s.id));
        EXPECT_TRUE(is("0110")) << s.id;
        clickOn(on(1, s.id));
        EXPECT_TRUE(is("0000")) << s.id;
        key("ctrl+z");
        EXPECT_TRUE(is("0110")) << s.id;
        // A swipe, taken back by Escape, and by one undo.
        seq()->unselectTracks();
        CCtrl *first = on(0, s.id), *last = on(3, s.id);
        const CPoint middle = asPoint(first->width / 2, first->height / 2);
        dragHead(first, middle, last, middle, true);
        EXPECT_TRUE(is("0110")) << s.id << " after Escape";
        dragHead(first, middle, last, middle);
        EXPECT_TRUE(is("1111")) << s.id;
        key("ctrl+z");
        EXPECT_TRUE(is("0110")) << s.id;
        for (int i = 0; i < 2; i++) key("ctrl+z");
        EXPECT_TRUE(is("0000")) << s.id;
    }
    // Over the heads there is a switch for all.
    auto* corner = find<CGroup>("corner");
    for (const char* wanted : {"1111", "0000"}) {
        clickOn(find<CCtrl>("muteall", corner));
        EXPECT_TRUE(pumpUntil([&] { return mutes() == wanted; })) << wanted;
    }
}

TEST_F(TrackHeadTest, VolumeAndPanOfWhatIsHeard) {
    startWith({trackAudio, trackAudio});
    COutputChannel* out[] = {row(0)->track->output(), row(1)->track->output()};
    CCtrl *volume = on(0, "volume"), *pan = on(0, "pan");
    int from = 20; // from another place each time, as two quick presses are a double click
    const auto drag = [&](CCtrl* slider, int by, bool escape) {
        from += 9;
        dragHead(slider, asPoint(from, 5), slider, asPoint(from + by, 5), escape);
    };
    // As far as the pointer went, on all of what is selected, in one step.
    seq()->selectTrack(row(0), true);
    seq()->selectTrack(row(1), true);
    host->values->set(faderOf(out[1]), {0.75, 1.0});
    const int room = volume->width - 4;
    drag(volume, -room / 4, true);
    EXPECT_FLOAT_EQ(out[0]->vol, 1.0f);
    drag(volume, -room / 4, false);
    EXPECT_NEAR(out[0]->vol, 1.0 - double(room / 4) / room, 1e-5);
    EXPECT_NEAR(out[1]->vol, 0.75 - double(room / 4) / room, 1e-5);
    key("ctrl+z");
    EXPECT_TRUE(pumpUntil([&] { return out[0]->vol == 1.0f && out[1]->vol == 0.75f; }));
    seq()->unselectTracks();
    drag(pan, (pan->width - 4) / 4, false);
    EXPECT_NEAR(out[0]->pan, 0.5, 0.03);
    EXPECT_EQ(out[1]->pan, 0.0f);
    toMiddle(pan);
    act({"click", "--repeat", "2", "--delay", "50", "1"});
    EXPECT_TRUE(pumpUntil([&] { return out[0]->pan == 0.0f; }));
    // By keys: typed in decibels, stepped, the usual value.
    focus(volume);
    for (const char* k : {"minus", "6", "Return"}) key(k);
    EXPECT_TRUE(
        pumpUntil([&] { return std::abs(out[0]->vol - std::pow(10.0f, -6.0f / 40)) < 1e-5f; }));
    key("Prior");
    EXPECT_NEAR(out[0]->vol, std::pow(10.0f, -6.0f / 40) + 0.05f, 1e-5);
    key("Delete");
    EXPECT_EQ(out[0]->vol, 1.0f);
}

TEST_F(TrackHeadTest, NamesAndColoursAreGivenInPlace) {
    startWith({trackMIDI, trackMIDI});
    const auto rename = [&](const char* typed, const char* last) {
        mouseTo(head(0), 60, 13);
        act({"click", "--repeat", "2", "--delay", "50", "1"});
        EXPECT_TRUE(pumpUntil([&] { return win->keyTarget() && win->keyTarget()->id == "name"; }));
        act({"type", "--delay", "2", typed});
        key(last);
        EXPECT_TRUE(pumpUntil([&] { return on(0, "name") == nullptr; }));
    };
    const CStr before = row(0)->track->id;
    rename("Bass", "Escape");
    EXPECT_EQ(row(0)->track->id, before);
    rename("Bass", "Return");
    EXPECT_EQ(row(0)->track->id, "Bass");
    EXPECT_EQ(on(0, "mute")->spokenName, "Mute, Bass");
    key("ctrl+z");
    EXPECT_TRUE(pumpUntil([&] { return row(0)->track->id == before; }));
    clickOn(head(1));
    key("ctrl+r");
    ASSERT_TRUE(pumpUntil([&] { return win->keyTarget() && win->keyTarget()->id == "name"; }));
    act({"type", "--delay", "2", "Lead"});
    key("Return");
    EXPECT_TRUE(pumpUntil([&] { return row(1)->track->id == "Lead"; }));
    // A press on the stripe, for all that are selected.
    seq()->selectTrack(row(0), true);
    inDialog("Track colour", [this] {
        app->modalWin->setKeyCtrl(find<CCtrl>("code", app->modalWin->clientGroup));
    });
    inDialog("Track colour", [] { runCommand({"xdotool", "key", "ctrl+a"}); });
    typeInDialog("Track colour", "#204060");
    keysInDialog("Track colour", {"Tab", "Return"});
    mouseTo(head(0), 2, 20);
    act({"click", "1"});
    EXPECT_TRUE(pumpUntil([&] {
        return row(0)->track->colour == 0x204060 && row(1)->track->colour == 0x204060;
    })) << row(0)->track->colour;
    key("ctrl+z");
    EXPECT_TRUE(pumpUntil(
        [&] { return row(0)->track->colour != 0x204060 && row(1)->track->colour != 0x204060; }));
}

TEST_F(TrackHeadTest, HeightsFoldsAndLanes) {
    startWith({trackFolder, trackAudio, trackAudio, trackMIDI});
    row(1)->track->folder = row(0)->track;
    seq()->songNotices.raise(SeqNotice::tracks);
    ASSERT_TRUE(loaded());
    // The lower edge, for all that are selected.
    seq()->selectTrack(row(1), true);
    seq()->selectTrack(row(2), true);
    const auto size = [&](int index, int by, bool escape) {
        TrackHead* h = head(index);
        dragHead(h, asPoint(30, h->height - 2), h, asPoint(30, h->height - 2 + by), escape);
    };
    const CStr undone = host->undoText();
    size(1, 30, false);
    EXPECT_EQ(row(1)->track->getRowHeight(), CTrack::usualRow + 30);
    EXPECT_EQ(row(2)->track->getRowHeight(), CTrack::usualRow + 30);
    EXPECT_EQ(row(3)->track->getRowHeight(), +CTrack::usualRow);
    EXPECT_EQ(head(2)->height, CTrack::usualRow + 30);
    size(1, -300, false);
    EXPECT_EQ(row(1)->track->getRowHeight(), +CTrack::leastRow);
    EXPECT_FALSE(on(1, "volume")->visible) << "no room";
    EXPECT_TRUE(on(1, "mute")->visible);
    size(3, 60, true);
    EXPECT_EQ(row(3)->track->getRowHeight(), +CTrack::usualRow);
    EXPECT_EQ(host->undoText(), undone) << "how it is shown is no step";
    // A folder hides what is in it.
    clickOn(on(0, "fold"));
    EXPECT_TRUE(pumpUntil([&] { return head(1) == nullptr && head(2) != nullptr; }));
    clickOn(on(0, "fold"));
    EXPECT_TRUE(pumpUntil([&] { return head(1) != nullptr; }));
    // Lanes under an audio track, which has one for its volume from the start.
    clickOn(on(2, "fold"));
    const auto lane = [&] { return find<LaneHead>("lane", heads()); };
    ASSERT_TRUE(pumpUntil([&] { return lane() != nullptr; }));
    auto* shown = row(2)->track->subTracks.first();
    clickOn(find<CCtrl>("bypass", lane()));
    EXPECT_TRUE(pumpUntil([&] { return shown->bypass == 1; }));
    key("ctrl+z");
    EXPECT_TRUE(pumpUntil([&] { return shown->bypass == 0; }));
    clickOn(find<CCtrl>("close", lane()));
    EXPECT_TRUE(pumpUntil([&] { return lane() == nullptr; }));
    EXPECT_EQ(shown->visible, 0);
}

TEST_F(TrackHeadTest, TracksAreChosenMovedAndDeleted) {
    startWith({trackMIDI, trackMIDI, trackFolder, trackMIDI});
    letters();
    // Not on the name, where the second of two presses would rename.
    const int x = 223;
    const auto head2 = [&](int) { return asPoint(x, 5); };
    clickOn(head(0));
    EXPECT_TRUE(pumpUntil([&] { return selection() == "1000"; }));
    act({"keydown", "shift"});
    clickOn(head(3));
    act({"keyup", "shift"});
    EXPECT_TRUE(pumpUntil([&] { return selection() == "1111"; }));
    act({"keydown", "ctrl"});
    clickOn(head(1));
    act({"keyup", "ctrl"});
    EXPECT_TRUE(pumpUntil([&] { return selection() == "1011"; }));
    clickOn(head(3));
    EXPECT_TRUE(pumpUntil([&] { return selection() == "0001"; })) << "one of several";
    // To the front, and not with Escape.
    dragHead(head(3), asPoint(x, 20), head(0), head2(0), true);
    EXPECT_EQ(names(), "a b c d ");
    dragHead(head(3), asPoint(x, 20), head(0), head2(0));
    EXPECT_EQ(names(), "d a b c ");
    // Down behind the last one, into the folder, with what is selected.
    seq()->selectTrack(row(1), true);
    dragHead(head(0), asPoint(x, 20), head(3), asPoint(x, head(3)->height / 2));
    EXPECT_EQ(names(), "b c d a ");
    EXPECT_EQ(row(2)->track->folder, row(1)->track);
    EXPECT_EQ(row(3)->track->folder, row(1)->track);
    // A folder takes along what is in it, and does not come into itself.
    seq()->unselectTracks();
    dragHead(head(1), asPoint(x, 12), head(3), asPoint(x, 30));
    EXPECT_EQ(names(), "b c d a ");
    dragHead(head(1), asPoint(x, 12), head(0), head2(0));
    EXPECT_EQ(names(), "c d a b ");
    for (int i = 0; i < 3; i++) key("ctrl+z");
    EXPECT_TRUE(pumpUntil([&] { return names() == "a b c d "; }));
    EXPECT_EQ(row(3)->track->folder, nullptr);
    for (int i = 0; i < 3; i++) key("ctrl+y");
    EXPECT_TRUE(pumpUntil([&] { return names() == "c d a b "; }));
    ASSERT_TRUE(loaded());
    // The folder leaves with what is in it.
    deleteTracks(seq(), {row(0)->track});
    EXPECT_TRUE(pumpUntil([&] { return names() == "b "; }));
    key("ctrl+z");
    EXPECT_TRUE(
        pumpUntil([&] { return names() == "c d a b " && row(1)->track->folder == row(0)->track; }));
}

/// Where a track leads is chosen on its head, in low rows by its sign, and in the menu, for all
/// that are selected.
TEST_F(TrackHeadTest, InstrumentsAndOutputsAreChosenInPlace) {
    startWith({trackFolder, trackMIDI, trackMIDI, trackAudio});
    CUndo* step = host->undoStart("Instruments", seq(), {.graph = true});
    CComp* synths[] = {addTrackInstrument(seq(), row(1)->track, step),
                       addTrackInstrument(seq(), row(2)->track, step)};
    host->undoEnd(step, true);
    ASSERT_TRUE(loaded());
    const int count = host->comps.getCount();
    const auto lead = [&](int a, int b) {
        return pumpUntil([&] {
            return trackTarget(seq(), row(1)->track) == (a < 0 ? nullptr : synths[a]) &&
                   trackTarget(seq(), row(2)->track) == (b < 0 ? nullptr : synths[b]);
        });
    };
    EXPECT_FALSE(on(0, "target")->visible);
    EXPECT_EQ(on(1, "target")->hint, "Instrument: " + synths[0]->id + ". Press for another one");
    std::vector<std::string> toSecond = {"Return"};
    for (const CComp* c : trackTargets(seq(), row(1)->track)) {
        toSecond.insert(toSecond.begin(), "Down");
        if (c == synths[1]) break;
    }
    inMenu(toSecond);
    clickOn(on(1, "target"));
    EXPECT_TRUE(lead(1, 1));
    key("ctrl+z");
    EXPECT_TRUE(lead(0, 1));
    // Both, in one step, in a high row and by the keys.
    for (const int i : {1, 2}) {
        row(i)->track->setRowHeight(80);
        seq()->selectTrack(row(i), true);
    }
    seq()->songNotices.raise(SeqNotice::tracks);
    ASSERT_TRUE(loaded());
    EXPECT_GT(on(2, "target")->width, 100);
    focus(on(2, "target"));
    inMenu({"n", "Return"});
    key("Return");
    EXPECT_TRUE(lead(-1, -1));
    EXPECT_EQ(host->undoText(), "Instrument");
    key("ctrl+z");
    EXPECT_TRUE(lead(0, 1));
    focus(on(2, "target"));
    inMenu({"a", "Return"});
    key("Return");
    ASSERT_TRUE(pumpUntil([&] { return host->comps.getCount() > count; }));
    CComp* added = host->comps.last();
    EXPECT_TRUE(added->type == compSampler && trackTarget(seq(), row(1)->track) == added &&
                trackTarget(seq(), row(2)->track) == added);
    focus(on(2, "target"));
    inMenu({"o", "Return"});
    key("Return");
    EXPECT_TRUE(pumpUntil([&] { return added->editorStruct.visible != 0; }));
    key("F8");
    key("ctrl+z");
    EXPECT_TRUE(lead(0, 1));
    inMenu({"i", "Right", "n", "Return"});
    focus(head(1));
    key("Menu");
    EXPECT_TRUE(lead(-1, -1));
    key("ctrl+z");
    EXPECT_TRUE(lead(0, 1));
    // Twins of all that is selected.
    key("ctrl+shift+d");
    ASSERT_TRUE(pumpUntil([&] { return tracks() == 6; }));
    EXPECT_EQ(selection(), "000110");
    for (CComp* synth : synths)
        EXPECT_NE(trackTarget(seq(), row(3)->track), synth) << "each has its own";
    key("ctrl+z");
    EXPECT_TRUE(pumpUntil([&] { return tracks() == 4; }));
}

/// Of many tracks only those in view have heads, and all can be reached.
TEST_F(TrackHeadTest, ThereAreHeadsForWhatShows) {
    startWith({});
    CUndo* step = host->undoStart("Tracks", seq(), {.graph = true, .song = true});
    for (int i = 0; i < 3000; i++) seq()->addTrack(trackFolder, seq()->getProg(), step);
    host->undoEnd(step, true);
    ASSERT_TRUE(loaded());
    const int room = heads()->height / CTrack::leastRow + 2;
    EXPECT_LE(heads()->controls.getCount(), room);
    focus(head(0));
    for (int i = 0; i < 40; i++) key("Down");
    EXPECT_EQ(selectedRow(), 40);
    ASSERT_TRUE(head(40));
    EXPECT_EQ(win->keyTarget(), head(40));
    EXPECT_LE(heads()->controls.getCount(), room);
}

/// The head of a folder that is summed has the volume, the pan and the level of all in it.
TEST_F(TrackHeadTest, AFolderThatIsSummedHasAFader) {
    startWith({trackFolder, trackAudio, trackAudio});
    row(1)->track->folder = row(2)->track->folder = row(0)->track;
    seq()->unselectTracks();
    seq()->selectTrack(row(0), true);
    ASSERT_TRUE(loaded());
    EXPECT_FALSE(on(0, "volume")->visible);
    win->onAction(win->getAction("sumfolder"));
    ASSERT_TRUE(pumpUntil([&] { return folderGroup(seq(), row(0)->track) != nullptr; }));
    ASSERT_TRUE(pumpUntil([&] { return on(0, "volume")->visible; }));
    COutputChannel* sum = folderGroup(seq(), row(0)->track)->output();
    focus(on(0, "volume"));
    for (const char* k : {"minus", "6", "Return"}) key(k);
    EXPECT_TRUE(
        pumpUntil([&] { return std::abs(sum->vol - std::pow(10.0f, -6.0f / 40)) < 1e-5f; }));
    EXPECT_EQ(row(1)->track->output()->vol, 1.0f);
    for (int i = 0; i < 2; i++) key("ctrl+z");
    EXPECT_TRUE(pumpUntil([&] { return !on(0, "volume")->visible; }));
}
