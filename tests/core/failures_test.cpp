// The words of the failures, and the guard that turns thrown ones into codes.
#include "core/failure_guard.h"
#include "core/failures.h"
#include "platform/ui.h"

#include <gtest/gtest.h>

#include <functional>
#include <new>
#include <stdexcept>
#include <string>

namespace {

using tympan::Caught;
using tympan::FailureRow;
using tympan::FailureTrace;

class MessageBoxes {
  public:
    MessageBoxes()
    {
        tympan::SetMessageHandler([this](const CString& text, UINT type) {
            shown += std::string(text) + (type == 0 ? "" : " with buttons");
            ++count;
            return 1;
        });
    }
    ~MessageBoxes() { tympan::SetMessageHandler({}); }

    std::string shown;
    int count = 0;
};

template <typename Failure>
std::string Shown()
{
    MessageBoxes boxes;
    Failure failure("it");
    LumetoException& base = failure;
    base.ReportError();
    EXPECT_EQ(boxes.count, 1);
    EXPECT_STREQ(failure.MessageText(), "it");
    EXPECT_EQ(boxes.shown, std::string(failure.ShownText()));
    return boxes.shown;
}

TEST(Failures, WordThemselves)
{
    EXPECT_EQ(Shown<LumetoException>(), "");
    EXPECT_EQ(Shown<EntryErrorException>(), "Page File Entry Error : it!");
    EXPECT_EQ(Shown<ReadFileException>(), "it");
    EXPECT_EQ(Shown<FileCorruptedException>(), "File is corrupted! it");
    EXPECT_EQ(Shown<OpenFileException>(), "File it open failed!");
    EXPECT_EQ(Shown<LoadFailedException>(), "Load failed because of it!");
    EXPECT_EQ(Shown<IllegalSizeException>(), "Illegal it size!");
    EXPECT_EQ(Shown<BufferSizeException>(), "Buffer it is full and there is no room to add data!");
    EXPECT_STREQ(OutOfRangeException().Text(), "Out of range exception!");
    EXPECT_STREQ(MemoryAllocException().Text(), "Memory allocation failed!");
}

class UnknownFailure : public CException {};

struct ThrownCase {
    const char* name;
    Caught what;
    std::function<void()> work;
};

const ThrownCase kThrownCases[] = {
    { "a file failure", Caught::File, [] { throw new CFileException; } },
    { "the platform's memory failure", Caught::Memory, [] { throw new CMemoryException; } },
    { "the language's memory failure", Caught::Memory, [] { throw std::bad_alloc(); } },
    { "a length beyond all memory", Caught::Memory, [] { throw std::length_error("long"); } },
    { "a failure of the platform", Caught::Platform,
      [] { throw static_cast<CException*>(new UnknownFailure); } },
    { "an entry error", Caught::EntryError, [] { throw new EntryErrorException("e"); } },
    { "a short read", Caught::ReadFile, [] { throw new ReadFileException("r"); } },
    { "a corrupted file", Caught::FileCorrupted, [] { throw new FileCorruptedException("c"); } },
    { "a failed opening", Caught::OpenFile, [] { throw new OpenFileException("o"); } },
    { "an illegal size", Caught::IllegalSize, [] { throw new IllegalSizeException("s"); } },
    { "a number out of range", Caught::OutOfRange, [] { throw new OutOfRangeException; } },
    { "no memory for a buffer", Caught::MemoryAlloc, [] { throw new MemoryAllocException; } },
    { "no separation", Caught::IllegalSeparation, [] { throw new IllegalSeparationException; } },
    { "no colour", Caught::IllegalColorIndex, [] { throw new IllegalColorIndexException; } },
    { "a refused load", Caught::LoadFailed, [] { throw LoadFailedException("l"); } },
    { "a full buffer", Caught::BufferSize, [] { throw BufferSizeException("b"); } },
    { "illegal rows", Caught::IllegalRows, [] { throw IllegalRowsException(); } },
};

// The sanitizers tell of a pointer that is not destroyed, or destroyed as what it isn't.
TEST(Guard, KnowsEachFailureAndDestroysIt)
{
    for (const ThrownCase& thrown : kThrownCases) {
        SCOPED_TRACE(thrown.name);
        const FailureRow table[] = { { thrown.what, 7, "text" }, { Caught::Anything, 8, nullptr } };
        FailureTrace trace("before");
        EXPECT_FALSE(tympan::Guarded(trace, table, thrown.work));
        EXPECT_EQ(trace.Status(), 7U);
        EXPECT_STREQ(trace.Text(), "text");
    }
}

TEST(Guard, TakesTheFirstRowThatFitsAndLeavesATextWithoutOne)
{
    const FailureRow table[] = { { Caught::Platform, 1, nullptr },
                                 { Caught::File, 2, "never" },
                                 { Caught::Anything, 3, nullptr } };
    for (const ThrownCase& thrown : kThrownCases) {
        SCOPED_TRACE(thrown.name);
        const bool ofPlatform = thrown.what == Caught::File || thrown.what == Caught::Memory ||
                                thrown.what == Caught::Platform;
        FailureTrace trace("before");
        EXPECT_FALSE(tympan::Guarded(trace, table, thrown.work));
        EXPECT_EQ(trace.Status(), ofPlatform ? 1U : 3U);
        EXPECT_STREQ(trace.Text(), "before");
    }
}

TEST(Guard, PassesOnAliveWhatItsTableDoesNotList)
{
    const FailureRow table[] = { { Caught::File, 1, "text" } };
    FailureTrace trace("before");
    try {
        tympan::Guarded(trace, table, [] { throw new ReadFileException("still there"); });
        FAIL() << "the failure was swallowed";
    } catch (ReadFileException* failure) {
        EXPECT_STREQ(failure->MessageText(), "still there");
        delete failure;
    }
    EXPECT_THROW(tympan::Guarded(trace, table, [] { throw 5; }), int);
    EXPECT_EQ(trace.Status(), 0U);
    EXPECT_TRUE(tympan::Guarded(trace, table, [] {}));
}

TEST(Guard, TakesWhatNobodyKnowsAsAnything)
{
    const FailureRow table[] = { { Caught::Anything, 4, nullptr } };
    FailureTrace trace;
    EXPECT_FALSE(tympan::Guarded(trace, table, [] { throw 5; }));
    EXPECT_EQ(trace.Status(), 4U);
}

// A variable's failure is the client's to keep.
TEST(Guard, LeavesAloneAFailureThatStandsInAVariable)
{
    const FailureRow table[] = { { Caught::File, 1, nullptr } };
    CFileException mine(CFileException::diskFull);
    FailureTrace trace;
    EXPECT_FALSE(tympan::Guarded(trace, table, [&] { throw &mine; }));
    EXPECT_EQ(mine.m_cause, CFileException::diskFull);
}

} // namespace
