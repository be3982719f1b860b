#pragma once

#include "base/CList.h"
#include "base/CObject.h"
#include "base/CStr.h"

/// A string of a CStringList.
class CStringItem : public CObject {
public:
    explicit CStringItem(const CStr& s) : text(s) {}

    CStr text;
};

/// Strings that the list owns. One thread.
class CStringList : public CObject {
public:
    CStringList() = default;
    ~CStringList() override;
    CStringList(const CStringList&) = delete;
    CStringList& operator=(const CStringList&) = delete;

    ListOf<CStringItem> list; ///< owned
    bool sorted = false;      ///< `add` sorts, without regard to case; equal ones stay in order

    void add(const CStr& s);           ///< sorted or at the end
    void append(const CStr& s);        ///< at the end, sorted or not
    void insert(int i, const CStr& s); ///< as CList::insert, sorted or not
    CStr get(int i) const;             ///< empty outside the list
    CStr getStr(int i) const { return get(i); }
    CStr first() const { return get(0); }
    void setItem(int i, const CStr& s); ///< nothing happens outside the list
    int count() const { return list.getCount(); }
    int getCount() const { return count(); }
    int indexOf(const CStr& s) const; ///< byte by byte; -1 when absent
    void del(int i);
    void exchange(int i, int j);
    void clear();

    /// Replaces a file by the lines, in one step, with CR LF between them and none at the end.
    /// False when that failed; the old file stays.
    bool save(const CStr& path) const;
    /// Adds the lines of a text file at the end, trimmed. Without the file nothing changes.
    void open(const CStr& path);
};
