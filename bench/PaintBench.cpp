#include "gui/CApp.h"
#include "gui/CBitmap.h"
#include "gui/CGraphic.h"
#include "gui/CWin.h"
#include "gui/Colours.h"
#include "gui/Drawing.h"
#include "gui/Fonts.h"
#include "gui/Scale.h"
#include "gui/XConnection.h"
#include "gui/controls/CButton.h"
#include "gui/controls/CTabs.h"
#include "gui/controls/CValue.h"

#include <X11/Xlib.h>

#include <benchmark/benchmark.h>
#include <memory>

// Painting, until the server has carried it out: texts by themselves, and a window of 960 x 640
// full of texts and controls. Smooth text is beside the server's font, and the scale beside 100
// percent. Needs a display: xvfb-run -a -s "-noreset -screen 0 3000x2000x24" paint_bench

namespace {

/// An application with smooth text or not, in a scale.
class Screen {
public:
    Screen(bool smooth, int percent) {
        textSettings = {};
        textSettings.smooth = smooth;
        wantedScale = percent;
        ready = app.open();
    }
    CApp app;
    bool ready;
};

constexpr const char* words[] = {"Reverb", "Insert bars", "Quantize", "Drum track 1",
                                 "128.00", "Audio In 1",  "-12.5 dB", "Selected parts"};

const char* word(int i) {
    return words[size_t(i) % (sizeof words / sizeof words[0])];
}

/// 25 rows of a label, two buttons, a tick, a text field and a number.
std::unique_ptr<CWin> fullWindow(CApp& app) {
    constexpr int rowHeight = 24, rows = 25, pairs = 2, half = 475;
    auto win = std::make_unique<CWin>(&app, nullptr, "Painting", 0, 0, 960, 640, winCaption);
    for (int i = 0; i < rows * pairs; i++) {
        const int x = i % pairs * half + 4, y = i / pairs * rowHeight + 4, high = rowHeight - 4;
        win->addControl(new CLabel(win.get(), word(i), x, y, 90, high));
        win->addControl(new CButton(win.get(), "mute", word(i + 1), x + 94, y, 90, high));
        win->addControl(new CButton(win.get(), "solo", word(i + 2), x + 188, y, 90, high));
        win->addControl(new CCheckbox(win.get(), "on", word(i + 3), x + 282, y, 60, high));
        auto* edit = new CEdit(win.get(), "name", x + 346, y, 70, high);
        edit->text = word(i + 4);
        win->addControl(edit);
        win->addControl(new CValue(win.get(), "value", x + 420, y, 46, high));
    }
    win->show(true);
    app.dispatchEvents();
    return win;
}

void addLooks(benchmark::internal::Benchmark* b) {
    b->ArgNames({"smooth", "scale"})->Args({0, 100})->Args({1, 100})->Args({1, 200});
    b->Unit(benchmark::kMicrosecond)->UseRealTime();
}

void paintWindow(benchmark::State& state) {
    Screen screen(state.range(0) != 0, int(state.range(1)));
    if (!screen.ready) {
        state.SkipWithError("no display");
        return;
    }
    const auto win = fullWindow(screen.app);
    for (auto _ : state) {
        win->paint(0, win->clientRect());
        XSync(liveDisplay(), False);
    }
}

/// 200 texts of a dozen characters, cut by their boxes now and then.
void drawTexts(benchmark::State& state) {
    Screen screen(state.range(0) != 0, int(state.range(1)));
    if (!screen.ready) {
        state.SkipWithError("no display");
        return;
    }
    CBitmap bitmap(960, 640);
    constexpr int texts = 200;
    for (auto _ : state) {
        for (int i = 0; i < texts; i++) {
            const int x = i % 10 * 90, y = i / 10 * 20;
            bitmap.graphic->drawText(textOn(0), word(i), asRect(x, y, x + 66, y + 20), textLeft);
        }
        XSync(liveDisplay(), False);
    }
    state.counters["ns_per_text"] = benchmark::Counter(
        texts * 1e-9, benchmark::Counter::kIsIterationInvariantRate | benchmark::Counter::kInvert);
}

void measureText(benchmark::State& state) {
    Screen screen(state.range(0) != 0, int(state.range(1)));
    if (!screen.ready) {
        state.SkipWithError("no display");
        return;
    }
    const CStr text = "Quantize the selected parts of track 12";
    for (auto _ : state) benchmark::DoNotOptimize(xConnection().font->textWidth(text));
}

void drawGradients(benchmark::State& state) {
    Screen screen(false, int(state.range(1)));
    if (!screen.ready) {
        state.SkipWithError("no display");
        return;
    }
    CBitmap bitmap(960, 640);
    for (auto _ : state) {
        for (int i = 0; i < 50; i++)
            drawGradient(bitmap.graphic.get(), asRect(0, 0, 100, 24), 0x202020, 0x808080,
                         gradientDown);
        XSync(liveDisplay(), False);
    }
}

} // namespace

BENCHMARK(paintWindow)->Apply(addLooks);
BENCHMARK(drawTexts)->Apply(addLooks);
BENCHMARK(measureText)->Apply(addLooks);
BENCHMARK(drawGradients)->Apply(addLooks);

BENCHMARK_MAIN();
