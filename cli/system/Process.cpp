#include "cli/system/Process.h"

#include "PlatformAbstraction/base/Environment.h"
#include "cli/system/CommandError.h"
#include "cli/system/Input.h"

namespace Veltrane::Cli {

using Orska::Support::GetEnvironment;

std::string AskForPassword(const std::string& in_question) {
    const std::vector<std::string> answers = AskSecretly({in_question, "Again: "});
    if (answers.front().empty()) RefuseEmptySecret("the answer");
    if (answers.front() != answers.back()) {
        FailWith("The two passwords differ; nothing is changed.");
    }
    return answers.front();
}

bool IsOutputColoured() {
    return GetEnvironment("NO_COLOR").value_or("").empty() && CanOutputShowColour();
}

std::string ReadSecret(const std::string& in_source, const std::string& in_name) {
    const std::optional<std::string> value = GetEnvironment(in_name.c_str());
    if (!value) FailWith(in_source + ": the variable " + in_name + " is not set.");
    if (value->empty()) RefuseEmptySecret("the variable " + in_name);
    return *value;
}

}  // namespace Veltrane::Cli
