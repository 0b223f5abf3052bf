// Messages between a run and its workers: texts with their length in front, on a stream socket.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace tympan::tool {

/// \return whether all of it was taken; false when the other side is gone.
bool SendMessage(int socket, std::string_view message);

/// Puts together what comes in pieces.
class MessageReceiver {
  public:
    /// Waits for some bytes, unless there are some.
    /// \return false when the other side is gone, or sends no messages.
    bool Receive(int socket);
    /// A whole message, taken out; nothing before it is there.
    std::optional<std::string> Take();

  private:
    std::string bytes_;
};

} // namespace tympan::tool
