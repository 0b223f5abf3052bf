#include "faults/run.h"

#include "core/failures.h"

#include <algorithm>
#include <bit>
#include <cstdlib>
#include <memory>
#include <new>
#include <stdexcept>

namespace tympan::test {

namespace {

constexpr std::ptrdiff_t kBehind = 64;

// The code of an object, or of its record where the object has none.
unsigned long CodeOf(BasePictureIF* picture)
{
    if (picture == nullptr)
        return 0;
    const unsigned long code = picture->TraceStatus();
    return code != 0 || picture->PictureParams() == nullptr
               ? code
               : picture->PictureParams()->TraceStatus();
}

void ForgetCode(BasePictureIF* picture)
{
    if (picture == nullptr)
        return;
    picture->TraceStatus(0);
    if (picture->PictureParams() != nullptr)
        picture->PictureParams()->TraceStatus(0);
}

} // namespace

unsigned ThrownBy(void (*work)(void*), void* context)
{
    try {
        work(context);
    } catch (CFileException* failure) {
        failure->Delete();
        return kFile;
    } catch (CMemoryException* failure) {
        failure->Delete();
        return kMemory;
    } catch (MemoryAllocException* failure) {
        delete failure;
        return kMemory;
    } catch (const std::bad_alloc&) {
        return kMemory;
    } catch (ReadFileException* failure) {
        delete failure;
        return kReadFile;
    } catch (IllegalSeparationException* failure) {
        delete failure;
        return kRefusal;
    } catch (IllegalColorIndexException* failure) {
        delete failure;
        return kRefusal;
    } catch (...) {
        return kOther;
    }
    return kNothing;
}

Room::Room(std::size_t size, unsigned char filling)
    : bytes_(size + kBehind, filling), size_(size), filling_(filling)
{}

bool Room::IsOverrun() const
{
    return std::any_of(bytes_.end() - kBehind, bytes_.end(),
                       [&](unsigned char byte) { return byte != filling_; });
}

void Run::Begin(const char* name)
{
    if (outcome_.count == Outcome::kMost)
        std::abort(); // a scenario with more steps needs more room
    outcome_.steps[outcome_.count++].name = name;
    ForgetCode(subject_);
}

void Run::End(std::uint64_t result, unsigned thrown, const May& may)
{
    Step& step = Last();
    step.code = CodeOf(subject_);
    const bool isTold =
        step.code != 0 || thrown != kNothing || (subject_ != nullptr && !subject_->ObjectStatus());
    step.tells = isTold || result == 0;
    step.isMute = result == 0 && !isTold && !may.resultTells;
    const bool isAnnounced =
        std::find(may.leaves.begin(), may.leaves.end(), step.code) != may.leaves.end();
    const bool isStrange = (thrown & ~may.throws) != 0 || (step.code != 0 && !isAnnounced);
    if (isStrange && outcome_.strange == nullptr) {
        outcome_.strange = step.name;
        outcome_.thrown = thrown & ~may.throws;
        outcome_.left = isAnnounced ? 0 : step.code;
    }
    Fold(result);
    Fold(std::uint64_t{ thrown });
    Fold(std::uint64_t{ step.code });
}

void Run::Fold(std::uint64_t number)
{
    constexpr std::uint64_t kFactor = 0x9E3779B97F4A7C15; // odd, its bits well mixed
    std::uint64_t& digest = Last().digest;
    digest = (std::rotl(digest, 23) ^ number) * kFactor;
}

void Run::Fold(double number)
{
    Fold(std::bit_cast<std::uint64_t>(number));
}

void Run::Fold(std::span<const unsigned char> bytes)
{
    for (const unsigned char byte : bytes)
        Fold(std::uint64_t{ byte });
}

void Run::FoldGiven(const Room& room, std::uint64_t given)
{
    if (room.IsOverrun() && outcome_.overran == nullptr)
        outcome_.overran = Last().name;
    const auto bytes = room.Bytes();
    const auto end = static_cast<std::size_t>(std::min<std::uint64_t>(given, bytes.size()));
    Fold(bytes.first(end));
    if (given != 0 && Last().code == 0)
        for (const unsigned char byte : bytes.subspan(end))
            Fold(std::uint64_t{ byte } ^ room.Filling());
}

void Run::FoldBitmap(HBITMAP bitmap)
{
    if (bitmap == nullptr)
        return;
    CDC dc;
    dc.Attach(CreateCompatibleDC(nullptr));
    SelectObject(dc.GetSafeHdc(), bitmap);
    FoldPixels(dc);
}

void Run::FoldPixels(CDC& dc)
{
    for (int y = 0; y < kSide; ++y)
        for (int x = 0; x < kSide; ++x)
            Fold(std::uint64_t{ GetPixel(dc.GetSafeHdc(), x, y) });
}

void Run::StandsOnEarlier()
{
    const auto end = outcome_.steps.begin() + static_cast<std::ptrdiff_t>(outcome_.count);
    Last().tells =
        std::any_of(outcome_.steps.begin(), end, [](const Step& step) { return step.tells; });
}

void Run::LookAt(const char* name, const char* path)
{
    LookAtWholeOrEmpty(name, path);
    StandsOnEarlier();
}

void Run::LookAtWholeOrEmpty(const char* name, const char* path)
{
    Begin(name);
    const Bytes bytes = memory_.Contents(path);
    Last().tells = bytes.empty() || files_.FailsOnwards() || Allocations::HasFailed();
    for (const std::byte byte : bytes)
        Fold(std::to_integer<std::uint64_t>(byte));
}

void Run::Recover()
{
    files_.Recover();
    Allocations::Recover();
    recovered_ = outcome_.count;
    for (const auto& [path, bytes] : *good_)
        memory_.Put(path, bytes);
}

} // namespace tympan::test
