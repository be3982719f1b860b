#include "ClipFixture.h"
#include "project/ClipPreview.h"
#include "project/FileFacts.h"

#include <set>

namespace {

constexpr int kinds[] = {partMIDI, partAudio, partDrum};

/// Where the blocks of a file end, by its heads alone.
std::set<size_t> blockEnds(const std::string& bytes) {
    std::set<size_t> ends;
    for (size_t at = 0; at < bytes.size();) {
        for (int i = 0; i < 2; ++i) at += 4 + qvf::numberAt(bytes, at); // the name, the content
        ends.insert(at);
    }
    return ends;
}

/// A clip of one kind, made in a song of its own, whose files are gone afterwards.
struct Made {
    std::string bytes;
    std::vector<float> sound;
};

Made makeClip(int kind, int blocks = 0) {
    ClipFixture f;
    CPart* part = f.add(kind);
    return {f.clipOf(part), f.play(blocks)};
}

/// As `makeClip`, but notes have one synthesizer with one sound.
std::string smallClip(int kind) {
    ClipFixture f;
    if (kind != partMIDI) return f.clipOf(f.add(kind));
    CSampler sampler(f.host);
    sampler.progs.add(sampler.createProg());
    CMemoryStream program;
    sampler.writeToStream(&program, sampler.getProg());
    return f.clipOf(f.addNotes(f.track(trackMIDI))) + qvf::item("device", qvf::bytes({3})) +
           qvf::item("data", {program.data, program.data + program.getPos()});
}

} // namespace

/// In another song, without the files, a clip is the same, sounds the same, as does its preview,
/// and is taken back whole.
TEST(ClipFiles, NeedNothingElse) {
    constexpr int blocks = 24;
    for (const int kind : kinds) {
        SCOPED_TRACE(kind);
        const Made made = makeClip(kind, blocks);
        ASSERT_GT(*std::max_element(made.sound.begin(), made.sound.end()), 0.05f);
        ClipFixture f;
        f.host->undoClear();
        const std::string before = f.save();
        CPart* part = f.drop(made.bytes);
        ASSERT_TRUE(part);
        EXPECT_EQ(part->offset, kind == partMIDI ? -120 : 0);
        EXPECT_TRUE(saveClip(f.seq, part, f.files.file("again.qvc")));
        EXPECT_TRUE(f.files.read("again.qvc") == made.bytes);
        EXPECT_TRUE(f.play(blocks) == made.sound);
        const std::string after = f.save();

        const auto preview = createFromQVC(f.host, f.files.file("dropped.qvc"));
        ASSERT_TRUE(preview);
        const int frames = int(part->length) * 44100 / 960 / 2; // at 120 beats a minute
        ASSERT_EQ(preview->frames, frames);
        for (int side = 0; side < 2; ++side)
            EXPECT_TRUE(std::equal(preview->floatData(side), preview->floatData(side) + frames,
                                   made.sound.begin() + side * blocks * 1024));
        EXPECT_TRUE(f.save() == after);
        f.expectStep(before);
        EXPECT_TRUE(shown.empty());
    }
}

/// The samples of a clip by the tables of the format, and an event that says which one it plays.
TEST(ClipFiles, SamplesAreAsDocumented) {
    using namespace qvf;
    const std::string frames = bytes({1, 2, 3, 4, 5, 6, 7, 8});
    const std::string sample = text("gone.wav") + real(22050.0f) + bytes({16, 2, 0, 1}) + number(2);
    const std::string part = bytes({2, 1 + 1, 1}) + numbers({-1, 0, 0, 960, 0}) + text("x");
    const std::string event = numbers({0, 0, 0, 0}) + real(1.0f) + real(0.0f) +
                              bytes({0, 0, 0, 0}) + numbers({0, 1, 0, 0}) +
                              numbers({0, 0, 0, 0, 0, 0, 0, 0, 0});
    ClipFixture f;
    const CPart* dropped =
        f.drop(item("zzz", "anything") + item("part", part) + item("aevents2", number(1) + event) +
               item("samples", number(2) + sample + frames + sample + frames));
    ASSERT_TRUE(dropped);
    EXPECT_EQ(f.host->samples.getCount(), 1) << "the one that is played";
    const auto* it = static_cast<const CAudioEvent*>(dropped->events.load());
    ASSERT_EQ(it->sample, f.host->samples.getFirst());
    EXPECT_EQ(it->sample->filename, "gone.wav");
    EXPECT_TRUE(it->sample->fixedPitch);
    EXPECT_EQ(it->sample->rate, 22050.0f);
    EXPECT_EQ(std::string(it->sample->data, it->sample->data + 8), frames);
}

/// What is cut off or says what cannot be is left out whole, and silently. A clip that ends with a
/// block may be one still.
TEST(ClipFiles, DamagedOnesDoNothingByHalf) {
    for (const int kind : kinds) {
        SCOPED_TRACE(kind);
        const std::string clip = smallClip(kind);
        ClipFixture f;
        const std::string before = f.save();
        const std::set<size_t> ends = blockEnds(clip);
        ASSERT_TRUE(ends.count(clip.size()));
        eachDamage(clip, [&](const std::string& damaged) {
            const bool dropped = f.drop(damaged) != nullptr;
            if (dropped && damaged.size() < clip.size()) {
                ASSERT_TRUE(ends.count(damaged.size())) << damaged.size();
            }
            ASSERT_EQ(f.host->undoIndex, dropped ? 0 : -1);
            if (!dropped) return;
            f.runAlone();
            f.undo();
            f.host->undoClear();
        });
        EXPECT_TRUE(f.save() == before);
        EXPECT_TRUE(shown.empty());
    }
}

TEST(ClipFiles, JoinWhatIsThere) {
    const Made notes = makeClip(partMIDI), hits = makeClip(partDrum);
    ClipFixture f;
    const auto soundOf = [](const CBaseEvent* e) {
        return static_cast<const CDrumEvent*>(e)->sound;
    };
    CSongTrack *drums = f.track(trackDrum), *other = f.track(trackDrum);
    ASSERT_TRUE(f.drop(hits.bytes, drums));
    CPart* again = f.drop(hits.bytes, drums, 960);
    ASSERT_TRUE(again && again->pos == 960);
    EXPECT_EQ(soundOf(again->getEvents()->next), 1);
    EXPECT_EQ(drums->track->drumLayer()->sounds.getCount(), 2) << "one kit plays both";
    f.seq->addStandardKit(other->track);
    EXPECT_EQ(soundOf(f.drop(hits.bytes, other)->getEvents()), 5) << "behind the kit";

    const int comps = f.host->comps.getCount(), tracks = f.seq->tracks.getCount();
    CSongTrack* onto = drums; // no notes on a drum track
    for (int tick : {0, 960}) {
        ASSERT_TRUE(f.drop(notes.bytes, onto, tick));
        EXPECT_EQ(f.seq->tracks.getCount(), tracks + 1);
        EXPECT_EQ(f.host->comps.getCount(), comps + 2) << "the track has its instruments";
        onto = f.seq->getProg()->tracks.items(tracks);
    }
}

/// Neither preview nor drop loads a plug-in; the drop tells it.
TEST(ClipFiles, PlugInsAreNotLoaded) {
    ClipFixture f;
    const std::string clip = f.clipOf(f.addNotes(f.track(trackMIDI))) +
                             qvf::item("device", qvf::bytes({2}) + qvf::text("/evil.so")) +
                             qvf::item("data", "x");
    EXPECT_FALSE(createFromQVC(f.host, f.put("plug.qvc", clip)));
    EXPECT_TRUE(shown.empty());
    const int comps = f.host->comps.getCount();
    EXPECT_TRUE(f.drop(clip));
    EXPECT_EQ(f.host->comps.getCount(), comps);
    EXPECT_EQ(shown, std::vector<std::string>{"VST: Failed to open /evil.so"});
}

/// What is told of a clip before it is dropped is how long it will be there, at any tempo; and of
/// damaged ones something that can be shown.
TEST(ClipFiles, TellTheirLength) {
    struct Case {
        int kind, mode;
        bool multi;
        double seconds;
    };
    for (const Case& c : {Case{partMIDI, 0, false, 0.0}, Case{partDrum, 0, false, 0.0},
                          Case{partAudio, 0, true, 0.0}, Case{partAudio, 1, false, 0.0},
                          Case{partAudio, 0, false, 44100 / 44100.0}}) {
        SCOPED_TRACE(c.kind * 100 + c.mode * 10 + c.multi);
        ClipFixture made;
        CPart* part = made.add(c.kind);
        if (c.kind == partAudio && !c.multi) {
            auto* clip = new CAudioPart;
            CAudioEvent* event = createAudioEvent();
            event->sample = made.addFile("second.wav", 16, 1, 44100);
            event->end = 44099;
            event->mode = (unsigned char)c.mode;
            event->ticks = 1234;
            clip->addEvent(0, event);
            part = made.add(clip, 960, made.track(trackAudio));
        }
        const std::string bytes = made.clipOf(part);
        ClipFixture f;
        f.host->setTempo(97.0f);
        const FileFacts facts = factsOf(f.put("a.qvc", bytes), false);
        EXPECT_DOUBLE_EQ(facts.seconds, c.seconds);
        CPart* dropped = f.drop(bytes);
        ASSERT_TRUE(dropped);
        const int there = f.seq->getTicks(dropped);
        const double told =
            c.seconds > 0 ? f.seq->framesToTicks(0, c.seconds * 48000, 48000) : facts.ticks;
        EXPECT_NEAR(told, there, 1);
        if (c.multi)
            eachDamage(bytes, [&](const std::string& bad) {
                const FileFacts any = factsOf(f.put("bad.qvc", bad), false);
                EXPECT_TRUE(any.ticks >= 0 && any.ticks <= maxTicks && any.seconds >= 0);
            });
    }
}
