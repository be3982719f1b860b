#include "ArrangeFixture.h"

#include "audiofiles/CSample.h"
#include "engine/CSnap.h"
#include "support/Rows.h"

#include <filesystem>

namespace {

/// Files that a file manager drags over the arrangement, by the protocol that it speaks. The view
/// has 64 pixels for a quarter, and snaps to bars.
class DropTest : public ArrangeFixture {
protected:
    void begin(std::initializer_list<TrackKind> kinds) {
        startWith(kinds);
        seq()->snap->active = true;
        seq()->snap->index = 6;
    }
    void dragFiles(const std::vector<std::string>& paths, CPoint to, const std::string& held = "",
                   bool drops = true, const std::function<void()>& then = {}) {
        dragTo(paths, addPos(addPos(page()->getPos(true), page()->controlPos(grid())), to), held,
               drops, then);
    }
    Shot onScreen() { return Shot(page()->handle, 780, page()->height); }
    /// Points of the grid at which two pictures differ.
    int differing(const Shot& a, const Shot& b) {
        const CPoint from = page()->controlPos(grid());
        int count = 0;
        for (int y = 0; y < grid()->height; y++)
            for (int x = 0; x < grid()->width; x++)
                count += a.at(from.x + x, from.y + y) != b.at(from.x + x, from.y + y);
        return count;
    }
    /// Each track: kind, then place and length of its parts in half quarters.
    std::string song() {
        std::string text;
        for (int i = 0; i < tracks(); i++) {
            text += std::to_string(row(i)->track->kind);
            for (auto* p : row(i)->parts)
                text += " " + std::to_string(p->pos / 480) + "+" +
                        std::to_string((seq()->getTicks(p) + 240) / 480);
            text += ";";
        }
        return text;
    }
};

} // namespace

/// A second is two quarters at 120, and what hovers is what comes: one behind the other, or, with
/// Shift, under each other; on a track that can't take it below that.
TEST_F(DropTest, FilesComeWhereTheyHover) {
    begin({trackAudio, trackMIDI, trackAudio});
    const std::string a = tone("a.wav"), b = tone("b.flac"), m = midi("m.mid");
    const std::string none = "3;2;3;";
    for (const auto& [files, to, held, expected, name] :
         Rows<std::vector<std::string>, CPoint, std::string, std::string, std::string>{
             {{a}, point(4000, 0), "", "3 8+4;2;3;", "Drop a.wav"},
             {{a}, point(4800, 0), "ctrl", "3 10+4;2;3;", "Drop a.wav"},
             {{a, b}, point(10, 0), "", "3 0+4 4+4;2;3;", "Drop a.wav, b.flac"},
             {{a, b}, point(10, 2), "shift", "3;2;3 0+4;3 0+4;", "Drop a.wav, b.flac"},
             {{a, m}, point(10, 1), "", "3;2 4+16;3 0+4;3;", "Drop a.wav, m.mid"},
             {{m, b}, point(3840, 1), "", "3;2 8+16;3 24+4;3;", "Drop m.mid, b.flac"},
             {{a, b}, point(10, 5), "", "3;2;3;3 0+4 4+4;", "Drop a.wav, b.flac"},
             {{a, b}, point(10, 5), "shift", "3;2;3;3 0+4;3 0+4;", "Drop a.wav, b.flac"}}) {
        SCOPED_TRACE(name + " " + held + " " + expected);
        settle();
        const Shot before = onScreen();
        dragFiles(files, to, held, false, [&] {
            settle();
            EXPECT_GT(differing(before, onScreen()), 500);
        });
        EXPECT_EQ(song(), none) << "left";
        dragFiles(files, to, held);
        ASSERT_TRUE(pumpUntil([&, wanted = expected] { return song() == wanted; })) << song();
        EXPECT_STREQ(host->undoText().asChar(), name.c_str());
        key("ctrl+z");
        ASSERT_TRUE(pumpUntil([&] { return song() == none; })) << song();
        key("ctrl+y");
        ASSERT_TRUE(pumpUntil([&, wanted = expected] { return song() == wanted; })) << song();
        key("ctrl+z");
        ASSERT_TRUE(pumpUntil([&] { return song() == none; }));
    }
}

/// More channels than two, and another rate; the files stand with the project.
TEST_F(DropTest, AudioIsBroughtToTheSong) {
    begin({trackAudio});
    host->projectFile = folder.write("song.qv", "");
    const std::string odd = at("odd.wav"), four = at("four.wav");
    for (const auto& [path, rate, channels] :
         Rows<std::string, const char*, const char*>{{odd, "32000", "1"}, {four, "44100", "4"}})
        ASSERT_EQ(runCommand(
                      {"sox", "-n", "-r", rate, "-c", channels, path, "synth", "1", "sine", "440"}),
                  0);
    dragFiles({odd, four}, point(10, 0));
    ASSERT_TRUE(pumpUntil([&] { return song() == "3 0+4 4+4;3 4+4;3 4+4;3 4+4;"; })) << song();
    for (const auto* sample : host->samples) {
        EXPECT_EQ(sample->rate, 44100.0f);
        EXPECT_TRUE(host->sampleArchived(sample)) << sample->filename.asChar();
    }
    EXPECT_EQ(host->samples.getCount(), 5);
}

/// What can't come is told and leaves the song as it was.
TEST_F(DropTest, WhatCantComeIsTold) {
    begin({trackAudio, trackMIDI});
    folder.write("bad.wav", "no sound");
    folder.write("a.txt", "text");
    row(0)->track->locked = 1;
    const std::string good = tone("a.wav");
    for (const auto& [files, to, asks] :
         Rows<std::vector<std::string>, CPoint, bool>{{{good, at("bad.wav")}, point(10, 1), true},
                                                      {{good}, point(10, 0), true},
                                                      {{at("a.txt")}, point(10, 1), false}}) {
        titles.clear();
        if (asks) keysInDialog("Error", {"Return"});
        dragFiles(files, to);
        const auto told = [&] { return !titles.empty() && titles.back() == "Error"; };
        EXPECT_TRUE(!asks || pumpUntil([&] { return told() && !app->modalWin; }));
        EXPECT_EQ(song(), "3;2;");
        EXPECT_STREQ(host->undoText().asChar(), "");
    }
}

/// Sound that takes its time is converted on the side, and given up.
TEST_F(DropTest, ConversionIsCancelled) {
    begin({trackAudio});
    const std::string path = at("long.wav"), tone = this->tone("a.wav");
    ASSERT_EQ(
        runCommand({"sox", "-n", "-r", "96000", "-c", "2", "-b", "16", path, "trim", "0", "300"}),
        0);
    inDialog("Drop", [this] { runCommand({"xdotool", "key", "Escape"}); });
    dragFiles({tone, path}, point(10, 0));
    EXPECT_TRUE(pumpUntil([&] { return !titles.empty() && !app->modalWin; }));
    EXPECT_EQ(song(), "3;");
    EXPECT_TRUE(host->samples.empty());
    EXPECT_FALSE(std::filesystem::exists(at("long1.wav")));
}
