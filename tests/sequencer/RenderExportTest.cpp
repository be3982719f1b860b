#include "sequencer/RenderExport.h"

#include "SongFixture.h"
#include "audiofiles/CSample.h"
#include "base/CIniFile.h"
#include "base/Messages.h"
#include "base/Paths.h"
#include "base/TempFolder.h"
#include "engine/CGroupCh.h"
#include "sequencer/CSoundCloudAddOn.h"

#include <cmath>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <sstream>
#include <sys/resource.h>

namespace {

/// Plays 0.5 sin(i / 10) on the left from the start on, and half of that on the right.
class Tone : public CComp {
public:
    explicit Tone(CQV* root) : CComp(root) {}
    static float at(int64_t frame, bool right) {
        return (right ? 0.25f : 0.5f) * std::sin(float(frame) * 0.1f);
    }
    void init() override {
        outputs.add(new COutputChannel(this));
        inPorts.add(new CInputPort(this));
    }
    void start() override { next = 0; }
    void process(int frames) override {
        const ProcessGuard guard(this);
        if (!guard.enter) return;
        mergeMIDI(frames);
        for (int i = 0; i < frames && host->playing; i++, next++) {
            output()->bufL[i] = at(next, false);
            output()->bufR[i] = at(next, true);
        }
    }

private:
    int64_t next = 0;
};

/// A song of half a second with the tone as its instrument.
struct ExportFixture : SongFixture {
    TempFolder folder;
    Tone* tone = device.add(new Tone(&host));
    CSongTrack* keys = track(trackMIDI);
    CPart* part = keys->addPart(midiPart(0, 960), nullptr);
    CRender render{&host, seq};
    static inline std::vector<std::string> messages;

    ExportFixture() {
        messages.clear();
        messageHooks().showMsg = [](CWin*, const CStr& title, const CStr& text, int flags) {
            messages.push_back(std::string(title.asChar()) + ": " + text.asChar());
            return answerOfEscape(flags);
        };
        device.connect(tone);
        const GraphHold hold(&host);
        tone->midiCables.add(createMIDICable(tone, keys->track->outPort(), nullptr));
    }
    ~ExportFixture() { messageHooks() = MessageHooks(); }
    ExportFixture(const ExportFixture&) = delete;
    ExportFixture& operator=(const ExportFixture&) = delete;

    RenderResult exportTo(const char* name, RenderUi* ui = nullptr) {
        render.filename = folder.file(name);
        return exportSong(render, seq, ui);
    }
    std::string printed(const std::string& command) const {
        const std::string out = folder.file("printed").asChar();
        EXPECT_EQ(std::system((command + " >" + out).c_str()), 0) << command;
        std::string text = folder.read("printed");
        std::filesystem::remove(out);
        return text;
    }
    /// The values of a file, interleaved, as another program reads them.
    std::vector<float> values(const char* name) const {
        const std::string bytes =
            printed("sox " + std::string(folder.file(name).asChar()) + " -t f32 -");
        std::vector<float> list(bytes.size() / sizeof(float));
        if (!list.empty()) std::memcpy(list.data(), bytes.data(), list.size() * sizeof(float));
        return list;
    }
    int files() const {
        return int(std::distance(std::filesystem::directory_iterator(folder.path.asChar()), {}));
    }
};

struct Cancel : RenderUi {
    int left = 3;
    float last = 0.0f;
    bool onRender(float done) override {
        EXPECT_TRUE(done >= last && done <= 1.0f);
        last = done;
        return --left > 0;
    }
};

/// As long as it stands no file grows beyond some bytes, as on a disk that is full.
class FullDisk {
public:
    explicit FullDisk(rlim_t bytes) : handler(std::signal(SIGXFSZ, SIG_IGN)) {
        getrlimit(RLIMIT_FSIZE, &before);
        const rlimit small{bytes, before.rlim_max};
        setrlimit(RLIMIT_FSIZE, &small);
    }
    ~FullDisk() {
        setrlimit(RLIMIT_FSIZE, &before);
        std::signal(SIGXFSZ, handler);
    }
    FullDisk(const FullDisk&) = delete;
    FullDisk& operator=(const FullDisk&) = delete;

private:
    void (*handler)(int);
    rlimit before{};
};

} // namespace

/// Another program finds the format that was chosen, and in it the samples that the song plays.
TEST(RenderExport, WritesEveryFormat) {
    struct Case {
        const char* name;
        int format, rate, bits, chs;
    };
    for (const Case& c : {Case{"a.wav", renderWav, 22050, 16, 2},
                          {"b.1", renderWav, 44100, 24, 1},
                          {"c.wav", renderWav, 192000, 32, 2},
                          {"d.wav", renderAiff, 48000, 16, 1},
                          {"e.aif", renderAiff, 96000, 24, 2}}) {
        ExportFixture f;
        f.render.format = c.format;
        f.render.rate = c.rate;
        f.render.bits = c.bits;
        f.render.chs = c.chs;
        ASSERT_EQ(f.exportTo(c.name), RenderResult::good) << c.name;
        const std::string stem = std::string(c.name) == "b.1" ? "b.1" : std::string(c.name, 1);
        const std::string name = stem + (c.format ? ".aif" : ".wav");
        std::ostringstream wanted;
        wanted << c.rate << "\n" << c.chs << "\n" << c.bits << "\n" << c.rate / 2 << "\n";
        std::string told;
        for (const char* question : {"-r", "-c", "-b", "-s"})
            told += f.printed(std::string("soxi ") + question + " " +
                              f.folder.file(name.c_str()).asChar());
        EXPECT_EQ(told, wanted.str()) << c.name;
        const std::vector<float> values = f.values(name.c_str());
        ASSERT_EQ(values.size(), size_t(c.rate / 2 * c.chs));
        for (size_t i = 0; i < values.size(); i++) {
            const auto at = [&](bool right) { return Tone::at(int64_t(i) / c.chs, right); };
            const float tone = c.chs == 1 ? (at(false) + at(true)) / 2 : at(i % 2);
            ASSERT_NEAR(values[i], tone, c.bits == 16 ? 5e-5 : 3e-7) << c.name << " " << i;
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
    const std::string song = f.folder.file("song.mp3").asChar();
    f.printed("lame --decode --silent " + song + " " + f.folder.file("back.wav").asChar());
    const std::vector<float> values = f.values("back.wav");
    double squares = 0;
    for (size_t i = 0; i < values.size(); i += 2) squares += double(values[i]) * double(values[i]);
    EXPECT_NEAR(std::sqrt(2 * squares / double(values.size())), 0.97 * 0.5 / std::sqrt(2), 0.005)
        << "the tool takes 3 % off";
    EXPECT_EQ(f.files(), 3);

    const std::string path = std::getenv("PATH");
    setenv("PATH", f.folder.path.asChar(), 1);
    EXPECT_EQ(f.exportTo("other.mp3"), RenderResult::notEncoded);
    setenv("PATH", path.c_str(), 1);
    EXPECT_EQ(f.files(), 3);
    const std::vector<std::string> told = {"Render: Could not encode file - make sure mp3 encoder "
                                           "is installed properly"};
    EXPECT_EQ(f.messages, told);
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
    const int wanted[] = {2400 * 735 / 32, 960 * 735 / 32, 480 * 735 / 32};
    for (const int mode : {rangeSong, rangeLocators, rangeSelected}) {
        f.render.rangeMode = mode;
        ASSERT_EQ(f.exportTo("a.wav"), RenderResult::good) << mode;
        EXPECT_NEAR(double(f.render.framesWritten), wanted[mode], 23.0) << mode;
    }
    EXPECT_TRUE(late->muted() && other->muted() && f.keys->soloed());
    EXPECT_FALSE(late->selected() || f.part->muted());
    ASSERT_EQ(f.exportTo("none.wav"), RenderResult::nothing);
    EXPECT_EQ(f.messages, std::vector<std::string>{"Render: Nothing to render"});
    EXPECT_TRUE(f.values("none.wav").empty());
}

/// Each selected track with parts and each bus gets a file of its own, at the running rate.
TEST(RenderExport, WritesAFileForEachTrack) {
    ExportFixture f;
    f.render.multiTrack = 1;
    f.render.rate = 96000;
    f.render.folder = f.folder.path;
    EXPECT_EQ(exportSong(f.render, f.seq, nullptr), RenderResult::nothing);
    EXPECT_EQ(f.messages, std::vector<std::string>{"Export: Nothing to export"});
    auto* bus = new CGroupCh(&f.host);
    bus->init();
    bus->createBuffers(f.host.frames);
    bus->id = "Hall";
    f.host.sends.add(bus);
    f.device.connect(bus);
    f.tone->output()->sendLevels[0]->level = 0.5f;
    f.keys->track->setSelected(true);
    f.keys->track->id = "A/B";
    f.folder.write("02_fx_Hall.wav", "mine");
    ASSERT_EQ(exportSong(f.render, f.seq, nullptr), RenderResult::good);
    EXPECT_EQ(f.files(), 3);
    EXPECT_EQ(f.folder.read("02_fx_Hall.wav"), "mine");
    for (const auto& [name, gain] :
         {std::pair{"01_track_A_B.wav", 1.0f}, {"02_fx_Hall1.wav", 0.25f}}) {
        const std::vector<float> values = f.values(name);
        ASSERT_EQ(values.size(), size_t(44100)) << name;
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
    Cancel cancel, again, third;
    EXPECT_EQ(f.exportTo("old.wav", &cancel), RenderResult::cancelled);
    EXPECT_EQ(f.exportTo("new.wav", &again), RenderResult::cancelled);
    EXPECT_EQ(f.values("new.wav").size(), size_t(3 * 1024 * 2));
    f.render.format = renderMp3;
    EXPECT_EQ(f.exportTo("song.mp3", &third), RenderResult::cancelled);
    third.left = 8 * 44100 / 1024 + 3; // while the tool runs
    third.last = 0.0f;
    EXPECT_EQ(f.exportTo("song.mp3", &third), RenderResult::cancelled);
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
    struct AddOn : CSoundCloudAddOn {
        CStr code, sent;
        bool takes = true;
        Connection connect() override {
            return code.empty()      ? Connection::needsCode
                   : code == "right" ? Connection::connected
                                     : Connection::refused;
        }
        void setCode(const CStr& c) override { code = c; }
        bool sendFile(const CStr& file, const CStr& name) override {
            sent = extractFileName(file) + " as " + name;
            return takes && getFileSize(file) > 44;
        }
        CStr param(const CStr&) override { return "http://localhost/song"; }
    };
    struct Ui : RenderUi {
        CStr code, status;
        bool onRender(float) override { return true; }
        void onStatus(const CStr& text) override { status = text; }
        CStr getVerifier() override { return code; }
    };
    struct Case {
        const char *code, *name;
        bool loaded, takes;
        RenderResult result;
        const char *sent, *message;
    };
    const char* const sent = "soundcloud_export.wav as untitled";
    for (const Case& c :
         {Case{"right", " ", true, true, RenderResult::good, sent, ""},
          {"right", "Hymn", true, true, RenderResult::good, "soundcloud_export.wav as Hymn", ""},
          {"right", "", true, false, RenderResult::notShared, sent,
           "Render: Could not upload file"},
          {"wrong", "", true, true, RenderResult::notShared, "", ""},
          {"", "", true, true, RenderResult::notShared, "", ""},
          {"", "", false, true, RenderResult::notShared, "", "Render: Addon not loaded"}}) {
        ExportFixture f;
        AddOn addOn;
        addOn.takes = c.takes;
        Ui ui;
        ui.code = c.code;
        f.render.upload = true;
        f.render.multiTrack = 1;
        f.render.addOn = c.loaded ? &addOn : nullptr;
        f.render.songName = c.name;
        EXPECT_EQ(exportSong(f.render, f.seq, &ui), c.result) << c.code;
        EXPECT_EQ(addOn.sent, c.sent) << c.code;
        EXPECT_EQ(f.messages.empty() ? "" : f.messages[0], c.message) << c.code;
        EXPECT_TRUE(c.result != RenderResult::good || ui.status.pos("Uploading '") == 0);
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
    CRender same(&f.host, f.seq);
    same.chooseUsual();
    EXPECT_EQ(same.filename, "/songs/no.1");
    EXPECT_TRUE(same.outputs.contains(f.host.getAudioOut()->output()));
    EXPECT_EQ(std::tuple(same.bits, same.rate, same.format), std::tuple(24, 96000, 2));
    for (const auto& [key, value] : {std::pair{"bits", 20},
                                     {"rate", 7999},
                                     {"ext", 3},
                                     {"channels", 0},
                                     {"bitrate", 321},
                                     {"source", -1}})
        CIniFile(inifile).writeInteger("render", key, value);
    CRender other(&f.host, f.seq);
    other.readSettings();
    EXPECT_EQ(std::tuple(other.bits, other.rate, other.format, other.chs, other.bitrate),
              std::tuple(16, 44100, 0, 2, 128));
    EXPECT_EQ(other.rangeMode, rangeSong);
    f.host.settingsEnabled = false;
    inifile = before;
}
