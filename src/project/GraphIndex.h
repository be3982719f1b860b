#pragma once

#include "engine/CComp.h"

#include <unordered_map>
#include <vector>

class CStream;

/// How files number what cables and maps point to. Lists as in a cable item.
enum FileList : int { fileHost = -1, fileComps = 0, fileSends = 2 };

/// Channels and ports of a component in the order of a file. Those of a sequencer stand by its
/// tracks, and only the ones that a file has: its audio tracks make their ports by themselves.
struct CompIO {
    CComp* comp = nullptr;
    std::vector<CInputChannel*> inputs;
    std::vector<COutputChannel*> outputs;
    std::vector<CMIDIQ*> inPorts, outPorts;
};

CompIO fileIO(CComp* c);

/// Where a file has an object: a component, or one of its channels or ports (`io`, else -1).
struct FilePlace {
    int list = fileHost, comp = 0, io = -1;
};

/// As the end of a cable.
void writePlace(CStream* stream, const FilePlace& place);

/// The components of a project by their numbers, to be filled while one is read, or from the whole
/// host in order to write. Valid as long as none of them changes.
class GraphIndex {
public:
    GraphIndex() = default;
    explicit GraphIndex(CQV* root);

    CompIO host;
    std::vector<CompIO> comps, sends;

    CompIO* at(int list, int index); ///< null outside, and for another list
    /// Null for what is neither the host nor in its lists, nor a channel or port there. Only of an
    /// index made from the host.
    const FilePlace* placeOf(const CObject* object) const;

private:
    std::unordered_map<const CObject*, FilePlace> places;

    void enter(const CompIO& io, int list, int index);
};
