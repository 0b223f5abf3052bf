// The campaigns: each makes the same kind of fault everywhere in a scenario, one at a time.
#pragma once

#include "faults/held_memory.h"
#include "faults/scenarios.h"

#include <map>
#include <string>

namespace tympan::test {

enum class Extent { quick, full };

struct Tally {
    std::size_t cases = 0, failed = 0;
};

/// Puts one scenario through all campaigns.
class Campaigns {
  public:
    /// \param held what the format's objects may hold
    Campaigns(const Scenario& scenario, Extent extent, Held held);

    void FailFiles();
    void FailAllocations();
    void CutFiles();
    void ChangeBytes();
    void ChangeFields();

    /// By the name of the campaign.
    const std::map<std::string, Tally>& Tallies() const { return tallies_; }
    /// What was wrong in the first cases that failed; lines.
    const std::string& Story() const { return story_; }

  private:
    struct Fault {
        FilePlan files{};
        std::size_t allocation = 0;
        bool allocationsOnwards = false;
        std::size_t changedFile = 0;
        const Bytes* changed = nullptr; ///< what that file holds instead
    };
    struct Played {
        Outcome outcome{};
        std::size_t recovered = 0;
        bool happened = false; ///< the fault
        bool outputFailed = false;
        std::size_t openFiles = 0, leaked = 0, peakBytes = 0;
    };
    /// What a step does that can't give what it gives without a fault.
    enum class Tells {
        byCode,   ///< what its header announces
        byResult, ///< that, or a result of 0, or it is a gentle one
        perhaps,  ///< what a changed file holds isn't known
    };

    Played PlayOnce(const Fault& fault, unsigned char filling) const;
    bool Try(const char* campaign, const Fault& fault, Tells tells, std::string about);
    void TryChanged(const char* campaign, std::size_t file, const Bytes& bytes, std::string about,
                    Tells tells = Tells::perhaps);
    void ChangeByte(std::size_t file, Bytes& bytes, std::size_t at);
    std::string Wrong(const Played& played, const Played& again, Tells tells) const;
    static std::string WrongCode(const Played& played);
    std::string WrongSteps(const Played& played, Tells tells) const;
    std::size_t MostBytes() const;

    const Scenario& scenario_;
    Extent extent_;
    Held held_;
    Played sound_; ///< without a fault
    std::map<std::string, Tally> tallies_;
    std::string story_;
};

} // namespace tympan::test
