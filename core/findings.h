// Takes what a format's check finds, tells the client, and counts.
#pragma once

#include "core/check_rule.h"

#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace tympan {

using FindingVisitor = std::function<void(const Finding& finding)>;
using CheckProgress = std::function<void(std::uint64_t done, std::uint64_t total)>;

class Findings {
  public:
    /// Of one rule so many are told; the others are counted.
    static constexpr std::uint64_t kToldOfEach = 100;

    /// Either may be empty.
    Findings(const FindingVisitor& visit, const CheckProgress& progress)
        : visit_(visit), progress_(progress)
    {}

    /// `sentence()` gives the text of what was found. It is not called for what is only counted: a
    /// bad file can have as many faults as bytes.
    template <typename Sentence>
    void Tell(const CheckRule& rule, const Place& place, Sentence&& sentence)
    {
        if (Count(rule) <= kToldOfEach && visit_)
            visit_({ &rule, place, std::forward<Sentence>(sentence)() });
    }

    /// Tells the client how far the check is, in bytes.
    void Reached(std::uint64_t done, std::uint64_t total) const
    {
        if (progress_)
            progress_(done, total);
    }

    /// The rules that were broken, in the order of their first breach.
    const std::vector<RuleCount>& Counts() const { return counts_; }
    std::uint64_t CountOf(Severity severity) const;

  private:
    std::uint64_t Count(const CheckRule& rule);

    const FindingVisitor& visit_;
    const CheckProgress& progress_;
    std::vector<RuleCount> counts_;
};

/// Bytes of a file for a sentence, in quotes: what isn't a plain character is a dot.
std::string Quoted(std::string_view bytes);

/// "1 row", "2 rows".
std::string CountOf(std::uint64_t count, std::string_view what);

} // namespace tympan
