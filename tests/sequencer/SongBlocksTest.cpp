#include "SongFileFixture.h"
#include "base/LoadBudget.h"
#include "base/TempFolder.h"
#include "engine/CFreezeItem.h"
#include "instruments/CDrumSound.h"

#include <cmath>
#include <cstring>
#include <random>

namespace {

Blocks trackBlock(int kind, const char* name, int folder, int channel) {
    return Blocks().i(kind, 2).s(name).i(41, 200, 300, folder).b(1, channel, 1, 1).i(9).zeros(2);
}

Blocks clip() {
    Blocks all;
    all.zeros(2).s("k.wav").i(4, 16, 1, 44100, 1, 3).zeros(6);
    return all.add(std::string("abcdefgh"));
}

Blocks sound(const char* name, int scale, int clipIndex, float coarse) {
    Blocks all;
    all.b(1).s(name).b(0, 3, 0, 0).f(0.5f, -0.25f).i(1).f(0.75f, 0.5f).i(0);
    all.zeros(2).f(coarse, 0.5f).i(20, 12).zeros(14).f(0.25f, 0.125f).i(0);
    all.b(0, scale, 1, 0).b(1, 100, 2, 120).b(0, 1).i(clipIndex).b(61, 0, 127, 1).i(2).i(0);
    return all;
}

Blocks part(int type, bool onTrack, int ghost, int pos, const char* name, int flags = 1) {
    return Blocks().b(2, type, onTrack).i(ghost, pos, -5, 1920, flags).s(name);
}

Blocks audio2() {
    Blocks all;
    all.i(1, 10, 1, 0, 2).f(0.5f, -0.5f).b(2, 1, 0, 0).i(5, 900, 480, -3);
    return all.f(0.25f, 100, 0.5f, 200, -0.5f).zeros(4);
}

Blocks audioOld(int delta) {
    Blocks all;
    all.i(1).i(delta).b(1).i(0).f(0.5f, -0.5f).b(2, 1).i(5, 900, 480, -3);
    return all.f(0.25f).i(0, 0, 2);
}

size_t qvNumber(const std::string& bytes, size_t at) {
    int v = 0;
    std::memcpy(&v, &bytes[at], sizeof v);
    return size_t(v);
}

const Blocks midiEvents = Blocks().i(2).i(0).b(1).i(0x643C90, 120, 30).b(0).i(0x4007B0);

template <class T>
T* at(const CList& list, int index) {
    return static_cast<T*>(list.items(index));
}

/// A freeze file, of silence.
void freeze(SongFileFixture& song, CSongTrack* t, CComp* comp, COutputChannel* channel) {
    const CStr path = song.host.getAudioFolder(true, false, false) + "/frozen.wav";
    CSample* sample = CSample::createSample(path, 0);
    const std::vector<float> silence(100);
    sample->writeFrames(100, silence.data(), silence.data());
    sample->writeHeader();
    sample->finalize();
    ASSERT_TRUE(sample->open(path));
    auto* item = new CFreezeItem;
    item->setSample(sample);
    item->comp = comp;
    item->channel = channel;
    item->songTrack = t;
    t->freezeItems.add(item);
}

/// A song of all that there is, by the program's own means: lanes of each thing that automation can
/// move, and of nothing, freeze files, a ghost, clips of which one lost its sample, and a kit.
void build(SongFileFixture& song) {
    CSongTrack *notes = song.track(trackMIDI), *audio = song.track(trackAudio),
               *drums = song.track(trackDrum);
    auto* bus = at<CComp>(song.host.sends, 0);
    COutputChannel *own = audio->track->output(), *out = song.rack->output();
    auto* insert = new CEffect(&song.host);
    insert->init();
    insert->listKind = listInsert;
    insert->ownerChannel = out;
    out->inserts.add(insert);
    for (CObject* target :
         std::initializer_list<CObject*>{song.rack, bus, out, bus->output(), out->sendLevels[1],
                                         insert, &song.host, own, own->sendLevels[0], nullptr}) {
        auto* lane = new CSubTrack("Lane", laneAutomation);
        lane->object = target;
        audio->track->addLane(lane, nullptr);
    }
    freeze(song, audio, song.seq, own);
    freeze(song, notes, song.rack, out);
    song.seq->addStandardKit(drums->track);
    drums->track->midiCables.add(createMIDICable(drums->track, notes->track->outPort(), nullptr));
    CPart* first = notes->addPart(midiPart(0), nullptr);
    for (int n : {60, 64}) first->addEvent(n, note(n));
    first->addEventParam(5, createEnvEvent(nullptr, 0.5f), 2);
    song.step([&](CUndo* undo) { notes->addPart(song.seq->makeGhost(first, undo), undo); });
    auto* clips = new CAudioPart;
    clips->multiclip = 1;
    for (CSample* sample : {song.host.samples.first(), static_cast<CSample*>(nullptr)}) {
        CAudioEvent* event = createAudioEvent();
        event->sample = sample;
        event->end = 999;
        clips->addEvent(100, event);
    }
    clips->takes = new Takes{{{0, 960, 0, 499}, {-5, 900, 500, 999}}, {{1, -5, 90}, {0, 90, 960}}};
    audio->addPart(clips, nullptr);
    auto* hits = new CDrumPart;
    hits->addEvent(240, createDrumEvent());
    drums->addPart(hits, nullptr);
    song.tempoAt(960, 90.0f);
    song.prog()->tempos.getFirst()->ramp = 1;
    notes->track->locked = notes->track->live = drums->track->recArm = song.seq->punch = 1;
    notes->track->setRowHeight(100);
    song.seq->preRoll = 2;
    song.seq->scales.changes[3].tick = 3840;
    song.seq->scales.changes[3].kind = scaleMinor;
    song.seq->progs.add(song.seq->createProgram());
    const GraphHold hold(&song.host);
    dropCables(&song.host, ForgetSet(song.seq)); // those are no blocks of the song
}

/// What was written comes back from the file, and in a duplicate.
TEST(SongBlocks, KeepTheWholeSong) {
    const TempFolder folder;
    SongFileFixture song;
    song.host.projectFile = folder.file("song.qv");
    build(song);
    const std::string before = song.write(), text = dump(song.seq);
    song.replace(static_cast<CSeq*>(song.seq->copy()));
    EXPECT_EQ(song.write(), before);
    EXPECT_EQ(dump(song.seq), text);
    song.read(before);
    EXPECT_EQ(song.write(), before);
    EXPECT_EQ(dump(song.seq), text);
    const CList& frozen = at<CSongTrack>(song.prog()->tracks, 0)->freezeItems;
    ASSERT_EQ(frozen.getCount(), 1);
    EXPECT_EQ(at<CFreezeItem>(frozen, 0)->channel, song.rack->output());
}

const Blocks program = block("prog", Blocks().f(0).b(1).i(0, 0).s("P"));
const Blocks songTrack = block("ptrack", Blocks().b(0));

/// A track in no folder.
Blocks trackOf(int kind) {
    return block("track", trackBlock(kind, "T", -1, 0));
}

Blocks partOn(int type, int pos) {
    return block("part", part(type, true, -1, pos, "p"));
}

int count(CPart* part) {
    int events = 0;
    for (CBaseEvent* e = part ? part->getEvents() : nullptr; e; e = e->next) events++;
    return events;
}

/// Newer events count, older ones of all parts do not, unless they are alone. Short events are
/// read, with values in range, and a length of their part.
TEST(SongBlocks, AudioEventsOfEveryAge) {
    SongFileFixture song;
    const auto partAt = [&song](int n) {
        return at<CPart>(at<CSongTrack>(song.prog()->tracks, 0)->parts, n);
    };
    const auto first = [&](int n) { return static_cast<CAudioEvent*>(partAt(n)->getEvents()); };
    const Blocks head = trackOf(3) + program + songTrack + partOn(2, 0);
    const Blocks old = block("aevents", audioOld(7)), other = block("mevents", midiEvents);
    song.read((head + old + block("zzz", Blocks().s("any")) + partOn(2, 99) + other).bytes);
    EXPECT_EQ(first(0)->delta, 7);
    EXPECT_EQ(first(0)->slice, 2);
    EXPECT_EQ(count(partAt(1)), 0) << "events of another class";
    Blocks brief;
    brief.i(1, 0).b(1).i(0, 7).f(1, 0).b(1, 0, 0, 0).i(0, 900, 0, 200);
    brief.f(9, 0, 0, 700000, 0).zeros(2);
    song.read((head + block("aevents2", audio2()) + old + partOn(2, 9) + old + partOn(2, 99) +
               block("aevents2", brief))
                  .bytes);
    EXPECT_EQ(count(partAt(0)), 1);
    EXPECT_EQ(count(partAt(1)), 0);
    ASSERT_EQ(count(partAt(2)), 1);
    const CAudioEvent* e = first(2);
    EXPECT_EQ(std::tuple(e->slice, e->ticks, e->semitones, e->fine, e->fadeOutMs, e->end),
              std::tuple(7, 1920, 127, 1.0f, 600000.0f, 900));
}

/// Parts go to tracks of their kind. Ghosts of nothing and of a master of another class are parts
/// of their own, masters without ghosts go. Times neither run back nor away. A tempo at the very
/// end may tell a wrong size.
TEST(SongBlocks, PartsAndPointsThatDoNotFit) {
    SongFileFixture song;
    const Blocks events = Blocks().i(3, -90).b(0).i(0xB0, 1 << 30).b(0).i(0xB0, -50).b(0).i(0xB0);
    song.read((trackOf(2) + block("part", part(2, false, 0, 0, "master")) + partOn(1, 0) + program +
               songTrack + partOn(2, 0) + partOn(9, 0) + block("partCol", Blocks().i(1)) +
               block("part", part(1, true, 0, 0, "ghost")) + block("mevents", events) +
               block("part", part(1, true, 7, 9, "ghost")) +
               block("timesig", Blocks().s("").i(0, 0, 0, 65).f(0).zeros(3)) +
               block("amarker", Blocks().i(-1)) +
               block("tempo", Blocks().i(5, 9).f(900).zeros(3), 32))
                  .bytes);
    const auto& parts = at<CSongTrack>(song.prog()->tracks, 0)->parts;
    ASSERT_EQ(parts.getCount(), 2);
    for (const auto* one : parts) EXPECT_EQ(one->ghostOf, nullptr);
    EXPECT_TRUE(song.seq->masterParts.empty());
    EXPECT_EQ(notesOf(at<CPart>(parts, 0)),
              (Ticks{{-90, 0}, {(1 << 30) - 90, 0}, {(1 << 30) - 90, 0}}));
    EXPECT_EQ(at<CTimesigPart>(song.prog()->timesigs, 0)->getNum(), 4);
    EXPECT_EQ(at<CTimesigPart>(song.prog()->timesigs, 0)->getDen(), 4);
    EXPECT_EQ(song.prog()->activeMarker, nullptr);
    EXPECT_EQ(at<CTempoPart>(song.prog()->tempos, 0)->getTempo(), 250.0f);
}

/// A part is muted by the bit that mutes tracks; older files had the one before it.
TEST(SongBlocks, PartsAreMuted) {
    for (const auto& [stored, kept] : {std::pair{1, 1}, {5, 5}, {3, 5}, {7, 5}}) {
        SongFileFixture song;
        const auto file = [](int flags) {
            return trackOf(2) + program + songTrack +
                   block("part", part(1, true, -1, 0, "p", flags));
        };
        song.read(file(stored).bytes);
        EXPECT_EQ(at<CPart>(at<CSongTrack>(song.prog()->tracks, 0)->parts, 0)->muted(), kept > 1);
        const std::string written = file(kept).bytes, whole = song.write();
        EXPECT_NE(whole.find(written.substr(written.find("part"))), std::string::npos) << stored;
    }
}

/// Folders in a circle, one that is no folder, and one that is.
TEST(SongBlocks, FoldersHaveAnEnd) {
    SongFileFixture song;
    Blocks all;
    for (const auto& [kind, folder] : {std::pair{1, 1}, {1, 0}, {1, 2}, {2, 4}, {2, 0}})
        all.block("track", trackBlock(kind, "t", folder, 0));
    song.read(all.bytes);
    std::vector<int> folders;
    for (const auto* t : song.seq->tracks) folders.push_back(song.seq->tracks.indexed(t->folder));
    EXPECT_EQ(folders, (std::vector<int>{1, -1, -1, -1, 0}));
}

/// Song tracks that are missing or too many, blocks without their owner, a size below 0, and one
/// beyond the end.
TEST(SongBlocks, BlocksWithoutTheirPlace) {
    SongFileFixture song;
    song.read((trackOf(2) + trackOf(3) + program + program + block("ptrack", Blocks().b(4)) +
               songTrack + songTrack)
                  .bytes);
    for (auto* prog : each<CSeqProg>(song.seq->progs)) EXPECT_EQ(prog->tracks.getCount(), 2);
    EXPECT_TRUE(at<CSongTrack>(at<CSeqProg>(song.seq->progs, 1)->tracks, 0)->muted());
    const Blocks three = Blocks().i(3);
    song.read((block("trackCol", Blocks().i(1)) +
               block("sub", Blocks().s("Lane").b(1, 0).i(50, -1, 7)) +
               block("subex", Blocks().zeros(2)) + block("sound", sound("s", 1, 0, 0)) +
               block("freeze", Blocks().i(0, 0).s("x")) + block("mevents", midiEvents) +
               block("trackPos", Blocks().b(1)) + block("mxv", three))
                  .bytes);
    EXPECT_TRUE(song.seq->maxVoices == 3 && song.seq->tracks.empty() && !song.prog());
    const LoadBudget budget(1 << 20);
    for (int size : {0, -11, 1000}) { // the second leads to where the block begins
        song.read((trackOf(2) + block("zzz", {}, size) + block("mxv", three)).bytes);
        EXPECT_TRUE(song.seq->tracks.getCount() == 1 && song.seq->maxVoices == 3) << size;
        EXPECT_EQ(LoadBudget::takeDamage(), size != 0) << size;
    }
}

/// Drums of the old scale, drums without a clip, and settings out of range.
TEST(SongBlocks, DrumsOutOfRange) {
    SongFileFixture song;
    song.read((block("smp", clip()) + block("track", trackBlock(5, "D", -1, 99)) +
               block("trackGroove", Blocks().i(1, 0, 0, 0).f(NAN).i(0, 2).f(0, 50)) +
               block("sound", sound("gone", 1, 4, 0)) + block("soStyle", Blocks().i(1)) +
               block("sound", sound("old", 0, 0, 2)))
                  .bytes);
    auto* t = at<CTrack>(song.seq->tracks, 0);
    EXPECT_EQ(t->channel, 15);
    EXPECT_EQ(std::tuple(t->groove.stepTicks.load(), float(t->groove.offsets[1]),
                         float(t->groove.amount)),
              std::tuple(1, 1.0f, 0.0f));
    EXPECT_EQ(t->drumSound(0)->coarse, 3.0f);
    EXPECT_FALSE(t->drumSound(1) || t->drumSound(0)->opened());
}

/// Positions of the bytes of a song that say what stands where: heads, counts, lengths of names.
std::vector<size_t> structureOf(const std::string& song) {
    std::vector<size_t> places;
    const auto number = [&](size_t at) { return qvNumber(song, at); };
    for (size_t at = 0; at < song.size();) {
        const std::string name = song.substr(at + 4, number(at));
        const size_t body = at + 8 + name.size();
        const size_t size = name == "tempo" ? 24 : number(body - 4);
        const bool counted = name == "mevents" || name == "devents" || name == "aevents2";
        const size_t countAt = name == "track" ? 8 : name == "part" ? 23 : name == "prog" ? 13 : 0;
        for (size_t i = at; i < body; i++) places.push_back(i);
        for (size_t i = 0; i < 4 && (counted || countAt > 0); i++)
            places.push_back(body + countAt + i);
        at = body + size;
    }
    return places;
}

/// A single bit that changes where it tells what stands where costs no more than the block that it
/// is in, and does not go without being noted, unless it leads to another block by chance.
TEST(SongBlocks, DamageStaysWhereItIs) {
    const TempFolder folder;
    SongFileFixture song;
    song.host.projectFile = folder.file("song.qv");
    build(song);
    const std::string whole = song.write();
    const auto partsAndTracks = [&] {
        int parts = 0;
        song.seq->eachSongTrack([&parts](CSongTrack* t) { parts += t->parts.getCount(); });
        return std::pair(parts, song.seq->tracks.getCount());
    };
    const auto [parts, tracks] = partsAndTracks();
    std::mt19937 random(1);
    int tried = 0;
    std::string unnoticed, costly;
    for (const size_t at : structureOf(whole)) {
        std::string bytes = whole;
        bytes[at] = char(bytes[at] ^ 1 << random() % 8);
        if (std::isdigit((unsigned char)whole[at]) && std::isdigit((unsigned char)bytes[at]))
            continue; // that is a later form
        const LoadBudget budget(int64_t(1) << 30);
        song.read(bytes);
        const bool noted = LoadBudget::takeDamage();
        const auto [partsNow, tracksNow] = partsAndTracks();
        ++tried;
        if (!noted && song.write() != whole) unnoticed += '\n' + std::to_string(at);
        if (partsNow < parts - 1 || tracksNow != tracks) costly += '\n' + std::to_string(at);
    }
    const auto places = [](const std::string& lines) { return std::ranges::count(lines, '\n'); };
    EXPECT_GT(tried, 1000);
    EXPECT_LE(places(unnoticed) * 200, tried) << "bytes of " << tried << ':' << unnoticed;
    EXPECT_LE(places(costly) * 200, tried) << "bytes of " << tried << ':' << costly;
}

/// However a song is cut or garbled, what is left of it can be played and written.
TEST(SongBlocks, NoDamageDoesHarm) {
    const TempFolder folder;
    SongFileFixture song;
    song.readsDisk = true;
    song.host.projectFile = folder.file("song.qv");
    build(song);
    const std::string whole = song.write();
    std::mt19937 random(1);
    for (size_t round = 0; round < 600; round++) {
        std::string bytes = whole;
        if (round % 2) bytes.resize(bytes.size() * round / 600);
        for (int n = 0; round % 2 == 0 && n < 8; n++)
            bytes[random() % bytes.size()] = char(random());
        song.read(bytes);
        song.host.start();
        song.device.run(2);
        song.host.stop();
        EXPECT_LE(song.write().size(), 2 * whole.size()) << round;
    }
}

} // namespace
