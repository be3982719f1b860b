#include "MainFixture.h"

#include "base/Numbers.h"
#include "engine/DeviceMidi.h"
#include "engine/MidiBytes.h"
#include "engine/ValueDoor.h"
#include "sequencer/song/CSeq.h"
#include "surfaces/Mackie.h"
#include "ui/Song.h"

#include <map>

namespace {

/// A surface as its owner sees it: what it was told last.
struct Panel {
    std::map<int, int> faders, rings, lights, meters;
    std::string lines = std::string(112, '_');
    int messages = 0;

    void take(int message) {
        messages++;
        const int ch = chByte(message), one = asByte1(message), two = asByte2(message);
        if (statusByte(message) == midiPitchBend) faders[ch] = one | two << 7;
        if (statusByte(message) == midiController) rings[one - 48] = two;
        if (statusByte(message) == midiNoteOn) lights[one] = two;
        if (statusByte(message) == midiPressure) meters[one >> 4] = one & 15;
    }
    void takeLong(const std::vector<unsigned char>& b) {
        messages++;
        ASSERT_GT(b.size(), 8u);
        EXPECT_EQ(std::vector<unsigned char>(b.begin(), b.begin() + 6),
                  (std::vector<unsigned char>{0xF0, 0, 0, 0x66, 0x14, 0x12}));
        EXPECT_EQ(b.back(), 0xF7);
        for (size_t i = 7; i + 1 < b.size(); i++) {
            EXPECT_LT(b[i], 128);
            lines[b[6] + i - 7] = char(b[i]);
        }
    }
    std::string cell(int line, int place) const {
        std::string text = lines.substr(size_t(line * 56 + place * 7), 7);
        return text.substr(0, text.find_last_not_of(' ') + 1);
    }
};

class MackieTest : public MainWinTest {
protected:
    void SetUp() override {
        MainWinTest::SetUp();
        start();
        ASSERT_TRUE(load(kindDemo));
        seq = songOf(host.get());
        mackie = std::make_unique<Mackie>(
            host.get(), [this](int message) { panel.take(message); },
            [this](const std::vector<unsigned char>& bytes) { panel.takeLong(bytes); });
        mackie->idle();
    }
    CTrack* track(int i) { return seq->getProg()->tracks.items(i)->track; }
    COutputChannel* kit() { return track(0)->output(); }
    void fader(int place, int value) {
        mackie->receive(asData(midiPitchBend | place, value & 127, value >> 7));
    }
    void press(int note, bool down = true) {
        mackie->receive(asData(midiNoteOn, note, down ? 127 : 0));
    }
    /// Until the surface shows it: a fader rests a moment after a hand has left it.
    template <class F>
    bool shows(F&& it) {
        return pumpUntil([&] {
            mackie->idle();
            return it();
        });
    }
    CSeq* seq = nullptr;
    Panel panel;
    std::unique_ptr<Mackie> mackie;
};

int places(float fader) {
    return asRound(double(fader) * 16383);
}

} // namespace

/// Faders, names, lights and rings are those of the strips, and nothing is sent twice.
TEST_F(MackieTest, ShowsTheStrips) {
    EXPECT_EQ(panel.cell(0, 0), "Kit");
    EXPECT_EQ(panel.cell(0, 1), "Percus");
    EXPECT_EQ(panel.cell(1, 0), "<C>");
    EXPECT_EQ(panel.faders[0], places(kit()->vol));
    EXPECT_EQ(panel.faders[8], places(host->getAudioOut()->output()->vol));
    EXPECT_EQ(panel.rings[0], 0x56) << "the middle of eleven, with the light under it";
    EXPECT_TRUE(panel.lights[16] == 0 && panel.lights[94] == 0 && panel.lights[93] == 127);
    const int before = panel.messages;
    mackie->idle();
    EXPECT_EQ(panel.messages, before);
    host->values->setParam(kit(), 0, 0.25f);
    kit()->toggleMute();
    mackie->idle();
    EXPECT_EQ(panel.faders[0], places(0.25f));
    EXPECT_EQ(panel.lights[16], 127);
    EXPECT_EQ(panel.messages, before + 2);
}

/// A hand on a fader is one step, and the motor does not fight it; when it has left, undo moves it.
TEST_F(MackieTest, OneTouchIsOneStep) {
    const float was = kit()->vol;
    press(104);
    const int sent = panel.faders[0];
    for (const int value : {100, 5000, 12000}) {
        fader(0, value);
        mackie->idle();
        EXPECT_FLOAT_EQ(kit()->vol, float(value) / 16383.0f);
        EXPECT_EQ(panel.faders[0], sent) << "the motor pulls";
        EXPECT_NE(panel.cell(1, 0), "<C>") << "its level shows";
    }
    press(104, false);
    host->values->settle();
    host->undoClicked();
    host->settle();
    EXPECT_EQ(kit()->vol, was);
    EXPECT_TRUE(shows([&] { return panel.faders[0] == places(was) && panel.cell(1, 0) == "<C>"; }));
}

/// Buttons, knobs, banks and the transport do what is written on them.
TEST_F(MackieTest, ServesItsKeys) {
    press(16);
    press(8 + 1);
    EXPECT_TRUE(kit()->mute && !kit()->solo);
    press(24 + 2);
    EXPECT_TRUE(track(2)->selected() && !track(0)->selected());
    press(0);
    EXPECT_TRUE(track(0)->recArm);
    mackie->receive(asData(midiController, 16, 16));
    EXPECT_NEAR(kit()->pan, 0.5, 1e-6);
    mackie->receive(asData(midiController, 16, 64 + 32));
    EXPECT_NEAR(kit()->pan, -0.5, 1e-6);
    press(32);
    EXPECT_EQ(kit()->pan, 0.0f);
    press(49);
    mackie->idle();
    EXPECT_EQ(panel.cell(0, 0), mackie->bank() == 1 ? "Percus" : "Kit");
    press(47);
    mackie->idle();
    press(46);
    press(46);
    mackie->idle();
    EXPECT_EQ(panel.cell(0, 0), "Kit");
    press(94);
    host->settle();
    mackie->idle();
    EXPECT_TRUE(host->playing && panel.lights[94] == 127 && panel.lights[93] == 0);
    press(93);
    press(92);
    host->settle();
    mackie->idle();
    EXPECT_TRUE(!host->playing && panel.lights[93] == 127);
    EXPECT_NEAR(seq->getPos(), 3840, 3840);
    press(91);
    EXPECT_EQ(seq->getPos(), 0.0);
    for (int message = 0; message < 1 << 16; message += 37) // whatever comes
        mackie->receive(message | message << 8);
}
