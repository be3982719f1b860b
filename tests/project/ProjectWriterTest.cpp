#include "project/ProjectFixture.h"

#include "base/Random.h"
#include "effects/CEffect.h"
#include "engine/CGroupCh.h"
#include "engine/MidiComps.h"
#include "instruments/CArp.h"
#include "instruments/CSampler.h"

namespace {

constexpr int noteC = 0x643C90;

CSample* toneInMemory() {
    auto* sample = new CSample;
    sample->filename = "tone";
    sample->setFormat(22050, 24, 2);
    auto* data = static_cast<unsigned char*>(std::malloc(600));
    for (int i = 0; i < 600; ++i) data[i] = static_cast<unsigned char>(i * 7);
    sample->takeData(data, 100);
    return sample;
}

CSample* missingFile() {
    auto* sample = new CSample;
    sample->streamed = 1;
    sample->filename = "/no/such/take.wav";
    return sample;
}

CMap* mapOf(CObject* target, COutputChannel* owner, CComp* comp, int cc) {
    auto* map = new CMap;
    map->target = target;
    map->owner = owner;
    map->comp = comp;
    map->cc = cc;
    return map;
}

/// A project with every kind of component, cables of both kinds, strips, inserts, sends and maps.
void build(ProjectFixture& f) {
    CQV* host = f.host;
    TestHost& d = f.device;
    auto* arp = d.add(new CArp(host));
    auto* sampler = d.add(new CSampler(host));
    CStr name;
    for (const int program : {3, 5}) sampler->factoryProg(nullptr, program, name, true);
    sampler->setProg(1);
    auto* group = d.add(new CGroupCh(host));
    auto* rack = d.add(new CEffect(host));
    auto* seq = d.add(new CSeq(host));
    for (const int kind : {trackMIDI, trackAudio, trackFolder, trackDrum, trackAudio, trackMIDI})
        seq->addTrack(kind, seq->getProg(), nullptr);
    for (int i = 0; i < 2; ++i) host->addSendClicked();
    host->settle();

    d.connectMIDI(d.midiIn, arp);
    d.connectMIDI(arp, sampler);
    d.connect(sampler, group);
    d.connect(group, rack);
    d.connect(rack);
    d.connect(static_cast<CComp*>(host->sends.items(1)), static_cast<CComp*>(host->sends.items(0)));

    COutputChannel* ch = sampler->output();
    ch->moveFader(0.7f);
    ch->setVol(0.7f, false);
    ch->movePan(0.3f);
    ch->trim = 0.1f;
    ch->sections[2] = 0;
    ch->setEqPower(1, true);
    ch->setEqGain(1, 6.0f);
    ch->sendLevels[0]->level = 0.6f;
    ch->sendLevels[1]->level = 0.4f;
    for (const float wet : {0.5f, 1.0f}) {
        auto* insert = new CEffect(host);
        insert->init();
        insert->addChorus();
        insert->wet = wet;
        insert->createBuffers(host->frames);
        insert->listKind = listInsert;
        insert->ownerChannel = ch;
        ch->inserts.add(insert);
    }
    seq->output(2)->mute = 1;
    seq->output(1)->setEqFrequency(2, 500.0f);

    auto* maps = static_cast<CMapProg*>(host->maps.first());
    auto* insert = static_cast<CComp*>(ch->inserts.items(1));
    maps->items.add(mapOf(insert, ch, sampler, 1));
    maps->items.add(mapOf(ch->sendLevels[1], ch, sampler, 2));
    maps->items.add(mapOf(seq->output(1), nullptr, seq, 3));
    maps->items.add(mapOf(group, nullptr, nullptr, 4));
    maps->items.add(mapOf(nullptr, nullptr, nullptr, 5));
    host->samples.add(toneInMemory());
    host->samples.add(missingFile());
    host->setTempo(93.0f);
    host->ctrlStart = 17;
    host->loop = 0;
    group->hideChs = 1;
    group->editorStruct.left = 33;
    f.ui.windows.pages.push_back({1, 2, 3});
    f.device.run(1);
}

/// What the project plays from a fresh start, with a chord from outside.
std::vector<float> play(ProjectFixture& f) {
    seedRand(1);
    f.device.forget();
    f.device.run(2);
    for (const int key : {0, 4, 7}) f.device.send(noteC + (key << 8));
    f.device.run(60);
    return f.device.left;
}

} // namespace

/// Saved, loaded and saved again gives the same bytes, and the same sound.
TEST(ProjectWriter, AProjectComesBackAsItWas) {
    std::string first, second;
    std::vector<float> before, after;
    {
        ProjectFixture f;
        build(f);
        first = f.save();
        before = play(f);
    }
    ProjectFixture f;
    ASSERT_EQ(f.load(first), LoadResult::good);
    EXPECT_EQ(shown, std::vector<std::string>{});
    second = f.save();
    EXPECT_TRUE(first == second) << first.size() << " and " << second.size() << " bytes";
    const auto* maps = static_cast<CMapProg*>(f.host->maps.first());
    EXPECT_EQ(maps->items.getCount(), 4) << "all that have a target";

    f.device.out = static_cast<CAudioOut*>(f.host->getAudioOut());
    after = play(f);
    ASSERT_EQ(before.size(), after.size());
    float peak = 0.0f;
    for (const float v : before) peak = std::max(peak, std::abs(v));
    EXPECT_GT(peak, 0.01f);
    for (size_t i = 0; i < before.size(); ++i) ASSERT_EQ(before[i], after[i]) << "frame " << i;
}

/// The tracks of a song take their channels by position, whatever the file has of them.
TEST(ProjectWriter, TracksGetTheirChannelsByPosition) {
    using namespace qvf;
    std::string bytes;
    {
        ProjectFixture f;
        build(f);
        bytes = f.save();
    }
    const auto change = [&bytes](const std::string& from, const std::string& to) {
        std::string other = bytes;
        const size_t seq = other.find("Sequencer"), at = other.find(from, seq);
        EXPECT_NE(at, std::string::npos);
        return other.replace(at, from.size(), to);
    };
    const struct {
        const char* what;
        std::string bytes;
        int midiCables, audioCables; ///< that arrive at the sequencer
    } cases[] = {
        {"as saved", bytes, 3, 2},
        {"an input port less", change(item("min"), item("zzz")), 0, 2},
        {"an input more",
         change(item("ain", number(2)), item("ain", number(2)) + item("ain", number(2))), 3, 0},
        {"an output more",
         change(item("ain", number(2)), item("aout", number(2)) + item("ain", number(2))), 3, 2},
        {"an output port less", change(item("mout"), ""), 3, 2},
    };
    for (const auto& c : cases) {
        ProjectFixture f;
        ASSERT_EQ(f.load(c.bytes), LoadResult::good) << c.what;
        auto* seq = static_cast<CSeq*>(f.host->firstOfType(compSeq));
        ASSERT_TRUE(seq && seq->tracks.getCount() == 6) << c.what;
        for (auto* track : each<CTrack>(seq->tracks)) {
            const bool plays = track->kind != trackFolder;
            EXPECT_EQ(track->inPort() != nullptr, plays) << c.what;
            EXPECT_EQ(track->output() != nullptr, plays && track->kind != trackMIDI) << c.what;
            EXPECT_EQ(track->input() != nullptr, track->kind == trackAudio) << c.what;
            EXPECT_EQ(track->outPort() != nullptr, plays && track->kind != trackDrum) << c.what;
        }
        EXPECT_EQ(seq->outputs.getCount(), 3) << c.what;
        EXPECT_EQ(seq->inPorts.getCount(), 5) << c.what;
        EXPECT_EQ(seq->midiCables.getCount(), c.midiCables) << c.what;
        EXPECT_EQ(seq->audioCables.getCount(), c.audioCables) << c.what;
        f.device.run(3);
    }
}

/// What this program cannot make stays in the file, cables and content included.
TEST(ProjectWriter, UnknownComponentsAreKept) {
    using namespace qvf;
    ProjectFixture f;
    const std::string alien = comp("comp2", 77, 1, "Alien", std::string("any\0thing", 9), 0, 4);
    ASSERT_EQ(f.load(file(alien + item("aout", number(2)) + comp("comp2", 13, 1, "Out") +
                          item("ain", number(2)) + cable("ac", 0, 0, 0, 0, 1, 0))),
              LoadResult::good);
    const std::string again = f.save();
    EXPECT_NE(again.find(alien), std::string::npos);
    EXPECT_NE(again.find(cable("ac", 0, 0, 0, 0, 1, 0)), std::string::npos);
}
