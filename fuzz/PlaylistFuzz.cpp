#include "base/CStream.h"
#include "base/CStringList.h"
#include "browser/mapper/CXML.h"

#include <cstdlib>
#include <string>

// Playlists: any bytes are read, and what is in them is written and read again: then it is as it
// was, unless it has what a list cannot store.

namespace {

constexpr int mostBytes = 1 << 20;

void read(CXML& xml, const std::string& bytes) {
    CMemoryStream stream;
    stream.write(bytes.data(), int(bytes.size()));
    xml.decodeStream(&stream);
    if (xml.lines->count() > CXML::mostLines) abort();
}

std::string written(const CXML& xml) {
    CStringList lines;
    xml.asText(&lines);
    std::string text;
    for (const auto* line : each<CStringItem>(lines.list)) text += line->text.asChar();
    return text;
}

/// Names and texts of elements in the form in which they come out of the reader.
bool plain(const CXMLNode* node) {
    for (const auto* child : each<CXMLNode>(node->children)) {
        const std::string name = child->id.asChar(), text = child->value.asChar();
        if (name.empty() || name.find_first_of(" /?![CDATA") != std::string::npos) return false;
        if (text.find_first_of("\"") != std::string::npos || !plain(child)) return false;
    }
    return true;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const unsigned char* data, std::size_t size) {
    if (size > mostBytes) return 0;
    CXML once, twice;
    read(once, std::string(reinterpret_cast<const char*>(data), size));
    const std::string text = written(once);
    read(twice, text);
    if (plain(once.root.get()) && written(twice) != text) abort();
    return 0;
}
