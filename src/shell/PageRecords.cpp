#include "shell/PageRecords.h"

#include "base/CStream.h"
#include "base/Numbers.h"

namespace {

constexpr int longestName = 64, countBytes = 4;

} // namespace

std::vector<unsigned char> pageRecord(const CStr& name) {
    CMemoryStream stream;
    stream.writeStr(name);
    stream.writeInt(0);
    stream.writeInt(0);
    return {stream.data, stream.data + stream.size};
}

CStr pageName(const std::vector<unsigned char>& record) {
    CMemoryStream stream;
    stream.write(record.data(), int(record.size()));
    stream.seek(0, 0);
    const int length = record.size() < countBytes ? 0 : stream.readInt();
    if (length < 1 || length > int(record.size()) - countBytes) return "Untitled";
    char text[longestName + 1] = {};
    stream.read(text, asMin(length, longestName));
    return text;
}
