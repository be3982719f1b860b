#include "app/main/Toolbar.h"

#include "app/main/CMeter.h"
#include "app/main/Displays.h"
#include "app/main/Glyphs.h"
#include "engine/CClick.h"
#include "engine/CQV.h"
#include "gui/CApp.h"
#include "gui/CGraphic.h"
#include "gui/CWin.h"
#include "gui/controls/CButton.h"
#include "sequencer/CSeq.h"

namespace {

constexpr int gap = 4;
constexpr int margin = 8;
constexpr int buttonWidth = 40;
constexpr int buttonTop = 12;
constexpr int buttonHigh = 32;
constexpr int meterWidth = 220;
constexpr int meterHeight = 13;

} // namespace

Toolbar::Toolbar(CWin* owner, CQV* host, int w)
    : CGroup(owner, "transport", 0, 0, w, barHeight), qv(host) {
    setAlign(alignWidth, 0, 0);
    int x = margin;
    rewindButton = addButton(x, "rewind", "To the start of the song (Home)", &Toolbar::rewind);
    stopButton = addButton(x, "stop", "Stop; once more silences everything (0)", &Toolbar::stop);
    playButton = addButton(x, "play", "Play and stop (Space)", &Toolbar::play);
    x += gap;
    loopButton = addButton(x, "loop", "Repeat the song (L)", &Toolbar::toggleLoop);
    clickButton = addButton(x, "click", "Metronome (C)", &Toolbar::toggleClick);
    x += margin;
    displays[0] = new CPositionDisplay(owner, x, host);
    displays[1] = new CTimeDisplay(owner, displays[0]->left + displays[0]->width + gap, host);
    displays[2] = new CTempoDisplay(owner, displays[1]->left + displays[1]->width + gap, host);
    for (CFigures* display : displays) addControl(display);
    master = new CMeter(owner, w - meterWidth - margin, 24, meterWidth, meterHeight);
    master->setAlign(alignRight, margin, 0);
    master->hint = "Level of the output; a press clears the peaks";
    addControl(master);
}

CButton* Toolbar::addButton(int& x, const char* name, const char* text,
                            void (Toolbar::*command)()) {
    auto* button = new CButton(win, name, "", x, buttonTop, buttonWidth, buttonHigh);
    button->hint = text;
    button->onPaint = new _COnPaint<Toolbar>(this, &Toolbar::paintGlyph);
    button->onChange = new _COnChange<Toolbar>(this, &Toolbar::buttonClicked);
    button->tabStop = true;
    commands.push_back({button, command});
    addControl(button);
    x += buttonWidth + gap;
    return button;
}

void Toolbar::buttonClicked(CObject* sender) {
    for (const Command& c : commands)
        if (c.button == sender) (this->*c.run)();
}

void Toolbar::paintGlyph(CObject* sender, CGraphic* g, CRect rect) {
    const auto* button = static_cast<CButton*>(sender);
    const struct {
        const CButton* button;
        Glyph glyph;
    } glyphs[] = {{rewindButton, Glyph::rewind},
                  {stopButton, Glyph::stop},
                  {playButton, Glyph::play},
                  {loopButton, Glyph::loop},
                  {clickButton, Glyph::click}};
    for (const auto& entry : glyphs)
        if (entry.button == button) drawGlyph(g, entry.glyph, rect, button->faceColour());
}

void Toolbar::paint(CGraphic* g, CRect rect) {
    const CPalette& colours = win->app->gui->palette;
    g->fillRect(colours.panel, clientRect());
    g->fillRect(colours.frame, asRect(0, height - 1, width, height));
    g->drawText(colours.dimText, "MASTER", asRect(master->left, 8, master->left + 80, 22),
                textLeft);
    CGroup::paint(g, rect);
}

void Toolbar::refresh() {
    CComp* out = qv->getAudioOut();
    master->channel = out ? out->output() : nullptr;
    master->refresh();
    for (CFigures* display : displays) display->refresh();
    playButton->setLit(qv->playing != 0);
    loopButton->setLit(qv->loop != 0);
    const CClick* click = qv->click;
    clickButton->setLit(click->enabled && (click->mode & clickPlay));
}

void Toolbar::rewind() {
    qv->setPos(0.0);
}

void Toolbar::stop() {
    qv->stop();
}

void Toolbar::play() {
    if (qv->playing)
        qv->stop();
    else
        qv->start();
}

void Toolbar::toggleLoop() {
    const int on = !qv->loop;
    qv->loop = on;
    if (CSeq* seq = songOf(qv)) seq->setLoop(on);
}

void Toolbar::toggleClick() {
    CClick* click = qv->click;
    const bool on = !(click->enabled && (click->mode & clickPlay));
    if (on) click->enabled = 1;
    click->mode = on ? click->mode | clickPlay : click->mode & ~clickPlay;
}
