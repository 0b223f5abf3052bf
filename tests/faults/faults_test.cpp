// Puts every scenario through every campaign, and prints how many cases there were and how many
// failed. `TYMPAN_FAULTS=long` tries every value of every header byte.
#include "faults/campaigns.h"
#include "faults/held_memory.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <iostream>
#include <map>
#include <string>
#include <string_view>

namespace {

using namespace tympan::test;

Extent ExtentOfThisRun()
{
    const char* const wanted = std::getenv("TYMPAN_FAULTS");
    return wanted != nullptr && std::string_view(wanted) == "long" ? Extent::full : Extent::quick;
}

std::map<std::string, Tally>& Totals()
{
    static std::map<std::string, Tally> totals;
    return totals;
}

void Put(Campaigns& campaigns)
{
    campaigns.FailFiles();
    campaigns.FailAllocations();
    campaigns.CutFiles();
    campaigns.ChangeBytes();
    campaigns.ChangeFields();
    for (const auto& [name, tally] : campaigns.Tallies()) {
        Totals()[name].cases += tally.cases;
        Totals()[name].failed += tally.failed;
        EXPECT_EQ(tally.failed, 0U) << name;
    }
    EXPECT_TRUE(campaigns.Story().empty()) << campaigns.Story();
}

struct FormatScenarios {
    const char* format;
    std::vector<Scenario> (*scenarios)();
    Held held; ///< what its objects may hold
};

void PrintTo(const FormatScenarios& row, std::ostream* out)
{
    *out << row.format;
}

const FormatScenarios kFormats[] = {
    { "Ct", CtScenarios, kHeldByCt },
    { "Lw", LwScenarios, kHeldByLw },
    { "LwWhole", LwWholeScenarios, kHeldByLw },
    { "Jpeg", JpegScenarios, kHeldByJpeg },
    { "Page", PageScenarios, kHeldByPage },
    { "Tiff", TiffScenarios, kHeldByTiff },
    { "TiffIt", TiffItScenarios, kHeldByTiffIt },
};

class Faults : public testing::TestWithParam<FormatScenarios> {
  protected:
    static void TearDownTestSuite()
    {
        for (const auto& [name, tally] : Totals())
            std::cout << name << ": " << tally.cases << " cases, " << tally.failed << " failed\n";
    }
};

TEST_P(Faults, LeaveADocumentedCodeAndNothingElse)
{
    for (const Scenario& scenario : GetParam().scenarios()) {
        SCOPED_TRACE(scenario.name);
        Campaigns campaigns(scenario, ExtentOfThisRun(), GetParam().held);
        Put(campaigns);
    }
}

INSTANTIATE_TEST_SUITE_P(Of, Faults, testing::ValuesIn(kFormats),
                         [](const auto& row) { return std::string(row.param.format); });

} // namespace
