#include "interchange/DawFiles.h"
#include "audiofiles/CSample.h"
#include "base/CIniFile.h"
#include "base/CStream.h"
#include "common/fx/CEQ.h"
#include "engine/CGroupCh.h"
#include "engine/Cables.h"
#include "engine/GraphHold.h"
#include "engine/MidiBytes.h"
#include "instruments/CSampler.h"
#include "interchange/ZipFile.h"
#include "plugins/CVST.h"
#include "plugins/MadeFile.h"
#include "plugins/scan/PluginScan.h"
#include "project/ProjectFixture.h"
#include "project/SongSounds.h"
#include "sequencer/edit/StripEdits.h"
#include "sequencer/song/CSubTrack.h"
#include "sequencer/song/Points.h"
#include "support/Told.h"

#include <cstdio>

namespace {

/// A song in a host of its own.
struct SongFixture : ProjectFixture {
    CSeq* seq = addSequencer(host);
    CSeqProg* prog = seq->getProg();
    const TempFolder folder;

    CSongTrack* track(int kind, const char* name) {
        CSongTrack* made = seq->addTrack(kind, prog, nullptr);
        made->track->id = name;
        return made;
    }
    static CMIDIEvent* message(int data, int length = 0) {
        CMIDIEvent* event = createMIDIEvent();
        event->data = data;
        event->length = length;
        return event;
    }
    CSubTrack* lane(CSongTrack* on, CObject* object, int param, int target = targetParam) {
        auto* made = new CSubTrack("lane", laneAutomation);
        made->object = object;
        made->param = param;
        made->target = target;
        return on->track->addLane(made, nullptr);
    }
    static void point(CPart* part, const CSubTrack* on, int tick, float value, int shape = 0) {
        CEnvEvent* event = createEnvEvent(nullptr, value);
        event->shape = static_cast<unsigned char>(shape);
        part->addEventParam(tick, event, on->slot);
    }
    void fill();
    void fillTimes();
    void fillNotes();
    void fillAudio();
};

void SongFixture::fillTimes() {
    const struct {
        int tick;
        float bpm;
        bool ramp;
    } tempos[] = {{0, 90, false}, {3840, 100, true}, {7680, 140, false}};
    for (const auto& t : tempos) {
        auto* made = new CTempoPart;
        made->pos = t.tick;
        made->setTempo(t.bpm);
        made->ramp = t.ramp;
        prog->addTempo(made, nullptr);
    }
    for (const int tick : {0, 5760}) {
        auto* made = tick ? new CTimesigPart(3, 8) : new CTimesigPart(4, 4);
        made->pos = tick;
        prog->addTimesig(made, nullptr);
    }
    auto* marker = new CMarkerPart;
    marker->id = "Verse <1>";
    marker->pos = 1920;
    prog->addMarker(marker, nullptr);
}

/// Two parts side by side, the second one cut in front, muted, and moved by automation.
void SongFixture::fillNotes() {
    CSongTrack* notes = track(trackMIDI, "Lead & co");
    notes->track->channel = 2;
    CSampler* synth = addSynthesizer(seq, notes->track, 3);
    setStrip(synth, 0.5f, -0.5f);
    synth->output()->sendLevels[0]->level = 0.25f;
    synth->output()->setEqPower(2, true);
    synth->output()->setEqFrequency(2, 250.0f);
    synth->output()->setEqGain(2, -6.0f);
    synth->output()->setEqType(0, eqLowPass);
    CComp* band = groupStrips(host, {synth->output()});
    band->id = "Band";
    band->output()->vol = 0.5f;
    band->output()->pan = 1.0f;
    CPart* first = new CMIDIPart;
    first->id = "One";
    first->addEvent(0, message(asData(midiNoteOn, 60, 100), 480));
    first->addEvent(480, message(asData(midiController, 1, 127)));
    first->addEvent(481, message(asData(midiPitchBend, 127, 127)));
    first->addEvent(960, message(asData(midiNoteOn, 64, 1), 961));
    first->addEvent(970, message(asData(midiPressure, 127, 0)));
    CPart* second = new CMIDIPart;
    second->id = "Two";
    second->pos = 3840;
    second->offset = -960;
    second->length = 1920;
    second->addEvent(960, message(asData(midiNoteOn, 72, 64), 240));
    second->setMuted(true);
    first = notes->addPart(first, nullptr);
    second = notes->addPart(second, nullptr);
    const CSubTrack* volume = lane(notes, synth->output(), 0);
    point(first, volume, 0, 0.5f);
    point(first, volume, 3840, 1.0f);
    point(second, volume, 960, 0.25f, 1);
    point(second, volume, 1920, 0.75f);
    const CSubTrack* wheel = lane(notes, nullptr, 74, targetController);
    point(first, wheel, 960, 1.0f);
}

void SongFixture::fillAudio() {
    writeWav(folder.file("tone.wav"), 88200);
    CSample* sample = host->addSample(folder.file("tone.wav"), 1);
    CSongTrack* audio = track(trackAudio, "Voice");
    audio->setMuted(true);
    const auto clip = [&](int mode, int start, int frames) {
        CAudioEvent* event = createAudioEvent();
        event->sample = sample;
        event->mode = static_cast<unsigned char>(mode);
        event->start = start;
        event->end = start + frames - 1;
        event->ticks = 960;
        return event;
    };
    auto* single = new CAudioPart;
    single->id = "Word";
    single->pos = 960;
    CAudioEvent* own = clip(0, 4410, 44100);
    own->fadeInMs = 20.0f;
    own->fadeOutMs = 30.0f;
    single->addEvent(0, own);
    audio->addPart(single, nullptr);
    auto* several = new CAudioPart;
    several->id = "Words";
    several->pos = 7680;
    several->multiclip = 1;
    several->addEvent(0, clip(2, 0, 44100));
    CAudioEvent* tuned = clip(0, 22050, 22050);
    tuned->semitones = 12;
    tuned->gain = 0.5f;
    several->addEvent(1920, tuned);
    audio->addPart(several, nullptr);
}

void SongFixture::fill() {
    auto bus = std::make_unique<CGroupCh>(host);
    bus->init();
    bus->id = "Hall";
    bus->createBuffers(host->frames);
    addSendBus(std::move(bus));
    host->settle();
    fillTimes();
    fillNotes();
    fillAudio();
    CSongTrack* drums = track(trackDrum, "Kit");
    seq->addStandardKit(drums->track);
    CPart* part = new CDrumPart;
    part->id = "Beat";
    CDrumEvent* hit = createDrumEvent();
    hit->sound = 2;
    part->addEvent(480, hit);
    drums->addPart(part, nullptr);
}

std::string outputOf(const std::string& command) {
    std::string all;
    std::FILE* pipe = popen(command.c_str(), "r");
    char block[4096];
    for (size_t n; pipe && (n = std::fread(block, 1, sizeof block, pipe)) > 0;)
        all.append(block, n);
    EXPECT_EQ(pipe ? pclose(pipe) : -1, 0) << all;
    return all;
}

std::string xmlOf(const CStr& path) {
    std::string xml;
    EXPECT_TRUE(ZipReader(path.asChar()).read("project.xml", 1 << 24, xml));
    return xml;
}

std::vector<std::string> linesOf(const std::vector<CStr>& lost) {
    std::vector<std::string> lines;
    for (const CStr& line : lost) lines.push_back(line.asChar());
    return lines;
}

} // namespace

/// What another reader finds in the file is what the song was made of.
TEST(DawFiles, HoldTheSongAsAnotherReaderSees) {
    SongFixture song;
    song.fill();
    std::vector<CStr> lost;
    ASSERT_EQ(exportDawProject(song.seq, song.folder.file("a.dawproject"), lost), DawResult::good);
    EXPECT_EQ(lost.size(), 0u) << linesOf(lost).front();
    const std::string told = outputOf(std::string("/usr/bin/python3 " READER " ") +
                                      song.folder.file("a.dawproject").asChar());
    const char* expected[] = {
        "tempo 90.0000 signature 4/4", // of the points at the start
        "track0 notes Lead & co regular volume 0.2500 pan 0.2500 mute false to Band send 0.0625 "
        "band lowPass 10000 0.0 off band bell 2000 0.0 off band bell 250 -6.0 on "
        "band lowShelf 100 0.0 off",
        "track1 audio Voice regular volume 1.0000 pan 0.5000 mute true to Audio Out",
        "track2 notes Kit regular volume 1.0000 pan 0.5000 mute false to Audio Out",
        "track3 audio Band submix volume 0.2500 pan 1.0000 mute false to Audio Out",
        "track4 audio Hall effect volume 1.0000 pan 0.5000 mute false to Audio Out",
        "track0 clip 0.0000 4.0000 0.0000",
        "track0> note 0.0000 0.5000 2 60 100",
        "track0> note 1.0000 1.0010 2 64 1",
        "track0> points channelController 2 1 0.5000=1.0000_",
        "track0> points pitchBend 2 0.5010=1.0000_",
        "track0> points channelPressure 2 1.0104=1.0000_",
        "track0 clip 4.0000 2.0000 1.0000 off",
        "track0> note 1.0000 0.2500 2 72 64",
        "track0 points volume0 0.0000=0.2500/ 4.0000=1.0000_ 4.0000=0.0625_ 5.0000=0.5625_",
        "track0 points channelController 2 74 1.0000=1.0000_",
        "track1> audio audio/tone.wav None ",
        "track1 clip 8.0000 4.0000 0.0000",
        "track1>> audio audio/tone.wav stretch 0.0000:0.0000 1.0000:1.0000",
        "track1>> audio audio/tone.wav repitch 0.0000:0.5000 0.2500:1.0000",
        "track1>> points gain 0.0000=0.5000_",
        "track2> note 0.5000 0.2500 0 38 127",
        "marker 2.0000 Verse <1>",
        "tempo 4.0000=100.0000 linear",
        "tempo 8.0000=140.0000 hold",
        "signature 6.0000 3/8"};
    for (const char* line : expected)
        EXPECT_NE((told + "\n").find(std::string(line) + "\n"), std::string::npos)
            << line << "\nis not in\n"
            << told;
    // One second at 90 beats a minute, from the tenth of a second of the file on, with its fades.
    EXPECT_NE(told.find("track1 clip 1.0000 1.5000 0.1000 fades 0.0200 0.0300"), std::string::npos)
        << told;
}

/// A song that went out and came back goes out as the same file, and its history knows one step.
TEST(DawFiles, ComeBackAsTheSameSong) {
    const TempFolder folder;
    const CStr first = folder.file("a.dawproject"), second = folder.file("b.dawproject");
    std::vector<CStr> lost;
    {
        SongFixture song;
        song.fill();
        ASSERT_EQ(exportDawProject(song.seq, first, lost), DawResult::good);
    }
    SongFixture back;
    ASSERT_EQ(importDawProject(back.seq, first, lost), DawResult::good);
    EXPECT_EQ(lost.size(), 0u) << linesOf(lost).front();
    back.host->settle();
    ASSERT_EQ(exportDawProject(back.seq, second, lost), DawResult::good);
    const std::string a = xmlOf(first), b = xmlOf(second);
    size_t at = 0;
    while (at < a.size() && at < b.size() && a[at] == b[at]) at++;
    EXPECT_TRUE(a == b) << "went out as\n"
                        << a.substr(at > 300 ? at - 300 : 0, 600) << "\ncame back as\n"
                        << b.substr(at > 300 ? at - 300 : 0, 600);
    const std::string devices[] = {"devices/0.qvs", "devices/1.qvs"};
    for (const std::string& name : devices) {
        std::string was, is;
        EXPECT_TRUE(ZipReader(first.asChar()).read(name, 1 << 24, was) &&
                    ZipReader(second.asChar()).read(name, 1 << 24, is) && was == is)
            << name;
    }
    back.device.undo();
    EXPECT_EQ(back.seq->tracks.getCount() + back.prog->tempos.getCount(), 0);
    EXPECT_EQ(back.host->sends.getCount(), 0);
    EXPECT_EQ(back.host->firstOfType(compGroupCh), nullptr);
}

/// Plug-ins go out with their state as other programs keep it, and come back with it; one that this
/// machine has not, or that has no element, is told.
TEST(DawFiles, CarryPlugInsWithTheirState) {
    const TempFolder folder;
    const char* const names[] = {"gain.vst3", "gain.clap", "gain", "gain.lv2"};
    const CStr former = std::exchange(inifile, folder.file("settings.ini"));
    CIniFile(inifile).writeString("VSTFolders", "0", folder.path);
    PluginList list(folder.file("list.txt"));
    PluginScan scan(list, builtFile("bin/sondrava-plugins").c_str());
    std::vector<CStr> files;
    for (const char* name : names) files.push_back(madeFile(folder.path.asChar(), name).c_str());
    scan.add(list.compare(files));
    ASSERT_TRUE(comes([&] { return scan.poll(), !scan.busy(); }));
    ASSERT_EQ(list.usable().size(), std::size(names));
    const CStr path = folder.file("a.dawproject");
    std::vector<CStr> lost;
    {
        SongFixture song;
        COutputChannel* strip = song.track(trackAudio, "Voice")->track->output();
        float value = 0.25f;
        for (const PluginList::Entry* entry : list.usable()) {
            auto plugin = newPlugin(song.host, entry->path);
            ASSERT_NE(plugin, nullptr) << entry->path.asChar();
            plugin->setParam(0, value);
            plugin->enabled = entry->format() != PluginFormat::clap;
            const GraphHold hold(song.host);
            strip->inserts.add(plugin.release());
            value += 0.125f;
        }
        song.host->settle();
        for (int i = 0; i < 8; i++) { // these formats take values with a block
            song.host->idle();
            song.device.run();
        }
        ASSERT_EQ(exportDawProject(song.seq, path, lost), DawResult::good);
        EXPECT_EQ(linesOf(lost), std::vector<std::string>{"Plug-in gain"}) << "that of LV2";
    }
    const std::string told = outputOf(std::string("/usr/bin/python3 " READER " ") + path.asChar());
    for (const char* line : {"Vst3Plugin gain .vstpreset VST3", "ClapPlugin gain .clap-preset clap",
                             "Vst2Plugin gain .fxb CcnK"})
        EXPECT_NE(told.find(line), std::string::npos) << line << "\nis not in\n" << told;
    SongFixture back;
    lost.clear();
    ASSERT_EQ(importDawProject(back.seq, path, lost, {}, &list), DawResult::good);
    EXPECT_EQ(linesOf(lost), std::vector<std::string>{});
    back.host->settle();
    auto& inserts = back.seq->tracks.first()->output()->inserts;
    ASSERT_EQ(inserts.getCount(), 3);
    float value = 0.25f;
    size_t at = 0;
    for (auto* insert : inserts) {
        while (list.usable()[at]->format() == PluginFormat::lv2) at++, value += 0.125f;
        EXPECT_EQ(static_cast<CVST*>(insert)->fileName, list.usable()[at++]->path);
        EXPECT_FLOAT_EQ(insert->param(0), value);
        EXPECT_EQ(insert->enabled != 0, list.usable()[at - 1]->format() != PluginFormat::clap);
        value += 0.125f;
    }
    ASSERT_EQ(importDawProject(back.seq, path, lost), DawResult::good);
    EXPECT_EQ(linesOf(lost), (std::vector<std::string>{"Effect gain of Voice"})) << "unknown here";
    inifile = former;
}

/// Files that are none, miss what they name, or nest without end change nothing, or tell it.
TEST(DawFiles, TellWhatIsMissingOrDamaged) {
    SongFixture song;
    const TempFolder& folder = song.folder;
    const std::string head =
        "<?xml version=\"1.0\"?><Project version=\"1.0\"><Structure><Track id=\"t\" "
        "contentType=\"audio\" name=\"A\"><Channel role=\"regular\"><Devices><ClapPlugin "
        "deviceName=\"Wonder\" deviceRole=\"audioFX\"/></Devices></Channel></Track></Structure>"
        "<Arrangement><Lanes timeUnit=\"seconds\"><Lanes track=\"t\"><Clips>";
    const std::string tail = "</Clips></Lanes></Lanes></Arrangement></Project>";
    std::string deep;
    for (int i = 0; i < 20000; i++) deep += "<Clip time=\"0\" duration=\"1e300\"><Clips>";
    const struct {
        std::string xml;
        DawResult result;
        const char* told;
    } cases[] = {
        {"", DawResult::unreadable, ""},
        {"<Other/>", DawResult::unreadable, ""},
        {head + deep, DawResult::unreadable, ""},
        {"<!DOCTYPE a [<!ENTITY b \"x\"><!ENTITY c \"&b;&b;&b;\">]><Project>&c;</Project>",
         DawResult::good, ""},
        {head +
             "<Clip time=\"nan\" duration=\"-1\"><Notes><Note time=\"1e99\" key=\"999\" "
             "channel=\"-7\"/>"
             "</Notes></Clip>" +
             tail,
         DawResult::good, "Effect Wonder of A"},
        {head +
             "<Clip time=\"1\" duration=\"2\"><Audio><File "
             "path=\"../../etc/passwd\"/></Audio></Clip>" +
             tail,
         DawResult::good, "Audio that is not in the file, or damaged: ../../etc/passwd"},
        {head +
             "<Clip time=\"0\" duration=\"1e9\" loopEnd=\"0.001\"><Notes><Note time=\"0\" "
             "duration=\"1\"/></Notes></Clip>" +
             tail,
         DawResult::good, ""},
    };
    for (const auto& c : cases) {
        {
            ZipWriter zip(folder.file("a.dawproject").asChar());
            zip.add("project.xml", c.xml);
            zip.close();
        }
        std::vector<CStr> lost;
        const int steps = song.seq->tracks.getCount();
        EXPECT_EQ(importDawProject(song.seq, folder.file("a.dawproject"), lost), c.result)
            << c.xml.substr(0, 300);
        song.host->settle();
        const auto lines = linesOf(lost);
        EXPECT_TRUE(!*c.told || std::ranges::find(lines, c.told) != lines.end()) << c.told;
        EXPECT_TRUE(c.result == DawResult::good || song.seq->tracks.getCount() == steps);
    }
    std::vector<CStr> lost;
    folder.write("b.dawproject", "PK\3\4 this is no archive");
    EXPECT_EQ(importDawProject(song.seq, folder.file("b.dawproject"), lost), DawResult::unreadable);
    EXPECT_EQ(importDawProject(song.seq, folder.file("none"), lost), DawResult::unreadable);
}
