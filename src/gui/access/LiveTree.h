#pragma once

#include "gui/access/AccessTree.h"

#include <functional>
#include <map>
#include <memory>
#include <unordered_map>
#include <unordered_set>

class CApp;
class CCtrl;
class CWin;
struct timespec;

/// The tree of the running program. It is made when somebody wants to read it: without it nothing
/// is collected. What changed is found by describing again what was painted anew since and has been
/// asked for before.
class LiveTree final : public AccessTree {
public:
    explicit LiveTree(CApp* app);
    ~LiveTree() override;

    std::unique_ptr<AccessOutlet> outlet; ///< may be null: the tree can be read all the same

    Description describe(AccessId id) override;
    std::vector<AccessId> children(AccessId id) override;
    AccessId parent(AccessId id) override;
    AccessId focus() override;
    AccessId at(AccessId id, CPoint p) override;
    bool press(AccessId id) override;
    bool setNumber(AccessId id, double to) override;
    bool setText(AccessId id, const std::string& to) override;
    bool setFocus(AccessId id) override;

    AccessId idOf(const CCtrl* ctrl, int part = Accessible::wholeCtrl); ///< the same each time
    void touched(const CCtrl* ctrl);                                    ///< it is painted anew
    void forget(const CCtrl* ctrl); ///< it is about to be deleted
    /// Does what was asked for, and tells the outlet what has changed. In every turn of the loop.
    void update();
    /// The descriptors by which the outlet is woken, and how long the loop may wait at most.
    void await(std::vector<pollfd>& descriptors, timespec& wait) const;

private:
    struct Node {
        CCtrl* ctrl = nullptr;
        int part = Accessible::wholeCtrl;
        bool operator<(const Node& other) const {
            return ctrl != other.ctrl ? std::less<>()(ctrl, other.ctrl) : part < other.part;
        }
    };
    Description look(AccessId id);
    std::vector<AccessId> inside(AccessId id);
    Node nodeOf(AccessId id) const;
    bool stands(const Node& node) const;
    void collect(CCtrl* ctrl, std::vector<AccessId>& found);
    std::vector<CWin*> openWindows() const;
    std::string givenName(const CCtrl* ctrl) const;
    void tellFocus();
    void tellWindows();
    void tellTouched();
    void tellAgain(AccessId id);
    bool later(AccessId id, std::function<void(const Node&)> act);

    CApp* app;
    AccessId last = 0;
    std::unordered_map<AccessId, Node> nodes;
    std::map<Node, AccessId> ids;
    std::unordered_map<AccessId, Description> told; ///< to who has read it, last
    std::unordered_map<AccessId, std::vector<AccessId>> toldChildren;
    std::unordered_set<const CCtrl*> dirty;
    std::vector<std::function<void()>> wishes; ///< to be done in the next turn
    AccessId toldFocus = 0;
    std::vector<AccessId> toldWindows;
};
