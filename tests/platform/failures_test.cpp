// The platform's failures: who destroys them, what they tell, which causes they know.
#include "platform/failures.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <memory>
#include <new>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

namespace {

// Counts itself, so that a destruction too many or too few shows.
struct Counted : CFileException {
    static inline int living = 0;

    Counted() { ++living; }
    Counted(const Counted& other) : CFileException(other) { ++living; }
    Counted& operator=(const Counted&) = delete;
    ~Counted() override { --living; }
};

struct Other {
    virtual ~Other() = default;
    int number = 7;
};

// The failure is not what the object begins with.
struct Inside : Other, Counted {};

// The failure made with `new` holds one that isn't.
struct Holder : Counted {
    Counted held;
};

struct Maker {
    explicit Maker(int)
    {
        const std::unique_ptr<CException> another(new Counted);
        throw std::runtime_error("no argument");
    }
};

struct NeedsMaker : Counted {
    explicit NeedsMaker(const Maker&) {}
};

std::unique_ptr<CException> MakeWithoutArgument()
{
    return std::unique_ptr<CException>(new NeedsMaker(Maker(1)));
}

TEST(Failures, DeleteDestroysWhatWasMadeWithNew)
{
    CException* const failures[] = { new Counted, new Inside, new Holder,
                                     new (std::nothrow) Counted };
    EXPECT_EQ(Counted::living, 5);
    for (CException* failure : failures)
        failure->Delete();
    EXPECT_EQ(Counted::living, 0);
}

TEST(Failures, DeleteLeavesAVariableAlone)
{
    Counted variable;
    Holder* const holder = new Holder;
    alignas(Counted) std::byte place[sizeof(Counted)];
    auto* const placed = new (place) Counted;
    const auto shared = std::make_shared<Counted>();
    std::vector<Counted> several(2);
    const int living = Counted::living;

    CException* const failures[] = { &variable, &holder->held, placed, shared.get(),
                                     several.data() };
    for (CException* failure : failures)
        failure->Delete();
    EXPECT_EQ(Counted::living, living);

    placed->~Counted();
    holder->Delete();
}

TEST(Failures, DeleteLeavesAloneWhatWasThrownByValue)
{
    try {
        throw Counted();
    } catch (Counted& failure) {
        failure.Delete();
        EXPECT_EQ(Counted::living, 1);
    }
    EXPECT_EQ(Counted::living, 0);
}

TEST(Failures, AnAddressIsForgottenWhenItsObjectGoes)
{
    // The blocks that go back here are the ones that the variables' makers get next.
    for (int i = 0; i < 100; ++i) {
        std::make_unique<Counted>();
        EXPECT_THROW(MakeWithoutArgument(), std::runtime_error);
        void* const block = ::operator new(sizeof(Counted));
        auto* const placed = ::new (block) Counted;
        placed->Delete();
        ASSERT_EQ(Counted::living, 1);
        placed->~Counted();
        ::operator delete(block);
    }
}

TEST(Failures, ManyThreadsThrowAtOnce)
{
    std::vector<std::thread> threads;
    threads.reserve(4);
    for (int i = 0; i < 4; ++i)
        threads.emplace_back([] {
            for (int round = 0; round < 500; ++round) {
                CFileException variable;
                try {
                    throw new CFileException(CFileException::diskFull);
                } catch (CException* failure) {
                    failure->Delete();
                    variable.Delete();
                }
            }
        });
    for (std::thread& thread : threads)
        thread.join();
}

struct MessageCase {
    const char* name;
    int cause;
    UINT size;
    const char* fileName;
    const char* expected;
};

constexpr int kNotFound = CFileException::fileNotFound, kFull = CFileException::diskFull;

const MessageCase kMessageCases[] = {
    { "room enough", kNotFound, 100, "a.ct", "The file a.ct was not found." },
    { "just room enough", kNotFound, 29, "a.ct", "The file a.ct was not found." },
    { "a name too long gives way", kNotFound, 32, "folder/a.ct",
      "The file ...a.ct was not found." },
    { "room for points alone", kNotFound, 27, "folder/a.ct", "The file .. was not found." },
    { "room for no name", kNotFound, 20, "a.ct", "The file  was not f" },
    { "room for a single character", kNotFound, 2, "a.ct", "T" },
    { "no name known", kFull, 100, nullptr,
      "The disk is full: the file (unnamed) can't be written." },
    { "a cause that there isn't", 77, 100, "a.ct", "An operation on the file a.ct failed." },
};

TEST(Failures, MessagesKeepToTheirBuffer)
{
    for (const MessageCase& row : kMessageCases) {
        const auto buffer = std::make_unique<char[]>(row.size); // the sanitizer sees its end
        std::memset(buffer.get(), '#', row.size);
        UINT help = 5;
        const CFileException failure(row.cause, -1, row.fileName);
        EXPECT_TRUE(failure.GetErrorMessage(buffer.get(), row.size, &help)) << row.name;
        EXPECT_STREQ(buffer.get(), row.expected) << row.name;
        EXPECT_EQ(help, 0U) << row.name;
    }
}

TEST(Failures, NoRoomForAMessageIsTold)
{
    char buffer[2] = { '#', '#' };
    const CFileException file(CFileException::hardIO);
    const CMemoryException memory;
    for (const CException* failure :
         { static_cast<const CException*>(&file), static_cast<const CException*>(&memory) }) {
        EXPECT_FALSE(failure->GetErrorMessage(nullptr, 5));
        EXPECT_FALSE(failure->GetErrorMessage(buffer, 0));
        EXPECT_EQ(buffer[0], '#');
        EXPECT_FALSE(failure->GetErrorMessage(buffer, 1));
        EXPECT_EQ(buffer[0], '\0');
        buffer[0] = '#';
    }
}

TEST(Failures, EveryCauseHasAMessageOfItsOwn)
{
    std::vector<std::string> messages;
    for (int cause = CFileException::none; cause <= CFileException::endOfFile; ++cause) {
        char buffer[100];
        ASSERT_TRUE(CFileException(cause, -1, "a.ct").GetErrorMessage(buffer, sizeof buffer));
        EXPECT_NE(std::strstr(buffer, "a.ct"), nullptr) << buffer;
        EXPECT_EQ(std::count(messages.begin(), messages.end(), buffer), 0) << buffer;
        messages.emplace_back(buffer);
    }
}

TEST(Failures, TheBaseHasNoMessage)
{
    char buffer[] = "old";
    EXPECT_FALSE(CException().GetErrorMessage(buffer, sizeof buffer));
    EXPECT_STREQ(buffer, "");
}

struct ErrnoCase {
    int error;
    int cause;
};

constexpr ErrnoCase kErrnoCases[] = {
    { 0, 0 },       { ENOENT, 2 }, { ENOTDIR, 3 }, { EMFILE, 4 }, { ENFILE, 4 }, { EACCES, 5 },
    { EPERM, 5 },   { EISDIR, 5 }, { EBADF, 6 },   { ESPIPE, 9 }, { EIO, 10 },   { ETXTBSY, 11 },
    { ENOSPC, 13 }, { EFBIG, 13 }, { ENOMEM, 1 },  { -1, 1 },     { 99999, 1 },
};

TEST(Failures, TheSystemsErrorsHaveTheirCauses)
{
    for (const auto& [error, cause] : kErrnoCases) {
        EXPECT_EQ(CFileException::ErrnoToException(error), cause) << error;
        EXPECT_EQ(CFileException::OsErrorToException(error), cause) << error;
    }
}

TEST(Failures, ThrowersThrowPointersToTheirKind)
{
    try {
        CFileException::ThrowOsError(ENOSPC, "a.ct");
    } catch (CFileException* failure) {
        EXPECT_EQ(failure->m_cause, CFileException::diskFull);
        EXPECT_EQ(failure->m_lOsError, ENOSPC);
        EXPECT_EQ(failure->m_strFileName, "a.ct");
        failure->Delete();
    }
    try {
        AfxThrowMemoryException();
    } catch (CMemoryException* failure) {
        char buffer[40];
        EXPECT_TRUE(failure->GetErrorMessage(buffer, sizeof buffer));
        EXPECT_STREQ(buffer, "There is not enough memory.");
        failure->Delete();
    }
}

} // namespace
