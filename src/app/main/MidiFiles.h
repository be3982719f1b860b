#pragma once

class CMainWin;
class CSeq;

/// Asks for a standard MIDI file and imports it at the start of the song, as one step of the
/// history. Into a song without parts each track comes with an instrument that plays it.
void importMIDIClicked(CMainWin* window, CSeq* seq);
/// Asks for a name and writes the current program as a standard MIDI file.
void exportMIDIClicked(CMainWin* window, CSeq* seq);
