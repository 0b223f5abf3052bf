#include "batch_summary.h"

#include "picture_facts.h"

#include <algorithm>

namespace tympan::tool {

struct BatchSummary::Row {
    const char* key;
    const char* text;
    std::uint64_t BatchSummary::*number;
};

const BatchSummary::Row BatchSummary::kRows[] = {
    { "files", "pictures", &BatchSummary::files_ },
    { "valid", "valid", &BatchSummary::valid_ },
    { "valid_with_remarks", "valid with remarks", &BatchSummary::remarks_ },
    { "invalid", "invalid", &BatchSummary::invalid_ },
    { "undetermined", "undetermined", &BatchSummary::undetermined_ },
    { "against_policy", "against the policy", &BatchSummary::againstPolicy_ },
    { "skipped", "skipped", &BatchSummary::skipped_ },
    { "unchanged", "unchanged", &BatchSummary::unchanged_ },
    { "crashed", "crashed", &BatchSummary::crashed_ },
    { "bytes", "bytes checked", &BatchSummary::bytes_ },
};

void BatchSummary::Count(const Json& told)
{
    const std::string verdict = told.at("verdict").get<std::string>();
    if (verdict == kNoPicture) {
        ++skipped_;
        return;
    }
    ++files_;
    ++(verdict == NameOf(Verdict::Valid)              ? valid_
       : verdict == NameOf(Verdict::ValidWithRemarks) ? remarks_
       : verdict == NameOf(Verdict::Invalid)          ? invalid_
                                                      : undetermined_);
    if (told.contains("policy") && IsAgainstPolicy(told.at("policy")))
        ++againstPolicy_;
}

double BatchSummary::Seconds() const
{
    return std::chrono::duration<double>(Clock::now() - begin_).count();
}

double BatchSummary::BytesPerSecond() const
{
    constexpr double kLeastSeconds = 1e-6;
    return static_cast<double>(bytes_) / std::max(Seconds(), kLeastSeconds);
}

Json BatchSummary::AsJson() const
{
    Json object = Json::object();
    for (const Row& row : kRows)
        object[row.key] = this->*row.number;
    object["seconds"] = Seconds();
    object["bytes_per_second"] = BytesPerSecond();
    return { { "summary", std::move(object) } };
}

std::string BatchSummary::Text() const
{
    constexpr double kMegabyte = 1e6;
    std::string text;
    for (const Row& row : kRows)
        if (this->*row.number != 0 || row.number == &BatchSummary::files_)
            text += std::string(text.empty() ? "" : ", ") + std::to_string(this->*row.number) +
                    ' ' + row.text;
    return text + " in " + NumberText(Seconds(), 1) + " s, " +
           NumberText(BytesPerSecond() / kMegabyte, 1) + " MB/s";
}

} // namespace tympan::tool
