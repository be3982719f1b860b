#pragma once

#include "base/CObject.h"
#include "base/CStr.h"

class CStringItem;
class CStringList;

/// Path of the settings file of the program; set once, at its start.
extern CStr inifile;

/// A text file of sections, [name], with entries, key=value. Names are found whatever their case.
/// Each call reads the file anew, and each change puts a new one in its place at once, unless a
/// `CIniBatch` gathers them. A file that is missing or cannot be read is an empty one. A write that
/// fails is silent, and leaves the old file.
class CIniFile : public CObject {
public:
    explicit CIniFile(const CStr& file) : path(file) {}

    CStr path;

    /// The trimmed text behind the first "="; `def` without such an entry.
    CStr readString(const CStr& section, const CStr& key, const CStr& def);
    int readInteger(const CStr& section, const CStr& key, int def); ///< `def` for what is no number
    /// Replaces the value, or adds the entry in front of the section's trailing blank lines, or the
    /// section at the end. All three texts are cut at their first line end.
    void writeString(const CStr& section, const CStr& key, const CStr& value);
    void writeInteger(const CStr& section, const CStr& key, int value);
    /// Adds the lines of a section that are not blank, whole.
    void readSection(const CStr& section, CStringList* lines);
    void eraseValue(const CStr& section, const CStr& key);
    void eraseSection(const CStr& section);
};

/// Gathers changes: as long as one stands, all calls for its file work in memory, and what has
/// changed is written at its end in one step. One inside another for the same file joins it, one
/// for another file does nothing. Interface thread.
class CIniBatch {
public:
    explicit CIniBatch(const CStr& file);
    ~CIniBatch();
    CIniBatch(const CIniBatch&) = delete;
    CIniBatch& operator=(const CIniBatch&) = delete;

private:
    const bool outermost;
};

CStr iniReadString(const CStr& section, const CStr& key, const CStr& def); ///< from `inifile`
int iniReadInt(const CStr& section, const CStr& key, int def);

/// The name in a line of the form [name]; empty for any other. The argument is trimmed in place.
CStr strToSection(CStr& line);
CStr strToSection(const CStr& line);
CStr strToIdent(const CStr& line); ///< trimmed, in front of the first "="; empty when there is none
CStr strToValue(const CStr& line); ///< the same behind it
