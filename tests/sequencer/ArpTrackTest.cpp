#include "SongFixture.h"

#include "audiofiles/CSample.h"
#include "base/TempFolder.h"
#include "instruments/CArp.h"
#include "sequencer/render/RenderExport.h"

#include <bitset>
#include <functional>
#include <map>

namespace {

/// An instrument of single frames: a note-on sounds as its key, a note-off as its negative.
class Clicker : public TestInstrument {
public:
    using TestInstrument::TestInstrument;
    void play(int frames) override {
        for (const CMIDIBytes* e = inPort()->first(); e; e = e->next) {
            const int key = asByte1(e->data), sign = noteOn(e->data) ? 1 : -1;
            if (!noteOn(e->data) && !noteOff(e->data)) {
                open.reset(); // all notes off
                continue;
            }
            output()->bufL[CMIDIQ::frameOf(e, 0, frames - 1)] = float(sign * key) / 128.0f;
            open.set(size_t(key), sign > 0);
            started += sign > 0;
        }
    }
    std::bitset<128> open;
    int started = 0;
};

/// Two notes from tick 480 to 1439, through an arpeggiator that is on.
struct ArpSong : SongFixture {
    CSongTrack* songTrack = track(trackMIDI);
    CArp* arp = songTrack->track->arp.get();
    Clicker* clicker = connect(songTrack, device.add(new Clicker(&host)));

    ArpSong() {
        CPart* part = midiPart(480, 1440);
        for (int key : {64, 60}) part->addEvent(0, note(key, 960));
        songTrack->addPart(part, nullptr);
        arp->setMode(arpUp);
        arp->enable(1);
    }
    /// The frames of the rendered song, left and right in turn.
    std::vector<float> render() {
        const TempFolder folder;
        CRender made(&host, seq);
        made.bits = 32;
        made.filename = folder.file("arp.wav");
        EXPECT_EQ(exportSong(made, seq, nullptr), RenderResult::good);
        CSample heard;
        EXPECT_TRUE(heard.open(made.filename));
        std::vector<float> values(size_t(heard.frames) * 2);
        heard.readFrames(0, heard.frames, values.data());
        return values;
    }
};

} // namespace

/// At 120 beats a minute a tick takes 22.96875 frames, a step of 240 ticks 5512.5.
TEST(ArpTrack, RendersAreEqualAndAtTheirFrames) {
    const std::map<size_t, int> clicks{{11025, 60}, {16515, -60}, {16538, 64}, {22027, -64},
                                       {22050, 60}, {27540, -60}, {27563, 64}, {33052, -64}};
    ArpSong f;
    const std::vector<float> values = f.render();
    ASSERT_GT(values.size(), 80000u);
    for (size_t i = 0; i < values.size(); i += 2) {
        const auto found = clicks.find(i / 2);
        ASSERT_EQ(values[i] * 128.0f, found == clicks.end() ? 0 : found->second) << i / 2;
    }
    // Chance, keys that the latch keeps, and what was played before leave no trace in a render.
    f.arp->setMode(arpRandom);
    f.arp->setProb(0.7f);
    f.arp->setLatch(1);
    const std::vector<float> first = f.render();
    EXPECT_EQ(first, f.render());
    f.host.setPos(300.0);
    f.host.start();
    f.device.run(20);
    f.arp->setMode(arpRandom);
    EXPECT_EQ(f.render(), first);
}

TEST(ArpTrack, NothingHangsInPlay) {
    const std::map<std::string, std::function<void(ArpSong&)>> ways{
        {"stop", [](ArpSong& f) { f.host.stop(); }},
        {"off, tempo", [](ArpSong& f) { f.arp->enable(0), f.host.setTempo(240.0f); }},
        {"off and on by undone values",
         [](ArpSong& f) { f.arp->enabled = 0, f.device.run(), f.arp->enabled = 1; }},
        {"other program",
         [](ArpSong& f) { f.arp->progs.add(new CArpProg), f.arp->setProg(1), f.device.run(30); }},
        {"mute", [](ArpSong& f) { f.songTrack->setMuted(true); }},
        {"jump", [](ArpSong& f) { f.host.setPos(7000.0); }},
        {"removal, and back",
         [](ArpSong& f) {
             f.arp->setLatch(1);
             f.step([&](CUndo* u) { f.seq->removeTrack(f.songTrack->track, u); });
             f.device.run(2);
             EXPECT_TRUE(f.clicker->open.none());
             f.undo();
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
        f.host.start();
        f.device.run(18);
        EXPECT_TRUE(f.clicker->open.any()) << name;
        end(f);
        f.device.run(2);
        const int started = f.clicker->started;
        f.device.run(60);
        EXPECT_TRUE(f.clicker->open.none()) << name;
        EXPECT_EQ(f.clicker->started, started) << name;
    }
}
