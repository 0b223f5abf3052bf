// `tympan check` over many files: what is walked and told, what a crash or an interruption costs,
// and what a manifest spares the next run.
#include "tools/command_runner.h"
#include "tools/lw_pictures.h"
#include "tools/parsed_json.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <unistd.h>

#include <algorithm>
#include <charconv>
#include <chrono>
#include <csignal>
#include <filesystem>
#include <map>
#include <set>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

namespace {

using namespace tympan::test;
using namespace std::chrono_literals;
using testing::ElementsAre;
using testing::HasSubstr;
namespace fs = std::filesystem;

using Words = std::vector<std::string>;

std::string LwBytes(bool isValid = true)
{
    LwPicture picture{ .width = 10, .height = 2, .inchesHigh = 0.2, .inchesWide = 1.0 };
    picture.rows.assign(2, { { 1, 4 }, { 2, 6 } });
    if (!isValid)
        picture.rows[1] = { { 1, 4 }, { 9, 6 } };
    return std::string(AsText(picture.Bytes()));
}

// Good and bad pictures, damaged ones that no format accepts, and what is none.
struct Tree : TemporaryFolder {
    Tree()
    {
        fs::create_directories(*this / "tree/b/c");
        Write("b/c/.hidden", LwBytes());
        Write("b.lw", LwBytes());
        Write("b/bad.lw", LwBytes(false));
        Write("b/empty.ct", "");
        Write("b/head", std::string("\xFF\xD8\xFF\xFE", 4));
        Write("b/notes.txt", "no picture");
        Write("a\xFF.lw", LwBytes());
        fs::create_symlink("b", *this / "tree/link");
        fs::create_symlink("b.lw", *this / "tree/link.lw");
    }

    std::string Root() const { return *this / "tree"; }
    void Write(const std::string& name, const std::string& bytes) const
    {
        WriteFile(Root() + '/' + name, bytes);
    }
};

constexpr int kPictures = 6; // of a tree

Outcome Check(Words words)
{
    words.insert(words.begin(), "check");
    return RunCommand(words);
}

std::vector<ordered_json> LinesOf(const std::string& text)
{
    std::vector<ordered_json> lines;
    std::istringstream in(text);
    for (std::string line; std::getline(in, line);)
        lines.push_back(ParsedJson(line));
    return lines;
}

// What the last line of a run tells, its times apart, of what isn't 0.
std::map<std::string, int> SummaryOf(const std::vector<ordered_json>& lines)
{
    std::map<std::string, int> summary;
    for (const auto& [key, value] : lines.back().at("summary").items())
        if (value.is_number_unsigned() && value != 0 && key != "bytes")
            summary[key] = value.get<int>();
    return summary;
}

std::map<std::string, int> Summary(Words words)
{
    words.emplace_back("--json-lines");
    return SummaryOf(LinesOf(Check(std::move(words)).out));
}

TEST(BatchCheck, TellsAPictureOfTheTreeOnEachLineInTheirOrder)
{
    const Tree tree;
    for (const char* const jobs : { "1", "4" }) {
        const Outcome outcome = Check({ "-r", tree.Root() + "//./", "-j", jobs, "--json-lines" });
        const auto lines = LinesOf(outcome.out);
        Words told;
        for (std::size_t i = 0; i + 1 < lines.size(); ++i)
            told.push_back(lines[i].at("file").get<std::string>().substr(tree.Root().size()) + " " +
                           lines[i].at("verdict").get<std::string>());
        EXPECT_THAT(told, ElementsAre("/a\xEF\xBF\xBD.lw valid", "/b/bad.lw invalid",
                                      "/b/c/.hidden valid", "/b/empty.ct undetermined",
                                      "/b/head undetermined", "/b.lw valid"));
        EXPECT_THAT(lines[0].at("file_raw"), HasSubstr("/a%FF.lw"));
        EXPECT_EQ(SummaryOf(lines), (std::map<std::string, int>{ { "files", kPictures },
                                                                 { "valid", 3 },
                                                                 { "invalid", 1 },
                                                                 { "undetermined", 2 },
                                                                 { "skipped", 3 } }));
        EXPECT_EQ(outcome.status, 1);
    }
}

TEST(BatchCheck, TellsPeopleTheSameAsACheckOfEachFile)
{
    const Tree tree;
    const std::string bad = tree.Root() + "/b/bad.lw";
    const Outcome each = Check({ bad });
    const Outcome batch = Check({ bad, "-j", "2" });
    EXPECT_EQ(batch.out, each.out);
    EXPECT_THAT(batch.err, HasSubstr("tympan: 1 pictures, 1 invalid"));
    EXPECT_EQ(Check({ "-r", tree.Root() + "/b/c" }).status, 0);
    EXPECT_EQ(Check({ "-rq", tree.Root() + "/b/c" }).out, "");
    EXPECT_EQ(Check({ "-rq", tree.Root() + "/b/c" }).err, "");
}

TEST(BatchCheck, ChecksWhatLiesInANamedFolderOnce)
{
    const Tree tree;
    EXPECT_EQ(Summary({ "-r", tree.Root() + "/b", tree.Root(), tree.Root() })["files"], kPictures);
    EXPECT_EQ(Summary({ "-r", tree.Root() + "/link" })["files"], 4); // named, so it is followed
    EXPECT_EQ(Summary({ "-r", tree.Root(), tree.Root() + "/link" })["files"], kPictures + 4);
    EXPECT_EQ(Summary({ "-r", tree.Root() + "/b/notes.txt" })["undetermined"], 1);
}

TEST(BatchCheck, PassesOverTheFilesOfAReportAndNoOthersThere)
{
    const Tree tree;
    const std::string report = tree.Root() + "/report";
    ASSERT_EQ(RunCommand({ "report", tree.Root(), "-o", report }).status, 0);
    ASSERT_TRUE(std::filesystem::exists(report + "/thumbs/0000001.jpg"));
    const auto before = Summary({ "-r", tree.Root() });
    EXPECT_EQ(before.at("files"), kPictures);
    tree.Write("report/mine.ct", RandomCt(4, 4).File());
    EXPECT_EQ(Summary({ "-r", tree.Root() }).at("files"), kPictures + 1);
    EXPECT_EQ(Summary({ "-r", report }).at("files"), 1);
}

TEST(BatchCheck, TellsAFolderThatItCannotRead)
{
    const Tree tree;
    fs::permissions(tree.Path(), fs::perms::all);
    fs::permissions(tree.Root() + "/b/c", fs::perms::none);
    const Words words{ CommandPath(), "check", "-r", tree.Root(), "--json-lines" };
    Words asNobody{ "--reuid=65534", "--clear-groups" };
    asNobody.insert(asNobody.end(), words.begin(), words.end());
    const Outcome outcome = geteuid() == 0
                                ? RunProgram("setpriv", asNobody)
                                : RunProgram(words[0], { words.begin() + 1, words.end() });
    fs::permissions(tree.Root() + "/b/c", fs::perms::all);
    if (outcome.out.empty())
        GTEST_SKIP() << "the command can't be run as a user who may not read everything";
    EXPECT_THAT(outcome.out, HasSubstr("TYM-RUN-0002"));
    EXPECT_EQ(SummaryOf(LinesOf(outcome.out))["undetermined"], 3);
}

// ---- processes that end

// The processes whose command line names the folder, by their parents.
std::map<pid_t, pid_t> ProcessesOn(const TemporaryFolder& folder)
{
    std::map<pid_t, pid_t> parents;
    for (const auto& entry : fs::directory_iterator("/proc")) {
        const std::string name = entry.path().filename();
        pid_t process = 0;
        if (std::from_chars(name.data(), name.data() + name.size(), process).ec != std::errc())
            continue;
        std::ifstream line(entry.path() / "cmdline"), status(entry.path() / "stat");
        const std::string words(std::istreambuf_iterator<char>(line), {});
        std::string number, program, state;
        pid_t parent = 0;
        status >> number >> program >> state >> parent;
        if (words.find(folder.Path()) != std::string::npos)
            parents[process] = parent;
    }
    return parents;
}

std::set<pid_t> WorkersOn(const TemporaryFolder& folder)
{
    const auto processes = ProcessesOn(folder);
    std::set<pid_t> workers;
    for (const auto& [process, parent] : processes)
        if (processes.contains(parent))
            workers.insert(process);
    return workers;
}

template <typename Condition>
bool ComesTrue(const Condition& condition)
{
    for (int tries = 0; tries < 1000; ++tries, std::this_thread::sleep_for(20ms))
        if (condition())
            return true;
    return false;
}

// A file of holes whose sum takes minutes.
std::string EndlessFile(const TemporaryFolder& folder, const char* name)
{
    WriteFile(folder / name, "");
    fs::resize_file(folder / name, 1'000'000'000'000);
    return folder / name;
}

TEST(BatchCheck, ACrashCostsItsFileOnly)
{
    const Tree tree;
    RunningCommand running({ "check", "-r", EndlessFile(tree, "endless"), tree.Root(), "--hash",
                             "-j", "1", "--json-lines" });
    ASSERT_TRUE(ComesTrue([&] { // a worker that was ended before it had the file would be no crash
        for (const pid_t worker : WorkersOn(tree)) {
            std::this_thread::sleep_for(200ms);
            kill(worker, SIGABRT); // which the sanitizers leave alone
        }
        return ProcessesOn(tree).empty();
    }));
    const auto lines = LinesOf(running.Wait().out);
    ASSERT_EQ(lines.size(), std::size_t{ kPictures + 2 });
    EXPECT_EQ(lines[0].at("verdict"), "undetermined");
    EXPECT_EQ(lines[0].at("findings").at(0).at("id"), "TYM-RUN-0001");
    EXPECT_THAT(lines[0].at("findings").at(0).at("found"), HasSubstr("signal 6"));
    auto summary = SummaryOf(lines);
    EXPECT_EQ(summary["crashed"], 1);
    EXPECT_EQ(summary["valid"], 3);
}

TEST(BatchCheck, AFileThatTakesTooLongIsGivenUp)
{
    const Tree tree;
    const std::string endless = EndlessFile(tree, "endless");
    const Outcome outcome = Check({ endless, tree.Root() + "/b.lw", "--hash", "--timeout", "1" });
    EXPECT_THAT(outcome.out, HasSubstr("took longer than 1 seconds"));
    EXPECT_THAT(outcome.out, HasSubstr("b.lw: LW, valid\n"));
    EXPECT_EQ(outcome.status, 1);
}

TEST(BatchCheck, AKilledRunIsTakenUpAgain)
{
    const Tree tree;
    const std::string manifest = tree / "manifest", partial = manifest + ".partial";
    const std::string last = EndlessFile(tree, "zz"); // behind all others
    RunningCommand running({ "check", "-r", tree.Root(), last, "--hash", "--manifest", manifest });
    ASSERT_TRUE(ComesTrue([&] {
        const std::string lines = fs::exists(partial) ? ReadFile(partial) : "";
        return std::count(lines.begin(), lines.end(), '\n') == 1 + kPictures + 1;
    }));
    running.Signal(SIGKILL);
    running.Wait();
    EXPECT_TRUE(ComesTrue([&] { return ProcessesOn(tree).empty(); })) << "workers go on";
    EXPECT_FALSE(fs::exists(manifest));
    WriteFile(partial, ReadFile(partial) + "{\"path\":\"torn");
    auto summary = Summary({ "-r", tree.Root(), "--manifest", manifest, "--since", partial });
    EXPECT_EQ(summary["files"], kPictures);
    EXPECT_EQ(summary["unchanged"], 5); // the two that couldn't be determined are checked again
    EXPECT_TRUE(fs::exists(manifest));
    EXPECT_FALSE(fs::exists(partial));
}

// ---- manifests

// Two runs with something in between: how many files the second takes for unchanged.
struct ChangeCase {
    const char* name;
    void (*change)(const Tree& tree);
    Words more;
    int unchanged;
    int invalid;
};

void PutBackTime(const std::string& path, const std::string& bytes)
{
    const auto time = fs::last_write_time(path);
    WriteFile(path, bytes);
    fs::last_write_time(path, time);
}

const ChangeCase kChangeCases[] = {
    { "nothing", [](const Tree&) {}, {}, 5, 1 },
    { "a file gone, one more in front",
      [](const Tree& tree) {
          fs::remove(tree.Root() + "/b/bad.lw");
          tree.Write("0.lw", LwBytes());
      },
      {},
      4,
      0 },
    { "another time",
      [](const Tree& tree) { fs::last_write_time(tree.Root() + "/b.lw", fs::file_time_type()); },
      {},
      4,
      1 },
    { "a file beside a picture",
      [](const Tree& tree) { tree.Write("b.bin", "of a JPEG"); },
      {},
      4,
      1 },
    { "other bytes unnoticed",
      [](const Tree& tree) { PutBackTime(tree.Root() + "/b.lw", LwBytes(false)); },
      {},
      5,
      1 },
    { "other bytes noticed",
      [](const Tree& tree) { PutBackTime(tree.Root() + "/b.lw", LwBytes(false)); },
      { "--hash" },
      4,
      2 },
    { "another --as", [](const Tree&) {}, { "--as", "lw" }, 0, 4 },
};

TEST(BatchCheck, OnlyWhatChangedIsCheckedAgain)
{
    for (const ChangeCase& one : kChangeCases) {
        SCOPED_TRACE(one.name);
        const Tree tree;
        const std::string manifest = tree.Root() + "/manifest"; // in the tree, and left out
        Words words{ "-r", tree.Root(), "--manifest", manifest, "--hash" };
        Check(words);
        one.change(tree);
        words = { "-r", tree.Root(), "--manifest", manifest, "--since", manifest };
        words.insert(words.end(), one.more.begin(), one.more.end());
        auto summary = Summary(words);
        EXPECT_EQ(summary["unchanged"], one.unchanged);
        EXPECT_EQ(summary["invalid"], one.invalid);
    }
}

TEST(BatchCheck, TheManifestHoldsSumsAndNamesOfAnyBytes)
{
    const Tree tree;
    tree.Write("a\xFF.lw", "abc");
    const std::string manifest = tree / "manifest";
    Check({ "-r", tree.Root(), "--manifest", manifest, "--hash" });
    const auto lines = LinesOf(ReadFile(manifest));
    ASSERT_EQ(lines.size(), std::size_t{ 1 + kPictures + 1 }); // notes.txt has a line too
    EXPECT_THAT(lines[1].at("path_raw"), HasSubstr("/a%FF.lw"));
    EXPECT_EQ(lines[1].at("size"), 3);
    EXPECT_EQ(lines[1].at("sha256"),
              "ba7816bf8f01cfea414140de5dae2223b00361a396177a9cb410ff61f20015ad");
    EXPECT_EQ(lines[1].at("verdict"), "undetermined");
}

TEST(BatchCheck, WrongUsageEndsInTwo)
{
    const Tree tree;
    const Words wrong[] = {
        { "-r" },
        { "-r", tree.Root(), "--json" },
        { "-r", tree.Root(), "--jobs", "0" },
        { "-r", tree.Root(), "--manifest", "-" },
        { "-r", tree.Root(), "--since", tree.Root() + "/b.lw" },
    };
    for (const Words& words : wrong)
        EXPECT_EQ(Check(words).status, 2) << words.back();
    EXPECT_EQ(Check({ "-r", tree.Root(), "--manifest", tree.Root() }).status, 1);
    EXPECT_FALSE(fs::exists(tree.Root() + ".partial"));
}

// ---- memory

void FillFolders(const std::string& root, int folders)
{
    constexpr int kFilesOfEach = 100;
    const std::string bytes = LwBytes();
    for (int folder = 0; folder < folders; ++folder) {
        const std::string path = root + '/' + std::to_string(folder);
        fs::create_directories(path);
        for (int file = 0; file < kFilesOfEach; ++file)
            WriteFile(path + '/' + std::to_string(file), bytes);
    }
}

// KiB of the largest process that has ended until now.
long MostMemory()
{
    rusage usage{};
    getrusage(RUSAGE_CHILDREN, &usage);
    return usage.ru_maxrss;
}

TEST(BatchCheck, MemoryDoesNotGrowWithTheFiles)
{
#ifdef TYMPAN_UNDER_SANITIZERS
    GTEST_SKIP() << "the sanitizers keep what was freed";
#endif
    const TemporaryFolder folder;
    FillFolders(folder / "few", 10);
    FillFolders(folder / "many", 200);
    EXPECT_EQ(Summary({ "-r", folder / "few", "-j", "2" })["valid"], 1000);
    const long few = MostMemory();
    const std::string manifest = folder / "manifest";
    EXPECT_EQ(Check({ "-rq", folder / "many", "-j", "2", "--manifest", manifest }).status, 0);
    EXPECT_EQ(Check({ "-rq", folder / "many", "--since", manifest }).status, 0);
    EXPECT_LT(MostMemory() - few, 2048);
}

} // namespace
