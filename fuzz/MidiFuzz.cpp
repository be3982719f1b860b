#include "FuzzHost.h"
#include "base/CStream.h"
#include "project/SongSounds.h"
#include "sequencer/midi/MidiExport.h"
#include "sequencer/midi/MidiImport.h"
#include "sequencer/midi/MidiLength.h"
#include "sequencer/song/CSeq.h"

#include <cstdlib>
#include <string>
#include <unistd.h>

// Standard MIDI files: what came of any bytes is played for some blocks, written as a file, read
// again, and taken back. Readers and writer work by path, so the files lie in memory.

namespace {

struct Session {
    CQV* host = fuzzHost();
    CSeq* seq = addSequencer(host);
    std::string in = scratch("in"), out = scratch("out");

    MidiImport import(const std::string& path) {
        CUndo* step = host->undoStart("Import", seq, {.song = true});
        const MidiImport result = openMIDIFile(seq, nullptr, path.c_str(), step, 0);
        midiLength(path.c_str());
        host->undoEnd(step, true);
        return result;
    }
    void play() {
        const GraphHold hold(host);
        host->setPos(0.0);
        host->start();
        playBlocks(host, 3);
        host->stop();
    }

private:
    static std::string scratch(const char* what) {
        return "/dev/shm/midi_fuzz-" + std::to_string(getpid()) + what;
    }
};

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const unsigned char* data, std::size_t size) {
    static Session session;
    {
        CFileStream in(session.in.c_str(), 1);
        in.write(data, int(size));
    }
    session.import(session.in);
    session.play();
    if (exportMIDIFile(session.seq, session.out.c_str()) != MidiExport::good) abort();
    if (session.import(session.out) != MidiImport::good) abort();
    takeAllBack(session.host);
    if (!session.seq->tracks.empty()) abort();
    unlink(session.in.c_str());
    unlink(session.out.c_str());
    return 0;
}
