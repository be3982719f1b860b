#pragma once

#include "base/CStr.h"

#include <cstddef>

class CSeq;

/// The grid that quantizing goes by. The status line tells what it has become. Interface thread.

/// Numbers of `gridOf`.
enum GridNumber : size_t { gridIndex, gridActive, gridTriplet, gridDotted };

constexpr int gridCount = 7;                                ///< of resolutions, as `CSnap::index`
CStr gridName(int index);                                   ///< "1/16"
void toggleSnap(CSeq* seq, GridNumber number = gridActive); ///< on and off
void chooseSnap(CSeq* seq, int index);                      ///< 0 to 6, as `CSnap::index`
void stepSnap(CSeq* seq, int by); ///< to a coarser (1) or finer (-1) grid, as far as there is one
