#include "browser/CPreviewPanel.h"

#include "base/CIniFile.h"
#include "base/Numbers.h"
#include "base/Paths.h"
#include "browser/CBrowserPreview.h"
#include "browser/PreviewWave.h"
#include "gui/CApp.h"
#include "gui/CGraphic.h"
#include "gui/CWin.h"
#include "gui/controls/CButton.h"
#include "gui/controls/CTabs.h"
#include "gui/controls/CValue.h"

namespace {

constexpr int margin = 8, gap = 4, lineHeight = 16, fieldHeight = 20;
constexpr int buttonWide = 40, volumeWide = 48, usualVolume = 90;
constexpr const char *section = "browser", *volumeKey = "previewVolume", *tempoKey = "previewTempo",
                     *tunedKey = "previewKey", *matchKey = "previewMatch";

} // namespace

CPreviewPanel::CPreviewPanel(CWin* owner, CBrowserPreview* player)
    : CGroup(owner, "preview", 0, 0, 1, 1), wave(new PreviewWave(owner, player)), preview(player),
      name(new CLabel(owner, "", 0, 0, 1, lineHeight)),
      format(new CLabel(owner, "", 0, 0, 1, lineHeight)),
      volumeName(new CLabel(owner, "Volume", 0, 0, volumeWide, fieldHeight)),
      volume(new CValue(owner, "volume", 0, 0, volumeWide, fieldHeight)) {
    play = addButton("play", "Play", "Plays and stops the file", &CPreviewPanel::playClicked);
    loop = addButton("loop", "Loop", "Plays it over and over", &CPreviewPanel::loopClicked);
    tempo = addButton("tempo", "Tempo",
                      "A file whose name tells its tempo, as \"120 bpm\", plays at the song's",
                      &CPreviewPanel::tempoClicked);
    tuned = addButton("key", "Key",
                      "A file whose name tells its key, as \"Am\", plays in the song's scale",
                      &CPreviewPanel::keyClicked);
    match = addButton("match", "Match", "Files that are loud and files that are soft sound alike",
                      &CPreviewPanel::matchClicked);
    preview->setMatched(iniReadInt(section, matchKey, 0) != 0);
    preview->setInTempo(iniReadInt(section, tempoKey, 0) != 0);
    preview->setInKey(iniReadInt(section, tunedKey, 0) != 0);
    volume->hint = "Volume of what is listened to, in percent";
    volume->spokenName = "Preview volume";
    volume->tabStop = true;
    volume->resetValue = usualVolume;
    volume->showValue(iniReadInt(section, volumeKey, usualVolume));
    keptVolume = volume->value;
    volumeChanged(volume);
    wire(volume->onChange, new _COnChange<CPreviewPanel>(this, &CPreviewPanel::volumeChanged));
    for (CCtrl* c : std::initializer_list<CCtrl*>{name, format, volumeName, wave, volume})
        addControl(c);
    volumeName->field = volume;
    preview->onChanged = [this] { fileShown(); };
    fileShown();
}

CPreviewPanel::~CPreviewPanel() {
    preview->onChanged = nullptr;
}

CButton* CPreviewPanel::addButton(const char* key, const char* text, const char* hintText,
                                  void (CPreviewPanel::*clicked)(CObject*)) {
    auto* button = new CButton(win, key, text, 0, 0, buttonWide, fieldHeight);
    button->hint = hintText;
    button->tabStop = button->hooverable = true;
    wire(button->onChange, new _COnChange<CPreviewPanel>(this, clicked));
    addControl(button);
    return button;
}

void CPreviewPanel::resized() {
    const int wide = asMax(width - 2 * margin, 1), right = width - margin;
    const int told = asMax(wide - volumeWide - gap, 1);
    name->setBounds(margin, margin, told, lineHeight);
    format->setBounds(margin, margin + lineHeight, told, lineHeight);
    volumeName->setBounds(right - volumeWide, margin, volumeWide, lineHeight);
    volume->setBounds(right - volumeWide, margin + lineHeight, volumeWide, lineHeight);
    const int below = height - margin - fieldHeight, waveTop = margin + 2 * lineHeight + gap;
    wave->setBounds(margin, waveTop, wide, asMax(below - gap - waveTop, 1));
    int x = margin;
    for (CButton* b : {play, loop, tempo, tuned, match}) {
        b->setBounds(x, below, buttonWide, fieldHeight);
        x += buttonWide + gap;
    }
}

void CPreviewPanel::paint(CGraphic* g, CRect rect) {
    g->fillRect(win->app->gui->palette.panel, clientRect());
    CGroup::paint(g, rect);
}

void CPreviewPanel::describe(Description& d, int) const {
    d.role = Role::group;
    d.name = "Preview";
}

void CPreviewPanel::idle() {
    wave->idle();
    if (volume->value == keptVolume || volume->isPushed()) return;
    keptVolume = volume->value;
    CIniFile(inifile).writeInteger(section, volumeKey, keptVolume);
}

void CPreviewPanel::fileShown() {
    CStr told;
    for (int i = 0; i < preview->info.count(); i++)
        told += (i ? CStr("  ") : CStr()) + preview->info.get(i);
    const CStr file = extractFileName(preview->getFilename());
    name->setText(file.empty() ? CStr("Choose a file to listen to it") : file);
    format->setText(told);
    play->setText(preview->isOn() ? "Stop" : "Play");
    play->setEnabled(preview->getSample() || preview->isOn());
    loop->setLit(preview->loops());
    tempo->setLit(preview->playsInTempo());
    tuned->setLit(preview->playsInKey());
    match->setLit(preview->isMatched());
    wave->fileShown();
}

void CPreviewPanel::playClicked(CObject*) {
    if (preview->isOn())
        preview->stop();
    else
        preview->playFrom(0);
    fileShown();
}

void CPreviewPanel::loopClicked(CObject*) {
    preview->setLoop(!preview->loops());
    fileShown();
}

void CPreviewPanel::playAnew() {
    if (!preview->getFilename().empty()) preview->play(preview->getFilename());
    fileShown();
}

void CPreviewPanel::tempoClicked(CObject*) {
    preview->setInTempo(!preview->playsInTempo());
    CIniFile(inifile).writeInteger(section, tempoKey, preview->playsInTempo());
    playAnew();
}

void CPreviewPanel::keyClicked(CObject*) {
    preview->setInKey(!preview->playsInKey());
    CIniFile(inifile).writeInteger(section, tunedKey, preview->playsInKey());
    playAnew();
}

void CPreviewPanel::matchClicked(CObject*) {
    preview->setMatched(!preview->isMatched());
    CIniFile(inifile).writeInteger(section, matchKey, preview->isMatched());
    fileShown();
}

void CPreviewPanel::volumeChanged(CObject*) {
    preview->setVolume(float(volume->value) / 100.0f);
}
