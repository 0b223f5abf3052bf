// What every target does with its bytes: they become a file, in an exact block of memory, that is
// recognised and checked before the target asks its own format.
#pragma once

#include "core/factory.h"
#include "platform/memory_files.h"
#include "tympan/check.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>

namespace tympan::fuzz {

inline constexpr char kPath[] = "picture";

template <typename Ask>
void WithFile(const std::uint8_t* data, std::size_t size, Ask&& ask)
{
    const auto bytes = std::as_bytes(std::span(data, size));
    test::MemoryFileSystem files;
    files.Put(kPath, test::Bytes(bytes.begin(), bytes.end()));
    const ScopedFileSystem scoped(files);
    const std::unique_ptr<BasePictureIF> recognised(create_picture_object(kPath));
    CheckFile(kPath, {});
    ask();
}

} // namespace tympan::fuzz
