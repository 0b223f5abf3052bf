#include "tympan/check.h"

#include "core/failure_guard.h"
#include "core/findings.h"
#include "core/format.h"
#include "core/header_check.h"
#include "platform/file.h"
#include "tiff/tiff_check.h"
#include "tympan/inspect.h"

#include <algorithm>
#include <span>
#include <string>
#include <system_error>
#include <vector>

namespace tympan {

namespace {

constexpr CheckRule kNotRead{
    "TYM-FILE-0001",
    Severity::Error,
    "The file can't be read",
    "Opening or reading the file failed, so that nothing, or not all of it, could be checked.",
    "See whether the file is there, can be read by you, and stands on a sound disk; then check it "
    "again.",
};
constexpr CheckRule kNoFormat{
    "TYM-FILE-0002",
    Severity::Error,
    "No format accepts the file",
    "The file looks like none of the formats that this build of the library checks.",
    "If you know the file's format, name it for the check.",
};
constexpr CheckRule kNoMemory{
    "TYM-FILE-0003",
    Severity::Error,
    "There is not enough memory for the check",
    "The check was ended before it was done. What it found until then holds.",
    "Check the file again while less is running.",
};
constexpr const CheckRule* kGeneralRules[] = { &kNotRead, &kNoFormat, &kNoMemory };

static_assert(Findings::kToldOfEach == kFindingsToldOfEachRule);

constexpr FailureRow kStops[] = {
    { Caught::File, 0, nullptr },
    { Caught::Memory, 0, nullptr },
};

// Keeps which failure ended a check.
struct Stop {
    Caught what = Caught::Anything;
    void Leave(const FailureRow& row) noexcept { what = row.what; }
};

bool IsAsked(const Format& format, const CheckOptions& options)
{
    return options.formats.empty() || std::find(options.formats.begin(), options.formats.end(),
                                                format.name) != options.formats.end();
}

// A format that no path is asked for: its files are checked by name, or when no other accepts them.
Format TiffItFormat()
{
    return { kTiffItName, nullptr, nullptr, TiffItFileCheck() };
}

std::vector<const Format*> CheckedFormats()
{
    static const Format kTiffIt = TiffItFormat();
    const auto formats = FormatsByCertainty();
    std::vector<const Format*> checked(formats.begin(), formats.end());
    checked.push_back(&kTiffIt);
    return checked;
}

const Format* FormatOf(CFile& file, const CString& path, const CheckOptions& options)
{
    for (const Format* const format : CheckedFormats())
        if (IsAsked(*format, options) &&
            (options.formats.size() == 1 || format->check.accepts(file, path)))
            return format;
    return nullptr;
}

std::string NamesOf(const CheckOptions& options)
{
    std::string names;
    for (const Format* const format : CheckedFormats())
        if (IsAsked(*format, options))
            names += (names.empty() ? "" : ", ") + std::string(format->name);
    return names.empty() ? "none" : names;
}

void TellNotOpened(const CFileException& failure, Findings& findings)
{
    findings.Tell(kNotRead, {}, [&] {
        const std::string reason =
            failure.m_lOsError > 0
                ? ": " + std::generic_category().message(static_cast<int>(failure.m_lOsError))
                : "";
        return "The file can't be opened" + reason + ".";
    });
}

void TellStop(const Stop& stop, const CFile& file, Findings& findings)
{
    if (stop.what == Caught::Memory)
        findings.Tell(kNoMemory, {}, [] { return "Memory ran out."; });
    else
        findings.Tell(kNotRead, { {}, file.GetPosition() },
                      [] { return "Reading failed at or behind this place."; });
}

// The file's own errors count, not that it could not be read to its end.
Verdict VerdictOn(const Findings& findings)
{
    const auto stops =
        std::count_if(findings.Counts().begin(), findings.Counts().end(), [](const RuleCount& one) {
            return std::find(std::begin(kGeneralRules), std::end(kGeneralRules), one.rule) !=
                   std::end(kGeneralRules);
        });
    if (findings.CountOf(Severity::Error) > static_cast<std::uint64_t>(stops))
        return Verdict::Invalid;
    if (stops != 0)
        return Verdict::Undetermined;
    return findings.Counts().empty() ? Verdict::Valid : Verdict::ValidWithRemarks;
}

// The format that the file was checked by, or null.
const Format* Check(const CString& path, const CheckOptions& options, Findings& findings)
{
    CFile file;
    CFileException failure;
    if (file.Open(path, CFile::modeRead, &failure) == FALSE) {
        TellNotOpened(failure, findings);
        return nullptr;
    }
    const Format* format = nullptr;
    Stop stop;
    const bool cameBack = Guarded(stop, kStops, [&] {
        format = FormatOf(file, path, options);
        if (format != nullptr)
            format->check.prove(file, findings);
        else
            findings.Tell(kNoFormat, {}, [&] {
                return "The file is none of the formats asked for: " + NamesOf(options) + ".";
            });
    });
    if (!cameBack)
        TellStop(stop, file, findings);
    return format;
}

} // namespace

CheckResult CheckFile(const CString& path, const FindingVisitor& visit, const CheckOptions& options)
{
    Findings findings(visit, options.progress);
    const Format* const format = Check(path, options, findings);
    return { VerdictOn(findings), format != nullptr ? format->name : std::string_view{},
             findings.Counts() };
}

std::vector<const CheckRule*> CheckRules()
{
    std::vector<const CheckRule*> all;
    const auto add = [&](std::span<const CheckRule* const> rules) {
        for (const CheckRule* const rule : rules)
            all.push_back(rule);
    };
    add(kGeneralRules);
    add(HeaderRules());
    for (const Format& format : Formats())
        add(format.check.rules);
    add(TiffItFileCheck().rules);
    return all;
}

} // namespace tympan
