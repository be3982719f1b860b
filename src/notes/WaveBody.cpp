#include "notes/WaveBody.h"

#include "audiofiles/CSample.h"
#include "base/Numbers.h"
#include "engine/CQV.h"
#include "engine/CSamplePreview.h"
#include "gui/CApp.h"
#include "gui/CWin.h"
#include "gui/controls/CPopup.h"
#include "gui/controls/CRangebar.h"
#include "notes/WaveEdits.h"
#include "notes/WaveInfo.h"
#include "notes/WaveRuler.h"
#include "notes/WaveTexts.h"
#include "notes/WaveView.h"
#include "sequencer/edit/PartEdits.h"
#include "sequencer/song/CEditorComp.h"
#include "sequencer/song/CSeq.h"
#include "ui/ActionItems.h"

#include <algorithm>

namespace {

constexpr int barHeight = 14;
constexpr int fitMargin = 24;     ///< pixels beside the part when it is shown first
constexpr double besideAll = 1.1; ///< that can be seen, in lengths of the sample
constexpr size_t mostZooms = 64;

} // namespace

WaveBody::WaveBody(CWin* owner, Workspace& space)
    : EditorBody(owner, "wavebody"), WaveState(space), ruler(new WaveRuler(owner, *this)),
      levels(new LevelScale(owner, *this)), view(new WaveView(owner, *this)),
      across(new CRangebar(owner, "wavebar", 0, 0, 1, barHeight)),
      spectrumView(new RangeSpectrum(owner, *this)), info(new WaveInfo(owner, *this)),
      following(space.host()) {
    for (CCtrl* child :
         std::initializer_list<CCtrl*>{ruler, levels, view, across, spectrumView, info})
        addControl(child);
    spectrumView->visible = false;
    across->spokenName = "Scroll along the sound";
    across->onChange = new _COnChange<WaveBody>(this, &WaveBody::acrossMoved);
    view->onMenu = new _COnChange<WaveBody>(this, &WaveBody::openMenu);
}

WaveBody::~WaveBody() {
    stopPreview();
}

CCtrl* WaveBody::keyCtrl() {
    return view;
}

bool WaveBody::shows(const CPart* wanted) const {
    return wanted->type == partAudio;
}

// What is shown.

void WaveBody::setPart(CPart* wanted, CTrack* on) {
    if (win->app->drag.of(view)) win->app->drag.cancel();
    if (!wanted) stopPreview();
    part = wanted;
    track = on;
    index = 0;
    zooms.clear();
    after.reset();
    chooseSelected();
    followSample();
    layout();
    if (sample()) fit();
    shownChanged();
}

/// Of a part of several clips the one that is selected, else the first.
void WaveBody::chooseSelected() {
    int i = 0;
    if (!part || !isMulticlip(part)) return;
    for (const CBaseEvent* e = part->getEvents(); e; e = e->next, i++)
        if (isSelected(e)) index = i;
}

bool WaveBody::chooseClip(int number) {
    if (!isMulticlip(part) || number < 0 || !ClipPlace{part, number}.clip()) return false;
    index = number;
    followSample();
    if (sample()) fit();
    workspace.setStatus("Clip " + asStr(index + 1) +
                        (sample() ? ", " + sampleText(*sample()) : CStr()));
    shownChanged();
    return true;
}

/// What is not in front any more is not heard either.
void WaveBody::stopPreview() {
    if (CSamplePreview* player = preview(); player && player->isOn()) player->stop();
}

void WaveBody::songChanged() {
    if (part && !clip()) index = 0;
    followSample();
    layout();
    shownChanged();
}

/// Marks are those of the file that shows; one that was seen before and is of another length is
/// seen as it was.
void WaveBody::followSample() {
    const CSample* now = sample();
    const std::string file = now ? now->filename.asChar() : "";
    if (file == shownFile) return setPlaces(range, now ? now->marks : std::vector<int>());
    if (!shownFile.empty()) seen[shownFile] = {axis, shownFrames};
    const auto known = seen.find(file);
    if (!after && known != seen.end() && known->second.frames == frames() &&
        frames() != shownFrames)
        axis = known->second.axis;
    if (after) {
        setPlaces(after->range, after->marks);
        if (now) clip()->sample->marks = marks; // came with the file, and goes with it
        after.reset();
    } else {
        setPlaces(range, now ? now->marks : std::vector<int>());
    }
    shownFile = file;
    shownFrames = frames();
    version++;
}

/// Cut to the sample.
void WaveBody::setPlaces(FrameRange places, std::vector<int> frameMarks) {
    std::erase_if(frameMarks, [this](int frame) { return frame >= frames(); });
    marks = std::move(frameMarks);
    range = {asMinMax(places.from, 0, frames()), asMinMax(places.to, 0, frames())};
}

void WaveBody::shownChanged() {
    for (CCtrl* shown : std::initializer_list<CCtrl*>{ruler, levels, view}) shown->redraw();
}

void WaveBody::rangeChanged() {
    view->redraw();
    if (sample() && seq()) workspace.setStatus(rangeText(*this));
}

void WaveBody::editDone() {
    rangeChanged();
}

void WaveBody::idle() {
    const bool behind = win->isPage() && seq() && !workspace.inFront(seq()->editorComp.get());
    if (behind || !win->visible) stopPreview();
    info->refresh();
    spectrumView->refresh();
}

bool WaveBody::onFrame() {
    if (!part) return false;
    followPlay();
    return view->refresh();
}

/// As long as it is within the sound.
void WaveBody::followPlay() {
    const double frame = playFrame();
    const bool heard = (qv->playing && !qv->renderMode) || (preview() && preview()->isOn());
    const bool plays = heard && frame >= 0 && frame < frames();
    const int x = plays ? axis.xOf(frame) : 0;
    const int64_t by = following.shift(plays, x, viewWidth());
    if (by && !win->app->drag.of(view)) moveTo(axis.start() + double(by) * axis.perPixel());
}

// Layout, scrolling and zooming.

void WaveBody::resized() {
    CGroup::resized();
    layout();
}

void WaveBody::layout() {
    constexpr int above = WaveRuler::rulerHeight, side = LevelScale::scaleWidth;
    const int low = spectrumView->visible ? int(RangeSpectrum::usualHeight) : 0;
    const int wide = asMax(1, width - side);
    const int high = asMax(1, height - above - barHeight - low - WaveInfo::infoHeight);
    ruler->setBounds(side, 0, wide, above);
    levels->setBounds(0, above, side, high);
    view->setBounds(side, above, wide, high);
    across->setBounds(side, above + high, wide, barHeight);
    spectrumView->setBounds(side, above + high + barHeight, wide, asMax(1, low));
    info->setBounds(0, height - WaveInfo::infoHeight, width, WaveInfo::infoHeight);
    moveTo(axis.start());
}

int WaveBody::viewWidth() const {
    return view->width;
}

double WaveBody::mostPerPixel() const {
    return asMax(1, frames()) * besideAll / asMax(1, viewWidth());
}

void WaveBody::fit() {
    zooms.clear();
    const FrameRange all = heard();
    const double margin = double(fitMargin) / asMax(1, viewWidth() - 2 * fitMargin) * all.count();
    axis.setZoom(std::min((all.count() + 2 * margin) / viewWidth(), mostPerPixel()));
    moveTo(all.from - margin);
}

void WaveBody::showRange() {
    const double room = mostPerPixel() * viewWidth();
    across->setContent(room, axis.leastPerPixel * viewWidth());
    across->setRange(axis.start() + (room - frames()) / 2, axis.perPixel() * viewWidth());
}

void WaveBody::scrollTo(double frame) {
    const double before = axis.start();
    moveTo(frame);
    if (axis.start() != before) following.stray();
}

void WaveBody::moveTo(double frame) {
    const double beside = (besideAll - 1) / 2 * frames();
    const double most = frames() + beside - axis.perPixel() * viewWidth();
    axis.scrollTo(std::max(-beside, std::min(frame, most)));
    showRange();
    view->refresh();
    view->redraw();
    ruler->redraw();
}

void WaveBody::zoomAtPos(int x, double framesPerPixel) {
    axis.zoomAt(x, std::min(framesPerPixel, mostPerPixel()));
    moveTo(axis.start());
    following.stray();
}

void WaveBody::zoomTo(const FrameRange& wanted) {
    if (zooms.size() >= mostZooms) zooms.erase(zooms.begin());
    zooms.push_back(axis);
    axis.setZoom(std::min(double(asMax(1, wanted.count())) / viewWidth(), mostPerPixel()));
    scrollTo(wanted.from);
}

void WaveBody::zoomBack() {
    if (zooms.empty()) return;
    axis = zooms.back();
    zooms.pop_back();
    scrollTo(axis.start());
}

void WaveBody::setLevelZoom(double factor) {
    levelZoom = fLimit(factor, 1.0, mostLevel);
    shownChanged();
}

void WaveBody::scrollInView(int frame) {
    const int x = axis.xOf(frame);
    if (x < 0 || x >= viewWidth()) scrollTo(frame - axis.perPixel() * viewWidth() / 3);
}

void WaveBody::acrossMoved(CObject*) {
    axis.setZoom(across->span() / viewWidth());
    scrollTo(across->from() - (mostPerPixel() * viewWidth() - frames()) / 2);
}

void WaveBody::showSpectrum(bool on) {
    spectrum = on;
    spectrumView->visible = on;
    layout();
    redraw();
}

// Actions and menus.

bool WaveBody::knowsAction(const CStr& name) const {
    return sample() && isWaveAction(name);
}

bool WaveBody::runAction(const CStr& name) {
    return waveAction(*this, name);
}

void WaveBody::fillPart(CPopup* popup) {
    fillWaveMenu(popup, *this);
}

void WaveBody::fillOptions(CPopup* popup) {
    fillWaveOptions(popup, *this);
}

void WaveBody::openMenu(CObject*) {
    auto* popup = new CPopup(win->app, win);
    popup->autoDelete = true;
    addActionItems(popup, workspace, {"cut", "copy", "paste", "delete", "selectAll"});
    fillWaveMenu(popup, *this);
    const CPoint at = win->app->menuPoint();
    popup->popup(at.x, at.y, win->app->menuCtrl);
}
