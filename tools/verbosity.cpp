#include "verbosity.h"

namespace tympan::tool {

namespace {

bool quiet = false; // the process has one person to tell, and one thread that tells

} // namespace

void BeQuiet()
{
    quiet = true;
}

bool IsQuiet()
{
    return quiet;
}

} // namespace tympan::tool
