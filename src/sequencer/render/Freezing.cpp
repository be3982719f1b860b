#include "sequencer/render/Freezing.h"

#include "audiofiles/CSample.h"
#include "base/CIniFile.h"
#include "base/Messages.h"
#include "base/Numbers.h"
#include "base/Paths.h"
#include "engine/CFreezeItem.h"
#include "engine/CQV.h"
#include "engine/GraphHold.h"
#include "sequencer/play/AudioVoices.h"
#include "sequencer/render/RenderScope.h"
#include "sequencer/song/CSeq.h"

#include <memory>
#include <vector>

namespace {

const char* const renderTitle = "Render";
const char* const freezeTitle = "Freeze";
const char* const bounceTitle = "Bounce to new track";
const char *const renderSection = "render", *const bounceKey = "bounce-selection";
constexpr int freezeBits = 16, freezeChs = 2;

RenderResult fail(RenderResult result, const char* title, const CStr& text) {
    showMsg(nullptr, title, text);
    return result;
}

RenderResult notWritten(const CSample& file) {
    return fail(RenderResult::noRoom, renderTitle, CStr("Could not write file ") + file.filename);
}

/// The host leaves the strips of the audio outs out, and with `freeze` fader and pan of all.
class RenderFlags {
public:
    RenderFlags(CQV* root, bool freeze) : host(root) {
        host->renderDry = true;
        host->renderFreeze = freeze;
    }
    ~RenderFlags() { host->renderDry = host->renderFreeze = false; }
    RenderFlags(const RenderFlags&) = delete;
    RenderFlags& operator=(const RenderFlags&) = delete;

private:
    CQV* host;
};

/// As long as it stands the selected tracks are not muted, and none is soloed.
class Audible {
public:
    explicit Audible(CSeqProg* prog) {
        for (auto* t : prog->tracks) {
            saved.push_back({t, t->muted(), t->soloed()});
            if (t->track->selected()) t->setMuted(false);
            t->setSoloed(false);
        }
    }
    ~Audible() {
        for (const Saved& s : saved) {
            s.songTrack->setMuted(s.muted);
            s.songTrack->setSoloed(s.soloed);
        }
    }
    Audible(const Audible&) = delete;
    Audible& operator=(const Audible&) = delete;

private:
    struct Saved {
        CSongTrack* songTrack;
        bool muted, soloed;
    };
    std::vector<Saved> saved;
};

/// A file in the making, of which nothing stays unless its `keep` is set.
std::unique_ptr<CSample> newFile(const CStr& path, int rate, int bits) {
    std::unique_ptr<CSample> file(CSample::createSample(path, 0));
    if (!file) return nullptr;
    file->setFormat(rate, bits, freezeChs);
    file->writeHeader();
    return file;
}

/// One freezing of the selected tracks.
class Freeze {
public:
    Freeze(CSeq* s, const CStr& to) : seq(s), host(s->host), prog(s->getProg()), folder(to) {}
    RenderResult run(RenderUi* ui);

private:
    bool plays(const COutputChannel* channel) const;
    bool addItem(CSongTrack* songTrack, CComp* comp, COutputChannel* channel);
    bool addTrack(CSongTrack* songTrack);
    RenderResult renderItems(RenderUi* ui);
    void record(CUndo* step);

    CSeq* seq;
    CQV* host;
    CSeqProg* prog;
    CStr folder;
    std::vector<std::unique_ptr<CFreezeItem>> items;
    std::vector<CSongTrack*> frozen; ///< to be unfrozen
};

bool Freeze::plays(const COutputChannel* channel) const {
    for (const auto& item : items)
        if (item->channel == channel) return true;
    for (auto* t : prog->tracks)
        for (const auto* item : t->freezeItems)
            if (item->channel == channel) return true;
    return false;
}

bool Freeze::addItem(CSongTrack* songTrack, CComp* comp, COutputChannel* channel) {
    const CStr path = getUniqueFilename("freeze", ".wav", folder);
    auto file = newFile(path, asInt(double(host->rate)), freezeBits);
    if (!file) {
        fail(RenderResult::notCreated, renderTitle, CStr("Could not create file ") + path);
        return false;
    }
    auto item = std::make_unique<CFreezeItem>();
    item->comp = comp;
    item->channel = channel;
    item->songTrack = songTrack;
    item->sample = file.release();
    items.push_back(std::move(item));
    return true;
}

bool Freeze::addTrack(CSongTrack* songTrack) {
    for (const auto& [comp, channel] : channelsOf(songTrack->track))
        if (!plays(channel) && !addItem(songTrack, comp, channel)) return false;
    return true;
}

RenderResult Freeze::renderItems(RenderUi* ui) {
    if (items.empty()) return RenderResult::good;
    CRender render(host, seq);
    render.rate = asInt(double(host->rate));
    render.mixToOne = false;
    for (const auto& item : items) {
        render.outputs.add(item->channel);
        render.setTarget(item->channel, item->sample);
    }
    const RenderSpan span = renderSpan(render, seq);
    const CStr tooLong = whyTooLong(render, seq, span, *items.front()->sample);
    if (!tooLong.empty()) return fail(RenderResult::tooLong, renderTitle, tooLong);
    const RenderFlags flags(host, true);
    const Audible audible(prog);
    DiskWatch watch(ui);
    diskWriteFailed = false;
    if (ui) ui->onStatus("Processing...");
    render.process(span.from, span.to - span.from, &render.outputs, false, &watch);
    if (diskWriteFailed) return notWritten(*items.front()->sample);
    return render.cancelled ? RenderResult::cancelled : RenderResult::good;
}

void Freeze::record(CUndo* step) {
    for (CSongTrack* t : frozen)
        for (auto* item : t->freezeItems) step->asRemove(item, &t->freezeItems);
    for (auto& item : items) {
        if (item->channel->holdL == 0.0f && item->channel->holdR == 0.0f) continue;
        auto* songTrack = static_cast<CSongTrack*>(item->songTrack);
        if (!item->sample->open(item->sample->filename)) continue;
        item->setSample(item->sample);
        if (!songTrack->voices) {
            const GraphHold hold(host);
            songTrack->voices = std::make_unique<AudioVoices>(songTrack, false);
        }
        step->asAdd(item.release(), &songTrack->freezeItems);
    }
}

RenderResult Freeze::run(RenderUi* ui) {
    RenderResult result = RenderResult::good;
    for (auto* t : prog->tracks) {
        if (!t->track->selected()) continue;
        if (!t->freezeItems.empty())
            frozen.push_back(t);
        else if (!t->parts.empty() && result == RenderResult::good && !addTrack(t))
            result = RenderResult::notCreated;
    }
    if (frozen.empty() && items.empty() && result == RenderResult::good)
        return RenderResult::nothing;
    if (result == RenderResult::good) result = renderItems(ui);
    if (result != RenderResult::good) return result;
    CUndo* step = host->undoStart(freezeTitle, seq, {.graph = true});
    record(step);
    host->undoEnd(step, true);
    return result;
}

/// Puts a rendered file on a new track.
void addBounced(CSeq* seq, std::unique_ptr<CSample> file, const RenderSpan& span) {
    CUndo* step = seq->host->undoStart(bounceTitle, seq, {.graph = true, .song = true});
    CSongTrack* songTrack = seq->addTrack(trackAudio, seq->getProg(), step);
    auto* part = new CAudioPart;
    part->id = changeFileExt(extractFileName(file->filename), "");
    part->pos = asInt(span.from);
    part->length = asInt(span.to - span.from);
    part->chs = file->chs;
    CAudioEvent* event = createAudioEvent();
    event->sample = file.get();
    event->end = file->frames - 1;
    event->ticks = part->length;
    part->addEvent(0, event);
    songTrack->addPart(part, step);
    step->asAdd(file.release(), &seq->host->samples);
    seq->host->undoEnd(step, true);
}

} // namespace

RenderResult freezeTracks(CSeq* seq, RenderUi* ui) {
    CQV* host = seq->host;
    if (host->playing || host->recording)
        return fail(RenderResult::nothing, renderTitle, "Can't freeze while song is playing");
    const CStr folder = host->getAudioFolder(true, false, false);
    if (folder.empty() || !folderExists(folder))
        return fail(RenderResult::nothing, freezeTitle,
                    "Project must be saved before you can freeze track");
    return seq->getProg() ? Freeze(seq, folder).run(ui) : RenderResult::nothing;
}

int readBounceRange(const CQV* host) {
    const int none = rangeSelected;
    const int range = host->settingsEnabled ? iniReadInt(renderSection, bounceKey, none) : none;
    return range >= rangeSong && range <= rangeSelected ? range : none;
}

void writeBounceRange(const CQV* host, int rangeMode) {
    if (host->settingsEnabled) CIniFile(inifile).writeInteger(renderSection, bounceKey, rangeMode);
}

RenderResult bounceToNewTrack(CSeq* seq, int rangeMode, RenderUi* ui) {
    CQV* host = seq->host;
    if (host->playing || host->recording)
        return fail(RenderResult::nothing, bounceTitle, "Cant render while song is playing");
    CRender render(host, seq);
    render.rangeMode = rangeMode;
    render.rate = asInt(double(host->rate));
    const RenderSpan span = renderSpan(render, seq);
    if (!host->getAudioOut() || span.from >= span.to)
        return fail(RenderResult::nothing, renderTitle, "Nothing to render");
    if (!seq->hasTrackRoom(trackAudio))
        return fail(RenderResult::nothing, "Error", "Too many tracks");
    bool inTemp = false;
    const CStr path = host->requireSampleFilename("render.wav", &inTemp);
    auto file = path.empty() ? nullptr : newFile(path, render.rate, host->recBits);
    if (!file)
        return fail(RenderResult::notCreated, renderTitle, CStr("Could not create file ") + path);
    const CStr tooLong = whyTooLong(render, seq, span, *file);
    if (!tooLong.empty()) return fail(RenderResult::tooLong, renderTitle, tooLong);
    COutputChannel* out = host->getAudioOut()->output();
    render.outputs.add(out);
    render.setTarget(out, file.get());
    DiskWatch watch(ui);
    diskWriteFailed = false;
    {
        const RenderFlags flags(host, false);
        const SelectedOnly only(seq, rangeMode == rangeSelected);
        if (ui) ui->onStatus("Processing...");
        render.process(span.from, span.to - span.from, &render.outputs, true, &watch);
    }
    if (diskWriteFailed) return notWritten(*file);
    if (render.cancelled) return RenderResult::cancelled;
    if (!file->open(file->filename)) return notWritten(*file);
    file->keep = true;
    file->cached = inTemp;
    addBounced(seq, std::move(file), span);
    host->updatePeaks();
    return RenderResult::good;
}
