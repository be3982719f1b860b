#pragma once

class CSeq;

/// The grid that quantizing goes by. The status line tells what it has become. Interface thread.

void toggleSnap(CSeq* seq);       ///< on and off
void stepSnap(CSeq* seq, int by); ///< to a coarser (1) or finer (-1) grid, as far as there is one
