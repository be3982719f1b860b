#pragma once

class Workspace;
class CSeq;

/// Asks for a name, and while the loop is on whether all or the loop is meant, and writes the
/// current program as a standard MIDI file.
void exportMIDIClicked(Workspace& workspace, CSeq* seq);
