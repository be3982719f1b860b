#include "audiofiles/CSampleReader.h"
#include "audiofiles/SampleFixture.h"
#include "base/FullDisk.h"
#include "base/Numbers.h"
#include "base/Paths.h"
#include "base/Process.h"
#include "engine/ForgetHooks.h"
#include "engine/StripFixture.h"
#include "support/Rows.h"
#include "support/Told.h"

namespace fs = std::filesystem;

namespace {

/// Plays a sample from disk, over and over.
class Player : public CComp {
public:
    using CComp::CComp;
    CSample* sample = nullptr; ///< graph holder
    int pos = 0;
    std::vector<float> out = std::vector<float>(8192);

    void prepare(int frames) override {
        if (!sample) return;
        pos = (pos + frames) % sample->getFrames();
        sample->reader->getData(pos, frames, out.data(), false, true);
    }
    static void forget(CQV* host, const ForgetSet& gone) {
        const GraphHold hold(host);
        for (auto* c : host->comps)
            if (auto* p = dynamic_cast<Player*>(c); p && gone.has(p->sample)) p->sample = nullptr;
    }
};

/// A saved project p/song.v2.qv with its audio folder, a temp folder, and folders that only look
/// like these.
class CSampleManagerTest : public SampleFiles {
protected:
    CSampleManagerTest() {
        for (const char* name :
             {"p/song.v2_audio/sub", "p/song.v2_audio2", "p/SONG.V2_audio", "temp", "elsewhere"})
            fs::create_directories(path(name));
        std::ofstream(path("p/song.v2.qv")) << "QVF";
        write(path("wav"), 44100, 16, 2, values, values);
        host->tempAudioFolder = full("temp");
        openProject();
    }
    void openProject() {
        host->clear();
        host->projectFile = full("p/song.v2.qv");
        host->audioFolder = "song.v2_audio";
    }
    CStr full(const std::string& name) const { return path(name).c_str(); }
    CStr make(const std::string& name) {
        fs::copy_file(path("wav"), path(name), fs::copy_options::overwrite_existing);
        return full(name);
    }
    CSample* add(const std::string& name, int streamed = 1) {
        return host->addSample(make(name), streamed);
    }
    bool exists(const std::string& name) const { return fs::exists(path(name)); }
    bool trash(const std::string& name) { return host->sampleManager.moveToTrash(full(name)); }
    /// Recorded in a step, and not saved yet.
    CSample* take(const std::string& name) {
        CSample* sample = CSample::createSample(full(name), 0);
        sample->writeFrames(int(values.size()), values.data(), values.data());
        t.step([&](CUndo* u) { u->asAdd(sample, &host->samples); });
        return sample;
    }

    StripFixture t;
    CQV* host = t.host;
    const std::vector<float> values = std::vector<float>(100000, 0.25f);
};

} // namespace

TEST_F(CSampleManagerTest, FoldersAndNamesFollowTheProject) {
    const auto in = [this](const char* name) { return *name ? folder.c_str() + CStr(name) : ""; };
    for (const auto& [project, set, create, result, nameAfter] :
         Rows<const char*, const char*, bool, const char*, const char*>{
             {"", "set", true, "", "set"},
             {"/n/my.song.qv", "", true, "/n/my.song_audio", "my.song_audio"},
             {"/n/my.song.qv", "other", false, "/n/other", "other"},
             {"/n/my.song.qv", "../temp", false, "", "../temp"},
             {"/n/my.song.qv", "..", true, "/n/my.song_audio", "my.song_audio"}}) {
        host->projectFile = in(project);
        host->audioFolder = set;
        EXPECT_TRUE(host->getAudioFolder(create, false, false) == in(result)) << set;
        EXPECT_TRUE(host->audioFolder == nameAfter) << set;
    }
    EXPECT_TRUE(exists("n/my.song_audio"));
    openProject();
    bool inTemp = true;
    const auto next = [&] { return host->requireSampleFilename("/x/take.one.wav", &inTemp); };
    EXPECT_TRUE(next() == full("p/song.v2_audio/take.one.wav") && !inTemp);
    make("p/song.v2_audio/take.one.wav");
    EXPECT_TRUE(next() == full("p/song.v2_audio/take.one1.wav"));
    host->projectFile = "";
    EXPECT_TRUE(next() == full("temp/take.one.wav") && inTemp);
    host->tempAudioFolder = full("gone");
    const CStr home = getHomeFolder();
    setenv("HOME", full("home").asChar(), 1);
    EXPECT_TRUE(host->getTempAudioFolder() == full("home/.Sondrava/audio")) << "made there";
    make("file");
    setenv("HOME", full("file").asChar(), 1);
    EXPECT_TRUE(host->getTempAudioFolder() == getTempFolder());
    setenv("HOME", home.asChar(), 1);
}

/// A streamed file has one entry, whatever the case; the archive brings in what lies elsewhere, and
/// with the disk full half way nothing changes.
TEST_F(CSampleManagerTest, PoolAndArchive) {
    const Told told;
    const CSample* inside = add("p/song.v2_audio/in.wav");
    EXPECT_EQ(host->addSample(inside->filename.upperCase(), 1), inside);
    const CSample* loaded = add("p/song.v2_audio/in.wav", 0);
    EXPECT_TRUE(loaded != inside && loaded->data && !host->sampleArchived(loaded));
    EXPECT_EQ(host->addSample(full("p/song.v2.qv"), 1), nullptr);
    EXPECT_TRUE(host->sampleArchived(inside));
    const char* names[] = {"p/song.v2_audio/sub/in.wav", "p/song.v2_audio2/alike.wav",
                           "p/SONG.V2_audio/twin.wav", "elsewhere/o.wav"};
    for (const char* name : names) EXPECT_FALSE(host->sampleArchived(add(name))) << name;
    const CSample* last = add(names[3]);
    {
        const FullDisk almost(2048);
        host->archiveAllSamles();
    }
    ASSERT_TRUE(told.messages.size() == 1 && nomNotArchived(host) == 4);
    EXPECT_EQ(told.messages[0].find("Error: Copy to Audio Folder"), 0u) << "one for all of them";
    EXPECT_FALSE(exists("p/song.v2_audio/o.wav"));
    EXPECT_TRUE(last->filename == full(names[3]));

    host->archiveAllSamles();
    EXPECT_EQ(bytesOf(path("p/song.v2_audio/in1.wav")), bytesOf(path("wav")));
    EXPECT_TRUE(last->filename == full("p/song.v2_audio/o.wav"));
    for (const char* name : names) EXPECT_TRUE(exists(name)) << name;
    host->projectFile = full("p/renamed.qv");
    EXPECT_EQ(nomNotArchived(host), 0) << "the folder keeps its name";
    EXPECT_FALSE(host->sampleArchived(inside)) << "there is no such project yet";
}

/// Whatever a path pretends: only a plain file right in one of both folders is ever deleted.
TEST_F(CSampleManagerTest, NothingElseIsEverDeleted) {
    const char* own = "song.v2_audio";
    make("elsewhere/t.wav");
    fs::create_symlink(path("elsewhere/t.wav"), path("p/song.v2_audio/link.wav"));
    for (const char* link : {"p/linked_audio", "p/song.v2_audio/inner"})
        fs::create_directory_symlink(path("elsewhere"), path(link));
    fs::create_directory_symlink(path("p"), path("q"));
    for (const auto& [audioFolder, name, survives] : Rows<const char*, const char*, const char*>{
             {own, "elsewhere/o.wav", "elsewhere/o.wav"},
             {own, "p/song.v2_audio/../o.wav", "p/o.wav"},
             {own, "p/song.v2_audio/link.wav", "elsewhere/t.wav"},
             {own, "p/song.v2_audio/inner/t.wav", "elsewhere/t.wav"},
             {own, "p/song.v2_audio2/o.wav", "p/song.v2_audio2/o.wav"},
             {own, "p/SONG.V2_audio/o.wav", "p/SONG.V2_audio/o.wav"},
             {own, "q/song.v2_audio/o.wav", "p/song.v2_audio/o.wav"},
             {"linked_audio", "p/linked_audio/t.wav", "elsewhere/t.wav"},
             {"../elsewhere", "p/../elsewhere/o.wav", "elsewhere/o.wav"},
             {".", "p/./o.wav", "p/o.wav"}}) {
        openProject();
        host->audioFolder = audioFolder;
        if (!exists(name)) make(name);
        EXPECT_FALSE(trash(name)) << name;
        EXPECT_FALSE(host->deleteSampleFromDisk(host->addSample(full(name), 1))) << name;
        host->clear();
        EXPECT_TRUE(exists(survives)) << name;
    }
}

/// The trash is emptied late: what was replaced by a link, or is wanted again, stays.
TEST_F(CSampleManagerTest, TrashLooksAgain) {
    const char* names[] = {"temp/a.wav", "temp/again.wav", "p/song.v2_audio/link.wav",
                           "p/song.v2_audio/moved.wav"};
    for (const char* name : names) EXPECT_TRUE(make(name).length() && trash(name)) << name;
    EXPECT_FALSE(trash("temp/missing.wav"));
    make("elsewhere/link.wav");
    make("elsewhere/moved.wav");
    fs::remove(path(names[2]));
    fs::create_symlink(path("elsewhere/link.wav"), path(names[2]));
    host->addSample(full(names[1]), 1);
    EXPECT_TRUE(exists(names[0])) << "not yet";
    host->projectFile = full("n/next.qv");
    fs::rename(path("p/song.v2_audio"), path("p/old"));
    fs::create_directory_symlink(path("elsewhere"), path("p/song.v2_audio"));
    host->sampleManager.emptyTrash();
    EXPECT_TRUE(exists("elsewhere/moved.wav") && exists("elsewhere/link.wav"));
    EXPECT_TRUE(exists("temp/again.wav") && !exists("temp/a.wav"));
    EXPECT_EQ(host->sampleManager.count(), 0);
}

/// No file goes that the project or its history stands on; takes die with a project that was not
/// saved.
TEST_F(CSampleManagerTest, FilesLiveAsLongAsTheyAreNeeded) {
    CSample* plain = add("p/song.v2_audio/a.wav");
    fs::create_directory_symlink(path("p"), path("q"));
    EXPECT_NE(host->addSample(full("q/song.v2_audio/a.wav"), 1), plain);
    EXPECT_FALSE(host->deleteSampleFromDisk(plain)) << "there is another way to it";
    const CSample* undone = take("temp/undone.wav");
    t.undo();
    EXPECT_TRUE(trash("p/song.v2_audio/a.wav") && trash("temp/undone.wav"));
    host->sampleManager.emptyTrash();
    EXPECT_TRUE(exists("p/song.v2_audio/a.wav") && exists("temp/undone.wav"));
    EXPECT_NE(host->addSample(full("temp/undone.wav"), 1), undone);
    take("temp/lost.wav");
    openProject();
    EXPECT_TRUE(exists("p/song.v2_audio/a.wav"));
    EXPECT_TRUE(exists("temp/undone.wav")) << "it was asked for by name";
    EXPECT_FALSE(exists("temp/lost.wav"));

    CSample* copied = take("temp/copied.wav");
    EXPECT_TRUE(host->copyToArchive(copied, host->getAudioFolder(false, false, false)));
    CSample* gone = take("p/song.v2_audio/gone.wav");
    host->keepSamples();
    EXPECT_TRUE(host->deleteSampleFromDisk(gone) && !exists("p/song.v2_audio/gone.wav"));
    for (int i = 0; i < 2; ++i) t.undo();
    for (int i = 0; i < 2; ++i) t.redo();
    EXPECT_TRUE(host->samples.getCount() == 1 && host->samples.contains(copied));
    host->clear();
    EXPECT_TRUE(exists("p/song.v2_audio/copied.wav") && !exists("temp/copied.wav"));
}

/// What can't be played is converted, what can is copied once the project has a file; made files
/// go with a project that is not saved, and what stands already comes again.
TEST_F(CSampleManagerTest, ImportedFilesComeToTheProject) {
    run("sox -D -V1 -n -r 44100 -b 16 -c 2 " + path("tone.flac") + " synth 0.5 sine 440");
    run("sox -D -V1 " + path("tone.flac") + " " + path("plain.wav"));
    run("sox -D -V1 " + path("tone.flac") + " -r 88200 " + path("fast.wav"));
    run("sox -D -V1 -M " + path("tone.flac") + " " + path("plain.wav") + " " + path("four.wav"));
    for (const auto& [name, place, made] :
         Rows<std::string, std::string, int>{{"tone.flac", "p/song.v2_audio", 1},
                                             {"plain.wav", "p/song.v2_audio", 1},
                                             {"fast.wav", "p/song.v2_audio", 1},
                                             {"four.wav", "p/song.v2_audio", 4},
                                             {"tone.flac", "temp", 1},
                                             {"plain.wav", "", 1},
                                             {"fast.wav", "temp", 1},
                                             {"four.wav", "temp", 4}}) {
        SCOPED_TRACE(name + " to " + place);
        const bool saved = place[0] == 'p';
        if (!saved) host->projectFile = "";
        const CStr source = full(name);
        std::vector<CStr> files, again;
        ASSERT_EQ(host->importFiles(source, files), ImportResult::good);
        ASSERT_EQ(files.size(), size_t(made));
        for (int i = 0; i < made; i++) {
            const std::string stem = fs::path(name).stem().string();
            const std::string number = made > 1 ? " " + std::to_string(i + 1) : "";
            const std::string wanted = place + "/" + stem + number + ".wav";
            EXPECT_TRUE(files[size_t(i)] == (place.empty() ? source : full(wanted)));
            const CSample* sample = host->addImported(files[size_t(i)], source);
            ASSERT_TRUE(sample && sample->getFrames() == 22050 && sample->rate == 44100.0f);
            EXPECT_EQ(sample->keep, place.empty());
            EXPECT_EQ(sample->cached, place == "temp");
        }
        const int count = host->samples.getCount();
        ASSERT_EQ(host->importFiles(source, again), ImportResult::good);
        EXPECT_TRUE(again.size() == files.size() && again[0] == files[0]);
        EXPECT_TRUE(host->addImported(again[0], source) && host->samples.getCount() == count);
        host->dropImported(files, source);
        EXPECT_TRUE(fileExists(files[0])) << "a sample stands on it";
    }
    host->clear();
    EXPECT_TRUE(fs::is_empty(path("temp")) && fileExists(full("plain.wav")));
}

/// A pool of more files than the system lets us open: those beyond are refused, the others play,
/// and once there are handles again the rest comes in.
TEST_F(CSampleManagerTest, PoolsOutgrowTheHandles) {
    constexpr int files = 1000, handles = 300;
    const auto name = [](int i) { return "temp/" + std::to_string(i) + ".wav"; };
    make(name(0));
    for (int i = 1; i < files; ++i) fs::create_hard_link(path(name(0)), path(name(i)));
    const auto addAll = [&] {
        int opened = 0;
        for (int i = 0; i < files; ++i) opened += host->addSample(full(name(i)), 1) != nullptr;
        EXPECT_EQ(host->samples.getCount(), opened);
        return opened;
    };
    const Limit few(RLIMIT_NOFILE, handles);
    const int opened = addAll();
    EXPECT_TRUE(opened > 0 && opened < handles);
    for (const auto* sample : host->samples) {
        float frame[2] = {};
        sample->reader->getData(90000, 1, frame, false, false);
        EXPECT_NEAR(frame[1], 0.25f, 1e-4f);
    }
    raiseFileLimit();
    EXPECT_EQ(addAll(), files);
}

TEST_F(CSampleManagerTest, SamplesGoWhileEverybodyIsAtThem) {
    enterForgetHook(Player::forget);
    auto* player = t.add(new Player(host));
    {
        const BlockThread audio([&] { t.block(1024); });
        const auto play = [&](CSample* sample) {
            const GraphHold hold(host);
            player->sample = sample;
        };
        for (int i = 0; i < 25; ++i) {
            CSample* sample = add("p/song.v2_audio/s.wav");
            play(sample);
            asSleep(i % 3);
            EXPECT_TRUE(host->deleteSampleFromDisk(sample));
            CSample* undone = take("temp/undone.wav");
            play(undone);
            undone->needsPeaks = true;
            host->updatePeaks();
            host->undoClicked();
        }
        add("p/song.v2_audio/last.wav");
        host->clear();
    }
    EXPECT_TRUE(!exists("p/song.v2_audio/s.wav") && !exists("temp/undone.wav"));
}
