#pragma once

#include <memory>

class CQV;
class CSample;
class CStream;
class ItemView;

/// "samples2": the project's pool, each sample with its file's name or, if it lies in memory, with
/// its frames.
void writeSamples2(CStream* stream, CQV* host);
/// "samples", the form before it, for older readers.
void writeSamples(CStream* stream, CQV* host);

/// "samplemarks": where the user marked them, only if there is such a sample.
void writeSampleMarks(CStream* stream, CQV* host);
/// For samples that were read before. Those of a sample that is not there are left out.
void readSampleMarks(ItemView& item, CQV* host);

/// Adds the samples of an item to the pool. A file that is missing, or cannot be read, keeps its
/// place there: an entry that is not valid, with the name and format that the item tells. Graph
/// held.
void readSamples2(ItemView& item, CQV* host);
/// Ends at the first sample with frames of its own, whose number the form does not tell.
void readSamples(ItemView& item, CQV* host);

/// The record of a sample that holds its frames, be they in memory or in a file by now; none of a
/// file that is missing.
void writeWithFrames(CStream* stream, const CSample* sample);
/// Null when it is not all there, or of another kind.
std::unique_ptr<CSample> readWithFrames(ItemView& item);
