#pragma once

class ArrangeState;

/// Arrow keys over the arrangement: with Control they move the selected parts by a step of the grid
/// or by a track, with Alt they move their ends; selected points as `pointEditKey` tells. False for
/// all else.
bool editKey(ArrangeState& state, int key, int mods);
/// Arrow keys alone, and with Shift beside what is selected: the next part or point that way is
/// selected and brought into view, with Up and Down that of the next row with any. False for other
/// keys, and where there is none.
bool walkKey(ArrangeState& state, int key, int mods);
