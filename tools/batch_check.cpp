#include "batch_check.h"

#include "batch_rules.h"
#include "batch_summary.h"
#include "batch_walk.h"
#include "failure.h"
#include "jpeg_side_file.h"
#include "manifest.h"
#include "names.h"
#include "verbosity.h"

#include <algorithm>
#include <cstddef>
#include <cstdio>
#include <deque>
#include <iostream>
#include <memory>
#include <utility>

namespace tympan::tool {

namespace {

// Results wait for those in front of them, so many and so long ones at most.
constexpr std::size_t kMostWaiting = 1024;
constexpr std::size_t kMostBytesWaiting = std::size_t{ 16 } << 20U;

// A file on its way through the run.
struct Underway {
    WalkedEntry entry;
    std::optional<FileState> sideFile;
    std::optional<Json> known; // the outcome in an earlier manifest, when nothing has changed
    std::optional<JobResult> result;
    std::size_t bytes = 0; // of the result on its way
};

class Batch {
  public:
    explicit Batch(const BatchOptions& options);

    void Run();

  private:
    bool HasRoom() const;
    bool IsOutput(const FileIdentity& file) const;
    void LeaveOut(const std::string& path);
    void Take(WalkedEntry entry);
    void TakeFile(Underway file);
    void AddDone(Underway file, JobResult result);
    const ManifestLine* KnownLine(const Underway& file);
    void CollectJobs();
    void Collect(JobEnd end);
    void TellDone();
    void Tell(Underway& file);
    void MakeUnchanged(Underway& file);
    void Record(const Underway& file);
    void Finish();
    void RemoveReadPartials() const;

    const BatchOptions& options_;
    FileWalk walk_;
    WorkerPool pool_;
    BatchSummary summary_;
    std::vector<std::unique_ptr<ManifestReader>> earlier_;
    std::unique_ptr<ManifestWriter> manifest_;
    std::vector<FileIdentity> outputs_;
    std::deque<Underway> underway_; // in the order of the walk
    std::uint64_t firstTicket_ = 0; // of the front
    std::size_t bytesWaiting_ = 0;
};

std::string ReplyTo(const std::string& request, const JobOptions& options)
{
    BeQuiet(); // there is one line of progress at most, and it isn't a worker's
    return DoJob(JobRequest::Decoded(request), options).Encoded();
}

// A page's check reads the pictures that it places, of which the manifest tells nothing; and what
// could not be determined may have been the disk's fault.
bool LastsUntilChange(const Json& outcome)
{
    return outcome.at("verdict") != NameOf(Verdict::Undetermined) &&
           outcome.value("format", Json()) != "Page";
}

bool IsWell(const Json& told)
{
    const std::string verdict = told.at("verdict").get<std::string>();
    return (verdict == NameOf(Verdict::Valid) || verdict == NameOf(Verdict::ValidWithRemarks)) &&
           !(told.contains("policy") && IsAgainstPolicy(told.at("policy")));
}

std::string UnchangedText(const std::string& path, const Json& told)
{
    const Json format = told.value("format", Json());
    std::string text = Shown(path) + ": " +
                       (format.is_string() ? format.get<std::string>() + ", " : "") +
                       told.at("verdict").get<std::string>() + ", unchanged";
    if (told.contains("policy") && IsAgainstPolicy(told.at("policy")))
        text += ", against the policy";
    return text + '\n';
}

Batch::Batch(const BatchOptions& options)
    : options_(options), walk_(options.paths, options.intoFolders),
      pool_([&options](const std::string& request) { return ReplyTo(request, options.job); },
            options.limits)
{
    LeaveOut("/dev/stdout"); // it may go to a file in a walked folder
    const Json head = ManifestHead(options.job.check.asFormat,
                                   options.job.policy != nullptr ? options.job.policy->Sum() : "");
    for (const std::string& path : options.since) {
        LeaveOut(path);
        auto reader = std::make_unique<ManifestReader>(path);
        if (reader->Head() == head)
            earlier_.push_back(std::move(reader));
        else
            Warn(path, "is of another version, policy or --as; all files are checked anew");
    }
    if (options.manifest.empty())
        return;
    LeaveOut(options.manifest);
    manifest_ = std::make_unique<ManifestWriter>(options.manifest, head);
    LeaveOut(manifest_->WritingPath());
}

void Batch::LeaveOut(const std::string& path)
{
    if (const auto identity = IdentityOf(path))
        outputs_.push_back(*identity);
}

bool Batch::IsOutput(const FileIdentity& file) const
{
    return std::find(outputs_.begin(), outputs_.end(), file) != outputs_.end();
}

bool Batch::HasRoom() const
{
    return pool_.HasRoom() && underway_.size() < kMostWaiting && bytesWaiting_ < kMostBytesWaiting;
}

void Batch::Run()
{
    std::optional<WalkedEntry> entry = walk_.Next();
    while (entry || pool_.IsBusy()) {
        if (entry && HasRoom()) {
            Take(std::move(*entry));
            entry = walk_.Next();
        } else {
            CollectJobs();
        }
    }
    Finish();
}

void Batch::Take(WalkedEntry entry)
{
    using Kind = WalkedEntry::Kind;
    if (entry.kind == Kind::UnreadableFolder) {
        const std::string found = "The folder can't be read: " + ErrnoText(entry.error) + ".";
        const Checked checked = NotChecked(entry.path, kFolderRule, found);
        AddDone({ std::move(entry), {}, {}, {} }, ResultOf(checked, options_.job));
    } else if (entry.kind == Kind::File && IsOutput(entry.identity)) {
        return;
    } else if (entry.kind == Kind::Other) {
        summary_.CountSkipped();
    } else {
        TakeFile({ std::move(entry), {}, {}, {} });
    }
}

void Batch::TakeFile(Underway file)
{
    const bool isNamed = file.entry.kind == WalkedEntry::Kind::Named;
    file.sideFile = StateOf(JpegSideFilePath(file.entry.path));
    JobRequest request{ file.entry.path, isNamed, {} };
    if (const ManifestLine* const line = KnownLine(file)) {
        file.known = line->outcome;
        request.knownSum = line->sha256;
        if (!options_.job.withSums)
            return AddDone(std::move(file), { Json(nullptr), {}, line->sha256 });
    }
    pool_.Give(firstTicket_ + underway_.size(), request.Encoded(), file.entry.state.size);
    underway_.push_back(std::move(file));
}

void Batch::AddDone(Underway file, JobResult result)
{
    file.result = std::move(result);
    underway_.push_back(std::move(file));
    TellDone();
}

// Null for a file that has to be checked.
const ManifestLine* Batch::KnownLine(const Underway& file)
{
    const ManifestLine* known = nullptr;
    for (const auto& manifest : earlier_) {
        const ManifestLine* const line = manifest->Find(file.entry.path);
        if (line != nullptr && line->state == file.entry.state && line->sideFile == file.sideFile &&
            LastsUntilChange(line->outcome))
            known = line;
    }
    return known;
}

void Batch::CollectJobs()
{
    for (JobEnd& end : pool_.Wait())
        Collect(std::move(end));
    TellDone();
}

void Batch::Collect(JobEnd end)
{
    Underway& file = underway_[end.ticket - firstTicket_];
    file.bytes = end.reply.size();
    bytesWaiting_ += file.bytes;
    if (!end.howItEnded.empty()) {
        summary_.CountCrashed();
        file.result =
            ResultOf(NotChecked(file.entry.path, kEndedRule,
                                "The process that checked this file " + end.howItEnded + "."),
                     options_.job);
    } else {
        file.result = JobResult::Decoded(end.reply);
    }
}

void Batch::TellDone()
{
    if (underway_.empty() || !underway_.front().result)
        return;
    while (!underway_.empty() && underway_.front().result) {
        Tell(underway_.front());
        bytesWaiting_ -= underway_.front().bytes;
        underway_.pop_front();
        ++firstTicket_;
    }
    FinishStandardOutput();
}

void Batch::Tell(Underway& file)
{
    JobResult& result = *file.result;
    if (result.told.is_null())
        MakeUnchanged(file);
    else
        summary_.CountChecked(file.entry.state.size);
    summary_.Count(result.told);
    Record(file);
    if (result.told.at("verdict") == kNoPicture)
        return;
    if (options_.job.telling == Telling::JsonLines)
        PrintOnOneLine(result.told);
    else if (!IsQuiet() || !IsWell(result.told))
        std::cout << result.text;
}

// The findings themselves are told by the run that found them.
void Batch::MakeUnchanged(Underway& file)
{
    summary_.CountUnchanged();
    Json& told = file.result->told;
    told = ObjectOf(file.entry.path);
    told.update(*file.known);
    told["findings"] = Json::array();
    told["unchanged"] = true;
    file.result->text = UnchangedText(file.entry.path, told);
}

void Batch::Record(const Underway& file)
{
    if (manifest_ != nullptr)
        manifest_->Write({ file.entry.path, file.entry.state, file.sideFile, file.result->sha256,
                           OutcomeOf(file.result->told) });
}

void Batch::Finish()
{
    if (manifest_ != nullptr) {
        manifest_->Commit();
        RemoveReadPartials();
    }
    if (options_.job.telling == Telling::JsonLines)
        PrintOnOneLine(summary_.AsJson());
    FinishStandardOutput();
    if (!IsQuiet())
        std::cerr << "tympan: " << summary_.Text() << '\n';
    if (!summary_.AllIsWell())
        throw FailuresReported();
}

// What this run has gone by stands in its manifest now.
void Batch::RemoveReadPartials() const
{
    for (const std::string& path : options_.since)
        if (IsPartialOf(path, options_.manifest))
            std::remove(path.c_str());
}

} // namespace

void CheckBatch(const BatchOptions& options)
{
    Batch(options).Run();
}

} // namespace tympan::tool
