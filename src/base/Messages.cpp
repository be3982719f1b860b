#include "base/Messages.h"

#include "base/Atomic.h"
#include "base/Numbers.h"

#include <cstdio>
#include <cstring>
#include <thread>

namespace {

Shared<std::thread::id> interfaceThread{std::this_thread::get_id()};

/// Messages of other threads, from any number of them to the interface thread, without a lock. A
/// slot's `turn` is the count of the message that it waits for, plus 1 once that is in it.
class MessageQueue {
public:
    MessageQueue() {
        for (unsigned i = 0; i < slotCount; ++i) slots[i].turn = i;
    }
    void put(const CStr& title, const CStr& text, int flags);
    bool take(CStr& title, CStr& text, int& flags);

private:
    static constexpr unsigned slotCount = 16;
    struct Slot {
        Shared<unsigned> turn{0};
        int flags = 0;
        char title[128] = {};
        char text[512] = {};
    };

    Slot slots[slotCount];
    Shared<unsigned> written{0};
    unsigned taken = 0;
};

void MessageQueue::put(const CStr& title, const CStr& text, int flags) {
    unsigned mine = written;
    Slot* slot = nullptr;
    do {
        slot = &slots[mine % slotCount];
        const unsigned turn = slot->turn.loadAcquire();
        if (int(turn - mine) < 0) return;
        if (turn != mine) {
            mine = written;
            slot = nullptr;
        }
    } while (!slot || !written.compareExchange(mine, mine + 1));
    slot->flags = flags;
    std::snprintf(slot->title, sizeof(slot->title), "%s", title.asChar());
    std::snprintf(slot->text, sizeof(slot->text), "%s", text.asChar());
    slot->turn.storeRelease(mine + 1);
}

bool MessageQueue::take(CStr& title, CStr& text, int& flags) {
    Slot& slot = slots[taken % slotCount];
    if (slot.turn.loadAcquire() != taken + 1) return false;
    title = slot.title;
    text = slot.text;
    flags = slot.flags;
    slot.turn.storeRelease(taken + slotCount);
    ++taken;
    return true;
}

MessageQueue& messageQueue() {
    static MessageQueue queue;
    return queue;
}

void printLine(const CStr& text) {
    std::fprintf(stderr, "%s\n", text.asChar());
}

} // namespace

MessageHooks& messageHooks() {
    static MessageHooks hooks;
    return hooks;
}

void markInterfaceThread() {
    interfaceThread = std::this_thread::get_id();
}

bool isInterfaceThread() {
    return interfaceThread.load() == std::this_thread::get_id();
}

int answerOfEscape(int flags) {
    for (int button : {mbCancel, mbNo, mbOk}) {
        if (flags & button) return button;
    }
    return mbOk;
}

int showMsg(CWin* window, const CStr& title, const CStr& text, int flags) {
    if (!isInterfaceThread()) {
        messageQueue().put(title, text, flags);
        return answerOfEscape(flags);
    }
    if (auto* show = messageHooks().showMsg) return show(window, title, text, flags);
    printLine(title + ": " + text);
    return answerOfEscape(flags);
}

void showQueuedMessages() {
    CStr title, text;
    int flags = 0;
    while (messageQueue().take(title, text, flags)) showMsg(nullptr, title, text, flags);
}

void setStatus(const CStr& text) {
    auto* show = messageHooks().setStatus;
    if (show && isInterfaceThread()) show(text);
}

void pumpIdle() {
    auto* pump = messageHooks().pumpIdle;
    if (pump && isInterfaceThread())
        pump();
    else
        asSleep(1);
}

void showStr(const CStr& text) {
    printLine(text);
}

void dbg(const char* text) {
    printLine(text);
}
