#include "ArrangeFixture.h"

#include "base/CIniFile.h"
#include "base/Paths.h"
#include "common/fx/CEQ.h"
#include "effects/CEffect.h"
#include "effects/Inserts.h"
#include "instruments/CArp.h"
#include "instruments/CDrumSound.h"
#include "instruments/CLayer.h"
#include "instruments/CSampler.h"
#include "instruments/CSynthProg.h"
#include "project/PresetFiles.h"
#include "sequencer/edit/KitEdits.h"
#include "sequencer/song/TrackRouting.h"

/// Presets out of menus: what they leave on tracks, and in the song.
class PresetMenuTest : public ArrangeFixture {
protected:
    /// A folder of presets with a folder in it, which is what menus show.
    std::string folderOf(const char* name) {
        const std::string all = at("mine"), inside = all + "/" + name;
        createDir(all.c_str());
        createDir(inside.c_str());
        CIniFile(inifile).writeString("PresetFolders", "mine", all.c_str());
        return inside + "/";
    }
    /// In the menu "Track", of which the first entry is marked.
    void chooseForTrack(int index, const std::vector<std::string>& keys) {
        seq()->selectTrack(row(index), true);
        inMenu(keys);
        for (const char* k : {"F10", "Right", "Right", "Right", "Right", "Down"}) key(k);
        ASSERT_TRUE(pumpUntil([&] { return app->menus.empty(); }));
        ASSERT_TRUE(loaded());
    }
    CSampler* synth(int index) {
        return static_cast<CSampler*>(trackTarget(seq(), row(index)->track));
    }
    /// What a preset of an instrument track keeps.
    std::string sight(int index) {
        CTrack* track = row(index)->track;
        COutputChannel* strip = synth(index)->output();
        std::string text = track->id.asChar();
        const auto add = [&text](double v) { text += " " + std::to_string(v); };
        for (const double v : {double(track->colour), double(track->arp->enabled),
                               double(track->arp->getProg()->mode), double(strip->vol),
                               double(strip->eq[1]->gain), double(strip->inserts.getCount())})
            add(v);
        auto* rack = static_cast<CEffect*>(strip->inserts.first());
        add(rack->wet);
        return text + rack->getProg()->id.asChar() + synth(index)->getProg()->id.asChar();
    }
};

TEST_F(PresetMenuTest, TracksAreSavedAndMadeAnew) {
    start();
    const std::string presets = folderOf("Tracks");
    ASSERT_TRUE(load(kindDefault));
    CTrack* track = row(0)->track;
    COutputChannel* strip = synth(0)->output();
    addInsert(strip, fxReverb, -1)->wet = 0.25f;
    track->id = "My lead";
    track->colour = 0x123456;
    track->arp->setMode(arpDown);
    track->arp->enable(1);
    strip->vol = 0.5f;
    strip->setEqGain(1, 7.0f);
    synth(0)->setProg(5);
    ASSERT_TRUE(loaded());
    const std::string wanted = sight(0), path = presets + "My lead.qvp";
    const auto save = [&](const std::string& to) {
        inDialog("Save track as preset", [to] { runCommand({"xdotool", "key", "ctrl+a"}); });
        typeInDialog("Save track as preset", to);
        keysInDialog("Save track as preset", {"Return"});
        win->runAction(win->getAction("savetrack"));
        ASSERT_TRUE(pumpUntil([&] { return fileExists(to.c_str()); }));
    };
    save(path);
    chooseForTrack(0, {"Right", "f", "f", "Right", "m", "Return"});
    ASSERT_TRUE(pumpUntil([&] { return tracks() == 2; }));
    EXPECT_EQ(sight(1), wanted);
    EXPECT_NE(synth(1), synth(0));
    key("ctrl+z");
    ASSERT_TRUE(pumpUntil([&] { return tracks() == 1; }));
    EXPECT_TRUE(std::string(host->redoText().asChar()).find("My lead") != std::string::npos);
    key("ctrl+y");
    ASSERT_TRUE(pumpUntil([&] { return tracks() == 2; }));
    EXPECT_EQ(sight(1), wanted);
}

TEST_F(PresetMenuTest, KitsAndEffectsComeToTheTrack) {
    start();
    const std::string presets = folderOf("All");
    ASSERT_TRUE(load(kindDrumAndBass));
    CTrack* drums = row(0)->track;
    CEffect rack(host.get());
    rack.createIO();
    rack.addProg(fxChorus);
    ASSERT_TRUE(saveProgram(&rack, (presets + "Wide.qve").c_str()));
    ASSERT_TRUE(saveKit(drums, (presets + "Whole.qvd").c_str()));
    removeDrum(seq(), drums->drumSound(1));
    ASSERT_TRUE(loaded());
    const auto sounds = [&] { return drums->drumLayer()->sounds.getCount(); };
    EXPECT_EQ(sounds(), 4);
    chooseForTrack(0, {"k", "Right", "w", "Return"});
    EXPECT_TRUE(pumpUntil([&] { return sounds() == 5; }));
    chooseForTrack(0, {"e", "Right", "w", "Return"});
    ASSERT_TRUE(pumpUntil([&] { return drums->output()->inserts.getCount() == 1; }));
    EXPECT_EQ(drums->output()->inserts.first()->id, "Chorus");
    key("ctrl+z");
    EXPECT_TRUE(pumpUntil([&] { return drums->output()->inserts.empty(); }));
    key("ctrl+z");
    EXPECT_TRUE(pumpUntil([&] { return sounds() == 4; }));
}
