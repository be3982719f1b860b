#include "driver/Module.h"
#include "driver/Servers.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <fstream>
#include <gtest/gtest.h>

namespace {

/// A machine whose ALSA configuration knows a device that plays in real time, on the JACK server,
/// and some that write what they get to files and keep no time.
class Alsa : public testing::Test {
protected:
    JackServer server;
    TempFolder folder;
    const Variable config{"ALSA_CONFIG_PATH", folder.file("rc")};
    std::unique_ptr<Module> module;

    Alsa() {
        std::ofstream rc(folder.file("rc"));
        const auto file = [&](const char* name) {
            return "{ type file format raw slave.pcm null file \"" + folder.file(name) + "\" }";
        };
        const std::string shown = " hint { show on } }\n";
        rc << "</usr/share/alsa/alsa.conf>\n"
           << "pcm.tojack { type plug slave.pcm { type jack"
           << " playback_ports { 0 system:playback_1 1 system:playback_2 }"
           << " capture_ports { 0 system:capture_1 1 system:capture_2 } }" << shown
           << "pcm.float32 { type asym playback.pcm " << file("float32") << shown
           << "pcm.int32 { type asym playback.pcm { type linear slave { pcm " << file("int32")
           << " format S32_LE } }" << shown << "pcm.nowhere { type hw card 31" << shown;
        rc.close();
        module = std::make_unique<Module>();
    }

    /// What a device wrote in stereo while it was given a ramp that leaves the range at both ends.
    template <class Sample>
    std::vector<Sample> write(const std::string& name, int blocks) {
        int64_t played = 0;
        module->program = [&](const Block& b) {
            if (module->blocks >= blocks) std::this_thread::sleep_for(std::chrono::milliseconds(5));
            for (long i = 0; i < b.frames; ++i) {
                b.outs[0][i] = ramp(played++);
                b.outs[1][i] = -b.outs[0][i];
            }
            return 0L;
        };
        EXPECT_TRUE(module->open(module->device("ALSA: " + name), 256, 44100)) << name;
        EXPECT_TRUE(module->waitBlocks(blocks));
        module->close();
        std::ifstream file(folder.file(name), std::ios::binary);
        std::vector<Sample> samples(silence + 2 * 256 * size_t(blocks));
        file.read(reinterpret_cast<char*>(samples.data()),
                  std::streamsize(samples.size() * sizeof(Sample)));
        EXPECT_TRUE(file) << name << " ends early";
        return samples;
    }
    static constexpr size_t silence = 2 * 3 * 256; // samples of the blocks ahead
    static float ramp(int64_t n) { return float(n % 300 - 150) / 128.0f; }
};

} // namespace

TEST_F(Alsa, ListsWhatOpensAndRunsItInRealTime) {
    const int device = module->device("ALSA: tojack");
    ASSERT_GE(device, 0);
    EXPECT_EQ(module->device("ALSA: nowhere"), -1);
    EXPECT_EQ(module->device("ALSA: null"), -1);
    for (const int frames : {128, 333, 1024}) {
        const auto begun = std::chrono::steady_clock::now();
        ASSERT_TRUE(module->open(device, frames, 44100));
        EXPECT_EQ((*module)(aamFrames), frames);
        EXPECT_TRUE((*module)(aamAudioInCount) == 2 && (*module)(aamAudioOutCount) == 2);
        ASSERT_TRUE(module->waitBlocks(20));
        EXPECT_EQ(module->frames, frames);
        constexpr int ahead = 4; // blocks that a buffer may take at once
        EXPECT_GE(std::chrono::steady_clock::now() - begun,
                  std::chrono::microseconds((20 - ahead) * frames * 1000000LL / 44100));
        module->close();
    }
}

TEST_F(Alsa, ConvertsToTheFormOfTheDevice) {
    constexpr int blocks = 20;
    const auto floats = write<float>("float32", blocks);
    const auto ints = write<int32_t>("int32", blocks);
    for (size_t i = 0; i < 256 * blocks; ++i) {
        const float left = ramp(int64_t(i));
        const double limited = std::clamp(double(left), -1.0, 1.0);
        for (const int side : {0, 1}) {
            const size_t at = silence + 2 * i + size_t(side);
            ASSERT_EQ(floats[at], side ? -left : left) << i;
            ASSERT_NEAR(ints[at], (side ? -limited : limited) * 2147483647.0, 1.0) << i;
        }
    }
}

TEST_F(Alsa, AsksToBeReopenedWhenTheDeviceDies) {
    failWhilePlaying(*module, module->device("ALSA: tojack"), [&] { server.kill(); });
}

TEST_F(Alsa, ReopensAgainAndAgain) {
    reopen(*module, module->device("ALSA: tojack"), 30);
}
