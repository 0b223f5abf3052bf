#include "page_entry.h"

namespace tympan::tool {

namespace {

std::string PictureProblem(const std::string& path, const PagePaths& paths)
{
    if (path.find_first_not_of(' ') == std::string::npos)
        return "names no picture";
    if (const auto found = paths.Find(path))
        return "its picture " + path + ", found as " + *found +
               ", can't be read or is of no format that a page can place";
    return "its picture " + path + " isn't found";
}

} // namespace

std::string ProblemOf(const PageEntryReading& reading, const PagePaths& paths)
{
    switch (reading.state) {
    case PageEntryState::fine: return "";
    case PageEntryState::noPicture:
        return PictureProblem(reading.placement->path.GetString(), paths);
    case PageEntryState::unknownType:
        return "its type is " + std::to_string(reading.typeByte) +
               ", and a page's entries have 1, 2 or 5";
    case PageEntryState::cutShort: break;
    }
    return "the file ends in it";
}

} // namespace tympan::tool
