#include "sequencer/Freezing.h"

#include "SongFixture.h"
#include "audiofiles/CSample.h"
#include "base/Messages.h"
#include "base/Random.h"
#include "base/TempFolder.h"
#include "effects/CEffect.h"
#include "engine/CFreezeItem.h"
#include "instruments/CSampler.h"
#include "sequencer/SilentGraph.h"

#include <algorithm>
#include <cmath>
#include <csignal>
#include <sys/resource.h>

namespace {

/// A saved project of one bar: a synthesizer and an audio track, each through a rack and with
/// automation of its fader.
struct FreezeFixture : SongFixture {
    TempFolder folder;
    CSongTrack* keys = track(trackMIDI);
    CSongTrack* audio = track(trackAudio);
    CSampler* synth = device.add(new CSampler(&host));
    static inline std::vector<std::string> messages;

    FreezeFixture() {
        enterSequencer();
        messages.clear();
        messageHooks().showMsg = [](CWin*, const CStr& title, const CStr& text, int flags) {
            messages.push_back(std::string(title.asChar()) + ": " + text.asChar());
            return answerOfEscape(flags);
        };
        host.projectFile = folder.write("song.qv", "");
        device.connect(synth);
        {
            const GraphHold hold(&host);
            synth->midiCables.add(createMIDICable(synth, keys->track->outPort(), nullptr));
        }
        addRack(synth->output())->addProg(fxDelay);
        addRack(audio->track->output())->addProg(fxPhaser);
        host.loop = 0;
        CPart* part = midiPart(0);
        for (int i = 0; i < 4; i++) {
            CMIDIEvent* e = note(48 + 5 * i);
            e->length = 700;
            part->addEvent(960 * i, e);
        }
        keys->addPart(part, nullptr);
        addClip();
        keys->track->setSelected(true);
        audio->track->setSelected(true);
    }
    ~FreezeFixture() { messageHooks() = MessageHooks(); }
    FreezeFixture(const FreezeFixture&) = delete;
    FreezeFixture& operator=(const FreezeFixture&) = delete;

    CEffect* addRack(COutputChannel* ch) {
        auto* rack = new CEffect(&host);
        rack->init();
        rack->createBuffers(host.frames);
        const GraphHold hold(&host);
        ch->inserts.add(rack);
        return rack;
    }
    void addClip() {
        CSample* s = CSample::createSample(folder.file("clip.wav"), 0);
        std::vector<float> wave(60000);
        for (size_t i = 0; i < wave.size(); i++) wave[i] = 0.2f * std::sin(float(i) * 0.05f);
        s->writeFrames(int(wave.size()), wave.data(), wave.data());
        s->writeHeader();
        s->finalize();
        s->open(s->filename);
        s->keep = true;
        host.samples.add(s);
        auto* part = new CAudioPart;
        CAudioEvent* e = createAudioEvent();
        e->sample = s;
        e->end = s->frames - 1;
        part->addEvent(0, e);
        CSubTrack* fader = audio->track->findLane(audio->track->output(), 0);
        CPart* linked = audio->addPart(part, nullptr);
        linked->addEventParam(0, createEnvEvent(nullptr, 0.2f), fader->slot);
        linked->addEventParam(1900, createEnvEvent(nullptr, 0.9f), fader->slot);
    }
    /// What the song sounds like in its one bar, from a silent start.
    std::vector<float> heard(double from = 0.0) {
        host.setPos(from);
        device.run(2);
        {
            const GraphHold hold(&host);
            silenceGraph(&host);
        }
        seedRand(1);
        host.start();
        device.forget();
        device.run(85 - int(from / 46));
        host.stop();
        std::vector<float> sound = device.left;
        device.run(20);
        return sound;
    }
    int frozen() const { return keys->freezeItems.getCount() + audio->freezeItems.getCount(); }
    /// Files of frozen or bounced audio.
    int files() const {
        int count = 0;
        const std::filesystem::path audioFolder = folder.file("song_audio").asChar();
        std::error_code none;
        for (const auto& f : std::filesystem::directory_iterator(audioFolder, none))
            count += f.is_regular_file();
        return count;
    }
};

double largest(const std::vector<float>& a) {
    double most = 0;
    for (float v : a) most = std::max(most, double(std::abs(v)));
    return most;
}

double difference(std::vector<float> a, const std::vector<float>& b) {
    EXPECT_EQ(a.size(), b.size());
    for (size_t i = 0; i < std::min(a.size(), b.size()); i++) a[i] -= b[i];
    return largest(a);
}

/// What two files of 16 bits may take from a sound: less than a step each, and as they are written
/// in steps of 1/32767 and read in such of 1/32768, another one at full level.
double twoRoundings(const std::vector<float>& sound) {
    return 2 * (1 + largest(sound)) / 32768;
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
    ASSERT_GT(largest(live), 0.05);
    ASSERT_EQ(f.heard(), live) << "what sounds is the same every time";
    ASSERT_EQ(freezeTracks(f.seq, nullptr), RenderResult::good);
    EXPECT_EQ(f.keys->freezeItems.getCount(), 1);
    EXPECT_EQ(f.audio->freezeItems.getCount(), 1);
    EXPECT_EQ(f.files(), 2);
    const std::vector<float> frozen = f.heard();
    EXPECT_LE(difference(live, frozen), twoRoundings(live));
    EXPECT_GT(difference(live, frozen), 0.0) << "files of 16 bits are what plays";
    f.undo();
    EXPECT_EQ(f.frozen(), 0);
    EXPECT_EQ(f.heard(), live);
    f.redo();
    EXPECT_EQ(f.frozen(), 2);
    EXPECT_EQ(f.heard(), frozen);
    ASSERT_EQ(freezeTracks(f.seq, nullptr), RenderResult::good);
    EXPECT_EQ(f.frozen(), 0);
    EXPECT_EQ(f.heard(), live);
    EXPECT_EQ(f.files(), 2) << "undo may need them";
    f.undo();
    EXPECT_EQ(f.heard(), frozen);
    f.redo();
    f.host.undoClear();
    EXPECT_EQ(f.files(), 0);
}

/// A file that is entered in its middle plays on from the same frame.
TEST(Freezing, PlaysFromAnyPosition) {
    FreezeFixture f;
    f.audio->track->findLane(f.audio->track->output(), 0)->bypass = 1;
    ASSERT_EQ(freezeTracks(f.seq, nullptr), RenderResult::good);
    const std::vector<float> whole = f.heard();
    for (const int beat : {1, 2, 3}) {
        std::vector<float> late = f.heard(quarterTicks * beat);
        late.resize(20000);
        const auto at = whole.begin() + 22050 * beat;
        EXPECT_EQ(late, std::vector<float>(at, at + 20000)) << beat;
    }
}

/// A render plays what was frozen from its events, with the same effects.
TEST(Freezing, RendersPlayTheEvents) {
    FreezeFixture f;
    const auto rendered = [&](const char* name) {
        CRender render(&f.host, f.seq);
        render.filename = f.folder.file(name);
        EXPECT_EQ(exportSong(render, f.seq, nullptr), RenderResult::good);
        return f.folder.read(name);
    };
    const std::string before = rendered("a.wav");
    ASSERT_GT(before.size(), 300000u);
    ASSERT_EQ(freezeTracks(f.seq, nullptr), RenderResult::good);
    EXPECT_EQ(rendered("b.wav"), before);
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
        const int undoIndex = f.host.undoIndex;
        Ui again = ui;
        EXPECT_EQ(freezeTracks(f.seq, &ui), wanted);
        EXPECT_EQ(bounceToNewTrack(f.seq, rangeSong, &again), wanted);
        EXPECT_EQ(f.files() + f.frozen(), 0);
        EXPECT_EQ(f.seq->tracks.getCount(), 2);
        EXPECT_EQ(f.host.undoIndex, undoIndex);
        EXPECT_FALSE(f.host.renderDry || f.host.renderFreeze);
    };
    Ui cancels;
    cancels.left = 3;
    both(RenderResult::cancelled, cancels);
    EXPECT_TRUE(f.messages.empty());

    rlimit before{};
    getrlimit(RLIMIT_FSIZE, &before);
    const auto handler = std::signal(SIGXFSZ, SIG_IGN);
    const rlimit small{100000, before.rlim_max};
    setrlimit(RLIMIT_FSIZE, &small);
    both(RenderResult::noRoom, Ui());
    setrlimit(RLIMIT_FSIZE, &before);
    std::signal(SIGXFSZ, handler);
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
    f.keys->setMuted(true);
    f.audio->setMuted(true);
    const std::vector<float> bounced = f.heard();
    EXPECT_EQ(largest({bounced.begin(), bounced.begin() + 22000}), 0.0);
    f.keys->setMuted(false);
    f.audio->setMuted(false);
    auto* bounce = static_cast<CSongTrack*>(f.prog()->tracks.last());
    bounce->setMuted(true);
    std::vector<float> wanted = f.heard(960);
    const std::vector<float> part(bounced.begin() + 22050, bounced.begin() + 22050 + 44000);
    wanted.resize(44000);
    EXPECT_LE(difference(part, wanted), 1e-6);
    f.undo();
    EXPECT_EQ(f.seq->tracks.getCount(), 2);
    EXPECT_EQ(f.heard(), live);
}
