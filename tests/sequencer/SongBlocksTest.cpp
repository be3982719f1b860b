#include "SongFileFixture.h"
#include "engine/CFreezeItem.h"
#include "engine/CSnap.h"
#include "instruments/CDrumSound.h"
#include "instruments/CSampleClip.h"
#include "instruments/CSynthProg.h"
#include "sequencer/CEditorComp.h"

#include <cmath>
#include <filesystem>
#include <random>

namespace {

// The independent form.

Blocks trackBlock(int kind, const char* name, int folder, int channel) {
    return Blocks()
        .ints({kind, 2})
        .s(name)
        .ints({41, 200, 300, folder})
        .b({1, channel, 1, 1})
        .i(9)
        .zeros(2);
}

Blocks window(int left) {
    return Blocks().ints({left, 60, 400, 300, 1, 0, -1, 0});
}

Blocks arp() {
    Blocks prog, all;
    prog.s("program").ints({2, 3}).floats({0.5f, 0.75f, 120.0f, 0.25f, 0.125f, 0.5f}).i(1).zeros(7);
    for (const auto& [name, v] :
         {std::pair{"enabled", 1}, {"latch", 0}, {"ccgate", 7}, {"ccswing", -1}, {"progi", 0}})
        all.block(name, Blocks().i(v));
    return all.block("prog", prog, 7 + 36);
}

/// What every track has, around `own` and `lanes`.
void addTrack(Blocks& to, const Blocks& head, const Blocks& own, const Blocks& lanes) {
    to.block("track", head).block("trackCol", Blocks().i(0x123456));
    to.block("trackInSens", Blocks().i(80)).block("tracked", window(10));
    to.block("trackGroove",
             Blocks().ints({1, -1, 0, 0}).f(0.5f).ints({120, 3}).floats({0, 0.25f, -0.5f}));
    to.bytes += own.bytes + lanes.bytes;
    to.block("arp", arp()).block("arped", window(20));
}

Blocks clip() {
    return Blocks().zeros(2).s("k.wav").ints({4, 16, 1, 44100, 1, 3}).zeros(6).raw("abcdefgh", 8);
}

Blocks sound(const char* name, int scale, int clipIndex, float coarse) {
    Blocks all;
    all.b({1}).s(name).b({0, 3, 0, 0}).floats({0.5f, -0.25f}).i(1).floats({0.75f, 0.5f}).i(0);
    all.zeros(2).floats({coarse, 0.5f}).ints({20, 12}).zeros(14).floats({0.25f, 0.125f}).i(0);
    all.b({0, scale, 1, 0}).b({1, 100, 2, 120}).b({0, 1}).i(clipIndex).b({61, 0, 127, 1}).i(2).i(0);
    return all;
}

Blocks kit() {
    Blocks all, eq;
    for (int band : {0, 1, 2, 3})
        eq.b({band & 1, band}).floats({100.0f * float(band + 1), 3.0f, 2.0f}).b({1, 2, 3, band});
    // A component of a type that nobody makes.
    const Blocks insert =
        Blocks().b({1, 200, 4}).ints({5, 6}).s("Old").ints({1, 0, 0, 0}).raw("content", 7);
    all.block("drumprogid", Blocks().s("Kit")).block("sound", sound("k.wav", 1, 0, 2.0f));
    all.block("soStyle", Blocks().i(1)).block("soParam", Blocks().i(4));
    all.block("soInsert2", insert).block("soInsertAin", Blocks().i(1));
    all.block("soInsertAout", Blocks().i(2)).block("soInsert2wet", Blocks().f(0.5f));
    return all.block("soSends", Blocks().i(1).f(0.25f)).block("soEq2", eq);
}

Blocks lane(int kind, int target, int slot, std::initializer_list<int> link) {
    Blocks all;
    all.s("Lane").b({1, 0}).ints({50, kind, 7});
    if (kind != laneAutomation) return all;
    all.b({target}).i(slot);
    return all.b(link).zeros(link.size() ? 0 : 8);
}

Blocks lanes(const Blocks& one) {
    return Blocks().block("sub", one).block("subex", Blocks().b({1, 0, 0, 0}).i(0));
}

Blocks part(int type, bool onTrack, int ghost, int pos, const char* name) {
    return Blocks().b({2, type, onTrack}).ints({ghost, pos, -5, 1920, 3}).s(name);
}

Blocks audio2() {
    Blocks all;
    all.ints({1, 10, 1, 0, 2}).floats({0.5f, -0.5f}).b({2, 1, 0, 0}).ints({5, 900, 480, -3});
    return all.floats({0.25f, 100, 0.5f, 200, -0.5f}).zeros(4);
}

Blocks audioOld(int delta) {
    Blocks all;
    all.i(1).i(delta).b({1}).i(0).floats({0.5f, -0.5f}).b({2, 1}).ints({5, 900, 480, -3});
    return all.f(0.25f).ints({0, 0, 2});
}

const Blocks midiEvents = Blocks().i(2).i(0).b({1}).ints({0x643C90, 120, 30}).b({0}).i(0x4007B0);
const Blocks drumEvents =
    Blocks().i(2).i(4).b({0, 1}).i(240).b({0}).i(6).b({0, 0}).i(96).b({2, 0}).f(0.5f).b({2}).f(
        2.0f);
const Blocks points = Blocks()
                          .ints({3, 2, 0})
                          .b({0})
                          .floats({0.25f, 0})
                          .b({1})
                          .i(96)
                          .b({1})
                          .floats({1, -0.5f})
                          .b({0});

void addPoints(Blocks& all) {
    for (const char* name : {"A", "B"})
        all.block(
            "marker",
            Blocks().s(name).b({3, 1, 0, 0}).ints({960, 480}).b({4, 0, 4, 0}).f(120).zeros(3));
    all.block("amarker", Blocks().i(1));
    all.block("timesig", Blocks().s("t").ints({3840, 960, 7, 8}).f(-1).i(5).zeros(2));
    all.block("tempo", Blocks().ints({0, 960}).f(90).zeros(3), 32);
    all.block("tempo", Blocks().ints({1920, 960}).f(180).zeros(3), 32);
}

void addEditor(Blocks& all) {
    Blocks options;
    for (int n = 0; n < 32; n++) options.b({n});
    all.block("editored", window(30)).block("edopt", options).block("ed-noteh", Blocks().i(11));
    all.block("editorpp", Blocks().ints({2, 0}));
}

/// A song with one block of each kind at least.
std::string tableSong() {
    Blocks all, options;
    for (int n = 0; n < 32; n++) options.b({n * 7});
    all.block("options", options).block("sync", Blocks().i(1)).block("mxv", Blocks().i(9));
    all.block("snap", Blocks().b({0, 1, 0, 0}).i(5)).block("smp", clip());
    addTrack(all, trackBlock(1, "Fold", -1, 0), {}, {});
    addTrack(all, trackBlock(2, "Notes", 0, -1), {}, lanes(lane(laneVelocity, 0, 0, {})));
    addTrack(all, trackBlock(3, "Sound", 0, 0), {},
             lanes(lane(laneAutomation, 1, 3, {6, 0, 0, 0, 1, 0, 0, 0, 1, 0, 0, 0, 4, 0, 0, 0,
                                               0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0})));
    addTrack(all, trackBlock(5, "Drums", -1, 9), kit(), lanes(lane(laneAutomation, 2, 0, {})));
    all.block("trackmc", Blocks().i(1));
    all.block("part", part(1, false, -1, 0, "master")).block("partCol", Blocks().i(0xABCDEF));
    all.block("mevents", midiEvents).block("amevents", points).block("progi", Blocks().i(1));
    for (const char* name : {"First", "Second"}) {
        all.block("prog", Blocks().f(480.5f).b({1}).ints({960, 4800}).s(name));
        all.block("ptrack", Blocks().b({0})).block("ptrack", Blocks().b({8}));
        all.block("part", part(1, true, 0, 960, "ghost")).block("ptrack", Blocks().b({4}));
        all.block("part", part(2, true, -1, 0, "audio")).block("partCol", Blocks().i(-1));
        all.block("achs", Blocks().i(2)).block("aevents2", audio2());
        all.block("aevents", audioOld(10)).block("multiclip", Blocks().b({1}));
        all.block("ptrack", Blocks().b({0})).block("part", part(3, true, -1, 0, "hits"));
        all.block("partCol", Blocks().i(5)).block("devents", drumEvents);
        addPoints(all);
    }
    addEditor(all);
    return all.bytes;
}

template <class T>
T* at(const CList& list, int index) {
    return static_cast<T*>(list.items(index));
}

CPart* partOf(SongFileFixture& song, int track) {
    return at<CPart>(at<CSongTrack>(song.prog()->tracks, track)->parts, 0);
}

/// Each field of each block is where the tables say, in both directions.
TEST(SongBlocks, FollowTheTables) {
    SongFileFixture song;
    ASSERT_EQ(song.host.comps.indexed(song.seq), 4); // as told in the link of the lane
    const std::string table = tableSong();
    song.read(table);
    EXPECT_EQ(song.write(), table);
    EXPECT_EQ(song.seq->snap->asIndex(), 5);
    EXPECT_STREQ(song.prog()->id.asChar(), "Second");
    auto* sounds = at<CTrack>(song.seq->tracks, 2);
    EXPECT_EQ(sounds->folder, at<CTrack>(song.seq->tracks, 0));
    auto* drums = at<CTrack>(song.seq->tracks, 3);
    EXPECT_EQ(at<CSubTrack>(sounds->subTracks, 0)->object, drums->output());
    EXPECT_EQ(at<CMIDICable>(drums->midiCables, 0)->fromPort,
              at<CTrack>(song.seq->tracks, 1)->outPort());
    EXPECT_EQ(at<CComp>(drums->drumSound(0)->output->inserts, 0)->inPorts.getCount(), 1);
    CPart* ghost = partOf(song, 1);
    EXPECT_EQ(notesOf(ghost), (Ticks{{0, 60}, {30, 7}}));
    EXPECT_EQ(pointsOf(ghost, 3), (Ticks{{0, 25}, {96, 100}}));
    EXPECT_EQ(ghost->content()->ghostCount, 2);
    auto* clipEvent = static_cast<CAudioEvent*>(partOf(song, 2)->getEvents());
    EXPECT_EQ(clipEvent->sample, song.host.samples.items(0));
    EXPECT_EQ(clipEvent->fadeOutMs, 200.0f);
    auto* hit = static_cast<CDrumEvent*>(partOf(song, 3)->getEvents()->next);
    EXPECT_EQ(hit->tune, 2.0f);
    EXPECT_EQ(song.seq->editorComp->part(), partOf(song, 2));
    EXPECT_EQ(song.prog()->activeMarker, song.prog()->markers.items(1));
    EXPECT_EQ(song.host.pos, 480.5);
}

/// A lane of a track for each thing that automation can move, and nothing.
void addLanes(SongFileFixture& song, CTrack* track) {
    auto* bus = at<CComp>(song.host.sends, 0);
    COutputChannel* out = song.rack->output();
    auto* insert = new CEffect(&song.host);
    insert->init();
    insert->listKind = listInsert;
    insert->ownerChannel = out;
    out->inserts.add(insert);
    for (CObject* target : std::initializer_list<CObject*>{
             song.rack, bus, out, bus->output(), out->sendLevels[1], insert, &song.host,
             track->output(), track->output()->sendLevels[0], nullptr}) {
        auto* lane = new CSubTrack("Lane", laneAutomation);
        lane->object = target;
        track->addLane(lane, nullptr);
    }
    for (int kind : {1, 2, 3}) track->addLane(new CSubTrack("View", LaneKind(-kind)), nullptr);
}

void freeze(SongFileFixture& song, CSongTrack* t, CComp* comp, COutputChannel* channel) {
    const CStr path = song.host.getAudioFolder(true, false, false) + "/frozen.wav";
    CSample file;
    file.setFormat(44100, 16, 2);
    file.create(path);
    const std::vector<float> silence(100);
    file.writeHeader();
    file.writeFrames(100, silence.data(), silence.data());
    file.writeHeader();
    file.close();
    auto* item = new CFreezeItem;
    auto* sample = new CSample;
    sample->streamed = 1;
    ASSERT_TRUE(sample->open(path));
    item->setSample(sample);
    item->comp = comp;
    item->channel = channel;
    item->songTrack = t;
    t->freezeItems.add(item);
}

/// Clips in every mode, and one whose sample is missing.
CAudioPart* audioPart(SongFileFixture& song) {
    auto* part = new CAudioPart;
    part->multiclip = 1;
    for (int mode : {0, 1, 2, 2}) {
        CAudioEvent* event = createAudioEvent();
        event->mode = (unsigned char)mode;
        event->sample = part->events && mode == 2 ? nullptr : at<CSample>(song.host.samples, 0);
        event->end = 999 - mode;
        event->reverse = (unsigned char)(mode & 1);
        event->fadeInMs = 20.0f * float(mode);
        part->addEvent(mode * 100, event);
    }
    return part;
}

/// A song of all that there is, by the program's own means.
void build(SongFileFixture& song) {
    auto* folder = song.track(trackFolder)->track;
    auto* notes = song.track(trackMIDI);
    auto* audio = song.track(trackAudio);
    auto* drums = song.track(trackDrum);
    notes->track->folder = folder;
    addLanes(song, audio->track);
    song.seq->addStandardKit(drums->track);
    song.seq->addStandardKit(drums->track);
    auto* insert = new CEffect(&song.host);
    insert->init();
    insert->wet = 0.5f;
    drums->track->drumSound(1)->output->inserts.add(insert);
    if (auto* cable = createMIDICable(drums->track, notes->track->outPort(), nullptr))
        drums->track->midiCables.add(cable);
    CPart* first = notes->addPart(midiPart(0), nullptr);
    for (int n : {60, 64, 67}) first->addEvent(n * 10, note(n));
    first->addEventParam(5, createEnvEvent(nullptr, 0.5f), 2);
    song.step([&](CUndo* undo) {
        CPart* ghost = song.seq->makeGhost(first, undo);
        ghost->pos = 7680;
        notes->addPart(ghost, undo);
    });
    audio->addPart(audioPart(song), nullptr);
    auto* hits = new CDrumPart;
    hits->addEvent(240, createDrumEvent());
    drums->addPart(hits, nullptr);
    freeze(song, audio, song.seq, audio->track->output());
    freeze(song, notes, song.rack, song.rack->output());
    song.seq->progs.add(song.seq->createProgram());
}

struct TempProject {
    std::string folder = testing::TempDir() + "song_XXXXXX";
    TempProject() { EXPECT_TRUE(mkdtemp(folder.data())); }
    ~TempProject() { std::filesystem::remove_all(folder); }
};

TEST(SongBlocks, KeepTheWholeSong) {
    const TempProject project;
    SongFileFixture song;
    song.host.projectFile = (project.folder + "/song.qv").c_str();
    build(song);
    dropCables(&song.host, song.seq); // those are no blocks of the song
    const std::string before = song.write(), text = dump(song.seq);
    song.replace(static_cast<CSeq*>(song.seq->copy()));
    EXPECT_EQ(song.write(), before);
    EXPECT_EQ(dump(song.seq), text);
    song.read(before);
    EXPECT_EQ(song.write(), before);
    EXPECT_EQ(dump(song.seq), text);
    CTrack* audio = at<CTrack>(song.seq->tracks, 2);
    for (const auto* item : each<CFreezeItem>(at<CSongTrack>(song.prog()->tracks, 1)->freezeItems))
        EXPECT_EQ(item->channel, song.rack->output());
    EXPECT_EQ(at<CSongTrack>(song.prog()->tracks, 1)->freezeItems.getCount(), 1);
    EXPECT_EQ(audio->subTracks.getCount(), 14);
}

/// Songs that hold an oddity, and what must come of them.
struct Oddity {
    const char* what;
    Blocks blocks;
    std::function<bool(SongFileFixture&)> holds;
};

/// Tracks of these kinds, none in a folder.
Blocks tracksOf(std::initializer_list<int> kinds) {
    Blocks all;
    for (int kind : kinds) all.block("track", trackBlock(kind, "T", -1, 0));
    return all;
}

/// An audio track with one part.
Blocks audioSong(int parts = 1) {
    Blocks all = tracksOf({3});
    all.block("prog", Blocks().f(0).b({1}).ints({0, 0}).s("P")).block("ptrack", Blocks().b({0}));
    for (int n = 0; n < parts; n++) all.block("part", part(2, true, -1, n, "a"));
    return all;
}

int count(CPart* part) {
    int events = 0;
    for (CBaseEvent* e = part ? part->getEvents() : nullptr; e; e = e->next) events++;
    return events;
}

CPart* nthPart(SongFileFixture& song, int n) {
    return at<CPart>(at<CSongTrack>(song.prog()->tracks, 0)->parts, n);
}

TEST(SongBlocks, OddFilesAreReadAsTold) {
    const Blocks program = Blocks().f(0).b({1}).ints({0, 0}).s("P");
    const Blocks shortEvent = Blocks()
                                  .ints({1, 0})
                                  .b({1})
                                  .ints({0, 7})
                                  .floats({1, 0})
                                  .b({1, 0, 0, 0})
                                  .ints({0, 900, 0, 200})
                                  .floats({9, 0, 0, 700000, 0})
                                  .zeros(2);
    const auto firstAudio = [](SongFileFixture& s) {
        return static_cast<CAudioEvent*>(nthPart(s, 0)->getEvents());
    };
    const Oddity oddities[] = {
        {"newer events count, older ones of all parts do not",
         audioSong()
             .block("aevents2", audio2())
             .block("aevents", audioOld(0))
             .block("part", part(2, true, -1, 9, "b"))
             .block("aevents", audioOld(0)),
         [](auto& s) { return count(nthPart(s, 0)) == 1 && count(nthPart(s, 1)) == 0; }},
        {"older events alone", audioSong().block("aevents", audioOld(7)),
         [&](auto& s) { return firstAudio(s)->delta == 7 && firstAudio(s)->slice == 2; }},
        {"short events, values in range, a length of their part",
         audioSong().block("aevents2", shortEvent),
         [&](auto& s) {
             const CAudioEvent* e = firstAudio(s);
             return e->slice == 7 && e->ticks == 1920 && e->semitones == 127 && e->fine == 1.0f &&
                    e->fadeOutMs == 600000.0f && !e->next;
         }},
        {"a tempo at the very end, and a size that is wrong",
         tracksOf({2})
             .block("prog", program)
             .block("tempo", Blocks().ints({5, 9}).f(900).zeros(3), 32),
         [](auto& s) { return at<CTempoPart>(s.prog()->tempos, 0)->getTempo() == 250.0f; }},
        {"an unknown block between parts",
         audioSong().block("zzz", Blocks().s("anything")).block("part", part(2, true, -1, 99, "b")),
         [](auto& s) { return nthPart(s, 1) != nullptr; }},
        {"parts on tracks of another kind, plain ones and those without a song track",
         tracksOf({2})
             .block("part", part(1, true, -1, 0, "x"))
             .block("prog", program)
             .block("ptrack", Blocks().b({0}))
             .block("part", part(2, true, -1, 0, "x"))
             .block("part", part(9, true, -1, 0, "x"))
             .block("partCol", Blocks().i(1)),
         [](auto& s) { return !nthPart(s, 0); }},
        {"events of another class", audioSong().block("mevents", midiEvents),
         [](auto& s) { return count(nthPart(s, 0)) == 0; }},
        {"ghosts of nothing, and of a master of another class; masters without ghosts go",
         tracksOf({2})
             .block("part", part(2, false, 0, 0, "m"))
             .block("prog", program)
             .block("ptrack", Blocks().b({0}))
             .block("part", part(1, true, 0, 0, "g"))
             .block("part", part(1, true, 7, 9, "g")),
         [](auto& s) {
             return !nthPart(s, 0)->ghostOf && !nthPart(s, 1)->ghostOf &&
                    s.seq->masterParts.empty();
         }},
        {"folders in a circle, and one that is no folder",
         Blocks()
             .block("track", trackBlock(1, "a", 1, 0))
             .block("track", trackBlock(1, "b", 0, 0))
             .block("track", trackBlock(1, "c", 2, 0))
             .block("track", trackBlock(2, "d", 4, 0))
             .block("track", trackBlock(2, "e", 0, 0)),
         [](auto& s) {
             const auto folder = [&s](int i) {
                 return at<CTrack>(s.seq->tracks, i)->folder.load();
             };
             return folder(0) == s.seq->tracks.items(1) && !folder(1) && !folder(2) && !folder(3) &&
                    folder(4) == s.seq->tracks.items(0);
         }},
        {"missing and further song tracks",
         tracksOf({2, 3})
             .block("prog", program)
             .block("prog", program)
             .block("ptrack", Blocks().b({4}))
             .block("ptrack", Blocks().b({0}))
             .block("ptrack", Blocks().b({0})),
         [](auto& s) {
             for (auto* prog : each<CSeqProg>(s.seq->progs))
                 if (prog->tracks.getCount() != 2) return false;
             return at<CSongTrack>(at<CSeqProg>(s.seq->progs, 1)->tracks, 0)->muted();
         }},
        {"owners that are missing",
         Blocks()
             .block("trackCol", Blocks().i(1))
             .block("sub", lane(-1, 0, 0, {}))
             .block("subex", Blocks().zeros(2))
             .block("sound", sound("s", 1, 0, 0))
             .block("arp", arp())
             .block("freeze", Blocks().ints({0, 0}).s("x"))
             .block("mevents", midiEvents)
             .block("trackPos", Blocks().b({1}))
             .block("mxv", Blocks().i(3)),
         [](auto& s) { return s.seq->maxVoices == 3 && s.seq->tracks.empty() && !s.prog(); }},
        {"a size below 0 ends the reading",
         tracksOf({2}).block("zzz", {}, -2).block("mxv", Blocks().i(3)),
         [](auto& s) { return s.seq->tracks.getCount() == 1 && s.seq->maxVoices == 6; }},
        {"a size beyond the end, too", tracksOf({2}).block("zzz", {}, 1000).block("mxv", Blocks()),
         [](auto& s) { return s.seq->tracks.getCount() == 1; }},
        {"drums of the old scale, drums without a clip, settings out of range",
         Blocks()
             .block("smp", clip())
             .block("track", trackBlock(5, "D", -1, 99))
             .block("trackGroove", Blocks().ints({1, 0, 0, 0}).f(NAN).ints({0, 2}).floats({0, 50}))
             .block("sound", sound("gone", 1, 4, 0))
             .block("soStyle", Blocks().i(1))
             .block("sound", sound("old", 0, 0, 2)),
         [](auto& s) {
             auto* t = at<CTrack>(s.seq->tracks, 0);
             return t->channel == 15 && t->groove.stepTicks == 1 && t->groove.offsets[1] == 1.0f &&
                    t->groove.amount == 0.0f && t->drumSound(0)->coarse == 3.0f &&
                    !t->drumSound(1) && !t->drumSound(0)->opened();
         }},
        {"signatures out of range, and no active marker",
         tracksOf({2})
             .block("prog", program)
             .block("timesig", Blocks().s("").ints({0, 0, 0, 65}).f(0).zeros(3))
             .block("amarker", Blocks().i(-1)),
         [](auto& s) {
             auto* t = at<CTimesigPart>(s.prog()->timesigs, 0);
             return t->getNum() == 4 && t->getDen() == 4 && !s.prog()->activeMarker;
         }},
        {"times that run back or away",
         tracksOf({2})
             .block("prog", program)
             .block("ptrack", Blocks().b({0}))
             .block("part", part(1, true, -1, 0, "p"))
             .block("mevents",
                    Blocks().i(3).i(-90).b({0}).i(0xB0).i(1 << 30).b({0}).i(0xB0).i(-50).b({0}).i(
                        0xB0)),
         [](auto& s) {
             return notesOf(nthPart(s, 0)) ==
                    Ticks{{-90, 0}, {(1 << 30) - 90, 0}, {(1 << 30) - 90, 0}};
         }},
    };
    for (const Oddity& o : oddities) {
        SongFileFixture song;
        song.read(o.blocks.bytes);
        EXPECT_TRUE(o.holds(song)) << o.what;
        song.device.run();
    }
}

/// However a song is cut or garbled, what is left of it can be played and written.
TEST(SongBlocks, NoDamageDoesHarm) {
    SongFileFixture song;
    const std::string table = tableSong();
    for (size_t cut = 0; cut < table.size(); cut += 7) {
        song.read(table.substr(0, cut));
        EXPECT_LE(song.write().size(), 2 * table.size()) << cut;
    }
    std::mt19937 random(1);
    for (int round = 0; round < 300; round++) {
        std::string bytes = table;
        for (int n = 0; n < 8; n++) bytes[random() % bytes.size()] = char(random());
        song.read(bytes);
        song.host.start();
        song.device.run(2);
        song.host.stop();
        song.write();
    }
}

} // namespace
