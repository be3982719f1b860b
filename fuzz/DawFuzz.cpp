#include "FuzzHost.h"
#include "interchange/DawFiles.h"
#include "interchange/DawXml.h"
#include "interchange/ScratchFolder.h"
#include "interchange/ZipFile.h"
#include "project/SongSounds.h"
#include "sequencer/song/CSeq.h"

#include <cstdlib>

// Songs of other programs: any XML is read, what was read is written and read again, comes into a
// song, plays, goes out, and is taken back.

extern "C" int LLVMFuzzerTestOneInput(const unsigned char* data, std::size_t size) {
    static const ScratchFolder folder;
    static CSeq* seq = addSequencer(fuzzHost());
    const std::string xml(reinterpret_cast<const char*>(data), size);
    DawSong song, again;
    if (!readDawProject(xml, song)) return 0;
    const std::string text = writeDawProject(song);
    if (!readDawProject(text, again) || again.tracks.size() != song.tracks.size()) abort();
    const std::string path = folder.file("a.dawproject");
    {
        ZipWriter zip(path);
        zip.add(dawProjectEntry, xml);
    }
    std::vector<CStr> lost;
    CQV* host = fuzzHost();
    if (importDawProject(seq, path.c_str(), lost) == DawResult::good) {
        host->settle();
        playBlocks(host, 2);
        exportDawProject(seq, folder.file("b.dawproject").c_str(), lost);
        takeAllBack(host);
        if (!seq->tracks.empty()) abort();
    }
    return 0;
}
