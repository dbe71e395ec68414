#include "cli/Commands.h"

#include <iostream>

#include "cli/InitialValuesFile.h"

namespace Veltrane::Cli {

namespace {

constexpr const char* VALUE_KEYS[] = {"Server", "Namespace", "LoginMode", "UID", "PWD", "Database"};

/// The driver of an existing DSN.
std::string FindDriver(const DriverManager& in_manager, const std::string& in_dsn) {
    const std::optional<std::string> driver = in_manager.Read(in_dsn, "Driver");
    if (!driver) {
        throw CommandError(EXIT_NOT_FOUND, "There is no DSN \"" + in_dsn + "\".");
    }
    return *driver;
}

FieldValues MakeFields(const std::string& in_dsn, const GivenValues& in_values) {
    FieldValues fields{{"DSN", in_dsn}};
    fields.insert(fields.end(), in_values.begin(), in_values.end());
    return fields;
}

}  // namespace

void AddDsn(const DriverManager& in_manager, const std::string& in_driver,
            const std::string& in_dsn, const GivenValues& in_values) {
    if (in_manager.Read(in_dsn, "Driver")) {
        throw CommandError(EXIT_EXISTS, "There is a DSN \"" + in_dsn + "\" already.");
    }
    const InitialValuesFile values(MakeFields(in_dsn, in_values));
    in_manager.Configure(Request::Add, in_driver, in_dsn);
}

void SetDsn(const DriverManager& in_manager, const std::string& in_dsn,
            const GivenValues& in_values) {
    const std::string driver = FindDriver(in_manager, in_dsn);
    GivenValues merged(in_values);
    for (const char* key : VALUE_KEYS) {
        // insert keeps what was given
        merged.insert({key, in_manager.Read(in_dsn, key).value_or("")});
    }
    const InitialValuesFile values(MakeFields(in_dsn, merged));
    in_manager.Configure(Request::Configure, driver, in_dsn);
}

void RemoveDsn(const DriverManager& in_manager, const std::string& in_dsn) {
    const std::string driver = FindDriver(in_manager, in_dsn);
    in_manager.Configure(Request::Remove, driver, in_dsn);
}

void ShowDsn(const DriverManager& in_manager, const std::string& in_dsn) {
    std::cout << "DSN=" << in_dsn << "\nDriver=" << FindDriver(in_manager, in_dsn) << "\n";
    for (const char* key : VALUE_KEYS) {
        if (const std::optional<std::string> value = in_manager.Read(in_dsn, key)) {
            const bool isSecret = std::string(key) == "PWD";
            std::cout << key << "=" << (isSecret ? "********" : *value) << "\n";
        }
    }
}

void ListDsns(const DriverManager& in_manager, const std::string& in_driver) {
    for (const std::string& name : in_manager.ListDsns()) {
        if (in_manager.Read(name, "Driver") == in_driver) {
            std::cout << name << "\n";
        }
    }
}

}  // namespace Veltrane::Cli
