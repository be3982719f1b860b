#include "FuzzHost.h"
#include "base/CStream.h"
#include "driver/libaam.h"
#include "engine/CMixer.h"
#include "engine/Cycle.h"
#include "project/ProjectFile.h"
#include "project/ProjectUi.h"
#include "sequencer/song/CSeq.h"

#include <cstdlib>

// Project files: what came of any bytes is played for some blocks, saved, and read again.

namespace {

struct Session {
    Session() { mixer.init(); }

    CQV* host = fuzzHost();
    CMixer mixer{host};
    ProjectUi ui;
    Project project{host, &mixer, &ui};

    void play(int blocks) {
        float left[64], right[64];
        float* ins[] = {left, right};
        float* outs[] = {left, right};
        static AamEvent events[aamMaxEvents];
        for (int i = 0; i < blocks; ++i) libio(ins, outs, 2, 2, 64, events, 0);
    }
};

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const unsigned char* data, std::size_t size) {
    static Session session;
    CMemoryStream in, out;
    in.write(data, int(size));
    in.setPos(0);
    if (loadFromStream(session.project, &in) == LoadResult::notProject) return 0;
    session.host->start();
    session.play(3);
    session.host->stop();
    session.play(1);
    saveToStream(session.project, &out);
    out.setPos(0);
    if (loadFromStream(session.project, &out) == LoadResult::notProject) abort();
    return 0;
}
