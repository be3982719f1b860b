#pragma once

struct CPalette;

/// The colours of a part in a look.
struct PartColours {
    static constexpr double leastContrast = 3.0; ///< of marks to the body

    int body, header, outline;
    int mark; ///< notes, hits, and the body of waves
    int mute; ///< notes and hits that do not play
    int peak; ///< of waves
    int name; ///< on the header
};

/// Of a part of some colour, which may be any; what is not heard is faint.
PartColours partColours(const CPalette& palette, int own, bool heard);
