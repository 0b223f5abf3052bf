// `tympan stream --indexes`: line work as one stream of colour indexes for all separations.
#include "failure.h"
#include "line_work_rows.h"
#include "offsets_file.h"
#include "output_file.h"
#include "plain_file.h"
#include "separations.h"
#include "stream.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <vector>

namespace tympan::tool {

namespace {

unsigned char WhiteOf(const StreamOptions& options, const LwPictureParameters& record)
{
    const std::optional<unsigned int> white = options.white ? options.white : PaperIndex(record);
    if (!white)
        throw UsageFailure("--white: no colour of " + options.file +
                           " is without ink; name the index that stands for white");
    const unsigned int colours = record.FileColorsNumber();
    if (*white < 1 || *white > colours)
        throw UsageFailure("--white: " + options.file + " has the colours 1 to " +
                           std::to_string(colours));
    return static_cast<unsigned char>(*white);
}

// A picture as a whole file, and its stream in memory.
class IndexStream {
  public:
    IndexStream(const Picture& picture, const StreamOptions& options)
        : picture_(picture), options_(options),
          whole_(create_velmar_lw_file_object(picture.Path().c_str(), true))
    {
        if (whole_ == nullptr)
            throw FileFailure(picture.Path(), "can't be opened again", {}, kTryAgainAdvice);
    }

    const LwPictureParameters& Record() const { return *whole_->GetLwPictureParams(); }

    void Make()
    {
        const unsigned char white = WhiteOf(options_, Record());
        const std::uint64_t room = Room();
        buffer_.reset(new std::uint8_t[room]); // not filled, for most is written
        offsets_.resize(picture_.Height());
        unsigned char* end = buffer_.get();
        unsigned long* offset = offsets_.data();
        bytes_ = whole_->GetLWPictureRows(end, 0, picture_.Height() - 1, offset, 0, NoSeparation,
                                          options_.gap, options_.copies, white, 0,
                                          !options_.lengthFirst);
        RequireNoFailure();
    }

    std::span<const std::uint8_t> Bytes() const { return { buffer_.get(), bytes_ }; }
    const std::vector<unsigned long>& Offsets() const { return offsets_; }

    std::vector<std::uint8_t> Lut(ColorSeparationType separation) const
    {
        const std::unique_ptr<unsigned char[]> table(
            whole_->GetSeparationLut(separation, options_.transparentAsPaper, nullptr));
        return { table.get(), table.get() + Record().FileColorsNumber() };
    }

  private:
    std::uint64_t Room() const
    {
        const unsigned long room =
            whole_->GetLWBufferSize(0, picture_.Height() - 1, options_.copies, options_.gap, true);
        RequireNoFailure();
        const std::uint64_t offsets = std::uint64_t{ picture_.Height() } * sizeof(unsigned long);
        if (room > options_.maxMemory || offsets > options_.maxMemory - room)
            throw FileFailure(
                picture_.Path(),
                "the stream takes " + std::to_string(room + offsets) + " bytes of memory", {},
                "Allow it by --max-memory, or take separation by separation, "
                "which is made in parts: --separation in place of --indexes.");
        return room;
    }

    void RequireNoFailure() const
    {
        if (whole_->TraceStatus() != 0)
            throw FileFailure(picture_.Path(), "the rows can't be read", whole_->TraceStatus(),
                              kCheckAdvice);
    }

    const Picture& picture_;
    const StreamOptions& options_;
    std::unique_ptr<VelmarLWFileInterface> whole_;
    std::unique_ptr<std::uint8_t[]> buffer_;
    std::size_t bytes_ = 0;
    std::vector<unsigned long> offsets_;
};

// The tables of the picture's separations in their order, one behind the other.
void WriteLut(const Picture& picture, const IndexStream& stream, const OutputFile& output)
{
    PlainFile file(output);
    for (const ColorSeparationType separation : SeparationsOf(picture.Object()))
        file.Write(stream.Lut(separation));
    file.Finish();
}

} // namespace

void StreamIndexes(const Picture& picture, const StreamOptions& options)
{
    IndexStream stream(picture, options);
    stream.Make();
    OutputFile output(options.output, options.file, {}, Dash::IsStandardOutput);
    OffsetsFile offsets(options.offsets, options.file);
    std::optional<OutputFile> lut;
    if (!options.lut.empty()) {
        lut.emplace(options.lut, options.file);
        WriteLut(picture, stream, *lut);
    }
    PlainFile file(output);
    file.Write(stream.Bytes());
    for (const unsigned long offset : stream.Offsets())
        offsets.Write(offset);
    file.Finish();
    offsets.Finish();
    OutputFile::CommitTogether({ offsets.Output(), lut ? &*lut : nullptr, &output });
}

} // namespace tympan::tool
