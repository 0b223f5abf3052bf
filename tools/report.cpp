// `tympan report`: a page for a browser over a folder of jobs.
#include "command.h"
#include "failure.h"
#include "names.h"
#include "output_file.h"
#include "page_paths.h"
#include "progress.h"
#include "report_entry.h"
#include "report_files.h"
#include "report_folder.h"
#include "standard_output.h"
#include "verbosity.h"

#include <tympan/tympan.h>

#include <array>
#include <cerrno>
#include <cstddef>
#include <cstdint>
#include <ctime>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <memory>
#include <numeric>
#include <optional>
#include <string>
#include <vector>

namespace tympan::tool {

namespace {

struct ReportOptions {
    std::vector<std::string> folders;
    std::string output;
    std::string title;
    ReportEntries::Wishes wishes;
};

constexpr unsigned int kMostPercent = 800; // of eight inks, which is what a picture can have

constexpr char kFooter[] =
    R"(Open DIR/index.html in a browser, from the disk or a server: it loads nothing from anywhere
else. It shows all pictures that are found in the folders and in those inside, the ones with
findings first, and opens each with its separations, its size, what `tympan check` finds,
and how much ink it has; a page with the places of its pictures. Files without a picture's
content or ending, and hidden ones, are left out.

What can't be read is part of the report. The exit status is 1 when a folder couldn't be
read or the report not be written; then what was there stays.

Example:
  tympan report jobs -o jobs-report
  tympan report jobs -o jobs-report --title 'Jobs of May' --limit 280 --map 'P:\JOBS=jobs')";

// By the machine's clock, as 2024-05-31.
std::string Today()
{
    const std::time_t now = std::time(nullptr);
    std::tm local{};
    localtime_r(&now, &local);
    std::array<char, 16> text{};
    std::strftime(text.data(), text.size(), "%Y-%m-%d", &local);
    return text.data();
}

// The data of a report as a script, written entry by entry: pages from the disk may load no other data.
class ReportData {
  public:
    ReportData(const ReportFolder& folder, const std::string& title)
        : folder_(folder), file_(folder.WritingPath(kReportData), std::ios::binary)
    {
        const Json head{ { "title", WithReplacements(title) },
                         { "version", tympan::Version() },
                         { "made", Today() } };
        std::string text = OnOneLine(head);
        text.pop_back(); // more is in the object
        file_ << "const reportData = " << text << ",\"pictures\":[";
        RequireWritten();
    }

    void Add(const Json& entry)
    {
        file_ << (count_++ == 0 ? "\n" : ",\n") << OnOneLine(entry);
        RequireWritten();
    }

    void Finish(std::size_t leftOut)
    {
        file_ << "\n],\"left_out\":" << leftOut << "};\n";
        file_.close();
        RequireWritten();
    }

    std::size_t Count() const { return count_; }

  private:
    void RequireWritten() const
    {
        if (!file_)
            throw SystemFailure(folder_.Path(), errno);
    }

    const ReportFolder& folder_;
    std::ofstream file_;
    std::size_t count_ = 0;
};

std::uint64_t BytesOf(const std::vector<ReportFile>& files)
{
    return std::accumulate(
        files.begin(), files.end(), std::uint64_t{ 0 },
        [](std::uint64_t sum, const ReportFile& file) { return sum + file.bytes; });
}

// Gives how many pictures there are.
std::size_t WriteEntries(const std::vector<ReportFile>& files, const ReportOptions& options,
                         ReportFolder& folder)
{
    ReportEntries entries(files, options.wishes, folder);
    ReportData data(folder, options.title);
    Progress progress("Reporting on " + options.folders.front(), BytesOf(files),
                      ProgressUnit::Bytes);
    for (std::size_t index = 0; index < files.size(); ++index) {
        if (const std::optional<Json> entry = entries.EntryOf(index))
            data.Add(*entry);
        progress.Advance(files[index].bytes);
    }
    data.Finish(files.size() - data.Count());
    return data.Count();
}

void Tell(const std::string& output, std::size_t count)
{
    if (!IsQuiet())
        std::cout << Shown((std::filesystem::path(output) / "index.html").string()) << ": " << count
                  << (count == 1 ? " picture\n" : " pictures\n");
    FinishStandardOutput();
}

std::string UsualTitle(const std::string& folder)
{
    const std::filesystem::path path = std::filesystem::absolute(folder).lexically_normal();
    return (path.has_filename() ? path : path.parent_path()).filename().string();
}

void WriteReport(ReportOptions& options)
{
    if (IsDash(options.output))
        throw UsageFailure("-: a report is a folder; give the name of one (`./-` is one of that "
                           "name)");
    if (options.title.empty())
        options.title = UsualTitle(options.folders.front());
    ReportFolder folder(options.output);
    const ReportFiles found = FindReportFiles(options.folders);
    const std::size_t count = WriteEntries(found.files, options, folder);
    folder.Commit();
    Tell(options.output, count);
    if (!found.areAll)
        throw FailuresReported();
}

} // namespace

void DeclareReport(const Options& command)
{
    const auto options = std::make_shared<ReportOptions>();
    command.Add("DIR", options->folders, "Folders of pictures; files may be named too").Required();
    command
        .Add("-o,--output", options->output,
             "The folder to write: a new or an empty one, or an earlier report")
        .Required()
        .Called("DIR")
        .NotEmpty();
    command.Add("--title", options->title, "What the page is called; else as the folder is")
        .NotEmpty();
    command
        .Add("--limit", options->wishes.limitPercent,
             "The total ink, in percent, above which the area is told")
        .Between(0U, kMostPercent)
        .TellDefault();
    AddPathOptions(command, options->wishes.paths);
    command.AddFooter(kFooter);
    command.Run([options] { WriteReport(*options); });
}

} // namespace tympan::tool
