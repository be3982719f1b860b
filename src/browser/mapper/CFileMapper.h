#pragma once

#include "base/CStringList.h"
#include "engine/CFileMapperBase.h"

class CFileMapperWin;

/// Ending of the files of playlists.
constexpr const char* fileMapExt = ".qvf";

/// A playlist: the paths of projects in the order of a concert, of which a MIDI program change or
/// the user chooses one. There may be several, each in a file of its own; one is current. Interface
/// thread.
class CFileMapper : public CStringList, public CFileMapperBase {
public:
    CStr mapFile;                  ///< of the current one; empty until one was opened
    CStringList maps;              ///< paths of all
    int current = -1;              ///< index in `maps`; -1 until one is set
    CStr playNext;                 ///< project that waits to be opened; empty when none
    int program = 0;               ///< the project that was chosen last
    CFileMapperWin* win = nullptr; ///< not owned

    CFileMapper(); ///< finds the files, and opens the one that the settings name

    /// With a separator at its end; it need not be there.
    static CStr getRootFolder();
    /// Whether a name or path can be stored and read again: of lists it has no separator, and of
    /// both no sign that a list uses for itself.
    static bool canStore(const CStr& path);
    static bool canNameMap(const CStr& name);

    void addMap(const CStr& path) { maps.append(path); }
    int numFilemaps() const { return maps.count(); }
    CStr getFilemap(int i) const; ///< its name; -1 is the current one
    int getIndex() const { return current; }
    void setFilemap(int i);         ///< nothing outside the list
    void openMap(const CStr& path); ///< nothing without the file
    void saveMap();                 ///< in place of the file that is there; else nothing
    void deleteMap(int i);          ///< the file too
    /// Makes an empty one and chooses it; one of that name is chosen. False when it cannot be made.
    bool newMap(const CStr& name);

    void addProject(const CStr& path) { append(path); }
    int numProjects() const { return count(); }
    CStr getProject(int i) const { return get(i); }
    void removeProject(int i) { del(i); }
    void moveProject(int i, int dir); ///< by -1 or 1, inside the list

    void setProgram(int i, bool play) override;
    int getProgram() const { return program; }
    void setPlayNext(const CStr& path); ///< nothing without the file
    CStr getPlayNext() const { return playNext; }
    void clearPlayNext() { playNext = ""; }
    bool enabled() override { return getEnabled(); }
    bool getEnabled() const; ///< its window shows
};
