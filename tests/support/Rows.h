#pragma once

#include <tuple>
#include <vector>

/// A table of cases, of which each row is taken apart by name:
///     for (const auto& [rate, block] : Rows<double, int>{{44100, 64}, {48000, 1}})
template <class... T>
using Rows = std::vector<std::tuple<T...>>;
