#include "audiofiles/CElastiqueRender.h"
#include "audiofiles/CSample.h"
#include "audiofiles/CSampleReader.h"
#include "audiofiles/SampleRender.h"
#include "base/Denormals.h"

#include <algorithm>
#include <benchmark/benchmark.h>
#include <cmath>
#include <cstdlib>
#include <fcntl.h>
#include <filesystem>
#include <memory>
#include <string>
#include <unistd.h>
#include <vector>

// Audio files: streaming beside a plain `read` of the same files, peak images beside a bare loop
// over the same values, and how many stretched voices a core renders. The files lie in the
// system's cache, so that the disk plays no part.

namespace {

constexpr int fileCount = 32, fileFrames = 10 * 44100, blockFrames = 1024;
constexpr double rate = 44100.0;

/// 32 stereo files of 24 bits, made once, gone at the end.
class Files {
public:
    Files() {
        std::string name = "/tmp/audiobenchXXXXXX";
        folder = mkdtemp(name.data());
        std::vector<float> left, right;
        for (int i = 0; i < fileFrames; i++) {
            left.push_back(float(0.5 * std::sin(i * 0.05)));
            right.push_back(float(0.4 * std::sin(i * 0.011)));
        }
        for (int i = 0; i < fileCount; i++) {
            CSample out;
            out.setFormat(int(rate), 24, 2);
            out.create(path(i).c_str());
            out.writeFrames(fileFrames, left.data(), right.data());
            out.writeHeader();
        }
    }
    ~Files() { std::filesystem::remove_all(folder); }
    Files(const Files&) = delete;
    Files& operator=(const Files&) = delete;

    std::string path(int i) const { return folder + "/" + std::to_string(i) + ".wav"; }

private:
    std::string folder;
};

const Files& files() {
    static const Files made;
    return made;
}

std::vector<std::unique_ptr<CSample>> openAll() {
    std::vector<std::unique_ptr<CSample>> samples;
    for (int i = 0; i < fileCount; i++) {
        samples.push_back(std::make_unique<CSample>());
        samples.back()->streamed = 1;
        samples.back()->open(files().path(i).c_str());
    }
    return samples;
}

void countBytes(benchmark::State& state) {
    state.SetBytesProcessed(state.iterations() * fileCount * fileFrames * 6);
}

void plainRead(benchmark::State& state) {
    std::vector<char> buffer(CSampleReader::bufferBytes);
    files();
    for (auto _ : state)
        for (int i = 0; i < fileCount; i++) {
            const int fd = open(files().path(i).c_str(), O_RDONLY);
            while (read(fd, buffer.data(), buffer.size()) > 0) benchmark::ClobberMemory();
            close(fd);
        }
    countBytes(state);
}

/// All files side by side, block by block: what the disk thread and the playing side do together.
void streamed(benchmark::State& state) {
    const auto samples = openAll();
    std::vector<float> out(blockFrames * 2);
    for (auto _ : state)
        for (int at = 0; at < fileFrames; at += blockFrames)
            for (const auto& sample : samples) {
                sample->reader->getData(at, blockFrames, out.data(), false, true);
                sample->reader->serve();
                benchmark::DoNotOptimize(out[0]);
            }
    countBytes(state);
}

/// The same as voices of audio tracks have it, at their own speed and a semitone higher.
void streamedVoices(benchmark::State& state) {
    const auto samples = openAll();
    const std::unique_ptr<float[]> scratch(new float[sampleScratchBytes / sizeof(float)]);
    auto* bytes = reinterpret_cast<unsigned char*>(scratch.get());
    const double speed = std::exp2(double(state.range(0)) / 12), step = blockFrames * speed;
    std::vector<float> left(blockFrames), right(blockFrames);
    for (auto _ : state)
        for (double at = 0; at < fileFrames; at += step)
            for (const auto& sample : samples) {
                render(*sample, {at, speed, 0, 0, fileFrames}, blockFrames, left.data(),
                       right.data(), bytes, ReadMode::live);
                sample->reader->serve();
                benchmark::DoNotOptimize(left[0]);
            }
    countBytes(state);
    const double seconds = double(state.iterations()) * fileFrames / rate / speed;
    state.counters["voices"] = benchmark::Counter(fileCount * seconds, benchmark::Counter::kIsRate);
}

constexpr int peakFramesIn = 60 * 44100;

std::vector<short> peakSource() {
    std::vector<short> values;
    for (int i = 0; i < peakFramesIn * 2; i++) values.push_back(short(20000 * std::sin(i * 0.037)));
    return values;
}

void barePeaks(benchmark::State& state) {
    const std::vector<short> values = peakSource();
    std::vector<unsigned char> image(peakFramesIn / 128 * 4);
    for (auto _ : state) {
        unsigned char* p = image.data();
        for (int at = 0; at + 128 <= peakFramesIn; at += 128)
            for (int c = 0; c < 2; c++) {
                float low = 0.0f, high = 0.0f;
                for (int i = at; i < at + 128; i++) {
                    const float v = float(values[std::size_t(i * 2 + c)]) / 32768.0f;
                    low = std::min(low, v);
                    high = std::max(high, v);
                }
                *p++ = PeakImage::encode(low);
                *p++ = PeakImage::encode(high);
            }
        benchmark::DoNotOptimize(image.data());
    }
    state.SetItemsProcessed(state.iterations() * peakFramesIn);
}

/// In memory, or from a file of the same values.
void peakImage(benchmark::State& state) {
    const std::vector<short> values = peakSource();
    CSample sample;
    sample.setFormat(int(rate), 16, 2);
    sample.create(files().path(fileCount).c_str());
    sample.writeBytes(peakFramesIn, reinterpret_cast<const unsigned char*>(values.data()));
    sample.writeHeader();
    CSample read;
    read.streamed = state.range(0) != 0;
    read.open(sample.filename);
    for (auto _ : state) {
        read.peaks.reset(2);
        read.peakfile();
        benchmark::DoNotOptimize(read.peaks.count());
    }
    state.SetItemsProcessed(state.iterations() * peakFramesIn);
}

void stretchedVoice(benchmark::State& state) {
    const int block = int(state.range(0));
    const float stretch = float(state.range(1)) / 100.0f, pitch = float(state.range(2)) / 100.0f;
    CSample sample;
    sample.open(files().path(0).c_str());
    CElastiqueRender stretcher(block, float(rate));
    const std::unique_ptr<float[]> scratch(new float[sampleScratchBytes / sizeof(float)]);
    auto* bytes = reinterpret_cast<unsigned char*>(scratch.get());
    std::vector<float> left(std::size_t(block), 0.0f), right = left;
    int sourcePos = 0;
    stretcher.start();
    for (auto _ : state) {
        if (sourcePos > fileFrames) sourcePos = 0;
        renderStretched(sample, {stretch, pitch, 0, 0, fileFrames}, sourcePos, &stretcher, block,
                        left.data(), right.data(), bytes);
        benchmark::DoNotOptimize(left[0]);
    }
    state.counters["voices"] =
        benchmark::Counter(double(state.iterations()) * block / rate, benchmark::Counter::kIsRate);
}

BENCHMARK(plainRead)->Unit(benchmark::kMillisecond);
BENCHMARK(streamed)->Unit(benchmark::kMillisecond);
BENCHMARK(streamedVoices)->Arg(0)->Arg(1)->Unit(benchmark::kMillisecond);
BENCHMARK(barePeaks)->Unit(benchmark::kMillisecond);
BENCHMARK(peakImage)->Arg(0)->Arg(1)->Unit(benchmark::kMillisecond);
BENCHMARK(stretchedVoice)
    ->Args({256, 100, 100})
    ->Args({256, 80, 100})
    ->Args({256, 125, 112})
    ->Args({1024, 125, 200});

} // namespace

int main(int argc, char** argv) {
    flushDenormals();
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
}
