#pragma once

#include <string>
#include <sys/types.h>
#include <vector>

struct _XDisplay;

/// An X server without a screen, for a benchmark alone, and programs on it that find none of the
/// user's settings, sound servers or sessions. All end with it.
class OwnDisplay {
public:
    OwnDisplay(int width, int height);
    ~OwnDisplay();
    OwnDisplay(const OwnDisplay&) = delete;
    OwnDisplay& operator=(const OwnDisplay&) = delete;

    _XDisplay* display = nullptr; ///< null if no server came up
    pid_t server = -1;

    /// Starts a program in a folder; its words go nowhere unless `loud`.
    pid_t start(const std::vector<std::string>& words, const std::string& folder, bool loud);
    static void stop(pid_t program); ///< asks it first

private:
    void surround() const;
    std::string home;
    std::vector<pid_t> programs;
};
