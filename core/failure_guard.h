// The one place where thrown failures are caught. An operation gives its work and its table of what
// each failure leaves; the ladder of catch clauses is here and nowhere else.
#pragma once

#include "core/failure_trace.h"

#include <span>
#include <utility>

namespace tympan {

/// What a row of a failure table answers for.
enum class Caught {
    File,              // CFileException*
    Memory,            // CMemoryException*, std::bad_alloc, std::length_error
    Platform,          // CException* of any kind
    EntryError,        // pointers, from here
    ReadFile,          //
    FileCorrupted,     //
    OpenFile,          //
    IllegalSize,       //
    OutOfRange,        //
    MemoryAlloc,       //
    IllegalSeparation, //
    IllegalColorIndex, //
    LoadFailed,        // values, from here
    BufferSize,        //
    IllegalRows,       //
    Anything,
};

/// What one kind of failure leaves. A null text leaves `ErrorMsg` as it was.
struct FailureRow {
    Caught what;
    unsigned long code;
    const char* text;
};

/// Rows in the order of a ladder of catch clauses: the first that fits is taken.
using FailureTable = std::span<const FailureRow>;

/// For the operations whose failures leave nothing but their result.
struct NoTrace {
    static void Leave(const FailureRow&) noexcept {}
};

/// The row for the failure in flight, which is destroyed if it was thrown as a pointer; null when
/// the table does not list it, and then it still lives. Call it inside a catch clause.
const FailureRow* TakeFailure(FailureTable table) noexcept;

/// Does `work`. A failure that `table` lists ends here: `trace` takes what its row leaves, and the
/// result is false. One that it does not list passes on as it was thrown.
template <typename Trace, typename Work>
bool Guarded(Trace&& trace, FailureTable table, Work&& work)
{
    try {
        std::forward<Work>(work)();
        return true;
    } catch (...) {
        const FailureRow* const row = TakeFailure(table);
        if (row == nullptr)
            throw;
        trace.Leave(*row);
    }
    return false;
}

} // namespace tympan
