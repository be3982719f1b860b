#include "sequencer/render/Freezing.h"

#include "SongFixture.h"
#include "base/CIniFile.h"
#include "base/Deadline.h"
#include "base/FullDisk.h"
#include "base/Paths.h"
#include "base/Random.h"
#include "base/TempFolder.h"
#include "effects/CEffect.h"
#include "engine/CFreezeItem.h"
#include "instruments/CSampler.h"
#include "plugins/CVST.h"
#include "plugins/remote/PluginProcesses.h"
#include "sequencer/play/AudioVoices.h"
#include "sequencer/render/SilentGraph.h"
#include "support/Places.h"

#include <algorithm>
#include <cmath>
#include <optional>

namespace {

/// A saved project of one bar: a synthesizer and an audio track, each through a rack and with
/// automation of its fader.
struct FreezeFixture : SongFixture, Told {
    TempFolder folder;
    CSongTrack* keys = track(trackMIDI);
    CSongTrack* audio = track(trackAudio);
    CSampler* synth = connect(keys, device.add(new CSampler(&host)));

    FreezeFixture() {
        enterSequencer();
        readsDisk = true;
        host.projectFile = folder.write("song.qv", "");
        std::filesystem::create_directory(folder.file("song_audio").asChar());
        addRack(synth->output(), fxDelay);
        addRack(audio->track->output(), fxPhaser);
        host.loop = 0;
        CPart* part = midiPart(0);
        for (int i = 0; i < 4; i++) part->addEvent(960 * i, note(48 + 5 * i, 700));
        keys->addPart(part, nullptr);
        addClip();
        keys->track->setSelected(true);
        audio->track->setSelected(true);
    }
    void addRack(COutputChannel* ch, int effect) {
        auto* rack = new CEffect(&host);
        rack->init();
        rack->createBuffers(host.frames);
        rack->addProg(effect);
        const GraphHold hold(&host);
        ch->inserts.add(rack);
    }
    void addClip() {
        auto* part = new CAudioPart;
        CAudioEvent* e = createAudioEvent();
        e->sample = addSample(60000, [](int i) { return 0.2 * std::sin(i * 0.05); });
        e->end = 59999;
        part->addEvent(0, e);
        const int fader = audio->track->findLane(audio->track->output(), 0)->slot;
        part->addEventParam(0, createEnvEvent(nullptr, 0.2f), fader);
        part->addEventParam(1900, createEnvEvent(nullptr, 0.9f), fader);
        audio->addPart(part, nullptr);
    }
    /// What the song sounds like in its one bar, from a silent start.
    std::vector<float> heard(double from = 0.0) {
        host.setPos(from);
        device.run(2);
        std::optional<GraphHold> hold(&host);
        silenceGraph(&host);
        hold.reset();
        host.parkWorkers(); // a busy disk thread would be heard as silence
        host.start();
        device.forget();
        device.run(85 - int(from / 46));
        host.stop();
        host.unparkWorkers();
        std::vector<float> sound = device.left;
        device.run(20);
        return sound;
    }
    std::string rendered() {
        CRender render(&host, seq);
        render.filename = folder.file("a.wav");
        EXPECT_EQ(exportSong(render, seq, nullptr), RenderResult::good);
        return folder.read("a.wav");
    }
    int frozen() const { return keys->freezeItems.getCount() + audio->freezeItems.getCount(); }
    int files() const { // of frozen or bounced audio
        const std::filesystem::directory_iterator all(folder.file("song_audio").asChar());
        return int(
            std::count_if(begin(all), end(all), [](auto& f) { return f.is_regular_file(); }));
    }
};

/// A folder of plug-ins that delay by some frames, and where they run.
class PluginPlace {
public:
    PluginPlace(FreezeFixture& of, int late, bool isolated) : f(of) {
        path = f.folder.file(("late" + std::to_string(late) + ".so").c_str());
        std::filesystem::copy_file(builtFile("tests/made_plugin.so"), path.asChar());
        inifile = f.folder.file("settings.ini");
        CIniFile(inifile).writeString("VSTFolders", "0", extractFilePath(path));
        placing.processes->share = 1000.0f;
        placing.processes->trust.set(path, !isolated);
    }
    ~PluginPlace() { inifile = former; }
    PluginPlace(const PluginPlace&) = delete;
    PluginPlace& operator=(const PluginPlace&) = delete;

    void insertAt(COutputChannel* strip) const {
        CVST* made = newPlugin(&f.host, path).release();
        ASSERT_NE(made, nullptr);
        made->setParam(0, 0.5f); // at unity
        const GraphHold hold(&f.host);
        strip->inserts.add(made);
        f.host.hostNotices.raise(HostNotice::delays);
    }

private:
    FreezeFixture& f;
    const CStr former = inifile;
    CStr path;
    const PlacePlugins placing{std::make_shared<PluginProcesses>(
        builtFile("bin/sondrava-plugins").c_str(), f.folder.file("trust"))};
};

double largest(const std::vector<float>& a) {
    const auto [low, high] = std::ranges::minmax(a);
    return double(std::max(-low, high));
}

double difference(std::vector<float> a, const std::vector<float>& b) {
    std::ranges::transform(a, b, a.begin(), std::minus());
    return largest(a);
}

struct Ui : RenderUi {
    int left = 1 << 30; ///< blocks until it cancels
    bool onRender(float) override { return --left > 0; }
};

} // namespace

/// A frozen song sounds as it did, inserts and automation included, from any position, and so it
/// does after undo, redo and unfreezing. Its own events do not sound beside the files.
TEST(Freezing, SoundsTheSame) {
    FreezeFixture f;
    const std::vector<float> live = f.heard();
    const std::string rendered = f.rendered();
    ASSERT_GT(largest(live), 0.05);
    ASSERT_EQ(f.heard(), live) << "what sounds is the same every time";
    ASSERT_EQ(freezeTracks(f.seq, nullptr), RenderResult::good);
    EXPECT_EQ(f.keys->freezeItems.getCount(), 1);
    EXPECT_EQ(f.audio->freezeItems.getCount(), 1);
    EXPECT_EQ(f.files(), 2);
    EXPECT_EQ(f.rendered(), rendered) << "a render plays the events";
    const std::vector<float> frozen = f.heard();
    // Two files of 16 bits may take less than a step each, and as they are written in steps of
    // 1/32767 and read in such of 1/32768, another one at full level.
    EXPECT_LE(difference(live, frozen), 2 * (1 + largest(live)) / 32768);
    EXPECT_GT(difference(live, frozen), 0.0) << "the files are what plays";
    CPart* clip = f.audio->parts.first();
    f.step([&](CUndo* u) { swapUndoPart(u, clip, clip->copy(0)); });
    EXPECT_EQ(f.heard(), frozen) << "an edit does not wake the events";
    f.undo();
    f.undo();
    EXPECT_EQ(f.frozen(), 0);
    EXPECT_EQ(f.heard(), live);
    f.redo();
    EXPECT_EQ(f.heard(), frozen);
    ASSERT_EQ(freezeTracks(f.seq, nullptr), RenderResult::good);
    EXPECT_EQ(f.heard(), live);
    EXPECT_EQ(f.files(), 2) << "undo may need them";
    f.undo();
    EXPECT_EQ(f.heard(), frozen);
    f.redo();
    f.host.undoClear();
    EXPECT_EQ(f.files(), 0);
}

/// Whatever latency the plug-ins of tracks, instruments and groups have, and wherever they run: a
/// render has every frame at its place, and so has what is frozen.
TEST(Freezing, TakesPluginsAlong) {
    std::string expected;
    for (const int late : {0, 480, 4096})
        for (const bool isolated : {false, true}) {
            SCOPED_TRACE(late);
            FreezeFixture f;
            const PluginPlace plugins(f, late, isolated);
            plugins.insertAt(f.audio->track->output());
            const std::string rendered = f.rendered();
            if (expected.empty()) expected = rendered;
            EXPECT_TRUE(rendered == expected);
            plugins.insertAt(f.synth->output());
            plugins.insertAt(f.host.getAudioOut()->output());
            EXPECT_TRUE(f.rendered() == expected);
            std::vector<float> live = f.heard();
            EXPECT_GT(largest(live), 0.05);
            ASSERT_EQ(freezeTracks(f.seq, nullptr), RenderResult::good);
            const std::vector<float> frozen = f.heard(); // waits for one plug-in less
            live.erase(live.begin(), live.begin() + late);
            EXPECT_LE(difference(live, frozen), 2 * (1 + largest(live)) / 32768);
        }
}

/// A file that is entered in its middle plays on from the same frame.
TEST(Freezing, PlaysFromAnyPosition) {
    FreezeFixture f;
    f.audio->track->findLane(f.audio->track->output(), 0)->bypass = 1;
    ASSERT_EQ(freezeTracks(f.seq, nullptr), RenderResult::good);
    const std::vector<float> whole = f.heard(), late = f.heard(quarterTicks);
    EXPECT_TRUE(std::equal(late.begin(), late.begin() + 20000, whole.begin() + 22050));
}

/// A frozen track outlives its instrument, which nothing plays into any more.
TEST(Freezing, OutlivesItsInstrument) {
    FreezeFixture f;
    ASSERT_EQ(freezeTracks(f.seq, nullptr), RenderResult::good);
    f.host.start();
    f.device.run(4);
    f.step([&](CUndo* u) { u->asRemove(f.synth, &f.host.comps); });
    f.host.undoClear();
    const auto* item = f.keys->freezeItems.first();
    EXPECT_TRUE(item->comp == nullptr && item->channel == nullptr);
    EXPECT_FALSE(f.keys->voices->sounding());
    f.heard();
}

/// Silent channels get no file; mutes and solos do not matter, and stay.
TEST(Freezing, TakesWhatIsSelectedAndSounds) {
    FreezeFixture f;
    CSongTrack* silent = f.track(trackAudio);
    silent->addPart(new CAudioPart, nullptr);
    CSongTrack* other = f.track(trackAudio);
    other->setSoloed(true);
    silent->track->setSelected(true);
    f.keys->setMuted(true);
    f.audio->track->setSelected(false);
    ASSERT_EQ(freezeTracks(f.seq, nullptr), RenderResult::good);
    EXPECT_EQ(f.keys->freezeItems.getCount(), 1);
    EXPECT_EQ(f.audio->freezeItems.getCount() + silent->freezeItems.getCount(), 0);
    EXPECT_EQ(f.files(), 1);
    EXPECT_TRUE(f.keys->muted() && other->soloed());
    EXPECT_FALSE(f.host.renderDry || f.host.renderFreeze);
}

/// Nothing is left of a freezing or bounce that was cancelled or found no room, and what forbids it
/// is told.
TEST(Freezing, LeavesNothingHalf) {
    FreezeFixture f;
    const auto both = [&](RenderResult wanted, Ui ui) {
        Ui again = ui;
        EXPECT_EQ(freezeTracks(f.seq, &ui), wanted);
        EXPECT_EQ(bounceToNewTrack(f.seq, rangeSong, &again), wanted);
        EXPECT_EQ(f.files() + f.frozen(), 0);
        EXPECT_EQ(f.seq->tracks.getCount(), 2);
        EXPECT_EQ(f.host.undoIndex, -1);
        EXPECT_FALSE(f.host.renderDry || f.host.renderFreeze);
    };
    Ui cancels;
    cancels.left = 3;
    both(RenderResult::cancelled, cancels);
    EXPECT_TRUE(f.messages.empty());

    {
        const FullDisk full(100000);
        both(RenderResult::noRoom, Ui());
    }
    ASSERT_EQ(f.messages.size(), 2u);
    for (const std::string& message : f.messages)
        EXPECT_EQ(message.find("Render: Could not write file "), 0u) << message;

    f.messages.clear();
    f.host.start();
    f.device.run();
    both(RenderResult::nothing, Ui());
    f.host.stop();
    f.device.run();
    f.host.projectFile = "";
    EXPECT_EQ(freezeTracks(f.seq, nullptr), RenderResult::nothing);
    const std::vector<std::string> told = {
        "Render: Can't freeze while song is playing",
        "Bounce to new track: Cant render while song is playing",
        "Freeze: Project must be saved before you can freeze track"};
    EXPECT_EQ(f.messages, told);
}

/// A bounce plays on its new track what the song played, at the place of the range, as one step.
TEST(Freezing, BouncesToANewTrack) {
    FreezeFixture f;
    f.host.recBits = 24;
    const std::vector<float> live = f.heard();
    f.seq->setLoopSection(960, 2880);
    ASSERT_EQ(bounceToNewTrack(f.seq, rangeLocators, nullptr), RenderResult::good);
    ASSERT_EQ(f.seq->tracks.getCount(), 3);
    EXPECT_EQ(f.files(), 1);
    auto* bounce = f.prog()->tracks.last();
    const auto* clip = static_cast<const CAudioEvent*>(bounce->parts.first()->getEvents());
    EXPECT_TRUE(comes([clip] {
        return clip->sample->peaks.count() == clip->sample->frames / PeakImage::framesPerEntry;
    })) << "its waveform";
    bounce->setSoloed(true);
    const std::vector<float> bounced = f.heard();
    bounce->setSoloed(false);
    bounce->setMuted(true);
    std::vector<float> wanted = f.heard(960);
    wanted.resize(44000);
    EXPECT_EQ(largest({bounced.begin(), bounced.begin() + 22000}), 0.0);
    EXPECT_LE(difference(wanted, {bounced.begin() + 22050, bounced.begin() + 22050 + 44000}), 1e-6);
    f.undo();
    EXPECT_EQ(f.seq->tracks.getCount(), 2);
    EXPECT_EQ(f.heard(), live);
}
