#include "tools/SongExport.h"

#include "base/Numbers.h"
#include "base/Paths.h"
#include "engine/CQV.h"
#include "sequencer/midi/MidiExport.h"
#include "sequencer/render/RenderExport.h"
#include "sequencer/song/CSeq.h"
#include "sequencer/song/Points.h"
#include "sequencer/song/TempoMap.h"
#include "tools/RenderOptions.h"

#include <algorithm>

namespace {

RenderSpan spanOf(CSeq* seq, const RenderOptions& options) {
    const double end =
        options.length < 0.0 ? seq->renderDuration() : options.start + options.length;
    return {options.start, std::max(options.start, end)};
}

CStr exportMidi(CSeq* seq, const CStr& path) {
    switch (exportMIDIFile(seq, path)) {
    case MidiExport::good:
        return "";
    case MidiExport::notCreated:
        return CStr("Could not create file ") + path;
    case MidiExport::noRoom:
        return CStr("Could not write file ") + path;
    }
    return "";
}

void choose(CRender& render, CSeq* seq, const RenderOptions& options) {
    const CStr ext = extractFileExt(options.output).lowerCase();
    render.format = ext == ".mp3" ? renderMp3 : ext == ".aif" ? renderAiff : renderWav;
    render.filename = options.output;
    render.rate = options.rate;
    render.bits = options.bits;
    render.chs = options.chs;
    render.bitrate = options.bitrate;
    render.tailMs = options.tailMs;
    render.keepPart = false;
    if (!options.tracks) return;
    render.multiTrack = 1;
    render.format = renderWav;
    render.folder = options.output;
    for (auto* t : seq->getProg()->tracks) seq->selectTrack(t, true);
}

} // namespace

CStr exportByOptions(CSeq* seq, const RenderOptions& options, RenderUi* ui, Figures& figures,
                     const CStr& lastMessage) {
    if (extractFileExt(options.output).lowerCase() == ".mid" && !options.tracks)
        return exportMidi(seq, options.output);
    const RenderSpan span = spanOf(seq, options);
    const CStr nothing = options.output + ": Nothing to render";
    if (asInt(span.to - span.from) < 1) return nothing;
    if (options.tracks && !createDir(options.output))
        return CStr("Could not create folder ") + options.output;
    CRender render(seq->host, seq);
    choose(render, seq, options);
    const RenderResult result = exportSong(render, seq, ui, &span);
    if (result == RenderResult::nothing) return nothing;
    if (result == RenderResult::cancelled) return options.output + ": interrupted";
    if (result == RenderResult::tooLong) return options.output + ": " + lastMessage;
    if (result != RenderResult::good) return lastMessage;
    figures.frames = render.framesWritten;
    figures.audioSeconds = double(render.framesWritten) / render.rate;
    figures.peakLeft = render.peakLeft;
    figures.peakRight = render.peakRight;
    return "";
}
