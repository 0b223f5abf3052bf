#include "json_text.h"

namespace tympan::tool {

Json ParsedJson(const std::string& text)
{
    return Json::parse(text);
}

std::string OnOneLine(const Json& value)
{
    return value.dump(-1, ' ', true);
}

std::string Indented(const Json& value)
{
    return value.dump(2, ' ', true);
}

} // namespace tympan::tool
