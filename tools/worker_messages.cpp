#include "worker_messages.h"

#include <sys/socket.h>
#include <sys/types.h>

#include <array>
#include <cerrno>
#include <cstddef>
#include <cstdint>
#include <cstring>

namespace tympan::tool {

namespace {

using Length = std::uint32_t; // both sides are the same machine's

constexpr std::size_t kBytesAtOnce = std::size_t{ 64 } << 10U;

} // namespace

bool SendMessage(int socket, std::string_view message)
{
    const auto length = static_cast<Length>(message.size());
    std::string bytes(sizeof length, '\0');
    std::memcpy(bytes.data(), &length, sizeof length);
    bytes += message;
    for (std::size_t sent = 0; sent < bytes.size();) {
        const ssize_t count = send(socket, bytes.data() + sent, bytes.size() - sent, MSG_NOSIGNAL);
        if (count < 0 && errno != EINTR)
            return false;
        sent += count > 0 ? static_cast<std::size_t>(count) : 0;
    }
    return true;
}

bool MessageReceiver::Receive(int socket)
{
    std::array<char, kBytesAtOnce> piece; // NOLINT(cppcoreguidelines-pro-type-member-init): room
    ssize_t count = -1;
    do {
        count = recv(socket, piece.data(), piece.size(), 0);
    } while (count < 0 && errno == EINTR);
    if (count > 0)
        bytes_.append(piece.data(), static_cast<std::size_t>(count));
    return count > 0;
}

std::optional<std::string> MessageReceiver::Take()
{
    Length length = 0;
    if (bytes_.size() < sizeof length)
        return std::nullopt;
    std::memcpy(&length, bytes_.data(), sizeof length);
    if (bytes_.size() - sizeof length < length)
        return std::nullopt;
    std::string message = bytes_.substr(sizeof length, length);
    bytes_.erase(0, sizeof length + length);
    return message;
}

} // namespace tympan::tool
