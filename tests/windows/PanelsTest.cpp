#include "Blocks.h"
#include "PanelsFixture.h"

#include "base/CIniFile.h"
#include "base/Paths.h"
#include "engine/MapEdits.h"
#include "engine/MidiBytes.h"
#include "gui/controls/CButton.h"
#include "gui/controls/CDocker.h"
#include "gui/controls/CListbox.h"
#include "instruments/CSampleClip.h"
#include "instruments/CWavSound.h"
#include "instruments/FactoryPrograms.h"
#include "instruments/SamplerEdits.h"
#include "project/PresetFiles.h"

#include <algorithm>

using PanelsTest = PanelsFixture;

TEST_F(PanelsTest, KnobsAndButtonsSetASound) {
    start();
    ASSERT_TRUE(load(kindDefault));
    open(sampler());
    CSound* s = sound();
    const float before = s->cutoff;
    CCtrl* cutoff = find("Cutoff");
    drag(cutoff, asPoint(32, 36), asPoint(32, 36 + 40));
    EXPECT_NEAR(s->cutoff, before - 0.25f, 0.02f); // 160 pixels are all of the way
    const float set = s->cutoff;
    drag(cutoff, asPoint(18, 30), asPoint(48, 30), true);
    EXPECT_EQ(s->cutoff, set) << "Escape";
    cutoff->win->setKeyCtrl(cutoff);
    for (const char* k : {"2", "5", "Return"}) key(k);
    EXPECT_FLOAT_EQ(s->cutoff, 0.25f);
    key("Home");
    EXPECT_EQ(s->cutoff, 0.0f);
    key("Delete");
    EXPECT_EQ(s->cutoff, 1.0f);
    for (const float former : {0.0f, 0.25f, set, before}) {
        undo();
        EXPECT_EQ(s->cutoff, former);
    }
    // A whole number moves by one at least, a switch and a choice by a press.
    CCtrl* coarse = find("Coarse");
    comeIntoView(coarse);
    mouseTo(coarse, 32, 36);
    act({"keydown", "ctrl"});
    act({"click", "4"});
    act({"keyup", "ctrl"});
    EXPECT_EQ(std::fabs(s->coarse), 2.0f) << "a fiftieth of 96";
    click("Mute");
    EXPECT_EQ(s->mute, 1);
    choose("Kind", {"Down", "Down", "Return"});
    EXPECT_NE(s->filter, filterLow);
    undo();
    EXPECT_EQ(s->filter, filterLow);
    undo();
    EXPECT_EQ(s->mute, 0);
    EXPECT_TRUE(host->modified());
}

/// What a menu of a knob leads to its parameter: a controller, a macro, a lane.
TEST_F(PanelsTest, KnobsAreLearnedAndAutomated) {
    start();
    ASSERT_TRUE(load(kindDefault));
    CSampler* s = sampler();
    setProgramMacro(s, 1, -1);
    open(s);
    constexpr int usualCutoff = 74, usualQ = 71;
    const auto menu = [&](const char* id, std::vector<std::string> keys) {
        CCtrl* c = find(id);
        c->win->setKeyCtrl(c);
        inMenu(keys);
        key("shift+F10");
        ASSERT_TRUE(loaded());
    };
    std::vector<std::string> down(2, "Down"); // from the first entry
    down.push_back("Return");
    menu("Cutoff", down);
    EXPECT_EQ(sound()->ccMap[usualCutoff], targetCutoff);
    const ParamRef cutoff{s, usualCutoff};
    EXPECT_EQ(controllerOf(host.get(), cutoff).number, LeadingController::awaited);
    down.insert(down.begin(), "Down");
    menu("Cutoff", down);
    EXPECT_EQ(controllerOf(host.get(), cutoff).number, LeadingController::none);

    // A macro that waits takes what is turned next, at the release.
    click("macro2");
    drag(find("Resonance"), asPoint(32, 36), asPoint(32, 20));
    ASSERT_TRUE(pumpUntil([&] { return s->getMacroParam(1) == usualQ; }));
    EXPECT_NEAR(sound()->q, 0.1f, 0.02f);
    // Its range begins there, and its name is the user's.
    const float q = sound()->q;
    menu("macro2", {"b", "Return"});
    ASSERT_TRUE(pumpUntil([&] { return *s->macroStyle(1)->low == q; }));
    menu("macro2", {"r", "Return"});
    act({"type", "Bite"});
    key("Return");
    ASSERT_TRUE(pumpUntil([&] { return *s->macroStyle(1)->name == "Bite"; }));
    find("macro2")->win->setKeyCtrl(find("macro2"));
    key("End");
    EXPECT_EQ(sound()->q, 1.0f);
    key("Home");
    EXPECT_EQ(sound()->q, q);
    for (int i = 0; i < 3; i++) undo();
    EXPECT_TRUE(s->macroStyle(1)->name->empty() && *s->macroStyle(1)->low == q);
    undo();
    EXPECT_EQ(*s->macroStyle(1)->low, 0.0f);
    EXPECT_EQ(sound()->q, q);
    undo();
    EXPECT_EQ(s->getMacroParam(1), -1);

    menu("Cutoff", {"Up", "Return"});
    CTrack* track = seq()->getProg()->tracks.getFirst()->track;
    EXPECT_NE(track->findLane(s, usualCutoff), nullptr);
    EXPECT_TRUE(win->inFront(seq()));
}

TEST_F(PanelsTest, SoundsAndLayersComeAndGo) {
    start();
    ASSERT_TRUE(load(kindDefault));
    open(sampler());
    CLayer* layer = sampler()->getLayer();
    const int sounds = layer->sounds.getCount();
    CSound* first = sound();
    choose("Add", {"Down", "Return"});
    ASSERT_EQ(layer->sounds.getCount(), sounds + 1);
    CSound* second = sound(sounds);
    EXPECT_EQ(layer->sound, second) << "what comes is shown";
    // What is set now is of the second alone, then of both.
    find("Volume")->win->setKeyCtrl(find("Volume"));
    key("Home");
    EXPECT_EQ(second->volume, 0.0f);
    EXPECT_NE(first->volume, 0.0f);
    undo();
    click("Keys");
    click("Edit all");
    EXPECT_EQ(layer->editAll, 1);
    click("Sound");
    find("Pan")->win->setKeyCtrl(find("Pan"));
    key("End");
    EXPECT_EQ(first->pan, 1.0f);
    EXPECT_EQ(second->pan, 1.0f);
    undo();
    EXPECT_EQ(first->pan, 0.0f);
    EXPECT_EQ(second->pan, 0.0f);
    click("Delete");
    EXPECT_EQ(layer->sounds.getCount(), sounds);
    EXPECT_EQ(layer->sound, sound(sounds - 1));
    undo();
    EXPECT_EQ(layer->sounds.getCount(), sounds + 1);
    EXPECT_EQ(layer->sound, second);
    choose("Add", {"Down", "Down", "Down", "Return"});
    EXPECT_EQ(sampler()->getProg()->layers.getCount(), 2);
    EXPECT_NE(sampler()->getLayer(), layer);
    click("Delete");
    EXPECT_EQ(sampler()->getProg()->layers.getCount(), 1);
    EXPECT_EQ(sampler()->getLayer(), layer);
}

TEST_F(PanelsTest, CurvesAndZonesAreDragged) {
    start();
    ASSERT_TRUE(load(kindDefault));
    open(sampler());
    CSound* s = sound();
    click("Modulators");
    CCtrl* curve = find("envelope");
    const CEnv* amp = s->envelope[0].get();
    // The margin of 10 around it; a quarter of the rest stands for the longest attack.
    const double room = (curve->width - 20) / 4.0;
    const float attack = amp->attack;
    const CPoint peak = asPoint(10 + int(std::lround(double(attack) * room)), 10);
    drag(curve, peak, asPoint(10 + int(room / 2), 10));
    EXPECT_NEAR(amp->attack, 0.5f, 0.02f);
    undo();
    EXPECT_EQ(amp->attack, attack);
    curve->win->setKeyCtrl(curve);
    const float sustain = amp->sustain;
    for (const char* k : {"3", "Down"}) key(k);
    EXPECT_NEAR(amp->sustain, sustain - 0.02f, 1e-5f);

    click("Keys");
    CCtrl* zones = find("zones");
    const auto x = [&](int k) { return 8 + k * (zones->width - 16) / 128; };
    drag(zones, asPoint(x(128) - 2, 16), asPoint(x(60) + 1, 16));
    EXPECT_EQ(s->hiKey, 60);
    zones->win->setKeyCtrl(zones);
    for (const char* k : {"Right", "Right"}) key(k);
    EXPECT_EQ(s->lowKey, 2);
    key("shift+Left");
    EXPECT_EQ(s->hiKey, 59);
    for (int i = 0; i < 4; i++) undo();
    EXPECT_EQ(s->hiKey, 127);
    EXPECT_EQ(s->lowKey, 0);
    // A key sounds as long as it is pressed.
    mouseTo(zones, x(60) + 1, zones->height - 12);
    act({"mousedown", "1"});
    EXPECT_EQ(sampler()->guiQueue.empty(), false);
    act({"mouseup", "1"});
}

/// The lines over a sample's wave, by mouse, keys and numbers, and the curve of an oscillator.
TEST_F(PanelsTest, SamplesAndOscillatorsAreDragged) {
    start();
    ASSERT_TRUE(load(kindDefault));
    CSampler* s = sampler();
    ASSERT_EQ(runCommand({"sox", "-r", "44100", "-n", "-c", "1", at("square.wav"), "synth", "4000s",
                          "square", "220.5"}),
              0); // it changes sides every 100 frames
    auto* wav = static_cast<CWavSound*>(addSampleSound(s, s->getLayer(), at("square.wav").c_str()));
    ASSERT_NE(wav, nullptr);
    CSampleClip* clip = wav->clips[0];
    open(s);
    CCtrl* wave = find("wave");
    const double perPixel = 4000.0 / (wave->width - 16);
    const auto x = [&](double frame) { return 8 + int(std::lround(frame / perPixel)); };
    drag(wave, asPoint(x(0), 60), asPoint(x(1030), 60));
    EXPECT_EQ(clip->start % 100, 0) << "where the wave crosses zero";
    EXPECT_NEAR(clip->start, 1030, 80);
    const int begun = clip->start;
    drag(wave, asPoint(x(3999), 60), asPoint(x(2222), 60), true);
    EXPECT_EQ(clip->end, 3999) << "Escape";
    wave->win->setKeyCtrl(wave);
    for (const char* k : {"1", "Right"}) key(k);
    EXPECT_EQ(clip->start, begun + 100);
    key("shift+Left");
    EXPECT_EQ(clip->start, begun + 99);
    find("End")->win->setKeyCtrl(find("End"));
    for (const char* k : {"3", "3", "3", "3", "Return"}) key(k);
    EXPECT_EQ(clip->end, 3333);
    for (const int former : {begun + 99, begun + 100, begun, 0}) {
        undo();
        EXPECT_EQ(clip->start, former);
    }
    EXPECT_EQ(clip->end, 3999);

    click("Modulators");
    click("LFO 1");
    const CLFO* lfo = wav->lfo[0].get();
    const float rate = lfo->rate;
    drag(find("lfo"), asPoint(200, 60), asPoint(280, 60));
    EXPECT_NEAR(lfo->rate, rate / 2, 0.01f * rate) << "80 pixels double a cycle";
    drag(find("lfo"), asPoint(10, 60), asPoint(10 + (find("lfo")->width - 20) / 4, 60));
    EXPECT_NEAR(lfo->delay, 500, 10) << "of two seconds";
    undo();
    EXPECT_EQ(lfo->delay, 0);
}

/// While a note sounds a dot stands where it has brought the oscillator.
TEST_F(PanelsTest, ADotFollowsTheOscillator) {
    start();
    ASSERT_TRUE(load(kindDefault));
    CLFO* lfo = sound()->lfo[0].get();
    lfo->rate = 0.5f; // a cycle is all that shows
    open(sampler());
    click("Modulators");
    click("LFO 1");
    CCtrl* view = find("lfo");
    constexpr int margin = 10, shownSeconds = 2;
    const auto place = [&] {
        const double at = double(lfo->shownPhase) / lfo->frequency(float(host->tempoNow));
        const double high = view->height / 2.0, swing = 2.0 * double(lfo->shownValue) - 1.0;
        return asPoint(margin + int(std::lround(at / shownSeconds * (view->width - 2 * margin))),
                       int(std::lround(high - swing * (high - margin))));
    };
    const auto isAt = [&](CPoint at) {
        settle();
        const CPoint in = view->win->controlPos(view);
        const Shot shot(view->win->handle, view->win->width, view->win->height);
        return shot.at(in.x + at.x, in.y + at.y) == app->gui->palette.text;
    };
    sampler()->guiQueue.push(asData(midiNoteOn, 60, 100));
    CPoint before;
    for (int i = 0; i < 3; i++) {
        runBlocks(host.get(), 4);
        const CPoint now = place();
        EXPECT_GT(now.x, before.x);
        EXPECT_TRUE(pumpUntil([&] { return isAt(now); })) << now.x << ", " << now.y;
        EXPECT_TRUE(i == 0 || !isAt(before)) << "it is still where it was";
        before = now;
    }
}

TEST_F(PanelsTest, ProgramsAreAddedNamedAndRemoved) {
    start();
    ASSERT_TRUE(load(kindDefault));
    CSampler* s = sampler();
    open(s);
    const int count = s->progs.getCount(), current = s->curProg;
    // Up from the end of the menu: save, open, delete, rename, add with its own menu.
    std::vector<std::string> keys(count > 1 ? 5 : 4, "Up");
    for (const char* k : {"Right", "Return"}) keys.push_back(k);
    choose("program", keys);
    ASSERT_EQ(s->progs.getCount(), count + 1);
    EXPECT_EQ(s->curProg, count);
    click("before");
    EXPECT_EQ(s->curProg, count - 1);
    undo();
    EXPECT_EQ(s->curProg, count);
    choose("program", {"Up", "Up", "Up", "Up", "Return"});
    act({"type", "Mine"});
    key("Return");
    ASSERT_TRUE(loaded());
    EXPECT_STREQ(s->getProgName(count).asChar(), "Mine");
    choose("program", {"Up", "Up", "Up", "Return"});
    EXPECT_EQ(s->progs.getCount(), count);
    for (int i = 0; i < 3; i++) undo();
    EXPECT_EQ(s->progs.getCount(), count);
    EXPECT_EQ(s->curProg, current);
}

/// The list of the factory's programs, two states to compare, and the name of the page.
TEST_F(PanelsTest, ProgramsAreFoundHeardAndCompared) {
    start();
    ASSERT_TRUE(load(kindDefault));
    CSampler* s = sampler();
    open(s);
    const CStr former = s->getProgName(s->curProg);
    const int count = s->progs.getCount();
    const std::string presets = at("mine");
    ASSERT_TRUE(createDir(presets.c_str()));
    CIniFile(inifile).writeString("PresetFolders", "mine", presets.c_str());
    saveProgram(s, (presets + "/Own Bell.qvs").c_str());
    click("Programs");
    auto* list = find<CListbox>("list");
    EXPECT_EQ(list->items.getCount(), factoryCount + 1);
    find("find")->win->setKeyCtrl(find("find"));
    const std::string wanted = factoryName(5);
    act({"type", wanted});
    ASSERT_TRUE(pumpUntil([&] { return list->items.getCount() == 1; }));
    list->win->setKeyCtrl(list);
    key("Home");
    ASSERT_TRUE(loaded());
    EXPECT_EQ(s->getProgName(s->curProg), wanted.c_str());
    EXPECT_EQ(s->progs.getCount(), count) << "in the place of the former one";
    EXPECT_FALSE(s->guiQueue.empty()) << "heard";
    // One of a file comes in its place.
    find("find")->win->setKeyCtrl(find("find"));
    key("ctrl+a");
    act({"type", "own bell"});
    const auto first = [list] {
        return std::string(list->row(0) ? list->row(0)->id.asChar() : "");
    };
    ASSERT_TRUE(pumpUntil([&] { return first().starts_with("Own Bell"); })) << first();
    list->win->setKeyCtrl(list);
    key("Home");
    ASSERT_TRUE(loaded());
    EXPECT_EQ(s->getProgName(s->curProg), former);
    EXPECT_EQ(s->progs.getCount(), count);
    undo();
    EXPECT_EQ(s->getProgName(s->curProg), wanted.c_str());
    undo();
    EXPECT_EQ(s->getProgName(s->curProg), former);

    click("Sound");
    CSound* one = sound();
    const float cutoff = one->cutoff;
    const auto set = [&](const char* k) {
        find("Cutoff")->win->setKeyCtrl(find("Cutoff"));
        key(k);
    };
    click("B");
    set("Home");
    click("A");
    EXPECT_EQ(one->cutoff, cutoff);
    click("B");
    EXPECT_EQ(one->cutoff, 0.0f);
    CCtrl* morph = find("morph");
    drag(morph, asPoint(morph->width - 4, 12),
         asPoint(morph->width - 4 - (morph->width - 4) / 4, 12));
    EXPECT_NEAR(one->cutoff, cutoff / 4, 0.02f);
    undo();
    EXPECT_EQ(one->cutoff, 0.0f);

    CUndo* step = host->undoStart("Rename", s);
    step->asName(&s->id);
    s->id = "Renamed";
    host->undoEnd(step, true);
    ASSERT_TRUE(pumpUntil([&] { return win->pages->docker->dockOf(page)->name == "Renamed"; }));
}
