#include "ArrangeFixture.h"
#include "Blocks.h"

#include "audiofiles/CSample.h"
#include "base/Paths.h"
#include "browser/BrowserTree.h"
#include "browser/CBrowserPreview.h"
#include "browser/CPreviewPanel.h"
#include "browser/FileFacts.h"
#include "browser/FileIndex.h"
#include "browser/FileNames.h"
#include "browser/ListedFiles.h"
#include "browser/PreviewWave.h"
#include "common/fx/CFX.h"
#include "effects/CEffect.h"
#include "effects/Inserts.h"
#include "engine/CGroupCh.h"
#include "engine/ValueDoor.h"
#include "gui/Selections.h"
#include "project/PresetFiles.h"
#include "sequencer/song/SampleUse.h"
#include "sequencer/song/SongValues.h"
#include "support/Rows.h"

#include <algorithm>
#include <cmath>
#include <filesystem>

namespace {

/// The browser beside a song of one audio track, over a folder of samples with one below it.
class BrowserTest : public ArrangeFixture {
protected:
    void begin() {
        std::filesystem::create_directories(at("sounds/deep"));
        for (const char* name : {"sounds/kick.wav", "sounds/Snare.wav", "sounds/deep/kick two.wav"})
            tone(name);
        folder.write("sounds/read me.txt", "text");
        set("SampleFolders", "0", at("sounds").c_str());
        startWith({trackAudio});
        key("F3");
        ASSERT_TRUE(pumpUntil([this] { return tree() && tree()->shown(); }));
    }
    template <class T>
    T* within(const char* id, const char* group = "browser") {
        for (auto* c : win->clientGroup->controls) {
            if (c->id != group) continue;
            for (auto* inside : static_cast<CGroup*>(c)->controls)
                if (inside->id == id) return static_cast<T*>(inside);
        }
        return nullptr;
    }
    BrowserTree* tree() { return within<BrowserTree>("tree"); }
    BrowserTree* results() { return within<BrowserTree>("results"); }
    CBrowserPreview* player() { return CBrowserPreview::of(host.get()); }
    static CTreeNode* child(CTreeNode* of, const std::string& text) {
        for (auto* node : of->children)
            if (node->text == text.c_str()) return node;
        return nullptr;
    }
    CTreeNode* top(const std::string& text) { return child(&tree()->root, text); }
    /// The lines that show below a node, those of lower levels indented.
    static std::string lines(const CTreeNode* of, const std::string& indent = "") {
        std::string text;
        for (const auto* node : of->children)
            text += indent + node->text.asChar() + ";" + lines(node, indent + ".");
        return text;
    }
    void clickNode(BrowserTree* in, const CTreeNode* node, bool box = false) {
        const CRect row = in->nodeRect(node);
        const int x = row.left + node->indent + (box ? CTree::boxWidth / 2 : CTree::boxWidth + 30);
        mouseTo(in, x, (row.top + row.bottom) / 2);
        act({"click", "1"});
        settle();
    }
    void openSamples() {
        clickNode(tree(), top("Samples"), true);
        clickNode(tree(), child(top("Samples"), "sounds"), true);
    }
    /// How often the left side of a stereo sample rises through 0 within a fifth of a second.
    static int risesIn(const CSample* sample) {
        std::vector<float> frames(size_t(2 * 8820));
        sample->readFrames(4410, 8820, frames.data());
        int rises = 0;
        for (size_t i = 1; i < 8820; i++)
            rises += frames[2 * i - 2] < 0.0f && frames[2 * i] >= 0.0f;
        return rises;
    }
    CTreeNode* sound(const char* name) { return child(child(top("Samples"), "sounds"), name); }
};

} // namespace

/// Folders first, then what a folder of samples is for; what comes, goes or is renamed on the disk
/// does so here, and what was open stays open.
TEST_F(BrowserTest, TreeFollowsTheDisk) {
    begin();
    EXPECT_EQ(lines(&tree()->root), "Favourites;Recent;Tags;Disks;Projects;Samples;Loops & clips;"
                                    "Plugins;Components;Presets;Audio pool;");
    openSamples();
    const auto shows = [this](const char* wanted) {
        return pumpUntil([&] { return lines(top("Samples")) == wanted; });
    };
    EXPECT_TRUE(shows("sounds;.deep;.kick.wav;.Snare.wav;")) << lines(top("Samples"));
    clickNode(tree(), sound("deep"), true);
    std::filesystem::rename(at("sounds/kick.wav"), at("sounds/a.wav"));
    EXPECT_TRUE(shows("sounds;.deep;..kick two.wav;.a.wav;.Snare.wav;")) << lines(top("Samples"));
    std::filesystem::remove_all(at("sounds/deep"));
    EXPECT_TRUE(shows("sounds;.a.wav;.Snare.wav;")) << lines(top("Samples"));
    key("F3");
    EXPECT_FALSE(tree()->shown());
}

/// A press and the arrows play what they come to, whatever played before; what cannot be played
/// lets it go on, and Escape ends it.
TEST_F(BrowserTest, WhatIsChosenIsHeard) {
    begin();
    openSamples();
    clickNode(tree(), sound("kick.wav"));
    EXPECT_EQ(player()->getFilename(), at("sounds/kick.wav").c_str());
    EXPECT_TRUE(player()->isOn());
    key("Down");
    EXPECT_EQ(player()->getFilename(), at("sounds/Snare.wav").c_str());
    ASSERT_TRUE(pumpUntil([this] { return player()->getSample() != nullptr; }));
    clickNode(tree(), top("Audio pool"));
    EXPECT_TRUE(player()->isOn());
    key("Escape");
    EXPECT_FALSE(player()->isOn());
    CCtrl* wave = nullptr;
    for (auto* c : within<CGroup>("preview")->controls)
        if (c->id == "wave") wave = c;
    mouseTo(wave, wave->width / 2, 5);
    act({"click", "1"});
    runBlocks(host.get(), 1);
    const auto& sum = host->getAudioOut()->output()->bufL;
    EXPECT_GT(*std::max_element(&sum[0], &sum[host->frames]), 0.1f) << "with the song standing";
    EXPECT_NEAR(player()->frame(), 22050 + host->frames, 400) << "from the middle of a second on";
}

/// With "Match" on a soft file sounds as loud as a loud one, within what its peak allows.
TEST_F(BrowserTest, SoftFilesSoundAsLoudAsLoudOnes) {
    begin();
    const auto energyOf = [this](float level) {
        const std::string path = at("level.wav");
        CSample file;
        file.setFormat(44100, 24, 1);
        file.create(path.c_str());
        std::vector<float> wave;
        for (int i = 0; i < 44100; i++) wave.push_back(level * std::sin(float(i) * 0.1f));
        file.writeFrames(int(wave.size()), wave.data(), wave.data());
        file.writeHeader();
        file.close();
        EXPECT_TRUE(player()->play(path.c_str()));
        double sum = 0.0;
        for (int block = 0; block < 8; block++) {
            runBlocks(host.get(), 1);
            const float* out = host->getAudioOut()->output()->bufL;
            for (int i = 0; i < host->frames && block > 0; i++)
                sum += double(out[i]) * double(out[i]);
        }
        return sum;
    };
    const double loud = energyOf(0.9f), soft = energyOf(0.09f);
    EXPECT_NEAR(std::sqrt(loud / soft), 10.0, 0.1);
    player()->setMatched(true);
    const double loudNow = energyOf(0.9f), softNow = energyOf(0.09f);
    EXPECT_NEAR(std::sqrt(loudNow / softNow), 1.0, 0.01);
    EXPECT_NEAR(std::sqrt(softNow / soft), 0.1 * std::sqrt(2.0) / 0.09, 0.02) << "-20 dB";
}

/// A loop whose name tells its tempo lasts as long as its beats do in the song, and sounds as high.
TEST_F(BrowserTest, LoopsComeToTheTempo) {
    begin();
    for (const auto& [name, tempo] : Rows<const char*, float>{{"a 120 bpm.wav", 120.0f},
                                                              {"/x/b_93.5BPM.wav", 93.5f},
                                                              {"120 a.wav", 0.0f},
                                                              {"bpm.wav", 0.0f},
                                                              {"9999bpm.wav", 0.0f}})
        EXPECT_EQ(tempoOfName(name), tempo) << name;
    const std::string path = tone("loop 60bpm.wav");
    player()->setInTempo(true);
    ASSERT_TRUE(player()->play(path.c_str()));
    ASSERT_TRUE(pumpUntil([this] { return player()->getSample() != nullptr; }));
    EXPECT_EQ(player()->getSample()->getFrames(), 22050) << "a beat at 120";
    EXPECT_NEAR(risesIn(player()->getSample()), 88, 2) << "440 Hz";
}

/// A file whose name tells its key comes to the song's scale by the shortest way, or to the
/// relative key, and sounds that much higher.
TEST_F(BrowserTest, PadsComeToTheKey) {
    begin();
    const auto keyIn = [](const char* name) {
        const auto key = keyOfName(name);
        return key ? key->root + (key->minor ? 12 : 0) : -1;
    };
    for (const auto& [name, key] : Rows<const char*, int>{{"pad Am 90bpm.wav", 21},
                                                          {"F#min-riff.wav", 18},
                                                          {"/C maj/lead_Bb_major.wav", 10},
                                                          {"Cb.wav", 11},
                                                          {"A take.wav", -1},
                                                          {"Dry Gm7.wav", -1},
                                                          {"am I.wav", -1}})
        EXPECT_EQ(keyIn(name), key) << name;
    const Scale cMajor{0, scaleMajor}, aMinor{9, scaleMinor};
    EXPECT_EQ(semitonesTo(cMajor, {7, false}), 5);
    EXPECT_EQ(semitonesTo(cMajor, {6, false}), -6);
    EXPECT_EQ(semitonesTo(cMajor, {9, true}), 0);
    EXPECT_EQ(semitonesTo(aMinor, {0, false}), 0);
    EXPECT_EQ(semitonesTo({5, scaleNone}, {0, false}), 0);
    host->values->set(scaleOf(seq(), 0), {0.0, double(scaleMajor), 0.0});
    const std::string path = tone("tone G maj.wav");
    player()->setInKey(true);
    ASSERT_TRUE(player()->play(path.c_str()));
    ASSERT_TRUE(pumpUntil([this] { return player()->getSample() != nullptr; }));
    EXPECT_NEAR(risesIn(player()->getSample()), 88 * std::exp2(5 / 12.0), 2) << "five semitones up";
}

/// What is dragged in the wave plays alone, and goes as a file of its own wherever files go; one
/// that nobody takes is deleted again.
TEST_F(BrowserTest, ARangeGoesToTheSong) {
    begin();
    openSamples();
    clickNode(tree(), sound("kick.wav"));
    ASSERT_TRUE(pumpUntil([this] { return player()->getSample() != nullptr; }));
    PreviewWave* wave = within<CPreviewPanel>("preview")->wave;
    const auto dragTo = [&](int from, int to) {
        mouseTo(wave, from, 8);
        act({"mousedown", "1"});
        mouseTo(wave, (from + to) / 2, 8);
        mouseTo(wave, to, 8);
    };
    const int wide = wave->width - 4, end = player()->getSample()->getFrames();
    dragTo(2 + wide / 4, 2 + wide / 2);
    key("Escape");
    act({"mouseup", "1"});
    EXPECT_FALSE(player()->hasRange()) << "Escape";
    dragTo(2 + wide / 2, 2 + wide / 4);
    act({"mouseup", "1"});
    settle();
    EXPECT_NEAR(player()->rangeFrom(), end / 4, end / wide + 1);
    EXPECT_NEAR(player()->rangeTo(), end / 2, end / wide + 1);
    EXPECT_TRUE(pumpUntil([this] {
        runBlocks(host.get(), 4);
        return !player()->isOn();
    })) << "it ends with the range";
    const int length = player()->rangeTo() - player()->rangeFrom();
    key("Return");
    ASSERT_TRUE(pumpUntil([this] { return host->samples.getCount() == 1; }));
    const CSample* brought = host->samples.getFirst();
    ASSERT_EQ(brought->getFrames(), length);
    std::vector<float> from(size_t(2 * length)), to = from;
    player()->getSample()->readFrames(player()->rangeFrom(), length, from.data());
    brought->readFrames(0, length, to.data());
    EXPECT_EQ(from, to);
    const std::string kept = brought->filename.asChar();
    ASSERT_TRUE(pumpUntil([this] { return !app->modalWin; }));
    mouseTo(wave, 2 + wide * 3 / 8, 8);
    act({"mousedown", "1"});
    mouseTo(tree(), 60, 60);
    mouseTo(tree(), 80, 60);
    const CList* dragged = app->dragList;
    ASSERT_TRUE(dragged && dragged->getCount() == 1);
    const CStr path = static_cast<const CDropItem*>(app->dragList->first())->path;
    EXPECT_TRUE(fileExists(path));
    key("Escape");
    act({"mouseup", "1"});
    EXPECT_TRUE(pumpUntil([&] { return !fileExists(path); })) << "nobody has taken it";
    EXPECT_TRUE(fileExists(kept.c_str()));
}

/// Words that the user gives to a file list it and find it, and stay with it when it is renamed.
TEST_F(BrowserTest, TagsFindFiles) {
    begin();
    openSamples();
    clickNode(tree(), sound("kick.wav"));
    typeInDialog("Tags of kick.wav", "Punchy, deep:house");
    keysInDialog("Tags of kick.wav", {"Return"});
    inMenu({"t", "Return"});
    act({"click", "3"});
    ASSERT_TRUE(pumpUntil([] { return !readTags().empty(); })) << testing::PrintToString(titles);
    EXPECT_EQ(readTags().begin()->second, "punchy deep house");
    clickNode(tree(), top("Tags"), true);
    clickNode(tree(), child(top("Tags"), "house"), true);
    EXPECT_EQ(lines(top("Tags")), "deep;house;.kick.wav;punchy;");
    EXPECT_EQ(renameFile(host.get(), at("sounds/kick.wav").c_str(), "boom.wav"), "");
    key("shift+F3");
    act({"type", "punchy boom"});
    ASSERT_TRUE(pumpUntil([this] { return results()->shown(); }));
    EXPECT_EQ(lines(&results()->root), "Tags;.boom.wav (punchy deep house);");
}

/// An effect becomes a send by one step.
TEST_F(BrowserTest, PresetsBecomeSends) {
    begin();
    COutputChannel* out = host->getAudioOut()->output();
    const std::unique_ptr<CEffect> rack = makeInsert(out, fxDelay);
    ASSERT_TRUE(saveProgram(rack.get(), at("echo.qve").c_str()));
    EXPECT_FALSE(addSendFile(host.get(), at("sounds/kick.wav").c_str()));
    ASSERT_TRUE(addSendFile(host.get(), at("echo.qve").c_str()));
    ASSERT_TRUE(loaded());
    ASSERT_EQ(host->sends.getCount(), 1);
    auto* bus = static_cast<CComp*>(host->sends.items(0));
    EXPECT_EQ(bus->output()->inserts.getCount(), 1);
    key("ctrl+z");
    EXPECT_TRUE(pumpUntil([this] { return host->sends.empty(); }));
}

/// A file comes to the song by a double click or by being dragged there, and is remembered.
TEST_F(BrowserTest, FilesComeToTheSong) {
    begin();
    openSamples();
    CTreeNode* kick = sound("kick.wav");
    const CRect row = tree()->nodeRect(kick);
    mouseTo(tree(), row.left + kick->indent + 40, row.top + 9);
    act({"click", "--repeat", "2", "--delay", "60", "1"});
    ASSERT_TRUE(pumpUntil([this] { return tracks() == 2; }));
    mouseTo(tree(), row.left + kick->indent + 40, row.top + 9);
    act({"mousedown", "1"});
    mouseTo(tree(), row.left + kick->indent + 60, row.top + 20);
    mouseTo(asPoint(100, yOf(0)));
    mouseTo(asPoint(104, yOf(0)));
    act({"mouseup", "1"});
    ASSERT_TRUE(pumpUntil([this] { return parts(0) == 1; }));
    EXPECT_STREQ(host->undoText().asChar(), "Drop kick.wav");
    CStringList recent;
    readShelf(FileShelf::recent, &recent);
    EXPECT_EQ(recent.count(), 1);
    EXPECT_EQ(recent.get(0), at("sounds/kick.wav").c_str());
}

/// One box finds files by any of their words, and actions, which Return carries out.
TEST_F(BrowserTest, OneSearchFindsAll) {
    begin();
    key("shift+F3");
    act({"type", "KI"});
    const auto finds = [this](const std::string& wanted) {
        return pumpUntil([&] { return lines(&results()->root).find(wanted) != std::string::npos; });
    };
    EXPECT_TRUE(finds("Samples;.kick two.wav (" + at("sounds/deep") + ");.kick.wav (" +
                      at("sounds") + ");"))
        << lines(&results()->root);
    EXPECT_FALSE(tree()->visible);
    act({"type", " TWO"});
    EXPECT_EQ(lines(&results()->root), "Samples;.kick two.wav (" + at("sounds/deep") + ");");
    tone("sounds/two kilo.wav");
    EXPECT_TRUE(finds("two kilo.wav")) << lines(&results()->root);
    key("Escape");
    EXPECT_TRUE(tree()->visible);
    key("shift+F3");
    act({"type", "no such thing"});
    EXPECT_EQ(lines(&results()->root), "<no items found>;");
    key("ctrl+a");
    act({"type", "metronome"});
    const bool before = win->getAction("metronome")->isOn();
    key("Return");
    key("Return");
    EXPECT_NE(win->getAction("metronome")->isOn(), before);
}

/// A file never takes the place of another, and what plays it in the project finds it again.
TEST_F(BrowserTest, RenamesKeepFilesAndSamples) {
    begin();
    ASSERT_EQ(runCommand({"sox", at("sounds/kick.wav"), "-b", "16", at("k.wav")}), 0);
    std::filesystem::rename(at("k.wav"), at("sounds/kick.wav"));
    CSample* used = host->addSample(at("sounds/kick.wav").c_str(), 1);
    ASSERT_TRUE(used);
    const auto bytes = std::filesystem::file_size(at("sounds/Snare.wav"));
    for (const char* bad : {"Snare.wav", "", "a/b.wav", "deep", ".hidden"})
        EXPECT_FALSE(renameFile(host.get(), at("sounds/kick.wav").c_str(), bad).empty()) << bad;
    EXPECT_EQ(std::filesystem::file_size(at("sounds/Snare.wav")), bytes);
    EXPECT_TRUE(renameFile(host.get(), at("sounds/kick.wav").c_str(), "low.wav").empty());
    EXPECT_EQ(used->filename, at("sounds/low.wav").c_str());
    EXPECT_TRUE(host->modified());
    EXPECT_EQ(unusedSamples(host.get()).size(), 1u);
    EXPECT_EQ(removeUnusedSamples(host.get()), 1);
    ASSERT_TRUE(loaded());
    EXPECT_EQ(host->samples.getCount(), 0);
    key("ctrl+z");
    EXPECT_TRUE(pumpUntil([this] { return host->samples.getCount() == 1; }));
}

/// Links in a circle end, a folder that goes takes its files along, and one kind of a name does not
/// hide another.
TEST(FileIndex, FollowsFoldersOnce) {
    const TempFolder folder;
    const std::string base = folder.file("").asChar(), root = base.substr(0, base.size() - 1);
    namespace fs = std::filesystem;
    fs::create_directories(root + "/a/b");
    fs::create_directory_symlink(root, root + "/a/again");
    for (const char* name : {"/one.wav", "/a/one.wav", "/a/b/three.wav", "/a/other.txt"})
        folder.write(name + 1, "x");
    FileIndex index;
    index.setRoots({{1, root, ".WAV"}, {2, root, ".TXT"}});
    const auto counts = [&](int wanted) {
        for (int i = 0; i < 3000 && (index.count() != wanted || index.busy()); i++) {
            index.take();
            usleep(1000);
        }
        return index.count();
    };
    EXPECT_EQ(counts(4), 4);
    EXPECT_EQ(index.find({"one"}, 100).size(), 2u);
    EXPECT_EQ(index.find({"e", "o", "n"}, 1).size(), 1u);
    EXPECT_EQ(index.find({"other"}, 100).at(0).kind, 2);
    fs::create_directories(root + "/c/d");
    folder.write("c/d/new.wav", "x");
    EXPECT_EQ(counts(5), 5);
    fs::remove_all(root + "/a");
    EXPECT_EQ(counts(2), 2);
    index.setRoots({{2, root, ".TXT"}});
    EXPECT_EQ(index.count(), 0);
}
