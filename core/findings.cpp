#include "core/findings.h"

#include <algorithm>

namespace tympan {

std::uint64_t Findings::CountOf(Severity severity) const
{
    std::uint64_t count = 0;
    for (const RuleCount& one : counts_)
        count += one.rule->severity == severity ? one.count : 0;
    return count;
}

std::uint64_t Findings::Count(const CheckRule& rule)
{
    const auto known = std::find_if(counts_.begin(), counts_.end(),
                                    [&](const RuleCount& one) { return one.rule == &rule; });
    if (known != counts_.end())
        return ++known->count;
    counts_.push_back({ &rule, 1 });
    return 1;
}

std::string Quoted(std::string_view bytes)
{
    std::string text(bytes);
    std::replace_if(
        text.begin(), text.end(), [](char one) { return one < ' ' || one > '~'; }, '.');
    return '"' + text + '"';
}

std::string CountOf(std::uint64_t count, std::string_view what)
{
    return std::to_string(count) + ' ' + std::string(what) + (count == 1 ? "" : "s");
}

} // namespace tympan
