#include "TakeFixture.h"
#include "audiofiles/CSampleReader.h"
#include "audiofiles/SampleFixture.h"
#include "base/FullDisk.h"
#include "base/Numbers.h"
#include "base/Paths.h"

#include <atomic>
#include <cstring>
#include <optional>
#include <thread>

namespace {

class RecordingTest : public SampleFiles, protected Told {
protected:
    ~RecordingTest() override { diskWriteFailed = false; }
    /// Has noise come in from the next block on, and keeps it.
    void feed(TakeFixture& f, int blocks) {
        f.host.recLatency = latency = 137;
        f.device.feedL = left = noise(blocks * f.block, 1);
        f.device.feedR = right = noise(blocks * f.block, 2);
    }
    /// Compares the last take with so many frames of the feed from a block on, byte for byte.
    void expectFeed(TakeFixture& f, CSongTrack* t, int from, int frames) {
        ASSERT_EQ(t->parts.getCount(), 1);
        const auto* event = static_cast<CAudioEvent*>(f.partOf(t)->getEvents());
        const CSample* take = event->sample;
        EXPECT_EQ(take->getFrames(), frames);
        EXPECT_EQ(event->start, latency);
        EXPECT_EQ(event->end, frames - 1);
        EXPECT_TRUE(f.host.samples.contains(take));
        const auto slice = [&](const std::vector<float>& v) {
            const auto first = v.begin() + from * f.block;
            return std::vector<float>(first, first + frames);
        };
        write(path("once.wav"), f.rate, take->bits, take->chs, slice(left), slice(right));
        EXPECT_EQ(bytesOf(take->filename.asChar()), bytesOf(path("once.wav")));
    }

    std::vector<float> left, right;
    int latency = 0; ///< frames that a take is to be moved by
};

constexpr int lateFrames = 37; ///< of a component

/// Runs blocks on a thread of their own, as fast as they go, with idle passes meanwhile.
void runApart(TakeFixture& f, int blocks) {
    std::atomic<int> done{0};
    const BlockThread thread([&] {
        if (done < blocks) f.device.run(), done++;
    });
    for (int seen = 0; seen < blocks; f.host.idle()) {
        ASSERT_TRUE(comes([&] { return done > seen; }));
        seen = done;
    }
}

} // namespace

/// What came in is what lies in the file, in all widths and however the take begins and ends. While
/// it is recorded it is not heard, but what else there is plays.
TEST_F(RecordingTest, TakesEqualTheFeed) {
    struct Way {
        const char* name;
        int countIn, before, during, loopEnd; ///< blocks, ticks
        int bits, chs;
    };
    for (const Way& way : {Way{"from the start", 0, 0, 400, 0, 24, 1},
                           {"count-in", 96, 0, 150, 0, 32, 2},
                           {"punched in and out", 0, 33, 101, 0, 16, 1},
                           {"loop", 0, 0, 300, 960, 24, 2}}) {
        SCOPED_TRACE(way.name);
        TakeFixture f;
        CSongTrack* other = f.track(trackMIDI);
        other->addPart(midiPart(0), nullptr)->addEvent(way.before * f.blockTicks + 500, note(60));
        f.seq->options.bytes[SongOptions::audioMonitor] = 0;
        f.host.recBits = way.bits;
        f.host.click->mode = 4;
        f.host.click->volume = 0;
        f.host.click->enabled = way.countIn > 0;
        f.host.click->beats = 1;
        if (way.loopEnd) f.loop(0, way.loopEnd);
        f.seq->recorder.loopTakes = 0;
        CSongTrack* t = f.track(trackAudio);
        t->track->recChs = static_cast<unsigned char>(way.chs);
        f.seq->selectTrack(t, true);
        f.device.connect(f.device.add(new Late(&f.host, lateFrames)));
        f.idle();
        const std::string empty = dump(f.seq);
        feed(f, 600);
        latency += lateFrames;
        if (way.before) f.host.start();
        f.play(way.before);
        f.host.rec();
        int played = 0;
        for (int i = 0; i < way.countIn + way.during; i++) {
            f.play(1);
            played += other->track->outPort()->count;
        }
        if (way.before) f.host.rec();
        f.play(way.before);
        f.end();
        EXPECT_GT(played, 0);
        EXPECT_EQ(*std::ranges::max_element(f.device.left), 0.0f) << "its own take";
        expectFeed(f, t, way.countIn + way.before, way.during * f.block);
        EXPECT_EQ(f.partOf(t)->pos, way.before * f.blockTicks);
        f.expectOneStep(empty);
    }
    EXPECT_TRUE(messages.empty());
}

/// What is punched in by the locators begins and ends with their very frames, whatever the blocks
/// and the delay of what comes in, and lies at the left one.
TEST_F(RecordingTest, PunchesByTheLocators) {
    constexpr int from = 335;
    for (const int end : {1235, 1240}) {
        TakeFixture f;
        f.readsDisk = true;
        CSongTrack* t = f.ready(trackAudio);
        f.loop(from, end);
        f.host.loop = f.prog()->loop = 0;
        f.seq->punch = 1;
        feed(f, 300);
        f.begin(0);
        f.play(200);
        EXPECT_TRUE(f.host.playing && !f.host.recording);
        f.end();
        ASSERT_EQ(t->parts.getCount(), 1);
        EXPECT_EQ(f.partOf(t)->pos, from);
        const auto* event = static_cast<CAudioEvent*>(f.partOf(t)->getEvents());
        const auto frames = [](int ticks) { // all whole
            return ticks * TakeFixture::block / TakeFixture::blockTicks;
        };
        EXPECT_EQ(event->end - event->start + 1, frames(end - from));
        std::vector<float> taken(size_t(2 * event->sample->frames));
        event->sample->readFrames(0, event->sample->frames, taken.data());
        for (int i : {0, event->end - event->start})
            EXPECT_NEAR(taken[size_t(2 * (event->start + i))],
                        left[size_t(frames(from) + latency + i)], 1e-4);
    }
}

/// Blocks of another thread, idle passes and the thread that writes, all at once: nothing is lost,
/// and the audio thread does nothing but move numbers.
TEST_F(RecordingTest, AudioThreadOnlyMovesNumbers) {
    TakeFixture f;
    CSongTrack* notes = f.ready(trackMIDI);
    CSongTrack* t = f.ready(trackAudio);
    f.loop(0, 960);
    f.seq->recorder.loopTakes = 0;
    feed(f, 700); // less than waits in memory, however late the disk is
    f.device.send(asData(midiNoteOn, 60, 100));
    f.begin(0);
    runApart(f, 300);
    f.host.addMap(t->track->output(), 0, 0.5f);
    runApart(f, 300);
    f.host.stop(); // with the next block
    runApart(f, 20);
    f.idle();
    EXPECT_EQ(notes->parts.getCount(), 1);
    expectFeed(f, t, 0, 600 * f.block);
    EXPECT_EQ(pointsOf(f.partOf(t), 0).size(), 2u) << "the value before the move, and the move";
}

/// While a take is written, another track plays from disk without a gap; the disk thread's turn
/// comes after each block. At any time its file is whole, so that it outlives a process that dies.
TEST_F(RecordingTest, TracksPlayFromDiskBesideATake) {
    constexpr int blocks = 600, fed = blocks * TakeFixture::block; // 14 buffers
    TakeFixture f;
    std::vector<float> sides[2] = {noise(fed, 3), noise(fed, 4)};
    f.readsDisk = true;
    write(path("long.wav"), f.rate, 32, 2, sides[0], sides[1]);
    CAudioEvent* event = createAudioEvent();
    event->sample = f.host.addSample(path("long.wav").c_str(), 1);
    event->end = event->sample->frames - 1;
    auto* part = new CAudioPart;
    part->addEvent(0, event);
    f.track(trackAudio)->addPart(part, nullptr);
    f.seq->unselectTracks();
    f.seq->options.bytes[SongOptions::audioMonitor] = 0;
    CSongTrack* t = f.ready(trackAudio);
    feed(f, blocks);
    f.host.parkWorkers();
    f.device.forget();
    f.begin(0);
    for (int i = 0; i < blocks; i++) {
        f.play(1);
        for (const CSample* sample : f.host.samples) sample->reader->serve();
    }
    const std::vector<float> heard[2] = {f.device.left, f.device.right};
    for (size_t i = 0; i < fed - 1; i++)
        for (int side : {0, 1}) ASSERT_NEAR(heard[side][i], sides[side][i], 1e-5f) << i;
    const CStr file = CStr(f.folder.c_str()) + "/rec.wav";
    for (int ms = 0; ms < 30000 && fed - getFileSize(file) / 4 > f.rate / 2; ms++) asSleep(1);
    run("sox -V1 " + std::string(file.asChar()) + " -t f32 " + path("rec.raw"));
    const Bytes bytes = bytesOf(path("rec.raw"));
    std::vector<float> values(bytes.size() / 4);
    EXPECT_GE(values.size(), 2 * size_t(fed - f.rate));
    std::memcpy(values.data(), bytes.data(), bytes.size());
    for (size_t i = 0; i < values.size(); i += 2)
        ASSERT_NEAR(values[i], left[i / 2], 1.0f / 16384) << i;
    f.host.unparkWorkers();
    f.end();
    expectFeed(f, t, 0, fed);
}

namespace {

const char* const fullText =
    "Record: The disk is full or too slow: a part of the recording could not be written";

} // namespace

/// A disk that is full warns once, keeps what fitted, and the program goes on: the next take works,
/// in a file of its own. The files go with the history.
TEST_F(RecordingTest, FullDiskWarnsOnce) {
    constexpr int bytes = 100 * 4096, frames = (bytes - 44) / 4;
    TakeFixture f;
    CSongTrack* t = f.ready(trackAudio);
    std::optional<FullDisk> disk(bytes);
    feed(f, 1500);
    f.begin(0);
    f.play(1300); // more than the disk and what waits in memory
    f.end();
    EXPECT_EQ(messages, std::vector<std::string>{fullText});
    diskWriteFailed = false;
    expectFeed(f, t, 0, frames);
    f.step([&](CUndo* u) { u->asRemove(f.partOf(t), &t->parts); });
    disk.reset();
    feed(f, 100);
    f.begin(0);
    f.play(50);
    f.end();
    expectFeed(f, t, 0, 50 * f.block);
    EXPECT_TRUE(std::filesystem::exists(f.folder + "/rec1.wav"));
    EXPECT_EQ(messages.size(), 1u);
    f.host.clear();
    EXPECT_TRUE(std::filesystem::is_empty(f.folder));
}

/// Where no sound can be kept, that is told once, in so many words; notes are recorded all the
/// same, and nothing is left but them.
TEST_F(RecordingTest, TellsWhyThereIsNoSound) {
    enum Cause { noFolder, noFile, full };
    const char* const texts[] = {
        "Record: Project must be saved before you can record audio",
        "Record: No file for the recording can be made in the folder \"/proc/self\"", fullText};
    for (const Cause cause : {noFolder, noFile, full}) {
        SCOPED_TRACE(texts[cause]);
        TakeFixture f;
        std::optional<FullDisk> disk;
        if (cause == noFolder) {
            f.host.projectFile = path("song.qv").c_str();
            for (const char* name : {"song.qv", "song_audio"}) std::ofstream(path(name)) << "x";
        } else if (cause == noFile) {
            f.host.tempAudioFolder = "/proc/self"; // where nobody can make one
        } else {
            disk.emplace(0);
        }
        CSongTrack* notes = f.ready(trackMIDI);
        CSongTrack* sound = f.ready(trackAudio);
        messages.clear();
        feed(f, 400);
        f.begin(0);
        f.play(300, {{10, asData(midiNoteOn, 60, 100)}, {20, asData(midiNoteOn, 60, 0)}});
        const int armed = cause == full; // goes on
        for (int ms = 0; ms < 5000 && sound->track->armed != armed; ms++) asSleep(1);
        EXPECT_EQ(int(sound->track->armed), armed);
        EXPECT_EQ(int(notes->track->armed), 1);
        f.end();
        EXPECT_EQ(messages, std::vector<std::string>{texts[cause]});
        EXPECT_EQ(notes->parts.getCount(), 1);
        EXPECT_EQ(sound->parts.getCount(), 0);
        EXPECT_EQ(f.host.samples.getCount(), 0);
        EXPECT_FALSE(std::filesystem::exists(f.folder + "/rec.wav"));
    }
}
