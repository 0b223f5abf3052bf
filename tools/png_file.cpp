#include "png_file.h"

#include "failure.h"
#include "jump_guard.h"

#include <png.h>

#include <cerrno>
#include <cmath>
#include <cstdio>
#include <limits>
#include <string>
#include <utility>

namespace tympan::tool {

namespace {

constexpr double kMetresPerInch = 0.0254;

// Pixels per metre; 0 for a resolution that the file can't hold.
png_uint_32 PerMetre(double perInch)
{
    const double perMetre = std::round(perInch / kMetresPerInch);
    const bool held = perMetre >= 1.0 && perMetre <= std::numeric_limits<std::int32_t>::max();
    return held ? static_cast<png_uint_32>(perMetre) : 0;
}

} // namespace

// libpng leaves a failure by a jump, which may not pass a frame whose objects have destructors. So
// each of its calls runs in `Do`, and the failure's text waits in the object.
struct PngFile::Writer {
    explicit Writer(const OutputFile& output) : path(output.Path()) {}
    Writer(const Writer&) = delete;
    Writer& operator=(const Writer&) = delete;
    ~Writer()
    {
        png_destroy_write_struct(&png, &info);
        if (file != nullptr)
            std::fclose(file);
    }

    void Open(const std::string& writingPath);
    void Describe(const WrittenForm& form, PngColour colour);
    /// Runs calls of libpng, which own nothing.
    template <typename Calls>
    void Do(Calls calls);

    static void Write(png_structp png, png_bytep bytes, std::size_t count);
    static void FlushNothing(png_structp) {}
    static void Fail(png_structp png, png_const_charp text);
    static void DropWarning(png_structp, png_const_charp) {}

    std::string path;
    char failure[256] = {};
    int writeError = 0;
    std::FILE* file = nullptr;
    png_structp png = nullptr;
    png_infop info = nullptr;
};

void PngFile::Writer::Write(png_structp png, png_bytep bytes, std::size_t count)
{
    auto& writer = *static_cast<Writer*>(png_get_io_ptr(png));
    if (std::fwrite(bytes, 1, count, writer.file) == count)
        return;
    writer.writeError = errno;
    png_error(png, "write error");
}

void PngFile::Writer::Fail(png_structp png, png_const_charp text)
{
    auto& writer = *static_cast<Writer*>(png_get_error_ptr(png));
    std::snprintf(writer.failure, sizeof writer.failure, "%s", text);
    png_longjmp(png, 1);
}

template <typename Calls>
void PngFile::Writer::Do(Calls calls)
{
    if (ComesBack(png_jmpbuf(png), calls))
        return;
    if (writeError != 0)
        throw SystemFailure(path, writeError);
    throw FileFailure(path, std::string("can't be written as PNG: ") + failure);
}

void PngFile::Writer::Open(const std::string& writingPath)
{
    file = std::fopen(writingPath.c_str(), "wbe");
    if (file == nullptr)
        throw SystemFailure(path, errno);
    png = png_create_write_struct(PNG_LIBPNG_VER_STRING, this, Fail, DropWarning);
    info = png == nullptr ? nullptr : png_create_info_struct(png);
    if (info == nullptr)
        throw std::bad_alloc();
    png_set_write_fn(png, this, Write, FlushNothing);
}

void PngFile::Writer::Describe(const WrittenForm& form, PngColour colour)
{
    const int type = colour == PngColour::Grey ? PNG_COLOR_TYPE_GRAY : PNG_COLOR_TYPE_RGB;
    const png_uint_32 x = PerMetre(form.resolutionX);
    const png_uint_32 y = PerMetre(form.resolutionY);
    Do([this, &form, type, x, y] {
        png_set_user_limits(png, PNG_UINT_31_MAX, PNG_UINT_31_MAX);
        png_set_IHDR(png, info, form.width, form.height, 8, type, PNG_INTERLACE_NONE,
                     PNG_COMPRESSION_TYPE_DEFAULT, PNG_FILTER_TYPE_DEFAULT);
        if (x != 0 && y != 0)
            png_set_pHYs(png, info, x, y, PNG_RESOLUTION_METER);
        png_write_info(png, info);
    });
}

PngFile::PngFile(const OutputFile& output, const WrittenForm& form, PngColour colour)
    : writer_(std::make_unique<Writer>(output))
{
    writer_->Open(output.WritingPath());
    writer_->Describe(form, colour);
}

PngFile::~PngFile() = default;

void PngFile::Write(std::span<const std::uint8_t> row)
{
    writer_->Do([this, row] { png_write_row(writer_->png, row.data()); });
}

void PngFile::Finish()
{
    writer_->Do([this] { png_write_end(writer_->png, nullptr); });
    if (std::fclose(std::exchange(writer_->file, nullptr)) != 0)
        throw SystemFailure(writer_->path, errno);
}

} // namespace tympan::tool
