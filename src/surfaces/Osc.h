#pragma once

#include "surfaces/SurfaceStrips.h"

#include <functional>
#include <map>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

class CComp;
class CQV;

using OscValue = std::variant<int, float, std::string>;

/// The program as a tree of Open Sound Control addresses: what the manual lists is set by messages,
/// and told when it changes, but for what a message has just moved. What it does not know, or what
/// makes no sense, does nothing. Interface thread.
class Osc {
public:
    static constexpr int restMs = 500;      ///< that an address is not told after it was moved
    static constexpr size_t mostTold = 256; ///< messages of one `idle`; the rest follows

    using Send = std::function<void(const std::string& path, const OscValue& value)>;
    struct Ways {
        std::function<CComp*()> front; ///< that the user has in front, or null
        std::function<void(const std::string& name)> action; ///< carries out a command
    };

    Osc(CQV* root, Ways known) : host(root), ways(std::move(known)) {}
    Osc(const Osc&) = delete;
    Osc& operator=(const Osc&) = delete;

    /// A message with its numbers; a switch without one counts as pressed.
    void receive(const std::string& path, const std::vector<double>& numbers);
    void idle(const Send& send); ///< tells what has changed; interface tick
    void forgetTold() { told.clear(); }

private:
    struct Told {
        OscValue value;
        int movedAt = 0;
        bool moved = false; ///< by a message, at `movedAt` (`asTimeInMS`)
    };
    using Values = std::vector<std::pair<std::string, OscValue>>;

    void transport(std::string_view what, double value);
    void setStrip(const SurfaceStrip& strip, std::string_view what, double value);
    void setFront(std::string_view number, double value);
    Values present() const;
    void addStrip(Values& to, const std::string& path, const SurfaceStrip& strip) const;

    CQV* host;
    const Ways ways;
    std::map<std::string, Told> told;
};
