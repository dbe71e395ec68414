// The files of `apply`, JSON and INI, and those of `import`. A refusal names the source and never
// the password. Export writes accepted DSNs, and they read back the same. A JSON number means the
// same as its digits as a text. A plan either refuses them or leads to a section that needs no
// further change.
//
// Input: the format (or: guess it, or: import it), then the text.
#include <algorithm>

#include "cli/dsn/Description.h"
#include "cli/dsn/DsnPlan.h"
#include "cli/dsn/Import.h"
#include "cli/system/CommandError.h"
#include "fuzz/FuzzInput.h"

namespace {

using namespace Veltrane::Cli;
using Orska::Fuzz::FuzzInput;
using Orska::Fuzz::Require;

using Descriptions = std::vector<DsnDescription>;

std::vector<Entry> Sorted(const Entries& in_entries) {
    std::vector<Entry> entries(in_entries.begin(), in_entries.end());
    std::sort(entries.begin(), entries.end());
    return entries;
}

/// True if export can write it: it has a driver and nothing else but values.
bool IsPlain(const DsnDescription& in_description) {
    return !in_description.IsAbsent() && in_description.m_unset.empty() &&
           in_description.m_pwdVariable.empty() && in_description.m_pwdFile.empty();
}

void Plan(const DsnDescription& in_description) {
    DsnWish wish;
    wish.m_name = in_description.m_name;
    wish.m_driver = in_description.m_driver.empty() ? "Veltrane" : in_description.m_driver;
    wish.m_values = in_description.m_values;
    wish.m_unset = in_description.m_unset;
    // Marked, so that no text contains it by chance.
    std::string password;
    if (const std::string* const given = wish.m_values.Find("PWD")) {
        password = "^Zq7" + *given;
        wish.m_values.Set("PWD", password);
    }
    wish.m_isAbsent = in_description.IsAbsent();
    try {
        const DsnPlan plan = MakePlan(wish, std::nullopt);
        if (plan.m_action == Action::None) return;
        Require(plan.m_action == Action::Add, "wrong action for a new DSN", wish.m_name);
        Entries section;
        for (const KeyChange& it : plan.m_changes) section.Set(it.m_key, it.m_after.value_or(""));
        const DsnPlan again = MakePlan(wish, section);
        Require(again.m_action == Action::None, "a change after the change", wish.m_name);
    } catch (const CommandError& error) {
        const std::string text = error.what();
        Require(password.empty() || text.find(password) == std::string::npos,
                "a password in an error", text);
    }
}

/// The same JSON with a text in place of each number except "-0".
std::string QuoteNumbers(const std::string& in_json) {
    std::string quoted;
    bool isText = false;
    for (std::size_t at = 0; at < in_json.size(); ++at) {
        const char first = in_json[at];
        std::size_t length = 1;
        if (isText && first == '\\') {
            length = 2;
        } else if (first == '"') {
            isText = !isText;
        } else if (!isText && (first == '-' || (first >= '0' && first <= '9'))) {
            length =
                std::min(in_json.find_first_not_of("+-.0123456789Ee", at), in_json.size()) - at;
        }
        const std::string part = in_json.substr(at, length);
        const bool isNumber =
            !isText && part != "-0" && (length > 1 || (first >= '0' && first <= '9'));
        quoted += isNumber ? '"' + part + '"' : part;
        at += length - 1;
    }
    return quoted;
}

void RequireSame(const Descriptions& in_one, const Descriptions& in_other,
                 const std::string& in_text) {
    Require(in_one.size() == in_other.size(), "wrong number of DSNs", in_text);
    for (std::size_t i = 0; i < in_one.size(); ++i) {
        Require(in_one[i].m_name == in_other[i].m_name, "wrong name", in_text);
        Require(in_one[i].m_driver == in_other[i].m_driver, "wrong driver", in_text);
        Require(Sorted(in_one[i].m_values) == Sorted(in_other[i].m_values), "wrong values",
                in_text);
    }
}

void CompareExported(const Descriptions& in_descriptions, DescriptionFormat in_format) {
    const std::string text = FormatDescriptions(in_descriptions, in_format);
    std::vector<std::string> notes;
    const Descriptions again =
        text.empty() ? Descriptions() : ParseDescriptions(text, in_format, "again", notes);
    RequireSame(again, in_descriptions, text);
}

Descriptions Parse(const std::string& in_text, DescriptionFormat in_format) {
    std::vector<std::string> notes;
    try {
        return ParseDescriptions(in_text, in_format, "source", notes);
    } catch (const CommandError& error) {
        Require(error.m_exitCode == EXIT_FAILED, "wrong exit code", error.what());
        Require(std::string(error.what()).starts_with("source"), "no source", error.what());
        return {};
    }
}

/// Checks that imported DSNs can be applied.
void Import(const std::string& in_text) {
    std::vector<std::string> notes;
    try {
        const Descriptions descriptions =
            ImportDsns(in_text, {"source", "name", "", "Veltrane", "", true, true}, notes);
        std::for_each(descriptions.begin(), descriptions.end(), Plan);
        CompareExported(descriptions, DescriptionFormat::JSON);
    } catch (const CommandError& error) {
        Require(std::string(error.what()).starts_with("source"), "no source", error.what());
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* in_data, std::size_t in_size) {
    FuzzInput input(in_data, in_size);
    const std::uint8_t first = input.TakeByte();
    const std::uint8_t mode = first % 3;
    const std::string text = input.TakeRest();
    if (first == 'i') {
        Import(text);
        return 0;
    }
    const DescriptionFormat format = mode == 0   ? GuessFormat(text)
                                     : mode == 1 ? DescriptionFormat::JSON
                                                 : DescriptionFormat::INI;
    const Descriptions descriptions = Parse(text, format);
    if (format == DescriptionFormat::JSON && !descriptions.empty()) {
        RequireSame(Parse(QuoteNumbers(text), format), descriptions, text);
    }
    std::for_each(descriptions.begin(), descriptions.end(), Plan);
    if (std::all_of(descriptions.begin(), descriptions.end(), IsPlain)) {
        CompareExported(descriptions, format);
    }
    return 0;
}
