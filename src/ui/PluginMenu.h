#pragma once

#include <functional>
#include <memory>

class CComp;
class CPopup;
class CStr;
class Workspace;

/// What a place in the graph can take.
enum class PluginUse {
    any,
    effect,    ///< takes in sound
    instrument ///< takes in notes
};

/// Adds the plug-ins of a use to a menu: the ones that were used last, all others by maker, and a
/// file of the user's choice. `chosen` gets the component of what is chosen, complete and linked
/// nowhere. Interface thread.
void fillPluginMenu(CPopup* popup, Workspace& workspace, PluginUse use,
                    const std::function<void(std::unique_ptr<CComp>)>& chosen);

/// A plug-in that the user has chosen, linked nowhere; it counts as one that was used. Null for
/// what cannot be one, after a message.
std::unique_ptr<CComp> makePlugin(Workspace& workspace, const CStr& path);
