#pragma once

#include <cstdint>

/// What a driver module and the program agree on. The module is a shared library with one entry
/// point that reaches all audio and MIDI hardware:
///
///     extern "C" intptr_t libaam(intptr_t op, intptr_t a, intptr_t b);
///
/// All operations come from one thread, the interface thread; between `aamStart` and `aamStop` the
/// module calls back once per block from a thread of its own. Pointers pass as intptr_t.
/// An operation that the module does not know answers 0.

/// Every name is written with its closing 0 into a buffer of the caller of at least this size.
constexpr int aamNameBytes = 256;
/// Audio channels of a device that can be enabled, each way. A device never reports more.
constexpr int aamMaxChannels = 32;
/// Records that fit into the array of events, coming in or going out.
constexpr int aamMaxEvents = 8192;
/// Block sizes that a device may grant.
constexpr int aamMinFrames = 1;
constexpr int aamMaxFrames = 16384;

/// One MIDI message on its way in or out: of a channel, or a short one of the system such as
/// clock, start and song position, but for active sensing.
struct AamEvent {
    int32_t data;  ///< packed: status in the low byte, then the data bytes
    int8_t device; ///< index of the MIDI input or output; going out, -1 means all enabled ones
    int8_t pad[3]; ///< unused
    int32_t frame; ///< from the start of the block, 0 to frames - 1
};
static_assert(sizeof(AamEvent) == 12);

/// A system exclusive message, from 0xF0 to 0xF7.
struct AamMessage {
    int32_t device; ///< index of the MIDI input or output; going out, -1 means all enabled ones
    int32_t frame;  ///< of the next block, at which it goes out; 0 coming in
    int32_t length; ///< bytes; to be told of one that came, those there is room for
    int32_t pad;
    unsigned char* bytes; ///< the caller's
};
constexpr int aamMostMessage = 65536; ///< bytes

/// Called once per block on the module's audio thread.
/// `ins` and `outs` hold one buffer of `frames` floats for each enabled channel of the device, in
/// the order of the channels. `events` is an array of `aamMaxEvents` AamEvent of which the first
/// `numEvents` came in; on return it holds those to send, and the result is their count. The
/// program fills all of `outs`, in the range -1 to 1.
using AamCallback = long (*)(float** ins, float** outs, long numIns, long numOuts, long frames,
                             void* events, int numEvents);

using AamEntry = intptr_t (*)(intptr_t op, intptr_t a, intptr_t b);

enum AamOp : intptr_t {
    aamInit = 0,     ///< a: AamCallback. First call; the MIDI ports are listed now.
    aamOpen = 1,     ///< a: device index. -1 on failure, else 0. Closes what was open.
    aamClose = 2,    ///< a: device index, not looked at.
    aamStart = 3,    ///< Starts calling back.
    aamStop = 4,     ///< a: device index, not looked at. No callback runs any more on return.
    aamShutdown = 5, ///< Last call. `aamInit` may follow again.
    aamSettings = 6, ///< Would show the module's own settings; it has none.

    aamDeviceCount = 7, ///< Count of audio devices; lists anew while no device is open.
    aamDeviceName = 8,  ///< a: index, b: char*

    /// a: frames to ask for at the next open, -1 for what the device has; 0 asks for the granted
    /// size. Answers the granted size, without an open device the one that will be asked for.
    aamFrames = 9,
    aamRate = 10, ///< a: Hz to ask for; or 0 with b: float* that takes the granted rate.

    /// 1 if the device has to be closed and opened again, since the server changed its block or
    /// rate, or it is gone. Answers 1 once for each cause.
    aamNeedsReopen = 18,

    aamMidiInCount = 30,
    aamMidiInName = 31,   ///< a: index, b: char*
    aamMidiInEnable = 32, ///< a: index, b: flag. All ports start disabled.
    aamMidiInEnabled = 33,
    aamMidiOutCount = 35,
    aamMidiOutName = 36,   ///< a: index, b: char*
    aamMidiOutEnable = 37, ///< a: index, b: flag
    aamMidiOutEnabled = 38,

    /// Channels of the open device, 0 without one. The flags belong to the module, not to the
    /// device: they may be set before the open, and they stay when it is closed.
    aamAudioInCount = 40,
    aamAudioInName = 41,   ///< a: index, b: char*
    aamAudioInEnable = 42, ///< a: index, b: flag. Holds from the next block on.
    aamAudioInEnabled = 43,
    aamAudioOutCount = 50,
    aamAudioOutName = 51,
    aamAudioOutEnable = 52,
    aamAudioOutEnabled = 53,

    /// a: const AamMessage*, which is copied. Answers 1 if it goes out, 0 when too much waits.
    aamMessageSend = 60,
    /// a: AamMessage*. Takes the oldest that came at an enabled input: answers 1, or 0 without one.
    /// 256 KB may wait at each input; what does not fit is lost, message by message.
    aamMessageTake = 61,

    /// a: number of a thread of this process, b: priority, 1 to 99. Asks for real-time scheduling
    /// of it, as the module does for its own thread. Answers 1 when it has it.
    aamRealtime = 62,

    // For tests; the program itself calls none of these. They work on every device.

    /// a: path. What the program plays goes into a 32-bit float WAV file with a channel for each
    /// output enabled now, from the next block on, or from `aamStart` on. It ends with a null path
    /// or when the device is closed. Answers -1 if the file cannot be written.
    aamTestCapture = 101,
    /// a: path of a WAV file (16-bit or float). From the next block on its channels stand in for
    /// the enabled inputs, then silence. A null path ends it. Answers -1 if it cannot be read.
    aamTestFeed = 102,
    aamTestStatistics = 103, ///< a: AamStatistics*. Counted since the device was opened.
    /// a: const AamEvent*. Comes in with the next block, enabled or not. -1 if too many wait.
    aamTestInject = 104,
    /// a: AamEvent*, b: int64_t* or null. Takes the oldest event that went out, and into b its
    /// frame counted from the open: answers 1, or 0 if there is none. A null `a` forgets what was
    /// collected and starts collecting.
    aamTestTake = 105,
};

/// What has happened since the device was opened.
struct AamStatistics {
    int64_t blocks; ///< callbacks made
    /// Callbacks that took longer than their block lasts; on the Silent clock those that ended when
    /// a card with a buffer of three blocks would have run empty.
    int64_t lateBlocks;
    int64_t xruns;       ///< gaps that the sound system reported or that the clock skipped
    int64_t lostFrames;  ///< frames missing in the captured file since its writer fell behind
    int64_t worstMicros; ///< longest callback
    int64_t heavyBlocks; ///< callbacks that took longer than half of what their block lasts
    /// Of `lateBlocks`, on the Silent clock: those that would have been in time had the system
    /// woken it when it asked for that.
    int64_t wokenLate;
};
