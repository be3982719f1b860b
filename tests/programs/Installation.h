#pragma once

#include "programs/Program.h"

/// The program and its modules in a folder of their own, with a home beside it.
class Installation {
public:
    Installation();
    /// The settings: the last project or, without one, the demo song, and what else is given.
    void set(const std::string& more) const;
    std::string program() const { return folder.file("sondrava"); }
    std::string settings() const { return folder.file("Sondrava.ini"); }
    std::string file(const std::string& name) const { return folder.file(name); }

private:
    const TempFolder folder;
};

/// An X server without a window manager; DISPLAY shows the way to it.
class ScreenServer {
public:
    explicit ScreenServer(const char* size = "1200x800x24");

private:
    Program server;
};
