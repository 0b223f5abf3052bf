#include "core/header_check.h"

#include "core/header_layout.h"
#include "core/header_text.h"
#include "core/picture_parameters.h"
#include "platform/file.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstddef>
#include <iomanip>
#include <limits>
#include <locale>
#include <sstream>

namespace tympan {

namespace {

constexpr CheckRule kCutShort{
    "TYM-HEAD-0001",
    Severity::Error,
    "The file ends inside the header",
    "The sizes and separations of the picture stand in the first 1080 bytes, and the file is "
    "shorter than that. Nothing else can be checked.",
    "Get another copy of the file; this one was cut short or is no picture.",
};
constexpr CheckRule kSeparationsNumber{
    "TYM-HEAD-0002",
    Severity::Error,
    "Illegal number of separations",
    "A picture has 1 or 4 separations, and the header counts another number. No program can open "
    "the file.",
    "Get another copy of the file, or write it anew from its source.",
};
constexpr CheckRule kSeparationsMask{
    "TYM-HEAD-0003",
    Severity::Error,
    "Illegal separations mask",
    "The mask says which separations the picture has, and names a number of them that is neither "
    "1 nor 4. No program can open the file.",
    "Get another copy of the file, or write it anew from its source.",
};
constexpr CheckRule kSeparationsDiffer{
    "TYM-HEAD-0004",
    Severity::Error,
    "Number and mask of the separations contradict each other",
    "The header counts one number of separations and names another in its mask. Reading goes by "
    "the mask; other programs may go by the number.",
    "Write the file anew from its source.",
};
constexpr CheckRule kReservedBits{
    "TYM-HEAD-0005",
    Severity::Remark,
    "Reserved bits of the separations are set",
    "The byte in front of the separations mask and the upper four bits of the mask have no "
    "meaning and should be 0. They are not looked at where rows are read, but a CT file with them "
    "may not be recognised.",
    "Write the file anew if a program refuses it.",
};
constexpr CheckRule kUnitsCode{
    "TYM-HEAD-0006",
    Severity::Remark,
    "Unknown code of units",
    "The code of the units is 1 for inches and 0 for millimetres. Any other code is taken as "
    "millimetres.",
    "See whether the picture's size is what it should be; if not, write the file anew.",
};
constexpr CheckRule kPixels{
    "TYM-HEAD-0007",
    Severity::Error,
    "A size in pixels is not a whole number of 1 or more",
    "The height and the width in pixels are text, a whole number from 1 to 2147483647 each. "
    "Without them no row can be found.",
    "Get another copy of the file, or write it anew from its source.",
};
constexpr CheckRule kSizeForm{
    "TYM-HEAD-0008",
    Severity::Remark,
    "A size has other bytes beside its number",
    "Reading takes the number at the start of the text and leaves the rest. Other programs may "
    "refuse it.",
    "See whether the size is what it should be; if not, write the file anew.",
};
constexpr CheckRule kUnits{
    "TYM-HEAD-0009",
    Severity::Error,
    "A size in units is not a number of 0 or more",
    "The height and the width in inches or millimetres are text, a number each. Without them the "
    "picture has no resolution.",
    "Write the file anew from its source with its true size.",
};
constexpr CheckRule kNoUnits{
    "TYM-HEAD-0010",
    Severity::Remark,
    "A size in units is 0",
    "The picture has no resolution, so that its rows can't be asked for at one. Its pixels can be "
    "read.",
    "Write the file anew from its source with its true size.",
};
constexpr CheckRule kResolutionsDiffer{
    "TYM-HEAD-0011",
    Severity::Remark,
    "The resolutions of width and height differ",
    "Pixels per inch differ by more than 0.1 along the two axes. Few pictures are meant so.",
    "See whether the sizes in pixels and in units belong together.",
};

constexpr const CheckRule* kRules[] = {
    &kCutShort,
    &kSeparationsNumber,
    &kSeparationsMask,
    &kSeparationsDiffer,
    &kReservedBits,
    &kUnitsCode,
    &kPixels,
    &kSizeForm,
    &kUnits,
    &kNoUnits,
    &kResolutionsDiffer,
};

constexpr std::size_t kCount = kHeaderCount.offset;
constexpr std::size_t kReserved = kHeaderReserved.offset;
constexpr std::size_t kMask = kHeaderMask.offset;
constexpr unsigned int kMaskBits = 15;

constexpr double kMostPixels = std::numeric_limits<std::int32_t>::max();
constexpr std::string_view kBlanks = " \t\n\v\f\r";
constexpr std::string_view kWholeCharacters = "+-0123456789";
constexpr std::string_view kFloatCharacters = "+-.0123456789Ee";

// The text of a size up to a terminator, without blanks around it.
std::string_view Trimmed(std::string_view text)
{
    text = text.substr(0, text.find('\0'));
    text.remove_prefix(std::min(text.find_first_not_of(kBlanks), text.size()));
    return text.substr(0, text.find_last_not_of(kBlanks) + 1);
}

// Whether reading finds a number at the start of a text.
bool StartsWithNumber(std::string_view text, bool mayHavePoint)
{
    if (text.starts_with('+') || text.starts_with('-'))
        text.remove_prefix(1);
    if (mayHavePoint && text.starts_with('.'))
        text.remove_prefix(1);
    return text.find_first_of("0123456789") == 0;
}

std::string Decimal(double value)
{
    std::ostringstream out;
    out.imbue(std::locale::classic());
    out << std::setprecision(10) << value;
    return out.str();
}

class HeaderCheck {
  public:
    HeaderCheck(std::string_view front, Findings& findings) : front_(front), findings_(findings) {}

    HeaderFacts Check()
    {
        HeaderFacts facts;
        facts.separations = Separations();
        CheckUnitsCode();
        facts.height = Pixels(kHeaderHeightInPixels);
        facts.width = Pixels(kHeaderWidthInPixels);
        const double unitsHigh = Units(kHeaderHeight);
        const double unitsWide = Units(kHeaderWidth);
        if (facts.height != 0 && facts.width != 0 && unitsHigh > 0.0 && unitsWide > 0.0)
            CompareResolutions(facts, unitsHigh, unitsWide);
        return facts;
    }

  private:
    std::string_view At(HeaderPlace place) const
    {
        return front_.substr(place.offset, place.width);
    }
    static std::string The(HeaderPlace place) { return "The " + std::string(place.name); }
    unsigned int ByteAt(std::size_t offset) const
    {
        return static_cast<unsigned char>(front_[offset]);
    }

    unsigned int Separations()
    {
        const unsigned int count = ByteAt(kCount);
        const auto named = static_cast<unsigned int>(std::popcount(ByteAt(kMask) & kMaskBits));
        CheckReservedBits();
        const bool countIsLegal = CheckNumber(kSeparationsNumber, kCount, count, "counts ");
        const bool maskIsLegal = CheckNumber(kSeparationsMask, kMask, named, "names in its mask ");
        if (!countIsLegal || !maskIsLegal)
            return 0;
        if (count != named)
            findings_.Tell(kSeparationsDiffer, { {}, kCount }, [&] {
                return "The header counts " + CountOf(count, "separation") +
                       ", and its mask names " + std::to_string(named) + ".";
            });
        return named;
    }

    bool CheckNumber(const CheckRule& rule, std::size_t offset, unsigned int number,
                     const std::string& does)
    {
        if (PictureParameters::IsNumberOfSeparationsLegal(number))
            return true;
        findings_.Tell(rule, { {}, offset }, [&] {
            return "The header " + does + CountOf(number, "separation") + "; 1 or 4 were expected.";
        });
        return false;
    }

    void CheckReservedBits()
    {
        const unsigned int reserved = ByteAt(kReserved);
        const unsigned int mask = ByteAt(kMask);
        if (reserved != 0 || mask > kMaskBits)
            findings_.Tell(kReservedBits, { {}, reserved != 0 ? kReserved : kMask }, [&] {
                return "The byte in front of the separations mask is " + std::to_string(reserved) +
                       " and the mask is " + std::to_string(mask) +
                       "; 0 and a number up to 15 were expected.";
            });
    }

    void CheckUnitsCode()
    {
        const unsigned int code = ByteAt(kHeaderUnitsCode.offset);
        if (code != kInchesCode && code != kMillimetresCode)
            findings_.Tell(kUnitsCode, { {}, kHeaderUnitsCode.offset }, [&] {
                return "The code of the units is " + std::to_string(code) +
                       "; 1 for inches or 0 for millimetres was expected.";
            });
    }

    // Whether the field has a number, which is then looked through for other bytes.
    bool HasNumber(HeaderPlace place, std::string_view characters)
    {
        const std::string_view text = Trimmed(At(place));
        if (!StartsWithNumber(text, characters == kFloatCharacters))
            return false;
        if (text.find_first_not_of(characters) != std::string_view::npos)
            findings_.Tell(kSizeForm, { {}, place.offset }, [&] {
                return The(place) + " is " + Quoted(At(place)) +
                       "; a number and nothing else was expected.";
            });
        return true;
    }

    std::uint32_t Pixels(HeaderPlace place)
    {
        const bool isNumber = HasNumber(place, kWholeCharacters);
        const std::string_view text = Trimmed(At(place));
        const std::size_t digitsEnd = text.find_first_not_of(kWholeCharacters);
        const double value = isNumber ? FloatFromText(text.substr(0, digitsEnd)) : 0.0;
        if (value >= 1.0 && value <= kMostPixels)
            return static_cast<std::uint32_t>(value);
        findings_.Tell(kPixels, { {}, place.offset }, [&] {
            return The(place) + " is " + Quoted(At(place)) +
                   "; a whole number from 1 to 2147483647 was expected.";
        });
        return 0;
    }

    // In the file's units; 0 for none that can be used.
    double Units(HeaderPlace place)
    {
        const bool isNumber = HasNumber(place, kFloatCharacters);
        const double value = isNumber ? FloatFromText(At(place)) : -1.0;
        if (value > 0.0 && std::isfinite(value))
            return value;
        const Place where{ {}, place.offset };
        if (value == 0.0)
            findings_.Tell(kNoUnits, where,
                           [&] { return The(place) + " is 0; a size was expected."; });
        else
            findings_.Tell(kUnits, where, [&] {
                return The(place) + " is " + Quoted(At(place)) +
                       "; a number like +.12500000E+02 was expected.";
            });
        return 0.0;
    }

    void CompareResolutions(const HeaderFacts& facts, double unitsHigh, double unitsWide)
    {
        constexpr double kMillimetresPerInch = 25.4;
        const double perInch =
            ByteAt(kHeaderUnitsCode.offset) == kInchesCode ? 1.0 : kMillimetresPerInch;
        const double x = PictureParameters::CalculateResolution(facts.width, unitsWide / perInch);
        const double y = PictureParameters::CalculateResolution(facts.height, unitsHigh / perInch);
        PictureParameters record;
        record.Resolution({ x, y });
        if (record.Resolution() < 0.0)
            findings_.Tell(kResolutionsDiffer, { {}, kHeaderHeight.offset }, [&] {
                return "There are " + Decimal(x) + " pixels per inch along the width and " +
                       Decimal(y) + " along the height; the same number was expected.";
            });
    }

    std::string_view front_;
    Findings& findings_;
};

} // namespace

std::span<const CheckRule* const> HeaderRules()
{
    return kRules;
}

HeaderFacts CheckHeader(std::string_view front, Findings& findings)
{
    if (front.size() >= kHeaderEnd)
        return HeaderCheck(front, findings).Check();
    findings.Tell(kCutShort, { {}, front.size() }, [&] {
        return "The file has " + CountOf(front.size(), "byte") + "; the header alone has " +
               std::to_string(kHeaderEnd) + ".";
    });
    return {};
}

std::string FrontOf(CFile& file, std::size_t count)
{
    std::string front(count, '\0');
    file.SeekToBegin();
    front.resize(file.Read(front.data(), static_cast<UINT>(front.size())));
    return front;
}

} // namespace tympan
