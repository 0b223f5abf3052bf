#include "tiff_it_writer.h"

#include "line_work_rows.h"
#include "names.h"
#include "plain_file.h"
#include "progress.h"
#include "separation_bands.h"
#include "separations.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <span>
#include <utility>
#include <vector>

namespace tympan::tool {

namespace {

using Bytes = std::vector<std::uint8_t>;

constexpr std::size_t kInks = 4;
constexpr std::uint8_t kFullInk = 255;

// The high byte first.
void Put(Bytes& bytes, std::uint32_t number, unsigned int size)
{
    while (size-- > 0)
        bytes.push_back(static_cast<std::uint8_t>(number >> (8 * size)));
}

// ---- the directory

enum class FieldType : std::uint16_t { Byte = 1, Short = 3, Long = 4, Rational = 5 };

struct Field {
    std::uint16_t tag;
    FieldType type;
    std::uint32_t count;
    Bytes values;
};

Field Short(std::uint16_t tag, std::uint32_t value, std::uint32_t count = 1)
{
    Field field{ tag, FieldType::Short, count, {} };
    for (std::uint32_t i = 0; i < count; ++i)
        Put(field.values, value, 2);
    return field;
}

Field Long(std::uint16_t tag, std::uint32_t value)
{
    Field field{ tag, FieldType::Long, 1, {} };
    Put(field.values, value, 4);
    return field;
}

constexpr std::uint32_t kResolutionParts = 10000;
constexpr double kMostResolution = 4e5;

Field Resolution(std::uint16_t tag, double perInch)
{
    Field field{ tag, FieldType::Rational, 1, {} };
    Put(field.values, static_cast<std::uint32_t>(std::lround(perInch * kResolutionParts)), 4);
    Put(field.values, kResolutionParts, 4);
    return field;
}

constexpr std::size_t kHeaderBytes = 8;
constexpr std::size_t kInlineBytes = 4;

// Where the values stand that have no room in their fields.
std::size_t PlaceOfValues(const std::vector<Field>& fields)
{
    constexpr std::size_t kFieldBytes = 12;
    return kHeaderBytes + 2 + fields.size() * kFieldBytes + 4;
}

// Such values begin at even places.
std::size_t SizeBehind(const Field& field)
{
    return field.values.size() <= kInlineBytes ? 0 : (field.values.size() + 1) / 2 * 2;
}

std::size_t SizeOfHead(const std::vector<Field>& fields)
{
    std::size_t size = PlaceOfValues(fields);
    for (const Field& field : fields)
        size += SizeBehind(field);
    return size;
}

// A shorter value stands in front of its four bytes.
void PutField(Bytes& head, const Field& field, std::size_t placeBehind)
{
    Put(head, field.tag, 2);
    Put(head, static_cast<std::uint32_t>(field.type), 2);
    Put(head, field.count, 4);
    Bytes inside = field.values;
    if (SizeBehind(field) != 0) {
        inside.clear();
        Put(inside, static_cast<std::uint32_t>(placeBehind), 4);
    }
    inside.resize(kInlineBytes);
    head.insert(head.end(), inside.begin(), inside.end());
}

// The header, one directory, and its values.
Bytes HeadOf(const std::vector<Field>& fields)
{
    Bytes head{ 'M', 'M', 0, 42 };
    Put(head, kHeaderBytes, 4);
    Put(head, static_cast<std::uint32_t>(fields.size()), 2);
    std::size_t place = PlaceOfValues(fields);
    for (const Field& field : fields) {
        PutField(head, field, place);
        place += SizeBehind(field);
    }
    Put(head, 0, 4); // no further directory
    for (const Field& field : fields)
        if (const std::size_t size = SizeBehind(field); size != 0) {
            head.insert(head.end(), field.values.begin(), field.values.end());
            head.resize(head.size() + size - field.values.size());
        }
    return head;
}

// ---- the file

// What the two kinds differ in.
struct Kind {
    std::uint32_t samples;
    std::uint32_t compression;
    Bytes colours; // the table; none without
};

std::vector<Field> FieldsOf(const Picture& picture, const Kind& kind, std::uint32_t strip,
                            std::uint32_t stripBytes)
{
    constexpr std::uint32_t kSeparated = 5;
    constexpr std::uint32_t kInch = 2;
    std::vector<Field> fields{ Long(256, picture.Width()),  Long(257, picture.Height()),
                               Short(258, 8, kind.samples), Short(259, kind.compression),
                               Short(262, kSeparated),      Long(273, strip),
                               Short(277, kind.samples),    Long(278, picture.Height()),
                               Long(279, stripBytes) };
    const AxisResolution resolution = AxisResolutionOf(picture.Object());
    const auto isHeld = [](double perInch) { return perInch > 0.0 && perInch < kMostResolution; };
    if (isHeld(resolution.alongWidth) && isHeld(resolution.alongHeight)) {
        fields.push_back(Resolution(282, resolution.alongWidth));
        fields.push_back(Resolution(283, resolution.alongHeight));
        fields.push_back(Short(296, kInch));
    }
    if (!kind.colours.empty())
        fields.push_back({ 34022, FieldType::Byte, static_cast<std::uint32_t>(kind.colours.size()),
                           kind.colours });
    return fields;
}

// The one strip; its size is known behind its last byte only, where runs make it.
class TiffItFile {
  public:
    TiffItFile(const Picture& picture, Kind kind, const OutputFile& output)
        : picture_(picture), kind_(std::move(kind)), path_(output.Path()), file_(output),
          strip_(SizeOfHead(FieldsOf(picture, kind_, 0, 0))), end_(strip_)
    {
        file_.Write(Head());
    }

    void Write(std::span<const std::uint8_t> bytes)
    {
        constexpr std::uint64_t kMost = 0xFFFFFFFF;
        end_ += bytes.size();
        if (end_ > kMost)
            throw FileFailure(path_, "would pass 4 GiB, which is all that a TIFF/IT file can hold",
                              {}, "Give a picture of fewer pixels.");
        file_.Write(bytes);
    }

    void Finish()
    {
        file_.WriteAtStart(Head());
        file_.Finish();
    }

  private:
    Bytes Head() const
    {
        return HeadOf(FieldsOf(picture_, kind_, static_cast<std::uint32_t>(strip_),
                               static_cast<std::uint32_t>(end_ - strip_)));
    }

    const Picture& picture_;
    Kind kind_;
    std::string path_;
    PlainFile file_;
    std::uint64_t strip_; // its place
    std::uint64_t end_;
};

/// Writes the rows that `encode(row, bytes)` appends to the bytes it is given.
template <typename Encode>
void WriteRows(const Picture& picture, const Kind& kind, const OutputFile& output,
               const Encode& encode)
{
    TiffItFile file(picture, kind, output);
    Progress progress("writing " + Shown(output.Path()), picture.Height());
    Bytes bytes;
    for (std::uint32_t row = 0; row < picture.Height(); ++row) {
        bytes.clear();
        encode(row, bytes);
        file.Write(bytes);
        progress.Advance(1);
    }
    file.Finish();
}

// ---- line work

// A record is a number, flags that say which inks count, and the inks.
Bytes ColourTable(const Picture& picture)
{
    constexpr std::size_t kRecordBytes = 20;
    constexpr std::uint32_t kAllInks = 0xF;
    const unsigned int colours = LineWorkRecord(picture).FileColorsNumber();
    Bytes table;
    for (unsigned int colour = 0; colour < colours; ++colour) {
        Put(table, colour, 2);
        Put(table, kAllInks, 2);
        const std::array<std::uint8_t, kInks> inks = InksOfColour(picture, colour + 1);
        table.insert(table.end(), inks.begin(), inks.end());
        table.resize((colour + 1) * kRecordBytes);
    }
    return table;
}

// In several pieces, where the length passes two bytes.
void PutRun(Bytes& bytes, std::uint32_t number, std::uint64_t length)
{
    constexpr std::uint64_t kMost = 0xFFFF;
    for (; length != 0; length -= std::min(length, kMost)) {
        const auto piece = static_cast<std::uint32_t>(std::min(length, kMost));
        Put(bytes, number, 1);
        Put(bytes, piece <= 0xFF ? piece : 0, 1);
        if (piece > 0xFF)
            Put(bytes, piece, 2);
    }
}

// Runs of one colour side by side become one. Tables count their colours from 0 here.
void PutRuns(Bytes& bytes, std::span<const LineWorkRun> runs)
{
    std::uint8_t colour = 0;
    std::uint64_t length = 0;
    for (const LineWorkRun& run : runs) {
        if (run.length != 0 && run.colour != colour) {
            PutRun(bytes, colour - 1U, length);
            colour = run.colour;
            length = 0;
        }
        length += run.length;
    }
    PutRun(bytes, colour - 1U, length);
}

} // namespace

void WriteTiffItCt(const Picture& picture, const OutputFile& output)
{
    constexpr std::uint32_t kUncompressed = 1;
    const std::vector<ColorSeparationType> separations = SeparationsOf(picture.Object());
    SeparationBands bands(picture, separations, { 0, picture.Height() });
    WriteRows(picture, { kInks, kUncompressed, {} }, output, [&](std::uint32_t row, Bytes& bytes) {
        bytes.resize(std::size_t{ picture.Width() } * kInks);
        for (std::size_t i = 0; i < separations.size(); ++i) {
            std::size_t place = static_cast<std::size_t>(separations[i]);
            for (const std::uint8_t value : bands.Row(row, i)) {
                bytes.at(place) = static_cast<std::uint8_t>(kFullInk - value);
                place += kInks;
            }
        }
    });
}

void WriteTiffItLw(const Picture& picture, const OutputFile& output)
{
    constexpr std::uint32_t kRuns = 32896;
    LineWorkRows rows(picture);
    ShowTransparentAsPaper(picture);
    WriteRows(picture, { 1, kRuns, ColourTable(picture) }, output,
              [&](std::uint32_t row, Bytes& bytes) {
                  constexpr unsigned int kDelimiterBytes = 2; // around each row
                  Put(bytes, 0, kDelimiterBytes);
                  PutRuns(bytes, rows.Row(row));
                  Put(bytes, 0, kDelimiterBytes);
              });
}

} // namespace tympan::tool
