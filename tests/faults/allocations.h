// What this test program does at each allocation: it counts, fills the block, and while a step of a
// scenario runs fails the one that it is told to.
#pragma once

#include <cstddef>

namespace tympan::test {

class Allocations {
  public:
    /// Forgets the earlier plan. The allocation of a number, counted from 1, fails; with `onwards`
    /// all behind it, too. 0: none fails. New blocks are filled with `filling`.
    static void Plan(std::size_t number, bool onwards, unsigned char filling);
    /// No allocation fails any more.
    static void Recover();
    static bool HasFailed();
    static unsigned char Filling();
    static std::size_t LiveCount();
    /// The most bytes that lived at once since the last plan, above those that lived then.
    static std::size_t PeakBytes();
};

/// While it lives, allocations are counted and may fail, or again are not.
class AllocationsArmed {
  public:
    explicit AllocationsArmed(bool armed = true);
    AllocationsArmed(const AllocationsArmed&) = delete;
    AllocationsArmed& operator=(const AllocationsArmed&) = delete;
    ~AllocationsArmed();

  private:
    bool before_;
};

} // namespace tympan::test
