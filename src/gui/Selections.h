#pragma once

#include "base/CObject.h"

class CList;

/// Kinds of dragged things. Numbers between are those of the browser's nodes.
enum DropType : int {
    dropFile = 0,
    dropSample = 10,
    dropDrumPad = 16,
    dropParam = 17,
    dropInsert = 18
};

/// One of the things being dragged, in `CApp::dragList`. Its name is shown at the pointer.
class CDropItem : public CObject {
public:
    CStr path;                 ///< of a file
    CObject* object = nullptr; ///< not owned
    CList* list = nullptr;     ///< not owned

    CDropItem(const CStr& name, int dropType) {
        id = name;
        type = dropType;
    }
};

/// The clipboard of plain text that old programs share: cut buffer 0.
void copyText(const CStr& text);
CStr pasteText(); ///< empty when there is none
