#pragma once

#include "engine/Notices.h"

#include <functional>
#include <memory>
#include <vector>

class CQV;

/// Holds a subscription, which ends with it.
using NoticeLink = std::shared_ptr<const std::function<void()>>;

/// Hands the notices of the host and the song to the windows that asked for them. Interface thread.
class NoticeRouter {
public:
    struct Asked {
        NoticeSet<HostNotice> host{}; ///< any but `delays`
        NoticeSet<SeqNotice> song{};
    };

    explicit NoticeRouter(CQV* host) : qv(host) {}

    /// Has `call` made when any of the notices has been raised: once per `serve`, in the order of
    /// the subscriptions.
    [[nodiscard]] NoticeLink on(const Asked& asked, std::function<void()> call);
    /// Makes the calls that are due. What they raise comes with the next one. Interface tick.
    void serve();

private:
    struct Entry {
        Asked asked;
        std::weak_ptr<const std::function<void()>> call;
    };

    CQV* qv;
    std::vector<Entry> entries;
};
