#include "sequencer/render/CRender.h"

#include "SongFixture.h"
#include "audiofiles/CSample.h"
#include "base/TempFolder.h"
#include "engine/CGroupCh.h"

#include <cmath>
#include <limits>

namespace {

/// Plays the frames since its start as numbers, a frame in 2^-20, the right channel negative, with
/// a latency of its own. Silent while the transport stands.
class Counter : public TestInstrument {
public:
    using TestInstrument::TestInstrument;
    static constexpr float step = 0x1p-20f;
    int latency = 0;
    float level = 0.0f; ///< plays this instead, unless it is 0
    int64_t next = 0;   ///< frame

    int getDelay() override { return latency; }
    void start() override { next = -latency; }
    void play(int frames) override {
        for (int i = 0; i < frames && host->playing; i++, next++) {
            const float v = level != 0.0f ? level : next < 0 ? 0.0f : float(next + 1) * step;
            output()->bufL[i] = v;
            output()->bufR[i] = -v;
        }
    }
};

struct RenderFixture : SongFixture {
    TempFolder folder;
    Counter* source = device.add(new Counter(&host));
    int64_t written = 0; ///< frames of the latest render
    struct Job {
        double start = 0.0, length = 960.0;
        int rate = 44100;
    };

    RenderFixture() { device.connect(source); }
    /// Renders the master output, or `single` by itself, to a file, and gives its values,
    /// interleaved.
    std::vector<float> render(const Job& job, const char* name = "a.wav",
                              COutputChannel* single = nullptr) {
        CSample file;
        file.streamed = 1;
        file.setFormat(job.rate, 32, 2);
        file.create(folder.file(name));
        file.writeHeader();
        CRender made(&host, seq);
        made.rate = job.rate;
        ListOf<COutputChannel> outputs;
        outputs.add(single ? single : device.out->output());
        made.setTarget(single ? single : device.out->output(), &file);
        made.process(job.start, job.length, &outputs, !single, nullptr);
        written = made.framesWritten;
        CSample heard;
        EXPECT_TRUE(heard.open(folder.file(name)));
        EXPECT_EQ(heard.frames, written);
        std::vector<float> values(size_t(heard.frames) * 2);
        heard.readFrames(0, heard.frames, values.data());
        return values;
    }
};

/// Frames of a length at a tempo.
double framesOf(double ticks, int rate, double bpm = 120.0) {
    return ticks * rate / (bpm * 16.0);
}

} // namespace

/// Two renders of one process are equal, and leave the host as they found it, but for what plays:
/// that ends.
TEST(CRender, RestoresTheHostAndRepeats) {
    RenderFixture f;
    f.tempoAt(0, 90.0f);
    f.tempoAt(500, 200.0f);
    f.host.setTempo(77.0f);
    f.host.tempoNow = 77.0f;
    f.host.setPos(123.0);
    f.device.run();
    f.host.start();
    const float tempo = f.host.tempo, tempoNow = f.host.tempoNow;
    f.render({0, 2000, 48000}, "a.wav");
    EXPECT_EQ(f.host.tempo, tempo);
    EXPECT_EQ(f.host.tempoNow, tempoNow);
    EXPECT_EQ(f.seq->getPos(), 123.0);
    EXPECT_EQ(f.host.rate, 44100.0f);
    EXPECT_EQ(f.host.renderMode, 0);
    EXPECT_FALSE(f.host.playing);
    f.device.forget();
    f.device.run(2);
    EXPECT_EQ(*std::ranges::max_element(f.device.left), 0.0f) << "it still plays";
    const double expected = framesOf(500, 48000, 90.0) + framesOf(1500, 48000, 200.0);
    EXPECT_NEAR(double(f.written), expected, 1.0);
    f.render({0, 2000, 48000}, "b.wav");
    EXPECT_EQ(f.folder.read("a.wav"), f.folder.read("b.wav"));
}

/// A note that sounds on an instrument outside ends as soon as the render has the song.
TEST(CRender, EndsTheNotesOutside) {
    RenderFixture f;
    CSongTrack* t = f.track(trackMIDI);
    CPart* part = midiPart(0, 9600);
    part->addEvent(0, note(60, 9000));
    t->addPart(part, nullptr);
    {
        const GraphHold hold(&f.host);
        f.device.midiOut->addMIDICable(t->track->outPort(), nullptr);
    }
    f.host.start();
    f.device.run(4);
    const auto notes = [&f](bool on) {
        return std::ranges::count_if(f.device.sent, [on](const AamEvent& e) {
            return asByte1(e.data) == 60 && (on ? noteOn(e.data) : noteOff(e.data));
        });
    };
    EXPECT_EQ(notes(true), 1);
    f.render({0, 960});
    f.device.forget();
    f.device.run();
    EXPECT_EQ(notes(false), 1);
    EXPECT_EQ(notes(true), 0);
}

TEST(CRender, LimitsWhatIsOutOfRange) {
    const float notANumber = std::numeric_limits<float>::quiet_NaN();
    for (const auto& [level, expected] :
         {std::pair{1.5f, 1.0f}, {-7.0f, -1.0f}, {0.75f, 0.75f}, {notANumber, 0.0f}}) {
        RenderFixture f;
        f.source->level = level;
        const std::vector<float> values = f.render({0, 100}, "a.wav", f.source->output());
        ASSERT_FALSE(values.empty());
        for (size_t i = 0; i < values.size(); i++)
            ASSERT_EQ(values[i], i % 2 ? -expected : expected) << level;
    }
}

/// The file has the frames of the range, from the first on: latency is left out at the start and
/// made up for at the end, of the mix and of single channels.
TEST(CRender, WritesTheRangeWithoutLatency) {
    const RenderFixture::Job jobs[] = {{0, 960}, {960, 333, 48000}, {0, 1, 96000}, {0, 961, 22050}};
    for (const RenderFixture::Job& job : jobs)
        for (int latency : {0, 1, 700, 3000}) {
            RenderFixture f;
            f.source->latency = latency;
            f.host.hostNotices.raise(HostNotice::delays);
            const std::vector<float> values =
                f.render(job, "a.wav", latency % 2 ? f.source->output() : nullptr);
            EXPECT_NEAR(double(f.written), framesOf(job.length, job.rate),
                        1.0 + framesOf(1.0, job.rate));
            for (size_t i = 0; i < values.size(); i++)
                ASSERT_EQ(values[i], float(i / 2 + 1) * (i % 2 ? -Counter::step : Counter::step))
                    << latency << " at " << i;
        }
}

/// Of the graph only what leads to a channel that is written works; where a bus is part of that,
/// all of it does, as anything may send to it.
TEST(CRender, WorksOutOnlyWhatItWrites) {
    RenderFixture f;
    Counter* fed = f.device.add(new Counter(&f.host));
    auto* group = f.device.add(new CGroupCh(&f.host));
    f.device.connect(group);
    f.device.connect(fed, group);
    const auto expectPlayed = [&](COutputChannel* written, bool bySource, bool byFed) {
        const auto heard = f.render({}, "a.wav", written);
        EXPECT_EQ(f.source->next > 0, bySource);
        EXPECT_EQ(fed->next > 0, byFed);
        EXPECT_EQ(heard.at(2002), 1002 * Counter::step);
    };
    expectPlayed(f.source->output(), true, false);
    expectPlayed(group->output(), false, true);
    auto* bus = f.device.add(new CGroupCh(&f.host));
    {
        const GraphHold hold(&f.host);
        f.host.comps.remove(bus);
        f.host.sends.add(bus);
    }
    f.device.connect(bus, group);
    expectPlayed(group->output(), true, true);
    expectPlayed(f.source->output(), true, false);
}
