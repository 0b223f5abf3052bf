// `tympan info`: what the headers of picture files say.
#include "command.h"
#include "failure.h"
#include "names.h"
#include "picture.h"
#include "separations.h"

#include <nlohmann/json.hpp>

#include <array>
#include <cerrno>
#include <cmath>
#include <cstdio>
#include <iostream>
#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace tympan::tool {

namespace {

using Json = nlohmann::ordered_json;

struct InfoOptions {
    std::vector<std::string> files;
    std::string asFormat;
    bool json = false;
};

// A file and what is known of it.
struct Known {
    const std::string& file;
    const Opening& opening;

    const BasePictureIF& Picture() const { return *opening.opened.picture; }
    /// Whether a header was read: a refused one leaves an empty record.
    bool HasHeader() const
    {
        return opening.opened.picture != nullptr && Picture().FileNumberOfSeparations() > 0;
    }
    /// Bits of one sample: the record counts those of all separations.
    unsigned int BitsPerSample() const
    {
        return Picture().PictureParams()->BitsPerSample() / Picture().FileNumberOfSeparations();
    }
};

Json NumberOrNull(double number)
{
    return std::isfinite(number) ? Json(number) : Json(nullptr);
}

Json SeparationNames(const BasePictureIF& picture)
{
    Json names = Json::array();
    for (const ColorSeparationType separation : SeparationsOf(picture))
        names.push_back(NameOf(separation));
    return names;
}

void AddHeader(const Known& known, Json& object)
{
    const BasePictureIF& picture = known.Picture();
    const double resolution = picture.FileResolution();
    object["file_type"] = WithReplacements(picture.FileType().GetString());
    object["width"] = picture.FileWidthInPixels();
    object["height"] = picture.FileHeightInPixels();
    object["width_in"] = NumberOrNull(picture.FileWidthInUnits());
    object["height_in"] = NumberOrNull(picture.FileHeightInUnits());
    object["resolution"] = resolution < 0.0 ? Json(nullptr) : NumberOrNull(resolution);
    object["resolution_x"] = NumberOrNull(picture.ResolutionOnXScanAxis());
    object["resolution_y"] = NumberOrNull(picture.ResolutionOnScanAxis());
    object["separations"] = SeparationNames(picture);
    object["bits_per_sample"] = known.BitsPerSample();
    object["row_size"] = picture.PictureParams()->RowSize();
    object["nlw"] = picture.Nlw();
}

Json AsJson(const Known& known)
{
    Json object;
    object["file"] = WithReplacements(known.file);
    if (!IsUtf8(known.file))
        object["file_raw"] = PercentEncoded(known.file);
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
    if (picture.FileResolution() >= 0.0 && std::isfinite(picture.FileResolution()))
        return Number(picture.FileResolution(), kDecimals) + " pixels per inch";
    return Number(picture.ResolutionOnXScanAxis(), kDecimals) +
           " pixels per inch along the width, " +
           Number(picture.ResolutionOnScanAxis(), kDecimals) + " along the height";
}

std::string SizeText(const BasePictureIF& picture, double perInch, int decimals)
{
    return Times(Number(picture.FileWidthInUnits() * perInch, decimals),
                 Number(picture.FileHeightInUnits() * perInch, decimals));
}

using Lines = std::vector<std::pair<const char*, std::string>>;

Lines HeaderLines(const Known& known)
{
    constexpr double kMillimetresPerInch = 25.4;
    const BasePictureIF& picture = known.Picture();
    const std::string type = picture.FileType().GetString();
    return {
        { "File type", type.empty() ? "none" : Shown(type) },
        { "Size", Times(std::to_string(picture.FileWidthInPixels()),
                        std::to_string(picture.FileHeightInPixels())) +
                      " pixels" },
        { "", SizeText(picture, 1.0, 3) + " inches" },
        { "", SizeText(picture, kMillimetresPerInch, 2) + " mm" },
        { "Resolution", ResolutionText(picture) },
        { "Separations", NamesOf(SeparationsOf(picture)) },
        { "Sample", std::to_string(known.BitsPerSample()) + " bits" },
        { "Row", std::to_string(picture.PictureParams()->RowSize()) + " bytes a separation" },
        { "NLW", picture.Nlw() ? "yes" : "no" },
    };
}

void Print(const Known& known)
{
    Lines lines;
    if (known.opening.opened.picture != nullptr)
        lines.emplace_back("Format", known.opening.opened.format);
    if (known.HasHeader())
        for (auto& line : HeaderLines(known))
            lines.push_back(std::move(line));
    std::cout << Shown(known.file) << '\n';
    for (const auto& [name, value] : lines) {
        std::string start = "  " + std::string(name);
        start.resize(16, ' ');
        std::cout << start << value << '\n';
    }
    if (known.opening.failure)
        std::cout << "  Not opened\n";
}

void FinishStandardOutput()
{
    std::cout.flush();
    if (!std::cout)
        throw SystemFailure("standard output", errno != 0 ? errno : EIO);
}

void Info(const InfoOptions& options)
{
    Json objects = Json::array();
    bool failed = false;
    for (const std::string& file : options.files) {
        const Opening opening = TryOpenPicture(file, options.asFormat);
        const Known known{ file, opening };
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
        std::cout << objects.dump(2, ' ', true) << '\n';
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
    AddAsOption(command, options->asFormat);
    command.footer(R"(All files are looked at; the exit status is 1 if any failed.

Example:
  tympan info photo.ct
  tympan info --json *.ct)");
    command.callback([options] { Info(*options); });
}

} // namespace tympan::tool
