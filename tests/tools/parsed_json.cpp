#include "tools/parsed_json.h"

namespace tympan::test {

ordered_json ParsedJson(const std::string& text)
{
    return ordered_json::parse(text);
}

} // namespace tympan::test
