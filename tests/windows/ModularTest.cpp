#include "ModularFixture.h"
#include "ProjectMask.h"
#include "SentEvents.h"

#include "effects/CEffect.h"
#include "effects/Inserts.h"
#include "effects/RackEdits.h"
#include "engine/CGroupCh.h"
#include "engine/DeviceComps.h"
#include "engine/KeyInput.h"
#include "gui/controls/CButton.h"
#include "modular/GraphPaths.h"
#include "modular/MiniMap.h"
#include "project/PresetFiles.h"
#include "project/ProjectFile.h"
#include "sequencer/edit/StripEdits.h"
#include "sequencer/song/CSeq.h"
#include "support/StoredPlaces.h"

#include <algorithm>
#include <array>
#include <random>
#include <set>

namespace {

using ModularTest = ModularFixture;

/// What a click or a band meets is selected, and nothing else of the project changes.
TEST_F(ModularTest, ClicksAndBandsSelect) {
    startModular();
    CComp *a = add(compGroupCh, 100, 150), *b = add(compGroupCh, 400, 150);
    const int before = host->undoIndex;
    const auto chosen = [&] {
        return std::to_string(a->hasFlag(compSelected)) + std::to_string(b->hasFlag(compSelected));
    };
    click(middleOf(a));
    EXPECT_EQ(chosen(), "10");
    click(addPos(middleOf(a), asPoint(20, 0))); // a click on what is selected leaves it
    EXPECT_EQ(chosen(), "10");
    click(asPoint(330, 260));
    EXPECT_EQ(chosen(), "00");
    drag(asPoint(330, 120), asPoint(560, 230));
    EXPECT_EQ(chosen(), "01");
    drag(asPoint(80, 120), asPoint(150, 230), "shift"); // beside what is selected
    EXPECT_EQ(chosen(), "11");
    drag(asPoint(330, 120), asPoint(560, 230), "", true);
    EXPECT_EQ(chosen(), "11") << "Escape gives the selection back";
    key("ctrl+a");
    EXPECT_EQ(selectedComps(host.get()).size(), size_t(host->comps.getCount()));
    EXPECT_EQ(host->undoIndex, before) << "no step remains";
}

TEST_F(ModularTest, DragsMoveTheSelectedBoxesInOneStep) {
    startModular();
    CComp *a = add(compGroupCh, 100, 150), *b = add(compGroupCh, 100, 320);
    a->setFlag(compSelected, true);
    const int before = host->undoIndex;
    drag(middleOf(a), addPos(middleOf(a), asPoint(60, 30)), "", true);
    EXPECT_EQ(asPoint(a->posX, a->posY), asPoint(100, 150)) << "cancelled";
    EXPECT_EQ(host->undoIndex, before);
    const CPoint aside = addPos(middleOf(a), asPoint(20, 0)); // else it is a double press
    drag(aside, addPos(aside, asPoint(60, 30)));
    EXPECT_EQ(asPoint(a->posX, a->posY), asPoint(160, 180));
    EXPECT_EQ(asPoint(b->posX, b->posY), asPoint(160, 350));
    EXPECT_EQ(undoName(), "Move");
    EXPECT_EQ(host->undoIndex, before + 1);
    undo();
    EXPECT_EQ(asPoint(b->posX, b->posY), asPoint(100, 320));
    // Each stops at the edge by itself.
    drag(middleOf(a), addPos(middleOf(a), asPoint(-150, -170)));
    EXPECT_EQ(asPoint(a->posX, a->posY), asPoint(0, 0));
    EXPECT_EQ(asPoint(b->posX, b->posY), asPoint(0, 150));
}

/// A cable lands on the nearest port that fits, shows it early, and takes away the one there is.
TEST_F(ModularTest, CablesAreLedFromPortToPort) {
    startModular();
    CComp *from = add(compGroupCh, 60, 120), *to = add(compGroupCh, 300, 260);
    out()->posX = 700, out()->posY = 500;
    view()->rebuild();
    const CPoint near = addPos(portAt(to->input()), asPoint(-20, 14));
    drag(portAt(from->output()), near, "", true);
    EXPECT_EQ(audioCables(to), 0) << "cancelled";
    mouseTo(portAt(from->output()));
    act({"mousedown", "1"});
    mouseTo(near);
    settle();
    EXPECT_EQ(view()->shownNow().toPort, view()->graph().portOf(to->input()));
    act({"mouseup", "1"});
    refresh();
    ASSERT_EQ(audioCables(to), 1);
    const auto* cable = to->audioCables.items(0);
    EXPECT_TRUE(cable->fromChannel == from->output() && cable->toChannel == to->input());
    EXPECT_EQ(undoName(), "Connection");
    // The other way round, from the input, it parts them.
    drag(portAt(to->input()), portAt(from->output()));
    EXPECT_EQ(audioCables(to), 0);
    undo();
    EXPECT_EQ(audioCables(to), 1);
    // A press alone joins nothing.
    const int before = host->undoIndex;
    click(portAt(from->output()));
    EXPECT_EQ(host->undoIndex, before);
}

TEST_F(ModularTest, MidiPortsTakeMidiAlone) {
    startModular();
    CComp *arp = add(compArp, 60, 120), *synth = add(compSampler, 300, 260);
    while (midiCables(synth))
        deleteCable(host.get(), static_cast<CObject*>(synth->midiCables.items(0)));
    refresh();
    drag(portAt(arp->outPort()), addPos(portAt(synth->output()), asPoint(0, 40)));
    ASSERT_EQ(midiCables(synth), 1);
    EXPECT_EQ(synth->midiCables.items(0)->fromPort, arp->outPort());
}

/// What the menu of the canvas adds stands where it was asked for, named and cabled.
TEST_F(ModularTest, TheMenuAddsComponents) {
    startModular();
    const CPoint at = asPoint(420, 300);
    menuAt(at, {"Down", "Down", "Return"}); // behind "Sequencer"; nothing can be undone
    CComp* synth = comp("Synthesizer");
    ASSERT_TRUE(synth);
    EXPECT_EQ(asPoint(synth->posX, synth->posY), at);
    EXPECT_EQ(undoName(), "Add comp");
    ASSERT_EQ(midiCables(synth), 1);
    EXPECT_EQ(synth->midiCables.items(0)->fromComp, host->getMIDIIn());
    ASSERT_EQ(audioCables(out()), 1);
    EXPECT_EQ(out()->audioCables.items(0)->fromComp, synth);
    EXPECT_TRUE(add(compSampler, 0, 0) == comp("Synthesizer 2"));
    undo();
    undo();
    EXPECT_FALSE(comp("Synthesizer"));
    EXPECT_EQ(audioCables(out()), 0);
}

TEST_F(ModularTest, APortListsItsCablesToDelete) {
    startModular();
    CComp *a = add(compGroupCh, 60, 120), *b = add(compGroupCh, 300, 120);
    ASSERT_EQ(audioCables(out()), 2);
    menuAt(portAt(out()->input()), {"Down", "Down", "Return"});
    ASSERT_EQ(audioCables(out()), 1);
    EXPECT_EQ(out()->audioCables.items(0)->fromComp, a);
    EXPECT_EQ(undoName(), "Delete");
    undo();
    ASSERT_EQ(audioCables(out()), 2);
    click(cableAt(static_cast<CObject*>(out()->audioCables.items(0))));
    key("Delete");
    refresh();
    ASSERT_EQ(audioCables(out()), 1);
    EXPECT_EQ(out()->audioCables.items(0)->fromComp, b);
}

/// Cables between copied boxes join the copies; those to others are repeated.
TEST_F(ModularTest, ControlDragsDuplicate) {
    startModular();
    CComp *a = add(compGroupCh, 60, 120), *b = add(compGroupCh, 60, 260);
    toggleCable(a->output(), b->input());
    toggleCable(host->getAudioIn()->output(), a->input());
    refresh();
    for (CComp* c : {a, b, host->getMIDIIn()}) c->setFlag(compSelected, true);
    const int count = host->comps.getCount();
    drag(middleOf(a), addPos(middleOf(a), asPoint(6, 6)), "ctrl");
    EXPECT_EQ(host->comps.getCount(), count) << "not far enough";
    const CPoint aside = addPos(middleOf(a), asPoint(20, 0)); // else it is a double press
    drag(aside, addPos(aside, asPoint(200, 20)), "ctrl");
    ASSERT_EQ(host->comps.getCount(), count + 2) << "devices stay out";
    CComp *twinA = comp("Group 3"), *twinB = comp("Group 4");
    ASSERT_TRUE(twinA && twinB);
    EXPECT_EQ(asPoint(twinA->posX, twinA->posY), asPoint(260, 140));
    EXPECT_EQ(asPoint(a->posX, a->posY), asPoint(60, 120));
    EXPECT_TRUE(areJoined(twinA->output(), twinB->input()));
    EXPECT_FALSE(areJoined(a->output(), twinB->input()));
    EXPECT_FALSE(areJoined(twinA->output(), b->input()));
    EXPECT_TRUE(areJoined(host->getAudioIn()->output(), twinA->input()));
    EXPECT_TRUE(areJoined(twinB->output(), out()->input()));
    EXPECT_TRUE(twinA->hasFlag(compSelected) && !a->hasFlag(compSelected));
    undo();
    EXPECT_EQ(host->comps.getCount(), count);
}

/// A copy follows what its original follows, or the copy of that.
TEST_F(ModularTest, CopiesHaveKeys) {
    startModular();
    CComp *kick = add(compGroupCh, 60, 120), *bass = add(compGroupCh, 260, 120);
    auto* rack = static_cast<CEffect*>(add(compEffect, 60, 260));
    rack->addProg(fxCompressor);
    CComp* insert = addInsert(bass->output(), fxCompressor, -1);
    ASSERT_TRUE(setKey(rack, kick->output()) && setKey(insert, rack->output()));
    const auto copies = [&](const std::vector<CComp*>& comps) {
        const int first = host->comps.getCount();
        duplicateComps(host.get(), comps, asPoint(20, 20));
        refresh();
        std::vector<CComp*> made;
        for (size_t i = 0; i < comps.size(); i++) made.push_back(host->comps.items(first + int(i)));
        return made;
    };
    EXPECT_EQ(keyInputOf(copies({rack})[0])->source(), kick->output());
    undo();
    const auto all = copies({bass, rack, kick});
    EXPECT_EQ(keyInputOf(all[1])->source(), all[2]->output());
    auto* inserted = all[0]->output()->inserts.getFirst();
    EXPECT_EQ(keyInputOf(inserted)->source(), all[1]->output());
    EXPECT_EQ(keyInputOf(insert)->source(), rack->output());
    undo();
    EXPECT_EQ(undoName(), "Side chain");
}

TEST_F(ModularTest, DeletingTakesTheCablesAndKeepsAnOutput) {
    startModular();
    CComp* a = add(compGroupCh, 60, 120);
    click(middleOf(a));
    key("ctrl+a");
    key("Delete");
    refresh();
    ASSERT_EQ(host->comps.getCount(), 1);
    EXPECT_EQ(host->comps.items(0)->type, compAudioOut);
    EXPECT_EQ(audioCables(out()), 0);
    undo();
    EXPECT_EQ(host->comps.getCount(), 5);
    EXPECT_EQ(audioCables(out()), 1);
}

/// A song that goes closes its windows, and comes back without them, with all that it had.
TEST_F(ModularTest, TheSongCanBeDeletedAndComesBack) {
    start();
    ASSERT_TRUE(load(kindDefault));
    CSeq* song = seq();
    ASSERT_TRUE(win->isOpen(song));
    const int had = tracks();
    host->start();
    deleteComps(host.get(), {song});
    refresh();
    EXPECT_FALSE(seq());
    EXPECT_FALSE(win->isOpen(song));
    EXPECT_FALSE(host->playing);
    undo();
    ASSERT_EQ(seq(), song);
    EXPECT_EQ(tracks(), had);
    EXPECT_FALSE(win->isOpen(song));
}

/// A double click opens what has a window; on what has none it is two clicks.
TEST_F(ModularTest, DoubleClicksOpenWindows) {
    start();
    ASSERT_TRUE(load(kindDefault));
    win->move(0, 0, 900, 640);
    win->runAction(win->getAction("modular"));
    refresh();
    for (CComp* c : {host->getAudioOut(), static_cast<CComp*>(seq())}) {
        mouseTo(middleOf(c));
        act({"click", "--repeat", "2", "--delay", "20", "1"});
        refresh();
        EXPECT_EQ(win->inFront(seq()), c == seq());
    }
}

/// Undo and loading in mid drag end the drag, and neither box nor cable is left behind.
TEST_F(ModularTest, DragsEndWhenTheGraphChanges) {
    startModular();
    CComp* a = add(compGroupCh, 100, 150);
    for (const CPoint from : {middleOf(a), portAt(a->output())}) {
        host->redoClicked();
        refresh();
        mouseTo(from);
        act({"mousedown", "1"});
        mouseTo(addPos(from, asPoint(40, 60)));
        host->undoClicked();
        refresh();
        EXPECT_FALSE(app->drag.of(view()));
        act({"mouseup", "1"});
        EXPECT_EQ(host->comps.getCount(), 4);
        EXPECT_EQ(view()->shownNow().toPort, -1);
    }
    mouseTo(middleOf(out()));
    act({"mousedown", "1"});
    mouseTo(addPos(middleOf(out()), asPoint(40, 60)));
    ASSERT_TRUE(load(kindModular));
    act({"mouseup", "1"});
    refresh();
    EXPECT_EQ(host->undoIndex, -1);
    EXPECT_EQ(view()->graph().boxes.size(), size_t(host->comps.getCount()));
}

TEST_F(ModularTest, WhatIsDroppedOnACableComesIntoItAndOutAgain) {
    startModular();
    CComp* synth = add(compSampler, 300, 60);
    out()->posX = 300, out()->posY = 400;
    CComp* effect = add(compEffect, 30, 420);
    view()->rebuild();
    drag(middleOf(effect), cableAt(static_cast<CObject*>(out()->audioCables.first())));
    EXPECT_EQ(undoName(), "Insert");
    EXPECT_TRUE(areJoined(synth->output(), effect->input()));
    EXPECT_TRUE(areJoined(effect->output(), out()->input()));
    EXPECT_FALSE(areJoined(synth->output(), out()->input()));
    drag(middleOf(effect), addPos(middleOf(effect), asPoint(-200, 60)), "alt");
    EXPECT_EQ(undoName(), "Pull out");
    EXPECT_TRUE(areJoined(synth->output(), out()->input()));
    EXPECT_EQ(audioCables(effect), 0);
    EXPECT_EQ(audioCables(out()), 1);
    undo();
    undo();
    EXPECT_TRUE(areJoined(synth->output(), out()->input()));
    EXPECT_EQ(asPoint(effect->posX, effect->posY), asPoint(30, 420));
}

/// By keys alone: to a box, to its ports, a cable from there, and along it.
TEST_F(ModularTest, KeysWalkAndConnect) {
    startModular();
    CComp *a = add(compGroupCh, 60, 150), *b = add(compGroupCh, 60, 320);
    for (auto* c : host->comps)
        if (c != a && c != b) c->posX = 600;
    view()->goTo(a);
    refresh();
    key("Down");
    EXPECT_EQ(view()->item(), b);
    key("Up");
    ASSERT_EQ(view()->item(), a);
    EXPECT_TRUE(a->hasFlag(compSelected) && !b->hasFlag(compSelected));
    key("ctrl+Right");
    EXPECT_EQ(a->posX, 68);
    key("p");
    key("Right");
    key("Right");
    ASSERT_EQ(view()->item(), a->output());
    key("Return");
    settle();
    ASSERT_EQ(view()->shownNow().toPort, view()->graph().portOf(b->input()));
    key("Return");
    refresh();
    ASSERT_TRUE(areJoined(a->output(), b->input()));
    key("Escape");
    EXPECT_EQ(view()->item(), a);
    key("Escape");
    EXPECT_FALSE(view()->item());
}

TEST_F(ModularTest, EveryBoxPortAndCableIsNamed) {
    startModular();
    CComp* a = add(compGroupCh, 60, 150);
    std::set<std::string> names;
    for (int part = 0; part < view()->accessParts(); part++) {
        Description d;
        view()->describe(d, part);
        EXPECT_FALSE(d.name.empty() || d.bounds.empty()) << part;
        names.insert(d.name);
    }
    for (const char* name :
         {"Group, group", "Group, in, audio input, no cable", "Group, out, audio output, 1 cable",
          "Group, MIDI in, MIDI input, no cable", "Audio cable Group to Audio Out"})
        EXPECT_TRUE(names.count(name)) << name;
    ASSERT_TRUE(view()->pressPart(view()->graph().boxOf(a)));
    EXPECT_TRUE(a->hasFlag(compSelected) && view()->item() == a);
}

TEST_F(ModularTest, PresetsCanBeDropped) {
    startModular();
    CEffect rack(host.get());
    rack.init();
    const std::string path = at("Hall.qve");
    ASSERT_TRUE(saveProgram(&rack, path.c_str()));
    dropAFile(path, asPoint(200, 150));
    CComp* made = comp("Hall");
    ASSERT_TRUE(made);
    EXPECT_EQ(made->type, compEffect);
    EXPECT_EQ(asPoint(made->posX, made->posY), asPoint(200, 150));
    EXPECT_EQ(undoName(), "Drop Hall.qve");
}

/// What is for the song comes into it.
TEST_F(ModularTest, OtherFilesComeIntoTheSong) {
    start();
    ASSERT_TRUE(load(kindEmpty));
    win->runAction(win->getAction("modular"));
    refresh();
    const std::string path = at("tone.wav");
    ASSERT_EQ(runCommand({"sox", "-n", "-r", "44100", path, "synth", "0.2", "sine", "440"}), 0);
    dropAFile(path, asPoint(200, 150));
    EXPECT_TRUE(pumpUntil([this] { return tracks() == 1; }));
}

TEST_F(ModularTest, ZoomKeepsWhatIsUnderThePointer) {
    startModular();
    CComp* a = add(compGroupCh, 400, 300);
    mouseTo(middleOf(a));
    const CPoint before = view()->toControl(asPoint(400, 300));
    act({"keydown", "ctrl"});
    for (int i = 0; i < 3; i++) act({"click", "4"});
    act({"keyup", "ctrl"});
    refresh();
    EXPECT_NEAR(view()->zoom(), 1.953, 0.01);
    const CPoint after = view()->toControl(middleOf(a));
    const CPoint was = addPos(before, asPoint(GraphModel::boxWidth / 2, GraphModel::boxHeight / 2));
    EXPECT_NEAR(after.x, was.x, 2);
    EXPECT_NEAR(after.y, was.y, 2);
    for (const double wanted : {0.01, 99.0}) {
        view()->zoomTo(wanted, {});
        EXPECT_EQ(view()->zoom(), wanted < 1 ? 0.25 : 3.0);
    }
}

TEST_F(ModularTest, TheMapBringsPlacesIntoView) {
    startModular();
    CComp* far = add(compGroupCh, 3000, 2000);
    auto* map = find<MiniMap>("minimap");
    ASSERT_TRUE(map && map->shown());
    const CPoint screen = win->getPos(true), in = win->controlPos(map);
    const auto mapTo = [&](int x, int y) {
        act({"mousemove", std::to_string(screen.x + in.x + x),
             std::to_string(screen.y + in.y + y)});
    };
    view()->scroll(0, 0);
    mapTo(map->width - 12, map->height - 12);
    act({"mousedown", "1"});
    EXPECT_GT(view()->scrollX, 1000);
    key("Escape");
    EXPECT_EQ(asPoint(view()->scrollX, view()->scrollY), asPoint(0, 0));
    act({"mouseup", "1"});
    view()->goTo(far);
    EXPECT_GT(view()->scrollY, 1000);
    win->runAction(win->getAction("fitgraph"));
    EXPECT_LT(view()->zoom(), 0.5);
    win->runAction(win->getAction("graphside"));
    EXPECT_FALSE(map->shown());
}

/// A project whose components all stand at one place is laid out as it comes; others stay.
TEST_F(ModularTest, ProjectsWithoutPlacesAreLaidOut) {
    startModular();
    add(compGroupCh, 500, 300);
    const CStr path = folder.write("graph.qv", "");
    for (const bool stacked : {false, true}) {
        if (stacked)
            for (auto* c : host->comps) c->posX = c->posY = 32;
        ProjectUi plain;
        ASSERT_TRUE(saveProject({host.get(), &win->flows->mixer, &plain}, path));
        ASSERT_TRUE(load(kindFile, path));
        EXPECT_EQ(asPoint(comp("Group")->posX, comp("Group")->posY) == asPoint(500, 300), !stacked);
        std::set<std::pair<int, int>> places;
        for (auto* c : host->comps) places.emplace(c->posX, c->posY);
        EXPECT_EQ(int(places.size()), host->comps.getCount());
        EXPECT_FALSE(host->modified());
    }
}

/// Presses, drags, keys and commands of any kind, given up or not: every way back leads to the
/// bytes that were there.
TEST_F(ModularTest, RandomGesturesCanBeUndone) {
    startModular();
    std::mt19937 chance(11);
    const auto upTo = [&](int limit) { return int(chance() % unsigned(limit)); };
    for (int i = 0; i < 4; i++)
        add(std::array{compSampler, compEffect, compGroupCh, compArp}[size_t(i)], 60 + 160 * i,
            100 + 80 * i);
    host->undoClear();
    const auto content = [this] { return projectContent(host.get(), &win->flows->mixer); };
    const auto where = [&](const std::string& wanted) {
        const std::string now = content();
        const auto at = std::mismatch(now.begin(), now.end(), wanted.begin(), wanted.end()).first;
        return blockAt(now, size_t(at - now.begin()));
    };
    const std::string first = content();
    const CPoint in = win->controlPos(view());
    const auto place = [&] {
        const auto& graph = view()->graph();
        CPoint at = asPoint(upTo(view()->width), upTo(view()->height));
        if (upTo(4) && !graph.ports.empty())
            at = view()->toControl(graph.ports[size_t(upTo(int(graph.ports.size())))].centre());
        else if (upTo(2) && !graph.boxes.empty())
            at = view()->toControl(
                middleOf(graph.boxes[size_t(upTo(int(graph.boxes.size())))].comp));
        return addPos(in, asPoint(asMinMax(at.x, 0, view()->width - 1),
                                  asMinMax(at.y, 0, view()->height - 1)));
    };
    const KeySym keys[] = {XK_Delete, XK_Left, XK_Down, XK_Return, XK_p, XK_Escape, XK_u, XK_Right};
    const unsigned held[] = {0, 0, 0, ShiftMask, ControlMask, Mod1Mask};
    constexpr int gestures = 250;
    for (int i = 0; i < gestures && !HasFailure(); i++) {
        SentEvents hand(app.get());
        hand.held = held[upTo(6)];
        const int what = upTo(12);
        if (what < 6) {
            hand.press(win.get(), place(), Button1);
            for (int k = upTo(3); k >= 0; k--) hand.move(win.get(), place());
            if (upTo(5) == 0) hand.key(win.get(), XK_Escape);
            hand.release(win.get(), place(), Button1);
        } else if (what < 8) {
            hand.key(win.get(), keys[upTo(8)]);
        } else if (what < 9) {
            hand.held = ControlMask;
            hand.wheel(win.get(), place(), upTo(2) ? Button4 : Button5);
        } else if (what < 10) {
            duplicateComps(host.get(), selectedComps(host.get()), asPoint(upTo(90), upTo(90)));
        } else {
            win->runAction(win->getAction(upTo(3) ? "undo" : upTo(2) ? "redo" : "tidygraph"));
        }
        if (host->comps.getCount() > 24) win->runAction(win->getAction("undo"));
        win->pages->closeAll(); // windows that were opened by a double click
        host->settle();
        host->idle();
        app->paintFrame();
    }
    view()->zoomTo(1, {});
    const std::string last = content();
    const int end = host->undoIndex;
    while (host->undoIndex >= 0) host->undoClicked(), host->settle();
    host->idle();
    EXPECT_TRUE(content() == first) << where(first);
    while (host->undoIndex < end) host->redoClicked(), host->settle();
    host->idle();
    EXPECT_TRUE(content() == last) << where(last);
    EXPECT_GT(host->undoList.getCount(), 10) << "hardly anything was done";
}

/// In the song a path follows one track, elsewhere it goes through the component.
TEST_F(ModularTest, PathsLeadFromSourceToOutput) {
    start();
    ASSERT_TRUE(load(kindDemo));
    const GraphModel graph(host.get());
    auto* bass = seq()->tracks.items(2);
    const auto cables = cablesFrom(host.get(), bass->outPort());
    ASSERT_EQ(cables.size(), 1u);
    const GraphPath path(graph, cables[0]);
    int samplers = 0, lit = 0;
    for (size_t i = 0; i < graph.boxes.size(); i++)
        samplers += path.boxes[i] && graph.boxes[i].comp->type == compSampler;
    for (const bool on : path.cables) lit += on;
    EXPECT_EQ(samplers, 1);
    EXPECT_EQ(lit, 3) << "from the MIDI input, to the instrument, to the output";
    EXPECT_TRUE(path.boxes[size_t(graph.boxOf(out()))]);
}

} // namespace
