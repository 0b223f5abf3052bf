#include "platform/tiff_samples.h"

#include <tiffio.h>

#include <algorithm>
#include <array>
#include <cstdarg>
#include <cstdio>
#include <memory>
#include <stdexcept>
#include <string>
#include <utility>

namespace tympan::test {

namespace {

// A file in memory for libtiff to write.
struct Written {
    Bytes bytes;
    std::size_t position = 0;

    static tmsize_t Read(thandle_t handle, void* buffer, tmsize_t size)
    {
        auto& self = *static_cast<Written*>(handle);
        const std::size_t left = self.bytes.size() - std::min(self.bytes.size(), self.position);
        const std::size_t count = std::min(left, static_cast<std::size_t>(size));
        std::copy_n(self.bytes.data() + self.position, count, static_cast<std::byte*>(buffer));
        self.position += count;
        return static_cast<tmsize_t>(count);
    }
    static tmsize_t Write(thandle_t handle, void* buffer, tmsize_t size)
    {
        auto& self = *static_cast<Written*>(handle);
        const auto count = static_cast<std::size_t>(size);
        self.bytes.resize(std::max(self.bytes.size(), self.position + count));
        std::copy_n(static_cast<const std::byte*>(buffer), count,
                    self.bytes.data() + self.position);
        self.position += count;
        return size;
    }
    static toff_t Seek(thandle_t handle, toff_t offset, int from)
    {
        auto& self = *static_cast<Written*>(handle);
        self.position = static_cast<std::size_t>(offset) + (from == SEEK_SET   ? 0
                                                            : from == SEEK_CUR ? self.position
                                                                               : self.bytes.size());
        return self.position;
    }
    static int Close(thandle_t) { return 0; }
    static toff_t Size(thandle_t handle) { return static_cast<Written*>(handle)->bytes.size(); }
};

int calls = 0;
std::string lastText;

// What libtiff says while a test's file is written doesn't count.
struct UncountedCalls {
    UncountedCalls() = default;
    UncountedCalls(const UncountedCalls&) = delete;
    UncountedCalls& operator=(const UncountedCalls&) = delete;
    ~UncountedCalls() { calls = before; }

    int before = calls;
};

void CountCall(const char*, const char* format, std::va_list arguments)
{
    ++calls;
    std::array<char, 200> text{};
    std::vsnprintf(text.data(), text.size(), format, arguments);
    lastText = text.data();
}

void Require(bool isTrue, const char* what)
{
    if (!isTrue)
        throw std::runtime_error(what + (": " + lastText));
}

// Appends samples as libtiff wants them.
class Packer {
  public:
    explicit Packer(std::uint16_t bits) : bits_(bits) {}

    void Put(std::uint32_t value)
    {
        if (bits_ == 8) {
            bytes_.push_back(static_cast<std::byte>(value));
            return;
        }
        if (bits_ == 16) {
            const auto word = static_cast<std::uint16_t>(value);
            const auto* bytes = reinterpret_cast<const std::byte*>(&word);
            bytes_.insert(bytes_.end(), bytes, bytes + sizeof word);
            return;
        }
        for (unsigned bit = bits_; bit-- != 0;) {
            if (used_ == 0)
                bytes_.push_back(std::byte{ 0 });
            bytes_.back() |= std::byte((value >> bit & 1U) << (7U - used_));
            used_ = (used_ + 1) % 8;
        }
    }
    void EndLine() { used_ = 0; }
    Bytes Take() { return std::move(bytes_); }

  private:
    std::uint16_t bits_;
    unsigned used_ = 0; // bits of the last byte
    Bytes bytes_;
};

struct Area {
    std::uint32_t x;
    std::uint32_t y;
    std::uint32_t width;
    std::uint32_t length;
};

Bytes Clumps(const TiffLayout& layout, Area area)
{
    Packer packer(layout.bits);
    for (std::uint32_t y = 0; y < area.length; y += layout.chromaDown) {
        for (std::uint32_t x = 0; x < area.width; x += layout.chromaAcross) {
            for (std::uint32_t down = 0; down != layout.chromaDown; ++down)
                for (std::uint32_t across = 0; across != layout.chromaAcross; ++across)
                    packer.Put(SampleOf(layout, area.x + x + across, area.y + y + down, 0));
            packer.Put(SampleOf(layout, area.x + x, area.y + y, 1));
            packer.Put(SampleOf(layout, area.x + x, area.y + y, 2));
        }
        packer.EndLine();
    }
    return packer.Take();
}

// The samples from `first` up to `end` of every pixel.
Bytes Lines(const TiffLayout& layout, Area area, unsigned first, unsigned end)
{
    Packer packer(layout.bits);
    for (std::uint32_t y = area.y; y != area.y + area.length; ++y) {
        for (std::uint32_t x = area.x; x != area.x + area.width; ++x)
            for (unsigned sample = first; sample != end; ++sample)
                packer.Put(SampleOf(layout, x, y, sample));
        packer.EndLine();
    }
    return packer.Take();
}

Bytes BlockOf(const TiffLayout& layout, Area area, unsigned plane)
{
    if (layout.chromaAcross != 1 || layout.chromaDown != 1)
        return Clumps(layout, area);
    return layout.isPlanar ? Lines(layout, area, plane, plane + 1)
                           : Lines(layout, area, 0, layout.samples);
}

void WriteTiles(TIFF* file, const TiffLayout& layout, std::uint16_t plane)
{
    for (std::uint32_t y = 0; y < layout.length; y += layout.tileLength)
        for (std::uint32_t x = 0; x < layout.width; x += layout.tileWidth) {
            Bytes block = BlockOf(layout, { x, y, layout.tileWidth, layout.tileLength }, plane);
            Require(TIFFWriteTile(file, block.data(), x, y, 0, plane) >= 0, "tile");
        }
}

void WriteStrips(TIFF* file, const TiffLayout& layout, std::uint16_t plane)
{
    for (std::uint32_t y = 0; y < layout.length; y += layout.stripRows) {
        const std::uint32_t rows = std::min(layout.stripRows, layout.length - y);
        Bytes block = BlockOf(layout, { 0, y, layout.width, rows }, plane);
        Require(TIFFWriteEncodedStrip(file, TIFFComputeStrip(file, y, plane), block.data(),
                                      static_cast<tmsize_t>(block.size())) >= 0,
                "strip");
    }
}

void SetFields(TIFF* file, const TiffLayout& layout)
{
    constexpr float kAcross = 300;
    constexpr float kDown = 150;
    TIFFSetField(file, TIFFTAG_IMAGEWIDTH, layout.width);
    TIFFSetField(file, TIFFTAG_IMAGELENGTH, layout.length);
    TIFFSetField(file, TIFFTAG_SAMPLESPERPIXEL, layout.samples);
    TIFFSetField(file, TIFFTAG_BITSPERSAMPLE, layout.bits);
    TIFFSetField(file, TIFFTAG_PHOTOMETRIC, layout.photometric);
    TIFFSetField(file, TIFFTAG_COMPRESSION, layout.compression);
    TIFFSetField(file, TIFFTAG_PLANARCONFIG,
                 layout.isPlanar ? PLANARCONFIG_SEPARATE : PLANARCONFIG_CONTIG);
    TIFFSetField(file, TIFFTAG_XRESOLUTION, kAcross);
    TIFFSetField(file, TIFFTAG_YRESOLUTION, kDown);
    if (layout.photometric == kYCbCr)
        TIFFSetField(file, TIFFTAG_YCBCRSUBSAMPLING, layout.chromaAcross, layout.chromaDown);
    if (layout.tileWidth != 0) {
        TIFFSetField(file, TIFFTAG_TILEWIDTH, layout.tileWidth);
        TIFFSetField(file, TIFFTAG_TILELENGTH, layout.tileLength);
    } else {
        TIFFSetField(file, TIFFTAG_ROWSPERSTRIP, layout.stripRows);
    }
    if (layout.compression == kJpeg)
        TIFFSetField(file, TIFFTAG_JPEGQUALITY, 100);
}

void WriteDirectoryFirst(TIFF* file, const TiffLayout& layout)
{
    TIFFDeferStrileArrayWriting(file);
    Require(TIFFWriteCheck(file, layout.tileWidth != 0, "made") != 0, "fields");
    Require(TIFFWriteDirectory(file) != 0 && TIFFSetDirectory(file, 0) != 0, "directory");
}

struct Handlers {
    TIFFErrorHandler error;
    TIFFErrorHandler warning;
};

Handlers Exchange(Handlers handlers)
{
    return { TIFFSetErrorHandler(handlers.error), TIFFSetWarningHandler(handlers.warning) };
}

Handlers handlersBefore;

} // namespace

std::uint32_t SampleOf(const TiffLayout& layout, std::uint32_t x, std::uint32_t y, unsigned sample)
{
    x = std::min(x, layout.width - 1);
    y = std::min(y, layout.length - 1);
    if (sample != 0) {
        x -= x % layout.chromaAcross;
        y -= y % layout.chromaDown;
    }
    if (layout.compression == kJpeg)
        return sample == 0 ? 80 + 2 * x + y : 110 + 10 * sample + (x + y) / 8;
    const std::uint32_t mixed =
        (x / layout.grain * 2654435761U ^ y * 40503U ^ sample * 97U) * 2246822519U;
    return mixed >> (32U - layout.bits);
}

Bytes RowOf(const TiffLayout& layout, std::uint32_t row)
{
    return Lines(layout, { 0, row, layout.width, 1 }, 0, layout.samples);
}

Bytes MakeTiff(const TiffLayout& layout)
{
    const UncountedCalls uncounted;
    Written written;
    const std::unique_ptr<TIFF, void (*)(TIFF*)> file(
        TIFFClientOpen("made", layout.mode, &written, &Written::Read, &Written::Write,
                       &Written::Seek, &Written::Close, &Written::Size, nullptr, nullptr),
        TIFFClose);
    Require(file != nullptr, "file");
    SetFields(file.get(), layout);
    // JPEG alone puts its tables into the directory as it goes.
    const bool isDirectoryFirst = layout.compression != kJpeg;
    if (isDirectoryFirst)
        WriteDirectoryFirst(file.get(), layout);
    const auto planes = layout.isPlanar ? layout.samples : std::uint16_t{ 1 };
    for (std::uint16_t plane = 0; plane != planes; ++plane)
        layout.tileWidth != 0 ? WriteTiles(file.get(), layout, plane)
                              : WriteStrips(file.get(), layout, plane);
    if (isDirectoryFirst)
        Require(TIFFForceStrileArrayWriting(file.get()) != 0, "places of strips");
    TIFFFlush(file.get());
    return written.bytes;
}

ProcessHandlers::ProcessHandlers()
{
    calls = 0;
    handlersBefore = Exchange({ CountCall, CountCall });
}

ProcessHandlers::~ProcessHandlers()
{
    Exchange(handlersBefore);
}

int ProcessHandlers::CallCount()
{
    return calls;
}

bool ProcessHandlers::AreInPlace()
{
    const Handlers found = Exchange({ CountCall, CountCall });
    return found.error == &CountCall && found.warning == &CountCall;
}

} // namespace tympan::test
