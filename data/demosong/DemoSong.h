#pragma once

class CQV;
class CSeq;

/// Builds the demo song in the host's empty project: a sequencer with seven tracks, their
/// instruments, automation and markers. About two minutes. Interface thread.
CSeq* buildDemoSong(CQV* host);
