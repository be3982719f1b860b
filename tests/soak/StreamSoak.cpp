// Plays 32 stereo files of 24 bits from disk on the Silent clock at blocks of 128 frames, with
// jumps and loops, and looks for gaps. Exit status 1 if there was one other than just behind a
// jump.
//
//     stream_soak SECONDS

#include "AskModule.h"
#include "SoakHost.h"
#include "base/Messages.h"
#include "base/Random.h"
#include "engine/Cycle.h"
#include "sequencer/song/CSeq.h"

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <thread>

namespace {

constexpr int trackCount = 32;
constexpr int jumpMs = 3000, idleMs = 40;

GapWatch watch;

/// The callback of the driver: the program's own, and a look at what it made.
long listen(float** ins, float** outs, long numIns, long numOuts, long count, void* events,
            int numEvents) {
    const long result = libio(ins, outs, numIns, numOuts, count, events, numEvents);
    if (numOuts > 0) watch.look(outs[0], count, trackCount, qv->pos);
    return result;
}

void run(CQV& host, int seconds) {
    const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(seconds);
    for (int ms = 0; std::chrono::steady_clock::now() < end; ms += idleMs) {
        host.idle();
        if (ms % jumpMs == 0) host.setPos(asRand() * GapWatch::loopTicks * 0.9);
        std::this_thread::sleep_for(std::chrono::milliseconds(idleMs));
    }
}

bool soak(const std::string& folder, int seconds) {
    SoakHost soak(listen);
    for (int i = 0; i < trackCount; i++) {
        const std::string file = folder + "/" + std::to_string(i) + ".wav";
        GapWatch::writeFile(file);
        soak.addTrack(file);
    }
    soak.seq->getProg()->rightLocator = GapWatch::loopTicks;
    soak.seq->getProg()->loop = 1;
    soak.host.start();
    if (!soak.open("")) return std::fprintf(stderr, "no Silent clock\n"), false;
    run(soak.host, seconds);
    const AamStatistics s = askStatistics();
    soak.close();
    std::printf("%lld blocks, %lld late, %lld of them woken late, worst %lld us; frames missed: "
                "%lld behind jumps, "
                "%lld elsewhere\n",
                static_cast<long long>(s.blocks), static_cast<long long>(s.lateBlocks),
                static_cast<long long>(s.wokenLate), static_cast<long long>(s.worstMicros),
                static_cast<long long>(watch.missedAtJumps), static_cast<long long>(watch.missed));
    return watch.missed == 0;
}

} // namespace

int main(int argc, char** argv) {
    const int seconds = argc > 1 ? std::atoi(argv[1]) : 0;
    if (seconds < 1) return std::fprintf(stderr, "stream_soak SECONDS\n"), 2;
    std::string folder = "/tmp/soakXXXXXX";
    if (!mkdtemp(folder.data())) return 2;
    markInterfaceThread();
    enterSequencer();
    const bool good = soak(folder, seconds);
    std::filesystem::remove_all(folder);
    return good ? 0 : 1;
}
