// The types of the files, as the desktop's own tools tell them once the package is installed.
#include "support/lw_samples.h"
#include "support/page_samples.h"
#include "tools/command_runner.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstddef>
#include <filesystem>
#include <regex>
#include <string>
#include <vector>

namespace tympan::test {
namespace {

constexpr char kTypes[] = TYMPAN_DESKTOP "/tympan.xml";
constexpr char kSystemTypes[] = "/usr/share/mime/packages/freedesktop.org.xml";
constexpr char kAdvice[] = "scripts/setup test installs it";

using Bytes = std::vector<unsigned char>;

bool IsThere(const std::string& program)
{
    constexpr int kNotFound = 127;
    return RunProgram("env", { program, "--version" }).status != kNotFound;
}

std::vector<std::string> Matches(const std::string& text, const std::string& expression)
{
    const std::regex regex(expression);
    return { std::sregex_token_iterator(text.begin(), text.end(), regex, 1), {} };
}

// A person's folder of data, with the package's types when they are added.
class MimeTypes : public testing::Test {
  protected:
    void SetUp() override
    {
        for (const char* const tool : { "gio", "update-mime-database" })
            if (!IsThere(tool))
                GTEST_SKIP() << "there is no " << tool << ": " << kAdvice;
    }

    void AddPackage() const
    {
        std::filesystem::create_directories(data_ / "mime/packages");
        std::filesystem::copy(kTypes, data_ / "mime/packages");
        const Outcome made = RunProgram("update-mime-database", { data_ / "mime" });
        EXPECT_EQ(made.status, 0) << made.err;
    }

    // Of each file, in their order.
    std::vector<std::string> TypesOf(const std::vector<std::string>& files) const
    {
        std::vector<std::string> arguments{ "XDG_DATA_HOME=" + data_.Path().string(), "gio", "info",
                                            "-a", "standard::content-type" };
        arguments.insert(arguments.end(), files.begin(), files.end());
        return Matches(RunProgram("env", arguments).out, "standard::content-type: (.*)");
    }

    TemporaryFolder data_;
};

Bytes With(Bytes bytes, std::size_t at, const std::string& text)
{
    CtSample::PutText(bytes, at, text);
    return bytes;
}

TEST_F(MimeTypes, AreToldByBytes)
{
    const Bytes ct = CtSample{}.Bytes();
    const Bytes lw = LwPicture{}.Bytes();
    const struct {
        const char* name;
        Bytes bytes;
        const char* type;
    } cases[] = {
        { "CT without letters", ct, "image/x-prepress-ct" },
        { "CT of one plate", CtSample{ .separations = 1 }.Bytes(), "image/x-prepress-ct" },
        { "CT with letters", With(ct, 80, "CT"), "image/x-prepress-ct" },
        { "CT of a tiny size", With(ct, 1039, "-"), "image/x-prepress-ct" },
        { "line work", lw, "image/x-prepress-lw" },
        { "line work with its letters small", With(lw, 80, "lw"), "image/x-prepress-lw" },
        { "page", PageSample{}.Bytes(), "application/x-prepress-page" },
        { "line work without letters", With(lw, 80, std::string(2, '\0')),
          "application/octet-stream" },
        { "other letters", With(ct, 80, "XY"), "application/octet-stream" },
        { "two plates", With(ct, 1025, "\2"), "application/octet-stream" },
        { "a size that is no number", With(ct, 1060, "wide"), "application/octet-stream" },
    };
    AddPackage();
    for (const auto& [name, bytes, type] : cases)
        EXPECT_THAT(TypesOf({ data_.File("sample", bytes) }), testing::ElementsAre(type)) << name;
}

constexpr std::size_t kOfEach = 200; // files of a folder

// Links to files of the system by names that tell nothing, so that their bytes have to.
std::vector<std::string> NamelessFiles(const TemporaryFolder& folder)
{
    std::vector<std::string> links;
    for (const char* const where : { "/usr/bin", "/usr/lib", "/usr/share/icons", "/usr/share/doc",
                                     "/usr/share/backgrounds" }) {
        if (!std::filesystem::exists(where)) // on a machine without a desktop
            continue;
        const std::size_t most = links.size() + kOfEach;
        for (const auto& file : std::filesystem::recursive_directory_iterator(
                 where, std::filesystem::directory_options::skip_permission_denied)) {
            if (links.size() == most)
                break;
            if (!file.is_regular_file())
                continue;
            links.push_back(folder / std::to_string(links.size()));
            std::filesystem::create_symlink(file.path(), links.back());
        }
    }
    return links;
}

TEST_F(MimeTypes, OfOtherFilesStayAsTheyAre)
{
    const TemporaryFolder folder;
    const std::vector<std::string> files = NamelessFiles(folder);
    ASSERT_GE(files.size(), kOfEach);
    const std::vector<std::string> before = TypesOf(files);
    AddPackage();
    EXPECT_EQ(before.size(), files.size());
    EXPECT_EQ(TypesOf(files), before);
}

TEST(MimePackage, IsValidByTheDesktopsRules)
{
    if (!IsThere("xmllint") || !std::filesystem::exists(kSystemTypes))
        GTEST_SKIP() << "there is no xmllint or no shared-mime-info: " << kAdvice;
    const std::string system = ReadFile(kSystemTypes);
    const std::string own = ReadFile(kTypes);
    const TemporaryFolder folder;
    // The rules stand at the head of the system's own types.
    WriteFile(folder / "types.xml",
              system.substr(0, system.find("]>") + 2) + own.substr(own.find("?>") + 2));
    const Outcome outcome = RunProgram("xmllint", { "--noout", "--valid", folder / "types.xml" });
    EXPECT_EQ(outcome.status, 0) << outcome.err;
}

TEST(MimePackage, HasTheTypesOfTheThumbnailer)
{
    const std::string entry = ReadFile(TYMPAN_DESKTOP "/tympan.thumbnailer");
    const auto line = Matches(entry, "\nMimeType=(.*)\n");
    ASSERT_EQ(line.size(), 1U) << entry;
    EXPECT_EQ(Matches(line[0], "([^;]+);"),
              Matches(ReadFile(kTypes), "<mime-type type=\"([^\"]*)\""));
}

} // namespace
} // namespace tympan::test
