#include "cli/system/Terminal.h"

#include "cli/system/CommandError.h"
#include "cli/system/Input.h"

namespace Veltrane::Cli {

std::string AskForPassword(const std::string& in_question) {
    const std::vector<std::string> answers = AskSecretly({in_question, "Again: "});
    if (answers.front().empty()) RefuseEmptySecret("the answer");
    if (answers.front() != answers.back()) {
        FailWith("The two passwords differ; nothing is changed.");
    }
    return answers.front();
}

bool ReadSecret(const std::string& in_name, std::string& out_value) {
    if (!ReadVariable(in_name, out_value)) return false;
    if (out_value.empty()) RefuseEmptySecret("the variable " + in_name);
    return true;
}

}  // namespace Veltrane::Cli
