#include <iostream>

#include "cli/commands/Commands.h"
#include "cli/commands/Report.h"
#include "cli/dsn/Import.h"
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

}  // namespace

ExitCode ImportFile(const CommandLine& in_line) {
    CheckOptions(in_line);
    const std::string file = GetFile(in_line);
    ImportWish wish;
    wish.m_source = DescribeInput(file);
    wish.m_name = in_line.Get("--name", FromPath(ToPath(file).stem()));
    wish.m_isNameGiven = in_line.Has("--name");
    wish.m_encoding = in_line.Get("--encoding");
    wish.m_driver = GetDriver(in_line);
    wish.m_driverThere = in_line.Get("--from-driver");
    wish.m_areAllTaken = in_line.Has("--all");
    wish.m_areSecretsTaken = in_line.Has("--show-secrets");
    std::vector<std::string> notes;
    const std::vector<DsnDescription> descriptions = ImportDsns(ReadText(file), wish, notes);
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
