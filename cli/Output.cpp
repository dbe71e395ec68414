#include "cli/Output.h"

#include <iostream>

namespace Veltrane::Cli {

namespace {

void PrintDifference(const OutputOptions& in_options, const Change& in_change) {
    std::cout << "[" << in_change.m_dsn << "]\n";
    const Values nothing;
    const Values& after = in_change.m_isRemoval ? nothing : in_change.m_after;
    const auto print = [&](char in_sign, const std::string& in_key, const std::string* in_value) {
        if (in_value != nullptr) {
            std::cout << in_sign << in_key << "=" << Shown(in_options, in_key, *in_value) << "\n";
        }
    };
    for (const std::string& key : in_change.DifferentKeys()) {
        print('-', key, in_change.m_before.Find(key));
        print('+', key, after.Find(key));
    }
}

}  // namespace

std::string Shown(const OutputOptions& in_options, const std::string& in_key,
                  const std::string& in_value) {
    return IsSecret(in_key) && !in_options.m_hasSecrets && !in_value.empty() ? MASK : in_value;
}

Json ChangeToJson(const OutputOptions& in_options, const Change& in_change) {
    const auto shown = [&](const std::string& in_key, const std::string* in_value) {
        return in_value == nullptr ? Json() : Json(Shown(in_options, in_key, *in_value));
    };
    Json changes = Json::array();
    for (const std::string& key : in_change.DifferentKeys()) {
        changes.push_back({{"key", key},
                           {"before", shown(key, in_change.m_before.Find(key))},
                           {"after", shown(key, in_change.m_after.Find(key))}});
    }
    Json json{{"name", in_change.m_dsn}, {"result", in_change.ResultName()}, {"changes", changes}};
    if (in_change.m_exists && !in_change.m_isRemoval) {
        json["kept"] = in_change.KeptKeys();
    }
    return json;
}

void PrintJson(const Json& in_json) {
    std::cout << in_json.dump(-1, ' ', false, Json::error_handler_t::replace) << "\n";
}

void PrintChange(const OutputOptions& in_options, const Change& in_change) {
    if (in_options.m_isQuiet) {
        return;
    }
    if (in_options.m_isJson) {
        Json json = ChangeToJson(in_options, in_change);
        json["dry_run"] = in_options.m_isDryRun;
        PrintJson(json);
        return;
    }
    if (in_options.m_isDryRun && in_change.IsNeeded()) {
        PrintDifference(in_options, in_change);
    }
    std::cout << in_change.m_dsn << ": " << in_change.ResultName()
              << (in_options.m_isDryRun ? " (dry run: nothing was done)" : "") << "\n";
    const std::vector<std::string> kept = in_change.KeptKeys();
    if (!kept.empty() && in_change.m_exists && in_change.IsNeeded() && !in_change.m_isRemoval) {
        std::cout << "kept, though the setup component does not know them:";
        for (const std::string& key : kept) {
            std::cout << " " << key;
        }
        std::cout << "\n";
    }
}

}  // namespace Veltrane::Cli
