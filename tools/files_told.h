// Subcommands that tell something of each file that they are given, to people or to a program.
#pragma once

#include "failure_json.h"

#include <iostream>
#include <string>
#include <vector>

namespace tympan::tool {

/// Calls `tell(file, object)` for each file, which prints for people or adds to the file's object. A
/// failure is reported and stands in the object; the other files are told all the same.
/// \param json whether the objects are written, as one array
/// \throws FailuresReported when any file failed.
template <typename Tell>
void TellOfFiles(const std::vector<std::string>& files, bool json, Tell&& tell)
{
    Json objects = Json::array();
    bool failed = false;
    for (const std::string& file : files) {
        Json& object = objects.emplace_back(ObjectOf(file));
        try {
            tell(file, object);
        } catch (const FileFailure& failure) {
            failed = true;
            object.update(AsJson(failure));
            std::cout.flush();
            Report(failure);
        }
    }
    if (json)
        PrintIndented(objects);
    FinishStandardOutput();
    if (failed)
        throw FailuresReported();
}

} // namespace tympan::tool
