#include "standard_output.h"

#include "failure.h"
#include "names.h"

#include <cerrno>
#include <iostream>

namespace tympan::tool {

Json ObjectOf(const std::string& file)
{
    Json object;
    object["file"] = WithReplacements(file);
    if (!IsUtf8(file))
        object["file_raw"] = PercentEncoded(file);
    return object;
}

void PrintIndented(const Json& value)
{
    std::cout << value.dump(2, ' ', true) << '\n';
}

void PrintOnOneLine(const Json& value)
{
    std::cout << value.dump(-1, ' ', true) << '\n';
}

void FinishStandardOutput()
{
    std::cout.flush();
    if (!std::cout)
        throw SystemFailure("standard output", errno != 0 ? errno : EIO);
}

} // namespace tympan::tool
