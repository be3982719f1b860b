#pragma once

class CObject;

/// A parameter of a component, strip or send, which automation and controllers know by its number.
/// The object is not owned.
struct ParamRef {
    CObject* object = nullptr; ///< CComp, COutputChannel or CSend; null: no parameter
    int param = 0;

    explicit operator bool() const { return object != nullptr; }
    bool operator==(const ParamRef&) const = default;
};
