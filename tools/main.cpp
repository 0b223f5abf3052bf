// The command: reads the options, runs one subcommand and tells what became of it.
#include "command.h"
#include "failure.h"
#include "names.h"
#include "output_file.h"
#include "usage_message.h"

#include <iostream>
#include <new>
#include <string>

namespace {

using tympan::tool::DeclareCommand;
using tympan::tool::ExitStatus;

ExitStatus TellWrongUsage(const CLI::App& app, const std::string& text)
{
    std::cerr << "tympan: " << tympan::tool::Shown(text) << "\n  " << tympan::tool::UsageAdvice(app)
              << '\n';
    return ExitStatus::WrongUsage;
}

ExitStatus Run(int argc, char** argv)
{
    CLI::App app;
    try {
        DeclareCommand(app);
        app.parse(argc, argv);
        if (app.get_subcommands().empty())
            return TellWrongUsage(app, tympan::tool::MissingSubcommandMessage(app));
        return ExitStatus::Fine;
    } catch (const CLI::Success& asked) { // --help and --version
        app.exit(asked);
        std::cout.flush();
        return std::cout ? ExitStatus::Fine : ExitStatus::FileFailed;
    } catch (const CLI::Error& failure) {
        return TellWrongUsage(app, tympan::tool::UsageMessage(app, failure));
    } catch (const tympan::tool::UsageFailure& failure) {
        return TellWrongUsage(app, failure.what());
    } catch (const tympan::tool::FileFailure& failure) {
        tympan::tool::Report(failure);
    } catch (const tympan::tool::EndWith& end) {
        return end.status;
    } catch (const tympan::tool::FailuresReported&) { // NOLINT(bugprone-empty-catch)
    } catch (const std::bad_alloc&) {
        std::cerr << "tympan: not enough memory\n";
    } catch (const std::exception& failure) {
        std::cerr << "tympan: " << tympan::tool::Shown(failure.what()) << '\n';
    }
    return ExitStatus::FileFailed;
}

} // namespace

int main(int argc, char** argv)
{
    try {
        tympan::tool::HandleEndingSignals();
        return static_cast<int>(Run(argc, argv));
    } catch (...) {
        return static_cast<int>(ExitStatus::FileFailed);
    }
}
