// The colour tables of TIFF/IT line work.
#include "tiff/tiff_it_layout.h"
#include "tiff/tiff_it_lw.h"

#include <algorithm>

namespace {

// A record of the file's table.
ColorTable ColourOf(std::span<const std::uint8_t> record)
{
    ColorTable colour{};
    colour.Id = record[tympan::kColourId.offset];
    for (unsigned int i = 0; i < 4; ++i) {
        colour.Values[i] = record[tympan::kColourValues.offset + i];
        colour.Flags[i] =
            static_cast<unsigned char>(record[tympan::kColourFlags.offset] >> (3U - i) & 1);
    }
    return colour;
}

// Whole records only; a field that holds no bytes has no colours.
std::vector<ColorTable> ColoursOf(const IfdEntry& entry)
{
    std::vector<ColorTable> colours;
    const auto* const bytes = std::get_if<std::vector<std::uint8_t>>(&entry.Data);
    if (bytes == nullptr)
        return colours;
    for (std::span<const std::uint8_t> left = *bytes; left.size() >= tympan::kColourRecordBytes;
         left = left.subspan(tympan::kColourRecordBytes))
        colours.push_back(ColourOf(left.first(tympan::kColourRecordBytes)));
    return colours;
}

} // namespace

std::vector<std::shared_ptr<const TiffItLwP1Interface::Colours>> TiffItLwP1Interface::m_ColorTable;

// A record shows the fields of the ones before it, which have been gone through by then: it begins with
// their table, which is shared.
void TiffItLwP1Interface::BuildColorTable()
{
    m_ColorTable.clear();
    std::shared_ptr<const Colours> colours;
    std::size_t seen = 0;
    for (const IfdEntries& directory : m_Ifds) {
        for (const IfdEntry& entry : directory.Entries().subspan(seen))
            if (entry.Tag == tympan::tag::kColorTable)
                colours = std::make_shared<const Colours>(ColoursOf(entry));
        seen = directory.Entries().size();
        m_ColorTable.push_back(colours);
    }
}

unsigned char* TiffItLwP1Interface::GetColor(unsigned char table, unsigned char color,
                                             unsigned char* values)
{
    std::fill_n(values, 4, static_cast<unsigned char>(0));
    if (table < m_ColorTable.size() && m_ColorTable[table] != nullptr &&
        color < m_ColorTable[table]->size())
        std::copy_n((*m_ColorTable[table])[color].Values, 4, values);
    return values;
}
