#pragma once

class CPopup;
class WaveState;

/// The menu of the stretch markers of the clip that the editor shows: they come, move, tune what
/// lies behind them, and go. What is about one of them is about the one at the place.
void fillStretchMenu(CPopup* popup, WaveState& state);
