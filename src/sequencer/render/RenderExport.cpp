#include "sequencer/render/RenderExport.h"

#include "audiofiles/CSample.h"
#include "base/Messages.h"
#include "base/Numbers.h"
#include "base/Paths.h"
#include "base/SafeFile.h"
#include "engine/CQV.h"
#include "sequencer/render/CLameMp3.h"
#include "sequencer/render/CSoundCloudAddOn.h"
#include "sequencer/render/RenderScope.h"
#include "sequencer/song/CSeq.h"

#include <algorithm>
#include <memory>
#include <unistd.h>
#include <vector>

namespace {

const char* const renderTitle = "Render";
const char* const extensions[] = {".wav", ".aif", ".mp3"};

const char* const uploadName = "soundcloud_export.wav";

/// With the extension of a format in place of that of another; a name may hold dots of its own.
CStr withExtension(const CStr& name, const char* ext) {
    const CStr present = extractFileExt(name).lowerCase();
    if (present == ext) return name;
    const bool other =
        present == ".aiff" || std::ranges::any_of(extensions, [&](auto e) { return present == e; });
    return other ? changeFileExt(name, ext) : name + ext;
}

/// One file of an export: the audio, and for MP3 what is made of it.
struct ExportFile {
    ExportFile(const CStr& place, int format)
        : name(place), target(place), isMp3(format == renderMp3) {
        if (isMp3) wav = std::make_unique<SafeFile>(changeFileExt(place, ".wav"));
    }
    /// Where the frames go.
    const CStr& audioPath() const { return wav ? wav->path() : target.path(); }

    CStr name;
    SafeFile target;
    std::unique_ptr<SafeFile> wav; ///< of an MP3: it never gets a name of its own
    CSample sample;
    bool isMp3;
};

/// One export from beginning to end.
class Export {
public:
    Export(CRender& r, CSeq* s, RenderUi* shown, const RenderSpan& range)
        : render(r), seq(s), ui(shown), span(range) {}
    RenderResult run();

private:
    bool choose();
    void chooseMix();
    void chooseTracks();
    void addFile(COutputChannel* channel, const CStr& place);
    RenderResult createAll();
    RenderResult renderAll();
    RenderResult keepAll();
    RenderResult keepPart();
    bool encode(ExportFile& file);
    RenderResult share();
    RenderResult notShared();
    bool goOn(float done);
    RenderResult fail(RenderResult result, const CStr& text, const char* title = renderTitle);

    CRender& render;
    CSeq* seq;
    RenderUi* ui;
    const RenderSpan span;
    std::vector<std::unique_ptr<ExportFile>> files;
    std::vector<COutputChannel*> channels; ///< by file; for a mix all of the one
};

RenderResult Export::fail(RenderResult result, const CStr& text, const char* title) {
    showMsg(nullptr, title, text);
    return result;
}

void Export::addFile(COutputChannel* channel, const CStr& place) {
    files.push_back(std::make_unique<ExportFile>(place, render.format));
    channels.push_back(channel);
}

void Export::chooseMix() {
    ListOf<COutputChannel>& outputs = render.outputs;
    if (outputs.empty())
        for (CComp* c : render.qv->comps)
            if (c->type == compAudioOut && c->output()) outputs.add(c->output());
    if (outputs.empty()) return;
    if (render.upload) {
        render.filename = addSep(getTempFolder()) + uploadName;
        ::unlink(render.filename.asChar());
    }
    addFile(nullptr, withExtension(render.filename, extensions[render.format]));
    channels.clear();
    for (auto* ch : outputs) channels.push_back(ch);
}

void Export::chooseTracks() {
    render.outputs.clear();
    const char* ext = extensions[render.format];
    for (const TrackOutput& out : trackOutputs(seq)) {
        render.outputs.addUnique(out.channel);
        addFile(out.channel, getUniqueFilename(out.name, ext, render.folder));
    }
}

/// Settles what is rendered to which file; false if nothing is.
bool Export::choose() {
    render.format = asMinMax(render.format, renderWav, renderMp3);
    if (render.upload) render.multiTrack = 0;
    if (render.multiTrack) {
        render.mixToOne = false;
        render.rate = asInt(double(render.qv->rate));
        chooseTracks();
    } else {
        render.mixToOne = true;
        chooseMix();
    }
    return !files.empty();
}

RenderResult Export::createAll() {
    for (const auto& file : files) {
        CSample& sample = file->sample;
        sample.streamed = 1;
        sample.needsPeaks = false;
        sample.setFormat(render.rate, render.bits, render.chs);
        sample.create(file->audioPath());
        if (!sample.validHandle())
            return fail(RenderResult::notCreated, CStr("Could not create file ") + file->name);
        sample.writeHeader();
    }
    render.clearTargets();
    for (size_t i = 0; i < channels.size(); i++)
        render.setTarget(channels[i], &files[std::min(i, files.size() - 1)]->sample);
    return RenderResult::good;
}

RenderResult Export::renderAll() {
    if (span.from >= span.to) {
        keepPart();
        return fail(RenderResult::nothing, "Nothing to render");
    }
    const CStr tooLong = whyTooLong(render, seq, span, files.front()->sample);
    if (!tooLong.empty()) return fail(RenderResult::tooLong, tooLong);
    if (ui) ui->onStatus("Processing...");
    DiskWatch watch(ui);
    {
        const SelectedOnly only(seq, render.rangeMode == rangeSelected);
        render.process(span.from, span.to - span.from, &render.outputs, render.mixToOne, &watch);
    }
    for (const auto& file : files) file->sample.close();
    if (diskWriteFailed)
        return fail(RenderResult::noRoom, CStr("Could not write file ") + files.front()->name);
    return render.cancelled ? keepPart() : keepAll();
}

/// What was cancelled stays, unless that would cost an older file.
RenderResult Export::keepPart() {
    for (const auto& file : files) {
        file->sample.close();
        if (render.keepPart && !file->isMp3 && !fileExists(file->name)) file->target.commit();
    }
    return RenderResult::cancelled;
}

bool Export::encode(ExportFile& file) {
    CLameMp3 lame;
    lame.setBitrate(render.bitrate);
    lame.goOn = [this] {
        render.cancelled = ui && !ui->onRender(render.progress);
        return !render.cancelled;
    };
    const int status = lame.encode(file.audioPath(), file.target.path());
    return status == 0 && getFileSize(file.target.path()) > 0;
}

RenderResult Export::keepAll() {
    RenderResult result = RenderResult::good;
    if (render.format == renderMp3 && ui) ui->onStatus("Encoding...");
    for (const auto& file : files) {
        const bool encoded = !file->isMp3 || encode(*file);
        if (render.cancelled) return RenderResult::cancelled;
        if (!encoded && result == RenderResult::good)
            result = fail(RenderResult::notEncoded,
                          "Could not encode file - make sure mp3 encoder is installed properly");
        if (encoded && !file->target.commit())
            return fail(RenderResult::notCreated, CStr("Could not create file ") + file->name);
    }
    return render.upload && result == RenderResult::good ? share() : result;
}

/// Shows progress of the service, and takes no for an answer.
bool Export::goOn(float done) {
    render.cancelled = render.cancelled || (ui && !ui->onRender(done));
    return !render.cancelled;
}

RenderResult Export::notShared() {
    if (render.cancelled) return RenderResult::cancelled;
    const CStr why = render.addOn->param("error");
    return fail(RenderResult::notShared,
                CStr("Could not upload file") + (why.empty() ? why : "\n" + why));
}

RenderResult Export::share() {
    using Connection = CSoundCloudAddOn::Connection;
    CSoundCloudAddOn* addOn = render.addOn;
    if (!addOn || !addOn->load()) return fail(RenderResult::notShared, "Addon not loaded");
    addOn->goOn = [this](float done) { return goOn(done); };
    const RenderResult result = [&] {
        if (ui) ui->onStatus("Authorizing...");
        const auto state = addOn->connectBy([this] { return ui ? ui->getVerifier() : CStr(); });
        if (state == Connection::needsCode) return RenderResult::notShared;
        if (state == Connection::refused) return notShared();
        const CStr name = CStr(render.songName).trim().empty() ? "untitled" : render.songName;
        if (ui) ui->onStatus("Uploading '" + name + "'...");
        for (const auto& file : files)
            if (!addOn->sendFile(file->name, name)) return notShared();
        return RenderResult::good;
    }();
    addOn->goOn = nullptr;
    return result;
}

RenderResult Export::run() {
    diskWriteFailed = false;
    render.cancelled = false;
    if (!choose()) return fail(RenderResult::nothing, "Nothing to export", "Export");
    const RenderResult made = createAll();
    const RenderResult result = made == RenderResult::good ? renderAll() : made;
    render.clearTargets();
    return result;
}

} // namespace

bool DiskWatch::onRender(float done) {
    return !diskWriteFailed && (!next || next->onRender(done));
}

RenderResult exportSong(CRender& render, CSeq* seq, RenderUi* ui, const RenderSpan* span) {
    return Export(render, seq, ui, span ? *span : renderSpan(render, seq)).run();
}
