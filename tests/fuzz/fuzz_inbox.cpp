// Takes any bytes as datagrams at a running instance's socket. Each is a byte for its kind and one for its
// length or its message's number: raw bytes, a well-formed message, or one with a file descriptor.
#include <sys/socket.h>
#include <unistd.h>

#include <atomic>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <iterator>
#include <thread>
#include <vector>

#include "host/desktop/inbox.h"

using namespace host::desktop;

namespace {

std::atomic<bool> g_left;
constexpr uint32_t kLast = 1999;  // the message that ends each run
constexpr uint32_t kNumbers[] = {1125, 1126, 1127, 1128, 1129, 1130, 1134, 1224, 1024, 0xBFFF, 0xC000, 16};

void Check(bool good) {
    if (!good) std::abort();
}

void Send(int socket, const void* bytes, size_t count, bool with_descriptor) {
    iovec part = {const_cast<void*>(bytes), count};
    msghdr header = {};
    header.msg_iov = &part;
    header.msg_iovlen = 1;
    alignas(cmsghdr) char control[CMSG_SPACE(sizeof(int))] = {};
    if (with_descriptor) {
        header.msg_control = control;
        header.msg_controllen = sizeof(control);
        cmsghdr* rights = CMSG_FIRSTHDR(&header);
        *rights = {CMSG_LEN(sizeof(int)), SOL_SOCKET, SCM_RIGHTS};
        std::memcpy(CMSG_DATA(rights), &socket, sizeof(socket));
    }
    Check(sendmsg(socket, &header, 0) == static_cast<ssize_t>(count));
}

void SendMessage(int socket, const InstanceMessage& message, bool with_descriptor) {
    uint8_t bytes[kInstanceMessageBytes];
    EncodeInstanceMessage(message, bytes);
    Send(socket, bytes, sizeof(bytes), with_descriptor);
}

// What the program gets of what has been sent: all in order, or after a quit that acts nothing else.
struct Expected {
    bool deaf = false, left = false;
    std::vector<InstanceMessage> messages;
    void Add(const InstanceMessage& message) {
        if (left) return;
        deaf = deaf || message.message == kHostMessage;
        left = message.message == kQuitMessage && !deaf;
        if (left) messages.clear();
        messages.push_back(message);
    }
};

void SendAll(int socket, const uint8_t* data, size_t size, Expected* expected) {
    for (size_t at = 1; at + 2 <= size;) {
        const uint8_t kind = data[at] % 3, choice = data[at + 1];
        at += 2;
        InstanceMessage message{kNumbers[choice % std::size(kNumbers)], choice, -choice};
        if (kind == 0) {
            const size_t count = std::min<size_t>(choice % 80, size - at);
            if (DecodeInstanceMessage(data + at, count, &message)) expected->Add(message);
            Send(socket, data + at, count, false);
            at += count;
        } else {
            const bool allowed =
                message.message >= kFirstForeignMessage && message.message <= kLastForeignMessage;
            if (kind == 1 && allowed) expected->Add(message);
            SendMessage(socket, message, kind == 2);
        }
    }
    expected->Add({kLast, 0, 0});
    SendMessage(socket, {kLast, 0, 0}, false);
}

void TakeAll(Inbox* inbox, const Expected& expected) {
    while (expected.left && !g_left) std::this_thread::yield();
    host::Event event;
    for (const InstanceMessage& message : expected.messages) {
        while (!inbox->Take(&event)) {
            inbox->EndRound();
            std::this_thread::yield();
        }
        Check(event.kind == host::EventKind::kPosted && event.message == message.message &&
              event.wparam == message.wparam && event.lparam == message.lparam);
    }
    inbox->ClearSignal();
    inbox->EndRound();
    Check(!inbox->Waits() && !inbox->Take(&event));
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    if (size == 0 || size > 2048) return 0;
    int pair[2];
    const int on = 1, free = dup(0);
    close(free);
    Check(socketpair(AF_UNIX, SOCK_DGRAM, 0, pair) == 0 &&
          setsockopt(pair[0], SOL_SOCKET, SO_PASSCRED, &on, sizeof(on)) == 0);
    g_left = false;
    {
        Inbox inbox(pair[0], [] { g_left = true; });
        Expected expected{.deaf = (data[0] & 1) != 0, .messages = {}};
        if (expected.deaf) inbox.SetDeaf();
        SendAll(pair[1], data, size, &expected);
        TakeAll(&inbox, expected);
    }
    close(pair[0]);
    close(pair[1]);
    const int again = dup(0);
    Check(again == free);  // no descriptor of a message stays open
    close(again);
    return 0;
}
