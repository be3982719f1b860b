#include "plugins/remote/RemotePlugin.h"

#include "base/Numbers.h"
#include "engine/MidiBytes.h"
#include "engine/StripValues.h"
#include "engine/ValueDoor.h"
#include "plugins/RemoteFixture.h"

namespace {

/// What a plug-in plays and tells in three blocks of notes and moves, and what is kept of it.
struct Heard {
    std::vector<float> sound;
    std::vector<int> messages;
    std::string state, told;
    bool operator==(const Heard&) const = default;
};

Heard playAll(const char* name, bool isolated) {
    RemoteFixture f;
    f.isolates = isolated;
    Heard heard;
    CVST* c = f.addPlug(name);
    auto* player = f.add(new SignalComp(f.host));
    f.connectMIDI(player, c);
    if (!c->inputs.empty()) f.connect(player, c);
    player->left = [](long at) { return float(at % 100) / 100.0f; };
    player->right = [](long at) { return float(at % 37) / -37.0f; };
    for (int i = 0; i < 3; i++) {
        player->messages = {{10.4 + i, asData(midiNoteOn, 60 + i, 100)},
                            {130.0, asData(midiNoteOn, 60 + i, 0)}};
        player->moves = {{64.0, c, 0, 0.25f * float(i)}, {200.0, c, 0, 0.125f}};
        f.block();
        for (auto* out : each<COutputChannel>(c->outputs))
            for (const float* side : {out->bufL, out->bufR})
                heard.sound.insert(heard.sound.end(), side, side + 256);
        if (const CMIDIQ* port = c->outPort())
            for (int k = 0; k < port->count; k++)
                heard.messages.insert(heard.messages.end(),
                                      {asRound(port->events[k].time), port->events[k].data});
        f.host->idle();
    }
    c->setProg(1);
    c->idle();
    c->setParam(2, 0.75f);
    heard.told = (c->paramName(0) + c->paramText(2) + c->getProgName(2)).asChar();
    heard.state = f.bytesOf(c);
    return heard;
}

} // namespace

/// In a helper a plug-in is what it is in the program's own process, to the last bit.
TEST(RemotePlugin, IsAsInProcess) {
    for (const char* name : {"gain", "gain-adds", "synth", "pins2_1", "pins3_4"}) {
        const Heard expected = playAll(name, false), heard = playAll(name, true);
        EXPECT_EQ(heard.sound, expected.sound) << name;
        EXPECT_EQ(heard.messages, expected.messages) << name;
        EXPECT_EQ(heard.told, expected.told) << name;
        EXPECT_EQ(heard.state.substr(heard.state.find("chunk2")),
                  expected.state.substr(expected.state.find("chunk2")))
            << name;
    }
}

/// Wherever its helper is killed: the others play on, what it was to play is passed on or silent
/// at once, and it comes back with its state; by itself once, then when it is told to.
TEST(RemotePlugin, ComesBackWithItsState) {
    RemoteFixture f;
    CVST *effect = f.insert("gain"), *synth = f.addPlug("synth");
    f.signal->left = f.signal->right = [](long) { return 0.5f; };
    SignalComp* other = f.addSignal();
    effect->setParam(0, 0.25f);
    synth->setProg(2);
    synth->idle();
    synth->setParam(2, 0.375f);
    ASSERT_TRUE(f.until([&] { return effect->output()->bufL[0] == 0.25f; }));
    const std::string state = f.bytesOf(effect), synthState = f.bytesOf(synth);
    for (int i = 0; i < 10; i++) {
        SCOPED_TRACE(i);
        for (CVST* c : {effect, synth}) f.killHelper(c);
        f.block();
        EXPECT_EQ(other->output()->bufL[255], 1.0f);
        EXPECT_TRUE(effect->output()->bufL[255] == 0.5f || effect->output()->bufL[255] == 0.25f);
        ASSERT_TRUE(f.until([&] { return effect->failed() && synth->failed(); }) || i == 0);
        EXPECT_EQ(effect->param(0), 0.25f) << "as it was last heard";
        EXPECT_EQ(f.bytesOf(effect), state);
        f.block();
        EXPECT_EQ(effect->output()->bufL[0], 0.5f);
        for (CVST* c : {effect, synth})
            if (i > 0) c->loaded()->restart();
        ASSERT_TRUE(f.until([&] { return !effect->failed() && !synth->failed(); }));
        f.block();
        EXPECT_EQ(effect->output()->bufL[0], 0.25f);
        EXPECT_EQ(f.bytesOf(effect), state);
        EXPECT_EQ(f.bytesOf(synth), synthState);
    }
    EXPECT_EQ(effect->faults, 0u);
}
