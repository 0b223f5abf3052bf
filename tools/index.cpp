// `tympan index`: the side files of pictures.
#include "command.h"
#include "failure.h"
#include "index_jpeg.h"
#include "line_work_rows.h"
#include "output_file.h"
#include "picture.h"
#include "picture_source.h"

#include <filesystem>
#include <memory>
#include <string>
#include <vector>

namespace tympan::tool {

namespace {

struct IndexOptions {
    std::vector<std::string> files;
    std::string asFormat;
};

constexpr char kFooter[] =
    R"(The side file has the picture's name with the ending .bin, and stands beside it. That
of line work (LW) keeps the size of its run stream, so that a program needn't count.
That of a JPEG tells where its bands of 8 rows stand, without which it can't be read; the
JPEG must have a restart marker behind each row of blocks. `tympan info` tells whether a
side file is there and goes with the picture.

All files are looked at; the exit status is 1 if any failed.

Example:
  tympan index map.lw photo.jpg)";

// Without an ending to replace, the rule for the name cuts a folder's, or all.
void RequireEndingToReplace(const std::string& path)
{
    if (std::filesystem::path(path).filename().string().find('.') == std::string::npos)
        throw FileFailure(path, "has no ending in its name that .bin could take the place of", {},
                          "Give the file a name such as picture.lw.");
}

void RequireOwnKind(const LineWorkSideFile& side)
{
    if (side.state == SideFileState::foreign)
        throw FileFailure(side.path.GetString(),
                          "is no side file of line work, and is left as it is", {},
                          "A JPEG file of the same name has such a one: rename one of the two "
                          "pictures.");
}

void MakeSideFile(const std::string& path, const OutputFile& output)
{
    const std::unique_ptr<VelmarLWFileInterface> whole(
        create_velmar_lw_file_object(path.c_str(), true));
    if (whole == nullptr)
        throw FileFailure(path, "can't be opened again", {}, kTryAgainAdvice);
    // The library derives the side file's name from the picture's.
    const std::string& temporary = output.WritingPath();
    CString name((temporary.substr(0, temporary.rfind('.')) + ".lw").c_str());
    bool isSound = false;
    Guard(output.Path(), [&] { whole->CreateLwBinFile(name, false, isSound); });
    if (!isSound || whole->TraceStatus() != 0)
        throw FileFailure(path, "the rows are not sound", whole->TraceStatus(), kCheckAdvice);
}

void IndexLineWork(const Picture& picture)
{
    RequireEndingToReplace(picture.Path());
    const LineWorkSideFile side = SideFileOf(picture.Path().c_str(), LineWorkRecord(picture));
    OutputFile output(side.path.GetString(), picture.Path(), ".bin");
    RequireOwnKind(side);
    MakeSideFile(picture.Path(), output);
    output.Commit();
    if (SideFileOf(picture.Path().c_str(), LineWorkRecord(picture)).state != SideFileState::ok)
        Warn(picture.Path(), "the rows don't fill the file to its end: `tympan info` will call its "
                             "side file stale. " +
                                 std::string(kCheckAdvice));
}

void IndexOne(const std::string& file, const std::string& asFormat)
{
    if (asFormat.empty() ? IsJpegFile(file) : asFormat == "jpeg")
        return IndexJpeg(file);
    const Picture picture = OpenPicture(file, asFormat);
    if (picture.AsLw() == nullptr)
        throw FileFailure(
            file, "a " + std::string(picture.Format()) + " picture has no side file", {},
            "Only line work (LW) and JPEG pictures have one; this one is read without.");
    IndexLineWork(picture);
}

void Index(const IndexOptions& options)
{
    bool failed = false;
    for (const std::string& file : options.files) {
        try {
            Guard(file, [&] { IndexOne(file, options.asFormat); });
        } catch (const FileFailure& failure) {
            Report(failure);
            failed = true;
        }
    }
    if (failed)
        throw FailuresReported();
}

} // namespace

void DeclareIndex(const Options& command)
{
    const auto options = std::make_shared<IndexOptions>();
    command.Add("FILE", options->files, "The pictures").Required();
    AddAsOption(command, options->asFormat);
    command.AddFooter(kFooter);
    command.Run([options] { Index(*options); });
}

} // namespace tympan::tool
