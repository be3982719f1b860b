// Records the fed input of the Silent clock in three processes at once, one for each width, while
// files play from disk beside, and kills them in the middle of the take. What they leave has to
// open in other programs, and to hold all that came in but the last second, frame by frame. Exit
// status 1 if not, or if the files that played had a gap.
//
//     take_soak SECONDS

#include "SoakHost.h"
#include "audiofiles/CSample.h"
#include "base/Messages.h"
#include "engine/CClick.h"
#include "engine/Cycle.h"
#include "sequencer/song/CSeq.h"

#include <sys/mman.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <cmath>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <new>
#include <thread>
#include <vector>

namespace {

constexpr int widths[] = {16, 24, 32};
constexpr int playCount = 8, idleMs = 40;
constexpr int spareSeconds = 30;                ///< of input, for start and end
constexpr int phaseFrames[] = {0, 7919, 15013}; ///< so that writing is met at different points

/// What a process tells of itself, also when it is dead.
struct Progress {
    std::atomic<int64_t> fed{0}; ///< frames of the input that were given to the program
    GapWatch watch;
};
Progress* progress = nullptr; ///< of this process

/// The callback of the driver: the program's own, and a look at what it was given and made.
long listen(float** ins, float** outs, long numIns, long numOuts, long count, void* events,
            int numEvents) {
    const bool feeding = progress->fed > 0 || (numIns > 0 && ins[0][0] != 0.0f);
    const long result = libio(ins, outs, numIns, numOuts, count, events, numEvents);
    if (feeding) progress->fed += count;
    if (numOuts > 0 && qv->playing) progress->watch.look(outs[0], count, playCount, qv->pos);
    return result;
}

std::string playFile(const std::string& folder, int i) {
    return folder + "/" + std::to_string(i) + ".wav";
}

/// Noise of 24 bits, left and right in turn, that does not begin with silence.
std::vector<float> makeFeed(int frames) {
    std::vector<float> values;
    values.reserve(size_t(frames) * 2);
    unsigned seed = 1;
    for (int i = 0; i < frames * 2; i++) {
        seed = seed * 1664525u + 1013904223u;
        values.push_back(float(int(seed >> 8) - (1 << 23)) / float(1 << 23));
    }
    return values;
}

void writeFeed(const std::string& file, const std::vector<float>& values) {
    CSample out;
    out.setFormat(SoakHost::rate, 32, 2);
    out.create(file.c_str());
    const int frames = int(values.size() / 2);
    out.writeBytes(frames, reinterpret_cast<const unsigned char*>(values.data()));
    out.writeHeader();
    out.finalize();
}

/// The program, recording until it is killed.
[[noreturn]] void record(const std::string& folder, int bits) {
    markInterfaceThread();
    enterSequencer();
    SoakHost soak(listen);
    const std::string target = folder + "/" + std::to_string(bits);
    std::filesystem::create_directory(target);
    soak.host.tempAudioFolder = target.c_str();
    soak.host.recBits = bits;
    soak.host.click->enabled = 0;
    soak.seq->options.bytes[SongOptions::audioMonitor] = 0;
    for (int i = 0; i < playCount; i++) soak.addTrack(playFile(folder, i));
    soak.seq->getProg()->rightLocator = GapWatch::loopTicks;
    soak.seq->getProg()->loop = 1;
    soak.seq->unselectTracks();
    soak.seq->selectTrack(soak.seq->addTrack(trackAudio, soak.seq->getProg(), nullptr), true);
    soak.host.idle();
    if (!soak.open(folder + "/feed.wav")) _exit(2);
    soak.host.rec();
    while (true) {
        soak.host.idle();
        std::this_thread::sleep_for(std::chrono::milliseconds(idleMs));
    }
}

/// What another program prints, or writes as bytes.
std::vector<char> outputOf(const std::string& command) {
    std::vector<char> out;
    char piece[65536];
    std::FILE* pipe = popen(command.c_str(), "r");
    if (!pipe) return out;
    while (const size_t n = fread(piece, 1, sizeof piece, pipe))
        out.insert(out.end(), piece, piece + n);
    if (pclose(pipe) != 0) out.clear();
    return out;
}

int64_t numberIn(std::vector<char> text) {
    text.push_back('\0');
    return std::atoll(text.data());
}

/// What a width makes of a value.
double packed(float value, int bits) {
    if (bits == 32) return double(value);
    const double full = bits == 16 ? 32767 : 8388607;
    return std::trunc(double(value) * full) / (full + 1);
}

/// Count of values from the start of `take` on that are those of `feed` from `from` on.
size_t equalValues(const float* take, size_t count, const std::vector<float>& feed, size_t from,
                   int bits) {
    size_t i = 0;
    while (i < count && from + i < feed.size() && double(take[i]) == packed(feed[from + i], bits))
        i++;
    return i;
}

/// The frame of the feed that the take begins with; -1 if it is none.
int64_t findStart(const float* take, size_t count, const std::vector<float>& feed, int bits) {
    constexpr size_t enough = 64;
    if (count < enough) return -1;
    for (size_t i = 0; i + enough < feed.size(); i += 2)
        if (equalValues(take, enough, feed, i, bits) == enough) return int64_t(i / 2);
    return -1;
}

bool check(const std::string& folder, int bits, const Progress& p, const std::vector<float>& feed) {
    const std::string file = folder + "/" + std::to_string(bits) + "/rec.wav";
    const int64_t bySoxi = numberIn(outputOf("soxi -V1 -s " + file));
    const int64_t bySndfile =
        numberIn(outputOf("sndfile-info " + file + " | sed -n 's/^Frames *: *//p'"));
    const std::vector<char> bytes = outputOf("sox -V1 -D " + file + " -t f32 -");
    const auto* values = reinterpret_cast<const float*>(bytes.data());
    const size_t count = bytes.size() / sizeof(float);
    const auto frames = int64_t(count / 2);
    const int64_t start = findStart(values, count, feed, bits);
    const size_t equal = start < 0 ? 0 : equalValues(values, count, feed, size_t(start) * 2, bits);
    const int64_t lost = p.fed - start - frames;
    std::printf(
        "%d bits: killed at %.2f s of the take, %.2f s in the file for sox, %.2f s for "
        "libsndfile, the last %.3f s lost, %s; %lld frames missed of %d files that played\n",
        bits, double(p.fed - start) / SoakHost::rate, double(bySoxi) / SoakHost::rate,
        double(bySndfile) / SoakHost::rate, double(lost) / SoakHost::rate,
        equal == count ? "all values right" : "VALUES WRONG",
        static_cast<long long>(p.watch.missed), playCount);
    return start >= 0 && equal == count && bySoxi == frames && bySndfile == frames &&
           lost <= SoakHost::rate && p.watch.missed == 0;
}

/// Waits until so much was fed, or the process is dead; kills it.
void killAt(pid_t process, const Progress& p, int64_t frames) {
    while (p.fed < frames) {
        if (waitpid(process, nullptr, WNOHANG) != 0) return;
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    kill(process, SIGKILL);
    waitpid(process, nullptr, 0);
}

bool soak(const std::string& folder, int seconds) {
    const std::vector<float> feed = makeFeed((seconds + spareSeconds) * SoakHost::rate);
    writeFeed(folder + "/feed.wav", feed);
    for (int i = 0; i < playCount; i++) GapWatch::writeFile(playFile(folder, i));
    Progress* shared[std::size(widths)];
    pid_t processes[std::size(widths)];
    for (size_t i = 0; i < std::size(widths); i++) {
        void* memory = mmap(nullptr, sizeof(Progress), PROT_READ | PROT_WRITE,
                            MAP_SHARED | MAP_ANONYMOUS, -1, 0);
        progress = shared[i] = new (memory) Progress;
        processes[i] = fork();
        if (processes[i] == 0) record(folder, widths[i]);
    }
    bool good = true;
    for (size_t i = 0; i < std::size(widths); i++)
        killAt(processes[i], *shared[i], int64_t(seconds) * SoakHost::rate + phaseFrames[i]);
    for (size_t i = 0; i < std::size(widths); i++)
        good = check(folder, widths[i], *shared[i], feed) && good;
    return good;
}

} // namespace

int main(int argc, char** argv) {
    const int seconds = argc > 1 ? std::atoi(argv[1]) : 0;
    if (seconds < 1 || seconds > 3600) return std::fprintf(stderr, "take_soak SECONDS\n"), 2;
    std::string folder = "/tmp/takesoakXXXXXX";
    if (!mkdtemp(folder.data())) return 2;
    const bool good = soak(folder, seconds);
    std::filesystem::remove_all(folder);
    return good ? 0 : 1;
}
