#include "sequencer/CRender.h"

#include "SongFixture.h"
#include "audiofiles/CSample.h"

#include <cmath>
#include <filesystem>
#include <fstream>
#include <limits>
#include <unistd.h>

namespace {

/// Plays the frames since its start as numbers, a frame in 2^-20, the right channel negative, with
/// a latency of its own. Silent while the transport stands.
class Counter : public CComp {
public:
    explicit Counter(CQV* root) : CComp(root) {}
    static constexpr float step = 0x1p-20f;
    int latency = 0;
    bool constant = false; ///< plays `level` instead
    float level = 0.0f;

    void init() override { outputs.add(new COutputChannel(this)); }
    int getDelay() override { return latency; }
    void start() override { next = -latency; }
    void process(int frames) override {
        const ProcessGuard guard(this);
        if (!guard.enter) return;
        COutputChannel* out = output();
        const bool on = host->playing != 0;
        for (int i = 0; i < frames; i++, next++) {
            const float v = constant ? level : next < 0 ? 0.0f : float(next + 1) * step;
            out->bufL[i] = on ? v : 0.0f;
            out->bufR[i] = on ? -v : 0.0f;
        }
    }

private:
    int64_t next = 0;
};

struct RenderFixture : SongFixture {
    Counter* source = device.add(new Counter(&host));
    COutputChannel* master = device.out->output();
    CAudioCable* cable = device.connect(source);

    ~RenderFixture() {
        for (const char* name : {"a.wav", "b.wav"}) std::filesystem::remove(path(name).asChar());
    }
    CStr path(const char* name) const {
        const auto folder = std::filesystem::temp_directory_path();
        return (folder / ("sondrava-" + std::to_string(getpid()) + name)).c_str();
    }
    struct Job {
        double start = 0.0, length = 960.0;
        int rate = 44100, bits = 32, chs = 2;
    };
    /// Renders the master output, or `captured` to a file of its own.
    std::unique_ptr<CRender> render(const Job& job, const char* name = "a.wav",
                                    RenderProgress* progress = nullptr,
                                    COutputChannel* captured = nullptr) {
        CSample file;
        file.streamed = 1;
        file.setFormat(job.rate, job.bits, job.chs);
        file.create(path(name));
        file.writeHeader();
        auto made = std::make_unique<CRender>(&host, seq);
        made->rate = job.rate;
        made->setTarget(captured ? captured : master, &file);
        CList outputs;
        outputs.add(captured ? captured : master);
        made->process(job.start, job.length, &outputs, !captured, progress);
        return made;
    }
    std::string bytesOf(const char* name) const {
        std::ifstream in(path(name).asChar(), std::ios::binary);
        return {std::istreambuf_iterator<char>(in), {}};
    }
    /// The frames of a file, interleaved.
    std::vector<float> heard(const char* name = "a.wav") const {
        CSample file;
        EXPECT_TRUE(file.open(path(name)));
        std::vector<float> values(size_t(file.frames) * size_t(file.chs));
        file.readFrames(0, file.frames, values.data());
        return values;
    }
};

/// Frames of a length at a tempo.
double framesOf(double ticks, int rate, double bpm = 120.0) {
    return ticks * rate / (bpm * 16.0);
}

} // namespace

/// The file has the frames of the range, from the first on, in every format.
TEST(CRender, WritesTheRangeInEveryFormat) {
    struct Case {
        RenderFixture::Job job;
        float error;
    };
    for (const Case& c : {Case{{0, 960, 44100, 32, 2}, 0.0f}, Case{{0, 961, 22050, 24, 2}, 3e-7f},
                          Case{{0, 1, 96000, 32, 2}, 0.0f}, Case{{960, 333, 48000, 16, 2}, 4e-5f},
                          Case{{0, 5000, 44100, 32, 1}, 0.0f}}) {
        RenderFixture f;
        const auto made = f.render(c.job);
        const std::vector<float> values = f.heard();
        const double wanted = framesOf(c.job.length, c.job.rate);
        EXPECT_NEAR(double(made->framesWritten), wanted, 1.0 + framesOf(1.0, c.job.rate));
        ASSERT_EQ(values.size(), size_t(made->framesWritten) * size_t(c.job.chs));
        for (size_t i = 0; i < values.size(); i++) {
            const float count = float(i / size_t(c.job.chs) + 1) * Counter::step;
            const float expected = c.job.chs == 1 ? 0.0f : i % 2 ? -count : count;
            ASSERT_NEAR(values[i], expected, c.error) << c.job.bits << " bits, value " << i;
        }
    }
}

/// Two renders of one process are equal, and leave the transport as they found it.
TEST(CRender, RestoresTheHostAndRepeats) {
    RenderFixture f;
    for (const auto& [tick, bpm] : {std::pair{0, 90.0f}, {500, 200.0f}}) {
        auto* point = new CTempoPart;
        point->pos = tick;
        point->setTempo(bpm);
        f.prog()->addTempo(point, nullptr);
    }
    f.host.tempo = f.host.tempoNow = 77.0f;
    f.host.setPos(123.0);
    f.device.run();
    const float tempo = f.host.tempo, tempoNow = f.host.tempoNow;
    const auto first = f.render({0, 2000, 48000}, "a.wav");
    EXPECT_EQ(f.host.tempo, tempo);
    EXPECT_EQ(f.host.tempoNow, tempoNow);
    EXPECT_EQ(f.seq->getPos(), 123.0);
    EXPECT_EQ(f.host.rate, 44100.0f);
    EXPECT_EQ(f.host.renderMode, 0);
    EXPECT_FALSE(f.host.playing);
    // A tempo holds from the block that its point lies in.
    const double expected = framesOf(500, 48000, 90.0) + framesOf(1500, 48000, 200.0);
    EXPECT_NEAR(double(first->framesWritten), expected, f.host.frames);
    f.render({0, 2000, 48000}, "b.wav");
    EXPECT_EQ(f.bytesOf("a.wav"), f.bytesOf("b.wav"));
}

/// Playback ends before, and what is rendered begins at the range all the same.
TEST(CRender, StopsWhatPlays) {
    RenderFixture f;
    f.host.start();
    f.device.run(3);
    EXPECT_TRUE(f.host.playing);
    f.render({0, 960});
    EXPECT_FALSE(f.host.playing);
    const std::vector<float> values = f.heard();
    ASSERT_FALSE(values.empty());
    EXPECT_EQ(values[0], Counter::step);
    f.device.forget();
    f.device.run(2);
    for (float v : f.device.left) ASSERT_EQ(v, 0.0f) << "it still plays";
}

TEST(CRender, CancelEndsTheFile) {
    struct Cancel : RenderProgress {
        int calls = 0;
        float last = 0.0f;
        bool onRender(float done) override {
            EXPECT_GT(done, last);
            EXPECT_LE(done, 1.0f);
            last = done;
            return ++calls < 3;
        }
    } cancel;
    RenderFixture f;
    const auto made = f.render({0, 9600}, "a.wav", &cancel);
    EXPECT_TRUE(made->cancelled);
    EXPECT_EQ(cancel.calls, 3);
    EXPECT_EQ(made->framesWritten, 3 * f.host.frames);
    EXPECT_EQ(f.heard().size(), size_t(3 * f.host.frames * 2));
}

TEST(CRender, LimitsWhatIsOutOfRange) {
    const float notANumber = std::numeric_limits<float>::quiet_NaN();
    struct Case {
        float level, expected;
    };
    for (const Case& c :
         {Case{1.5f, 1.0f}, Case{-7.0f, -1.0f}, Case{0.75f, 0.75f}, Case{notANumber, 0.0f}}) {
        RenderFixture f;
        f.source->constant = true;
        f.source->level = c.level;
        f.render({0, 100}, "a.wav", nullptr, f.source->output());
        const std::vector<float> values = f.heard();
        ASSERT_FALSE(values.empty());
        for (size_t i = 0; i < values.size(); i++)
            ASSERT_EQ(values[i], i % 2 ? -c.expected : c.expected) << c.level;
    }
}

/// Latency is left out at the start and made up for at the end, of the mix and of single channels.
TEST(CRender, DropsLatency) {
    for (int latency : {1, 700, 3000}) {
        for (bool single : {false, true}) {
            RenderFixture f;
            f.source->latency = latency;
            f.host.update(updateDelays);
            const auto made =
                f.render({0, 960}, "a.wav", nullptr, single ? f.source->output() : nullptr);
            const std::vector<float> values = f.heard();
            ASSERT_EQ(values.size(), size_t(made->framesWritten) * 2) << latency;
            EXPECT_NEAR(double(made->framesWritten), framesOf(960, 44100), 25.0);
            for (size_t i = 0; i < values.size(); i += 2)
                ASSERT_EQ(values[i], float(i / 2 + 1) * Counter::step) << latency << single;
        }
    }
}
