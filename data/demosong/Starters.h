#pragma once

class CSeq;

// New projects with something that plays at once, to build on. Each fills the current program of a
// sequencer. Interface thread, with the graph held or nothing running.

void createBeatProject(CSeq* seq);      ///< club drums, a bass, stabs: 122 beats a minute
void createBandProject(CSeq* seq);      ///< drums, bass, piano, strings: 112
void createLateNightProject(CSeq* seq); ///< brushes, upright bass, piano: 96
