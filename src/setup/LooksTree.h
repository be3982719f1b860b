#pragma once

struct CGuiItem2;

/// A line of the tree on the page of looks.
struct LooksNode {
    int level; ///< 0 an area
    const char* label;
    CGuiItem2* item;      ///< null for an area that is none itself
    bool awaited = false; ///< nothing shows it yet, so the page leaves it out
};

/// All items of the program's theme, each once, from the top line on.
const LooksNode* looksTree(int& count);
