#include "mixer/CEqView.h"

#include "base/Numbers.h"
#include "common/fx/CDFT.h"
#include "common/fx/CEQ.h"
#include "engine/CQV.h"
#include "gui/Colours.h"
#include "gui/TestServer.h"
#include "ui/CSpectrum.h"

#include <cmath>

class EqViewTest : public GuiTest {
protected:
    void SetUp() override {
        GuiTest::SetUp();
        win = bareWindow(400, 240);
        view = new CEqView(win.get(), "eq", 0, 0, width, height);
        win->addControl(view);
        win->redraw();
        settle();
    }
    void TearDown() override {
        win.reset();
        GuiTest::TearDown();
    }
    CPoint handle(int index) const {
        const CRect r = view->curve.handleRect(index);
        return asPoint((r.left + r.right) / 2, (r.top + r.bottom) / 2);
    }
    /// Drags between two points of the view, the corner of which is that of the window.
    void drag(CPoint from, CPoint to, const char* button) {
        act({"mousemove", asStr(100 + from.x).asChar(), asStr(100 + from.y).asChar()});
        act({"mousedown", button});
        act({"mousemove", asStr(100 + to.x).asChar(), asStr(100 + to.y).asChar()});
        act({"mouseup", button});
    }

    static constexpr int width = 300, height = 200;
    std::unique_ptr<CWin> win;
    CEqView* view = nullptr;
};

/// Three decades from 10^1.3 Hz across, 48 dB down, 12 of q.
TEST_F(EqViewTest, PlacesFrequenciesAndGains) {
    const EqCurve& curve = view->curve;
    for (const int x : {0, 1, 100, 299}) {
        EXPECT_NEAR(curve.ScreenToFreq(x), std::pow(10.0, 1.3 + 3.0 * x / width), 1e-6) << x;
        EXPECT_EQ(curve.FreqToScreen(curve.ScreenToFreq(x)), x);
    }
    EXPECT_EQ(curve.ScreenToFreq(-5), curve.ScreenToFreq(0));
    EXPECT_EQ(curve.ScreenToFreq(9999), curve.ScreenToFreq(299));
    EXPECT_EQ(curve.FreqToScreen(1e6), 299);
    EXPECT_EQ(curve.FreqToScreen(1.0), 0);
    const struct {
        int y;
        double gain, q;
    } rows[] = {{0, 24, 0.1}, {50, 12, 3.075}, {100, 0, 6.05}, {200, -24, 12.0}};
    for (const auto& r : rows) {
        EXPECT_EQ(curve.GainToScreen(r.gain), r.y);
        EXPECT_NEAR(curve.ScreenToGain(r.y), r.gain, 1e-9);
        EXPECT_NEAR(curve.ScreenToQ(r.y), r.q, 1e-6);
    }
    EqCurve narrow(nullptr);
    narrow.SetNewWidth(7);
    EXPECT_EQ(narrow.width, 40);
}

/// What filters of the second order are known to do at certain frequencies, in dB.
TEST_F(EqViewTest, ShowsTheResponseOfItsBands) {
    const struct {
        int kind;
        double gain, q, at, expected, within; ///< of a band at 1000 Hz
    } cases[] = {
        {eqPeaking, 9, 2.0, 1000, 9, 0.01},     {eqPeaking, -12, 0.7, 1000, -12, 0.01},
        {eqPeaking, 9, 12.0, 20, 0, 0.01},      {eqLowShelf, 6, 0.71, 20, 6, 0.05},
        {eqLowShelf, 6, 0.71, 1000, 3, 0.05},   {eqHighShelf, -8, 0.71, 1000, -4, 0.05},
        {eqLowPass, 5, 0.5, 1000, -6.0206, .1}, {eqHighPass, 0, 2.0, 1000, 6.0206, 0.1},
        {eqNotch, 0, 0.5, 20, 0, 0.1},          {99, 0, 1, 1000, -120, 1e-9},
    };
    EqCurve& curve = view->curve;
    for (const auto& handle : curve.handles) handle->active = 0;
    EqHandle& band = *curve.handles[1];
    band.active = 1;
    for (const auto& c : cases) {
        band.kind = c.kind;
        band.SetFreq(1000);
        band.SetGain(c.gain);
        band.SetQ(c.q);
        curve.CalcCurve();
        EXPECT_NEAR(curve.curve[size_t(curve.FreqToScreen(c.at))], c.expected, c.within)
            << "kind " << c.kind << " at " << c.at;
    }
    band.active = 0;
    curve.CalcCurve();
    EXPECT_EQ(curve.curve, std::vector<double>(width, 0.0));
}

TEST_F(EqViewTest, DragsAndKeysChangeTheBand) {
    CQV host;
    host.settingsEnabled = false;
    host.tasks->audioStopped();
    CComp source(&host);
    COutputChannel strip(&source);
    const CEQ& band = *strip.eq[1];
    strip.setEqPower(1, true);
    strip.setEqFrequency(1, 500);
    view->setStrip(&strip);
    int changes = 0;
    Target counter([&] { changes++; });
    view->onChange = counter.change();
    drag(handle(1), asPoint(200, 50), "1");
    EXPECT_NEAR(double(band.getFrequency()), std::pow(10.0, 3.3), 1.0);
    EXPECT_NEAR(double(band.getGain()), 12, 1e-4);
    EXPECT_GT(changes, 0);
    settle();
    const Shot shot(win->handle, 400, 240);
    const CRect square = shot.boundsOf(hexColor(0xc08a2e));
    EXPECT_EQ(square.width(), 7) << "without its frame";
    EXPECT_EQ(square.top, 47);
    EXPECT_NEAR(square.left, 197, 1);

    drag(handle(1), asPoint(200, 100), "3");
    EXPECT_NEAR(double(band.getQ()), 6.05, 1e-4);
    EXPECT_NEAR(double(band.getGain()), 12, 1e-4);
    drag(asPoint(150, 180), asPoint(10, 10), "1"); // no handle there
    EXPECT_EQ(view->current, -1);
    drag(asPoint(200, 50), asPoint(399, -90), "1"); // beyond the edges
    EXPECT_EQ(band.getGain(), 24.0f);
    EXPECT_NEAR(double(band.getFrequency()), std::pow(10.0, 1.3 + 3.0 * 299 / width), 2.0);

    EXPECT_EQ(host.undoIndex, 2) << "a step a drag";
    host.undoClicked();
    host.settle();
    EXPECT_NEAR(double(band.getGain()), 12, 1e-4);

    for (const bool linked : {true, false}) {
        view->setStrip(linked ? &strip : nullptr);
        const EqHandle& first = *view->curve.handles[0];
        const double gain = first.GetGain(), hz = first.GetFreq(), q = first.GetQ();
        for (const char* k : {"1", "Up", "Up", "Right", "Right", "Left", "Prior"}) act({"key", k});
        EXPECT_NEAR(first.GetGain(), gain + 1, 1e-6);
        EXPECT_NEAR(first.GetFreq(), hz * std::pow(10.0, 3.0 / width), hz * 1e-6);
        EXPECT_NEAR(first.GetQ(), q * 1.1, 1e-6);
    }
    host.undoClear(); // the strip goes before the host
}

/// Twice the magnitude in height, 8 pixels from band to band; the bands fall with each tick, and
/// rest while nobody sees them.
TEST_F(EqViewTest, SpectrumShowsItsBands) {
    CQV host;
    auto* spectrum = new CSpectrum(win.get(), 0, 202, 34, &host);
    win->addControl(spectrum);
    win->redraw();
    settle();
    host.dft->bands[2] = 0.25; // half of the 32 pixels inside the frame
    host.dft->bands[5] = 1.0;
    spectrum->refresh();
    settle();
    EXPECT_EQ(host.spectrumOn, 1);
    EXPECT_NEAR(host.dft->bands[2], 0.225, 1e-9);
    const Shot shot(win->handle, 400, 240);
    const int paper = shot.at(2, 234);
    const struct { int band, height; } stripes[] = {{0, 0}, {2, 16}, {5, 32}, {15, 0}};
    for (const auto& s : stripes)
        for (int y = 0; y < 32; y++) {
            const int pixel = shot.at(2 + 8 * s.band + 3, 234 - y);
            const bool lit = y < s.height;
            if (lit && y % 3 == 2) continue; // between two lamps
            EXPECT_EQ(pixel != paper, lit) << s.band << " at " << y;
        }
    spectrum->visible = false;
    spectrum->refresh();
    EXPECT_EQ(host.spectrumOn, 0);
    win.reset();
}
