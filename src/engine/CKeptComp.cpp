#include "engine/CKeptComp.h"

#include "base/CStream.h"

#include <algorithm>

void CKeptComp::read(CStream* stream, int end) {
    const int64_t last = std::min<int64_t>(end, stream->getSize());
    content.resize(size_t(std::max<int64_t>(last - stream->getPos(), 0)));
    content.resize(size_t(stream->read(content.data(), int(content.size()))));
}

void CKeptComp::write(CStream* stream) {
    stream->write(content.data(), int(content.size()));
}
