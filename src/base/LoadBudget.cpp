#include "base/LoadBudget.h"

LoadBudget* LoadBudget::open = nullptr;

LoadBudget::LoadBudget(int64_t bytes) : left(bytes) {
    open = this;
}

LoadBudget::~LoadBudget() {
    open = nullptr;
}

bool LoadBudget::take(const char* kind, int64_t bytes) {
    if (!open) return true;
    if (bytes > open->left) {
        leaveOut(kind);
        return false;
    }
    open->left -= bytes;
    return true;
}

bool LoadBudget::take(const char* kind, int64_t bytes, size_t there, size_t most) {
    if (there < most) return take(kind, bytes);
    leaveOut(kind);
    return false;
}

void LoadBudget::spend(int64_t bytes) {
    if (open) open->left -= bytes;
}

void LoadBudget::leaveOut(const char* kind) {
    if (!open || open->missing.pos(kind) >= 0) return;
    if (!open->missing.empty()) open->missing += ", ";
    open->missing += kind;
}

bool LoadBudget::firstDamage() {
    if (!open) return true;
    const bool first = !open->told;
    open->told = true;
    return first;
}

void LoadBudget::noteDamage() {
    if (open) open->noted = true;
}

bool LoadBudget::takeDamage() {
    if (!open) return false;
    const bool noted = open->noted;
    open->noted = false;
    return noted;
}
