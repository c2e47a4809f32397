#include "common/parallel.h"

#include <poll.h>
#include <signal.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <map>
#include <optional>
#include <thread>
#include <vector>

namespace tools {
namespace {

constexpr size_t kPiece = size_t{64} << 10;        // bytes that a worker sends at once
constexpr size_t kMostStashed = size_t{64} << 20;  // bytes of output that wait for their turn

struct FrameHead {
    uint64_t item;
    uint32_t bytes;
    uint32_t is_result;
};

bool SendAll(int file, const void* data, size_t size) {
    const char* p = static_cast<const char*>(data);
    while (size > 0) {
        const ssize_t n = send(file, p, size, MSG_NOSIGNAL);
        if (n < 0 && errno == EINTR) continue;
        if (n <= 0) return false;
        p += n;
        size -= static_cast<size_t>(n);
    }
    return true;
}

bool ReceiveAll(int file, void* data, size_t size) {
    char* p = static_cast<char*>(data);
    while (size > 0) {
        const ssize_t n = recv(file, p, size, 0);
        if (n < 0 && errno == EINTR) continue;
        if (n <= 0) return false;
        p += n;
        size -= static_cast<size_t>(n);
    }
    return true;
}

// A worker ends when the parent is gone or has no more items.
void SendFrame(int file, size_t item, std::string_view bytes, bool is_result) {
    const FrameHead head = {item, static_cast<uint32_t>(bytes.size()), is_result};
    if (!SendAll(file, &head, sizeof head) || !SendAll(file, bytes.data(), bytes.size())) _exit(1);
}

[[noreturn]] void Work(int parent, const Job& job) {
    for (uint64_t item; ReceiveAll(parent, &item, sizeof item);) {
        const Sink sink = [&](std::string_view piece) {
            for (; !piece.empty(); piece.remove_prefix(std::min(kPiece, piece.size())))
                SendFrame(parent, item, piece.substr(0, kPiece), false);
        };
        SendFrame(parent, item, job(item, sink), true);
    }
    _exit(0);
}

struct Worker {
    pid_t process = -1;          // -1: none
    int socket = -1;             // items go out, frames come in
    std::optional<size_t> item;  // that it works on
};

struct Stashed {
    std::string output;
    std::optional<std::string> result;
    bool done = false;
};

class Crew {
public:
    Crew(size_t count, size_t workers, const Job& job, const Taker& taker)
        : count_(count), job_(job), taker_(taker), workers_(workers) {}
    void Run();

private:
    void Hire(Worker* worker);
    void Dismiss(Worker* worker);
    void GiveItem(Worker* worker);
    void ReadFrame(Worker* worker);
    void Done(Worker* worker, std::optional<std::string> result);
    void TakeStashed();

    const size_t count_;
    const Job& job_;
    const Taker& taker_;
    std::vector<Worker> workers_;
    std::map<size_t, Stashed> stash_;  // items after next_
    size_t stashed_ = 0;               // bytes
    size_t to_give_ = 0, next_ = 0;    // next_: the item whose output is taken
    bool stopped_ = false;
};

// Leaves it without a process when the system has no further one.
void Crew::Hire(Worker* worker) {
    int ends[2];
    if (socketpair(AF_UNIX, SOCK_STREAM, 0, ends) != 0) return;
    worker->process = fork();
    if (worker->process == 0) {
        for (const Worker& other : workers_) close(other.socket);  // or their sockets would stay open
        close(ends[0]);
        Work(ends[1], job_);
    }
    close(ends[1]);
    worker->socket = ends[0];
    if (worker->process > 0)
        GiveItem(worker);
    else
        close(ends[0]);
}

void Crew::Dismiss(Worker* worker) {
    if (worker->process < 0) return;
    if (worker->item) kill(worker->process, SIGTERM);  // it may want to end a file in order
    close(worker->socket);
    waitpid(worker->process, nullptr, 0);
    *worker = {};
}

void Crew::GiveItem(Worker* worker) {
    worker->item.reset();
    if (to_give_ == count_) return;
    const uint64_t item = to_give_++;
    worker->item = item;
    SendAll(worker->socket, &item, sizeof item);  // a dead worker is noticed when it is read from
}

void Crew::Done(Worker* worker, std::optional<std::string> result) {
    const size_t item = *worker->item;
    if (item == next_) {
        stopped_ = !taker_.done(next_++, result ? &*result : nullptr);
        TakeStashed();
    } else {
        stash_[item].result = std::move(result);
        stash_[item].done = true;
    }
}

void Crew::TakeStashed() {
    for (auto it = stash_.find(next_); !stopped_ && it != stash_.end(); it = stash_.find(next_)) {
        Stashed stashed = std::move(it->second);
        stash_.erase(it);
        stashed_ -= stashed.output.size();
        taker_.piece(next_, stashed.output);
        if (!stashed.done) return;
        stopped_ = !taker_.done(next_++, stashed.result ? &*stashed.result : nullptr);
    }
}

void Crew::ReadFrame(Worker* worker) {
    FrameHead head;
    std::string bytes;
    bool whole = ReceiveAll(worker->socket, &head, sizeof head);
    if (whole) bytes.resize(head.bytes);
    whole = whole && ReceiveAll(worker->socket, bytes.data(), bytes.size());
    if (!whole) {
        Done(worker, std::nullopt);
        Dismiss(worker);
        Hire(worker);
    } else if (head.is_result) {
        Done(worker, std::move(bytes));
        GiveItem(worker);
    } else if (head.item == next_) {
        taker_.piece(next_, bytes);
    } else {
        stash_[head.item].output += bytes;
        stashed_ += bytes.size();
    }
}

void Crew::Run() {
    for (Worker& worker : workers_) Hire(&worker);
    while (!stopped_ && next_ < count_) {
        std::vector<pollfd> polled;
        for (const Worker& worker : workers_) {
            const bool waits = !worker.item || (stashed_ > kMostStashed && *worker.item != next_);
            polled.push_back({waits ? -1 : worker.socket, POLLIN, 0});
        }
        const bool any = std::any_of(polled.begin(), polled.end(), [](const pollfd& p) { return p.fd >= 0; });
        if (!any || (poll(polled.data(), polled.size(), -1) < 0 && errno != EINTR)) break;
        for (size_t i = 0; i < polled.size() && !stopped_; ++i) {
            if (polled[i].fd >= 0 && polled[i].revents != 0) ReadFrame(&workers_[i]);
        }
    }
    for (Worker& worker : workers_) Dismiss(&worker);
    while (!stopped_ && next_ < count_)
        stopped_ = !taker_.done(next_++, nullptr);  // no process was to be had
}

void RunHere(size_t count, const Job& job, const Taker& taker) {
    for (size_t item = 0; item < count; ++item) {
        const std::string result = job(item, [&](std::string_view piece) { taker.piece(item, piece); });
        if (!taker.done(item, &result)) return;
    }
}

}  // namespace

void RunInOrder(size_t count, unsigned processes, const Job& job, const Taker& taker) {
    if (processes == 0) processes = std::max(std::thread::hardware_concurrency(), 1u);
    processes = static_cast<unsigned>(std::min<size_t>(processes, count));
    if (processes > 1)
        Crew(count, processes, job, taker).Run();
    else
        RunHere(count, job, taker);
}

}  // namespace tools
