#include "grey_files.h"

#include "plain_file.h"
#include "png_file.h"
#include "tiff_writer.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <string>

namespace tympan::tool {

namespace {

// Rows as they are, behind a few bytes that some formats want.
class PlainRows : public RowWriter {
  public:
    PlainRows(const OutputFile& output, std::string_view start) : file_(output)
    {
        file_.Write(start);
    }

    void Write(std::span<const std::uint8_t> row) override { file_.Write(row); }
    void Finish() override { file_.Finish(); }

  private:
    PlainFile file_;
};

std::unique_ptr<RowWriter> MakePgm(const OutputFile& output, const WrittenForm& form)
{
    return std::make_unique<PlainRows>(output, "P5\n" + std::to_string(form.width) + " " +
                                                   std::to_string(form.height) + "\n255\n");
}

std::unique_ptr<RowWriter> MakePng(const OutputFile& output, const WrittenForm& form)
{
    return std::make_unique<PngFile>(output, form, PngColour::Grey);
}

std::unique_ptr<RowWriter> MakeTiff(const OutputFile& output, const WrittenForm& form)
{
    return std::make_unique<TiffWriter>(output, form, TiffSamples{ TiffColour::Grey, {} });
}

std::unique_ptr<RowWriter> MakeRaw(const OutputFile& output, const WrittenForm&)
{
    return std::make_unique<PlainRows>(output, "");
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
