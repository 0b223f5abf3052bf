// Outputs are written under a temporary name, and take their own, or go to standard output, when they
// are whole.
#pragma once

#include <initializer_list>
#include <string>

namespace tympan::tool {

inline bool IsDash(const std::string& path)
{
    return path == "-";
}

/// What an output's path `-` means.
enum class Dash {
    Refused, ///< for outputs of several files, or that the command writes a text beside
    IsStandardOutput,
};

/// An output under a temporary name in the folder of its path. `Commit` gives it its name, and
/// replaces a file that is there by that alone; without it the destructor, or a signal that ends
/// the program, removes it. Three at a time are guarded against signals.
///
/// What is for standard output waits in the folder for temporary files, so that nothing of it goes
/// out before it is whole, and the writers may seek in it.
class OutputFile {
  public:
    /// Makes the temporary file, empty.
    /// \param input the file that is read meanwhile, which the output may not be
    /// \param extension how the temporary name ends, point included
    /// \throws UsageFailure when the output is the input, or is `-` and that is refused, or standard
    ///   output is a terminal; FileFailure when it can't be made, or what is there is no plain file
    ///   or may not be written.
    OutputFile(const std::string& path, const std::string& input, const std::string& extension = {},
               Dash dash = Dash::Refused);
    /// The same for a file whose temporary name the library makes of another output's, by putting
    /// `extension` in place of that one's.
    OutputFile(const std::string& path, const std::string& input, const OutputFile& partner,
               const std::string& extension);
    OutputFile(const OutputFile&) = delete;
    OutputFile& operator=(const OutputFile&) = delete;
    ~OutputFile();

    /// Where to write: open this path anew.
    const std::string& WritingPath() const { return writingPath_; }
    /// The path as the person gave it, or "standard output"; for messages.
    const std::string& Path() const { return path_; }

    /// Brings the bytes to the disk and renames, or copies them to standard output. All who wrote
    /// must have closed the file.
    /// \throws FileFailure; the output's name is then as it was before.
    void Commit();
    /// The same for outputs that belong together: none takes its name before all are on the disk,
    /// or out.
    /// \param outputs null stands for one that wasn't asked for
    /// \throws FileFailure of the first that fails.
    static void CommitTogether(std::initializer_list<OutputFile*> outputs);

  private:
    bool MakeTemporary();
    bool IsForStandardOutput() const { return target_.empty(); }
    void Secure() const;
    void Rename();

    std::string path_;
    std::string target_; // the path behind symbolic links; empty for standard output
    std::string writingPath_;
    bool committed_ = false;
};

/// Lets the signals by which a person or the system ends a program remove an unfinished output, and
/// lets a write beyond a size limit fail instead of ending the program. Called once, by main.
void HandleEndingSignals();

} // namespace tympan::tool
