// The places of a stream's rows, as a text that a person may ask for.
#pragma once

#include "output_file.h"
#include "plain_file.h"

#include <cstdint>
#include <optional>
#include <string>

namespace tympan::tool {

/// A decimal number a line; nothing for an empty path. All fail with a FileFailure of the output.
class OffsetsFile {
  public:
    /// \param input the picture that is read meanwhile
    OffsetsFile(const std::string& path, const std::string& input);

    void Write(std::uint64_t offset);
    /// Closes the file, which has its name yet to take.
    void Finish();
    /// What takes the name; null for an empty path.
    OutputFile* Output() { return output_ ? &*output_ : nullptr; }

  private:
    std::optional<OutputFile> output_;
    std::optional<PlainFile> file_;
};

} // namespace tympan::tool
