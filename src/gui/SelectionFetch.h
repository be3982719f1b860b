#pragma once

#include <string>

/// How another program answered a request for its selection.
enum class Fetched {
    given,
    refused, ///< it has none, or not in that form
    late     ///< nothing came for a second: it hangs
};

struct SelectionData {
    Fetched state = Fetched::refused;
    unsigned long type = 0; ///< atom
    std::string bytes;      ///< 32 MB at most
};

/// Asks the owner of a selection for its content in the form `target`, and waits for it. Both are
/// atoms; `time` is the server's, of the event that asks for it. Other programs that want a
/// selection of ours meanwhile get it; all other events stay in the queue. Interface thread.
SelectionData fetchSelection(unsigned long selection, unsigned long target, unsigned long time);
