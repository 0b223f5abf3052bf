// Tells the failure in flight by trying each class that the library knows, the derived ones before
// their bases, and destroys it as what it is: several of the classes have no virtual destructor.
#include "core/failure_guard.h"

#include "core/failures.h"

#include <algorithm>
#include <new>
#include <stdexcept>
#include <type_traits>

namespace tympan {

namespace {

bool Answers(Caught row, Caught thrown)
{
    const bool ofPlatform =
        thrown == Caught::File || thrown == Caught::Memory || thrown == Caught::Platform;
    return row == thrown || row == Caught::Anything || (row == Caught::Platform && ofPlatform);
}

const FailureRow* RowFor(FailureTable table, Caught thrown)
{
    const auto row = std::find_if(table.begin(), table.end(), [&](const FailureRow& candidate) {
        return Answers(candidate.what, thrown);
    });
    return row == table.end() ? nullptr : &*row;
}

template <typename Failure>
void Destroy(Failure* thrown)
{
    if constexpr (std::is_base_of_v<CException, Failure>)
        thrown->Delete();
    else
        delete thrown;
}

struct Taken {
    bool known = false;
    const FailureRow* row = nullptr;
};

template <typename Failure, Caught kind>
struct Pointer {
    static bool Take(FailureTable table, Taken& taken)
    {
        try {
            throw;
        } catch (Failure* thrown) {
            taken = { true, RowFor(table, kind) };
            if (taken.row != nullptr)
                Destroy(thrown);
        } catch (...) {
            return false;
        }
        return true;
    }
};

template <typename Failure, Caught kind>
struct Value {
    static bool Take(FailureTable table, Taken& taken)
    {
        try {
            throw;
        } catch (const Failure&) {
            taken = { true, RowFor(table, kind) };
        } catch (...) {
            return false;
        }
        return true;
    }
};

template <typename... Entries>
struct Ladder {
    static Taken Take(FailureTable table)
    {
        Taken taken;
        static_cast<void>((Entries::Take(table, taken) || ...));
        return taken;
    }
};

using KnownFailures = Ladder<                                       //
    Pointer<CFileException, Caught::File>,                          //
    Pointer<CMemoryException, Caught::Memory>,                      //
    Pointer<CException, Caught::Platform>,                          //
    Pointer<EntryErrorException, Caught::EntryError>,               //
    Pointer<ReadFileException, Caught::ReadFile>,                   //
    Pointer<FileCorruptedException, Caught::FileCorrupted>,         //
    Pointer<OpenFileException, Caught::OpenFile>,                   //
    Pointer<IllegalSizeException, Caught::IllegalSize>,             //
    Pointer<OutOfRangeException, Caught::OutOfRange>,               //
    Pointer<MemoryAllocException, Caught::MemoryAlloc>,             //
    Pointer<IllegalSeparationException, Caught::IllegalSeparation>, //
    Pointer<IllegalColorIndexException, Caught::IllegalColorIndex>, //
    Value<LoadFailedException, Caught::LoadFailed>,                 //
    Value<BufferSizeException, Caught::BufferSize>,                 //
    Value<IllegalRowsException, Caught::IllegalRows>,               //
    Value<std::bad_alloc, Caught::Memory>,                          //
    Value<std::length_error, Caught::Memory>>;

} // namespace

const FailureRow* TakeFailure(FailureTable table) noexcept
{
    const Taken taken = KnownFailures::Take(table);
    return taken.known ? taken.row : RowFor(table, Caught::Anything);
}

void FailureTrace::Leave(const FailureRow& row) noexcept
{
    status_ = row.code;
    if (row.text == nullptr)
        return;
    try {
        text_ = row.text;
    } catch (const std::bad_alloc&) {
        return; // the code alone has to tell
    }
}

} // namespace tympan
