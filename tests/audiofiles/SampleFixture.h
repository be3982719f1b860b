#pragma once

#include "audiofiles/CSample.h"

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <iterator>
#include <memory>
#include <string>
#include <vector>

/// A folder that is gone after the test, and files in it.
class SampleFiles : public testing::Test {
protected:
    using Bytes = std::vector<unsigned char>;
    using Values = std::vector<float>;

    SampleFiles() {
        std::string name = "/tmp/samplesXXXXXX";
        folder = mkdtemp(name.data());
    }
    ~SampleFiles() override { std::filesystem::remove_all(folder); }

    std::string path(const std::string& name) const { return folder + "/" + name; }

    static Bytes bytesOf(const std::string& file) {
        std::ifstream in(file, std::ios::binary);
        return Bytes(std::istreambuf_iterator<char>(in), {});
    }

    static void save(const std::string& file, const Bytes& bytes, std::size_t count) {
        std::filesystem::remove(file); // writing over a file would wait for the disk
        std::ofstream(file, std::ios::binary)
            .write(reinterpret_cast<const char*>(bytes.data()), std::streamsize(count));
    }

    /// Runs a program that knows nothing of this code.
    static void run(const std::string& command) {
        ASSERT_EQ(std::system(command.c_str()), 0) << command;
    }

    /// A finished file of our own, of `left` and `right` in pieces of odd length.
    static void write(const std::string& file, int rate, int bits, int chs, const Values& left,
                      const Values& right) {
        CSample out;
        out.setFormat(rate, bits, chs);
        out.create(file.c_str());
        ASSERT_TRUE(out.validHandle()) << file;
        out.writeHeader();
        const int count = int(left.size());
        for (int at = 0; at < count; at += 1500)
            out.writeFrames(std::min(1500, count - at), &left[std::size_t(at)],
                            &right[std::size_t(at)]);
        out.writeHeader();
        out.finalize();
        EXPECT_EQ(out.getFrames(), count);
        EXPECT_FALSE(diskWriteFailed);
    }

    static std::unique_ptr<CSample> opened(const std::string& file, int streamed = 0) {
        auto sample = std::make_unique<CSample>();
        sample->streamed = streamed;
        EXPECT_TRUE(sample->open(file.c_str())) << file;
        return sample;
    }

    template <class F>
    static Values made(int count, F&& valueAt) {
        Values values;
        for (int i = 0; i < count; i++) values.push_back(float(valueAt(i)));
        return values;
    }

    std::string folder;
};

/// All values of an open sample, interleaved.
inline std::vector<float> allFrames(const CSample& sample) {
    std::vector<float> out(std::size_t(sample.getFrames()) * std::size_t(sample.chs));
    sample.readFrames(0, sample.getFrames(), out.data());
    return out;
}

/// Reproducible values of -1 to 1.
inline std::vector<float> noise(int count, unsigned seed) {
    std::vector<float> out;
    for (int i = 0; i < count; i++) {
        seed = seed * 1664525u + 1013904223u;
        out.push_back(float(int(seed >> 8) - (1 << 23)) / float(1 << 23));
    }
    return out;
}
