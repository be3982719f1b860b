#include "render/CRenderWin.h"

#include "base/Messages.h"
#include "base/Numbers.h"
#include "base/Paths.h"
#include "base/Process.h"
#include "engine/CQV.h"
#include "gui/CApp.h"
#include "gui/controls/CButton.h"
#include "gui/controls/CDropdown.h"
#include "gui/controls/CListbox.h"
#include "gui/controls/CTabs.h"
#include "gui/dialogs/CFileWin.h"
#include "online/Uploader.h"
#include "render/CShareWin.h"
#include "sequencer/render/CSoundCloudAddOn.h"
#include "sequencer/render/RenderScope.h"
#include "sequencer/song/CSeq.h"
#include "ui/CProgressBar.h"
#include "ui/WorkScope.h"
#include "ui/Workspace.h"

#include <algorithm>
#include <cstdio>
#include <iterator>

namespace {

constexpr const char *exportTitle = "Export Project (wav, aif, mp3)", *renderTitle = "Render";
constexpr const char* const emptyRangeTexts[] = {"Nothing to export: the song has no parts",
                                                 "Nothing to export: the locators are not in order",
                                                 "Nothing to export: no part is selected"};
constexpr const char* noTracksText = "Nothing to export: no track is selected";
constexpr const char* const formatNames[] = {"WAV", "AIFF", "MP3"};
constexpr const char* const extensions[] = {".wav", ".aif", ".mp3"};

constexpr int contentWidth = 532, contentHeight = 304;
constexpr int columnWidth = 244, column2 = contentWidth - CDialogWin::margin - columnWidth;
constexpr int headingHeight = 20, rowHeight = 24, labelWidth = 92;
constexpr int columnTop = CDialogWin::margin + headingHeight + 4;
constexpr int statusTop = 208, barTop = statusTop + headingHeight + 4, barHeight = 16;

CStr formatName(int format) {
    return formatNames[asMinMax(format, renderWav, renderMp3)];
}

CStr rateName(int hz) {
    return asStr(hz) + " Hz";
}

CStr bitsName(int bits) {
    return asStr(bits) + (bits == 32 ? " bit float" : " bit");
}

CStr channelsName(int count) {
    return count == 1 ? "Mono" : "Stereo";
}

CStr bitrateName(int kbits) {
    return asStr(kbits) + " kbit/s";
}

CStr tailName(int ms) {
    constexpr int msPerSecond = 1000;
    if (ms < 0) return "Until silent";
    if (ms == 0) return "None";
    return (ms % msPerSecond == 0 ? asStr(ms / msPerSecond) + " s" : asStr(ms) + " ms");
}

CStr lengthText(double seconds) {
    constexpr int secondsPerMinute = 60;
    const int whole = asRound(seconds);
    char text[32];
    if (seconds < secondsPerMinute)
        std::snprintf(text, sizeof(text), "%.1f s", seconds);
    else
        std::snprintf(text, sizeof(text), "%d:%02d min", whole / secondsPerMinute,
                      whole % secondsPerMinute);
    return text;
}

CStr sizeText(double bytes) {
    constexpr double kilobyte = 1000.0, megabyte = 1e6;
    char text[32];
    if (bytes < megabyte)
        std::snprintf(text, sizeof(text), "%.0f kB", bytes / kilobyte);
    else
        std::snprintf(text, sizeof(text), "%.1f MB", bytes / megabyte);
    return text;
}

template <class Table>
std::vector<int> all(const Table& table) {
    return {std::begin(table), std::end(table)};
}

} // namespace

CRenderWin::CRenderWin(Workspace& space, CRender& what, CSeq* song)
    : CDialogWin(space.mainWindow(), exportTitle, contentWidth, contentHeight,
                 winCaption | winCentre | winEscape),
      workspace(space), render(what), seq(song) {
    addSelection();
    addChoices();
    addProgress();
    addButton("Save");
    if (render.addOn)
        shareButton =
            addButton("Share", new _COnChange<CRenderWin>(this, &CRenderWin::shareClicked));
    closeButton = addButton("Close", new _COnChange<CRenderWin>(this, &CRenderWin::cancelClicked));
    startCtrl = firstButton;
    update();
}

CRenderWin::~CRenderWin() = default;

void CRenderWin::addSelection() {
    auto* heading = new CLabel(this, "Selection", margin, margin, columnWidth, headingHeight);
    addControl(heading);
    const int listHeight = (rangeSelected + 1) * rowHeight + 2;
    ranges = new CListbox(this, "range", margin, columnTop, columnWidth, listHeight);
    heading->field = ranges;
    ranges->itemHeight = rowHeight;
    ranges->tabStop = true;
    for (int mode = rangeSong; mode <= rangeSelected; mode++) ranges->add(renderRangeName(mode));
    ranges->setIndex(render.rangeMode);
    wire(ranges->onChange, new _COnChange<CRenderWin>(this, &CRenderWin::rangeChanged));
    addControl(ranges);
    const int below = columnTop + listHeight + 2 * gap;
    multiTrack = new CCheckbox(this, "multitrack", "Multi-track export", margin, below, columnWidth,
                               fieldHeight);
    multiTrack->tabStop = true;
    multiTrack->checked = render.multiTrack != 0;
    multiTrack->hint = "A file for each selected track and each send bus";
    wire(multiTrack->onChange, new _COnChange<CRenderWin>(this, &CRenderWin::multiTrackClicked));
    addControl(multiTrack);
    CDropdown* tails = addChoice(asPoint(margin, below + fieldHeight + gap), "Tail", "tail",
                                 &CRender::tailMs, all(renderTails), tailName);
    tails->hint = "How long the file goes on behind the end for what still rings";
}

void CRenderWin::addChoices() {
    addControl(new CLabel(this, "File", column2, margin, columnWidth, headingHeight));
    const auto row = [](int i) { return asPoint(column2, columnTop + i * (fieldHeight + gap)); };
    addChoice(row(0), "Format", "format", &CRender::format, {renderWav, renderAiff, renderMp3},
              formatName);
    rates = addChoice(row(1), "Sample rate", "rate", &CRender::rate, all(renderRates), rateName);
    bits = addChoice(row(2), "Resolution", "bits", &CRender::bits, all(renderBits), bitsName);
    addChoice(row(3), "Channels", "channels", &CRender::chs, {2, 1}, channelsName);
    bitrates = addChoice(row(4), "Bitrate", "bitrate", &CRender::bitrate, all(renderBitrates),
                         bitrateName);
}

/// What the settings hold is offered too, whatever it is.
CDropdown* CRenderWin::addChoice(CPoint place, const char* label, const char* name,
                                 int CRender::*field, std::vector<int> values,
                                 CStr (*textOf)(int)) {
    const int present = render.*field;
    if (std::ranges::find(values, present) == values.end())
        values.insert(std::ranges::upper_bound(values, present), present);
    auto* title = new CLabel(this, label, place.x, place.y, labelWidth, fieldHeight);
    addControl(title);
    auto* list = new CDropdown(this, name, place.x + labelWidth, place.y, columnWidth - labelWidth,
                               fieldHeight);
    for (const int value : values) list->add(textOf(value));
    list->setIndex(int(std::ranges::find(values, present) - values.begin()));
    list->tabStop = true;
    wire(list->onChange, new _COnChange<CRenderWin>(this, &CRenderWin::chosen));
    title->field = list;
    addControl(list);
    choices.push_back({list, field, std::move(values)});
    return list;
}

void CRenderWin::addProgress() {
    const int wide = contentWidth - 2 * margin;
    status = new CLabel(this, "", margin, statusTop, wide, headingHeight);
    addControl(status);
    bar = new CProgressBar(this, "progress", margin, barTop, wide, barHeight);
    addControl(bar);
}

void CRenderWin::chosen(CObject* sender) {
    for (const Choice& c : choices)
        if (c.list == sender && c.list->index >= 0)
            render.*c.field = c.values[size_t(c.list->index)];
    update();
}

void CRenderWin::rangeChanged(CObject*) {
    render.rangeMode = asMax(ranges->index, rangeSong);
    update();
}

void CRenderWin::multiTrackClicked(CObject*) {
    render.multiTrack = multiTrack->checked;
    update();
}

/// What has no effect on the file cannot be chosen.
void CRenderWin::update() {
    const bool asks = !work, isMp3 = render.format == renderMp3;
    for (const Choice& c : choices) c.list->enabled = asks;
    ranges->enabled = multiTrack->enabled = asks;
    rates->enabled = asks && !render.multiTrack;
    bits->enabled = asks && !isMp3;
    bitrates->enabled = asks && isMp3;
    if (asks) status->setText(summary());
    redraw();
}

CStr CRenderWin::summary() const {
    constexpr double bitsPerByte = 8.0, bitsPerKbit = 1000.0;
    const RenderSpan span = renderSpan(render, seq);
    const size_t files = render.multiTrack ? trackOutputs(seq).size() : 1;
    if (span.from >= span.to) return emptyRangeTexts[render.rangeMode];
    if (files == 0) return noTracksText;
    const int rate = render.multiTrack ? asRound(double(render.qv->rate)) : render.rate;
    const double seconds =
        seq->ticksToFrames(asInt(span.from), asInt(span.to - span.from), rate) / rate +
        asMax(render.tailMs, 0) / 1000.0;
    const double bitsPerSecond = render.format == renderMp3
                                     ? render.bitrate * bitsPerKbit
                                     : double(rate) * render.chs * render.bits;
    CStr text = render.multiTrack ? asStr(int(files)) + (files == 1 ? " file, " : " files, ") : "";
    text += lengthText(seconds) + ", about ";
    return text + sizeText(double(files) * seconds * bitsPerSecond / bitsPerByte);
}

// Where to.

bool CRenderWin::nothingToDo() {
    const RenderSpan span = renderSpan(render, seq);
    const bool noFile = render.multiTrack && trackOutputs(seq).empty();
    if (noFile)
        showMsg(this, "Export", noTracksText);
    else if (span.from >= span.to)
        showMsg(this, renderTitle, emptyRangeTexts[render.rangeMode]);
    return noFile || span.from >= span.to;
}

bool CRenderWin::chooseFile() {
    const CStr ext = extensions[render.format];
    const CStr name = render.filename.empty() ? CStr("untitled") : extractFileName(render.filename);
    CFileWin dialog(this, "Save as", ext, workspace.dialogFolder(), name + ext, true);
    dialog.showModal();
    if (!dialog.result) return false;
    render.filename = dialog.path;
    workspace.projectFolder = dialog.folder;
    return true;
}

bool CRenderWin::chooseFolder() {
    CFolderWin dialog(this, "Select folder", workspace.dialogFolder());
    dialog.showModal();
    if (!dialog.result) return false;
    render.folder = dialog.path;
    workspace.projectFolder = dialog.path;
    return true;
}

// The work.

void CRenderWin::accept() {
    if (work || nothingToDo()) return;
    const CStr suggested = render.filename;
    if (!(render.multiTrack ? chooseFolder() : chooseFile())) return;
    process();
    if (!result) render.filename = suggested;
}

void CRenderWin::shareClicked(CObject*) {
    if (work || nothingToDo()) return;
    if (!render.addOn->load()) {
        showMsg(this, renderTitle, "Addon not loaded");
        return;
    }
    CShareWin ask(workspace, this, render);
    ask.showModal();
    if (!ask.result) return;
    const CStr suggested = render.filename;
    const int tracks = render.multiTrack;
    render.upload = true;
    process();
    render.upload = false;
    uploaded = result;
    render.multiTrack = tracks;
    render.filename = suggested;
    if (result)
        showMsg(this, "Share", "Track uploaded successfully\n" + render.addOn->param("url"));
}

CStr CRenderWin::getVerifier() {
    return askServiceCode(this, render.addOn);
}

/// A take would end without having been asked about; it may also begin while the dialog is open.
bool CRenderWin::refused(CWin* owner, CQV* host) {
    if (!host->recording) return false;
    showMsg(owner, "Export", "Can't export while recording");
    return true;
}

/// What an export makes of the choices is not what the user has chosen.
void CRenderWin::process() {
    if (refused(this, render.qv)) return;
    const int rate = render.rate;
    render.outputs.clear();
    cancelled = false;
    setWorking(true);
    const RenderResult outcome = exportSong(render, seq, this);
    setWorking(false);
    render.rate = rate;
    if (outcome == RenderResult::good) return CDialogWin::accept();
    bar->setDone(0.0f);
    if (outcome == RenderResult::cancelled) status->setText("Cancelled");
}

void CRenderWin::setWorking(bool on) {
    work = on ? std::make_unique<WorkScope>(workspace, this) : nullptr;
    firstButton->setText(on ? "Processing" : "Save");
    firstButton->setEnabled(!on);
    firstButton->lit = !on;
    if (shareButton) shareButton->setEnabled(!on);
    closeButton->setText(on ? "Cancel" : "Close");
    closeButton->setEnabled(true);
    setKeyCtrl(on ? closeButton : firstButton);
    update();
}

void CRenderWin::cancelClicked(CObject*) {
    hide();
}

void CRenderWin::hide() {
    if (!work) return CDialogWin::hide();
    cancelled = true;
    closeButton->setEnabled(false);
    status->setText("Cancelling...");
}

void CRenderWin::onStatus(const CStr& text) {
    status->setText(text);
    if (work) work->turn();
}

bool CRenderWin::onRender(float done) {
    bar->setDone(done);
    if (work) work->turn();
    return !cancelled;
}

void exportProject(Workspace& workspace, CSeq* seq) {
    if (CRenderWin::refused(workspace.mainWindow(), seq->host)) return;
    CRender render(seq->host, seq);
    const auto uploader = Uploader::ofUser();
    render.chooseUsual();
    render.addOn = uploader.get();
    CRenderWin dialog(workspace, render, seq);
    dialog.showModal();
    render.writeSettings();
    if (!dialog.result || dialog.shared()) return;
    setStatus(CStr("Exported ") + (render.multiTrack ? render.folder : render.filename));
    if (render.multiTrack) showFolder(render.folder);
}
