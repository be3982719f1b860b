#pragma once

#include "base/CStr.h"
#include "interchange/BeatClock.h"
#include "interchange/DawSong.h"

#include <map>
#include <string>
#include <vector>

class CAudioPart;
class CPart;
class CSample;
class CTrack;
class EventCollector;
struct CAudioEvent;

/// Adds a line unless it is there.
void addLine(std::vector<CStr>& lines, const CStr& line);

/// The audio files that clips play, by name, and which of them lie outside of the archive.
void listAudio(const std::vector<DawClip>& clips, std::map<std::string, bool>& names);

using DawSamples = std::map<std::string, CSample*>; ///< of the pool, by name in the archive

/// Makes parts of the clips of a file. Interface thread.
class DawParts {
public:
    /// `songClock` is that of the song that they come into, `samples` what its files became;
    /// `leftOut` takes a line for each thing that no part holds. Both outlive this.
    DawParts(BeatClock songClock, const DawSamples& files, std::vector<CStr>& leftOut)
        : clock(std::move(songClock)), samples(files), lost(leftOut) {}

    /// A part for the track, owned by the caller; null for what is none for its kind. Loops are
    /// written out, four million events in all at most.
    CPart* make(const DawClip& clip, const CTrack* track);

private:
    struct Piece;
    struct Audio;

    static std::vector<Piece> piecesOf(const DawClip& clip);
    CPart* makeAudio(const DawClip& clip);
    void fillNotes(CPart* part, const DawClip& clip, bool drums);
    void addNotes(EventCollector& events, const DawClip& clip, const Piece& piece, bool drums,
                  bool cuts);
    void addRow(EventCollector& events, const DawPoints& row, const Piece& piece);
    void addClips(Audio& to, const DawClip& clip, double start, const Piece& piece);
    void addAudio(Audio& to, const DawClip& clip, double start, Piece piece);
    void addEvent(Audio& to, const DawClip& clip, CSample* sample, const Piece& piece,
                  double fromSeconds, double toSeconds);
    double sourceAt(const DawClip& clip, double start, double content) const;
    bool full(); ///< no more events, after a line

    const BeatClock clock;
    const DawSamples& samples;
    std::vector<CStr>& lost;
    size_t eventCount = 0;
};
