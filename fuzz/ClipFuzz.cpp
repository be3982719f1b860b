#include "FuzzHost.h"
#include "audiofiles/CSample.h"
#include "base/CStream.h"
#include "project/ClipContent.h"
#include "project/ClipDrop.h"
#include "project/ClipFiles.h"
#include "project/ClipPreview.h"
#include "project/SongSounds.h"
#include "sequencer/song/CSeq.h"

#include <cstdlib>
#include <cstring>

// Clips: any bytes are put into a song, played for some blocks, written again, and taken back. What
// was taken in can be read again, and is the same then.

namespace {

constexpr double previewSeconds = 0.05;

struct Session {
    CQV* host = fuzzHost();
    CSeq* seq = addSequencer(host);

    /// The part that comes of a stream, in a step that is done; null for what is no clip.
    CPart* put(CStream* in) {
        ClipContent clip(seq);
        in->setPos(0);
        if (!clip.read(in)) return nullptr;
        CUndo* step = host->undoStart("Drop", seq, {.song = true});
        CPart* part = dropClip(clip, seq, nullptr, 0, step);
        host->undoEnd(step, true);
        return part;
    }
    void play(int blocks) {
        const GraphHold hold(host);
        host->setPos(0.0);
        host->start();
        playBlocks(host, blocks);
        host->stop();
    }
    void takeBack() {
        takeAllBack(host);
        if (!seq->tracks.empty() || !host->samples.empty()) abort();
    }
};

bool same(const CMemoryStream& a, const CMemoryStream& b) {
    return a.size == b.size && std::memcmp(a.data, b.data, size_t(a.size)) == 0;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const unsigned char* data, std::size_t size) {
    static Session session;
    CMemoryStream in, once, twice;
    in.write(data, int(size));
    if (CPart* part = session.put(&in)) {
        session.play(3);
        writeClipFile(&once, session.seq, part);
        session.takeBack();
        CPart* again = session.put(&once);
        if (!again) abort();
        writeClipFile(&twice, session.seq, again);
        if (!same(once, twice)) abort();
        in.setPos(0);
        renderClip(session.host, &in, previewSeconds);
    }
    session.takeBack();
    return 0;
}
