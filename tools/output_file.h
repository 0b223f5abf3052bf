// Outputs are written beside their place and take their name when they are whole.
#pragma once

#include <initializer_list>
#include <string>

namespace tympan::tool {

/// An output under a temporary name in the folder of its path. `Commit` gives it its name, and
/// replaces a file that is there by that alone; without it the destructor, or a signal that ends
/// the program, removes it. Three at a time are guarded against signals.
class OutputFile {
  public:
    /// Makes the temporary file, empty.
    /// \param input the file that is read meanwhile, which the output may not be
    /// \param extension how the temporary name ends, point included
    /// \throws UsageFailure when the output is the input; FileFailure when it can't be made, or
    ///   what is there is no plain file or may not be written.
    OutputFile(const std::string& path, const std::string& input,
               const std::string& extension = {});
    /// The same for a file whose temporary name the library makes of another output's, by putting
    /// `extension` in place of that one's.
    OutputFile(const std::string& path, const std::string& input, const OutputFile& partner,
               const std::string& extension);
    OutputFile(const OutputFile&) = delete;
    OutputFile& operator=(const OutputFile&) = delete;
    ~OutputFile();

    /// Where to write: open this path anew.
    const std::string& WritingPath() const { return writingPath_; }
    /// The path as the person gave it, for messages.
    const std::string& Path() const { return path_; }

    /// Brings the bytes to the disk and renames. All who wrote must have closed the file.
    /// \throws FileFailure; the output's name is then as it was before.
    void Commit();
    /// The same for outputs that belong together: none takes its name before all are on the disk.
    /// \param outputs null stands for one that wasn't asked for
    /// \throws FileFailure of the first that fails.
    static void CommitTogether(std::initializer_list<OutputFile*> outputs);

  private:
    bool MakeTemporary();
    void Rename();

    std::string path_;
    std::string target_; // the path behind symbolic links
    std::string writingPath_;
    bool committed_ = false;
};

/// Lets the signals by which a person or the system ends a program remove an unfinished output, and
/// lets a write beyond a size limit fail instead of ending the program. Called once, by main.
void HandleEndingSignals();

} // namespace tympan::tool
