// Without the TIFF library no TIFF can be made.
#include "faults/scenarios.h"

std::vector<tympan::test::Scenario> tympan::test::TiffScenarios()
{
    return {};
}
