#pragma once

#include "base/CStr.h"

#include <cstdint>
#include <deque>
#include <optional>
#include <poll.h>
#include <string>
#include <vector>

/// The files that a helper finds open: its end of the socket, and the room that it shares.
enum HelperFile : int { socketFile = 3, roomFile = 4, helperFilesEnd = 5 };

/// What the program asks a helper, one thing at a time; the same goes back as the answer.
enum class HelperCall : int {
    load,       ///< a path; the file is that of the plug-in's room. Answer: see `LoadAnswer`
    unload,     ///< no answer
    stereoPair, ///< a pin; `number` 1 of the inputs
    paramName,
    paramText,
    paramTexts, ///< of all: each with a zero behind
    setProgram,
    programName,
    currentProgramName,
    renameProgram,
    chunk, ///< `index` 1 of all programs
    setChunk,
    files, ///< of all: name and path, each with a zero behind
    setFile,
    setRate,
    setBlock,
    setRunning,
    openEditor, ///< in the window `number`; no answer but the event of its size
    closeEditor,
};

/// A message between the program and a helper.
struct HelperMessage {
    struct Head {
        HelperCall what{};
        int plugin = 0;    ///< its number
        unsigned turn = 0; ///< of the call, and of its answer
        int index = 0;     ///< of an answer: whether it went well, or what
        double number = 0.0;
        unsigned size = 0; ///< of the bytes that follow
        int withFile = 0;  ///< 1: a file comes with it
    };
    Head head;
    std::string bytes{};
    int file = -1; ///< sent: not owned; received: the receiver's
};

/// A text as the bytes of a message.
inline std::string bytesOf(const CStr& text) {
    return {text.asChar(), size_t(text.length())};
}

/// What `load` answers in `index`, with the plug-in's id in `number`, and vendor and product with a
/// zero between; without `loaded` the reason.
enum LoadAnswer : int {
    isInstrument = 1,
    canSendMidi = 2,
    hasState = 4,
    hasWindow = 8,
    loaded = 16,
    hasFiles = 32
};

/// One end of what a program and a helper talk through. Waits only where told. One thread.
class MessageSocket {
public:
    static constexpr unsigned longest = 1u << 30; ///< bytes of a message

    explicit MessageSocket(int file); ///< takes it over
    ~MessageSocket();
    MessageSocket(const MessageSocket&) = delete;
    MessageSocket& operator=(const MessageSocket&) = delete;

    void send(HelperMessage message); ///< what does not go out at once waits
    std::optional<HelperMessage> receive();
    /// Until there may be something, or in one of other files, for `ms` at most.
    void wait(int ms, std::vector<pollfd> others = {});
    bool closed() const { return ended; } ///< the other end is gone, or tells nonsense

private:
    void flush();
    void take();

    const int socket;
    bool ended = false;
    struct Waiting {
        std::string bytes;
        size_t sent = 0;
        int file = -1; ///< a copy, owned
    };
    bool sendSome(Waiting& message);
    std::deque<Waiting> out;
    std::string in;
    std::deque<int> files;
};
