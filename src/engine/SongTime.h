#pragma once

class CComp;
class CQV;

// Ticks of the song in force and the seconds that they take at its own tempo, whatever machine it
// follows at the moment. Graph holder.

double songSeconds(CQV* host, double ticks); ///< from the start of the song, as `ticks`
double songTicks(CQV* host, double seconds);

/// How a sequencer tells that: its tempo points are the business of a folder above.
struct SongTimeHooks {
    double (*seconds)(CComp* song, double ticks) = nullptr;
    double (*ticks)(CComp* song, double seconds) = nullptr;
};
void enterSongTime(const SongTimeHooks& hooks); ///< once, at start-up
