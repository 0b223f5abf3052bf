// The drawing objects and the table that their handles are numbers into; drawing on the bitmaps.
#include "platform/gdi.h"

#include "platform/gdi_spans.h"

#include <algorithm>
#include <array>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <memory>
#include <mutex>
#include <new>
#include <optional>
#include <utility>
#include <variant>
#include <vector>

namespace tympan {
namespace {

// The handle of the bitmap without pixels that stands selected in a new context. Its generation is
// 0, which the table never gives out, so that every look-up of it finds nothing.
constexpr std::uintptr_t kNoPixelsHandle = 1;

struct DeviceContext {
    std::uintptr_t bitmap = kNoPixelsHandle;
    POINT origin{};
};

// The entries nearest to colours that were drawn lately, for bitmaps with a colour table. An entry
// holds the colour above and the index below; what stands in it is always true, if only of a colour
// that belongs elsewhere.
class NearestEntries {
  public:
    explicit NearestEntries(std::vector<RGBQUAD> table)
        : table_(std::move(table)), cache_(std::size_t{ 1 } << kCacheBits, Search(0))
    {}

    const std::vector<RGBQUAD>& Table() const { return table_; }

    std::uint8_t IndexOf(COLORREF colour)
    {
        colour &= kColourMask;
        std::uint32_t& entry = cache_[(colour * kHashFactor) >> (32 - kCacheBits)];
        if (entry >> 8 != colour)
            entry = colour << 8 | Search(colour);
        return static_cast<std::uint8_t>(entry);
    }

  private:
    static constexpr COLORREF kColourMask = 0xFFFFFF;
    static constexpr unsigned kCacheBits = 12;
    static constexpr std::uint32_t kHashFactor = 0x9E3779B1; // spreads neighbours far apart

    static std::uint32_t Distance(const RGBQUAD& entry, COLORREF colour)
    {
        const int red = entry.rgbRed - GetRValue(colour);
        const int green = entry.rgbGreen - GetGValue(colour);
        const int blue = entry.rgbBlue - GetBValue(colour);
        return static_cast<std::uint32_t>(red * red + green * green + blue * blue);
    }

    // The index stands below the distance, so that the least of these numbers tells the first of
    // the nearest. A distance has 18 bits at most.
    std::uint32_t Search(COLORREF colour) const
    {
        std::uint32_t nearest = std::numeric_limits<std::uint32_t>::max();
        for (std::uint32_t index = 0; index < table_.size(); ++index)
            nearest = std::min(nearest, Distance(table_[index], colour) << 8 | index);
        return nearest & 0xFF;
    }

    std::vector<RGBQUAD> table_;
    std::vector<std::uint32_t> cache_;
};

struct Bitmap {
    std::int32_t width = 0;
    std::int32_t height = 0;
    bool bottomUp = false;
    std::size_t pixelBytes = 0; // 1, 3 or 4
    std::size_t rowBytes = 0;
    std::unique_ptr<std::uint8_t[]> bits;
    std::optional<NearestEntries> colours; // where a pixel is one byte

    std::size_t Bytes() const { return rowBytes * static_cast<std::size_t>(height); }
};

struct Palette {
    std::vector<PALETTEENTRY> entries;
};

// Objects by handle. A handle is the index of a slot below and the generation of the slot above. A
// slot's generation grows with every deletion, and a slot that has used up its generations is left
// empty for good: no handle is given out twice. With addresses of 64 bits that leaves room for 16
// million objects at a time and 10^12 in each slot; with 32 bits, for 65536 at a time and as many
// in each slot.
class ObjectTable {
  public:
    using Object = std::variant<DeviceContext, Bitmap, Palette>;

    // Takes an object in. Gives 0 when the table is full.
    std::uintptr_t Add(Object object)
    {
        if (firstFree_ == kNone && !AddSlot())
            return 0;
        const std::size_t index = firstFree_;
        Slot& slot = slots_[index];
        firstFree_ = slot.nextFree;
        slot.object = std::move(object);
        return slot.generation << kIndexBits | index;
    }

    template <typename Kind>
    Kind* Find(std::uintptr_t handle)
    {
        const std::size_t index = handle & kMaxIndex;
        if (index >= slots_.size())
            return nullptr;
        Slot& slot = slots_[index];
        const bool isMeant = slot.object && slot.generation == handle >> kIndexBits;
        return isMeant ? std::get_if<Kind>(&*slot.object) : nullptr;
    }

    template <typename Kind>
    bool Remove(std::uintptr_t handle)
    {
        if (Find<Kind>(handle) == nullptr)
            return false;
        Slot& slot = slots_[handle & kMaxIndex];
        slot.object.reset();
        if (slot.generation++ != kMaxGeneration)
            slot.nextFree = std::exchange(firstFree_, handle & kMaxIndex);
        return true;
    }

  private:
    static constexpr unsigned kHandleBits = std::numeric_limits<std::uintptr_t>::digits;
    static constexpr unsigned kIndexBits = kHandleBits >= 64 ? 24 : 16;
    static constexpr std::uintptr_t kMaxIndex = (std::uintptr_t{ 1 } << kIndexBits) - 1;
    static constexpr std::uintptr_t kMaxGeneration =
        (std::uintptr_t{ 1 } << (kHandleBits - kIndexBits)) - 1;
    static constexpr std::size_t kNone = std::numeric_limits<std::size_t>::max();

    struct Slot {
        std::uintptr_t generation = 1;
        std::size_t nextFree = kNone;
        std::optional<Object> object; // none in a free slot
    };

    bool AddSlot()
    {
        if (slots_.size() > kMaxIndex)
            return false;
        slots_.emplace_back();
        firstFree_ = slots_.size() - 1;
        return true;
    }

    std::vector<Slot> slots_;
    std::size_t firstFree_ = kNone;
};

// The one table, held for as long as this stands.
class Objects {
  public:
    Objects() noexcept : lock_(TheOne().mutex) {}

    ObjectTable* operator->() const { return &TheOne().table; }

  private:
    struct Guarded {
        std::mutex mutex;
        ObjectTable table;
    };

    // Never destroyed: a client's own static object may delete its bitmap after all of ours are
    // gone.
    static Guarded& TheOne()
    {
        alignas(Guarded) static std::byte memory[sizeof(Guarded)];
        static Guarded& guarded = *new (memory) Guarded;
        return guarded;
    }

    std::lock_guard<std::mutex> lock_;
};

std::uintptr_t NumberOf(const void* handle)
{
    return reinterpret_cast<std::uintptr_t>(handle);
}

template <typename Handle>
Handle ToHandle(std::uintptr_t number)
{
    // NOLINTNEXTLINE(performance-no-int-to-ptr): the pointer is a number and is never followed.
    return reinterpret_cast<Handle>(number);
}

// The result of `make`, or null when there is no memory for it.
template <typename Make>
auto NullWithoutMemory(Make make) -> decltype(make())
{
    try {
        return make();
    } catch (const std::bad_alloc&) {
        return nullptr;
    }
}

template <typename Handle>
Handle AddObject(ObjectTable::Object object)
{
    return ToHandle<Handle>(Objects()->Add(std::move(object)));
}

bool IsNullOrContext(HDC dc)
{
    return dc == nullptr || Objects()->Find<DeviceContext>(NumberOf(dc)) != nullptr;
}

// Copies what a table has from `start` on, `count` entries at most.
template <typename Entry>
UINT CopyEntries(const std::vector<Entry>& table, UINT start, UINT count, Entry* entries)
{
    if (start >= table.size())
        return 0;
    const std::size_t copied = std::min<std::size_t>(count, table.size() - start);
    std::copy_n(table.data() + start, copied, entries);
    return static_cast<UINT>(copied);
}

// The `count` entries that stand `offset` bytes into a record whose declared array is too short.
template <typename Entry, typename Record>
std::vector<Entry> EntriesBehind(const Record& record, std::size_t offset, std::size_t count)
{
    std::vector<Entry> entries(count);
    std::memcpy(entries.data(), reinterpret_cast<const std::uint8_t*>(&record) + offset,
                count * sizeof(Entry));
    return entries;
}

bool IsSupported(const BITMAPINFOHEADER& header)
{
    const bool knownDepth =
        header.biBitCount == 8 || header.biBitCount == 24 || header.biBitCount == 32;
    return header.biSize == sizeof(BITMAPINFOHEADER) && header.biPlanes == 1 && knownDepth &&
           header.biCompression == BI_RGB && header.biWidth > 0 && header.biHeight != 0 &&
           header.biHeight != std::numeric_limits<LONG>::min();
}

// The bytes of the pixel memory; 0 when they are more than a bitmap may have.
std::size_t PixelMemory(std::uint64_t rowBytes, std::int32_t height)
{
    constexpr std::uint64_t kMost = std::min<std::uint64_t>(
        std::numeric_limits<DWORD>::max(), std::numeric_limits<std::ptrdiff_t>::max());
    const auto rows = static_cast<std::uint64_t>(height);
    return rowBytes > kMost / rows ? 0 : static_cast<std::size_t>(rowBytes * rows);
}

NearestEntries ColoursOf(const BITMAPINFO& info)
{
    constexpr DWORD kMost = 256;
    const DWORD used = info.bmiHeader.biClrUsed;
    return NearestEntries(EntriesBehind<RGBQUAD>(info, offsetof(BITMAPINFO, bmiColors),
                                                 used == 0 ? kMost : std::min(used, kMost)));
}

// Null when the bitmap would be too large or there is no memory for it.
HBITMAP MakeBitmap(const BITMAPINFO& info, void** bits)
{
    const BITMAPINFOHEADER& header = info.bmiHeader;
    Bitmap bitmap;
    bitmap.width = header.biWidth;
    bitmap.height = std::abs(header.biHeight);
    bitmap.bottomUp = header.biHeight > 0;
    bitmap.pixelBytes = header.biBitCount / 8U;
    const std::uint64_t rowBytes =
        (static_cast<std::uint64_t>(header.biWidth) * bitmap.pixelBytes + 3) / 4 * 4;
    const std::size_t bytes = PixelMemory(rowBytes, bitmap.height);
    if (bytes == 0)
        return nullptr;
    bitmap.rowBytes = static_cast<std::size_t>(rowBytes);
    if (bitmap.pixelBytes == 1)
        bitmap.colours = ColoursOf(info);
    bitmap.bits = std::make_unique<std::uint8_t[]>(bytes);
    void* const memory = bitmap.bits.get();
    const auto handle = AddObject<HBITMAP>(std::move(bitmap));
    if (bits != nullptr && handle != nullptr)
        *bits = memory;
    return handle;
}

DrawableArea AreaOf(const DeviceContext& context, const Bitmap& bitmap)
{
    constexpr std::int64_t kEnd = std::int64_t{ std::numeric_limits<int>::max() } + 1;
    const std::int64_t left = -std::int64_t{ context.origin.x };
    const std::int64_t top = -std::int64_t{ context.origin.y };
    return { left, top, std::min(left + bitmap.width, kEnd), std::min(top + bitmap.height, kEnd) };
}

// What a context draws on; without a bitmap when the handle is stale or the bitmap has gone.
struct Surface {
    Bitmap* bitmap = nullptr;
    DrawableArea area{};
};

Surface SurfaceOf(const Objects& objects, HDC dc)
{
    const auto* const context = objects->Find<DeviceContext>(NumberOf(dc));
    auto* const bitmap = context == nullptr ? nullptr : objects->Find<Bitmap>(context->bitmap);
    return bitmap == nullptr ? Surface{} : Surface{ bitmap, AreaOf(*context, *bitmap) };
}

// The part of a stretch that is not clipped.
struct Stretch {
    std::span<std::uint8_t> memory;
    std::uint64_t skipped = 0; // pixels of the stretch that lie before it
};

Stretch Clip(const Surface& surface, std::int64_t x, std::int64_t y, std::uint64_t count)
{
    const DrawableArea& area = surface.area;
    if (x >= area.right || y < area.top || y >= area.bottom)
        return {};
    // The distance between any two positions fits an unsigned one, and so does the end of a stretch
    // that ends before the area does.
    const auto start = static_cast<std::uint64_t>(x);
    const bool endsInside = count < static_cast<std::uint64_t>(area.right) - start;
    const std::int64_t last = endsInside ? static_cast<std::int64_t>(start + count) : area.right;
    const std::int64_t first = std::max(x, area.left);
    if (last <= first)
        return {};
    const Bitmap& bitmap = *surface.bitmap;
    const std::int64_t line = bitmap.bottomUp ? bitmap.height - 1 - (y - area.top) : y - area.top;
    std::uint8_t* const pixel = bitmap.bits.get() +
                                static_cast<std::size_t>(line) * bitmap.rowBytes +
                                static_cast<std::size_t>(first - area.left) * bitmap.pixelBytes;
    return { { pixel, static_cast<std::size_t>(last - first) * bitmap.pixelBytes },
             static_cast<std::uint64_t>(first) - start };
}

// The bytes of one pixel, of which a bitmap takes as many as its pixels have.
std::array<std::uint8_t, 4> Encode(Bitmap& bitmap, COLORREF colour)
{
    if (bitmap.colours)
        return { bitmap.colours->IndexOf(colour) };
    return { GetBValue(colour), GetGValue(colour), GetRValue(colour), 0 };
}

COLORREF Decode(const Bitmap& bitmap, const std::uint8_t* pixel)
{
    if (!bitmap.colours)
        return RGB(pixel[2], pixel[1], pixel[0]);
    const std::vector<RGBQUAD>& table = bitmap.colours->Table();
    if (*pixel >= table.size())
        return RGB(0, 0, 0);
    const RGBQUAD& entry = table[*pixel];
    return RGB(entry.rgbRed, entry.rgbGreen, entry.rgbBlue);
}

// Repeats a pixel through memory for one or more, twice as much with each step.
void Fill(std::span<std::uint8_t> memory, std::span<const std::uint8_t> pixel)
{
    std::memcpy(memory.data(), pixel.data(), pixel.size());
    for (std::size_t filled = pixel.size(); filled < memory.size();) {
        const std::size_t more = std::min(filled, memory.size() - filled);
        std::memcpy(memory.data() + filled, memory.data(), more);
        filled += more;
    }
}

void FillColour(Bitmap& bitmap, std::span<std::uint8_t> memory, COLORREF colour)
{
    const std::array<std::uint8_t, 4> pixel = Encode(bitmap, colour);
    Fill(memory, std::span(pixel).first(bitmap.pixelBytes));
}

void CopyToIndices(NearestEntries& colours, std::span<std::uint8_t> memory, const std::uint8_t* bgr)
{
    for (std::uint8_t& index : memory) {
        index = colours.IndexOf(RGB(bgr[2], bgr[1], bgr[0]));
        bgr += 3;
    }
}

void CopyToWords(std::span<std::uint8_t> memory, const std::uint8_t* bgr)
{
    for (std::size_t at = 0; at < memory.size(); at += 4) {
        std::uint8_t* const pixel = memory.data() + at;
        pixel[0] = bgr[0];
        pixel[1] = bgr[1];
        pixel[2] = bgr[2];
        pixel[3] = 0;
        bgr += 3;
    }
}

void CopyPixels(Bitmap& bitmap, std::span<std::uint8_t> memory, const std::uint8_t* bgr)
{
    switch (bitmap.pixelBytes) {
    case 1: CopyToIndices(*bitmap.colours, memory, bgr); break;
    case 3: std::memcpy(memory.data(), bgr, memory.size()); break;
    default: CopyToWords(memory, bgr); break;
    }
}

// Lets `use` work on the memory of one pixel; gives what the pixel then shows.
template <typename Use>
COLORREF OnPixel(HDC dc, int x, int y, Use&& use)
{
    const Objects objects;
    const Surface surface = SurfaceOf(objects, dc);
    const Stretch pixel = Clip(surface, x, y, 1);
    if (pixel.memory.empty())
        return CLR_INVALID;
    use(*surface.bitmap, pixel.memory);
    return Decode(*surface.bitmap, pixel.memory.data());
}

} // namespace

DrawableArea DrawableAreaOf(HDC dc)
{
    return SurfaceOf(Objects(), dc).area;
}

void SetPixelSpan(HDC dc, std::int64_t x, std::int64_t y, std::span<const std::uint8_t> bgr)
{
    const Objects objects;
    const Surface surface = SurfaceOf(objects, dc);
    const Stretch stretch = Clip(surface, x, y, bgr.size() / 3);
    if (!stretch.memory.empty())
        CopyPixels(*surface.bitmap, stretch.memory,
                   bgr.data() + static_cast<std::size_t>(stretch.skipped) * 3);
}

void FillPixelSpan(HDC dc, std::int64_t x, std::int64_t y, std::uint64_t count, COLORREF colour)
{
    const Objects objects;
    const Surface surface = SurfaceOf(objects, dc);
    const Stretch stretch = Clip(surface, x, y, count);
    if (!stretch.memory.empty())
        FillColour(*surface.bitmap, stretch.memory, colour);
}

bool IsLiveBitmap(HBITMAP bitmap)
{
    return Objects()->Find<Bitmap>(NumberOf(bitmap)) != nullptr;
}

std::size_t BitmapBytes(HBITMAP bitmap)
{
    const Objects objects;
    const auto* const found = objects->Find<Bitmap>(NumberOf(bitmap));
    return found == nullptr ? 0 : found->Bytes();
}

} // namespace tympan

using namespace tympan; // the platform's calls stand in the global namespace

HDC CreateCompatibleDC(HDC like)
{
    if (!IsNullOrContext(like))
        return nullptr;
    return NullWithoutMemory([] { return AddObject<HDC>(DeviceContext{}); });
}

BOOL DeleteDC(HDC dc)
{
    return Objects()->Remove<DeviceContext>(NumberOf(dc));
}

HGDIOBJ SelectObject(HDC dc, HGDIOBJ object)
{
    const Objects objects;
    const std::uintptr_t wanted = NumberOf(object);
    auto* const context = objects->Find<DeviceContext>(NumberOf(dc));
    const bool isBitmap = wanted == kNoPixelsHandle || objects->Find<Bitmap>(wanted) != nullptr;
    if (context == nullptr || !isBitmap)
        return nullptr;
    return ToHandle<HGDIOBJ>(std::exchange(context->bitmap, wanted));
}

BOOL SetViewportOrgEx(HDC dc, int x, int y, POINT* previous)
{
    const Objects objects;
    auto* const context = objects->Find<DeviceContext>(NumberOf(dc));
    if (context == nullptr)
        return FALSE;
    const POINT before = std::exchange(context->origin, POINT{ x, y });
    if (previous != nullptr)
        *previous = before;
    return TRUE;
}

HBITMAP CreateDIBSection(HDC dc, const BITMAPINFO* info, UINT usage, void** bits, HANDLE section,
                         DWORD /*offset*/)
{
    if (bits != nullptr)
        *bits = nullptr;
    if (!IsNullOrContext(dc) || usage != DIB_RGB_COLORS || section != nullptr || info == nullptr ||
        !IsSupported(info->bmiHeader))
        return nullptr;
    return NullWithoutMemory([=] { return MakeBitmap(*info, bits); });
}

BOOL DeleteObject(HGDIOBJ object)
{
    const Objects objects;
    return objects->Remove<Bitmap>(NumberOf(object)) || objects->Remove<Palette>(NumberOf(object));
}

COLORREF SetPixel(HDC dc, int x, int y, COLORREF colour)
{
    return OnPixel(dc, x, y, [=](Bitmap& bitmap, std::span<std::uint8_t> memory) {
        FillColour(bitmap, memory, colour);
    });
}

BOOL SetPixelV(HDC dc, int x, int y, COLORREF colour)
{
    return SetPixel(dc, x, y, colour) != CLR_INVALID;
}

COLORREF GetPixel(HDC dc, int x, int y)
{
    return OnPixel(dc, x, y, [](const Bitmap&, std::span<const std::uint8_t>) {});
}

UINT GetDIBColorTable(HDC dc, UINT start, UINT count, RGBQUAD* colours)
{
    const Objects objects;
    const Bitmap* const bitmap = SurfaceOf(objects, dc).bitmap;
    if (bitmap == nullptr || !bitmap->colours || colours == nullptr)
        return 0;
    return CopyEntries(bitmap->colours->Table(), start, count, colours);
}

HPALETTE CreatePalette(const LOGPALETTE* colours)
{
    if (colours == nullptr || colours->palNumEntries == 0)
        return nullptr;
    return NullWithoutMemory([=] {
        return AddObject<HPALETTE>(Palette{ EntriesBehind<PALETTEENTRY>(
            *colours, offsetof(LOGPALETTE, palPalEntry), colours->palNumEntries) });
    });
}

UINT GetPaletteEntries(HPALETTE palette, UINT start, UINT count, PALETTEENTRY* entries)
{
    const Objects objects;
    const auto* const found = objects->Find<Palette>(NumberOf(palette));
    if (found == nullptr)
        return 0;
    if (entries == nullptr)
        return static_cast<UINT>(found->entries.size());
    return CopyEntries(found->entries, start, count, entries);
}

HLOCAL LocalAlloc(UINT flags, std::size_t bytes)
{
    constexpr std::size_t kMost = std::numeric_limits<std::ptrdiff_t>::max();
    if ((flags != LPTR && flags != 0) || bytes > kMost)
        return nullptr;
    void* const memory = ::operator new(bytes, std::nothrow);
    if (memory != nullptr && flags == LPTR)
        std::memset(memory, 0, bytes);
    return memory;
}

HLOCAL LocalFree(HLOCAL memory)
{
    ::operator delete(memory);
    return nullptr;
}

CDC::~CDC()
{
    DeleteDC(m_hDC);
}

BOOL CDC::Attach(HDC dc)
{
    if (m_hDC != nullptr || dc == nullptr || !IsNullOrContext(dc))
        return FALSE;
    m_hDC = dc;
    return TRUE;
}

HDC CDC::Detach()
{
    return std::exchange(m_hDC, nullptr);
}
