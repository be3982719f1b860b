#pragma once

class CMainWin;
class CSeq;

/// Asks for a name, and while the loop is on whether all or the loop is meant, and writes the
/// current program as a standard MIDI file.
void exportMIDIClicked(CMainWin* window, CSeq* seq);
