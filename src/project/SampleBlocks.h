#pragma once

class CQV;
class CStream;
class ItemView;

/// "samples2": the project's pool, each sample with its file's name or, if it lies in memory, with
/// its frames.
void writeSamples2(CStream* stream, CQV* host);
/// "samples", the form before it, for older readers.
void writeSamples(CStream* stream, CQV* host);

/// Adds the samples of an item to the pool. A file that is missing, or cannot be read, keeps its
/// place there: an entry that is not valid, with the name and format that the item tells. Graph
/// held.
void readSamples2(ItemView& item, CQV* host);
/// Ends at the first sample with frames of its own, whose number the form does not tell.
void readSamples(ItemView& item, CQV* host);
