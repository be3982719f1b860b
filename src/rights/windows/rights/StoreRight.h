#pragma once

/// Windows write what a project stores through `CQV::values`.
struct StoreRight;
