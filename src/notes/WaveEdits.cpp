#include "notes/WaveEdits.h"

#include "audiofiles/CAudioProcessor.h"
#include "audiofiles/CSample.h"
#include "base/Delegates.h"
#include "base/Messages.h"
#include "base/Numbers.h"
#include "engine/CSamplePreview.h"
#include "gui/CApp.h"
#include "gui/CWin.h"
#include "gui/controls/CPopup.h"
#include "notes/StretchMenu.h"
#include "notes/WaveState.h"
#include "sequencer/edit/ClipEdits.h"
#include "sequencer/edit/PartEdits.h"
#include "sequencer/edit/Slicing.h"
#include "sequencer/song/CSeq.h"
#include "ui/ActionItems.h"

#include <algorithm>

namespace {

constexpr int waitCursor = 2;
constexpr double zoomStep = 1.25, levelStep = 1.5;
constexpr int sampleZoom = 16; ///< pixels of a frame

/// Carries an edit out, and tells why it could not be. `after` is what shows once it is done.
template <class F>
void edit(WaveState& state, WaveState::After after, F&& run) {
    if (state.seq()->isLocked(state.part)) return state.workspace.setStatus("The track is locked");
    if (!hasFrames(state.clip()))
        return state.workspace.setStatus("The part plays what its file has not");
    CApp* app = state.workspace.mainWindow()->app;
    app->setCursor(waitCursor);
    state.after = std::move(after);
    const CStr failure = run();
    app->setCursor(0);
    if (failure.empty()) return state.editDone();
    state.after.reset();
    showMsg(state.workspace.mainWindow(), "Error", failure);
}

/// The marks once the frames have become `more` longer, or shorter.
std::vector<int> shifted(const WaveState& state, const FrameRange& frames, int more) {
    std::vector<int> marks;
    for (const int mark : state.marks)
        if (mark <= frames.from || mark >= frames.to)
            marks.push_back(mark >= frames.to && mark > frames.from ? mark + more : mark);
    return marks;
}

WaveState::After without(const WaveState& state, const FrameRange& frames) {
    return {{frames.from, frames.from}, shifted(state, frames, -frames.count())};
}

void cut(WaveState& state) {
    const FrameRange frames = state.range;
    if (frames.count() == 0) return;
    edit(state, without(state, frames),
         [&] { return cutFrames(state.seq(), state.place(), frames); });
}

void remove(WaveState& state) {
    const FrameRange frames = state.range;
    if (frames.count() == 0) return;
    edit(state, without(state, frames),
         [&] { return deleteFrames(state.seq(), state.place(), frames); });
}

void copy(WaveState& state) {
    copyFrames(state.seq(), state.place(), state.chosen());
}

void paste(WaveState& state) {
    const FrameRange frames = state.range;
    const int count = framesToPaste(state.seq());
    edit(state,
         {{frames.from, saturate(int64_t(frames.from) + count)},
          shifted(state, frames, count - frames.count())},
         [&] { return pasteOverFrames(state.seq(), state.place(), frames); });
}

void crop(WaveState& state) {
    const FrameRange frames = state.range;
    if (frames.count() == 0 || frames.count() == state.frames()) return;
    std::vector<int> marks;
    for (const int mark : state.marks)
        if (mark >= frames.from && mark < frames.to) marks.push_back(mark - frames.from);
    edit(state, {{0, frames.count()}, std::move(marks)},
         [&] { return cropFrames(state.seq(), state.place(), frames); });
}

template <int mode>
void process(WaveState& state) {
    edit(state, {state.range, state.marks},
         [&] { return processFrames(state.seq(), state.place(), mode, state.chosen()); });
}

void selectAll(WaveState& state) {
    const FrameRange all = state.heard();
    state.setRange(all.from, all.to);
}

// Marks.

void findTransients(WaveState& state) {
    CApp* app = state.workspace.mainWindow()->app;
    app->setCursor(waitCursor);
    const FrameRange frames = state.chosen();
    std::vector<int> found = onsets(state.sample(), frames);
    std::erase_if(found, [&](int frame) { return frame <= frames.from; });
    addMarks(state, found);
    app->setCursor(0);
    state.workspace.setStatus(asStr(int(state.marks.size())) + " marks");
}

void markCues(WaveState& state) {
    std::vector<int> frames;
    for (const AudioCue& cue : state.sample()->cues) frames.push_back(cue.frame);
    addMarks(state, frames);
}

void markHere(WaveState& state) {
    addMarks(state, {state.range.from, state.range.to});
}

void clearMarks(WaveState& state) {
    const FrameRange frames = state.range.count() > 0 ? state.range : FrameRange{0, state.frames()};
    std::erase_if(state.marks, [&](int mark) { return mark >= frames.from && mark <= frames.to; });
    state.keepMarks();
}

void slice(WaveState& state) {
    const CStr failure = slicePart(state.seq(), state.part, state.marks);
    if (!failure.empty()) showMsg(state.workspace.mainWindow(), "Error", failure);
}

// What is seen and heard.

void playRange(WaveState& state) {
    CSamplePreview* player = state.preview();
    if (!player) return;
    if (player->isOn()) return player->stop();
    FrameRange frames = state.chosen();
    const bool placed = state.range.count() == 0 && state.range.from > frames.from;
    if (placed && state.range.from < frames.to) frames.from = state.range.from;
    player->play(state.sample(), frames.from, frames.to, state.looped);
}

void zoomSamples(WaveState& state) {
    const int half = asMax(1, state.viewWidth() / sampleZoom / 2);
    const int middle = state.range.from;
    state.zoomTo({middle - half, middle + half});
}

void zoomRange(WaveState& state) {
    state.zoomTo(state.chosen());
}

void zoomPart(WaveState& state) {
    state.zoomTo(state.heard());
}

void zoomAll(WaveState& state) {
    state.zoomTo({0, state.frames()});
}

void zoomIn(WaveState& state) {
    state.zoomAtPos(state.viewWidth() / 2, state.axis.perPixel() / zoomStep);
}

void zoomOut(WaveState& state) {
    state.zoomAtPos(state.viewWidth() / 2, state.axis.perPixel() * zoomStep);
}

void levelIn(WaveState& state) {
    state.setLevelZoom(state.levelZoom * levelStep);
}

void levelOut(WaveState& state) {
    state.setLevelZoom(state.levelZoom / levelStep);
}

constexpr struct {
    const char* name;
    void (*run)(WaveState&);
} actions[] = {
    {"cut", cut},
    {"copy", copy},
    {"paste", paste},
    {"delete", remove},
    {"selectAll", selectAll},
    {"zoomin", zoomIn},
    {"zoomout", zoomOut},
    {"zoomselection", zoomRange},
    {"zoomback", [](WaveState& state) { state.zoomBack(); }},
    {"zoomsong", zoomAll},
    {"trackzoomin", levelIn},
    {"trackzoomout", levelOut},
    {"playrange", playRange},
};

// Menus.

bool always(const WaveState& state) {
    return state.sample() != nullptr;
}

bool withRange(const WaveState& state) {
    return state.sample() && state.range.count() > 0;
}

bool stereo(const WaveState& state) {
    return state.sample() && state.sample()->chs > 1;
}

bool withMarks(const WaveState& state) {
    return state.sample() && !state.marks.empty();
}

bool sliceable(const WaveState& state) {
    return withMarks(state) && !isMulticlip(state.part);
}

bool withCues(const WaveState& state) {
    return state.sample() && !state.sample()->cues.empty();
}

struct Entry {
    const char* text; ///< null for a line
    void (*run)(WaveState&) = nullptr;
    bool (*ready)(const WaveState&) = always;
    bool (*on)(const WaveState&) = nullptr;
};

constexpr Entry audioEntries[] = {
    {"Normalize", process<processNormalize>},
    {"Reverse", process<processReverse>},
    {"Fade In", process<processFadeIn>},
    {"Fade Out", process<processFadeOut>},
    {"Silence", process<processDelete>, withRange},
    {"Trim", process<processTrim>, withRange},
    {"Crop", crop, withRange},
    {"Convert to mono", process<processMono>, stereo},
    {nullptr},
    {"Find transients", findTransients},
    {"Mark the range", markHere},
    {"Mark the cue points of the file", markCues, withCues},
    {"Clear marks", clearMarks, withMarks},
    {"Slice at the marks", slice, sliceable},
};

constexpr Entry viewEntries[] = {
    {"Loop the range", [](WaveState& state) { state.looped = !state.looped; }, always,
     [](const WaveState& state) { return state.looped; }},
    {"Zoom to samples", zoomSamples},
    {"Zoom to the part", zoomPart},
};

constexpr Entry optionEntries[] = {
    {"Snap to zero crossings", [](WaveState& state) { state.zeroSnap = !state.zeroSnap; }, always,
     [](const WaveState& state) { return state.zeroSnap; }},
    {"Spectrum of the range", [](WaveState& state) { state.showSpectrum(!state.spectrum); }, always,
     [](const WaveState& state) { return state.spectrum; }},
};

class RunEntry : public COnChange {
public:
    RunEntry(WaveState& shared, const Entry& one) : state(shared), entry(one) {}
    void operator()(CObject*) override {
        if (entry.ready(state) && state.seq()) entry.run(state);
    }

private:
    WaveState& state;
    const Entry& entry;
};

template <size_t count>
void fill(CPopup* popup, WaveState& state, const Entry (&entries)[count]) {
    for (const Entry& entry : entries) {
        if (!entry.text) {
            popup->addSeparator();
            continue;
        }
        CMenuItem* item = popup->add(entry.text, new RunEntry(state, entry));
        item->enabled = entry.ready(state) && state.seq();
        item->checked = entry.on && entry.on(state);
    }
}

} // namespace

bool isWaveAction(const CStr& name) {
    return std::ranges::any_of(actions, [&](const auto& a) { return name == a.name; });
}

bool waveAction(WaveState& state, const CStr& name) {
    for (const auto& action : actions) {
        if (name != action.name) continue;
        if (state.sample() && state.seq()) action.run(state);
        return true;
    }
    return false;
}

void fillWaveMenu(CPopup* popup, WaveState& state) {
    popup->addSeparator();
    fill(popup, state, audioEntries);
    fillStretchMenu(popup->addSub("Stretch markers"), state);
    popup->addSeparator();
    fill(popup, state, viewEntries);
    popup->addSeparator();
    constexpr struct {
        const char *action, *text;
    } views[] = {{"playrange", ""},
                 {"zoomselection", "Zoom to the range"},
                 {"zoomback", ""},
                 {"zoomsong", "Zoom to the file"},
                 {"trackzoomin", "Larger waves"},
                 {"trackzoomout", "Smaller waves"},
                 {"editexternal", ""}};
    for (const auto& v : views) addActionItem(popup, state.workspace, v.action, v.text);
}

void fillWaveOptions(CPopup* popup, WaveState& state) {
    popup->addSeparator();
    fill(popup, state, optionEntries);
}

void addMarks(WaveState& state, const std::vector<int>& frames) {
    state.marks.insert(state.marks.end(), frames.begin(), frames.end());
    std::ranges::sort(state.marks);
    const auto [first, last] = std::ranges::unique(state.marks);
    state.marks.erase(first, last);
    state.keepMarks();
}
