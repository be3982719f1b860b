#pragma once

#include "gui/controls/CListbox.h"

#include <cstdint>

/// A row of a file list.
class CFileItem : public CListRow {
public:
    bool folder;

    CFileItem(const CStr& name, bool isFolder) : CListRow(name), folder(isFolder) {}
};

/// The content of one folder: folders first, then the files that pass `filter`, each by name; what
/// begins with a dot is left out. Names, and where they fit sizes and dates, stand in columns.
///
/// `onChange` tells that a row was chosen, `onDoubleClick` that it is to be opened, `onUp` that
/// Backspace asks for the folder around.
class CFileList : public CListbox {
public:
    CStr folder;               ///< that is shown, with a separator at its end; set by `setFolder`
    CStr filter;               ///< extensions as ".A|.B"; empty and ".*" take all
    bool foldersOnly = false;  ///< shows no files
    int folderCount = 0;       ///< rows that are folders
    COnChange* onUp = nullptr; ///< owned

    CFileList(CWin* win, const CStr& name, int left, int top, int width, int height);
    ~CFileList() override;

    /// Reads a folder, which may be the same one again, and chooses no row; with `keep` the one of
    /// the name that was chosen. False when it cannot be read; then nothing changes.
    bool setFolder(const CStr& path, bool keep);
    CFileItem* chosen() const { return static_cast<CFileItem*>(row(index)); } ///< null without one
    bool choose(const CStr& name); ///< does not report; false when there is no such row
    void alignItems();             ///< places the columns for the present width

    void resized() override;
    bool keyDown(int key, int mods) override;

protected:
    void paintRow(CGraphic* g, CRect rect, CListRow* line, const CGuiItem2& look) override;

private:
    void addItem(const CStr& name, bool isFolder);

    int sizeWidth = 0, dateWidth = 0; ///< of the columns in pixels, 0 not shown
};

CStr sizeText(int64_t bytes); ///< such as "812 B", "4.2 KB", "1.3 GB"
CStr dateText(int64_t time);  ///< seconds since 1970 in local time, as "2024-05-31 17:04"
