// tympan_manual FOLDER: writes the manual pages and the completions of the command. The build runs it.
#include "manual/completions.h"
#include "manual/manual_page.h"

#include <exception>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <stdexcept>
#include <string>

namespace {

namespace files = std::filesystem;

void Write(const files::path& path, const std::string& text)
{
    files::create_directories(path.parent_path());
    std::ofstream file(path, std::ios::binary);
    if (!(file << text).flush())
        throw std::runtime_error("can't write " + path.string());
}

void WriteAll(const files::path& folder)
{
    using namespace tympan::tool;
    const CommandFacts root = FactsOfCommand();
    Write(folder / "man1" / (root.page + ".1"), CommandPage(root));
    for (const CommandFacts& subcommand : root.subcommands)
        Write(folder / "man1" / (subcommand.page + ".1"), SubcommandPage(root, subcommand));
    Write(folder / "bash" / "tympan", BashCompletion(root));
    Write(folder / "zsh" / "_tympan", ZshCompletion(root));
}

} // namespace

int main(int argc, char** argv)
{
    try {
        if (argc != 2)
            throw std::runtime_error("usage: tympan_manual FOLDER");
        WriteAll(argv[1]);
        return 0;
    } catch (const std::exception& failure) {
        std::cerr << "tympan_manual: " << failure.what() << '\n';
        return 1;
    }
}
