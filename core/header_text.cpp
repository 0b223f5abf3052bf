#include "core/header_text.h"

#include <limits>
#include <locale>
#include <sstream>
#include <string>

namespace tympan {

namespace {

bool IsDigit(char c)
{
    return c >= '0' && c <= '9';
}

// Walks over a text and tells how far each piece of a number reaches.
class Scanner {
  public:
    explicit Scanner(std::string_view text) : text_(text) {}

    void PassSpace() { PassAllOf(" \t\n\v\f\r"); }
    void PassSign()
    {
        if (Next() == '+' || Next() == '-')
            ++at_;
    }
    std::size_t PassDigits()
    {
        const std::size_t from = at_;
        while (IsDigit(Next()))
            ++at_;
        return at_ - from;
    }
    bool PassOneOf(std::string_view wanted)
    {
        const bool found = at_ < text_.size() && wanted.find(text_[at_]) != std::string_view::npos;
        at_ += found ? 1 : 0;
        return found;
    }
    std::size_t At() const { return at_; }
    void ReturnTo(std::size_t at) { at_ = at; }

  private:
    char Next() const { return at_ < text_.size() ? text_[at_] : '\0'; }
    void PassAllOf(std::string_view wanted)
    {
        while (PassOneOf(wanted)) {
        }
    }

    std::string_view text_;
    std::size_t at_ = 0;
};

void PassExponent(Scanner& scanner)
{
    const std::size_t before = scanner.At();
    if (!scanner.PassOneOf("eE"))
        return;
    scanner.PassSign();
    if (scanner.PassDigits() == 0)
        scanner.ReturnTo(before); // a bare E ends the number in front of it
}

} // namespace

std::string_view DecimalStart(std::string_view text)
{
    Scanner scanner(text);
    scanner.PassSpace();
    const std::size_t start = scanner.At();
    scanner.PassSign();
    std::size_t digits = scanner.PassDigits();
    if (scanner.PassOneOf("."))
        digits += scanner.PassDigits();
    if (digits == 0)
        return {};
    PassExponent(scanner);
    return text.substr(start, scanner.At() - start);
}

double FloatFromText(std::string_view text)
{
    const std::string_view number = DecimalStart(text);
    if (number.empty())
        return 0.0;
    std::istringstream in{ std::string(number) };
    in.imbue(std::locale::classic());
    in.exceptions(std::ios::badbit); // out of memory passes on, and isn't taken for no number
    double value = 0.0;
    in >> value;
    if (in.fail() && value != 0.0) // the stream holds what is out of range to the largest number
        return value > 0 ? std::numeric_limits<double>::infinity()
                         : -std::numeric_limits<double>::infinity();
    return value;
}

double WholeFromText(std::string_view text)
{
    Scanner scanner(text);
    scanner.PassSpace();
    const bool negative = scanner.At() < text.size() && text[scanner.At()] == '-';
    scanner.PassSign();
    const std::size_t start = scanner.At();
    const std::size_t digits = scanner.PassDigits();
    double value = 0.0;
    for (const char digit : text.substr(start, digits))
        value = value * 10.0 + (digit - '0');
    if (negative)
        value = -value;
    value = value > std::numeric_limits<std::int32_t>::max()
                ? std::numeric_limits<std::int32_t>::max()
                : value;
    return value < std::numeric_limits<std::int32_t>::lowest()
               ? std::numeric_limits<std::int32_t>::lowest()
               : value + 0.0; // no negative zero
}

} // namespace tympan
