// `tympan info`: what the headers of picture files say.
#include "command.h"
#include "failure.h"
#include "names.h"
#include "picture.h"
#include "separations.h"
#include "standard_output.h"
#include "tiff_file.h"
#include "tiff_plates.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <iostream>
#include <limits>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace tympan::tool {

namespace {

struct InfoOptions {
    std::vector<std::string> files;
    std::string asFormat;
    bool json = false;
    bool runs = false;
};

// A file and what is known of it.
struct Known {
    const std::string& file;
    const Opening& opening;
    const InfoOptions& options;
    const char* index = nullptr;       ///< the state of the side file; null for formats without one
    std::optional<std::uint64_t> runs; ///< nothing when they were not asked for or can't be told

    const BasePictureIF& Picture() const { return *opening.opened.picture; }
    /// Whether a header was read: a refused one leaves an empty record.
    bool HasHeader() const;
    /// Bits of one sample: the record of most formats counts those of all separations.
    std::optional<unsigned int> BitsPerSample() const;
    /// Bytes of a row: of one separation, or of all where the format stores them together.
    std::optional<unsigned int> RowSize() const;
    /// Pixels.
    std::optional<double> MeanRun() const
    {
        if (!runs || *runs == 0)
            return std::nullopt;
        return static_cast<double>(Picture().FileWidthInPixels()) *
               static_cast<double>(Picture().FileHeightInPixels()) / static_cast<double>(*runs);
    }
};

const JpegFileInterface* JpegOf(const BasePictureIF& picture)
{
    return dynamic_cast<const JpegFileInterface*>(&picture);
}

const TiffFileParam* TiffRecordOf(const BasePictureIF& picture)
{
    return dynamic_cast<const TiffFileParam*>(picture.PictureParams());
}

// What a TIFF/IT file's object is; null for other formats.
const char* TiffItKindOf(const BasePictureIF& picture)
{
    if (dynamic_cast<const TiffItCtP1Interface*>(&picture) != nullptr)
        return "CT";
    return dynamic_cast<const TiffItLwP1Interface*>(&picture) != nullptr ? "LW" : nullptr;
}

bool Known::HasHeader() const
{
    if (opening.opened.picture == nullptr)
        return false;
    return Picture().FileNumberOfSeparations() > 0 || TiffDetailsOf(Picture()) ||
           (TiffItKindOf(Picture()) != nullptr && opening.opened.isOpen);
}

std::optional<unsigned int> Known::BitsPerSample() const
{
    const unsigned int bits = Picture().PictureParams()->BitsPerSample();
    const unsigned int separations = Picture().FileNumberOfSeparations();
    if (separations > 0)
        return bits / separations;
    return bits > 0 ? std::optional(bits) : std::nullopt; // of a TIFF, those of one sample
}

std::optional<unsigned int> Known::RowSize() const
{
    const unsigned int bytes = Picture().PictureParams()->RowSize();
    return bytes > 0 || TiffItKindOf(Picture()) == nullptr ? std::optional(bytes) : std::nullopt;
}

// The kind of a TIFF or a TIFF/IT file; nothing for other formats.
std::optional<std::string> KindOf(const BasePictureIF& picture)
{
    if (const auto* const tiff = dynamic_cast<const TiffFileInterface*>(&picture))
        return TiffKindName(*tiff);
    const char* const kind = TiffItKindOf(picture);
    return kind != nullptr ? std::optional<std::string>(kind) : std::nullopt;
}

// Pixels per inch; nothing when the axes differ or the file tells none.
std::optional<double> ResolutionOfBoth(const BasePictureIF& picture)
{
    const AxisResolution axes = AxisResolutionOf(picture);
    const double resolution =
        KindOf(picture) ? std::max(axes.alongWidth, axes.alongHeight) : picture.FileResolution();
    if (picture.FileResolution() < 0.0 || !std::isfinite(resolution))
        return std::nullopt;
    return resolution;
}

// Not a number without a resolution.
double InInches(unsigned long pixels, double resolution)
{
    return std::isfinite(resolution) && resolution > 0.0 ? static_cast<double>(pixels) / resolution
                                                         : std::numeric_limits<double>::quiet_NaN();
}

const LwPictureParameters* ColoursOf(const BasePictureIF& picture)
{
    return dynamic_cast<const LwPictureParameters*>(picture.PictureParams());
}

// Whether the record has inches. Others have them only by their resolutions.
bool TellsInches(const BasePictureIF& picture)
{
    return JpegOf(picture) == nullptr && !KindOf(picture);
}

double HeightOf(const BasePictureIF& picture)
{
    if (TellsInches(picture))
        return picture.FileHeightInUnits();
    return InInches(picture.FileHeightInPixels(), AxisResolutionOf(picture).alongHeight);
}

double WidthOf(const BasePictureIF& picture)
{
    if (TellsInches(picture))
        return picture.FileWidthInUnits();
    return InInches(picture.FileWidthInPixels(), AxisResolutionOf(picture).alongWidth);
}

// The ink value that stands for transparent in a separation.
std::optional<unsigned int> TransparentInk(const LwPictureParameters& colours,
                                           ColorSeparationType separation)
{
    constexpr unsigned short kMost = 255;
    const unsigned short ink = colours.GetTransparentColor(separation);
    return ink <= kMost ? std::optional<unsigned int>(ink) : std::nullopt;
}

// Whether the picture's side file is there and goes with it; null for formats without one.
const char* SideFileText(const std::string& file, const Opening& opening)
{
    const BasePictureIF* const picture = opening.opened.picture.get();
    if (picture != nullptr && JpegOf(*picture) != nullptr) {
        const std::optional<JpegIndex> index = IndexOf(*picture);
        return !index ? "none" : index->fitsFile ? "ok" : "bad";
    }
    const LwPictureParameters* const colours = picture != nullptr ? ColoursOf(*picture) : nullptr;
    if (colours == nullptr)
        return nullptr;
    switch (SideFileOf(file.c_str(), *colours).state) {
    case SideFileState::ok: return "ok";
    case SideFileState::stale: return "stale";
    default: return "none";
    }
}

// Runs of the whole picture; nothing when the format has none.
std::optional<std::uint64_t> CountRuns(const std::string& file, const Opening& opening)
{
    constexpr std::uint64_t kRunBytes = 2;
    constexpr std::uint64_t kRowBytes = 4;    // delimiters
    constexpr std::uint64_t kSparedBytes = 2; // the size tells as many more than the rows have
    auto* const lineWork = dynamic_cast<LWFileInterface*>(opening.opened.picture.get());
    if (lineWork == nullptr || opening.failure)
        return std::nullopt;
    const auto height = static_cast<std::uint32_t>(lineWork->FileHeightInPixels());
    const std::uint64_t bytes = lineWork->GetLWBufferSize(0, height - 1, 1, 0, false);
    if (bytes == 0)
        throw FileFailure(file, "the runs can't be counted: the file ends in its last row",
                          lineWork->TraceStatus(), kCheckAdvice);
    return (bytes - kSparedBytes - kRowBytes * height) / kRunBytes;
}

template <typename Number>
Json NumberOrNull(const std::optional<Number>& number)
{
    return number ? Json(*number) : Json(nullptr);
}

Json NumberOrNull(double number)
{
    return std::isfinite(number) ? Json(number) : Json(nullptr);
}

Json TransparentColours(const BasePictureIF& picture, const LwPictureParameters& colours)
{
    Json object = Json::object();
    for (const ColorSeparationType separation : SeparationsOf(picture))
        object[NameOf(separation)] = NumberOrNull(TransparentInk(colours, separation));
    return object;
}

void AddLineWork(const Known& known, Json& object)
{
    const LwPictureParameters* const colours = ColoursOf(known.Picture());
    object["index"] = known.index != nullptr ? Json(known.index) : Json(nullptr);
    object["colors"] = colours != nullptr ? Json(colours->FileColorsNumber()) : Json(nullptr);
    object["transparent_colors"] =
        colours != nullptr ? TransparentColours(known.Picture(), *colours) : Json(nullptr);
    if (!known.options.runs)
        return;
    object["runs"] = NumberOrNull(known.runs);
    object["mean_run"] = NumberOrNull(known.MeanRun());
}

void AddJpeg(const Known& known, Json& object)
{
    const std::optional<JpegIndex> index = IndexOf(known.Picture());
    object["blocks"] = index ? Json(index->blocks.size()) : Json(nullptr);
    object["mcu_number"] = index ? Json(index->mcuNumber) : Json(nullptr);
}

void AddTiff(const BasePictureIF& picture, Json& object)
{
    const TiffFileParam* const record = TiffRecordOf(picture);
    object["kind"] = NumberOrNull(KindOf(picture));
    object["compression"] = record != nullptr ? Json(record->Compression()) : Json(nullptr);
    object["photometric"] = record != nullptr ? Json(record->Photometric()) : Json(nullptr);
}

Json SeparationNames(const BasePictureIF& picture)
{
    Json names = Json::array();
    for (const ColorSeparationType separation : SeparationsOf(picture))
        names.push_back(WithReplacements(NameOf(picture, separation)));
    return names;
}

void AddHeader(const Known& known, Json& object)
{
    const BasePictureIF& picture = known.Picture();
    const AxisResolution resolution = AxisResolutionOf(picture);
    object["file_type"] = WithReplacements(picture.FileType().GetString());
    object["width"] = picture.FileWidthInPixels();
    object["height"] = picture.FileHeightInPixels();
    object["width_in"] = NumberOrNull(WidthOf(picture));
    object["height_in"] = NumberOrNull(HeightOf(picture));
    object["resolution"] = NumberOrNull(ResolutionOfBoth(picture));
    object["resolution_x"] = NumberOrNull(resolution.alongWidth);
    object["resolution_y"] = NumberOrNull(resolution.alongHeight);
    object["separations"] = SeparationNames(picture);
    object["bits_per_sample"] = NumberOrNull(known.BitsPerSample());
    object["row_size"] = NumberOrNull(known.RowSize());
    object["nlw"] = picture.Nlw();
    AddLineWork(known, object);
    AddJpeg(known, object);
    AddTiff(picture, object);
}

Json AsJson(const Known& known)
{
    Json object = ObjectOf(known.file);
    if (known.opening.opened.picture != nullptr)
        object["format"] = known.opening.opened.format;
    if (known.HasHeader())
        AddHeader(known, object);
    if (const auto& failure = known.opening.failure) {
        object["error"] = WithReplacements(failure->WhatHappened());
        object["code"] = failure->Code() ? Json(*failure->Code()) : Json(nullptr);
    }
    return object;
}

// ---- as text

std::string Number(double number, int decimals)
{
    if (!std::isfinite(number))
        return "unknown";
    std::array<char, 64> text{};
    std::snprintf(text.data(), text.size(), "%.*f", decimals, number);
    std::string result(text.data());
    if (result.find('.') != std::string::npos) {
        result.erase(result.find_last_not_of('0') + 1);
        if (result.back() == '.')
            result.pop_back();
    }
    return result;
}

std::string Times(const std::string& width, const std::string& height)
{
    return width + " x " + height;
}

std::string ResolutionText(const BasePictureIF& picture)
{
    constexpr int kDecimals = 4;
    if (const std::optional<double> both = ResolutionOfBoth(picture))
        return Number(*both, kDecimals) + " pixels per inch";
    const AxisResolution axes = AxisResolutionOf(picture);
    return Number(axes.alongWidth, kDecimals) + " pixels per inch along the width, " +
           Number(axes.alongHeight, kDecimals) + " along the height";
}

std::string SizeText(const BasePictureIF& picture, double perInch, int decimals)
{
    return Times(Number(WidthOf(picture) * perInch, decimals),
                 Number(HeightOf(picture) * perInch, decimals));
}

using Lines = std::vector<std::pair<const char*, std::string>>;

std::string RowText(const Known& known)
{
    const BasePictureIF& picture = known.Picture();
    const std::string bytes = std::to_string(known.RowSize().value_or(0)) + " bytes";
    if (TiffRecordOf(picture) != nullptr)
        return bytes + ", all samples";
    return bytes + (JpegOf(picture) == nullptr ? " a separation" : ", decoded");
}

Lines HeaderLines(const Known& known)
{
    constexpr double kMillimetresPerInch = 25.4;
    const BasePictureIF& picture = known.Picture();
    const std::string type = picture.FileType().GetString();
    const std::string size = Times(std::to_string(picture.FileWidthInPixels()),
                                   std::to_string(picture.FileHeightInPixels())) +
                             " pixels";
    const std::optional<unsigned int> bits = known.BitsPerSample();
    if (TiffItKindOf(picture) != nullptr)
        return { { "Size", size } }; // nothing else is read of such a file
    return {
        { "File type", type.empty() ? "none" : Shown(type) },
        { "Size", size },
        { "", SizeText(picture, 1.0, 3) + " inches" },
        { "", SizeText(picture, kMillimetresPerInch, 2) + " mm" },
        { "Resolution", ResolutionText(picture) },
        { "Separations", Shown(NamesOf(picture)) },
        { "Sample", bits ? std::to_string(*bits) + (*bits == 1 ? " bit" : " bits") : "unknown" },
        { "Row", RowText(known) },
        { "NLW", picture.Nlw() ? "yes" : "no" },
    };
}

Lines LineWorkLines(const Known& known)
{
    const LwPictureParameters* const colours = ColoursOf(known.Picture());
    if (colours == nullptr)
        return {};
    std::string transparent;
    for (const ColorSeparationType separation : SeparationsOf(known.Picture())) {
        const auto ink = TransparentInk(*colours, separation);
        transparent += (transparent.empty() ? "" : ", ") + NameOf(separation) + " " +
                       (ink ? std::to_string(*ink) : "none");
    }
    Lines lines{ { "Colours", std::to_string(colours->FileColorsNumber()) },
                 { "Transparent", transparent },
                 { "Index", known.index != nullptr ? known.index : "unknown" } };
    if (const auto mean = known.MeanRun())
        lines.emplace_back("Runs", std::to_string(*known.runs) + ", of " + Number(*mean, 2) +
                                       " pixels in the mean");
    return lines;
}

Lines JpegLines(const Known& known)
{
    if (JpegOf(known.Picture()) == nullptr)
        return {};
    Lines lines{ { "Index", known.index != nullptr ? known.index : "unknown" } };
    if (const std::optional<JpegIndex> index = IndexOf(known.Picture())) {
        lines.emplace_back("Blocks", std::to_string(index->blocks.size()));
        lines.emplace_back("MCU number", std::to_string(index->mcuNumber));
    }
    return lines;
}

Lines TiffLines(const Known& known)
{
    const std::optional<std::string> kind = KindOf(known.Picture());
    const TiffFileParam* const record = TiffRecordOf(known.Picture());
    Lines lines;
    if (kind)
        lines.emplace_back("Kind", *kind);
    if (record == nullptr)
        return lines;
    constexpr unsigned long kNone = 1; // in a file; 0 in the record
    const unsigned long number = std::max(record->Compression(), kNone);
    const std::string name = CompressionName(number);
    lines.emplace_back("Compression", name.empty() ? std::to_string(number) : name);
    return lines;
}

void Print(const Known& known)
{
    Lines lines;
    if (known.opening.opened.picture != nullptr)
        lines.emplace_back("Format", known.opening.opened.format);
    if (known.HasHeader())
        for (Lines (*const linesOf)(const Known&) :
             { HeaderLines, LineWorkLines, JpegLines, TiffLines })
            for (auto& line : linesOf(known))
                lines.push_back(std::move(line));
    std::cout << Shown(known.file) << '\n';
    for (const auto& [name, value] : lines) {
        std::string start = "  " + std::string(name);
        start.resize(16, ' ');
        std::cout << start << value << '\n';
    }
    if (known.opening.failure)
        std::cout << (known.opening.opened.isOpen ? "  Not whole\n" : "  Not opened\n");
}

void Info(const InfoOptions& options)
{
    Json objects = Json::array();
    bool failed = false;
    for (const std::string& file : options.files) {
        Opening opening = TryOpenPicture(file, options.asFormat);
        const char* index = nullptr;
        std::optional<std::uint64_t> runs;
        try {
            index = Guard(file, [&] { return SideFileText(file, opening); });
            if (options.runs)
                runs = CountRuns(file, opening);
        } catch (const FileFailure& failure) {
            opening.failure = failure;
        }
        const Known known{ file, opening, options, index, runs };
        if (options.json)
            objects.push_back(AsJson(known));
        else
            Print(known);
        if (!opening.failure)
            continue;
        std::cout.flush();
        Report(*opening.failure);
        failed = true;
    }
    if (options.json)
        PrintIndented(objects);
    FinishStandardOutput();
    if (failed)
        throw FailuresReported();
}

} // namespace

void AddInfo(CLI::App& app)
{
    const auto options = std::make_shared<InfoOptions>();
    CLI::App& command = *app.add_subcommand("info", "Tell what picture files are");
    command.add_option("FILE", options->files, "The pictures")->required();
    command.add_flag("--json", options->json, "Write a JSON array with an object for each file");
    command.add_flag("--runs", options->runs, "Count the runs of line work, which reads it whole");
    AddAsOption(command, options->asFormat);
    command.footer(R"(All files are looked at; the exit status is 1 if any failed.

Example:
  tympan info photo.ct
  tympan info --json *.ct
  tympan info --runs map.lw)");
    command.callback([options] { Info(*options); });
}

} // namespace tympan::tool
