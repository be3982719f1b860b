#include "ui/LevelText.h"

#include "engine/SettingUnit.h"

CStr decibelText(float level) {
    return gainUnit.text(nullptr, level);
}
