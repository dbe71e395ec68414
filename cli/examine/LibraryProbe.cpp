#include "cli/examine/LibraryProbe.h"

#include "cli/examine/ApartWork.h"

namespace Veltrane::Cli {

std::string AnswerProbe(const std::string& in_path, const std::vector<std::string>& in_functions) {
    const auto [fault, detail] = ProbeHere(in_path, in_functions);
    return static_cast<char>('0' + static_cast<int>(fault)) + detail;
}

LibraryProbe ProbeLibrary(const std::string& in_path,
                          const std::vector<std::string>& in_functions) {
    const std::string answer = AskApart("library", in_path, in_functions);
    if (answer.empty()) return {LibraryFault::Crashes, {}};
    const int fault = answer.front() - '0';
    // Other answers say why the process could not be asked.
    if (fault < 0 || fault > static_cast<int>(LibraryFault::NoEntryPoint)) {
        return {LibraryFault::CannotLoad, answer};
    }
    return {static_cast<LibraryFault>(fault), answer.substr(1)};
}

}  // namespace Veltrane::Cli
