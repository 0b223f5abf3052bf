#include "plain_file.h"

#include "failure.h"

#include <cerrno>

namespace tympan::tool {

PlainFile::PlainFile(const OutputFile& output)
    : path_(output.Path()), file_(std::fopen(output.WritingPath().c_str(), "wbe"))
{
    if (file_ == nullptr)
        throw SystemFailure(path_, errno);
}

void PlainFile::Write(std::span<const std::uint8_t> bytes)
{
    Put(bytes.data(), bytes.size());
}

void PlainFile::Write(std::string_view text)
{
    Put(text.data(), text.size());
}

void PlainFile::WriteAtStart(std::span<const std::uint8_t> bytes)
{
    if (std::fseek(file_.get(), 0, SEEK_SET) != 0)
        throw SystemFailure(path_, errno);
    Put(bytes.data(), bytes.size());
}

void PlainFile::Finish()
{
    if (std::fclose(file_.release()) != 0)
        throw SystemFailure(path_, errno);
}

void PlainFile::Put(const void* bytes, std::size_t count)
{
    if (std::fwrite(bytes, 1, count, file_.get()) != count)
        throw SystemFailure(path_, errno);
}

} // namespace tympan::tool
