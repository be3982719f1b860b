#pragma once

/// What an effect follows in place of its own input, in its next block; null: its input. Its owner
/// writes it before `process`. Both as long as the block.
struct KeySound {
    const float* left = nullptr;
    const float* right = nullptr;

    const float* leftOr(const float* input) const { return left ? left : input; }
    const float* rightOr(const float* input) const { return right ? right : input; }
};
