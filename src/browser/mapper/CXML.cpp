#include "browser/mapper/CXML.h"

#include "base/CStream.h"
#include "base/CStringList.h"

#include <algorithm>
#include <string>
#include <vector>

namespace {

constexpr const char* prologue = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>";
constexpr char cdataWord[] = "![CDATA[";
constexpr int cdataLength = 8, cdataEnd = 3;
constexpr int blockBytes = 512;

enum class State { text, open, close, cdata, instruction, head };

/// The machine that the bytes of a file run through.
class Decoder {
public:
    explicit Decoder(CXML& target) : xml(target), current(target.root.get()) {}

    void take(char c) {
        if (c == 9 || c == 10 || c == 13) return;
        switch (c) {
        case '<':
            state = prologueSeen ? State::open : State::head;
            count = 0;
            return;
        case '>':
            return endTag();
        default:
            if (state == State::open && takeMark(c)) return;
            if (state == State::cdata && c == ']' && count < cdataEnd - 1) {
                count++;
                return;
            }
            (state == State::open || state == State::close ? name : text) += c;
        }
    }

private:
    /// What tells in a tag that it is no opening one.
    bool takeMark(char c) {
        if (count == 0 && name.empty() && (c == '/' || c == '?')) {
            state = c == '/' ? State::close : State::instruction;
            return true;
        }
        if (c != cdataWord[count]) return false;
        if (++count < cdataLength) return true;
        state = State::cdata;
        count = 0;
        return true;
    }

    void endTag() {
        if (state == State::cdata && count == cdataEnd - 1) {
            count++;
            return;
        }
        if (state == State::head) prologueSeen = true;
        if (state == State::open) openNode();
        if (state == State::close) closeNode();
        name.clear();
        text.clear();
        state = State::text;
    }

    void openNode() {
        if (depth >= CXML::deepest) return;
        depth++;
        indent += '.';
        name = name.substr(0, name.find(' '));
        current = current->add(name.c_str(), "");
        note(indent + "<" + name + ">");
    }

    void closeNode() {
        if (!current->parent || name != current->id.asChar())
            return note("xml decode error: no start tag found for '</" + name + ">'");
        depth--;
        current->value = CXML::filterStr(text.c_str());
        note(indent + text + "</" + name + ">");
        current = current->parent;
        indent.pop_back();
    }

    void note(const std::string& line) {
        if (xml.lines->count() < CXML::mostLines)
            xml.lines->append(line.substr(0, CXML::lineBytes).c_str());
    }

    CXML& xml;
    CXMLNode* current;
    State state = State::text;
    int count = 0, depth = 0;
    bool prologueSeen = false;
    std::string name, text, indent;
};

} // namespace

CXMLNode::~CXMLNode() {
    clear();
}

CXMLNode* CXMLNode::add(const CStr& name, const CStr& text) {
    auto* node = new CXMLNode;
    node->id = name;
    node->value = text;
    node->parent = this;
    children.add(node);
    return node;
}

CXMLNode* CXMLNode::getNode(int i) const {
    return children.items(i);
}

/// Level by level: a file tells how deep they lie in each other.
void CXMLNode::clear() {
    std::vector<CXMLNode*> doomed;
    const auto gather = [&doomed](CXMLNode* from) {
        while (auto* child = from->children.first()) {
            from->children.del(0);
            doomed.push_back(child);
        }
    };
    gather(this);
    for (size_t i = 0; i < doomed.size(); i++) gather(doomed[i]);
    for (CXMLNode* node : doomed) delete node;
}

CXML::CXML() : lines(std::make_unique<CStringList>()), root(std::make_unique<CXMLNode>()) {
}

CXML::~CXML() = default;

void CXML::decodeStream(CStream* stream) {
    root->clear();
    stream->setPos(0);
    Decoder decoder(*this);
    char block[blockBytes];
    for (int64_t left = stream->getSize(); left > 0;) {
        const int got = stream->read(block, int(std::min<int64_t>(left, blockBytes)));
        if (got < 1) break;
        for (int i = 0; i < got; i++) decoder.take(block[i]);
        left -= got;
    }
}

CXMLNode* CXML::getNode(const CStr& name, const CXMLNode* start) const {
    for (auto* node : (start ? start : root.get())->children)
        if (sameText(node->id, name)) return node;
    return nullptr;
}

void CXML::asText(CStringList* text) const {
    text->append(prologue);
    writeNode(text, root.get());
}

void CXML::writeNode(CStringList* text, const CXMLNode* node) const {
    const CStr open = "<" + node->id + ">", close = "</" + node->id + ">";
    const bool leaf = node->children.empty(), inside = node != root.get();
    if (leaf && inside) return text->append(open + node->value + close);
    if (inside) text->append(open);
    for (const auto* child : node->children) writeNode(text, child);
    if (inside) text->append(close);
}

CStr CXML::filterStr(const CStr& text) {
    static const std::string entity = "&apos;";
    std::string out = text.asChar();
    for (size_t at = 0; (at = out.find(entity, at)) != std::string::npos;)
        out.replace(at, entity.size(), "\"");
    return out.c_str();
}
