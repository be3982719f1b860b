#pragma once

class NoteState;

/// Keys over notes and hits. Left and Right alone step the selection to the prior and the next
/// event, and with Shift take it along; with Control the arrows move what is selected by the grid
/// and by semitones or sounds, with Alt they change its length by the grid and its velocity by 8.
/// The status line tells what is selected, and it sounds. False for a key that has no meaning here.
bool noteKey(NoteState& state, int key, int mods);
