#include "nearest_name.h"

#include <algorithm>
#include <cstddef>
#include <utility>

namespace tympan::tool {

namespace {

constexpr std::size_t kSlipsInAShortWord = 1;
constexpr std::size_t kLettersForEachSlip = 3; // of a longer one

// The optimal string alignment distance; `rows` are those of its table.
std::size_t Slips(const std::string& one, const std::string& other)
{
    std::vector<std::vector<std::size_t>> rows(one.size() + 1,
                                               std::vector<std::size_t>(other.size() + 1));
    for (std::size_t i = 0; i <= one.size(); ++i)
        for (std::size_t j = 0; j <= other.size(); ++j) {
            std::size_t& slips = rows[i][j];
            if (i == 0 || j == 0) {
                slips = i + j;
                continue;
            }
            const std::size_t changed = one[i - 1] == other[j - 1] ? 0 : 1;
            slips =
                std::min({ rows[i - 1][j] + 1, rows[i][j - 1] + 1, rows[i - 1][j - 1] + changed });
            if (i > 1 && j > 1 && one[i - 1] == other[j - 2] && one[i - 2] == other[j - 1])
                slips = std::min(slips, rows[i - 2][j - 2] + 1);
        }
    return rows.back().back();
}

std::size_t LettersOf(const std::string& name)
{
    return name.size() - std::min(name.find_first_not_of('-'), name.size());
}

} // namespace

std::string NearestName(const std::string& word, const std::vector<std::string>& names)
{
    const std::size_t letters = LettersOf(word);
    std::size_t least = std::max(kSlipsInAShortWord, letters / kLettersForEachSlip) + 1;
    std::string nearest;
    for (const std::string& name : names) {
        const std::size_t slips = Slips(word, name);
        if (slips < least && slips < LettersOf(name)) {
            nearest = name;
            least = slips;
        }
    }
    const auto begun = std::find_if(names.begin(), names.end(), [&](const std::string& name) {
        return letters > 1 && name.compare(0, word.size(), word) == 0;
    });
    return nearest.empty() && begun != names.end() ? *begun : nearest;
}

} // namespace tympan::tool
