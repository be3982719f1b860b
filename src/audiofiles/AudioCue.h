#pragma once

#include <string>

/// A place that a file names.
struct AudioCue {
    int frame = 0;    ///< within the file
    std::string name; ///< may be empty
};
