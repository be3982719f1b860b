#include "project/ClipLength.h"

#include "audiofiles/CSample.h"
#include "base/BlockView.h"
#include "base/Numbers.h"
#include "sequencer/play/AudioVoices.h"
#include "sequencer/song/CSeq.h"
#include "sequencer/song/ClipTimes.h"

namespace {

void skipInts(BlockView& in, int count) {
    while (count-- > 0) in.readInt();
}

/// What its blocks tell, as they come.
struct Walk {
    int type = 0;       ///< of the part, 0 none yet
    CSample sample;     ///< with the rate of the first
    bool known = false; ///< that rate
    bool several = false;
    ClipLength length;

    void take(const CStr& block, BlockView& in) {
        if (block == "samples") return readRate(in);
        if (block == "part" && !type) return readPart(in);
        if (block == "multiclip") several = in.readByte() == 1;
        if (block == "aevents2" && type == partAudio) readClip(in);
    }

    void readRate(BlockView& in) {
        if (in.readInt() < 1) return;
        in.readStr();
        sample.rate = in.readFloat();
        known = sample.rate >= 1.0f;
    }

    void readPart(BlockView& in) {
        in.readByte();
        type = in.readByte();
        in.readByte();
        skipInts(in, 3); // master, place, offset
        length.ticks = asMinMax(in.readInt(), 1, maxTicks);
    }

    /// The first decides, if it is the only one.
    void readClip(BlockView& in) {
        if (in.readInt() < 1 || length.seconds > 0.0) return;
        skipInts(in, 2); // place, flags
        const int index = in.readInt();
        skipInts(in, 3); // slice, gain, pan
        const int mode = in.readByte();
        in.readByte();
        in.readShort();
        const double frames = 1.0 - in.readInt() + in.readInt();
        in.readInt();
        const double semitones = in.readInt();
        const double rate = tunedRate(&sample, semitones + double(in.readFloat()));
        if (mode == playRepitch && index == 0 && known && frames > 0)
            length.seconds = frames / rate;
    }
};

} // namespace

ClipLength clipLength(const CStr& path) {
    CFileStream stream(path, 0);
    if (!stream.isOpen()) return {};
    BlockView view(&stream, stream.getSize());
    Walk walk;
    CStr name;
    int size = 0;
    while (readBlockHead(view, name, size)) {
        const int64_t next = view.getPos() + size;
        BlockView body(&stream, next);
        walk.take(name, body);
        stream.setPos(next);
    }
    if (walk.several) walk.length.seconds = 0.0;
    if (walk.length.seconds > 0.0) walk.length.ticks = 0;
    return walk.length;
}
