// The second channel of an instance: a stream socket whose lines are answered.
#pragma once

#include <list>
#include <mutex>
#include <string>
#include <thread>

#include "host/host.h"

namespace host::desktop {

// Its thread accepts other processes of this user, at most 16, and hands their lines to the handler. Lives
// from the announcement to the withdrawal.
class LineServer {
public:
    LineServer(int listener, LineHandler handler);  // takes the listening socket
    LineServer(const LineServer&) = delete;
    LineServer& operator=(const LineServer&) = delete;
    ~LineServer();

    void Start();  // once its answers find their way back
    bool Send(uint64_t client,
              const std::string& line);  // any thread; never waits. False: the client is gone

private:
    struct Client {
        uint64_t id;
        int fd;
        std::string in, out;  // out: guarded by m_mutex
        bool gone = false;    // guarded by m_mutex
    };

    void Run();
    void Accept();
    void Read(Client* client);
    void Flush(Client* client);  // needs m_mutex
    void Sweep();
    void Wake();

    int m_listener;
    LineHandler m_handler;
    int m_pipe[2] = {-1, -1};  // wakes the thread
    bool m_resting = false;    // accepts nothing for a moment
    uint64_t m_next_id = 1;
    std::mutex m_mutex;
    std::list<Client> m_clients;  // guarded by m_mutex; only the thread adds and removes
    bool m_stop = false;          // guarded by m_mutex
    std::thread m_thread;
};

// A listening socket bound to path, -1 on failure.
int ListenAt(const std::string& path);

}  // namespace host::desktop
