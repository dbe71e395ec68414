#include "cli/commands/Commands.h"
#include "cli/commands/Report.h"
#include "cli/dsn/ConnectionString.h"
#include "cli/system/Input.h"
#include "cli/system/Process.h"
#include "cli/system/Words.h"

namespace Veltrane::Cli {

namespace {

constexpr KeyOption FIELD_OPTIONS[] = {
    {"--server", "Server"},        {"--database", "Database"}, {"--namespace", "Namespace"},
    {"--login-mode", "LoginMode"}, {"--uid", "UID"},
};

constexpr OptionName PASSWORD_OPTIONS[] = {"--pwd-stdin", "--pwd-file", "--pwd-env", "--pwd-prompt",
                                           "--pwd"};

[[noreturn]] void RefusePassword(const std::string& in_where) {
    Refuse(in_where +
           ": a password is not accepted on the command line, where every user of the machine can "
           "read it. Use --pwd-prompt, --pwd-stdin, --pwd-file or --pwd-env.");
}

void SetKey(const std::string& in_key, const std::string& in_value, const std::string& in_where,
            const CommandLine& in_line, DsnWish& io_wish) {
    const std::string reason = WhyNoKey(in_key);
    if (!reason.empty()) {
        Refuse(in_where + ": " + in_key + " is not a value of a DSN: " + reason + ".");
    }
    if (IsSecretKey(in_key) && !in_value.empty()) RefusePassword(in_where);
    if (EqualsIgnoringCase(in_key, "PWD")) {
        // A new DSN has no password anyway, and connection strings often have empty ones.
        if (in_line.m_command == CommandId::Add) return;
        Refuse(in_where + ": PWD is empty. To remove the password: --unset PWD.");
    }
    io_wish.m_values.Set(CanonicalKey(in_key), in_value);
}

void TakeConnectionString(const CommandLine& in_line, DsnWish& io_wish) {
    constexpr char WHERE[] = "--connection-string";
    constexpr std::pair<const char*, const char*> OLE_DB_NAMES[] = {
        {"Data Source", "Server"}, {"Initial Catalog", "Database"}, {"User ID", "UID"}};
    const Entries given = ParseConnectionString(in_line.Get("--connection-string"));
    std::vector<std::string> foreign;
    for (const auto& [name, key] : OLE_DB_NAMES) {
        if (given.Find(name) != nullptr) foreign.push_back(std::string(name) + " is " + key);
    }
    if (!foreign.empty()) {
        Refuse(std::string(WHERE) + " has names of OLE DB. Write those of ODBC: " + Join(foreign) +
               ".");
    }
    for (const auto& [key, value] : given) {
        if (EqualsIgnoringCase(key, "Driver")) {
            if (!in_line.Has("--driver")) io_wish.m_driver = value;
        } else {
            SetKey(key, value, WHERE, in_line, io_wish);
        }
    }
}

void TakeProperties(const CommandLine& in_line, DsnWish& io_wish) {
    for (const std::string& property : in_line.GetAll("--property")) {
        const std::size_t equals = property.find('=');
        if (equals == std::string::npos || equals == 0) {
            Refuse("-p has to be followed by KEY=VALUE.");
        }
        SetKey(property.substr(0, equals), property.substr(equals + 1), "-p", in_line, io_wish);
    }
    io_wish.m_unset = in_line.GetAll("--unset");
    for (const std::string& key : io_wish.m_unset) {
        const std::string reason = WhyNoKey(key);
        if (!reason.empty()) Refuse("--unset: " + key + " cannot be removed: " + reason + ".");
        const ODBC::DialogField* const field = FindField(key);
        if (field == nullptr || !field->m_isRequired) continue;
        Refuse("--unset: a DSN cannot do without " + CanonicalKey(key) + ".");
    }
}

void CheckComplete(const DsnWish& in_wish) {
    std::vector<std::string> missing;
    for (const ODBC::DialogField& field : ODBC::DIALOG_FIELDS) {
        const bool isNeeded = field.m_isRequired && field.m_key != "DSN";
        if (!isNeeded || !in_wish.m_values.Get(field.m_key).empty()) continue;
        missing.push_back("--" + FoldCase(field.m_key));
    }
    if (!missing.empty()) Refuse("A new DSN needs " + Join(missing, " and ") + ".");
}

/// Refuses errors of the command line before anything is read.
void CheckValues(const CommandLine& in_line, const DsnWish& in_wish) {
    const auto check = [](const std::string& in_key, const std::string& in_value) {
        const std::string reason = WhyNoValue(in_key, in_value);
        if (!reason.empty()) Refuse(reason);
    };
    if (in_line.m_command == CommandId::Add) check("DSN", in_wish.m_name);
    for (const auto& [key, value] : in_wish.m_values) {
        for (const std::string& unset : in_wish.m_unset) {
            if (IsSameName(key, unset)) Refuse(key + " is both given and removed.");
        }
        check(key, value);
        const std::string note = in_line.Has("--quiet") ? std::string() : DescribeNearKey(key);
        if (!note.empty()) PrintError(note);
    }
}

std::string ReadPassword(const CommandLine& in_line, OptionName in_source) {
    if (in_source == "--pwd-stdin" && !IsInputTerminal()) return ReadFirstLine({});
    if (in_source == "--pwd-file") {
        const std::string path = in_line.Get(in_source);
        if (path.empty()) Refuse("--pwd-file has to be followed by the name of a file.");
        return ReadFirstLine(path);
    }
    if (in_source == "--pwd-env") {
        const std::string name = in_line.Get(in_source);
        std::string password = ReadSecret("--pwd-env", name);
        RemoveSecret(name);
        return password;
    }
    const std::string question = "Password of the DSN " + Quote(in_line.m_arguments.front()) + ": ";
    // A new password is asked for twice.
    return in_line.m_command == CommandId::Test ? AskSecretly({question}).front()
                                                : AskForPassword(question);
}

}  // namespace

void TakePassword(const CommandLine& in_line, Entries& io_values) {
    const OptionName* source = nullptr;
    for (const OptionName& option : PASSWORD_OPTIONS) {
        if (!in_line.Has(option)) continue;
        if (option == "--pwd") RefusePassword("--pwd");
        if (source != nullptr) Refuse("The password is given in two places.");
        source = &option;
    }
    if (source != nullptr) io_values.Set("PWD", ReadPassword(in_line, *source));
}

DsnWish MakeWish(const CommandLine& in_line) {
    DsnWish wish;
    wish.m_name = in_line.m_arguments.front();
    wish.m_driver = GetDriver(in_line);
    if (in_line.Has("--connection-string")) TakeConnectionString(in_line, wish);
    for (const auto& [option, key] : FIELD_OPTIONS) {
        if (in_line.Has(option)) wish.m_values.Set(key, in_line.Get(option));
    }
    TakeProperties(in_line, wish);
    if (in_line.m_command == CommandId::Add) CheckComplete(wish);
    CheckValues(in_line, wish);
    TakePassword(in_line, wish.m_values);
    return wish;
}

}  // namespace Veltrane::Cli
