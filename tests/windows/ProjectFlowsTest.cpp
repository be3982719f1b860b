#include "MainFixture.h"

#include "base/Messages.h"
#include "base/Paths.h"
#include "engine/CClick.h"
#include "interchange/DawFiles.h"
#include "project/AutoSave.h"
#include "project/ProjectFile.h"
#include "shell/CommandLine.h"

#include <filesystem>
#include <fstream>

namespace {

using Strings = std::vector<std::string>;

std::string content(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

class ProjectFlowsTest : public MainWinTest {
protected:
    /// A project file with that many instrument tracks.
    std::string makeProject(const std::string& name, int trackCount) {
        const std::string path = at(name);
        EXPECT_TRUE(load(kindEmpty));
        for (int i = 0; i < trackCount; i++) addTrack();
        saveAs(path);
        return path;
    }
    void addTrack() {
        const int before = tracks();
        key("ctrl+i");
        EXPECT_TRUE(pumpUntil([&] { return tracks() == before + 1; }));
    }
    /// Types the path into the dialog that Control-Shift-S opens.
    void saveAs(const std::string& path) {
        keysInDialog("Save as", {"ctrl+a"});
        typeInDialog("Save as", path);
        keysInDialog("Save as", {"Return"});
        key("ctrl+shift+s");
    }
    Strings recent() {
        Strings names;
        const CStringList& paths = win->flows->recent.paths;
        for (int i = 0; i < paths.count(); i++)
            names.emplace_back(extractFileName(paths.get(i)).asChar());
        return names;
    }
    std::string caption() { return win->id.asChar(); }
    const std::string plain = "Sondrava2.0 - alpha";
};

} // namespace

TEST_F(ProjectFlowsTest, EachKindBringsItsSong) {
    start();
    const struct {
        int kind, tracks;
    } cases[] = {{kindEmpty, 0},       {kindDefault, 1},   {kindDrumAndBass, 2}, {kindSequencer, 8},
                 {kindPortaStudio, 8}, {kindGuitarist, 2}, {kindModular, -1},    {kindBeat, 4},
                 {kindBand, 4},        {kindLateNight, 3}, {kindWaltz, 6},       {kindDemo, 10}};
    for (const auto& c : cases) {
        ASSERT_TRUE(load(c.kind)) << c.kind;
        EXPECT_EQ(tracks(), c.tracks) << c.kind;
        EXPECT_FALSE(host->modified()) << c.kind;
        EXPECT_TRUE(host->getAudioOut()) << c.kind;
        EXPECT_EQ(host->undoIndex, -1) << c.kind;
    }
}

TEST_F(ProjectFlowsTest, SavesOpensAndRemembers) {
    start();
    const std::string two = makeProject("two.qv", 2);
    EXPECT_EQ(caption(), plain + " - two");
    const std::string three = makeProject("three.qv", 3);
    EXPECT_EQ(recent(), (Strings{"three.qv", "two.qv"}));
    EXPECT_EQ(setting("last", "project"), three);

    // Through the file dialog, which begins in its name field.
    keysInDialog("Open", {"ctrl+a"});
    typeInDialog("Open", two);
    keysInDialog("Open", {"Return"});
    key("ctrl+o");
    ASSERT_TRUE(pumpUntil([&] { return tracks() == 2; }));
    EXPECT_EQ(recent(), (Strings{"two.qv", "three.qv"}));
    EXPECT_EQ(caption(), plain + " - two");

    addTrack();
    EXPECT_TRUE(pumpUntil([&] { return caption() == plain + " - two *"; }));
    key("ctrl+s");
    EXPECT_TRUE(pumpUntil([&] { return caption() == plain + " - two"; }));
    ASSERT_TRUE(load(kindFile, two.c_str()));
    EXPECT_EQ(tracks(), 3);
    key("ctrl+l");
    ASSERT_TRUE(loaded());
    EXPECT_EQ(tracks(), 3) << "the last one is the same";

    std::filesystem::remove(three);
    win->flows->recent.addRecent("");
    EXPECT_EQ(recent(), Strings{"two.qv"});
    EXPECT_EQ(setting("recent", "0"), two);
    EXPECT_EQ(titles, (Strings{"Save as", "Save as", "Open"}));
}

/// A save without a name asks for one; without an answer everything stays as it is.
TEST_F(ProjectFlowsTest, CancelledSaveChangesNothing) {
    start();
    ASSERT_TRUE(load(kindEmpty));
    addTrack();
    keysInDialog("Save as", {"Escape"});
    key("ctrl+s");
    EXPECT_EQ(titles, Strings{"Save as"});
    EXPECT_TRUE(host->modified());
    EXPECT_TRUE(host->projectFile.empty());
    EXPECT_EQ(tracks(), 1);
}

TEST_F(ProjectFlowsTest, AsksBeforeChangesAreLost) {
    struct Case {
        const char* prompt;
        Strings inQuestion, inSave;
        bool leaves, saved;
    };
    const Case cases[] = {
        {"1", {"Escape"}, {}, false, false},  {"1", {"c"}, {}, false, false},
        {"1", {"n"}, {}, true, false},        {"1", {"y"}, {"Escape"}, false, false},
        {"1", {"y"}, {"Return"}, true, true}, {"0", {}, {}, true, false},
    };
    for (const bool closes : {false, true}) {
        for (const Case& c : cases) {
            const std::string name = std::string(c.prompt) +
                                     (c.inQuestion.empty() ? "" : c.inQuestion[0]) + " closes " +
                                     std::to_string(closes);
            set("options", "savePrompt", c.prompt);
            start();
            ASSERT_TRUE(load(kindEmpty));
            addTrack();
            win->projectFolder = at("").c_str();
            std::filesystem::remove(at("untitled.qv"));
            keysInDialog("Sondrava", c.inQuestion);
            keysInDialog("Save as", c.inSave);
            if (closes)
                win->hide();
            else
                load(kindDrumAndBass);
            EXPECT_EQ(closes ? !win->visible : tracks() == 2, c.leaves) << name;
            EXPECT_EQ(fileExists(at("untitled.qv").c_str()), c.saved) << name;
            stop();
            if (c.leaves) {
                EXPECT_FALSE(fileExists(AutoSave::recoveryFile(""))) << name << ": left a copy";
            }
            std::filesystem::remove(AutoSave::recoveryFile("").asChar());
        }
    }
}

/// The playlist asks from inside the host's idle, where no question may be.
TEST_F(ProjectFlowsTest, RequestFromIdleWaitsForItsEnd) {
    start();
    ASSERT_TRUE(load(kindEmpty));
    addTrack();
    bool idleAtQuestion = true;
    inDialog("Sondrava", [&] {
        idleAtQuestion = host->idling;
        runCommand({"xdotool", "key", "n"});
    });
    host->idling = true;
    win->flows->requestProject(kindGuitarist, "");
    host->idling = false;
    ASSERT_TRUE(pumpUntil([&] { return tracks() == 2; }));
    EXPECT_FALSE(idleAtQuestion);
}

TEST_F(ProjectFlowsTest, OpensNoOtherFiles) {
    start();
    ASSERT_TRUE(load(kindGuitarist));
    const std::string path = at("text.qv");
    std::ofstream(path) << "not a project";
    for (const std::string& wrong : {path, at("missing.qv")}) {
        ASSERT_TRUE(load(kindFile, wrong.c_str()));
        EXPECT_EQ(tracks(), 2) << wrong;
        EXPECT_TRUE(host->projectFile.empty()) << wrong;
    }
    // Cut in the middle of a component: an empty project after a message.
    const std::string good = makeProject("good.qv", 2);
    std::string bytes = content(good);
    const size_t at = bytes.find("comp2");
    bytes.resize(at + 12);
    std::ofstream(path, std::ios::binary | std::ios::trunc) << bytes;
    keysInDialog("Error", {"Return"});
    ASSERT_TRUE(load(kindFile, path.c_str()));
    EXPECT_LE(tracks(), 0);
    ASSERT_TRUE(load(kindFile, good.c_str()));
    EXPECT_EQ(tracks(), 2);
}

/// The default project is loaded as one without a name.
TEST_F(ProjectFlowsTest, KeepsADefaultProject) {
    const std::string file = (extractFilePath(asAppname()) + "default.qv").asChar();
    std::filesystem::remove(file);
    start();
    ASSERT_TRUE(load(kindEmpty));
    for (int i = 0; i < 3; i++) addTrack();
    win->flows->setDefaultClicked();
    EXPECT_TRUE(host->projectFile.empty());
    EXPECT_TRUE(host->modified()) << "the project itself is not saved";
    keysInDialog("Sondrava", {"n"});
    ASSERT_TRUE(load(kindDefault));
    EXPECT_EQ(tracks(), 3);
    EXPECT_TRUE(host->projectFile.empty());
    EXPECT_EQ(setting("last", "project"), "");
    std::ofstream(file, std::ios::trunc) << "damaged";
    ASSERT_TRUE(load(kindDefault));
    EXPECT_EQ(tracks(), 1) << "the template instead";
    std::filesystem::remove(file);
}

/// Into another folder the samples that the project needs go along.
TEST_F(ProjectFlowsTest, SavesAsWithItsAudioFolder) {
    start();
    ASSERT_TRUE(load(kindEmpty));
    std::filesystem::create_directory(at("there"));
    saveAs(at("there/song.qv"));
    EXPECT_EQ(host->audioFolder, "song_audio");
    EXPECT_TRUE(folderExists(at("there/song_audio").c_str()));
    EXPECT_EQ(host->projectFile, at("there/song.qv").c_str());
}

TEST_F(ProjectFlowsTest, OffersWhatACrashLeft) {
    start();
    const std::string path = makeProject("song.qv", 1);
    addTrack();
    const std::string copy = AutoSave::recoveryFile(path.c_str()).asChar();
    ASSERT_TRUE(pumpUntil([&] { return fileExists(copy.c_str()); }));
    stop();

    // Declined: the copy is set aside and not offered again.
    std::filesystem::copy_file(copy, at("kept"));
    keysInDialog("Sondrava", {"n"});
    calledWith = {midi("call.mid").c_str()}; // which waits for the answer
    start("2");
    ASSERT_TRUE(pumpUntil([&] { return tracks() == 1; }));
    EXPECT_TRUE(host->projectFile.empty());
    calledWith.clear();
    EXPECT_FALSE(fileExists(copy.c_str()));
    EXPECT_EQ(content(copy + "~"), content(at("kept")));
    stop();
    titles.clear();
    start("2");
    EXPECT_EQ(tracks(), 1);
    EXPECT_TRUE(titles.empty());
    stop();

    std::filesystem::rename(copy + "~", copy);
    static std::string status;
    keysInDialog("Sondrava", {"y"});
    start("2");
    messageHooks().setStatus = [](const CStr& text) { status = text.asChar(); };
    ASSERT_TRUE(pumpUntil([&] { return tracks() == 2 && !app->modalWin; }));
    EXPECT_TRUE(host->modified());
    EXPECT_EQ(host->projectFile, path.c_str());
    EXPECT_EQ(status.find("Loading"), std::string::npos) << "that is over: " << status;
    key("ctrl+s");
    EXPECT_TRUE(pumpUntil([&] { return !host->modified(); }));
    EXPECT_FALSE(fileExists(copy.c_str()));
}

TEST_F(ProjectFlowsTest, StartsAsTheSettingsTell) {
    start();
    const std::string last = makeProject("last.qv", 4);
    stop();
    struct Case {
        const char* with;
        bool hasLast;
        int tracks;
        bool welcome;
    };
    const Case cases[] = {{"0", true, 1, false},   {"1", true, -1, false}, {"2", true, 4, false},
                          {"2", false, 10, false}, {"-1", true, 0, true},  {"-1", false, 10, true},
                          {"3", true, 0, true},    {"-2", true, -1, false}};
    for (const Case& c : cases) {
        titles.clear();
        set("last", "project", c.hasLast ? last.c_str() : "");
        if (c.welcome) keysInDialog("Welcome", {"Escape"});
        start(c.with);
        ASSERT_TRUE(pumpUntil([&] { return titles.size() == size_t(c.welcome) && !app->modalWin; }))
            << c.with;
        EXPECT_EQ(tracks(), c.tracks) << c.with << " " << c.hasLast;
        stop();
    }
}

TEST_F(ProjectFlowsTest, WelcomeChoosesKindOrProject) {
    start();
    const std::string two = makeProject("two.qv", 2);
    struct Case {
        Strings keys;
        int tracks;
        const char* kept; ///< the kind that is offered first the next time
    };
    const Case cases[] = {{{"Down", "Down", "Return"}, 8, "3"}, // from the default on
                          {{"Return"}, 8, "3"},
                          {{"Tab", "Down", "Return"}, 2, "3"}, // the recent project
                          {{"Tab", "End", "Return"}, 10, "3"}, // the demo song behind it
                          {{"Home", "Return"}, 0, "0"}};
    for (const Case& c : cases) {
        keysInDialog("Welcome", c.keys);
        key("ctrl+n");
        ASSERT_TRUE(loaded());
        EXPECT_EQ(tracks(), c.tracks) << c.keys.size() << c.keys.front();
        EXPECT_EQ(setting("last", "template"), c.kept);
    }
    keysInDialog("Welcome", {"Tab", "Tab", "space", "Escape"}); // "Show at start"
    key("ctrl+n");
    EXPECT_TRUE(pumpUntil([&] { return setting("options", "startwith") == "-1"; }));
    keysInDialog("Welcome", {"space", "Escape"});
    key("ctrl+n");
    EXPECT_TRUE(pumpUntil([&] { return host->playing && !app->modalWin; }))
        << "the song can be heard before a project is chosen";
}

/// What the program is called with decides what it starts with; the settings count where it asks
/// for no song, and what can't be opened is told.
TEST_F(ProjectFlowsTest, StartsWithTheFilesOfTheCall) {
    start();
    const std::string two = makeProject("two.qv", 2), three = makeProject("three.qv", 3);
    std::vector<CStr> lost;
    const std::string daw = at("song.dawproject");
    ASSERT_EQ(exportDawProject(seq(), daw.c_str(), lost), DawResult::good);
    stop();
    folder.write("junk.qv", "no project");
    folder.write("notes.txt", "no song");
    const std::string song = midi("song.mid"), junk = at("junk.qv");
    const struct {
        std::vector<std::string> files;
        int tracks;
        std::string project;
        Strings told;
    } cases[] = {
        {{two}, 2, two, {}},
        {{song}, 1, "", {}},
        {{two, song}, 3, two, {}},
        {{daw}, 3, "", {}},
        {{three, two, at("gone.mid"), at("notes.txt")}, 3, three, {"Open"}},
        {{junk}, 0, "", {}},
    };
    for (const auto& c : cases) {
        titles.clear();
        calledWith.clear();
        for (const std::string& file : c.files) calledWith.emplace_back(file.c_str());
        if (!c.told.empty()) keysInDialog(c.told[0], {"Return"});
        const std::string name = testing::PrintToString(c.files);
        start("-1");
        EXPECT_TRUE(pumpUntil([&] {
            std::erase(titles, "Import DAWproject"); // while it takes its time
            return tracks() == c.tracks && titles == c.told;
        })) << name;
        EXPECT_EQ(host->projectFile.asChar(), c.project) << name;
        EXPECT_TRUE(pumpUntil([&] { return !app->modalWin && !win->pumping; })) << name;
        stop();
    }
    const CommandLine line = readCommandLine({"a.qv", "--", "--help"});
    ASSERT_EQ(line.files.size(), 2u);
    EXPECT_EQ(line.files[0], absolutePath("a.qv"));
    EXPECT_EQ(extractFileName(line.files[1]), "--help");
    EXPECT_TRUE(line.answer.empty() && line.mistake.empty());
}
