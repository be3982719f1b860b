#pragma once

#include "base/CList.h"
#include "base/CObject.h"
#include "base/CStr.h"

#include <memory>

class CStream;
class CStringList;

/// An element: its name is the `id`. It owns what lies in it, at whatever depth.
class CXMLNode : public CObject {
public:
    CXMLNode* parent = nullptr; ///< null at the root
    CStr value;                 ///< the text of an element without others inside
    ListOf<CXMLNode> children;  ///< owned

    CXMLNode() = default;
    ~CXMLNode() override;
    CXMLNode(const CXMLNode&) = delete;
    CXMLNode& operator=(const CXMLNode&) = delete;

    CXMLNode* add(const CStr& name, const CStr& text); ///< at the end
    CStr getId() const { return id; }
    int numNodes() const { return children.getCount(); }
    CXMLNode* getNode(int i) const; ///< null outside the list
    void clear();
};

/// Reads and writes the small XML files of playlists: elements, texts, CDATA, and of entities
/// "&apos;", which stands for a double quote in them. What it reads of other XML is what its
/// states make of it, byte by byte; any bytes can be read. Interface thread.
class CXML {
public:
    static constexpr int deepest = 256;    ///< elements inside each other; further ones are ignored
    static constexpr int mostLines = 1000; ///< of `lines`
    static constexpr int lineBytes = 512;  ///< of one of them

    const std::unique_ptr<CStringList> lines; ///< what was read, and what was wrong with it
    const std::unique_ptr<CXMLNode> root;     ///< without a name

    CXML();
    ~CXML();
    CXML(const CXML&) = delete;
    CXML& operator=(const CXML&) = delete;

    /// Replaces the content by that of a stream.
    void decodeStream(CStream* stream);
    /// The first element of that name, whatever the case, right inside `start`, null for the root;
    /// null without one.
    CXMLNode* getNode(const CStr& name, const CXMLNode* start = nullptr) const;
    CXMLNode* add(const CStr& name, const CStr& text) { return root->add(name, text); }
    void asText(CStringList* text) const; ///< adds the lines of a file
    /// Adds the lines of an element, of the root those in it.
    void writeNode(CStringList* text, const CXMLNode* node) const;
    static CStr filterStr(const CStr& text); ///< with the entity replaced
};
