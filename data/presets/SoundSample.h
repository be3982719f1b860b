#pragma once

#include <vector>

class CSample;
class CStr;

namespace presets {

/// A sample in memory of two sides of one length, within -1 to 1, at 44100 Hz. Owned by the caller;
/// null without memory.
CSample* sampleOf(const CStr& name, const std::vector<float>& left,
                  const std::vector<float>& right);

} // namespace presets
