#pragma once

#include "engine/StoredValue.h"

class CSampleClip;

/// Places in a sample that the user sets.
enum SampleMark : int { sampleStart, sampleLoop, sampleEnd, sampleMarks };

/// The frame at which a sample's playing begins or ends, or to which its loop goes back; start and
/// end keep their order. A voice that sounds keeps its start and end.
StoredValue sampleMark(CSampleClip* clip, int mark);
