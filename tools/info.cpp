// `tympan info`: what the headers of picture files say.
#include "command.h"
#include "failure.h"
#include "info_json.h"
#include "names.h"
#include "page_info.h"
#include "page_paths.h"
#include "picture.h"
#include "picture_facts.h"
#include "separations.h"
#include "standard_output.h"
#include "tiff_file.h"
#include "tiff_plates.h"

#include <algorithm>
#include <cstdint>
#include <iostream>
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
    PathOptions paths;
};

// A file and what is known of it.
struct Known {
    const std::string& file;
    const Opening& opening;
    const InfoOptions& options;
    const char* index = nullptr;       ///< the state of the side file; null for formats without one
    std::optional<std::uint64_t> runs; ///< nothing when they were not asked for or can't be told
    std::optional<std::vector<ToldEntry>> entries; ///< of a page file

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

const PageFileInterface* PageOf(const BasePictureIF* picture)
{
    return dynamic_cast<const PageFileInterface*>(picture);
}

const JpegFileInterface* JpegOf(const BasePictureIF& picture)
{
    return dynamic_cast<const JpegFileInterface*>(&picture);
}

const TiffFileParam* TiffRecordOf(const BasePictureIF& picture)
{
    return dynamic_cast<const TiffFileParam*>(picture.PictureParams());
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
    if (entries)
        return std::nullopt; // a page has no samples
    const unsigned int bits = Picture().PictureParams()->BitsPerSample();
    const unsigned int separations = Picture().FileNumberOfSeparations();
    if (separations > 0)
        return bits / separations;
    return bits > 0 ? std::optional(bits) : std::nullopt; // of a TIFF, those of one sample
}

std::optional<unsigned int> Known::RowSize() const
{
    if (entries)
        return std::nullopt;
    const unsigned int bytes = Picture().PictureParams()->RowSize();
    return bytes > 0 || TiffItKindOf(Picture()) == nullptr ? std::optional(bytes) : std::nullopt;
}

const LwPictureParameters* ColoursOf(const BasePictureIF& picture)
{
    return dynamic_cast<const LwPictureParameters*>(picture.PictureParams());
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

void AddHeader(const Known& known, Json& object)
{
    const BasePictureIF& picture = known.Picture();
    object["file_type"] = WithReplacements(picture.FileType().GetString());
    AddGeometry(picture, object);
    object["bits_per_sample"] = NumberOrNull(known.BitsPerSample());
    object["row_size"] = NumberOrNull(known.RowSize());
    object["nlw"] = picture.Nlw();
    AddLineWork(known, object);
    AddJpeg(known, object);
    AddTiff(picture, object);
    object["entries"] = known.entries ? AsJson(*known.entries) : Json(nullptr);
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

std::string ResolutionText(const BasePictureIF& picture)
{
    constexpr int kDecimals = 4;
    if (const std::optional<double> both = ResolutionOfBoth(picture))
        return NumberText(*both, kDecimals) + " pixels per inch";
    const AxisResolution axes = AxisResolutionOf(picture);
    return NumberText(axes.alongWidth, kDecimals) + " pixels per inch along the width, " +
           NumberText(axes.alongHeight, kDecimals) + " along the height";
}

std::string SizeText(const BasePictureIF& picture, double perInch, int decimals)
{
    return Times(NumberText(WidthOf(picture) * perInch, decimals),
                 NumberText(HeightOf(picture) * perInch, decimals));
}

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
    const std::string size = PixelsText(picture);
    if (TiffItKindOf(picture) != nullptr)
        return { { "Size", size } }; // nothing else is read of such a file
    return {
        { "File type", type.empty() ? "none" : Shown(type) },
        { "Size", size },
        { "", SizeText(picture, 1.0, 3) + " inches" },
        { "", SizeText(picture, kMillimetresPerInch, 2) + " mm" },
        { "Resolution", ResolutionText(picture) },
        { "Separations", Shown(NamesOf(picture)) },
    };
}

// A page has no samples, and of TIFF/IT nothing is read.
Lines SampleLines(const Known& known)
{
    const BasePictureIF& picture = known.Picture();
    if (TiffItKindOf(picture) != nullptr)
        return {};
    Lines nlw{ { "NLW", picture.Nlw() ? "yes" : "no" } };
    if (known.entries)
        return nlw;
    const std::optional<unsigned int> bits = known.BitsPerSample();
    return { { "Sample",
               bits ? std::to_string(*bits) + (*bits == 1 ? " bit" : " bits") : "unknown" },
             { "Row", RowText(known) },
             nlw.front() };
}

Lines EntryLines(const Known& known)
{
    return known.entries ? LinesOf(*known.entries) : Lines();
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
        lines.emplace_back("Runs", std::to_string(*known.runs) + ", of " + NumberText(*mean, 2) +
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
             { HeaderLines, SampleLines, LineWorkLines, JpegLines, TiffLines, EntryLines })
            for (auto& line : linesOf(known))
                lines.push_back(std::move(line));
    std::cout << Shown(known.file) << '\n';
    for (const auto& [name, value] : lines) {
        std::string start = "  " + name;
        start.resize(std::max<std::size_t>(16, start.size() + 1), ' ');
        std::cout << start << value << '\n';
    }
    if (known.opening.failure)
        std::cout << (known.opening.opened.isOpen ? "  Not whole\n" : "  Not opened\n");
}

// The entries of a page whose header was read. One whose picture doesn't open fails the page.
std::optional<std::vector<ToldEntry>> EntriesOf(const std::string& file, Opening& opening)
{
    const PageFileInterface* const page = PageOf(opening.opened.picture.get());
    if (page == nullptr || opening.paths == nullptr || page->FileNumberOfSeparations() == 0)
        return std::nullopt;
    std::vector<ToldEntry> entries = TellEntries(file, *page, *opening.paths);
    const std::string problems = ProblemsOf(entries);
    if (!opening.failure && !problems.empty())
        opening.failure = FileFailure(file, problems, std::nullopt, kCheckAdvice);
    return entries;
}

// A file as far as it can be known, with what failed left in the opening.
Known Look(const std::string& file, Opening& opening, const InfoOptions& options)
{
    Known known{ file, opening, options, nullptr, {}, {} };
    try {
        known.entries = EntriesOf(file, opening);
        known.index = Guard(file, [&] { return SideFileText(file, opening); });
        if (options.runs)
            known.runs = CountRuns(file, opening);
    } catch (const FileFailure& failure) {
        opening.failure = failure;
    }
    return known;
}

void Info(const InfoOptions& options)
{
    Json objects = Json::array();
    bool failed = false;
    for (const std::string& file : options.files) {
        Opening opening = TryOpenPicture(file, options.asFormat, options.paths);
        const Known known = Look(file, opening, options);
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

Json InfoOf(const std::string& file, const std::string& asFormat, const PathOptions& paths)
{
    InfoOptions options;
    options.asFormat = asFormat;
    options.paths = paths;
    Opening opening = TryOpenPicture(file, asFormat, paths);
    return AsJson(Look(file, opening, options));
}

void DeclareInfo(const Options& command)
{
    const auto options = std::make_shared<InfoOptions>();
    command.Add("FILE", options->files, "The pictures").Required();
    command.AddFlag("--json", options->json, "Write a JSON array with an object for each file");
    command.AddFlag("--runs", options->runs, "Count the runs of line work, which reads it whole");
    AddAsOption(command, options->asFormat);
    AddPathOptions(command, options->paths);
    command.AddFooter(R"(All files are looked at; the exit status is 1 if any failed.

Of a page the entries are told too, offsets and sizes in inches, and the pictures that
they place: a page whose pictures aren't all found has failed.

Example:
  tympan info photo.ct
  tympan info --json *.ct
  tympan info --runs map.lw
  tympan info job.pg --map 'P:\JOBS=/srv/jobs')");
    command.Run([options] { Info(*options); });
}

} // namespace tympan::tool
