#include <filesystem>
#include <iostream>

#include "cli/commands/Commands.h"
#include "cli/commands/Report.h"
#include "cli/dsn/Import.h"
#include "cli/line/CommandTable.h"
#include "cli/system/Input.h"

namespace Veltrane::Cli {

namespace {

/// What has no meaning where nothing is applied.
void CheckOptions(const CommandLine& in_line) {
    if (in_line.Has(OptionId::Apply)) return;
    for (const OptionInfo* const option : GetOptionsOf(CommandId::Import)) {
        const OptionId id = option->m_id;
        const bool isForApply = id == OptionId::User || id == OptionId::System ||
                                id == OptionId::DryRun || id == OptionId::Replace ||
                                id == OptionId::FailFast || id == OptionId::Json;
        if (!isForApply || !in_line.Has(id)) continue;
        throw CommandError(EXIT_USAGE, std::string(GetLongName(*option)) + " needs --apply.");
    }
}

/// A file DSN is known by the name of its file.
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
    wish.m_name = in_line.Get(OptionId::Name, isInput ? std::string() : GetNameOfFile(file));
    wish.m_isNameGiven = in_line.Has(OptionId::Name);
    wish.m_encoding = in_line.Get(OptionId::Encoding);
    wish.m_driver = in_line.Get(OptionId::Driver, DEFAULT_DRIVER);
    wish.m_driverThere = in_line.Get(OptionId::FromDriver);
    wish.m_areAllTaken = in_line.Has(OptionId::All);
    wish.m_areSecretsTaken = in_line.Has(OptionId::ShowSecrets);
    std::vector<std::string> notes;
    const std::vector<DsnDescription> descriptions =
        ImportDsns(ReadText(isInput ? std::string() : file), wish, notes);
    for (const std::string& note : notes) {
        if (!in_line.Has(OptionId::Quiet)) PrintError(note);
    }
    if (descriptions.empty()) {
        throw CommandError(EXIT_FAILED, wish.m_source +
                                            " has no DSN of the driver. --from-driver names the "
                                            "driver as the file does, --all takes every driver's.");
    }
    if (in_line.Has(OptionId::Apply)) return ApplyThese(in_line, descriptions, {});
    std::cout << FormatDescriptions(descriptions, DescriptionFormat::JSON);
    return EXIT_DONE;
}

}  // namespace Veltrane::Cli
