// Signals wait while a file or folder and what a signal's handler knows of it change together.
#pragma once

#include <csignal>

namespace tympan::tool {

/// Holds all signals back as long as it lives.
class SignalsHeld {
  public:
    SignalsHeld()
    {
        sigset_t all;
        sigfillset(&all);
        sigprocmask(SIG_BLOCK, &all, &before_);
    }
    SignalsHeld(const SignalsHeld&) = delete;
    SignalsHeld& operator=(const SignalsHeld&) = delete;
    ~SignalsHeld() { sigprocmask(SIG_SETMASK, &before_, nullptr); }

  private:
    sigset_t before_{};
};

} // namespace tympan::tool
