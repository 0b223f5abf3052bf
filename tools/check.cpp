// `tympan check`: proves picture files and tells all that is wrong with them.
#include "batch_check.h"
#include "checked_file.h"
#include "command.h"
#include "failure.h"
#include "names.h"
#include "picture.h"
#include "policy.h"
#include "standard_output.h"
#include "verbosity.h"

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <iostream>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

namespace tympan::tool {

namespace {

struct CheckCommandOptions {
    std::vector<std::string> files;
    FileCheckOptions each;
    bool json = false;
    bool jsonLines = false;
    bool list = false;

    bool isBatch = false; ///< whether any of those below was given
    bool intoFolders = false;
    std::optional<unsigned int> jobs;
    unsigned int secondsPerFile = 3600;
    unsigned int memoryPerJob = 0; ///< MiB
    std::string manifest;
    std::vector<std::string> since;
    bool withSums = false;
    std::string policy;
};

Json AsJson(const CheckRule& rule)
{
    return { { "id", rule.id },         { "severity", NameOf(rule.severity) },
             { "title", rule.title },   { "meaning", rule.meaning },
             { "remedy", rule.remedy }, { "retired", rule.isRetired } };
}

constexpr char kListIntroduction[] = R"(# What a check can find

`tympan check` names each finding by an identifier of this list. An identifier is permanent: it is
never given to anything else, and stays listed, as retired, when no check tells it any more.

An error makes a file invalid. A remark doesn't: the file is read as it was meant, but isn't what a
program should write. A file that can't be read, or that no format accepts, is undetermined.

This page is what `tympan check --list` writes.
)";

std::vector<const CheckRule*> AllRules()
{
    std::vector<const CheckRule*> rules = CheckRules();
    const std::vector<const CheckRule*> more = CommandRules();
    rules.insert(rules.end(), more.begin(), more.end());
    return rules;
}

void PrintList(const std::vector<const CheckRule*>& rules)
{
    std::cout << kListIntroduction;
    for (const CheckRule* const rule : rules)
        std::cout << "\n## " << rule->id << (rule->isRetired ? " (retired " : " (")
                  << NameOf(rule->severity) << "): " << rule->title << "\n\n"
                  << rule->meaning << "\n\nWhat to do: " << rule->remedy << '\n';
}

void List(bool asJson)
{
    if (!asJson) {
        PrintList(AllRules());
        return;
    }
    Json list = Json::array();
    for (const CheckRule* const rule : AllRules())
        list.push_back(AsJson(*rule));
    PrintIndented(list);
}

void CheckEach(const CheckCommandOptions& options)
{
    Json objects = Json::array();
    bool failed = false;
    for (const std::string& file : options.files) {
        const Checked checked = CheckPicture(file, options.each);
        failed = failed || checked.Failed();
        if (options.json)
            objects.push_back(AsJson(checked));
        else if (options.jsonLines)
            PrintOnOneLine(AsJson(checked));
        else if (!IsQuiet() || checked.Failed())
            Print(std::cout, checked);
        std::cout.flush();
    }
    if (options.json)
        PrintIndented(objects);
    FinishStandardOutput();
    if (failed)
        throw FailuresReported();
}

// ---- over many files

unsigned int ProcessorCount()
{
    return std::max(1U, std::thread::hardware_concurrency());
}

void CheckMany(const CheckCommandOptions& options)
{
    std::optional<Policy> policy;
    if (!options.policy.empty())
        policy.emplace(options.policy);
    BatchOptions batch;
    batch.paths = options.files;
    batch.intoFolders = options.intoFolders;
    batch.limits = { options.jobs.value_or(ProcessorCount()),
                     std::chrono::seconds(options.secondsPerFile),
                     std::uint64_t{ options.memoryPerJob } << 20U };
    batch.job = { options.each, options.withSums,
                  options.jsonLines ? Telling::JsonLines : Telling::Text,
                  policy ? &*policy : nullptr };
    batch.manifest = options.manifest;
    batch.since = options.since;
    CheckBatch(batch);
}

void CheckAll(const CheckCommandOptions& options)
{
    if (options.files.empty())
        throw UsageFailure("FILE is required");
    FormatsFor(options.each.asFormat); // refuses one that this build doesn't read
    if (options.isBatch)
        CheckMany(options);
    else
        CheckEach(options);
}

void Check(const CheckCommandOptions& options)
{
    if (!options.list) {
        CheckAll(options);
        return;
    }
    List(options.json);
    FinishStandardOutput();
}

void AddBatchOptions(const Options& command, CheckCommandOptions& options, const Option& json)
{
    constexpr unsigned int kMostJobs = 1024;
    constexpr unsigned int kMostMemory = 1U << 30U; // MiB
    constexpr unsigned int kMostSeconds = 30U * 24U * 3600U;
    const auto isOneOfThese = [&options, &json](Option option) {
        return option.WhenGiven([&options] { options.isBatch = true; }).NotWith(json);
    };
    isOneOfThese(command.AddFlag("-r,--recursive", options.intoFolders,
                                 "Check the files in folders, and in the folders below them"));
    isOneOfThese(command.Add("-j,--jobs", options.jobs,
                             "So many processes; without it one for each processor"))
        .Between(1U, kMostJobs);
    isOneOfThese(command.Add("--timeout", options.secondsPerFile,
                             "Seconds that a file may take; 0 for no limit"))
        .Between(0U, kMostSeconds)
        .TellDefault();
    isOneOfThese(command.Add("--max-memory", options.memoryPerJob,
                             "MiB of addresses that a process may use; 0 for no limit"))
        .Between(0U, kMostMemory)
        .TellDefault();
    isOneOfThese(command.Add("--manifest", options.manifest,
                             "Write a line of JSON for each file, for a later --since"))
        .NotEmpty();
    isOneOfThese(command.Add("--since", options.since,
                             "Pass over what hasn't changed since this manifest was written"))
        .OneValueEach();
    isOneOfThese(
        command.AddFlag("--hash", options.withSums, "Go by the SHA-256 sums of the files too"));
    isOneOfThese(command.Add("--policy", options.policy,
                             "Hold the pictures against the rules in this JSON file"))
        .NotEmpty();
}

} // namespace

void DeclareCheck(const Options& command)
{
    const auto options = std::make_shared<CheckCommandOptions>();
    const Option files = command.Add("FILE", options->files, "The pictures");
    const Option json =
        command.AddFlag("--json", options->json, "Write a JSON array with an object for each file");
    command
        .AddFlag("--json-lines", options->jsonLines,
                 "Write a JSON object on a line as each file is done")
        .NotWith(json);
    command.AddFlag("--list", options->list, "List all that a check can find; with --json as JSON")
        .NotWith(files);
    AddAsOption(command, options->each.asFormat);
    AddPathOptions(command, options->each.paths);
    AddBatchOptions(command, *options, json);
    command.AddFooter(
        R"(A file is valid, valid with remarks, invalid, or undetermined: then it can't be
read, or it is of no known format. The exit status is 1 if any is invalid or undetermined.
Of each kind of finding the first 100 of a file are told and the others counted.
Of a page the pictures that it places are proved too.
With --quiet only files that aren't valid are told.

Many files:
  With any of the options from --recursive to --policy the files are checked by several
  processes and told in the order of their names, with a summary at the end. One that
  crashes, is ended or takes too long costs its own file only. In folders, symbolic links
  are not followed, and what is no picture is skipped.

Example:
  tympan check map.lw
  tympan check --json-lines *.lw *.ct
  tympan check -r archive --manifest archive.manifest
  tympan check -r archive --manifest archive.manifest --since archive.manifest
  tympan check -r incoming --policy newspaper.json)");
    command.Run([options] { Check(*options); });
}

} // namespace tympan::tool
