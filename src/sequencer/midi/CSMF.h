#pragma once

#include "base/CObject.h"
#include "base/CStr.h"

#include <cstdint>
#include <cstdio>

struct CBaseEvent;

/// Writes a standard MIDI file of format 1, 960 ticks to the quarter note: per track
/// `writeStartOfTrack`, then events and texts, then `writeEndOfTrack`. All numbers are big-endian,
/// and channel messages use running status. Interface thread.
class CSMF : public CObject {
public:
    /// Makes the file; `isOpen` tells whether that went well.
    explicit CSMF(const CStr& path);
    ~CSMF() override; ///< closes
    CSMF(const CSMF&) = delete;
    CSMF& operator=(const CSMF&) = delete;

    bool isOpen() const { return fp != nullptr; }
    /// Writes the number of tracks into the header and closes. False when not all of the file
    /// could be written.
    bool close();

    void writeStartOfTrack();
    void writeEndOfTrack();

    // Bytes of a track. They count in its length.
    void writeVarLen(int value); ///< 0 to 2^28 - 1, else clamped
    void writeLong(int value);   ///< four bytes
    void write3(int value);      ///< the lower three bytes
    void write2(short value);
    void writeByte(unsigned char value);

    // Meta events, `delta` ticks behind the event before.
    void writeTempo(int delta, double bpm);
    void writeTempoTrack(int bpm); ///< a track of nothing else
    /// `den` 1, 2, 4, 8, 16 or 32, any other counts as 4; `num` 1 to 255, else clamped.
    void writeTimesig(int delta, int num, int den);
    void writeTimesigTrack(int num, int den);
    void writeTrackName(const CStr& name);
    void writeMIDICh(int channel);

    /// Takes a packed message (engine/MidiBytes.h) for `writeTrack`. Of messages at one tick the
    /// newest comes first.
    void addEvent(int tick, int message);
    /// Writes a message at once. `tick` counts from the start of the track, and is not before that
    /// of the message before.
    void writeEvent(int message, int tick);
    /// Writes what `addEvent` has taken since the start of the track.
    void writeTrack();

private:
    void put(uint32_t value, int bytes);
    void writeMeta(int delta, int kind, int length);
    void clearEvents();

    std::FILE* fp; ///< owned
    bool failed = false;
    long trackLengthPos = 0; ///< of the length of the open track, in the file
    int runningStatus = 0;   ///< 0 none
    int lastTick = 0;
    int trackBytes = 0;
    short trackCount = 0;
    CBaseEvent* events = nullptr;    ///< owned list of CMIDIEvent, its ticks in `delta`, in order
    CBaseEvent** lastLink = nullptr; ///< the link to the record that came last, null without one
};
