#pragma once

#include "base/CStr.h"

class CComp;
class CQV;
class CStream;

/// What an item such as "comp2" tells of a component in front of the component's own content.
struct CompHead {
    int category = 0, type = 0, listKind = 0;
    int posX = 0, posY = 0;
    CStr id;
    int enabled = 1;
    unsigned flags = 0; ///< without the busy bit of older programs
};

/// Writes a component as an item `id` ("comp2", "insert2", "soInsert2"): its head and its own
/// content. Before that it is told that it is being saved. Interface thread.
void writeCompChunk(CStream* stream, CComp* c, int listKind, const CStr& id);

/// Reads a head. The forms of item whose name has no "2" end it with the name of the component:
/// `full` false.
CompHead readCompHead(CStream* stream, bool full);
/// Gives a component what a head tells; its type stays.
void applyHead(CComp* c, const CompHead& head);
/// What stands for a type of a file: made by `createComp`, or a CKeptComp for a type that there is
/// no class for. Owned by the caller.
CComp* newStoredComp(CQV* root, int type);
/// Reads the payload of such an item up to position `end` as a new component, without channels and
/// ports, owned by the caller.
CComp* readCompChunk(CQV* root, CStream* stream, int end);
