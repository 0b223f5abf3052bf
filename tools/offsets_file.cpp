#include "offsets_file.h"

namespace tympan::tool {

OffsetsFile::OffsetsFile(const std::string& path, const std::string& input)
{
    if (path.empty())
        return;
    output_.emplace(path, input);
    file_.emplace(*output_);
}

void OffsetsFile::Write(std::uint64_t offset)
{
    if (file_)
        file_->Write(std::to_string(offset) + '\n');
}

void OffsetsFile::Finish()
{
    if (file_)
        file_->Finish();
}

} // namespace tympan::tool
