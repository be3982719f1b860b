#include "Blocks.h"
#include "MixerFixture.h"

#include "common/fx/CEQ.h"
#include "effects/Inserts.h"
#include "engine/CMixer.h"
#include "engine/MixScene.h"
#include "instruments/CDrumSound.h"
#include "instruments/CLayer.h"
#include "sequencer/edit/KitEdits.h"
#include "sequencer/edit/TrackEdits.h"

#include <fstream>

/// The strips of single sounds of a kit.
class MixerDrumsTest : public MixerFixture {
protected:
    /// A song of one track with the standard kit, "Kit".
    void startWithKit() {
        startWith(0);
        kit = seq()->addTrack(trackDrum, seq()->getProg(), nullptr)->track;
        kit->id = "Kit";
        seq()->addStandardKit(kit);
        seq()->songNotices.raise(SeqNotice::tracks);
        ASSERT_TRUE(pumpUntil([this] { return strip("Kit") != nullptr; }));
    }
    CDrumSound* sound(int index) { return kit->drumSound(index); }

    CTrack* kit = nullptr;
};

/// They unfold by a press on the sign, go with none of the track's selection, and set the sounds:
/// level, pan, mute and solo, each in one step.
TEST_F(MixerDrumsTest, UnfoldAndSetTheirSounds) {
    startWithKit();
    const std::string folded = names();
    const int begun = steps();
    mouseTo(strip("Kit"), 8, 12);
    act({"click", "1"});
    ASSERT_TRUE(pumpUntil([this] { return strip("kick") && strip("hat-open"); })) << names();
    EXPECT_EQ(steps(), begun) << "how it is shown is no change";
    drag(on("kick", "volume"), on("kick", "volume"), 0, 40);
    EXPECT_LT(float(sound(0)->volume), 1.0f);
    EXPECT_EQ(float(kit->output()->vol), 1.0f);
    clickOn(on("kick", "mute"));
    EXPECT_TRUE(sound(0)->mute);
    EXPECT_FALSE(kit->output()->mute);
    clickOn(on("snare", "solo"));
    EXPECT_TRUE(sound(1)->solo);
    EXPECT_EQ(steps(), begun + 3);
    clickOn(button("unsolo"));
    EXPECT_FALSE(sound(1)->solo);
    EXPECT_FALSE(on("kick", "arm")->visible);
    for (const char* id : {"target", "trim"}) EXPECT_FALSE(on("kick", id)->visible) << id;
    panel()->choose(*strip("snare"), 0);
    EXPECT_FALSE(panel()->state.selected(strip("Kit")->strip()));
    key("Delete");
    EXPECT_TRUE(strip("snare") && strip("Kit")) << "a sound goes from the kit alone";
    removeDrum(seq(), sound(1));
    EXPECT_TRUE(pumpUntil([this] { return !strip("snare"); }));
    panel()->choose(*strip("Kit"), 0);
    key("d");
    EXPECT_TRUE(pumpUntil([&] { return names() == folded; })) << names();
}

/// The strip of a sound has inserts and a meter, which the sound moves.
TEST_F(MixerDrumsTest, HaveInsertsAndMeters) {
    startWithKit();
    panel()->foldDrums(strip("Kit")->strip());
    ASSERT_TRUE(pumpUntil([this] { return strip("kick") != nullptr; }));
    ASSERT_TRUE(addInsert(out("kick"), 0, -1));
    EXPECT_EQ(sound(0)->output->inserts.getCount(), 1);
    key("ctrl+z");
    EXPECT_TRUE(pumpUntil([this] { return inserts("kick").empty(); }));
    ASSERT_TRUE(pumpUntil([this] { return out("kick")->powerWanted != 0; }));
    {
        const GraphHold hold(host.get());
        seq()->getProg()->songTrackOf(kit)->hitDrum(sound(0), nullptr, 1.0f, 0.0f, 1.0f, 0);
    }
    EXPECT_TRUE(pumpUntil([this] {
        runBlocks(host.get(), 1);
        return out("kick")->holdL > 0.1f;
    }));
    EXPECT_EQ(out("snare")->holdL, 0.0f);
}

/// Scenes bring them back, folded or not, all or the selected, from a file and from the history.
TEST_F(MixerDrumsTest, AreInScenes) {
    startWithKit();
    ValueDoor& door = *host->values;
    const auto set = [&](double to) {
        door.set(levelOf(sound(0)), to);
        door.set(panOf(sound(1)), to);
        door.set(muteOf(sound(1)), to > 0.3 ? 0.0 : 1.0);
        door.set(eqGainOf(sound(0)->output.get(), 2), to * 10);
    };
    const auto now = [&] {
        return std::vector<double>{double(sound(0)->volume), double(sound(1)->pan),
                                   double(sound(1)->mute), double(sound(0)->output->eq[2]->gain)};
    };
    set(0.25);
    const auto kept = now();
    mixer().addScene();
    set(0.5);
    auto other = now();
    const int before = steps();
    panel()->scenes.recall(0);
    EXPECT_EQ(now(), kept);
    EXPECT_EQ(steps(), before + 1);
    key("ctrl+z");
    EXPECT_TRUE(pumpUntil([&] { return now() == other; }));
    mixer().sceneAt(0)->recall(host.get(), sceneLevels, {sound(1)->output.get()}, "Pan");
    other[1] = kept[1];
    EXPECT_EQ(now(), other);
    const std::string path = at("kits.qv");
    std::ofstream(path) << "old";
    host->projectFile = path.c_str();
    ASSERT_TRUE(win->flows->saveClicked());
    ASSERT_TRUE(load(kindFile, path.c_str()));
    kit = seq()->tracks.items(0);
    EXPECT_EQ(now(), other);
    mixer().sceneAt(0)->recall(host.get(), sceneAll, {}, "All");
    EXPECT_EQ(now(), kept);
    // What has left may come back, until the history forgets it.
    const int count = mixer().sceneAt(0)->count();
    removeDrum(seq(), sound(1));
    panel()->scenes.follow();
    EXPECT_EQ(mixer().sceneAt(0)->count(), count);
    deleteTracks(seq(), {kit});
    panel()->scenes.follow();
    EXPECT_EQ(mixer().sceneAt(0)->count(), count);
    host->undoClear();
    panel()->scenes.follow();
    EXPECT_LT(mixer().sceneAt(0)->count(), count - 2);
}
