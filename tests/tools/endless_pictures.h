// Pictures that take the command longer than a test looks on.
#pragma once

#include "tools/ct_pictures.h"

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <string>
#include <thread>

namespace tympan::test {

inline void WriteEndlessCt(const std::string& path)
{
    constexpr std::uint32_t kSide = 30000;
    const CtPicture picture{ kSide, kSide, 4, 300.0, 300.0, {} };
    WriteFile(path, picture.Header());
    std::filesystem::resize_file(path, 2048 + std::uintmax_t{ kSide } * kSide * 4);
}

/// False when the folder hasn't so many entries after a long time.
inline bool WaitForEntries(const TemporaryFolder& folder, std::size_t count)
{
    for (int tries = 0; tries < 1000; ++tries) {
        if (folder.Entries() == count)
            return true;
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    }
    return false;
}

} // namespace tympan::test
