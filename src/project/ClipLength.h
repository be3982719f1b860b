#pragma once

class CStr;

/// How long the part of a clip will be: in ticks, or, for a sound at its own speed, in seconds. The
/// other is 0, and both are for what is none.
struct ClipLength {
    int ticks = 0;
    double seconds = 0.0;
};

/// By the heads of its blocks, past the samples. Any thread but the audio thread.
ClipLength clipLength(const CStr& path);
