#pragma once

#include "base/Stored.h"

/// Whether input reaches a track's output.
enum class MonitorMode : int {
    off = 0,
    automatic = 1, ///< on the selected track
    record = 2,    ///< on armed tracks
    manual = 3,    ///< on tracks with `monitor`
};

/// The 32 bytes of switches that a song keeps. Bytes without a name are kept as they were read.
class SongOptions {
public:
    static constexpr int size = 32;
    enum Index : int {
        showNoteNames = 3,
        showPartContent = 4,
        audioMonitor = 5,
        midiMonitor = 6,
        rememberNotes = 7,
        zoomFloat = 8, ///< four bytes
        timeSigNum = 24,
        timeSigDen = 25,
        arranger = 26,
    };

    Stored<unsigned char> bytes[size];

    SongOptions();
    MonitorMode audioMonitorMode() const { return mode(audioMonitor); }
    MonitorMode midiMonitorMode() const { return mode(midiMonitor); }
    /// The global time signature; a stored 0 reads as 4.
    int num() const { return orFour(timeSigNum); }
    int den() const { return orFour(timeSigDen); }
    /// Pixels per quarter at which the arrangement shows the song. View state: no step, and no
    /// change of the song.
    float zoom() const;
    void setZoom(float pixels);
    bool useMarkers() const { return bytes[arranger] != 0; }

private:
    MonitorMode mode(Index i) const { return MonitorMode(int(bytes[i])); }
    int orFour(Index i) const { return bytes[i] ? int(bytes[i]) : 4; }
};
