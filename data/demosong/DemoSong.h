#pragma once

class CQV;
class CSeq;

/// Builds the demo song in the host's empty project: a sequencer with ten tracks, their
/// instruments, two of sound, a group, automation, sections. About two minutes. Interface thread.
CSeq* buildDemoSong(CQV* host);
