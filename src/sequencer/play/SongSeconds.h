#pragma once

/// Tells the engine how ticks and seconds of a song go together (engine/SongTime.h). At start-up.
void enterSongSeconds();
