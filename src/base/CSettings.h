#pragma once

#include "base/CList.h"
#include "base/CStr.h"

/// The integer options of the program in memory. Interface thread.
class CSettings {
public:
    static constexpr int kindInt = 2;

    struct Item {
        int kind = kindInt;
        CStr key;
        int value = 0;
        bool stored = false; ///< goes into the settings file
    };

    CSettings() = default;
    ~CSettings();
    CSettings(const CSettings&) = delete;
    CSettings& operator=(const CSettings&) = delete;

    int numItems() const { return list.getCount(); }
    Item* getItem(int i) const;           ///< null outside the list
    Item* getItem(const CStr& key) const; ///< null when absent
    /// Adds or updates an option and returns it, still owned here.
    Item* setInt(const CStr& key, int value);
    int getInt(const CStr& key, int def) const;

private:
    ListOf<Item> list; ///< owned
};
