#pragma once

#include "base/CObject.h"

class CApp;
class CFileWin;
class CQV;

/// Gives every file dialog the user's own places: desktop, documents and music, the folders of
/// projects, and those in which the recent projects lie. For as long as it lives.
class DialogPlaces : public CObject {
public:
    DialogPlaces(CApp* app, CQV* host);
    ~DialogPlaces() override;
    DialogPlaces(const DialogPlaces&) = delete;
    DialogPlaces& operator=(const DialogPlaces&) = delete;

private:
    void dialogMade(CFileWin* dialog);

    CApp* app;
    CQV* qv;
};
