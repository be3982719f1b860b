#include "programs/Program.h"
#include "support/Places.h"
#include "support/Rows.h"

#include <algorithm>
#include <cmath>
#include <complex>
#include <csignal>
#include <filesystem>
#include <gtest/gtest.h>
#include <numbers>
#include <unistd.h>

namespace {

const std::string renderer = builtFile("bin/sondrava-render");
const std::string trainSong = "/usr/share/games/openttd/baseset/openmsx/be_sharp_bw_redfarn.mid";

std::vector<std::string> withProgram(std::vector<std::string> words) {
    words.insert(words.begin(), renderer);
    return words;
}

/// Renders, which has to go well, and returns what was printed.
std::string render(const std::vector<std::string>& words) {
    Program program(withProgram(words));
    EXPECT_EQ(program.wait(), 0) << program.err();
    EXPECT_EQ(program.err(), "");
    return program.out();
}

/// One track: program 31, and a key held for four seconds at 120 beats a minute.
std::string heldKey(int key) {
    const std::string track = {0,   char(0xC0), 31,   0,          char(0x90), char(key),
                               100, char(0xBC), 0,    char(0x80), char(key),  0,
                               0,   char(0xFF), 0x2F, 0};
    return std::string("MThd\0\0\0\6\0\1\0\1\3\xC0MTrk\0\0\0", 21) + char(track.size()) + track;
}

/// The frequency near `hz` of what lies between 1 and 1.5 seconds, by the turn of its phase.
double frequencyOf(const Wav& wav, double hz) {
    const double turn = 2 * std::numbers::pi * hz / wav.rate;
    const int window = int(64 * wav.rate / hz);
    const auto phaseAt = [&](int at) {
        std::complex<double> sum;
        for (int i = 0; i < window; i++) {
            const double hann = 1 - std::cos(2 * std::numbers::pi * (i + 0.5) / window);
            sum += hann * wav.left[size_t(at + i)] * std::polar(1.0, -turn * (at + i));
        }
        return std::arg(sum);
    };
    const double turned = phaseAt(wav.rate * 3 / 2) - phaseAt(wav.rate);
    return hz + std::remainder(turned, 2 * std::numbers::pi) / std::numbers::pi;
}

} // namespace

/// What cannot be done is told in one line that names the culprit, and leaves no file.
TEST(RenderProgram, RefusesInOneLine) {
    const TempFolder folder;
    const std::string good = folder.file("good.mid"), output = folder.file("out.wav");
    writeFile(good, heldKey(69));
    const std::string song = contentOf(trainSong);
    ASSERT_FALSE(song.empty()) << trainSong;
    writeFile(folder.file("cut.mid"), song.substr(0, song.size() / 2));
    writeFile(folder.file("empty.mid"), "");
    writeFile(folder.file("text.qv"), "two\nlines of text\n");
    writeFile(folder.file("silent.mid"),
              heldKey(69).substr(0, 26) + std::string("\0\xFF\x2F\0", 4));
    for (const char* full : {"full.wav", "full.mid"})
        std::filesystem::create_symlink("/dev/full", folder.file(full));
    writeFile(folder.file("mine.wav"), "mine");
    std::filesystem::permissions(folder.file("mine.wav"), std::filesystem::perms::owner_read);
    struct Case {
        const char* name;
        std::vector<std::string> words;
        std::string culprit;
    };
    const Case cases[] = {
        {"nothing told", {}, "usage"},
        {"missing input", {folder.file("none.mid"), output}, "none.mid"},
        {"a folder", {folder.path, output}, folder.path},
        {"empty", {folder.file("empty.mid"), output}, "empty.mid"},
        {"cut short", {folder.file("cut.mid"), output}, "cut.mid"},
        {"no project", {folder.file("text.qv"), output}, "text.qv"},
        {"nothing in it", {folder.file("silent.mid"), output}, "silent.mid"},
        {"no such folder", {good, folder.file("none/out.wav")}, "none/out.wav"},
        {"disk full", {good, folder.file("full.wav")}, "full.wav"},
        {"disk full of notes", {good, folder.file("full.mid")}, "full.mid"},
        {"other format", {good, folder.file("out.ogg")}, ".ogg"},
        {"bits", {"--bits", "12", good, output}, "--bits"},
        {"not a whole number", {"--block", "1.5", good, output}, "--block"},
        {"below the range", {"--start", "-1", good, output}, "--start"},
        {"no such program", {"--factory", "32", good, output}, "--factory"},
        {"number missing", {good, output, "--tail"}, "--tail"},
        {"unknown option", {"--loud", good, output}, "--loud"},
        {"one name too many", {good, output, output}, "usage"},
        {"too long", {"--length", "1000000000", good, output}, "out.wav: Too long"},
        {"write-protected", {good, folder.file("mine.wav")}, "mine.wav: is write-protected"},
        {"the project is", {good, "--save", folder.file("mine.wav")}, "is write-protected"},
        {"nothing to render", {"--start", "100000", good, output}, "out.wav"},
    };
    for (const Case& c : cases) {
        Program program(withProgram(c.words));
        EXPECT_EQ(program.wait(), 1) << c.name;
        const std::string line = program.err();
        EXPECT_EQ(std::count(line.begin(), line.end(), '\n'), 1) << c.name << ": " << line;
        EXPECT_NE(line.find(c.culprit), std::string::npos) << c.name << ": " << line;
        EXPECT_EQ(program.out(), "") << c.name;
        for (const char* left : {"out.wav", "out.ogg"})
            EXPECT_FALSE(std::filesystem::exists(folder.file(left))) << c.name;
    }
    EXPECT_TRUE(std::filesystem::is_symlink(folder.file("full.wav"))) << "the user's own";
    EXPECT_EQ(contentOf(folder.file("mine.wav")), "mine");
}

/// The name of the output settles what is written; the MIDI file of a song is the song again.
TEST(RenderProgram, WritesEveryKindOfFile) {
    const TempFolder folder;
    const std::string song = folder.file("a.mid"), again = folder.file("b.mid");
    writeFile(song, heldKey(60));
    for (const auto& [name, head] :
         {std::pair{"a.aif", "FORM"}, {"a.mp3", "\xFF\xFB"}, {"b.mid", "MThd"}}) {
        render({song, folder.file(name)});
        EXPECT_EQ(contentOf(folder.file(name)).find(head), 0u) << name;
    }
    render({"--mono", "--tracks", again, folder.file("tracks")});
    std::vector<std::string> found;
    for (const auto& file : std::filesystem::directory_iterator(folder.file("tracks")))
        found.push_back(file.path().filename());
    std::ranges::sort(found);
    ASSERT_EQ(found, (std::vector<std::string>{"01_track_instrument-1.wav", "02_fx_Reverb.wav"}));
    const Wav wav(folder.file("tracks/" + found[0]));
    EXPECT_EQ(wav.channels, 1);
    EXPECT_GT(wav.peak, 0.01);
}

/// The demo song as a MIDI file comes back from one, drums and all; another program reads it.
TEST(RenderProgram, MidiFilesKeepTheDemoSong) {
    const TempFolder folder;
    const std::string first = folder.file("1.mid"), second = folder.file("2.mid");
    render({"--demo", first});
    render({first, second});
    EXPECT_GT(std::filesystem::file_size(first), 10000u);
    EXPECT_TRUE(contentOf(second) == contentOf(first));
    Program reader({"midicsv", first});
    EXPECT_EQ(reader.wait(), 0);
    EXPECT_EQ(reader.err(), "");
    for (const char* name : {"Kit", "Percussion", "Bass", "Pad", "Pluck", "Lead", "Harmony"})
        EXPECT_NE(reader.out().find("Title_t, \"" + std::string(name)), std::string::npos) << name;
}

/// A project that was saved, opened and saved again is the same file, and sounds the same.
TEST(RenderProgram, ProjectsComeBackAsTheyWere) {
    const TempFolder folder;
    const std::string saved = folder.file("song.qv"), again = folder.file("again.qv");
    render({"--length", "30720", "--demo", folder.file("1.wav"), "--save", saved});
    render({"--length", "30720", saved, folder.file("2.wav")});
    render({saved, "--save", again});
    EXPECT_GT(Wav(folder.file("1.wav")).peak, 0.05);
    EXPECT_TRUE(contentOf(folder.file("1.wav")) == contentOf(folder.file("2.wav")));
    EXPECT_TRUE(contentOf(saved) == contentOf(again));
}

/// Width, rate and range are those of the options, whatever the block.
TEST(RenderProgram, FollowsItsOptions) {
    const TempFolder folder;
    const std::string song = folder.file("a.mid"), out = folder.file("a.WAV");
    writeFile(song, heldKey(60));
    // The part is as long as its last event, rounded up to quarters: eight of half a second.
    for (const auto& [options, bits, rate, seconds] :
         Rows<std::vector<std::string>, int, int, double>{
             {{}, 16, 44100, 4.0},
             {{"--bits", "24", "--rate", "48000", "--block", "100"}, 24, 48000, 4.0},
             {{"--bits", "32", "--rate", "22050", "--length", "960"}, 32, 22050, 0.5},
             {{"--start", "1920"}, 16, 44100, 3.0},
             {{"--start", "960", "--length", "480", "--tail", "1.5"}, 16, 44100, 1.75},
         }) {
        std::vector<std::string> words = options;
        words.insert(words.end(), {song, out});
        render(words);
        const Wav wav(out);
        EXPECT_EQ(wav.bits, bits);
        EXPECT_EQ(wav.format, bits == 32 ? 3 : 1);
        EXPECT_EQ(wav.rate, rate);
        EXPECT_EQ(wav.channels, 2);
        EXPECT_NEAR(double(wav.frames), seconds * rate, 4096.0);
        // A key that was pressed before the range stays silent.
        EXPECT_EQ(wav.peak > 0.01, options.empty() || options[0] != "--start");
    }
}

/// The last sound is heard to its end.
TEST(RenderProgram, TailLastsUntilItIsSilent) {
    const TempFolder folder;
    writeFile(folder.file("a.mid"), heldKey(60));
    render({"--bits", "32", "--factory", "17", "--tail", "auto", folder.file("a.mid"),
            folder.file("a.wav")});
    const Wav wav(folder.file("a.wav"));
    EXPECT_GT(wav.frames, 4 * 44100 + 441);
    EXPECT_LT(wav.frames, 34 * 44100);
    for (auto at = wav.left.end() - 441; at != wav.left.end(); ++at) EXPECT_LT(std::abs(*at), 1e-3);
}

/// A render that is ended leaves no file, and tells the shell by which signal.
TEST(RenderProgram, SignalsLeaveNothing) {
    for (const int number : {SIGINT, SIGTERM}) {
        const TempFolder folder;
        Program program(withProgram({"--rate", "192000", "--demo", folder.file("a.wav")}));
        const auto begun = [&] { return !std::filesystem::is_empty(folder.path); };
        ASSERT_TRUE(comes(begun)) << program.err();
        program.signal(number);
        EXPECT_EQ(program.wait(), 128 + number);
        EXPECT_FALSE(begun()) << *std::filesystem::directory_iterator(folder.path);
    }
}

TEST(RenderProgram, KeysHaveTheirFrequencyAtAnyRate) {
    const TempFolder folder;
    writeFile(folder.file("a.mid"), heldKey(69));
    for (const char* rate : {"44100", "96000"}) {
        render({"--bits", "32", "--factory", "31", "--rate", rate, folder.file("a.mid"),
                folder.file("a.wav")});
        const double hz = frequencyOf(Wav(folder.file("a.wav")), 440);
        EXPECT_NEAR(1200 * std::log2(hz / 440), 0.0, 0.1) << rate;
    }
}
