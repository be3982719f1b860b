#pragma once

#include "sequencer/render/CRender.h"

class CSeq;

/// Who shows an export. All on the interface thread.
class RenderUi : public RenderProgress {
public:
    virtual void onStatus(const CStr&) {} ///< "Processing...", "Encoding..."
    /// Asks the user for the code that the service has given; empty gives up.
    virtual CStr getVerifier() { return ""; }
};

/// Hands progress on, and ends a render whose file takes no more.
class DiskWatch : public RenderProgress {
public:
    explicit DiskWatch(RenderProgress* follower) : next(follower) {} ///< null for nobody
    bool onRender(float done) override;

private:
    RenderProgress* next;
};

enum class RenderResult {
    good,
    cancelled,
    nothing,    ///< no time or no track to render
    tooLong,    ///< no file holds so much
    notCreated, ///< a file cannot be made
    noRoom,     ///< a file takes no more
    notEncoded, ///< there is no MP3, though all else went well
    notShared,  ///< the file is there, but was not uploaded
};

/// From tick to tick.
struct RenderSpan {
    double from = 0.0, to = 0.0;
};

/// What `render.rangeMode` means in the song's current program.
RenderSpan renderSpan(const CRender& render, CSeq* seq);

/// Renders by the choices of `render`: to `render.filename`, whose extension becomes that of the
/// format, or with `multiTrack` to `render.folder`, a file for each selected track with parts and
/// each send bus, at the running rate, which becomes `rate`. `render.outputs` becomes what was
/// captured; while it is empty the host's audio outs are mixed. With `upload` it is one file in the
/// folder for temporary ones, which `addOn` then sends; its "url" tells where to. `span` counts
/// instead of `rangeMode`. `ui` and `span` may be null.
///
/// A file stands under its name only when it is complete, and replaces what was there only then.
/// But a WAV or AIFF that was cancelled, or has no time to render, stays as far as it got, with a
/// right header, where nothing stood before.
///
/// What goes wrong is shown: "Nothing to export", "Too long: " and what a file holds, "Could not
/// create file " and "Could not write file " with the name, "Nothing to render", and for a missing
/// encoder "Could not encode file - make sure mp3 encoder is installed properly"; of uploads "Addon
/// not loaded" and "Could not upload file". Interface thread; takes the graph for as long as it
/// renders.
RenderResult exportSong(CRender& render, CSeq* seq, RenderUi* ui, const RenderSpan* span = nullptr);
