#pragma once

class CSeq;

/// New projects with something that plays at once, to build on.
enum StarterSong : int {
    starterBeat,      ///< club drums, a bass, stabs: 122 beats a minute
    starterBand,      ///< drums, bass, piano, strings: 112
    starterLateNight, ///< brushes, upright bass, piano: 96
    starterCount,
};

/// Fills the current program of a sequencer. Interface thread, with the graph held or nothing
/// running.
void createStarter(CSeq* seq, StarterSong which);
