// Plays 32 stereo files of 24 bits from disk on the Silent clock at blocks of 128 frames, with
// jumps and loops, and looks for gaps: all files hold one constant, so that any frame below their
// sum has missed something. Exit status 1 if there was one other than just behind a jump.
//
//     stream_soak SECONDS

#include "audiofiles/CSample.h"
#include "base/Messages.h"
#include "base/Random.h"
#include "engine/CAAM.h"
#include "engine/CQV.h"
#include "engine/Cycle.h"
#include "engine/DeviceComps.h"
#include "sequencer/CSeq.h"

#include <dlfcn.h>

#include <atomic>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <thread>
#include <vector>

namespace {

constexpr int trackCount = 32, rate = 44100, block = 128, fileSeconds = 30;
constexpr float level = 1.0f / 64;
constexpr float whole = trackCount * level - 0.001f;
constexpr int loopTicks = 28 * 1920; // of the 30 seconds that there are
constexpr int jumpMs = 3000;
constexpr int64_t settleFrames = rate / 10; // behind a jump, or a loop's wrap, which is one too

std::atomic<int64_t> frames{0}, jumpAt{0}, gaps{0}, gapsAtJumps{0};
std::atomic<double> lastPos{0.0};

/// The callback of the driver: the program's own, and a look at what it made.
long listen(float** ins, float** outs, long numIns, long numOuts, long count, void* events,
            int numEvents) {
    const long result = libio(ins, outs, numIns, numOuts, count, events, numEvents);
    const double pos = qv->pos;
    if (pos < lastPos.exchange(pos)) jumpAt = frames.load();
    int64_t missed = 0;
    for (long i = 0; i < count && numOuts > 0; i++) missed += outs[0][i] < whole;
    const int64_t at = frames.fetch_add(count);
    if (at < settleFrames) return result;
    (at - jumpAt < settleFrames ? gapsAtJumps : gaps) += missed;
    return result;
}

void writeFile(const CStr& path) {
    CSample out;
    out.setFormat(rate, 24, 2);
    out.create(path);
    out.writeHeader();
    const std::vector<float> side(rate, level);
    for (int i = 0; i < fileSeconds; i++) out.writeFrames(rate, side.data(), side.data());
    out.writeHeader();
    out.finalize();
}

void addTrack(CQV* host, CSeq* seq, const CStr& path) {
    auto* sample = new CSample;
    sample->streamed = 1;
    if (!sample->open(path)) std::exit(2);
    CSongTrack* songTrack = seq->addTrack(trackAudio, seq->getProg(), nullptr);
    CAudioEvent* event = createAudioEvent();
    event->sample = sample;
    event->end = sample->frames - 1;
    auto* part = new CAudioPart;
    part->addEvent(0, event);
    songTrack->addPart(part, nullptr);
    const GraphHold hold(host);
    host->samples.add(sample);
}

AamStatistics statistics() {
    AamStatistics result{};
    void* module = dlopen(CAAM::defaultPath().asChar(), RTLD_NOW);
    const auto entry = reinterpret_cast<AamEntry>(dlsym(module, "libaam"));
    entry(aamTestStatistics, reinterpret_cast<intptr_t>(&result), 0);
    dlclose(module);
    return result;
}

void run(CQV* host, int seconds) {
    const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(seconds);
    for (int ms = 0; std::chrono::steady_clock::now() < end; ms += 40) {
        host->idle();
        if (ms % jumpMs == 0) host->setPos(asRand() * loopTicks * 0.9);
        std::this_thread::sleep_for(std::chrono::milliseconds(40));
    }
}

} // namespace

int main(int argc, char** argv) {
    const int seconds = argc > 1 ? std::atoi(argv[1]) : 0;
    if (seconds < 1) return std::fprintf(stderr, "stream_soak SECONDS\n"), 2;
    std::string folder = "/tmp/soakXXXXXX";
    if (!mkdtemp(folder.data())) return 2;
    markInterfaceThread();
    enterSequencer();
    {
        CQV host;
        qv = &host;
        host.settingsEnabled = false;
        host.setFrames(block);
        host.init();
        auto* seq = new CSeq(&host);
        seq->init();
        {
            const GraphHold hold(&host);
            host.comps.add(seq);
        }
        for (int i = 0; i < trackCount; i++) {
            const CStr path = CStr((folder + "/" + std::to_string(i) + ".wav").c_str());
            writeFile(path);
            addTrack(&host, seq, path);
        }
        seq->getProg()->rightLocator = loopTicks;
        seq->getProg()->loop = 1;
        static_cast<CAudioOut*>(host.getAudioOut())->channelUsed[0] = 1;
        static_cast<CAudioOut*>(host.getAudioOut())->channelUsed[1] = 1;
        CAAM bridge(listen);
        bridge.setFrames(block);
        for (int i = 0; i < 2; i++) bridge.audioOutEnable(i, 1);
        host.aam = &bridge;
        host.start();
        bridge.audioOpen(bridge.numAudioDevs() - 1);
        if (!bridge.opened) return std::fprintf(stderr, "no Silent clock\n"), 2;
        run(&host, seconds);
        const AamStatistics s = statistics();
        bridge.audioClose();
        std::printf("%lld blocks, %lld late, worst %lld us; frames missed: %lld behind jumps, "
                    "%lld elsewhere\n",
                    static_cast<long long>(s.blocks), static_cast<long long>(s.lateBlocks),
                    static_cast<long long>(s.worstMicros), static_cast<long long>(gapsAtJumps),
                    static_cast<long long>(gaps));
        host.aam = nullptr;
        host.clear();
    }
    std::filesystem::remove_all(folder);
    return gaps > 0;
}
