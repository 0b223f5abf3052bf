#include "standard_output.h"

#include "failure.h"
#include "names.h"

#include <cerrno>
#include <iostream>

namespace tympan::tool {

Json ObjectOf(const std::string& file)
{
    Json object;
    AddPath(object, "file", file);
    return object;
}

void AddPath(Json& object, const std::string& key, const std::string& path)
{
    object[key] = WithReplacements(path);
    if (!IsUtf8(path))
        object[key + "_raw"] = PercentEncoded(path);
}

void PrintIndented(const Json& value)
{
    std::cout << Indented(value) << '\n';
}

void PrintOnOneLine(const Json& value)
{
    std::cout << OnOneLine(value) << '\n';
}

void FinishStandardOutput()
{
    std::cout.flush();
    if (!std::cout)
        throw SystemFailure("standard output", errno != 0 ? errno : EIO);
}

} // namespace tympan::tool
