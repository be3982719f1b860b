#include "sequencer/render/RenderExport.h"

#include "SongFixture.h"
#include "audiofiles/CSample.h"
#include "base/CIniFile.h"
#include "base/FullDisk.h"
#include "base/Paths.h"
#include "base/TempFolder.h"
#include "sequencer/render/CSoundCloudAddOn.h"
#include "support/Rows.h"

#include <cmath>
#include <cstdlib>
#include <cstring>

namespace {

/// Plays 0.5 sin(i / 10) on the left from the start on, and half of that on the right.
class Tone : public TestInstrument {
public:
    using TestInstrument::TestInstrument;
    static float at(int64_t frame, bool right) {
        return (right ? 0.25f : 0.5f) * std::sin(float(frame) * 0.1f);
    }
    bool strikes = true; ///< or keeps silent
    void start() override { next = 0; }
    void play(int frames) override {
        for (int i = 0; i < frames && strikes && host->playing; i++, next++) {
            output()->bufL[i] = at(next, false);
            output()->bufR[i] = at(next, true);
        }
    }

private:
    int64_t next = 0;
};

/// Rings on from the first frame of the song on, whether it plays or not: at each of the `strokes`
/// from 0.5 down, to 1.6e-5 in as many seconds as are told for it.
class Bell : public TestInstrument {
public:
    using TestInstrument::TestInstrument;
    struct Stroke {
        double at, seconds;
    };
    std::vector<Stroke> strokes;
    double rate = 44100;
    void start() override { next = 0; }
    void play(int frames) override {
        for (int i = 0; i < frames; i++, next++) {
            const double now = double(next) / rate;
            for (const Stroke& s : strokes)
                if (now >= s.at) {
                    const double fall = std::exp(std::log(1.6e-5 / 0.5) * (now - s.at) / s.seconds);
                    output()->bufL[i] = output()->bufR[i] = float(0.5 * fall);
                }
        }
    }

private:
    int64_t next = 0;
};

/// A song of half a second with the tone as its instrument.
struct ExportFixture : SongFixture, Told {
    TempFolder folder;
    CSongTrack* keys = track(trackMIDI);
    CPart* part = keys->addPart(midiPart(0, 960), nullptr);
    Tone* tone = connect(keys, device.add(new Tone(&host)));
    CRender render{&host, seq};

    RenderResult exportTo(const char* name, RenderUi* ui = nullptr) {
        render.filename = folder.file(name);
        return exportSong(render, seq, ui);
    }
    /// What a program says of a file; `rest` are its other arguments.
    std::string printed(const std::string& program, const char* name, const char* rest = "") const {
        const std::string path = folder.file(name).asChar(), out = path + ".printed";
        const std::string line = program + " " + path + " " + rest + " >" + out;
        EXPECT_EQ(std::system(line.c_str()), 0) << line;
        std::string text = folder.read((std::string(name) + ".printed").c_str());
        std::filesystem::remove(out);
        return text;
    }
    /// The values of a file, interleaved, as another program reads them.
    std::vector<float> values(const char* name) const {
        const std::string bytes = printed("sox", name, "-t f32 -");
        std::vector<float> list(bytes.size() / sizeof(float));
        if (!list.empty()) std::memcpy(list.data(), bytes.data(), list.size() * sizeof(float));
        return list;
    }
    int files() const {
        return int(std::distance(std::filesystem::directory_iterator(folder.path.asChar()), {}));
    }
};

struct Cancel : RenderUi {
    int left;
    float last = 0.0f;
    explicit Cancel(int calls) : left(calls) {}
    bool onRender(float done) override {
        EXPECT_TRUE(done >= last && done <= 1.0f);
        last = done;
        return --left > 0;
    }
};

} // namespace

/// Another program finds the format that was chosen, and in it the samples that the song plays.
TEST(RenderExport, WritesEveryFormat) {
    for (const auto& [name, made, format, rate, bits, chs] :
         Rows<const char*, const char*, int, int, int, int>{
             {"b.1", "b.1.wav", renderWav, 44100, 24, 1},
             {"c.wav", "c.wav", renderWav, 192000, 32, 2},
             {"d.wav", "d.aif", renderAiff, 48000, 16, 1},
             {"e.aif", "e.aif", renderAiff, 96000, 24, 2}}) {
        ExportFixture f;
        f.render.format = format;
        f.render.rate = rate;
        f.render.bits = bits;
        f.render.chs = chs;
        ASSERT_EQ(f.exportTo(name), RenderResult::good) << name;
        for (const auto& [question, answer] : {std::pair{"-r", rate}, {"-c", chs}, {"-b", bits}})
            EXPECT_EQ(f.printed(std::string("soxi ") + question, made),
                      std::to_string(answer) + "\n");
        const std::vector<float> values = f.values(made);
        ASSERT_EQ(values.size(), size_t(rate / 2 * chs));
        for (size_t i = 0; i < values.size(); i++) {
            const auto at = [&](bool right) { return Tone::at(int64_t(i) / chs, right); };
            const float tone = chs == 1 ? (at(false) + at(true)) / 2 : at(i % 2);
            ASSERT_NEAR(values[i], tone, bits == 16 ? 5e-5 : 3e-7) << name << " " << i;
        }
        EXPECT_EQ(f.files(), 1);
    }
}

/// An MP3 sounds like the song, at its bit rate. Without the tool a message comes and nothing
/// stays.
TEST(RenderExport, EncodesByTheTool) {
    ExportFixture f;
    f.part->length = 4 * barTicks;
    f.render.format = renderMp3;
    f.render.bitrate = 192;
    f.folder.write("song.wav", "mine");
    ASSERT_EQ(f.exportTo("song.mp3"), RenderResult::good);
    EXPECT_NEAR(double(f.folder.read("song.mp3").size()), 8 * 192000 / 8, 4000);
    EXPECT_EQ(f.folder.read("song.wav"), "mine");
    f.printed("lame --decode --silent", "song.mp3", f.folder.file("back.wav").asChar());
    double squares = 0;
    const std::vector<float> values = f.values("back.wav");
    for (size_t i = 0; i < values.size(); i += 2) squares += double(values[i]) * double(values[i]);
    EXPECT_NEAR(std::sqrt(2 * squares / double(values.size())), 0.97 * 0.5 / std::sqrt(2), 0.005)
        << "the tool takes 3 % off";
    EXPECT_EQ(f.files(), 3);

    const std::string path = std::getenv("PATH");
    setenv("PATH", f.folder.path.asChar(), 1);
    EXPECT_EQ(f.exportTo("other.mp3"), RenderResult::notEncoded);
    setenv("PATH", path.c_str(), 1);
    EXPECT_EQ(f.files(), 3);
    EXPECT_EQ(f.messages, std::vector<std::string>{"Render: Could not encode file - make sure mp3 "
                                                   "encoder is installed properly"});
}

/// The range is that of the choice; with selected parts only they play, and mutes come back.
TEST(RenderExport, RendersTheRange) {
    ExportFixture f;
    CSongTrack* other = f.track(trackMIDI);
    CPart* late = other->addPart(midiPart(1920, 480), nullptr);
    late->setSelected(true);
    late->setMuted(true);
    other->setMuted(true);
    f.keys->setSoloed(true);
    f.seq->setLoopSection(480, 1440);
    for (const auto& [mode, ticks] :
         {std::pair{rangeSong, 2400}, {rangeLocators, 960}, {rangeSelected, 480}}) {
        f.render.rangeMode = mode;
        ASSERT_EQ(f.exportTo("a.wav"), RenderResult::good) << mode;
        EXPECT_NEAR(double(f.render.framesWritten), ticks * 735 / 32, 23.0) << mode;
    }
    EXPECT_TRUE(late->muted() && other->muted() && f.keys->soloed());
    EXPECT_FALSE(late->selected() || f.part->muted());
    ASSERT_EQ(f.exportTo("none.wav"), RenderResult::nothing);
    EXPECT_EQ(f.messages, std::vector<std::string>{"Render: Nothing to render"});
    EXPECT_TRUE(f.values("none.wav").empty());
}

/// What rings on is heard until it is below -96 dB, however long it rests before the next echo, but
/// 30 seconds at most, or for as long as is told. A song that goes on behind the range does not.
TEST(RenderExport, GoesOnForItsTail) {
    struct Case {
        const char* name;
        int rangeMode, tailMs;
        std::vector<Bell::Stroke> strokes;
        double seconds;
    };
    const Case cases[] = {{"dies away", rangeSong, tailAuto, {{0, 3}}, 3},
                          {"is over before", rangeSong, tailAuto, {{0, 0.2}}, 0.5},
                          {"comes again", rangeSong, tailAuto, {{0, 0.3}, {5.8, 1}}, 6.8},
                          {"never ends", rangeSong, tailAuto, {{0, 1000}}, 30.5},
                          {"as long as told", rangeSong, 1500, {{0, 0.3}}, 2},
                          {"none", rangeSong, 0, {{0, 3}}, 0.5},
                          {"song goes on", rangeLocators, tailAuto, {}, 0.25}};
    for (const Case& c : cases)
        for (const int multiTrack : {0, 1}) {
            ExportFixture f;
            Bell* bell = f.connect(f.keys, f.device.add(new Bell(&f.host)));
            bell->strokes = c.strokes;
            f.tone->strikes = c.rangeMode == rangeLocators;
            f.seq->setLoopSection(0, 480);
            f.keys->track->setSelected(true);
            f.render.rangeMode = c.rangeMode;
            f.render.tailMs = c.tailMs;
            f.render.multiTrack = multiTrack;
            f.render.folder = f.folder.path;
            ASSERT_EQ(f.exportTo("a.wav"), RenderResult::good) << c.name;
            EXPECT_NEAR(double(f.render.framesWritten), c.seconds * 44100, 2.0) << c.name;
            for (const auto& file : std::filesystem::directory_iterator(f.folder.path.asChar())) {
                CSample made;
                ASSERT_TRUE(made.open(file.path().c_str()));
                EXPECT_EQ(made.frames, f.render.framesWritten) << c.name << file.path();
            }
        }
}

/// A range that no file holds is refused before a frame of it is rendered, and nothing is left.
TEST(RenderExport, RefusesWhatNoFileHolds) {
    ExportFixture f;
    f.part->length = 1 << 30; // 155 hours
    EXPECT_EQ(f.exportTo("a.wav"), RenderResult::tooLong);
    f.render.rate = 192000;
    f.render.bits = 32;
    EXPECT_EQ(f.exportTo("a.wav"), RenderResult::tooLong);
    EXPECT_EQ(f.files(), 0);
    EXPECT_EQ(f.messages, (std::vector<std::string>{
                              "Render: Too long: a file of 44100 Hz and 16 bits, stereo, holds 202 "
                              "minutes",
                              "Render: Too long: a file of 192000 Hz and 32 bits, stereo, holds 23 "
                              "minutes"}));
}

/// Each selected track with parts and each bus gets a file of its own, at the running rate.
TEST(RenderExport, WritesAFileForEachTrack) {
    ExportFixture f;
    f.render.multiTrack = 1;
    f.render.rate = 96000;
    f.render.folder = f.folder.path;
    EXPECT_EQ(exportSong(f.render, f.seq, nullptr), RenderResult::nothing);
    EXPECT_EQ(f.messages, std::vector<std::string>{"Export: Nothing to export"});
    f.host.addSendClicked();
    f.host.settle();
    f.tone->output()->sendLevels[0]->level = 0.5f;
    f.keys->track->setSelected(true);
    f.keys->track->id = "A/B";
    f.folder.write("02_fx_Send.wav", "mine");
    ASSERT_EQ(exportSong(f.render, f.seq, nullptr), RenderResult::good);
    EXPECT_EQ(f.files(), 3);
    EXPECT_EQ(f.folder.read("02_fx_Send.wav"), "mine");
    for (const auto& [name, gain] :
         {std::pair{"01_track_A_B.wav", 1.0f}, {"02_fx_Send1.wav", 0.25f}}) {
        const std::vector<float> values = f.values(name);
        ASSERT_EQ(values.size(), 44100u) << name;
        for (size_t i = 0; i < values.size(); i++)
            ASSERT_NEAR(values[i], gain * Tone::at(int64_t(i) / 2, i % 2), 5e-5) << name << i;
    }
}

/// What is cancelled or finds no room costs no older file and leaves none half. A cancelled WAV
/// stays as far as it got where nothing was before.
TEST(RenderExport, EndsWithoutHalfFiles) {
    ExportFixture f;
    f.part->length = 4 * barTicks;
    f.folder.write("old.wav", "mine");
    const auto cancelled = [&](const char* name, int calls) {
        Cancel ui(calls);
        EXPECT_EQ(f.exportTo(name, &ui), RenderResult::cancelled) << name;
    };
    cancelled("old.wav", 3);
    cancelled("new.wav", 3);
    EXPECT_EQ(f.values("new.wav").size(), size_t(3 * 1024 * 2));
    f.render.format = renderMp3;
    cancelled("song.mp3", 3);
    cancelled("song.mp3", 8 * 44100 / 1024 + 3); // while the tool runs
    EXPECT_EQ(f.files(), 2);
    {
        const FullDisk full(200000);
        EXPECT_EQ(f.exportTo("song.mp3"), RenderResult::noRoom);
        f.render.format = renderWav;
        EXPECT_EQ(f.exportTo("old.wav"), RenderResult::noRoom);
    }
    EXPECT_EQ(f.exportTo("none/new.wav"), RenderResult::notCreated);
    EXPECT_EQ(f.files(), 2);
    EXPECT_EQ(f.folder.read("old.wav"), "mine");
    ASSERT_EQ(f.messages.size(), 3u);
    EXPECT_EQ(f.messages[1].find("Render: Could not write file "), 0u);
    EXPECT_EQ(f.messages[2].find("Render: Could not create file "), 0u);
}

/// A song to be shared is rendered to one file, and sent once the service knows the user.
TEST(RenderExport, SharesByTheAddOn) {
    struct AddOn : CSoundCloudAddOn, RenderUi {
        CStr typed, code, sent;
        Connection connect() override {
            if (code.empty()) return Connection::needsCode;
            return code == "right" ? Connection::connected : Connection::refused;
        }
        void setCode(const CStr& c) override { code = c; }
        bool sendFile(const CStr& file, const CStr& name) override {
            sent = name;
            return extractFileName(file) == "soundcloud_export.wav" && getFileSize(file) > 44 &&
                   name != "Bad";
        }
        CStr param(const CStr&) override { return ""; }
        bool onRender(float) override { return true; }
        CStr getVerifier() override { return typed; }
    };
    for (const auto& [code, name, sent, message] :
         Rows<const char*, const char*, const char*, std::string>{
             {"right", " ", "untitled", ""},
             {"right", "Bad", "Bad", "Render: Could not upload file"},
             {"wrong", "Hymn", "", "Render: Could not upload file"},
             {nullptr, "Hymn", "", "Render: Addon not loaded"}}) {
        ExportFixture f;
        AddOn addOn;
        addOn.typed = code ? code : "";
        f.render.upload = true;
        f.render.addOn = code ? &addOn : nullptr;
        f.render.songName = name;
        const bool good = exportSong(f.render, f.seq, &addOn) == RenderResult::good;
        EXPECT_EQ(good, *sent && message.empty()) << name;
        EXPECT_EQ(addOn.sent, sent);
        EXPECT_EQ(f.messages.empty() ? "" : f.messages[0], message);
        std::filesystem::remove(f.render.filename.asChar());
    }
}

/// Choices come back from the settings file; what is out of range there is not taken.
TEST(RenderExport, KeepsChoices) {
    ExportFixture f;
    const CStr before = inifile;
    inifile = f.folder.file("settings.ini");
    f.host.settingsEnabled = true;
    f.render.bits = 24;
    f.render.rate = 96000;
    f.render.format = renderMp3;
    f.render.writeSettings();
    f.host.projectFile = "/songs/no.1.qv";
    CRender other(&f.host, f.seq);
    other.chooseUsual();
    EXPECT_TRUE(other.filename == "/songs/no.1" && other.tailMs == 0);
    CIniFile(inifile).writeString("render", "tail", "");
    other.chooseUsual();
    EXPECT_EQ(other.tailMs, tailAuto);
    for (const auto& [key, value] : Rows<const char*, int>{
             {"bits", 20}, {"tail", -2}, {"rate", 7999}, {"ext", 3}, {"bitrate", 321}})
        CIniFile(inifile).writeInteger("render", key, value);
    other.readSettings();
    EXPECT_EQ(std::tuple(other.bits, other.rate, other.format), std::tuple(24, 96000, 2));
    f.host.settingsEnabled = false;
    inifile = before;
}
