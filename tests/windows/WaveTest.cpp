#include "ArrangeFixture.h"

#include "audiofiles/CSample.h"
#include "engine/CSamplePreview.h"
#include "engine/CSnap.h"
#include "gui/controls/CRangebar.h"
#include "notes/WaveInfo.h"
#include "notes/WaveView.h"
#include "sequencer/song/CEditorComp.h"
#include "shell/Pages.h"

#include <algorithm>
#include <cmath>
#include <functional>

/// The editor of sound under the mouse and the keys of a user: what is left in the song and in the
/// files that it plays.
class WaveTest : public ArrangeFixture {
protected:
    static constexpr int frames = 8000;
    static constexpr int margin = 24; ///< pixels beside the part, as it is shown first

    /// Of the left channel of the file; the right one is half of it, the other way up.
    static int valueAt(int frame) { return (frame * 37 % 2001 - 1000) * 10; }
    static std::string word(uint64_t value, int bytes) {
        std::string text;
        for (int i = 0; i < bytes; i++) text += char(value >> 8 * i & 255);
        return text;
    }
    static std::string chunk(const std::string& name, const std::string& content) {
        return name + word(unsigned(content.size()), 4) + content;
    }
    /// 44100 Hz, 16 bits, stereo, with a cue point "Two" at 2000 and a nameless one at 6000.
    std::string write(const std::string& name, int count = frames) {
        std::string data;
        for (int i = 0; i < count; i++)
            data += word(uint64_t(valueAt(i)), 2) + word(uint64_t(-valueAt(i) / 2), 2);
        std::string cues = word(2, 4);
        for (const unsigned cue : {1u, 2u})
            cues += word(cue, 4) + word(0, 4) + "data" + word(0, 8) + word(4000 * cue - 2000, 4);
        const std::string content =
            "WAVE" +
            chunk("fmt ", word(1, 2) + word(2, 2) + word(44100, 4) + word(176400, 4) + word(4, 2) +
                              word(16, 2)) +
            chunk("data", data) + chunk("cue ", cues) +
            chunk("LIST", "adtl" + chunk("labl", word(1, 4) + std::string("Two\0", 4)));
        folder.write(name.c_str(), chunk("RIFF", content));
        return at(name);
    }
    /// The part of that file at bar 1, in the editor, off the grid.
    void open() {
        startWith({trackAudio});
        win->move(0, 0, 780, 540); // all on the screen
        host->projectFile = at("song.qv").c_str();
        seq()->snap->active = false;
        drop(write("a.wav"), grid(), 0, yOf(0));
        ASSERT_TRUE(pumpUntil([&] { return parts(0) == 1; }));
        edited = part(0, 0);
        mouseTo(point(150, 0));
        act({"click", "--repeat", "2", "--delay", "50", "1"});
        ASSERT_TRUE(pumpUntil([&] { return editor() && win->pages->current() == editor(); }));
        ASSERT_TRUE(loaded());
        settle();
        ASSERT_EQ(view()->accessParts(), 2);
    }
    CCompEditor* editor() { return win->pages->editorOf(seq()->editorComp.get()); }
    template <class T>
    T* child(const char* id, CGroup* group = nullptr) {
        for (auto* c : (group ? group : editor()->clientGroup)->controls) {
            if (c->id == id) return dynamic_cast<T*>(c);
            if (c->id == "wavebody")
                if (T* found = child<T>(id, static_cast<CGroup*>(c))) return found;
        }
        return nullptr;
    }
    WaveView* view() { return child<WaveView>("wave"); }

    // What is left.
    const CAudioEvent* clip() { return static_cast<const CAudioEvent*>(edited->getEvents()); }
    std::vector<int> content(int channel = 0) {
        const CSample* sample = clip()->sample;
        std::vector<float> values(size_t(sample->frames) * size_t(sample->chs));
        sample->readFrames(0, sample->frames, values.data());
        std::vector<int> whole;
        for (int i = 0; i < sample->frames; i++)
            whole.push_back(asRound(
                double(values[size_t(i * sample->chs + asMin(channel, sample->chs - 1))]) * 32768));
        return whole;
    }
    using Formula = std::function<double(int frame)>;
    /// Every value of the left channel is within 2 of a formula, and so many there are.
    testing::AssertionResult holds(int count, const Formula& formula) {
        if (!pumpUntil([&] { return clip()->sample->frames == count; }))
            return testing::AssertionFailure() << clip()->sample->frames << " frames";
        const std::vector<int> is = content();
        for (int i = 0; i < count; i++)
            if (std::fabs(is[size_t(i)] - formula(i)) > 2)
                return testing::AssertionFailure()
                       << "frame " << i << " is " << is[size_t(i)] << " for " << formula(i);
        return testing::AssertionSuccess();
    }
    std::string told() {
        Description d;
        view()->describe(d, 0);
        return d.name;
    }

    std::string levelTold() {
        Description d;
        child<WaveInfo>("waveinfo")->describe(d, Accessible::wholeCtrl);
        return d.text;
    }

    // The mouse, in frames as they stand while the whole file shows.
    double perPixel(int count = frames) { return double(count) / (view()->width - 2 * margin); }
    int xAt(int frame) { return margin + asRound(frame / perPixel()); }
    int frameAt(int x) { return asMinMax(asRound((x - margin) * perPixel()), 0, frames); }
    void mouse(int x, int y = 60) {
        const CPoint screen = editor()->getPos(true), in = editor()->controlPos(view());
        act({"mousemove", std::to_string(screen.x + in.x + x),
             std::to_string(screen.y + in.y + y)});
    }
    void press(int from, int to, const std::string& last = "", int y = 60) {
        mouse(from, y);
        act({"mousedown", "1"});
        mouse((from + to) / 2, y);
        mouse(to, y);
        if (!last.empty()) key(last);
        act({"mouseup", "1"});
        EXPECT_TRUE(loaded());
    }
    void menu(const std::vector<std::string>& letters) {
        inMenu(letters);
        mouse(xAt(4000));
        act({"click", "3"});
        EXPECT_TRUE(loaded());
    }

    CPart* edited = nullptr;
};

TEST_F(WaveTest, TheRangeIsEditedInNewFiles) {
    open();
    const int a = frameAt(xAt(1000)), b = frameAt(xAt(3000)), n = b - a;
    const CStr first = clip()->sample->filename;
    double peak = 0;
    for (int i = a; i < b; i++) peak = std::max(peak, std::fabs(valueAt(i)));
    const auto inside = [=](int i) { return i >= a && i < b; };
    const auto in = [&](const std::function<double(int)>& f) -> Formula {
        return [=](int i) { return inside(i) ? f(i) : valueAt(i); };
    };
    const double scale = 32767.0 / 32768.0;
    const struct {
        const char* step;
        std::vector<std::string> letters; ///< of the menu; one alone is a key
        int count;
        Formula formula;
    } cases[] = {
        {"Normalize", {"n", "Return"}, frames, in([=](int i) {
             return valueAt(i) * 32767 / peak;
         })},
        {"Reverse", {"r", "Return"}, frames, in([=](int i) { return valueAt(a + b - 1 - i); })},
        {"Fade In", {"f", "Return"}, frames, in([=](int i) {
             return valueAt(i) * scale * (i - a) / n;
         })},
        {"Fade Out", {"f", "f", "Return"}, frames, in([=](int i) {
             return valueAt(i) * scale * (b - i) / n;
         })},
        {"Silence", {"s", "s", "Return"}, frames, in([](int) { return 0.0; })},
        {"Trim", {"t", "Return"}, frames, [=](int i) { return inside(i) ? valueAt(i) : 0.0; }},
        {"Crop", {"c", "c", "c", "Return"}, n, [=](int i) { return double(valueAt(i + a)); }},
        {"Convert to mono",
         {"c", "c", "c", "c", "Return"},
         frames,
         [](int i) { return valueAt(i) / 4.0; }},
        {"Cut", {"ctrl+x"}, frames - n, [=](int i) { return double(valueAt(i < a ? i : i + n)); }},
        {"Delete",
         {"Delete"},
         frames - n,
         [=](int i) { return double(valueAt(i < a ? i : i + n)); }},
        {"Paste", {"ctrl+v"}, frames, [](int i) { return double(valueAt(i)); }},
    };
    for (const auto& c : cases) {
        press(xAt(5000), xAt(5000)); // or the drag would begin at an end of the range
        press(xAt(1000), xAt(3000));
        EXPECT_EQ(told().find("From sample " + std::to_string(a) + ", "), 0u) << told();
        EXPECT_NE(told().find("length " + std::to_string(n) + " samples"), std::string::npos);
        c.letters.size() > 1 ? menu(c.letters) : key(c.letters.front());
        ASSERT_TRUE(pumpUntil([&] { return clip()->sample->filename != first; })) << c.step;
        EXPECT_STREQ(host->undoText().asChar(), c.step);
        EXPECT_TRUE(holds(c.count, c.formula)) << c.step;
        const bool loudest = c.step == std::string("Normalize");
        EXPECT_TRUE(!loudest || pumpUntil([&] { return levelTold().find("peak 0.0 dB") < 200; }))
            << levelTold();
        EXPECT_EQ(clip()->start, 0);
        EXPECT_EQ(clip()->end, c.count - 1);
        const CStr made = clip()->sample->filename;
        key("ctrl+z");
        ASSERT_TRUE(pumpUntil([&] { return clip()->sample->filename == first; })) << c.step;
        EXPECT_TRUE(holds(frames, valueAt)) << c.step << " undone";
        key("ctrl+y");
        ASSERT_TRUE(pumpUntil([&] { return clip()->sample->filename == made; })) << c.step;
        EXPECT_TRUE(holds(c.count, c.formula)) << c.step << " done again";
        key("ctrl+z");
        ASSERT_TRUE(pumpUntil([&] { return clip()->sample->filename == first; }));
    }
    // What was cut comes in at a place, and a locked track refuses.
    press(xAt(6000), xAt(6000));
    key("ctrl+v");
    const int c = frameAt(xAt(6000));
    EXPECT_TRUE(holds(frames + n, [=](int i) {
        return double(valueAt(i < c ? i : i < c + n ? i - c + a : i - n));
    }));
    EXPECT_TRUE(pumpUntil([&] {
        return told().find("length " + std::to_string(n)) != std::string::npos;
    })) << told();
}

TEST_F(WaveTest, KeysAndMarksReachTheRange) {
    open();
    const auto is = [&](int from, int count) {
        const std::string place = (count ? "From sample " : "At sample ") + std::to_string(from);
        const std::string length = "length " + std::to_string(count) + " samples";
        return pumpUntil([&] {
            return told().find(place + ",") == 0 &&
                   (!count || told().find(length) != std::string::npos);
        });
    };
    const int pixel = asRound(perPixel());
    const struct {
        const char* key;
        int from, count;
    } presses[] = {
        {"Home", 0, 0},
        {"Right", pixel, 0},
        {"ctrl+Right", 2000, 0},
        {"shift+ctrl+Right", 2000, 4000},
        {"shift+Right", 2000, 4000 + pixel},
        {"shift+ctrl+Left", 2000, 4000},
        {"End", frames, 0},
        {"shift+Home", 0, frames},
        {"Left", 0, 0},
        {"ctrl+a", 0, frames},
    };
    for (const auto& p : presses) {
        key(p.key);
        EXPECT_TRUE(is(p.from, p.count)) << p.key << ": " << told();
    }
    // Ends are dragged; Escape gives the drag back; Shift + click goes on.
    press(xAt(1000), xAt(3000));
    const int a = frameAt(xAt(1000)), b = frameAt(xAt(3000)), c = frameAt(xAt(5000));
    press(xAt(3000), xAt(5000));
    EXPECT_TRUE(is(a, c - a)) << told();
    press(xAt(5000), xAt(3000), "Escape");
    EXPECT_TRUE(is(a, c - a)) << told();
    act({"keydown", "shift"});
    press(xAt(4000), xAt(4000));
    act({"keyup", "shift"});
    EXPECT_TRUE(is(a, frameAt(xAt(4000)) - a)) << told();
    // Marks: a double click in the strip, a drag, and a double click between two of them.
    for (const int frame : {b, c}) {
        mouse(xAt(frame), 6);
        act({"click", "--repeat", "2", "--delay", "50", "1"});
    }
    ASSERT_TRUE(pumpUntil([&] { return view()->accessParts() == 4; }));
    press(xAt(c), xAt(6500), "", 6);
    mouse(xAt(4000));
    act({"click", "--repeat", "2", "--delay", "50", "1"});
    const int d = frameAt(xAt(6500));
    EXPECT_TRUE(is(b, d - b)) << told();
    // The same in the accessible tree.
    EXPECT_TRUE(view()->enterNumber(0, 100) && view()->enterNumber(1, 300));
    EXPECT_TRUE(is(100, 200)) << told();
    EXPECT_TRUE(view()->pressPart(2));
    EXPECT_TRUE(is(b, d - b)) << told();
    const auto marked = [&](std::vector<int> wanted) {
        return pumpUntil([&] {
            return clip()->sample->marks == wanted &&
                   view()->accessParts() == 2 + int(wanted.size());
        });
    };
    EXPECT_TRUE(marked({b, d})) << "kept with the song";
    key("ctrl+z");
    EXPECT_TRUE(marked({b, c}));
    key("ctrl+z");
    EXPECT_TRUE(marked({b}));
    key("ctrl+y");
    key("ctrl+y");
    EXPECT_TRUE(marked({b, d}));
    // Slices at the marks are parts of their own.
    menu({"s", "s", "s", "Return"});
    ASSERT_TRUE(pumpUntil([&] { return parts(0) == 3; })) << parts(0);
    const int starts[] = {0, b, d, frames};
    for (int i = 0; i < 3; i++) {
        const auto* slice = static_cast<const CAudioEvent*>(part(0, i)->getEvents());
        EXPECT_EQ(slice->start, starts[i]);
        EXPECT_EQ(slice->end, starts[i + 1] - 1);
    }
}

TEST_F(WaveTest, TheViewGoesAlongWithTheSong) {
    open();
    press(xAt(1000), xAt(3000));
    key("ctrl+shift+plus");
    const auto* bar = child<CRangebar>("wavebar");
    ASSERT_TRUE(pumpUntil([&] { return bar->span() < frames / 2; }));
    const double shown = bar->from();
    const auto playFrom = [&](int frame) {
        host->setPos(frame / 44100.0 * 2 * 960); // 120 beats a minute
        host->start();
        EXPECT_TRUE(loaded());
    };
    playFrom(2000);
    EXPECT_EQ(bar->from(), shown) << "it is in sight";
    playFrom(5000);
    EXPECT_TRUE(pumpUntil([&] { return std::abs(bar->from() - shown - 4000) < 100; }));
}

TEST_F(WaveTest, FadesAreDraggedAndTheRangeIsHeardAlone) {
    open();
    press(xAt(0), xAt(4000), "", WaveView::stripHeight + 4);
    const double ms = frameAt(xAt(4000)) * 1000.0 / 44100;
    ASSERT_TRUE(pumpUntil([&] { return clip()->fadeInMs > 0; }));
    EXPECT_NEAR(clip()->fadeInMs, ms, 0.5);
    EXPECT_STREQ(host->undoText().asChar(), "Fade In");
    press(xAt(frames), xAt(6000), "", WaveView::stripHeight + 4);
    EXPECT_TRUE(pumpUntil([&] { return clip()->fadeOutMs > 0; }));
    EXPECT_NEAR(clip()->fadeOutMs, (frames - frameAt(xAt(6000))) * 1000.0 / 44100, 0.5);
    key("ctrl+z");
    EXPECT_TRUE(pumpUntil([&] { return clip()->fadeOutMs == 0.0f; }));
    EXPECT_TRUE(holds(frames, valueAt)) << "the file is as it was";

    press(xAt(1000), xAt(3000));
    key("space");
    CSamplePreview* preview = CSamplePreview::of(host.get());
    EXPECT_TRUE(pumpUntil([&] { return preview->isOn(); }));
    EXPECT_EQ(host->playing, 0) << "not the song";
    key("space");
    EXPECT_TRUE(pumpUntil([&] { return !preview->isOn(); }));
    key("space");
    EXPECT_TRUE(pumpUntil([&] { return preview->isOn(); }));
    key("F1");
    EXPECT_TRUE(pumpUntil([&] { return !preview->isOn(); })) << "another page is in front";
}

/// By the menu, the mouse and the accessible tree; each is a step.
TEST_F(WaveTest, StretchMarkersMoveTheSoundInTime) {
    open();
    mouse(xAt(4000));
    act({"click", "1"});
    const auto onMarker = [&](const std::vector<std::string>& keys) {
        std::vector<std::string> letters{"s", "s", "Right"};
        letters.insert(letters.end(), keys.begin(), keys.end());
        menu(letters);
    };
    const auto pin = [&] { return clip()->pins.list[0]; };
    const auto lies = [&](double share) {
        return pumpUntil([&] { return std::fabs(pin().share - share) < 0.002; });
    };
    onMarker({"Return"});
    ASSERT_TRUE(pumpUntil([&] { return clip()->pins.count == 1; }));
    const int frame = frameAt(xAt(4000));
    EXPECT_EQ(pin().frame, frame);
    EXPECT_EQ(clip()->mode, 2);
    EXPECT_TRUE(lies(double(frame) / frames)) << "where it was";

    const int low = view()->height - 4;
    press(xAt(frame), xAt(6000), "Escape", low);
    EXPECT_TRUE(lies(double(frame) / frames));
    press(xAt(frame), xAt(6000), "", low);
    EXPECT_TRUE(lies(frameAt(xAt(6000)) / double(frames))) << pin().share;
    key("ctrl+z");
    EXPECT_TRUE(lies(double(frame) / frames));

    Description d;
    ASSERT_EQ(view()->accessParts(), 3);
    view()->describe(d, 2);
    EXPECT_EQ(d.name, "Stretch marker 1");
    EXPECT_TRUE(view()->enterNumber(2, edited->pos + seq()->getTicks(edited) * 0.25));
    EXPECT_TRUE(lies(0.25));
    EXPECT_TRUE(view()->pressPart(2)); // the place, which the menu is about
    onMarker({"a", "a", "a", "a", "Return"});
    EXPECT_TRUE(pumpUntil([&] { return pin().pitch == 1.0f; })) << pin().pitch;
    onMarker({"d", "Return"});
    EXPECT_TRUE(pumpUntil([&] { return clip()->pins.count == 0; }));
}

/// A file that is not there, one without frames, and a part without a clip.
TEST_F(WaveTest, ShowsWhatCannotBeHeard) {
    open();
    const auto wordsOf = [&] {
        Description d;
        view()->describe(d, Accessible::wholeCtrl);
        return d.text;
    };
    EXPECT_EQ(wordsOf(), "a.wav, stereo, 44100 Hz, 16 bits, 0:00.181");
    const auto edit = [&](const std::function<void(CAudioEvent*)>& change) {
        CUndo* step = host->undoStart("Test", seq(), {.song = true, .seq = SeqNotice::parts});
        CPart* draft = edited->copy(0);
        if (draft->events) change(static_cast<CAudioEvent*>(draft->events.load()));
        swapUndoPart(step, edited, draft);
        host->undoEnd(step, false);
        EXPECT_TRUE(loaded());
    };
    const auto tryAll = [&] {
        for (const char* k : {"ctrl+a", "ctrl+x", "Delete", "ctrl+v", "plus", "ctrl+shift+plus",
                              "Right", "space", "space"})
            key(k);
        press(20, 200);
        EXPECT_TRUE(loaded());
    };
    edit([](CAudioEvent* e) { e->sample = nullptr; });
    EXPECT_EQ(wordsOf(), "Sample not loaded");
    tryAll();
    EXPECT_EQ(clip()->sample, nullptr);
    key("ctrl+z");
    ASSERT_TRUE(pumpUntil([&] { return clip()->sample != nullptr; }));
    CSample* empty = host->addSample(write("empty.wav", 0).c_str(), 1);
    ASSERT_TRUE(empty);
    edit([&](CAudioEvent* e) { e->sample = empty; });
    EXPECT_EQ(wordsOf(), "Sample not loaded");
    tryAll();
    EXPECT_EQ(clip()->sample, empty);
    // Far outside of the file.
    key("ctrl+z");
    ASSERT_TRUE(pumpUntil([&] { return clip()->sample != empty; }));
    edit([](CAudioEvent* e) {
        e->start = -1000;
        e->end = 1 << 30;
    });
    tryAll();
    EXPECT_EQ(clip()->end, 1 << 30);
}
