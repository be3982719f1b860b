#pragma once

/// The block callback of the driver module. `ins` and `outs` are the buffers of the enabled device
/// channels; `events` holds room for `aamMaxEvents` records: `numEvents` that came in, then those
/// to send, whose count it returns. The outputs are silent when the graph is off, or held by the
/// interface for longer than a quarter of the block, or made for smaller blocks. Audio thread.
long libio(float** ins, float** outs, long numIns, long numOuts, long frames, void* events,
           int numEvents);

/// Marks a thread as working for `libio`, for as long as it lives.
class CallbackMark {
public:
    CallbackMark();
    ~CallbackMark();
    CallbackMark(const CallbackMark&) = delete;
    CallbackMark& operator=(const CallbackMark&) = delete;
};

/// Whether this thread is inside `libio` with the graph: no allocation, no lock, no system call.
bool insideCallback();
