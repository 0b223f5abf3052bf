#include "grey_files.h"

#include "failure.h"
#include "png_file.h"
#include "tiff_writer.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstddef>
#include <cstdio>
#include <string>

namespace tympan::tool {

namespace {

struct CloseFile {
    void operator()(std::FILE* file) const { std::fclose(file); }
};

// Rows as they are, behind a few bytes that some formats want.
class PlainFile : public RowWriter {
  public:
    PlainFile(const OutputFile& output, std::string_view start)
        : path_(output.Path()), file_(std::fopen(output.WritingPath().c_str(), "wbe"))
    {
        if (file_ == nullptr)
            throw SystemFailure(path_, errno);
        Put(start.data(), start.size());
    }

    void Write(std::span<const std::uint8_t> row) override { Put(row.data(), row.size()); }

    void Finish() override
    {
        if (std::fclose(file_.release()) != 0)
            throw SystemFailure(path_, errno);
    }

  private:
    void Put(const void* bytes, std::size_t count)
    {
        if (std::fwrite(bytes, 1, count, file_.get()) != count)
            throw SystemFailure(path_, errno);
    }

    std::string path_;
    std::unique_ptr<std::FILE, CloseFile> file_;
};

std::unique_ptr<RowWriter> MakePgm(const OutputFile& output, const WrittenForm& form)
{
    return std::make_unique<PlainFile>(output, "P5\n" + std::to_string(form.width) + " " +
                                                   std::to_string(form.height) + "\n255\n");
}

std::unique_ptr<RowWriter> MakePng(const OutputFile& output, const WrittenForm& form)
{
    return std::make_unique<PngFile>(output, form, PngColour::Grey);
}

std::unique_ptr<RowWriter> MakeTiff(const OutputFile& output, const WrittenForm& form)
{
    return std::make_unique<TiffWriter>(output, form, TiffColour::Grey);
}

std::unique_ptr<RowWriter> MakeRaw(const OutputFile& output, const WrittenForm&)
{
    return std::make_unique<PlainFile>(output, "");
}

using Maker = std::unique_ptr<RowWriter> (*)(const OutputFile&, const WrittenForm&);

constexpr std::array<std::string_view, 5> kEndings{ ".pgm", ".png", ".tif", ".tiff", ".raw" };
constexpr std::array<Maker, kEndings.size()> kMakers{ MakePgm, MakePng, MakeTiff, MakeTiff,
                                                      MakeRaw };

} // namespace

std::span<const std::string_view> GreyEndings()
{
    return kEndings;
}

std::unique_ptr<RowWriter> MakeGreyFile(std::string_view ending, const OutputFile& output,
                                        const WrittenForm& form)
{
    const auto place = std::find(kEndings.begin(), kEndings.end(), ending) - kEndings.begin();
    return kMakers.at(static_cast<std::size_t>(place))(output, form);
}

} // namespace tympan::tool
