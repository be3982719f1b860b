#include "SongFixture.h"

#include "audiofiles/CSample.h"
#include "engine/MidiBytes.h"
#include "instruments/CArp.h"
#include "sequencer/CRender.h"
#include "support/RtTrap.h"

#include <cmath>
#include <filesystem>
#include <functional>
#include <map>
#include <set>
#include <unistd.h>

namespace {

constexpr float keyStep = 1.0f / 128.0f;

/// An instrument of single frames: a note-on is its key on the left, a note-off on the right.
class Clicker : public CComp {
public:
    explicit Clicker(CQV* root) : CComp(root) {}
    void init() override {
        inPorts.add(new CInputPort(this));
        outputs.add(new COutputChannel(this));
    }
    void process(int frames) override {
        const ProcessGuard guard(this);
        if (!guard.enter) return;
        mergeMIDI(frames);
        for (const CMIDIBytes* e = inPort()->first(); e; e = e->next) {
            const int at = CMIDIQ::frameOf(e, 0, frames - 1), key = asByte1(e->data);
            if (noteOn(e->data)) {
                output()->bufL[at] = float(key) * keyStep;
                open[key] = true;
                started++;
            } else if (noteOff(e->data)) {
                output()->bufR[at] = float(key) * keyStep;
                open[key] = false;
            } else if (key == ccAllNotesOff) {
                std::fill_n(open, 128, false);
            }
        }
    }
    bool open[128] = {};
    int started = 0;

    bool silent() const {
        return std::none_of(open, open + 128, [](bool b) { return b; });
    }
};

/// Two notes from tick 480 to 1439, through an arpeggiator that is on.
struct ArpSong : SongFixture {
    CSongTrack* songTrack = track(trackMIDI);
    CArp* arp = songTrack->track->arp.get();
    Clicker* clicker = device.add(new Clicker(&host));

    ArpSong() {
        device.connect(clicker);
        {
            const GraphHold hold(&host);
            clicker->addMIDICable(songTrack->track->outPort(), nullptr);
        }
        CPart* part = midiPart(480);
        for (int key : {64, 60}) {
            CMIDIEvent* e = note(key);
            e->length = 960;
            part->addEvent(0, e);
        }
        songTrack->addPart(part, nullptr);
        arp->setMode(arpUp);
        arp->enable(1);
    }
    /// Renders ticks 0 to 1920, and gives the frames of the mix, left and right in turn.
    std::vector<float> render() {
        const auto folder = std::filesystem::temp_directory_path();
        const std::string name = (folder / ("arp-" + std::to_string(getpid()) + ".wav")).string();
        CSample file;
        file.streamed = 1;
        file.setFormat(44100, 32, 2);
        file.create(name.c_str());
        file.writeHeader();
        CRender made(&host, seq);
        made.setTarget(device.out->output(), &file);
        CList outputs;
        outputs.add(device.out->output());
        made.process(0.0, 1920.0, &outputs, true, nullptr);
        CSample heard;
        EXPECT_TRUE(heard.open(name.c_str()));
        std::vector<float> values(size_t(heard.frames) * 2);
        heard.readFrames(0, heard.frames, values.data());
        std::filesystem::remove(name);
        return values;
    }
};

} // namespace

TEST(ArpTrack, ThePatternIsRenderedAtItsFrames) {
    ArpSong f;
    std::map<long, float> left, right;
    const auto frame = [](double tick) { return std::lround(std::floor(tick * 22.96875 + 0.5)); };
    for (int i = 0; i < 4; i++) {
        const float value = float(i % 2 ? 64 : 60) * keyStep;
        left[frame(480 + 240 * i)] = right[frame(719 + 240 * i)] = value;
    }
    const std::vector<float> values = f.render();
    ASSERT_GT(values.size(), 80000u);
    for (size_t i = 0; i < values.size(); i++) {
        const auto& wanted = i % 2 ? right : left;
        const auto found = wanted.find(long(i / 2));
        ASSERT_EQ(values[i], found == wanted.end() ? 0.0f : found->second) << i / 2;
    }
    f.arp->enable(0);
    const std::vector<float> plain = f.render();
    EXPECT_EQ(plain[2 * 11025], 60 * keyStep) << "the later of two notes on one frame";
    EXPECT_EQ(std::count(plain.begin(), plain.end(), 0.0f), long(plain.size()) - 2);
}

/// Chance, keys that the latch keeps, and what was played before leave no trace in a render.
TEST(ArpTrack, RendersAreEqual) {
    ArpSong f;
    f.arp->setMode(arpRandom);
    f.arp->setProb(0.7f);
    f.arp->setLatch(1);
    const std::vector<float> first = f.render(), second = f.render();
    EXPECT_GT(std::set<float>(first.begin(), first.end()).size(), 2u);
    EXPECT_EQ(first, second);
    f.host.setPos(300.0);
    f.host.start();
    f.device.run(20);
    f.arp->getProg()->setMode(arpRandom);
    f.arp->setMode(arpRandom);
    EXPECT_EQ(f.render(), first);
}

TEST(ArpTrack, NothingHangsInPlay) {
    const std::map<std::string, std::function<void(ArpSong&)>> ways{
        {"stop", [](ArpSong& f) { f.host.stop(); }},
        {"off, tempo",
         [](ArpSong& f) {
             f.arp->enable(0);
             f.host.setTempo(240.0f);
         }},
        {"mute", [](ArpSong& f) { f.songTrack->setMuted(true); }},
        {"jump", [](ArpSong& f) { f.host.setPos(7000.0); }},
        {"removal",
         [](ArpSong& f) {
             CUndo* step = f.host.undoStart("Cut", f.seq, undoSongChanged);
             f.seq->removeTrack(f.songTrack->track, step);
             f.host.undoEnd(step, false);
         }},
        {"latch, two stops",
         [](ArpSong& f) {
             f.arp->setLatch(1);
             f.host.stop();
             f.device.run(40);
             EXPECT_GT(f.clicker->started, 4) << "the latch goes on";
             f.host.stop();
         }},
    };
    for (const auto& [name, end] : ways) {
        ArpSong f;
        f.host.loop = 0;
        rtReset();
        f.host.start();
        f.device.run(18);
        EXPECT_FALSE(f.clicker->silent()) << name;
        end(f);
        f.device.run(2);
        const int started = f.clicker->started;
        f.device.run(60);
        EXPECT_TRUE(f.clicker->silent()) << name;
        EXPECT_EQ(f.clicker->started, started) << name;
        EXPECT_EQ(rtViolations(), 0) << name;
    }
}

/// A track that comes back begins anew.
TEST(ArpTrack, TheWayBackIsSilent) {
    ArpSong f;
    f.arp->setLatch(1);
    f.host.start();
    f.device.run(18);
    f.step([&](CUndo* u) { f.seq->removeTrack(f.songTrack->track, u); });
    f.host.stop();
    f.undo();
    const int started = f.clicker->started;
    f.device.run(60);
    EXPECT_EQ(f.clicker->started, started);
    EXPECT_TRUE(f.clicker->silent());
}
