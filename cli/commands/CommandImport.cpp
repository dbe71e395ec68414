#include <filesystem>
#include <iostream>

#include "cli/commands/Commands.h"
#include "cli/commands/Report.h"
#include "cli/dsn/Import.h"
#include "cli/line/CommandTable.h"
#include "cli/system/Input.h"

namespace Veltrane::Cli {

namespace {

/// Refuses options that make no sense without --apply.
void CheckOptions(const CommandLine& in_line) {
    if (in_line.Has("--apply")) return;
    constexpr OptionName OF_APPLY[] = {"--user",      "--system",  "--replace",
                                       "--fail-fast", "--dry-run", "--json"};
    for (const OptionName option : OF_APPLY) {
        if (in_line.Has(option)) Refuse(std::string(option.Get()) + " needs --apply.");
    }
}

/// A file DSN has the name of its file.
std::string GetNameOfFile(const std::string& in_path) {
    const std::filesystem::path path(std::u8string(in_path.begin(), in_path.end()));
    const std::u8string stem = path.stem().u8string();
    return {stem.begin(), stem.end()};
}

}  // namespace

ExitCode ImportFile(const CommandLine& in_line) {
    CheckOptions(in_line);
    const std::string& file = in_line.m_arguments.front();
    const bool isInput = file == "-";
    ImportWish wish;
    wish.m_source = isInput ? "standard input" : file;
    wish.m_name = in_line.Get("--name", isInput ? std::string() : GetNameOfFile(file));
    wish.m_isNameGiven = in_line.Has("--name");
    wish.m_encoding = in_line.Get("--encoding");
    wish.m_driver = GetDriver(in_line);
    wish.m_driverThere = in_line.Get("--from-driver");
    wish.m_areAllTaken = in_line.Has("--all");
    wish.m_areSecretsTaken = in_line.Has("--show-secrets");
    std::vector<std::string> notes;
    const std::vector<DsnDescription> descriptions =
        ImportDsns(ReadText(isInput ? std::string() : file), wish, notes);
    for (const std::string& note : notes) {
        if (!in_line.Has("--quiet")) PrintError(note);
    }
    if (descriptions.empty()) {
        FailWith(wish.m_source +
                 " has no DSN of the driver. --from-driver names the "
                 "driver as the file does, --all takes every driver's.");
    }
    if (in_line.Has("--apply")) return ApplyThese(in_line, descriptions, {});
    std::cout << FormatDescriptions(descriptions, DescriptionFormat::JSON);
    return EXIT_DONE;
}

}  // namespace Veltrane::Cli
