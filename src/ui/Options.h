#pragma once

#include <functional>

class CQV;

/// One choice of the user, a number in section "options" of the settings.
class Option {
public:
    const char* const key;
    std::function<void()> onChange; ///< somebody has chosen

    Option(CQV* host, const char* name, int def);

    int get() const;
    bool on() const { return get() != 0; }
    void set(int value); ///< in force and in the settings at once
    void toggle() { set(!on()); }

private:
    CQV* qv;
    int usual;
};

/// The choices that more than one window shows or follows. Interface thread.
class Options {
public:
    explicit Options(CQV* host);
    Options(const Options&) = delete;
    Options& operator=(const Options&) = delete;

    Option savePlace;    ///< projects bring the window's place along
    Option savePrompt;   ///< ask about unsaved changes
    Option randomColour; ///< of new tracks
    Option spectrum;     ///< beside the transport
    Option hints;        ///< in the line at the bottom
    Option tabsAlways;   ///< tabs of the pages even where there is only one
    Option ribbon;
    Option outlineParts;
    Option invertZoom;       ///< the wheel zooms in upwards
    Option adaptiveGrid;     ///< the grid of a view follows its zoom
    Option relativeSnap;     ///< drags go by steps of the grid, wherever they began
    Option altKey;           ///< SecondAlt: what acts as Alt with the mouse
    Option checkUpdates;     ///< ask for updates without being told to
    bool hasUpdates = false; ///< there is somebody who can be asked for them
};
