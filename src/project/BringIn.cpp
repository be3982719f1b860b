#include "project/BringIn.h"

#include "audiofiles/AudioImport.h"
#include "base/Paths.h"
#include "engine/CQV.h"
#include "project/Arrivals.h"
#include "project/NewTracks.h"
#include "project/SongSends.h"
#include "project/SongSounds.h"
#include "sequencer/song/CSeq.h"
#include "sequencer/song/Templates.h"

#include <memory>
#include <set>
#include <tuple>

namespace {

using Arrivals = std::vector<std::unique_ptr<Arrival>>;

bool isOneOf(const CStr& ext, const CStr& list) {
    return !ext.empty() && (list + "|").pos(ext + "|") >= 0;
}

bool mayCome(const Arrivals& arrivals) {
    for (const auto& arrival : arrivals) {
        const CSongTrack* onto = arrival->place.onto;
        if (onto && onto->track->locked)
            return failToBring("The track is locked: ", onto->track->id);
    }
    return !arrivals.empty();
}

bool prepare(const Arrivals& arrivals, const BringWatch& watch) {
    int done = 0;
    for (const auto& arrival : arrivals) {
        const CStr name = extractFileName(arrival->path);
        const auto step = [&](float part) {
            return !watch || watch(name, (float(done) + part) / float(arrivals.size()));
        };
        if (!step(0.0f) || !arrival->prepare(step)) return false;
        done++;
    }
    return true;
}

/// Whether the song takes the tracks that will be new.
bool haveRoom(CSeq* seq, const Arrivals& arrivals) {
    std::set<std::tuple<int, const CSongTrack*, int, int>> made;
    for (const auto& arrival : arrivals) {
        const int kind = arrival->trackKind();
        for (int i = arrival->takesPlace() ? 1 : 0; kind && i < arrival->trackCount(); i++)
            made.insert({kind, arrival->place.onto, arrival->place.row, i});
    }
    for (const int kind : {trackMIDI, trackAudio, trackDrum}) {
        int count = 0;
        for (const auto& key : made) count += std::get<0>(key) == kind;
        if (count && !seq->hasTrackRoom(kind, nullptr, count))
            return failToBring("Too many tracks", "");
    }
    return true;
}

bool adopt(const Arrivals& arrivals) {
    for (const auto& arrival : arrivals)
        if (!arrival->adopt()) return false;
    return true;
}

void link(CSeq* seq, const Arrivals& arrivals, const CStr& title) {
    CQV* host = seq->host;
    const bool begins = !hasContent(seq->getProg());
    CUndo* step = host->undoStart(title, seq,
                                  {.graph = true,
                                   .song = true,
                                   .host = HostNotice::pool,
                                   .seq = SeqNotice::tracks | SeqNotice::parts});
    NewTracks tracks(seq, step);
    seq->unselectParts();
    bool midi = false;
    // An instrument that comes along plays what comes to its track.
    for (const bool time : {false, true})
        for (const auto& arrival : arrivals) {
            if (arrival->hasTime() == time) arrival->link(tracks, step);
            midi = midi || songFileOf(arrival->path) == SongFile::midi;
        }
    SongSends sends(host, step);
    if (midi) giveSounds(seq, step, sends);
    host->undoEnd(step, true);
    sends.settle();
    host->updatePeaks();
    if (midi && begins && hasContent(seq->getProg())) frameSong(seq);
}

} // namespace

SongFile songFileOf(const CStr& path) {
    const CStr ext = extractFileExt(path).lowerCase();
    if (isOneOf(ext, audioFileExt)) return SongFile::audio;
    if (isOneOf(ext, midiFileExt)) return SongFile::midi;
    static const struct {
        const char* ext;
        SongFile kind;
    } kinds[] = {{".qvc", SongFile::clip}, {".sf2", SongFile::font},   {".qvs", SongFile::program},
                 {".qvd", SongFile::kit},  {".qve", SongFile::effect}, {".qva", SongFile::arpeggio},
                 {".qvp", SongFile::track}};
    for (const auto& k : kinds)
        if (ext == k.ext) return k.kind;
    return SongFile::none;
}

bool bringIn(CSeq* seq, const std::vector<BringFile>& files, const CStr& title,
             const BringWatch& watch) {
    Arrivals arrivals;
    for (const BringFile& file : files)
        if (auto arrival = Arrival::make(seq, file)) arrivals.push_back(std::move(arrival));
    if (!mayCome(arrivals) || !prepare(arrivals, watch) || !haveRoom(seq, arrivals) ||
        !adopt(arrivals))
        return false;
    link(seq, arrivals, title);
    bool good = true;
    for (const auto& arrival : arrivals) good = arrival->finish() && good;
    return good;
}
