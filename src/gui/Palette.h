#pragma once

/// The colours that a look is made of, as pixel values.
struct CPalette {
    int window, panel, raised, frame, text, dimText, accent, record, solo, mute;
    int meter[3]; ///< safe, high, over
};

/// The looks that are built in.
CPalette darkPalette();
CPalette lightPalette();
