// Takes any bytes as a datagram at an instance's socket, and as the name of a socket in the instances'
// folder.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <string>

#include "host/desktop/instance_folder.h"
#include "host/desktop/instance_message.h"

using namespace host::desktop;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    InstanceMessage message;
    if (DecodeInstanceMessage(data, size, &message)) {
        uint8_t bytes[kInstanceMessageBytes];
        EncodeInstanceMessage(message, bytes);
        if (size != sizeof(bytes) || std::memcmp(data, bytes, size) != 0) std::abort();
    }
    const std::string name(reinterpret_cast<const char*>(data), size);
    InstanceSocket socket, again;
    if (ParseSocketName(name, &socket)) {
        if (!ParseSocketName(SocketName(socket), &again) || again.class_name != socket.class_name ||
            again.id != socket.id)
            std::abort();
    }
    if (DisplayKey(name.c_str()).size() > 40) std::abort();
    return 0;
}
