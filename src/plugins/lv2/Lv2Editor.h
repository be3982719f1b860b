#pragma once

#include "base/Geometry.h"
#include "plugins/PluginTimers.h"
#include "plugins/lv2/Lv2Plugin.h"

#include <lv2/data-access/data-access.h>
#include <lv2/ui/ui.h>
#include <memory>
#include <string>
#include <vector>

/// The own window of an LV2 plug-in, inside an X window. It lives as long as it is open. Interface
/// thread.
class Lv2Editor {
public:
    /// A window that works here: its URI; empty where the plug-in has none.
    static std::string uiOf(const Lv2World& world, const LilvPlugin* plugin);

    /// Null where it does not open.
    static std::unique_ptr<Lv2Editor> open(Lv2Plugin& plugin, unsigned long window);
    ~Lv2Editor();
    Lv2Editor(const Lv2Editor&) = delete;
    Lv2Editor& operator=(const Lv2Editor&) = delete;

    CPoint size() const { return asked; } ///< that it has asked for; 0 none

private:
    explicit Lv2Editor(Lv2Plugin& of);

    bool start(const LV2UI_Descriptor* made, const std::string& folder, unsigned long window);
    void write(uint32_t port, uint32_t size, uint32_t protocol, const void* data);
    bool writeProperty(const LV2_Atom* atom);
    void touch(uint32_t port, bool grabbed);
    void showAll();
    void idle();
    void showFloat(uint32_t port, float value, float& shown);

    Lv2Plugin& plugin;
    const LV2UI_Descriptor* descriptor = nullptr;
    LV2UI_Handle handle = nullptr;
    LV2UI_Widget widget = nullptr;
    const LV2UI_Idle_Interface* idling = nullptr;
    LV2UI_Resize resizing{};
    PropertyAtoms properties; ///< for what the window says
    LV2UI_Touch touching{};
    LV2UI_Port_Map naming{};
    LV2_Extension_Data_Feature extensions{};
    std::vector<float> shownParams, shownMeters;
    std::vector<char> room = MessageRing::buffer();
    CPoint asked{};
    bool opening = true;
    PluginTimers timers{[this](unsigned) { idle(); }, {}};
};
