#pragma once

#include <functional>

class CSeq;

/// Bar and beat from 1 on, and the ticks behind that beat.
struct BarPlace {
    int bar = 1, beat = 1, ticks = 0;
};

// Bars by the song's signature and its signature points, each of which begins a bar. Interface
// thread.

/// Where a tick (0 or more) lies.
BarPlace barPlace(CSeq* seq, int tick);
/// The tick of a place, kept within the song's range; beats and ticks may go beyond their bar.
int tickOf(CSeq* seq, const BarPlace& place);
/// Calls `visit(tick, number)` for the start of each bar below `end`.
void eachBar(CSeq* seq, int end, const std::function<void(int tick, int number)>& visit);
