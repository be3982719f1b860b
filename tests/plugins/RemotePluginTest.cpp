#include "plugins/remote/RemotePlugin.h"

#include "base/Numbers.h"
#include "engine/MidiBytes.h"
#include "engine/StripValues.h"
#include "engine/ValueDoor.h"
#include "engine/plan/GraphWorkers.h"
#include "plugins/RemoteFixture.h"

#include <chrono>
#include <cstdlib>
#include <thread>

namespace {

/// What a plug-in plays and tells in three blocks of notes and moves, and what is kept of it.
struct Heard {
    std::vector<float> sound;
    std::vector<int> messages;
    std::string state, told;
    bool operator==(const Heard&) const = default;
};

Heard playAll(const char* name, bool isolated, int workers = 0) {
    RemoteFixture f;
    f.isolates = isolated;
    f.host->workers->setCount(workers);
    f.host->workers->eager = true;
    Heard heard;
    CVST *c = f.addPlug(name), *beside = f.addPlug("gain"), *behind = f.addPlug("gain");
    auto* player = f.add(new SignalComp(f.host));
    f.connectMIDI(player, c);
    if (!c->inputs.empty()) f.connect(player, c);
    f.connect(player, beside);
    f.connect(beside, behind);
    if (!c->outputs.empty()) f.connect(c, behind);
    for (CComp* at : {static_cast<CComp*>(beside), static_cast<CComp*>(player)})
        for (const char* insert : {"gain", "late40", "pins1_1"}) {
            CVST* made = f.plug(insert);
            made->listKind = listInsert;
            made->wet = 0.75f;
            const GraphHold hold(f.host);
            at->output()->inserts.add(made);
        }
    player->left = [](long at) { return float(at % 100) / 100.0f; };
    player->right = [](long at) { return float(at % 37) / -37.0f; };
    for (int i = 0; i < 3; i++) {
        player->messages = {{10.4 + i, asData(midiNoteOn, 60 + i, 100)},
                            {130.0, asData(midiNoteOn, 60 + i, 0)}};
        if (i != 1) player->moves = {{64.0, c, 0, 0.25f * float(i)}, {200.0, c, 0, 0.125f}};
        f.block();
        for (const CVST* one : {c, behind})
            for (auto* out : one->outputs)
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

/// In a helper a plug-in is what it is in the program's own process, to the last bit, beside others
/// and behind others, as an insert, and whoever works out the block.
TEST(RemotePlugin, IsAsInProcess) {
    for (const char* name : {"gain", "gain-adds", "synth", "pins2_1", "pins3_4"}) {
        const Heard expected = playAll(name, false);
        for (const int workers : {0, 1}) {
            const Heard heard = playAll(name, true, workers);
            EXPECT_EQ(heard.sound, expected.sound) << name;
            EXPECT_EQ(heard.messages, expected.messages) << name;
            EXPECT_EQ(heard.told, expected.told) << name;
            EXPECT_EQ(heard.state.substr(heard.state.find("chunk2")),
                      expected.state.substr(expected.state.find("chunk2")))
                << name;
        }
    }
}

/// Wherever its helper is killed: before a trip, while it is made, before it is answered, behind
/// it. The others play on, what it was to play is passed on or silent at once, and it comes back
/// with its state; by itself once, then when it is told to.
class KilledFormat : public testing::TestWithParam<const char*> {};
INSTANTIATE_TEST_SUITE_P(PluginFormats, KilledFormat,
                         testing::Values("", ".lv2", ".clap", ".vst3"));

TEST_P(KilledFormat, ComesBackWithItsState) {
    const char* wanted = std::getenv("SONDRAVA_KILLS");
    const int kills = wanted ? std::atoi(wanted) : 4;
    RemoteFixture f;
    CVST *effect = f.insert(std::string("bad-oversleeps") + GetParam()),
         *synth = f.addPlug("synth");
    f.signal->left = f.signal->right = [](long) { return 0.5f; };
    SignalComp* other = f.addSignal();
    effect->setParam(0, 0.25f);
    effect->setParam(2, 1.0f); // a trip takes its time
    synth->setProg(2);
    synth->idle();
    synth->setParam(2, 0.375f);
    const auto heard = [&] { return effect->output()->bufL[0]; };
    ASSERT_TRUE(f.until([&] { return heard() == 0.25f; }));
    const std::string state = f.bytesOf(effect), synthState = f.bytesOf(synth);
    for (int i = 0; i < kills; i++) {
        SCOPED_TRACE(i);
        const int helpers[] = {f.remote(effect)->helperProcess(), f.remote(synth)->helperProcess()};
        std::thread killer([=, wait = std::chrono::milliseconds(i % 4 * 7)] {
            std::this_thread::sleep_for(wait);
            for (const int process : helpers) kill(process, SIGKILL);
        });
        if (i % 4 == 0) killer.join();
        bool effectFailed = false, synthFailed = false;
        const auto bothFailed = [&] {
            f.block();
            EXPECT_EQ(f.left.size(), 256u);
            for (const float v : {other->output()->bufL[0], other->output()->bufL[255]})
                EXPECT_EQ(v, 1.0f);
            EXPECT_TRUE(heard() == 0.5f || heard() == 0.25f) << "passed on, or played";
            EXPECT_TRUE(f.bytesOf(effect) == state) << "as it was heard last";
            f.host->idle();
            effectFailed = effectFailed || effect->failed(); // it may be back before the other goes
            synthFailed = synthFailed || synth->failed();
            return effectFailed && synthFailed;
        };
        const bool noticed = comes(bothFailed);
        if (killer.joinable()) killer.join();
        ASSERT_TRUE(noticed) << effectFailed << synthFailed;
        for (CVST* c : {effect, synth})
            if (i > 0) c->loaded()->restart();
        ASSERT_TRUE(f.until([&] { return !effect->failed() && !synth->failed(); }));
        f.block();
        EXPECT_EQ(heard(), 0.25f);
        EXPECT_TRUE(f.bytesOf(effect) == state && f.bytesOf(synth) == synthState);
    }
    EXPECT_EQ(effect->faults, 0u);
}

/// A helper that ends at any point of coming back: it comes back when it is told to, with its
/// state.
TEST_P(KilledFormat, MayEndWhileItComesBack) {
    RemoteFixture f;
    CVST* c = f.insert(std::string("gain") + GetParam());
    f.signal->left = f.signal->right = [](long) { return 0.5f; };
    c->setParam(0, 0.25f);
    const auto plays = [&] { return !c->failed() && c->output()->bufL[255] == 0.25f; };
    ASSERT_TRUE(f.until(plays));
    const std::string state = f.bytesOf(c);
    for (int ms = 0; ms < 30; ms += 3) {
        SCOPED_TRACE(ms);
        const int former = f.remote(c)->helperProcess();
        f.killHelper(c);
        ASSERT_TRUE(f.until([&] {
            c->loaded()->restart();
            return f.remote(c)->helperProcess() != former;
        }));
        std::this_thread::sleep_for(std::chrono::milliseconds(ms));
        f.host->idle();
        f.killHelper(c);
        ASSERT_TRUE(f.until([&] {
            c->loaded()->restart();
            return plays() && f.remote(c)->helperProcess() != former;
        }));
        EXPECT_EQ(f.bytesOf(c), state);
    }
}

/// One that ends its process, or does not come back, does so once more after it came back by
/// itself; then it stays away until it is told to. What was set meanwhile counts.
TEST(RemotePlugin, MayCrashAndHang) {
    const struct {
        const char *name, *why;
    } cases[] = {{"bad-crashes-process", "It crashed (Segmentation fault)."},
                 {"bad-aborts-process", "It crashed (Aborted)."},
                 {"bad-hangs-process", "It did not come back."},
                 {"bad-crashes-process.lv2", "It crashed (Segmentation fault)."},
                 {"bad-hangs-process.lv2", "It did not come back."},
                 {"bad-crashes-process.clap", "It crashed (Segmentation fault)."},
                 {"bad-hangs-process.clap", "It did not come back."},
                 {"bad-crashes-process.vst3", "It crashed (Segmentation fault)."},
                 {"bad-hangs-process.vst3", "It did not come back."}};
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        RemoteFixture f;
        CVST* plug = f.insert(c.name);
        f.signal->left = f.signal->right = [](long) { return 0.25f; };
        SignalComp* other = f.addSignal();
        f.block();
        EXPECT_FALSE(plug->failed());
        constexpr float littleTime = 20.0f;
        f.processes->share = littleTime;
        plug->setParam(2, 1.0f);
        for (int ends = 0; ends < 2; ends++) {
            ASSERT_TRUE(f.until([&] {
                EXPECT_EQ(other->output()->bufL[255], 1.0f);
                EXPECT_EQ(plug->output()->bufL[255], 0.25f) << "passed on, or at unity";
                return plug->failed();
            }));
            ASSERT_TRUE(ends == 1 || f.until([&] { return !plug->failed(); }));
        }
        EXPECT_EQ(plug->loaded()->whyFailed(), c.why);
        for (int i = 0; i < 5; i++) f.until([] { return true; });
        EXPECT_TRUE(plug->failed());
        plug->setParam(2, 0.0f);
        plug->loaded()->restart();
        ASSERT_TRUE(f.until([&] { return !plug->failed(); }));
        f.block();
        EXPECT_EQ(plug->param(2), 0.0f);
        EXPECT_EQ(plug->faults, 0u);
    }
}

/// What ends it where the interface asks: the program gets an answer all the same, and others that
/// shared its process come back.
TEST(RemotePlugin, AnswersWhatEndsIt) {
    RemoteFixture f;
    f.processes->makerOf = [](const CStr&) { return CStr("all"); };
    CVST* other = f.addPlug("synth");
    other->setParam(2, 0.625f);
    const auto back = [&] { return !other->failed() && other->param(2) == 0.625f; };
    const auto ended = [&] { return other->failed(); };
    rtReset();
    {
        const std::unique_ptr<CVST> state(f.plug("bad-crashes-state"));
        EXPECT_NE(f.bytesOf(state.get()).find("chunk2"), std::string::npos);
        ASSERT_TRUE(f.until(ended));
        ASSERT_TRUE(f.until(back));
        const std::unique_ptr<CVST> text(f.plug("bad-hangs-text"));
        EXPECT_EQ(text->paramText(0), "");
        EXPECT_EQ(text->paramText(0), "") << "not waited for again";
        ASSERT_TRUE(f.until(ended));
        ASSERT_TRUE(f.until(back));
        const std::unique_ptr<CVST> drawn(f.plug("bad-crashes-editor"));
        drawn->openEditor(1);
        ASSERT_TRUE(f.until(ended));
        ASSERT_TRUE(f.until(back));
        drawn->closeEditor();
        const std::unique_ptr<CVST> closes(f.plug("bad-crashes-close"));
    }
    ASSERT_TRUE(f.until(ended)) << "at the end of the last one";
    ASSERT_TRUE(f.until(back));
    for (const std::string format : {".lv2", ".clap", ".vst3"}) {
        SCOPED_TRACE(format);
        const std::unique_ptr<CVST> state(f.plug("bad-crashes-state" + format));
        EXPECT_NE(f.bytesOf(state.get()).find("chunk2"), std::string::npos);
        ASSERT_TRUE(f.until(ended) && f.until(back));
        const std::unique_ptr<CVST> drawn(f.plug("bad-crashes-editor" + format));
        drawn->openEditor(1);
        ASSERT_TRUE(f.until(ended) && f.until(back));
        drawn->closeEditor();
        delete f.plug("bad-crashes-close" + format);
        ASSERT_TRUE(f.until(ended) && f.until(back));
    }
    f.block();
    EXPECT_FALSE(rtViolations());
}

/// While it is made anew it plays nothing, which is no fault of its own, and a note that ends then
/// ends afterwards.
TEST(RemotePlugin, IsMadeAnewWhileItPlays) {
    RemoteFixture f;
    CVST* c = f.addPlug("bad-renews-slowly.clap");
    auto* player = f.add(new SignalComp(f.host));
    f.connectMIDI(player, c);
    player->messages = {{10.0, asData(midiNoteOn, 60, 127)}};
    f.block();
    player->messages.clear();
    const auto last = [&] { return c->output()->bufL[255]; };
    ASSERT_TRUE(f.until([&] { return last() >= 1.0f; }));
    std::ofstream(f.folder + "/held") << "";
    c->setParam(1, 0.5f);
    ASSERT_TRUE(f.until([&] { return c->loaded()->missedBlock(); }));
    player->messages = {{10.0, asData(midiNoteOff, 60, 0)}};
    f.block();
    EXPECT_TRUE(c->loaded()->missedBlock());
    std::filesystem::remove(f.folder + "/held");
    player->messages.clear();
    ASSERT_TRUE(f.until([&] { return c->getDelay() == 2048 && !c->loaded()->missedBlock(); }));
    EXPECT_LT(last(), 0.5f);
    EXPECT_EQ(c->faults, 0u);
}

/// The part of a block that it works is its own wherever it runs, and its crashes are counted.
TEST(RemotePlugin, TellsWhatItCosts) {
    for (const bool isolated : {false, true}) {
        RemoteFixture f;
        f.isolates = isolated;
        CVST *slow = f.addPlug("bad-oversleeps"), *idle = f.addPlug("synth");
        slow->setParam(2, 1.0f); // a trip takes its time
        idle->enable(0);
        constexpr int blocks = 6;
        for (int i = 0; i <= blocks; i++) f.block();
        const double each = 20e-3 * 44100 / 256, taken = 256 / (0.5 * 44100);
        EXPECT_GE(double(slow->workShare), 0.99 * each * (1 - std::pow(1 - taken, blocks)));
        EXPECT_EQ(idle->workShare, 0.0f);
        if (!isolated) continue;
        f.killHelper(slow);
        ASSERT_TRUE(f.until([&] { return slow->loaded()->crashes() == 1; }));
        EXPECT_GE(pluginHealth(slow).pos(", 1 crash"), 0);
    }
}

/// Ten hours of play, or a word of the user, and it runs in the program; a crash, or another file
/// in its place, and they count from the beginning.
TEST(RemotePlugin, IsTrustedInTime) {
    RemoteFixture f;
    int64_t now = 1000;
    f.processes->trust.clock = [&now] { return now; };
    CVST* plug = f.addPlug("gain");
    const CStr file = f.file("gain").c_str();
    const auto play = [&](int minutes) {
        for (int i = 0; i < minutes; i++) {
            now += 60;
            f.block();
            f.host->idle();
        }
    };
    const auto trusted = [&] { return f.processes->trust.trusted(file); };
    play(599);
    EXPECT_FALSE(trusted());
    play(2);
    EXPECT_TRUE(trusted());
    EXPECT_TRUE(plug->loaded()->isolated()) << "as it was loaded";
    const std::unique_ptr<CVST> next(f.plug("gain"));
    EXPECT_FALSE(next->loaded()->isolated());
    f.killHelper(plug);
    ASSERT_TRUE(f.until([&] { return plug->failed(); }));
    EXPECT_FALSE(trusted());
    EXPECT_EQ(PluginTrust((f.folder + "/trust.txt").c_str()).crashes(file), 1) << "kept";
    f.processes->trust.set(file, true);
    EXPECT_TRUE(trusted());
    EXPECT_TRUE(PluginTrust((f.folder + "/trust.txt").c_str()).trusted(file)) << "kept";
    std::ofstream(f.file("gain"), std::ios::app) << " ";
    EXPECT_FALSE(trusted());
    f.processes->trust.set(file, false);
    play(700);
    EXPECT_FALSE(trusted()) << "the user's word";
}
