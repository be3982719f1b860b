#pragma once

#include "engine/TakeOver.h"
#include "surfaces/CSysexData.h"

#include <memory>
#include <string>
#include <vector>

class CStream;

/// What an incoming value does. Files have these numbers.
enum SurfaceMode : int {
    surfaceParam = 0,
    surfaceBankDown = 1,
    surfaceBankUp = 2,
    surfaceTrackDown = 3, ///< the track above becomes the selected one
    surfaceTrackUp = 4,
    surfacePriorPage = 5, ///< of all sections
    surfaceNextPage = 6,
    surfacePageDown = 7, ///< of its own section
    surfacePageUp = 8,
    surfaceStore = 9,    ///< nothing: it is shown
    surfaceProgram = 10, ///< the value is that of program changes
    surfaceText = 11,    ///< shows a text of the preset
};
constexpr int surfaceModes = 12;

/// How a map is shown.
enum SurfaceControl : int { surfaceValue = 0, surfaceButton = 1, surfaceLabel = 4 };

/// A picture of the panel, as PNG; empty without one.
struct SurfaceImage {
    std::string name;
    int mode = 0, width = 0, height = 0;
    std::vector<unsigned char> png;
};
/// Reads a file ".png" as a picture; an empty one when it is none, or too large.
SurfaceImage loadTexture(const CStr& path);

/// One knob, fader or button of a device.
struct CHWCtrl {
    CStr name;
    int cc = 0;       ///< what it sends (engine/ControlSource.h), 0 to 127 of controllers
    CSysexData sysex; ///< that it sends in place of `cc`; `offset` is that of the value
    std::string sysexText;

    // What it does at present; not in files.
    int mode = surfaceParam; ///< of the map which served it last
    int val = 0;             ///< that the device has, 0 to 127
    int touched = 0;         ///< when it was moved last, as `asTimeInMS`
    TakeOver way;            ///< of the parameter; it waits to be picked up as that tells

    /// The byte of `sysex` that is the value; -1 none.
    int valueByte() const;
};

/// Knobs that belong together, such as a row of faders.
struct CHWCtrlGroup {
    CStr name;
    std::vector<CHWCtrl> ctrls;

    bool hasCC(int cc) const;
    int numCtrls() const { return int(ctrls.size()); }
    CHWCtrl* getCtrl(int i); ///< null outside
    CHWCtrl* addCtrl(const CStr& ctrlName, int cc);
};

/// What a group does on a page.
struct CControlMap {
    int mode = surfaceParam; ///< SurfaceMode
    int param = 0;           ///< of the first control of the group; the others follow
    int group = -1;          ///< index; -1 none
    int controlType = surfaceValue;
    SurfaceImage value, on, off;
    int textColour = 0;
    CStr label;
    std::vector<std::string> items;
    int left = 0, top = 0;
    int sxOffset = -1; ///< byte in the preset; -1 none
    int sxDataSize = 0;
    int takeOver = mapJump; ///< MapMode, of a parameter
    CStr text;              ///< of the preset, as it was read last; not in files
};

struct CControlSectionPage {
    CStr name;
    std::vector<CControlMap> maps;
};

/// A section of the panel, one of whose pages is current.
struct CControlPages {
    CStr name;
    int align = 0;
    std::vector<CControlSectionPage> pages;
    int current = 0;

    CControlSectionPage* page(); ///< the current one; null without any
};

/// The definition of a controller: its knobs, and what they do on which page. Interface thread.
class SurfaceDef {
public:
    static constexpr int mostParts = 4096; ///< groups, controls, sections, pages, maps of a file
    static constexpr int mostCtrls = 128;  ///< of a group
    static constexpr int mostItems = 4096; ///< texts of a map

    SurfaceImage background, logo;
    int textColour = 0;
    CSysexData getPreset, setPreset;
    std::string getPresetText, setPresetText;
    std::vector<CHWCtrlGroup> groups;
    std::vector<CControlPages> sections;

    /// Replaces all by what a file has; records that are not known are passed over, and a damaged
    /// one ends it: what came before stays.
    void read(CStream* stream);
    void write(CStream* stream) const;
    bool open(const CStr& path);       ///< false without the file
    bool save(const CStr& path) const; ///< in place of an old one, in one step
};
