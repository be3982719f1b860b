#include "plugins/CVST.h"

#include "engine/CGroupCh.h"
#include "engine/MidiBytes.h"
#include "engine/SeqStub.h"
#include "engine/StripValues.h"
#include "engine/ValueDoor.h"
#include "plugins/RemoteFixture.h"

#include <algorithm>
#include <memory>

using namespace vst2;

namespace {

int note(int key, int velocity, int channel = 0) {
    return asData(midiNoteOn + channel, key, velocity);
}

std::vector<int> widthsOf(const CList& channels) {
    std::vector<int> widths;
    for (const CObject* c : each<CObject>(channels))
        widths.push_back(c->type == channelInput ? static_cast<const CInputChannel*>(c)->channels
                                                 : static_cast<const COutputChannel*>(c)->channels);
    return widths;
}

} // namespace

/// Each is told what it needs before it runs, and in this order.
TEST(CVST, StartsAPlugin) {
    PluginFixture f;
    const std::unique_ptr<CVST> c(f.plug("gain"));
    MadePlugin* p = f.seen("gain");
    EXPECT_EQ(c->id, "gain");
    EXPECT_TRUE(p->running);
    int at = -1;
    for (const int opcode :
         {effOpen, effCanDo, effSetProgram, effSetSampleRate, effSetBlockSize, effMainsChanged}) {
        const int* found = std::find(p->opcodes + at + 1, p->opcodes + p->calls, opcode);
        at = int(found - p->opcodes);
        EXPECT_LT(at, p->calls) << opcode;
    }
    const CStr saved = c->paramName(0) + ", " + c->paramText(0) + ", " + c->getProgName(1);
    EXPECT_EQ(saved, "Gain, 0.50 x, Sound 2");
    EXPECT_EQ(c->numParams(), 3);
    EXPECT_EQ(c->numProgs(), 3);
}

/// Pins become channels as they say, and where they say nothing two of them belong together.
TEST(CVST, MakesChannelsOfPins) {
    struct Case {
        const char* name;
        std::vector<int> in, out;
    };
    const Case cases[] = {{"gain", {2}, {2}},
                          {"synth", {}, {2}},
                          {"pins1_2", {1}, {2}},
                          {"pins2_1", {2}, {1}},
                          {"pins3_4", {1, 1, 1}, {1, 1, 2}},
                          {"pins0_0", {}, {}}};
    PluginFixture f;
    for (const Case& one : cases) {
        const std::unique_ptr<CVST> c(f.plug(one.name));
        ASSERT_TRUE(c) << one.name;
        EXPECT_EQ(widthsOf(c->inputs), one.in) << one.name;
        EXPECT_EQ(widthsOf(c->outputs), one.out) << one.name;
        EXPECT_EQ(c->outPorts.getCount(), std::string(one.name) == "synth") << one.name;
    }
    const std::unique_ptr<CVST> most(f.plug("pins128_128"));
    EXPECT_EQ(most->inputs.getCount(), 127);
}

TEST(CVST, RefusesWhatIsNone) {
    PluginFixture f;
    const Told told;
    std::ofstream(f.folder + "/text.so") << "no library";
    for (const char* name : {"bad-null", "bad-magic", "bad-throws-main", "pins129_1", "text"}) {
        told.messages.clear();
        EXPECT_EQ(f.plug(name), nullptr);
        EXPECT_EQ(told.messages,
                  std::vector<std::string>{"VST: Failed to open " + std::string(name)});
    }
}

/// Two notes with a parameter between them come in two calls, in frames from the start of each.
TEST(CVST, CutsABlockAtParameters) {
    PluginFixture f;
    CVST* c = f.addPlug("synth");
    auto* player = f.add(new SignalComp(f.host));
    f.connectMIDI(player, c);
    MadePlugin* p = f.seen("synth");
    player->messages = {{10.4, note(60, 127)}, {100.0, note(62, 127, 1)}, {200.0, note(64, 0)}};
    player->moves = {{64.0, c, 0, 0.25f}};
    c->mch = 0;
    rtReset();
    f.block();
    EXPECT_EQ(rtViolations(), 0);
    EXPECT_EQ(std::vector<int>(p->blocks, p->blocks + p->blockCount), (std::vector<int>{64, 192}));
    ASSERT_EQ(p->eventCount, 2); // the second is on another channel
    EXPECT_EQ(p->deltas[0], 10);
    EXPECT_EQ(p->deltas[1], 136);
    EXPECT_EQ(p->eventCalls[1] - p->eventCalls[0], 1);
    EXPECT_EQ(p->values[0][0], 0.25f);
    ASSERT_TRUE(c->outPort()); // what it answers leaves at its frame of the block
    ASSERT_EQ(c->outPort()->count, 2);
    EXPECT_EQ(c->outPort()->events[0].time, 10.0);
    EXPECT_EQ(c->outPort()->events[1].time, 200.0);
    EXPECT_EQ(asByte1(c->outPort()->events[1].data), 76);
    EXPECT_EQ(p->answers[hostGetSampleRate], 44100);
    EXPECT_EQ(p->answers[hostGetBlockSize], 256);
    EXPECT_EQ(p->answers[hostGetProcessLevel], levelRealtime);
    EXPECT_EQ(p->answers[hostTempoAt], 1200000);
}

/// An insert of every form, on and off, wet and dry: y = x * gain at its frame.
TEST(CVST, SoundsAsAnInsert) {
    for (const char* name : {"gain", "gain-adds", "pins2_1", "pins1_2"}) {
        PluginFixture f;
        CVST* c = f.insert(name);
        f.signal->left = [](long) { return 0.5f; };
        f.signal->right = [](long) { return 0.25f; };
        const bool folded = std::string(name) == "pins1_2", single = std::string(name) == "pins2_1";
        const float left = folded ? 0.375f : 0.5f, right = single ? 0.5f : folded ? 0.0f : 0.25f;
        f.signal->moves = {{100.0, c, 0, 0.25f}};
        f.block();
        f.host->idle();
        EXPECT_FLOAT_EQ(c->output()->bufL[99], left) << name;
        EXPECT_FLOAT_EQ(c->output()->bufL[100], left / 2) << name;
        EXPECT_FLOAT_EQ(c->output()->bufR[255], right / 2) << name;
        MadePlugin* p = f.seen(name);
        f.signal->moves = {{128.0, c, paramPower, 0.0f}};
        f.block();
        EXPECT_TRUE(p->running) << "a block switched it off";
        EXPECT_FLOAT_EQ(c->output()->bufL[255], folded ? 0.375f : 0.5f) << name;
        f.host->idle();
        EXPECT_FALSE(p->running);
        f.block();
        c->enable(1);
        f.block();
        EXPECT_FLOAT_EQ(c->output()->bufL[0], left / 2) << name;
        EXPECT_FALSE(p->ranWhileOff);
    }
}

/// Two seconds of silence, and it costs nothing until something comes in.
TEST(CVST, DozesInSilence) {
    PluginFixture f;
    CVST* c = f.insert("gain");
    MadePlugin* p = f.seen("gain");
    float level = 0.0f;
    f.signal->left = f.signal->right = [&](long) { return level; };
    const int blocks = 2 * 44100 / 256 + 2;
    for (int i = 0; i < blocks; i++) f.block();
    EXPECT_EQ(c->idleState, 1);
    const int last = p->blockCount = 0;
    f.block();
    EXPECT_EQ(p->blockCount, last);
    level = 0.5f;
    f.block();
    EXPECT_EQ(p->blockCount, 1);
    EXPECT_FLOAT_EQ(c->output()->bufL[0], 0.5f);
}

/// The interface thread has it to itself for a while: blocks go on without it.
TEST(CVST, WaitsForNobodyInABlock) {
    PluginFixture f;
    CVST* c = f.insert("gain");
    c->setProg(2);
    EXPECT_EQ(f.seen("gain")->program, 0) << "not inside a block";
    f.host->idle();
    EXPECT_EQ(f.seen("gain")->program, 2);
    {
        const BlockThread blocks([&f] { f.block(); });
        for (int i = 0; i < 200; i++) {
            c->setProg(i % 3);
            f.host->idle();
            c->enable(i % 2);
        }
        ASSERT_TRUE(blocks.next());
    }
    EXPECT_FALSE(f.seen("gain")->ranWhileOff);
}

/// State and what the project knows besides come back, whether the plug-in keeps chunks or not.
TEST(CVST, ComesBackFromAProject) {
    for (const char* name : {"gain", "gain-presets", "synth"}) {
        PluginFixture f;
        const std::unique_ptr<CVST> c(f.plug(name));
        MadePlugin* p = f.seen(name);
        c->setParam(0, 0.125f);
        c->setProg(1);
        c->idle();
        c->setParam(2, 0.75f);
        c->mch = 3;
        c->chunkPath = "/banks/a.fxb";
        c->setMacroParam(7, 2);
        c->idle();
        float values[3][3];
        std::copy_n(&p->values[0][0], 9, &values[0][0]);
        const std::string saved = f.bytesOf(c.get());
        const std::unique_ptr<CVST> back(new CVST(f.host));
        back->id = "My own";
        f.read(back.get(), saved);
        back->idle();
        p = f.seen(name);
        for (int i = 0; i < 9; i++)
            EXPECT_EQ((&p->values[0][0])[i], (&values[0][0])[i]) << name << i;
        EXPECT_EQ(p->program, 1);
        EXPECT_EQ(back->id, "My own");
        EXPECT_EQ(back->chunkPath, "/banks/a.fxb");
        EXPECT_EQ(f.bytesOf(back.get()), saved) << name;
        f.host->settle(); // what it asked for, before it goes
    }
}

/// Without its file nothing of it is lost, and it can be found again later.
TEST(CVST, KeepsWhatIsMissing) {
    PluginFixture f;
    const Told told;
    std::unique_ptr<CVST> c(f.plug("gain"));
    c->setParam(0, 0.125f);
    c->mch = 5;
    const std::string saved = f.bytesOf(c.get());
    const std::string path = f.file("gain"),
                      away = f.folder + "/../away-" + std::to_string(getpid()) + ".so";
    std::filesystem::rename(path, away);
    auto* gone = f.add(new CVST(f.host));
    f.read(gone, saved);
    EXPECT_FALSE(gone->opened());
    f.connect(gone);
    f.block();
    EXPECT_EQ(f.bytesOf(gone), saved);
    ASSERT_TRUE(gone->locate(std::filesystem::canonical(away).c_str()));
    EXPECT_EQ(gone->param(0), 0.125f);
    EXPECT_EQ(gone->mch, 5);
    EXPECT_EQ(widthsOf(gone->outputs), std::vector<int>{2});
    std::filesystem::remove(away);
}

/// A project cannot name any file of the disk to be run.
TEST(CVST, LooksInItsFoldersAlone) {
    PluginFixture f;
    PluginFixture other;
    CVST c(f.host);
    other.file("gain");
    inifile = (f.folder + "/settings.ini").c_str();
    c.fileName = (other.folder + "/gain.so").c_str();
    EXPECT_FALSE(c.open(true));
    c.fileName = (f.folder + "/../" + other.folder.substr(5) + "/gain.so").c_str();
    EXPECT_FALSE(c.open(true));
    std::filesystem::create_directories(f.folder + "/deep/er");
    std::filesystem::create_symlink("..", f.folder + "/deep/circle");
    std::filesystem::copy_file(other.folder + "/gain.so", f.folder + "/deep/er/Gain.SO");
    EXPECT_TRUE(c.open(true));
    EXPECT_EQ(c.fileName, (f.folder + "/deep/er/Gain.SO").c_str());
}

/// One step of the history for a gesture at the plug-in's window, and for moves without one.
TEST(CVST, MovesOfItsOwnAreSteps) {
    PluginFixture f;
    CVST* c = f.addPlug("gain");
    MadePlugin* p = f.seen("gain");
    f.hand(p, 1, 0);
    for (const float to : {0.6f, 0.7f, 0.8f}) f.hand(p, 0, 0, to);
    f.hand(p, 2, 0);
    f.hand(p, 0, 2, 0.25f);
    f.hand(p, 0, 2, 0.5f);
    f.host->values->end();
    EXPECT_EQ(f.host->undoList.getCount(), 2);
    f.undo();
    EXPECT_EQ(c->param(2), 0.0f);
    EXPECT_EQ(c->param(0), 0.8f);
    f.undo();
    EXPECT_EQ(c->param(0), 0.5f);
    f.redo();
    EXPECT_EQ(p->values[0][0], 0.8f);
    f.hand(p, 3, 0, 0.3f); // on a thread of its own
    const unsigned before = f.host->changes;
    f.host->idle();
    EXPECT_GT(f.host->changes, before);
    EXPECT_EQ(f.host->undoList.getCount(), 2);
}

/// A latency that appears while it plays is made up for: both impulses come out together.
TEST(CVST, LatencyIsMadeUpFor) {
    PluginFixture f;
    CVST* c = f.addPlug("gain");
    SignalComp *fed = f.add(new SignalComp(f.host)), *dry = f.addSignal();
    f.connect(fed, c);
    fed->left = fed->right = [](long) { return 0.0f; };
    dry->left = dry->right = [](long at) { return at == 2048 ? 0.5f : 0.0f; };
    c->setParam(1, 480.0f / 4096.0f);
    for (int i = 0; i < 8; i++) {
        f.block();
        f.host->idle();
    }
    f.forget();
    f.run(4);
    const auto at = std::ranges::find_if(f.left, [](float v) { return v > 0.1f; });
    EXPECT_EQ(at - f.left.begin(), 480);
}

/// Impulses meet to the frame, whatever the plug-ins in their ways are late by: on a strip, in a
/// group, before it, and on the master.
TEST(CVST, ImpulsesMeetBehindPlugins) {
    for (const bool isolated : {false, true})
        for (const char* late : {"late0", "late480", "late4096"}) {
            SCOPED_TRACE(std::string(late) + (isolated ? ", isolated" : ""));
            RemoteFixture f;
            f.isolates = isolated;
            auto* group = f.add(new CGroupCh(f.host));
            f.connect(group);
            SignalComp *dry = f.addSignal(), *wet = f.addSignal(),
                       *grouped = f.add(new SignalComp(f.host));
            f.connect(grouped, group);
            const auto insertAt = [&](CComp* c, const char* name) {
                CVST* made = f.plug(name);
                const GraphHold hold(f.host);
                c->output()->inserts.add(made);
            };
            insertAt(wet, late);
            insertAt(grouped, "late40");
            insertAt(group, late);
            insertAt(f.host->getAudioOut(), late);
            constexpr int settling = 4, frames = 256;
            for (SignalComp* s : {dry, wet, grouped})
                s->left = s->right = [](long at) { return at == settling * frames ? 0.25f : 0.0f; };
            for (int i = 0; i < settling; i++) {
                f.block();
                f.host->idle();
            }
            f.forget();
            f.run(60);
            EXPECT_EQ(std::ranges::count_if(f.left, [](float v) { return v != 0.0f; }), 1);
            EXPECT_FLOAT_EQ(*std::ranges::max_element(f.left), 0.75f);
        }
}

/// What comes late from another plug-in was earlier in the song.
TEST(CVST, KnowsWhereLateSoundWas) {
    PluginFixture f(480);
    CVST *late = f.insert("late480"), *next = f.plug("gain");
    {
        const GraphHold hold(f.host);
        f.signal->output()->inserts.add(next);
        f.host->hostNotices.raise(HostNotice::delays);
    }
    EXPECT_EQ(late->getDelay(), 480);
    MadePlugin *first = f.seen("late480"), *second = f.seen("gain");
    first->timeMask = second->timeMask = ppqPosValid;
    f.host->start();
    for (int i = 0; i < 4; i++) f.block(480);
    EXPECT_GT(second->time.ppqPos, 0.0);
    EXPECT_NEAR(first->time.ppqPos - second->time.ppqPos, f.host->framesToTicks(480) / 960.0, 1e-9);
}

/// Positions are those of the block's start, though the song has been moved on already, also in its
/// second piece and where the block ends behind the end of the loop.
TEST(CVST, KnowsWhereTheSongIs) {
    struct Song : SeqStub {
        using SeqStub::SeqStub;
        int getLoop() override { return 1; }
        void getLoopSection(int& from, int& to) override { from = 0, to = 9600; }
        void getTimeSig(int& num, int& den) override { num = 3, den = 4; }
    };
    PluginFixture f(512); // a tick is 22.97 frames at 120
    CVST* c = f.addPlug("synth");
    auto* song = f.add(new Song(f.host));
    f.connectMIDI(song, c);
    MadePlugin* p = f.seen("synth");
    p->timeMask = ppqPosValid | barsValid | timeSigValid;
    song->at = 4800.0;
    f.host->start();
    const double blockTicks = f.host->framesToTicks(512);
    for (int i = 0; i < 3; i++) {
        f.block(512);
        EXPECT_NEAR(p->time.ppqPos, (4800.0 + i * blockTicks) / 960.0, 1e-9) << i;
    }
    EXPECT_EQ(p->time.barStartPos, 3.0); // three quarters to the bar
    EXPECT_EQ(p->time.timeSigNumerator, 3);
    EXPECT_EQ(p->time.tempo, 120.0);
    EXPECT_EQ(p->time.cycleEndPos, 10.0);
    EXPECT_EQ(p->time.sampleRate, 44100.0);
    EXPECT_EQ(p->time.samplePos, 2 * 512.0);
    EXPECT_EQ(p->time.flags, ppqPosValid | tempoValid | barsValid | timeSigValid | cycleActive |
                                 cyclePosValid | transportPlaying);
    song->at = 9610.0 - blockTicks; // it comes to the end of the loop within the block
    f.block(512);
    EXPECT_NEAR(p->time.ppqPos, (9610.0 - blockTicks) / 960.0, 1e-9);
    p->timeMask = barsValid;
    f.host->stop();
    f.block(512);
    EXPECT_EQ(p->time.timeSigNumerator, 4);
    EXPECT_EQ(p->time.flags & (transportPlaying | ppqPosValid), 0);
}
