// `tympan hash`: SHA-256 sums of what is in a picture, whatever its format.
#include "canonical_picture.h"
#include "command.h"
#include "files_told.h"
#include "names.h"
#include "progress.h"
#include "sha256.h"
#include "standard_output.h"
#include "text_table.h"

#include <cstddef>
#include <cstdint>
#include <iostream>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace tympan::tool {

namespace {

struct HashOptions {
    std::vector<std::string> files;
    std::string asFormat;
    bool json = false;
};

constexpr char kFooter[] =
    R"(A sum is of the picture's samples, not of the file's bytes: a CT, a TIFF and a decoded JPEG that
have the same pixels have the same sums. Each separation has one of its size and samples, and the
picture one of its size and of the names and sums of its separations. Resolution and texts don't
count.

Inks and greys count as 255 for no ink, whatever the file has, and their names in lower case. The only
separation of a picture is called single. A palette counts as the red, green and blue that it stands
for. Transparent colours of line work count by the ink value that `tympan info` tells.

docs/canonical-samples.md tells it to the byte, so that other programs can make the same sums.

Example:
  tympan hash photo.ct photo.tif
  tympan hash --json *.ct
  tympan rows photo.ct --separation cyan -o - --format raw | sha256sum)";

struct SeparationHash {
    std::string name;
    std::string sha256;
};

struct PictureHash {
    std::uint32_t width;
    std::uint32_t height;
    std::string sha256;
    std::vector<SeparationHash> separations;
};

// ---- the sums

void AddText(Sha256& sum, std::string_view text)
{
    sum.Add({ reinterpret_cast<const unsigned char*>(text.data()), text.size() });
}

// The line in front of what is summed. The size is in it: the same bytes make other pictures too.
std::string HeadOf(const std::string& kind, std::uint32_t width, std::uint32_t height)
{
    return "tympan-" + kind + "-1 " + std::to_string(width) + " " + std::to_string(height) + "\n";
}

std::string SumOf(const PictureHash& hash)
{
    Sha256 sum;
    AddText(sum, HeadOf("picture", hash.width, hash.height));
    for (const SeparationHash& separation : hash.separations)
        AddText(sum, separation.sha256 + " " + separation.name + "\n");
    return HexOf(sum.Finish());
}

void AddRows(CanonicalPicture& picture, std::vector<Sha256>& sums)
{
    Progress progress("Hashing " + picture.Path(), picture.Height());
    for (std::uint32_t row = 0; row < picture.Height(); ++row) {
        for (std::size_t i = 0; i < sums.size(); ++i)
            sums[i].Add(picture.Row(row, i));
        progress.Advance(1);
    }
    picture.RequireStillWhole();
}

PictureHash HashOf(const std::string& file, const std::string& asFormat)
{
    CanonicalPicture picture(file, asFormat);
    PictureHash hash{ picture.Width(), picture.Height(), {}, {} };
    std::vector<Sha256> sums(picture.Names().size());
    for (Sha256& sum : sums)
        AddText(sum, HeadOf("separation", hash.width, hash.height));
    AddRows(picture, sums);
    for (std::size_t i = 0; i < sums.size(); ++i)
        hash.separations.push_back({ picture.Names()[i], HexOf(sums[i].Finish()) });
    hash.sha256 = SumOf(hash);
    return hash;
}

// ---- telling them

void Print(const std::string& file, const PictureHash& hash)
{
    std::vector<TableLine> lines{ { "picture", hash.sha256 } };
    for (const SeparationHash& separation : hash.separations)
        lines.push_back({ separation.name, separation.sha256 });
    std::cout << Shown(file) << ": " << hash.width << " x " << hash.height << " pixels\n";
    PrintTable(lines);
}

Json AsJson(const PictureHash& hash)
{
    Json object{ { "width", hash.width }, { "height", hash.height }, { "sha256", hash.sha256 } };
    for (const SeparationHash& separation : hash.separations)
        object["separations"].push_back(
            { { "name", separation.name }, { "sha256", separation.sha256 } });
    return object;
}

void Hash(const HashOptions& options)
{
    TellOfFiles(options.files, options.json, [&](const std::string& file, Json& object) {
        const PictureHash hash = Guard(file, [&] { return HashOf(file, options.asFormat); });
        if (!options.json)
            Print(file, hash);
        object.update(AsJson(hash));
    });
}

} // namespace

void DeclareHash(const Options& command)
{
    const auto options = std::make_shared<HashOptions>();
    command.Add("FILE", options->files, "The pictures").Required();
    command.AddFlag("--json", options->json, "Write a JSON array with an object for each file");
    AddAsOption(command, options->asFormat);
    command.AddFooter(kFooter);
    command.Run([options] { Hash(*options); });
}

} // namespace tympan::tool
