#pragma once

class CGui;
class CStream;

// The form of theme files, ".qvl": records of a key as text, a size, and as many bytes. First come
// the images, then for each item a record for each field that its `caps` tell, and behind them the
// whole item as 512 bytes, for readers of an older form.

/// Applies what a stream tells, up to its end or the first damage, to the items and images. Keys
/// and items that are unknown are passed over, an image of an index without one is null, numbers
/// are clamped. Bitmaps and links are the caller's to update.
void readTheme(CGui& gui, CStream& in);

void writeTheme(const CGui& gui, CStream& out);
