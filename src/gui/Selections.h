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

/// Gives text to other programs: as the selections CLIPBOARD and PRIMARY, and in cut buffer 0,
/// which old programs share; that one is emptied by more than 64 KB.
void copyText(const CStr& text);
/// Gives them text that the user has selected, as PRIMARY alone.
void offerSelected(const CStr& text);
/// The text of PRIMARY, which the middle button pastes; empty as with `pasteText`.
CStr selectedText();
/// The text of CLIPBOARD, without an owner that of PRIMARY, else of cut buffer 0. Empty when there
/// is none, or when the program that has it does not answer for a second.
CStr pasteText();
