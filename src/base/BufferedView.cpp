#include "base/BufferedView.h"

#include "base/Numbers.h"

#include <algorithm>
#include <cstring>
#include <utility>

BufferedView::BufferedView(CStream* parent, int64_t last)
    : from(parent), begin(parent->getPos()), end(std::min(last, parent->getSize())),
      windowAt(begin) {
}

int BufferedView::read(void* to, int bytes) {
    auto* target = static_cast<unsigned char*>(to);
    int done = 0;
    bytes = int(std::clamp<int64_t>(end - windowAt - used, 0, bytes));
    while (done < bytes && (used < filled || fill())) {
        const int n = std::min(bytes - done, filled - used);
        std::memcpy(target + done, window + used, size_t(n));
        used += n;
        done += n;
    }
    return done;
}

bool BufferedView::fill() {
    windowAt += filled;
    used = filled = 0;
    from->setPos(windowAt);
    filled = from->read(window, int(std::clamp<int64_t>(end - windowAt, 0, windowBytes)));
    return filled > 0;
}

int64_t BufferedView::setEnd(int64_t position) {
    return std::exchange(end, position);
}

int BufferedView::seek(int64_t offset, int whence) {
    const int64_t origin = whence == seekStart ? 0 : whence == seekEnd ? end : getPos();
    const int64_t wanted = std::clamp(origin + offset, begin, std::max(begin, end));
    if (wanted < windowAt || wanted > windowAt + filled) {
        windowAt = wanted;
        filled = 0;
    }
    used = int(wanted - windowAt);
    return pos();
}

int BufferedView::pos() {
    return saturate(getPos());
}

bool BufferedView::readText(CStr& text, int longest) {
    constexpr int lengthBytes = int(sizeof(int));
    if (!has(lengthBytes)) return false;
    const int64_t at = getPos();
    const int length = readInt();
    if (length < 0 || length > longest || !has(length)) {
        setPos(at);
        return false;
    }
    text.resize(length);
    read(text.buffer(), length);
    return true;
}
