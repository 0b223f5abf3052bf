// `tympan diff`: whether two pictures have the same samples, and where they don't.
#include "canonical_picture.h"
#include "command.h"
#include "diff_map.h"
#include "diff_measure.h"
#include "failure_json.h"
#include "names.h"
#include "output_file.h"
#include "standard_output.h"
#include "text_table.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <iostream>
#include <memory>
#include <string>
#include <string_view>
#include <system_error>
#include <vector>

namespace tympan::tool {

namespace {

struct DiffOptions {
    std::string a;
    std::string b;
    std::string asFormat;
    bool json = false;
    std::string image;
    std::uint32_t fit = 1600;
};

constexpr std::uint32_t kMostFit = 20000;
constexpr std::array<std::string_view, 1> kEndings{ ".png" };

constexpr char kFooter[] =
    R"(Pictures of different formats can be compared: what counts are the samples of which `tympan hash`
makes its sums. They must have the same size and the same separations. Told are how many pixels and
samples differ, the first that does, from the top and then from the left, and the largest
difference of each separation, in 255ths of full ink.

A pixel of the image has the colour of the largest difference in what it stands for; the legend
has the least difference of each colour. Where there is none, A is shown in light grey.

Exit status:
  0  the samples are the same
  1  some differ
  2  the pictures can't be compared, or wrong usage

Example:
  tympan diff photo.ct photo.tif
  tympan diff photo.ct proof.tif --image differences.png)";

// What two pictures that could be compared have in common, and what not.
struct Compared {
    std::uint32_t width;
    std::uint32_t height;
    std::vector<std::string> names;
    PictureDifference difference;

    bool IsSame() const { return difference.pixels == 0; }
    std::uint64_t Pixels() const { return std::uint64_t{ width } * height; }
};

// ---- comparing

std::string SizeOf(const CanonicalPicture& picture)
{
    return std::to_string(picture.Width()) + " x " + std::to_string(picture.Height()) + " pixels";
}

std::string ListOf(const std::vector<std::string>& names)
{
    std::string list;
    for (const std::string& name : names)
        list += (list.empty() ? "" : ", ") + name;
    return list;
}

void RequireAlike(const CanonicalPicture& a, const CanonicalPicture& b)
{
    if (SizeOf(a) != SizeOf(b))
        throw FileFailure(b.Path(), "has " + SizeOf(b) + ", but " + a.Path() + " has " + SizeOf(a),
                          std::nullopt, "Only pictures of the same size can be compared.");
    if (a.Names() != b.Names())
        throw FileFailure(b.Path(),
                          "its separations are " + ListOf(b.Names()) + ", but those of " +
                              a.Path() + " are " + ListOf(a.Names()),
                          std::nullopt, "Only pictures of the same separations can be compared.");
}

PictureDifference CompareWithMap(CanonicalPicture& a, CanonicalPicture& b,
                                 const DiffOptions& options)
{
    const PixelSize size{ a.Width(), a.Height() };
    OutputFile output(options.image, a.Path());
    DiffMap map(output, size, Fitted(size, options.fit));
    PictureDifference difference =
        Compare(a, b, [&](std::uint32_t row, auto differences) { map.Add(a, row, differences); });
    map.Finish();
    output.Commit();
    return difference;
}

Compared Compare(const DiffOptions& options)
{
    const auto open = [&](const std::string& path) {
        return Guard(path, [&] { return CanonicalPicture(path, options.asFormat); });
    };
    CanonicalPicture a = open(options.a);
    CanonicalPicture b = open(options.b);
    RequireAlike(a, b);
    return { a.Width(), a.Height(), a.Names(),
             options.image.empty() ? Compare(a, b, {}) : CompareWithMap(a, b, options) };
}

// ---- as JSON

Json JsonOf(const DiffOptions& options, const char* verdict)
{
    Json object;
    AddPath(object, "a", options.a);
    AddPath(object, "b", options.b);
    object["verdict"] = verdict;
    return object;
}

Json FirstAsJson(const Compared& compared)
{
    const auto& first = compared.difference.first;
    if (!first)
        return nullptr;
    return { { "x", first->column },
             { "y", first->row },
             { "separation", compared.names[first->separation] },
             { "a_sample", first->a },
             { "b_sample", first->b } };
}

void PrintJson(const DiffOptions& options, const Compared& compared)
{
    Json object = JsonOf(options, compared.IsSame() ? "same" : "different");
    object["width"] = compared.width;
    object["height"] = compared.height;
    object["differing_pixels"] = compared.difference.pixels;
    object["first"] = FirstAsJson(compared);
    for (std::size_t i = 0; i < compared.names.size(); ++i) {
        const SeparationDifference& separation = compared.difference.separations[i];
        object["separations"].push_back({ { "name", compared.names[i] },
                                          { "differing_samples", separation.samples },
                                          { "largest_difference", separation.largest } });
    }
    PrintIndented(object);
}

// ---- as text

void PrintDifference(const DiffOptions& options, const Compared& compared)
{
    const PictureDifference& difference = compared.difference;
    const auto pixels = static_cast<double>(compared.Pixels());
    const DifferingSample& first = *difference.first;
    std::cout << Shown(options.a) << " and " << Shown(options.b) << " differ in "
              << difference.pixels << " of " << compared.Pixels() << " pixels, "
              << PercentText(static_cast<double>(difference.pixels), pixels) << "\n  First at x "
              << first.column << ", y " << first.row << ": " << compared.names[first.separation]
              << " is " << int{ first.a } << " and " << int{ first.b } << '\n';
    std::vector<TableLine> lines{ { "", "Samples", "Area", "Largest difference" } };
    for (std::size_t i = 0; i < compared.names.size(); ++i) {
        const SeparationDifference& separation = difference.separations[i];
        lines.push_back({ compared.names[i], std::to_string(separation.samples),
                          PercentText(static_cast<double>(separation.samples), pixels),
                          std::to_string(separation.largest) });
    }
    PrintTable(lines);
}

void Print(const DiffOptions& options, const Compared& compared)
{
    if (options.json)
        PrintJson(options, compared);
    else if (compared.IsSame())
        std::cout << Shown(options.a) << " and " << Shown(options.b)
                  << " are the same: " << compared.width << " x " << compared.height
                  << " pixels of " << ListOf(compared.names) << '\n';
    else
        PrintDifference(options, compared);
}

void PrintFailure(const DiffOptions& options, const FileFailure& failure)
{
    Json object = JsonOf(options, "not compared");
    AddPath(object, "failed", failure.File());
    object.update(AsJson(failure));
    PrintIndented(object);
    std::cout.flush();
}

// ---- the subcommand

ExitStatus Tell(const DiffOptions& options)
{
    try {
        return Guard(options.a, [&] {
            const Compared compared = Compare(options);
            Print(options, compared);
            FinishStandardOutput();
            return compared.IsSame() ? ExitStatus::Fine : ExitStatus::PicturesDiffer;
        });
    } catch (const FileFailure& failure) {
        if (options.json)
            PrintFailure(options, failure);
        Report(failure);
        return ExitStatus::NotCompared;
    }
}

// The other picture is asked by OutputFile.
void RequireOtherFile(const DiffOptions& options)
{
    std::error_code ignored;
    if (std::filesystem::equivalent(options.image, options.b, ignored))
        throw UsageFailure(options.image +
                           ": the image is a file to compare; give it another name");
}

void Diff(const DiffOptions& options)
{
    if (!options.image.empty()) {
        RequireEnding(options.image, kEndings);
        RequireOtherFile(options);
    }
    const ExitStatus status = Tell(options);
    if (status != ExitStatus::Fine)
        throw EndWith{ status };
}

} // namespace

void DeclareDiff(const Options& command)
{
    const auto options = std::make_shared<DiffOptions>();
    command.Add("A", options->a, "A picture").Required();
    command.Add("B", options->b, "The picture that it is compared with").Required();
    command.AddFlag("--json", options->json, "Write a JSON object");
    const Option image = command
                             .Add("--image", options->image,
                                  "Write a map of the differences here, a PNG file with a legend")
                             .Called("FILE")
                             .NotEmpty();
    command
        .Add("--fit", options->fit, "Make the map's longer side at most N pixels; never enlarges")
        .Needs(image)
        .Between(1U, kMostFit)
        .TellDefault();
    AddAsOption(command, options->asFormat);
    command.AddFooter(kFooter);
    command.Run([options] { Diff(*options); });
}

} // namespace tympan::tool
