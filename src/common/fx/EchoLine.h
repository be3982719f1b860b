#pragma once

#include "base/ZeroPages.h"

#include <algorithm>

/// Long memory for an echo. It takes no room until it is written to, and no longer to clear than
/// what was written. Made on the interface thread, then the graph holder's.
class EchoLine {
public:
    explicit EchoLine(int frames) : values(makeZeroPages<float>(std::size_t(frames))) {}

    float* data() const { return values.get(); }
    void wroteTo(int end) { reach = std::max(reach, end); } ///< no frame from `end` on
    /// Whether the first `frames` are zeros.
    bool quiet(int frames) const {
        const float* first = values.get();
        return std::all_of(first, first + std::min(frames, reach),
                           [](float v) { return v == 0.0f; });
    }
    void clear() {
        std::fill_n(values.get(), reach, 0.0f);
        reach = 0;
    }

private:
    ZeroPages<float> values;
    int reach = 0; ///< behind the last frame that may be no zero
};
