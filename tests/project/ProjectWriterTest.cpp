#include "project/ProjectFixture.h"

#include "effects/CEffect.h"
#include "engine/CGroupCh.h"
#include "instruments/CArp.h"
#include "instruments/CDrumSound.h"
#include "instruments/CSampler.h"
#include "support/Rows.h"

namespace {

constexpr int noteC = 0x643C90;

template <class T>
T* at(const CList& list, int index) {
    return static_cast<T*>(list.items(index));
}

CEffect* addRack(COutputChannel* ch, CQV* host, float wet) {
    auto* rack = new CEffect(host);
    rack->init();
    rack->addChorus();
    rack->wet = wet;
    rack->createBuffers(host->frames);
    rack->listKind = listInsert;
    rack->ownerChannel = ch;
    rack->outPorts.add(new COutputPort(rack));
    ch->inserts.add(rack);
    return rack;
}

void addNotes(CSongTrack* track) {
    auto* part = new CMIDIPart;
    for (const int key : {0, 5, 9}) {
        CMIDIEvent* event = createMIDIEvent();
        event->data = noteC + (key << 8);
        part->addEvent(key * 40, event);
    }
    track->addPart(part, nullptr);
}

void addHits(CSeq* seq, CSongTrack* track) {
    seq->addStandardKit(track->track);
    addRack(track->track->drumSound(1)->output.get(), seq->host, 0.5f);
    auto* part = new CDrumPart;
    for (const int sound : {0, 1}) {
        CDrumEvent* event = createDrumEvent();
        event->sound = sound;
        part->addEvent(sound * 300, event);
    }
    track->addPart(part, nullptr);
}

/// A strip that is gated by another one, and a rack that would follow a bus, were that not muted.
void addKeys(CComp* gated, COutputChannel* by, CEffect* rack, CComp* bus) {
    const GraphHold hold(gated->host);
    CEffect* gate = addRack(gated->output(), gated->host, 1.0f);
    gate->addProg(fxGate);
    gate->setProg(gate->progs.getCount() - 1);
    for (const auto& [keyed, strip] : {std::pair{gate, by}, {rack, bus->output()}})
        keyed->keyInput().cables.add(makeKeyCable(keyed, strip));
    rack->addProg(fxCompressor);
    setCableMute(static_cast<CObject*>(rack->keyInput().cables.getFirst()), true);
}

/// Three groups, of which the one in the middle and either other feed each other.
void addLoops(TestHost& d, CComp* source) {
    CGroupCh* groups[3];
    for (CGroupCh*& group : groups) {
        group = d.add(new CGroupCh(d.host));
        group->output()->moveFader(0.6f);
        group->output()->setVol(0.6f, false);
    }
    d.connect(source, groups[0]);
    for (const int i : {0, 1}) {
        d.connect(groups[i], groups[i + 1]);
        d.connect(groups[i + 1], groups[i]);
    }
    d.connect(groups[2]);
}

/// What the project plays from its start, with a chord from outside.
std::vector<float> play(ProjectFixture& f) {
    f.host->setPos(0);
    f.host->start();
    f.device.forget();
    f.device.run(2);
    for (const int key : {0, 4, 7}) f.device.send(noteC + (key << 8));
    f.device.run(60);
    f.host->stop();
    return f.device.left;
}

/// A project with all that sounds, built and saved, and what it sounds like.
struct Saved {
    std::string bytes;
    std::vector<float> sound;
    Saved();
};

Saved::Saved() {
    ProjectFixture f;
    CQV* host = f.host;
    TestHost& d = f.device;
    auto* arp = d.add(new CArp(host));
    auto* sampler = d.add(new CSampler(host));
    sampler->setProg(1);
    auto* group = d.add(new CGroupCh(host));
    auto* rack = d.add(new CEffect(host));
    auto* seq = d.add(new CSeq(host));
    for (const int kind : {trackMIDI, trackAudio, trackFolder, trackDrum, trackAudio, trackMIDI})
        seq->addTrack(kind, seq->getProg(), nullptr);
    for (int i = 0; i < 2; ++i) host->addSendClicked();
    host->settle();
    d.connectMIDI(d.midiIn, arp);
    d.connectMIDI(seq, sampler);
    d.connectMIDI(arp, sampler);
    d.connect(sampler, group);
    d.connect(group, rack);
    d.connect(rack);
    d.connect(at<CComp>(host->sends, 1), at<CComp>(host->sends, 0));
    addLoops(d, group);

    COutputChannel* ch = sampler->output();
    ch->moveFader(0.7f);
    ch->setVol(0.7f, false);
    ch->sendLevels[0]->level = 0.6f;
    for (const float wet : {0.5f, 1.0f}) addRack(ch, host, wet);
    seq->output(1)->sendLevels[1]->level = 0.8f; // heard from the first frame, were it not muted
    at<CComp>(host->sends, 1)->output()->mute = 1;
    addNotes(at<CSongTrack>(seq->getProg()->tracks, 0));
    addHits(seq, at<CSongTrack>(seq->getProg()->tracks, 3));
    addKeys(group, seq->output(1), rack, at<CComp>(host->sends, 0));
    d.run(1);
    bytes = f.save();
    sound = play(f);
}

} // namespace

TEST(ProjectWriter, AProjectComesBackAsItWas) {
    const Saved saved;
    ProjectFixture f;
    ASSERT_EQ(f.load(saved.bytes), LoadResult::good);
    EXPECT_EQ(shown, std::vector<std::string>{});
    EXPECT_TRUE(f.save() == saved.bytes);
    f.device.out = static_cast<CAudioOut*>(f.host->getAudioOut());
    const std::vector<float> sound = play(f);
    EXPECT_GT(*std::max_element(sound.begin(), sound.end()), 0.01f);
    EXPECT_TRUE(sound == saved.sound);
}

TEST(ProjectWriter, TracksGetTheirChannelsByPosition) {
    using namespace qvf;
    const Saved saved;
    const auto change = [&](const std::string& from, const std::string& to) {
        std::string other = saved.bytes;
        const size_t place = other.find(from, other.find("Sequencer"));
        EXPECT_NE(place, std::string::npos);
        return other.replace(place, from.size(), to);
    };
    const std::string in = item("ain", number(2));
    for (const auto& [what, bytes, midiCables, audioCables] :
         Rows<const char*, std::string, int, int>{
             {"as saved", saved.bytes, 3, 2},
             {"an input port less", change(item("min"), item("zzz")), 0, 2},
             {"an input more", change(in, in + in), 3, 0},
             {"an output more", change(in, item("aout", number(2)) + in), 3, 2},
             {"an output port less", change(item("mout"), ""), 3, 2}}) {
        SCOPED_TRACE(what);
        ProjectFixture f;
        ASSERT_EQ(f.load(bytes), LoadResult::good);
        auto* seq = static_cast<CSeq*>(f.host->firstOfType(compSeq));
        ASSERT_TRUE(seq && seq->tracks.getCount() == 6);
        for (auto* track : seq->tracks) {
            const bool plays = track->kind != trackFolder;
            EXPECT_EQ(track->inPort() != nullptr, plays);
            EXPECT_EQ(track->output() != nullptr, plays && track->kind != trackMIDI);
            EXPECT_EQ(track->input() != nullptr, track->kind == trackAudio);
            EXPECT_EQ(track->outPort() != nullptr, plays && track->kind != trackDrum);
        }
        EXPECT_TRUE(seq->outputs.getCount() == 3 && seq->inPorts.getCount() == 5);
        EXPECT_EQ(seq->midiCables.getCount(), midiCables);
        EXPECT_EQ(seq->audioCables.getCount(), audioCables);
        f.device.run(3);
    }
}

/// What fits into the memory while it is made has room when it is read: 220 instruments with all
/// their factory sounds.
TEST(BigProject, ComesBackWhole) {
    constexpr int instruments = 220;
    ProjectFixture f;
    const int before = f.host->comps.getCount();
    for (int i = 0; i < instruments; ++i) {
        auto* sampler = new CSampler(f.host);
        sampler->init();
        f.host->comps.add(sampler);
    }
    const int programs = f.comp(before)->progs.getCount();
    const std::string bytes = f.save();
    ASSERT_EQ(f.load(bytes), LoadResult::good);
    EXPECT_EQ(shown, std::vector<std::string>{});
    ASSERT_EQ(f.host->comps.getCount(), before + instruments);
    for (int i = before; i < before + instruments; ++i)
        ASSERT_EQ(f.comp(i)->progs.getCount(), programs) << i;
    EXPECT_TRUE(f.save() == bytes);
}
