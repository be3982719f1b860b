#include "TakeFixture.h"

#include "audiofiles/CSampleReader.h"
#include "audiofiles/SampleFixture.h"
#include "base/Messages.h"
#include "base/Numbers.h"
#include "base/Paths.h"
#include "engine/MidiBytes.h"
#include "support/RtTrap.h"

#include <atomic>
#include <csignal>
#include <cstring>
#include <functional>
#include <optional>
#include <sys/mman.h>
#include <sys/mount.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

namespace {

class RecordingTest : public SampleFiles {
protected:
    RecordingTest() {
        messages.clear();
        messageHooks().showMsg = [](CWin*, const CStr& title, const CStr& text, int) {
            messages.push_back((title + ": " + text).asChar());
            return int(mbOk);
        };
    }
    ~RecordingTest() override {
        messageHooks().showMsg = nullptr;
        diskWriteFailed = false;
    }
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

    static inline std::vector<std::string> messages;
    std::vector<float> left, right;
    int latency = 0; ///< frames that a take is to be moved by
};

/// Runs blocks on a thread of their own, as fast as they go, with idle passes meanwhile.
void runApart(TakeFixture& f, int blocks) {
    std::atomic<int> done{0};
    std::thread thread([&] {
        for (; done < blocks; done++) f.device.run();
    });
    for (int seen = 0; seen < blocks;) {
        while (done == seen) std::this_thread::yield();
        seen = done;
        f.host.idle();
    }
    thread.join();
}

} // namespace

/// What came in is what lies in the file, in all widths and however the take begins and ends. While
/// it is recorded it is not heard, but what else there is plays.
TEST_F(RecordingTest, TakesEqualTheFeed) {
    struct Way {
        const char* name;
        int countIn, before, during, loopEnd; ///< blocks, ticks
    };
    for (const Way& way : {Way{"from the start", 0, 0, 400, 0}, Way{"count-in", 96, 0, 150, 0},
                           Way{"punched in and out", 0, 33, 101, 0}, Way{"loop", 0, 0, 300, 960}})
        for (const auto& [bits, chs] :
             {std::pair{16, 1}, {24, 1}, {32, 1}, {16, 2}, {24, 2}, {32, 2}}) {
            SCOPED_TRACE(std::string(way.name) + " " + std::to_string(bits));
            TakeFixture f;
            CSongTrack* other = f.track(trackMIDI);
            CPart* part = midiPart(0);
            part->addEvent(way.before * f.blockTicks + 500, note(60));
            other->addPart(part, nullptr);
            f.seq->options.bytes[SongOptions::audioMonitor] = 0;
            f.host.recBits = bits;
            f.host.click->mode = 4;
            f.host.click->volume = 0;
            f.host.click->enabled = way.countIn > 0;
            f.host.click->beats = 1;
            if (way.loopEnd) f.loop(0, way.loopEnd);
            CSongTrack* t = f.track(trackAudio);
            t->track->recChs = static_cast<unsigned char>(chs);
            f.seq->selectTrack(t, true);
            f.idle();
            const std::string empty = dump(f.seq);
            feed(f, 600);
            if (way.before) f.host.start();
            f.play(way.before);
            f.host.rec();
            bool played = false;
            for (int i = 0; i < way.countIn + way.during; i++) {
                f.play(1);
                played = played || other->track->outPort()->count > 0;
            }
            f.host.pdcInDelay = 30; // as if the graph had delays
            f.host.pdcSendDelay = 7;
            latency += 37;
            if (way.before) f.host.rec();
            f.play(way.before);
            f.end();
            EXPECT_TRUE(played);
            EXPECT_EQ(*std::ranges::max_element(f.device.left), 0.0f) << "its own take";
            expectFeed(f, t, way.countIn + way.before, way.during * f.block);
            EXPECT_EQ(f.partOf(t)->pos, way.before * f.blockTicks);
            f.expectOneStep(empty);
        }
    EXPECT_TRUE(messages.empty());
}

/// Blocks of another thread, idle passes and the thread that writes, all at once: nothing is lost,
/// and the audio thread does nothing but move numbers.
TEST_F(RecordingTest, AudioThreadOnlyMovesNumbers) {
    TakeFixture f;
    CSongTrack* notes = f.ready(trackMIDI);
    CSongTrack* t = f.ready(trackAudio);
    f.loop(0, 960);
    feed(f, 700); // less than waits in memory, however late the disk is
    f.device.send(asData(midiNoteOn, 60, 100));
    rtReset();
    f.begin(0);
    runApart(f, 300);
    f.host.addMap(t->track->output(), 0, 0.5f);
    runApart(f, 300);
    f.host.stop(); // with the next block
    runApart(f, 20);
    f.idle();
    EXPECT_EQ(rtViolations(), 0);
    EXPECT_EQ(notes->parts.getCount(), 1);
    expectFeed(f, t, 0, 600 * f.block);
    EXPECT_EQ(pointsOf(f.partOf(t), 0).size(), 2u) << "the value before the move, and the move";
}

/// A process that dies in the middle of a take leaves a file that any program opens.
TEST_F(RecordingTest, KilledTakeIsAWholeFile) {
    constexpr int blocks = 1200;
    auto* ready = static_cast<std::atomic<bool>*>(
        mmap(nullptr, 1, PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0));
    const std::string file = path("rec.wav");
    const pid_t child = fork();
    if (child == 0) {
        TakeFixture f;
        f.host.tempAudioFolder = folder.c_str();
        f.ready(trackAudio);
        feed(f, blocks);
        f.begin(0);
        const int start = asTimeInMS();
        for (int i = 0; i < blocks; i++) {
            f.device.run();
            f.host.idle();
            // No faster than the disk gets its turn, as long as it gets any.
            while (int64_t(i) * f.block - getFileSize(file.c_str()) / 4 > f.rate / 2 &&
                   msBetween(start, asTimeInMS()) < 30000)
                asSleep(1);
        }
        *ready = true;
        pause();
    }
    while (!*ready && waitpid(child, nullptr, WNOHANG) == 0) asSleep(1);
    kill(child, SIGKILL);
    waitpid(child, nullptr, 0);
    munmap(ready, 1);
    sox(file + " -t f32 " + path("rec.raw"));
    const Bytes bytes = bytesOf(path("rec.raw"));
    const size_t frames = bytes.size() / 8;
    EXPECT_GE(frames, blocks * TakeFixture::block - TakeFixture::rate);
    std::vector<float> all(frames * 2);
    std::memcpy(all.data(), bytes.data(), frames * 8);
    const std::vector<float> fed = noise(blocks * TakeFixture::block, 1);
    for (size_t i = 0; i < frames; i++) ASSERT_NEAR(all[i * 2], fed[i], 1.0f / 16384) << i;
}

/// While a take is written, tracks play from disk without a gap; the disk thread's turn comes after
/// each block.
TEST_F(RecordingTest, TracksPlayFromDiskBesideATake) {
    constexpr int blocks = 600, files = 3; // of 14 buffers each
    TakeFixture f;
    std::vector<float> sums[2] = {std::vector<float>(blocks * f.block), sums[0]};
    for (int i = 0; i < files; i++) {
        std::vector<float> sides[2];
        for (int side : {0, 1}) {
            sides[side] = noise(blocks * f.block, unsigned(2 * i + side + 3));
            for (float& v : sides[side]) v /= files + 1; // the device clips the sum
        }
        const std::string file = path(std::to_string(i) + ".wav");
        write(file, f.rate, 32, 2, sides[0], sides[1]);
        for (int side : {0, 1})
            std::ranges::transform(sums[side], sides[side], sums[side].begin(), std::plus());
        CAudioEvent* event = createAudioEvent();
        event->sample = f.host.addSample(file.c_str(), 1);
        event->end = event->sample->frames - 1;
        auto* part = new CAudioPart;
        part->addEvent(0, event);
        f.track(trackAudio)->addPart(part, nullptr);
    }
    f.seq->unselectTracks();
    f.seq->options.bytes[SongOptions::audioMonitor] = 0;
    CSongTrack* t = f.ready(trackAudio);
    feed(f, blocks);
    f.host.parkWorkers();
    f.device.forget();
    f.begin(0);
    for (int i = 0; i < blocks; i++) {
        f.play(1);
        for (const CSample* sample : each<CSample>(f.host.samples)) sample->reader->serve();
    }
    const std::vector<float> heard[2] = {f.device.left, f.device.right};
    f.host.unparkWorkers();
    f.end();
    expectFeed(f, t, 0, blocks * f.block);
    for (int side : {0, 1})
        for (int i = 0; i < blocks * f.block - 1; i++)
            ASSERT_NEAR(heard[side][size_t(i)], sums[side][size_t(i)], 1e-5f) << i;
}

namespace {

/// A disk of so many bytes in place of a folder. Where nothing may be mounted, no file gets longer.
class SmallDisk {
public:
    SmallDisk(const std::string& at, int bytes)
        : folder(at), real(mount("small", at.c_str(), "tmpfs", 0,
                                 ("size=" + std::to_string(bytes)).c_str()) == 0) {
        getrlimit(RLIMIT_FSIZE, &before);
        handler = std::signal(SIGXFSZ, SIG_IGN);
        if (!real) limitFiles(rlim_t(bytes));
    }
    ~SmallDisk() {
        limitFiles(before.rlim_cur);
        std::signal(SIGXFSZ, handler);
        if (real) umount2(folder.c_str(), MNT_DETACH);
    }
    SmallDisk(const SmallDisk&) = delete;
    SmallDisk& operator=(const SmallDisk&) = delete;

    /// Leaves no byte.
    void fill() const {
        if (!real) return limitFiles(0);
        std::ofstream filler(folder + "/filler");
        while (filler.put('x').flush()) continue;
    }
    void makeRoom() const {
        std::filesystem::remove(folder + "/filler");
        if (real) mount("small", folder.c_str(), "tmpfs", MS_REMOUNT, "size=64m");
        limitFiles(before.rlim_cur);
    }

private:
    const std::string folder;
    const bool real;
    rlimit before{};
    void (*handler)(int) = nullptr;

    void limitFiles(rlim_t bytes) const {
        const rlimit limit{bytes, before.rlim_max};
        setrlimit(RLIMIT_FSIZE, &limit);
    }
};

const char* const fullText =
    "Record: The disk is full or too slow: a part of the recording could not be written";

} // namespace

/// A disk that is full warns once, keeps what fitted, and the program goes on: the next take works,
/// in a file of its own. The files go with the history.
TEST_F(RecordingTest, FullDiskWarnsOnce) {
    constexpr int bytes = 100 * 4096, frames = (bytes - 44) / 4;
    TakeFixture f;
    CSongTrack* t = f.ready(trackAudio);
    const SmallDisk disk(f.folder, bytes);
    feed(f, 1500);
    f.begin(0);
    f.play(1300); // more than the disk and what waits in memory
    f.end();
    EXPECT_EQ(messages, std::vector<std::string>{fullText});
    diskWriteFailed = false;
    expectFeed(f, t, 0, frames);
    f.step([&](CUndo* u) { u->asRemove(f.partOf(t), &t->parts); });
    disk.makeRoom();
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
    struct Case {
        const char *name, *text;
        int armed; ///< whether the track goes on
    };
    for (const Case& c :
         {Case{"no folder", "Record: Project must be saved before you can record audio", 0},
          Case{"no file",
               "Record: No file for the recording can be made in the folder \"/proc/self\"", 0},
          Case{"full", fullText, 1}}) {
        SCOPED_TRACE(c.name);
        TakeFixture f;
        std::optional<SmallDisk> disk;
        if (c.name == std::string("no folder")) {
            f.host.projectFile = path("song.qv").c_str();
            for (const char* name : {"song.qv", "song_audio"}) std::ofstream(path(name)) << "x";
        } else if (c.name == std::string("no file")) {
            f.host.tempAudioFolder = "/proc/self"; // where nobody can make one
        } else {
            disk.emplace(f.folder, 4096);
            disk->fill();
        }
        CSongTrack* notes = f.ready(trackMIDI);
        CSongTrack* sound = f.ready(trackAudio);
        messages.clear();
        feed(f, 400);
        f.begin(0);
        f.play(300, {{10, asData(midiNoteOn, 60, 100)}, {20, asData(midiNoteOn, 60, 0)}});
        for (int ms = 0; ms < 5000 && sound->track->armed != c.armed; ms++) asSleep(1);
        EXPECT_EQ(int(sound->track->armed), c.armed);
        EXPECT_EQ(int(notes->track->armed), 1);
        f.end();
        EXPECT_EQ(messages, std::vector<std::string>{c.text});
        EXPECT_EQ(notes->parts.getCount(), 1);
        EXPECT_EQ(sound->parts.getCount(), 0);
        EXPECT_EQ(f.host.samples.getCount(), 0);
        EXPECT_FALSE(std::filesystem::exists(f.folder + "/rec.wav"));
    }
}
