// Receives what other instances send. A small thread empties the socket, so that messages are accepted also
// while the program loads a chart and polls nothing.
#pragma once

#include <condition_variable>
#include <deque>
#include <mutex>
#include <thread>

#include "host/desktop/instance_message.h"
#include "host/host.h"

struct msghdr;

namespace host::desktop {

// Whether a received message carries this user's credentials. The kernel fills them in; the sender cannot
// forge them.
bool IsFromThisUser(msghdr* header);

// Lives from the announcement to the withdrawal; see TakePosted for the meaning of a round.
class Inbox {
public:
    // socket: borrowed; SO_PASSCRED is set. leave: called on this thread when a quit was taken that will act.
    Inbox(int socket, void (*leave)());
    Inbox(const Inbox&) = delete;
    Inbox& operator=(const Inbox&) = delete;
    ~Inbox();  // drops what is still queued

    bool Take(Event* event);  // see TakePosted
    bool Waits();
    void EndRound();
    void SetDeaf();  // quits do not act any more
    int signal() const { return m_pipe[0]; }
    void ClearSignal();

private:
    bool OpenRound();  // needs m_mutex; false when nothing may be taken now
    void Run();
    bool Receive(InstanceMessage* message);  // false for what must be dropped
    void Keep(const InstanceMessage& message);

    int m_socket;
    void (*m_leave)();
    int m_pipe[2] = {-1, -1};
    std::mutex m_mutex;              // guards everything below
    std::condition_variable m_room;  // in m_queue
    std::deque<InstanceMessage> m_queue;
    bool m_stop = false;
    bool m_deaf = false, m_left = false;
    bool m_in_round = false;
    size_t m_round_left = 0;
    uint64_t m_round_start = 0;
    std::thread m_thread;
};

}  // namespace host::desktop
