// What other copies have sent: a small thread takes it off the socket from the announcement on, also while
// the program loads a chart and polls nothing.
#pragma once

#include <condition_variable>
#include <deque>
#include <mutex>
#include <thread>

#include "host/desktop/copy_message.h"
#include "host/host.h"

namespace host::desktop {

class Inbox {
public:
    explicit Inbox(int socket);  // borrowed, with SO_PASSCRED set
    Inbox(const Inbox&) = delete;
    Inbox& operator=(const Inbox&) = delete;
    ~Inbox();  // drops what is left

    bool Take(Event* event);  // as TakePosted
    bool Waits();
    void EndRound();
    int signal() const { return m_pipe[0]; }
    void ClearSignal();

private:
    bool OpenRound();  // with the lock held; false when nothing may be taken now
    void Run();
    bool Receive(CopyMessage* message);  // false for what is to be dropped
    void Keep(const CopyMessage& message);

    int m_socket;
    int m_pipe[2] = {-1, -1};
    std::mutex m_mutex;
    std::condition_variable m_room;
    std::deque<CopyMessage> m_queue;
    bool m_stop = false;
    bool m_in_round = false;
    size_t m_round_left = 0;
    uint64_t m_round_start = 0;
    std::thread m_thread;
};

}  // namespace host::desktop
