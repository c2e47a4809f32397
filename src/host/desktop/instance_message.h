// The packet that instances send each other. docs/remote.md promises it to other programs, so it never
// changes; a new layout would need a new version number beside the old one.
#pragma once

#include <cstddef>
#include <cstdint>

namespace host::desktop {

struct InstanceMessage {
    uint32_t message = 0;
    int64_t wparam = 0, lparam = 0;
};

// Little-endian: "LMTR", version 1 (16 bits), zero (16), message (32), zero (32), wparam (64), lparam (64).
constexpr size_t kInstanceMessageBytes = 32;

// Numbers below belong to the window itself. Some carry addresses, which mean nothing from another process.
constexpr uint32_t kFirstForeignMessage = 1024;
constexpr uint32_t kLastForeignMessage = 0xBFFF;

// Those that the host itself acts on, as docs/remote.md promises them: an instance that is told to end leaves
// the list at once, unless it was told before to take no more commands.
constexpr uint32_t kQuitMessage = 1125, kHostMessage = 1224;

void EncodeInstanceMessage(const InstanceMessage& message, uint8_t bytes[kInstanceMessageBytes]);

// False unless the bytes are exactly one well-formed packet with a number that other programs may send.
bool DecodeInstanceMessage(const uint8_t* bytes, size_t count, InstanceMessage* message);

}  // namespace host::desktop
