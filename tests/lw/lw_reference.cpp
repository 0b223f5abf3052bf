#include "lw/lw_reference.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>

namespace tympan::test {

namespace {

struct Corrupted {};
struct Failed {}; // any other way
struct HasNoColour {};

constexpr char kAborting[] = "LWInterface: Error Extracting LineWork RawBuffer, aborting!";

// A number as a call gives it.
unsigned long Long(std::uint64_t number)
{
    return static_cast<unsigned long>(number);
}

// What a caller's buffer holds behind what was stored; more than the room, to see what steps over.
void Pad(std::vector<unsigned char>& bytes, std::uint64_t room)
{
    bytes.resize(std::max<std::size_t>(bytes.size(), room) + 64, kUnstored);
}

void Append(LwReference::Bytes& bytes, unsigned char value, std::uint64_t length, bool lengthFirst)
{
    const auto second = static_cast<unsigned char>(length);
    bytes.push_back(lengthFirst ? second : value);
    bytes.push_back(lengthFirst ? value : second);
}

} // namespace

LwReference::LwReference(Bytes file, const LwPictureParameters& record, LwObject object)
    : file_(std::move(file)), width_(record.WidthInPixels()),
      height_(record.HeightInPixels()), inches_{ record.HeightInUnits(), record.WidthInUnits() },
      resolutions_{ record.ResolutionOnScanAxis(), record.ResolutionOnXScanAxis() },
      inks_(record.TableColorsNumber()), isWhole_(object == LwObject::ofWholeFile)
{
    for (const ColorSeparationType separation : { Cyan, Magenta, Yellow, Black }) {
        const auto column = static_cast<std::size_t>(separation);
        present_[column] = record.SeparationExists(separation);
        for (std::size_t i = 0; i < inks_.size(); ++i)
            inks_[i][column] = record.GetColor(static_cast<unsigned char>(i), separation);
    }
}

template <typename Work>
LwAnswer LwReference::Answered(unsigned long otherCode, const char* otherText, Work work)
{
    LwAnswer answer;
    const auto fails = [&](unsigned long code, const char* text) {
        answer.result = 0;
        answer.code = code;
        answer.text = text;
    };
    try {
        work(answer);
    } catch (Corrupted) {
        fails(90025, "");
    } catch (Failed) {
        fails(otherCode, otherText);
    } catch (HasNoColour) {
        fails(otherCode, otherText);
        answer.isInsideRow = true;
    }
    answer.position = position_;
    return answer;
}

template <typename Work>
void LwReference::ForRows(std::uint64_t first, std::uint64_t end, Work work)
{
    if (first < places_.size())
        position_ = places_[first];
    for (std::uint64_t row = first; row < end; ++row) {
        if (row >= places_.size())
            throw Failed{};
        work(row);
    }
}

template <typename Work>
void LwReference::ForStreamRows(const LwCall& call, Work work)
{
    const std::uint64_t end = call.last + std::uint64_t{ 1 };
    if (!isWhole_)
        return ForRows(call.first, end, work);
    position_ = Start();
    for (std::uint64_t row = call.first; row < end; ++row)
        work(row);
}

// `use` takes each run, and the pixels in front of it.
template <typename Use>
std::uint64_t LwReference::Walk(Use use)
{
    std::uint64_t pixels = 0;
    while (static_cast<double>(pixels) < width_) {
        const Pair run = Read();
        use(run, pixels);
        pixels += run.second;
    }
    return pixels;
}

LwReference::Pair LwReference::Read()
{
    const std::uint64_t left = file_.size() - std::min<std::uint64_t>(position_, file_.size());
    position_ += std::min<std::uint64_t>(left, 2);
    if (left < 2)
        throw Failed{};
    return { file_[position_ - 2], file_[position_ - 1] };
}

void LwReference::CheckDelimiter()
{
    const Pair pair = Read();
    if (pair.first != 0 || pair.second != 0)
        throw Corrupted{};
}

void LwReference::CheckIntegrity(std::uint64_t pixels) const
{
    if (static_cast<double>(pixels) != width_)
        throw Corrupted{};
}

unsigned char LwReference::Ink(Pair run, ColorSeparationType separation) const
{
    const bool isNone = run.first == 0 && run.second != 0;
    if (static_cast<unsigned int>(separation) >= 4 || run.first > inks_.size() || isNone)
        throw HasNoColour{};
    return run.first == 0 ? 255 : inks_[run.first - 1U][static_cast<std::size_t>(separation)];
}

bool LwReference::IsTypeOf(const Bytes& file)
{
    if (file.size() < 2048)
        return false;
    const std::string digits(file.begin() + 1068, file.begin() + 1080);
    const auto width = static_cast<std::uint32_t>(std::atoi(digits.c_str()));
    std::size_t place = 2048 + 18 * std::size_t{ file[1080] };
    if (file.size() < place + 2 || file[place] != 0 || file[place + 1] != 0)
        return false;
    std::uint64_t pixels = 0;
    while (pixels < width) {
        place += 2;
        if (file.size() < place + 2)
            return false;
        pixels += file[place + 1];
        if (file[place] == 0 && file[place + 1] == 0)
            break;
    }
    return pixels == width && width != 0;
}

void LwReference::Prove(LwAnswer& answer)
{
    if (!(height_ >= 1.0))
        throw Failed{};
    position_ = Start();
    places_ = { position_ };
    for (std::uint64_t row = 1; static_cast<double>(row) < height_; ++row) {
        CheckDelimiter();
        const std::uint64_t pixels = Walk([](Pair, std::uint64_t) {});
        CheckDelimiter();
        CheckIntegrity(pixels);
        places_.push_back(position_);
    }
    // A row buffer that the file is too short to ask for is refused without a code.
    const double buffer = 2.0 * width_;
    answer.result = buffer <= 16777216.0 || buffer <= static_cast<double>(file_.size()) ? 1 : 0;
}

LwAnswer LwReference::ClosedUnlessSound(LwAnswer answer) const
{
    if (answer.result == 0)
        answer.position = 0;
    else
        answer.offsets.assign(places_.begin(), places_.end());
    return answer;
}

LwAnswer LwReference::Open(const LwCall&)
{
    constexpr char kText[] = "LWInterface:\n Error Opening LineWork file, aborting!";
    return ClosedUnlessSound(Answered(90001, kText, [&](LwAnswer& opened) { Prove(opened); }));
}

LwAnswer LwReference::Check(const LwCall&)
{
    return ClosedUnlessSound(Answered(90026, "", [&](LwAnswer& checked) { Prove(checked); }));
}

LwAnswer LwReference::Build(const LwCall&)
{
    LwAnswer answer = Answered(0, "", [&](LwAnswer& built) {
        Prove(built);
        built.result = 1;
    });
    answer.code = 0;
    answer.offsets.assign(places_.begin(), places_.end());
    return answer;
}

LwAnswer LwReference::Row(const LwCall& call)
{
    const auto isGood = [](double ratio) { return std::isfinite(ratio) && ratio > 0.0; };
    const double across = call.across * resolutions_[0] / resolutions_[0];
    const double along = call.along * resolutions_[1] / resolutions_[1];
    const double outputWidth = isGood(across) ? std::floor(across * width_ + 0.5) : 0.0;
    LwAnswer answer = Answered(90020, kAborting, [&](LwAnswer& decoded) {
        if (!isGood(across) || !isGood(along))
            throw Failed{};
        const double row = std::floor(call.first / along);
        if (row >= static_cast<double>(places_.size()))
            return;
        position_ = places_[static_cast<std::size_t>(row)];
        const auto isDelimiter = [&](const char* text) {
            if (Read().first == 0)
                return true;
            decoded.code = 90024;
            decoded.text = text;
            return false;
        };
        if (!isDelimiter("LWInterface:\n Error Illegal line format, aborting"))
            return;
        Bytes pixels;
        Walk([&](Pair run, std::uint64_t) {
            pixels.insert(pixels.end(), run.second, Ink(run, call.separation));
        });
        if (!isDelimiter("LWInterface:\nIllegal line format , aborting!"))
            return;
        double place = 0.0;
        for (std::uint64_t i = 0; i < static_cast<std::uint64_t>(outputWidth); ++i) {
            decoded.bytes.push_back(pixels[static_cast<std::size_t>(std::min(place, width_ - 1))]);
            place += 1.0 / across;
        }
        decoded.result = Long(pixels.size());
    });
    Pad(answer.bytes, static_cast<std::uint64_t>(outputWidth));
    return answer;
}

LwAnswer LwReference::Rows(const LwCall& call)
{
    const auto width = static_cast<std::uint64_t>(width_);
    LwAnswer answer = Answered(90020, kAborting, [&](LwAnswer& decoded) {
        ForRows(call.first, call.last, [&](std::uint64_t) {
            decoded.offsets.push_back(Long(decoded.bytes.size()));
            CheckDelimiter();
            const std::uint64_t pixels = Walk([&](Pair run, std::uint64_t before) {
                const auto count = std::min<std::uint64_t>(run.second, width - before);
                decoded.bytes.insert(decoded.bytes.end(), count, Ink(run, call.separation));
            });
            CheckDelimiter();
            CheckIntegrity(pixels);
            ++decoded.rows;
        });
        decoded.result = Long(decoded.bytes.size());
    });
    if (answer.code == 90025)
        answer.rows = 0;
    const std::size_t rows = call.last > call.first ? call.last - call.first : 0;
    const std::size_t rowsThere = std::min(rows, places_.size());
    answer.offsets.resize(rowsThere, kNoOffset);
    Pad(answer.bytes, rowsThere * width);
    return answer;
}

LwAnswer LwReference::Original(const LwCall& call)
{
    LwAnswer answer = Answered(90020, kAborting, [&](LwAnswer& copied) {
        ForRows(call.first, call.first + std::uint64_t{ 1 }, [&](std::uint64_t) {
            CheckDelimiter();
            Append(copied.bytes, 0, 0, false);
            const std::uint64_t pixels = Walk([&](Pair run, std::uint64_t) {
                Append(copied.bytes, run.first, run.second, call.flag);
            });
            CheckDelimiter();
            Append(copied.bytes, 0, 0, false);
            CheckIntegrity(pixels);
        });
        copied.result = Long(copied.bytes.size() / 2 - 2);
    });
    Pad(answer.bytes, 0);
    return answer;
}

LwAnswer LwReference::Plain(const LwCall& call)
{
    LwAnswer answer = Answered(90020, kAborting, [&](LwAnswer& out) {
        const auto append = [&](unsigned char value, std::uint64_t length) {
            Append(out.bytes, value, length, call.flag);
        };
        ForRows(call.first, call.last + std::uint64_t{ 1 }, [&](std::uint64_t) {
            out.offsets.push_back(Long(out.bytes.size()));
            CheckDelimiter();
            append(0, 0);
            CheckIntegrity(Walk(
                [&](Pair run, std::uint64_t) { append(Ink(run, call.separation), run.second); }));
            if (call.padding.FullRuns != 0 || call.padding.LastRun != 0) {
                const unsigned char ink = Ink({ call.padding.ColorIndex, 1 }, call.separation);
                for (unsigned long i = 0; i < call.padding.FullRuns; ++i)
                    append(ink, 255);
                if (call.padding.LastRun != 0)
                    append(ink, call.padding.LastRun);
            }
            CheckDelimiter();
            append(0, 0);
        });
        out.result = std::max<unsigned long>(call.first, call.last + 1UL);
    });
    Pad(answer.bytes, 0);
    return answer;
}

LwReference::Bytes LwReference::Gap(const LwCall& call)
{
    Bytes bytes;
    for (unsigned long i = 0; i < call.whiteGap / 255; ++i)
        Append(bytes, call.white, 255, call.flag);
    if (call.whiteGap % 255 != 0)
        Append(bytes, call.white, call.whiteGap % 255, call.flag);
    return bytes;
}

std::uint64_t LwReference::Completed(const LwCall& call) const
{
    const double total =
        call.copies * width_ + (call.copies - 1.0) * static_cast<double>(call.whiteGap);
    return (4096 - (static_cast<std::uint64_t>(total) & 4095)) & 4095;
}

LwReference::Bytes LwReference::Completion(const LwCall& call, unsigned long runs) const
{
    const std::uint64_t pixels = Completed(call);
    const std::uint64_t full = pixels / 255, rest = pixels % 255;
    const bool isEven = !isWhole_ && (runs + full + (rest != 0 ? 1 : 0)) % 2 == 0;
    Bytes bytes;
    for (std::uint64_t i = 1; i <= full; ++i) {
        const bool isDivided = i == full && isEven;
        Append(bytes, call.white, isDivided ? 254 : 255, call.flag);
        if (isDivided)
            Append(bytes, call.white, 1, call.flag);
    }
    if (rest != 0)
        Append(bytes, call.white, rest, call.flag);
    return bytes;
}

LwAnswer LwReference::Placing(const LwCall& call)
{
    LwCall completed = call;
    completed.flag = true;
    const LwAnswer room = Counted(completed);
    std::uint64_t written = 0;
    LwAnswer answer = Answered(90020, kAborting, [&](LwAnswer& out) {
        const auto white = [&](const Bytes& runs) {
            out.bytes.insert(out.bytes.end(), runs.begin(), runs.end());
            written += runs.size();
            return runs.size() / 2;
        };
        ForStreamRows(call, [&](std::uint64_t) {
            const std::uint64_t start = position_;
            out.offsets.push_back(Long(call.baseOffset + written));
            CheckDelimiter();
            Append(out.bytes, 0, 0, call.flag);
            white(Completion(call, 0));
            std::uint64_t records = written / 2, pixels = 0;
            for (unsigned int copy = 0; copy < call.copies; ++copy) {
                if (copy != 0)
                    position_ = start + 2;
                pixels = Walk([&](Pair run, std::uint64_t before) {
                    const unsigned char ink = isWhole_ ? run.first : Ink(run, call.separation);
                    const bool isLast = static_cast<double>(before + run.second) == width_;
                    if (Completed(call) == 0 && records % 2 == 0 && isLast) {
                        Append(out.bytes, ink, run.second - 1U, call.flag);
                        ++records;
                        written += 2;
                        run.second = 1;
                    }
                    records += run.second != 0 ? 1 : 0;
                    Append(out.bytes, ink, run.second, call.flag);
                    written += 2;
                });
                if (copy + 1 != call.copies)
                    records += white(Gap(call));
            }
            CheckIntegrity(pixels);
            CheckDelimiter();
            Append(out.bytes, 0, 0, call.flag);
            written += 4;
        });
        out.result = std::max<unsigned long>(call.first, call.last + 1UL);
    });
    if (isWhole_)
        answer.result = Long(written);
    answer.moved = answer.bytes.size();
    answer.rows = static_cast<unsigned int>(answer.offsets.size());
    if (room.code == 0 && answer.moved > room.result)
        answer.text += " (and the buffer size is too small)";
    Pad(answer.bytes, room.result);
    return answer;
}

LwAnswer LwReference::Counted(const LwCall& call)
{
    constexpr char kText[] = "LWInterface: Error counting LW buffer size, aborting!";
    return Answered(90001, kText, [&](LwAnswer& answer) {
        std::uint64_t each = (call.copies - 1) * Gap(call).size();
        if (call.flag) {
            const std::uint64_t pixels = Completed(call);
            const std::uint64_t records = pixels / 255 + (pixels % 255 != 0 ? 1 : 0);
            each += 2 * records;
            if (pixels == 0)
                each += std::uint64_t{ 2 } * call.copies;
            else if (records % 2 == 0 && !isWhole_)
                each += 2;
        }
        std::uint64_t total = 0;
        ForStreamRows(call, [&](std::uint64_t) {
            std::uint64_t bytes = 0;
            Walk([&](Pair, std::uint64_t) { bytes += 2; });
            total += call.copies * bytes + each;
        });
        answer.result = Long(total + 4);
    });
}

LwAnswer LwReference::Size(const LwCall& call)
{
    LwAnswer answer = Counted(call);
    if (answer.code == 0)
        fileSize_ = answer.result;
    return answer;
}

LwAnswer LwReference::WholeSize(const LwCall&)
{
    LwAnswer answer = Size({ .last = static_cast<unsigned int>(height_) - 1 });
    answer.result = Long(fileSize_);
    return answer;
}

// A row that its bytes don't hold whole ends with them.
void LwReference::CutRow(std::uint64_t start, std::uint64_t end, unsigned int left,
                         unsigned int right, Bytes& out) const
{
    std::uint64_t place = start + 2, column = 0;
    Pair run{};
    const auto next = [&] {
        if (place + 2 > end)
            return false;
        run = { file_[place], file_[place + 1] };
        place += 2;
        column += run.second;
        return true;
    };
    Append(out, 0, 0, false);
    bool holds = next();
    while (holds && column < left)
        holds = next();
    if (holds)
        Append(out, run.first, std::min<std::uint64_t>(column, right) - left + 1, false);
    while (holds && column < right && next() && (run.first != 0 || run.second != 0))
        Append(out, run.first, run.second - (column > right ? column - right : 0), false);
    Append(out, 0, 0, false);
}

LwAnswer LwReference::Crop(const LwCall& call)
{
    const auto side = [](double wanted, double otherwise, double most) {
        const double whole = std::trunc(wanted);
        return static_cast<unsigned int>(whole > 0.0 ? std::min(whole, most) : otherwise);
    };
    const unsigned int left = side(call.crop.CropLeft, 1, 1e9);
    const unsigned int right = side(call.crop.CropRight, width_, width_);
    const unsigned int top = side(call.crop.CropTop, 1, 1e9);
    const unsigned int bottom = side(call.crop.CropBottom, height_, height_);
    LwAnswer answer;
    answer.position = position_;
    if (left > right || top > bottom || bottom > places_.size())
        return answer;
    const unsigned int width = right - left + 1, height = bottom - top + 1;
    Bytes& out = answer.bytes = file_;
    out.resize(places_[0]);
    unsigned char text[15];
    const auto put = [&](std::ptrdiff_t place, std::size_t count) {
        std::copy_n(text, count, out.begin() + place);
    };
    out[1024] = 1; // inches, whatever the file has its sizes in
    PictureParameters::SizeToBuffer(inches_[0] * (height / height_), text);
    put(1028, 14);
    PictureParameters::SizeToBuffer(inches_[1] * (width / width_), text);
    put(1042, 14);
    PictureParameters::SizeInPixelsToBuffer(height, text);
    put(1056, 12);
    PictureParameters::SizeInPixelsToBuffer(width, text);
    put(1068, 12);
    const std::uint64_t length = file_.size();
    for (std::size_t row = top - 1; row < bottom; ++row) {
        position_ = row + 1 < places_.size() ? places_[row + 1] : length;
        const std::uint64_t start = std::min(places_[row], length);
        const std::uint64_t end = std::min(position_, length);
        if (width == static_cast<unsigned int>(width_))
            out.insert(out.end(), file_.begin() + static_cast<std::ptrdiff_t>(start),
                       file_.begin() + static_cast<std::ptrdiff_t>(end));
        else
            CutRow(start, end, left, right, out);
    }
    answer.position = position_;
    answer.moved = out.size();
    return answer;
}

LwAnswer LwReference::Display(const LwCall& call)
{
    Bytes canvas(std::size_t{ 3 } * kCanvasWidth * kCanvasHeight, 0x5A);
    LwAnswer answer = Answered(90020, kAborting, [&](LwAnswer&) {
        ForRows(call.first, call.last + std::uint64_t{ 1 }, [&](std::uint64_t row) {
            CheckIntegrity(Walk([&](Pair run, std::uint64_t before) {
                unsigned char pixel[4] = { 255, 255, 255, 255 };
                for (std::size_t s = 0; s < 4; ++s)
                    if (present_[s])
                        pixel[s] = Ink(run, static_cast<ColorSeparationType>(s));
                const unsigned long colour = PictureFileInterface::CalculatePixelAsRGB(pixel);
                for (std::uint64_t x = before; x < before + run.second; ++x)
                    for (unsigned int byte = 0; byte < 3; ++byte)
                        if (x < kCanvasWidth && row < kCanvasHeight)
                            canvas[3 * (row * kCanvasWidth + x) + byte] =
                                static_cast<unsigned char>(colour >> 8 * byte);
            }));
        });
    });
    answer.bytes = canvas;
    return answer;
}

} // namespace tympan::test
