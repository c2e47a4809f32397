#include "host/desktop/instance_message.h"

#include <cstring>

namespace host::desktop {
namespace {

constexpr uint8_t kMagic[4] = {'L', 'M', 'T', 'R'};
constexpr uint64_t kVersion = 1;

void Put(uint8_t* at, uint64_t value, int count) {
    for (int i = 0; i < count; ++i) at[i] = static_cast<uint8_t>(value >> (8 * i));
}

uint64_t Get(const uint8_t* at, int count) {
    uint64_t value = 0;
    for (int i = 0; i < count; ++i) value |= static_cast<uint64_t>(at[i]) << (8 * i);
    return value;
}

}  // namespace

void EncodeInstanceMessage(const InstanceMessage& message, uint8_t bytes[kInstanceMessageBytes]) {
    std::memset(bytes, 0, kInstanceMessageBytes);
    std::memcpy(bytes, kMagic, sizeof(kMagic));
    Put(bytes + 4, kVersion, 2);
    Put(bytes + 8, message.message, 4);
    Put(bytes + 16, static_cast<uint64_t>(message.wparam), 8);
    Put(bytes + 24, static_cast<uint64_t>(message.lparam), 8);
}

bool DecodeInstanceMessage(const uint8_t* bytes, size_t count, InstanceMessage* message) {
    *message = InstanceMessage();
    if (count != kInstanceMessageBytes || std::memcmp(bytes, kMagic, sizeof(kMagic)) != 0) return false;
    if (Get(bytes + 4, 2) != kVersion || Get(bytes + 6, 2) != 0 || Get(bytes + 12, 4) != 0) return false;
    const uint32_t number = static_cast<uint32_t>(Get(bytes + 8, 4));
    if (number < kFirstForeignMessage || number > kLastForeignMessage) return false;
    message->message = number;
    message->wparam = static_cast<int64_t>(Get(bytes + 16, 8));
    message->lparam = static_cast<int64_t>(Get(bytes + 24, 8));
    return true;
}

}  // namespace host::desktop
