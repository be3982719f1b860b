#include "engine/MidiBytes.h"
#include "engine/StoredValue.h"
#include "engine/ValueDoor.h"
#include "plugins/RemoteFixture.h"
#include "plugins/scan/PluginScan.h"

namespace {

class EachFormat : public testing::TestWithParam<std::tuple<const char*, bool>> {
protected:
    EachFormat() { f.isolates = std::get<1>(GetParam()); }
    std::string named(const char* stem) const {
        return stem + std::string(std::get<0>(GetParam()));
    }
    static float last(CVST* c) { return c->output()->bufL[255]; }

    RemoteFixture f;
};

} // namespace

INSTANTIATE_TEST_SUITE_P(PluginFormats, EachFormat,
                         testing::Combine(testing::Values(".lv2", ".clap", ".vst3"),
                                          testing::Bool()));

/// Parameters, their texts, latency and state are those of the plug-in, and come back with the
/// project, which names it in a block that older readers pass over.
TEST_P(EachFormat, IsPlayedAndKept) {
    CVST* c = f.insert(named("gain"));
    ASSERT_NE(c, nullptr);
    EXPECT_EQ(c->id, "gain");
    EXPECT_EQ(c->inputs.getCount(), 1);
    EXPECT_EQ(c->output()->channels, 2);
    f.signal->left = f.signal->right = [](long) { return 0.5f; };
    ASSERT_EQ(c->numParams(), 3);
    EXPECT_EQ(c->paramName(0), "gain");
    EXPECT_FLOAT_EQ(c->param(0), 0.5f);
    c->setParam(0, 0.125f);
    c->setParam(1, 0.5f);
    EXPECT_EQ(c->paramText(0), "0.25 x");
    ASSERT_TRUE(f.until([&] { return last(c) == 0.125f && c->getDelay() == 2048; }));
    const std::string state = f.bytesOf(c);
    EXPECT_EQ(state.find("filename"), std::string::npos);
    EXPECT_NE(state.find(f.file(named("gain"))), std::string::npos);
    CVST twin(f.host);
    twin.init();
    f.read(&twin, state);
    ASSERT_TRUE(twin.opened());
    EXPECT_FLOAT_EQ(twin.param(0), 0.125f);
    EXPECT_FLOAT_EQ(twin.param(1), 0.5f);
    EXPECT_EQ(f.bytesOf(&twin), state);
    f.read(&twin, state.substr(0, state.size() / 2));
    f.host->setRate(48000.0f);
    f.host->setFrames(128);
    f.block(128);
    EXPECT_EQ(c->output()->bufL[127], 0.125f) << "at another rate";
    EXPECT_EQ(c->faults, 0u);
}

/// Notes come at their frame, and go out again.
TEST_P(EachFormat, HearsNotes) {
    CVST* c = f.addPlug(named("gain"));
    auto* player = f.add(new SignalComp(f.host));
    f.connectMIDI(player, c);
    player->messages = {{10.0, asData(midiNoteOn, 60, 127)}};
    f.block();
    EXPECT_GE(last(c), 1.0f);
    if (const CMIDIQ* port = c->outPort()) {
        ASSERT_EQ(port->count, 1);
        EXPECT_EQ(port->events[0].data, asData(midiNoteOn, 72, 127));
        EXPECT_EQ(port->events[0].time, 10.0);
    }
    player->messages = {{10.0, asData(midiNoteOff, 60, 0)}};
    f.block();
    EXPECT_LT(last(c), 0.5f);
}

/// Another format takes its place with the values that have the same names, and goes again with the
/// step.
TEST_P(EachFormat, BecomesAnother) {
    CVST* c = f.insert("gain.clap");
    f.signal->left = f.signal->right = [](long) { return 0.5f; };
    c->setParam(0, 0.125f);
    const CStr former = c->fileName, other = f.file(named("gain")).c_str();
    EXPECT_FALSE(c->become(f.file("bad-null.clap").c_str()));
    EXPECT_EQ(c->fileName, former);
    ASSERT_TRUE(c->become(other));
    EXPECT_EQ(c->fileName, other);
    ASSERT_TRUE(f.until([&] { return last(c) == 0.125f; }));
    c->setParam(0, 0.5f);
    f.undo();
    ASSERT_TRUE(f.until([&] { return c->fileName == former && last(c) == 0.125f; }));
    EXPECT_EQ(c->faults, 0u);
}

/// One that is not there is given way to by another format with the values that the project tells;
/// with the step it is missing again, with all that was kept of it.
TEST_P(EachFormat, StandsInForAMissingOne) {
    CVST* made = f.insert("lost.clap");
    made->setParam(0, 0.125f);
    const std::string state = f.bytesOf(made);
    const CStr other = f.file(named("gain")).c_str();
    std::filesystem::remove(f.folder + "/lost.clap");
    CVST* c = f.insert(named("gain"));
    f.signal->left = f.signal->right = [](long) { return 0.5f; };
    f.read(c, state);
    EXPECT_FALSE(c->opened());
    EXPECT_EQ(c->missing().name, "lost");
    EXPECT_EQ(c->missing().vendor, "Test makers");
    EXPECT_FALSE(c->becomeMissing(f.file("bad-null.clap").c_str()));
    EXPECT_EQ(f.bytesOf(c), state);
    ASSERT_TRUE(c->becomeMissing(other));
    ASSERT_TRUE(f.until([&] { return last(c) == 0.125f; }));
    f.undo();
    ASSERT_TRUE(f.until([&] { return !c->opened(); }));
    EXPECT_EQ(f.bytesOf(c), state);
    f.redo();
    ASSERT_TRUE(f.until([&] { return c->opened() && last(c) == 0.125f; }));
    f.read(c, state.substr(0, state.size() - 20));
    EXPECT_EQ(c->missing().params.size(), 0u) << "cut short";
}

/// What counts is the number that both tell, where a share means another one in another format.
TEST(OtherFormat, KeepsNumbers) {
    PluginFixture f;
    CVST* c = f.insert("gain.clap");
    c->setParam(0, 0.125f);
    ASSERT_EQ(c->paramText(0), "0.25 x");
    ASSERT_TRUE(c->become(f.file("gain").c_str()));
    EXPECT_EQ(c->paramText(0), "0.25 x");
    EXPECT_NEAR(c->param(0), 0.25, 0.005);
}

/// What a block puts off is done beside it, and is part of the state; a preset is a program.
TEST(Lv2, WorksBesideBlocks) {
    for (const bool isolated : {false, true}) {
        RemoteFixture f;
        f.isolates = isolated;
        CVST* c = f.addPlug("gain.lv2");
        auto* player = f.add(new SignalComp(f.host));
        f.connectMIDI(player, c);
        player->messages = {{0.0, asData(midiNoteOn, 60, 1)}, {1.0, asData(midiNoteOff, 60, 0)}};
        f.block();
        player->messages.clear();
        const auto counted = [&] { return c->output()->bufL[255] == 0.001f; };
        ASSERT_TRUE(f.until(counted));
        const std::string state = f.bytesOf(c);
        ASSERT_EQ(c->numProgs(), 2);
        EXPECT_EQ(c->getProgName(1), "Half");
        c->setProg(1);
        c->idle();
        EXPECT_FLOAT_EQ(c->param(0), 0.25f);
        c->setProg(0);
        ASSERT_TRUE(f.until([&] { return c->param(0) == 0.5f; }));
        auto* twin = new CVST(f.host);
        twin->init();
        f.read(twin, state);
        twin->setupIO();
        twin->createBuffers(256);
        {
            const GraphHold hold(f.host);
            f.host->comps.add(twin);
        }
        f.connect(twin);
        f.block();
        EXPECT_EQ(twin->output()->bufL[255], 0.001f) << "with what it has stored";
    }
}

/// A property with a number is a parameter behind the ports: as the plug-in tells it, as it is set,
/// and as the project keeps it, at another rate as well.
TEST(Lv2, SetsPropertiesByMessages) {
    for (const bool isolated : {false, true}) {
        RemoteFixture f;
        SCOPED_TRACE(isolated);
        f.isolates = isolated;
        CVST* c = f.insert("patched.lv2");
        const auto plays = [&](float wanted) {
            return f.until([&] { return c->output()->bufL[255] == wanted; });
        };
        ASSERT_EQ(c->numParams(), 4);
        EXPECT_EQ(c->paramName(3), "Depth");
        f.signal->left = f.signal->right = [](long) { return 0.0f; };
        ASSERT_TRUE(plays(0.25f));
        std::vector<StoredValue> stored; // what a step of the history begins with
        c->listParam(3, stored);
        ASSERT_TRUE(f.until([&] { return stored[0].get()[0] == 0.125; })) << "as it has told";
        EXPECT_EQ(c->param(3), 0.125f);
        const std::string begun = f.bytesOf(c);
        f.host->values->setParam(c, 3, 0.5f);
        f.host->values->end();
        ASSERT_TRUE(plays(1.0f));
        EXPECT_EQ(c->paramText(3), "1.00");
        f.undo();
        ASSERT_TRUE(plays(0.25f));
        EXPECT_EQ(f.bytesOf(c), begun);
        f.redo();
        const std::string state = f.bytesOf(c);
        f.host->setRate(48000.0f);
        ASSERT_TRUE(plays(1.0f));
        f.read(c, begun);
        ASSERT_TRUE(plays(0.25f));
        f.read(c, state);
        ASSERT_TRUE(plays(1.0f));
        EXPECT_EQ(c->faults, 0u);
    }
}

/// A property that is a file is no parameter: the plug-in is given one by a step, and has it where
/// the project is opened again, at another rate as well.
TEST(Lv2, IsGivenFiles) {
    for (const bool isolated : {false, true}) {
        RemoteFixture f;
        SCOPED_TRACE(isolated);
        f.isolates = isolated;
        CVST* c = f.insert("patched.lv2");
        const std::string one = f.folder + "/a name/one";
        const auto has = [&](float wanted, const std::string& path) {
            return f.until([&] {
                return c->output()->bufL[255] == wanted &&
                       c->loaded()->files().at(0).path == path.c_str();
            });
        };
        f.signal->left = f.signal->right = [](long) { return 0.0f; };
        ASSERT_TRUE(has(0.25f, "/usual")) << "as it tells";
        EXPECT_EQ(c->loaded()->files()[0].name, "File");
        c->giveFile(0, one.c_str());
        ASSERT_TRUE(has(1.25f, one));
        const std::string state = f.bytesOf(c);
        f.undo();
        ASSERT_TRUE(has(0.25f, "/usual"));
        f.redo();
        ASSERT_TRUE(has(1.25f, one));
        c->giveFile(0, (one + "\n").c_str());
        c->giveFile(1, "/other");
        f.host->setRate(48000.0f);
        ASSERT_TRUE(has(1.25f, one));
        c->giveFile(0, "/other");
        ASSERT_TRUE(has(0.25f, "/other"));
        f.read(c, state);
        ASSERT_TRUE(has(1.25f, one));
        EXPECT_EQ(c->faults, 0u);
    }
}

/// Preset files are programs: one of another plug-in, or that ends too early, changes nothing.
TEST(Vst3, PlaysPresetFiles) {
    RemoteFixture f;
    const std::string home = std::getenv("HOME"), key = "01" + std::string(30, '0');
    setenv("HOME", f.folder.c_str(), 1);
    const std::string folder = f.folder + "/.vst3/presets/Test makers/gain/";
    std::filesystem::create_directories(folder);
    const auto preset = [&](const char* name, const std::string& of, int64_t bytes) {
        const double values[] = {0.125, 0.5, 0.0};
        const int64_t list = 48 + int64_t(sizeof values), at = 48;
        const int one = 1;
        std::ofstream out(folder + name + ".vstpreset", std::ios::binary);
        const auto put = [&](const auto& v) {
            out.write(reinterpret_cast<const char*>(&v), sizeof v);
        };
        out << "VST3", put(one), out << of, put(list);
        out.write(reinterpret_cast<const char*>(values), sizeof values);
        out << "List", put(one), out << "Comp", put(at), put(bytes);
    };
    preset("A foreign one", std::string(32, 'A'), 24);
    preset("B damaged one", key, 1 << 20);
    preset("Quiet", key, 24);
    for (const bool isolated : {false, true}) {
        f.isolates = isolated;
        CVST* c = f.addPlug("gain.vst3");
        ASSERT_EQ(c->numProgs(), 4);
        EXPECT_EQ(c->getProgName(3), "Quiet");
        const auto playsWith = [&](int program, float wanted) {
            c->setProg(program);
            return f.until([&] { return c->param(0) == wanted; }) ? c->getProg() : -1;
        };
        EXPECT_EQ(playsWith(3, 0.125f), 3);
        EXPECT_EQ(playsWith(1, 0.125f), 3);
        EXPECT_EQ(playsWith(2, 0.125f), 3);
        const std::string state = f.bytesOf(c);
        EXPECT_EQ(playsWith(0, 0.5f), 0);
        f.read(c, state);
        EXPECT_EQ(c->getProg(), 3);
        EXPECT_EQ(c->param(0), 0.125f);
    }
    setenv("HOME", home.c_str(), 1);
}

/// A file may hold several, which are found by their names; what a bundle tells without a library,
/// or without a plug-in, spoils nothing; one effect in three formats is one line.
TEST(PluginScan, FindsAllFormats) {
    RemoteFixture f;
    std::filesystem::create_directory(f.folder + "/texts.lv2");
    std::ofstream(f.folder + "/texts.lv2/manifest.ttl") << "";
    f.file("lost.lv2");
    std::filesystem::remove(f.folder + "/lost.lv2/lost.so");
    for (const char* name : {"gain", "gain.lv2", "gain.clap", "gain.vst3", "two.clap",
                             "bad-crashes-load.clap", "bad-hangs-load.clap",
                             "bad-crashes-open.clap", "bad-channels129.clap", "bad-channels0.clap"})
        f.file(name);
    PluginList list((f.folder + "/list.txt").c_str());
    PluginScan scan(list, builtFile("bin/sondrava-plugins").c_str());
    scan.limit = std::chrono::milliseconds(2000);
    scan.add(list.compare({(f.folder + "/texts.lv2").c_str()}));
    ASSERT_TRUE(comes([&] { return scan.poll(), !scan.busy(); }));
    EXPECT_EQ(list.all().size(), 1u);
    EXPECT_TRUE(list.usable().empty());
    for (const auto& entry : std::filesystem::directory_iterator(f.folder))
        if (PluginFile::formatOf(entry.path().c_str()) != PluginFormat::vst2 ||
            entry.path().extension() == ".so")
            scan.add({entry.path().c_str()});
    ASSERT_TRUE(comes([&] { return scan.poll(), !scan.busy(); }));
    const auto why = [&](const char* name) {
        const auto* entry = list.find((f.folder + "/" + name).c_str());
        return entry ? entry->why : CStr("none");
    };
    EXPECT_EQ(why("bad-crashes-load.clap"), "It crashed (Segmentation fault).");
    EXPECT_EQ(why("bad-hangs-load.clap"), "It took longer than 2 seconds.");
    EXPECT_EQ(why("bad-crashes-open.clap"), "It crashed (Segmentation fault).");
    EXPECT_EQ(why("bad-channels129.clap"), "The plug-in has more than 128 inputs or outputs.");
    EXPECT_NE(why("lost.lv2").pos("cannot open shared object file"), -1);
    std::vector<std::string> told;
    for (const PluginList::Effect& effect : list.effects()) {
        std::string line = effect.front()->facts.name.asChar();
        for (const auto* one : effect) line += std::string(", ") + formatName(one->format());
        told.push_back(line);
    }
    EXPECT_EQ(told,
              (std::vector<std::string>{"bad-channels0, CLAP", "gain, VST 2, VST 3, CLAP, LV2",
                                        "two, CLAP", "two second, CLAP"}));
    const std::unique_ptr<CVST> second(
        newPlugin(f.host, (f.file("two.clap") + "::made.second.two").c_str()));
    ASSERT_TRUE(second);
    EXPECT_EQ(second->id, "two second");
    EXPECT_TRUE(list.compare({f.file("gain.lv2").c_str()}).empty());
    std::ofstream(f.file("gain.lv2") + "/gain.so", std::ios::app) << " ";
    EXPECT_EQ(list.compare({f.file("gain.lv2").c_str()}).size(), 1u) << "its library is another";
}
