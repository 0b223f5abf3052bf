// Whether the command tells more than failures.
#pragma once

namespace tympan::tool {

/// From here on no progress, no warnings and no remarks are told; failures are.
void BeQuiet();
bool IsQuiet();

} // namespace tympan::tool
