#pragma once

#include "project/GraphIndex.h"

class BlockNames;
class ItemView;
struct CompHead;

/// The eight numbers of an editor's item.
void readEditorStruct(ItemView& item, CEditorStruct& editor);

/// Builds components from the items of a file. Their order tells what belongs where: channels,
/// strips and inserts to the latest component, output or insert. What has no such owner is left
/// out, as is what passes the limits that keep a bad file small. Graph held.
class CompReader {
public:
    static constexpr size_t maxComps = 1024; ///< per list; of the sends there are `maxSends`
    static constexpr int maxOfComp = 255;  ///< of a kind of channel or port: cables count in a byte
    static constexpr int maxOfKind = 4096; ///< the same of all components

    CompReader(CQV* root, GraphIndex& graph);

    /// Reads one item; false when it is none of a component.
    bool readItem(const CStr& id, ItemView& item);

    static void addNames(BlockNames& names); ///< those of its items

    CComp* current() const { return io ? io->comp : nullptr; }
    std::vector<CStr> notLoaded; ///< names of plug-ins that are not there, or did not open

private:
    /// Strips stand at outputs, but for those of the host; sends at strips, but for those of buses.
    enum Owner { ofNone, ofComp, ofStrip, ofSource, ofInsert };
    struct Kind {
        const char* id;
        Owner owner;
        void (CompReader::*read)(ItemView& item);
    };
    static const Kind kinds[];

    CQV* host;
    GraphIndex& index;
    CompIO* io = nullptr;             ///< of the latest component; in `index`
    COutputChannel* output = nullptr; ///< the latest of it
    CComp* insert = nullptr;          ///< the latest of that
    int inputs = 0, outputs = 0, inPorts = 0, outPorts = 0, inserts = 0; ///< of all components

    bool has(Owner owner) const;
    CompIO* place(int type, int listKind);
    void fill(CComp* c, ItemView& item, const CompHead& head);
    void readComp(ItemView& item, bool full);
    void readInsert(ItemView& item, bool full);

    void oldComp(ItemView& item) { readComp(item, false); }
    void comp2(ItemView& item) { readComp(item, true); }
    void oldInsert(ItemView& item) { readInsert(item, false); }
    void insert2(ItemView& item) { readInsert(item, true); }
    void compInPort(ItemView& item);
    void compOutPort(ItemView& item);
    void compInput(ItemView& item);
    void compOutput(ItemView& item);
    void insertInPort(ItemView& item);
    void insertOutPort(ItemView& item);
    void insertInput(ItemView& item);
    void insertOutput(ItemView& item);
    void currentOutput(ItemView& item);
    void folded(ItemView& item);
    void compEditor(ItemView& item) { readEditorStruct(item, io->comp->editorStruct); }
    void insertEditor(ItemView& item) { readEditorStruct(item, insert->editorStruct); }
    void oldStrip(ItemView& item);
    void strip(ItemView& item);
    void soloSafe(ItemView& item);
    void eq(ItemView& item);
    void eq2(ItemView& item);
    void sends(ItemView& item);
    void wet(ItemView& item);
};
