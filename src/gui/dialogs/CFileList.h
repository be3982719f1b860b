#pragma once

#include "gui/controls/CListbox.h"

#include <cstdint>

/// A row of a file list.
class CFileItem : public CListRow {
public:
    bool folder;
    bool known = false; ///< the two below have been asked for
    int64_t size = 0;   ///< bytes
    int64_t time = 0;   ///< of the last change, in seconds since 1970; 0 cannot be told

    CFileItem(const CStr& name, bool isFolder) : CListRow(name), folder(isFolder) {}
};

/// The content of one folder: folders first, then the files that pass `filter`, each by name; what
/// begins with a dot is left out. Names, and where they fit sizes and dates, stand in columns.
///
/// `onChange` tells that another row was chosen, `onDoubleClick` that a row is to be opened (by a
/// double click or Return), `onUp` that Backspace asks for the folder around. What is typed chooses
/// the next name that begins with it.
class CFileList : public CListbox {
public:
    CStr folder;               ///< that is shown, with a separator at its end; set by `setFolder`
    CStr filter;               ///< extensions as ".A|.B"; empty and ".*" take all
    bool foldersOnly = false;  ///< shows no files
    bool readable = true;      ///< the folder could be read
    COnChange* onUp = nullptr; ///< owned

    CFileList(CWin* win, const CStr& name, int left, int top, int width, int height);
    ~CFileList() override;

    /// Reads a folder, which may be the same one again. With `keep` the row that was chosen is
    /// chosen again, by its name. False when it cannot be read; the list is empty then.
    bool setFolder(const CStr& path, bool keep);
    CFileItem* item(int line) const { return static_cast<CFileItem*>(row(line)); }
    CFileItem* chosen() const { return item(index); } ///< null without one
    /// The row of that name, whatever the case if there is no exact one; -1 without one.
    int find(const CStr& name) const;
    /// The first row whose name begins with `start`, whatever the case; -1 without one, and for an
    /// empty start.
    int complete(const CStr& start, bool onlyFolders) const;
    void alignItems(); ///< places the columns for the present width

    void resized() override;
    bool keyDown(int key, int mods) override;

protected:
    void paintRow(CGraphic* g, CRect rect, int line, const CGuiItem2& look) override;

private:
    void learn(CFileItem* entry) const;

    int sizeColumn = 0, dateColumn = 0; ///< left edges in pixels, 0 not shown
};

CStr sizeText(int64_t bytes); ///< such as "812 B", "4.2 KB", "1.3 GB"
CStr dateText(int64_t time);  ///< local, as 2024-05-31 17:04; empty for 0
