#include "platform/tiff_samples.h"

#include "support/tiff_writing.h"

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

constexpr std::uint32_t kJpegBlock = 8; // samples each way

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

Bytes Clumps(const TiffLayout& layout, Area area)
{
    Packer packer(layout.bits);
    for (std::uint32_t y = 0; y < area.length; y += layout.chroma.down) {
        for (std::uint32_t x = 0; x < area.width; x += layout.chroma.across) {
            for (std::uint32_t down = 0; down != layout.chroma.down; ++down)
                for (std::uint32_t across = 0; across != layout.chroma.across; ++across)
                    packer.Put(SampleOf(layout, area.x + x + across, area.y + y + down, 0));
            packer.Put(SampleOf(layout, area.x + x, area.y + y, 1));
            packer.Put(SampleOf(layout, area.x + x, area.y + y, 2));
        }
        packer.EndLine();
    }
    return packer.Take();
}

// The samples from `first` up to `end` of every pixel.
Bytes LinesOf(const TiffLayout& layout, Area area, unsigned first, unsigned end)
{
    return Lines(Packer(layout.bits), area, first, end,
                 [&](auto x, auto y, unsigned sample) { return SampleOf(layout, x, y, sample); });
}

Bytes BlockOf(const TiffLayout& layout, Area area, unsigned plane)
{
    if (layout.chroma.across != 1 || layout.chroma.down != 1)
        return Clumps(layout, area);
    return layout.planes ? LinesOf(layout, area, plane, plane + 1)
                         : LinesOf(layout, area, 0, layout.samples);
}

void SetFields(TIFF* file, const TiffLayout& layout)
{
    constexpr float kAcross = 300;
    constexpr float kDown = 150;
    TIFFSetField(file, TIFFTAG_IMAGEWIDTH, layout.width);
    TIFFSetField(file, TIFFTAG_IMAGELENGTH, layout.length);
    TIFFSetField(file, TIFFTAG_SAMPLESPERPIXEL, layout.samples);
    TIFFSetField(file, TIFFTAG_BITSPERSAMPLE, layout.bits);
    TIFFSetField(file, TIFFTAG_PHOTOMETRIC, layout.as);
    TIFFSetField(file, TIFFTAG_COMPRESSION, layout.packed);
    if (layout.predictor != PREDICTOR_NONE)
        TIFFSetField(file, TIFFTAG_PREDICTOR, layout.predictor);
    TIFFSetField(file, TIFFTAG_PLANARCONFIG,
                 layout.planes ? PLANARCONFIG_SEPARATE : PLANARCONFIG_CONTIG);
    TIFFSetField(file, TIFFTAG_XRESOLUTION, kAcross);
    TIFFSetField(file, TIFFTAG_YRESOLUTION, kDown);
    if (layout.as == kYCbCr)
        TIFFSetField(file, TIFFTAG_YCBCRSUBSAMPLING, layout.chroma.across, layout.chroma.down);
    if (layout.tile.across != 0) {
        TIFFSetField(file, TIFFTAG_TILEWIDTH, layout.tile.across);
        TIFFSetField(file, TIFFTAG_TILELENGTH, layout.tile.down);
    } else {
        TIFFSetField(file, TIFFTAG_ROWSPERSTRIP, layout.strip);
    }
    if (layout.packed == kJpeg)
        TIFFSetField(file, TIFFTAG_JPEGQUALITY, 100);
}

void WriteDirectoryFirst(TIFF* file, const TiffLayout& layout)
{
    TIFFDeferStrileArrayWriting(file);
    Require(TIFFWriteCheck(file, layout.tile.across != 0, "made") != 0, "fields");
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
        x -= x % layout.chroma.across;
        y -= y % layout.chroma.down;
    }
    if (layout.packed == kJpeg) {
        const bool isShared = sample != 0;
        x /= kJpegBlock * (isShared ? layout.chroma.across : 1U);
        y /= kJpegBlock * (isShared ? layout.chroma.down : 1U);
    }
    const std::uint32_t mixed =
        (x / layout.grain * 2654435761U ^ y * 40503U ^ sample * 97U) * 2246822519U;
    return mixed >> (32U - layout.bits);
}

Bytes RowOf(const TiffLayout& layout, std::uint32_t row)
{
    return LinesOf(layout, { 0, row, layout.width, 1 }, 0, layout.samples);
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
    const bool isDirectoryFirst = layout.packed != kJpeg;
    if (isDirectoryFirst)
        WriteDirectoryFirst(file.get(), layout);
    WriteBlocks(file.get(),
                [&](Area area, unsigned plane) { return BlockOf(layout, area, plane); });
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
