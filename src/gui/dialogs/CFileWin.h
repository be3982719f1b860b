#pragma once

#include "base/CStringList.h"
#include "gui/dialogs/CDialogWin.h"

#include <functional>

class CButton;
class CFileList;
class CLabel;
class CListbox;
class CPathEdit;

/// Asks for a file to open, or for the name of a file to save:
///
///     CFileWin dialog(this, "Open", ".qv", projectFolder, "", false);
///     dialog.showModal();
///     if (dialog.result) open(dialog.path);
///     projectFolder = dialog.folder;
///
/// A path may be typed in both fields, from the folder shown, the root, or "~"; what is typed is
/// completed. In the save form a name without one of the extensions gets the first of them, and an
/// existing file is overwritten only after "File exists. Overwrite?".
class CFileWin : public CDialogWin {
public:
    CStr path; ///< the file chosen, in full; empty without a result
    /// A file of the list is marked: it may be shown or played before it is chosen.
    std::function<void(const CStr& file)> onMarked;
    CStr folder; ///< the folder shown, with a separator at its end; a place to begin next time

    /// `owner` is never null. `ext` are the extensions, as ".A|.B" in any case; empty and ".*" take
    /// all files. A `startFolder` that is empty or gone becomes the nearest one around it, or the
    /// home folder. `name` is what stands in the name field at first.
    CFileWin(CWin* owner, const CStr& title, const CStr& ext, const CStr& startFolder,
             const CStr& name, bool save);

    /// A favourite folder at the left, behind those of `getDefaultFolders`; a path that is there
    /// already is passed over. Before `showModal`.
    void addPlace(const CStr& name, const CStr& placePath);

    void accept() override;
    /// Alt-Up goes to the folder around, Up and Down from the name to the list.
    bool keyDown(int key, int mods) override;

protected:
    enum Form : int { openForm, saveForm, folderForm };

    CFileWin(CWin* owner, const CStr& title, const CStr& ext, const CStr& startFolder,
             const CStr& name, Form form);

private:
    void makeTop();
    void makeLists(const CStr& ext);
    void makeName(const CStr& name);
    bool enter(const CStr& wanted);
    void enterNearest(const CStr& wanted);
    void showStatus(const CStr& text, bool isError);
    void showCount();
    bool fail(const CStr& text);
    bool chooseFile(const CStr& file);
    bool canSave(const CStr& file);
    bool hasExtension(const CStr& file) const;
    CStr extension(int index) const;
    bool openRow();
    void acceptFolder();
    void upClicked(CObject* sender);
    void newFolderClicked(CObject* sender);
    void placeChanged(CObject* sender);
    void rowChanged(CObject* sender);
    void rowOpened(CObject* sender);
    bool pathKey(CObject* sender, int& key, int mods);
    void paintUp(CButton* sender, CGraphic* g, CRect rect);

    Form form;
    CStringList placePaths;
    CPathEdit *pathEdit = nullptr, *nameEdit = nullptr;
    CListbox* places = nullptr;
    CFileList* files = nullptr;
    CLabel* status = nullptr;
};

/// Asks for a folder, which comes in `path` with a separator at its end.
class CFolderWin : public CFileWin {
public:
    CFolderWin(CWin* owner, const CStr& title, const CStr& startFolder)
        : CFileWin(owner, title, CStr(), startFolder, CStr(), folderForm) {}
};
