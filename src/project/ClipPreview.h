#pragma once

#include <memory>

class CQV;
class CSample;
class CStr;
class CStream;

/// A clip as it sounds at the tempo and the rate of the host, as a stereo sample in memory of float
/// frames; not longer than `mostSeconds`. It is played in a graph of its own, so that the host goes
/// on undisturbed, and nothing of the clip stays. Null for a file that is no clip, and for one that
/// has no sound without a plug-in, since none is loaded. Interface thread, which waits for it.
std::unique_ptr<CSample> createFromQVC(CQV* host, const CStr& path);
std::unique_ptr<CSample> renderClip(CQV* host, CStream* stream, double mostSeconds);
