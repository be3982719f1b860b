#pragma once

class CQV;

/// Finds out what the solos silence, and leaves it in `anySolo` of every strip: 1 for each that has
/// to have solo itself in order to be heard, unless it is safe from solos. What feeds a soloed
/// strip, by cables and into a bus by its sends, all the way up, is not silenced, and neither are
/// the buses. Graph holder.
void spreadSolo(CQV* host);
