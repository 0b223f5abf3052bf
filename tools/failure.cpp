#include "failure.h"

#include "names.h"
#include "verbosity.h"

#include <tympan/tympan.h>

#include <array>
#include <cerrno>
#include <cstddef>
#include <iostream>
#include <memory>
#include <new>
#include <stdexcept>
#include <system_error>

namespace tympan::tool {

namespace {

constexpr char kNoMemory[] = "not enough memory";

struct DeletePlatformFailure {
    void operator()(CException* failure) const { failure->Delete(); }
};

// What to do where the system's own words leave that open.
std::string AdviceFor(long error)
{
    switch (error) {
    case ENOSPC:
    case EDQUOT: return "Make room there, or let the output be written to another disk.";
    case EFBIG: return "`ulimit -f` tells how large a file may get here.";
    case EACCES:
    case EPERM: return "`ls -l` tells who may read and write it.";
    case EROFS: return "That disk can only be read: let the output be written to another one.";
    case EIO: return "The disk or the network fails: copy the file from there first.";
    case EMFILE:
    case ENFILE: return "`ulimit -n` tells how many files may be open at a time.";
    default: return "";
    }
}

// The platform's causes, where there is no number of the system to tell more.
std::string CauseText(int cause)
{
    switch (cause) {
    case CFileException::fileNotFound: return "no such file";
    case CFileException::badPath: return "no such folder";
    case CFileException::tooManyOpenFiles: return "too many open files";
    case CFileException::accessDenied: return "permission denied";
    case CFileException::badSeek: return "a place outside of what a file can hold";
    case CFileException::diskFull: return "the disk is full";
    case CFileException::endOfFile: return "the file ends too early";
    default: return "reading or writing failed";
    }
}

FileFailure FailureOf(const std::string& file, const CFileException& failure)
{
    if (failure.m_lOsError > 0)
        return SystemFailure(file, static_cast<int>(failure.m_lOsError));
    return { file, CauseText(failure.m_cause) };
}

std::string TextOf(const CException& failure)
{
    std::array<char, 512> text{};
    const BOOL told = failure.GetErrorMessage(text.data(), static_cast<UINT>(text.size()));
    return told != 0 ? text.data() : "the library failed";
}

std::string TextOf(const LumetoException& failure)
{
    return failure.MessageText().GetString();
}

std::string TextOf(const PictureFilesException& failure)
{
    return failure.Text().GetString();
}

// Takes a failure that was thrown as a pointer.
template <typename Failure>
[[noreturn]] void ThrowTaken(const std::string& file, Failure* failure)
{
    const std::unique_ptr<Failure> owned(failure);
    throw FileFailure(file, TextOf(*failure));
}

} // namespace

FileFailure::FileFailure(std::string file, std::string whatHappened,
                         std::optional<unsigned long> code, std::string advice)
    : file_(std::move(file)), whatHappened_(std::move(whatHappened)), code_(code),
      advice_(std::move(advice))
{}

std::string ErrnoText(int error)
{
    return std::generic_category().message(error);
}

FileFailure SystemFailure(std::string file, int error, std::string advice)
{
    if (advice.empty())
        advice = AdviceFor(error);
    return { std::move(file), ErrnoText(error), std::nullopt, std::move(advice) };
}

void Report(const FileFailure& failure)
{
    std::cerr << "tympan: " << Shown(failure.File()) << ": " << Shown(failure.WhatHappened());
    if (failure.Code().value_or(0) != 0)
        std::cerr << " (code " << *failure.Code() << ')';
    std::cerr << '\n';
    if (!failure.Advice().empty())
        std::cerr << "  " << Shown(failure.Advice()) << '\n';
    std::cerr.flush();
}

void Warn(const std::string& file, const std::string& text)
{
    if (!IsQuiet())
        std::cerr << "tympan: " << Shown(file) << ": " << Shown(text) << '\n';
}

void RethrowAsFileFailure(const std::string& file)
{
    try {
        throw;
    } catch (const FileFailure&) {
        throw;
    } catch (const UsageFailure&) {
        throw;
    } catch (const FailuresReported&) {
        throw;
    } catch (CFileException* failure) {
        const std::unique_ptr<CException, DeletePlatformFailure> owned(failure);
        throw FailureOf(file, *failure);
    } catch (CMemoryException* failure) {
        const std::unique_ptr<CException, DeletePlatformFailure> owned(failure);
        throw FileFailure(file, kNoMemory);
    } catch (CException* failure) {
        const std::unique_ptr<CException, DeletePlatformFailure> owned(failure);
        throw FileFailure(file, TextOf(*failure));
    } catch (LumetoException* failure) {
        ThrowTaken(file, failure);
    } catch (const LumetoException& failure) {
        throw FileFailure(file, TextOf(failure));
    } catch (OutOfRangeException* failure) {
        ThrowTaken(file, failure);
    } catch (MemoryAllocException* failure) {
        ThrowTaken(file, failure);
    } catch (const PictureFilesException& failure) {
        throw FileFailure(file, TextOf(failure));
    } catch (const IllegalRowsException&) {
        throw FileFailure(file, "the rows asked for lie outside the picture");
    } catch (const std::bad_alloc&) {
        throw FileFailure(file, kNoMemory);
    } catch (const std::length_error&) {
        throw FileFailure(file, kNoMemory);
    } catch (const std::exception& failure) {
        throw FileFailure(file, failure.what());
    } catch (...) {
        throw FileFailure(file, "an unknown failure of the library");
    }
}

} // namespace tympan::tool
