#include "TakeFixture.h"

#include "audiofiles/SampleFixture.h"
#include "base/Messages.h"
#include "base/Numbers.h"
#include "engine/MidiBytes.h"
#include "support/RtTrap.h"

#include <atomic>
#include <csignal>
#include <cstring>
#include <sys/mman.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

namespace {

constexpr int latency = 137; ///< frames

class RecordingTest : public SampleFiles {
protected:
    RecordingTest() { messageHooks().showMsg = count; }
    ~RecordingTest() override {
        messageHooks().showMsg = nullptr;
        diskWriteFailed = false;
    }
    static int count(CWin*, const CStr& title, const CStr&, int) {
        EXPECT_EQ(title, CStr("Record"));
        messages++;
        return mbOk;
    }
    static inline int messages = 0;

    /// Has noise come in from the next block on, and keeps it.
    void feed(TakeFixture& f, int frames) {
        left = noise(frames, 1);
        right = noise(frames, 2);
        f.device.feedL = left;
        f.device.feedR = right;
    }
    /// Compares a take with the feed from frame `from` on, byte for byte.
    void expectFeed(TakeFixture& f, CSongTrack* t, int from, int frames) {
        ASSERT_EQ(t->parts.getCount(), 1);
        const auto* event = static_cast<CAudioEvent*>(f.partOf(t)->getEvents());
        const CSample* take = event->sample;
        EXPECT_EQ(take->getFrames(), frames);
        EXPECT_EQ(event->start, std::min(latency, frames - 1));
        EXPECT_EQ(event->end, frames - 1);
        EXPECT_TRUE(f.host.samples.contains(take));
        const auto slice = [&](const std::vector<float>& v) {
            return std::vector<float>(v.begin() + from, v.begin() + from + frames);
        };
        write(path("once.wav"), TakeFixture::rate, take->bits, take->chs, slice(left),
              slice(right));
        EXPECT_EQ(bytesOf(take->filename.asChar()), bytesOf(path("once.wav")));
    }

    std::vector<float> left, right;
};

/// Blocks on a thread of their own, as fast as they go, with idle passes meanwhile.
class Player {
public:
    explicit Player(TakeFixture& take)
        : f(take), thread([this] {
              while (!ended) {
                  if (budget <= 0) {
                      std::this_thread::yield();
                      continue;
                  }
                  f.device.run();
                  f.device.forget();
                  budget--;
              }
          }) {}
    ~Player() {
        ended = true;
        thread.join();
    }
    void run(int blocks) {
        for (budget = blocks; budget > 0;) {
            f.host.idle();
            std::this_thread::yield();
        }
    }

private:
    TakeFixture& f;
    std::atomic<int> budget{0};
    std::atomic<bool> ended{false};
    std::thread thread; // last: it uses the others
};

} // namespace

/// What came in is what lies in the file, in all widths and however the take begins and ends.
TEST_F(RecordingTest, TakesEqualTheFeed) {
    struct Way {
        const char* name;
        int countIn, before, during, loopEnd;
    };
    for (const Way& way : {Way{"from the start", 0, 0, 400, 0}, Way{"count-in", 96, 0, 150, 0},
                           Way{"punched in and out", 0, 33, 101, 0}, Way{"loop", 0, 0, 300, 960}})
        for (int bits : {16, 24, 32})
            for (int chs : {1, 2}) {
                SCOPED_TRACE(std::string(way.name) + " " + std::to_string(bits));
                TakeFixture f;
                CSongTrack* playing = f.track(trackMIDI);
                playing->addPart(midiPart(0), nullptr);
                f.host.recBits = bits;
                f.host.recLatency = latency;
                f.host.click->enabled = way.countIn > 0;
                f.host.click->beats = 1;
                if (way.loopEnd) f.loop(0, way.loopEnd);
                CSongTrack* t = f.track(trackAudio);
                t->track->recChs = static_cast<unsigned char>(chs);
                f.seq->selectTrack(t, true);
                f.idle();
                const std::string empty = dump(f.seq);
                feed(f, 600 * f.block);
                f.host.setPos(0);
                if (way.before) {
                    f.host.start();
                    f.play(way.before);
                }
                f.host.rec();
                f.play(way.countIn + way.during);
                if (way.before) {
                    f.host.rec();
                    f.play(20);
                }
                f.end();
                expectFeed(f, t, (way.countIn + way.before) * f.block, way.during * f.block);
                EXPECT_EQ(f.partOf(t)->pos, way.before * f.blockTicks);
                const std::string full = dump(f.seq);
                f.undo();
                EXPECT_EQ(dump(f.seq), empty);
                EXPECT_TRUE(f.host.samples.empty());
                f.redo();
                EXPECT_EQ(dump(f.seq), full);
            }
    EXPECT_EQ(messages, 0);
}

/// The clip that a take becomes plays what came in, moved by the latency; while it is recorded it
/// stays silent. Takes get names of their own, and files that nobody kept go with the history.
TEST_F(RecordingTest, TakesPlayBack) {
    TakeFixture f;
    f.host.recLatency = latency;
    f.host.recBits = 32;
    f.seq->options.bytes[SongOptions::audioMonitor] = 0;
    f.loop(0, 960);
    f.ready(trackAudio);
    feed(f, 300 * f.block);
    f.begin(0);
    f.device.forget();
    f.play(300);
    EXPECT_EQ(*std::ranges::max_element(f.device.left), 0.0f) << "its own take";
    f.end();
    f.prog()->loop = f.host.loop = 0;
    f.host.setPos(0);
    f.device.forget();
    f.host.start();
    f.play(100);
    f.host.stop();
    const float gain = f.device.left[1000] / left[1000 + latency];
    ASSERT_GT(gain, 0.0f);
    for (size_t i = 100; i < 20000; i++)
        ASSERT_NEAR(f.device.left[i], gain * left[i + latency], 1e-4f) << i;
    f.play(2);
    f.begin(0);
    f.play(60);
    f.end();
    EXPECT_TRUE(std::filesystem::exists(f.folder + "/rec.wav"));
    EXPECT_TRUE(std::filesystem::exists(f.folder + "/rec1.wav"));
    f.undo();
    f.host.undoClear();
    EXPECT_FALSE(std::filesystem::exists(f.folder + "/rec1.wav"));
}

/// Blocks of another thread, idle passes and the thread that writes, all at once: nothing is lost,
/// and the audio thread does nothing but move numbers.
TEST_F(RecordingTest, AudioThreadOnlyMovesNumbers) {
    TakeFixture f;
    CSongTrack* notes = f.ready(trackMIDI);
    CSongTrack* t = f.ready(trackAudio);
    f.host.recLatency = latency;
    f.loop(0, 960);
    feed(f, 2000 * f.block);
    f.device.send(asData(0x90, 60, 100));
    {
        Player player(f);
        rtReset();
        f.begin(0);
        player.run(500);
        f.host.addMap(t->track->output(), 0, 0.5f);
        player.run(500);
        f.host.stop();
        player.run(20);
    }
    f.idle();
    EXPECT_EQ(rtViolations(), 0);
    EXPECT_EQ(notes->parts.getCount(), 1);
    ASSERT_EQ(t->parts.getCount(), 1);
    const auto* event = static_cast<CAudioEvent*>(f.partOf(t)->getEvents());
    // The call may come a block late.
    expectFeed(f, t, 0, event->sample->getFrames());
    EXPECT_GE(event->sample->getFrames(), 1000 * f.block);
    EXPECT_EQ(pointsOf(f.partOf(t), 0).size(), 2u) << "its value from the start, and the move";
}

/// A process that dies in the middle of a take leaves a file that any program opens.
TEST_F(RecordingTest, KilledTakeIsAWholeFile) {
    constexpr int blocks = 1200;
    std::atomic<int>* told = static_cast<std::atomic<int>*>(
        mmap(nullptr, sizeof(std::atomic<int>), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS,
             -1, 0));
    const pid_t child = fork();
    if (child == 0) {
        TakeFixture f;
        f.host.tempAudioFolder = folder.c_str();
        f.ready(trackAudio);
        feed(f, blocks * f.block);
        f.begin(0);
        const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(30);
        for (int i = 0; i < blocks; i++) {
            f.device.run();
            f.host.idle();
            // No faster than the disk gets its turn: half a second is left to it.
            const auto behind = [&] {
                const auto size = std::filesystem::exists(folder + "/rec.wav")
                                      ? std::filesystem::file_size(folder + "/rec.wav")
                                      : 0;
                return int64_t(i) * f.block - int64_t(size / 4) > f.rate / 2;
            };
            while (behind() && std::chrono::steady_clock::now() < deadline) asSleep(1);
        }
        *told = 1;
        pause();
    }
    while (*told == 0 && waitpid(child, nullptr, WNOHANG) == 0) asSleep(1);
    kill(child, SIGKILL);
    waitpid(child, nullptr, 0);
    munmap(told, sizeof *told);
    sox(path("rec.wav") + " -t f32 " + path("rec.raw"));
    const Bytes bytes = bytesOf(path("rec.raw"));
    const size_t frames = bytes.size() / 8;
    EXPECT_GE(frames, blocks * TakeFixture::block - TakeFixture::rate);
    std::vector<float> all(frames * 2);
    std::memcpy(all.data(), bytes.data(), frames * 8);
    const std::vector<float> fed = noise(blocks * TakeFixture::block, 1);
    for (size_t i = 0; i < frames; i++) ASSERT_NEAR(all[i * 2], fed[i], 1.0f / 16384) << i;
}

/// A disk that is full warns once, keeps what fitted, and the program goes on: the next take works.
/// So does a folder that takes no files at all.
TEST_F(RecordingTest, FullDiskWarnsOnce) {
    TakeFixture f;
    CSongTrack* t = f.ready(trackAudio);
    f.host.recLatency = latency;
    messages = 0;
    rlimit before{};
    getrlimit(RLIMIT_FSIZE, &before);
    const auto old = std::signal(SIGXFSZ, SIG_IGN);
    rlimit small = before;
    small.rlim_cur = 44 + 100 * TakeFixture::block * 4;
    setrlimit(RLIMIT_FSIZE, &small);
    feed(f, 1000 * f.block);
    f.begin(0);
    f.play(900); // more than waits in memory
    f.end();
    setrlimit(RLIMIT_FSIZE, &before);
    std::signal(SIGXFSZ, old);
    EXPECT_EQ(messages, 1);
    diskWriteFailed = false;
    expectFeed(f, t, 0, 100 * f.block);
    f.undo();
    f.host.undoClear();

    std::filesystem::permissions(f.folder, std::filesystem::perms::none);
    const bool refuses = access(f.folder.c_str(), W_OK) != 0; // not for root
    f.begin(0);
    f.play(20);
    f.end();
    std::filesystem::permissions(f.folder, std::filesystem::perms::all);
    EXPECT_EQ(messages, refuses ? 2 : 1);
    EXPECT_EQ(t->parts.empty(), refuses);
    f.undo();
    f.host.undoClear();

    feed(f, 100 * f.block);
    f.begin(0);
    f.play(50);
    f.end();
    expectFeed(f, t, 0, 50 * f.block);
}
