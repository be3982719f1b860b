#include "project/ProjectFixture.h"
#include "project/QvText.h"

#include "base/Paths.h"
#include "base/Random.h"
#include "effects/CEffect.h"
#include "engine/CFreezeItem.h"
#include "engine/CGroupCh.h"
#include "engine/MidiComps.h"
#include "instruments/CArp.h"
#include "instruments/CDrumSound.h"
#include "instruments/CSampler.h"
#include "sequencer/CEditorComp.h"
#include "sequencer/CSubTrack.h"
#include "sequencer/Points.h"

#include <filesystem>
#include <set>
#include <sstream>

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

CEffect* newRack(CQV* host, float wet) {
    auto* rack = new CEffect(host);
    rack->init();
    rack->addChorus();
    rack->wet = wet;
    rack->createBuffers(host->frames);
    rack->listKind = listInsert;
    return rack;
}

void addInsert(COutputChannel* ch, CEffect* rack) {
    rack->ownerChannel = ch;
    rack->outPorts.add(new COutputPort(rack));
    ch->inserts.add(rack);
}

template <class T>
T* at(const CList& list, int index) {
    return static_cast<T*>(list.items(index));
}

/// A lane for each thing that automation can move, with points for the first.
void addLanes(CQV* host, CTrack* track, CComp* comp, CPart* part) {
    COutputChannel* ch = comp->output();
    auto* bus = at<CComp>(host->sends, 1);
    for (CObject* target : std::initializer_list<CObject*>{
             track->output(), comp, bus, ch, bus->output(), ch->sendLevels[1],
             at<CComp>(ch->inserts, 0), track->output()->sendLevels[0], host, nullptr}) {
        auto* lane = new CSubTrack("Lane", laneAutomation);
        lane->object = target;
        track->addLane(lane, nullptr);
    }
    const int slot = at<CSubTrack>(track->subTracks, 0)->slot;
    for (const float v : {0.2f, 0.9f})
        part->addEventParam(int(v * 1000), createEnvEvent(nullptr, v), slot);
}

CPart* notes() {
    auto* part = new CMIDIPart;
    for (const int key : {0, 5, 9}) {
        CMIDIEvent* event = createMIDIEvent();
        event->data = noteC + (key << 8);
        part->addEvent(key * 40, event);
    }
    return part;
}

CPart* clips(CQV* host) {
    auto* part = new CAudioPart;
    part->multiclip = 1;
    for (int i = 0; i < host->samples.getCount(); i++) {
        CAudioEvent* event = createAudioEvent();
        event->sample = at<CSample>(host->samples, i);
        event->mode = (unsigned char)(i % 2);
        event->end = std::max(0, event->sample->frames - 1);
        event->fadeInMs = float(i);
        part->addEvent(i * 200, event);
    }
    return part;
}

void freeze(CSeq* seq, CSongTrack* t) {
    auto sample = std::make_unique<CSample>();
    sample->streamed = 1;
    ASSERT_TRUE(sample->open(addSep(seq->host->expectedAudioFolder()) + "frozen.wav"));
    auto* item = new CFreezeItem;
    item->setSample(sample.release());
    item->comp = seq;
    item->channel = t->track->output();
    item->songTrack = t;
    t->freezeItems.add(item);
}

void addPoints(CSeqProg* prog) {
    for (const int tick : {0, 3840}) {
        auto* tempo = new CTempoPart;
        auto* signature = new CTimesigPart;
        auto* marker = new CMarkerPart;
        tempo->setTempo(tick ? 180.0f : 93.0f);
        signature->setTimesig(tick ? 7 : 3, 8);
        for (CPart* point : {static_cast<CPart*>(tempo), static_cast<CPart*>(signature),
                             static_cast<CPart*>(marker)}) {
            point->pos = tick;
            point->length = 3840;
        }
        prog->addTempo(tempo, nullptr);
        prog->addTimesig(signature, nullptr);
        prog->addMarker(marker, nullptr);
    }
}

/// Fills the song: a folder, notes with a ghost, audio with lanes, a kit with an insert, a frozen
/// track, two programs, points.
void fill(CSeq* seq, CComp* automated) {
    CQV* host = seq->host;
    CSeqProg* prog = seq->getProg();
    const auto track = [prog](int index) { return at<CSongTrack>(prog->tracks, index); };
    track(0)->track->folder = track(2)->track;
    CPart* first = track(0)->addPart(notes(), nullptr);
    CUndo* step = host->undoStart("Ghost", seq, undoSongChanged);
    CPart* ghost = seq->makeGhost(first, step);
    ghost->pos = 3840;
    track(0)->addPart(ghost, step);
    host->undoEnd(step, true);
    CPart* audio = track(1)->addPart(clips(host), nullptr);
    addLanes(host, track(1)->track, automated, audio);
    seq->addStandardKit(track(3)->track);
    CEffect* rack = newRack(host, 0.5f);
    addInsert(track(3)->track->drumSound(1)->output.get(), rack);
    auto* hits = new CDrumPart;
    for (const int sound : {0, 1}) {
        CDrumEvent* event = createDrumEvent();
        event->sound = sound;
        event->velocity = 0.5f;
        hits->addEvent(sound * 300, event);
    }
    track(3)->addPart(hits, nullptr);
    if (auto* cable = createMIDICable(track(3)->track, track(0)->track->outPort(), nullptr))
        track(3)->track->midiCables.add(cable);
    freeze(seq, track(4));
    addPoints(prog);
    seq->progs.add(seq->createProgram());
    seq->editorComp->setPart(audio);
}

/// A folder for a project, with a file of its own and a frozen one, and a file elsewhere.
struct ProjectFolder {
    TempFolder inside, outside;

    ProjectFolder() {
        std::filesystem::create_directory(inside.file("song_audio").asChar());
        for (const char* name : {"song_audio/own.wav", "song_audio/frozen.wav"})
            writeWav(inside.file(name), 3000);
        writeWav(outside.file("loop.wav"), 9000);
    }
    void enter(CQV* host) const {
        host->projectFile = inside.file("song.qv");
        host->audioFolder = "song_audio";
    }
};

/// A project with all that there can be.
void build(ProjectFixture& f, const ProjectFolder& folder) {
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
    d.connectMIDI(seq, sampler);
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
    for (const float wet : {0.5f, 1.0f}) addInsert(ch, newRack(host, wet));
    seq->output(0)->sendLevels[1]->level = 0.8f; // heard from the first frame, were it not muted
    at<CComp>(host->sends, 1)->output()->mute = 1;
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
    folder.enter(host);
    for (const CStr& file :
         {folder.inside.file("song_audio/own.wav"), folder.outside.file("loop.wav")})
        EXPECT_TRUE(host->addSample(file, 1));
    fill(seq, sampler);
    host->setTempo(93.0f);
    host->ctrlStart = 17;
    host->loop = 0;
    group->hideChs = 1;
    group->editorStruct.left = 33;
    const std::string page = qvf::text("Mixer") + qvf::numbers({0, 0});
    f.ui.windows.pages.emplace_back(page.begin(), page.end());
    f.device.run(1);
}

/// What the project plays from its start, with a chord from outside.
std::vector<float> play(ProjectFixture& f) {
    seedRand(1);
    f.host->setPos(0);
    f.host->start();
    f.device.forget();
    f.device.run(2);
    for (const int key : {0, 4, 7}) f.device.send(noteC + (key << 8));
    f.device.run(60);
    f.host->stop();
    return f.device.left;
}

} // namespace

/// Saved, loaded and saved again gives the same bytes, and the same sound.
TEST(ProjectWriter, AProjectComesBackAsItWas) {
    std::string first, second;
    std::vector<float> before, after;
    const ProjectFolder folder;
    {
        ProjectFixture f;
        build(f, folder);
        first = f.save();
        before = play(f);
    }
    std::istringstream lines(toText(first));
    std::set<std::string> items;
    for (std::string line, item; std::getline(lines, line); items.insert(item))
        std::istringstream(line) >> item;
    for (const std::string& item : itemNames()) EXPECT_TRUE(items.count(item)) << item;
    ProjectFixture f;
    folder.enter(f.host);
    ASSERT_EQ(f.load(first), LoadResult::good);
    EXPECT_EQ(shown, std::vector<std::string>{});
    second = f.save();
    EXPECT_TRUE(first == second) << toText(second);
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
    const ProjectFolder folder;
    std::string bytes;
    {
        ProjectFixture f;
        build(f, folder);
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
        folder.enter(f.host);
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
