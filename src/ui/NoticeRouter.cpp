#include "ui/NoticeRouter.h"

#include "engine/CQV.h"
#include "sequencer/song/CSeq.h"
#include "ui/Song.h"

#include <utility>

NoticeLink NoticeRouter::on(const Asked& asked, std::function<void()> call) {
    auto link = std::make_shared<const std::function<void()>>(std::move(call));
    entries.push_back({asked, link});
    return link;
}

void NoticeRouter::serve() {
    std::erase_if(entries, [](const Entry& e) { return e.call.expired(); });
    Asked due;
    for (const Entry& e : entries) {
        due.host = due.host | e.asked.host;
        due.song = due.song | e.asked.song;
    }
    CSeq* song = songOf(qv);
    due.host = qv->hostNotices.take(due.host);
    due.song = song ? song->songNotices.take(due.song) : NoticeSet<SeqNotice>();
    if (!due.host && !due.song) return;
    const std::vector<Entry> round = entries; // a call may make and end subscriptions
    for (const Entry& e : round)
        if (due.host.meets(e.asked.host) || due.song.meets(e.asked.song))
            if (const NoticeLink call = e.call.lock()) (*call)();
}
